// The texts of windows.
#pragma once

#include "window-system/model/window.h"

namespace varkui {

// Text of a window, never null.
const char *TextOf(const Window *window);

// Replaces the text; false without memory, and the old one stays.
bool ReplaceText(Window *window, const char *text, size_t length);

} // namespace varkui
