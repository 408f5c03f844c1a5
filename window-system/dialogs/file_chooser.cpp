#include "window-system/dialogs/file_chooser.h"

#include "text/windows1252.h"
#include "window-system/dialogs/dialogs.h"
#include "window-system/include/dialog_table.h"
#include "window-system/model/as_pointer.h"
#include "window-system/model/collation.h"
#include "window-system/model/handles.h"
#include "window-system/model/input.h"
#include "window-system/model/memory.h"
#include "window-system/model/model.h"
#include "window-system/model/window.h"

#include <array> // std::size
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>

namespace varkui {

namespace {

using namespace text;

enum ChooserControl : int { pathEdit = 201, kindList = 202 };

constexpr DialogControl chooserControls[] = {
    {DialogControlKind::Text, -1, "&Datei:", 7, 9, 36, 8, 0, 0},
    {DialogControlKind::Edit, pathEdit, "", 46, 7, 220, 14, 0, 0},
    {DialogControlKind::Text, -1, "&Form:", 7, 29, 36, 8, 0, 0},
    {DialogControlKind::ComboList, kindList, "", 46, 27, 110, 14, 0, 0},
    {DialogControlKind::DefaultButton, IDOK, "&Speichern", 150, 50, 56, 14, 0, 0},
    {DialogControlKind::PushButton, IDCANCEL, "&Abbrechen", 210, 50, 56, 14, 0, 0},
};
constexpr int32_t chooserNumber = 140;

constexpr UINT chosenMessage = inputMessage + 1; // wParam: the kind; lParam: const ChosenFile *
constexpr char choosingProperty[] = "VarkUiChooser";

// Lives on the stack of the call; the dialog's property points to it.
struct Choosing {
    const char *Name;
    const VARKUIFILEKIND *Kinds;
    int KindCount;
    VARKUITAKEFILE Take;
    void *Context;
};

struct ChosenFile {
    const char *Path;
    bool IsAgreed; // that a file of that name goes
};

char *lastDirectory; // guarded by the lock; null until one was chosen

void RememberDirectory(const char *path)
{
    const char *slash = strrchr(path, '/');
    char *directory = slash != nullptr ? CopyText(path, static_cast<size_t>(slash - path)) : nullptr;
    if (directory == nullptr) return;
    const Locked locked;
    Release(lastDirectory);
    lastDirectory = directory;
}

// ---- Endings ----

// The place of the ending in a path, its end when there is none.
char *EndingOf(char *path)
{
    char *slash = strrchr(path, '/');
    char *dot = strrchr(slash != nullptr ? slash + 1 : path, '.');
    return dot != nullptr ? dot : path + strlen(path);
}

bool HasKnownEnding(const Choosing &choosing, char *path)
{
    const char *ending = EndingOf(path);
    for (int i = 0; i < choosing.KindCount; ++i) {
        if (EqualWithoutCase(ending, choosing.Kinds[i].Ending)) return true;
    }
    return false;
}

const VARKUIFILEKIND &KindAt(const Choosing &choosing, LRESULT row)
{
    return choosing.Kinds[row >= 0 && row < choosing.KindCount ? row : 0];
}

// False when there is no room.
bool Append(char (&path)[PATH_MAX], const char *ending)
{
    const size_t used = strlen(path);
    const size_t more = strlen(ending) + 1;
    if (used + more > sizeof path) return false;
    memcpy(path + used, ending, more);
    return true;
}

// ---- The field ----

// The path in the field, "~" being the person's own directory; empty when it does not fit.
void PathInField(HWND dialog, char (&path)[PATH_MAX])
{
    char typed[PATH_MAX] = "";
    GetDlgItemTextA(dialog, pathEdit, typed, sizeof typed);
    const char *home = secure_getenv("HOME");
    const bool isBelowHome = typed[0] == '~' && typed[1] == '/' && home != nullptr;
    char rest[PATH_MAX];
    const size_t restLength = ToUtf8(isBelowHome ? typed + 1 : typed, rest, sizeof rest);
    const int length = snprintf(path, sizeof path, "%s%s", isBelowHome ? home : "", rest);
    if (restLength >= sizeof rest || length < 0 || length >= static_cast<int>(sizeof path)) path[0] = 0;
}

void ShowPath(HWND dialog, const char *path)
{
    char shown[PATH_MAX];
    FromUtf8(path, shown, sizeof shown);
    SetDlgItemTextA(dialog, pathEdit, shown);
}

// The name in the field ends as the chosen kind does.
void TakeKind(HWND dialog, const Choosing &choosing)
{
    char path[PATH_MAX];
    PathInField(dialog, path);
    if (HasKnownEnding(choosing, path)) *EndingOf(path) = 0;
    const LRESULT row = SendDlgItemMessageA(dialog, kindList, CB_GETCURSEL, 0, 0);
    if (Append(path, KindAt(choosing, row).Ending)) ShowPath(dialog, path);
}

void Begin(HWND dialog, const Choosing &choosing)
{
    char path[PATH_MAX];
    {
        const Locked locked(mutates);
        Window *made = Find(dialog);
        if (made != nullptr) made->Dialog->IsChooser = true;
        const char *home = secure_getenv("HOME");
        const char *directory = lastDirectory != nullptr ? lastDirectory : home;
        snprintf(path, sizeof path, "%s/%s", directory != nullptr ? directory : "", choosing.Name);
    }
    for (int i = 0; i < choosing.KindCount; ++i) {
        char row[100];
        snprintf(row, sizeof row, "%.60s (*%.20s)", choosing.Kinds[i].Name, choosing.Kinds[i].Ending);
        SendDlgItemMessageA(dialog, kindList, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(row));
    }
    SendDlgItemMessageA(dialog, kindList, CB_SETCURSEL, 0, 0);
    ShowPath(dialog, path);
    TakeKind(dialog, choosing);
}

// ---- The choice ----

// The type of the file at a path as in st_mode, 0 for none.
mode_t TypeAt(const char *path)
{
    struct stat status = {};
    return stat(path, &status) == 0 ? status.st_mode & S_IFMT : 0;
}

bool Agrees(HWND dialog, const char *path)
{
    char question[PATH_MAX + 100];
    snprintf(question, sizeof question, "Die Datei %s gibt es schon. Soll sie ersetzt werden?", path);
    char text[sizeof question];
    FromUtf8(question, text, sizeof text);
    return MessageBoxA(dialog, text, "MERIDA", MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) == IDYES;
}

void Choose(HWND dialog, const Choosing &choosing, const ChosenFile &chosen, LRESULT kind)
{
    char path[PATH_MAX] = "";
    const size_t length = strlen(chosen.Path);
    if (length < sizeof path) memcpy(path, chosen.Path, length + 1);
    if (path[0] == 0 || TypeAt(path) == S_IFDIR) {
        MessageBoxA(dialog, "Geben Sie an, in welche Datei gespeichert werden soll.", "MERIDA",
                    MB_OK | MB_ICONEXCLAMATION);
        return;
    }
    bool isAgreed = chosen.IsAgreed;
    if (!HasKnownEnding(choosing, path)) {
        isAgreed = false; // it was about another file
        Append(path, KindAt(choosing, kind).Ending);
    }
    if (!isAgreed && TypeAt(path) == S_IFREG && !Agrees(dialog, path)) return;
    // The dialog may have gone while the person was asked.
    if (IsWindow(dialog) == FALSE || choosing.Take(dialog, path, choosing.Context) == FALSE) return;
    RememberDirectory(path);
    EndDialog(dialog, IDOK);
}

void ChooseFromField(HWND dialog, const Choosing &choosing)
{
    char path[PATH_MAX];
    PathInField(dialog, path);
    Choose(dialog, choosing, {path, false}, SendDlgItemMessageA(dialog, kindList, CB_GETCURSEL, 0, 0));
}

INT_PTR CALLBACK ChooserProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_INITDIALOG) {
        if (SetPropA(dialog, choosingProperty, AsPointer<HANDLE>(lParam)) != FALSE) {
            Begin(dialog, *AsPointer<const Choosing *>(lParam));
        } else {
            EndDialog(dialog, IDCANCEL);
        }
        return TRUE;
    }
    const auto *choosing = static_cast<const Choosing *>(GetPropA(dialog, choosingProperty));
    if (choosing == nullptr) return FALSE;
    switch (message) {
    case chosenMessage:
        Choose(dialog, *choosing, *AsPointer<const ChosenFile *>(lParam), static_cast<LRESULT>(wParam));
        return TRUE;
    case WM_COMMAND:
        if (LOWORD(wParam) == kindList && HIWORD(wParam) == CBN_SELCHANGE) TakeKind(dialog, *choosing);
        if (LOWORD(wParam) == IDOK) ChooseFromField(dialog, *choosing);
        if (LOWORD(wParam) == IDCANCEL) EndDialog(dialog, IDCANCEL);
        return FALSE;
    case WM_DESTROY: RemovePropA(dialog, choosingProperty); return FALSE;
    default: return FALSE;
    }
}

bool IsChooser(HWND dialog)
{
    const Locked locked;
    const Window *found = Find(dialog);
    return found != nullptr && found->Kind == Kind::Dialog && found->Dialog->IsChooser;
}

} // namespace

void InputToChooser(HWND dialog, const Input &input)
{
    if (input.Kind != InputKind::File || !IsChooser(dialog) || input.Index < 0) return;
    const ChosenFile chosen = {input.Text != nullptr ? input.Text : "", input.Index2 != 0};
    SendMessageA(dialog, chosenMessage, static_cast<WPARAM>(input.Index), reinterpret_cast<LPARAM>(&chosen));
}

} // namespace varkui

using namespace varkui;

BOOL VarkUiSaveFile(HWND owner, LPCSTR title, LPCSTR name, const VARKUIFILEKIND *kinds, int kindCount,
                    VARKUITAKEFILE take, void *context)
{
    if (title == nullptr || name == nullptr || kinds == nullptr || kindCount < 1 || take == nullptr)
        return FALSE;
    const DialogTable table = {
        chooserNumber, title, 273, 71, chooserControls, static_cast<uint16_t>(std::size(chooserControls)), 0};
    DLGTEMPLATE *dialog = MakeDialogTemplate(table);
    if (dialog == nullptr) return FALSE;
    const Choosing choosing = {name, kinds, kindCount, take, context};
    const INT_PTR answer = RunDialog(dialog, owner, ChooserProcedure, reinterpret_cast<LPARAM>(&choosing));
    FreeDialogTemplate(dialog);
    return answer == IDOK ? TRUE : FALSE;
}
