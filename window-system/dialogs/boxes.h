// Message boxes: small modal dialogs of fixed makings.
#pragma once

#include "window-system/model/window.h"

namespace varkui {

// The id of the button that does the least: OK where it is alone, else Cancel, No or Abort. 0 for a style
// that names no set of buttons.
int SafestAnswer(UINT style);

// Whether a box of `style` has the button `id`.
bool BoxHasButton(UINT style, int id);

// Whether it is a message box.
bool IsBox(const Window *window);

// The id of the text in a box.
constexpr int boxTextId = 0xFFFF;

// The text that a box shows.
const char *TextOfBox(Window *box);

} // namespace varkui
