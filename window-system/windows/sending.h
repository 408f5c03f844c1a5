// Messages between threads, and procedures that handle them.
#pragma once

#include "window-system/model/queue.h"

namespace varkui {

// What waits for its result gets it.
void Finish(Sent *sent, LRESULT result);

// Has the procedure of a window of the calling thread handle a message. Runs without the lock.
LRESULT CallProcedureOf(HWND handle, UINT message, WPARAM wParam, LPARAM lParam);

// Handles what other threads have sent. Expects the lock, and lets go of it while procedures run.
void HandleSent(Thread *thread);

// Sends without waiting for a window of another thread; at once for one's own. Takes the lock itself.
void Tell(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

} // namespace varkui
