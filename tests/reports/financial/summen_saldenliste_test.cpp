#include "include/vark40.h"
#include "report-engine/rs.h"
#include "src/frame/lifecycle.h"
#include "src/frame/report_engine.h"
#include "src/reports/frame/report_params.h"
#include "tests/support/books.h"
#include "tests/support/engine_faults.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

using namespace vark;
using namespace vark::test;

namespace {

// A report engine that writes down what it is sent.
struct Recording {
    std::vector<std::string> Calls;
    std::vector<std::string> Lines; // records of kind 1, field by field
    int AddsUntilRefusal = -1;
    RSWindow View = reinterpret_cast<RSWindow>(0x4711);
    int32_t PrintResult = 1;
};

Recording *recording;

std::string Field(const void *record, size_t offset, size_t width)
{
    const char *text = static_cast<const char *>(record) + offset;
    return TextOf(text, width);
}

int32_t Open(const char *path, const char *id, int32_t)
{
    recording->Calls.push_back("open " + std::filesystem::path(path).filename().string() + " " + id);
    return 7;
}
void Close(int32_t report) { recording->Calls.push_back("close " + std::to_string(report)); }
int32_t Add(int32_t, int32_t kind, const void *record)
{
    if (recording->AddsUntilRefusal-- == 0) return 0;
    if (kind == 0) {
        recording->Calls.push_back("header " + Field(record, 0, 41) + "|" + Field(record, 41, 7) + "|" +
                                   Field(record, 48, 20) + "|" + Field(record, 68, 30) + "|" +
                                   Field(record, 98, 30));
        return 1;
    }
    std::string line = Field(record, 0, 8) + "|" + Field(record, 8, 9) + "|" + Field(record, 17, 41);
    for (size_t offset = 58; offset < 162; offset += 13) {
        line += "|" + Field(record, offset, 13);
    }
    line += "|" + std::to_string(static_cast<const unsigned char *>(record)[162]);
    recording->Lines.push_back(line);
    return 1;
}
RSWindow View(int32_t, const char *title, const char *page, RSWindow, int32_t, int32_t, int32_t, int32_t,
              uint32_t style, uint32_t, uint32_t a, uint32_t b, RSWindow)
{
    recording->Calls.push_back("view " + std::string(title) + " " + page + " " + std::to_string(style) + " " +
                               std::to_string(a) + " " + std::to_string(b));
    return recording->View;
}
int32_t Print(RSWindow, int32_t)
{
    recording->Calls.emplace_back("print");
    return recording->PrintResult;
}

struct SummenSaldenliste : testing::Test {
    Books books;
    Recording sent;
    ReportParams params{};

    void SetUp() override
    {
        MandantOptions options;
        books.AddMandant(1, options);
        books.ChangeMandant(1, [](FistaRecord &mandant) { SetText(mandant.Name, "Musterbetrieb"); });
        SakoRecord kasse = MakeSako("1000");
        SetText(kasse.Name, "Kasse");
        Put(kasse.Umsaetze.Vortrag, "000000100,00", "000000000,00");
        Put(kasse.Umsaetze.Monat[0], "000000010,00", "000000001,00");
        Put(kasse.Umsaetze.Monat[1], "000000020,50", "000000002,00");
        Put(kasse.Umsaetze.Monat[2], "000000300,00", "000000030,00");
        books.Insert(1, TableSako, kasse);
        books.Insert(1, TableSako, MakeSako("1200"));
        books.Insert(1, TableDebi, MakePersonal("10000"));
        recording = &sent;
        EXPECT_EQ(1, VARK_Status());
        params.ParamFlags = ParamZeitraum | ParamDaten | ParamKontoArt;
        std::memcpy(params.VonDatum, "010198", 7);
        std::memcpy(params.BisDatum, "310398", 7);
        params.KontoArt = 1;
    }
    void TearDown() override { VARK_SchliesseDB(); }

    static void Put(SollHaben &amounts, const char *soll, const char *haben)
    {
        std::memcpy(amounts.Soll, soll, 13);
        std::memcpy(amounts.Haben, haben, 13);
    }
    static void Record()
    {
        reportEngine.ReportEngineBound = 1;
        reportEngine.OpenReport = Open;
        reportEngine.CloseReport = Close;
        reportEngine.AddData = Add;
        reportEngine.OpenView = View;
        reportEngine.PrintView = Print;
    }
    std::string Path(const char *name) const { return books.Directory() + "/" + name; }
};

} // namespace

TEST_F(SummenSaldenliste, SendsHeaderAndALinePerAccount)
{
    Record();
    EXPECT_EQ(sent.View, VARK_SummenSaldenListe(1, nullptr, &params));
    EXPECT_EQ((Lines{"open or_slist.rs tervoSUSALIST0.0", "header Musterbetrieb|310318|März|Sachkonten|",
                     "view  %N 0 65535 65535"}),
              sent.Calls);
    // Vortrag, March, January to March, and with the Vortrag.
    EXPECT_EQ(
        (Lines{
            "1000|K1000|Kasse|000000100,00|000000000,00|000000300,00|000000030,00|000000330,50|000000033,00|"
            "000000430,50|000000033,00|1",
            "1200|K1200|Sachkonto "
            "1200|000000000,00|000000000,00|000000000,00|000000000,00|000000000,00|000000000,00|"
            "000000000,00|000000000,00|0"}),
        sent.Lines);
    EXPECT_EQ(1u, uint32_t{params.ViewResult});
}

TEST_F(SummenSaldenliste, FirstMonthHasNoMonthsBeforeIt)
{
    Record();
    std::memcpy(params.BisDatum, "310198", 7);
    VARK_SummenSaldenListe(1, nullptr, &params);
    EXPECT_EQ(
        "1000|K1000|Kasse|000000100,00|000000000,00|000000010,00|000000001,00|000000010,00|000000001,00|"
        "000000110,00|000000001,00|1",
        sent.Lines.at(0));
}

TEST_F(SummenSaldenliste, RangeBoundsTheAccounts)
{
    Record();
    params.ParamFlags |= ParamKonten;
    std::memcpy(params.SachkontoVon, "1001", 5);
    VARK_SummenSaldenListe(1, nullptr, &params);
    EXPECT_EQ(1u, sent.Lines.size());
    EXPECT_EQ("header Musterbetrieb|310318|März|Sachkonten|von 1001", sent.Calls.at(1));
    sent.Lines.clear();
    std::memcpy(params.SachkontoVon, "5000", 5);
    std::memcpy(params.SachkontoBis, "6000", 5);
    EXPECT_NE(nullptr, VARK_SummenSaldenListe(1, nullptr, &params))
        << "a report without lines is shown as well";
    EXPECT_TRUE(sent.Lines.empty());
}

TEST_F(SummenSaldenliste, PersonalAccountsTakeTheirOwnFields)
{
    Record();
    params.KontoArt = 4;
    VARK_SummenSaldenListe(1, nullptr, &params);
    EXPECT_EQ("header Musterbetrieb|310318|März|Debitoren|", sent.Calls.at(1));
    ASSERT_EQ(1u, sent.Lines.size());
    EXPECT_EQ(0u, sent.Lines[0].find("10000|K10000|"));
}

TEST_F(SummenSaldenliste, PrintedReportGivesNoViewButTellsOfItsSuccess)
{
    Record();
    params.ParamFlags |= ParamAusgabe;
    params.Ausgabe = 1;
    sent.PrintResult = 0;
    EXPECT_EQ(nullptr, VARK_SummenSaldenListe(1, nullptr, &params));
    EXPECT_EQ(1u, uint32_t{params.ViewResult}) << "a failed print is told by the printer's result alone";
    EXPECT_EQ("print", sent.Calls.at(3));
    EXPECT_EQ("close 7", sent.Calls.at(4));
    EXPECT_EQ(0u, GetThreadContext()->LastPrintResult);
}

TEST_F(SummenSaldenliste, RefusedRecordEndsTheReportAsFailed)
{
    for (const int refused : {0, 1, 2}) {
        Record();
        sent = {};
        sent.AddsUntilRefusal = refused;
        books.TakeBoxes();
        EXPECT_EQ(nullptr, VARK_SummenSaldenListe(1, nullptr, &params)) << refused;
        EXPECT_EQ("close 7", sent.Calls.back());
        EXPECT_EQ(Lines{"Die Summen- und Saldenliste konnte nicht erstellt werden!"}, books.TakeBoxes());
        EXPECT_EQ(0u, uint32_t{params.ViewResult});
    }
}

TEST_F(SummenSaldenliste, ViewThatDoesNotOpenIsAFailedReport)
{
    Record();
    sent.View = nullptr;
    EXPECT_EQ(nullptr, VARK_SummenSaldenListe(1, nullptr, &params));
    EXPECT_EQ(Lines{"Die Summen- und Saldenliste konnte nicht erstellt werden!"}, books.TakeBoxes());
    EXPECT_EQ("close 7", sent.Calls.back());
    EXPECT_EQ(0u, uint32_t{params.ViewResult});
}

TEST_F(SummenSaldenliste, SumThatOverflowsIsNeverPrinted)
{
    SakoRecord full = MakeSako("0900");
    Put(full.Umsaetze.Vortrag, "999999999,99", "000000000,00");
    Put(full.Umsaetze.Monat[2], "000000000,01", "000000000,00");
    books.Insert(1, TableSako, full);
    Record();
    EXPECT_EQ(nullptr, VARK_SummenSaldenListe(1, nullptr, &params));
    EXPECT_EQ(Lines{"Die Summen- und Saldenliste konnte nicht erstellt werden!"}, books.TakeBoxes());
}

TEST_F(SummenSaldenliste, FailingReadEndsTheReport)
{
    Record();
    FailEngineOperation(6, 1, 2); // the second account
    EXPECT_EQ(nullptr, VARK_SummenSaldenListe(1, nullptr, &params));
    StopEngineFaults();
    EXPECT_EQ((Lines{"I/O Error", "Die Summen- und Saldenliste konnte nicht erstellt werden!"}),
              books.TakeBoxes());
}

TEST_F(SummenSaldenliste, UnknownMandantGivesNothingAndShowsNothing)
{
    Record();
    params.ViewResult = 1;
    EXPECT_EQ(nullptr, VARK_SummenSaldenListe(9, nullptr, &params));
    EXPECT_EQ(0u, uint32_t{params.ViewResult});
    EXPECT_EQ(Lines{}, books.TakeBoxes());
    EXPECT_TRUE(sent.Calls.empty());
}

TEST_F(SummenSaldenliste, WithoutACallersBlockTodayIsTaken)
{
    Record();
    EXPECT_EQ(sent.View, VARK_SummenSaldenListe(1, nullptr, nullptr));
    EXPECT_EQ("header Musterbetrieb|150618|Juni|Sachkonten|", sent.Calls.at(1));
}

TEST_F(SummenSaldenliste, MissingTemplateIsNamedWithItsPath)
{
    EXPECT_EQ(nullptr, VARK_SummenSaldenListe(1, nullptr, &params));
    EXPECT_EQ(Lines{"Reportdatei '" + std::string(ReportPath) +
                    "or_slist.rs' konnte nicht gefunden werden oder beim Öffnen ist ein Fehler aufgetreten."},
              books.TakeBoxes());
}

TEST_F(SummenSaldenliste, TitleAndStyleAreThoseOfInitReports)
{
    EXPECT_EQ(1, VARK_InitReports(0x00CF0000, 0, "Berichte", nullptr));
    EXPECT_EQ(1, VARK_InitReports(0x00CF0000, 0, "Auswertung", nullptr))
        << "the second call replaces the first";
    Record();
    VARK_SummenSaldenListe(1, nullptr, &params);
    EXPECT_EQ("view Auswertung %N 13565952 65535 65535", sent.Calls.back());
    EXPECT_EQ(nullptr, GetThreadContext()->ReportFrameClass);
}

TEST_F(SummenSaldenliste, RealEngineMakesTheFile)
{
    std::filesystem::copy_file(std::string(TEMPLATES) + "/or_slist.rs",
                               std::string(ReportPath) + "or_slist.rs");
    void *library = reportEngine.ReportEngineLibrary;
    ASSERT_NE(nullptr, library);
    VarkWindow view = VARK_SummenSaldenListe(1, nullptr, &params);
    ASSERT_NE(nullptr, view);
    const auto exportView = reinterpret_cast<decltype(&RSExportView)>(FindEntry(library, "RSExportView"));
    ASSERT_EQ(1, exportView(view, Path("susa.csv").c_str()));
    std::ifstream file(Path("susa.csv"));
    const std::string csv((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    EXPECT_NE(std::string::npos, csv.find("430,50")) << csv;
    EXPECT_NE(std::string::npos, csv.find("Kasse"));
}
