// Windows in memory.
#pragma once

#include "window-system/model/classes.h"

namespace varkui {

// What CreateWindowExA was told, once the parts that may be handles are looked up.
struct Creation {
    DWORD Style;
    DWORD ExStyle;
    LPCSTR Title;
    RECT Place;
    Window *Parent;
    Window *Owner;
    HMENU Menu;
    HINSTANCE Instance;
};

// A window in all its memory, but standing nowhere yet; null when something is missing.
Window *MakeWindow(WindowClass *windowClass, Thread *thread, const Creation &creation);

// Takes a window that has no children any more out of everything.
void TakeOut(Window *window);

// Forgets everything: a forked child begins without windows.
void ForgetWindows();

} // namespace varkui
