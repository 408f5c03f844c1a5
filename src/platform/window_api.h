// The window calls under their user32 names: the real ones on Windows, those of the window system elsewhere.
// The window system's header knows which.
#pragma once

#include "window-system/include/varkui.h"
