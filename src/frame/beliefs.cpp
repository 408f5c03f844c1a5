#include "src/frame/beliefs.h"

#include <cassert>
#include <cstdio>

namespace vark {

bool StopsAtBrokenBelief = true;

bool TellBroken(const std::source_location &where)
{
    std::fprintf(stderr, "MERIDA: interner Fehler, %s:%u\n", where.file_name(),
                 static_cast<unsigned>(where.line()));
    assert(!StopsAtBrokenBelief);
    ThreadContext *const context = GetThreadContext();
    if (context != nullptr) ++context->BrokenBeliefs;
    return false;
}

void ForgetBrokenBeliefs(ThreadContext &context)
{
    if (context.TransactionDepth == 0) context.BrokenBeliefs = 0;
}

} // namespace vark
