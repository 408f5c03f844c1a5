// Kostenjournal and Kostenaufteilung: dialogs, failures, and how their sums agree with the Kostenstellen's.
#include "include/vark40.h"
#include "src/frame/lifecycle.h"
#include "tests/support/books.h"
#include "tests/support/recording_engine.h"
#include "tests/support/report_calls.h"
#include "tests/support/report_faults.h"

#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <string>
#include <vector>

using namespace vark;
using namespace vark::test;

namespace {

KobuRecord MakeKobu(const std::string &sortDate, const std::string &object1, const std::string &object2,
                    const std::string &amount, int32_t final = 1, const std::string &konto = "4100",
                    uint8_t flag = 0)
{
    KobuRecord line{};
    line.FinaleBuchung = final;
    SetText(line.Datum, sortDate);
    SetText(line.Kostenobjekt1, Justified(object1));
    SetText(line.Kostenobjekt2, object2.empty() ? "" : Justified(object2));
    SetText(line.Konto, konto.empty() ? "" : Justified(konto));
    line.Flag = flag;
    SetText(line.Betrag, amount);
    return line;
}

using Export = VarkWindow(VARK_CALL *)(int32_t, VarkWindow, ReportParams *);

struct CostReport {
    const char *Name;
    Export Call;
    int Dialog;
    const char *Title;
    const char *Failure;
};

void PrintTo(const CostReport &report, std::ostream *out) { *out << report.Name; }

const CostReport costReports[] = {
    {"Journal", VARK_Kostenjournal, 120, "Kostenjournal", "Das Kostenjournal konnte nicht erstellt werden!"},
    {"Aufteilung", VARK_KostenAufteilung, 121, "Kostenaufteilung",
     "Die Kostenaufteilung konnte nicht erstellt werden!"},
};

struct CostReports : testing::TestWithParam<CostReport> {
    Books books;
    RecordingEngine sent;
    ReportParams params = PeriodOf(3, 17);

    void SetUp() override
    {
        books.AddMandant(1);
        BatRecord bat{};
        bat.Stapel = 16;
        SetText(bat.Teil.Sollkonto, Justified("4100"));
        books.Insert(1, TableBat, bat);
        SplitRecord split{};
        split.Buchungsnummer = 1;
        SetText(split.Sollkonto, Justified("4200"));
        books.Insert(1, TableSplit, split);
        for (const char *year : {"1997", "1998"}) {
            const std::string day = std::strcmp(year, "1997") == 0 ? "150317" : "150318";
            books.Insert(1, TableBube, MakeBube(1, day, "4100", "1200", "000000060,00"), year);
            books.Insert(1, TableSako, MakeSako("4100"), year);
            books.Insert(1, TableKore, MakeKore("100"), year);
            // In both tables there are lines of 1997.
            books.Insert(1, TableKobu, MakeKobu("170315", "100", "", "000000060,00"), year);
        }
        KobuRecord inStapel = MakeKobu("170316", "100", "", "000000007,00", 0, "");
        inStapel.Buchungsnummer = 1;
        books.Insert(1, TableKobu, inStapel);
        inStapel.Buchungsnummer = 0;
        inStapel.Splitnummer = 1;
        books.Insert(1, TableKobu, inStapel);
        EXPECT_EQ(1, VARK_Status());
        sent.Install();
    }
    void TearDown() override { VARK_SchliesseDB(); }

    VarkWindow Call() { return GetParam().Call(1, nullptr, &params); }
    VarkWindow Play(const std::string &instructions)
    {
        return Played("dialog " + std::to_string(GetParam().Dialog) + "\n" + instructions,
                      [this] { return Call(); });
    }
};

std::string NameOf(const testing::TestParamInfo<CostReport> &info) { return info.param.Name; }

INSTANTIATE_TEST_SUITE_P(Both, CostReports, testing::ValuesIn(costReports), NameOf);

} // namespace

TEST_P(CostReports, DialogHasItsControls)
{
    EXPECT_NE(nullptr, Play(std::string("expect title ") + GetParam().Title +
                            "\nexpect checked 20003\nexpect text 20000 1997\nexpect disabled 22990\n"
                            "expect text 1034 inkl. &Stapel\nexpect unchecked 1034\n"
                            "expect checked 20100\nexpect unchecked 20101\n"
                            "check 20018\ntext 22990 1.3.1997\ntext 22991 310397\npress 1\n"));
    EXPECT_EQ("vom 01.03.1997 bis zum 31.03.1997", FieldsOf(sent.Records(0).at(0))["Zeitraum"]);
    EXPECT_EQ(0, int32_t{params.Zeitraum});
    EXPECT_STREQ("010397", params.VonDatum);
    EXPECT_STREQ("310397", params.BisDatum);
    EXPECT_NE(0u, params.ParamFlags & ParamDaten);
}

TEST_P(CostReports, StapelIsClearAtEveryOpening)
{
    EXPECT_NE(nullptr, Play("check 1034\npress 1\n"));
    sent.Calls.clear();
    EXPECT_NE(nullptr, Play("expect unchecked 1034\npress 1\n"));
}

TEST_P(CostReports, RefusedDatesKeepTheDialogOpen)
{
    EXPECT_EQ(nullptr, Play("check 20018\ntext 22990 31.12.1997\ntext 22991 1.1.1998\npress 1\n"
                            "box ok Von- und Bis-Datum müssen im gleichen Geschäftsjahr liegen.\n"
                            "expect focus 22991\n"
                            "text 22990 2.1.1998\npress 1\n"
                            "box ok Das Von-Datum darf nicht hinter dem Bis-Datum liegen!\n"
                            "expect focus 22990\ntext 22990 32.1.1998\npress 1\n"
                            "box ok Unzulässige Tagesangabe!\npress 2\n"));
    EXPECT_TRUE(sent.Calls.empty());
}

TEST_P(CostReports, WhateverFailsTheReportIsWholeOrNotThere)
{
    ExpectWholeOrNotThere({.Installation = &books,
                           .Sent = &sent,
                           .Params = params,
                           .Call =
                               [](ReportParams *block) {
                                   // Lines of the Stapel are looked up as well.
                                   VarkUiPlay("check 1034\npress 1\n", TRUE);
                                   VarkWindow view = GetParam().Call(1, nullptr, block);
                                   VarkUiPlayed(nullptr, 0);
                                   return view;
                               },
                           .Failure = GetParam().Failure,
                           .Judge = [] { EXPECT_EQ(0, GetThreadContext()->OpenCounts[SlotFree29]); }});
}

TEST_P(CostReports, SecondYearsTableIsClosedWithTheReport)
{
    EXPECT_NE(nullptr, Call());
    EXPECT_EQ(0, GetThreadContext()->OpenCounts[SlotFree29]);
    sent.Calls.clear();
    params = PeriodOf(3, 18); // the Mandant's own year: no line of it
    EXPECT_NE(nullptr, Call());
    EXPECT_EQ(GetParam().Dialog == 121 ? 1u : 0u, sent.Records(1).size());
    EXPECT_TRUE(sent.Records(2).empty());
}

TEST_P(CostReports, PostingOfAStapelThatIsNotThereFailsTheReport)
{
    KobuRecord orphan = MakeKobu("170317", "100", "", "000000001,00", 0, "");
    orphan.Buchungsnummer = 99;
    books.Insert(1, TableKobu, orphan);
    EXPECT_NE(nullptr, Call()) << "without the Stapel nothing is looked for";
    EXPECT_EQ(nullptr, Play("check 1034\npress 1\n"));
    const Lines boxes = books.TakeBoxes();
    ASSERT_FALSE(boxes.empty());
    EXPECT_EQ(GetParam().Failure, boxes.back());
    EXPECT_EQ("close 7", sent.Calls.back());
}

TEST_P(CostReports, UnknownMandantGivesNothingAndShowsNothing)
{
    EXPECT_EQ(nullptr, GetParam().Call(9, nullptr, &params));
    EXPECT_EQ(Lines{}, books.TakeBoxes());
    EXPECT_TRUE(sent.Calls.empty());
}

TEST_P(CostReports, BlockOfRandomBytesIsReadWithinItself)
{
    constexpr unsigned seed = 19970930;
    std::mt19937 random(seed);
    struct {
        char Before[64];
        ReportParams Block;
        char After[64];
    } fenced;
    int made = 0;
    for (int round = 0; round < 100; ++round) {
        std::memset(&fenced, 0x5A, sizeof fenced);
        auto *bytes = reinterpret_cast<unsigned char *>(&fenced.Block);
        for (size_t i = 0; i < sizeof fenced.Block; ++i) {
            bytes[i] = static_cast<unsigned char>(random());
        }
        if (round % 2 == 0) fenced.Block.ParamFlags &= ~uint32_t{ParamArchivJahr | ParamEinzeln};
        GetParam().Call(1, nullptr, &fenced.Block);
        made += uint32_t{fenced.Block.ViewResult} == 1 ? 1 : 0;
        for (size_t i = 0; i < sizeof fenced.Before; ++i) {
            ASSERT_EQ(0x5A, fenced.Before[i]) << "seed " << seed << " round " << round;
            ASSERT_EQ(0x5A, fenced.After[i]) << "seed " << seed << " round " << round;
        }
    }
    EXPECT_GT(made, 20);
}

namespace {

struct Kostenaufteilung : testing::Test {
    Books books;
    RecordingEngine sent;
    ReportParams params = PeriodOf(3);

    void SetUp() override
    {
        books.AddMandant(1);
        for (const char *number : {"100", "200", "9010"}) {
            books.Insert(1, TableKore, MakeKore(number));
        }
        books.Insert(1, TableSako, MakeSako("9010"));
        EXPECT_EQ(1, VARK_Status());
        sent.Install();
    }
    void TearDown() override { VARK_SchliesseDB(); }

    VarkWindow Play(const std::string &instructions)
    {
        return Played("dialog 121\n" + instructions,
                      [this] { return VARK_KostenAufteilung(1, nullptr, &params); });
    }
    Lines Numbers() const
    {
        Lines numbers;
        for (const std::string &record : sent.Records(1)) {
            numbers.push_back(FieldsOf(record)["Nummer"]);
        }
        return numbers;
    }
};

} // namespace

TEST_F(Kostenaufteilung, SingleChoiceIsCheckedBeforeThePeriod)
{
    EXPECT_EQ(nullptr, Play("expect text 20056 &einzeln\nexpect hidden 20053\n"
                            "text 20000 1990\ncheck 20056\ntext 20054 777\npress 1\n"
                            "box ok Es existiert kein Konto mit dieser Kontonummer!\nexpect focus 20054\n"
                            "text 20054\npress 1\n"
                            "box ok Es existiert kein Konto mit dieser Kontonummer!\n"
                            "text 20054 100\npress 1\n"
                            "box ok Das Datum muß innerhalb der bebuchbaren Geschäftsjahre liegen!\n"
                            "press 2\n"));
    EXPECT_TRUE(sent.Calls.empty());
}

TEST_F(Kostenaufteilung, KindIsThatOfKostenstellenWhateverTheBlockHolds)
{
    params.ParamFlags |= ParamKontoArt | ParamKonten;
    params.KontoArt = 1;
    SetText(params.SachkontoVon, "1000");
    SetText(params.KostenstelleVon, "200");
    EXPECT_NE(nullptr, Play("expect text 20054 200\npress 1\n"));
    EXPECT_EQ((Lines{"200", "9010"}), Numbers());
    EXPECT_EQ(8, int32_t{params.KontoArt});
    EXPECT_STREQ("1000", params.SachkontoVon) << "the other limits come back as they were";
    EXPECT_STREQ("200", params.KostenstelleVon);
}

TEST_F(Kostenaufteilung, KuerzelNamesAKostenstelle)
{
    EXPECT_NE(nullptr, Play("check 20056\ntext 20054 K2\npress 1\n"));
    EXPECT_EQ(Lines{"200"}, Numbers());
    EXPECT_EQ("200", FieldsOf(sent.Records(0).at(0))["Bereich"]);
    EXPECT_NE(0u, params.ParamFlags & ParamEinzeln);
}

TEST_F(Kostenaufteilung, NumberOfASachkontoIsReachedByARange)
{
    EXPECT_NE(nullptr, Play("check 20056\ntext 20054 9010\npress 1\n"
                            "box ok Es existiert kein Konto mit dieser Kontonummer!\n"
                            "uncheck 20056\ntext 20054 9010\ntext 20055 9010\npress 1\n"));
    EXPECT_EQ(Lines{"9010"}, Numbers());
}

TEST_F(Kostenaufteilung, SumWithoutRoomIsNeverPrinted)
{
    books.Insert(1, TableKobu, MakeKobu("180301", "100", "", "999999999,99"));
    books.Insert(1, TableKobu, MakeKobu("180301", "100", "", "000000000,01"));
    EXPECT_EQ(nullptr, VARK_KostenAufteilung(1, nullptr, &params));
    EXPECT_EQ(Lines{"Die Kostenaufteilung konnte nicht erstellt werden!"}, books.TakeBoxes());
}

TEST_F(Kostenaufteilung, WritesNothing)
{
    books.Insert(1, TableBat, [] {
        BatRecord bat{};
        bat.Stapel = 16;
        SetText(bat.Teil.Sollkonto, Justified("4100"));
        return bat;
    }());
    KobuRecord line = MakeKobu("180301", "100", "", "000000001,00", 0, "");
    line.Buchungsnummer = 1;
    books.Insert(1, TableKobu, line);
    EXPECT_NE(nullptr, Play("check 1034\npress 1\n"));
    EXPECT_EQ("4100", FieldsOf(sent.Records(2).at(0))["Konto"]);
    EXPECT_EQ(HexOf(line), HexOf(books.Read<KobuRecord>(1, TableKobu).at(0)))
        << "the account is filled in for the report alone";
}

TEST(CostReportsAgree, JournalSplitAndMonthsGiveTheSameForEveryKostenstelle)
{
    // The months of a Kostenstelle are what the accounting application adds up when lines become final: Soll
    // less Haben of every line that has it as an object, twice where it is both.
    constexpr unsigned seed = 77;
    std::mt19937 random(seed);
    const auto below = [&random](int end) { return static_cast<int>(random() % static_cast<unsigned>(end)); };
    const std::vector<std::string> objects = {"10", "20", "100", "1000", "30"};
    Books books;
    MandantOptions options;
    options.FirstFiscalMonth = 4;
    books.AddMandant(1, options);
    BatRecord bat{};
    bat.Stapel = 16;
    books.Insert(1, TableBat, bat);
    std::map<std::string, std::vector<int64_t>> months;
    for (const std::string &object : objects) {
        months[object].resize(12);
    }
    for (int i = 1; i <= 400; ++i) {
        const int month = 1 + below(12);
        const std::string day = std::to_string(180000 + month * 100 + 1 + below(28));
        const std::string &first = objects[static_cast<size_t>(below(5))];
        const std::string second = below(2) == 0 ? "" : objects[static_cast<size_t>(below(5))];
        const int64_t amount = below(10) == 0 ? -below(100000) : below(1000000);
        const bool isFinal = below(4) != 0;
        const auto flag = static_cast<uint8_t>(below(2) * 0x20 + below(2) + below(2) * 0x40);
        const std::string konto = std::to_string(4000 + 100 * below(7));
        KobuRecord line = MakeKobu(day, first, second, AmountOf(amount), isFinal ? i : 0, konto, flag);
        if (!isFinal) line.Buchungsnummer = 1;
        if (isFinal) {
            const std::string packed = day.substr(4) + day.substr(2, 2) + day.substr(0, 2);
            books.Insert(1, TableBube, MakeBube(i, packed, konto, "1200", "000000001,00"));
        }
        books.Insert(1, TableKobu, line);
        const int64_t cost = (flag & 0x20) != 0 ? -amount : amount;
        if (!isFinal) continue;
        months[first][static_cast<size_t>(month - 1)] += cost;
        if (!second.empty()) months[second][static_cast<size_t>(month - 1)] += cost;
    }
    for (const auto &[object, amounts] : months) {
        KoreRecord kore = MakeKore(object);
        for (size_t month = 0; month < 12; ++month) {
            SetText(kore.Monat[month], AmountOf(amounts[month]));
        }
        books.Insert(1, TableKore, kore);
    }
    ASSERT_EQ(1, VARK_Status());
    RecordingEngine sent;
    sent.Install();
    for (int code = 1; code <= 17; ++code) {
        for (const bool withStapel : {false, true}) {
            const std::string instructions = withStapel ? "check 1034\npress 1\n" : "press 1\n";
            const std::string what = "seed " + std::to_string(seed) + " period " + std::to_string(code);
            ReportParams params = PeriodOf(code);
            sent.Calls.clear();
            ASSERT_NE(nullptr, VARK_KostenSaldenListe(1, nullptr, &params));
            std::map<std::string, int64_t> ofMonths;
            for (const std::string &record : sent.Records(1)) {
                auto fields = FieldsOf(record);
                ofMonths[fields["Nummer"]] = PfennigOf(fields["Summe"]);
            }
            ASSERT_EQ(objects.size(), ofMonths.size());

            params = PeriodOf(code);
            sent.Calls.clear();
            ASSERT_NE(nullptr, Played(instructions, [&] { return VARK_Kostenjournal(1, nullptr, &params); }));
            std::map<std::string, int64_t> ofJournal; // all lines
            std::map<std::string, int64_t> ofFinal;
            for (const std::string &object : objects) {
                ofFinal[object] = ofJournal[object] = 0;
            }
            for (const std::string &record : sent.Records(1)) {
                auto fields = FieldsOf(record);
                const int64_t cost = PfennigOf(fields["Soll"]) - PfennigOf(fields["Haben"]);
                for (const char *object : {"Kostenobjekt1", "Kostenobjekt2"}) {
                    if (fields[object].empty()) continue;
                    ofJournal[fields[object]] += cost;
                    if (fields["Final"] == "1") ofFinal[fields[object]] += cost;
                }
            }
            EXPECT_EQ(ofMonths, ofFinal) << what;

            params = PeriodOf(code);
            sent.Calls.clear();
            ASSERT_NE(nullptr,
                      Played(instructions, [&] { return VARK_KostenAufteilung(1, nullptr, &params); }));
            std::map<std::string, int64_t> ofSplit;
            std::string kostenstelle;
            for (const std::string &call : sent.Calls) {
                if (call[0] != '1' && call[0] != '2') continue;
                auto fields = FieldsOf(call.substr(4));
                if (call[0] == '1') {
                    kostenstelle = fields["Nummer"];
                    ofSplit[kostenstelle] = 0;
                    continue;
                }
                for (const auto &[name, value] : fields) {
                    if (name.ends_with("Soll")) ofSplit[kostenstelle] += PfennigOf(value);
                    if (name.ends_with("Haben")) ofSplit[kostenstelle] -= PfennigOf(value);
                }
            }
            EXPECT_EQ(ofJournal, ofSplit) << what;
            if (!withStapel) {
                EXPECT_EQ(ofMonths, ofSplit) << what;
            }
        }
    }
    VARK_SchliesseDB();
}
