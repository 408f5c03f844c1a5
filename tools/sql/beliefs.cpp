// A belief of the library's own sources that broke in the extension: told, and what asked gets a failure that
// ends its statement. The program that loaded the extension goes on.
#include "host/standard_error.h"

#include <cassert>
#include <cstdio>

namespace vark {

bool TellBroken(const char *file, unsigned line);

bool TellBroken(const char *file, unsigned line)
{
    char told[256];
    const int length = std::snprintf(told, sizeof told, "MERIDA: interner Fehler, %.200s:%u\n", file, line);
    host::WriteToStandardError(told, static_cast<size_t>(length));
    assert(false);
    return false;
}

} // namespace vark
