#include "src/reports/frame/report_dialog.h"

#include "src/frame/dialogs.h"
#include "src/frame/messages.h"
#include "src/reports/frame/output_choice.h"

namespace vark {

namespace {

constexpr char helpProperty[] = "tervoTKHelp";

struct OpenReportDialog {
    ThreadContext *Context;
    const ReportDialog *Dialog;
    ReportChoice *Choice; // changed by OK only
    ReportChoice Working;
    PeriodDialogState Period;
    AccountRangeState Range;
    int32_t Ausgabe;
    bool Accepted; // by OK
};

void Init(OpenReportDialog &open, HWND dialog)
{
    const ReportDialog &parts = *open.Dialog;
    if (parts.PeriodOptions != 0) {
        InitPeriodControls(dialog, parts.PeriodOptions, open.Working.Period, *open.Context, open.Period);
    }
    if (parts.Kontoarten != 0) {
        InitAccountRange(dialog, parts.HasSingle, open.Working.Range, *open.Context, open.Range);
    }
    InitOutputChoice(dialog, open.Working.Ausgabe, open.Ausgabe);
    SetPropA(dialog, helpProperty, reinterpret_cast<HANDLE>(static_cast<INT_PTR>(parts.HelpContext)));
    SetPropA(dialog, VARKUI_ANSWER_PROP, reinterpret_cast<HANDLE>(static_cast<INT_PTR>(IDOK)));
}

// The checks of OK. False keeps the dialog open.
bool Accept(OpenReportDialog &open, HWND dialog)
{
    const ReportDialog &parts = *open.Dialog;
    if (parts.PeriodOptions != 0 && !AcceptPeriodControls(dialog, open.Period, open.Working.Period))
        return false;
    if (parts.Kontoarten != 0) {
        AcceptAccountRange(dialog, open.Range, open.Working.Range);
        if (parts.HasSingle && open.Range.NotFound != 0) {
            ShowMessage(1447, controlKontoVon, nullptr, -1);
            return false;
        }
    }
    open.Working.Ausgabe = open.Ausgabe;
    *open.Choice = open.Working;
    return true;
}

INT_PTR CALLBACK ReportDialogProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    auto *open = DialogState<OpenReportDialog>(dialog, message, lParam);
    if (open == nullptr) return FALSE;
    if (message == WM_INITDIALOG) {
        Init(*open, dialog);
        return TRUE;
    }
    bool handled = false;
    if (open->Dialog->PeriodOptions != 0) {
        handled = PeriodControlMessage(open->Period, dialog, message, wParam, lParam);
    }
    if (open->Dialog->Kontoarten != 0) {
        handled = AccountRangeMessage(open->Range, dialog, message, wParam, lParam) || handled;
    }
    handled = OutputControlMessage(open->Ausgabe, dialog, message, wParam, lParam) || handled;
    if (message == WM_DESTROY) RemovePropA(dialog, helpProperty);
    if (message != WM_COMMAND || HIWORD(wParam) != BN_CLICKED) return handled ? TRUE : FALSE;
    if (LOWORD(wParam) == IDOK) {
        if (lParam != 0) {
            // Once more as a plain command, when the changes of focus that the click brought have settled.
            PostMessageA(dialog, WM_COMMAND, IDOK, 0);
        } else if (Accept(*open, dialog)) {
            open->Accepted = true;
            EndDialog(dialog, IDOK);
        }
        return TRUE;
    }
    if (LOWORD(wParam) == IDCANCEL) {
        EndDialog(dialog, 0);
        return TRUE;
    }
    return handled ? TRUE : FALSE;
}

} // namespace

bool RunReportDialog(ThreadContext &context, const ReportDialog &dialog, VarkWindow parent,
                     ReportChoice &choice)
{
    OpenReportDialog open{};
    open.Context = &context;
    open.Dialog = &dialog;
    open.Choice = &choice;
    open.Working = choice;
    DialogBuilder builder = BeginDialog();
    if (dialog.PeriodOptions != 0) AddPeriodGroup(builder, dialog.PeriodOptions, dialog.PerOnly);
    if (dialog.Kontoarten != 0) AddAccountGroup(builder, dialog.Kontoarten, dialog.HasSingle);
    AddOutputGroup(builder);
    const varkui::DialogTable table = FinishDialog(builder, dialog.Id, dialog.Title);
    return RunDialog(table, static_cast<HWND>(parent), ReportDialogProcedure, &open) && open.Accepted;
}

} // namespace vark
