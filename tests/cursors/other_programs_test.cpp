// What another program changes between two calls is seen by the next one.
#include "include/vark40.h"
#include "tests/support/books.h"

#include <gtest/gtest.h>
#include <thread>

using namespace vark;
using namespace vark::test;

namespace {

struct OtherPrograms : testing::Test {
    Books books;

    void SetUp() override { books.AddMandant(1); }

    // Does something to the books as another client of the record manager.
    template <typename Change> static void Elsewhere(Change change) { std::thread(change).join(); }
};

std::string NextPosting(int32_t expected)
{
    char text[40] = {};
    EXPECT_EQ(expected, VARK_HoleBube(nullptr, nullptr, nullptr, text, nullptr, nullptr, nullptr, nullptr, 0,
                                      nullptr, nullptr, nullptr));
    return text;
}

std::string NextItem(int32_t expected)
{
    char amount[17] = {};
    EXPECT_EQ(expected, VARK_HoleOP(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, 2,
                                    amount, nullptr, nullptr));
    return amount;
}

std::string NextDebitor(int32_t expected)
{
    char name[26] = {};
    EXPECT_EQ(expected, VARK_HolePeko(nullptr, nullptr, name, nullptr, nullptr, nullptr, nullptr, nullptr,
                                      nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                      0, nullptr, nullptr, nullptr));
    return name;
}

} // namespace

TEST_F(OtherPrograms, ChangeAndAddPostingsUnderACursor)
{
    for (const int32_t number : {1, 2}) {
        books.Insert(1, TableBube, MakeBube(number, "150118", "10000", "8400", "000000116,00"));
    }
    ASSERT_EQ(1, VARK_InitHoleBube(1, "1.1.98", 1));
    EXPECT_EQ("Buchung 1", NextPosting(1));
    Elsewhere([this] {
        BubeRecord changed = MakeBube(2, "150118", "10000", "8400", "000000116,00");
        SetText(changed.Text, "anders");
        books.Replace(1, TableBube, changed);
        books.Insert(1, TableBube, MakeBube(3, "150118", "10000", "8400", "000000116,00"));
    });
    EXPECT_EQ("anders", NextPosting(1)) << "and one more follows";
    Elsewhere([this] { books.Insert(1, TableBube, MakeBube(4, "160118", "1200", "8400", "000000001,00")); });
    EXPECT_EQ("Buchung 3", NextPosting(1));
    EXPECT_EQ("Buchung 4", NextPosting(2));
}

TEST_F(OtherPrograms, ChangeAndAddOpenItemsUnderACursor)
{
    books.Insert(1, TableOpdebi, MakeOpenItem(1, "10000", "180115", "000000001,00"));
    books.Insert(1, TableOpdebi, MakeOpenItem(2, "10000", "180115", "000000002,00"));
    ASSERT_EQ(1, VARK_InitHoleOP(1, "", 4, 1));
    EXPECT_EQ("1,00", NextItem(1));
    Elsewhere([this] {
        books.Replace(1, TableOpdebi, MakeOpenItem(2, "10000", "180115", "000000022,00"));
        books.Insert(1, TableOpdebi, MakeOpenItem(3, "10000", "180115", "000000003,00"));
    });
    EXPECT_EQ("22,00", NextItem(1));
    EXPECT_EQ("3,00", NextItem(2));
}

TEST_F(OtherPrograms, ChangeAndAddAccountsUnderACursor)
{
    books.Insert(1, TableDebi, MakePersonal("10000"));
    books.Insert(1, TableDebi, MakePersonal("10010"));
    ASSERT_EQ(1, VARK_InitHoleKonto(1, 4, "", 1));
    EXPECT_EQ("Konto 10000", NextDebitor(1));
    Elsewhere([this] {
        PersonalRecord changed = MakePersonal("10010");
        SetText(changed.Name1, "anders");
        books.Replace(1, TableDebi, changed);
        books.Insert(1, TableDebi, MakePersonal("10020"));
    });
    EXPECT_EQ("anders", NextDebitor(1));
    EXPECT_EQ("Konto 10020", NextDebitor(2));
}

TEST_F(OtherPrograms, ChangeABalanceBetweenTwoQuestions)
{
    SakoRecord record = MakeSako("1200");
    SetText(record.Umsaetze.Monat[4].Soll, "000000100,00");
    books.Insert(1, TableSako, record);
    char out[17] = {};
    ASSERT_EQ(1, VARK_HoleSaldo(1, "1200", 1, 1, 2, out));
    EXPECT_STREQ("100,00", out);
    Elsewhere([&] {
        SetText(record.Umsaetze.Monat[4].Soll, "000000050,00");
        books.Replace(1, TableSako, record);
    });
    ASSERT_EQ(1, VARK_HoleSaldo(1, "1200", 1, 1, 2, out));
    EXPECT_STREQ("50,00", out);
}
