// Dialog units in pixels.
#pragma once

#include "window-system/include/varkui.h"

namespace varkui {

RECT Pixels(LONG left, LONG top, LONG right, LONG bottom);

} // namespace varkui
