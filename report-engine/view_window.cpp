#include "report-engine/view_window.h"

#include "report-engine/handles.h"
#include "report-engine/view_bar.h"
#include "report-engine/view_input.h"
#include "report-engine/view_strip.h"
#include "text/windows1252.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <pthread.h>

namespace rs {

namespace {

using namespace text;

constexpr char className[] = "rsView";
constexpr UINT showMessage = WM_APP + 1; // handled first by a thread that comes to handle messages

constexpr LONG stateHeight = 24;
constexpr LONG defaultWidth = 940;
constexpr LONG defaultHeight = 900;

void ArrangeControls(const ViewWindow &view)
{
    RECT inside = {};
    GetClientRect(view.Window, &inside);
    const LONG bar = ArrangeBar(view.Window, inside.right, inside.bottom);
    const LONG line = BarHeight(stateHeight);
    MoveWindow(view.Picture, 0, bar, std::max<LONG>(inside.right, 1),
               std::max<LONG>(inside.bottom - bar - line, 1), TRUE);
    MoveWindow(Control(view, stateText), 10, inside.bottom - line + 4, std::max<LONG>(inside.right - 20, 1),
               line - 6, TRUE);
}

bool MakeControls(ViewWindow &view)
{
    const DWORD common = WS_CHILD | WS_VISIBLE;
    const auto make = [&](const char *classOf, const char *text, DWORD style, int id) {
        HWND control = CreateWindowExA(0, classOf, text, common | style, 0, 0, 1, 1, view.Window,
                                       reinterpret_cast<HMENU>(static_cast<LONG_PTR>(id)), nullptr, nullptr);
        if (control == nullptr) return control;
        return WatchControl(control) ? control : HWND{};
    };
    for (int i = 0; i < barControlCount; ++i) {
        const BarControl &each = barControls[i];
        const bool isField = std::strcmp(each.Class, "Edit") == 0 || std::strcmp(each.Class, "ComboBox") == 0;
        // A field is named by the text before it, which need not be seen.
        if (isField && each.Text[0] != 0 &&
            CreateWindowExA(0, "Static", each.Text, WS_CHILD, 0, 0, 1, 1, view.Window, nullptr, nullptr,
                            nullptr) == nullptr)
            return false;
        if (make(each.Class, isField ? "" : each.Text, each.Style, each.Id) == nullptr) return false;
    }
    view.Picture = make(VARKUI_PICTURE_CLASS, "Seiten", WS_TABSTOP, pagePicture);
    return view.Picture != nullptr && make("Static", "", SS_LEFT, stateText) != nullptr;
}

// ---- The windows of a thread ----

// A thread that ends takes its windows along without a message, and with them their views.
thread_local ViewWindow *firstOfThread;
pthread_key_t threadSlot; // its destructor ends what the thread has left open

void EndWindow(ViewWindow *view)
{
    ViewWindow **place = &firstOfThread;
    while (*place != nullptr && *place != view) {
        place = &(*place)->Next;
    }
    if (*place != nullptr) *place = view->Next;
    CloseSource(view->Source);
    RemovePropA(view->Window, viewProperty);
    if (view->OwnsReport) RemoveReportOf(*view->Of);
    RemoveView(view->Handle);
    ReleaseView(view->Of);
    std::free(view);
}

void EndThread(void * /*slot*/)
{
    while (firstOfThread != nullptr) {
        ViewWindow *view = firstOfThread;
        // Its window may have gone already, or goes with this message.
        if (DestroyWindow(view->Window) == FALSE || firstOfThread == view) EndWindow(view);
    }
}

// Notes a window with its thread; false when the thread's end cannot be noticed.
bool NoteWindow(ViewWindow *view)
{
    static const bool isMade = pthread_key_create(&threadSlot, EndThread) == 0;
    if (!isMade || pthread_setspecific(threadSlot, view) != 0) return false;
    view->Next = firstOfThread;
    firstOfThread = view;
    return true;
}

// The zoom of another view of this thread; a window that is none leaves it as it is.
void TakeZoom(ViewWindow &view, HWND like)
{
    for (const ViewWindow *other = firstOfThread; other != nullptr; other = other->Next) {
        if (like == nullptr || other->Window != like) continue;
        view.Fitted = other->Fitted;
        view.Percent = other->Percent;
    }
}

// A person can see the view from now on.
void ShowFirst(ViewWindow &view)
{
    view.Of->WasSeen = true;
    FitZoom(view);
    ShowPart(view);
    if (view.AwaitsFrame && !IsChild(view)) return; // its frame shows it
    if (!IsChild(view)) ShowWindow(view.Window, SW_SHOW);
    SetFocus(view.Picture);
}

LRESULT CALLBACK ViewProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    auto *view = reinterpret_cast<ViewWindow *>(GetWindowLongPtrA(window, GWLP_USERDATA));
    if (message == WM_NCCREATE) {
        const auto *create = reinterpret_cast<const CREATESTRUCTA *>(lParam); // NOLINT
        view = static_cast<ViewWindow *>(create->lpCreateParams);
        view->Window = window;
        *view->Taken = true;
        SetWindowLongPtrA(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(view));
        return 1;
    }
    if (view == nullptr) return DefWindowProcA(window, message, wParam, lParam);
    switch (message) {
    case WM_CREATE: return MakeControls(*view) ? 0 : -1;
    case showMessage: ShowFirst(*view); return 0;
    case WM_SIZE: ArrangeControls(*view); return 0;
    case WM_SETFOCUS: SetFocus(view->Picture); return 0;
    case WM_NOTIFY:
        if (wParam == pagePicture && view->Picture != nullptr)
            TakeNotice(*view, *reinterpret_cast<const NMPICTURE *>(lParam)); // NOLINT
        return 0;
    case WM_COMMAND:
        if (LOWORD(wParam) >= previousButton && LOWORD(wParam) <= saveButton)
            DoCommand(*view, LOWORD(wParam), HIWORD(wParam));
        return 0;
    case WM_NCDESTROY:
        SetWindowLongPtrA(window, GWLP_USERDATA, 0);
        EndWindow(view);
        return 0;
    default: return DefWindowProcA(window, message, wParam, lParam);
    }
}

void RegisterViewClass()
{
    WNDCLASSA made = {};
    made.lpfnWndProc = ViewProcedure;
    made.hCursor = LoadCursorA(nullptr, IDC_ARROW);
    made.lpszClassName = className;
    RegisterClassA(&made);
}

} // namespace

bool ViewsHaveWindows()
{
    RegisterViewClass(); // also in a child of fork, whose window system begins anew
    WNDCLASSA found = {};
    return GetClassInfoA(nullptr, className, &found) != FALSE;
}

HWND OpenViewWindow(void *handle, View *view, const ViewPlace &place)
{
    auto *state = static_cast<ViewWindow *>(std::calloc(1, sizeof(ViewWindow)));
    if (state == nullptr) {
        RemoveView(handle);
        return nullptr;
    }
    const bool isChild = (place.Style & WS_CHILD) != 0;
    HWND parent = IsWindow(place.Parent) != FALSE ? place.Parent : nullptr;
    state->AwaitsFrame = isChild && parent == nullptr;
    state->Handle = handle;
    state->Source.Socket = -1;
    state->Fitted = Fit::width;
    state->Percent = 100;
    state->PixelsPerUnit = naturalScale;
    state->Of = HoldView(handle);
    if (state->Of == nullptr || !NoteWindow(state)) { // closed meanwhile, by another thread
        if (state->Of != nullptr) ReleaseView(state->Of);
        RemoveView(handle);
        std::free(state);
        return nullptr;
    }
    TakeZoom(*state, place.Like);
    bool isTaken = false;
    state->Taken = &isTaken;
    char title[maxViewTitle];
    FromUtf8(view->Title[0] != 0 ? view->Title : view->Of->Def.Title, title, sizeof title);
    // A window of its own is shown when its thread comes to handle messages: one that is only printed never
    // is. It can be moved, sized and closed whatever the host's style leaves out.
    const bool isOwn = !isChild || state->AwaitsFrame;
    DWORD style = place.Style | WS_CLIPCHILDREN | (isOwn ? WS_OVERLAPPEDWINDOW : WS_VISIBLE);
    if (isOwn) style &= ~(WS_VISIBLE | WS_CHILD);
    const bool hasSize = place.Width > 0 && place.Height > 0;
    const LONG width = hasSize || !isOwn ? place.Width : defaultWidth;
    const LONG height = hasSize || !isOwn ? place.Height : defaultHeight;
    // A view is no MDI child itself, whatever the style that its frame shares: the state comes as it is.
    const DWORD exStyle = (place.ExStyle & ~DWORD{WS_EX_MDICHILD}) | WS_EX_CONTROLPARENT;
    HWND window = CreateWindowExA(exStyle, className, title, style, place.Left, place.Top, width, height,
                                  parent, nullptr, nullptr, state);
    if (window == nullptr && !isTaken) EndWindow(state); // else it went with WM_NCDESTROY
    if (window == nullptr) return nullptr;
    state->Taken = nullptr;
    if (SetPropA(window, viewProperty, handle) == FALSE) {
        DestroyWindow(window);
        return nullptr;
    }
    view->Window = window;
    state->OwnsReport = true;
    FillZoomList(*state);
    SetNumber(*state, pageCountText, "von ", view->Of->PageCount);
    SayState(*state, "");
    ArrangeControls(*state);
    FitZoom(*state);
    ShowPart(*state);
    PostMessageA(window, showMessage, 0, 0);
    return window;
}

ViewPlace PlaceBeside(HWND window, ViewPlace place)
{
    if (window == nullptr) return place;
    place.Like = window;
    place.Parent = GetParent(window);
    RECT around = {};
    if ((place.Style & WS_CHILD) != 0 && GetWindowRect(place.Parent, &around) != FALSE) {
        place.Left -= around.left;
        place.Top -= around.top;
    }
    return place;
}

} // namespace rs
