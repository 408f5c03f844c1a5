#include "src/frame/report_engine.h"

#include "src/platform/platform.h"

namespace vark {

ReportEngineBinding reportEngine;

const char *const reportEngineEntryNames[11] = {
    "RSOpenReport",        "RSCopyReport",         "RSCloseReport",    "RSAddData",
    "RSOpenVirtualReport", "RSCloseVirtualReport", "RSAddVirtualData", "RSGetVirtualPages",
    "RSOpenView",          "RSCopyView",           "RSPrintView"};

void BindReportEngine()
{
    reportEngine.ReportEngineLibrary = LoadReportEngine();
    if (reportEngine.ReportEngineLibrary == nullptr) return;
    for (int i = 0; i < 11; ++i) {
        reportEngine.Entries[i] = FindEntry(reportEngine.ReportEngineLibrary, reportEngineEntryNames[i]);
        if (reportEngine.Entries[i] == nullptr) {
            ReleasePart(reportEngine.ReportEngineLibrary);
            return;
        }
    }
    reportEngine.ReportEngineBound = 1;
}

void UnbindReportEngine()
{
    if (reportEngine.ReportEngineBound != 0) ReleasePart(reportEngine.ReportEngineLibrary);
    reportEngine.ReportEngineBound = 0;
}

} // namespace vark
