// The files other than pages, and what is left behind when one cannot be written.
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "report_support.h"

using namespace reports;

namespace {

constexpr const char *smallTemplate = R"(
columns {
    { "konto", "Konto", 20 },
    { "name", "Name", 40 },
    { "soll", "Soll", 25, form = "amount", group = "Vortrag", sum = true, zero = "blank" },
    { "haben", "Haben", 25, form = "amount", group = "Vortrag", sum = true },
    { "satz", "%", 10, form = "rate" },
    { "anzahl", "An-\nzahl", 10, form = "number" },
}
record(0, { text("mandant", 0, 41), rows = { "text" }, emit = function(r)
    head { left = r.mandant, center = "Liste", right = "Seite {page} von {pages}" }
    head { left = "zweite Zeile" }
    row("text", "Ein Text <über> alles; \"ja\"")
end })
record(1, {
    text("konto", 0, 8),
    text("name", 17, 41),
    amount("soll", 58),
    amount("haben", 71),
    level = 1, rows = { "head", "line" },
    emit = function(r)
        row("head", { konto = "Gruppe " .. r.konto, haben = groupsum })
        r.satz = 1650
        r.anzahl = -7
        row("line", r)
    end,
    close = { rows = { "sum" }, emit = function(sum)
        row("sum", { konto = "Summe", soll = sum.soll, haben = sum.haben })
    end },
})
finish { rows = { "total" }, emit = function(sum)
    row("total", { name = sum.count .. " Zeilen", soll = sum.soll })
end }
)";

struct Files : testing::Test {
    Directory directory;
    int32_t report = 0;
    RSWindow view = nullptr;

    void SetUp() override
    {
        const std::string path = directory.Write("or_test.rs", TemplateWith(smallTemplate));
        report = RSOpenReport(path.c_str(), susaId, 0);
        ASSERT_GT(report, 0);
        AddSusaHeader(report, SusaHeader("Müller & Co"));
        AddSusaLine(report, {"1000", "Kasse; \"bar\"", 0, -123456, 0, 0, 0, 0});
        AddSusaLine(report, {"1200", "Größe", 123456789, 50, 0, 0, 0, 0});
        view = OpenView(report);
        ASSERT_NE(view, nullptr);
        unlink(path.c_str());
    }
    void TearDown() override { RSCloseReport(report); }

    std::string Export(const std::string &name)
    {
        EXPECT_EQ(RSExportView(view, directory.At(name).c_str()), 1) << name;
        return ReadFile(directory.At(name));
    }
    std::string ExportError(const std::string &path)
    {
        return Errors([&] { EXPECT_EQ(RSExportView(view, path.c_str()), 0) << path; });
    }
};

} // namespace

TEST_F(Files, CsvIsForSpreadsheets)
{
    EXPECT_EQ(Export("a.csv"), "\xEF\xBB\xBF"
                               "Art;Konto;Name;Vortrag Soll;Vortrag Haben;%;An- zahl\r\n"
                               "Text;\"Ein Text <über> alles; \"\"ja\"\"\";;;;;\r\n"
                               "Gruppe;Gruppe 1000;;;-1234,56;;\r\n"
                               "Zeile;1000;\"Kasse; \"\"bar\"\"\";0,00;-1234,56;16,50;-7\r\n"
                               "Summe;Summe;;0,00;-1234,56;;\r\n"
                               "Gruppe;Gruppe 1200;;;0,50;;\r\n"
                               "Zeile;1200;Größe;1234567,89;0,50;16,50;-7\r\n"
                               "Summe;Summe;;1234567,89;0,50;;\r\n"
                               "Gesamt;;2 Zeilen;1234567,89;;;\r\n");
}

TEST_F(Files, JsonKeepsNamesAndNumbers)
{
    EXPECT_EQ(Export("a.json"),
              "{\"report\":\"tervoSUSALIST0.0\",\"title\":\"Test\",\"columns\":[\n"
              "{\"name\":\"konto\",\"title\":\"Konto\",\"form\":\"text\"},\n"
              "{\"name\":\"name\",\"title\":\"Name\",\"form\":\"text\"},\n"
              "{\"name\":\"soll\",\"title\":\"Vortrag Soll\",\"form\":\"amount\"},\n"
              "{\"name\":\"haben\",\"title\":\"Vortrag Haben\",\"form\":\"amount\"},\n"
              "{\"name\":\"satz\",\"title\":\"%\",\"form\":\"rate\"},\n"
              "{\"name\":\"anzahl\",\"title\":\"An- zahl\",\"form\":\"number\"}],\"rows\":[\n"
              "{\"kind\":\"pagehead\",\"left\":\"Müller & Co\",\"center\":\"Liste\"},\n"
              "{\"kind\":\"pagehead\",\"left\":\"zweite Zeile\"},\n"
              "{\"kind\":\"text\",\"\":\"Ein Text <über> alles; \\\"ja\\\"\"},\n"
              "{\"kind\":\"head\",\"konto\":\"Gruppe 1000\",\"haben\":-1234.56},\n"
              "{\"kind\":\"line\",\"konto\":\"1000\",\"name\":\"Kasse; "
              "\\\"bar\\\"\",\"soll\":0.00,\"haben\":-1234.56,"
              "\"satz\":16.50,\"anzahl\":-7},\n"
              "{\"kind\":\"sum\",\"konto\":\"Summe\",\"soll\":0.00,\"haben\":-1234.56},\n"
              "{\"kind\":\"head\",\"konto\":\"Gruppe 1200\",\"haben\":0.50},\n"
              "{\"kind\":\"line\",\"konto\":\"1200\",\"name\":\"Größe\",\"soll\":1234567.89,\"haben\":0.50,"
              "\"satz\":16.50,\"anzahl\":-7},\n"
              "{\"kind\":\"sum\",\"konto\":\"Summe\",\"soll\":1234567.89,\"haben\":0.50},\n"
              "{\"kind\":\"total\",\"name\":\"2 Zeilen\",\"soll\":1234567.89}\n"
              "]}\n");
}

TEST_F(Files, ControlCharactersAreKeptForProgramsAndBlanksForPeople)
{
    RSCloseReport(report);
    report = RSOpenReport(directory.Write("or_test.rs", TemplateWith(smallTemplate)).c_str(), susaId, 0);
    ASSERT_GT(report, 0);
    AddSusaHeader(report, SusaHeader("Müller & Co"));
    AddSusaLine(report, {"13\t00", "a\tb\nc\x1B\xC2\x81\x7F-\xC2\xA0z", 100, 0, 0, 0, 0, 0});
    view = OpenView(report);
    const auto has = [](const std::string &text, const std::string &part) {
        return text.find(part) != std::string::npos;
    };
    const std::string csv = Export("a.csv");
    EXPECT_TRUE(has(csv, "Gruppe;Gruppe 13\t00;")) << csv;
    EXPECT_TRUE(has(csv, "Zeile;13\t00;\"a\tb\nc\x1B\xC2\x81\x7F-\xC2\xA0z\";1,00;")) << csv;
    const std::string json = Export("a.json");
    EXPECT_TRUE(has(json, "\"name\":\"a\\u0009b\\nc\\u001b\xC2\x81\x7F-\xC2\xA0z\"")) << json;
    // What was one character is one blank.
    const std::string text = Export("a.txt");
    EXPECT_TRUE(has(text, "Gruppe 13 00 ")) << text;
    EXPECT_TRUE(has(text, "13 00  a b c \xC2\xA0 -\xC2\xA0z ")) << text;
    const std::string html = Export("a.html");
    EXPECT_TRUE(has(html, ">a b c \xC2\xA0 -\xC2\xA0z</td>")) << html;
    EXPECT_EQ(std::string::npos, html.find('\x1B'));
}

TEST_F(Files, TextIsATableForATerminal)
{
    EXPECT_EQ(Export("a.txt"), "Müller & Co               Liste\n"
                               "zweite Zeile\n"
                               "\n"
                               "                             Vortrag\n"
                               "                                                      An-\n"
                               "Konto  Name                  Soll      Haben      %  zahl\n"
                               "---------------------------------------------------------\n"
                               "Ein Text <über> alles; \"ja\"\n"
                               "Gruppe 1000                        -1.234,56\n"
                               "1000   Kasse; \"bar\"                -1.234,56  16,50    -7\n"
                               "Summe                        0,00  -1.234,56\n"
                               "Gruppe 1200                             0,50\n"
                               "1200   Größe         1.234.567,89       0,50  16,50    -7\n"
                               "Summe                1.234.567,89       0,50\n"
                               "       2 Zeilen      1.234.567,89\n");
}

TEST_F(Files, HtmlIsOnePageWithEverythingEscaped)
{
    const std::string html = Export("a.html");
    EXPECT_EQ(html.substr(0, html.find("<style>")),
              "<!doctype html>\n<html lang=de>\n<head>\n<meta charset=utf-8>\n<title>Test</title>\n");
    EXPECT_NE(html.find("@page{size:210mm 297mm;margin:10mm 10mm 10mm 20mm}\n"), std::string::npos)
        << "a browser prints it on the report's own paper";
    EXPECT_NE(html.find("@media print{body{font-size:9.0pt;"), std::string::npos);
    const std::string body = html.substr(html.find("<body>"));
    EXPECT_EQ(
        body,
        "<body>\n"
        "<header><div>Müller &amp; Co</div><div>Liste</div><div></div>"
        "<div>zweite Zeile</div><div></div><div></div></header>\n"
        "<table>\n<thead>\n"
        "<tr><th colspan=1></th><th colspan=1></th><th class=g colspan=2>Vortrag</th><th colspan=1></th>"
        "<th colspan=1></th></tr>\n"
        "<tr><th>Konto</th><th>Name</th><th class=n>Soll</th><th class=n>Haben</th><th class=n>%</th>"
        "<th class=n>An-<br>zahl</th></tr>\n</thead>\n"
        "<tr class=s1><td colspan=6>Ein Text &lt;über&gt; alles; &quot;ja&quot;</td></tr>\n"
        "<tr class=s2><td colspan=3>Gruppe 1000</td><td class=n>-1.234,56</td><td></td><td></td></tr>\n"
        "<tr class=s0><td>1000</td><td>Kasse; &quot;bar&quot;</td><td class=n></td>"
        "<td class=n>-1.234,56</td><td class=n>16,50</td><td class=n>-7</td></tr>\n"
        "<tr class=s3><td colspan=2>Summe</td><td class=n>0,00</td><td class=n>-1.234,56</td><td></td>"
        "<td></td></tr>\n"
        "<tr class=s2><td colspan=3>Gruppe 1200</td><td class=n>0,50</td><td></td><td></td></tr>\n"
        "<tr class=s0><td>1200</td><td>Größe</td><td class=n>1.234.567,89</td><td class=n>0,50</td>"
        "<td class=n>16,50</td><td class=n>-7</td></tr>\n"
        "<tr class=s3><td colspan=2>Summe</td><td class=n>1.234.567,89</td><td class=n>0,50</td><td></td>"
        "<td></td></tr>\n"
        "<tr class=s4><td></td><td>2 Zeilen</td><td class=n>1.234.567,89</td><td></td><td></td><td></td>"
        "</tr>\n"
        "</table>\n</body>\n</html>\n");
}

TEST_F(Files, TheKindFollowsFromTheExtensionInAnyCase)
{
    EXPECT_EQ(Export("A.CSV"), Export("a.csv"));
    EXPECT_EQ(Export("b.Pdf").substr(0, 5), "%PDF-");
    for (const char *name : {"a", "a.doc", ".pdf", "a.pdf~", "acsv", ""}) {
        const std::string path = name[0] == '.' || name[0] == 0 ? name : directory.At(name);
        EXPECT_EQ(ExportError(path),
                  "librs: " + path + ": In Dateien dieser Art wird kein Bericht geschrieben.\n");
    }
    EXPECT_EQ(Errors([&] { EXPECT_EQ(RSExportView(view, nullptr), 0); }),
              "librs: : In Dateien dieser Art wird kein Bericht geschrieben.\n");
}

TEST_F(Files, WhatCannotBeWrittenLeavesEverythingAsItWas)
{
    const std::string missing = directory.At("none") + "/a.pdf";
    EXPECT_EQ(ExportError(missing),
              "librs: " + missing + ": Das Verzeichnis oder die Datei gibt es nicht.\n");
    std::filesystem::create_directory(directory.At("d.csv"));
    EXPECT_EQ(ExportError(directory.At("d.csv")),
              "librs: " + directory.At("d.csv") + ": Das ist ein Verzeichnis.\n");
    const std::string file = directory.Write("f", "");
    EXPECT_EQ(ExportError(file + "/a.csv"),
              "librs: " + file + "/a.csv: Ein Teil des Pfads ist kein Verzeichnis.\n");
    const std::string endless = directory.At(std::string(300, 'x') + ".csv");
    EXPECT_NE(ExportError(endless).find(": Der Name ist zu lang.\n"), std::string::npos);
    EXPECT_EQ(directory.Files(), (std::vector<std::string>{"d.csv", "f"}));
}

TEST_F(Files, AFullDiskLeavesNoHalfFile)
{
    // A limit on the size of files stands for the full disk: writes fail in the same place.
    signal(SIGXFSZ, SIG_IGN);
    for (const char *name : {"a.pdf", "a.csv", "a.json", "a.html", "a.txt"}) {
        const std::string path = directory.Write(name, "what was there before");
        rlimit before = {};
        getrlimit(RLIMIT_FSIZE, &before);
        const rlimit tiny = {100, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &tiny);
        const std::string said = ExportError(path);
        setrlimit(RLIMIT_FSIZE, &before);
        EXPECT_EQ(said, "librs: " + path + ": Die Datei ist zu groß.\n");
        EXPECT_EQ(ReadFile(path), "what was there before");
    }
    EXPECT_EQ(directory.Files(), (std::vector<std::string>{"a.csv", "a.html", "a.json", "a.pdf", "a.txt"}));
}

TEST_F(Files, AFullDiskWhileRecordsComeInFailsTheReport)
{
    signal(SIGXFSZ, SIG_IGN);
    const int32_t second = OpenShipped("or_slist.rs", susaId);
    AddSusaHeader(second);
    rlimit before = {};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small = {200'000, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    int lines = 0;
    const std::string said = Errors([&] {
        while (lines < 100'000 && AddSusaLine(second, {"1000", "Kasse", 1, 0, 0, 0, 0, 0}) == 1) {
            ++lines;
        }
    });
    setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_LT(lines, 2000);
    EXPECT_NE(said.find("or_slist.rs:"), std::string::npos) << said;
    EXPECT_NE(said.find(": Zwischendatei: Die Datei ist zu groß.\n"), std::string::npos) << said;
    Errors([&] { EXPECT_EQ(OpenView(second), nullptr); });
    RSCloseReport(second);
}

TEST_F(Files, AReportNeedsAPlaceForItsTemporaryFile)
{
    setenv("TMPDIR", directory.At("none").c_str(), 1);
    EXPECT_EQ(Errors([&] { EXPECT_EQ(OpenShipped("or_slist.rs", susaId), 0); }),
              "librs: " + ShippedTemplate("or_slist.rs") +
                  ": Zwischendatei: Das Verzeichnis oder die Datei gibt es nicht.\n");
    setenv("TMPDIR", directory.Path.c_str(), 1);
    const int32_t second = OpenShipped("or_slist.rs", susaId);
    EXPECT_GT(second, 0);
    EXPECT_TRUE(directory.Files().empty()) << "its file has no name";
    unsetenv("TMPDIR");
    RSCloseReport(second);
}

TEST_F(Files, ALinkKeepsPointingAndWhatIsNoFileIsRefused)
{
    directory.Write("real.csv", "old");
    std::filesystem::create_symlink("real.csv", directory.At("link.csv"));
    const std::string csv = Export("link.csv");
    EXPECT_TRUE(std::filesystem::is_symlink(directory.At("link.csv")));
    EXPECT_EQ(ReadFile(directory.At("real.csv")), csv);
    ASSERT_EQ(mkfifo(directory.At("pipe.csv").c_str(), 0600), 0);
    EXPECT_EQ(ExportError(directory.At("pipe.csv")),
              "librs: " + directory.At("pipe.csv") + ": Das ist keine gewöhnliche Datei.\n");
    std::filesystem::create_symlink("/dev/null", directory.At("null.pdf"));
    EXPECT_EQ(ExportError(directory.At("null.pdf")),
              "librs: " + directory.At("null.pdf") + ": Das ist keine gewöhnliche Datei.\n");
}

TEST_F(Files, AFileGetsTheRightsThatTheUserGivesNewFiles)
{
    const mode_t mask = umask(0027);
    Export("a.csv");
    umask(mask);
    struct stat status = {};
    stat(directory.At("a.csv").c_str(), &status);
    EXPECT_EQ(status.st_mode & 0777, 0640u);
}

TEST_F(Files, AHostThatIgnoresItsChildrenStillGetsItsPages)
{
    signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(Export("a.pdf").substr(0, 5), "%PDF-");
}

TEST_F(Files, PagesAreDrawnWithLowDescriptorsInUseOrClosed)
{
    // The descriptors that the drawing program expects may be taken, or free and given to the engine's own
    // files.
    std::vector<int> taken;
    taken.reserve(10);
    for (int i = 0; i < 10; ++i) {
        taken.push_back(open("/dev/null", O_RDONLY));
    }
    EXPECT_EQ(Export("a.pdf").substr(0, 5), "%PDF-");
    for (const int descriptor : taken) {
        close(descriptor);
    }
    const int32_t second = OpenShipped("or_slist.rs", susaId);
    RSWindow secondView = OpenView(second);
    EXPECT_EQ(RSExportView(secondView, directory.At("b.pdf").c_str()), 1);
    RSCloseReport(second);
}
