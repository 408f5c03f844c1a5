#include "src/reports/frame/report_dialog.h"

#include "src/frame/dialogs.h"
#include "src/frame/messages.h"
#include "src/reports/frame/output_choice.h"
#include "src/reports/frame/tab_dialog.h"

namespace vark {

namespace {

constexpr char helpProperty[] = "tervoTKHelp";

struct OpenReportDialog {
    ReportRun *Run; // its choice is changed by OK only
    ReportChoice Working;
    PeriodDialogState Period;
    PeriodTabs Tabs;
    AccountRangeState Range;
    int32_t Ausgabe;
    bool Accepted; // by OK
};

const ReportDialog &PartsOf(const OpenReportDialog &open) { return *open.Run->Dialog; }

bool HasPages(const ReportDialog &parts) { return parts.Pages != PeriodPages::None; }

// A dialog with pages runs in a loop of its own.
void End(const OpenReportDialog &open, HWND dialog, bool accepted)
{
    if (HasPages(PartsOf(open))) {
        EndTabDialog(dialog, accepted ? IDOK : 0);
    } else {
        EndDialog(dialog, accepted ? IDOK : 0);
    }
}

// False when the pages could not be made.
bool Init(OpenReportDialog &open, HWND dialog)
{
    const ReportDialog &parts = PartsOf(open);
    ThreadContext &context = *open.Run->Context;
    if (parts.PeriodOptions != 0) {
        InitPeriodControls(dialog, parts.PeriodOptions, open.Working.Period, context, open.Period);
    }
    if (HasPages(parts)) {
        open.Tabs.Selections[0] = open.Working.Period;
        open.Tabs.Selections[1] = open.Working.ComparePeriod;
        const bool isGuv = parts.Pages == PeriodPages::Guv;
        if (!InitPeriodTabs(dialog, controlPeriodTabs, isGuv, context, open.Tabs)) return false;
    }
    if (parts.Kontoarten != 0) {
        InitAccountRange(dialog, parts.HasSingle, open.Working.Range, context, open.Range);
    }
    InitOptions(dialog, parts.Options, open.Working.Options);
    InitOutputChoice(dialog, open.Working.Ausgabe, open.Ausgabe);
    SetPropA(dialog, helpProperty, reinterpret_cast<HANDLE>(static_cast<INT_PTR>(parts.HelpContext)));
    SetPropA(dialog, VARKUI_ANSWER_PROP, reinterpret_cast<HANDLE>(static_cast<INT_PTR>(IDOK)));
    return true;
}

bool AcceptPeriod(OpenReportDialog &open, HWND dialog)
{
    const ReportDialog &parts = PartsOf(open);
    ReportChoice &working = open.Working;
    if (parts.PeriodOptions != 0) return AcceptPeriodControls(dialog, open.Period, working.Period);
    if (!HasPages(parts)) return true;
    if (!AcceptBothPages(open.Tabs, dialog)) return false;
    working.Period = open.Tabs.Selections[0];
    working.ComparePeriod = open.Tabs.Selections[1];
    working.Vergleich = open.Tabs.CompareOn != 0;
    return true;
}

bool AcceptRange(OpenReportDialog &open, HWND dialog)
{
    const ReportDialog &parts = PartsOf(open);
    if (parts.Kontoarten == 0) return true;
    AcceptAccountRange(dialog, open.Range, open.Working.Range);
    if (!parts.HasSingle || open.Range.NotFound == 0) return true;
    ShowMessage(parts.UnknownAccount, controlKontoVon, nullptr, -1);
    return false;
}

// The checks of OK. False keeps the dialog open.
bool Accept(OpenReportDialog &open, HWND dialog)
{
    const ReportDialog &parts = PartsOf(open);
    if (parts.RangeFirst && !AcceptRange(open, dialog)) return false;
    if (!AcceptPeriod(open, dialog)) return false;
    if (!parts.RangeFirst && !AcceptRange(open, dialog)) return false;
    AcceptOptions(dialog, parts.Options, open.Working.Options);
    open.Working.Ausgabe = open.Ausgabe;
    if (parts.Check != nullptr && !parts.Check(dialog, *open.Run, open.Working)) return false;
    open.Run->Choice = open.Working;
    return true;
}

// Shows a message to every group of controls. True if it was one's own.
bool GroupMessage(OpenReportDialog &open, HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    const ReportDialog &parts = PartsOf(open);
    bool handled = false;
    if (parts.PeriodOptions != 0) {
        handled = PeriodControlMessage(open.Period, dialog, message, wParam, lParam);
    }
    if (HasPages(parts)) handled = PeriodTabMessage(open.Tabs, dialog, message, wParam, lParam) || handled;
    if (parts.Kontoarten != 0) {
        handled = AccountRangeMessage(open.Range, dialog, message, wParam, lParam) || handled;
    }
    handled = OptionMessage(dialog, parts.Options, message, wParam) || handled;
    return OutputControlMessage(open.Ausgabe, dialog, message, wParam, lParam) || handled;
}

INT_PTR CALLBACK ReportDialogProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    auto *open = DialogState<OpenReportDialog>(dialog, message, lParam);
    if (open == nullptr) return FALSE;
    if (message == WM_INITDIALOG) {
        if (!Init(*open, dialog)) End(*open, dialog, false);
        return TRUE;
    }
    const bool handled = GroupMessage(*open, dialog, message, wParam, lParam);
    if (message == WM_DESTROY) RemovePropA(dialog, helpProperty);
    if (message != WM_COMMAND || HIWORD(wParam) != BN_CLICKED) return handled ? TRUE : FALSE;
    switch (LOWORD(wParam)) {
    case controlCompare:
        open->Tabs.CompareOn = IsDlgButtonChecked(dialog, controlCompare) == BST_CHECKED ? 1 : 0;
        return TRUE;
    case IDOK:
        if (lParam != 0) {
            // Once more as a plain command, when the changes of focus that the click brought have settled.
            PostMessageA(dialog, WM_COMMAND, IDOK, 0);
        } else if (Accept(*open, dialog)) {
            open->Accepted = true;
            End(*open, dialog, true);
        }
        return TRUE;
    case IDCANCEL: End(*open, dialog, false); return TRUE;
    default: return handled ? TRUE : FALSE;
    }
}

} // namespace

bool RunReportDialog(ReportRun &run, VarkWindow parent)
{
    const ReportDialog &parts = *run.Dialog;
    OpenReportDialog open{};
    open.Run = &run;
    open.Working = run.Choice;
    DialogBuilder builder = BeginDialog();
    if (parts.PeriodOptions != 0) AddPeriodGroup(builder, parts.PeriodOptions, parts.PerOnly, parts.Words);
    if (HasPages(parts)) AddPeriodTabs(builder, PageOptions(parts.Pages == PeriodPages::Guv));
    if (parts.Kontoarten != 0) AddAccountGroup(builder, parts.Kontoarten, parts.HasSingle, parts.Words);
    AddOptions(builder, parts.Options);
    AddOutputGroup(builder, parts.Words);
    const varkui::DialogTable table = FinishDialog(builder, parts.Id, parts.Title);
    if (HasPages(parts)) {
        return RunTabDialog(table, parent, ReportDialogProcedure, &open) == IDOK && open.Accepted;
    }
    return RunDialog(table, static_cast<HWND>(parent), ReportDialogProcedure, &open) && open.Accepted;
}

} // namespace vark
