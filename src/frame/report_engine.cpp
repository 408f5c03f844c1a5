#include "src/frame/report_engine.h"

#include "src/platform/platform.h"
#include "src/platform/window_support.h"

namespace vark {

ReportEngineBinding reportEngine;

namespace {

template <typename Entry> bool Bind(Entry &entry, const char *name)
{
    void *const address = FindEntry(reportEngine.ReportEngineLibrary, name);
    SetEntry(entry, address);
    return address != nullptr;
}

bool BindEntries()
{
    ReportEngineBinding &engine = reportEngine;
    return Bind(engine.OpenReport, "RSOpenReport") && Bind(engine.CopyReport, "RSCopyReport") &&
           Bind(engine.CloseReport, "RSCloseReport") && Bind(engine.AddData, "RSAddData") &&
           Bind(engine.OpenVirtualReport, "RSOpenVirtualReport") &&
           Bind(engine.CloseVirtualReport, "RSCloseVirtualReport") &&
           Bind(engine.AddVirtualData, "RSAddVirtualData") &&
           Bind(engine.GetVirtualPages, "RSGetVirtualPages") && Bind(engine.OpenView, "RSOpenView") &&
           Bind(engine.CopyView, "RSCopyView") && Bind(engine.PrintView, "RSPrintView");
}

} // namespace

void BindReportEngine()
{
    reportEngine.ReportEngineLibrary = LoadReportEngine();
    if (reportEngine.ReportEngineLibrary == nullptr) return;
    if (!BindEntries()) {
        ReleasePart(reportEngine.ReportEngineLibrary);
        return;
    }
    reportEngine.ReportEngineBound = 1;
}

void UnbindReportEngine()
{
    if (reportEngine.ReportEngineBound != 0) ReleasePart(reportEngine.ReportEngineLibrary);
    UnregisterClassA(accountSheetClass, LibraryModule());
    reportEngine.ReportEngineBound = 0;
}

} // namespace vark
