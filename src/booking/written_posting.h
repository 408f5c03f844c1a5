// A finished posting in memory, and its way into the files.
#pragma once

#include "src/frame/thread_context.h"
#include "src/model/posting_records.h"

#include <cstdint>

namespace vark {

// A Teilbuchung in memory: its file image, and the cost lines beside it. The image counts the lines.
struct Teilbuchung {
    SplitRecord Image;
    KobuRecord *Kostenzeilen; // owned, null for none
};

// A posting in memory: its file image with the first Teilbuchung inside, and what goes to other files. A
// zeroed one is empty. Everything here is owned and released by FreeBuchung.
struct Buchung {
    BatRecord Bat;
    KobuRecord *Kostenzeilen; // those of the first Teilbuchung
    Teilbuchung *Weitere;     // the second and all further Teilbuchungen
    int32_t WeiterePlaetze;   // entries that Weitere has room for
};

// Whether counts and pointers of a Teilbuchung or posting agree; a belief of those who change them.
bool TeilbuchungHolds(const Teilbuchung &teil);
bool BuchungHolds(const Buchung &buchung);

// Makes `teil` the Teilbuchung `index` (from 0, in ascending order) of the posting, which then owns its cost
// lines; `teil` is left empty. Room for `expected` Teilbuchungen is made with the first one. False without
// memory: `teil` still owns its lines then.
bool StoreTeilbuchung(Buchung &buchung, Teilbuchung &teil, int32_t index, int32_t expected);

struct Promises;

// Writes bat, split and kobu records as one transaction and sets the numbers that the engine gave out.
// `number` is the Buchungsnummer to insert with, 0 for the next one. What the checks have found is looked at
// again inside; with null nothing is. False when anything failed, which has been shown, or when something no
// longer held, which is then told in `promises`; nothing is written then and no transaction is open. The
// posting stays the caller's to free.
bool WriteBuchung(ThreadContext &context, Buchung &buchung, int32_t number, Promises *promises = nullptr);

// Releases what the posting owns and empties it; an empty one is fine.
void FreeBuchung(Buchung &buchung);

// The same for a Teilbuchung that was not stored.
void FreeTeilbuchung(Teilbuchung &teil);

} // namespace vark
