#include "src/frame/transactions.h"

#include "src/frame/beliefs.h"
#include "src/frame/engine_calls.h"
#include "src/frame/held_reports.h"

namespace vark {

bool Transaction(ThreadContext &context, TransactionAction action)
{
    // The engine counts a transaction by client, not by file: the position block is any.
    PositionBlock none{};
    EngineKey key(KeyBuffer{});
    char nothing[1] = {};
    const auto call = [&](uint16_t operation) {
        return CallEngine(operation, none, nothing, nullptr, key.Bytes, 0);
    };
    int16_t status = statusOk;
    StoreHolds(context, 0);
    // Nothing that was reckoned with a broken belief reaches the books.
    const bool begins = action == TransactionAction::Begin || action == TransactionAction::BeginConcurrent;
    if (HasBrokenBelief(context) && begins) return false;
    const uint16_t begin = action == TransactionAction::Begin ? engineBegin : engineBeginConcurrent;
    const bool mustUndo = HasBrokenBelief(context) && action == TransactionAction::End;
    if (mustUndo) action = TransactionAction::Abort;
    switch (action) {
    case TransactionAction::Begin:
    case TransactionAction::BeginConcurrent:
        if (context.TransactionDepth == 0) status = call(begin);
        if (status == statusOk) ++context.TransactionDepth;
        break;
    case TransactionAction::End:
        if (context.TransactionDepth == 0) break;
        if (context.TransactionDepth == 1) status = call(engineEnd);
        if (status == statusOk) --context.TransactionDepth;
        break;
    case TransactionAction::Abort:
        if (context.TransactionDepth == 0) break;
        context.TransactionDepth = 0;
        status = call(engineAbort);
        break;
    }
    if (status != statusOk) {
        call(engineAbort);
        context.TransactionDepth = 0;
    }
    Holds(action != TransactionAction::Abort || context.TransactionDepth == 0);
    Holds(!mustUndo || context.TransactionDepth == 0);
    Holds(!begins || status != statusOk || context.TransactionDepth > 0);
    context.HoldOpen = context.TransactionDepth > 0 ? 1 : 0;
    if (context.TransactionDepth == 0) ShowHeldReports(context);
    if (status != statusOk) Tell(context, status);
    StoreHolds(context, 0);
    return status == statusOk && !mustUndo;
}

bool AtRestHolds(const ThreadContext &context)
{
    return Holds(context.TransactionDepth == 0) && Holds(context.HoldOpen == 0) &&
           Holds(context.HeldReportCount == 0);
}

} // namespace vark
