// The state of a control beyond its text.
#pragma once

#include "window-system/model/window.h"

namespace varkui {

// Makes and frees the state of a control; false without memory.
bool MakeState(Window *window);
void FreeState(Window *window);

} // namespace varkui
