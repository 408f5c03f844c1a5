// A process of its own for reading what may be damaged: it may end without ending the program.
#pragma once

#include <sys/types.h>

namespace books {

// As fork. The child ends at once when its parent does, however that happens, and a signal ends it as any
// program; so nothing of it goes on behind the back of a program that is gone. Throws where none can be made.
pid_t ForkReader();

// The status with which the child ended, as waitpid gives it.
int WaitFor(pid_t child);

// Throws Interrupted where it was an interruption that ended the child: nothing is wrong with what it read.
void ThrowIfChildInterrupted(int status);

// Ends the child and takes its status away.
void EndChild(pid_t child);

} // namespace books
