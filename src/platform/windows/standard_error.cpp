#include "src/platform/platform.h"

#include <cstdlib>
#include <cstring>
#include <windows.h>

namespace vark {

namespace {

constexpr DWORD patience_ms = 1000;
constexpr size_t longestLine = 512;

struct Told {
    HANDLE To;
    DWORD Length;
    char Line[longestLine];
};

DWORD WINAPI Write(LPVOID given)
{
    auto *told = static_cast<Told *>(given);
    DWORD written = 0;
    WriteFile(told->To, told->Line, told->Length, &written, nullptr);
    std::free(told);
    return 0;
}

} // namespace

// A pipe that nobody empties makes who writes to it wait: that is another thread, and it is called off.
void TellOnStandardError(const char *line)
{
    const HANDLE error = GetStdHandle(STD_ERROR_HANDLE); // a host with windows alone has none
    if (error == nullptr || error == INVALID_HANDLE_VALUE) return;
    auto *told = static_cast<Told *>(std::malloc(sizeof(Told)));
    if (told == nullptr) return;
    const size_t length = std::strlen(line);
    told->To = error;
    told->Length = static_cast<DWORD>(length < longestLine ? length : longestLine);
    std::memcpy(told->Line, line, told->Length);
    const HANDLE thread = CreateThread(nullptr, 0, Write, told, 0, nullptr);
    if (thread == nullptr) {
        std::free(told);
        return;
    }
    if (WaitForSingleObject(thread, patience_ms) == WAIT_TIMEOUT) CancelSynchronousIo(thread);
    CloseHandle(thread);
}

} // namespace vark
