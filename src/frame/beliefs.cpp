#include "src/frame/beliefs.h"

#include "src/platform/platform.h"

#include <cassert>
#include <cstdio>

namespace vark {

bool StopsAtBrokenBelief = true;

void TellBroken(const char *file, unsigned line)
{
    char told[256];
    std::snprintf(told, sizeof told, "MERIDA: interner Fehler, %.200s:%u\n", file, line);
    TellOnStandardError(told);
    assert(!StopsAtBrokenBelief);
    ThreadContext *const context = GetThreadContext();
    if (context != nullptr) ++context->BrokenBeliefs;
}

void ForgetBrokenBeliefs(ThreadContext &context)
{
    if (context.TransactionDepth == 0) context.BrokenBeliefs = 0;
}

} // namespace vark
