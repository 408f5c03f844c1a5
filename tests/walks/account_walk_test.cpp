#include "src/walks/account_walk.h"

#include "src/frame/held_tables.h"
#include "src/values/account_numbers.h"
#include "tests/walks/walk_books.h"

using namespace vark;
using namespace vark::test;

namespace {

struct AccountWalk : WalkBooks {
    // "1000 1200" for the accounts of a kind from `von` to `bis`; "failed" behind what came before it.
    std::string Numbers(int32_t kontoart, const std::string &von, const std::string &bis)
    {
        return Numbers(kontoart, von, bis, FindKind(kontoart)->Table);
    }
    std::string Numbers(int32_t kontoart, const std::string &von, const std::string &bis, TableId slot)
    {
        AccountNumber first;
        AccountNumber last;
        JustifyLimit(first, von.c_str());
        JustifyLimit(last, bis.c_str());
        std::string numbers;
        AccountScan scan;
        bool isGood = BeginAccounts(scan, *context, *FindKind(kontoart), first, last, slot);
        while (isGood && scan.Found) {
            AccountNumber number;
            StripNumber(number, scan.Record.Head.Konto);
            numbers += (numbers.empty() ? "" : " ") + TextOf(number);
            isGood = NextAccount(scan);
        }
        return isGood ? numbers : numbers + " failed";
    }
};

} // namespace

TEST_F(AccountWalk, BothLimitsBelongToTheRange)
{
    for (const char *number : {"900", "1000", "1200", "8400", "10000"}) {
        books.Insert(1, TableSako, MakeSako(number));
    }
    Select();
    EXPECT_EQ("900 1000 1200 8400 10000", Numbers(1, "", "")) << "shorter numbers come first";
    EXPECT_EQ("1000 1200 8400", Numbers(1, "1000", "8400"));
    EXPECT_EQ("1200 8400", Numbers(1, "1001", "9999"));
    EXPECT_EQ("8400 10000", Numbers(1, "8400", ""));
    EXPECT_EQ("900", Numbers(1, "", "900"));
    EXPECT_EQ("", Numbers(1, "1300", "1200")) << "the end before the beginning";
    EXPECT_EQ("", Numbers(1, "20000", "")) << "behind the last one";
    AccountScan scan;
    EXPECT_TRUE(BeginAllAccounts(scan, *context, *FindKind(1)));
    EXPECT_TRUE(scan.Found);
    EXPECT_EQ(Justified("900"), TextOf(scan.Record.Head.Konto));
}

TEST_F(AccountWalk, EachKindHasItsTableAndItsName)
{
    SakoRecord sako = MakeSako("1");
    SetText(sako.Name, "Kasse");
    PersonalRecord kreditor = MakePersonal("2");
    SetText(kreditor.Name1, "Lieferant");
    PersonalRecord debitor = MakePersonal("3");
    SetText(debitor.Name1, "Kunde");
    KoreRecord kostenstelle = MakeKore("4");
    SetText(kostenstelle.Name, "Fuhrpark");
    kostenstelle.Kennzeichen = 'X'; // right behind the name
    books.Insert(1, TableSako, sako);
    books.Insert(1, TableKred, kreditor);
    books.Insert(1, TableDebi, debitor);
    books.Insert(1, TableKore, kostenstelle);
    Select();
    std::string all;
    for (const AccountKind &kind : accountKinds) {
        AccountScan scan;
        ASSERT_TRUE(BeginAllAccounts(scan, *context, kind));
        ASSERT_TRUE(scan.Found);
        AccountNumber number;
        char kuerzel[9];
        char name[41];
        FillAccount(number, kuerzel, name, *scan.Kind, scan.Record);
        all += std::string(number) + " " + kuerzel + " " + name + ";";
        EXPECT_TRUE(NextAccount(scan));
        EXPECT_FALSE(scan.Found);
    }
    EXPECT_EQ("1 K1 Kasse;2 K2 Lieferant;3 K3 Kunde;4 K4 Fuhrpark;", all);
}

TEST_F(AccountWalk, NamesThatFillTheirFieldEndWithIt)
{
    KoreRecord kostenstelle = MakeKore("4");
    std::memset(kostenstelle.Name, 'n', sizeof kostenstelle.Name);
    kostenstelle.Kennzeichen = 'X';
    AnyAccount record{};
    record.Kore = kostenstelle;
    char wide[50];
    CopyAccountName(wide, sizeof wide, *FindKind(KontoartKostenstelle), record);
    EXPECT_EQ(std::string(30, 'n'), wide);
    char narrow[6];
    std::memset(narrow, 'z', sizeof narrow);
    CopyAccountName(narrow, sizeof narrow, *FindKind(KontoartKostenstelle), record);
    EXPECT_STREQ("nnnnn", narrow);
}

TEST_F(AccountWalk, NumbersLeaveNothingBehindTheirEnd)
{
    AnyAccount record{};
    SetText(record.Head.Konto, "   1200");
    AccountNumber number;
    char kuerzel[9];
    std::memset(number, '9', sizeof number);
    CopyNumberAndKuerzel(number, kuerzel, record);
    EXPECT_EQ(std::string("1200\0\0\0\0", 8), std::string(number, sizeof number));
}

TEST_F(AccountWalk, TheTableOfAnotherYearIsReadUnderItsSlot)
{
    books.Insert(1, TableSako, MakeSako("1000"));
    books.Insert(1, TableSako, MakeSako("5000"), "1997");
    Select();
    HeldTables held(*context);
    ASSERT_TRUE(HoldOfYear(held, TableSako, "1997", SlotFree29));
    EXPECT_EQ("5000", Numbers(1, "", "", SlotFree29));
    EXPECT_EQ("1000", Numbers(1, "", ""));
    AnyAccount record;
    AccountNumber number;
    JustifyNumber(number, "5000");
    bool found = false;
    EXPECT_TRUE(ReadAccount(*context, SlotFree29, number, record, found));
    EXPECT_TRUE(found);
    EXPECT_TRUE(ReadAccount(*context, TableSako, number, record, found));
    EXPECT_FALSE(found);
}

TEST_F(AccountWalk, FailuresOfTheRecordStoreEndIt)
{
    books.Insert(1, TableSako, MakeSako("1000"));
    books.Insert(1, TableSako, MakeSako("1200"));
    Select();
    FailEngineOperation(operationGetGreaterEqual, 1, refused);
    EXPECT_EQ(" failed", Numbers(1, "", ""));
    FailEngineOperation(operationGetNext, 2, refused);
    EXPECT_EQ("1000 1200 failed", Numbers(1, "", "")) << "also at the step that would find the end";
    FailEngineOperation(operationGetNext, 1, refused);
    EXPECT_EQ("1000 failed", Numbers(1, "", ""));
}
