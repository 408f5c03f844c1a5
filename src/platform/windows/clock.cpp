#include "src/platform/platform.h"

#include <cstdlib>
#include <windows.h>

namespace vark {

const char *EnvironmentText(const char *name) { return std::getenv(name); }

CalendarDate MachineToday()
{
    SYSTEMTIME now;
    GetLocalTime(&now);
    return {now.wYear, now.wMonth, now.wDay};
}

} // namespace vark
