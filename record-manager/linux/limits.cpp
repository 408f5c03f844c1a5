#include "record-manager/limits.h"

namespace wbtrv {

Limits limits{.MapSize = size_t{64} << 30, .IdleStores = 16};

} // namespace wbtrv
