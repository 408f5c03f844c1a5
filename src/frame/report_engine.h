// The report engine's eleven entries, bound by name when the library attaches. Without them everything but
// reports works, and every report is a template that cannot be opened.
#pragma once

#include "report-engine/include/rs.h"

#include <cstdint>

namespace vark {

struct ReportEngineBinding {
    void *ReportEngineLibrary; // null when it did not load
    int32_t ReportEngineBound; // 1 once all eleven entries were found
    decltype(&::RSOpenReport) OpenReport;
    decltype(&::RSCopyReport) CopyReport;
    decltype(&::RSCloseReport) CloseReport;
    decltype(&::RSAddData) AddData;
    decltype(&::RSOpenVirtualReport) OpenVirtualReport;
    decltype(&::RSCloseVirtualReport) CloseVirtualReport;
    decltype(&::RSAddVirtualData) AddVirtualData;
    decltype(&::RSGetVirtualPages) GetVirtualPages;
    decltype(&::RSOpenView) OpenView;
    decltype(&::RSCopyView) CopyView;
    decltype(&::RSPrintView) PrintView;
};

extern ReportEngineBinding reportEngine;

// Loads the engine and binds its entries; the first one missing leaves it unbound.
void BindReportEngine();

// Gives it back, where the process lets go of this library before its end (Windows).
void UnbindReportEngine();

} // namespace vark
