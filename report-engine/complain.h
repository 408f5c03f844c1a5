// The one way in which the engine tells what went wrong.
#pragma once

namespace rs {

// Writes "librs: PATH..." as one line to standard error, in one piece, so that lines of threads do not mix;
// the format goes on right behind the path. Of an endless path the end is shown. Control characters become
// blanks, since parts of the line come from templates. The errno of the caller survives. What a person may
// come to read is German; of a template's text its author is told, in English as by the language itself.
__attribute__((format(printf, 2, 3))) void Complain(const char *path, const char *format, ...);

// The same of an errno.
void ComplainOf(const char *path, int error);

// What was last told on this thread, without its path: UTF-8, for a box.
const char *LastReason();

} // namespace rs
