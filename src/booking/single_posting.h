// Posting of one booking into a Stapel. The exports VARK_BuchungEinfuegen, VARK_BuchungEinfuegenDirekt and
// VARK_BuchungEinfuegenDirektEx are defined here; include/vark40.h tells their codes.
#pragma once

#include "include/vark40.h"
#include "src/booking/posting_work.h"
#include "src/frame/thread_context.h"

#include <cstdint>

namespace vark {

// The booking as VARK_BuchungEinfuegen takes it, behind the first lines of the export; null counts as a
// zeroed one.
int32_t InsertSinglePosting(ThreadContext &context, const BuchungEingabe *eingabe, int32_t showMessages);

// A posting on a personal account with a currency of its own: puts that currency and the gross amount at the
// rate of the date into the bat image, and the converted amount as net amount into the Teilbuchung, for what
// follows to change. Of two personal accounts the one on Soll counts. Returns 1; -3; -2 after message 1450
// when the amount does not fit; 0 when there is no rate and the user does not enter one.
int32_t ConvertForeignCurrency(ThreadContext &context, TeilbuchungWork &work, const PackedDate &date,
                               BatRecord &bat);

} // namespace vark
