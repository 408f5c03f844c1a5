// Reports of the library, made into files, shown or printed.
#pragma once

#include "tools/vark/report_files.h"
#include "tools/vark/report_period.h"
#include "tools/vark/report_range.h"
#include "tools/vark/report_table.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace cli {

struct ReportOptions {
    const ReportRow *Report = nullptr;
    int32_t Mandant = 0;
    PeriodText Period; // nothing given: as the report's dialog starts
    PeriodText Compared;
    std::string Archive; // four-digit year; empty: the books
    RangeText Range;
    std::map<std::string, std::string> Own; // the report's own options that were given, with their values
    std::vector<ReportTarget> Targets;      // none, and neither window nor printer: text on standard output
    bool Asks = false;                      // in the report's dialog, which the other options fill in advance
    bool Shows = false;                     // in a window, until it is closed
    bool Prints = false;
    bool Locks = false; // the person knows that printing locks the period

    [[nodiscard]] bool NeedsScreen() const { return Asks || Shows; }
};

// Makes the report. Returns the exit code.
int MakeReport(const ReportOptions &options);

} // namespace cli
