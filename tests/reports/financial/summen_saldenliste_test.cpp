#include "include/vark40.h"
#include "report-engine/include/rs.h"
#include "src/frame/lifecycle.h"
#include "src/frame/report_engine.h"
#include "src/reports/frame/report_params.h"
#include "tests/support/books.h"
#include "tests/support/engine_faults.h"
#include "tests/support/recording_engine.h"
#include "tests/support/report_faults.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <thread>
#include <vector>

using namespace vark;
using namespace vark::test;

namespace {

struct SummenSaldenliste : testing::Test {
    Books books;
    RecordingEngine sent;
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
    std::string Path(const char *name) const { return books.Directory() + "/" + name; }
};

} // namespace

TEST_F(SummenSaldenliste, PrintedReportGivesNoViewButTellsOfItsSuccess)
{
    sent.Install();
    params.ParamFlags |= ParamAusgabe;
    params.Ausgabe = 1;
    sent.PrintResult = 0;
    EXPECT_EQ(nullptr, VARK_SummenSaldenListe(1, nullptr, &params));
    EXPECT_EQ(1u, uint32_t{params.ViewResult}) << "a failed print is told by the printer's result alone";
    EXPECT_EQ("print 0", sent.Calls.back()) << "the view owns its report, which ends with it";
    EXPECT_EQ(0u, GetThreadContext()->LastPrintResult);
}

TEST_F(SummenSaldenliste, RefusedRecordEndsTheReportAsFailed)
{
    for (const int refused : {0, 1, 2}) {
        sent = {};
        sent.Install();
        sent.RecordsUntilRefusal = refused;
        books.TakeBoxes();
        EXPECT_EQ(nullptr, VARK_SummenSaldenListe(1, nullptr, &params)) << refused;
        EXPECT_EQ("close 7", sent.Calls.back());
        EXPECT_EQ(Lines{"Die Summen- und Saldenliste konnte nicht erstellt werden!"}, books.TakeBoxes());
        EXPECT_EQ(0u, uint32_t{params.ViewResult});
    }
}

TEST_F(SummenSaldenliste, ViewThatDoesNotOpenIsAFailedReport)
{
    sent.Install();
    sent.ViewResult = nullptr;
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
    sent.Install();
    EXPECT_EQ(nullptr, VARK_SummenSaldenListe(1, nullptr, &params));
    EXPECT_EQ(Lines{"Die Summen- und Saldenliste konnte nicht erstellt werden!"}, books.TakeBoxes());
}

TEST_F(SummenSaldenliste, FailingReadEndsTheReport)
{
    sent.Install();
    FailEngineOperation(6, 1, 2); // the second account
    EXPECT_EQ(nullptr, VARK_SummenSaldenListe(1, nullptr, &params));
    StopEngineFaults();
    EXPECT_EQ((Lines{"I/O Error", "Die Summen- und Saldenliste konnte nicht erstellt werden!"}),
              books.TakeBoxes());
}

TEST_F(SummenSaldenliste, WhateverFailsTheReportIsWholeOrNotThere)
{
    // A day inside a month, so that postings are read as well.
    std::memcpy(params.BisDatum, "150398", 7);
    books.Insert(1, TableBube, MakeBube(1, "200318", "1000", "1200", "000000010,00"));
    sent.Install();
    ExpectWholeOrNotThere(
        {.Installation = &books,
         .Sent = &sent,
         .Params = params,
         .Call = [](ReportParams *block) { return VARK_SummenSaldenListe(1, nullptr, block); },
         .Failure = "Die Summen- und Saldenliste konnte nicht erstellt werden!"});
}

TEST_F(SummenSaldenliste, BlockOfRandomBytesIsReadWithinItself)
{
    // What cannot be read is corrected or refused by the dialog; nothing is written outside the block.
    sent.Install();
    constexpr unsigned seed = 20240817;
    std::mt19937 random(seed);
    struct {
        char Before[64];
        ReportParams Block;
        char After[64];
    } fenced;
    int made = 0;
    for (int round = 0; round < 300; ++round) {
        std::memset(&fenced, 0x5A, sizeof fenced);
        auto *bytes = reinterpret_cast<unsigned char *>(&fenced.Block);
        for (size_t i = 0; i < sizeof fenced.Block; ++i) {
            bytes[i] = static_cast<unsigned char>(random());
        }
        // Half of them with dates that are dates, so that reports are made as well.
        if (round % 2 == 0) {
            std::memcpy(fenced.Block.VonDatum, "010198", 7);
            std::memcpy(fenced.Block.BisDatum, "310398", 7);
            fenced.Block.ParamFlags = (fenced.Block.ParamFlags | ParamDaten) & ~uint32_t{ParamArchivJahr};
        }
        const bool isShown = VARK_SummenSaldenListe(1, nullptr, &fenced.Block) != nullptr;
        if (uint32_t{fenced.Block.ViewResult} == 1) {
            ++made;
            EXPECT_EQ(int32_t{fenced.Block.Ausgabe} == 0, isShown) << "seed " << seed << " round " << round;
        } else {
            EXPECT_FALSE(isShown) << "seed " << seed << " round " << round;
        }
        for (size_t i = 0; i < sizeof fenced.Before; ++i) {
            ASSERT_EQ(0x5A, fenced.Before[i]) << "seed " << seed << " round " << round;
            ASSERT_EQ(0x5A, fenced.After[i]) << "seed " << seed << " round " << round;
        }
    }
    EXPECT_GT(made, 100);
}

TEST_F(SummenSaldenliste, UnknownMandantGivesNothingAndShowsNothing)
{
    sent.Install();
    params.ViewResult = 1;
    EXPECT_EQ(nullptr, VARK_SummenSaldenListe(9, nullptr, &params));
    EXPECT_EQ(0u, uint32_t{params.ViewResult});
    EXPECT_EQ(Lines{}, books.TakeBoxes());
    EXPECT_TRUE(sent.Calls.empty());
}

TEST_F(SummenSaldenliste, WithoutACallersBlockTodayIsTaken)
{
    sent.Install();
    EXPECT_EQ(sent.ViewResult, VARK_SummenSaldenListe(1, nullptr, nullptr));
    EXPECT_EQ(Lines{"Mandant=Musterbetrieb | BisDatum=150618 | Monat=Juni | Kontoart=Sachkonten | Bereich="},
              sent.Records(0));
}

TEST(SummenSaldenlisteDialog, CancelledOpensNothingAndLeavesTheBlock)
{
    Books books("dialog 111\ntext 22991 28.2.98\npress 2\n");
    books.AddMandant(1);
    ReportParams params{};
    params.ParamFlags = ParamZeitraum | ParamDaten;
    std::memcpy(params.BisDatum, "310398", 7);
    params.ViewResult = 1;
    ReportParams wanted = params;
    wanted.ViewResult = 0;
    EXPECT_EQ(1, VARK_Status());
    RecordingEngine sent;
    sent.Install();
    EXPECT_EQ(nullptr, VARK_SummenSaldenListe(1, nullptr, &params));
    EXPECT_EQ(0, std::memcmp(&wanted, &params, sizeof params));
    EXPECT_TRUE(sent.Calls.empty());
    EXPECT_EQ(Lines{}, books.TakeBoxes());
    VARK_SchliesseDB();
}

TEST_F(SummenSaldenliste, MissingTemplateIsNamedWithItsPath)
{
    EXPECT_EQ(0u, params.ParamFlags & ParamAusgabe);
    EXPECT_EQ(nullptr, VARK_SummenSaldenListe(1, nullptr, &params));
    EXPECT_NE(0u, params.ParamFlags & ParamAusgabe) << "what was chosen is told before the template opens";
    EXPECT_EQ(Lines{"Reportdatei '" + std::string(ReportPath) +
                    "or_slist.rs' konnte nicht gefunden werden oder beim Öffnen ist ein Fehler aufgetreten."},
              books.TakeBoxes());
}

TEST_F(SummenSaldenliste, TitleAndStyleAreThoseOfInitReports)
{
    EXPECT_EQ(1, VARK_InitReports(0x00CF0000, 0, "Berichte", nullptr));
    EXPECT_EQ(1, VARK_InitReports(0x00CF0000, 0, "Auswertung", nullptr))
        << "the second call replaces the first";
    sent.Install();
    VARK_SummenSaldenListe(1, nullptr, &params);
    EXPECT_EQ("view 7 'Auswertung' %N parent=none 0,0 0x0 style=00cf0000 ex=00000000 65535 65535 frame=none",
              sent.Calls.back());
    EXPECT_EQ(nullptr, GetThreadContext()->ReportFrameClass);
}

TEST_F(SummenSaldenliste, RealEngineMakesTheFile)
{
    std::filesystem::copy(TEMPLATES, ReportPath);
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
