// The life of windows: how they are made and destroyed, and what ends with their thread.
#pragma once

#include "window-system/model/window.h"

namespace varkui {

// Has the thread of `window` destroy it when it next looks for messages.
void DestroyElsewhere(Window *window);

// Tells the windows around a child what happens to it: WM_CREATE, WM_DESTROY, or WM_LBUTTONDOWN inside it.
// Ends below the parent of a window with WS_EX_NOPARENTNOTIFY. Takes the lock itself.
void TellParents(HWND handle, UINT event);

// Answers everything sent to a thread that ends, and takes its windows away without a message.
void EndThread(Thread *thread);

// A forked child begins without windows.
void ForgetEverything();

} // namespace varkui
