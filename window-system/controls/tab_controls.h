// Tab controls.
#pragma once

#include "window-system/model/input.h"

namespace varkui {

LRESULT CALLBACK TabControlProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// What a person does to it, beyond what is the same for all windows.
void InputToTabControl(HWND tabs, const Input &input);

} // namespace varkui
