// Pages are drawn by a program of its own, rs-pages, which stands beside this library: its font and drawing
// libraries load when a page is made and not with every host, their global state and their way of ending the
// process when memory runs out stay there, and their memory goes when the file is done.
#include "report-engine/complain.h"
#include "report-engine/output.h"

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <initializer_list>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ; // NOLINT(readability-redundant-declaration): not every system declares it

namespace rs {

namespace {

// What rs-pages finds open: see its main.
constexpr int spoolDescriptor = 3;
constexpr int fileDescriptor = 4;
constexpr int statusDescriptor = 5;

// The program's path. False when it is missing, or another user could have put it there.
bool FindProgram(char (&path)[PATH_MAX])
{
    Dl_info info = {};
    static const char anchor = 0;
    if (dladdr(&anchor, &info) == 0 || info.dli_fname == nullptr) return false;
    const char *slash = std::strrchr(info.dli_fname, '/');
    const int directory = slash != nullptr ? static_cast<int>(slash - info.dli_fname) + 1 : 0;
    const int length = std::snprintf(path, sizeof path, "%.*srs-pages", directory, info.dli_fname);
    if (length < 0 || length >= static_cast<int>(sizeof path)) return false;
    struct stat status = {};
    if (stat(path, &status) != 0) return false;
    const bool isOurs = status.st_uid == 0 || status.st_uid == geteuid();
    return S_ISREG(status.st_mode) && isOurs && (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

// A descriptor of its own above those that the program expects, since they are put in place one by one.
int LiftDescriptor(int descriptor) { return fcntl(descriptor, F_DUPFD_CLOEXEC, statusDescriptor + 1); }

// 0 or errno.
int StartProgram(const char *program, int spool, int file, int status, const char *title, pid_t &child)
{
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    if (posix_spawn_file_actions_init(&actions) != 0) return ENOMEM;
    if (posix_spawnattr_init(&attributes) != 0) {
        posix_spawn_file_actions_destroy(&actions);
        return ENOMEM;
    }
    int error = posix_spawn_file_actions_adddup2(&actions, spool, spoolDescriptor);
    if (error == 0) error = posix_spawn_file_actions_adddup2(&actions, file, fileDescriptor);
    if (error == 0) error = posix_spawn_file_actions_adddup2(&actions, status, statusDescriptor);
    // The host's signal mask is its own business; ignored signals (a file size limit) stay ignored.
    sigset_t none;
    sigemptyset(&none);
    if (error == 0) error = posix_spawnattr_setsigmask(&attributes, &none);
    if (error == 0) error = posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    char name[] = "rs-pages";
    char titleCopy[maxViewTitle];
    std::snprintf(titleCopy, sizeof titleCopy, "%s", title);
    char *const arguments[] = {name, titleCopy, nullptr};
    if (error == 0) error = posix_spawn(&child, program, &actions, &attributes, arguments, environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return error;
}

// What the program reports before it ends: "ok", or why not. It is told through a pipe, since a host may
// ignore its children's ends or collect them itself.
bool AwaitResult(int pipe, pid_t child, const char *path)
{
    char result[256] = "";
    size_t length = 0;
    while (length < sizeof result - 1) {
        const ssize_t count = read(pipe, result + length, sizeof result - 1 - length);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        length += static_cast<size_t>(count);
    }
    result[length] = 0;
    while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
    if (std::strcmp(result, "ok") == 0) return true;
    Complain(path, ": %s", length > 0 ? result : "rs-pages ended early");
    return false;
}

} // namespace

bool WritePages(int file, const View &view, const char *path)
{
    char program[PATH_MAX];
    if (!FindProgram(program)) {
        Complain(path, ": rs-pages is missing beside librs.so");
        return false;
    }
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0) {
        Complain(path, ": %s", strerrordesc_np(errno));
        return false;
    }
    const int spool = LiftDescriptor(view.Of->Store.File);
    const int output = LiftDescriptor(file);
    const int status = LiftDescriptor(ends[1]);
    close(ends[1]);
    pid_t child = 0;
    const int error = spool < 0 || output < 0 || status < 0
                          ? EMFILE
                          : StartProgram(program, spool, output, status, view.Title, child);
    for (const int descriptor : {spool, output, status}) {
        if (descriptor >= 0) close(descriptor);
    }
    bool isGood = error == 0;
    if (isGood) {
        isGood = AwaitResult(ends[0], child, path);
    } else {
        Complain(path, ": rs-pages: %s", strerrordesc_np(error));
    }
    close(ends[0]);
    return isGood;
}

} // namespace rs
