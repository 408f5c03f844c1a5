#include "src/pickers/stapel_editing.h"

#include "src/frame/dialogs.h"
#include "src/frame/held_tables.h"
#include "src/frame/messages.h"
#include "src/frame/record_store.h"
#include "src/frame/transactions.h"
#include "src/pickers/pick_list.h"
#include "text/fixed_text.h"
#include "text/windows1252.h"

#include <array> // std::size
#include <cstring>

namespace vark {

namespace {

using namespace text;
using varkui::DialogControlKind;

constexpr int deleteButton = 4;
constexpr int nameField = 1005;
constexpr int recurringBox = 1007;
constexpr int intervalField = 1014;
constexpr int longestInterval = 99; // months
constexpr WPARAM intervalDigits = 2;

constexpr varkui::DialogControl newControls[] = {
    {DialogControlKind::Text, -1, "&Name:"_w, 7, 9, 40, 8, 0, 0},
    {DialogControlKind::Edit, nameField, "", 50, 7, 140, 14, 0, 0},
    {DialogControlKind::CheckBox, recurringBox, "&wiederkehrender Stapel"_w, 50, 28, 140, 10, 0, 0},
    {DialogControlKind::Text, -1, "&Intervall:"_w, 50, 46, 40, 8, 0, 0},
    {DialogControlKind::Edit, intervalField, "", 92, 44, 24, 14, ES_NUMBER, 0},
    {DialogControlKind::Text, -1, "Monate"_w, 122, 46, 60, 8, 0, 0},
    {DialogControlKind::DefaultButton, IDOK, "OK", 204, 7, 55, 14, 0, 0},
    {DialogControlKind::PushButton, IDCANCEL, "&Abbrechen"_w, 204, 25, 55, 14, 0, 0},
};

constexpr varkui::DialogTable newDialog = {108,         "Stapel anlegen"_w,     266, 65,
                                           newControls, std::size(newControls), 0};

constexpr varkui::DialogControl changeControls[] = {
    {DialogControlKind::Text, -1, "&Name:"_w, 7, 9, 40, 8, 0, 0},
    {DialogControlKind::Edit, nameField, "", 50, 7, 140, 14, 0, 0},
    {DialogControlKind::CheckBox, recurringBox, "&wiederkehrender Stapel"_w, 50, 28, 140, 10, 0, 0},
    {DialogControlKind::Text, -1, "&Intervall:"_w, 50, 46, 40, 8, 0, 0},
    {DialogControlKind::Edit, intervalField, "", 92, 44, 24, 14, ES_NUMBER, 0},
    {DialogControlKind::Text, -1, "Monate"_w, 122, 46, 60, 8, 0, 0},
    {DialogControlKind::DefaultButton, IDOK, "OK", 204, 7, 55, 14, 0, 0},
    {DialogControlKind::PushButton, deleteButton, "&Löschen"_w, 204, 25, 55, 14, 0, 0},
    {DialogControlKind::PushButton, IDCANCEL, "&Abbrechen"_w, 204, 43, 55, 14, 0, 0},
};

constexpr varkui::DialogTable changeDialog = {
    109, "Stapel ändern"_w, 266, 65, changeControls, std::size(changeControls), 0};

struct StapelEdit {
    ThreadContext &Context;
    HWND Owner; // with the list of all Stapel
    StapelRecord &Record;
    StapelChange Result;
};

struct StapelFields {
    char Name[sizeof StapelRecord::Name];
    int16_t Intervall;
};

// ---- Fields ----

void EnableInterval(HWND dialog)
{
    EnableWindow(GetDlgItem(dialog, intervalField), IsDlgButtonChecked(dialog, recurringBox) == BST_CHECKED);
}

void ShowFields(HWND dialog, const StapelRecord &record)
{
    char name[sizeof record.Name];
    CopyText(name, record.Name);
    SendDlgItemMessageA(dialog, nameField, EM_LIMITTEXT, sizeof name - 1, 0);
    SetDlgItemTextA(dialog, nameField, name);
    CheckDlgButton(dialog, recurringBox, record.Intervall != 0 ? BST_CHECKED : BST_UNCHECKED);
    SendDlgItemMessageA(dialog, intervalField, EM_LIMITTEXT, intervalDigits, 0);
    SetDlgItemInt(dialog, intervalField, record.Intervall > 0 ? static_cast<UINT>(record.Intervall) : 1,
                  FALSE);
    EnableInterval(dialog);
}

bool ReadFields(HWND dialog, StapelFields &fields)
{
    GetDlgItemTextA(dialog, nameField, fields.Name, sizeof fields.Name);
    if (fields.Name[0] == 0) {
        ShowMessage(Message::StapelnameFehlt, nameField, nullptr, -1);
        return false;
    }
    fields.Intervall = 0;
    if (IsDlgButtonChecked(dialog, recurringBox) != BST_CHECKED) return true;
    const UINT interval = GetDlgItemInt(dialog, intervalField, nullptr, FALSE);
    if (interval < 1 || interval > longestInterval) {
        ShowMessage(Message::IntervallUnzulaessig, intervalField, nullptr, -1);
        return false;
    }
    fields.Intervall = static_cast<int16_t>(interval);
    return true;
}

void PutFields(const StapelFields &fields, StapelRecord &record)
{
    CopyText(record.Name, fields.Name);
    record.Intervall = fields.Intervall;
}

// Whether another Stapel of the list has that name, without regard to case as the list sees it. Its lines go
// on behind the name, so the name's length is asked of the record.
bool IsNameTaken(const StapelEdit &edit, const char *name)
{
    int line = noLine;
    for (;;) {
        const auto next =
            static_cast<int>(SendDlgItemMessageA(edit.Owner, stapelList, LB_FINDSTRING,
                                                 static_cast<WPARAM>(line), reinterpret_cast<LPARAM>(name)));
        if (next <= line) return false; // none, or round to the first again
        line = next;
        const int32_t number = NumberOfLine(edit.Owner, stapelList, line);
        if (number == edit.Record.Nummer) continue;
        StapelRecord other;
        bool found = false;
        if (!GetEqual(edit.Context, &other, KeyOfNumber(number), found, TableStapel)) return false;
        if (found && strnlen(other.Name, sizeof other.Name) == std::strlen(name)) return true;
    }
}

bool RefuseTakenName(const StapelEdit &edit, const StapelFields &fields)
{
    if (!IsNameTaken(edit, fields.Name)) return false;
    ShowMessage(Message::StapelExistiert, nameField, fields.Name, -1);
    return true;
}

// ---- New and changed ----
//
// The names in the list are those of the time when it was filled, and others may make Stapel meanwhile. So
// the record is written, which makes the transaction the only writer, and then all names are looked at.

// Whether another Stapel has the very name of `own`. False when the Stapel cannot be read.
bool FindName(ThreadContext &context, const StapelRecord &own, bool &taken)
{
    StapelRecord other;
    bool found = false;
    taken = false;
    if (!GetFirstF(context, &other, found, TableStapel)) return false;
    while (found && !taken) {
        taken = other.Nummer != own.Nummer && SameText(other.Name, own.Name);
        if (!taken && !GetNextF(context, &other, found, TableStapel)) return false;
    }
    return true;
}

// Ends or aborts the transaction. Returns 0 or the number of the message to show: `failure`, or that another
// Stapel has the name.
int32_t EndUnlessTaken(ThreadContext &context, const StapelRecord &record, bool isWritten, int32_t failure)
{
    bool taken = false;
    isWritten = isWritten && FindName(context, record, taken);
    if (isWritten && !taken) return Transaction(context, TransactionAction::End) ? 0 : failure;
    Transaction(context, TransactionAction::Abort);
    return taken ? Message::StapelExistiert : failure;
}

int32_t WriteNew(ThreadContext &context, StapelRecord &record)
{
    HeldTables held(context); // reads inside a transaction leave the count higher
    if (!Hold(held, TableStapel) || !Transaction(context, TransactionAction::BeginConcurrent))
        return Message::StapelNichtAngelegt;
    const bool isWritten = Insert(context, &record, TableStapel);
    return EndUnlessTaken(context, record, isWritten, Message::StapelNichtAngelegt);
}

void InsertNew(HWND dialog, StapelEdit &edit)
{
    StapelFields fields{};
    if (!ReadFields(dialog, fields) || RefuseTakenName(edit, fields)) return;
    StapelRecord record{}; // the engine gives it its number
    PutFields(fields, record);
    if (const int32_t failure = WriteNew(edit.Context, record); failure != 0) {
        ShowMessage(failure, nameField, fields.Name, -1);
        return;
    }
    edit.Record = record;
    edit.Result = StapelChange::Changed;
    EndDialog(dialog, IDOK);
}

// Reads the record anew and locks it, so that nothing that another user wrote meanwhile is lost.
bool LockStapel(const StapelEdit &edit, StapelRecord &record)
{
    bool found = false;
    LockNext(edit.Context);
    return GetEqual(edit.Context, &record, KeyOfNumber(edit.Record.Nummer), found, TableStapel) && found;
}

int32_t WriteChanged(const StapelEdit &edit, const StapelFields &fields, StapelRecord &record)
{
    ThreadContext &context = edit.Context;
    if (!LockStapel(edit, record)) return Message::StapelNichtAenderbar;
    PutFields(fields, record);
    HeldTables held(context);
    if (!Hold(held, TableStapel) || !Transaction(context, TransactionAction::BeginConcurrent)) {
        Unlock(context, TableStapel);
        return Message::StapelNichtAenderbar;
    }
    const bool isWritten = Update(context, &record, TableStapel);
    const int32_t failure = EndUnlessTaken(context, record, isWritten, Message::StapelNichtAenderbar);
    if (!isWritten) Unlock(context, TableStapel);
    return failure;
}

void SaveChanged(HWND dialog, StapelEdit &edit)
{
    StapelFields fields{};
    if (!ReadFields(dialog, fields) || RefuseTakenName(edit, fields)) return;
    StapelRecord record;
    const int32_t failure = WriteChanged(edit, fields, record);
    if (failure == Message::StapelNichtAenderbar) {
        char oldName[sizeof edit.Record.Name];
        CopyText(oldName, edit.Record.Name);
        ShowMessage(failure, 0, oldName, -1);
    } else if (failure != 0) {
        ShowMessage(failure, nameField, fields.Name, -1);
    }
    if (failure != 0) return;
    edit.Record = record;
    edit.Result = StapelChange::Changed;
    EndDialog(dialog, IDOK);
}

// ---- Deletion ----

enum class Contents { Unreadable, Empty, Postings, Settlements };

constexpr TableKeyCode batByStapel = KeyCode(TableBat, 1);
constexpr TableKeyCode splitByBuchung = KeyCode(TableSplit, 0);
constexpr TableKeyCode kobuByBuchung = KeyCode(TableKobu, 1);
constexpr TableKeyCode kobuBySplit = KeyCode(TableKobu, 2);

// What the Stapel holds; postings that settle open items count before all others.
Contents ContentsOf(ThreadContext &context, int32_t stapel)
{
    BatRecord bat;
    bool found = false;
    Contents contents = Contents::Empty;
    if (!GetGreaterEqualF(context, &bat, KeyOfNumber(stapel), found, batByStapel))
        return Contents::Unreadable;
    while (found && bat.Stapel == stapel) {
        if (bat.OpAusgleich != 0) return Contents::Settlements;
        contents = Contents::Postings;
        if (!GetNextF(context, &bat, found, batByStapel)) return Contents::Unreadable;
    }
    return contents;
}

// Deletes the cost lines whose number under `code` is `number`. Lines that have become final keep the number
// of a posting that is gone and belong to the books: they stay.
bool DeleteCostLines(ThreadContext &context, int32_t number, TableKeyCode code)
{
    if (number == 0) return true;
    KobuRecord line;
    bool found = false;
    if (!GetGreaterEqualF(context, &line, KeyOfNumber(number), found, code)) return false;
    while (found && (code == kobuByBuchung ? line.Buchungsnummer : line.Splitnummer) == number) {
        if (line.FinaleBuchung == 0 && !Delete(context, TableKobu)) return false;
        if (!GetNextF(context, &line, found, code)) return false;
    }
    return true;
}

// Deletes the posting last read from bat with its further Teilbuchungen and its cost lines. The engine gives
// the number of a deleted posting to the next one, which would find whatever were left of this.
bool DeletePosting(ThreadContext &context, const BatRecord &bat)
{
    SplitRecord split;
    bool found = false;
    const KeyBuffer key = KeyOfNumber(bat.Buchungsnummer);
    if (!DeleteCostLines(context, bat.Buchungsnummer, kobuByBuchung)) return false;
    if (!GetGreaterEqualF(context, &split, key, found, splitByBuchung)) return false;
    while (found && split.Buchungsnummer == bat.Buchungsnummer) {
        if (!DeleteCostLines(context, split.Splitnummer, kobuBySplit)) return false;
        if (!Delete(context, TableSplit)) return false;
        if (!GetNextF(context, &split, found, splitByBuchung)) return false;
    }
    return Delete(context, TableBat);
}

bool DeletePostings(ThreadContext &context, int32_t stapel)
{
    BatRecord bat;
    bool found = false;
    if (!GetGreaterEqualF(context, &bat, KeyOfNumber(stapel), found, batByStapel)) return false;
    while (found && bat.Stapel == stapel) {
        const bool settles = bat.OpAusgleich != 0; // came after the question
        if (settles || !DeletePosting(context, bat)) return false;
        if (!GetNextF(context, &bat, found, batByStapel)) return false;
    }
    return true;
}

constexpr int32_t askAnew = -1; // the Stapel holds something else than the person was asked about

// Returns as DeleteWhole, inside its transaction. Reading the postings keeps new ones out.
int32_t DeleteAll(ThreadContext &context, const StapelRecord &asked, Contents contents)
{
    const Contents now = ContentsOf(context, asked.Nummer);
    if (now == Contents::Empty && contents == Contents::Postings) return askAnew;
    if (now == Contents::Postings && contents == Contents::Empty) return askAnew;
    if (!DeletePostings(context, asked.Nummer)) return Message::NichtInitialisiert;
    StapelRecord record;
    bool found = false;
    const bool read = GetEqual(context, &record, KeyOfNumber(asked.Nummer), found, TableStapel);
    // The number of a Stapel that is gone may be another's by now.
    if (!read || !found || !SameText(record.Name, asked.Name)) return Message::StapelNichtGeloescht;
    return Delete(context, TableStapel) ? 0 : Message::StapelNichtGeloescht;
}

// Deletes the Stapel with all its postings, or nothing. Returns 0, the number of the message to show, or
// askAnew.
int32_t DeleteWhole(ThreadContext &context, const StapelRecord &asked, Contents contents)
{
    HeldTables held(context); // reads inside a transaction leave the count higher
    if (!Hold(held, TableStapel) || !Transaction(context, TransactionAction::Begin))
        return Message::StapelNichtGeloescht;
    const int32_t failure = DeleteAll(context, asked, contents);
    if (failure != 0) {
        Transaction(context, TransactionAction::Abort);
        return failure;
    }
    return Transaction(context, TransactionAction::End) ? 0 : Message::StapelNichtGeloescht;
}

// Asks and deletes. What the user was asked about may change while the question stands; then it is put anew.
bool AskAndDelete(ThreadContext &context, const StapelRecord &record)
{
    char name[sizeof record.Name];
    CopyText(name, record.Name);
    Contents contents = ContentsOf(context, record.Nummer);
    int32_t failure = askAnew;
    while (failure == askAnew) {
        if (contents == Contents::Unreadable) return false;
        if (contents == Contents::Settlements) {
            ShowMessage(Message::StapelHatAusgleichsbuchungen, 0, name, -1);
            return false;
        }
        if (ShowMessage(contents == Contents::Empty ? Message::LeerenStapelLoeschen
                                                    : Message::StapelMitBuchungenLoeschen,
                        0, name, -1) == 0)
            return false;
        const Contents answered = contents;
        contents = ContentsOf(context, record.Nummer);
        if (contents != answered) continue;
        failure = DeleteWhole(context, record, contents);
        if (failure == askAnew) contents = ContentsOf(context, record.Nummer);
    }
    if (failure != 0) ShowMessage(failure, 0, name, -1);
    return failure == 0;
}

// ---- The dialogs ----

INT_PTR CALLBACK Procedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    auto *edit = DialogState<StapelEdit>(dialog, message, lParam);
    if (edit == nullptr) return FALSE;
    if (message == WM_INITDIALOG) {
        ShowFields(dialog, edit->Record);
        return TRUE;
    }
    if (message != WM_COMMAND || HIWORD(wParam) != BN_CLICKED) return FALSE;
    switch (LOWORD(wParam)) {
    case IDOK:
        if (edit->Record.Nummer == 0) {
            InsertNew(dialog, *edit);
        } else {
            SaveChanged(dialog, *edit);
        }
        return TRUE;
    case deleteButton:
        if (edit->Record.Nummer == 0) return FALSE;
        if (AskAndDelete(edit->Context, edit->Record)) {
            edit->Result = StapelChange::Deleted;
            EndDialog(dialog, deleteButton);
        }
        return TRUE;
    case IDCANCEL: EndDialog(dialog, IDCANCEL); return TRUE;
    case recurringBox: EnableInterval(dialog); return TRUE;
    default: return FALSE;
    }
}

StapelChange RunEdit(const varkui::DialogTable &dialog, ThreadContext &context, HWND owner,
                     StapelRecord &record)
{
    StapelEdit edit = {context, owner, record, StapelChange::None};
    return RunDialog(dialog, owner, Procedure, &edit) ? edit.Result : StapelChange::None;
}

} // namespace

bool CreateStapel(ThreadContext &context, HWND owner, StapelRecord &record)
{
    record = StapelRecord{};
    return RunEdit(newDialog, context, owner, record) == StapelChange::Changed;
}

StapelChange ChangeStapel(ThreadContext &context, HWND owner, StapelRecord &record)
{
    return RunEdit(changeDialog, context, owner, record);
}

} // namespace vark
