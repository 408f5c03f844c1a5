// Dialog units in pixels.
#pragma once

#include "window-system/varkui.h"

namespace varkui {

RECT Pixels(LONG left, LONG top, LONG right, LONG bottom);

} // namespace varkui
