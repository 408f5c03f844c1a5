#include "src/platform/platform.h"

#include <windows.h>

namespace vark {

// What the C runtime knows is the environment at its start.
const char *EnvironmentText(const char *name)
{
    static thread_local char text[maxPath];
    const DWORD length = GetEnvironmentVariableA(name, text, sizeof text);
    return length > 0 && length < sizeof text ? text : nullptr;
}

CalendarDate MachineToday()
{
    SYSTEMTIME now;
    GetLocalTime(&now);
    return {now.wYear, now.wMonth, now.wDay};
}

} // namespace vark
