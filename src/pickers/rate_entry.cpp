#include "src/pickers/rate_entry.h"

#include "src/frame/messages.h"
#include "src/values/currency.h"

namespace vark {

bool FindRateOrAsk(ThreadContext &context, HWND /*owner*/, KurseRecord &record, const char *waehrung,
                   const PackedDate &date)
{
    if (FindRate(context, record, waehrung, date)) return true;
    // There is no dialog yet in which a rate could be entered, so a yes ends as a no does.
    ShowMessage(1802, 0, nullptr, -1);
    return false;
}

} // namespace vark
