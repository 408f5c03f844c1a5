// What the working list of the tax return finds, in which order, and what it sums up.
#include "src/reports/tax/kennzahl_list.h"
#include "src/values/amounts.h"
#include "tests/support/alloc_faults.h"
#include "tests/support/books.h"
#include "text/fixed_text.h"

#include <gtest/gtest.h>

using namespace vark;
using namespace vark::test;

namespace {

struct KennzahlList : testing::Test {
    Kennzahlliste list;

    Kennzahlknoten *Add(const char *konto, int kennzahl, const char *amount = zeroAmount)
    {
        AccountNumber number;
        SetText(number, Justified(konto));
        Kennzahlknoten *node = AddAccountNode(list, number, kennzahl);
        text::CopyText(node->Betrag, amount);
        return node;
    }
    Kennzahlknoten *Find(const char *konto)
    {
        AccountNumber number;
        SetText(number, Justified(konto));
        return FindAccountNode(list, number);
    }
    std::string Sum(int kennzahl)
    {
        AmountText sum;
        return SumOfKennzahl(list, kennzahl, sum) ? sum : "overflow";
    }
};

} // namespace

TEST_F(KennzahlList, FindsAccountsThatCameInRisingOrder)
{
    EXPECT_EQ(nullptr, Find("8400"));
    Kennzahlknoten *first = Add("1576", 66);
    Kennzahlknoten *second = Add("8300", 86);
    Kennzahlknoten *third = Add("8400", 50);
    EXPECT_EQ(first, Find("1576"));
    EXPECT_EQ(second, Find("8300"));
    EXPECT_EQ(third, Find("8400"));
    EXPECT_EQ(nullptr, Find("1000"));
    EXPECT_EQ(nullptr, Find("8350"));
    EXPECT_EQ(nullptr, Find("9000"));
}

TEST_F(KennzahlList, SearchEndsAtTheFirstLowerNumber)
{
    Add("8300", 86);
    Add("8400", 50);
    Kennzahlknoten *late = Add("8100", 41); // a second year's, below the head
    EXPECT_EQ(late, Find("8100"));
    EXPECT_EQ(nullptr, Find("8400")) << "it stands behind a lower one";
    EXPECT_EQ(nullptr, Find("8300"));
}

TEST_F(KennzahlList, EmptyNumberHasNoNode)
{
    ASSERT_NE(nullptr, FindOrAddKennzahl(list, 50));
    EXPECT_EQ(nullptr, FindAccountNode(list, AccountNumber{}));
    Add("8400", 50);
    EXPECT_EQ(nullptr, FindAccountNode(list, AccountNumber{}));
}

TEST_F(KennzahlList, BoxAloneGoesToTheEndOrBecomesTheList)
{
    Kennzahlknoten *only = FindOrAddKennzahl(list, 35);
    EXPECT_EQ(list.Head, only);
    EXPECT_EQ(only, FindOrAddKennzahl(list, 35));
    Kennzahlknoten *account = Add("8400", 50);
    EXPECT_EQ(account, FindOrAddKennzahl(list, 50)) << "the first node with it, whosever it is";
    Kennzahlknoten *last = FindOrAddKennzahl(list, 36);
    EXPECT_EQ(last, only->Next);
    EXPECT_EQ(0, last->Konto[0]);
    EXPECT_EQ(nullptr, last->Next);
}

TEST_F(KennzahlList, SumIsThatOfAllNodes)
{
    EXPECT_EQ("000000000,00", Sum(50));
    Add("8300", 50, "000000100,25");
    Add("8310", 86, "000009999,00");
    Add("8400", 50, "000000300-50");
    EXPECT_EQ("000000200-25", Sum(50));
}

TEST_F(KennzahlList, SumWithoutRoomIsNone)
{
    Add("8300", 50, "999999999,99");
    Add("8400", 50, "000000000-01"); // would fit in the end, but comes behind
    Add("8500", 50, "000000000,02");
    EXPECT_EQ("overflow", Sum(50));
}

TEST_F(KennzahlList, WithoutMemoryThereIsNoNode)
{
    Add("8400", 50);
    FailAllocation(1);
    EXPECT_EQ(nullptr, FindOrAddKennzahl(list, 35));
    StopAllocationFaults();
    EXPECT_EQ(nullptr, list.Head->Next);
    FailAllocation(1);
    EXPECT_EQ(nullptr, AddAccountNode(list, AccountNumber{}, 35));
    StopAllocationFaults();
    EXPECT_EQ(50, list.Head->Kennzahl);
}
