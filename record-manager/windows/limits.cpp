#include "record-manager/limits.h"

namespace wbtrv {

namespace {

// A process of 32 bits has room for a few maps of this size, and may have several directories open; page
// numbers of 64 bits are bounded by the file alone.
constexpr size_t largestMap = size_t{1} << (sizeof(void *) == 4 ? 29 : 36);

} // namespace

// The books of a directory cannot be moved or removed as long as they are open, so none stay open idly.
Limits limits{.MapSize = largestMap, .LoadingChanges = 10000, .IdleStores = 0};

} // namespace wbtrv
