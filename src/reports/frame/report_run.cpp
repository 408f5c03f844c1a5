#include "src/reports/frame/report_run.h"

#include "src/frame/lifecycle.h"
#include "src/frame/mandant.h"

namespace vark {

namespace {

// What the dialog of the run asks for, and its block therefore carries.
PeriodSelection *PeriodOf(ReportRun &run) { return AsksPeriod(*run.Dialog) ? &run.Choice.Period : nullptr; }
const PeriodSelection *PeriodOf(const ReportRun &run)
{
    return AsksPeriod(*run.Dialog) ? &run.Choice.Period : nullptr;
}

// From the dialog to the view. `done` gets whether the report was finished.
VarkWindow AskBuildAndShow(const ReportKind &kind, ReportRun &run, VarkWindow parent, ReportParams *params,
                           bool &done)
{
    StartChoice(run, params);
    if (kind.Before != nullptr && !kind.Before(run)) return nullptr;
    if (!RunReportDialog(run, parent)) return nullptr;
    if (params != nullptr) ReturnChoice(run, *params);
    const ReportRow row = kind.RowOf(run);
    if (!BuildReport(kind, row, run)) return nullptr;
    VarkWindow view = nullptr;
    const auto ausgabe = static_cast<Ausgabe>(run.Choice.Ausgabe);
    done = ShowOrPrintReport(*run.Context, row, run.Report, ausgabe, parent, view);
    if (done && kind.After != nullptr) done = kind.After(run);
    return view;
}

} // namespace

void StartChoice(ReportRun &run, const ReportParams *params)
{
    const ReportParams given = params != nullptr ? *params : ReportParams{};
    ReportChoice &choice = run.Choice;
    AccountRangeSelection *const range = run.Dialog->Kontoarten != 0 ? &choice.Range : nullptr;
    SpreadReportParams(*run.Context, given, PeriodOf(run), range, &choice.Ausgabe);
    choice.ComparePeriod = choice.Period;
    StartOptions(run.Dialog->Options, choice.Options);
}

void ReturnChoice(const ReportRun &run, ReportParams &params)
{
    const ReportChoice &choice = run.Choice;
    const AccountRangeSelection *const range = run.Dialog->Kontoarten != 0 ? &choice.Range : nullptr;
    GatherReportParams(*run.Context, params, PeriodOf(run), range, &choice.Ausgabe);
}

bool BuildReport(const ReportKind &kind, ReportRow row, ReportRun &run)
{
    run.Report = OpenReportTemplate(row);
    if (run.Report == 0) return false;
    if (kind.Send(run)) return true;
    AbandonReport(row, run.Report);
    run.Report = 0;
    return false;
}

VarkWindow RunReport(const ReportKind &kind, int32_t mandant, VarkWindow parent, ReportParams *params,
                     void *state)
{
    if (params != nullptr) params->ViewResult = 0;
    ReportRun run{};
    run.Dialog = &kind.Dialog;
    run.State = state;
    if (EnterExport(run.Context) != ready) return nullptr;
    if (SelectMandant(*run.Context, mandant, run.Mandant) < 1) return nullptr;
    bool done = false;
    VarkWindow view = AskBuildAndShow(kind, run, parent, params, done);
    if (params != nullptr && done) params->ViewResult = 1;
    if (kind.Close != nullptr) kind.Close(run);
    return view;
}

} // namespace vark
