// Instructions that a host hands to its own thread.
#pragma once

#include "window-system/model/threads.h"

namespace varkui {

// Whether the calling host answers what `thread` asks, by a list of its own (VarkUiPlay). What is asked then
// is kept from the screen.
bool IsPlayedTo(const Thread *thread);

// The next line of that list, as PlayScript.
bool PlayNext(Thread *thread);

void FreePlayed(Thread *thread);

} // namespace varkui
