// What windows and dialogs of the library need of the system before they can be made.
#pragma once

#include "src/platform/window_api.h"

namespace vark {

// This library, whose resources and window classes they are; null where the window system asks for none.
HINSTANCE LibraryModule();

// Makes the system's kinds of controls ready, tabs among them. To be called before a dialog is made; costs
// nothing from the second time on.
void PrepareControls();

} // namespace vark
