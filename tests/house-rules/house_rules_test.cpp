// The tree keeps the rules of this house.
#include "rules.h"

#include <gtest/gtest.h>

using namespace house;

namespace {

const Files &Tree()
{
    static const Files files = ReadTree(VARK_SOURCE_DIR);
    return files;
}

std::string Told(const Breaches &breaches)
{
    std::string text;
    for (const Breach &breach : breaches) {
        text += breach.Path + ":" + std::to_string(breach.Line) + ": " + breach.Why + "\n";
    }
    return text;
}

} // namespace

TEST(HouseRules, IncludesPointDownwards) { EXPECT_EQ("", Told(Layers(Tree()))); }

TEST(HouseRules, OnlyThePlatformSeesTheOperatingSystem) { EXPECT_EQ("", Told(PlatformStaysBelow(Tree()))); }

TEST(HouseRules, NoBannedCalls) { EXPECT_EQ("", Told(BannedCalls(Tree()))); }

TEST(HouseRules, LibraryAndPartsArePlainStructuresAndFunctions) { EXPECT_EQ("", Told(PlainCode(Tree()))); }

TEST(HouseRules, LinesAreAtMost110Wide) { EXPECT_EQ("", Told(LineWidth(Tree()))); }

TEST(HouseRules, NothingIsLeftLying) { EXPECT_EQ("", Told(Orphans(Tree()))); }

TEST(HouseRules, ReadmeIsTrue) { EXPECT_EQ("", Told(ReadmeIsTrue(Tree()))); }

TEST(HouseRules, LibraryNeedsNothingButTheRuntime) { EXPECT_EQ("", Told(DynamicNeeds(VARK_LIBRARY))); }

// What speaks to a database server is a part of its own, loaded with the first books on one.
TEST(HouseRules, RecordManagerNeedsNothingButTheRuntime)
{
    EXPECT_EQ("", Told(DynamicNeeds(VARK_RECORD_MANAGER)));
    EXPECT_NE("", Told(DynamicNeeds(VARK_SERVER_PART))) << "the part needs the server's client library";
}

TEST(HouseRules, SourcesCallEachOtherInNoCircle)
{
    const auto lists = ReadObjectLists(VARK_OBJECT_LISTS);
    ASSERT_FALSE(lists.empty());
    for (const auto &[target, objects] : lists) {
        EXPECT_EQ("", Told(Circles(target, objects)));
    }
}

TEST(HouseRules, GermanTextsAreWindows1252) { EXPECT_EQ("", Told(TextsAreTurnedOver(Tree()))); }

TEST(HouseRules, MessagesAndCodesHaveNames) { EXPECT_EQ("", Told(MessagesAreNamed(Tree()))); }

TEST(HouseRules, PostingsAreCheckedOnTheirWay) { EXPECT_EQ("", Told(Beliefs(Tree()))); }

TEST(HouseRules, FieldsOfRecordsAreReadAndWrittenByOnePair) { EXPECT_EQ("", Told(BytesAreFields(Tree()))); }

TEST(HouseRules, NineInTenFunctionsHaveAContract)
{
    const Declarations read = ReadDeclarations(Tree());
    EXPECT_GT(read.Functions, 1000u);
    EXPECT_EQ("", Told(Contracts(Tree()))) << read.Untold.size() << " of " << read.Functions;
    RecordProperty("functions", static_cast<int>(read.Functions));
    RecordProperty("untold", static_cast<int>(read.Untold.size()));
}

TEST(HouseRules, CommentsCarryTheirReasons) { EXPECT_EQ("", Told(Words(Tree()))); }

TEST(HouseRules, EveryHeaderCompilesAlone)
{
    const std::vector<std::string> headers = HeadersToCompile(Tree());
    ASSERT_FALSE(headers.empty());
    EXPECT_EQ("", Told(HeadersCompileAlone(VARK_SOURCE_DIR, headers)));
}
