// A host on whose standard error the library tells something: one that is read, that is none, that is full,
// and that nobody reads any more. While it is full the record manager, from beside the program, tells of
// books that it cannot open. Prints how long each took.
#include "host/standard_error.h"
#include "record-manager/include/btrcall.h"

#include <cstdio>
#include <string>
#include <windows.h>

namespace {

template <typename Call> void Tell(const char *what, const Call &call)
{
    const ULONGLONG begin = GetTickCount64();
    const int result = call();
    const ULONGLONG took_ms = GetTickCount64() - begin;
    std::printf("%s %d %s\n", what, result,
                took_ms < 900     ? "at once"
                : took_ms < 10000 ? "after a while"
                                  : "late");
}

int Write()
{
    const std::string line = "MERIDA: interner Fehler\n";
    return host::WriteToStandardError(line.data(), line.size()) ? 1 : 0;
}

// Opens a table in a directory whose books are on a server.
int Open()
{
    char block[BtrPositionBlockSize] = {};
    char key[BtrKeyBufferSize] = "server\\sako.btr";
    uint32_t none = 0;
    return BTRCALL(BtrOpOpen, block, nullptr, &none, key, sizeof key, BtrModeNormal);
}

} // namespace

int main()
{
    Tell("read", Write);
    SetStdHandle(STD_ERROR_HANDLE, nullptr);
    Tell("none", Write);
    constexpr DWORD size = 4096;
    HANDLE from = nullptr;
    HANDLE to = nullptr;
    CreatePipe(&from, &to, nullptr, size);
    SetStdHandle(STD_ERROR_HANDLE, to);
    const std::string filling(size, 'x');
    DWORD written = 0;
    WriteFile(to, filling.data(), size, &written, nullptr);
    Tell("full", Write);
    Tell("refused", Open);
    CloseHandle(from);
    Tell("closed", Write);
    return 0;
}
