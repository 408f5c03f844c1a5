// Making and destroying windows, and the end of a thread.
#pragma once

#include "window-system/model/window.h"

namespace varkui {

// Destroys `window` on its own thread when that next looks for messages.
void DestroyElsewhere(Window *window);

// Sends WM_PARENTNOTIFY (WM_CREATE, WM_DESTROY or WM_LBUTTONDOWN) from a child to the windows around it, up
// to the first window with WS_EX_NOPARENTNOTIFY. Takes the lock itself.
void TellParents(HWND handle, UINT event);

// Answers all messages sent to an ending thread and removes its windows without a message.
void EndThread(Thread *thread);

// Empties the model and the front end in a forked child.
void ForgetEverything();

} // namespace varkui
