// Classes of windows: the system's own and the host's.
#include <cstring>

#include "window-system/collation.h"
#include "window-system/memory.h"
#include "window-system/model.h"

namespace varkui {

namespace {

constexpr WORD dialogAtom = 0x8002;

ATOM nextAtom = 0xC000;

// A class of the host's; null when there is no memory.
WindowClass *AddClass(const WNDCLASSA &told)
{
    auto *made = static_cast<WindowClass *>(Allocate(sizeof(WindowClass)));
    char *name = made != nullptr ? CopyText(told.lpszClassName, strlen(told.lpszClassName)) : nullptr;
    if (name == nullptr || nextAtom == 0xFFFF) {
        Release(name);
        Release(made);
        return nullptr;
    }
    made->Name = name;
    made->OwnName = name;
    made->Procedure = told.lpfnWndProc;
    made->ExtraBytes = told.cbWndExtra;
    made->Kind = Kind::Plain;
    made->Told = told;
    made->Atom = nextAtom++;
    made->Next = model.Classes;
    model.Classes = made;
    return made;
}

} // namespace

void AddSystemClasses(const SystemClass *classes, int count)
{
    static WindowClass storage[mostSystemClasses];
    WindowClass *made = storage;
    for (int i = 0; i < count && i < mostSystemClasses; ++i) {
        const SystemClass &each = classes[i];
        made->Name = each.Name;
        made->Procedure = each.Procedure;
        made->TakeInput = each.TakeInput;
        made->ExtraBytes = each.ExtraBytes;
        made->Kind = each.Kind;
        made->OfSystem = true;
        made->Told.lpfnWndProc = each.Procedure;
        made->Told.cbWndExtra = each.ExtraBytes;
        made->Atom = nextAtom++;
        made->Next = model.Classes;
        model.Classes = made++;
    }
}

WindowClass *FindClass(LPCSTR name)
{
    const auto number = reinterpret_cast<uintptr_t>(name);
    if (number == dialogAtom) name = "#32770";
    for (WindowClass *each = model.Classes; each != nullptr && name != nullptr; each = each->Next) {
        if (number <= 0xFFFF && number != dialogAtom ? each->Atom == number
                                                     : EqualWithoutCase(each->Name, name)) {
            return each;
        }
    }
    return nullptr;
}

bool IsName(LPCSTR name) { return reinterpret_cast<uintptr_t>(name) > 0xFFFF && *name != 0; }

} // namespace varkui

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
