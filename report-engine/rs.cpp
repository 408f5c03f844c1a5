// The entries: from handles to what they name, one call at a time on each report.
#include "report-engine/include/rs.h"

#include "host/descriptors.h"
#include "report-engine/complain.h"
#include "report-engine/handles.h"
#include "report-engine/output.h"
#include "report-engine/printing.h"
#include "report-engine/view_window.h"
#include "text/windows1252.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace {

using namespace rs;

std::atomic<int64_t> recordsTaken{0};

// Before anything is opened: a library that this one loads opens files by means of its own.
__attribute__((constructor)) void KeepStandardDescriptors() { host::GuardStandardDescriptors(); }

int32_t HandleOf(Report *report)
{
    if (report == nullptr) return 0;
    const int32_t handle = AddReport(report);
    if (handle == 0) {
        Complain(report->Path, ": Es sind zu viele Berichte geöffnet.");
        DestroyReport(report);
    }
    return handle;
}

// Finishes the report and makes a view of it, with a window where there is a window system. Takes over the
// reference to the report.
RSWindow OpenViewOf(int32_t handle, Report *report, const char *title, const ViewPlace &place)
{
    pthread_mutex_lock(&report->Lock);
    const bool isFinished = FinishReport(*report);
    pthread_mutex_unlock(&report->Lock);
    View *view = isFinished ? static_cast<View *>(std::calloc(1, sizeof(View))) : nullptr;
    if (view == nullptr) {
        if (isFinished) ComplainOf(report->Path, ENOMEM);
        ReleaseReport(report);
        return nullptr;
    }
    view->ReportHandle = handle & 0xFFFF;
    view->Of = report;
    std::memcpy(view->Title, title, strnlen(title, sizeof view->Title - 1));
    RSWindow opened = AddView(view);
    if (opened == nullptr) {
        Complain(report->Path, ": Es sind zu viele Ansichten geöffnet.");
        ReleaseReport(report);
        std::free(view);
        return nullptr;
    }
    if (ViewsHaveWindows()) {
        opened = OpenViewWindow(opened, view, place);
        if (opened == nullptr) Complain(view->Of->Path, ": Das Fenster läßt sich nicht öffnen.");
    }
    ReleaseView(view);
    return opened;
}

} // namespace

int32_t RSOpenReport(const char *templatePath, const char *reportId, int32_t /*reserved*/)
{
    return HandleOf(CreateReport(templatePath, reportId));
}

int32_t RSCopyReport(int32_t report, const char *reportId, int32_t /*reserved*/)
{
    Report *first = HoldReport(report);
    if (first == nullptr) return 0;
    int32_t handle = 0;
    if (reportId == nullptr || std::strcmp(reportId, first->Catalogue->Id) != 0) {
        Complain(first->Path, ": Das ist nicht der Bericht „%s“.", reportId != nullptr ? reportId : "");
    } else {
        handle = HandleOf(
            CreateReportFromSource(first->Path, first->Source, first->SourceLength, reportId, first));
    }
    ReleaseReport(first);
    return handle;
}

void RSCloseReport(int32_t report)
{
    Report *held = HoldReport(report);
    if (held == nullptr) return;
    RemoveViewsOf(report);
    RemoveReport(report);
    ReleaseReport(held);
}

int32_t RSAddData(int32_t report, int32_t kind, const void *record)
{
    Report *held = HoldReport(report);
    if (held == nullptr) return 0;
    pthread_mutex_lock(&held->Lock);
    const bool isAdded = AddRecord(*held, kind, record);
    pthread_mutex_unlock(&held->Lock);
    ReleaseReport(held);
    if (isAdded) recordsTaken.fetch_add(1, std::memory_order_relaxed);
    return isAdded ? 1 : 0;
}

int64_t RSRecordsTaken(void) { return recordsTaken.load(std::memory_order_relaxed); }

int32_t RSOpenVirtualReport(int32_t report)
{
    Report *held = HoldReport(report);
    if (held == nullptr) return 0;
    CountingReport *counting = CreateCountingReport(held->Catalogue, held->Def);
    ReleaseReport(held);
    if (counting == nullptr) return 0;
    const int32_t handle = AddCounting(counting);
    if (handle == 0) DestroyCountingReport(counting);
    return handle;
}

void RSCloseVirtualReport(int32_t virtualReport) { RemoveCounting(virtualReport); }

int32_t RSAddVirtualData(int32_t virtualReport, int32_t kind, int32_t count)
{
    CountingReport *held = HoldCounting(virtualReport);
    if (held == nullptr) return 0;
    pthread_mutex_lock(&held->Lock);
    const bool isCounted = CountRecords(*held, kind, count);
    pthread_mutex_unlock(&held->Lock);
    ReleaseCounting(held);
    return isCounted ? 1 : 0;
}

int32_t RSGetVirtualPages(int32_t virtualReport)
{
    CountingReport *held = HoldCounting(virtualReport);
    if (held == nullptr) return 0;
    pthread_mutex_lock(&held->Lock);
    const int32_t pages = CountedPages(*held);
    pthread_mutex_unlock(&held->Lock);
    ReleaseCounting(held);
    return pages;
}

RSWindow RSOpenView(int32_t report, const char *title, const char * /*pageTitle*/, RSWindow parent,
                    int32_t left, int32_t top, int32_t width, int32_t height, uint32_t style,
                    uint32_t exStyle, uint32_t /*firstReserved*/, uint32_t /*secondReserved*/,
                    RSWindow /*frame*/)
{
    Report *held = HoldReport(report);
    if (held == nullptr) return nullptr;
    char utf8[maxViewTitle] = "";
    if (title != nullptr) text::ToUtf8(title, utf8, sizeof utf8);
    return OpenViewOf(report, held, utf8,
                      {static_cast<HWND>(parent), left, top, width, height, style, exStyle});
}

RSWindow RSCopyView(int32_t report, RSWindow view, int32_t /*third*/, int32_t left, int32_t top,
                    int32_t width, int32_t height, uint32_t style, uint32_t exStyle, int32_t /*reserved*/)
{
    View *first = HoldView(view);
    if (first == nullptr) return nullptr;
    RSWindow copy = nullptr;
    Report *held = HoldReport(report);
    if (held != nullptr && held->Catalogue == first->Of->Catalogue) {
        copy = OpenViewOf(report, held, first->Title,
                          PlaceBeside(static_cast<HWND>(first->Window.load()),
                                      {nullptr, left, top, width, height, style, exStyle}));
    } else if (held != nullptr) {
        ReleaseReport(held);
    }
    ReleaseView(first);
    return copy;
}

int32_t RSPrintView(RSWindow view, int32_t /*reserved*/)
{
    View *held = HoldView(view);
    if (held == nullptr) return 0;
    char where[500];
    const bool isPrinted = PrintView(*held, UsualWishes(), nullptr, where) != Printed::failed;
    ReleaseView(held);
    return isPrinted ? 1 : 0;
}

int32_t RSExportView(RSWindow view, const char *path)
{
    View *held = HoldView(view);
    if (held == nullptr) return 0;
    const bool isWritten = ExportView(*held, path, nullptr) == Written::whole;
    ReleaseView(held);
    return isWritten ? 1 : 0;
}
