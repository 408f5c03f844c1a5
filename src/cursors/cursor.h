// What the three read cursors share: the one cursor of a thread, its begin and end, and the ways in which a
// field of a record reaches a caller. A cursor keeps the key of the record that it delivers next and fetches
// it by that key, so that other calls may come in between.
#pragma once

#include "include/vark40.h"
#include "src/frame/thread_context.h"
#include "src/model/tables.h"
#include "src/values/amount_texts.h"

#include <cstdint>

namespace vark {

// Answers of the cursors.
inline constexpr int32_t cursorReady = 1; // started; or delivered, and another one follows
inline constexpr int32_t cursorEmpty = 0; // nothing to deliver
inline constexpr int32_t lastDelivered = 2;
inline constexpr int32_t kindRefused = VARK_FEHLER_KONTOART;
inline constexpr int32_t formRefused = VARK_FEHLER_FORM;
inline constexpr int32_t recordGone = VARK_FEHLER_SATZ_FORT;
inline constexpr int32_t noSuchCursor = VARK_FEHLER_NICHT_BEGONNEN;

// Starts the thread's cursor over `table` in the Mandant and year that are selected, with what it reads from
// opened. False when a table could not be opened; no cursor is running then.
bool BeginCursor(ThreadContext &context, TableId table);

// Brings the thread back to the Mandant and year of its cursor, which other calls may have left. False when
// the record store fails.
bool ResumeCursor(ThreadContext &context);

// Ends the thread's cursor, if one is running.
void EndCursor(ThreadContext &context);

// EndCursor, and the code that the caller gets.
int32_t EndCursorWith(ThreadContext &context, int32_t code);

// True for an output form of FormatAmount, 1 to 3; else message 1419 is shown.
bool IsFormOrReport(const ThreadContext &context, int32_t form);

// Give a field to a caller; a null output is skipped. Texts are terminated and take no more than the width
// of the field.
void GiveText(char *out, const char *field, size_t width);
template <size_t Width> void GiveText(char *out, const char (&field)[Width]) { GiveText(out, field, Width); }
void GiveAccount(char *out, const AccountNumber &konto);                // without its leading blanks
void GiveDate(char *out, const PackedDate &date, int firstFiscalMonth); // TT.MM.JJJJ
void GiveAmount(char *out, const AmountText &amount, int32_t form);
void GiveRate(char *out, const RateText &rate, int32_t form);
void GiveNumber(uint32_t *out, int32_t value); // negative ones in two's complement

} // namespace vark
