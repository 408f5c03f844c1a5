#include "src/reports/frame/report_dialog.h"

#include "src/frame/dialogs.h"
#include "src/frame/messages.h"
#include "text/windows1252.h"

namespace vark {

using namespace text;
using varkui::DialogControl;
using varkui::DialogControlKind;
using varkui::DialogTable;

namespace {

constexpr UINT messageOutput = WM_USER + 6;
constexpr char helpProperty[] = "tervoTKHelp";

// ---- Building the table ----

constexpr int16_t margin = 7;
constexpr int16_t gap = 4;
constexpr int16_t groupWidth = 220;
constexpr int16_t buttonWidth = 54;
constexpr int16_t rowHeight = 14;

// The controls of one dialog as they are put together from top to bottom.
struct DialogBuilder {
    DialogControl Controls[64];
    uint16_t Count;
    int16_t Y; // where the next group begins

    void Add(const DialogControl &control) { Controls[Count++] = control; }
};

constexpr const char *monthLabels[12] = {"Januar", "Februar", "März"_w,    "April",   "Mai",      "Juni",
                                         "Juli",   "August",  "September", "Oktober", "November", "Dezember"};
constexpr const char *quarterLabels[4] = {"&1. Quartal", "&2. Quartal", "&3. Quartal", "&4. Quartal"};

DialogControl Radio(int id, const char *label, int x, int y, int width, uint32_t style = 0)
{
    return {DialogControlKind::PlainRadioButton,
            id,
            label,
            static_cast<int16_t>(x),
            static_cast<int16_t>(y),
            static_cast<int16_t>(width),
            10,
            style,
            0};
}

DialogControl Label(int id, const char *label, int x, int y, int width)
{
    return {DialogControlKind::Text,
            id,
            label,
            static_cast<int16_t>(x),
            static_cast<int16_t>(y + 2),
            static_cast<int16_t>(width),
            8,
            0,
            0};
}

DialogControl EditField(int id, int x, int y, int width)
{
    return {DialogControlKind::Edit,
            id,
            "",
            static_cast<int16_t>(x),
            static_cast<int16_t>(y),
            static_cast<int16_t>(width),
            12,
            0,
            0};
}

void AddFrame(DialogBuilder &builder, const char *title, int height)
{
    builder.Add({DialogControlKind::Group, -1, title, margin, builder.Y, groupWidth,
                 static_cast<int16_t>(height), 0, 0});
}

// The period group that all reports share. Months stand in three columns, quarters and the year beside them.
void AddPeriodGroup(DialogBuilder &builder, const ReportDialog &dialog)
{
    const uint32_t options = dialog.PeriodOptions;
    const int left = margin + 8;
    int y = builder.Y + 12;
    const uint16_t frame = builder.Count;
    AddFrame(builder, "Zeitraum", 0);
    uint32_t groupStyle = WS_GROUP;
    if ((options & PeriodMonths) != 0) {
        for (int month = 0; month < 12; ++month) {
            builder.Add(Radio(controlFirstMonth + month, monthLabels[month], left + month / 4 * 52,
                              y + month % 4 * 12, 50, month == 0 ? groupStyle : 0));
        }
        groupStyle = 0;
    }
    if ((options & PeriodQuarters) != 0) {
        const int x = (options & PeriodMonths) != 0 ? left + 156 : left;
        for (int quarter = 0; quarter < 4; ++quarter) {
            builder.Add(Radio(controlFirstQuarter + quarter, quarterLabels[quarter], x, y + quarter * 12, 52,
                              quarter == 0 ? groupStyle : 0));
        }
        groupStyle = 0;
    }
    if ((options & (PeriodMonths | PeriodQuarters)) != 0) y += 52;
    if ((options & PeriodYear) != 0) {
        const char *const label = (options & PeriodCalendar) != 0 ? "&Kalenderjahr" : "&Gesamtjahr";
        builder.Add(Radio(controlWholeYear, label, left, y + 1, 64, groupStyle));
        builder.Add(Label(-1, "&Jahr:", left + 104, y, 24));
        builder.Add(EditField(controlYear, left + 130, y, 30));
        y += rowHeight + 2;
        groupStyle = 0;
    }
    if ((options & PeriodDayExact) != 0 && dialog.PerOnly) {
        builder.Add(Label(-1, "&per:", left, y, 24));
        builder.Add(EditField(controlBis, left + 30, y, 52));
        y += rowHeight + 2;
    } else if ((options & PeriodDayExact) != 0) {
        builder.Add(Radio(controlDayExact, "&Tagesgenau", left, y + 1, 56, groupStyle));
        builder.Add(Label(-1, "&von:", left + 60, y, 18));
        builder.Add(EditField(controlVon, left + 80, y, 48));
        builder.Add(Label(-1, "&bis:", left + 134, y, 16));
        builder.Add(EditField(controlBis, left + 152, y, 48));
        y += rowHeight + 2;
    }
    builder.Controls[frame].Height = static_cast<int16_t>(y + 4 - builder.Y);
    builder.Y = static_cast<int16_t>(y + 4 + gap);
}

void AddAccountGroup(DialogBuilder &builder, const ReportDialog &dialog)
{
    const struct {
        int32_t Kontoart;
        int Id;
        const char *Text;
    } buttons[] = {
        {KontoartSachkonto, controlSachkonten, "&Sachkonten"},
        {KontoartKreditor, controlKreditoren, "&Kreditoren"},
        {KontoartDebitor, controlDebitoren, "&Debitoren"},
        {KontoartKostenstelle, controlKostenstellen, "K&ostenstellen"},
    };
    const int left = margin + 8;
    int y = builder.Y + 12;
    const uint16_t frame = builder.Count;
    AddFrame(builder, "Konten", 0);
    const bool hasChoice = dialog.Kontoarten != KontoartKostenstelle;
    int x = left;
    for (const auto &button : buttons) {
        if ((dialog.Kontoarten & button.Kontoart) == 0) continue;
        DialogControl radio = Radio(button.Id, button.Text, x, y, 66, x == left ? uint32_t{WS_GROUP} : 0);
        // With one kind only there is nothing to choose, but the routines still ask for its button.
        if (!hasChoice) radio.Without = WS_VISIBLE;
        builder.Add(radio);
        x += 68;
    }
    if (hasChoice) y += rowHeight;
    if (dialog.HasSingle) {
        builder.Add({DialogControlKind::CheckBox, controlEinzeln, "&einzelnes Konto",
                     static_cast<int16_t>(left), static_cast<int16_t>(y), 100, 10, WS_GROUP, 0});
        y += rowHeight;
    }
    builder.Add(Label(controlVonLabel, "vo&n:", left, y, 28));
    builder.Add(EditField(controlKontoVon, left + 30, y, 52));
    builder.Add(Label(controlBisLabel, "b&is:", left + 98, y, 18));
    builder.Add(EditField(controlKontoBis, left + 118, y, 52));
    y += rowHeight + 2;
    builder.Controls[frame].Height = static_cast<int16_t>(y + 4 - builder.Y);
    builder.Y = static_cast<int16_t>(y + 4 + gap);
}

void AddOutputGroup(DialogBuilder &builder)
{
    const int y = builder.Y + 12;
    AddFrame(builder, "Ausgabe", 28);
    builder.Add(Radio(controlBildschirm, "Bildschir&m", margin + 8, y, 66, WS_GROUP));
    builder.Add(Radio(controlDrucker, "D&rucker", margin + 76, y, 66));
    builder.Y = static_cast<int16_t>(builder.Y + 28 + gap);
}

DialogTable BuildReportDialog(DialogBuilder &builder, const ReportDialog &dialog)
{
    builder.Count = 0;
    builder.Y = margin;
    if (dialog.PeriodOptions != 0) AddPeriodGroup(builder, dialog);
    if (dialog.Kontoarten != 0) AddAccountGroup(builder, dialog);
    AddOutputGroup(builder);
    constexpr int16_t x = margin + groupWidth + margin;
    builder.Add(
        {DialogControlKind::DefaultButton, IDOK, "OK", x, margin, buttonWidth, rowHeight, WS_GROUP, 0});
    builder.Add({DialogControlKind::PushButton, IDCANCEL, "&Abbrechen", x, margin + rowHeight + gap,
                 buttonWidth, rowHeight, 0, 0});
    const auto height = static_cast<int16_t>(builder.Y - gap + margin);
    return {dialog.Id, dialog.Title,     static_cast<int16_t>(x + buttonWidth + margin),
            height,    builder.Controls, builder.Count,
            0};
}

// ---- Running it ----

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

void ShowOutput(HWND dialog, int32_t ausgabe)
{
    SendDlgItemMessageA(dialog, controlBildschirm, BM_SETCHECK, ausgabe == 0 ? BST_CHECKED : BST_UNCHECKED,
                        0);
    SendDlgItemMessageA(dialog, controlDrucker, BM_SETCHECK, ausgabe == 1 ? BST_CHECKED : BST_UNCHECKED, 0);
}

bool OutputControlMessage(OpenReportDialog &open, HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    const int control = LOWORD(wParam);
    if (control != controlBildschirm && control != controlDrucker) return false;
    if (message == WM_COMMAND) {
        PostMessageA(dialog, messageOutput, wParam, lParam);
        return true;
    }
    if (message != messageOutput) return false;
    if (HIWORD(wParam) == BN_CLICKED) {
        open.Ausgabe = control == controlDrucker ? 1 : 0;
        ShowOutput(dialog, open.Ausgabe);
    }
    return true;
}

void Init(OpenReportDialog &open, HWND dialog)
{
    const ReportDialog &parts = *open.Dialog;
    if (parts.PeriodOptions != 0) {
        InitPeriodControls(dialog, parts.PeriodOptions, open.Working.Period, *open.Context, open.Period);
    }
    if (parts.Kontoarten != 0) {
        InitAccountRange(dialog, parts.HasSingle, open.Working.Range, *open.Context, open.Range);
    }
    if (open.Working.Ausgabe != 0 && open.Working.Ausgabe != 1) open.Working.Ausgabe = 0;
    open.Ausgabe = open.Working.Ausgabe;
    ShowOutput(dialog, open.Ausgabe);
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
    handled = OutputControlMessage(*open, dialog, message, wParam, lParam) || handled;
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
    DialogBuilder builder;
    const DialogTable table = BuildReportDialog(builder, dialog);
    return RunDialog(table, static_cast<HWND>(parent), ReportDialogProcedure, &open) && open.Accepted;
}

} // namespace vark
