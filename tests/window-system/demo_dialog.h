// A dialog with every kind of control, for looking at and for the tests of the screen.
#pragma once

#include "dialog_run.h"
#include "text/windows1252.h"

namespace demo {

using namespace text;
using varkui::DialogControlKind;

inline constexpr varkui::DialogControl controls[] = {
    {DialogControlKind::Text, -1, "&Name:"_w, 7, 9, 40, 8, 0, 0},
    {DialogControlKind::Edit, 10, "", 50, 7, 100, 14, 0, 0},
    {DialogControlKind::Text, -1, "&Intervall:"_w, 7, 27, 40, 8, 0, 0},
    {DialogControlKind::Edit, 11, "", 50, 25, 30, 14, ES_NUMBER, 0},
    {DialogControlKind::CheckBox, 20, "&wiederkehrender Stapel"_w, 50, 43, 105, 10, 0, 0},
    {DialogControlKind::Group, -1, "Ü&bersicht"_w, 7, 58, 148, 48, 0, 0},
    {DialogControlKind::RadioButton, 30, "&Sachkonten"_w, 14, 70, 62, 10, WS_GROUP, 0},
    {DialogControlKind::RadioButton, 31, "&Debitoren"_w, 14, 84, 62, 10, 0, 0},
    {DialogControlKind::RadioButton, 32, "&Kreditoren"_w, 84, 70, 64, 10, WS_DISABLED, 0},
    {DialogControlKind::Text, -1, "&Währung:"_w, 7, 114, 40, 8, WS_GROUP, 0},
    {DialogControlKind::ComboBox, 40, "", 50, 112, 70, 14, 0, 0},
    {DialogControlKind::Text, -1, "&Einheiten:"_w, 7, 132, 40, 8, 0, 0},
    {DialogControlKind::ComboList, 41, "", 50, 130, 70, 14, 0, 0},
    {DialogControlKind::TabControl, 50, "", 162, 7, 150, 40, 0, 0},
    {DialogControlKind::ListBox, 60, "", 162, 52, 150, 92, 0, 0},
    {DialogControlKind::Separator, -1, "", 7, 150, 305, 1, 0, 0},
    {DialogControlKind::DefaultButton, IDOK, "&OK", 148, 157, 52, 14, 0, 0},
    {DialogControlKind::PushButton, 70, "Ände&rn..."_w, 204, 157, 52, 14, 0, 0},
    {DialogControlKind::PushButton, IDCANCEL, "Abbrechen"_w, 260, 157, 52, 14, 0, 0},
};
inline constexpr varkui::DialogTable table = {
    103, "Stapelverwaltung – Übung"_w, 319, 178, controls, static_cast<uint16_t>(std::size(controls)), 0};

inline void Fill(HWND dialog)
{
    const int stops[] = {30, 70};
    SendDlgItemMessageA(dialog, 60, LB_SETTABSTOPS, 2, reinterpret_cast<LPARAM>(stops));
    for (const char *row : {"1000\tKASSE\tKasse"_w, "1200\tBANK\tSparkasse Köln"_w, "1210\tPOST\tPostgiro"_w,
                            "1400\tFORD\tForderungen"_w, "8400\tERLÖSE\tErlöse 16 % USt"_w}) {
        SendDlgItemMessageA(dialog, 60, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(row));
    }
    SendDlgItemMessageA(dialog, 60, LB_SETCURSEL, 1, 0);
    for (const char *row : {"DEM", "FRF", "USD"}) {
        SendDlgItemMessageA(dialog, 40, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(row));
    }
    for (const char *row : {"1", "10", "100"}) {
        SendDlgItemMessageA(dialog, 41, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(row));
    }
    SendDlgItemMessageA(dialog, 41, CB_SETCURSEL, 2, 0);
    SetDlgItemTextA(dialog, 10, "Miete für März"_w);
    SetDlgItemTextA(dialog, 11, "12");
    CheckDlgButton(dialog, 20, BST_CHECKED);
    CheckRadioButton(dialog, 30, 32, 30);
    for (const char *title : {"Zeitraum", "Vergleichszeitraum"}) {
        TCITEMA item = {};
        item.mask = TCIF_TEXT;
        item.pszText = const_cast<char *>(title);
        SendDlgItemMessageA(dialog, 50, TCM_INSERTITEMA, 9, reinterpret_cast<LPARAM>(&item));
    }
}

} // namespace demo
