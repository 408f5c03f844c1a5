// List boxes.
#pragma once

#include "window-system/model/input.h"

namespace varkui {

LRESULT CALLBACK ListBoxProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// What a person does to it, beyond what is the same for all windows.
void InputToListBox(HWND list, const Input &input);

} // namespace varkui
