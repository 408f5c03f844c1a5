// Instructions that a host hands to its own thread.
#pragma once

#include "window-system/model/threads.h"

namespace varkui {

// Whether a host's own list (VarkUiPlay) answers for `thread`. Its windows are then kept from the screen.
bool IsPlayedTo(const Thread *thread);

// The next line of that list, as PlayScript.
bool PlayNext(Thread *thread);

void FreePlayed(Thread *thread);

} // namespace varkui
