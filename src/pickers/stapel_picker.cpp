// VARK_HoleStapelNr: the user chooses a Stapel or, in management mode, also makes, changes and deletes them.
#include "src/frame/dialogs.h"
#include "src/frame/held_tables.h"
#include "src/frame/lifecycle.h"
#include "src/frame/mandant.h"
#include "src/frame/messages.h"
#include "src/frame/record_store.h"
#include "src/pickers/pick_list.h"
#include "src/pickers/remembered_choice.h"
#include "src/pickers/stapel_editing.h"
#include "text/fixed_text.h"
#include "text/windows1252.h"

#include <array> // std::size
#include <charconv>
#include <cstring>

namespace vark {

namespace {

using namespace text;
using varkui::DialogControlKind;

constexpr int newButton = 3;
constexpr int changeButton = 4;

constexpr varkui::DialogControl controls[] = {
    {DialogControlKind::Text, -1, "&Stapel:"_w, 7, 7, 160, 8, 0, 0},
    {DialogControlKind::ListBox, stapelList, "", 7, 18, 170, 114, 0, 0},
    {DialogControlKind::DefaultButton, IDOK, "OK", 184, 18, 55, 14, 0, 0},
    {DialogControlKind::PushButton, IDCANCEL, "&Abbrechen"_w, 184, 36, 55, 14, 0, 0},
    {DialogControlKind::PushButton, newButton, "&Neu..."_w, 184, 60, 55, 14, 0, 0},
    {DialogControlKind::PushButton, changeButton, "&Ändern..."_w, 184, 78, 55, 14, 0, 0},
};

struct StapelPick {
    ThreadContext &Context;
    ChoiceKey Key;
    bool IsManagement;
    int32_t Result;
};

// ---- Lines ----

// "Name [W3B]": recurring every three months, with postings.
using StapelLine = char[sizeof StapelRecord::Name + 16];

void FormatLine(const StapelRecord &record, bool hasPostings, StapelLine &line)
{
    CopyText(line, sizeof line, record.Name, sizeof record.Name - 1);
    char *at = line + std::strlen(line);
    char *const end = line + sizeof line;
    const auto append = [&at, end](const char *text) {
        CopyText(at, static_cast<size_t>(end - at), text, static_cast<size_t>(end - at));
        at += std::strlen(at);
    };
    if (record.Intervall != 0) {
        append(" [W");
        at = std::to_chars(at, end, record.Intervall).ptr;
    }
    if (hasPostings) append(record.Intervall != 0 ? "B" : " [B");
    append(record.Intervall != 0 || hasPostings ? "]" : "");
}

bool FormatLine(ThreadContext &context, const StapelRecord &record, StapelLine &line)
{
    bool hasPostings = false;
    if (!Exists(context, KeyOfNumber(record.Nummer), hasPostings, KeyCode(TableBat, 1))) return false;
    FormatLine(record, hasPostings, line);
    return true;
}

// ---- List ----

int32_t FillStapel(HWND dialog, const StapelPick &pick)
{
    ThreadContext &context = pick.Context;
    StapelRecord record;
    bool found = false;
    if (!GetFirstF(context, &record, found, TableStapel)) return engineFailure;
    while (found) {
        if (pick.IsManagement || record.Nummer > lastApplicationStapel) {
            StapelLine line;
            if (!FormatLine(context, record, line)) return engineFailure;
            if (!AddLine(dialog, stapelList, line, record.Nummer)) {
                ShowMessage(Message::ListeUnvollstaendig, 0, nullptr, -1);
                break;
            }
        }
        if (!GetNextF(context, &record, found, TableStapel)) return engineFailure;
    }
    // Numbers begin at 1: without a stored choice no line is selected.
    SelectNumber(dialog, stapelList, RecallChoice(pick.Key, 0));
    return 1;
}

void Select(HWND dialog, int line)
{
    SendDlgItemMessageA(dialog, stapelList, LB_SETCURSEL, static_cast<WPARAM>(line), 0);
}

void ReplaceLine(HWND dialog, StapelPick &pick, int index, const StapelRecord &record)
{
    StapelLine line;
    if (!FormatLine(pick.Context, record, line)) return;
    SendDlgItemMessageA(dialog, stapelList, LB_DELETESTRING, static_cast<WPARAM>(index), 0);
    SendDlgItemMessageA(dialog, stapelList, LB_INSERTSTRING, static_cast<WPARAM>(index),
                        reinterpret_cast<LPARAM>(line));
    SendDlgItemMessageA(dialog, stapelList, LB_SETITEMDATA, static_cast<WPARAM>(index), record.Nummer);
    Select(dialog, index);
}

void RemoveLine(HWND dialog, int index)
{
    SendDlgItemMessageA(dialog, stapelList, LB_DELETESTRING, static_cast<WPARAM>(index), 0);
    Select(dialog, index > 0 ? index - 1 : 0);
}

// ---- Buttons ----

void Begin(HWND dialog, StapelPick &pick)
{
    if (!pick.IsManagement) {
        ShowWindow(GetDlgItem(dialog, newButton), SW_HIDE);
        ShowWindow(GetDlgItem(dialog, changeButton), SW_HIDE);
    }
    pick.Result = FillStapel(dialog, pick);
    if (pick.Result < 0) EndDialog(dialog, IDCANCEL);
}

void Choose(HWND dialog, StapelPick &pick)
{
    const int line = RequireLine(dialog, stapelList);
    if (line == noLine) return;
    pick.Result = NumberOfLine(dialog, stapelList, line);
    RememberChoice(pick.Key, pick.Result);
    EndDialog(dialog, IDOK);
}

void AddNew(HWND dialog, StapelPick &pick)
{
    StapelRecord record;
    StapelLine line;
    if (!CreateStapel(pick.Context, dialog, record)) return;
    FormatLine(record, false, line);
    if (!AddLine(dialog, stapelList, line, record.Nummer)) {
        ShowMessage(Message::ListeUnvollstaendig, 0, nullptr, -1);
        return;
    }
    SelectNumber(dialog, stapelList, record.Nummer);
}

void ChangeSelected(HWND dialog, StapelPick &pick)
{
    const int line = RequireLine(dialog, stapelList);
    if (line == noLine) return;
    const int32_t number = NumberOfLine(dialog, stapelList, line);
    StapelRecord record;
    bool found = false;
    if (!GetEqual(pick.Context, &record, KeyOfNumber(number), found, TableStapel)) return;
    if (!found) {
        ShowMessage(Message::ExistiertNicht, 0, "Stapel", -1);
        return;
    }
    if (number <= lastApplicationStapel) {
        char name[sizeof record.Name];
        CopyText(name, record.Name);
        ShowMessage(Message::StapelNichtAenderbar, 0, name, -1);
        return;
    }
    switch (ChangeStapel(pick.Context, dialog, record)) {
    case StapelChange::Changed: ReplaceLine(dialog, pick, line, record); break;
    case StapelChange::Deleted: RemoveLine(dialog, line); break;
    case StapelChange::None: break;
    }
}

INT_PTR CALLBACK Procedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    auto *pick = DialogState<StapelPick>(dialog, message, lParam);
    if (pick == nullptr) return FALSE;
    if (message == WM_INITDIALOG) {
        Begin(dialog, *pick);
        return TRUE;
    }
    if (message != WM_COMMAND) return FALSE;
    const int id = LOWORD(wParam);
    const int notice = HIWORD(wParam);
    if ((id == IDOK && notice == BN_CLICKED) || (id == stapelList && notice == LBN_DBLCLK)) {
        Choose(dialog, *pick);
    } else if (id == IDCANCEL && notice == BN_CLICKED) {
        pick->Result = pickCancelled;
        EndDialog(dialog, IDCANCEL);
    } else if (id == newButton && notice == BN_CLICKED && pick->IsManagement) {
        AddNew(dialog, *pick);
    } else if (id == changeButton && notice == BN_CLICKED && pick->IsManagement) {
        ChangeSelected(dialog, *pick);
    } else {
        return FALSE;
    }
    return TRUE;
}

int32_t PickStapel(ThreadContext &context, HWND owner, bool isManagement)
{
    const char *title = isManagement ? "Stapelverwaltung" : "Stapelauswahl";
    const varkui::DialogTable dialog = {103, title, 246, 139, controls, std::size(controls), 0};
    StapelPick pick = {context, KeyOfChoice("Stapel", context.MandantSuffix), isManagement, pickCancelled};
    HeldTables held(context);
    if (!Hold(held, TableStapel)) return engineFailure;
    if (!Hold(held, TableBat) || !RunDialog(dialog, owner, Procedure, &pick)) pick.Result = engineFailure;
    return pick.Result;
}

} // namespace

} // namespace vark

using namespace vark;

int32_t VARK_CALL VARK_HoleStapelNr(VarkWindow owner, int32_t mandant)
{
    ThreadContext *context = nullptr;
    const int32_t entered = EnterExport(context);
    if (entered != ready) return entered;
    const bool isManagement = mandant < 0;
    // Turned without a sign: the one number that has no positive counterpart stays itself and is no Mandant.
    const auto number = static_cast<int32_t>(isManagement ? 0u - static_cast<uint32_t>(mandant)
                                                          : static_cast<uint32_t>(mandant));
    FistaRecord fista;
    const int32_t selected = SelectMandantOrReport(*context, number, fista);
    if (selected < 1) return selected;
    return PickStapel(*context, static_cast<HWND>(owner), isManagement);
}
