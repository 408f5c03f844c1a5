#include "src/platform/linux/own_parts.h"
#include "src/platform/platform.h"
#include "text/windows1252.h"

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vark {

const char pathSeparator = '/';

bool IsPathSeparator(char character) { return character == '/' || character == '\\'; }

void PathForMessage(const char *path, char *out, size_t size) { text::FromUtf8(path, out, size); }

void StartEngine(const char *) {} // the record manager needs no process here

namespace {

// Whoever can write a library that we load can be us. Everything from the root down to the file has to belong
// to the superuser or to us, and nobody else may be able to put another in its place.
bool OnlyOursCanWrite(const char *path)
{
    char real[PATH_MAX];
    if (realpath(path, real) == nullptr) return false;
    for (;;) {
        struct stat info;
        if (stat(real, &info) != 0) return false;
        if (info.st_uid != 0 && info.st_uid != geteuid()) return false;
        const bool sticky = S_ISDIR(info.st_mode) && (info.st_mode & S_ISVTX) != 0;
        if ((info.st_mode & (S_IWGRP | S_IWOTH)) != 0 && !sticky) return false;
        char *slash = std::strrchr(real, '/');
        if (slash == nullptr || real[1] == 0) return true;
        slash[slash == real ? 1 : 0] = 0;
    }
}

void *LoadPart(const char *directory, const char *name)
{
    char path[PATH_MAX];
    const size_t length = std::strlen(directory);
    const bool separated = length > 0 && directory[length - 1] == '/';
    const int written = std::snprintf(path, sizeof path, "%s%s%s", directory, separated ? "" : "/", name);
    if (written < 0 || static_cast<size_t>(written) >= sizeof path) return nullptr;
    if (!OnlyOursCanWrite(path)) return nullptr;
    return dlopen(path, RTLD_NOW | RTLD_LOCAL);
}

} // namespace

// Directory of this library itself; false when the loader does not tell.
bool OwnDirectory(char *out, size_t size)
{
    Dl_info info;
    if (dladdr(reinterpret_cast<const void *>(&OnlyOursCanWrite), &info) == 0 || info.dli_fname == nullptr)
        return false;
    char real[PATH_MAX];
    if (realpath(info.dli_fname, real) == nullptr) return false;
    char *slash = std::strrchr(real, '/');
    slash[slash == real ? 1 : 0] = 0;
    const size_t length = std::strlen(real);
    if (length >= size) return false;
    std::memcpy(out, real, length + 1);
    return true;
}

void *LoadOwnPart(const char *name)
{
    char directory[PATH_MAX];
    return OwnDirectory(directory, sizeof directory) ? LoadPart(directory, name) : nullptr;
}

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
        library = LoadPart(installation, name);
    }
    if (library == nullptr && dllPath[0] != 0) library = LoadPart(dllPath, name);
    if (library == nullptr) library = LoadOwnPart(name);
    if (library == nullptr) return nullptr;
    void *entry = dlsym(library, "BTRCALL");
    if (entry == nullptr) dlclose(library);
    return reinterpret_cast<RecordManagerEntry>(entry);
}

void *LoadReportEngine() { return LoadOwnPart("librs.so"); }

void *FindEntry(void *part, const char *name) { return dlsym(part, name); }

void ReleasePart(void *part) { dlclose(part); }

} // namespace vark
