// The frame of a report's export: Mandant, the caller's block, the dialog, the template, the report itself,
// its view. A report is one value that says what is its own of this.
#pragma once

#include "src/reports/frame/report_catalogue.h"
#include "src/reports/frame/report_dialog.h"

namespace vark {

// A report. What it does not need is null.
struct ReportKind {
    ReportDialog Dialog;

    // The row of the catalogue; it may depend on the Mandant's record and on what was chosen.
    ReportRow (*RowOf)(const ReportRun &run);

    // Once the Mandant is selected, before the dialog: opens what the report needs all along, and says how
    // options start that depend on the Mandant's record. False ends the export without a word: what failed
    // has been told.
    bool (*Before)(ReportRun &run) = nullptr;

    // Sends header and data records; false when a read failed, a sum overflowed or the engine refused a
    // record.
    bool (*Send)(ReportRun &run);

    // Once the output is done, LastPrintResult among it. What it gives goes into the caller's ViewResult.
    bool (*After)(ReportRun &run) = nullptr;

    // On every way out after Before, also when that failed.
    void (*Close)(ReportRun &run) = nullptr;
};

// Runs a report from the export's arguments to its view. `params` may be null; otherwise it pre-fills the
// dialog, takes what the user chose, and its ViewResult tells of a finished report. `state` is the report's
// own. Returns the view, null when nothing was made or it was printed.
VarkWindow RunReport(const ReportKind &kind, int32_t mandant, VarkWindow parent, ReportParams *params,
                     void *state = nullptr);

// The steps of RunReport, for reports that are built again without their dialog.

// Takes the run's choice from a caller's block (null for none), and has the options start.
void StartChoice(ReportRun &run, const ReportParams *params);

// Writes the run's choice back into a caller's block.
void ReturnChoice(const ReportRun &run, ReportParams &params);

// Opens the template of a row and sends the report's records. False when either failed: nothing is left open
// then, and the person has been told.
bool BuildReport(const ReportKind &kind, ReportRow row, ReportRun &run);

} // namespace vark
