#include "window-system/controls/notices.h"

#include "window-system/model/handles.h"
#include "window-system/model/model.h"
#include "window-system/model/window.h"

namespace varkui {

void NotifyParent(HWND control, int code)
{
    HWND parent = nullptr;
    LONG_PTR id = 0;
    {
        const Locked locked;
        const Window *window = Find(control);
        if (window == nullptr || window->Parent == nullptr) return;
        parent = window->Parent->Handle;
        id = window->Id;
    }
    SendMessageA(parent, WM_COMMAND, MAKEWPARAM(id, code), reinterpret_cast<LPARAM>(control));
}

} // namespace varkui
