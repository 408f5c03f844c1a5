// The one way in which the engine tells what went wrong.
#pragma once

namespace rs {

// Writes "librs: ..." as one line to standard error, in one piece, so that lines of threads do not mix.
// Control characters in it become blanks, since parts of it come from templates. The errno of the caller
// survives.
__attribute__((format(printf, 1, 2))) void Complain(const char *format, ...);

} // namespace rs
