// Broken beliefs of the library's own sources that are compiled into the tools: no export of a thread goes on
// after them, so a tool ends.
#include "tools/common/exit_codes.h"

#include <cassert>
#include <cstdio>
#include <cstdlib>
#include <source_location>

namespace vark {

bool TellBroken(const std::source_location &where);

bool TellBroken(const std::source_location &where)
{
    std::fprintf(stderr, "MERIDA: interner Fehler, %s:%u\n", where.file_name(),
                 static_cast<unsigned>(where.line()));
    assert(false);
    std::_Exit(tools::ExitFailure);
}

} // namespace vark
