// The dialog that asks where to save a file. On a screen the desktop's own chooser stands for it: what was
// chosen there comes as one input, with a path that never becomes a text of the model, whose letters are too
// few for it. Elsewhere it is a dialog of a field and a list.
#pragma once

#include "window-system/model/input.h"

namespace varkui {

// A file was chosen on the screen; runs without the lock.
void InputToChooser(HWND dialog, const Input &input);

} // namespace varkui
