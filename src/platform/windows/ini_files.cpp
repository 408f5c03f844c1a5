#include "src/platform/platform.h"

#include <cstdio>
#include <windows.h>

namespace vark {

namespace {

// Without a directory the system takes a file for one in its own. False when the path is too long.
bool PathOf(const char *fileName, char (&path)[maxPath])
{
    const char *directory = EnvironmentText("VARK_CONFIG_DIR");
    const char *between = directory != nullptr ? "\\" : "";
    const int written =
        std::snprintf(path, sizeof path, "%s%s%s", directory != nullptr ? directory : "", between, fileName);
    return written > 0 && static_cast<size_t>(written) < sizeof path;
}

} // namespace

size_t ReadProfileText(const char *section, const char *key, char *out, size_t size, const char *fileName)
{
    char path[maxPath];
    out[0] = 0;
    if (!PathOf(fileName, path)) return 0;
    return GetPrivateProfileStringA(section, key, "", out, static_cast<DWORD>(size), path);
}

bool IsProfileUnreadable(const char *fileName)
{
    char path[maxPath];
    char whole[maxPath];
    if (!PathOf(fileName, path)) return false;
    // The system's own directory is among those that are looked through for a bare name.
    const DWORD found = SearchPathA(nullptr, path, nullptr, sizeof whole, whole, nullptr);
    if (found == 0 || found >= sizeof whole) return false;
    HANDLE file = CreateFileA(whole, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                              nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return true;
    CloseHandle(file);
    return false;
}

bool WriteProfileText(const char *section, const char *key, const char *value, const char *fileName)
{
    char path[maxPath];
    return PathOf(fileName, path) && WritePrivateProfileStringA(section, key, value, path) != 0;
}

} // namespace vark
