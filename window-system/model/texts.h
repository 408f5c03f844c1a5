// The texts of windows.
#pragma once

#include "window-system/model/window.h"

namespace varkui {

// Text of a window, never null.
const char *TextOf(const Window *window);

// Replaces the text. False without memory: the old text stays.
bool ReplaceText(Window *window, const char *text, size_t length);

} // namespace varkui
