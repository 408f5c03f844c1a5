#include "report-engine/view_input.h"

#include "report-engine/view_commands.h"
#include "report-engine/view_strip.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>

namespace rs {

namespace {

constexpr LONG lineStep = 60;

// ---- Keys ----

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
    case 'A': SelectAll(view); return true;
    case 'C': CopySelection(view); return true;
    case 'F': FocusAll(view, searchEdit); return true;
    case 'G': FocusAll(view, pageEdit); return true;
    case 'P': PrintFromView(window); return true;
    case 'S': SaveView(window); return true;
    case 'W':
        if (!IsChild(view)) PostMessageA(window, WM_CLOSE, 0, 0);
        return !IsChild(view);
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
    return id != pagePicture || view.Sought[0] != 0 || HasSelection(view) || !IsChild(view);
}

void DoEscape(ViewWindow &view, int id)
{
    if (id == searchEdit || view.Sought[0] != 0) {
        LeaveSearch(view);
    } else if (id != pagePicture) {
        SetFocus(view.Picture);
        ShowNumbers(view);
    } else if (HasSelection(view)) {
        SelectFrom(view, {}, 0);
        SayState(view, "");
        ShowPart(view);
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
        const LONG presses = std::abs(notice.Count);
        SelectFrom(view, place, presses >= 3 ? 2U : presses == 2 ? 1U : 0U);
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

} // namespace

bool WatchControl(HWND control)
{
    const LONG_PTR before = GetWindowLongPtrA(control, GWLP_WNDPROC);
    if (SetPropA(control, procedureProperty, reinterpret_cast<HANDLE>(before)) == FALSE) return false;
    SetWindowLongPtrA(control, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&ControlProcedure));
    return true;
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

void DoCommand(ViewWindow &view, int id, int code)
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
    case printButton: PrintFromView(view.Window); break;
    case saveButton: SaveView(view.Window); break;
    default: break;
    }
}

} // namespace rs
