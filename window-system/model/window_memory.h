// Making and freeing windows in memory, without messages.
#pragma once

#include "window-system/model/classes.h"

namespace varkui {

// The arguments of CreateWindowExA with their handles looked up.
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

// A complete window that is not linked into the tree yet; null without memory or handle.
Window *MakeWindow(WindowClass *windowClass, Thread *thread, const Creation &creation);

// Unlinks and frees a window without children.
void TakeOut(Window *window);

// Empties the model in a forked child.
void ForgetWindows();

} // namespace varkui
