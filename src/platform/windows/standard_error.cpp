#include "src/platform/platform.h"

#include <cstring>
#include <windows.h>

namespace vark {

void TellOnStandardError(const char *line)
{
    const HANDLE error = GetStdHandle(STD_ERROR_HANDLE); // a host with windows alone has none
    if (error == nullptr || error == INVALID_HANDLE_VALUE) return;
    DWORD written = 0;
    WriteFile(error, line, static_cast<DWORD>(std::strlen(line)), &written, nullptr);
}

} // namespace vark
