// The table of reports behind `vark bericht`: how periods, accounts, own options and outputs reach a report,
// and how each of them is refused. On sample books; Mandant 2 begins its fiscal year in July.
#include "tests/tools/program.h"
#include "tools/common/exit_codes.h"
#include "tools/vark/reasons.h"
#include "tools/vark/report_period.h"
#include "tools/vark/report_table.h"

#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <initializer_list>
#include <iterator>
#include <set>
#include <sstream>
#include <sys/stat.h>
#include <thread>

using namespace tests;
namespace fs = std::filesystem;

namespace {

bool Contains(const std::string &text, const std::string &part)
{
    return text.find(part) != std::string::npos;
}

tools::Mandant MandantFrom(int firstMonth)
{
    tools::Mandant mandant{};
    mandant.LowerYear = "1997";
    mandant.UpperYear = "1998";
    mandant.FirstMonth = firstMonth;
    return mandant;
}

constexpr unsigned anyForm =
    cli::PeriodMonth | cli::PeriodQuarter | cli::PeriodYear | cli::PeriodDays | cli::PeriodPer;

// The fields of the caller's block that a period becomes, or why it is refused.
std::string BlockOf(const cli::PeriodText &text, int firstMonth, unsigned forms = anyForm, int archive = 0)
{
    const tools::Mandant mandant = MandantFrom(firstMonth);
    ReportParams params{};
    try {
        cli::PutPeriod(cli::ReadPeriod(text, {forms, mandant, archive, "--"}), params);
    } catch (const cli::Refusal &refusal) {
        return std::string("refused ") + refusal.what();
    } catch (const tools::UsageError &error) {
        return std::string("usage ") + error.what();
    }
    return std::to_string(params.ParamFlags) + " " + std::to_string(params.Zeitraum) + " " +
           std::to_string(params.JahrIndex) + " " + params.VonDatum + "-" + params.BisDatum;
}

struct Reports : testing::Test {
    TemporaryDirectory Directory;
    fs::path Books = Directory.Path / "buch";

    void SetUp() override { ASSERT_EQ(0, tests::Books({"beispiel", Books.string()}).ExitCode); }

    // The report, with what was done in its dialog as a log.
    Result Make(std::vector<std::string> arguments)
    {
        fs::remove(Directory.Path / "log");
        arguments.insert(arguments.begin(), {"--config", Books.string(), "bericht"});
        return tests::Run({VARK_PROGRAM, std::move(arguments), "", {{"VARK_UI_LOG", File("log")}}});
    }
    std::string File(const char *name) const { return (Directory.Path / name).string(); }
    std::string Log() const { return ReadFile(Directory.Path / "log"); }
};

} // namespace

TEST(ReportTable, NamesEachReportOnceWithADialogAndAnExample)
{
    std::set<std::string> names;
    for (const cli::ReportRow &row : cli::ReportTable()) {
        EXPECT_TRUE(names.insert(row.Name).second) << row.Name;
        EXPECT_NE(row.Make, nullptr) << row.Name;
        EXPECT_TRUE(row.Dialog >= 110 && row.Dialog <= 132) << row.Name;
        EXPECT_NE(std::string(row.Example), "") << row.Name;
        for (const cli::OwnOption &option : row.Options) {
            EXPECT_EQ(option.Use == cli::ControlUse::Choose, option.Control == 0) << option.Name;
            EXPECT_EQ(option.Use == cli::ControlUse::Choose, !option.Choices.empty()) << option.Name;
            EXPECT_EQ(option.Use == cli::ControlUse::Type, option.MostCharacters != 0) << option.Name;
        }
    }
    EXPECT_EQ(names.size(), 18u);
}

// Flags: 1 period code, 2 dates, 4 year. Years are counted from 1980.
TEST(ReportPeriods, BecomeTheFieldsOfTheBlock)
{
    EXPECT_EQ(BlockOf({}, 1), "0 0 0 -");
    EXPECT_EQ(BlockOf({.Monat = "3", .Jahr = "1998"}, 1), "5 3 18 -");
    EXPECT_EQ(BlockOf({.Monat = "12"}, 1), "5 12 18 -"); // of the last year that can be posted to
    EXPECT_EQ(BlockOf({.Quartal = "2", .Jahr = "1997"}, 1), "5 14 17 -");
    EXPECT_EQ(BlockOf({.Jahr = "1998"}, 1), "5 17 18 -");
    EXPECT_EQ(BlockOf({.VonDatum = "1.2.98", .BisDatum = "28.02.1998"}, 1), "3 0 0 010298-280298");
    EXPECT_EQ(BlockOf({.Per = "31.3.98"}, 1), "3 0 0 010198-310398");
}

// A fiscal year from July: August is its month 2, June its month 12 in the next calendar year.
TEST(ReportPeriods, CountMonthsByTheCalendarWhereTheFiscalYearBeginsLater)
{
    EXPECT_EQ(BlockOf({.Monat = "8", .Jahr = "1998"}, 7), "5 2 18 -");
    EXPECT_EQ(BlockOf({.Monat = "6", .Jahr = "1998"}, 7), "5 12 17 -");
    EXPECT_EQ(BlockOf({.Monat = "6"}, 7), "5 12 18 -");
    EXPECT_EQ(BlockOf({.Per = "31.3.98"}, 7), "3 0 0 010797-310398");
    EXPECT_EQ(BlockOf({.Jahr = "1998"}, 7), "5 17 18 -");
    // The tax reports: quarters and years of the calendar, months in their fiscal year.
    constexpr unsigned tax = cli::PeriodMonth | cli::PeriodQuarter | cli::PeriodYear | cli::PeriodCalendar;
    EXPECT_EQ(BlockOf({.Quartal = "1", .Jahr = "1999"}, 7, tax), "5 13 19 -");
    EXPECT_EQ(BlockOf({.Monat = "6", .Jahr = "1998"}, 7, tax), "5 12 17 -");
}

TEST(ReportPeriods, AreRefusedByTheNameOfTheirOption)
{
    const std::string years =
        "Das Datum muß innerhalb der bebuchbaren Geschäftsjahre liegen (1997 und 1998).";
    EXPECT_EQ(BlockOf({.Monat = "13", .Jahr = "1998"}, 1),
              "usage --monat: „13“ ist keine Zahl von 1 bis 12.");
    EXPECT_EQ(BlockOf({.Monat = "1", .Jahr = "1999"}, 1), "refused --monat: " + years);
    EXPECT_EQ(BlockOf({.Monat = "6", .Jahr = "1997"}, 7), "refused --monat: " + years);
    EXPECT_EQ(BlockOf({.Quartal = "5"}, 1), "usage --quartal: „5“ ist keine Zahl von 1 bis 4.");
    EXPECT_EQ(BlockOf({.Jahr = "1996"}, 1), "refused --jahr: " + years);
    EXPECT_EQ(BlockOf({.Jahr = "achtundneunzig"}, 1),
              "usage --jahr: „achtundneunzig“ ist keine Zahl von 0 bis 9999.");
    EXPECT_EQ(BlockOf({.Per = "29.2.98"}, 1), "usage --per: „29.2.98“ nennt einen Tag, den es nicht gibt.");
    EXPECT_EQ(BlockOf({.Per = "1.13.98"}, 1), "usage --per: „1.13.98“ nennt einen Monat, den es nicht gibt.");
    EXPECT_EQ(BlockOf({.Per = "1.1.98x"}, 1), "usage --per: „1.1.98x“ ist kein Datum der Form TT.MM.JJJJ.");
    EXPECT_EQ(BlockOf({.VonDatum = "2.2.98", .BisDatum = "1.2.98"}, 1),
              "usage --von-datum liegt hinter --bis-datum.");
    EXPECT_EQ(BlockOf({.VonDatum = "1.2.98"}, 1), "usage --von-datum und --bis-datum gehören zusammen.");
    EXPECT_EQ(BlockOf({.VonDatum = "31.12.97", .BisDatum = "1.1.98"}, 1),
              "refused --von-datum und --bis-datum müssen im gleichen Geschäftsjahr liegen.");
    EXPECT_EQ(BlockOf({.Monat = "1", .Per = "1.1.98"}, 1),
              "usage Diese Angaben passen nicht zusammen: --monat und --per.");
    EXPECT_EQ(BlockOf({.Jahr = "1998", .Per = "1.1.98"}, 1),
              "usage Diese Angaben passen nicht zusammen: --per und --jahr.");
}

TEST(ReportPeriods, LieInTheArchiveThatIsAskedFor)
{
    EXPECT_EQ(BlockOf({.Monat = "3"}, 1, anyForm, 1993), "5 3 13 -");
    EXPECT_EQ(BlockOf({.Monat = "3", .Jahr = "1998"}, 1, anyForm, 1993),
              "refused --monat: Das Datum muß innerhalb des Archivjahres liegen (1993).");
}

TEST_F(Reports, WriteEveryOutputThatIsNamed)
{
    const Result result = Make({"susa", "--mandant", "1", "--per", "31.3.98", "--pdf", File("a.pdf"),
                                "--html", File("a.html"), "--json", File("a.json"), "--csv"});
    EXPECT_EQ(0, result.ExitCode) << result.Err;
    EXPECT_TRUE(Contains(result.Out, "Konto;Bezeichnung"));
    EXPECT_EQ("%PDF", ReadFile(File("a.pdf")).substr(0, 4));
    EXPECT_TRUE(Contains(ReadFile(File("a.html")), "<html"));
    EXPECT_EQ('{', ReadFile(File("a.json")).front());
}

TEST_F(Reports, TakeADashAndAPipeForAFile)
{
    const Result dash = Make({"susa", "--mandant", "1", "--per", "31.3.98", "--csv", "-"});
    EXPECT_EQ(0, dash.ExitCode) << dash.Err;
    EXPECT_TRUE(Contains(dash.Out, "Konto;Bezeichnung"));
    ASSERT_EQ(0, mkfifo(File("pipe").c_str(), 0600));
    std::string read;
    std::thread reader([&] { read = ReadFile(File("pipe")); });
    const Result piped = Make({"susa", "--mandant", "1", "--per", "31.3.98", "--csv", File("pipe")});
    // So that the reader ends whatever became of the program.
    const int end = open(File("pipe").c_str(), O_RDWR | O_NONBLOCK);
    close(end);
    reader.join();
    EXPECT_EQ(0, piped.ExitCode) << piped.Err;
    EXPECT_EQ(dash.Out, read);
    EXPECT_TRUE(fs::is_fifo(File("pipe")));
}

TEST_F(Reports, RefuseTwoOutputsOnOneStream)
{
    const Result result = Make({"susa", "--mandant", "1", "--csv", "--json"});
    EXPECT_EQ(2, result.ExitCode);
    EXPECT_TRUE(Contains(result.Err, "vark: Auf die Standardausgabe paßt eines: --csv oder --json."))
        << result.Err;
}

TEST_F(Reports, TakeAnAccountByItsKuerzelAndOfWhateverKind)
{
    const Result result = Make({"susa", "--mandant", "1", "--per", "31.3.98", "--konto", "BERGENKO"});
    EXPECT_EQ(0, result.ExitCode) << result.Err;
    EXPECT_TRUE(Contains(result.Out, "Debitoren 10400")) << result.Out;
    const Result unknown = Make({"susa", "--mandant", "1", "--konto", "4711"});
    EXPECT_EQ(1, unknown.ExitCode);
    EXPECT_EQ("vark: --konto: Ein Konto „4711“ gibt es nicht.\n", unknown.Err);
    const Result mixed = Make({"susa", "--mandant", "1", "--konto", "1810", "--bis", "1820"});
    EXPECT_EQ(2, mixed.ExitCode);
    EXPECT_TRUE(Contains(mixed.Err, "passen nicht zusammen: --konto und --bis."));
}

TEST_F(Reports, TellAnEmptyRange)
{
    const Result backwards = Make({"susa", "--mandant", "1", "--von", "5000", "--bis", "4000"});
    EXPECT_EQ(2, backwards.ExitCode);
    EXPECT_TRUE(Contains(backwards.Err, "vark: --von liegt hinter --bis: Der Bereich ist leer.\n"));
    const Result between = Make({"susa", "--mandant", "1", "--per", "31.3.98", "--von", "5", "--bis", "6"});
    EXPECT_EQ(0, between.ExitCode);
    EXPECT_EQ("vark: Im Bereich liegt keine Kontonummer (Art Sachkonto).\n", between.Err);
}

TEST_F(Reports, HaveTheirOwnOptionsDoneInTheirDialog)
{
    const Result result = Make({"ustva", "--mandant", "1", "--monat", "3", "--jahr", "1998", "--berichtigt"});
    EXPECT_EQ(0, result.ExitCode) << result.Err;
    EXPECT_TRUE(Contains(Log(), "dialog 122\ncheck 1053\n")) << Log();
    EXPECT_TRUE(Contains(result.Out, "Berichtigte Anmeldung"));
    const Result without =
        Make({"ustva", "--mandant", "1", "--monat", "3", "--jahr", "1998", "--berichtigt", "nein"});
    EXPECT_FALSE(Contains(without.Out, "Berichtigte Anmeldung"));
    const Result wrong = Make({"ustva", "--mandant", "1", "--berichtigt", "vielleicht"});
    EXPECT_EQ(2, wrong.ExitCode);
    EXPECT_TRUE(Contains(wrong.Err, "--berichtigt: „vielleicht“ statt ja oder nein."));
}

// Printing the return locks its period: that is to be said twice, and only then is the box answered with yes.
TEST_F(Reports, LockAPeriodOnlyWhenThatIsAskedFor)
{
    WriteFile(Books / "vark.ini",
              ReadFile(Books / "vark.ini") + "[RS]\nDrucker=datei:" + File("a.pdf") + "\n");
    const std::vector<std::string> asked = {"ustva", "--mandant", "1",    "--monat",
                                            "3",     "--jahr",    "1998", "--drucken"};
    const Result refused = Make(asked);
    EXPECT_EQ(2, refused.ExitCode);
    EXPECT_TRUE(Contains(refused.Err, "--sperren")) << refused.Err;
    EXPECT_FALSE(fs::exists(File("a.pdf")));
    std::vector<std::string> agreed = asked;
    agreed.push_back("--sperren");
    const Result printed = Make(agreed);
    EXPECT_EQ(0, printed.ExitCode) << printed.Err;
    EXPECT_EQ("", printed.Out + printed.Err);
    EXPECT_EQ("%PDF", ReadFile(File("a.pdf")).substr(0, 4));
    EXPECT_EQ(2, Make({"ustva", "--mandant", "1", "--sperren"}).ExitCode);
}

TEST_F(Reports, SayWhichOptionTheirDialogDoesNotTake)
{
    const Result result = Make({"bilanz", "--mandant", "1", "--ebene", "4"});
    EXPECT_EQ(2, result.ExitCode);
    EXPECT_TRUE(Contains(result.Err, "vark: --ebene: „4“ statt 1, 2 oder 3.")) << result.Err;
    const Result long_ = Make({"umsatzstatistik", "--mandant", "1", "--land", "GERMANY"});
    EXPECT_EQ(2, long_.ExitCode);
    EXPECT_TRUE(Contains(long_.Err, "--land: „GERMANY“ hat nicht 1 bis 3 Zeichen.")) << long_.Err;
}

namespace {

// A report on the sample books with what only this choice makes it say: in its output, and in the log of what
// was done in its dialog.
struct Case {
    const char *Arguments; // words behind "bericht"
    std::vector<std::string> Says;
    std::vector<std::string> Lacks = {};
    const char *Done = ""; // in its dialog
};

std::vector<std::string> Words(const std::string &text)
{
    std::istringstream in(text);
    return {std::istream_iterator<std::string>(in), {}};
}

} // namespace

namespace {

using Cells = std::vector<std::string>;

// The sum of a column of a report in CSV over the rows that `counts` takes; their texts hold no semicolon.
int64_t SumOf(const std::string &csv, size_t column, const std::function<bool(const Cells &)> &counts)
{
    std::istringstream in(csv);
    int64_t sum = 0;
    std::string line;
    std::getline(in, line); // the headings
    while (std::getline(in, line)) {
        Cells cells;
        std::istringstream parts(line.substr(0, line.find('\r')) + ";");
        for (std::string cell; std::getline(parts, cell, ';');) {
            cells.push_back(cell);
        }
        if (!counts(cells)) continue;
        std::string digits = cells.at(column);
        EXPECT_EQ(digits.size() - 3, digits.find(',')) << line;
        std::erase(digits, ',');
        sum += std::stoll(digits);
    }
    return sum;
}

} // namespace

TEST_F(Reports, ClosingsOfTheSampleBooksAgree)
{
    struct {
        const char *mandant;
        std::vector<std::string> day;
    } const cases[] = {
        {"1", {"--jahr", "1997"}},   {"1", {"--jahr", "1998"}}, {"1", {"--per", "31.3.98"}},
        {"2", {"--jahr", "1997"}},   {"2", {"--jahr", "1998"}}, {"2", {"--per", "30.6.98"}}, // from July on
        {"3", {"--per", "31.8.98"}},
    };
    int results = 0;
    for (const auto &row : cases) {
        SCOPED_TRACE(std::string("Mandant ") + row.mandant + " " + row.day[1]);
        const auto csv = [&](const char *report, std::initializer_list<const char *> options = {}) {
            std::vector<std::string> arguments = {report, "--mandant", row.mandant};
            arguments.insert(arguments.end(), row.day.begin(), row.day.end());
            arguments.insert(arguments.end(), options.begin(), options.end());
            arguments.emplace_back("--csv");
            const Result result = Make(arguments);
            EXPECT_EQ(0, result.ExitCode) << result.Err;
            return result.Out;
        };
        const std::string bilanz = csv("bilanz");
        const auto isResult = [](const Cells &cells) {
            return cells.at(6).starts_with("Jahres") && cells.at(4).empty();
        };
        const auto isOf = [&](const char *side) {
            return [&isResult, side](const Cells &cells) { return cells.at(0) == side && !isResult(cells); };
        };
        const int64_t aktiva = SumOf(bilanz, 7, isOf("Aktiva"));
        const int64_t result = SumOf(bilanz, 7, isResult);
        EXPECT_GT(aktiva, 0);
        EXPECT_EQ(aktiva - SumOf(bilanz, 7, isOf("Passiva")), result);
        EXPECT_EQ(SumOf(csv("guv"), 8, [](const Cells &) { return true; }), result);
        EXPECT_EQ(bilanz, csv("bilanz", {"--ebene", "1"})) << "data is of accounts, whatever the levels";
        if (result != 0) ++results;
    }
    EXPECT_GT(results, 3);
}

TEST_F(Reports, ComeWithAllTheirOptions)
{
    const Case cases[] = {
        {"kontenplan --mandant 1 --art Debitor --von 10010 --bis 10020", {"Adler-Apotheke"}, {"Kasse"}},
        {"hauptabschluss --mandant 1 --jahr 1998 --liste passiva",
         {"Bilanz Passiva"},
         {"Bilanz Aktiva"},
         "dialog 112\ncheck 1011\n"},
        {"hauptabschluss --mandant 1 --jahr 1998", {"Bilanz Aktiva"}, {}, "dialog 112\n"},
        {"bilanz --mandant 1 --per 31.3.98 --vergleich-per 31.3.97 --ebene 2 --ohne-konten",
         {"31.03.1998", "31.03.1997", "Aktiva", "Passiva"},
         {"Kasse Hauptgeschäft"},
         "dialog 127\ncheck 1046\nselect 1044 1\ncheck 20018\ntext 22990 01.01.1997\ntext 22991 31.03.1997\n"
         "check 1003\nuncheck 1047\n"},
        {"bilanz --mandant 1 --jahr 1998 --nur-bebuchte --kontenstruktur --erste-ebene-unter nein",
         {"Kasse Hauptgeschäft"},
         {},
         "dialog 127\ncheck 1042\ncheck 1041\nuncheck 1048\n"},
        {"bilanz --mandant 2 --monat 6 --vergleich-monat 6 --vergleich-jahr 1998",
         {"Juni 1999", "Juni 1998"},
         {},
         "dialog 127\ncheck 1046\nselect 1044 1\ncheck 20006\ntext 20000 1998\n"},
        {"eroeffnungsbilanz --mandant 1 --jahr 1998 --ebene 1", {"1998"}, {}, "dialog 130\ncheck 1002\n"},
        {"guv --mandant 1 --quartal 1 --jahr 1998 --vergleich-quartal 4 --vergleich-jahr 1997",
         {"1. Quartal 1998", "4. Quartal 1997"},
         {},
         "dialog 124\ncheck 1046\nselect 1044 1\ncheck 20016\ntext 20000 1997\n"},
        {"guv --mandant 2 --jahr 1997", {"1997/98"}},
        {"journal --mandant 1 --von-datum 2.3.98 --bis-datum 3.3.98", {"vom 02.03.1998 bis zum 03.03.1998"}},
        {"journal --mandant 1 --monat 3 --jahr 1998 --buchungsdatum", {"März 1998"}, {}, "check 1018\n"},
        {"kontenblatt --mandant 1 --monat 3 --jahr 1998 --konto 1810", {"Kasse Hauptgeschäft"}, {"Altona"}},
        {"kontenblatt --mandant 1 --jahr 1998 --ohne-buchungen --nur-bebuchte --sammelbuchungen-aufloesen",
         {"Kasse Hauptgeschäft"},
         {},
         "dialog 114\ncheck 1022\ncheck 1023\ncheck 1024\n"},
        {"kostenblatt --mandant 1 --monat 3 --jahr 1998 --konto 300", {"300"}, {}, "dialog 132\n"},
        {"ustva --mandant 1 --quartal 1 --jahr 1998", {"1. Quartal 1998"}, {}, "dialog 122\n"},
        {"verprobung --mandant 1 --jahr 1998", {"1998"}, {}, "dialog 128\n"},
        {"zm --mandant 1 --quartal 1 --jahr 1998", {"1998"}, {}, "dialog 123\n"},
        {"kostensalden --mandant 1 --monat 3 --jahr 1998 --von 300 --bis 420",
         {"300", "März 1998"},
         {},
         "dialog 117\n"},
        {"kostenstellen --mandant 1 --konto 300", {"300"}, {}, "dialog 118\n"},
        {"kostenjournal --mandant 1 --monat 3 --jahr 1998 --mit-stapel",
         {"März 1998"},
         {},
         "dialog 120\ncheck 1034\n"},
        {"kostenaufteilung --mandant 1 --jahr 1998 --konto 300 --mit-stapel",
         {"300"},
         {},
         "dialog 121\ncheck 1034\n"},
        {"op --mandant 1 --art Debitor --gruppierung konto", {"Debitoren"}, {}, "dialog 129\ncheck 1004\n"},
        {"umsatzstatistik --mandant 1 --jahr 1998 --art Debitor --brutto --mindestumsatz 5000 --land D --plz "
         "2",
         {"1998"},
         {},
         "dialog 119\nuncheck 1031\ntext 1005 5000\ntext 1032 D\ntext 1033 2\n"},
    };
    for (const Case &each : cases) {
        const Result result = Make(Words(each.Arguments));
        EXPECT_EQ(0, result.ExitCode) << each.Arguments << "\n" << result.Err;
        for (const std::string &text : each.Says) {
            EXPECT_TRUE(Contains(result.Out, text)) << each.Arguments << " lacks " << text << "\n"
                                                    << result.Out;
        }
        for (const std::string &text : each.Lacks) {
            EXPECT_FALSE(Contains(result.Out, text)) << each.Arguments << " has " << text;
        }
        EXPECT_TRUE(Contains(Log(), each.Done)) << each.Arguments << "\n" << Log();
    }
}
