// Places of windows, showing and enabling.
#pragma once

#include "window-system/include/varkui.h"

namespace varkui {

// A rectangle clamped so that sums over all depths of windows cannot overflow.
RECT PlaceAt(LONG x, LONG y, LONG width, LONG height);

// Shows or hides a window with its messages; leaves activation alone.
void SetShown(HWND handle, bool shown);

} // namespace varkui
