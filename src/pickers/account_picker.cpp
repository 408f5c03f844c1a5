// VARK_HoleKonto: the user chooses an account by number or Kürzel.
#include "src/frame/dialogs.h"
#include "src/frame/held_tables.h"
#include "src/frame/lifecycle.h"
#include "src/frame/mandant.h"
#include "src/frame/messages.h"
#include "src/frame/record_store.h"
#include "src/model/accounts.h"
#include "src/pickers/pick_list.h"
#include "src/values/account_numbers.h"
#include "text/fixed_text.h"
#include "text/windows1252.h"

#include <array> // std::size
#include <cstring>

namespace vark {

namespace {

using namespace text;
using varkui::DialogControlKind;

constexpr int32_t nothingInRange = -1;
constexpr int32_t listFull = -2;
constexpr int32_t kontoartRefused = VARK_FEHLER_KONTOART;

constexpr int accountList = 1000;
constexpr int byNumberButton = 1002;
constexpr int byKuerzelButton = 1003;
constexpr int searchField = 1006;
constexpr WPARAM longestSearch = 8;

constexpr varkui::DialogControl controls[] = {
    {DialogControlKind::Text, -1, "&Suche:"_w, 7, 9, 32, 8, 0, 0},
    {DialogControlKind::Edit, searchField, "", 40, 7, 60, 14, 0, 0},
    {DialogControlKind::RadioButton, byNumberButton, "Konto&nummer"_w, 112, 9, 62, 10, WS_GROUP | WS_TABSTOP,
     0},
    {DialogControlKind::RadioButton, byKuerzelButton, "&Kürzel"_w, 178, 9, 48, 10, 0, 0},
    {DialogControlKind::Text, -1, "&Liste:"_w, 7, 27, 60, 8, WS_GROUP, 0},
    {DialogControlKind::ListBox, accountList, "", 7, 38, 220, 140, 0, 0},
    {DialogControlKind::DefaultButton, IDOK, "OK", 234, 38, 55, 14, 0, 0},
    {DialogControlKind::PushButton, IDCANCEL, "&Abbrechen"_w, 234, 56, 55, 14, 0, 0},
};

constexpr size_t kuerzelWidth = sizeof AccountHead::Kuerzel;

enum class Sorting { ByNumber, ByKuerzel };

struct AccountPick {
    ThreadContext &Context;
    const AccountKind &Kind;
    AccountNumber Von; // right-justified; empty: no limit
    AccountNumber Bis;
    Sorting SortedBy;
    bool IsShowingChoice; // the search field is being written, not typed into
    int32_t Result;
    AccountNumber Konto; // the choice, without blanks
};

// "1200<Tab>BANK<Tab>Bank", or with Kürzel and number changed over.
using AccountLine = char[sizeof(AccountNumber) + kuerzelWidth + sizeof SakoRecord::Name];

void AppendColumn(AccountLine &line, size_t &length, const char *field, size_t width)
{
    const size_t count = strnlen(field, width - 1);
    std::memcpy(line + length, field, count);
    length += count;
}

void FormatLine(const AccountPick &pick, const AnyAccount &record, AccountLine &line)
{
    AccountNumber konto;
    StripNumber(konto, record.Head.Konto);
    const char *const kuerzel = record.Head.Kuerzel;
    const bool isByNumber = pick.SortedBy == Sorting::ByNumber;
    size_t length = 0;
    AppendColumn(line, length, isByNumber ? konto : kuerzel, isByNumber ? sizeof konto : kuerzelWidth);
    line[length++] = '\t';
    AppendColumn(line, length, isByNumber ? kuerzel : konto, isByNumber ? kuerzelWidth : sizeof konto);
    line[length++] = '\t';
    AppendColumn(line, length, record.Bytes + pick.Kind.NameOffset, pick.Kind.NameWidth);
    line[length] = 0;
}

bool ReadFirst(const AccountPick &pick, AnyAccount &record, bool &found)
{
    ThreadContext &context = pick.Context;
    const TableId table = pick.Kind.Table;
    if (pick.SortedBy == Sorting::ByKuerzel) return GetFirstF(context, &record, found, KeyCode(table, 1));
    if (pick.Von[0] == 0) return GetFirstF(context, &record, found, table);
    return GetGreaterEqualF(context, &record, KeyOfText(pick.Von, sizeof pick.Von), found, table);
}

// Adds the accounts in range. 1; below 0 what the dialog ends with.
int32_t AddAccounts(const AccountPick &pick, HWND dialog)
{
    const bool isByNumber = pick.SortedBy == Sorting::ByNumber;
    const TableKeyCode code = KeyCode(pick.Kind.Table, isByNumber ? 0 : 1);
    AnyAccount record;
    const AccountNumber &konto = record.Head.Konto;
    bool found = false;
    bool isEmpty = true;
    if (!ReadFirst(pick, record, found)) return engineFailure;
    while (found && !(isByNumber && IsBehindLimit(konto, pick.Bis))) {
        // In the order of the Kürzel accounts inside and outside of the range follow each other.
        if (!IsBeforeLimit(konto, pick.Von) && !IsBehindLimit(konto, pick.Bis)) {
            AccountLine line;
            FormatLine(pick, record, line);
            const LRESULT added =
                SendDlgItemMessageA(dialog, accountList, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(line));
            if (added < 0) {
                ShowMessage(Message::ListeUnvollstaendig, 0, nullptr, -1);
                return listFull;
            }
            isEmpty = false;
        }
        if (!GetNextF(pick.Context, &record, found, code)) return engineFailure;
    }
    return isEmpty ? nothingInRange : 1;
}

void ReadLine(HWND dialog, int index, AccountLine &line)
{
    line[0] = 0;
    SendDlgItemMessageA(dialog, accountList, LB_GETTEXT, static_cast<WPARAM>(index),
                        reinterpret_cast<LPARAM>(line));
}

// Puts the first column of the selected line into the search field.
void ShowChoice(HWND dialog, AccountPick &pick)
{
    const int index = SelectedLine(dialog, accountList);
    if (index == noLine) return;
    AccountLine line;
    ReadLine(dialog, index, line);
    line[std::strcspn(line, "\t")] = 0;
    pick.IsShowingChoice = true;
    SetDlgItemTextA(dialog, searchField, line);
    pick.IsShowingChoice = false;
}

int32_t FillAccountList(HWND dialog, AccountPick &pick)
{
    int tabStops[] = {pick.SortedBy == Sorting::ByNumber ? 30 : 40, 70};
    HoldDrawing(dialog, accountList);
    SendDlgItemMessageA(dialog, accountList, LB_RESETCONTENT, 0, 0);
    SendDlgItemMessageA(dialog, accountList, LB_SETTABSTOPS, std::size(tabStops),
                        reinterpret_cast<LPARAM>(tabStops));
    const int32_t filled = AddAccounts(pick, dialog);
    ResumeDrawing(dialog, accountList);
    if (filled < 1) return filled;
    SendDlgItemMessageA(dialog, accountList, LB_SETCURSEL, 0, 0);
    SetFocus(GetDlgItem(dialog, accountList));
    ShowChoice(dialog, pick);
    return 1;
}

void Refill(HWND dialog, AccountPick &pick)
{
    pick.Result = FillAccountList(dialog, pick);
    if (pick.Result < 0) EndDialog(dialog, IDCANCEL);
}

void Begin(HWND dialog, AccountPick &pick)
{
    SendDlgItemMessageA(dialog, searchField, EM_LIMITTEXT, longestSearch, 0);
    CheckRadioButton(dialog, byNumberButton, byKuerzelButton, byNumberButton);
    Refill(dialog, pick);
}

void Sort(HWND dialog, AccountPick &pick, Sorting sorting)
{
    if (pick.SortedBy == sorting) return;
    pick.SortedBy = sorting;
    Refill(dialog, pick);
}

void Search(HWND dialog, const AccountPick &pick)
{
    if (pick.IsShowingChoice) return;
    char typed[longestSearch + 1];
    GetDlgItemTextA(dialog, searchField, typed, sizeof typed);
    SendDlgItemMessageA(dialog, accountList, LB_SELECTSTRING, static_cast<WPARAM>(-1),
                        reinterpret_cast<LPARAM>(typed));
}

void Choose(HWND dialog, AccountPick &pick)
{
    const int index = RequireLine(dialog, accountList);
    if (index == noLine) return;
    AccountLine line;
    ReadLine(dialog, index, line);
    const char *konto = pick.SortedBy == Sorting::ByNumber ? line : line + std::strcspn(line, "\t") + 1;
    CopyText(pick.Konto, sizeof pick.Konto, konto, std::strcspn(konto, "\t"));
    pick.Result = 1;
    EndDialog(dialog, IDOK);
}

INT_PTR CALLBACK Procedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    auto *pick = DialogState<AccountPick>(dialog, message, lParam);
    if (pick == nullptr) return FALSE;
    if (message == WM_INITDIALOG) {
        Begin(dialog, *pick);
        return FALSE; // the focus is on the list
    }
    if (message != WM_COMMAND) return FALSE;
    const int id = LOWORD(wParam);
    const int notice = HIWORD(wParam);
    if ((id == IDOK && notice == BN_CLICKED) || (id == accountList && notice == LBN_DBLCLK)) {
        Choose(dialog, *pick);
    } else if (id == IDCANCEL && notice == BN_CLICKED) {
        pick->Result = pickCancelled;
        EndDialog(dialog, IDCANCEL);
    } else if (id == byNumberButton && notice == BN_CLICKED) {
        Sort(dialog, *pick, Sorting::ByNumber);
    } else if (id == byKuerzelButton && notice == BN_CLICKED) {
        Sort(dialog, *pick, Sorting::ByKuerzel);
    } else if (id == searchField && notice == EN_CHANGE) {
        Search(dialog, *pick);
    } else if (id == accountList && notice == LBN_SELCHANGE) {
        ShowChoice(dialog, *pick);
    } else {
        return FALSE;
    }
    return TRUE;
}

int32_t PickAccount(ThreadContext &context, HWND owner, const AccountKind &kind, const char *von,
                    const char *bis, char *out)
{
    AccountPick pick = {context, kind, {}, {}, Sorting::ByNumber, false, pickCancelled, {}};
    JustifyLimit(pick.Von, von);
    JustifyLimit(pick.Bis, bis);
    HeldTables held(context);
    if (!Hold(held, kind.Table)) return engineFailure;
    const varkui::DialogTable dialog = {102, kind.PickTitle, 296, 185, controls, std::size(controls), 0};
    if (!RunDialog(dialog, owner, Procedure, &pick)) pick.Result = engineFailure;
    if (pick.Result == 1 && out != nullptr) CopyText(out, sizeof pick.Konto, pick.Konto, sizeof pick.Konto);
    return pick.Result;
}

} // namespace

} // namespace vark

using namespace vark;

int32_t VARK_CALL VARK_HoleKonto(VarkWindow owner, int32_t mandant, int32_t kontoart, const char *von,
                                 const char *bis, char *out)
{
    ThreadContext *context = nullptr;
    const int32_t entered = EnterExport(context);
    if (entered != ready) return entered;
    FistaRecord fista;
    const int32_t selected = SelectMandantOrReport(*context, mandant, fista);
    if (selected < 1) return selected;
    const AccountKind *const kind = FindKind(kontoart);
    if (kind == nullptr) return kontoartRefused;
    return PickAccount(*context, static_cast<HWND>(owner), *kind, von, bis, out);
}
