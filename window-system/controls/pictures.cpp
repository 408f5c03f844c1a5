#include "window-system/controls/pictures.h"

#include "host/descriptors.h"
#include "window-system/model/as_pointer.h"
#include "window-system/model/handles.h"
#include "window-system/model/input.h"
#include "window-system/model/memory.h"
#include "window-system/model/model.h"
#include "window-system/model/window.h"

#include <fcntl.h>
#include <unistd.h>

namespace varkui {

namespace {

Window *FindPicture(HWND handle)
{
    Window *window = Find(handle);
    return window != nullptr && window->Kind == Kind::Picture ? window : nullptr;
}

bool SetPicture(HWND handle, const VARKUIPICTURE *picture)
{
    if (picture == nullptr) return false;
    int own = -1;
    if (picture->Descriptor >= 0) {
        own = fcntl(picture->Descriptor, F_DUPFD_CLOEXEC, host::firstOwnDescriptor);
        if (own < 0) return false;
    }
    int before = -1;
    {
        const Locked locked(mutates);
        Window *window = FindPicture(handle);
        if (window == nullptr) {
            before = own;
        } else {
            before = window->Picture->Shown.Descriptor;
            window->Picture->Shown = *picture;
            window->Picture->Shown.Descriptor = own;
            Note(window, changedPicture);
        }
    }
    if (before >= 0) close(before);
    return before < 0 || before != own;
}

bool GetArea(HWND handle, VARKUIAREA *area)
{
    if (area == nullptr) return false;
    const Locked locked;
    const Window *window = FindPicture(handle);
    if (window == nullptr) return false;
    *area = window->Picture->Area;
    if (window->Picture->AreaTold) return true;
    const RECT &place = window->Place;
    *area = {place.right - place.left, place.bottom - place.top, 1};
    return true;
}

bool GetPicture(HWND handle, VARKUIPICTURE *picture)
{
    if (picture == nullptr) return false;
    const Locked locked;
    const Window *window = FindPicture(handle);
    if (window == nullptr) return false;
    *picture = window->Picture->Shown;
    picture->Descriptor = -1;
    return true;
}

void TellParent(HWND handle, UINT code, LONG x, LONG y, LONG count)
{
    HWND parent = nullptr;
    NMPICTURE notice = {{handle, 0, code}, x, y, count};
    {
        const Locked locked;
        const Window *window = FindPicture(handle);
        if (window == nullptr || window->Parent == nullptr) return;
        parent = window->Parent->Handle;
        notice.hdr.idFrom = static_cast<UINT_PTR>(window->Id);
    }
    SendMessageA(parent, WM_NOTIFY, notice.hdr.idFrom, reinterpret_cast<LPARAM>(&notice));
}

void SetArea(HWND handle, const Input &input)
{
    constexpr LONG largest = 32767;
    constexpr LONG finest = 8;
    const VARKUIAREA area = {input.Index, input.Index2, static_cast<LONG>(input.Serial)};
    if (area.Width < 0 || area.Width > largest || area.Height < 0 || area.Height > largest) return;
    if (area.Scale < 1 || area.Scale > finest) return;
    {
        const Locked locked(mutates);
        Window *window = FindPicture(handle);
        if (window == nullptr) return;
        window->Picture->Area = area;
        window->Picture->AreaTold = true;
    }
    TellParent(handle, PCN_AREA, 0, 0, 0);
}

} // namespace

void InputToPicture(HWND picture, const Input &input)
{
    const auto count = static_cast<LONG>(input.Serial);
    switch (input.Kind) {
    case InputKind::Area: SetArea(picture, input); break;
    case InputKind::Scroll: TellParent(picture, PCN_SCROLL, input.Index, input.Index2, 0); break;
    case InputKind::Press: {
        SetFocus(picture);
        const LONG presses = static_cast<LONG>(input.Serial & (serialShift - 1));
        TellParent(picture, PCN_PRESS, input.Index, input.Index2,
                   (input.Serial & serialShift) != 0 ? -presses : presses);
        break;
    }
    case InputKind::Drag: TellParent(picture, PCN_DRAG, input.Index, input.Index2, 0); break;
    case InputKind::Release: TellParent(picture, PCN_RELEASE, input.Index, input.Index2, 0); break;
    case InputKind::Zoom: TellParent(picture, PCN_ZOOM, input.Index, input.Index2, count); break;
    default: break;
    }
}

LRESULT CALLBACK PictureProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_GETDLGCODE: return DLGC_WANTARROWS;
    case WM_LBUTTONDOWN: SetFocus(window); return 0;
    case PCM_SETPICTURE: return SetPicture(window, AsPointer<const VARKUIPICTURE *>(lParam)) ? 1 : 0;
    case PCM_GETAREA: return GetArea(window, AsPointer<VARKUIAREA *>(lParam)) ? 1 : 0;
    case PCM_GETPICTURE: return GetPicture(window, AsPointer<VARKUIPICTURE *>(lParam)) ? 1 : 0;
    case WM_SIZE: TellParent(window, PCN_AREA, 0, 0, 0); return 0;
    default: return DefWindowProcA(window, message, wParam, lParam);
    }
}

} // namespace varkui
