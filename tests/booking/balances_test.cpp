#include "src/booking/balances.h"

#include "include/vark40.h"
#include "src/frame/lifecycle.h"
#include "src/frame/mandant.h"
#include "src/frame/record_store.h"
#include "src/model/posting_records.h"
#include "tests/support/books.h"
#include "tests/support/engine_faults.h"

#include <gtest/gtest.h>

using namespace vark;
using namespace vark::test;

namespace {

constexpr uint16_t operationGetEqual = 5;
constexpr uint16_t operationGetNext = 6;
constexpr uint16_t operationGetGreaterEqual = 9;

const Lines accountMessage = {"Die Kontonummer ist unzulässig!"};
const Lines kindMessage = {"Die Kontoart ist unzulässig!"};
const Lines formMessage = {"Das Ausgabeformat ist unzulässig!"};
const Lines kostenstelleMessage = {"Die Kostenstelle ist unzulässig!"};
const Lines mandantMessage = {"Der Mandant existiert nicht!"};

void Set(SollHaben &pair, const std::string &soll, const std::string &haben)
{
    SetText(pair.Soll, soll);
    SetText(pair.Haben, haben);
}

struct Saldo : testing::Test {
    Books books;
    bool showMessages = true;

    void SetUp() override { books.AddMandant(1); }
    void TearDown() override { VARK_SchliesseDB(); }

    // The balance, or the code of a refusal.
    std::string Of(const char *konto, int32_t kontoart = 1, int32_t form = 2, int32_t mandant = 1)
    {
        char out[17] = "unwritten";
        const int32_t code = VARK_HoleSaldo(mandant, konto, kontoart, showMessages ? 1 : 0, form, out);
        if (code != 1) {
            EXPECT_STREQ("unwritten", out);
        }
        return code == 1 ? out : std::to_string(code);
    }
};

struct Sums : testing::Test {
    Books books;
    ThreadContext *context = nullptr;
    SakoRecord record = MakeSako("1200");

    void SetUp() override
    {
        books.AddMandant(1);
        ASSERT_EQ(1, EnterExport(context));
        FistaRecord fista{};
        ASSERT_EQ(1, SelectMandant(*context, 1, fista));
        Set(record.Umsaetze.Vortrag, "000001000,00", "000000100,00");
        Set(record.Umsaetze.Slot0, "000000000,07", "000000000,03");
        Set(record.Umsaetze.Monat[0], "000000010,00", "000000020,00");
        Set(record.Umsaetze.Monat[1], "000000001,00", "000000002,00");
        Set(record.Umsaetze.Monat[11], "000000005,00", "000000006,00");
    }
    void TearDown() override { VARK_SchliesseDB(); }

    BubeRecord Posting(int32_t nummer, const std::string &datum, const std::string &betrag)
    {
        return MakeBube(nummer, datum, "1200", "8400", betrag);
    }

    // "Soll Haben", or "failed".
    std::string At(const std::string &date, uint32_t options = 0, TableId bube = TableBube)
    {
        PackedDate packed = {};
        date.copy(packed, sizeof packed - 1);
        SollHaben sums;
        if (!AccountSumsToDate(*context, record.Konto, record.Umsaetze, packed, options, bube, sums)) {
            return "failed";
        }
        return TextOf(sums.Soll) + " " + TextOf(sums.Haben);
    }
};

} // namespace

TEST_F(Saldo, AddsVortragSlotAndMonths)
{
    SakoRecord record = MakeSako("1200");
    Set(record.Umsaetze.Vortrag, "000001000,00", "000000100,00");
    Set(record.Umsaetze.Slot0, "000000000,70", "000000000,30");
    Set(record.Umsaetze.Monat[0], "000000010,00", "000000020,00");
    Set(record.Umsaetze.Monat[11], "000000005,00", "000000006,00");
    books.Insert(1, TableSako, record);
    EXPECT_EQ("889,40", Of("1200"));
    EXPECT_EQ(Lines{}, books.TakeBoxes());
}

TEST_F(Saldo, AHabenBalanceIsNegative)
{
    PersonalRecord kreditor = MakePersonal("70001");
    Set(kreditor.Umsaetze.Monat[5], "000000100,00", "000001334,50");
    books.Insert(1, TableKred, kreditor);
    EXPECT_EQ("-1234,50", Of("70001", 2));
    EXPECT_EQ("-000001234,50", Of("70001", 2, 1));
    EXPECT_EQ("-1.234,50", Of("70001", 2, 3));
}

TEST_F(Saldo, EachKindHasItsTable)
{
    SakoRecord sachkonto = MakeSako("1");
    Set(sachkonto.Umsaetze.Vortrag, "000000001,00", "");
    PersonalRecord kreditor = MakePersonal("1");
    Set(kreditor.Umsaetze.Vortrag, "000000002,00", "");
    PersonalRecord debitor = MakePersonal("1");
    Set(debitor.Umsaetze.Vortrag, "000000004,00", "");
    KoreRecord kostenstelle = MakeKore("1");
    SetText(kostenstelle.Monat[0], "000000008,00");
    books.Insert(1, TableSako, sachkonto);
    books.Insert(1, TableKred, kreditor);
    books.Insert(1, TableDebi, debitor);
    books.Insert(1, TableKore, kostenstelle);
    EXPECT_EQ("1,00", Of("1", 1));
    EXPECT_EQ("2,00", Of("1", 2));
    EXPECT_EQ("4,00", Of("1", 4));
    EXPECT_EQ("8,00", Of("1", 8));
}

TEST_F(Saldo, OfAKostenstelleIsTheSumOfItsMonths)
{
    KoreRecord record = MakeKore("100");
    for (int month = 0; month < 12; ++month) {
        SetText(record.Monat[month], month == 3 ? "000000002-00" : "000000001,50");
    }
    books.Insert(1, TableKore, record);
    EXPECT_EQ("14,50", Of("100", 8));
}

TEST_F(Saldo, EmptyFieldsAreZero)
{
    SakoRecord record{};
    SetText(record.Konto, Justified("1200"));
    books.Insert(1, TableSako, record);
    EXPECT_EQ("0,00", Of("1200"));
    EXPECT_EQ("0000000000,00", Of("1200", 1, 1));
}

TEST_F(Saldo, TheNumberMayHaveBlanks)
{
    books.Insert(1, TableSako, MakeSako("1200"));
    EXPECT_EQ("0,00", Of("   1200"));
    EXPECT_EQ("0,00", Of("  1200"));
}

TEST_F(Saldo, UsesTheYearOfTheMandant)
{
    SakoRecord older = MakeSako("1200");
    Set(older.Umsaetze.Vortrag, "000000097,00", "");
    SakoRecord newer = MakeSako("1200");
    Set(newer.Umsaetze.Vortrag, "000000098,00", "");
    books.Insert(1, TableSako, older, "1997");
    books.Insert(1, TableSako, newer, "1998");
    EXPECT_EQ("98,00", Of("1200"));
}

TEST_F(Saldo, RefusesInItsOrder)
{
    // Each row repairs one more fault.
    EXPECT_EQ("-20", Of("", 3, 0, 9));
    EXPECT_EQ(formMessage, books.TakeBoxes());
    EXPECT_EQ("-20", Of("", 3, 4, 9));
    EXPECT_EQ(formMessage, books.TakeBoxes());
    EXPECT_EQ("-7", Of("", 3, 1, 9));
    EXPECT_EQ(kindMessage, books.TakeBoxes());
    EXPECT_EQ("-10", Of("", 1, 1, 9));
    EXPECT_EQ(accountMessage, books.TakeBoxes());
    EXPECT_EQ("-10", Of(nullptr, 1, 1, 9));
    EXPECT_EQ(accountMessage, books.TakeBoxes());
    EXPECT_EQ("-10", Of("12345678", 1, 1, 9));
    EXPECT_EQ(accountMessage, books.TakeBoxes());
    EXPECT_EQ("-5", Of("1200", 1, 1, 9));
    EXPECT_EQ(mandantMessage, books.TakeBoxes());
    EXPECT_EQ("-10", Of("1200", 1, 1, 1));
    EXPECT_EQ(accountMessage, books.TakeBoxes());
    books.Insert(1, TableSako, MakeSako("1200"));
    EXPECT_EQ("0000000000,00", Of("1200", 1, 1, 1));
    EXPECT_EQ(Lines{}, books.TakeBoxes());
}

TEST_F(Saldo, AMissingKostenstelleHasItsOwnCode)
{
    EXPECT_EQ("-23", Of("100", 8));
    EXPECT_EQ(kostenstelleMessage, books.TakeBoxes());
    EXPECT_EQ("-10", Of("100", 2));
    EXPECT_EQ("-10", Of("100", 4));
}

TEST_F(Saldo, IsSilentOnRequest)
{
    showMessages = false;
    EXPECT_EQ("-20", Of("1200", 1, 0));
    EXPECT_EQ("-7", Of("1200", 16, 1));
    EXPECT_EQ("-10", Of("1200"));
    EXPECT_EQ("-23", Of("1200", 8));
    EXPECT_EQ("-5", Of("1200", 1, 1, 9));
    EXPECT_EQ(Lines{}, books.TakeBoxes());
}

TEST_F(Saldo, TheOutputMayBeLeftOut)
{
    books.Insert(1, TableSako, MakeSako("1200"));
    EXPECT_EQ(1, VARK_HoleSaldo(1, "1200", 1, 1, 1, nullptr));
}

TEST_F(Saldo, ABalanceThatNoAmountHoldsIsAFailure)
{
    SakoRecord record = MakeSako("1200");
    Set(record.Umsaetze.Vortrag, "999999999,99", "");
    Set(record.Umsaetze.Monat[0], "000000000,01", "");
    books.Insert(1, TableSako, record);
    EXPECT_EQ("-3", Of("1200"));
}

TEST_F(Saldo, AFailureOfTheRecordStore)
{
    books.Insert(1, TableSako, MakeSako("1200"));
    EXPECT_EQ("0,00", Of("1200"));
    FailEngineOperation(operationGetEqual, 2, 2); // the first reads the Mandant
    EXPECT_EQ("-3", Of("1200"));
    StopEngineFaults();
    EXPECT_EQ("0,00", Of("1200"));
}

TEST_F(Sums, BeginWithTheMonthOfTheDate)
{
    EXPECT_EQ("000000010,00 000000020,00", At("150118"));
    EXPECT_EQ("000000001,00 000000002,00", At("010218"));
    EXPECT_EQ("000000000,00 000000000,00", At("310318"));
}

TEST_F(Sums, SlotZeroBelongsToTheLastDayOfTheYear)
{
    EXPECT_EQ("000000005,07 000000006,03", At("311218"));
    EXPECT_EQ("000000005,00 000000006,00", At("301218"));
    EXPECT_EQ("000000010,00 000000020,00", At("310118")) << "no other month end";
}

TEST_F(Sums, OptionsAddEarlierMonthsAndVortrag)
{
    EXPECT_EQ("000000011,00 000000022,00", At("150218", SumEarlierMonths));
    EXPECT_EQ("000000010,00 000000020,00", At("150118", SumEarlierMonths)) << "month 1 has none before it";
    EXPECT_EQ("000001001,00 000000102,00", At("150218", SumVortrag));
    EXPECT_EQ("000001011,00 000000122,00", At("150218", SumEarlierMonths | SumVortrag));
    EXPECT_EQ("000001016,07 000000128,03", At("311218", SumEarlierMonths | SumVortrag));
}

TEST_F(Sums, LaterPostingsOfTheMonthAreTakenOff)
{
    books.Insert(1, TableBube, Posting(1, "140218", "000000000,01"));
    books.Insert(1, TableBube, Posting(2, "150218", "000000000,02"));
    books.Insert(1, TableBube, Posting(3, "160218", "000000000,04"));
    books.Insert(1, TableBube, Posting(4, "280218", "000000000,08"));
    books.Insert(1, TableBube, Posting(5, "010318", "000000000,16"));
    EXPECT_EQ("000000000,88 000000002,00", At("150218"));
    EXPECT_EQ("000000000,92 000000002,00", At("270218"));
    EXPECT_EQ("000000001,00 000000002,00", At("280218"));
}

TEST_F(Sums, RunningNumbersOfTheLastDayCountToTheEnd)
{
    books.Insert(1, TableBube, Posting(9999, "280218", "000000000,08"));
    EXPECT_EQ("000000000,92 000000002,00", At("270218"));
}

TEST_F(Sums, EachSideTakesItsOwnAmount)
{
    BubeRecord posting = MakeBube(1, "200118", "8400", "1200", "");
    SetText(posting.Soll, "000000007,00");
    SetText(posting.Haben, "000000003,00");
    books.Insert(1, TableBube, posting);
    EXPECT_EQ("000000010,00 000000017,00", At("150118"));
    posting = MakeBube(2, "200118", "1200", "8400", "");
    SetText(posting.Soll, "000000002,00");
    SetText(posting.Haben, "000000009,00");
    books.Insert(1, TableBube, posting);
    EXPECT_EQ("000000008,00 000000017,00", At("150118"));
}

TEST_F(Sums, ATaxAccountLosesItsTaxOnTheSideOfTheFlag)
{
    BubeRecord posting = MakeBube(1, "200118", "1000", "8400", "000000116,00");
    SetText(posting.Steuerkonto, Justified("1200"));
    SetText(posting.Steuer, "000000001,60");
    books.Insert(1, TableBube, posting);
    EXPECT_EQ("000000008,40 000000020,00", At("150118"));
    posting.Schluessel.Folge[9] = '2';
    posting.Buchungsnummer = 2;
    posting.Steuerflags = BubeSteuerPlus;
    books.Insert(1, TableBube, posting);
    EXPECT_EQ("000000008,40 000000018,40", At("150118"));
}

TEST_F(Sums, PostingsNotYetInTheMonthDoNotCount)
{
    for (const uint16_t status : {uint16_t{2}, uint16_t{4}, uint16_t{6}}) {
        BubeRecord posting = Posting(status, "200118", "000000001,00");
        posting.Status = status;
        books.Insert(1, TableBube, posting);
    }
    EXPECT_EQ("000000010,00 000000020,00", At("150118"));
    BubeRecord folded = Posting(8, "200118", "000000001,00");
    folded.Status = BubeGefaltet;
    books.Insert(1, TableBube, folded);
    EXPECT_EQ("000000009,00 000000020,00", At("150118")) << "other status bits make no difference";
}

TEST_F(Sums, OtherAccountsDoNotMatter)
{
    books.Insert(1, TableBube, MakeBube(1, "200118", "1000", "8400", "000000001,00"));
    books.Insert(1, TableBube, MakeBube(2, "200118", "12000", "12001", "000000001,00"));
    EXPECT_EQ("000000010,00 000000020,00", At("150118"));
}

TEST_F(Sums, ASumMayBecomeNegative)
{
    books.Insert(1, TableBube, Posting(1, "200218", "000000005,00"));
    EXPECT_EQ("000000004-00 000000002,00", At("150218"));
}

TEST_F(Sums, ANegativePostingIsAddedBack)
{
    books.Insert(1, TableBube, Posting(1, "200218", "000000005-00"));
    EXPECT_EQ("000000006,00 000000002,00", At("150218"));
}

TEST_F(Sums, AFreeSlotReadsTheBubeOfAnotherYear)
{
    books.Insert(1, TableBube, Posting(1, "200117", "000000001,00"), "1997");
    ASSERT_TRUE(OpenTable(*context, TableBube, "1997", SlotFree30));
    EXPECT_EQ("000000009,00 000000020,00", At("150117", 0, SlotFree30));
    EXPECT_EQ("000000010,00 000000020,00", At("150117"));
}

TEST_F(Sums, AFiscalYearFromJulyEndsInJune)
{
    context->FirstFiscalMonth = 7;
    EXPECT_EQ("000000005,07 000000006,03", At("301217"));
    EXPECT_EQ("000000005,00 000000006,00", At("291217"));
}

TEST_F(Sums, FailWhereNoAmountHoldsThem)
{
    Set(record.Umsaetze.Monat[1], "999999999,99", "");
    EXPECT_EQ("failed", At("150218", SumEarlierMonths));
    Set(record.Umsaetze.Monat[1], "", "999999999,99");
    EXPECT_EQ("failed", At("150218", SumVortrag));
    EXPECT_EQ("000000000,00 999999999,99", At("150218"));
    BubeRecord posting = MakeBube(1, "200218", "8400", "1200", "000000000-01");
    books.Insert(1, TableBube, posting);
    EXPECT_EQ("failed", At("150218"));
}

TEST_F(Sums, FailForADateWithoutAMonth)
{
    EXPECT_EQ("failed", At(""));
    EXPECT_EQ("failed", At("150018"));
    EXPECT_EQ("failed", At("151318"));
}

TEST_F(Sums, FailWithTheRecordStore)
{
    books.Insert(1, TableBube, Posting(1, "200118", "000000001,00"));
    for (const int n : {1, 2, 3, 4}) {
        FailEngineOperation(operationGetGreaterEqual, n, 2);
        EXPECT_EQ("failed", At("150118")) << n;
        StopEngineFaults();
    }
    FailEngineOperation(operationGetNext, 1, 2);
    EXPECT_EQ("failed", At("150118"));
    StopEngineFaults();
    EXPECT_EQ("000000009,00 000000020,00", At("150118"));
}
