// Cost lines of a posting: which account brings a Kostenschablone, and what it makes of the net amount.
#pragma once

#include "src/booking/posting_work.h"
#include "src/frame/thread_context.h"

#include <cstdint>

namespace vark {

// Whether a Kostenschablone is known; 0 (none) always is. Returns 1, -3, or -43 after a message.
int32_t CheckKostenschablone(ThreadContext &context, int32_t number, int32_t partIndex);

// Gives a caller's Kostenschablone (0: nothing to do) to the account that takes costs: an account with a
// Kostenschablone of its own first, else a GuV account, Soll before Haben. Only the records in memory
// change. Returns 1, or -43 after a message when no GuV account takes part. Kinds are those of the file; the
// record of a personal account is not looked at.
int32_t AssignKostenschablone(const ThreadContext &context, SakoRecord &soll, uint8_t sollArt,
                              SakoRecord &haben, uint8_t habenArt, int32_t number, int32_t partIndex);

enum class KostenSeite { Haben = 0, Soll = 1 };

// What became of cost lines. Of Failed, those made so far stay with the Teilbuchung.
enum class Expansion {
    Done,    // all were made
    Missing, // the Kostenschablone or its first line does not exist; none was made
    Failed,  // a sum overflowed, or memory or the engine failed
};

// Spreads the net amount of `teil` over the lines of a Kostenschablone. Number 0 gives none.
Expansion ExpandKostenschablone(ThreadContext &context, KostenSeite seite, int32_t number, Teilbuchung &teil);

// Which accounts of a posting bring cost lines.
enum class CostRule {
    EachSachkonto,   // that on Soll, else that on Haben
    SachkontoOnSoll, // the same, but only in a Teilbuchung with a Sachkonto on Soll
};

// Makes the cost lines of a Teilbuchung, from the Soll account's Kostenschablone, else from the Haben
// account's. Where costs are obligatory, a GuV account needs them if there is a Sachkonto on Soll; a
// Kostenschablone that cannot be expanded is -24 after message 1445 there, as are missing lines. Elsewhere
// one that is not there leaves the Teilbuchung without cost lines, and any other failure is -3.
int32_t SettleCosts(ThreadContext &context, TeilbuchungWork &work, CostRule rule, int32_t partIndex);

} // namespace vark
