// What a person has a view do: copy, search, print, save.
#include "report-engine/complain.h"
#include "report-engine/handles.h"
#include "report-engine/output.h"
#include "report-engine/printing.h"
#include "report-engine/view_window.h"
#include "text/windows1252.h"
#include "window-system/dialog_table.h"

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <unistd.h>

namespace rs {

namespace {

using namespace text;
using varkui::DialogControl;
using varkui::DialogControlKind;
using varkui::DialogTable;

constexpr char caption[] = "MERIDA";

PageRequest RequestOf(const ViewWindow &view, PageWish wish)
{
    PageRequest request = {};
    request.Wish = wish;
    request.From = view.From;
    request.To = view.To;
    request.SelectionGrain = view.Grain;
    std::memcpy(request.Sought, view.Sought, sizeof request.Sought);
    request.Found = view.Found;
    request.FoundPlace = view.FoundPlace;
    return request;
}

// The bytes of a file as a text of Windows-1252, to be freed; null without memory.
char *TextOfFile(int file, int64_t length)
{
    const auto size = static_cast<size_t>(length);
    char *utf8 = static_cast<char *>(std::malloc(size + 1));
    char *text = static_cast<char *>(std::malloc(size + 1));
    size_t read = 0;
    while (utf8 != nullptr && read < size) {
        const ssize_t count = pread(file, utf8 + read, size - read, static_cast<off_t>(read));
        if (count <= 0) break;
        read += static_cast<size_t>(count);
    }
    if (utf8 != nullptr && text != nullptr) {
        utf8[read] = 0;
        FromUtf8(utf8, text, size + 1);
        std::free(utf8);
        return text;
    }
    std::free(utf8);
    std::free(text);
    return nullptr;
}

} // namespace

bool CopySelection(ViewWindow &view)
{
    const PageRequest request = RequestOf(view, PageWish::copy);
    if (request.From.Page == 0) {
        SayState(view, "Es ist nichts markiert.");
        return false;
    }
    PageAnswer answer;
    int file = -1;
    if (!AskForPages(view.Source, *view.Of, request, answer, file)) return false;
    char *text = file >= 0 && answer.Length > 0 ? TextOfFile(file, answer.Length) : nullptr;
    if (file >= 0) close(file);
    const bool isCopied = text != nullptr && VarkUiCopyText(text) != FALSE;
    std::free(text);
    SayState(view, isCopied ? "Kopiert." : "Es ist nichts markiert.");
    return isCopied;
}

void SearchOn(ViewWindow &view, bool isBackwards)
{
    char typed[maxSought] = "";
    GetDlgItemTextA(view.Window, searchEdit, typed, sizeof typed);
    char sought[maxSought] = "";
    ToUtf8(typed, sought, sizeof sought);
    if (std::strcmp(sought, view.Sought) != 0) {
        std::memcpy(view.Sought, sought, sizeof view.Sought);
        view.Found = CurrentPage(view);
        view.FoundPlace = -1;
    }
    if (sought[0] == 0) {
        SayState(view, "");
        ShowPart(view);
        SetFocus(GetDlgItem(view.Window, searchEdit));
        return;
    }
    PageRequest request = RequestOf(view, PageWish::find);
    request.IsBackwards = isBackwards ? 1 : 0;
    PageAnswer answer;
    int file = -1;
    if (!AskForPages(view.Source, *view.Of, request, answer, file)) return;
    if (answer.Page == 0) {
        SayState(view, "Nicht gefunden.");
        ShowPart(view);
        return;
    }
    view.Found = answer.Page;
    view.FoundPlace = answer.Place;
    SayState(view, answer.HasWrapped == 0 ? ""
                   : isBackwards          ? "Am Anfang angekommen, am Ende weitergesucht."
                                          : "Am Ende angekommen, am Anfang weitergesucht.");
    ShowPlace(view, answer.From, answer.To);
}

// ---- Printing ----

void PrintFromView(HWND window)
{
    View *held = HoldView(window);
    const bool isPrinted = held != nullptr && PrintView(*held); // tells what went wrong
    if (held != nullptr) ReleaseView(held);
    ViewWindow *view = StateOfView(window);
    if (view != nullptr && isPrinted) SayState(*view, "Der Bericht wurde gedruckt.");
}

// ---- Saving ----

namespace {

enum SaveControl : int { pathEdit = 201, kindList = 202 };

struct FileForm {
    const char *Name;
    const char *Extension;
};

constexpr FileForm fileForms[] = {{"PDF (Seiten)", ".pdf"},
                                  {"CSV (Tabelle)", ".csv"},
                                  {"HTML (Webseite)", ".html"},
                                  {"JSON (Daten)", ".json"},
                                  {"Text", ".txt"}};

constexpr DialogControl saveControls[] = {
    {DialogControlKind::Text, -1, "&Datei:", 7, 9, 36, 8, 0, 0},
    {DialogControlKind::Edit, pathEdit, "", 46, 7, 220, 14, 0, 0},
    {DialogControlKind::Text, -1, "&Form:", 7, 29, 36, 8, 0, 0},
    {DialogControlKind::ComboList, kindList, "", 46, 27, 110, 14, 0, 0},
    {DialogControlKind::DefaultButton, IDOK, "&Speichern", 150, 50, 56, 14, 0, 0},
    {DialogControlKind::PushButton, IDCANCEL, "&Abbrechen", 210, 50, 56, 14, 0, 0},
};
constexpr DialogTable saveDialog = {140,          "Bericht speichern",     273, 71,
                                    saveControls, std::size(saveControls), 0};

// The place of the extension in a path, its end when there is none.
char *ExtensionOf(char *path)
{
    char *slash = std::strrchr(path, '/');
    char *dot = std::strrchr(slash != nullptr ? slash : path, '.');
    return dot != nullptr ? dot : path + std::strlen(path);
}

// The path in the dialog; UTF-8.
void PathOf(HWND dialog, char (&path)[PATH_MAX])
{
    char typed[PATH_MAX] = "";
    GetDlgItemTextA(dialog, pathEdit, typed, sizeof typed);
    const char *home = secure_getenv("HOME");
    if (typed[0] == '~' && typed[1] == '/' && home != nullptr) {
        char rest[PATH_MAX];
        ToUtf8(typed + 1, rest, sizeof rest);
        const int length = std::snprintf(path, sizeof path, "%s%s", home, rest);
        if (length < 0 || length >= static_cast<int>(sizeof path)) path[0] = 0;
    } else if (ToUtf8(typed, path, sizeof path) >= sizeof path) {
        path[0] = 0;
    }
}

void SetPath(HWND dialog, const char *path)
{
    char shown[PATH_MAX];
    FromUtf8(path, shown, sizeof shown);
    SetDlgItemTextA(dialog, pathEdit, shown);
}

void StartSaveDialog(HWND dialog, const View &view)
{
    for (const FileForm &form : fileForms) {
        SendDlgItemMessageA(dialog, kindList, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(form.Name));
    }
    SendDlgItemMessageA(dialog, kindList, CB_SETCURSEL, 0, 0);
    const char *home = secure_getenv("HOME");
    char path[PATH_MAX];
    std::snprintf(path, sizeof path, "%s/%s.pdf", home != nullptr ? home : "", view.Of->Def.Title);
    SetPath(dialog, path);
}

// The extension follows the form that was chosen.
void TakeForm(HWND dialog)
{
    const LRESULT row = SendDlgItemMessageA(dialog, kindList, CB_GETCURSEL, 0, 0);
    if (row < 0 || row >= static_cast<LRESULT>(std::size(fileForms))) return;
    char path[PATH_MAX];
    PathOf(dialog, path);
    *ExtensionOf(path) = 0;
    char whole[PATH_MAX];
    const int length = std::snprintf(whole, sizeof whole, "%s%s", path, fileForms[row].Extension);
    if (length > 0 && length < static_cast<int>(sizeof whole)) SetPath(dialog, whole);
}

void Refuse(HWND dialog, const char *utf8)
{
    char text[600];
    FromUtf8(utf8, text, sizeof text);
    MessageBoxA(dialog, text, caption, MB_OK | MB_ICONEXCLAMATION);
    SetFocus(GetDlgItem(dialog, pathEdit));
}

// True when the file was written.
bool SaveFrom(HWND dialog, const View &view)
{
    char path[PATH_MAX];
    PathOf(dialog, path);
    if (path[0] == 0) {
        Refuse(dialog, "Geben Sie an, in welche Datei der Bericht soll.");
        return false;
    }
    if (*ExtensionOf(path) == 0) {
        TakeForm(dialog);
        PathOf(dialog, path);
    }
    if (access(path, F_OK) == 0) {
        char question[PATH_MAX + 100];
        std::snprintf(question, sizeof question, "Die Datei %s gibt es schon. Soll sie ersetzt werden?",
                      path);
        char text[sizeof question];
        FromUtf8(question, text, sizeof text);
        if (MessageBoxA(dialog, text, caption, MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) != IDYES)
            return false;
    }
    HCURSOR before = SetCursor(LoadCursorA(nullptr, IDC_WAIT));
    const bool isSaved = ExportView(view, path);
    SetCursor(before);
    if (isSaved) return true;
    char reason[600];
    std::snprintf(reason, sizeof reason, "Die Datei konnte nicht geschrieben werden:\n%s",
                  LastComplaintInGerman());
    Refuse(dialog, reason);
    return false;
}

INT_PTR CALLBACK SaveProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    constexpr char property[] = "rsSaved";
    const auto *view = static_cast<const View *>(GetPropA(dialog, property));
    switch (message) {
    case WM_INITDIALOG:
        SetPropA(dialog, property, reinterpret_cast<HANDLE>(lParam));     // NOLINT
        StartSaveDialog(dialog, *reinterpret_cast<const View *>(lParam)); // NOLINT
        return TRUE;
    case WM_DESTROY: RemovePropA(dialog, property); return FALSE;
    case WM_COMMAND:
        if (LOWORD(wParam) == kindList && HIWORD(wParam) == CBN_SELCHANGE) TakeForm(dialog);
        if (LOWORD(wParam) == IDOK && view != nullptr && SaveFrom(dialog, *view)) EndDialog(dialog, IDOK);
        if (LOWORD(wParam) == IDCANCEL) EndDialog(dialog, IDCANCEL);
        return FALSE;
    default: return FALSE;
    }
}

} // namespace

void SaveView(HWND window)
{
    ViewWindow *view = StateOfView(window);
    DLGTEMPLATE *dialog = view != nullptr ? varkui::MakeDialogTemplate(saveDialog) : nullptr;
    if (dialog == nullptr) return;
    // The window may be destroyed while the dialog is open: its view is held until then.
    View *held = HoldView(view->Handle);
    if (held != nullptr) {
        const INT_PTR answer =
            DialogBoxIndirectParamA(nullptr, dialog, window, SaveProcedure, reinterpret_cast<LPARAM>(held));
        view = StateOfView(window);
        if (answer == IDOK && view != nullptr) SayState(*view, "Der Bericht wurde gespeichert.");
        ReleaseView(held);
    }
    varkui::FreeDialogTemplate(dialog);
}

} // namespace rs
