// Frames from the screen: inputs and keys for the threads of their windows.
#pragma once

#include "window-system/front-ends/outgoing.h"

namespace varkui {

// Handles the complete frames at the front of `in` and keeps the rest. False for an invalid frame. Expects
// the lock.
bool HearFrames(Bytes &in);

} // namespace varkui
