// What single and split postings have in common behind their checks: tax key and rate, the Zahlungsziel that
// applies by default, cost lines from a Kostenschablone, and the writing of the finished posting.
#pragma once

#include "src/frame/thread_context.h"
#include "src/model/account_records.h"
#include "src/model/posting_records.h"

#include <cstdint>

namespace vark {

// Codes of the checks here, as the exports return them.
inline constexpr int32_t zahlungszielUnknown = -27;
inline constexpr int32_t kostenschabloneRefused = -43;

// Reports go with no Teilbuchung.
inline constexpr int32_t noPart = -1;

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

// Which side's tax key a posting takes: only a side that alone has one, and not if the side without a key is
// a GuV account or the side with it a Passiva account. `seite` is SteuerseiteKeine with a `key` of 0.
void ChooseTaxKey(uint8_t sollKey, uint8_t habenKey, int16_t sollZuordnung, int16_t habenZuordnung,
                  uint8_t &key, uint16_t &seite);

// Finds the rate of a tax key that is valid at `date` and puts percentage, code, sequence number and tax
// account into the image. False when there is none or the engine failed; code and sequence number (0) have
// been set then, the rest not.
bool RateAt(ThreadContext &context, uint8_t key, const PackedDate &date, SplitRecord &image);

// The Zahlungsziel of the Soll account or else the Haben account, of those that are personal ones; 0 for
// none, also when the engine failed. Kinds are those of the file.
int32_t DefaultZahlungsziel(ThreadContext &context, const AccountNumber &sollkonto,
                            const AccountNumber &habenkonto, uint8_t sollArt, uint8_t habenArt);

// Whether a number is known; 0 (none) always is. Return 1, -3, or after a message -27 and -43.
int32_t CheckZahlungsziel(ThreadContext &context, int32_t number);
int32_t CheckKostenschablone(ThreadContext &context, int32_t number, int32_t partIndex);

// Gives a caller's Kostenschablone (0: nothing to do) to the account that takes costs: an account with a
// Kostenschablone of its own first, else a GuV account, Soll before Haben. Only the records in memory
// change. Returns 1, or -43 after a message when no GuV account takes part. Kinds are those of the file; the
// record of a personal account is not looked at.
int32_t AssignKostenschablone(const ThreadContext &context, SakoRecord &soll, uint8_t sollArt,
                              SakoRecord &haben, uint8_t habenArt, int32_t number, int32_t partIndex);

enum class KostenSeite { Haben = 0, Soll = 1 };

// What became of cost lines: made; the Kostenschablone or its first line is missing, and none was made; or a
// sum overflowed, memory or the engine failed, and those made so far stay with the Teilbuchung.
enum class Expansion { Done, Missing, Failed };

// Spreads the net amount of `teil` over the lines of a Kostenschablone. Number 0 gives none.
Expansion ExpandKostenschablone(ThreadContext &context, KostenSeite seite, int32_t number, Teilbuchung &teil);

// The second half of ExpandKostenschablone: reads the lines of the image's Kostenschablone, `count` at most.
Expansion ExpandLines(ThreadContext &context, Teilbuchung &teil, int32_t count, KostenSeite seite);

// Makes `teil` the Teilbuchung `index` (from 0, in ascending order) of the posting, which then owns its cost
// lines; `teil` is left empty. Room for `expected` Teilbuchungen is made with the first one. False without
// memory: `teil` still owns its lines then.
bool StoreTeilbuchung(Buchung &buchung, Teilbuchung &teil, int32_t index, int32_t expected);

// Writes bat, split and kobu records as one transaction and sets the numbers that the engine gave out.
// `number` is the Buchungsnummer to insert with, 0 for the next one. False when anything failed, which has
// been shown; nothing is written then and no transaction is open. The posting stays the caller's to free.
bool WriteBuchung(ThreadContext &context, Buchung &buchung, int32_t number);

// Releases what the posting owns and empties it; an empty one is fine.
void FreeBuchung(Buchung &buchung);

// The same for a Teilbuchung that was not stored.
void FreeTeilbuchung(Teilbuchung &teil);

} // namespace vark
