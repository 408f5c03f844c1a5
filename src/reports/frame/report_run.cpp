#include "src/reports/frame/report_run.h"

#include "src/frame/lifecycle.h"
#include "src/frame/mandant.h"

namespace vark {

namespace {

// The dialog between the caller's block and what was chosen. False when it was cancelled.
bool Choose(ReportRun &run, const ReportDialog &dialog, VarkWindow parent, ReportParams *params)
{
    const ReportParams given = params != nullptr ? *params : ReportParams{};
    ReportChoice &choice = run.Choice;
    PeriodSelection *const period = dialog.PeriodOptions != 0 ? &choice.Period : nullptr;
    AccountRangeSelection *const range = dialog.Kontoarten != 0 ? &choice.Range : nullptr;
    SpreadReportParams(*run.Context, given, period, range, &choice.Ausgabe);
    if (!RunReportDialog(*run.Context, dialog, parent, choice)) return false;
    if (params != nullptr) GatherReportParams(*run.Context, *params, period, range, &choice.Ausgabe);
    return true;
}

} // namespace

VarkWindow RunReport(ReportRowOf rowOf, const ReportDialog &dialog, ReportBody body, int32_t mandant,
                     VarkWindow parent, ReportParams *params)
{
    if (params != nullptr) params->ViewResult = 0;
    ReportRun run{};
    if (EnterExport(run.Context) != ready) return nullptr;
    if (SelectMandant(*run.Context, mandant, run.Mandant) < 1) return nullptr;
    if (!Choose(run, dialog, parent, params)) return nullptr;
    const ReportRow row = rowOf(run.Choice);
    run.Report = OpenReportTemplate(row);
    if (run.Report == 0) return nullptr;
    if (!body(run)) {
        AbandonReport(row, run.Report);
        return nullptr;
    }
    VarkWindow view = nullptr;
    const auto ausgabe = static_cast<Ausgabe>(run.Choice.Ausgabe);
    const bool shown = ShowOrPrintReport(*run.Context, row, run.Report, ausgabe, parent, view);
    if (params != nullptr) params->ViewResult = shown ? 1 : 0;
    return view;
}

} // namespace vark
