#include "host/companions.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <link.h>
#include <sys/stat.h>
#include <unistd.h>

namespace host {

namespace {

bool OnlyOursCanWrite(const char *path)
{
    struct stat info = {};
    if (stat(path, &info) != 0) return false;
    if (info.st_uid != 0 && info.st_uid != geteuid()) return false;
    const bool isSticky = S_ISDIR(info.st_mode) && (info.st_mode & S_ISVTX) != 0;
    return (info.st_mode & (S_IWGRP | S_IWOTH)) == 0 || isSticky;
}

// Cuts the last name off an absolute path; the root is left as it is.
void CutName(char *path)
{
    char *slash = std::strrchr(path, '/');
    slash[slash == path ? 1 : 0] = 0;
}

bool Join(const char *directory, const char *name, char (&path)[PATH_MAX])
{
    const size_t length = std::strlen(directory);
    const bool isSeparated = length > 0 && directory[length - 1] == '/';
    const int written = std::snprintf(path, sizeof path, "%s%s%s", directory, isSeparated ? "" : "/", name);
    if (written > 0 && static_cast<size_t>(written) < sizeof path) return true;
    errno = ENAMETOOLONG;
    return false;
}

} // namespace

bool IsTrusted(const char *path, char (&real)[PATH_MAX])
{
    if (realpath(path, real) == nullptr) return false;
    char part[PATH_MAX];
    std::memcpy(part, real, sizeof part);
    bool isTrusted = OnlyOursCanWrite(part);
    while (isTrusted && part[1] != 0) {
        CutName(part);
        isTrusted = OnlyOursCanWrite(part);
    }
    if (!isTrusted) errno = EPERM;
    return isTrusted;
}

bool OwnDirectory(char *out, size_t size)
{
    static const char anchor = 0;
    Dl_info info = {};
    link_map *map = nullptr;
    if (dladdr1(&anchor, &info, reinterpret_cast<void **>(&map), RTLD_DL_LINKMAP) == 0) return false;
    // The loader has no name for the program itself but the one that its caller gave it.
    const bool isProgram = map == nullptr || map->l_name == nullptr || map->l_name[0] == 0;
    char real[PATH_MAX];
    if (realpath(isProgram ? "/proc/self/exe" : map->l_name, real) == nullptr) return false;
    CutName(real);
    const size_t length = std::strlen(real);
    if (length >= size) return false;
    std::memcpy(out, real, length + 1);
    return true;
}

bool FindBeside(const char *name, char (&path)[PATH_MAX])
{
    // Seen from where this code lies; behind the first are those of an installation.
    static constexpr const char *places[] = {".", HOST_PARTS_FROM_LIBRARY, HOST_HELPERS_FROM_PARTS,
                                             HOST_HELPERS_FROM_PROGRAMS, HOST_PARTS_FROM_HELPERS};
    char own[PATH_MAX];
    char directory[PATH_MAX];
    char candidate[PATH_MAX];
    int error = ENOENT;
    const bool knowsOwn = OwnDirectory(own, sizeof own);
    for (const char *place : places) {
        if (!knowsOwn || !Join(own, place, directory) || !Join(directory, name, candidate)) continue;
        if (IsTrusted(candidate, path)) return true;
        if (errno == EPERM) error = EPERM;
    }
    errno = error;
    return false;
}

void *LoadFrom(const char *directory, const char *name)
{
    char path[PATH_MAX];
    char real[PATH_MAX];
    if (!Join(directory, name, path) || !IsTrusted(path, real)) return nullptr;
    return dlopen(real, RTLD_NOW | RTLD_LOCAL);
}

void *LoadBeside(const char *name)
{
    char path[PATH_MAX];
    if (!FindBeside(name, path)) return nullptr;
    void *library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) errno = ENOEXEC;
    return library;
}

} // namespace host
