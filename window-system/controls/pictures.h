// Pictures: a part of something larger, drawn by whoever owns it.
#pragma once

#include "window-system/model/input.h"

namespace varkui {

LRESULT CALLBACK PictureProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// What a person does to it, beyond what is the same for all windows.
void InputToPicture(HWND picture, const Input &input);

} // namespace varkui
