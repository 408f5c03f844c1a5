#include "report-engine/view_commands.h"

#include "report-engine/complain.h"
#include "report-engine/handles.h"
#include "report-engine/output.h"
#include "report-engine/page_source.h"
#include "report-engine/print_dialog.h"
#include "report-engine/printing.h"
#include "report-engine/progress_window.h"
#include "report-engine/view_strip.h"
#include "text/windows1252.h"

#include <array> // std::size
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace rs {

namespace {

using namespace text;

PageRequest RequestOf(const ViewWindow &view, PageWish wish)
{
    PageRequest request = {};
    request.Wish = wish;
    request.From = view.From;
    request.To = view.To;
    request.SelectionGrain = view.Grain;
    request.IsAllSelected = view.IsAllSelected ? 1 : 0;
    std::memcpy(request.Sought, view.Sought, sizeof request.Sought);
    request.Found = view.Found;
    request.FoundPlace = view.FoundPlace;
    return request;
}

// Bytes of a file as a text of Windows-1252, to be freed; null without memory or for none.
char *TextOfFile(int file, int64_t offset, int64_t length)
{
    if (file < 0 || length <= 0) return nullptr;
    const auto size = static_cast<size_t>(length);
    char *utf8 = static_cast<char *>(std::malloc(size + 1));
    char *text = static_cast<char *>(std::malloc(size + 1));
    size_t read = 0;
    while (utf8 != nullptr && read < size) {
        const ssize_t count = pread(file, utf8 + read, size - read, offset + static_cast<off_t>(read));
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

void SelectAll(ViewWindow &view)
{
    view.From = view.To = {};
    view.IsAllSelected = true;
    ShowPart(view);
}

void SelectFrom(ViewWindow &view, const PagePlace &place, uint32_t grain)
{
    view.From = view.To = place;
    view.Grain = grain;
    view.IsAllSelected = false;
}

bool HasSelection(const ViewWindow &view) { return view.From.Page != 0 || view.IsAllSelected; }

bool CopySelection(ViewWindow &view)
{
    const PageRequest request = RequestOf(view, PageWish::copy);
    if (!HasSelection(view)) {
        SayState(view, "Es ist nichts markiert.");
        return false;
    }
    PageAnswer answer;
    int file = -1;
    if (!AskForPages(view.Source, *view.Of, request, answer, file)) return false;
    char *text = TextOfFile(file, 0, answer.Length);
    char *html = TextOfFile(file, answer.Length, answer.TableLength);
    if (file >= 0) close(file);
    const bool isCopied = text != nullptr && VarkUiCopyText(text, html) != FALSE;
    std::free(text);
    std::free(html);
    SayState(view, !isCopied                ? "Es ist nichts markiert."
                   : answer.IsCutShort != 0 ? "Kopiert bis zur Zeile, mit der 16 MiB voll waren."
                                            : "Kopiert.");
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
    if (held == nullptr) return;
    PrintWishes wishes = UsualWishes();
    char where[500] = "";
    Printed printed = Printed::failed;
    if (AskHowToPrint(window, *held, wishes) && IsWindow(window) != FALSE) {
        ProgressWindow watching;
        const Progress progress = WatchProgress(watching, window, "Bericht wird gedruckt");
        printed = PrintView(*held, wishes, &progress, where); // tells what went wrong
        EndProgress(watching);
    }
    ReleaseView(held);
    const ViewWindow *view = StateOfView(window);
    if (view == nullptr || printed == Printed::failed) return;
    SayState(*view, printed == Printed::waiting   ? "Der Bericht wartet auf den Drucker."
                    : printed == Printed::stopped ? "Der Druck wurde abgebrochen."
                                                  : where);
}

// ---- Saving ----

namespace {

constexpr VARKUIFILEKIND fileKinds[] = {{"PDF: Seiten", ".pdf"},
                                        {"CSV: Tabelle", ".csv"},
                                        {"HTML: Webseite", ".html"},
                                        {"JSON: Daten", ".json"},
                                        {"Text", ".txt"}};

struct Saving {
    const View *Of;
    char Path[450]; // that was written
};

BOOL CALLBACK SaveInto(HWND dialog, LPCSTR path, void *context)
{
    HCURSOR before = SetCursor(LoadCursorA(nullptr, IDC_WAIT));
    ProgressWindow watching;
    const Progress progress = WatchProgress(watching, dialog, "Bericht wird gespeichert");
    auto &saving = *static_cast<Saving *>(context);
    const Written written = ExportView(*saving.Of, path, &progress);
    EndProgress(watching);
    SetCursor(before);
    if (written == Written::whole) std::snprintf(saving.Path, sizeof saving.Path, "%s", path);
    if (written == Written::whole) return TRUE;
    if (written == Written::stopped) return FALSE;
    char reason[600];
    std::snprintf(reason, sizeof reason, "Die Datei konnte nicht geschrieben werden:\n%s", LastReason());
    char text[sizeof reason];
    FromUtf8(reason, text, sizeof text);
    MessageBoxA(dialog, text, "MERIDA", MB_OK | MB_ICONEXCLAMATION);
    return FALSE;
}

} // namespace

void SaveView(HWND window)
{
    // The window may be destroyed while the dialog is open: its view is held until then.
    ViewWindow *view = StateOfView(window);
    View *held = view != nullptr ? HoldView(view->Handle) : nullptr;
    if (held == nullptr) return;
    char name[maxViewTitle];
    NameForFile(*held, name);
    Saving saving = {held, ""};
    const bool isSaved = VarkUiSaveFile(window, "Bericht speichern", name, fileKinds, std::size(fileKinds),
                                        SaveInto, &saving) != FALSE;
    view = StateOfView(window);
    char told[500];
    std::snprintf(told, sizeof told, "Gespeichert in %s", saving.Path);
    if (isSaved && view != nullptr) SayState(*view, told);
    ReleaseView(held);
}

} // namespace rs
