// What a posting has to satisfy before tax and costs: head, accounts, amounts, Zahlungsziel.
#pragma once

#include "src/booking/posting_work.h"
#include "src/frame/held_tables.h"
#include "src/frame/thread_context.h"
#include "text/fixed_text.h"

#include <cstdint>

namespace vark {

// Holds the tables that a posting works on. False when one does not open.
bool HoldPostingTables(HeldTables &held);

// What the caller says of a Teilbuchung, cut to its fields; a single posting says the same in its own
// structure.
template <typename Eingabe> void TakeTexts(const Eingabe &from, TeilbuchungEingabe &to)
{
    text::CopyText(to.Sollkonto, from.Sollkonto);
    to.SollArt = from.SollArt;
    text::CopyText(to.Habenkonto, from.Habenkonto);
    to.HabenArt = from.HabenArt;
    text::CopyText(to.Brutto, from.Brutto);
    text::CopyText(to.Steuersatz, from.Steuersatz);
    text::CopyText(to.Steuerbetrag, from.Steuerbetrag);
    text::CopyText(to.Text, from.Text);
    to.Kostenschablone = from.Kostenschablone;
}

// The date text of an export that takes its arguments one by one, as the six digits TTMMJJ of the calendar
// that a posting structure takes. False for a text of more than 19 characters or one that is no date.
bool CalendarDigits(ThreadContext &context, const char *date, char (&out)[7]);

// Checks Stapel and date, turns `date` into a PackedDate and moves the thread to the date's year.
// `stapelPosition` is where the Stapel's record lies.
int32_t CheckPostingHead(ThreadContext &context, int32_t stapel, PackedDate &date, uint32_t &stapelPosition);

// Checks the accounts, reads their records, and brings the amounts into their fixed forms.
int32_t CheckAccountsAndAmounts(ThreadContext &context, TeilbuchungWork &work, int32_t partIndex);

// Kind of an account inside a posting, from the kind at the exported interface.
uint8_t BuchungskontoartOf(int32_t kontoart);

// Puts accounts, their kinds and the text into the image.
void FillImage(TeilbuchungWork &work);

// Whether a Zahlungsziel is known; 0 (none) always is. Returns 1, -3, or -27 after a message.
int32_t CheckZahlungsziel(ThreadContext &context, int32_t number);

// The Zahlungsziel of the Soll account or else the Haben account, of those that are personal ones; 0 for
// none, also when the engine failed. Kinds are those of the file.
int32_t DefaultZahlungsziel(ThreadContext &context, const AccountNumber &sollkonto,
                            const AccountNumber &habenkonto, uint8_t sollArt, uint8_t habenArt);

} // namespace vark
