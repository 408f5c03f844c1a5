// The script front end: one list of instructions that serves the threads in turn.
#pragma once

#include "window-system/model/threads.h"

namespace varkui {

// Opens the script at `path`. False when it cannot be read, with the reason on standard error and in the log.
bool OpenScript(const char *path);

// Does the next instruction to the topmost window of `thread`. True when the thread should look at its queue
// again. Expects the lock, and releases it meanwhile.
bool PlayScript(Thread *thread);

// Passes the script to another thread when `thread` has no window open or ends. Expects the lock.
void LetGoOfScript(Thread *thread, bool ends);

} // namespace varkui
