#include "src/platform/platform.h"
#include "text/fixed_text.h"

#include <cstdio>
#include <cstring>
#include <windows.h>

namespace vark {

const char pathSeparator = '\\';

bool IsPathSeparator(char character) { return character == '\\'; }

void PathForMessage(const char *path, char *out, size_t size) { text::CopyText(out, size, path, size); }

namespace {

constexpr char recordManagerName[] = "WBTRV32.DLL";

// The record manager in `directory` less its last `cut` characters; null when none loads there.
HMODULE LoadFrom(const char *directory, size_t cut)
{
    char path[maxPath];
    const size_t length = std::strlen(directory);
    const size_t kept = length > cut ? length - cut : 0;
    const bool separated = kept > 0 && directory[kept - 1] == '\\';
    const int written = std::snprintf(path, sizeof path, "%.*s%s%s", static_cast<int>(kept), directory,
                                      separated ? "" : "\\", recordManagerName);
    const bool fits = written > 0 && static_cast<size_t>(written) < sizeof path;
    return fits ? LoadLibraryA(path) : nullptr;
}

} // namespace

RecordManagerEntry LoadRecordManager(const char *dataPath, const char *dllPath)
{
    HMODULE library = LoadFrom(dataPath, 3);
    if (library == nullptr && dllPath[0] != 0) library = LoadFrom(dllPath, 0);
    if (library == nullptr) return nullptr;
    void *const entry = FindEntry(library, "BTRCALL");
    if (entry == nullptr) FreeLibrary(library);
    return reinterpret_cast<RecordManagerEntry>(entry);
}

void *LoadReportEngine() { return LoadLibraryA("rs.dll"); }

void *FindEntry(void *part, const char *name)
{
    return reinterpret_cast<void *>(GetProcAddress(static_cast<HMODULE>(part), name));
}

void ReleasePart(void *part) { FreeLibrary(static_cast<HMODULE>(part)); }

} // namespace vark
