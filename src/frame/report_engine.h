// The report engine's eleven entries, bound by name when the library attaches. Without them everything but
// reports works.
#pragma once

#include <cstdint>

namespace vark {

// What is passed through as a word or a pointer: handles of reports are 16-bit, of windows pointers.
struct ReportEngineBinding {
    void *ReportEngineLibrary; // null when it did not load
    int32_t ReportEngineBound; // 1 once all eleven entries were found
    void *Entries[11];         // in the order of reportEngineEntryNames
};

extern ReportEngineBinding reportEngine;
extern const char *const reportEngineEntryNames[11];

// Loads the engine and binds its entries; the first one missing leaves it unbound.
void BindReportEngine();

// Gives it back, where the process lets go of this library before its end (Windows).
void UnbindReportEngine();

} // namespace vark
