// Mnemonics: underlined letters that lead to a control.
#pragma once

#include "window-system/include/varkui.h"

namespace varkui {

// Moves the focus to the control with that mnemonic, and presses a button that is the only one. False without
// such a control. Runs without the lock.
bool DoMnemonic(HWND dialog, unsigned char character);

} // namespace varkui
