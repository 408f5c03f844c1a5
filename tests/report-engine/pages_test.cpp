// What stands on the pages, as a reader of the PDF finds it, against the records that went in.
#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>
#include <regex>

#include "report_support.h"

using namespace reports;

namespace {

struct Pages : testing::Test {
    Directory directory;
    int32_t report = 0;

    void SetUp() override { setenv("VARK_HEUTE", "31.03.1998", 1); }
    void TearDown() override { RSCloseReport(report); }

    std::vector<std::string> Draw()
    {
        const std::string path = directory.At("report.pdf");
        EXPECT_EQ(RSExportView(OpenView(report), path.c_str()), 1);
        return PagesOf(path);
    }
};

// A line of a page with its runs of blanks made one.
std::string Squeezed(const std::string &line)
{
    return std::regex_replace(std::regex_replace(line, std::regex(" +"), " "), std::regex("^ "), "");
}

bool HasLine(const std::string &page, const std::string &line)
{
    const std::vector<std::string> lines = LinesOf(page);
    return std::any_of(lines.begin(), lines.end(),
                       [&](const std::string &one) { return Squeezed(one) == line; });
}

std::string Command(const std::string &command)
{
    FILE *pipe = popen(command.c_str(), "r");
    std::string output;
    for (int character = fgetc(pipe); character != EOF; character = fgetc(pipe)) {
        output += static_cast<char>(character);
    }
    pclose(pipe);
    return output;
}

} // namespace

TEST_F(Pages, ASummenUndSaldenlisteShowsItsRecords)
{
    report = OpenShipped("or_slist.rs", susaId);
    AddSusaHeader(report, SusaHeader("Müller & Söhne GmbH"));
    AddSusaLine(report, {"1000", "Kasse", 100000, 0, 23456, 3456, 50000, 20000});
    AddSusaLine(report, {"1200", "Überlinger Bank", 0, 0, 0, 0, 0, 0, 0});
    AddSusaLine(report, {"1800", "Privat", 0, 123456789, 0, 100, 0, 7});
    const std::vector<std::string> pages = Draw();
    ASSERT_EQ(pages.size(), 1u);
    EXPECT_TRUE(HasLine(pages[0], "Müller & Söhne GmbH Summen- und Saldenliste Seite 1 von 1")) << pages[0];
    EXPECT_TRUE(HasLine(pages[0], "Sachkonten von 1000 bis 8999 per 31.03.1998 (Monat: März)")) << pages[0];
    EXPECT_TRUE(HasLine(pages[0], "1000 Kasse 1.000,00 234,56 34,56 500,00 200,00 1.500,00 200,00 1.300,00"))
        << pages[0];
    EXPECT_TRUE(HasLine(pages[0], "1800 Privat 1.234.567,89 1,00 0,07 1.234.567,96 1.234.567,96"))
        << pages[0];
    EXPECT_EQ(pages[0].find("Überlinger"), std::string::npos) << "an account that never moved is hidden";
    EXPECT_TRUE(HasLine(pages[0],
                        "Gesamtsumme 1.000,00 1.234.567,89 234,56 35,56 500,00 200,07 1.500,00 1.234.767,96 "
                        "1.300,00 1.234.567,96"))
        << pages[0];
    EXPECT_TRUE(HasLine(pages[0], "Müller & Söhne GmbH gedruckt am 31.03.1998")) << pages[0];
}

TEST_F(Pages, NegativeAmountsHaveAMinusOfTheirOwn)
{
    report = OpenShipped("or_slist.rs", susaId);
    AddSusaHeader(report);
    AddSusaLine(report, {"1000", "Kasse", -123456, 0, 0, 0, 0, 0});
    EXPECT_TRUE(HasLine(Draw()[0], "1000 Kasse −1.234,56 −1.234,56 1.234,56"));
}

TEST_F(Pages, SumsAreCarriedFromPageToPage)
{
    report = OpenShipped("or_slist.rs", susaId);
    AddSusaHeader(report);
    constexpr int lines = 100;
    for (int i = 0; i < lines; ++i) {
        AddSusaLine(report, {std::to_string(1000 + i), "Konto", 100, 0, 0, 0, 0, 0});
    }
    const std::vector<std::string> pages = Draw();
    ASSERT_EQ(pages.size(), 3u);
    int carried = 0;
    for (size_t page = 0; page < pages.size(); ++page) {
        const std::string number = std::to_string(page + 1);
        EXPECT_TRUE(HasLine(pages[page], "Muster GmbH Summen- und Saldenliste Seite " + number + " von 3"));
        EXPECT_TRUE(
            HasLine(pages[page], "Konto Bezeichnung Soll Haben Soll Haben Soll Haben Soll Haben Soll Haben"));
        int accounts = 0;
        for (const std::string &line : LinesOf(pages[page])) {
            if (std::regex_match(Squeezed(line), std::regex("1\\d{3} Konto 1,00 1,00 1,00"))) ++accounts;
        }
        EXPECT_GT(accounts, 0);
        const auto sums = [](int amount) {
            const std::string sum = " " + std::to_string(amount) + ",00";
            std::string text = sum;
            text.append(" 0,00 0,00 0,00 0,00 0,00").append(sum).append(" 0,00").append(sum).append(" 0,00");
            return text;
        };
        if (page > 0) {
            EXPECT_TRUE(HasLine(pages[page], "Übertrag von Seite " + std::to_string(page) + sums(carried)))
                << pages[page];
        }
        carried += accounts;
        EXPECT_TRUE(HasLine(pages[page], "Summe Seite " + number + sums(accounts))) << pages[page];
        const bool isLast = page + 1 == pages.size();
        EXPECT_EQ(HasLine(pages[page], "Übertrag" + sums(carried)), !isLast) << pages[page];
        EXPECT_EQ(HasLine(pages[page], "Gesamtsumme" + sums(carried)), isLast) << pages[page];
    }
    EXPECT_EQ(carried, lines);
}

TEST_F(Pages, AReportWithoutLinesIsAPage)
{
    report = OpenShipped("or_slist.rs", susaId);
    AddSusaHeader(report);
    const std::vector<std::string> pages = Draw();
    ASSERT_EQ(pages.size(), 1u);
    EXPECT_TRUE(HasLine(pages[0], "Muster GmbH Summen- und Saldenliste Seite 1 von 1"));
    EXPECT_TRUE(HasLine(pages[0], "Keine Konten mit Buchungen."));
    EXPECT_TRUE(HasLine(pages[0], "Muster GmbH gedruckt am 31.03.1998"));
}

TEST_F(Pages, AKontenblattStartsASheetForEachAccountAndGoesOnWithItsNumbers)
{
    report = OpenShipped("or_kblam.rs", kontenblattId);
    Record().Text("Muster GmbH", 41).AddTo(report, 0, 41);
    const auto account = [&](const char *number, const char *name, int32_t pagesBefore, int lines) {
        Record()
            .Text(number, 8)
            .Text(name, 41)
            .Text("Sachkonto", 20)
            .Text("März 1998", 50)
            .Amount(10000)
            .Amount(2500)
            .I32(pagesBefore)
            .AddTo(report, 1, 149);
        for (int i = 0; i < lines; ++i) {
            Record()
                .I32(70 + i)
                .U32(1)
                .U32(0)
                .Text("8000", 8)
                .Text("RE 12", 11)
                .Date("150318")
                .Text("Erlöse", 40)
                .Amount(i % 2 == 0 ? 100 : 0)
                .Amount(i % 2 == 0 ? 0 : 300)
                .Rate("16,00")
                .AddTo(report, 2, 110);
        }
    };
    account("1000", "Kasse", 4, 2);
    account("1200", "Bank", 0, 100);
    const std::vector<std::string> pages = Draw();
    ASSERT_EQ(pages.size(), 3u);
    EXPECT_TRUE(HasLine(pages[0], "Sachkonto 1000 Kasse Blatt 5")) << pages[0];
    EXPECT_TRUE(HasLine(pages[0], "Muster GmbH Seite 1 von 3"));
    EXPECT_TRUE(HasLine(pages[0], "Kontenblatt März 1998"));
    EXPECT_TRUE(HasLine(pages[0], "Vortrag 100,00 25,00 75,00 S")) << pages[0];
    EXPECT_TRUE(HasLine(pages[0], "15.03.1998 70 RE 12 8000 Erlöse 16,00 1,00 76,00 S")) << pages[0];
    EXPECT_TRUE(HasLine(pages[0], "15.03.1998 71 RE 12 8000 Erlöse 16,00 3,00 73,00 S")) << pages[0];
    EXPECT_TRUE(HasLine(pages[0], "Umsatz des Zeitraums 1,00 3,00")) << pages[0];
    EXPECT_TRUE(HasLine(pages[0], "Summe mit Vortrag 101,00 28,00 73,00 S")) << pages[0];
    EXPECT_TRUE(HasLine(pages[1], "Sachkonto 1200 Bank Blatt 1")) << pages[1];
    EXPECT_TRUE(HasLine(pages[2], "Sachkonto 1200 Bank Blatt 2")) << pages[2];
    EXPECT_NE(pages[1].find("Übertrag"), std::string::npos);
    EXPECT_TRUE(HasLine(pages[2], "Umsatz des Zeitraums 50,00 150,00")) << pages[2];
    EXPECT_TRUE(HasLine(pages[2], "Summe mit Vortrag 150,00 175,00 25,00 H")) << pages[2];
}

TEST_F(Pages, TextsThatAreTooLongEndInAnEllipsisAndFiguresShrink)
{
    const std::string path = directory.Write(
        "or_test.rs",
        TemplateWith("columns { { 'a', 'A', 20 }, { 'b', 'B', 12, form = 'amount' }, { 'c', 'C', 30 } }\n"
                     "record(0, { rows = { { 'line', 2 } }, emit = function(r)\n"
                     "row('line', { a = ('lang '):rep(20), b = 9999999999999999, c = 'Ende' })\n"
                     "row('line', { a = 'läuft über die leere Spalte', c = 'Ende' })\n"
                     "end })"));
    report = RSOpenReport(path.c_str(), susaId, 0);
    AddSusaHeader(report);
    const std::string page = Draw()[0];
    EXPECT_NE(page.find("…"), std::string::npos) << page;
    EXPECT_NE(page.find("99.999.999.999.999,99"), std::string::npos) << "a figure is never cut";
    EXPECT_TRUE(HasLine(page, "läuft über die leere … Ende") ||
                HasLine(page, "läuft über die leere Spalte Ende") ||
                HasLine(page, "läuft über die leere S… Ende"))
        << page;
}

TEST_F(Pages, CharactersOfTheCodePageArePrintedAndControlsAreBlanks)
{
    report = OpenShipped("or_slist.rs", susaId);
    AddSusaHeader(report, SusaHeader("€ „Größe“ – Übel…"));
    std::string record(166, '\0');
    record.replace(0, 4, "1\t2\n");
    record.replace(17, 5, "a\x01\x81\xFFz");
    record[162] = 1;
    EXPECT_EQ(RSAddData(report, 1, record.data()), 1);
    const std::string page = Draw()[0];
    EXPECT_NE(page.find("€ „Größe“ – Übel…"), std::string::npos) << page;
    EXPECT_TRUE(HasLine(page, "12 a ÿz")) << page; // a blank is too narrow for pdftotext to see
}

TEST_F(Pages, TheFileHasEmbeddedFontsBookmarksAndATitle)
{
    report = OpenShipped("or_kauft.rs", "tervoKAUFT0.0");
    ASSERT_GT(report, 0);
    Record().Text("Muster", 41).Text("1998", 50).Text("", 30).AddTo(report, 0, 121);
    Record().Text("100", 8).Text("VERW", 9).Text("Verwaltung", 31).AddTo(report, 1, 48);
    Record()
        .Text("4100", 8)
        .Text("Löhne", 41)
        .Amount(100)
        .Amount(0)
        .Amount(0)
        .Amount(25)
        .AddTo(report, 2, 101);
    const std::string path = directory.At("k.pdf");
    ASSERT_EQ(RSExportView(OpenView(report), path.c_str()), 1);
    const std::vector<std::string> fonts = LinesOf(Command("pdffonts '" + path + "'"));
    ASSERT_GT(fonts.size(), 2u);
    for (size_t i = 2; i < fonts.size(); ++i) {
        EXPECT_NE(fonts[i].find("Roboto"), std::string::npos) << fonts[i];
        EXPECT_TRUE(std::regex_search(fonts[i], std::regex(" yes yes yes +\\d+ +\\d+$"))) << fonts[i];
    }
    const std::string info = Command("pdfinfo '" + path + "'");
    EXPECT_NE(info.find("Title:           Bericht"), std::string::npos) << info;
    EXPECT_NE(info.find("Subject:         Kostenaufteilung"), std::string::npos) << info;
    EXPECT_NE(info.find("841.89 x 595.276 pts (A4)"), std::string::npos) << info;
    EXPECT_NE(info.find("1998"), std::string::npos) << "the day that VARK_HEUTE names";
    EXPECT_NE(ReadFile(path).find("/Outlines"), std::string::npos);
    const std::string first = ReadFile(path);
    ASSERT_EQ(RSExportView(OpenView(report), path.c_str()), 1);
    EXPECT_EQ(ReadFile(path).size(), first.size()) << "the same report gives the same file";
}

// ---- All templates that are shipped ----

namespace {

struct FieldOf {
    std::string form;
    std::string name;
    size_t offset;
    size_t width;
};

struct Shipped {
    const char *file;
    const char *id;
    std::vector<size_t> sizes;  // by kind
    bool leavesRowsOut = false; // rows depend on more than the kinds of records: fewer pages than counted
};

void PrintTo(const Shipped &one, std::ostream *out) { *out << one.file; } // googletest looks for it

const std::vector<Shipped> shipped = {
    {"or_kpla.rs", "tervoKTOPLAN0.0", {101, 280}},
    {"or_spla.rs", "tervoSAKTOPLAN0.0", {101, 187}},
    {"or_slist.rs", "tervoSUSALIST0.0", {128, 166}},
    {"or_hab.rs", "tervoHABSCHLUSS0.0", {109, 151}},
    {"or_umsta.rs", "tervoUMSTAT0.0", {236, 156}},
    {"or_bjou.rs", "tervoBJOURNAL0.0", {95, 67, 152, 86}},
    {"or_kblao.rs", "tervoKTOBLATT0.0", {41, 149, 110}},
    {"or_kblam.rs", "tervoKTOBLATT0.0", {41, 149, 110}},
    {"or_ksald.rs", "tervoKOSALIST0.0", {121, 102}},
    {"or_kolst.rs", "tervoKOSTLIST0.0", {71, 93}},
    {"or_kjou.rs", "tervoKJOURNAL0.0", {95, 155}},
    {"or_kauft.rs", "tervoKAUFT0.0", {121, 48, 101}},
    {"or_ustvd.rs", "tervoUSTVA0.0", {1000}},
    {"or_ustd7.rs", "tervoUSTVA0.0", {1000}},
    {"or_ustva.rs", "tervoUSTVA0.0", {1000}},
    {"or_zm.rs", "tervoZM0.0", {91, 76}},
    {"or_guv.rs", "tervoGUV0.0", {161, 32, 32, 32, 110, 110, 110, 110, 110}, true},
    {"or_bil.rs", "tervoBILANZ0.0", {165, 32, 32, 32, 84, 84, 84, 84, 4}, true},
    {"or_vprob.rs", "tervoUSTVAVERPROB0.0", {121, 54, 50, 76, 72}},
    {"or_oplst.rs", "tervoOPLISTE0.0", {109, 15, 240}, true},
    {"or_kobla.rs", "tervoKOSTENBLATT0.0", {34, 102, 141}, true},
};

// Which bytes of a kind are numbers, read from the template's own declarations: they get 1 (3 for "ebene", 0
// for "seiten"), so that everything prints; all other bytes are the digit 1.
std::string Filled(const std::string &source, const std::string &kind, size_t size)
{
    std::string record(size, '1');
    const std::regex opening("record\\((\\w+), \\{");
    const std::regex number("^\\s*(i16|i32|u32|u8)\\(\"(\\w+)\", (\\d+)\\)");
    std::string current;
    for (const std::string &line : LinesOf(source)) {
        std::smatch found;
        if (std::regex_search(line, found, opening)) current = found[1];
        if (current != kind || !std::regex_search(line, found, number)) continue;
        const size_t width = found[1] == "u8" ? 1 : found[1] == "i16" ? 2 : 4;
        const size_t offset = std::stoul(found[3]);
        EXPECT_LE(offset + width, size) << line;
        record.replace(offset, width, std::string(width, '\0'));
        record[offset] = static_cast<char>(found[2] == "ebene" ? 3 : found[2] == "seiten" ? 0 : 1);
    }
    return record;
}

} // namespace

// A template's text with that of the files it shares.
static std::string WithShared(std::string source)
{
    const std::string call = "share(\"";
    for (size_t at = source.find(call); at != std::string::npos; at = source.find(call, at + 1)) {
        const size_t begin = at + call.size();
        const std::string name = source.substr(begin, source.find('"', begin) - begin);
        source += ReadFile(ShippedTemplate(name + ".lua"));
    }
    return source;
}

class EveryTemplate : public testing::TestWithParam<Shipped> {};

TEST_P(EveryTemplate, PrintsAsManyPagesAsItCounts)
{
    constexpr unsigned seed = 4711;
    std::mt19937 random(seed);
    const Directory directory;
    const std::string source = WithShared(ReadFile(ShippedTemplate(GetParam().file)));
    std::vector<std::string> records;
    for (size_t kind = 0; kind < GetParam().sizes.size(); ++kind) {
        const size_t size = GetParam().sizes[kind];
        std::string name = std::to_string(kind);
        // Kinds that are declared in a loop stand under the loop's variable.
        if (source.find("record(" + name + ",") == std::string::npos) name = kind < 4 ? "depth" : "kind";
        records.push_back(Filled(source, name, size));
    }
    for (int round = 0; round < 6; ++round) {
        const int32_t report = OpenShipped(GetParam().file, GetParam().id);
        ASSERT_GT(report, 0);
        const int32_t counting = RSOpenVirtualReport(report);
        ASSERT_GT(counting, 0);
        const auto add = [&](int32_t kind, int32_t count) {
            ASSERT_EQ(RSAddVirtualData(counting, kind, count), 1);
            for (int32_t i = 0; i < count; ++i) {
                ASSERT_EQ(RSAddData(report, kind, records[static_cast<size_t>(kind)].data()), 1) << kind;
            }
        };
        add(0, 1);
        // Lines of a group come after its head, as hosts send them.
        const auto kinds = static_cast<int32_t>(records.size());
        if (source.find("record(8,") != std::string::npos) add(8, 1);
        for (int32_t kind = 1; kind < kinds && kind < 4 && kinds > 2; ++kind) {
            add(kind, 1);
        }
        for (int step = 0; step < 12 && kinds > 1; ++step) {
            const auto kind = static_cast<int32_t>(1 + random() % static_cast<unsigned>(kinds - 1));
            add(kind, static_cast<int32_t>(random() % (round < 3 ? 4 : 60)));
        }
        const std::string path = directory.At("report.pdf");
        RSWindow view = OpenView(report);
        ASSERT_NE(view, nullptr);
        ASSERT_EQ(RSExportView(view, path.c_str()), 1);
        const auto counted = RSGetVirtualPages(counting);
        if (GetParam().leavesRowsOut) {
            EXPECT_LE(PageCountOf(path), counted) << "seed " << seed << ", round " << round;
        } else {
            EXPECT_EQ(PageCountOf(path), counted) << "seed " << seed << ", round " << round;
        }
        for (const char *name : {"report.csv", "report.json", "report.html", "report.txt"}) {
            EXPECT_EQ(RSExportView(view, directory.At(name).c_str()), 1);
        }
        RSCloseVirtualReport(counting);
        RSCloseReport(report);
    }
}

TEST(Templates, AreAllCounted)
{
    size_t found = 0;
    for (const auto &entry : std::filesystem::directory_iterator(TEMPLATES)) {
        if (entry.path().extension() != ".rs") continue;
        ++found;
        const std::string name = entry.path().filename().string();
        EXPECT_TRUE(std::any_of(std::begin(shipped), std::end(shipped), [&](const Shipped &each) {
            return each.file == name;
        })) << name;
    }
    EXPECT_EQ(found, 21U);
}

INSTANTIATE_TEST_SUITE_P(Templates, EveryTemplate, testing::ValuesIn(shipped), [](const auto &one) {
    return std::string(one.param.file).substr(3, std::string(one.param.file).find('.') - 3);
});
