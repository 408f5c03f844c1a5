#include "include/vark40.h"
#include "src/frame/lifecycle.h"
#include "src/frame/record_store.h"
#include "src/model/posting_records.h"
#include "tests/support/books.h"
#include "tests/support/engine_faults.h"

#include <gtest/gtest.h>
#include <optional>
#include <thread>

using namespace vark;
using namespace vark::test;

namespace {

constexpr uint16_t operationOpen = 0;
constexpr uint16_t operationGetEqual = 5;
constexpr uint16_t operationGetNext = 6;
constexpr uint16_t operationGetGreaterEqual = 9;

const Lines dateMessage = {"Das Belegdatum ist unzulässig!"};
const Lines formMessage = {"Das Ausgabeformat ist unzulässig!"};
const Lines mandantMessage = {"Der Mandant existiert nicht!"};

// What one call of VARK_HoleBube delivered.
struct Delivered {
    int32_t Code = 0;
    uint32_t Part = 77;
    char Datum[11] = "-";
    char Beleg[9] = "-";
    char Text[40] = "-";
    char Sollkonto[8] = "-";
    uint32_t SollArt = 77;
    char Habenkonto[8] = "-";
    uint32_t HabenArt = 77;
    char Betrag[17] = "-";
    char Prozent[8] = "-";
    char Steuer[17] = "-";
};

Delivered Next(int32_t form = 2)
{
    Delivered d;
    d.Code = VARK_HoleBube(&d.Part, d.Datum, d.Beleg, d.Text, d.Sollkonto, &d.SollArt, d.Habenkonto,
                           &d.HabenArt, form, d.Betrag, d.Prozent, d.Steuer);
    return d;
}

// A call that wants no output at all.
int32_t Step()
{
    return VARK_HoleBube(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, 0, nullptr,
                         nullptr, nullptr);
}

struct PostingCursor : testing::Test {
    Books books;

    void SetUp() override
    {
        books.AddMandant(1);
        for (const char *konto : {"1200", "8400"}) {
            books.Insert(1, TableSako, MakeSako(konto));
        }
        books.Insert(1, TableDebi, MakePersonal("10000"));
        books.Insert(1, TableKred, MakePersonal("70000"));
    }
    void TearDown() override { VARK_SchliesseDB(); }

    void Add(const BubeRecord &record, const std::string &year = "")
    {
        books.Insert(1, TableBube, record, year);
    }
    void AddThree()
    {
        Add(MakeBube(1, "150118", "1200", "8400", "000000001,00"));
        Add(MakeBube(2, "150218", "1200", "8400", "000000002,00"));
        Add(MakeBube(3, "150318", "1200", "8400", "000000003,00"));
    }
    static int32_t Init(const char *date, bool showMessages = true, int32_t mandant = 1)
    {
        return VARK_InitHoleBube(mandant, date, showMessages ? 1 : 0);
    }
    // Belegnummern of all that a cursor from `date` delivers.
    static Lines All(const char *date)
    {
        Lines lines;
        if (Init(date) != 1) return lines;
        Delivered d;
        do {
            d = Next();
            lines.push_back(d.Beleg);
        } while (d.Code == 1);
        EXPECT_EQ(2, d.Code);
        return lines;
    }
    // Steuerprozent of a single posting with these amounts and flags.
    std::string Percent(const std::string &soll, const std::string &haben, uint8_t flags, int32_t form = 2)
    {
        BubeRecord record = MakeBube(9, "150618", "1200", "8400", "");
        SetText(record.Soll, soll);
        SetText(record.Haben, haben);
        record.Steuerflags = flags;
        Add(record);
        EXPECT_EQ(1, Init("15.6.98"));
        const Delivered d = Next(form);
        EXPECT_EQ(2, d.Code);
        VARK_SchliesseDB();
        books.EmptyTable(1, TableBube);
        return d.Prozent;
    }
};

} // namespace

TEST_F(PostingCursor, DeliversInTheOrderOfDates)
{
    Add(MakeBube(2, "150218", "1200", "8400", "000000001,00"));
    Add(MakeBube(3, "010318", "1200", "8400", "000000001,00"));
    Add(MakeBube(1, "150218", "1200", "8400", "000000001,00"));
    Add(MakeBube(4, "310118", "1200", "8400", "000000001,00"));
    EXPECT_EQ((Lines{"B4", "B1", "B2", "B3"}), All("1.1.98"));
}

TEST_F(PostingCursor, FillsEveryOutput)
{
    BubeRecord record = MakeBube(1, "150318", "1200", "10000", "000001234,50");
    SetText(record.Beleg, "RE 4711");
    SetText(record.Text, "Büromöbel");
    SetText(record.Steuer, "000000160,00");
    Add(record);
    ASSERT_EQ(1, Init("1.3.98"));
    const Delivered d = Next(3);
    EXPECT_EQ(2, d.Code);
    EXPECT_EQ(0u, d.Part);
    EXPECT_STREQ("15.03.1998", d.Datum);
    EXPECT_STREQ("RE 4711", d.Beleg);
    EXPECT_EQ("Büromöbel", TextOf(d.Text));
    EXPECT_STREQ("1200", d.Sollkonto);
    EXPECT_EQ(1u, d.SollArt);
    EXPECT_STREQ("10000", d.Habenkonto);
    EXPECT_EQ(4u, d.HabenArt);
    EXPECT_STREQ("1.234,50", d.Betrag);
    EXPECT_STREQ("0,00", d.Prozent);
    EXPECT_STREQ("160,00", d.Steuer);
}

TEST_F(PostingCursor, TellsTheKindsOfAccounts)
{
    Add(MakeBube(1, "150318", "70000", "4711", "000000001,00"));
    ASSERT_EQ(1, Init("1.3.98"));
    const Delivered d = Next();
    EXPECT_EQ(2u, d.SollArt);
    EXPECT_EQ(16u, d.HabenArt) << "in no table";
}

TEST_F(PostingCursor, OutputsMayBeLeftOut)
{
    AddThree();
    ASSERT_EQ(1, Init("1.1.98"));
    EXPECT_EQ(1, Step());
    EXPECT_EQ(1, Step());
    EXPECT_EQ(2, Step());
}

TEST_F(PostingCursor, TheLastOneIsDeliveredWithTwoAndEndsTheCursor)
{
    AddThree();
    ASSERT_EQ(1, Init("1.3.98"));
    const Delivered last = Next();
    EXPECT_EQ(2, last.Code);
    EXPECT_STREQ("3,00", last.Betrag);
    EXPECT_EQ(-40, Next().Code);
}

TEST_F(PostingCursor, BeginsAtOrAfterItsDate)
{
    AddThree();
    EXPECT_EQ((Lines{"B2", "B3"}), All("15.2.98"));
    EXPECT_EQ((Lines{"B3"}), All("16.2.98"));
    EXPECT_EQ((Lines{"B1", "B2", "B3"}), All("010198"));
    EXPECT_EQ(0, Init("16.3.98"));
    EXPECT_EQ(-40, Next().Code);
}

TEST_F(PostingCursor, WithoutADateBeginsWithTheFirst)
{
    AddThree();
    Add(MakeBube(7, "010117", "1200", "8400", "000000007,00"), "1997");
    EXPECT_EQ((Lines{"B1", "B2", "B3"}), All(""));
    EXPECT_EQ((Lines{"B1", "B2", "B3"}), All(nullptr));
}

TEST_F(PostingCursor, WithoutPostingsThereIsNothing)
{
    EXPECT_EQ(0, Init("1.1.98"));
    EXPECT_EQ(0, Init(""));
    EXPECT_EQ(-40, Next().Code);
    EXPECT_EQ(Lines{}, books.TakeBoxes());
}

TEST_F(PostingCursor, ReadsTheYearOfItsDate)
{
    AddThree();
    Add(MakeBube(7, "150617", "1200", "8400", "000000007,00"), "1997");
    EXPECT_EQ((Lines{"B7"}), All("1.1.97"));
    EXPECT_EQ((Lines{"B1", "B2", "B3"}), All("1.1.98"));
}

TEST_F(PostingCursor, RefusesABadDate)
{
    for (const char *date :
         {"32.1.98", "1.13.98", "1.1.0", "x", "1.1.1998 aaaaaaaaaaaa", "1.1.96", "1.1.99"}) {
        EXPECT_EQ(-11, Init(date)) << date;
        EXPECT_EQ(dateMessage, books.TakeBoxes()) << date;
        EXPECT_EQ(-40, Next().Code);
    }
    EXPECT_EQ(0, Init("1.1.1998 aaaaaaaaaa")) << "nineteen characters";
    EXPECT_EQ(-11, Init("32.1.98", false));
    EXPECT_EQ(Lines{}, books.TakeBoxes());
}

TEST_F(PostingCursor, JudgesTheTextOfTheDateBeforeTheMandantAndItsYearAfter)
{
    EXPECT_EQ(-11, Init("32.1.98", true, 9));
    EXPECT_EQ(dateMessage, books.TakeBoxes());
    EXPECT_EQ(-5, Init("1.1.96", true, 9));
    EXPECT_EQ(mandantMessage, books.TakeBoxes());
    EXPECT_EQ(-5, Init("15", true, 9)) << "a bare day is a date also on a new thread";
    EXPECT_EQ(-5, Init("1.1.98", false, 9));
    EXPECT_EQ(mandantMessage, books.TakeBoxes());
}

TEST_F(PostingCursor, ReadsTheDateInTheCalendarOfItsMandant)
{
    MandantOptions fromJuly;
    fromJuly.FirstFiscalMonth = 7;
    books.AddMandant(2, fromJuly);
    // March 1998 is month 9 of the fiscal year 1997.
    books.Insert(2, TableBube, MakeBube(1, "150917", "1200", "8400", "000000001,00"), "1997");
    ASSERT_EQ(0, Init("1.3.98"));
    ASSERT_EQ(1, Init("1.3.98", true, 2));
    const Delivered d = Next();
    EXPECT_EQ(2, d.Code);
    EXPECT_STREQ("15.03.1998", d.Datum);
    EXPECT_EQ(-11, Init("1.3.97", true, 2)) << "still the fiscal year 1996";
}

TEST_F(PostingCursor, NumbersThePartsOfASplit)
{
    const auto add = [&](int32_t nummer, uint16_t status) {
        BubeRecord record = MakeBube(nummer, "150118", "1200", "8400", "000000001,00");
        record.Status = status;
        Add(record);
    };
    add(1, 0);
    add(2, BubeSplitSoll | BubeSplitAnfang);
    add(3, BubeSplitSoll);
    add(4, BubeSplitSoll);
    add(5, 0);
    add(6, BubeSplitHaben | BubeSplitAnfang);
    add(7, BubeSplitHaben);
    add(8, BubeSplitHaben | BubeSplitAnfang);
    ASSERT_EQ(1, Init("1.1.98"));
    for (const uint32_t part : {0u, 1u, 2u, 3u, 0u, 1u, 2u}) {
        const Delivered d = Next();
        EXPECT_EQ(1, d.Code);
        EXPECT_EQ(part, d.Part) << d.Beleg;
    }
    EXPECT_EQ(1u, Next().Part);
}

TEST_F(PostingCursor, ANewCursorBeginsToCountAnew)
{
    for (const int32_t nummer : {1, 2}) {
        BubeRecord record = MakeBube(nummer, "150118", "1200", "8400", "000000001,00");
        record.Status = BubeSplitSoll;
        Add(record);
    }
    ASSERT_EQ(1, Init("1.1.98"));
    EXPECT_EQ(1u, Next().Part);
    ASSERT_EQ(1, Init("1.1.98"));
    EXPECT_EQ(1u, Next().Part);
    EXPECT_EQ(2u, Next().Part);
}

TEST_F(PostingCursor, HidesFoldedLinesAtEveryStep)
{
    for (int32_t nummer = 1; nummer <= 6; ++nummer) {
        BubeRecord record = MakeBube(nummer, "150118", "1200", "8400", "000000001,00");
        if (nummer == 1 || nummer == 3 || nummer == 4 || nummer == 6) record.Status = BubeGefaltet;
        Add(record);
    }
    EXPECT_EQ((Lines{"B2", "B5"}), All("1.1.98"));
    EXPECT_EQ((Lines{"B2", "B5"}), All(""));
}

TEST_F(PostingCursor, OnlyFoldedLinesAreNothing)
{
    BubeRecord record = MakeBube(1, "150118", "1200", "8400", "000000001,00");
    record.Status = BubeGefaltet;
    Add(record);
    EXPECT_EQ(0, Init("1.1.98"));
    EXPECT_EQ(0, Init(""));
    EXPECT_EQ(-40, Next().Code);
}

TEST_F(PostingCursor, AnEmptyDateOfThePostingGivesWayToThatOfItsKey)
{
    BubeRecord record = MakeBube(1, "150118", "1200", "8400", "000000001,00");
    SetText(record.Datum, "");
    Add(record);
    ASSERT_EQ(1, Init(""));
    EXPECT_STREQ("15.01.1998", Next().Datum);
}

TEST_F(PostingCursor, TheGreaterAmountHasTheSignOfTheSollSide)
{
    const auto betrag = [&](const std::string &soll, const std::string &haben) {
        BubeRecord record = MakeBube(1, "150118", "1200", "8400", "");
        SetText(record.Soll, soll);
        SetText(record.Haben, haben);
        Add(record);
        EXPECT_EQ(1, Init(""));
        std::string delivered = Next().Betrag;
        VARK_SchliesseDB();
        books.EmptyTable(1, TableBube);
        return delivered;
    };
    EXPECT_EQ("116,00", betrag("000000116,00", "000000100,00"));
    EXPECT_EQ("116,00", betrag("000000100,00", "000000116,00"));
    EXPECT_EQ("-116,00", betrag("000000100-00", "000000116,00"));
    EXPECT_EQ("116,00", betrag("000000100,00", "000000116-00"));
    EXPECT_EQ("100,00", betrag("", "000000100,00"));
    EXPECT_EQ("0,00", betrag("", ""));
}

TEST_F(PostingCursor, EveryOutputForm)
{
    BubeRecord record = MakeBube(1, "150118", "1200", "8400", "000001234-50");
    SetText(record.Steuer, "");
    record.Steuerflags = BubeSteuerMinus;
    Add(record);
    books.Insert(1, TableSteke, MakeSteke(2, 0, "010100", "16,00", "1776", "1576"));
    const char *const expected[3][3] = {{"-000001234,50", "+16,00", "0000000000,00"},
                                        {"-1234,50", "16,00", "0,00"},
                                        {"-1.234,50", "16,00", "0,00"}};
    for (int32_t form = 1; form <= 3; ++form) {
        ASSERT_EQ(1, Init(""));
        const Delivered d = Next(form);
        EXPECT_STREQ(expected[form - 1][0], d.Betrag);
        EXPECT_STREQ(expected[form - 1][1], d.Prozent);
        EXPECT_STREQ(expected[form - 1][2], d.Steuer);
    }
}

TEST_F(PostingCursor, ABadFormEndsTheCursorAfterTheTexts)
{
    AddThree();
    for (const int32_t form : {0, 4, -1}) {
        ASSERT_EQ(1, Init(""));
        const Delivered d = Next(form);
        EXPECT_EQ(-20, d.Code);
        EXPECT_EQ(formMessage, books.TakeBoxes());
        EXPECT_STREQ("B1", d.Beleg);
        EXPECT_EQ(1u, d.SollArt);
        EXPECT_STREQ("-", d.Betrag);
        EXPECT_EQ(-40, Next().Code);
    }
}

TEST_F(PostingCursor, OneOfTheAmountsIsEnoughToNeedAForm)
{
    AddThree();
    char out[17] = "-";
    const auto with = [&](char *betrag, char *prozent, char *steuer) {
        EXPECT_EQ(1, Init(""));
        return VARK_HoleBube(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, 0,
                             betrag, prozent, steuer);
    };
    EXPECT_EQ(-20, with(out, nullptr, nullptr));
    EXPECT_EQ(-20, with(nullptr, out, nullptr));
    EXPECT_EQ(-20, with(nullptr, nullptr, out));
    EXPECT_EQ(1, with(nullptr, nullptr, nullptr));
    EXPECT_STREQ("-", out);
}

TEST_F(PostingCursor, TakesTheRateThatWasValidAtItsDate)
{
    books.Insert(1, TableSteke, MakeSteke(2, 0, "010418", "16,00", "1776", "1576"));
    books.Insert(1, TableSteke, MakeSteke(2, 1, "010113", "15,00", "1775", "1575"));
    books.Insert(1, TableSteke, MakeSteke(2, 2, "010100", "14,00", "1774", "1574"));
    books.Insert(1, TableSteke, MakeSteke(4, 0, "010100", "07,00", "1771", "1571"));
    const auto rate = [&](const std::string &datum, uint8_t flags) {
        BubeRecord record = MakeBube(1, datum, "1200", "8400", "000000116,00");
        record.Steuerflags = flags;
        Add(record);
        EXPECT_EQ(1, Init(""));
        std::string delivered = Next().Prozent;
        VARK_SchliesseDB();
        books.EmptyTable(1, TableBube);
        return delivered;
    };
    EXPECT_EQ("16,00", rate("010418", 0x02));
    EXPECT_EQ("15,00", rate("310318", 0x02));
    EXPECT_EQ("14,00", rate("311212", 0x02));
    EXPECT_EQ("7,00", rate("010418", 0x04));
    EXPECT_EQ("16,00", rate("010418", 0x62)) << "bits 0x60 do not matter";
    EXPECT_EQ("0,00", rate("010418", 0x60));
    EXPECT_EQ("0,00", rate("010418", 0x00));
    EXPECT_EQ("0,00", rate("010418", 0x06)) << "no such key";
}

TEST_F(PostingCursor, ARateThatHadNotBegunIsNone)
{
    books.Insert(1, TableSteke, MakeSteke(2, 0, "010418", "16,00", "1776", "1576"));
    EXPECT_EQ("16,00", Percent("000000116,00", "000000116,00", 0x02));
    BubeRecord record = MakeBube(1, "310318", "1200", "8400", "000000116,00");
    record.Steuerflags = 0x02;
    Add(record);
    ASSERT_EQ(1, Init(""));
    EXPECT_STREQ("0,00", Next().Prozent);
}

TEST_F(PostingCursor, WorksTheRateOutFromTheAmounts)
{
    books.Insert(1, TableSteke, MakeSteke(2, 0, "010100", "16,00", "1776", "1576"));
    for (const uint8_t flags : {uint8_t{0x08}, uint8_t{0x10}, uint8_t{0x1A}}) {
        EXPECT_EQ("15,00", Percent("000000115,00", "000000100,00", flags));
        EXPECT_EQ("7,00", Percent("000000100,00", "000000107,00", flags));
    }
    EXPECT_EQ("20,00", Percent("000000120,00", "000000100,00", 0x10));
    EXPECT_EQ("1,00", Percent("000000101,00", "000000100,00", 0x10));
    EXPECT_EQ("16,00", Percent("000000116-00", "000000100-00", 0x10)) << "signs do not matter";
    // 9,33 at 7 % is 0,6531, so the tax of 0,65 is still one of 7 %.
    EXPECT_EQ("7,00", Percent("000000009,98", "000000009,33", 0x10));
    // 0,03 on 0,30 fits 11 % (0,033) before it fits 10 %: the search comes from above.
    EXPECT_EQ("11,00", Percent("000000000,33", "000000000,30", 0x10));
}

TEST_F(PostingCursor, ARateThatIsNoWholePercentIsTheQuotient)
{
    EXPECT_EQ("12,50", Percent("000000112,50", "000000100,00", 0x10));
    EXPECT_EQ("25,00", Percent("000000125,00", "000000100,00", 0x10));
    EXPECT_EQ("33,33", Percent("000000004,00", "000000003,00", 0x10));
    EXPECT_EQ("0,00", Percent("000000100,00", "000000100,00", 0x08));
    EXPECT_EQ("+12,50", Percent("000000112,50", "000000100,00", 0x10, 1));
}

TEST_F(PostingCursor, WithoutANetThereIsNoRate)
{
    EXPECT_EQ("  -", Percent("000000100,00", "000000000,00", 0x10));
    EXPECT_EQ("  -", Percent("000000100,00", "", 0x10));
    EXPECT_EQ("  -", Percent("000000300,00", "000000100,00", 0x10)) << "200 % is no percentage of two digits";
}

TEST_F(PostingCursor, NeedsAnInit)
{
    EXPECT_EQ(-40, Next().Code);
    EXPECT_EQ(-40, Step());
    AddThree();
    ASSERT_EQ(1, VARK_InitHoleKonto(1, 1, "", 1));
    EXPECT_EQ(-40, Next().Code);
    EXPECT_EQ(1, VARK_HoleSako(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr)) << "that one goes on";
    EXPECT_EQ(Lines{}, books.TakeBoxes());
}

TEST_F(PostingCursor, BeendeHolenEndsIt)
{
    AddThree();
    EXPECT_EQ(1, VARK_BeendeHolen());
    ASSERT_EQ(1, Init(""));
    EXPECT_EQ(1, VARK_BeendeHolen());
    EXPECT_EQ(-40, Next().Code);
    EXPECT_EQ(1, VARK_BeendeHolen());
}

TEST_F(PostingCursor, ARefusedInitEndsTheCursorBefore)
{
    AddThree();
    ASSERT_EQ(1, Init(""));
    EXPECT_EQ(-11, Init("x"));
    EXPECT_EQ(-40, Next().Code);
}

TEST_F(PostingCursor, AVanishedPostingEndsIt)
{
    AddThree();
    ASSERT_EQ(1, Init(""));
    ASSERT_EQ(1, Next().Code);
    std::thread([&] { // another client removes the second posting
        ThreadContext *other = nullptr;
        ASSERT_EQ(1, EnterExport(other));
        ASSERT_EQ(1, VARK_ExistiertKonto(1, "1200", 1));
        BubeRecord record;
        ASSERT_TRUE(GetFirst(*other, &record, TableBube));
        ASSERT_TRUE(GetNext(*other, &record, TableBube));
        ASSERT_TRUE(Delete(*other, TableBube));
        VARK_SchliesseDB();
    })
        .join();
    EXPECT_EQ(-39, Next().Code);
    EXPECT_EQ(-40, Next().Code);
    EXPECT_EQ(Lines{}, books.TakeBoxes());
}

TEST_F(PostingCursor, SeesWhatOthersAddBehindIt)
{
    AddThree();
    ASSERT_EQ(1, Init("1.3.98"));
    Add(MakeBube(4, "160318", "1200", "8400", "000000004,00"));
    EXPECT_EQ(1, Next().Code);
    EXPECT_EQ(2, Next().Code);
}

TEST_F(PostingCursor, OtherCallsMayComeInBetween)
{
    books.AddMandant(2);
    Add(MakeBube(1, "150117", "1200", "8400", "000000001,00"), "1997");
    Add(MakeBube(2, "150217", "1200", "8400", "000000001,00"), "1997");
    Add(MakeBube(3, "150317", "1200", "8400", "000000001,00"), "1997");
    Add(MakeBube(4, "150417", "1200", "8400", "000000001,00"), "1997");
    books.Insert(1, TableSako, MakeSako("1200"), "1997");
    ASSERT_EQ(1, Init("1.1.97"));
    EXPECT_STREQ("B1", Next().Beleg);
    EXPECT_EQ(1, VARK_ExistiertKonto(1, "8400", 1)) << "leads the thread back to 1998";
    EXPECT_STREQ("B2", Next().Beleg);
    EXPECT_EQ(0, VARK_ExistiertKonto(2, "8400", 1)) << "another Mandant";
    EXPECT_STREQ("B3", Next().Beleg);
    VARK_SchliesseDB();
    EXPECT_EQ(2, Next().Code);
}

TEST_F(PostingCursor, TwoThreadsHaveTwoCursors)
{
    AddThree();
    ASSERT_EQ(1, Init(""));
    EXPECT_STREQ("B1", Next().Beleg);
    std::thread([&] {
        EXPECT_EQ(-40, Next().Code);
        ASSERT_EQ(1, Init("1.3.98"));
        EXPECT_STREQ("B3", Next().Beleg);
        EXPECT_EQ(-40, Next().Code);
        VARK_SchliesseDB();
    }).join();
    EXPECT_STREQ("B2", Next().Beleg);
}

TEST_F(PostingCursor, LeavesTheTablesAsItFoundThem)
{
    AddThree();
    ThreadContext *context = nullptr;
    ASSERT_EQ(1, EnterExport(context));
    ASSERT_EQ(1, VARK_ExistiertKonto(1, "1200", 1));
    const auto counts = [&] {
        std::vector<int32_t> all(context->OpenCounts, context->OpenCounts + slotCount);
        all[TableFista] = 0; // comes and goes with the selection of the Mandant
        return all;
    };
    const std::vector<int32_t> before = counts();
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(1, Init("1.3.98"));
        ASSERT_EQ(2, Next().Code);
        EXPECT_EQ(0, Init("16.3.98"));
        EXPECT_EQ(-11, Init("x"));
        ASSERT_EQ(1, Init(""));
    }
    VARK_BeendeHolen();
    EXPECT_EQ(before, counts());
    // A change of Mandant in between forgets what the cursor has counted; the tables stay open for all
    // others.
    books.AddMandant(2);
    ASSERT_EQ(1, Init(""));
    ASSERT_EQ(0, VARK_ExistiertKonto(2, "1200", 1));
    VARK_BeendeHolen();
    EXPECT_EQ(before, counts());
}

TEST_F(PostingCursor, FailuresOfTheRecordStoreAtTheStart)
{
    AddThree();
    ASSERT_EQ(1, Init("1.1.98"));
    VARK_BeendeHolen();
    FailEngineOperation(operationGetGreaterEqual, 1, 2);
    EXPECT_EQ(-3, Init("1.1.98"));
    StopEngineFaults();
    EXPECT_EQ(-40, Next().Code);
    FailEngineOperation(operationGetGreaterEqual, 1, 2);
    EXPECT_EQ(-3, Init(""));
    StopEngineFaults();
    FailEngineOperation(operationGetEqual, 1, 2);
    EXPECT_EQ(-3, Init("1.1.98"));
    StopEngineFaults();
    for (int n = 1; n <= 3; ++n) { // the year has other directories
        FailEngineOperation(operationOpen, n, 2);
        EXPECT_EQ(-3, Init("1.1.97")) << n;
        StopEngineFaults();
        EXPECT_EQ(-40, Next().Code);
    }
    VARK_SchliesseDB();
    EXPECT_EQ(1, Init("1.1.98"));
}

TEST_F(PostingCursor, FailuresOfTheRecordStoreInBetweenEndIt)
{
    AddThree();
    books.Insert(1, TableSteke, MakeSteke(2, 0, "010100", "16,00", "1776", "1576"));
    BubeRecord taxed = MakeBube(0, "010118", "1200", "8400", "000000116,00");
    taxed.Steuerflags = 0x02;
    Add(taxed);
    const auto failing = [&](uint16_t operation, int n) {
        EXPECT_EQ(1, Init(""));
        FailEngineOperation(operation, n, 2);
        const int32_t code = Next().Code;
        StopEngineFaults();
        EXPECT_EQ(-40, Next().Code);
        return code;
    };
    EXPECT_EQ(-3, failing(operationGetEqual, 1)) << "the posting";
    EXPECT_EQ(-3, failing(operationGetEqual, 2)) << "the Soll account";
    EXPECT_EQ(-3, failing(operationGetEqual, 3)) << "the Haben account";
    EXPECT_EQ(-3, failing(operationGetGreaterEqual, 1)) << "the tax rate";
    EXPECT_EQ(-3, failing(operationGetNext, 1)) << "the next posting";
}
