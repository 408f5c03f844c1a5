// The active window and the focus of each thread. These functions take the lock themselves.
#pragma once

#include "window-system/include/varkui.h"

namespace varkui {

HWND MoveFocus(HWND target);
bool Activate(HWND target, bool clicked);

// Activates another window of the thread when its active window `going` is destroyed or hidden.
void ActivateAnother(HWND going);

} // namespace varkui
