// Trees of Bilanz and GuV, sound ones and damaged ones.
#include "src/walks/tree_walk.h"

#include "src/values/account_numbers.h"
#include "tests/walks/walk_books.h"

using namespace vark;
using namespace vark::test;

namespace {

constexpr uint16_t leaf = 0;

struct TreeWalk : WalkBooks {
    void Node(int32_t id, uint16_t art, int32_t next, int32_t child, const std::string &text)
    {
        StructureRecord node{};
        node.Id = id;
        node.Art = art;
        node.Next = next;
        node.Child = child;
        SetText(node.Text, text);
        books.Insert(1, TableGuvauf, node);
    }
    // "0:Erlöse/Wurzel" for a group, "1 5010/Erlöse" for a leaf, "! 1 5010" for a second home, "* 5010" for
    // an account outside the tree; then what the walk ended with.
    Lines Walked()
    {
        Lines lines;
        TreeScan scan(*context);
        bool isGood = BeginTree(scan, TableGuvauf);
        while (isGood && scan.Found) {
            const std::string above = TextOf(TitleAbove(scan), sizeof(StructureRecord::Text));
            AccountNumber number;
            StripNumber(number, scan.Konto);
            const std::string depth = std::to_string(scan.Depth);
            switch (scan.Place) {
            case TreePlace::Group: lines.push_back(depth + ":" + TextOf(scan.Node.Text) + "/" + above); break;
            case TreePlace::Leaf:
                lines.push_back((scan.IsGegenposten ? "! " : "") + depth + " " + number + "/" + above);
                break;
            default: lines.push_back("* " + TextOf(number) + "/" + above); break;
            }
            if (lines.size() > 1000) return {"no end"};
            isGood = NextNode(scan);
        }
        lines.push_back(isGood ? "end" : "failed");
        return lines;
    }
    std::string End()
    {
        const Lines lines = Walked();
        return lines.back() + " after " + std::to_string(lines.size() - 1);
    }
};

} // namespace

TEST_F(TreeWalk, GroupsComeBeforeTheirChildrenAndSiblingsAfterThem)
{
    Node(1, StructureGruppe, 0, 2, "Wurzel");
    Node(2, StructureGruppe, 3, 4, "Erlöse");
    Node(3, StructureGruppe, 0, 6, "Aufwand");
    Node(4, leaf, 5, 0, "   5010");
    Node(5, StructureGruppe, 0, 7, "davon Inland");
    Node(6, StructureGegenposten, 8, 0, "   8010");
    Node(7, leaf, 0, 0, "   5020");
    Node(8, StructureGruppe, 0, 0, "leer");
    Node(0, leaf, 0, 0, "   8020");
    Node(0, StructureGegenposten, 0, 0, "   8030");
    Select();
    EXPECT_EQ((Lines{"0:Erlöse/Wurzel", "1 5010/Erlöse", "1:davon Inland/Erlöse", "2 5020/davon Inland",
                     "0:Aufwand/Wurzel", "! 1 8010/Aufwand", "1:leer/Aufwand", "* 8020/", "* 8030/", "end"}),
              Walked());
    EXPECT_EQ(0, context->OpenCounts[TableGuvauf]) << "given back with the scan";
}

TEST_F(TreeWalk, TheGroupBitGoesBeforeTheGegenpostenBit)
{
    Node(1, StructureGruppe, 0, 2, "Wurzel");
    Node(2, StructureGruppe | StructureGegenposten, 0, 0, "Gruppe");
    Select();
    EXPECT_EQ((Lines{"0:Gruppe/Wurzel", "end"}), Walked());
}

TEST_F(TreeWalk, TheRootIsAGroupWhateverItsArtSays)
{
    Node(1, leaf, 0, 2, "Wurzel");
    Node(2, leaf, 0, 0, "   1000");
    Select();
    EXPECT_EQ((Lines{"0 1000/Wurzel", "end"}), Walked());
}

TEST_F(TreeWalk, WhatLiesBesideTheRootIsNotLost)
{
    Node(1, StructureGruppe, 2, 5, "Wurzel");
    Node(2, StructureGruppe, 3, 4, "daneben");
    Node(3, leaf, 0, 0, "   2000");
    Node(4, leaf, 0, 0, "   1000");
    Node(5, leaf, 0, 0, "   3000");
    Select();
    EXPECT_EQ((Lines{"0 3000/Wurzel", "0 1000/daneben", "0 2000/", "end"}), Walked());
}

TEST_F(TreeWalk, NumbersOfLeavesAreJustifiedAndTheirChildrenAreNotFollowed)
{
    Node(1, StructureGruppe, 0, 2, "Wurzel");
    Node(2, leaf, 0, 99, "1000"); // not justified, and 99 is no node
    Select();
    TreeScan scan(*context);
    ASSERT_TRUE(BeginTree(scan, TableGuvauf));
    ASSERT_TRUE(scan.Found);
    EXPECT_STREQ("   1000", scan.Konto);
    EXPECT_TRUE(NextNode(scan));
    EXPECT_FALSE(scan.Found);
}

TEST_F(TreeWalk, ATableWithoutRootIsDamaged)
{
    Select();
    EXPECT_EQ("failed after 0", End());
    Node(0, leaf, 0, 0, "   1000");
    EXPECT_EQ("failed after 0", End()) << "what lies outside comes after the tree";
}

TEST_F(TreeWalk, AMissingNodeIsDamage)
{
    Node(1, StructureGruppe, 0, 2, "Wurzel");
    Node(2, leaf, 3, 0, "   1000");
    Select();
    EXPECT_EQ("failed after 1", End()) << "the next one";
    Node(3, StructureGruppe, 0, 4, "Gruppe");
    EXPECT_EQ("failed after 2", End()) << "the child";
    Node(4, leaf, 0, 0, "   2000");
    EXPECT_EQ("end after 3", End());
}

TEST_F(TreeWalk, ARingOfTwoLeavesEndsBeforeItShowsMoreThanTheTableHolds)
{
    Node(1, StructureGruppe, 0, 2, "Wurzel");
    Node(2, leaf, 3, 0, "   1000");
    Node(3, leaf, 2, 0, "   2000");
    Select();
    EXPECT_EQ("failed after 2", End());
}

TEST_F(TreeWalk, AGroupThatIsItsOwnChildIsDamage)
{
    Node(1, StructureGruppe, 0, 2, "Wurzel");
    Node(2, StructureGruppe, 0, 2, "Gruppe");
    Select();
    EXPECT_EQ("failed after 1", End());
}

TEST_F(TreeWalk, ARootThatIsReachedAgainIsDamage)
{
    Node(1, StructureGruppe, 1, 0, "Wurzel");
    Select();
    EXPECT_EQ("failed after 0", End());
}

TEST_F(TreeWalk, ANodeThatIsReachedTwiceIsDamage)
{
    Node(1, StructureGruppe, 0, 2, "Wurzel");
    Node(2, StructureGruppe, 3, 4, "a");
    Node(3, StructureGruppe, 0, 4, "b");
    Node(4, leaf, 0, 0, "   1000");
    Select();
    EXPECT_EQ("failed after 3", End());
}

TEST_F(TreeWalk, AHundredLevelsBelowTheRootAreWalkedAndNoMore)
{
    const int last = 1 + deepestTree;
    for (int id = 1; id < last; ++id) {
        Node(id, StructureGruppe, 0, id + 1, "Gruppe");
    }
    Node(last, leaf, 0, 0, "   1000");
    Select();
    EXPECT_EQ("end after 100", End());
    StructureRecord deeper{};
    deeper.Id = last;
    deeper.Art = StructureGruppe;
    deeper.Child = last + 1;
    books.Replace(1, TableGuvauf, deeper);
    Node(last + 1, leaf, 0, 0, "   1000");
    EXPECT_EQ("failed after 99", End());
}

TEST_F(TreeWalk, AnEndThatIsAskedForComesNext)
{
    Node(1, StructureGruppe, 0, 2, "Wurzel");
    Node(2, leaf, 3, 0, "   1000");
    Node(3, leaf, 0, 0, "   2000");
    Node(0, leaf, 0, 0, "   3000");
    Select();
    TreeScan scan(*context);
    ASSERT_TRUE(BeginTree(scan, TableGuvauf));
    EndTree(scan);
    EXPECT_TRUE(scan.Found) << "the present node stays";
    EXPECT_TRUE(NextNode(scan));
    EXPECT_FALSE(scan.Found);
    ASSERT_TRUE(BeginTree(scan, TableGuvauf)) << "a scan may begin again";
    EXPECT_TRUE(scan.Found);
    EXPECT_EQ(1, context->OpenCounts[TableGuvauf]);
}

TEST_F(TreeWalk, FailuresOfTheRecordStoreEndItAndGiveTheTableBack)
{
    Node(1, StructureGruppe, 0, 2, "Wurzel");
    Node(2, leaf, 0, 0, "   1000");
    Node(0, leaf, 0, 0, "   2000");
    Node(0, leaf, 0, 0, "   3000");
    Select();
    FailEngineCall(0);
    EXPECT_EQ("end after 3", End());
    const int calls = StopEngineFaults();
    for (int n = 1; n < calls; ++n) { // the last one closes the table
        FailEngineCall(n);
        EXPECT_EQ("failed", Walked().back()) << n;
        StopEngineFaults();
        EXPECT_EQ(0, context->OpenCounts[TableGuvauf]) << n;
    }
}

TEST(TreeKinds, EndWhereTheReportsRecordsEnd)
{
    EXPECT_EQ(1, KindOfGroup(0));
    EXPECT_EQ(3, KindOfGroup(2));
    EXPECT_EQ(0, KindOfGroup(3));
    EXPECT_EQ(4, KindOfLeaf(0, 7));
    EXPECT_EQ(7, KindOfLeaf(3, 7));
    EXPECT_EQ(7, KindOfLeaf(4, 7));
    EXPECT_EQ(8, KindOfLeaf(4, 8));
    EXPECT_EQ(8, KindOfLeaf(50, 8));
}
