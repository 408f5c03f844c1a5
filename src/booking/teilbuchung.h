// The way of one Teilbuchung from the caller's texts to its file image. A single posting goes it once, a
// split posting once for each of its Teilbuchungen. Every step returns 1, or the code that the export has to
// return after the message has been shown; `partIndex` (from 0) names the Teilbuchung in messages, noPart
// none.
#pragma once

#include "include/vark40.h"
#include "src/booking/posting_effects.h"
#include "src/frame/thread_context.h"

#include <cstdint>

namespace vark {

// Codes of the checks, as the exports return them.
inline constexpr int32_t rateEntryCancelled = 0;
inline constexpr int32_t amountNotConverted = -2;
inline constexpr int32_t stapelUnknown = -6;
inline constexpr int32_t sollkontoRefused = -8;
inline constexpr int32_t habenkontoRefused = -9;
inline constexpr int32_t sameAccount = -10;
inline constexpr int32_t dateRefused = -11;
inline constexpr int32_t bruttoRefused = -12;
inline constexpr int32_t steuersatzRefused = -13;
inline constexpr int32_t steuerbetragRefused = -14;
inline constexpr int32_t costsMissing = -24;

// One Teilbuchung in the making. Zeroed but for Eingabe, whose texts get their fixed forms on the way.
struct TeilbuchungWork {
    TeilbuchungEingabe Eingabe;
    SakoRecord Soll; // zero for a personal account
    SakoRecord Haben;
    bool HasUstId;    // one of the accounts is a personal one with a USt-IdNr
    bool IsFixedRate; // the account that the tax key came from allows no other rate
    uint8_t KeyClass; // class of the tax key as the accounts gave it
    uint8_t Class;    // class by which the posting is taxed
    Teilbuchung Teil; // owns its cost lines
};

// Kind of an account inside a posting, from the kind at the exported interface.
uint8_t BuchungskontoartOf(int32_t kontoart);

// Opens the tables that a posting works on. False when one failed; none of them is open by this call then.
bool OpenPostingTables(ThreadContext &context);
void ClosePostingTables(ThreadContext &context);

// The date text of an export that takes its arguments one by one, as the six digits TTMMJJ of the calendar
// that a posting structure takes. False for a text of more than 19 characters or one that is no date.
bool CalendarDigits(ThreadContext &context, const char *date, char (&out)[7]);

// Checks Stapel and date, turns `date` into a PackedDate and moves the thread to the date's year.
int32_t CheckPostingHead(ThreadContext &context, int32_t stapel, PackedDate &date);

// Checks the accounts, reads their records, and brings the amounts into their fixed forms.
int32_t CheckAccountsAndAmounts(ThreadContext &context, TeilbuchungWork &work, int32_t partIndex);

// Begins the image: tax key, rate, tax account and gross amount, the net amount being equal to it for now.
int32_t SettleTax(ThreadContext &context, TeilbuchungWork &work, const PackedDate &date, int32_t partIndex);

// Refuses a rate that the account does not allow, and works out the net amount.
int32_t SettleNet(const ThreadContext &context, TeilbuchungWork &work, int32_t partIndex);

// Puts accounts, their kinds and the text into the image.
void FillImage(TeilbuchungWork &work);

// Whether an account brings a Kostenschablone of its own.
bool HasKostenschablone(const SakoRecord &sako);

// Makes the cost lines of the side's Kostenschablone. Where costs are obligatory every failure is -24, after
// message 1445; elsewhere a Kostenschablone that is not there leaves the posting without cost lines, and any
// other failure is -3.
int32_t ExpandCosts(ThreadContext &context, TeilbuchungWork &work, KostenSeite seite, int32_t partIndex);

// Refuses a Teilbuchung without cost lines that touches a GuV account, where costs are obligatory.
int32_t RequireCosts(const ThreadContext &context, const TeilbuchungWork &work, int32_t partIndex);

} // namespace vark
