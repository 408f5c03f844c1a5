// The order of controls in a dialog, for Tab and the arrows, and the focus that moves through them.
#pragma once

#include "window-system/model/window.h"

namespace varkui {

// Whether a person can do something with the window, as far as it alone is concerned.
bool IsUsable(const Window *window);

// The window behind `window` in the order of Tab, going into pages; null behind the last in `dialog`.
Window *NextControl(const Window *dialog, Window *window);

// Whether a person can do nothing with the control.
bool IsInert(const Window *window);

// The control that an arrow leads to from `control`, itself when it is alone in its group.
Window *FindInGroup(Window *control, bool previous);

// The answer of a control to WM_GETDLGCODE. Runs without the lock, as the following.
LRESULT DialogCode(HWND control, const MSG *message);

// Gives the focus as Tab and mnemonics do: the content of a field is selected.
void FocusControl(HWND control);

// What WM_NEXTDLGCTL asks for.
void MoveOn(HWND dialog, WPARAM wParam, bool isHandle);

} // namespace varkui
