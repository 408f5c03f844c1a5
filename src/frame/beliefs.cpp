#include "src/frame/beliefs.h"

#include <cassert>
#include <cstdio>

namespace vark {

bool StopsAtBrokenBelief = true;

bool TellBroken(const char *file, unsigned line)
{
    std::fprintf(stderr, "MERIDA: interner Fehler, %s:%u\n", file, line);
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
