#include "window-system/windows/places.h"

#include "window-system/model/handles.h"
#include "window-system/model/model.h"
#include "window-system/model/threads.h"
#include "window-system/model/tree.h"
#include "window-system/model/window.h"
#include "window-system/windows/focus.h"
#include "window-system/windows/sending.h"

namespace varkui {

namespace {

constexpr LONG farthest = 1000000; // places stay summable over all depths

LONG Clamp(LONG value, LONG low, LONG high) { return value < low ? low : value > high ? high : value; }

POINT OriginOf(const Window *window)
{
    POINT origin = {0, 0};
    for (; window != nullptr; window = window->Parent) {
        origin.x += window->Place.left;
        origin.y += window->Place.top;
    }
    return origin;
}

} // namespace

RECT PlaceAt(LONG x, LONG y, LONG width, LONG height)
{
    x = Clamp(x, -farthest, farthest);
    y = Clamp(y, -farthest, farthest);
    return RECT{x, y, x + Clamp(width, 0, farthest), y + Clamp(height, 0, farthest)};
}

void SetShown(HWND handle, bool shown)
{
    bool tellSize = false;
    RECT place = {};
    {
        const Locked locked(mutates);
        Window *window = Find(handle);
        if (window == nullptr || ((window->Style & WS_VISIBLE) != 0) == shown) return;
        window->Style = shown ? window->Style | WS_VISIBLE : window->Style & ~WS_VISIBLE;
        Note(window, changedState);
        tellSize = shown && !window->SizeTold;
        window->SizeTold = window->SizeTold || tellSize;
        place = window->Place;
    }
    Tell(handle, WM_SHOWWINDOW, shown ? TRUE : FALSE, 0);
    if (!tellSize) return;
    Tell(handle, WM_SIZE, SIZE_RESTORED, MAKELPARAM(place.right - place.left, place.bottom - place.top));
    Tell(handle, WM_MOVE, 0, MAKELPARAM(place.left, place.top));
}

} // namespace varkui

using namespace varkui;

BOOL ShowWindow(HWND window, int command)
{
    bool before = false;
    bool outermost = false;
    bool mine = false;
    bool hadFocus = false;
    HWND parent = nullptr;
    {
        const Locked locked;
        const Window *found = Find(window);
        if (found == nullptr) return FALSE;
        before = (found->Style & WS_VISIBLE) != 0;
        mine = IsWindowOfCaller(found);
        outermost = found->Parent == nullptr;
        if (!outermost) parent = found->Parent->Handle;
        const Window *focus = mine ? Find(found->Thread->Focus) : nullptr;
        hadFocus = focus != nullptr && (focus == found || LiesInside(focus, found));
    }
    if (command == SW_HIDE) {
        SetShown(window, false);
        if (mine && outermost) ActivateAnother(window);
        if (mine && !outermost && hadFocus) MoveFocus(parent);
        if (mine && outermost) frontEnd.Idle();
    } else {
        SetShown(window, true);
        frontEnd.Shown(window);
        if (mine && outermost && command != SW_SHOWNA && command != SW_SHOWNOACTIVATE)
            Activate(window, false);
    }
    if (outermost) frontEnd.Show();
    return before ? TRUE : FALSE;
}

BOOL IsWindowVisible(HWND window)
{
    const Locked locked;
    const Window *found = Find(window);
    return found != nullptr && IsShown(found) ? TRUE : FALSE;
}

BOOL EnableWindow(HWND window, BOOL enable)
{
    bool before = false;
    {
        const Locked locked(mutates);
        Window *found = Find(window);
        if (found == nullptr) return FALSE;
        before = (found->Style & WS_DISABLED) != 0;
        if (before == (enable == FALSE)) return before ? TRUE : FALSE;
        found->Style = enable != FALSE ? found->Style & ~WS_DISABLED : found->Style | WS_DISABLED;
        Note(found, changedState);
    }
    Tell(window, WM_ENABLE, enable != FALSE ? TRUE : FALSE, 0);
    return before ? TRUE : FALSE;
}

BOOL IsWindowEnabled(HWND window)
{
    const Locked locked;
    const Window *found = Find(window);
    return found != nullptr && (found->Style & WS_DISABLED) == 0 ? TRUE : FALSE;
}

BOOL GetWindowRect(HWND window, RECT *rectangle)
{
    const Locked locked;
    const Window *found = Find(window);
    if (found == nullptr || rectangle == nullptr) return FALSE;
    const POINT origin = OriginOf(found);
    *rectangle = RECT{origin.x, origin.y, origin.x + found->Place.right - found->Place.left,
                      origin.y + found->Place.bottom - found->Place.top};
    return TRUE;
}

BOOL GetClientRect(HWND window, RECT *rectangle)
{
    const Locked locked;
    const Window *found = Find(window);
    if (found == nullptr || rectangle == nullptr) return FALSE;
    *rectangle = RECT{0, 0, found->Place.right - found->Place.left, found->Place.bottom - found->Place.top};
    return TRUE;
}

BOOL SetWindowPos(HWND window, HWND after, int x, int y, int width, int height, UINT flags)
{
    bool sized = false;
    bool moved = false;
    bool outermost = false;
    RECT place = {};
    {
        const Locked locked(mutates);
        Window *found = Find(window);
        if (found == nullptr) return FALSE;
        outermost = found->Parent == nullptr;
        if ((flags & SWP_NOZORDER) == 0) {
            Window *sibling = Find(after);
            const auto named = reinterpret_cast<LONG_PTR>(after); // HWND_TOP 0, -_BOTTOM 1, -_TOPMOST -1, -2
            const bool top = named == 0 || named == -1 || named == -2;
            if (sibling == nullptr && !top && named != 1) return FALSE;
            if (sibling != nullptr && sibling->Parent != found->Parent) return FALSE;
            if (sibling != found) {
                Unlink(found);
                LinkBehind(found, found->Parent,
                           sibling != nullptr ? sibling
                           : top              ? nullptr
                                              : LastOf(found->Parent));
                Note(found, changedState);
            }
        }
        const RECT old = found->Place;
        const bool keepsPlace = (flags & SWP_NOMOVE) != 0;
        const bool keepsSize = (flags & SWP_NOSIZE) != 0;
        place = PlaceAt(keepsPlace ? old.left : x, keepsPlace ? old.top : y,
                        keepsSize ? old.right - old.left : width, keepsSize ? old.bottom - old.top : height);
        moved = place.left != old.left || place.top != old.top;
        sized = place.right - place.left != old.right - old.left ||
                place.bottom - place.top != old.bottom - old.top;
        found->Place = place;
        if (sized) found->SizeTold = true;
        if (sized || moved) Note(found, changedState);
    }
    if (sized)
        Tell(window, WM_SIZE, SIZE_RESTORED, MAKELPARAM(place.right - place.left, place.bottom - place.top));
    if (moved) Tell(window, WM_MOVE, 0, MAKELPARAM(place.left, place.top));
    if ((flags & SWP_SHOWWINDOW) != 0) ShowWindow(window, SW_SHOWNA);
    if ((flags & SWP_HIDEWINDOW) != 0) ShowWindow(window, SW_HIDE);
    if (outermost && (flags & (SWP_NOACTIVATE | SWP_HIDEWINDOW)) == 0 && IsWindowVisible(window) != FALSE) {
        Activate(window, false);
    } else if (!outermost && (flags & (SWP_NOACTIVATE | SWP_HIDEWINDOW)) == 0) {
        Tell(window, WM_CHILDACTIVATE, 0, 0);
    }
    return TRUE;
}

BOOL MoveWindow(HWND window, int x, int y, int width, int height, BOOL /*repaint*/)
{
    return SetWindowPos(window, nullptr, x, y, width, height, SWP_NOZORDER | SWP_NOACTIVATE);
}

BOOL BringWindowToTop(HWND window)
{
    return SetWindowPos(window, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
}

int MapWindowPoints(HWND from, HWND to, POINT *points, UINT count)
{
    const Locked locked;
    const Window *source = Find(from);
    const Window *target = Find(to);
    if (points == nullptr || (from != nullptr && source == nullptr) || (to != nullptr && target == nullptr))
        return 0;
    const POINT a = OriginOf(source);
    const POINT b = OriginOf(target);
    for (UINT i = 0; i < count; ++i) {
        points[i].x = static_cast<LONG>(static_cast<int64_t>(points[i].x) + a.x - b.x);
        points[i].y = static_cast<LONG>(static_cast<int64_t>(points[i].y) + a.y - b.y);
    }
    return MAKELONG(a.x - b.x, a.y - b.y);
}

BOOL ScreenToClient(HWND window, POINT *point)
{
    if (IsWindow(window) == FALSE || point == nullptr) return FALSE;
    MapWindowPoints(nullptr, window, point, 1);
    return TRUE;
}

BOOL ClientToScreen(HWND window, POINT *point)
{
    if (IsWindow(window) == FALSE || point == nullptr) return FALSE;
    MapWindowPoints(window, nullptr, point, 1);
    return TRUE;
}
