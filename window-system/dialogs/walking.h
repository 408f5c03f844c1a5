// The order of a dialog's controls for Tab and the arrows, and the focus moving through them.
#pragma once

#include "window-system/model/window.h"

namespace varkui {

// Whether the window itself is shown and enabled.
bool IsUsable(const Window *window);

// The window behind `window` in the order of Tab, going into pages; null behind the last in `dialog`.
Window *NextControl(const Window *dialog, Window *window);

// Whether the control is a static text or a group box.
bool IsInert(const Window *window);

// The neighbour of `control` in its group, going round; `control` itself when it is alone.
Window *FindInGroup(Window *control, bool previous);

// The answer of a control to WM_GETDLGCODE. Runs without the lock, as the following.
LRESULT DialogCode(HWND control, const MSG *message);

// Sets the focus as Tab and mnemonics do, selecting the content of a field.
void FocusControl(HWND control);

// Does what WM_NEXTDLGCTL asks for.
void MoveOn(HWND dialog, WPARAM wParam, bool isHandle);

} // namespace varkui
