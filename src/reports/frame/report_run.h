// The frame of a report's export: Mandant, the caller's block, the dialog, the template, the report itself,
// its view. A report supplies its dialog and the function that sends its records.
#pragma once

#include "src/frame/thread_context.h"
#include "src/model/company_records.h"
#include "src/reports/frame/report_catalogue.h"
#include "src/reports/frame/report_dialog.h"

namespace vark {

// What a report works with while its records are sent.
struct ReportRun {
    ThreadContext *Context;
    FistaRecord Mandant;
    ReportChoice Choice;
    uint16_t Report; // the engine's handle
};

// Sends header and data records; false when a read failed or the engine refused a record.
using ReportBody = bool (*)(ReportRun &run);

// The template of a report, which may follow from what was chosen.
using ReportRowOf = ReportRow (*)(const ReportChoice &choice);

// Runs a report from the export's arguments to its view. `params` may be null; otherwise it pre-fills the
// dialog, takes what the user chose, and its ViewResult tells of a finished report. Returns the view, null
// when nothing was made or it was printed.
VarkWindow RunReport(ReportRowOf rowOf, const ReportDialog &dialog, ReportBody body, int32_t mandant,
                     VarkWindow parent, ReportParams *params);

} // namespace vark
