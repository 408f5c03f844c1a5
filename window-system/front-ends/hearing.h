// What comes from the screen: inputs and keys, handed to the threads of their windows.
#pragma once

#include "window-system/front-ends/outgoing.h"

namespace varkui {

// Handles every whole frame at the front of `in` and keeps the rest. False for a frame that cannot be.
// Expects the lock.
bool HearFrames(Bytes &in);

} // namespace varkui
