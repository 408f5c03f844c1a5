// Posting of one booking into a Stapel. The exports VARK_BuchungEinfuegen, VARK_BuchungEinfuegenDirekt and
// VARK_BuchungEinfuegenDirektEx are defined here; include/vark40.h tells their codes.
#pragma once

#include "include/vark40.h"
#include "src/booking/teilbuchung.h"
#include "src/frame/thread_context.h"

#include <cstdint>

namespace vark {

// The booking as VARK_BuchungEinfuegen takes it, behind the first lines of the export; null counts as a
// zeroed one.
int32_t InsertSinglePosting(ThreadContext &context, const BuchungEingabe *eingabe, int32_t showMessages);

// A posting on a personal account with a currency of its own: puts that currency and the converted amount
// into the bat image, and the amount as net amount into the Teilbuchung. 1, -3, or -2 with message 1450 when
// there is no conversion.
int32_t ConvertForeignCurrency(ThreadContext &context, TeilbuchungWork &work, const PackedDate &date,
                               BatRecord &bat);

} // namespace vark
