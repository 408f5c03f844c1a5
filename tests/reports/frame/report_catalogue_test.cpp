// The steps between the library and the report engine, with an engine that writes down what it is called
// with.
#include "src/reports/frame/report_catalogue.h"

#include "src/frame/lifecycle.h"
#include "src/frame/report_engine.h"
#include "src/platform/platform.h"
#include "src/platform/window_api.h"
#include "tests/support/alloc_faults.h"
#include "tests/support/books.h"
#include "tests/support/recording_engine.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <thread>

using namespace vark;
using namespace vark::test;

namespace {

struct ReportSteps : testing::Test {
    Books Installation;
    RecordingEngine Engine;
    ThreadContext *Context = nullptr;

    void SetUp() override
    {
        Installation.AddMandant(1);
        ASSERT_EQ(1, EnterExport(Context));
        Engine.Install();
    }
    void TearDown() override { VARK_SchliesseDB(); }

    static HWND MakeWindow(const char *className, DWORD style, DWORD exStyle = 0)
    {
        WNDCLASSA made{};
        made.lpszClassName = className;
        made.lpfnWndProc = DefWindowProcA;
        RegisterClassA(&made);
        return CreateWindowExA(exStyle, className, "Titel", style, 30, 40, 500, 300, nullptr, nullptr,
                               nullptr, nullptr);
    }
    std::string ShownStyle(ReportRow row, uint32_t style)
    {
        Context->ReportViewStyle = style;
        VarkWindow view = nullptr;
        ShowOrPrintReport(*Context, row, 7, Ausgabe::Bildschirm, nullptr, view);
        const std::string &call = Engine.Calls.back();
        return call.substr(call.find("style=") + 6, 8);
    }
    static bool IsWaiting()
    {
        HCURSOR wait = LoadCursorA(nullptr, IDC_WAIT);
        HCURSOR now = SetCursor(wait);
        SetCursor(now);
        return now == wait;
    }
};

} // namespace

// ---- The catalogue ----

TEST_F(ReportSteps, CatalogueNamesEachReport)
{
    const struct {
        const char *Template;
        const char *ReportId;
        const char *DisplayName;
    } rows[] = {
        {"or_kpla", "tervoKTOPLAN0.0", "Der Kontenplan"},
        {"or_spla", "tervoSAKTOPLAN0.0", "Der Kontenplan"},
        {"or_slist", "tervoSUSALIST0.0", "Die Summen- und Saldenliste"},
        {"or_hab", "tervoHABSCHLUSS0.0", "Die Hauptabschlußübersicht"},
        {"or_umsta", "tervoUMSTAT0.0", "Die Umsatzstatistik"},
        {"or_bjou", "tervoBJOURNAL0.0", "Das Buchungsjournal"},
        {"or_kblao", "tervoKTOBLATT0.0", "Das Kontenblatt"},
        {"or_kblam", "tervoKTOBLATT0.0", "Das Kontenblatt"},
        {"or_ksald", "tervoKOSALIST0.0", "Die Kostensaldenliste"},
        {"or_kolst", "tervoKOSTLIST0.0", "Die Kostenstellenliste"},
        {"or_kjou", "tervoKJOURNAL0.0", "Das Kostenjournal"},
        {"or_kauft", "tervoKAUFT0.0", "Die Kostenaufteilung"},
        {"or_ustvd", "tervoUSTVA0.0", "Die Umsatzsteuervoranmeldung"},
        {"or_ustd7", "tervoUSTVA0.0", "Die Umsatzsteuervoranmeldung"},
        {"or_ustva", "tervoUSTVA0.0", "Die Umsatzsteuervoranmeldung"},
        {"or_zm", "tervoZM0.0", "Die Zusammenfassende Meldung"},
        {"or_guv", "tervoGUV0.0", "Die Gewinn- und Verlustrechnung"},
        {"or_bil", "tervoBILANZ0.0", "Die Bilanz"},
        {"or_vprob", "tervoUSTVAVERPROB0.0", "Die Umsatzsteuerverprobung"},
        {"or_oplst", "tervoOPLISTE0.0", "Die OP-Liste"},
        {"or_kobla", "tervoKOSTENBLATT0.0", "Die Kostenstellenauswertung"},
    };
    static_assert(std::size(rows) == reportRowCount);
    for (int i = 0; i < reportRowCount; ++i) {
        const auto row = static_cast<ReportRow>(i);
        EXPECT_EQ(7, OpenReportTemplate(row));
        EXPECT_EQ(std::string("open ") + rows[i].Template + ".rs " + rows[i].ReportId + " 0",
                  Engine.Calls.back());
        EXPECT_EQ(0, ReportFailed(row));
        EXPECT_EQ(Lines{std::string(rows[i].DisplayName) + " konnte nicht erstellt werden!"},
                  Installation.TakeBoxes());
    }
}

// ---- Opening ----

TEST_F(ReportSteps, WaitCursorStaysOnWhileTheReportIsBuilt)
{
    OpenReportTemplate(ReportSummenSalden);
    EXPECT_TRUE(IsWaiting());
    VarkWindow view = nullptr;
    ShowOrPrintReport(*Context, ReportSummenSalden, 7, Ausgabe::Bildschirm, nullptr, view);
    EXPECT_FALSE(IsWaiting());
    OpenReportTemplate(ReportSummenSalden);
    AbandonReport(ReportSummenSalden, 7);
    EXPECT_FALSE(IsWaiting());
    Engine.OpenResult = 0;
    OpenReportTemplate(ReportSummenSalden);
    EXPECT_FALSE(IsWaiting());
}

TEST_F(ReportSteps, TemplateThatDoesNotOpenIsNamedWithItsFullPath)
{
    Engine.OpenResult = 0x10000; // the low word is the handle
    EXPECT_EQ(0, OpenReportTemplate(ReportBilanz));
    EXPECT_EQ(Lines{"Reportdatei '" + std::string(ReportPath) +
                    "or_bil.rs' konnte nicht gefunden werden oder beim Öffnen ist ein Fehler aufgetreten."},
              Installation.TakeBoxes());
    Engine.OpenResult = 0x10007;
    EXPECT_EQ(7, OpenReportTemplate(ReportBilanz));
}

TEST_F(ReportSteps, PathThatDoesNotFitIsATemplateThatIsNotThere)
{
    // "or_slist.rs" and the NUL are 12 of the 260 characters.
    const std::string fits = "/" + std::string(246, 'r') + "/";
    std::memcpy(ReportPath, fits.c_str(), fits.size() + 1);
    EXPECT_EQ(7, OpenReportTemplate(ReportSummenSalden));
    EXPECT_EQ(1u, Engine.Calls.size());

    const std::string longer = "/" + std::string(247, 'r') + "/";
    std::memcpy(ReportPath, longer.c_str(), longer.size() + 1);
    EXPECT_EQ(0, OpenReportTemplate(ReportSummenSalden));
    EXPECT_EQ(1u, Engine.Calls.size()) << "the engine is not asked";
    const Lines boxes = Installation.TakeBoxes();
    ASSERT_EQ(1u, boxes.size());
    EXPECT_EQ(0u, boxes[0].find("Reportdatei '/rrr"));
}

TEST_F(ReportSteps, EngineThatIsNotBoundIsATemplateThatDoesNotOpen)
{
    reportEngine.ReportEngineBound = 0;
    EXPECT_EQ(0, OpenReportTemplate(ReportSummenSalden));
    EXPECT_TRUE(Engine.Calls.empty());
    EXPECT_EQ(1u, Installation.TakeBoxes().size());
}

TEST_F(ReportSteps, SecondReportIsOpenedUnderTheIdOfItsRow)
{
    Engine.CopyResult = 0x20009;
    EXPECT_EQ(9, CopyReportTemplate(ReportKontenblattMit, 7));
    EXPECT_EQ(Lines{"copy 7 tervoKTOBLATT0.0 0"}, Engine.Calls);
    EXPECT_TRUE(IsWaiting());
    EXPECT_EQ(9, CopyReportTemplate(ReportKostenstellenauswertung, 0xFFFF));
    EXPECT_EQ("copy 65535 tervoKOSTENBLATT0.0 0", Engine.Calls.back());
}

TEST_F(ReportSteps, SecondReportThatDoesNotOpenShowsNothing)
{
    Engine.CopyResult = 0;
    EXPECT_EQ(0, CopyReportTemplate(ReportKontenblattOhne, 7));
    EXPECT_EQ(Lines{}, Installation.TakeBoxes());
}

// ---- Views ----

TEST_F(ReportSteps, ViewTakesTheParentsRectangleAndTheThreadsSettings)
{
    HWND parent = MakeWindow("Rahmen", WS_POPUP); // all of which is inside
    ASSERT_EQ(1, VARK_InitReports(0x10CF0000, 0x200, "Auswertung", parent));
    VarkWindow view = nullptr;
    EXPECT_TRUE(ShowOrPrintReport(*Context, ReportSummenSalden, 7, Ausgabe::Bildschirm, parent, view));
    EXPECT_EQ(Engine.ViewResult, view);
    EXPECT_EQ("view 7 'Auswertung' %N parent=window 0,0 500x300 style=10cf0000 ex=00000200 65535 65535 "
              "frame=window",
              Engine.Calls.back());
    DestroyWindow(parent);
}

TEST_F(ReportSteps, SheetsGetAChildWindowWhateverTheHostWished)
{
    EXPECT_EQ("50300000", ShownStyle(ReportKontenblattOhne, 0x10FF0001));
    EXPECT_EQ("50300000", ShownStyle(ReportKontenblattMit, 0x10FF0001));
    EXPECT_EQ("10ff0001", ShownStyle(ReportKostenstellenauswertung, 0x10FF0001));
    EXPECT_EQ("10ff0001", ShownStyle(ReportKostensalden, 0x10FF0001));
}

TEST_F(ReportSteps, PrintedReportEndsItsWindow)
{
    HWND window = MakeWindow("Ansicht", WS_POPUP);
    Engine.ViewResult = window;
    Engine.PrintResult = 5;
    VarkWindow view = window;
    EXPECT_TRUE(ShowOrPrintReport(*Context, ReportSummenSalden, 7, Ausgabe::Drucker, nullptr, view));
    EXPECT_EQ(nullptr, view);
    EXPECT_EQ(5u, Context->LastPrintResult);
    EXPECT_FALSE(IsWindow(window));
    EXPECT_EQ("print 0", Engine.Calls.back()) << "the view owned the report, so nothing is closed";
}

TEST_F(ReportSteps, CopiedViewTakesPlaceAndStylesOfTheOld)
{
    // WS_CLIPSIBLINGS is a style that Windows gives to every window without a parent.
    HWND old = MakeWindow("Ansicht", WS_POPUP | WS_VISIBLE | WS_CLIPSIBLINGS, WS_EX_CLIENTEDGE);
    VarkWindow view = nullptr;
    CopyReportTemplate(ReportKontenblattMit, 7);
    EXPECT_EQ(1, CopyReportView(ReportKontenblattMit, old, 9, 42, view));
    EXPECT_EQ(Engine.CopiedView, view);
    EXPECT_EQ("copyview 9 view=window 42 30,40 500x300 style=94000000 ex=00000200 0", Engine.Calls.back());
    EXPECT_FALSE(IsWaiting());
    EXPECT_EQ(Lines{}, Installation.TakeBoxes());
    DestroyWindow(old);
}

TEST_F(ReportSteps, CopyThatFailsIsToldAndAnswersWhatTheMessageAnswers)
{
    HWND old = MakeWindow("Ansicht", WS_POPUP);
    Engine.CopiedView = nullptr;
    VarkWindow view = old;
    EXPECT_EQ(1, CopyReportView(ReportKostenstellenauswertung, old, 9, 0, view)) << "OK";
    EXPECT_EQ(nullptr, view);
    EXPECT_EQ(Lines{"Die Kostenstellenauswertung konnte nicht erstellt werden!"}, Installation.TakeBoxes());
    EXPECT_TRUE(IsWindow(old)) << "the old view stays";
    EXPECT_EQ(1u, Engine.Calls.size()) << "and nothing is closed";
    DestroyWindow(old);
}

TEST_F(ReportSteps, CopyOfAViewThatIsNoWindowHasNoPlace)
{
    VarkWindow view = nullptr;
    EXPECT_EQ(1, CopyReportView(ReportKontenblattMit, nullptr, 9, 0, view));
    EXPECT_EQ("copyview 9 view=none 0 0,0 0x0 style=00000000 ex=00000000 0", Engine.Calls.back());
}

TEST_F(ReportSteps, AbandonedReportIsClosedBeforeItIsTold)
{
    AbandonReport(ReportGuv, 7);
    EXPECT_EQ(Lines{"close 7"}, Engine.Calls);
    EXPECT_EQ(Lines{"Die Gewinn- und Verlustrechnung konnte nicht erstellt werden!"},
              Installation.TakeBoxes());
}

// ---- Settings ----

TEST_F(ReportSteps, SecondCallReplacesTitleAndClass)
{
    HWND first = MakeWindow("Erste", WS_POPUP);
    HWND second = MakeWindow("Zweite", WS_POPUP);
    EXPECT_EQ(1, VARK_InitReports(1, 2, "Eins", first));
    EXPECT_STREQ("Erste", Context->ReportFrameClass);
    EXPECT_EQ(1, VARK_InitReports(3, 4, "Zwei", second));
    EXPECT_STREQ("Zwei", Context->ReportViewTitle);
    EXPECT_STREQ("Zweite", Context->ReportFrameClass);
    EXPECT_EQ(second, Context->ReportFrameWindow);
    EXPECT_EQ(3u, Context->ReportViewStyle);
    EXPECT_EQ(4u, Context->ReportViewExStyle);
    EXPECT_EQ(1, VARK_InitReports(0, 0, "Drei", nullptr));
    EXPECT_EQ(nullptr, Context->ReportFrameClass);
    EXPECT_EQ(nullptr, Context->ReportFrameWindow);
    DestroyWindow(first);
    DestroyWindow(second);
}

TEST_F(ReportSteps, TitleMayBeNullOrLong)
{
    EXPECT_EQ(1, VARK_InitReports(0, 0, nullptr, nullptr));
    EXPECT_STREQ("", Context->ReportViewTitle);
    const std::string longTitle(100000, 't');
    EXPECT_EQ(1, VARK_InitReports(0, 0, longTitle.c_str(), nullptr));
    EXPECT_EQ(longTitle, Context->ReportViewTitle);
}

TEST_F(ReportSteps, SettingsWithoutMemoryAreRefused)
{
    HWND frame = MakeWindow("Rahmen", WS_POPUP);
    ASSERT_EQ(1, VARK_InitReports(1, 2, "Alt", nullptr));
    FailAllocation(1);
    EXPECT_EQ(0, VARK_InitReports(3, 4, "Neu", frame));
    StopAllocationFaults();
    EXPECT_EQ(nullptr, Context->ReportViewTitle);
    FailAllocation(2);
    EXPECT_EQ(0, VARK_InitReports(3, 4, "Neu", frame));
    StopAllocationFaults();
    EXPECT_EQ(nullptr, Context->ReportViewTitle) << "without its class the title goes as well";
    EXPECT_EQ(nullptr, Context->ReportFrameClass);
    EXPECT_EQ(1u, Context->ReportViewStyle) << "the rest stays";
    // A report that comes now has an empty title.
    VarkWindow view = nullptr;
    EXPECT_TRUE(ShowOrPrintReport(*Context, ReportSummenSalden, 7, Ausgabe::Bildschirm, nullptr, view));
    EXPECT_EQ(0u, Engine.Calls.back().find("view 7 '' "));
    DestroyWindow(frame);
}

TEST(ReportSettings, NeedNoBooks) { EXPECT_EQ(1, VARK_InitReports(0, 0, "Titel", nullptr)); }

TEST_F(ReportSteps, SettingsOfAThreadGoWithIt)
{
    HWND frame = MakeWindow("Rahmen", WS_POPUP);
    std::thread([] { VARK_InitReports(0, 0, "Titel", nullptr); }).join(); // what comes once has come
    const long live = LiveAllocations();
    std::thread([frame] { EXPECT_EQ(1, VARK_InitReports(0, 0, "Titel", frame)); }).join();
    EXPECT_EQ(live, LiveAllocations());
    EXPECT_EQ(nullptr, Context->ReportViewTitle) << "of another thread";
    DestroyWindow(frame);
}

TEST_F(ReportSteps, SettingsNeedAContext)
{
    std::thread([] {
        FailAllocation(1);
        EXPECT_EQ(0, VARK_InitReports(0, 0, "Titel", nullptr));
        StopAllocationFaults();
        EXPECT_EQ(1, VARK_InitReports(0, 0, "Titel", nullptr));
    }).join();
}
