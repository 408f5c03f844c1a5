// The dialog in which rates of exchange are kept, and the search for a rate that opens it where one is
// missing.
#pragma once

#include "src/frame/thread_context.h"
#include "src/model/company_records.h"
#include "src/platform/window_api.h"

namespace vark {

// The rate of a currency at a date, as FindRate; as long as there is none the user is asked (1802, also when
// the caller wants no messages: it is a question) whether to enter one, in the dialog over `owner`. False
// when the user declines.
bool FindRateOrAsk(ThreadContext &context, HWND owner, KurseRecord &record, const char *waehrung,
                   const PackedDate &date);

// Runs the dialog for the Mandant in force. What stands in context.PendingRateDate and PendingWaehrung is
// offered for entry and taken away; without a date the dialog begins with TodayPacked.
void RunRateDialog(ThreadContext &context, HWND owner);

} // namespace vark
