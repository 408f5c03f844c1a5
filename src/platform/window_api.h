// The window calls under their user32 names: the real ones on Windows, those of the window system elsewhere.
#pragma once

#ifdef _WIN32
#include <windows.h>
#else
#include "window-system/varkui.h"
#endif
