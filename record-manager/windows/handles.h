// Files of Windows under the numbers of the C library, as the record manager passes them on.
#pragma once

#include <cstdint>

namespace wbtrv {

// Opens a file that others may open, rename and remove meanwhile; a link stands for itself. `access` and
// `disposition` as CreateFile takes them. Below 0 with GetLastError set on failure.
int OpenShareable(const char *path, unsigned long access, unsigned long disposition);
// Opens a directory to be looked at, links followed.
int OpenDirectory(const char *path);
void *HandleOf(int fd);
void CloseDescriptor(int fd);

// The status of one of the system's error numbers.
int16_t StatusOfSystem(unsigned long error);

} // namespace wbtrv
