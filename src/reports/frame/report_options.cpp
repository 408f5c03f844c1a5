#include "src/reports/frame/report_options.h"

#include "src/reports/frame/dialog_buttons.h"
#include "src/values/amount_texts.h"
#include "src/values/dialog_fields.h"
#include "text/fixed_text.h"

#include <cassert>
#include <cstring>

namespace vark {

namespace {

constexpr int amountDigits = 12;

bool IsButton(const ReportOption &option)
{
    return option.Kind == OptionKind::Check || option.Kind == OptionKind::Radio;
}

int RowOfId(const OptionTable &table, int id)
{
    for (int row = 0; row < table.Count; ++row) {
        if (table.Rows[row].Id == id) return row;
    }
    return -1;
}

int KnownRow(const OptionTable &table, int id)
{
    const int row = RowOfId(table, id);
    assert(row >= 0);
    return row < 0 ? 0 : row;
}

void ShowEnabled(HWND dialog, const OptionTable &table)
{
    for (int row = 0; row < table.Count; ++row) {
        const ReportOption &option = table.Rows[row];
        if (option.EnabledWhile == 0) continue;
        EnableWindow(GetDlgItem(dialog, option.Id), IsChecked(dialog, option.EnabledWhile) ? TRUE : FALSE);
    }
}

bool IsRadio(const OptionTable &table, int row)
{
    return row >= 0 && row < table.Count && table.Rows[row].Kind == OptionKind::Radio;
}

// The buttons of a set that stand from a row on, as many as one line holds.
int RadiosFrom(const OptionTable &table, int row)
{
    int count = 1;
    while (count < mostInButtonRow && IsRadio(table, row + count)) {
        ++count;
    }
    return count;
}

// Checks one button of its set and takes the check from the others.
void ChooseRadio(HWND dialog, const OptionTable &table, int row)
{
    int first = row;
    while (IsRadio(table, first - 1)) {
        --first;
    }
    for (int other = first; IsRadio(table, other); ++other) {
        SetChecked(dialog, table.Rows[other].Id, other == row);
    }
}

// An amount in its display form; what is none stays as it was typed, and so does an empty field. The check
// cuts what stands behind the last digit, so a text without any would pass as zero.
void ShowAmountField(HWND dialog, int id)
{
    char typed[longestAmountInput + 1] = {};
    GetDlgItemTextA(dialog, id, typed, static_cast<int>(sizeof typed));
    if (std::strpbrk(typed, "0123456789") == nullptr) return;
    if (CheckAmountField(typed, sizeof typed, amountDigits) != 0) return;
    FormattedAmount shown;
    text::CopyText(shown, typed);
    GroupAmount(shown);
    SetDlgItemTextA(dialog, id, shown);
}

} // namespace

void StartOptions(const OptionTable &table, OptionValue (&values)[mostOptions])
{
    for (int row = 0; row < table.Count; ++row) {
        values[row] = {};
        values[row].Checked = table.Rows[row].Checked;
    }
}

OptionValue &OptionOf(const OptionTable &table, OptionValue (&values)[mostOptions], int id)
{
    return values[KnownRow(table, id)];
}

const OptionValue &OptionOf(const OptionTable &table, const OptionValue (&values)[mostOptions], int id)
{
    return values[KnownRow(table, id)];
}

void AddOptions(DialogBuilder &builder, const OptionTable &table)
{
    varkui::DialogControl *frame = nullptr;
    for (int row = 0; row < table.Count; ++row) {
        const ReportOption &option = table.Rows[row];
        if (option.Group != nullptr) {
            if (frame != nullptr) EndGroup(builder, *frame);
            frame = &BeginGroup(builder, option.Group);
        }
        if (!IsButton(option)) {
            AddFieldRow(builder, option.Id, option.Label, option.MostCharacters);
            continue;
        }
        const bool isRadio = option.Kind == OptionKind::Radio;
        ButtonRow buttons = {isRadio, isRadio ? RadiosFrom(table, row) : 1, {}, {}};
        for (int i = 0; i < buttons.Count; ++i) {
            buttons.Ids[i] = table.Rows[row + i].Id;
            buttons.Labels[i] = table.Rows[row + i].Label;
        }
        row += buttons.Count - 1;
        AddButtonRow(builder, buttons);
    }
    if (frame != nullptr) EndGroup(builder, *frame);
}

void InitOptions(HWND dialog, const OptionTable &table, const OptionValue (&values)[mostOptions])
{
    for (int row = 0; row < table.Count; ++row) {
        const ReportOption &option = table.Rows[row];
        if (IsButton(option)) {
            SetChecked(dialog, option.Id, values[row].Checked && !values[row].Hidden);
        } else {
            SendDlgItemMessageA(dialog, option.Id, EM_LIMITTEXT, option.MostCharacters, 0);
            SetDlgItemTextA(dialog, option.Id, values[row].Text);
        }
        if (values[row].Hidden) ShowWindow(GetDlgItem(dialog, option.Id), SW_HIDE);
    }
    ShowEnabled(dialog, table);
}

bool OptionMessage(HWND dialog, const OptionTable &table, UINT message, WPARAM wParam)
{
    if (message != WM_COMMAND) return false;
    const int row = RowOfId(table, LOWORD(wParam));
    if (row < 0) return false;
    const ReportOption &option = table.Rows[row];
    switch (option.Kind) {
    case OptionKind::Check:
        if (HIWORD(wParam) == BN_CLICKED) ShowEnabled(dialog, table);
        break;
    case OptionKind::Radio:
        if (HIWORD(wParam) == BN_CLICKED) ChooseRadio(dialog, table, row);
        break;
    case OptionKind::Text: break;
    case OptionKind::Amount:
        if (HIWORD(wParam) == EN_KILLFOCUS) ShowAmountField(dialog, option.Id);
        break;
    }
    return true;
}

void AcceptOptions(HWND dialog, const OptionTable &table, OptionValue (&values)[mostOptions])
{
    for (int row = 0; row < table.Count; ++row) {
        const ReportOption &option = table.Rows[row];
        OptionValue &value = values[row];
        if (IsButton(option)) {
            value.Checked = IsChecked(dialog, option.Id) && !value.Hidden;
        } else {
            value.Text[0] = 0;
            GetDlgItemTextA(dialog, option.Id, value.Text, static_cast<int>(sizeof value.Text));
        }
    }
}

} // namespace vark
