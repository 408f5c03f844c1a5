// Transactions of a thread.
#pragma once

#include "src/frame/thread_context.h"

namespace vark {

enum class TransactionAction { Begin = 1, End = 2, Abort = 4, BeginConcurrent = 8 };

// Nested transactions of the thread; only the outermost reaches the engine. Inside of one that was begun with
// Begin the first use of a file locks all of it, with BeginConcurrent each change locks its record. From its
// first change on a transaction is the only writer of the directory, so what a check has found before is
// looked at again behind one. A refusal aborts, ends all levels and is shown. False for every refusal, also
// where the abort after it succeeds: a caller that took an undone End for a success would report a posting
// that is not there.
bool Transaction(ThreadContext &context, TransactionAction action);

// The belief of exports that nothing of a posting is left in the thread: no transaction, no table held open
// for one, nothing held back to be shown.
bool AtRestHolds(const ThreadContext &context);

} // namespace vark
