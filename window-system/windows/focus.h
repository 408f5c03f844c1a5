// The active window and the focus of each thread. These functions take the lock themselves.
#pragma once

#include "window-system/include/varkui.h"

namespace varkui {

// Gives the focus to an enabled window of the thread, null for none; both hear of it. Returns who had it,
// null also for a window that cannot have it.
HWND MoveFocus(HWND target);
// Makes an outermost window of the thread the active one, with the focus inside it. False for one that is
// disabled or being destroyed, and where another took the place meanwhile. `clicked`: by the mouse.
bool Activate(HWND target, bool clicked);

// Activates another window of the thread when its active window `going` is destroyed or hidden.
void ActivateAnother(HWND going);

} // namespace varkui
