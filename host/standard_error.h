// Lines on standard error, written by a part of the library inside of a host that may have its own idea of
// what stands behind that number.
#pragma once

#include <cstddef>

namespace host {

// Writes to standard error, if that was open as a stream for messages when this part was loaded: not a file
// that a host opened for reading and writing while the number was free. What a host puts in its place later
// is written to. Never waits longer than a second for whoever reads at the other end, and never raises
// SIGPIPE. False when not all was written. On Windows, where nobody shares numbers of files, it is what the
// system calls standard error.
bool WriteToStandardError(const char *bytes, size_t size);

// The same for any descriptor, on Linux.
bool WriteWithinASecond(int descriptor, const char *bytes, size_t size);

} // namespace host
