#include "src/walks/cost_lines.h"

#include "tests/walks/walk_books.h"

using namespace vark;
using namespace vark::test;

namespace {

struct CostLines : WalkBooks {
    static KobuRecord Line(const std::string &sortDate, const std::string &first, const std::string &second,
                           const std::string &text)
    {
        KobuRecord line{};
        SetText(line.Datum, sortDate);
        SetText(line.Kostenobjekt1, Justified(first));
        if (!second.empty()) SetText(line.Kostenobjekt2, Justified(second));
        SetText(line.Text, text);
        SetText(line.Betrag, "000000001,00");
        return line;
    }
    void Add(const KobuRecord &line, const std::string &year = "") { books.Insert(1, TableKobu, line, year); }

    static std::string Texts(CostScan &scan, bool isGood)
    {
        std::string texts;
        while (isGood && scan.Found) {
            texts += TextOf(scan.Line.Text);
            isGood = NextCostLine(scan);
        }
        return isGood ? texts : texts + " failed";
    }
    std::string ByDate(const std::string &von, const std::string &bis, TableId kobu = TableKobu)
    {
        PackedDate first;
        PackedDate last;
        TakePacked(first, von);
        TakePacked(last, bis);
        CostScan scan;
        const bool isGood = BeginCostLines(scan, *context, kobu, first, last);
        return Texts(scan, isGood);
    }
    std::string Of(const std::string &objekt, CostObject which, const std::string &von,
                   const std::string &bis)
    {
        PackedDate first;
        PackedDate last;
        TakePacked(first, von);
        TakePacked(last, bis);
        AccountNumber number;
        SetText(number, Justified(objekt));
        CostScan scan;
        const bool isGood = BeginCostLinesOf(scan, *context, TableKobu, number, which, first, last);
        return Texts(scan, isGood);
    }
    // "Konto Beleg Text", or "missing", or "failed".
    std::string Words(const KobuRecord &line)
    {
        CostWords words;
        bool found = false;
        if (!FindCostWords(*context, line, words, found)) return "failed";
        const std::string all = TextOf(words.Konto) + "|" + TextOf(words.Beleg) + "|" + TextOf(words.Text);
        return found ? all : "missing " + all;
    }
    std::string Account(const KobuRecord &line)
    {
        AccountNumber konto;
        bool found = false;
        if (!FindCostAccount(*context, line, konto, found)) return "failed";
        return found ? TextOf(konto) : "missing " + TextOf(konto);
    }
    static SplitRecord Teil(int32_t buchung, const std::string &soll, const std::string &haben,
                            const std::string &text)
    {
        SplitRecord teil{};
        teil.Buchungsnummer = buchung;
        SetText(teil.Sollkonto, Justified(soll));
        SetText(teil.Habenkonto, Justified(haben));
        SetText(teil.Text, text);
        return teil;
    }
};

} // namespace

TEST_F(CostLines, BothDaysBelongToTheRange)
{
    Add(Line("180314", "10", "", "a"));
    Add(Line("180331", "10", "", "c"));
    Add(Line("180315", "20", "", "b"));
    Add(Line("180401", "10", "", "d"));
    Select();
    EXPECT_EQ("bc", ByDate("150318", "310318"));
    EXPECT_EQ("abcd", ByDate("010118", "311218"));
    EXPECT_EQ("", ByDate("020418", "311218"));
}

TEST_F(CostLines, ACostObjectIsFoundInEachPlaceByItself)
{
    Add(Line("180301", "10", "100", "a"));
    Add(Line("180302", "100", "10", "b"));
    Add(Line("180303", "10", "10", "c"));
    Add(Line("180401", "10", "", "d"));
    Select();
    EXPECT_EQ("ac", Of("10", CostObject::First, "010318", "310318"));
    EXPECT_EQ("bc", Of("10", CostObject::Second, "010318", "310318"));
    EXPECT_EQ("b", Of("100", CostObject::First, "010318", "310318"));
    EXPECT_EQ("cd", Of("10", CostObject::First, "030318", "311218"));
}

TEST_F(CostLines, TheMandantsYearIsReadBesideAnOlderOne)
{
    Add(Line("170301", "10", "", "a"), "1997");
    Add(Line("170302", "10", "", "b"), "1998"); // a line of 1997 in the Mandant's year
    Select();
    CostTables tables{};
    {
        HeldTables held(*context);
        ASSERT_TRUE(HoldCostTables(held, tables));
        EXPECT_EQ(1, tables.Count) << "the Mandant's year is the working year";
        EXPECT_EQ(TableKobu, tables.Tables[0]);
    }
    ASSERT_TRUE(SelectYear(*context, "1997"));
    HeldTables held(*context);
    ASSERT_TRUE(HoldCostTables(held, tables));
    ASSERT_EQ(2, tables.Count);
    EXPECT_EQ("a", ByDate("010117", "311217", tables.Tables[0]));
    EXPECT_EQ("b", ByDate("010117", "311217", tables.Tables[1]));
    Release(held);
    EXPECT_EQ(0, context->OpenCounts[SlotFree29]);
}

TEST_F(CostLines, AFinalLineHasItsOwnAccountAndTheWordsOfItsPosting)
{
    BubeRecord posting = MakeBube(7, "010318", "4100", "1200", "000000001,00");
    SetText(posting.Beleg, "R7");
    SetText(posting.Text, "Miete");
    books.Insert(1, TableBube, posting);
    Select();
    KobuRecord line = Line("180301", "10", "", "eigener Text");
    line.FinaleBuchung = 7;
    line.Buchungsnummer = 99; // the first number counts, whatever the others hold
    line.Splitnummer = 99;
    SetText(line.Konto, Justified("4100"));
    EXPECT_EQ("   4100|R7|Miete", Words(line));
    EXPECT_EQ("   4100", Account(line));
    line.FinaleBuchung = 8;
    EXPECT_EQ("missing    4100||", Words(line));
    SetText(line.Konto, "");
    EXPECT_EQ("", Account(line)) << "no lookup for a final line";
}

TEST_F(CostLines, ALineOfTheFirstTeilbuchungHasTheWordsOfItsBat)
{
    BatRecord bat{};
    bat.Stapel = 16;
    SetText(bat.Beleg, "R8");
    bat.Teil = Teil(0, "4200", "1300", "Strom");
    books.Insert(1, TableBat, bat);
    Select();
    KobuRecord line = Line("180301", "10", "", "");
    line.Buchungsnummer = bat.Buchungsnummer;
    SetText(line.Konto, Justified("9999")); // counts for the account alone
    EXPECT_EQ("   4200|R8|Strom", Words(line));
    EXPECT_EQ("   9999", Account(line));
    SetText(line.Konto, "");
    line.Flag = KobuHaben;
    EXPECT_EQ("   1300|R8|Strom", Words(line));
    EXPECT_EQ("   1300", Account(line));
    line.Buchungsnummer = bat.Buchungsnummer + 1;
    EXPECT_EQ("missing ||", Words(line));
    EXPECT_EQ("missing ", Account(line));
}

TEST_F(CostLines, ALineOfAFurtherTeilbuchungHasItsTextAndTheBelegOfItsBat)
{
    BatRecord bat{};
    bat.Stapel = 16;
    SetText(bat.Beleg, "R9");
    bat.Teil = Teil(0, "4200", "1300", "erste");
    books.Insert(1, TableBat, bat);
    SplitRecord teil = Teil(bat.Buchungsnummer, "4300", "1400", "zweite");
    books.Insert(1, TableSplit, teil);
    SplitRecord orphan = Teil(bat.Buchungsnummer + 1, "4400", "1500", "ohne bat");
    books.Insert(1, TableSplit, orphan);
    Select();
    KobuRecord line = Line("180301", "10", "", "");
    line.Splitnummer = teil.Splitnummer;
    EXPECT_EQ("   4300|R9|zweite", Words(line));
    EXPECT_EQ("   4300", Account(line));
    line.Splitnummer = orphan.Splitnummer;
    EXPECT_EQ("missing ||", Words(line)) << "its bat is not there";
    EXPECT_EQ("   4400", Account(line)) << "the account needs no bat";
    line.Splitnummer = orphan.Splitnummer + 1;
    EXPECT_EQ("missing ||", Words(line));
    EXPECT_EQ("missing ", Account(line));
}

TEST_F(CostLines, FailuresOfTheRecordStoreAreTold)
{
    Add(Line("180301", "10", "", "a"));
    Add(Line("180302", "10", "", "b"));
    Select();
    FailEngineOperation(operationGetGreaterEqual, 1, refused);
    EXPECT_EQ(" failed", ByDate("010118", "311218"));
    FailEngineOperation(operationGetNext, 1, refused);
    EXPECT_EQ("a failed", ByDate("010118", "311218"));
    KobuRecord line = Line("180301", "10", "", "");
    FailEngineOperation(operationGetEqual, 1, refused);
    EXPECT_EQ("failed", Words(line));
    FailEngineOperation(operationGetEqual, 1, refused);
    EXPECT_EQ("failed", Account(line));
    line.Splitnummer = 1;
    FailEngineOperation(operationGetEqual, 1, refused);
    EXPECT_EQ("failed", Words(line));
    line.FinaleBuchung = 1;
    FailEngineOperation(operationGetEqual, 1, refused);
    EXPECT_EQ("failed", Words(line));
}
