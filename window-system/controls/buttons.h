// Buttons of every kind, and static texts.
#pragma once

#include "window-system/include/varkui.h"

namespace varkui {

LRESULT CALLBACK ButtonProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
LRESULT CALLBACK StaticProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

} // namespace varkui
