// Descriptors of files that a part of the library opens inside of a host.
//
// A host may start with standard input, output or error closed. The next file that is opened in its process
// then takes the free number, and whatever writes a message to standard error writes it into that file.
#pragma once

#include <sys/types.h>

namespace host {

inline constexpr int firstOwnDescriptor = 3;

// Occupies each of the numbers 0 to 2 that is free, for the life of the process, with a descriptor that can
// be neither read nor written: to the host it looks as closed as before (EBADF), its children do not get it,
// and dup2 puts a real one in its place. To be called before anything opens a descriptor by other means than
// those below. Costs three system calls that find nothing to do.
void GuardStandardDescriptors();

// Opens a file as openat does, close-on-exec, and never as one of the numbers 0 to 2. `directory` may be
// AT_FDCWD. Below 0 with errno set on failure.
int OpenFile(int directory, const char *path, int flags, mode_t mode = 0666);

// Gives the descriptor back under a number above 2, close-on-exec; the old number is closed if it has to be
// left. Below 0 stays as it is. On failure everything is closed, and errno is set.
int KeepAboveStandard(int descriptor);

} // namespace host
