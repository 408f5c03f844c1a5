// Edit controls.
#pragma once

#include "window-system/model/input.h"

namespace varkui {

LRESULT CALLBACK EditProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// What a person does to it, beyond what is the same for all windows.
void InputToEdit(HWND edit, const Input &input);

} // namespace varkui
