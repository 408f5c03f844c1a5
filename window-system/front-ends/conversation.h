// The thread that exchanges frames with the program vark-ui, so that no thread of the host waits for it.
#pragma once

namespace varkui {

// This end of the socket pair.
struct ScreenEnd {
    int Socket;
    int Wake; // wakes the thread to write
};

extern ScreenEnd screenEnd; // -1 for none

// Starts the thread on `screenEnd`; false when it cannot be made.
bool BeginConversation();

} // namespace varkui
