// Notices of controls to their parents.
#pragma once

#include "window-system/include/varkui.h"

namespace varkui {

// Sends WM_COMMAND with `code` from the control to its parent. Runs without the lock.
void NotifyParent(HWND control, int code);

} // namespace varkui
