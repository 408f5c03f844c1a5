// The calls on a window's values, extra bytes, properties and text.
#include "window-system/model/as_pointer.h"
#include "window-system/model/classes.h"
#include "window-system/model/collation.h"
#include "window-system/model/handles.h"
#include "window-system/model/memory.h"
#include "window-system/model/model.h"
#include "window-system/model/tree.h"
#include "window-system/model/window.h"

#include <cstring>

namespace varkui {

namespace {

// The link to the property of a name.
Property **FindProperty(Window *window, LPCSTR name)
{
    Property **link = &window->Properties;
    while (*link != nullptr && !EqualWithoutCase((*link)->Name, name)) {
        link = &(*link)->Next;
    }
    return link;
}

// The values of a window that have negative indices; false for an index that names none.
bool ReadValue(const Window *window, int index, LONG_PTR &value)
{
    switch (index) {
    case GWL_STYLE: value = static_cast<LONG>(window->Style); return true;
    case GWL_EXSTYLE: value = static_cast<LONG>(window->ExStyle); return true;
    case GWLP_ID: value = window->Id; return true;
    case GWLP_USERDATA: value = window->UserData; return true;
    case GWLP_HINSTANCE: value = reinterpret_cast<LONG_PTR>(window->Instance); return true;
    case GWLP_WNDPROC: value = reinterpret_cast<LONG_PTR>(window->Procedure); return true;
    case GWLP_HWNDPARENT: {
        const Window *parent = window->Parent != nullptr ? window->Parent : window->Owner;
        value = parent != nullptr ? reinterpret_cast<LONG_PTR>(parent->Handle) : 0;
        return true;
    }
    default: return false;
    }
}

bool WriteValue(Window *window, int index, LONG_PTR value)
{
    switch (index) {
    case GWL_STYLE: window->Style = static_cast<DWORD>(value); break;
    case GWL_EXSTYLE: window->ExStyle = static_cast<DWORD>(value); break;
    case GWLP_ID: window->Id = value; break;
    case GWLP_USERDATA: window->UserData = value; break;
    case GWLP_HINSTANCE: window->Instance = AsPointer<HINSTANCE>(value); break;
    case GWLP_WNDPROC:
        if (value == 0) return false;
        window->Procedure = AsPointer<WNDPROC>(value);
        break;
    case GWLP_HWNDPARENT: {
        Window *owner = OwnerOf(AsPointer<HWND>(value));
        if (window->Parent != nullptr || (value != 0 && owner == nullptr)) return false;
        if (owner != nullptr && IsOwnedBy(owner, window)) return false;
        if (owner != nullptr && OwnerDepthOf(owner) + 1 + OwnedDepthOf(window, 0) >= deepestNesting)
            return false;
        window->Owner = owner;
        break;
    }
    default: return false;
    }
    Note(window, changedState);
    return true;
}

// Where `size` bytes of the extra bytes begin, null when they reach beyond the end.
unsigned char *ExtraAt(Window *window, int index, int size)
{
    return index >= 0 && index <= window->ExtraBytes - size ? window->Extra + index : nullptr;
}

} // namespace

} // namespace varkui

using namespace varkui;

LONG_PTR GetWindowLongPtrA(HWND window, int index)
{
    const Locked locked;
    Window *found = Find(window);
    LONG_PTR value = 0;
    if (found == nullptr || ReadValue(found, index, value)) return value;
    const unsigned char *extra = ExtraAt(found, index, sizeof value);
    if (extra != nullptr) memcpy(&value, extra, sizeof value);
    return value;
}

LONG_PTR SetWindowLongPtrA(HWND window, int index, LONG_PTR value)
{
    const Locked locked(mutates);
    Window *found = Find(window);
    LONG_PTR before = 0;
    if (found == nullptr) return 0;
    if (ReadValue(found, index, before)) return WriteValue(found, index, value) ? before : 0;
    unsigned char *extra = ExtraAt(found, index, sizeof value);
    if (extra == nullptr) return 0;
    memcpy(&before, extra, sizeof before);
    memcpy(extra, &value, sizeof value);
    return before;
}

LONG GetWindowLongA(HWND window, int index)
{
    if (index < 0) return static_cast<LONG>(GetWindowLongPtrA(window, index));
    const Locked locked;
    Window *found = Find(window);
    LONG value = 0;
    const unsigned char *extra = found != nullptr ? ExtraAt(found, index, sizeof value) : nullptr;
    if (extra != nullptr) memcpy(&value, extra, sizeof value);
    return value;
}

LONG SetWindowLongA(HWND window, int index, LONG value)
{
    if (index < 0) return static_cast<LONG>(SetWindowLongPtrA(window, index, value));
    const Locked locked(mutates);
    Window *found = Find(window);
    LONG before = 0;
    unsigned char *extra = found != nullptr ? ExtraAt(found, index, sizeof value) : nullptr;
    if (extra == nullptr) return 0;
    memcpy(&before, extra, sizeof before);
    memcpy(extra, &value, sizeof value);
    return before;
}

BOOL SetPropA(HWND window, LPCSTR name, HANDLE value)
{
    if (!IsName(name)) return FALSE;
    const Locked locked(mutates);
    Window *found = Find(window);
    if (found == nullptr) return FALSE;
    Property **link = FindProperty(found, name);
    if (*link == nullptr) {
        auto *made = static_cast<Property *>(Allocate(sizeof(Property)));
        if (made != nullptr) made->Name = CopyText(name, strlen(name));
        if (made == nullptr || made->Name == nullptr) {
            Release(made);
            return FALSE;
        }
        *link = made;
    }
    (*link)->Value = value;
    return TRUE;
}

HANDLE GetPropA(HWND window, LPCSTR name)
{
    if (!IsName(name)) return nullptr;
    const Locked locked;
    Window *found = Find(window);
    const Property *property = found != nullptr ? *FindProperty(found, name) : nullptr;
    return property != nullptr ? property->Value : nullptr;
}

HANDLE RemovePropA(HWND window, LPCSTR name)
{
    if (!IsName(name)) return nullptr;
    const Locked locked(mutates);
    Window *found = Find(window);
    if (found == nullptr) return nullptr;
    Property **link = FindProperty(found, name);
    Property *gone = *link;
    if (gone == nullptr) return nullptr;
    HANDLE value = gone->Value;
    *link = gone->Next;
    Release(gone->Name);
    Release(gone);
    return value;
}

BOOL SetWindowTextA(HWND window, LPCSTR text)
{
    return SendMessageA(window, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text)) > 0 ? TRUE : FALSE;
}

int GetWindowTextA(HWND window, LPSTR text, int size)
{
    if (text == nullptr || size <= 0) return 0;
    *text = 0;
    return static_cast<int>(
        SendMessageA(window, WM_GETTEXT, static_cast<WPARAM>(size), reinterpret_cast<LPARAM>(text)));
}

int GetWindowTextLengthA(HWND window)
{
    return static_cast<int>(SendMessageA(window, WM_GETTEXTLENGTH, 0, 0));
}
