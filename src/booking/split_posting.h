// Posting of several Teilbuchungen that share a date, a Beleg and the account of one side. The exports
// VARK_SplitBuchungEinfuegen, VARK_SplitStart, VARK_SplitStartEx, VARK_SplitEinfuegen, VARK_SplitEinfuegenEx
// and VARK_SplitEnde are defined here; include/vark40.h tells their codes.
//
// A split posting in progress lies in the thread's context: its head and the first ten Teilbuchungen in
// SplitHeader, the others in SplitOverflow, which grows in steps of five and stays until the thread ends.
#pragma once

#include "include/vark40.h"
#include "src/frame/thread_context.h"

#include <cstdint>

namespace vark {

// Codes of the checks, as the exports return them.
inline constexpr int32_t partCountRefused = VARK_FEHLER_ANZAHL_TEILE;
inline constexpr int32_t sidesRefused = VARK_FEHLER_SEITEN;
inline constexpr int32_t noSplitOpen = VARK_FEHLER_NICHT_BEGONNEN;
inline constexpr int32_t noMemoryForPart = VARK_FEHLER_TEIL_SPEICHER;

// The posting as VARK_SplitBuchungEinfuegen takes it, behind the first lines of the export; null counts as a
// zeroed one. Teilbuchungen from the eleventh on are those of the context.
int32_t InsertSplitPosting(ThreadContext &context, const SplitEingabe *eingabe, int32_t showMessages);

} // namespace vark
