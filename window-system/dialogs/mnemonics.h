// Letters that lead to a control.
#pragma once

#include "window-system/include/varkui.h"

namespace varkui {

// Goes to the control with that mnemonic in `dialog`, and presses it if it is a button and the only one.
// False when there is none. Runs without the lock.
bool DoMnemonic(HWND dialog, unsigned char character);

} // namespace varkui
