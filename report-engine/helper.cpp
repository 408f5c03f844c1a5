#include "report-engine/helper.h"

#include "report-engine/complain.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ; // NOLINT(readability-redundant-declaration): not every system declares it

namespace rs {

bool FindBeside(const char *name, char (&path)[PATH_MAX])
{
    Dl_info info = {};
    static const char anchor = 0;
    if (dladdr(&anchor, &info) == 0 || info.dli_fname == nullptr) return false;
    const char *slash = std::strrchr(info.dli_fname, '/');
    const int directory = slash != nullptr ? static_cast<int>(slash - info.dli_fname) + 1 : 0;
    const int length = std::snprintf(path, sizeof path, "%.*s%s", directory, info.dli_fname, name);
    if (length < 0 || length >= static_cast<int>(sizeof path)) return false;
    struct stat status = {};
    if (stat(path, &status) != 0) return false;
    const bool isOurs = status.st_uid == 0 || status.st_uid == geteuid();
    return S_ISREG(status.st_mode) && isOurs && (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

namespace {

int Spawn(const char *program, char *const *arguments, const int *lifted, int count, pid_t &child)
{
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    if (posix_spawn_file_actions_init(&actions) != 0) return ENOMEM;
    if (posix_spawnattr_init(&attributes) != 0) {
        posix_spawn_file_actions_destroy(&actions);
        return ENOMEM;
    }
    int error = 0;
    for (int i = 0; i < count && error == 0; ++i) {
        error = posix_spawn_file_actions_adddup2(&actions, lifted[i], firstDescriptor + i);
    }
    if (error == 0) error = posix_spawn_file_actions_addclosefrom_np(&actions, firstDescriptor + count);
    // The host's signal mask is its own business; ignored signals (a file size limit) stay ignored.
    sigset_t none;
    sigemptyset(&none);
    if (error == 0) error = posix_spawnattr_setsigmask(&attributes, &none);
    if (error == 0) error = posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    if (error == 0) error = posix_spawn(&child, program, &actions, &attributes, arguments, environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return error;
}

} // namespace

int StartHelper(const char *name, char *const *arguments, const int *descriptors, int count, pid_t &child)
{
    char program[PATH_MAX];
    if (!FindBeside(name, program)) return ENOENT;
    // Above those that the program expects, since they are put in place one by one.
    int lifted[maxDescriptors] = {-1, -1, -1, -1};
    int error = 0;
    for (int i = 0; i < count && error == 0; ++i) {
        lifted[i] = fcntl(descriptors[i], F_DUPFD_CLOEXEC, firstDescriptor + maxDescriptors);
        if (lifted[i] < 0) error = errno;
    }
    if (error == 0) error = Spawn(program, arguments, lifted, count, child);
    for (const int descriptor : lifted) {
        if (descriptor >= 0) close(descriptor);
    }
    return error;
}

void AwaitEnd(pid_t child)
{
    while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
}

bool RunHelper(const char *name, char *const *arguments, const int *descriptors, int count, char (&said)[256])
{
    said[0] = 0;
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0) {
        Complain(name, ": %s", strerrordesc_np(errno));
        return false;
    }
    int all[maxDescriptors];
    std::memcpy(all, descriptors, sizeof(int) * static_cast<size_t>(count));
    all[count] = ends[1];
    pid_t child = 0;
    const int error = StartHelper(name, arguments, all, count + 1, child);
    close(ends[1]);
    if (error != 0) {
        close(ends[0]);
        if (error == ENOENT) {
            Complain(name, " is missing beside librs.so");
        } else {
            Complain(name, ": %s", strerrordesc_np(error));
        }
        return false;
    }
    // Told through a pipe, since a host may ignore its children's ends or collect them itself.
    size_t length = 0;
    while (length < sizeof said - 1) {
        const ssize_t got = read(ends[0], said + length, sizeof said - 1 - length);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) break;
        length += static_cast<size_t>(got);
    }
    said[length] = 0;
    close(ends[0]);
    AwaitEnd(child);
    if (length == 0) Complain(name, " ended early");
    constexpr size_t ok = 2;
    if (std::strncmp(said, "ok", ok) != 0 || (said[ok] != 0 && said[ok] != '\n')) return false;
    const char *line = said + ok + (said[ok] != 0 ? 1 : 0);
    std::memmove(said, line, std::strlen(line) + 1);
    return true;
}

} // namespace rs
