#include "text/fixed_text.h"

#include <gtest/gtest.h>

using text::CopyText;

TEST(FixedText, ShortTextIsFilledWithNul)
{
    char field[6] = {'x', 'x', 'x', 'x', 'x', 'x'};
    CopyText(field, "ab");
    EXPECT_EQ(0, std::memcmp(field, "ab\0\0\0\0", 6));
}

TEST(FixedText, LongTextIsCutToTheWidthLessOne)
{
    char field[4];
    const char *longText = "abcdef";
    CopyText(field, longText);
    EXPECT_STREQ("abc", field);
}

TEST(FixedText, FieldWithoutNulIsReadUpToItsWidthLessOne)
{
    const char full[4] = {'a', 'b', 'c', 'd'};
    char field[10];
    CopyText(field, full);
    EXPECT_STREQ("abc", field);
}

TEST(FixedText, NullCountsAsEmpty)
{
    char field[4] = {'x', 'x', 'x', 'x'};
    CopyText(field, static_cast<const char *>(nullptr));
    EXPECT_EQ(0, std::memcmp(field, "\0\0\0\0", 4));
}

TEST(FixedText, FieldsAreComparedUpToTheirNulOrTheirWidth)
{
    EXPECT_TRUE(text::SameText("ab", "ab"));
    EXPECT_FALSE(text::SameText("ab", "ac"));
    const char full[2] = {'a', 'b'};
    const char other[2] = {'a', 'c'};
    EXPECT_TRUE(text::SameText(full, full));
    EXPECT_FALSE(text::SameText(full, other));
    const char first[4] = {'a', 0, 'x', 0};
    const char second[4] = {'a', 0, 'y', 0};
    EXPECT_TRUE(text::SameText(first, second)) << "what stands behind the NUL does not count";
}
