// The parameter dialog of a report: a period group, an account group and the choice of screen or printer, put
// together from what the report says it needs, shown modally, and checked at OK.
#pragma once

#include "src/reports/frame/account_range.h"
#include "src/reports/frame/dialog_layout.h"
#include "src/reports/frame/period_controls.h"
#include "src/reports/frame/report_params.h"

#include <cstdint>

namespace vark {

// What a report's dialog consists of.
struct ReportDialog {
    int32_t Id;
    const char *Title; // Windows-1252
    int32_t HelpContext;
    uint32_t PeriodOptions; // 0: no period group
    bool PerOnly;           // of free dates only the last day, "per:"
    KontoartSet Kontoarten; // 0: no account group
    bool HasSingle;         // one single account can be asked for
};

// What the user chose; taken from the caller's block before and written back to it after.
struct ReportChoice {
    PeriodSelection Period;
    AccountRangeSelection Range;
    int32_t Ausgabe; // 0 Bildschirm, 1 Drucker
};

// Shows the dialog over `parent` and waits. True for OK: `choice` then holds what was chosen. With nobody
// before the screen OK is pressed on what the choice held, through the same checks; a refusal is a cancel.
bool RunReportDialog(ThreadContext &context, const ReportDialog &dialog, VarkWindow parent,
                     ReportChoice &choice);

} // namespace vark
