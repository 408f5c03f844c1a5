#include "src/reports/frame/report_catalogue.h"

#include "src/frame/lifecycle.h"
#include "src/frame/messages.h"
#include "src/frame/report_engine.h"
#include "src/platform/window_api.h"
#include "text/windows1252.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace vark {

using namespace text;

const ReportCatalogueEntry ReportCatalogue[reportRowCount] = {
    {"or_kpla", "tervoKTOPLAN0.0", "Der Kontenplan"},
    {"or_spla", "tervoSAKTOPLAN0.0", "Der Kontenplan"},
    {"or_slist", "tervoSUSALIST0.0", "Die Summen- und Saldenliste"},
    {"or_hab", "tervoHABSCHLUSS0.0", "Die Hauptabschlußübersicht"_w},
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

namespace {

// The sheet lives inside a window of its own: a child without caption, frame and system menu.
constexpr uint32_t sheetStyle = 0x40000000;
constexpr uint32_t notOnSheets = 0xCF0001;

bool IsSheet(ReportRow row) { return row == ReportKontenblattOhne || row == ReportKontenblattMit; }

void SetWaitCursor() { SetCursor(LoadCursorA(nullptr, IDC_WAIT)); }
void SetArrowCursor() { SetCursor(LoadCursorA(nullptr, IDC_ARROW)); }

uint16_t LowWord(int32_t handle) { return static_cast<uint16_t>(handle); }

HWND WindowOf(VarkWindow window) { return static_cast<HWND>(window); }

uint32_t ShowFailure(ReportRow row)
{
    return ShowMessage(Message::NichtErstellt, 0, ReportCatalogue[row].DisplayName, -1);
}

} // namespace

uint16_t OpenReportTemplate(ReportRow row)
{
    SetWaitCursor();
    char path[maxPath];
    const int length = std::snprintf(path, sizeof path, "%s%s.rs", ReportPath, ReportCatalogue[row].Template);
    const bool fits = length > 0 && static_cast<size_t>(length) < sizeof path;
    uint16_t report = 0;
    if (fits && reportEngine.ReportEngineBound != 0) {
        report = LowWord(reportEngine.OpenReport(path, ReportCatalogue[row].ReportId, 0));
    }
    if (report == 0) {
        SetArrowCursor();
        char shown[maxPath];
        PathForMessage(path, shown, sizeof shown);
        ShowMessage(Message::ReportdateiNichtGeoeffnet, 0, shown, -1);
    }
    return report;
}

uint16_t CopyReportTemplate(ReportRow row, uint16_t report)
{
    SetWaitCursor();
    return LowWord(reportEngine.CopyReport(report, ReportCatalogue[row].ReportId, 0));
}

bool AddReportRecord(uint16_t report, int32_t kind, const void *record)
{
    return reportEngine.AddData(report, kind, record) != 0;
}

bool ShowOrPrintReport(ThreadContext &context, ReportRow row, uint16_t report, Ausgabe ausgabe,
                       VarkWindow parent, VarkWindow &view)
{
    view = nullptr;
    RECT client{};
    if (parent != nullptr) GetClientRect(WindowOf(parent), &client);
    uint32_t style = context.ReportViewStyle;
    if (IsSheet(row)) style = (style | sheetStyle) & ~notOnSheets;
    const char *const title = context.ReportViewTitle != nullptr ? context.ReportViewTitle : "";
    const auto opened = static_cast<VarkWindow>(
        reportEngine.OpenView(report, title, "%N", parent, client.left, client.top,
                              client.right - client.left, client.bottom - client.top, style,
                              context.ReportViewExStyle, 65535, 65535, context.ReportFrameWindow));
    SetArrowCursor();
    if (opened == nullptr) {
        AbandonReport(row, report);
        return false;
    }
    if (ausgabe == Ausgabe::Bildschirm) {
        view = opened;
        return true;
    }
    context.LastPrintResult = static_cast<uint32_t>(reportEngine.PrintView(opened, 0));
    // The view owns its report, which ends with it.
    DestroyWindow(WindowOf(opened));
    return true;
}

int32_t CopyReportView(ReportRow row, VarkWindow view, uint16_t report, int32_t third, VarkWindow &newView)
{
    const auto style = static_cast<uint32_t>(GetWindowLongA(WindowOf(view), GWL_STYLE));
    const auto exStyle = static_cast<uint32_t>(GetWindowLongA(WindowOf(view), GWL_EXSTYLE));
    RECT screen{};
    GetWindowRect(WindowOf(view), &screen);
    newView = static_cast<VarkWindow>(reportEngine.CopyView(report, view, third, screen.left, screen.top,
                                                            screen.right - screen.left,
                                                            screen.bottom - screen.top, style, exStyle, 0));
    SetArrowCursor();
    return newView != nullptr ? 1 : static_cast<int32_t>(ShowFailure(row));
}

int32_t ReportFailed(ReportRow row) { return ShowFailure(row) == 0 ? 1 : 0; }

void AbandonReport(ReportRow row, uint16_t report)
{
    SetArrowCursor();
    if (report != 0) reportEngine.CloseReport(report);
    ReportFailed(row);
}

namespace {

// A copy of a text of the caller's that is freed with free; null without memory.
char *CopyOf(const char *text)
{
    const size_t size = std::strlen(text) + 1;
    auto *copy = static_cast<char *>(std::malloc(size));
    if (copy != nullptr) std::memcpy(copy, text, size);
    return copy;
}

int32_t InitReports(ThreadContext &context, uint32_t style, uint32_t exStyle, const char *title,
                    VarkWindow frameWindow)
{
    std::free(context.ReportViewTitle);
    context.ReportViewTitle = CopyOf(title != nullptr ? title : "");
    if (context.ReportViewTitle == nullptr) return 0;
    std::free(context.ReportFrameClass);
    context.ReportFrameClass = nullptr;
    if (frameWindow != nullptr) {
        char name[300] = {};
        GetClassNameA(WindowOf(frameWindow), name, sizeof name);
        context.ReportFrameClass = CopyOf(name);
        if (context.ReportFrameClass == nullptr) {
            std::free(context.ReportViewTitle);
            context.ReportViewTitle = nullptr;
            return 0;
        }
    }
    context.ReportFrameWindow = frameWindow;
    context.ReportViewStyle = style;
    context.ReportViewExStyle = exStyle;
    return 1;
}

} // namespace

} // namespace vark

using namespace vark;

int32_t VARK_CALL VARK_InitReports(uint32_t style, uint32_t exStyle, const char *title,
                                   VarkWindow frameWindow)
{
    AttachLibrary();
    ThreadContext *context = GetThreadContext();
    return context != nullptr ? InitReports(*context, style, exStyle, title, frameWindow) : 0;
}
