// The dialog that asks where to save a file. On a screen the desktop's own chooser takes its place and
// returns the path as one input, since a path may hold letters that texts of the model lack. Elsewhere the
// dialog has a field and a list.
#pragma once

#include "window-system/model/input.h"

namespace varkui {

// Takes the file chosen on the screen. Runs without the lock.
void InputToChooser(HWND dialog, const Input &input);

} // namespace varkui
