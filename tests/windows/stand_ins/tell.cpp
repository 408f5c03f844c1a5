// A host on whose standard error the library tells something: one that is read, that is none, that is full,
// and that nobody reads any more. Prints how long each took.
#include "src/platform/platform.h"

#include <cstdio>
#include <string>
#include <windows.h>

namespace {

void Tell(const char *what)
{
    const ULONGLONG begin = GetTickCount64();
    vark::TellOnStandardError("MERIDA: interner Fehler\n");
    const ULONGLONG took_ms = GetTickCount64() - begin;
    std::printf("%s %s\n", what, took_ms < 900 ? "at once" : took_ms < 10000 ? "after a while" : "late");
}

} // namespace

int main()
{
    Tell("read");
    SetStdHandle(STD_ERROR_HANDLE, nullptr);
    Tell("none");
    constexpr DWORD size = 4096;
    HANDLE from = nullptr;
    HANDLE to = nullptr;
    CreatePipe(&from, &to, nullptr, size);
    SetStdHandle(STD_ERROR_HANDLE, to);
    const std::string filling(size, 'x');
    DWORD written = 0;
    WriteFile(to, filling.data(), size, &written, nullptr);
    Tell("full");
    CloseHandle(from);
    Tell("closed");
    return 0;
}
