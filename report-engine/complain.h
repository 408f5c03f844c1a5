// The one way in which the engine tells what went wrong.
#pragma once

namespace rs {

// Writes "librs: PATH..." as one line to standard error, in one piece, so that lines of threads do not mix;
// the format goes on right behind the path. Of an endless path the end is shown. Control characters become
// blanks, since parts of the line come from templates. The errno of the caller survives.
__attribute__((format(printf, 2, 3))) void Complain(const char *path, const char *format, ...);

// What an errno means, for a person: UTF-8, German. Null for one that no person needs to know apart.
const char *InGerman(int error);

// The same of what was last told on this thread, of a file that could not be written.
const char *LastComplaintInGerman();

} // namespace rs
