// The window in which sheets live: a frame with the report engine's view and, below it, a bar of buttons by
// which a person walks through months and accounts.
#include "src/reports/financial/kontenblatt_viewer.h"

#include "src/frame/record_store.h"
#include "src/frame/report_engine.h"
#include "src/platform/window_support.h"
#include "src/reports/frame/report_catalogue.h"
#include "src/reports/frame/tab_dialog.h"
#include "src/values/amount_texts.h"
#include "src/values/dates.h"
#include "src/walks/account_walk.h"
#include "text/fixed_text.h"
#include "text/windows1252.h"
#include "window-system/include/dialog_table.h"

#include <algorithm>
#include <array> // std::size
#include <cstdio>
#include <cstdlib>

namespace vark {

using namespace text;
using varkui::DialogControl;
using varkui::DialogControlKind;

namespace {

constexpr UINT frameClassStyle = 128;
constexpr UINT attachView = WM_USER + 2; // lParam: a new view window, the only way in for one
constexpr UINT barPressed = 0x111;       // code of the bar's notification

constexpr int previousMonth = 1094; // buttons of the bar
constexpr int nextMonth = 1095;
constexpr int previousAccount = 1024;
constexpr int nextAccount = 1025;
constexpr int newChoice = 3;

constexpr uint32_t scrollBars = 0x00300000;
constexpr uint32_t ownWindow = WS_CAPTION | WS_SYSMENU | WS_THICKFRAME | WS_MINIMIZEBOX | WS_MAXIMIZEBOX;
constexpr int ownWidth = 940; // as a view of its own
constexpr int ownHeight = 900;

// What the bar tells the frame.
struct BarNotification {
    NMHDR Header;
    WPARAM Press; // id of the button, notification word
};

constexpr DialogControl barControls[] = {
    {DialogControlKind::PushButton, previousMonth, "&voriger Monat", 2, 2, 68, 14, 0, 0},
    {DialogControlKind::PushButton, nextMonth, "&nächster Monat"_w, 72, 2, 68, 14, 0, 0},
    {DialogControlKind::PushButton, previousAccount, "v&origes Konto", 142, 2, 68, 14, 0, 0},
    {DialogControlKind::PushButton, nextAccount, "nächstes &Konto"_w, 212, 2, 68, 14, 0, 0},
    {DialogControlKind::PushButton, newChoice, "neue &Auswahl ...", 282, 2, 68, 14, 0, 0},
};
constexpr int buttonCount = static_cast<int>(std::size(barControls));
constexpr varkui::DialogTable bar = {115,         "Kontenblatt",           352, 18, barControls,
                                     buttonCount, varkui::childDialogStyle};

INT_PTR CALLBACK BarProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_INITDIALOG) return FALSE; // no focus is taken
    if (message != WM_COMMAND || lParam == 0) return FALSE;
    BarNotification notification = {{window, static_cast<UINT_PTR>(GetDlgCtrlID(window)), barPressed},
                                    wParam};
    SendMessageA(GetParent(window), WM_NOTIFY, notification.Header.idFrom,
                 reinterpret_cast<LPARAM>(&notification));
    return TRUE;
}

KontenblattState *StateOf(HWND frame)
{
    return reinterpret_cast<KontenblattState *>(GetWindowLongPtrA(frame, 0));
}

uint32_t StyleOf(HWND window, int index = GWL_STYLE)
{
    return static_cast<uint32_t>(GetWindowLongA(window, index));
}

LRESULT Default(HWND frame, UINT message, WPARAM wParam, LPARAM lParam)
{
    return (StyleOf(frame, GWL_EXSTYLE) & WS_EX_MDICHILD) != 0
               ? DefMDIChildProcA(frame, message, wParam, lParam)
               : DefWindowProcA(frame, message, wParam, lParam);
}

// ---- Places ----

bool IsBarShown(const KontenblattState &state)
{
    return state.BarWindow != nullptr && (StyleOf(state.BarWindow) & WS_VISIBLE) != 0;
}

LONG BarHeight(const KontenblattState &state)
{
    RECT place{};
    GetWindowRect(state.BarWindow, &place);
    return place.bottom - place.top;
}

// The bar with that many buttons side by side, in pixels.
RECT BarOf(const KontenblattState &state, int columns)
{
    const DialogControl &last = barControls[columns - 1];
    const int rows = (buttonCount + columns - 1) / columns;
    RECT room = {0, 0, last.X + last.Width + last.Y, bar.Height + (rows - 1) * (last.Y + last.Height)};
    MapDialogRect(state.BarWindow, &room);
    return room;
}

// Puts the buttons into as many rows as they need inside `width`. Returns the bar they fill. Where one row
// fits into a frame of its own width, they stay in it: who narrowed the frame can widen it.
RECT ArrangeBar(const KontenblattState &state, int width)
{
    if (state.BarRect.right <= ownWidth) return state.BarRect;
    int columns = buttonCount;
    while (columns > 1 && BarOf(state, columns).right > width) {
        --columns;
    }
    for (int i = 0; i < buttonCount; ++i) {
        const DialogControl &above = barControls[i % columns];
        const int top = above.Y + i / columns * (above.Y + above.Height);
        RECT place = {above.X, top, above.X + above.Width, top + above.Height};
        MapDialogRect(state.BarWindow, &place);
        MoveWindow(GetDlgItem(state.BarWindow, barControls[i].Id), place.left, place.top,
                   place.right - place.left, place.bottom - place.top, TRUE);
    }
    return BarOf(state, columns);
}

void PlaceParts(const KontenblattState &state, int width, int height)
{
    const RECT room = state.BarWindow != nullptr ? ArrangeBar(state, width) : RECT{};
    int viewHeight = height;
    if (state.BarWindow != nullptr && height > room.bottom) {
        viewHeight = height - room.bottom;
        const int x = room.right >= width ? 0 : (width - room.right) / 2;
        SetWindowPos(state.BarWindow, nullptr, x, viewHeight, room.right, room.bottom,
                     SWP_NOZORDER | SWP_SHOWWINDOW);
    } else if (state.BarWindow != nullptr) {
        ShowWindow(state.BarWindow, SW_HIDE);
    }
    if (state.ViewWindow != nullptr) {
        SetWindowPos(state.ViewWindow, nullptr, 0, 0, width, viewHeight, SWP_NOZORDER | SWP_NOACTIVATE);
    }
}

// ---- The bar ----

// A button that goes out of use while it has the focus hands it to the view.
void EnableButton(const KontenblattState &state, int id, bool enabled)
{
    HWND button = GetDlgItem(state.BarWindow, id);
    if (!enabled && button != nullptr && GetFocus() == button) SetFocus(state.ViewWindow);
    EnableWindow(button, enabled ? TRUE : FALSE);
}

bool IsPostable(const ThreadContext &context, int year)
{
    return year >= 0 && year <= 99 && PostableYear(context, year) != 0;
}

// The account beside the one of the sheet, in the order of the numbers. False also when a read failed.
bool FindNeighbour(const SheetBuild &build, bool isNext, AccountNumber &number)
{
    ThreadContext &context = *build.Run.Context;
    HeldTables held(context);
    if (!Hold(held, build.Table)) return false;
    AnyAccount record{};
    bool found = false;
    const KeyBuffer key = KeyOfText(build.CurrentKey, sizeof build.CurrentKey);
    const bool isRead = isNext ? GetGreaterF(context, &record, key, found, build.Table)
                               : GetLessF(context, &record, key, found, build.Table);
    if (!isRead || !found) return false;
    CopyText(number, record.Head.Konto);
    return true;
}

void UpdateBar(KontenblattState &state)
{
    if (state.BarWindow == nullptr) return;
    SheetBuild &build = state.Build;
    const PeriodSelection &period = build.Run.Choice.Period;
    const ThreadContext &context = *build.Run.Context;
    const bool isSelected = SelectSheetBooks(build);
    const bool isMonth = period.Code >= 1 && period.Code <= 12;
    EnableButton(state, previousMonth, isMonth && (period.Code > 1 || IsPostable(context, period.Jahr - 1)));
    EnableButton(state, nextMonth, isMonth && (period.Code < 12 || IsPostable(context, period.Jahr + 1)));
    const bool isSingle = isSelected && build.Run.Choice.Range.Einzeln != 0;
    AccountNumber beside;
    EnableButton(state, nextAccount, isSingle && FindNeighbour(build, true, beside));
    EnableButton(state, previousAccount, isSingle && FindNeighbour(build, false, beside));
}

// ---- Views ----

void TakeTitle(HWND frame, HWND view)
{
    const int length = GetWindowTextLengthA(view);
    const size_t size = static_cast<size_t>(std::max(length, 0)) + 1;
    auto *title = static_cast<char *>(std::malloc(size));
    if (title == nullptr) return;
    title[0] = 0;
    GetWindowTextA(view, title, static_cast<int>(size));
    SetWindowTextA(frame, title);
    std::free(title);
}

void AttachView(KontenblattState &state, HWND view)
{
    if (!IsWindow(view) || view == state.ViewWindow) return;
    HWND frame = state.FrameWindow;
    RECT client{};
    GetClientRect(frame, &client);
    if (IsBarShown(state)) client.bottom -= BarHeight(state);
    HWND earlier = state.ViewWindow;
    HWND focus = GetFocus();
    const bool hadFocus =
        earlier != nullptr && focus != nullptr && (focus == earlier || IsChild(earlier, focus));
    const uint32_t style = (StyleOf(view) & ~(WS_POPUP | ownWindow | WS_BORDER)) | WS_CHILD;
    SetWindowLongA(view, GWL_STYLE, static_cast<LONG>(style));
    SetParent(view, frame);
    SetWindowPos(view, nullptr, 0, 0, client.right, std::max<LONG>(client.bottom, 0), SWP_SHOWWINDOW);
    state.ViewWindow = view;
    if (earlier != nullptr && IsWindow(earlier)) DestroyWindow(earlier);
    if (hadFocus) SetFocus(view);
    TakeTitle(frame, view);
    UpdateBar(state);
}

// ---- Presses ----

void StepMonth(const ThreadContext &context, PeriodSelection &period, int step)
{
    period.Code = static_cast<int16_t>(period.Code + step);
    if (period.Code > 12) {
        period.Code = 1;
        ++period.Jahr;
    } else if (period.Code < 1) {
        period.Code = 12;
        --period.Jahr;
    }
    ComputePeriodDates(context, period);
    std::snprintf(period.JahrText, sizeof period.JahrText, "%u",
                  static_cast<unsigned>(period.Jahr + firstYear) % 10000);
}

// Moves the copy of a build to where a button leads. False when there is nothing there.
bool Step(SheetBuild &build, int button)
{
    ReportChoice &choice = build.Run.Choice;
    if (button == previousMonth || button == nextMonth) {
        if (choice.Period.Code < 1 || choice.Period.Code > 12) return false;
        StepMonth(*build.Run.Context, choice.Period, button == nextMonth ? 1 : -1);
        return true;
    }
    AccountNumber number;
    if (!SelectSheetBooks(build) || !FindNeighbour(build, button == nextAccount, number)) return false;
    TrimLeft(number, sizeof number);
    AccountLimits &limits = LimitsOf(choice.Range, choice.Range.KontoArt);
    CopyText(limits.Von, number);
    CopyText(limits.Bis, number);
    return true;
}

VarkWindow AskAgain(SheetBuild &build, HWND frame)
{
    HeldTables held(*build.Run.Context);
    bool accepted = false;
    bool done = false;
    if (!SelectSheetBooks(build) || !HoldSheetTables(held, build.IsKosten)) return nullptr;
    return AskAndBuildSheets(build, frame, accepted, done);
}

// A dialog or box may have run meanwhile, and the frame may have gone with it: then what was built goes too.
void TakeBuild(KontenblattState *state, const SheetBuild &build, VarkWindow view)
{
    state->IsBusy = false;
    HWND window = static_cast<HWND>(view);
    if (state->FrameWindow == nullptr) {
        if (window != nullptr && IsWindow(window)) DestroyWindow(window);
        FreeThreadBlock(&state->Block);
    } else if (window != nullptr) {
        state->Build = build;
        SendMessageA(state->FrameWindow, attachView, 0, reinterpret_cast<LPARAM>(window));
    }
}

void Press(KontenblattState *state, int button)
{
    if (state->IsBusy || state->ViewWindow == nullptr) return;
    HWND pressed = state->BarWindow != nullptr ? GetDlgItem(state->BarWindow, button) : nullptr;
    if (pressed != nullptr && !IsWindowEnabled(pressed)) return;
    state->IsBusy = true;
    SheetBuild build = state->Build;
    VarkWindow view = nullptr;
    if (button == newChoice) {
        view = AskAgain(build, state->FrameWindow);
    } else if (Step(build, button)) {
        view = RebuildSheets(build, static_cast<VarkWindow>(state->ViewWindow));
    }
    TakeBuild(state, build, view);
}

// ---- The frame ----

LRESULT Create(HWND frame, const CREATESTRUCTA &creation)
{
    void *parameter = creation.lpCreateParams;
    if ((creation.dwExStyle & WS_EX_MDICHILD) != 0 && parameter != nullptr) {
        parameter = reinterpret_cast<void *>(static_cast<MDICREATESTRUCTA *>(parameter)->lParam);
    }
    auto *state = static_cast<KontenblattState *>(parameter);
    SetWindowLongPtrA(frame, 0, reinterpret_cast<LONG_PTR>(state));
    if (state == nullptr) return 0;
    state->FrameWindow = frame;
    state->BarWindow = CreateChildDialog(frame, bar, BarProcedure, state);
    if (state->BarWindow == nullptr) return 0;
    RECT place{};
    GetWindowRect(state->BarWindow, &place);
    state->BarRect = {0, 0, place.right - place.left, place.bottom - place.top};
    return 0;
}

// The bar goes with the frame. Who is at work with the state frees it; else nobody is left who would.
void ForgetFrame(HWND frame, KontenblattState *state)
{
    SetWindowLongPtrA(frame, 0, 0);
    state->FrameWindow = nullptr;
    state->ViewWindow = nullptr;
    state->BarWindow = nullptr;
    if (!state->IsBusy) FreeThreadBlock(&state->Block);
}

void Erase(HWND frame, HDC device)
{
    RECT client{};
    GetClientRect(frame, &client);
    SetBkColor(device, GetSysColor(COLOR_BTNFACE));
    ExtTextOutA(device, 0, 0, ETO_OPAQUE, &client, "", 0, nullptr);
}

void Activate(const KontenblattState &state)
{
    ActiveBarWindow = state.BarWindow;
    HWND focus = GetFocus();
    const bool isInside =
        focus != nullptr && (focus == state.FrameWindow || IsChild(state.FrameWindow, focus));
    if ((!isInside || focus == state.FrameWindow) && state.ViewWindow != nullptr) SetFocus(state.ViewWindow);
}

bool IsPressOfBar(const KontenblattState &state, const NMHDR &header)
{
    return state.BarWindow != nullptr && header.hwndFrom == state.BarWindow && header.code == barPressed;
}

LRESULT HandleFrame(HWND frame, KontenblattState *state, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_DESTROY: {
        HWND gone = frame;
        ActiveBarWindow.compare_exchange_strong(gone, nullptr);
        if (state->BarWindow != nullptr) DestroyWindow(state->BarWindow);
        state->BarWindow = nullptr;
        return 0;
    }
    case WM_NCDESTROY: ForgetFrame(frame, state); return Default(frame, message, wParam, lParam);
    case WM_SIZE: PlaceParts(*state, LOWORD(lParam), HIWORD(lParam)); return 0;
    case WM_ACTIVATE:
        if (LOWORD(wParam) == WA_INACTIVE) break;
        Activate(*state);
        return 0;
    case WM_CHILDACTIVATE: ActiveBarWindow = state->BarWindow; return 0;
    case WM_ERASEBKGND: Erase(frame, reinterpret_cast<HDC>(wParam)); return 1;
    case WM_PARENTNOTIFY:
        if (LOWORD(wParam) != WM_DESTROY && (StyleOf(frame) & WS_MAXIMIZEBOX) != 0 &&
            state->ViewWindow != nullptr)
            SetFocus(state->ViewWindow);
        return 0;
    case WM_NOTIFY: {
        const auto &notification = *reinterpret_cast<const BarNotification *>(lParam);
        if (IsPressOfBar(*state, notification.Header) && HIWORD(notification.Press) == 0)
            Press(state, LOWORD(notification.Press));
        return 0;
    }
    case WM_COMMAND:
        if (LOWORD(wParam) != newChoice) break;
        Press(state, newChoice);
        return 0;
    case attachView: AttachView(*state, reinterpret_cast<HWND>(lParam)); return 0;
    default: break;
    }
    return Default(frame, message, wParam, lParam);
}

LRESULT CALLBACK FrameProcedure(HWND frame, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_CREATE) return Create(frame, *reinterpret_cast<const CREATESTRUCTA *>(lParam));
    KontenblattState *const state = StateOf(frame);
    return state != nullptr ? HandleFrame(frame, state, message, wParam, lParam)
                            : Default(frame, message, wParam, lParam);
}

// Of two threads that come at once the second finds the class registered.
void RegisterFrameClass()
{
    WNDCLASSA known{};
    if (GetClassInfoA(LibraryModule(), accountSheetClass, &known)) return;
    WNDCLASSA made{};
    made.style = frameClassStyle;
    made.lpfnWndProc = FrameProcedure;
    made.cbWndExtra = sizeof(void *);
    made.hInstance = LibraryModule();
    made.hIcon = LoadIconA(LibraryModule(), MAKEINTRESOURCEA(114));
    made.hCursor = LoadCursorA(nullptr, IDC_ARROW);
    made.hbrBackground = reinterpret_cast<HBRUSH>(INT_PTR{COLOR_BTNFACE});
    made.lpszClassName = accountSheetClass;
    RegisterClassA(&made);
}

// A host's class lends its looks: for the moment of creation it has our procedure and room for the state.
struct LentClass {
    HWND Host;
    ULONG_PTR Procedure;
    ULONG_PTR Extra;
};

LentClass LendClass(HWND host)
{
    LentClass lent = {host, GetClassLongPtrA(host, GCLP_WNDPROC), GetClassLongPtrA(host, GCL_CBWNDEXTRA)};
    SetClassLongPtrA(host, GCLP_WNDPROC, reinterpret_cast<LONG_PTR>(FrameProcedure));
    if (lent.Extra < sizeof(void *)) SetClassLongPtrA(host, GCL_CBWNDEXTRA, sizeof(void *));
    return lent;
}

void ReturnClass(const LentClass &lent)
{
    SetClassLongPtrA(lent.Host, GCLP_WNDPROC, static_cast<LONG_PTR>(lent.Procedure));
    SetClassLongPtrA(lent.Host, GCL_CBWNDEXTRA, static_cast<LONG_PTR>(lent.Extra));
}

HWND CreateFrame(KontenblattState *state, HWND parent)
{
    const ThreadContext &context = *state->Build.Run.Context;
    const bool hasParent = IsWindow(parent) != FALSE;
    RECT place = {0, 0, ownWidth, ownHeight};
    uint32_t style = context.ReportViewStyle & ~scrollBars;
    if (hasParent) {
        GetClientRect(parent, &place);
    } else {
        style = (style & ~(WS_CHILD | WS_VISIBLE)) | ownWindow;
    }
    HWND host = static_cast<HWND>(context.ReportFrameWindow);
    const bool lends = context.ReportFrameClass != nullptr && IsWindow(host) != FALSE;
    if (!lends) RegisterFrameClass();
    const LentClass lent = lends ? LendClass(host) : LentClass{};
    HWND frame = CreateWindowExA(
        context.ReportViewExStyle, lends ? context.ReportFrameClass : accountSheetClass, "Titel", style,
        place.left, place.top, place.right - place.left, place.bottom - place.top,
        hasParent ? parent : nullptr, nullptr, lends ? nullptr : LibraryModule(), state);
    if (lends) ReturnClass(lent);
    return frame;
}

} // namespace

HWND OpenSheetFrame(KontenblattState *state, VarkWindow parent, VarkWindow view)
{
    HWND window = static_cast<HWND>(view);
    const ReportRow row = SheetKind(state->Build.IsKosten).RowOf(state->Build.Run);
    state->IsBusy = true;
    CreateFrame(state, static_cast<HWND>(parent));
    state->IsBusy = false;
    HWND frame = state->FrameWindow;
    if (frame == nullptr) {
        FreeThreadBlock(&state->Block);
        DestroyWindow(window);
        ReportFailed(row);
        return nullptr;
    }
    SendMessageA(frame, attachView, 0, reinterpret_cast<LPARAM>(window));
    if (GetParent(frame) == nullptr && (StyleOf(frame) & WS_CHILD) == 0) ShowWindow(frame, SW_SHOW);
    return frame;
}

} // namespace vark
