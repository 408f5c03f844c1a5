// The calls on window classes.
#include "window-system/model/as_pointer.h"
#include "window-system/model/classes.h"
#include "window-system/model/handles.h"
#include "window-system/model/memory.h"
#include "window-system/model/model.h"
#include "window-system/model/window.h"

#include <cstring>

using namespace varkui;

ATOM RegisterClassA(const WNDCLASSA *windowClass)
{
    if (windowClass == nullptr || windowClass->lpfnWndProc == nullptr || !IsName(windowClass->lpszClassName))
        return 0;
    constexpr int mostExtraBytes = 4000;
    if (windowClass->cbWndExtra < 0 || windowClass->cbWndExtra > mostExtraBytes) return 0;
    if (strlen(windowClass->lpszClassName) > longestClassName) return 0;
    const Locked locked(mutates);
    if (FindClass(windowClass->lpszClassName) != nullptr) return 0;
    const WindowClass *made = AddClass(*windowClass);
    return made != nullptr ? made->Atom : static_cast<ATOM>(0);
}

BOOL UnregisterClassA(LPCSTR name, HINSTANCE /*instance*/)
{
    const Locked locked(mutates);
    WindowClass *gone = FindClass(name);
    if (gone == nullptr || gone->OfSystem || gone->Windows > 0) return FALSE;
    WindowClass **link = &model.Classes;
    while (*link != gone) {
        link = &(*link)->Next;
    }
    *link = gone->Next;
    Release(gone->OwnName);
    Release(gone);
    return TRUE;
}

BOOL GetClassInfoA(HINSTANCE /*instance*/, LPCSTR name, WNDCLASSA *windowClass)
{
    const Locked locked;
    const WindowClass *found = FindClass(name);
    if (found == nullptr || windowClass == nullptr) return FALSE;
    *windowClass = found->Told;
    windowClass->lpfnWndProc = found->Procedure;
    windowClass->cbWndExtra = found->ExtraBytes;
    windowClass->lpszMenuName = nullptr;
    windowClass->lpszClassName = name;
    return TRUE;
}

int GetClassNameA(HWND window, LPSTR name, int size)
{
    if (name == nullptr || size <= 0) return 0;
    *name = 0;
    const Locked locked;
    const Window *found = Find(window);
    if (found == nullptr) return 0;
    size_t length = strlen(found->Class->Name);
    if (length >= static_cast<size_t>(size)) length = static_cast<size_t>(size) - 1;
    memcpy(name, found->Class->Name, length);
    name[length] = 0;
    return static_cast<int>(length);
}

ULONG_PTR GetClassLongPtrA(HWND window, int index)
{
    const Locked locked;
    const Window *found = Find(window);
    if (found == nullptr) return 0;
    switch (index) {
    case GCLP_WNDPROC: return reinterpret_cast<ULONG_PTR>(found->Class->Procedure);
    case GCL_CBWNDEXTRA: return static_cast<ULONG_PTR>(found->Class->ExtraBytes);
    case GCL_STYLE: return found->Class->Told.style;
    default: return 0;
    }
}

ULONG_PTR SetClassLongPtrA(HWND window, int index, LONG_PTR value)
{
    const ULONG_PTR before = GetClassLongPtrA(window, index);
    const Locked locked(mutates);
    Window *found = Find(window);
    if (found == nullptr || found->Class->OfSystem) return 0;
    constexpr LONG_PTR mostExtraBytes = 4000;
    if (index == GCLP_WNDPROC && value != 0) {
        found->Class->Procedure = AsPointer<WNDPROC>(value);
    } else if (index == GCL_CBWNDEXTRA && value >= 0 && value <= mostExtraBytes) {
        found->Class->ExtraBytes = static_cast<int>(value);
    } else if (index == GCL_STYLE) {
        found->Class->Told.style = static_cast<UINT>(value);
    } else {
        return 0;
    }
    return before;
}
