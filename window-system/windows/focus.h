// Which window is active and which has the keyboard, thread by thread.
#pragma once

#include "window-system/include/varkui.h"

namespace varkui {

// These take the lock themselves.

HWND MoveFocus(HWND target);
bool Activate(HWND target, bool clicked);

// Finds another window to be active for a thread whose active one is going or hidden.
void ActivateAnother(HWND going);

} // namespace varkui
