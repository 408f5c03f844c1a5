#include "src/platform/platform.h"

#include <cstdlib>
#include <ctime>

namespace vark {

const char *EnvironmentText(const char *name) { return secure_getenv(name); }

CalendarDate MachineToday()
{
    const std::time_t now = std::time(nullptr);
    std::tm fields{};
    localtime_r(&now, &fields);
    return {fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday};
}

} // namespace vark
