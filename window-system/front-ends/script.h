// A script in the place of a person, for one thread after the other.
#pragma once

#include "window-system/model/threads.h"

namespace varkui {

// Opens the script at `path`; false, with the reason on standard error and in the log, when it cannot be
// read.
bool OpenScript(const char *path);

// The next instruction, done to the topmost window of `thread`; true when the thread should look at its queue
// again. Expects the lock, and lets go of it meanwhile.
bool PlayScript(Thread *thread);

// The script serves another thread, if `thread` has nothing open any more or ends. Expects the lock.
void LetGoOfScript(Thread *thread, bool ends);

} // namespace varkui
