// What is told of a status: at once or, inside a transaction, behind it.
#pragma once

#include "src/frame/thread_context.h"

#include <cstdint>

namespace vark {

// Everybody else who writes waits for an open transaction, and a box waits for a person. So what comes up
// inside is shown when the transaction is over.
// `path` names the file where that helps; `isInUse` says that a record may be locked by somebody else.
void Tell(ThreadContext &context, int16_t status, const char *path = nullptr, bool isInUse = false);

// Shows what was held back; no transaction is open any more.
void ShowHeldReports(ThreadContext &context);

} // namespace vark
