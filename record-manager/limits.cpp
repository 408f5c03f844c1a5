#include "record-manager/limits.h"

namespace wbtrv {

Limits limits;

} // namespace wbtrv
