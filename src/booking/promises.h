// What the checks of a posting have found, and a second look at it inside the transaction that writes the
// posting. Between the two another client may have deleted an account or the Stapel, and given the Stapel's
// number to a new one; from its first change on, the transaction is the only writer of its directory.
#pragma once

#include "src/booking/written_posting.h"
#include "src/frame/held_tables.h"
#include "src/frame/thread_context.h"

#include <cstdint>

namespace vark {

// Zeroed before the checks, which fill it in. The last four are the second look's.
struct Promises {
    uint32_t StapelPosition; // of the Stapel's record
    int32_t Zahlungsziel;    // that the caller named, 0 for none
    bool IsSplit;            // messages name the Teilbuchung
    int32_t Code;            // what the export returns, 0 as long as all holds
    int32_t Message;
    const char *Word;
    int32_t PartIndex;
};

// Holds the tables that the second look reads beside those of the posting. False when one does not open.
bool HoldPromised(HeldTables &held, const Buchung &buchung, const Promises &promises);

// Whether the accounts of the posting are there, each in the table of its kind. False with a code in
// `promises` where one is not, without where the engine failed.
bool AccountsStillExist(ThreadContext &context, const Buchung &buchung, Promises &promises);

// The same for Stapel, Zahlungsziel and Kostenschablonen.
bool ReferencesStillExist(ThreadContext &context, const Buchung &buchung, Promises &promises);

// What the export returns after WriteBuchung has failed; shows the message of what no longer held.
int32_t ReportUnwritten(const ThreadContext &context, const Promises &promises);

} // namespace vark
