#include "include/vark40.h"
#include "src/frame/lifecycle.h"
#include "src/model/posting_records.h"
#include "tests/support/books.h"
#include "tests/support/engine_faults.h"

#include <gtest/gtest.h>

using namespace vark;
using namespace vark::test;

namespace {

constexpr uint16_t operationOpen = 0;
constexpr uint16_t operationGetEqual = 5;
constexpr uint16_t operationGetNext = 6;
constexpr uint16_t operationGetFirst = 12;

const Lines accountMessage = {"Die Kontonummer ist unzulässig!"};
const Lines kindMessage = {"Die Kontoart ist unzulässig!"};
const Lines formMessage = {"Das Ausgabeformat ist unzulässig!"};
const Lines mandantMessage = {"Der Mandant existiert nicht!"};

struct Item {
    int32_t Code = 0;
    char Konto[8] = "-";
    char Referenz1[10] = "-";
    char Referenz2[10] = "-";
    char Datum1[11] = "-";
    char Datum2[11] = "-";
    char Datum3[11] = "-";
    char Text1[26] = "-";
    char Text2[26] = "-";
    char Betrag1[17] = "-";
    char Betrag2[17] = "-";
    char Waehrung[5] = "-";
};

Item Next(int32_t form = 2)
{
    Item d;
    d.Code = VARK_HoleOP(d.Konto, d.Referenz1, d.Referenz2, d.Datum1, d.Datum2, d.Datum3, d.Text1, d.Text2,
                         form, d.Betrag1, d.Betrag2, d.Waehrung);
    return d;
}

struct OpenItemCursor : testing::Test {
    Books books;

    void SetUp() override
    {
        books.AddMandant(1);
        books.Insert(1, TableDebi, MakePersonal("10000"));
        books.Insert(1, TableDebi, MakePersonal("10001"));
        books.Insert(1, TableDebi, MakePersonal("10002"));
        books.Insert(1, TableKred, MakePersonal("70000"));
    }
    void TearDown() override { VARK_SchliesseDB(); }

    void Add(uint32_t nummer, const std::string &konto, TableId table = TableOpdebi)
    {
        OpenItemRecord record = MakeOpenItem(nummer, konto, "180315", "000000001,00");
        SetText(record.Referenz1, "R" + std::to_string(nummer));
        books.Insert(1, table, record);
    }
    void AddSix()
    {
        for (const uint32_t nummer : {3u, 1u, 5u}) {
            Add(nummer, "10000");
        }
        for (const uint32_t nummer : {2u, 4u, 6u}) {
            Add(nummer, "10001");
        }
    }
    static int32_t Init(const char *konto, int32_t kontoart = 4, bool showMessages = true,
                        int32_t mandant = 1)
    {
        return VARK_InitHoleOP(mandant, konto, kontoart, showMessages ? 1 : 0);
    }
    static Lines All(const char *konto, int32_t kontoart = 4)
    {
        Lines lines;
        if (Init(konto, kontoart) != 1) return lines;
        Item d;
        do {
            d = Next();
            lines.push_back(d.Referenz1);
        } while (d.Code == 1);
        EXPECT_EQ(2, d.Code);
        return lines;
    }
};

} // namespace

TEST_F(OpenItemCursor, DeliversInTheOrderOfRunningNumbers)
{
    AddSix();
    EXPECT_EQ((Lines{"R1", "R2", "R3", "R4", "R5", "R6"}), All(""));
    EXPECT_EQ((Lines{"R1", "R2", "R3", "R4", "R5", "R6"}), All(nullptr));
}

TEST_F(OpenItemCursor, RunningNumbersAreUnsigned)
{
    for (const auto &[nummer, referenz] :
         {std::pair{0x80000000u, "middle"}, {0x7FFFFFFFu, "low"}, {0xFFFFFFFFu, "high"}}) {
        OpenItemRecord record = MakeOpenItem(nummer, "10000", "180315", "");
        SetText(record.Referenz1, referenz);
        books.Insert(1, TableOpdebi, record);
    }
    EXPECT_EQ((Lines{"low", "middle", "high"}), All(""));
}

TEST_F(OpenItemCursor, OfOneAccount)
{
    AddSix();
    EXPECT_EQ((Lines{"R1", "R3", "R5"}), All("10000"));
    EXPECT_EQ((Lines{"R2", "R4", "R6"}), All("10001"));
    EXPECT_EQ((Lines{"R2", "R4", "R6"}), All("  10001"));
    EXPECT_EQ(0, Init("10002")) << "no items";
    EXPECT_EQ(-40, Next().Code);
    EXPECT_EQ(Lines{}, books.TakeBoxes());
}

TEST_F(OpenItemCursor, TheLastMatchIsKnownOnlyAtTheEndOfTheTable)
{
    AddSix();
    ASSERT_EQ(1, Init("10000"));
    EXPECT_EQ(1, Next().Code);
    EXPECT_EQ(1, Next().Code);
    FailEngineOperation(operationGetNext, 0, 0);
    EXPECT_EQ(2, Next().Code);
    EXPECT_EQ(2, StopEngineFaults()) << "the item of the other account, the end";
}

TEST_F(OpenItemCursor, KreditorenHaveTheirOwn)
{
    AddSix();
    Add(7, "70000", TableOpkred);
    EXPECT_EQ((Lines{"R7"}), All("", 2));
    EXPECT_EQ((Lines{"R7"}), All("70000", 2));
}

TEST_F(OpenItemCursor, FillsEveryOutput)
{
    OpenItemRecord record = MakeOpenItem(1, "10000", "180315", "");
    SetText(record.Referenz1, "RE 4711");
    SetText(record.Referenz2, "AU 815");
    SetText(record.Termin, "180401");
    SetText(record.Skontodatum, "");
    SetText(record.Text1, "Bürostühle");
    SetText(record.Text2, "zwölf Stück");
    SetText(record.Betrag1, "000001234,50");
    SetText(record.Betrag2, "000000034-50");
    SetText(record.Waehrung, "USD");
    books.Insert(1, TableOpdebi, record);
    ASSERT_EQ(1, Init(""));
    const Item d = Next(3);
    EXPECT_EQ(2, d.Code);
    EXPECT_STREQ("10000", d.Konto);
    EXPECT_STREQ("RE 4711", d.Referenz1);
    EXPECT_STREQ("AU 815", d.Referenz2);
    EXPECT_STREQ("15.03.1998", d.Datum1);
    EXPECT_STREQ("01.04.1998", d.Datum2);
    EXPECT_STREQ("", d.Datum3);
    EXPECT_EQ("Bürostühle", TextOf(d.Text1));
    EXPECT_EQ("zwölf Stück", TextOf(d.Text2));
    EXPECT_STREQ("1.234,50", d.Betrag1);
    EXPECT_STREQ("-34,50", d.Betrag2);
    EXPECT_STREQ("USD", d.Waehrung);
    EXPECT_EQ(-40, Next().Code);
}

TEST_F(OpenItemCursor, DatesFollowTheFiscalCalendar)
{
    MandantOptions fromJuly;
    fromJuly.FirstFiscalMonth = 7;
    books.AddMandant(2, fromJuly);
    books.Insert(2, TableOpdebi, MakeOpenItem(1, "10000", "170915", "000000001,00"));
    ASSERT_EQ(1, Init("", 4, true, 2));
    EXPECT_STREQ("15.03.1998", Next().Datum1);
}

TEST_F(OpenItemCursor, EmptyAmountsAreZeroAndAnEmptyCurrencyIsTheMandants)
{
    books.Insert(1, TableOpdebi, MakeOpenItem(1, "10000", "180315", ""));
    ASSERT_EQ(1, Init(""));
    const Item d = Next(1);
    EXPECT_STREQ("0000000000,00", d.Betrag1);
    EXPECT_STREQ("0000000000,00", d.Betrag2);
    EXPECT_STREQ("DEM", d.Waehrung);
}

TEST_F(OpenItemCursor, OutputsMayBeLeftOut)
{
    Add(1, "10000");
    Add(2, "10000");
    const auto step = [] {
        return VARK_HoleOP(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, 0, nullptr,
                           nullptr, nullptr);
    };
    ASSERT_EQ(1, Init(""));
    EXPECT_EQ(1, step());
    EXPECT_EQ(2, step());
}

TEST_F(OpenItemCursor, ABadFormKeepsTheCursor)
{
    Add(1, "10000");
    char out[17] = "-";
    ASSERT_EQ(1, Init(""));
    const Item d = Next(0);
    EXPECT_EQ(-20, d.Code);
    EXPECT_EQ(formMessage, books.TakeBoxes());
    EXPECT_STREQ("-", d.Konto) << "nothing was read";
    EXPECT_EQ(-20, VARK_HoleOP(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, 4, out,
                               nullptr, nullptr));
    EXPECT_EQ(-20, VARK_HoleOP(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, 4,
                               nullptr, out, nullptr));
    EXPECT_EQ(2, Next().Code);
}

TEST_F(OpenItemCursor, RefusesInItsOrder)
{
    for (const int32_t kontoart : {0, 1, 8, -1}) {
        EXPECT_EQ(-7, Init("4711", kontoart, true, 9));
        EXPECT_EQ(kindMessage, books.TakeBoxes());
    }
    EXPECT_EQ(-5, Init("4711", 4, true, 9));
    EXPECT_EQ(mandantMessage, books.TakeBoxes());
    EXPECT_EQ(-10, Init("4711"));
    EXPECT_EQ(accountMessage, books.TakeBoxes());
    EXPECT_EQ(-10, Init("10000", 2)) << "a Debitor is no Kreditor";
    EXPECT_EQ(accountMessage, books.TakeBoxes());
    EXPECT_EQ(0, Init("10000"));
    EXPECT_EQ(-10, Init("4711", 4, false));
    EXPECT_EQ(Lines{}, books.TakeBoxes());
}

TEST_F(OpenItemCursor, NeedsAnInit)
{
    EXPECT_EQ(-40, Next().Code);
    EXPECT_EQ(-40, Next(0).Code) << "before the form is looked at";
    ASSERT_EQ(1, VARK_InitHoleKonto(1, 4, "", 1));
    EXPECT_EQ(-40, Next().Code);
    Add(1, "10000");
    ASSERT_EQ(1, Init(""));
    EXPECT_EQ(1, VARK_BeendeHolen());
    EXPECT_EQ(-40, Next().Code);
}

TEST_F(OpenItemCursor, AFilterDoesNotOutliveItsCursor)
{
    AddSix();
    ASSERT_EQ(1, Init("10001"));
    EXPECT_EQ((Lines{"R1", "R2", "R3", "R4", "R5", "R6"}), All(""));
}

TEST_F(OpenItemCursor, AVanishedItemEndsIt)
{
    AddSix();
    ASSERT_EQ(1, Init(""));
    VARK_SchliesseDB();
    books.EmptyTable(1, TableOpdebi);
    EXPECT_EQ(-39, Next().Code);
    EXPECT_EQ(-40, Next().Code);
}

TEST_F(OpenItemCursor, OtherCallsMayComeInBetween)
{
    books.AddMandant(2);
    AddSix();
    ASSERT_EQ(1, Init("10000"));
    EXPECT_STREQ("R1", Next().Referenz1);
    EXPECT_EQ(0, VARK_ExistiertKonto(2, "10000", 4));
    EXPECT_STREQ("R3", Next().Referenz1);
    EXPECT_EQ(1, VARK_ExistiertKonto(1, "10000", 4));
    EXPECT_EQ(2, Next().Code);
}

TEST_F(OpenItemCursor, LeavesTheTablesAsItFoundThem)
{
    AddSix();
    books.AddMandant(2);
    ThreadContext *context = nullptr;
    ASSERT_EQ(1, EnterExport(context));
    ASSERT_EQ(1, VARK_ExistiertKonto(1, "10000", 4));
    const auto counts = [&] {
        std::vector<int32_t> all(context->OpenCounts, context->OpenCounts + slotCount);
        all[TableFista] = 0; // comes and goes with the selection of the Mandant
        return all;
    };
    const std::vector<int32_t> before = counts();
    ASSERT_EQ(6u, All("").size());
    ASSERT_EQ(0, Init("10002"));
    ASSERT_EQ(1, Init("10001"));
    ASSERT_EQ(0, Init("", 2));
    ASSERT_EQ(1, Init(""));
    VARK_BeendeHolen();
    EXPECT_EQ(before, counts());
    ASSERT_EQ(1, Init(""));
    ASSERT_EQ(0, VARK_ExistiertKonto(2, "10000", 4)) << "closes the table";
    VARK_BeendeHolen();
    EXPECT_EQ(before, counts());
}

TEST_F(OpenItemCursor, FailuresOfTheRecordStore)
{
    AddSix();
    ASSERT_EQ(1, Init("10001"));
    VARK_BeendeHolen();
    const auto failing = [&](uint16_t operation, int n) {
        FailEngineOperation(operation, n, 2);
        const int32_t code = Init("10001");
        StopEngineFaults();
        return code;
    };
    EXPECT_EQ(-3, failing(operationGetEqual, 1)) << "the Mandant";
    EXPECT_EQ(-3, failing(operationGetEqual, 2)) << "the account";
    EXPECT_EQ(-3, failing(operationOpen, 1));
    EXPECT_EQ(-3, failing(operationGetFirst, 1));
    EXPECT_EQ(-3, failing(operationGetNext, 1));
    EXPECT_EQ(-40, Next().Code);
    for (const uint16_t operation : {operationGetEqual, operationGetNext}) {
        ASSERT_EQ(1, Init("10001"));
        FailEngineOperation(operation, 1, 2);
        EXPECT_EQ(-3, Next().Code);
        StopEngineFaults();
        EXPECT_EQ(-40, Next().Code);
    }
}
