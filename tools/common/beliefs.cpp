// Broken beliefs of the library's own sources that are compiled into the tools: no export of a thread goes on
// after them, so a program ends; the extension of SQLite has its own.
#include "tools/common/exit_codes.h"

#include <cassert>
#include <cstdio>
#include <cstdlib>

namespace vark {

bool TellBroken(const char *file, unsigned line);

bool TellBroken(const char *file, unsigned line)
{
    std::fprintf(stderr, "MERIDA: interner Fehler, %s:%u\n", file, line);
    assert(false);
    std::_Exit(tools::ExitFailure);
}

} // namespace vark
