#include "report-engine/view_window.h"

#include "report-engine/handles.h"
#include "report-engine/view_bar.h"
#include "text/windows1252.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <pthread.h>
#include <unistd.h>

namespace rs {

namespace {

using namespace text;

constexpr char className[] = "rsView";
constexpr char viewProperty[] = "rsView";
constexpr UINT showMessage = WM_APP + 1; // handled first by a thread that comes to handle messages

constexpr double naturalPixelsPerUnit = 96.0 / 2540.0;
constexpr LONG paperGap = 12; // around pages
constexpr LONG stateHeight = 24;
constexpr LONG lineStep = 60;
constexpr LONG defaultWidth = 940;
constexpr LONG defaultHeight = 900;

constexpr int percents[] = {25, 50, 75, 100, 125, 150, 200, 300, 400};
constexpr int percentCount = sizeof percents / sizeof percents[0];
constexpr int fitRows = 2; // of the zoom list, before the percents

// ---- The strip of pages ----

struct Strip {
    LONG PageWidth;
    LONG PageHeight;
    LONG Pitch;
    LONG Width;
    LONG Height;
};

Strip StripOf(const ViewWindow &view)
{
    const Definition &def = view.Of->Of->Def;
    Strip strip = {};
    strip.PageWidth = static_cast<LONG>(std::lround(def.PageWidth * view.PixelsPerUnit));
    strip.PageHeight = static_cast<LONG>(std::lround(def.PageHeight * view.PixelsPerUnit));
    strip.Pitch = strip.PageHeight + paperGap;
    strip.Width = strip.PageWidth + 2 * paperGap;
    constexpr int64_t highest = 2'000'000'000; // where the screen's numbers end
    const int64_t height = paperGap + view.Of->Of->PageCount * strip.Pitch;
    strip.Height = static_cast<LONG>(std::min(height, highest));
    return strip;
}

VARKUIAREA AreaOf(const ViewWindow &view)
{
    VARKUIAREA area = {0, 0, 1};
    SendMessageA(view.Picture, PCM_GETAREA, 0, reinterpret_cast<LPARAM>(&area));
    return area;
}

LONG Clamp(LONG value, LONG content, LONG inView)
{
    return std::max<LONG>(0, std::min(value, content - inView));
}

// Where the left edge of the paper stands in view.
LONG PaperLeft(const Strip &strip, const VARKUIAREA &area, LONG x)
{
    const LONG spare = area.Width - strip.PageWidth;
    return spare > 2 * paperGap ? spare / 2 : paperGap - x;
}

LONG TopOfPage(const Strip &strip, int64_t page)
{
    return static_cast<LONG>(paperGap + (page - 1) * strip.Pitch);
}

int64_t PageAt(const ViewWindow &view, const Strip &strip, LONG y)
{
    const int64_t page = y < paperGap ? 1 : (y - paperGap) / strip.Pitch + 1;
    return std::clamp<int64_t>(page, 1, view.Of->Of->PageCount);
}

// The scale that is wanted, with the place in the middle of the view kept there.
void FitZoom(ViewWindow &view)
{
    const Definition &def = view.Of->Of->Def;
    const VARKUIAREA area = AreaOf(view);
    double scale = naturalPixelsPerUnit * view.Percent / 100;
    const double width = static_cast<double>(area.Width - 2 * paperGap) / def.PageWidth;
    const double height = static_cast<double>(area.Height - 2 * paperGap) / def.PageHeight;
    if (view.Fitted == Fit::width) scale = width;
    if (view.Fitted == Fit::page) scale = std::min(width, height);
    constexpr double smallest = naturalPixelsPerUnit / 8;
    scale = std::max(scale, smallest);
    if (scale == view.PixelsPerUnit) return;

    const Strip before = StripOf(view);
    const LONG middle = view.Y + area.Height / 3;
    const int64_t page = PageAt(view, before, middle);
    const double part =
        static_cast<double>(middle - TopOfPage(before, page)) / std::max<LONG>(before.Pitch, 1);
    const double across = (view.X + area.Width * 0.5) / std::max<LONG>(before.Width, 1);
    const bool isFirst = view.Y <= paperGap;
    view.PixelsPerUnit = scale;
    const Strip after = StripOf(view);
    view.Y = isFirst ? 0 : TopOfPage(after, page) + static_cast<LONG>(part * after.Pitch) - area.Height / 3;
    view.X = static_cast<LONG>(across * after.Width) - area.Width / 2;
}

PagePlace PlaceAt(const ViewWindow &view, LONG x, LONG y)
{
    const Strip strip = StripOf(view);
    const VARKUIAREA area = AreaOf(view);
    const int64_t page = PageAt(view, strip, view.Y + y);
    const double left = x - PaperLeft(strip, area, view.X);
    const double top = static_cast<double>(view.Y) + y - TopOfPage(strip, page);
    const auto units = [&](double pixels) {
        return static_cast<int32_t>(std::clamp(pixels / view.PixelsPerUnit, -1e6, 1e6));
    };
    return {page, units(left), units(top)};
}

// ---- Controls ----

HWND Control(const ViewWindow &view, int id) { return GetDlgItem(view.Window, id); }

void SetNumber(const ViewWindow &view, int id, const char *before, int64_t number)
{
    char shown[48];
    std::snprintf(shown, sizeof shown, "%s%lld", before, static_cast<long long>(number));
    char now[48];
    GetWindowTextA(Control(view, id), now, sizeof now);
    if (std::strcmp(now, shown) != 0) SetWindowTextA(Control(view, id), shown);
}

void ShowNumbers(ViewWindow &view)
{
    view.IsFilling = true;
    if (GetFocus() != Control(view, pageEdit)) SetNumber(view, pageEdit, "", CurrentPage(view));
    int row = view.Fitted == Fit::width ? 0 : 1;
    for (int i = 0; view.Fitted == Fit::none && i < percentCount; ++i) {
        if (percents[i] == view.Percent) row = fitRows + i;
    }
    if (SendDlgItemMessageA(view.Window, zoomList, CB_GETCURSEL, 0, 0) != row) {
        SendDlgItemMessageA(view.Window, zoomList, CB_SETCURSEL, static_cast<WPARAM>(row), 0);
    }
    view.IsFilling = false;
    const int64_t page = CurrentPage(view);
    const int64_t count = view.Of->Of->PageCount;
    // A button that is pressed may be the one that is disabled: the focus goes on to the pages.
    const auto enable = [&](int id, bool isUseful) {
        HWND button = Control(view, id);
        if (!isUseful && GetFocus() == button) SetFocus(view.Picture);
        if ((IsWindowEnabled(button) != FALSE) != isUseful) EnableWindow(button, isUseful ? TRUE : FALSE);
    };
    enable(previousButton, page > 1 || view.Y > 0);
    enable(nextButton, page < count);
}

void FillZoomList(const ViewWindow &view)
{
    HWND list = Control(view, zoomList);
    SendMessageA(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>("Seitenbreite"));
    SendMessageA(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>("Ganze Seite"));
    for (const int percent : percents) {
        char text[16];
        std::snprintf(text, sizeof text, "%d %%", percent);
        SendMessageA(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text));
    }
}

void ArrangeControls(const ViewWindow &view)
{
    RECT inside = {};
    GetClientRect(view.Window, &inside);
    const LONG bar = ArrangeBar(view.Window, inside.right, inside.bottom);
    MoveWindow(view.Picture, 0, bar, std::max<LONG>(inside.right, 1),
               std::max<LONG>(inside.bottom - bar - stateHeight, 1), TRUE);
    MoveWindow(Control(view, stateText), 10, inside.bottom - stateHeight + 4,
               std::max<LONG>(inside.right - 20, 1), stateHeight - 6, TRUE);
}

// ---- Zoom ----

void SetZoom(ViewWindow &view, Fit fit, int percent)
{
    view.Fitted = fit;
    view.Percent = percent;
    FitZoom(view);
    ShowPart(view);
}

// The next step from the scale that is shown, whatever it comes from.
void StepZoom(ViewWindow &view, int direction)
{
    const double now = 100 * view.PixelsPerUnit / naturalPixelsPerUnit;
    int next = direction > 0 ? percents[percentCount - 1] : percents[0];
    for (int i = 0; i < percentCount; ++i) {
        const int percent = percents[direction > 0 ? i : percentCount - 1 - i];
        if (direction > 0 ? percent > now + 0.5 : percent < now - 0.5) {
            next = percent;
            break;
        }
    }
    SetZoom(view, Fit::none, next);
}

void TakeZoomFromList(ViewWindow &view)
{
    const auto row = static_cast<int>(SendDlgItemMessageA(view.Window, zoomList, CB_GETCURSEL, 0, 0));
    if (row < 0 || row >= fitRows + percentCount) return;
    if (row < fitRows) {
        SetZoom(view, row == 0 ? Fit::width : Fit::page, 100);
    } else {
        SetZoom(view, Fit::none, percents[row - fitRows]);
    }
}

// ---- Keys ----

void ScrollBy(ViewWindow &view, LONG dx, LONG dy)
{
    view.X += dx;
    view.Y += dy;
    ShowPart(view);
}

void SelectPage(ViewWindow &view)
{
    const Definition &def = view.Of->Of->Def;
    const int64_t page = CurrentPage(view);
    view.From = {page, 0, 0};
    view.To = {page, def.PageWidth, def.PageHeight};
    view.Grain = 0;
    ShowPart(view);
}

void GoToTypedPage(ViewWindow &view)
{
    char typed[24] = "";
    GetWindowTextA(Control(view, pageEdit), typed, sizeof typed);
    int64_t page = 0;
    const auto [end, error] = std::from_chars(typed, typed + std::strlen(typed), page);
    SetFocus(view.Picture);
    if (error == std::errc()) {
        GoToPage(view, page);
    } else {
        ShowNumbers(view);
    }
}

void LeaveSearch(ViewWindow &view)
{
    view.Sought[0] = 0;
    view.Found = 0;
    SetWindowTextA(Control(view, searchEdit), "");
    SetFocus(view.Picture);
    SayState(view, "");
    ShowPart(view);
}

// A field that has no room in the bar is left alone.
void FocusAll(const ViewWindow &view, int id)
{
    if (IsWindowVisible(Control(view, id)) == FALSE) return;
    SetFocus(Control(view, id));
    SendDlgItemMessageA(view.Window, id, EM_SETSEL, 0, -1);
}

// A key that has the same meaning wherever the focus is. False for another one.
bool DoCommandKey(ViewWindow &view, WPARAM key, bool isShift)
{
    HWND window = view.Window;
    switch (key) {
    case 'A': SelectPage(view); return true;
    case 'C': CopySelection(view); return true;
    case 'F': FocusAll(view, searchEdit); return true;
    case 'G': FocusAll(view, pageEdit); return true;
    case 'P': PrintFromView(window); return true;
    case 'S': SaveView(window); return true;
    case 'W':
        if (!view.IsChild) PostMessageA(window, WM_CLOSE, 0, 0);
        return !view.IsChild;
    case '0': SetZoom(view, Fit::none, 100); return true;
    case VK_HOME: GoToPage(view, 1); return true;
    case VK_END: GoToPage(view, view.Of->Of->PageCount); return true;
    default: static_cast<void>(isShift); return false;
    }
}

bool DoPageKey(ViewWindow &view, WPARAM key)
{
    const int64_t page = CurrentPage(view);
    const Strip strip = StripOf(view);
    switch (key) {
    case VK_NEXT: GoToPage(view, page + 1); return true;
    case VK_PRIOR:
        // First to the top of the page in hand.
        GoToPage(view, view.Y > TopOfPage(strip, page) ? page : page - 1);
        return true;
    default: return false;
    }
}

// A key of the pages themselves.
bool DoPictureKey(ViewWindow &view, WPARAM key, bool isShift)
{
    const LONG screenful = std::max<LONG>(AreaOf(view).Height - lineStep, lineStep);
    switch (key) {
    case VK_HOME: GoToPage(view, 1); return true;
    case VK_END: GoToPage(view, view.Of->Of->PageCount); return true;
    case VK_UP: ScrollBy(view, 0, -lineStep); return true;
    case VK_DOWN: ScrollBy(view, 0, lineStep); return true;
    case VK_LEFT: ScrollBy(view, -lineStep, 0); return true;
    case VK_RIGHT: ScrollBy(view, lineStep, 0); return true;
    case VK_SPACE: ScrollBy(view, 0, isShift ? -screenful : screenful); return true;
    default: return false;
    }
}

// Whether Escape or Enter is the view's own in that control; else a host may have them for a dialog around
// it.
bool MeansSomething(const ViewWindow &view, int id, WPARAM key)
{
    if (key == VK_RETURN) return id != pagePicture && id != zoomList;
    return id != pagePicture || view.Sought[0] != 0 || !view.IsChild;
}

void DoEscape(ViewWindow &view, int id)
{
    if (id == searchEdit || view.Sought[0] != 0) {
        LeaveSearch(view);
    } else if (id != pagePicture) {
        SetFocus(view.Picture);
        ShowNumbers(view);
    } else {
        PostMessageA(view.Window, WM_CLOSE, 0, 0);
    }
}

void DoReturn(ViewWindow &view, HWND control, bool isShift)
{
    switch (GetDlgCtrlID(control)) {
    case pageEdit: GoToTypedPage(view); break;
    case searchEdit: SearchOn(view, isShift); break;
    default: SendMessageA(control, BM_CLICK, 0, 0); break;
    }
}

// False when the control itself is to have the key. The window may be gone afterwards.
bool DoKey(ViewWindow &view, HWND control, WPARAM key)
{
    const bool isShift = GetKeyState(VK_SHIFT) < 0;
    const bool isControl = GetKeyState(VK_CONTROL) < 0;
    const int id = GetDlgCtrlID(control);
    const bool isEdit = id == pageEdit || id == searchEdit;
    if (isControl) {
        const bool isOfText = isEdit && (key == 'A' || key == 'C' || key == VK_HOME || key == VK_END);
        return !isOfText && DoCommandKey(view, key, isShift);
    }
    if (key == VK_TAB) {
        HWND next = GetNextDlgTabItem(view.Window, control, isShift ? TRUE : FALSE);
        if (next != nullptr) SetFocus(next);
        return true;
    }
    if (key == VK_F1 + 2) {
        SearchOn(view, isShift);
        return true;
    }
    if (key == VK_ESCAPE || key == VK_RETURN) {
        if (!MeansSomething(view, id, key)) return false;
        if (key == VK_ESCAPE) {
            DoEscape(view, id);
        } else {
            DoReturn(view, control, isShift);
        }
        return true;
    }
    if (id == zoomList) return false;
    if (DoPageKey(view, key)) return true;
    return id == pagePicture && DoPictureKey(view, key, isShift);
}

constexpr char procedureProperty[] = "rsProcedure";

// Stands before the procedure of every control, for the keys that are the view's.
LRESULT CALLBACK ControlProcedure(HWND control, UINT message, WPARAM wParam, LPARAM lParam)
{
    const auto procedure = reinterpret_cast<WNDPROC>(GetPropA(control, procedureProperty));
    ViewWindow *view = StateOfView(GetParent(control));
    if (view != nullptr && message == WM_KEYDOWN && DoKey(*view, control, wParam)) return 0;
    if (view != nullptr && message == WM_GETDLGCODE && procedure != nullptr) {
        const auto *asked = reinterpret_cast<const MSG *>(lParam); // NOLINT
        const bool isKey = asked != nullptr && asked->message == WM_KEYDOWN &&
                           (asked->wParam == VK_RETURN || asked->wParam == VK_ESCAPE);
        const bool isOwn = isKey && MeansSomething(*view, GetDlgCtrlID(control), asked->wParam);
        return CallWindowProcA(procedure, control, message, wParam, lParam) | (isOwn ? DLGC_WANTMESSAGE : 0);
    }
    if (view != nullptr && message == WM_CHAR) {
        const int id = GetDlgCtrlID(control);
        const bool isEdit = id == pageEdit || id == searchEdit;
        if (!isEdit && (wParam == '+' || wParam == '-')) {
            StepZoom(*view, wParam == '+' ? 1 : -1);
            return 0;
        }
    }
    if (message == WM_NCDESTROY) RemovePropA(control, procedureProperty);
    if (procedure == nullptr) return DefWindowProcA(control, message, wParam, lParam);
    return CallWindowProcA(procedure, control, message, wParam, lParam);
}

// ---- The mouse ----

void Press(ViewWindow &view, const NMPICTURE &notice)
{
    const PagePlace place = PlaceAt(view, notice.X, notice.Y);
    if (notice.Count < 0 && view.From.Page != 0) { // with Shift the selection goes on to here
        view.To = place;
    } else {
        view.From = view.To = place;
        const LONG presses = std::abs(notice.Count);
        view.Grain = presses >= 3 ? 2U : presses == 2 ? 1U : 0U;
    }
    ShowPart(view);
}

void Drag(ViewWindow &view, const NMPICTURE &notice)
{
    if (view.From.Page == 0) return;
    const VARKUIAREA area = AreaOf(view);
    // Beyond the edge the strip moves along.
    if (notice.Y < 0) view.Y -= lineStep;
    if (notice.Y > area.Height) view.Y += lineStep;
    view.To = PlaceAt(view, notice.X, std::clamp<LONG>(notice.Y, 0, area.Height));
    ShowPart(view);
}

void TakeNotice(ViewWindow &view, const NMPICTURE &notice)
{
    switch (notice.hdr.code) {
    case PCN_AREA:
        FitZoom(view);
        ShowPart(view);
        break;
    case PCN_SCROLL:
        view.X = notice.X;
        view.Y = notice.Y;
        ShowPart(view);
        break;
    case PCN_PRESS: Press(view, notice); break;
    case PCN_DRAG: Drag(view, notice); break;
    case PCN_ZOOM: StepZoom(view, notice.Count); break;
    default: break;
    }
}

// ---- The window ----

bool MakeControls(ViewWindow &view)
{
    const DWORD common = WS_CHILD | WS_VISIBLE;
    const auto make = [&](const char *classOf, const char *text, DWORD style, int id) {
        HWND control = CreateWindowExA(0, classOf, text, common | style, 0, 0, 1, 1, view.Window,
                                       reinterpret_cast<HMENU>(static_cast<LONG_PTR>(id)), nullptr, nullptr);
        if (control == nullptr) return control;
        const LONG_PTR before = GetWindowLongPtrA(control, GWLP_WNDPROC);
        if (SetPropA(control, procedureProperty, reinterpret_cast<HANDLE>(before)) == FALSE) return HWND{};
        SetWindowLongPtrA(control, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&ControlProcedure));
        return control;
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

void EndWindow(ViewWindow *view)
{
    CloseSource(view->Source);
    RemovePropA(view->Window, viewProperty);
    if (view->OwnsReport) RemoveReportOf(*view->Of);
    RemoveView(view->Handle);
    ReleaseView(view->Of);
    std::free(view);
}

void DoCommand(HWND window, ViewWindow &view, int id, int code)
{
    const int64_t page = CurrentPage(view);
    switch (id) {
    case previousButton: DoPageKey(view, VK_PRIOR); break;
    case nextButton: GoToPage(view, page + 1); break;
    case smallerButton: StepZoom(view, -1); break;
    case largerButton: StepZoom(view, 1); break;
    case zoomList:
        if (code == CBN_SELCHANGE && !view.IsFilling) TakeZoomFromList(view);
        break;
    case pageEdit:
        if (code == EN_KILLFOCUS) ShowNumbers(view);
        break;
    case searchBackButton: SearchOn(view, true); break;
    case searchNextButton: SearchOn(view, false); break;
    case copyButton: CopySelection(view); break;
    case printButton: PrintFromView(window); break;
    case saveButton: SaveView(window); break;
    default: break;
    }
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
    case showMessage:
        view->Of->WasSeen = true;
        FitZoom(*view);
        ShowPart(*view);
        if (!view->IsChild) ShowWindow(window, SW_SHOW);
        SetFocus(view->Picture);
        return 0;
    case WM_SIZE: ArrangeControls(*view); return 0;
    case WM_SETFOCUS: SetFocus(view->Picture); return 0;
    case WM_NOTIFY:
        if (wParam == pagePicture && view->Picture != nullptr)
            TakeNotice(*view, *reinterpret_cast<const NMPICTURE *>(lParam)); // NOLINT
        return 0;
    case WM_COMMAND:
        if (LOWORD(wParam) >= previousButton && LOWORD(wParam) <= saveButton)
            DoCommand(window, *view, LOWORD(wParam), HIWORD(wParam));
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

bool ViewsHaveWindows() { return VarkUiHasUser() != FALSE; }

HWND OpenViewWindow(void *handle, View *view, const ViewPlace &place)
{
    static pthread_once_t once = PTHREAD_ONCE_INIT;
    pthread_once(&once, RegisterViewClass);
    auto *state = static_cast<ViewWindow *>(std::calloc(1, sizeof(ViewWindow)));
    if (state == nullptr) {
        RemoveView(handle);
        return nullptr;
    }
    state->IsChild = (place.Style & WS_CHILD) != 0;
    state->Handle = handle;
    state->Source.Socket = -1;
    state->Fitted = Fit::width;
    state->Percent = 100;
    state->PixelsPerUnit = naturalPixelsPerUnit;
    state->Of = HoldView(handle);
    bool isTaken = false;
    state->Taken = &isTaken;
    char title[maxViewTitle];
    FromUtf8(view->Title[0] != 0 ? view->Title : view->Of->Def.Title, title, sizeof title);
    // A window of its own is shown when its thread comes to handle messages: one that is only printed never
    // is. It can be moved, sized and closed whatever the host's style leaves out.
    const DWORD frame = state->IsChild ? WS_VISIBLE : WS_OVERLAPPEDWINDOW;
    const DWORD style = ((place.Style | frame) & ~(state->IsChild ? 0U : WS_VISIBLE)) | WS_CLIPCHILDREN;
    const bool hasSize = place.Width > 0 && place.Height > 0;
    const LONG width = hasSize || state->IsChild ? place.Width : defaultWidth;
    const LONG height = hasSize || state->IsChild ? place.Height : defaultHeight;
    HWND window = CreateWindowExA(place.ExStyle | WS_EX_CONTROLPARENT, className, title, style, place.Left,
                                  place.Top, width, height, place.Parent, nullptr, nullptr, state);
    if (window == nullptr && !isTaken) { // else it went with WM_NCDESTROY
        RemoveView(handle);
        ReleaseView(state->Of);
        std::free(state);
    }
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
    place.Parent = GetParent(window);
    RECT around = {};
    if ((place.Style & WS_CHILD) != 0 && GetWindowRect(place.Parent, &around) != FALSE) {
        place.Left -= around.left;
        place.Top -= around.top;
    }
    return place;
}

void *ViewOfWindow(HWND window) { return GetPropA(window, viewProperty); }

ViewWindow *StateOfView(HWND window)
{
    if (window == nullptr || GetPropA(window, viewProperty) == nullptr) return nullptr;
    return reinterpret_cast<ViewWindow *>(GetWindowLongPtrA(window, GWLP_USERDATA));
}

void ShowPart(ViewWindow &view)
{
    const Strip strip = StripOf(view);
    const VARKUIAREA area = AreaOf(view);
    view.X = Clamp(view.X, strip.Width, area.Width);
    view.Y = Clamp(view.Y, strip.Height, area.Height);
    if (!view.Of->WasSeen) {
        ShowNumbers(view);
        return;
    }
    VARKUIPICTURE picture = {};
    picture.Descriptor = -1;
    picture.Width = area.Width * area.Scale;
    picture.Height = area.Height * area.Scale;
    picture.X = view.X;
    picture.Y = view.Y;
    picture.ContentWidth = strip.Width;
    picture.ContentHeight = strip.Height;
    picture.Page = strip.Pitch;
    if (picture.Width > 0 && picture.Height > 0) {
        const int64_t first = PageAt(view, strip, view.Y);
        PageRequest request = {};
        request.Wish = PageWish::draw;
        request.Width = picture.Width;
        request.Height = picture.Height;
        request.Left = PaperLeft(strip, area, view.X) * area.Scale;
        request.FirstTop = (TopOfPage(strip, first) - view.Y) * area.Scale;
        request.Pitch = strip.Pitch * area.Scale;
        request.FirstPage = first;
        request.PixelsPerUnit = view.PixelsPerUnit * area.Scale;
        request.From = view.From;
        request.To = view.To;
        request.SelectionGrain = view.Grain;
        std::memcpy(request.Sought, view.Sought, sizeof request.Sought);
        request.Found = view.Found;
        request.FoundPlace = view.FoundPlace;
        PageAnswer answer;
        const bool isDrawn = AskForPages(view.Source, *view.Of, request, answer, picture.Descriptor);
        if (!isDrawn) SayState(view, "Die Seite kann nicht gezeichnet werden.");
    }
    SendMessageA(view.Picture, PCM_SETPICTURE, 0, reinterpret_cast<LPARAM>(&picture));
    if (picture.Descriptor >= 0) close(picture.Descriptor);
    ShowNumbers(view);
}

void ShowPlace(ViewWindow &view, const PagePlace &from, const PagePlace &to)
{
    const Strip strip = StripOf(view);
    const VARKUIAREA area = AreaOf(view);
    const auto pixels = [&](int32_t units) { return static_cast<LONG>(units * view.PixelsPerUnit); };
    const LONG top = TopOfPage(strip, from.Page) + pixels(from.Y);
    const LONG bottom = TopOfPage(strip, to.Page) + pixels(to.Y);
    if (top < view.Y || bottom > view.Y + area.Height) view.Y = top - area.Height / 3;
    const LONG left = paperGap + pixels(from.X);
    const LONG right = paperGap + pixels(to.X);
    if (left < view.X || right > view.X + area.Width) view.X = left - area.Width / 3;
    ShowPart(view);
}

void SayState(ViewWindow &view, const char *text)
{
    char shown[600];
    FromUtf8(text, shown, sizeof shown);
    SetWindowTextA(Control(view, stateText), shown);
}

int64_t CurrentPage(const ViewWindow &view)
{
    return PageAt(view, StripOf(view), view.Y + AreaOf(view).Height / 3);
}

void GoToPage(ViewWindow &view, int64_t page)
{
    page = std::clamp<int64_t>(page, 1, view.Of->Of->PageCount);
    view.Y = page == 1 ? 0 : TopOfPage(StripOf(view), page) - paperGap / 2;
    ShowPart(view);
}

} // namespace rs
