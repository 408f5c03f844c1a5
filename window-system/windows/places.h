// Where windows stand, whether they are shown and enabled.
#pragma once

#include "window-system/include/varkui.h"

namespace varkui {

// A rectangle with its numbers kept so small that they stay summable over all depths.
RECT PlaceAt(LONG x, LONG y, LONG width, LONG height);

// Shows or hides, with all messages; without a word about who is active.
void SetShown(HWND handle, bool shown);

} // namespace varkui
