// Rates of exchange that the user may have to supply.
#pragma once

#include "src/frame/thread_context.h"
#include "src/model/company_records.h"
#include "src/platform/window_api.h"

namespace vark {

// The rate of a currency at a date, as FindRate finds it; where there is none the user is asked whether to
// enter one (message 1802, shown always). False when the user declines. `owner` is the window that the entry
// belongs to, null for none.
bool FindRateOrAsk(ThreadContext &context, HWND owner, KurseRecord &record, const char *waehrung,
                   const PackedDate &date);

} // namespace vark
