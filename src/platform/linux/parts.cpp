#include "host/companions.h"
#include "src/platform/platform.h"
#include "text/windows1252.h"

#include <cstring>
#include <dlfcn.h>

namespace vark {

const char pathSeparator = '/';

bool IsPathSeparator(char character) { return character == '/' || character == '\\'; }

void PathForMessage(const char *path, char *out, size_t size) { text::FromUtf8(path, out, size); }

void StartEngine(const char *) {} // the record manager needs no process here

RecordManagerEntry LoadRecordManager(const char *dataPath, const char *dllPath)
{
    constexpr const char *name = "libwbtrv32.so";
    void *library = nullptr;
    // The data lies in a directory of two letters; the installation, and in it the record manager, above it.
    const size_t length = std::strlen(dataPath);
    if (length >= 3) {
        char installation[maxPath];
        std::memcpy(installation, dataPath, length - 3);
        installation[length - 3] = 0;
        library = host::LoadFrom(installation, name);
    }
    if (library == nullptr && dllPath[0] != 0) library = host::LoadFrom(dllPath, name);
    if (library == nullptr) library = host::LoadBeside(name);
    if (library == nullptr) return nullptr;
    void *entry = dlsym(library, "BTRCALL");
    if (entry == nullptr) dlclose(library);
    return reinterpret_cast<RecordManagerEntry>(entry);
}

void *LoadReportEngine() { return host::LoadBeside("librs.so"); }

void *FindEntry(void *part, const char *name) { return dlsym(part, name); }

void ReleasePart(void *part) { dlclose(part); }

} // namespace vark
