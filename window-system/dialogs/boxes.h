// Message boxes: small modal dialogs of fixed makings.
#pragma once

#include "window-system/model/window.h"

namespace varkui {

// The id of the safest button: OK where it is alone, else Cancel, No or Abort. 0 for a style without a set of
// buttons.
int SafestAnswer(UINT style);

// Whether a box of `style` has the button `id`.
bool BoxHasButton(UINT style, int id);

// Whether the window is a message box.
bool IsBox(const Window *window);

// The id of a box's static text.
constexpr int boxTextId = 0xFFFF;

// The text of a box.
const char *TextOfBox(Window *box);

} // namespace varkui
