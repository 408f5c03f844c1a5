// Beliefs: what the author takes for true, whatever a caller or the books hold. A request that is refused is
// a value; a broken belief is a fault of this library, after which nothing that it reckons can be trusted.
//
//     if (!Holds(total.Anzahl >= 0)) return false;   // where there is a failure to give
//     Holds(IsWholeAmount(out));                      // where there is none
//
// A build with assertions stops where the belief is. Any other tells on standard error where that was, and
// from then to the end of the export this thread writes nothing: an open transaction is aborted at its end,
// none begins, and Insert, Update and Delete refuse. So the export gives the engine failure, the books are as
// they were, and the next export starts afresh.
#pragma once

#include "src/frame/thread_context.h"

namespace vark {

// Notes a broken belief.
void TellBroken(const char *file, unsigned line);

// Gives back the belief. The place is the caller's; the checkers' compiler has no std::source_location yet.
inline bool Holds(bool belief, const char *file = __builtin_FILE(), unsigned line = __builtin_LINE())
{
    if (!belief) TellBroken(file, line);
    return belief;
}

// Whether a belief was broken since the thread's last export began.
inline bool HasBrokenBelief(const ThreadContext &context) { return context.BrokenBeliefs != 0; }

// At the beginning of an export. Nothing is forgotten inside of a transaction.
void ForgetBrokenBeliefs(ThreadContext &context);

// False lets a build with assertions go on like any other, for tests of what becomes of it.
extern bool StopsAtBrokenBelief;

} // namespace vark
