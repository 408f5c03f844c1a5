#include "report-engine/print_dialog.h"

#include "report-engine/helper.h"
#include "text/windows1252.h"
#include "window-system/include/dialog_table.h"

#include <algorithm>
#include <array> // std::size
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace rs {

namespace {

using namespace text;
using varkui::DialogControlKind;

enum Control : int {
    printerList = 301,
    allPages,
    somePages,
    firstPage,
    lastPage,
    copiesEdit,
    paperList,
};

constexpr varkui::DialogControl controls[] = {
    {DialogControlKind::Text, -1, "&Drucker:"_w, 7, 9, 50, 8, 0, 0},
    {DialogControlKind::ComboList, printerList, "", 60, 7, 170, 14, 0, 0},
    {DialogControlKind::RadioButton, allPages, "&Alle Seiten"_w, 60, 28, 80, 10, WS_GROUP, 0},
    {DialogControlKind::RadioButton, somePages, "&Seiten von"_w, 60, 42, 58, 10, 0, 0},
    {DialogControlKind::Edit, firstPage, "", 120, 40, 36, 14, ES_NUMBER | ES_RIGHT | WS_GROUP, 0},
    {DialogControlKind::Text, -1, "&bis"_w, 162, 42, 16, 8, 0, 0},
    {DialogControlKind::Edit, lastPage, "", 180, 40, 36, 14, ES_NUMBER | ES_RIGHT, 0},
    {DialogControlKind::Text, -1, "&Exemplare:"_w, 7, 63, 50, 8, 0, 0},
    {DialogControlKind::Edit, copiesEdit, "", 60, 61, 36, 14, ES_NUMBER | ES_RIGHT, 0},
    {DialogControlKind::Text, -1, "&Papier:"_w, 7, 83, 50, 8, 0, 0},
    {DialogControlKind::ComboList, paperList, "", 60, 81, 170, 14, 0, 0},
    {DialogControlKind::DefaultButton, IDOK, "D&rucken"_w, 124, 104, 50, 14, WS_GROUP, 0},
    {DialogControlKind::PushButton, IDCANCEL, "Ab&brechen"_w, 180, 104, 50, 14, 0, 0},
};
constexpr varkui::DialogTable table = {141, "Bericht drucken", 237, 125, controls, std::size(controls), 0};

struct Paper {
    const char *Name;
    const char *Media; // as printing systems call it
};
constexpr Paper papers[] = {
    {"wie der Bericht", ""},
    {"A4", "iso_a4_210x297mm"},
    {"A3", "iso_a3_297x420mm"},
    {"A5", "iso_a5_148x210mm"},
};

constexpr int maxPrinters = 64;
constexpr int mostCopies = 999;

// What the dialog works with.
struct Asking {
    const View *Of;
    PrintWishes *Wishes;
    char Printers[maxPrinters][maxQueue]; // of the rows of the list; of a file empty
    int Count;
    bool HasFile; // the first row is the file
};

// The printers that there are, the default one first.
void FindPrinters(Asking &asking)
{
    char name[] = "rs-print";
    char list[] = "list";
    char *const arguments[] = {name, list, nullptr};
    char said[maxPrinters * 64];
    HCURSOR before = SetCursor(LoadCursorA(nullptr, IDC_WAIT));
    const bool isTold =
        RunHelper("rs-print", arguments, nullptr, 0, said, sizeof said, nullptr, 0) == Ended::good;
    SetCursor(before);
    for (const char *line = isTold ? said : ""; *line != 0 && asking.Count < maxPrinters;) {
        const size_t length = std::strcspn(line, "\n");
        if (length > 0 && length < maxQueue) {
            char *to = asking.Printers[asking.Count++];
            std::memcpy(to, line, length);
            to[length] = 0;
        }
        line += length + (line[length] != 0 ? 1 : 0);
    }
}

void AddRow(HWND dialog, int list, const char *utf8)
{
    char text[400];
    FromUtf8(utf8, text, sizeof text);
    SendDlgItemMessageA(dialog, list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text));
}

void SelectRow(HWND dialog, int list, int row)
{
    SendDlgItemMessageA(dialog, list, CB_SETCURSEL, static_cast<WPARAM>(row), 0);
}

void Fill(HWND dialog, Asking &asking)
{
    const PrintWishes &wishes = *asking.Wishes;
    int selected = 0;
    if (asking.HasFile) {
        char row[400];
        std::snprintf(row, sizeof row, "Datei %.300s", wishes.Pattern);
        AddRow(dialog, printerList, row);
        asking.Count = 1;
        asking.Printers[0][0] = 0;
    }
    const int first = asking.Count;
    FindPrinters(asking);
    for (int i = first; i < asking.Count; ++i) {
        AddRow(dialog, printerList, asking.Printers[i]);
        if (!asking.HasFile && std::strcmp(asking.Printers[i], wishes.Queue) == 0) selected = i;
    }
    if (asking.Count == 0) AddRow(dialog, printerList, "Standarddrucker");
    SelectRow(dialog, printerList, selected);
    for (const Paper &paper : papers) {
        AddRow(dialog, paperList, paper.Name);
    }
    SelectRow(dialog, paperList, 0);
    CheckRadioButton(dialog, allPages, somePages, allPages);
    SetDlgItemInt(dialog, firstPage, 1, FALSE);
    SetDlgItemInt(dialog, lastPage, static_cast<UINT>(std::min<int64_t>(asking.Of->Of->PageCount, INT32_MAX)),
                  FALSE);
    SetDlgItemInt(dialog, copiesEdit, 1, FALSE);
}

bool Refuse(HWND dialog, int control, const char *utf8)
{
    char text[400];
    FromUtf8(utf8, text, sizeof text);
    MessageBoxA(dialog, text, "MERIDA", MB_OK | MB_ICONEXCLAMATION);
    SetFocus(GetDlgItem(dialog, control));
    SendDlgItemMessageA(dialog, control, EM_SETSEL, 0, -1);
    return false;
}

// Takes over what stands in the dialog; false when something cannot be, which has been told.
bool Accept(HWND dialog, const Asking &asking)
{
    PrintWishes &wishes = *asking.Wishes;
    const auto row = static_cast<int>(SendDlgItemMessageA(dialog, printerList, CB_GETCURSEL, 0, 0));
    wishes.IsFile = asking.HasFile && row <= 0;
    if (!wishes.IsFile) {
        const bool isNamed = row >= 0 && row < asking.Count;
        std::snprintf(wishes.Queue, sizeof wishes.Queue, "%s", isNamed ? asking.Printers[row] : "");
    }
    wishes.Range = {};
    if (IsDlgButtonChecked(dialog, somePages) != 0) {
        BOOL isNumber[2] = {FALSE, FALSE};
        const int64_t first = GetDlgItemInt(dialog, firstPage, &isNumber[0], FALSE);
        const int64_t last = GetDlgItemInt(dialog, lastPage, &isNumber[1], FALSE);
        const int64_t count = asking.Of->Of->PageCount;
        char reason[200];
        std::snprintf(reason, sizeof reason, "Der Bericht hat die Seiten 1 bis %lld.",
                      static_cast<long long>(count));
        if (isNumber[0] == FALSE || first < 1 || first > count) return Refuse(dialog, firstPage, reason);
        if (isNumber[1] == FALSE || last > count) return Refuse(dialog, lastPage, reason);
        if (last < first) return Refuse(dialog, lastPage, "Die letzte Seite liegt vor der ersten.");
        wishes.Range = {first, last};
    }
    BOOL isNumber = FALSE;
    const UINT copies = GetDlgItemInt(dialog, copiesEdit, &isNumber, FALSE);
    if (isNumber == FALSE || copies < 1 || copies > mostCopies) {
        return Refuse(dialog, copiesEdit, "Es werden 1 bis 999 Exemplare gedruckt.");
    }
    wishes.Copies = static_cast<int>(copies);
    const auto paper = static_cast<size_t>(SendDlgItemMessageA(dialog, paperList, CB_GETCURSEL, 0, 0));
    wishes.Media = paper < std::size(papers) ? papers[paper].Media : "";
    return true;
}

INT_PTR CALLBACK OnMessage(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_INITDIALOG) {
        SetWindowLongPtrA(dialog, DWLP_USER, static_cast<LONG_PTR>(lParam));
        Fill(dialog, *reinterpret_cast<Asking *>(lParam)); // NOLINT
        return TRUE;
    }
    if (message != WM_COMMAND) return FALSE;
    const auto *asking = reinterpret_cast<const Asking *>(GetWindowLongPtrA(dialog, DWLP_USER)); // NOLINT
    const int id = LOWORD(wParam);
    const bool isTyped = (id == firstPage || id == lastPage) && HIWORD(wParam) == EN_CHANGE;
    if (isTyped && GetFocus() == GetDlgItem(dialog, id)) {
        CheckRadioButton(dialog, allPages, somePages, somePages);
    }
    if (id == IDOK && Accept(dialog, *asking)) EndDialog(dialog, IDOK);
    if (id == IDCANCEL) EndDialog(dialog, IDCANCEL);
    return id == IDOK || id == IDCANCEL ? TRUE : FALSE;
}

} // namespace

bool AskHowToPrint(HWND owner, const View &view, PrintWishes &wishes)
{
    auto *own = static_cast<Asking *>(std::calloc(1, sizeof(Asking)));
    DLGTEMPLATE *made = own != nullptr ? varkui::MakeDialogTemplate(table) : nullptr;
    INT_PTR result = IDCANCEL;
    if (made != nullptr) {
        own->Of = &view;
        own->Wishes = &wishes;
        own->HasFile = wishes.IsFile;
        result = DialogBoxIndirectParamA(nullptr, made, owner, OnMessage, reinterpret_cast<LPARAM>(own));
        varkui::FreeDialogTemplate(made);
    }
    std::free(own);
    return result == IDOK;
}

} // namespace rs
