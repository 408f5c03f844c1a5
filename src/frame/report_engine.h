// The report engine's eleven entries, bound by name when the library attaches. Without them everything but
// reports works, and every report is a template that cannot be opened.
#pragma once

#include "report-engine/include/rs.h"
#include "src/platform/entry_call.h"

#include <cstdint>

namespace vark {

struct ReportEngineBinding {
    void *ReportEngineLibrary; // null when it did not load
    int32_t ReportEngineBound; // 1 once all eleven entries were found
    EntryCall<decltype(&::RSOpenReport)> OpenReport;
    EntryCall<decltype(&::RSCopyReport)> CopyReport;
    EntryCall<decltype(&::RSCloseReport)> CloseReport;
    EntryCall<decltype(&::RSAddData)> AddData;
    EntryCall<decltype(&::RSOpenVirtualReport)> OpenVirtualReport;
    EntryCall<decltype(&::RSCloseVirtualReport)> CloseVirtualReport;
    EntryCall<decltype(&::RSAddVirtualData)> AddVirtualData;
    EntryCall<decltype(&::RSGetVirtualPages)> GetVirtualPages;
    EntryCall<decltype(&::RSOpenView)> OpenView;
    EntryCall<decltype(&::RSCopyView)> CopyView;
    EntryCall<decltype(&::RSPrintView)> PrintView;
};

extern ReportEngineBinding reportEngine;

// Window class of the account sheets' window.
inline constexpr char accountSheetClass[] = "tervoKontenblatt";

// Loads the engine and binds its entries; the first one missing leaves it unbound.
void BindReportEngine();

// Gives it and the class of the account sheets' window back, where the process lets go of this library
// before its end (Windows).
void UnbindReportEngine();

} // namespace vark
