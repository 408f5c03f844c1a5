#include "record-manager/platform.h"

#include "host/standard_error.h"
#include "record-manager/include/btrcall.h"
#include "record-manager/server_part.h"

#include <cstdio>
#include <cstring>
#include <windows.h>

// Of the system's own library, whose header does not show it.
extern "C" __declspec(dllimport) BOOLEAN NTAPI RtlDllShutdownInProgress(void);

namespace wbtrv {

namespace {

bool IsSeparator(char character) { return character == '\\' || character == '/'; }

} // namespace

size_t NameIn(const char *path, size_t length)
{
    size_t name = length;
    while (name > 0 && !IsSeparator(path[name - 1]) && path[name - 1] != ':') {
        --name;
    }
    return name;
}

size_t DirectoryBefore(const char *path, size_t name)
{
    // "C:" alone is the directory that is the drive's current one, "C:\" its topmost.
    const bool topmost = name == 1 || path[name - 1] == ':' || (name == 3 && path[1] == ':');
    return topmost ? name : name - 1;
}

bool IsThere(const char *directory, const char *name)
{
    char path[2 * BtrPathSize];
    const int size = snprintf(path, sizeof path, "%s/%s", directory, name);
    return size > 0 && static_cast<size_t>(size) < sizeof path &&
           GetFileAttributesA(path) != INVALID_FILE_ATTRIBUTES;
}

uint32_t OwnProcess() { return GetCurrentProcessId(); }

bool HasEnded(uint32_t process)
{
    HANDLE opened = OpenProcess(SYNCHRONIZE, FALSE, process);
    if (opened == nullptr) return GetLastError() == ERROR_INVALID_PARAMETER;
    const bool ended = WaitForSingleObject(opened, 0) == WAIT_OBJECT_0;
    CloseHandle(opened);
    return ended;
}

void OnFork(void (*)(), void (*)(), void (*)()) {}

bool IsProcessEnding() { return RtlDllShutdownInProgress() != 0; }

void Tell(const char *place, const char *what)
{
    char line[BtrPathSize + 128];
    if (snprintf(line, sizeof line, "wbtrv32: %s: %s\r\n", place, what) < 0) return;
    host::WriteToStandardError(line, strlen(line));
}

const ServerPart *LoadServerPart()
{
    Tell("books.server", "Bücher auf einem Server gibt es unter Windows nicht");
    return nullptr;
}

} // namespace wbtrv
