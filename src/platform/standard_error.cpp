#include "host/standard_error.h"

#include "src/platform/platform.h"

#include <cstring>

namespace vark {

void TellOnStandardError(const char *line) { host::WriteToStandardError(line, std::strlen(line)); }

} // namespace vark
