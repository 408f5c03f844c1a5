// The thread that speaks with the program vark-ui, so that no thread of the host ever waits for it.
#pragma once

namespace varkui {

// This end of the socket pair.
struct ScreenEnd {
    int Socket;
    int Wake; // tells the thread that there is something to write
};

extern ScreenEnd screenEnd; // -1 for none

// Begins to speak over `screenEnd`; false when there is no thread for it.
bool BeginConversation();

} // namespace varkui
