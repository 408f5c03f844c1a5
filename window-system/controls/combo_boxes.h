// Combo boxes.
#pragma once

#include "window-system/model/input.h"

namespace varkui {

LRESULT CALLBACK ComboBoxProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// What a person does to it, beyond what is the same for all windows.
void InputToComboBox(HWND combo, const Input &input);

} // namespace varkui
