#include "text/windows1252.h"

#include <gtest/gtest.h>
#include <string>

using namespace text;

TEST(Windows1252, LiteralIsTurnedOverAtCompileTime)
{
    EXPECT_STREQ("K\xFCrzel \x80", "Kürzel €"_w);
    EXPECT_STREQ("", ""_w);
}

TEST(Windows1252, EveryByteSurvivesTheWayToUtf8AndBack)
{
    for (int letter = 1; letter < 256; ++letter) {
        const char one[2] = {static_cast<char>(letter), 0};
        char utf8[8];
        char back[8];
        ToUtf8(one, utf8, sizeof utf8);
        FromUtf8(utf8, back, sizeof back);
        EXPECT_STREQ(one, back) << letter;
    }
}

TEST(Windows1252, TextThatDoesNotFitIsCutAtAWholeCharacter)
{
    char out[4];
    EXPECT_EQ(6u, ToUtf8("\xFC\xFC\xFC", out, sizeof out));
    EXPECT_STREQ("ü", out);
}

TEST(Windows1252, NothingIsWrittenBehindACutEvenWhenALaterCharacterWouldFit)
{
    char out[3];
    EXPECT_EQ(4u, ToUtf8("a\xFC"
                         "b",
                         out, sizeof out));
    EXPECT_STREQ("a", out);
}

TEST(Windows1252, CharacterOutsideTheCodePageBecomesAQuestionMark)
{
    char out[16];
    EXPECT_EQ(3u, FromUtf8("aЖb", out, sizeof out));
    EXPECT_STREQ("a?b", out);
}

TEST(Windows1252, MalformedUtf8BecomesAQuestionMarkAByte)
{
    char out[16];
    FromUtf8("a\xC3", out, sizeof out);
    EXPECT_STREQ("a?", out);
    FromUtf8("\xC0\x80x", out, sizeof out);
    EXPECT_STREQ("??x", out);
    FromUtf8("\xED\xA0\x80", out, sizeof out);
    EXPECT_STREQ("???", out);
}

TEST(Windows1252, ABufferWithoutRoomIsNotTouched)
{
    char out[1] = {'x'};
    EXPECT_EQ(1u, ToUtf8("a", out, 0));
    EXPECT_EQ('x', out[0]);
}
