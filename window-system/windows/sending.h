// Sending messages to procedures, across threads too.
#pragma once

#include "window-system/model/queue.h"

namespace varkui {

// Hands the result of a sent message to its sender.
void Finish(Sent *sent, LRESULT result);

// Has the procedure of a window of the calling thread handle a message. Runs without the lock.
LRESULT CallProcedureOf(HWND handle, UINT message, WPARAM wParam, LPARAM lParam);

// Handles the messages sent by other threads. Expects the lock, and releases it while procedures run.
void HandleSent(Thread *thread);

// Sends without waiting for another thread; calls the procedure at once on the own thread. Takes the lock
// itself.
void Tell(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

} // namespace varkui
