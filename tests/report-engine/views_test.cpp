// Views with windows, as a host opens them and a person - here a script - uses them.
#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "report_support.h"
#include "window-system/include/varkui.h"

using namespace reports;

namespace {

enum Control : int {
    previousPage = 101,
    pageNumber,
    pageCount,
    nextPage,
    smaller,
    zoom,
    larger,
    search,
    searchBack,
    searchOn,
    copy,
    print,
    save,
    state = 115,
    pages = 120
};

// Handles messages until `view` has gone.
void RunUntilClosed(HWND view)
{
    MSG message;
    while (IsWindow(view) != 0 && GetMessageA(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
}

struct Views : testing::Test {
    Directory directory;
    int32_t report = 0;

    void SetUp() override
    {
        setenv("VARK_UI_LOG", directory.At("log").c_str(), 1);
        setenv("VARK_CONFIG_DIR", directory.Path.c_str(), 1); // no settings but those of the test
        setenv("CUPS_SERVER", directory.At("no-scheduler").c_str(), 1);
        setenv("HOME", directory.Path.c_str(), 1);
    }

    // What a person does; a failed step ends up in what Log tells.
    void Play(const std::string &script) const
    {
        setenv("VARK_UI", ("script:" + directory.Write("script", script)).c_str(), 1);
    }

    std::string Log() const { return ReadFile(directory.At("log")); }

    // An open report of 200 lines: six pages.
    void Fill(int lines = 200)
    {
        report = OpenShipped("or_slist.rs", susaId);
        AddSusaHeader(report);
        for (int line = 0; line < lines; ++line) {
            AddSusaLine(report, {.Konto = std::to_string(1000 + line),
                                 .Name = "Konto " + std::to_string(line),
                                 .KumSoll = 100});
        }
    }

    // Opens the view of the report, has it used and returns what went wrong.
    std::string Use(const std::string &script)
    {
        Play(script + "\nclose\n");
        Fill();
        auto *view = static_cast<HWND>(OpenView(report));
        EXPECT_NE(IsWindow(view), 0);
        RunUntilClosed(view);
        const std::string log = Log();
        const size_t complaint = log.find("script:");
        return complaint == std::string::npos ? "" : log.substr(complaint);
    }
};

} // namespace

TEST_F(Views, ShowTheirFirstPageUnderTheirTitle)
{
    EXPECT_EQ(Use("expect title Bericht\n"
                  "expect text 102 1\n"
                  "expect text 103 von 6\n"
                  "expect disabled 101\n"
                  "expect enabled 104\n"
                  "expect focus 120\n"),
              "");
}

TEST_F(Views, NameTheirFieldsToAScreenReader)
{
    EXPECT_EQ(Use("expect label 102 Seite\n"
                  "expect label 106 Vergrößerung\n"
                  "expect label 108 Suchen:\n"),
              "");
}

TEST_F(Views, TurnPagesByButtonKeyAndNumber)
{
    EXPECT_EQ(Use("press 104\n"
                  "expect text 102 2\n"
                  "focus 120\n"
                  "key PageDown\n"
                  "expect text 102 3\n"
                  "key PageUp\n"
                  "expect text 102 2\n"
                  "key End\n"
                  "expect text 102 6\n"
                  "expect disabled 104\n"
                  "key Home\n"
                  "expect text 102 1\n"
                  "focus 102\n"
                  "text 102 4\n"
                  "key Enter\n"
                  "expect focus 120\n"
                  "expect text 102 4\n"
                  "focus 102\n"
                  "text 102 99\n"
                  "key Enter\n"
                  "expect text 102 6\n"),
              "");
}

TEST_F(Views, ZoomInStepsAndByList)
{
    EXPECT_EQ(Use("expect row 106 Seitenbreite\n"
                  "select 106 \"100 %\"\n"
                  "press 107\n"
                  "expect row 106 \"125 %\"\n"
                  "press 105\n"
                  "press 105\n"
                  "expect row 106 \"75 %\"\n"
                  "focus 120\n"
                  "key +\n"
                  "expect row 106 \"100 %\"\n"
                  "key -\n"
                  "expect row 106 \"75 %\"\n"
                  "key Ctrl+0\n"
                  "expect row 106 \"100 %\"\n"
                  "select 106 \"Ganze Seite\"\n"
                  "expect row 106 \"Ganze Seite\"\n"),
              "");
}

TEST_F(Views, FindTextOnAnyPageInBothDirectionsAndAround)
{
    EXPECT_EQ(Use("key Ctrl+f\n"
                  "expect focus 108\n"
                  "text 108 KONTO 150\n"
                  "key Enter\n"
                  "expect text 102 4\n"
                  "key F3\n"
                  "expect text 115 \"Am Ende angekommen, am Anfang weitergesucht.\"\n"
                  "text 108 Konto 19\n"
                  "press 110\n"
                  "expect text 102 5\n"
                  "press 109\n"
                  "expect text 102 1\n"
                  "text 108 gibt es nicht\n"
                  "key F3\n"
                  "expect text 115 Nicht gefunden.\n"
                  "focus 108\n"
                  "key Escape\n"
                  "expect text 108\n"
                  "expect focus 120\n"),
              "");
}

namespace {

std::string Copied()
{
    std::string text(1'000'000, '\0');
    text.resize(static_cast<size_t>(VarkUiCopiedText(text.data(), static_cast<int>(text.size()))));
    return text;
}

std::string CopiedHtml()
{
    std::string html(1'000'000, '\0');
    html.resize(static_cast<size_t>(VarkUiCopiedHtml(html.data(), static_cast<int>(html.size()))));
    return html;
}

constexpr const char *htmlHead = "<html lang=\"de\"><head><meta charset=\"utf-8\"></head><body><table>";

// A row as HTML has it: texts at the left, all behind them at the right.
std::string HtmlRow(const std::string &tag, int texts, const std::vector<std::string> &cells)
{
    const auto cell = [&](size_t i) {
        const char *const align = i < static_cast<size_t>(texts) ? "left" : "right";
        return "<" + tag + " align=\"" + align + "\">" + cells[i] + "</" + tag + ">";
    };
    std::string row = "<tr>";
    for (size_t i = 0; i < cells.size(); ++i) {
        row += cell(i);
    }
    return row + "</tr>";
}

} // namespace

TEST_F(Views, CopyTheWholeReportAsATableWithItsHeadings)
{
    EXPECT_EQ(Use("key Ctrl+a\n"
                  "key Ctrl+c\n"
                  "expect text 115 Kopiert.\n"),
              "");
    const std::vector<std::string> lines = LinesOf(Copied());
    ASSERT_EQ(lines.size(), 202u)
        << "headings, 200 accounts of six pages, the total; no heads, feet and sums of pages";
    EXPECT_EQ(lines[0], "Konto\tBezeichnung\tVortrag Soll\tVortrag Haben\tMonat Soll\tMonat Haben\t"
                        "Kumuliert Soll\tKumuliert Haben\tSumme Soll\tSumme Haben\tSaldo Soll\tSaldo Haben");
    EXPECT_EQ(lines[4], "1003\tKonto 3\t\t\t\t\t1,00\t\t1,00\t\t1,00\t") << "empty cells keep their place";
    EXPECT_EQ(lines[200].substr(0, 15), "1199\tKonto 199\t");
    EXPECT_EQ(lines[201], "\tGesamtsumme\t0,00\t0,00\t0,00\t0,00\t200,00\t0,00\t200,00\t0,00\t200,00\t0,00");
}

TEST_F(Views, CopyTheWholeReportAsATableOfHtmlBesideTheText)
{
    EXPECT_EQ(Use("key Ctrl+a\n"
                  "key Ctrl+c\n"),
              "");
    const std::vector<std::string> lines = LinesOf(CopiedHtml());
    ASSERT_EQ(lines.size(), 204u) << "head, headings, 200 accounts, the total, foot";
    EXPECT_EQ(lines[0], htmlHead);
    EXPECT_EQ(lines[1], HtmlRow("th", 2,
                                {"Konto", "Bezeichnung", "Vortrag Soll", "Vortrag Haben", "Monat Soll",
                                 "Monat Haben", "Kumuliert Soll", "Kumuliert Haben", "Summe Soll",
                                 "Summe Haben", "Saldo Soll", "Saldo Haben"}));
    EXPECT_EQ(lines[5],
              HtmlRow("td", 2, {"1003", "Konto 3", "", "", "", "", "1,00", "", "1,00", "", "1,00", ""}));
    EXPECT_EQ(lines[202], HtmlRow("td", 2,
                                  {"", "Gesamtsumme", "0,00", "0,00", "0,00", "0,00", "200,00", "0,00",
                                   "200,00", "0,00", "200,00", "0,00"}));
    EXPECT_EQ(lines[203], "</table></body></html>");
}

TEST_F(Views, CopyNamesOfAnyCharactersIntoTheirCells)
{
    Play("key Ctrl+a\nkey Ctrl+c\nclose\n");
    report = OpenShipped("or_slist.rs", susaId);
    AddSusaHeader(report);
    AddSusaLine(report, {.Konto = "1000", .Name = "Müller & <Söhne>\tGmbH\nBonn", .KumHaben = 123'456});
    RunUntilClosed(static_cast<HWND>(OpenView(report)));
    EXPECT_EQ(LinesOf(Copied())[1],
              "1000\tM\xFCller & <S\xF6hne> GmbH Bonn\t\t\t\t\t\t1.234,56\t\t1.234,56\t\t1.234,56");
    EXPECT_EQ(LinesOf(CopiedHtml())[2], HtmlRow("td", 2,
                                                {"1000", "M\xFCller &amp; &lt;S\xF6hne&gt; GmbH Bonn", "", "",
                                                 "", "", "", "1.234,56", "", "1.234,56", "", "1.234,56"}));
}

TEST_F(Views, CopyAsTextAloneWhatIsTooLongForATable)
{
    Play("key Ctrl+a\nkey Ctrl+c\nexpect text 115 Kopiert.\nclose\n");
    Fill(60'000);
    RunUntilClosed(static_cast<HWND>(OpenView(report)));
    EXPECT_EQ(Log().find("script:"), std::string::npos) << Log();
    EXPECT_GT(VarkUiCopiedText(nullptr, 0), 60'000 * 30);
    EXPECT_EQ(VarkUiCopiedHtml(nullptr, 0), 0);
}

TEST_F(Views, CopyNothingWhereNothingIsSelected)
{
    EXPECT_EQ(Use("press 111\nexpect text 115 Es ist nichts markiert.\n"), "");
    EXPECT_EQ(VarkUiCopiedText(nullptr, 0), 0);
}

namespace {

// What a person does with the mouse in the pages of a view.
struct Mouse {
    HWND View;

    void Tell(UINT code, LONG x, LONG y, LONG count = 0) const
    {
        NMPICTURE notice = {{GetDlgItem(View, pages), pages, code}, x, y, count};
        SendMessageA(View, WM_NOTIFY, pages, reinterpret_cast<LPARAM>(&notice));
    }
    // The copied text of what is selected now, without its last line end.
    std::string Selected() const
    {
        VarkUiCopyText("", nullptr);
        SendMessageA(View, WM_COMMAND, copy, 0);
        const std::string text = Copied();
        return text.substr(0, text.find_last_not_of('\n') + 1);
    }
};

} // namespace

TEST_F(Views, SelectWordsLinesAndWhatIsDraggedOver)
{
    Play("");
    Fill();
    auto *view = static_cast<HWND>(OpenView(report));
    SendMessageA(view, WM_APP + 1, 0, 0); // as its thread comes to handle messages
    const Mouse mouse = {view};
    // Down the first column to the word of a line.
    LONG y = 0;
    do {
        y += 2;
        ASSERT_LT(y, 900);
        mouse.Tell(PCN_PRESS, 70, y, 2);
    } while (mouse.Selected() != "1003");
    y += 4; // from above the letters to them
    mouse.Tell(PCN_PRESS, 70, y, 3);
    EXPECT_EQ(mouse.Selected(), "1003\tKonto 3\t\t\t\t\t1,00\t\t1,00\t\t1,00\t")
        << "empty cells keep their place";
    EXPECT_EQ(LinesOf(CopiedHtml())[1],
              HtmlRow("td", 2, {"1003", "Konto 3", "", "", "", "", "1,00", "", "1,00", "", "1,00", ""}));
    mouse.Tell(PCN_PRESS, 70, y, 2);
    EXPECT_EQ(mouse.Selected(), "1003");
    EXPECT_EQ(CopiedHtml(), "") << "one cell is no table";
    mouse.Tell(PCN_PRESS, 62, y, 1);
    mouse.Tell(PCN_DRAG, 500, y);
    mouse.Tell(PCN_RELEASE, 500, y);
    EXPECT_EQ(mouse.Selected(), "1003\tKonto 3") << "and no columns that were not dragged over";
    EXPECT_EQ(LinesOf(CopiedHtml())[1], HtmlRow("td", 2, {"1003", "Konto 3"}));
    mouse.Tell(PCN_DRAG, 660, y);
    EXPECT_EQ(mouse.Selected(), "1003\tKonto 3\t\t\t\t\t1,00") << "empty cells keep their place";
    mouse.Tell(PCN_PRESS, 500, y + 40, -1); // with Shift
    EXPECT_NE(mouse.Selected().find("Konto 4"), std::string::npos) << mouse.Selected();
    // From the head over several rows: rows alone, each with all its columns.
    mouse.Tell(PCN_PRESS, 70, 30, 1);
    mouse.Tell(PCN_DRAG, 900, y + 5);
    const std::vector<std::string> rows = LinesOf(mouse.Selected());
    ASSERT_EQ(rows.size(), 4u) << mouse.Selected();
    for (size_t i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(rows[i].substr(0, 4), std::to_string(1000 + i));
        EXPECT_EQ(std::count(rows[i].begin(), rows[i].end(), '\t'), 11) << rows[i];
    }
    // What has no row in it is copied as it stands.
    mouse.Tell(PCN_PRESS, 400, 20, 3);
    EXPECT_NE(mouse.Selected().find("Summen- und Saldenliste"), std::string::npos) << mouse.Selected();
    DestroyWindow(view);
}

namespace {

// A page holds 27 rows: 60 on the left make three pages, 40 on the right go to the second; the totals stand
// on the third.
constexpr const char *twoHalves = R"(
report { id = "tervoKTOBLATT0.0", title = "Test" }
page { gap = 10, head = 0 }
for _, name in ipairs { "head", "line", "total" } do style(name, { height = 10 }) end
columns { { "text", "Text", 45 }, { "soll", "Soll", 40, form = "amount", sum = true } }
local side = ""
record(1, { text("konto", 0, 8), level = 1, beside = true, rows = { "head" }, again = "head",
    emit = function(r) side = r.konto row("head", { text = side }) end,
    close = { rows = { "total" },
        emit = function(sum) row("total", { text = "Summe", soll = sum.soll }) end } })
record(2, { i32("nummer", 0), amount("soll", 78), rows = { "line" },
    emit = function(r) row("line", { text = side .. " " .. r.nummer, soll = r.soll }) end })
)";

HWND OpenTwoHalves(const Directory &directory, int32_t &report)
{
    report = RSOpenReport(directory.Write("or_test.rs", twoHalves).c_str(), "tervoKTOBLATT0.0", 0);
    const auto add = [&](const char *side, int lines) {
        Record().Text(side, 8).Text("", 141).AddTo(report, 1, 149);
        for (int i = 1; i <= lines; ++i) {
            Record().I32(i).Text("", 74).Amount(int64_t{100} * i).Text("", 19).AddTo(report, 2, 110);
        }
    };
    add("links", 60);
    add("rechts", 40);
    return static_cast<HWND>(OpenView(report));
}

} // namespace

TEST_F(Views, FindTextInBothHalvesOfPages)
{
    Play("expect text 103 \"von 3\"\n"
         "key Ctrl+f\n"
         "text 108 rechts 40\n"
         "key Enter\n"
         "expect text 102 2\n"
         "text 108 links 60\n"
         "key F3\n"
         "expect text 102 3\n"
         "text 108 rechts 26\n"
         "key F3\n"
         "expect text 102 1\n"
         "text 108 Summe\n"
         "press 109\n"
         "expect text 102 3\n"
         "text 108 links 27\n"
         "press 109\n"
         "expect text 102 2\n"
         "close\n");
    RunUntilClosed(OpenTwoHalves(directory, report));
    EXPECT_EQ(Log().find("script:"), std::string::npos) << Log();
}

TEST_F(Views, CopyRowsOfBothHalvesWithATabForEachColumn)
{
    Play("");
    HWND view = OpenTwoHalves(directory, report);
    SendMessageA(view, WM_APP + 1, 0, 0); // as its thread comes to handle messages
    const Mouse mouse = {view};
    mouse.Tell(PCN_PRESS, 70, 20, 1);
    mouse.Tell(PCN_DRAG, 900, 400);
    const std::vector<std::string> rows = LinesOf(mouse.Selected());
    ASSERT_GT(rows.size(), 3u);
    EXPECT_EQ(rows[0], "links\t\trechts\t");
    EXPECT_EQ(rows[1], "links 1\t1,00\trechts 1\t1,00");
    const std::string html = CopiedHtml();
    EXPECT_NE(html.find("<tr><td align=\"left\">links 1</td><td align=\"right\">1,00</td>"
                        "<td align=\"left\">rechts 1</td><td align=\"right\">1,00</td></tr>\n"),
              std::string::npos)
        << html;
    DestroyWindow(view);
}

TEST_F(Views, FollowWheelAndScrollBars)
{
    Play("");
    Fill();
    auto *view = static_cast<HWND>(OpenView(report));
    SendMessageA(view, WM_APP + 1, 0, 0);
    const Mouse mouse = {view};
    const auto shown = [&] {
        VARKUIPICTURE now = {};
        SendMessageA(GetDlgItem(view, pages), PCM_GETPICTURE, 0, reinterpret_cast<LPARAM>(&now));
        return now;
    };
    mouse.Tell(PCN_SCROLL, 0, 900);
    EXPECT_EQ(shown().Y, 900);
    mouse.Tell(PCN_SCROLL, 0, 1'000'000'000);
    EXPECT_LT(shown().Y, shown().ContentHeight) << "the end stays in view";
    char number[16] = "";
    GetWindowTextA(GetDlgItem(view, pageNumber), number, sizeof number);
    EXPECT_STREQ(number, "6");
    const LONG before = shown().ContentWidth;
    mouse.Tell(PCN_ZOOM, 100, 100, 2);
    EXPECT_GT(shown().ContentWidth, before);
    mouse.Tell(PCN_ZOOM, 100, 100, -2);
    mouse.Tell(PCN_ZOOM, 100, 100, -2);
    EXPECT_LT(shown().ContentWidth, before);
    DestroyWindow(view);
}

TEST_F(Views, SaveAFileOfAnyForm)
{
    EXPECT_EQ(Use("key Ctrl+s\n"
                  "dialog 140\n"
                  "expect title Bericht speichern\n"
                  "expect text 201 " +
                  directory.At("Summen- und Saldenliste.pdf") +
                  "\n"
                  "press 1\n"
                  "expect text 115 Gespeichert in " +
                  directory.At("Summen- und Saldenliste.pdf") +
                  "\n"
                  "press 113\n"
                  "select 202 \"CSV\"\n"
                  "expect text 201 " +
                  directory.At("Summen- und Saldenliste.csv") +
                  "\n"
                  "press 1\n"
                  "press 113\n"
                  "text 201 ~/a.txt\n"
                  "press 1\n"
                  "press 113\n"
                  "text 201 ~/a.txt\n"
                  "press 1\n"
                  "box no gibt es schon\n"
                  "text 201 ~/Stand 31.12\n"
                  "press 1\n"),
              "");
    EXPECT_TRUE(ReadFile(directory.At("Stand 31.12.pdf")).starts_with("%PDF"))
        << "of the kind that is chosen";
    EXPECT_TRUE(ReadFile(directory.At("Summen- und Saldenliste.pdf")).starts_with("%PDF"));
    EXPECT_NE(ReadFile(directory.At("Summen- und Saldenliste.csv")).find(";Konto 150;"), std::string::npos);
    EXPECT_NE(ReadFile(directory.At("a.txt")).find("Konto 150"), std::string::npos);
}

TEST_F(Views, TellWhyAFileCannotBeWritten)
{
    EXPECT_EQ(Use("press 113\n"
                  "text 201 /gibt/es/nicht/a.pdf\n"
                  "press 1\n"
                  "box ok Das Verzeichnis oder die Datei gibt es nicht.\n"
                  "text 201\n"
                  "press 1\n"
                  "box ok in welche Datei\n"
                  "text 201 ~/\n"
                  "press 1\n"
                  "box ok in welche Datei\n"
                  "press 2\n"),
              "");
}

TEST_F(Views, TellInGermanOfPlacesThatRefuseFilesAndOfFullDisks)
{
    signal(SIGXFSZ, SIG_IGN);
    rlimit before = {};
    getrlimit(RLIMIT_FSIZE, &before);
    const auto save = [&](const std::string &path) {
        return "press 113\ntext 201 " + path + "\npress 1\nbox ok konnte nicht geschrieben werden\npress 2\n";
    };
    // Nobody may make files in /sys.
    Play(save("/sys/a.csv") + save("~/a.csv") + "close\n");
    Fill();
    auto *view = static_cast<HWND>(OpenView(report));
    const rlimit tiny = {8000, before.rlim_max}; // stands for the full disk
    setrlimit(RLIMIT_FSIZE, &tiny);
    RunUntilClosed(view);
    setrlimit(RLIMIT_FSIZE, &before);
    const std::string log = Log();
    EXPECT_TRUE(log.find("Das ist nicht erlaubt.") != std::string::npos ||
                log.find("Der Datenträger ist schreibgeschützt.") != std::string::npos)
        << log;
    EXPECT_NE(log.find("Die Datei ist zu groß."), std::string::npos) << log;
    EXPECT_NE(access(directory.At("a.csv").c_str(), F_OK), 0);
}

TEST_F(Views, TellWhyNothingIsPrinted)
{
    EXPECT_EQ(Use("press 112\n"
                  "dialog 141\n"
                  "press 1\n"
                  "box ok nicht gedruckt\n"
                  "expect text 115\n"),
              "");
}

TEST_F(Views, AskHowToPrintAndSayWhereTheFileWent)
{
    directory.Write("vark.ini", "[RS]\nDrucker=datei:" + directory.At("druck {nummer}") + "\n");
    EXPECT_EQ(Use("key Ctrl+p\n"
                  "dialog 141\n"
                  "expect title Bericht drucken\n"
                  "expect row 301 \"Datei " +
                  directory.At("druck {nummer}") +
                  "\"\n"
                  "expect checked 302\n"
                  "expect text 304 1\n"
                  "expect text 305 6\n"
                  "expect text 306 1\n"
                  "expect row 307 wie der Bericht\n"
                  "press 2\n"
                  "expect text 115\n"
                  "press 112\n"
                  "press 1\n"
                  "expect text 115 \"Gedruckt in die Datei " +
                  directory.At("druck 1.pdf") +
                  ".\"\n"
                  "press 112\n"
                  "check 303\n"
                  "text 304 0\n"
                  "press 1\n"
                  "box ok Der Bericht hat die Seiten 1 bis 6.\n"
                  "text 304 5\n"
                  "text 305 7\n"
                  "press 1\n"
                  "box ok Der Bericht hat die Seiten 1 bis 6.\n"
                  "text 305 4\n"
                  "press 1\n"
                  "box ok Die letzte Seite liegt vor der ersten.\n"
                  "text 304 2\n"
                  "text 306 0\n"
                  "press 1\n"
                  "box ok Es werden 1 bis 999 Exemplare gedruckt.\n"
                  "text 306 1\n"
                  "press 1\n"
                  "expect text 115 \"Gedruckt in die Datei " +
                  directory.At("druck 2.pdf") + ".\"\n"),
              "");
    EXPECT_EQ(PageCountOf(directory.At("druck 1.pdf")), 6);
    const std::vector<std::string> pages = PagesOf(directory.At("druck 2.pdf"));
    ASSERT_EQ(pages.size(), 3u);
    EXPECT_NE(pages[0].find("Seite 2 von 6"), std::string::npos) << pages[0];
    EXPECT_NE(pages[2].find("Seite 4 von 6"), std::string::npos) << pages[2];
}

TEST_F(Views, CloseByEscapeAndByKey)
{
    for (const char *key : {"key Escape\n", "key Ctrl+w\n"}) {
        const pid_t child = fork(); // a window system, and so a script, for each
        if (child == 0) {
            Play(key);
            Fill();
            RunUntilClosed(static_cast<HWND>(OpenView(report)));
            const bool isDone = Log().find("script:") == std::string::npos && AddSusaHeader(report) == 0;
            _exit(isDone && RSCopyReport(report, susaId, 0) == 0 ? 0 : 1);
        }
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0) << key;
    }
}

namespace {

constexpr UINT destroyMessage = WM_APP;

// A frame that goes when it is told.
LRESULT CALLBACK FrameProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == destroyMessage) DestroyWindow(window);
    return DefWindowProcA(window, message, wParam, lParam);
}

HWND MakeFrame()
{
    WNDCLASSA made = {};
    made.lpfnWndProc = FrameProcedure;
    made.lpszClassName = "Rahmen";
    RegisterClassA(&made);
    return CreateWindowExA(0, "Rahmen", "Rahmen", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 50, 60, 800, 700, nullptr,
                           nullptr, nullptr, nullptr);
}

RSWindow OpenChild(int32_t report, HWND frame, uint32_t style = WS_CHILD)
{
    return RSOpenView(report, "Blatt", "%N", frame, 10, 20, 600, 400, style, 0, 65535, 65535, frame);
}

} // namespace

// While a dialog of the view waits, each message comes to its window: the person closes the view, its host
// destroys the window around it.
TEST_F(Views, MayEndWhileADialogOfTheirsIsOpen)
{
    for (const int command : {save, print}) {
        for (const bool isChild : {false, true}) {
            const pid_t child = fork(); // a window system, and so a script, for each
            if (child == 0) {
                Play("");
                Fill();
                HWND frame = isChild ? MakeFrame() : nullptr;
                auto *view = static_cast<HWND>(isChild ? OpenChild(report, frame) : OpenView(report));
                PostMessageA(view, WM_COMMAND, static_cast<WPARAM>(command), 0);
                PostMessageA(isChild ? frame : view, isChild ? destroyMessage : WM_CLOSE, 0, 0);
                RunUntilClosed(view);
                const bool isGone = IsWindow(view) == 0 && RSCopyReport(report, susaId, 0) == 0;
                _exit(isGone ? 0 : 1);
            }
            int status = 0;
            waitpid(child, &status, 0);
            EXPECT_EQ(status, 0) << command << (isChild ? " of a child" : "");
        }
    }
}

TEST_F(Views, SaveAReportThatTheHostHasClosedMeanwhile)
{
    Play("press 113\npress 1\nexpect text 115 \"Gespeichert in " +
         directory.At("Summen- und Saldenliste.pdf") + "\"\nclose\n");
    Fill();
    auto *view = static_cast<HWND>(OpenView(report));
    RSCloseReport(report);
    RunUntilClosed(view);
    EXPECT_EQ(Log().find("script:"), std::string::npos) << Log();
    EXPECT_TRUE(ReadFile(directory.At("Summen- und Saldenliste.pdf")).starts_with("%PDF"));
}

TEST_F(Views, MayEndWhileAnotherThreadPrintsThem)
{
    directory.Write("vark.ini", "[RS]\nDrucker=datei:" + directory.At("{nummer}") + "\n");
    Play("");
    Fill();
    RSWindow view = OpenView(report);
    int printed = 0;
    std::atomic<bool> hasBegun{false};
    std::thread printing([&] {
        while (RSPrintView(view, 0) == 1) {
            ++printed;
            hasBegun = true;
        }
    });
    while (!hasBegun) {
        std::this_thread::yield();
    }
    DestroyWindow(static_cast<HWND>(view));
    printing.join();
    // What was printed is whole, and nothing half lies beside it.
    int found = 0;
    for (const std::string &file : directory.Files()) {
        if (!file.ends_with(".pdf")) continue;
        ++found;
        EXPECT_EQ(PageCountOf(directory.At(file)), 6) << file;
    }
    EXPECT_EQ(found, printed);
    EXPECT_EQ(RSCopyReport(report, susaId, 0), 0);
}

TEST_F(Views, EndWithTheirReportWhenTheHostDestroysThem)
{
    Play("");
    Fill();
    auto *view = static_cast<HWND>(OpenView(report));
    ASSERT_NE(IsWindow(view), 0);
    EXPECT_EQ(IsWindowVisible(view), 0) << "nobody has seen it before messages are handled";
    EXPECT_NE(DestroyWindow(view), 0);
    EXPECT_EQ(RSExportView(view, directory.At("a.csv").c_str()), 0);
    EXPECT_EQ(RSPrintView(view, 0), 0);
    EXPECT_EQ(RSCopyReport(report, susaId, 0), 0) << "the report went with its only view";
}

TEST_F(Views, GoOnShowingAReportThatTheHostCloses)
{
    Play("");
    Fill();
    auto *view = static_cast<HWND>(OpenView(report));
    RSCloseReport(report);
    EXPECT_EQ(AddSusaHeader(report), 0);
    ASSERT_NE(IsWindow(view), 0);
    EXPECT_EQ(RSExportView(view, directory.At("a.csv").c_str()), 1);
    DestroyWindow(view);
}

TEST_F(Views, OfOneReportEndOneByOne)
{
    Play("");
    Fill();
    auto *first = static_cast<HWND>(OpenView(report));
    auto *second = static_cast<HWND>(OpenView(report));
    DestroyWindow(first);
    EXPECT_EQ(RSExportView(second, directory.At("a.csv").c_str()), 1);
    const int32_t copied = RSCopyReport(report, susaId, 0);
    EXPECT_NE(copied, 0) << "the second view still has it";
    RSCloseReport(copied);
    DestroyWindow(second);
    EXPECT_EQ(RSCopyReport(report, susaId, 0), 0);
}

TEST_F(Views, AsChildrenStandWhereTheHostWantsThem)
{
    Play("");
    Fill();
    HWND frame = MakeFrame();
    auto *view = static_cast<HWND>(OpenChild(report, frame));
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(GetParent(view), frame);
    EXPECT_NE(IsWindowVisible(view), 0);
    RECT place = {};
    GetWindowRect(view, &place);
    EXPECT_EQ(place.left, 60);
    EXPECT_EQ(place.top, 80);
    EXPECT_EQ(place.right - place.left, 600);
    EXPECT_EQ(place.bottom - place.top, 400);
    const auto style = static_cast<DWORD>(GetWindowLongPtrA(view, GWL_STYLE));
    EXPECT_NE(style & WS_CHILD, 0U);
    EXPECT_EQ(style & WS_CAPTION, 0U);
    DestroyWindow(frame);
    EXPECT_EQ(IsWindow(view), 0);
    EXPECT_EQ(RSCopyReport(report, susaId, 0), 0) << "the frame's end was the end of view and report";
}

namespace {

constexpr LONG rowHeight = 38; // of the tool bar
constexpr int lastInBar = 114;

// What stands in the tool bar, its texts apart.
std::vector<int> ButtonsAndFields()
{
    std::vector<int> ids;
    for (int id = previousPage; id < lastInBar; ++id) {
        if (id != pageCount) ids.push_back(id);
    }
    return ids;
}

RECT PlaceIn(HWND view, int id)
{
    RECT place = {};
    GetWindowRect(GetDlgItem(view, id), &place);
    MapWindowPoints(nullptr, view, reinterpret_cast<POINT *>(&place), 2);
    return place;
}

bool Overlap(const RECT &one, const RECT &other)
{
    return one.left < other.right && other.left < one.right && one.top < other.bottom &&
           other.top < one.bottom;
}

} // namespace

TEST_F(Views, OfAnyWidthHaveTheWholeToolBarInSight)
{
    Play("");
    Fill();
    HWND frame = MakeFrame();
    auto *view = static_cast<HWND>(OpenChild(report, frame));
    for (LONG width = 320; width <= 1200; width += 8) {
        MoveWindow(view, 0, 0, width, 600, TRUE);
        LONG bottom = 0;
        for (const int id : ButtonsAndFields()) {
            const RECT place = PlaceIn(view, id);
            EXPECT_NE(IsWindowVisible(GetDlgItem(view, id)), 0) << id << " at " << width;
            EXPECT_GE(place.left, 0) << id << " at " << width;
            EXPECT_LE(place.right, width) << id << " at " << width;
            bottom = std::max(bottom, place.bottom);
            for (const int other : ButtonsAndFields()) {
                EXPECT_TRUE(id == other || !Overlap(place, PlaceIn(view, other))) << id << " and " << other;
            }
        }
        const RECT shown = PlaceIn(view, pages);
        EXPECT_EQ(shown.top, (bottom / rowHeight + 1) * rowHeight) << "the pages begin below the bar";
        EXPECT_EQ(shown.right, width);
    }
    MoveWindow(view, 0, 0, 1000, 600, TRUE);
    EXPECT_EQ(PlaceIn(view, pages).top, rowHeight) << "a wide bar has one row";
    MoveWindow(view, 0, 0, 330, 160, TRUE);
    EXPECT_EQ(PlaceIn(view, pages).top, 2 * rowHeight) << "a low one leaves half of the view to the pages";
    EXPECT_EQ(IsWindowVisible(GetDlgItem(view, search)), 0);
    EXPECT_NE(IsWindowVisible(GetDlgItem(view, nextPage)), 0);
    DestroyWindow(frame);
}

TEST_F(Views, AsChildrenWithoutAParentWaitHiddenForTheirFrame)
{
    Play("");
    for (HWND parent : {HWND{}, reinterpret_cast<HWND>(intptr_t{0x123456})}) { // NOLINT: no window
        Fill();
        auto *view = static_cast<HWND>(OpenChild(report, parent));
        ASSERT_NE(IsWindow(view), 0);
        EXPECT_EQ(static_cast<DWORD>(GetWindowLongPtrA(view, GWL_STYLE)) & (WS_CHILD | WS_VISIBLE), 0U);
        MSG message;
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
            DispatchMessageA(&message);
        }
        EXPECT_EQ(IsWindowVisible(view), 0) << "also when its thread has handled messages";
        EXPECT_EQ(GetParent(view), nullptr);

        HWND frame = MakeFrame();
        const auto style = static_cast<DWORD>(GetWindowLongPtrA(view, GWL_STYLE));
        SetWindowLongPtrA(view, GWL_STYLE,
                          static_cast<LONG_PTR>((style & ~(WS_OVERLAPPEDWINDOW | WS_POPUP)) | WS_CHILD));
        SetParent(view, frame);
        SetWindowPos(view, nullptr, 0, 0, 500, 300, SWP_SHOWWINDOW | SWP_NOZORDER);
        EXPECT_EQ(GetParent(view), frame);
        EXPECT_NE(IsWindowVisible(view), 0);
        VARKUIPICTURE shown = {};
        SendMessageA(GetDlgItem(view, pages), PCM_GETPICTURE, 0, reinterpret_cast<LPARAM>(&shown));
        EXPECT_GT(shown.Width, 0) << "its pages are drawn";
        SendMessageA(GetDlgItem(view, pages), WM_KEYDOWN, VK_ESCAPE, 0);
        EXPECT_NE(IsWindow(view), 0) << "a child leaves Escape to the host";
        DestroyWindow(frame);
        EXPECT_EQ(IsWindow(view), 0);
        EXPECT_EQ(RSCopyReport(report, susaId, 0), 0) << "the report ended with its view";
    }
}

TEST_F(Views, AFrameStandsForTheViewInIt)
{
    Play("");
    Fill(3);
    HWND frame = MakeFrame();
    EXPECT_EQ(RSExportView(frame, directory.At("a.csv").c_str()), 0) << "there is none in it yet";
    auto *view = static_cast<HWND>(OpenChild(report, frame));
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(RSExportView(frame, directory.At("a.csv").c_str()), 1);
    EXPECT_EQ(RSExportView(view, directory.At("b.csv").c_str()), 1);
    EXPECT_EQ(ReadFile(directory.At("a.csv")), ReadFile(directory.At("b.csv")));
    directory.Write("vark.ini", "[RS]\nDrucker=datei:" + directory.At("druck.pdf") + "\n");
    EXPECT_EQ(RSPrintView(frame, 0), 1);
    EXPECT_TRUE(ReadFile(directory.At("druck.pdf")).starts_with("%PDF"));
    DestroyWindow(view);
    EXPECT_EQ(RSExportView(frame, directory.At("a.csv").c_str()), 0);
    DestroyWindow(frame);
}

TEST_F(Views, AreWindowsThatNobodySeesWithoutAFrontEnd)
{
    setenv("VARK_UI", "headless", 1);
    directory.Write("vark.ini", "[RS]\nDrucker=datei:" + directory.At("druck.pdf") + "\n");
    Fill(3);
    auto *view = static_cast<HWND>(OpenView(report));
    ASSERT_NE(IsWindow(view), 0);
    EXPECT_EQ(IsWindowVisible(view), 0);
    char title[40] = "";
    GetWindowTextA(view, title, sizeof title);
    EXPECT_STREQ(title, "Bericht");
    EXPECT_EQ(RSPrintView(view, 0), 1);
    EXPECT_TRUE(ReadFile(directory.At("druck.pdf")).starts_with("%PDF"));
    EXPECT_EQ(RSExportView(view, directory.At("a.csv").c_str()), 1);
    DestroyWindow(view);
    EXPECT_EQ(RSExportView(view, directory.At("b.csv").c_str()), 0);
    EXPECT_EQ(RSCopyReport(report, susaId, 0), 0) << "the view alone ended its report";
    EXPECT_FALSE(RunsMarked("rs-pages", directory.Path.string()));
}

TEST_F(Views, ACopyTakesItsPlaceInTheFrameWithoutAFrontEndToo)
{
    setenv("VARK_UI", "headless", 1);
    Fill(3);
    HWND frame = MakeFrame();
    auto *view = static_cast<HWND>(OpenChild(report, frame));
    ASSERT_NE(view, nullptr);
    const int32_t second = RSCopyReport(report, susaId, 0);
    ASSERT_GT(second, 0);
    EXPECT_EQ(AddSusaHeader(second), 1);
    EXPECT_EQ(AddSusaLine(second, {.Konto = "4711"}), 1);
    RECT place = {};
    GetWindowRect(view, &place);
    auto *copied = static_cast<HWND>(
        RSCopyView(second, view, 0, place.left, place.top, place.right - place.left, place.bottom - place.top,
                   static_cast<uint32_t>(GetWindowLongA(view, GWL_STYLE)), 0, 0));
    ASSERT_NE(copied, nullptr);
    EXPECT_EQ(GetParent(copied), frame);
    DestroyWindow(view);
    EXPECT_EQ(RSExportView(frame, directory.At("a.csv").c_str()), 1) << "the frame stands for the new one";
    EXPECT_NE(ReadFile(directory.At("a.csv")).find(";4711;"), std::string::npos);
    DestroyWindow(frame);
    EXPECT_EQ(RSCopyReport(second, susaId, 0), 0);
}

TEST_F(Views, EndWithTheThreadThatOpenedThem)
{
    setenv("VARK_UI", "headless", 1);
    std::thread([&] {
        Fill(3);
        OpenView(report);
    }).join();
    EXPECT_EQ(RSCopyReport(report, susaId, 0), 0);
}

TEST_F(Views, ClearASelectionByEscapeBeforeTheyClose)
{
    EXPECT_EQ(Use("key Ctrl+a\n"
                  "key Escape\n"
                  "key Ctrl+c\n"
                  "expect text 115 Es ist nichts markiert.\n"),
              "");
}

TEST_F(Views, KeepTheLeftEdgeInViewWhenTheyGrow)
{
    Play("");
    Fill();
    auto *view = static_cast<HWND>(OpenView(report));
    SendMessageA(view, WM_APP + 1, 0, 0);
    const Mouse mouse = {view};
    VARKUIPICTURE shown = {};
    for (int step = 0; step < 4; ++step) {
        mouse.Tell(PCN_ZOOM, 100, 100, 2);
        SendMessageA(GetDlgItem(view, pages), PCM_GETPICTURE, 0, reinterpret_cast<LPARAM>(&shown));
        EXPECT_EQ(shown.X, 0) << "the numbers of the accounts stay in view";
    }
    EXPECT_GT(shown.ContentWidth, shown.Width);
    DestroyWindow(view);
}

TEST_F(Views, CopiedTakeTheOldOnesPlace)
{
    Play("");
    Fill();
    HWND frame = MakeFrame();
    auto *view = static_cast<HWND>(OpenChild(report, frame));
    const int32_t second = RSCopyReport(report, susaId, 0);
    AddSusaHeader(second);
    AddSusaLine(second, {.Konto = "7777", .Name = "Neu"});
    RECT place = {};
    GetWindowRect(view, &place);
    auto *copied = static_cast<HWND>(
        RSCopyView(second, view, 0, place.left, place.top, place.right - place.left, place.bottom - place.top,
                   static_cast<uint32_t>(GetWindowLongPtrA(view, GWL_STYLE)),
                   static_cast<uint32_t>(GetWindowLongPtrA(view, GWL_EXSTYLE)), 0));
    ASSERT_NE(copied, nullptr);
    ASSERT_NE(copied, view);
    EXPECT_EQ(GetParent(copied), frame);
    char title[40] = "";
    GetWindowTextA(copied, title, sizeof title);
    EXPECT_STREQ(title, "Blatt");
    RECT after = {};
    GetWindowRect(copied, &after);
    EXPECT_EQ(after.left, place.left);
    EXPECT_EQ(after.top, place.top);
    EXPECT_EQ(after.right, place.right);
    EXPECT_EQ(after.bottom, place.bottom);
    DestroyWindow(view);
    EXPECT_EQ(RSExportView(copied, directory.At("a.csv").c_str()), 1);
    EXPECT_NE(ReadFile(directory.At("a.csv")).find(";7777;Neu;"), std::string::npos);
    DestroyWindow(frame);
}

TEST_F(Views, CopiedAreWindowsOfTheirOwnWhereTheOldOneIs)
{
    Play("");
    Fill();
    auto *view = static_cast<HWND>(RSOpenView(report, "Alt", "%N", nullptr, 30, 40, 500, 300,
                                              WS_OVERLAPPEDWINDOW, 0, 65535, 65535, nullptr));
    const int32_t second = RSCopyReport(report, susaId, 0);
    AddSusaHeader(second);
    auto *copied =
        static_cast<HWND>(RSCopyView(second, view, 0, 30, 40, 500, 300, WS_OVERLAPPEDWINDOW, 0, 0));
    ASSERT_NE(IsWindow(copied), 0);
    EXPECT_EQ(GetParent(copied), nullptr);
    char title[40] = "";
    GetWindowTextA(copied, title, sizeof title);
    EXPECT_STREQ(title, "Alt");
    RECT place = {};
    GetWindowRect(copied, &place);
    EXPECT_EQ(place.left, 30);
    EXPECT_EQ(place.bottom, 340);
    DestroyWindow(view);
    EXPECT_NE(IsWindow(copied), 0) << "each ends by itself";
    DestroyWindow(copied);
}

TEST_F(Views, PassTheirZoomOnToTheirSuccessor)
{
    constexpr int zoomList = 106;
    constexpr LRESULT chosen = 4;
    Play("");
    Fill();
    auto *view = static_cast<HWND>(OpenView(report));
    SendDlgItemMessageA(view, zoomList, CB_SETCURSEL, chosen, 0);
    SendMessageA(view, WM_COMMAND, MAKELONG(zoomList, CBN_SELCHANGE), 0);
    const int32_t second = RSCopyReport(report, susaId, 0);
    AddSusaHeader(second);
    auto *copied =
        static_cast<HWND>(RSCopyView(second, view, 0, 30, 40, 500, 300, WS_OVERLAPPEDWINDOW, 0, 0));
    EXPECT_EQ(SendDlgItemMessageA(copied, zoomList, CB_GETCURSEL, 0, 0), chosen);
    DestroyWindow(view);
    DestroyWindow(copied);
}

TEST_F(Views, ClosedWhileTheirSuccessorIsFilledGiveNone)
{
    Play("");
    Fill();
    auto *view = static_cast<HWND>(OpenView(report));
    const int32_t second = RSCopyReport(report, susaId, 0);
    AddSusaHeader(second);
    DestroyWindow(view);
    EXPECT_EQ(AddSusaLine(second, {.Konto = "7777"}), 1) << "the new report does not need the old view";
    EXPECT_EQ(RSCopyView(second, view, 0, 0, 0, 100, 100, 0, 0, 0), nullptr);
    RSCloseReport(second);
}

TEST_F(Views, DrawOnWhenTheirProgramWasKilled)
{
    setenv("VARK_TEST_MARK", directory.Path.c_str(), 1);
    Play("");
    Fill();
    auto *view = static_cast<HWND>(OpenView(report));
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
        DispatchMessageA(&message);
    }
    ASSERT_EQ(KillMarked("rs-pages", directory.Path.string()), 1);
    SendMessageA(view, WM_COMMAND, nextPage, 0);
    char number[16] = "";
    GetWindowTextA(GetDlgItem(view, pageNumber), number, sizeof number);
    EXPECT_STREQ(number, "2");
    GetWindowTextA(GetDlgItem(view, state), number, sizeof number);
    EXPECT_STREQ(number, "") << "nothing was lost";
    DestroyWindow(view);
}

TEST_F(Views, AfterAForkTheChildStartsAfresh)
{
    Fill(3);
    const pid_t child = fork();
    if (child == 0) {
        bool isGood = AddSusaLine(report, {.Konto = "9999"}) == 0;
        RSCloseReport(report); // not the child's
        const int32_t own = OpenShipped("or_slist.rs", susaId);
        isGood = isGood && AddSusaHeader(own) == 1 && OpenView(own) != nullptr;
        _exit(isGood ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(AddSusaLine(report, {.Konto = "1234", .Name = "Eltern"}), 1);
    EXPECT_EQ(RSExportView(OpenView(report), directory.At("a.csv").c_str()), 1);
    const std::string file = ReadFile(directory.At("a.csv"));
    EXPECT_NE(file.find(";1234;Eltern;"), std::string::npos);
    EXPECT_EQ(file.find("9999"), std::string::npos);
    RSCloseReport(report);
}
