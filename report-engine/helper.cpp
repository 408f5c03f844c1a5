#include "report-engine/helper.h"

#include "report-engine/complain.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern "C" { // this header forgets to say so
#include <sys/pidfd.h>
}

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

namespace {

// Far more than a helper is silent for that works or waits for a printing system.
constexpr int longestSilence_ms = 70'000;
constexpr int longestEnd_ms = 5'000; // from a helper's last word to its end
constexpr int step_ms = 100;         // between two looks at what the person wants

void Kill(pid_t child)
{
    const int process = pidfd_open(child, 0);
    if (process < 0) return;
    pidfd_send_signal(process, SIGKILL, nullptr, 0);
    close(process);
}

// What a helper has said: numbers are taken out as they come.
struct Hearing {
    char *Said;
    size_t Size;
    size_t Length;
    int64_t Done;
};

void TakeNumbers(Hearing &hearing)
{
    char *end = nullptr;
    while (hearing.Length > 0 && hearing.Said[0] == '+' &&
           (end = static_cast<char *>(std::memchr(hearing.Said, '\n', hearing.Length))) != nullptr) {
        int64_t number = 0;
        for (const char *digit = hearing.Said + 1; digit < end && *digit >= '0' && *digit <= '9'; ++digit) {
            number = number * 10 + (*digit - '0');
        }
        hearing.Done = number;
        const auto used = static_cast<size_t>(end + 1 - hearing.Said);
        std::memmove(hearing.Said, end + 1, hearing.Length - used);
        hearing.Length -= used;
    }
}

// Hears a helper to its end: told through a pipe, since a host may ignore its children's ends or collect them
// itself. `stopped`: by the person or for its silence.
Ended Hear(int pipe, Hearing &hearing, const Progress *progress, int64_t whole)
{
    int silence_ms = 0;
    for (;;) {
        pollfd waits = {pipe, POLLIN, 0};
        const int ready = poll(&waits, 1, step_ms);
        if (ready < 0 && errno != EINTR) return Ended::failed;
        if (progress != nullptr && !progress->GoesOn(progress->Context, hearing.Done, whole)) {
            return Ended::stopped;
        }
        if (ready <= 0) {
            silence_ms += step_ms;
            if (silence_ms >= longestSilence_ms) return Ended::failed;
            continue;
        }
        silence_ms = 0;
        if (hearing.Length == hearing.Size - 1) return Ended::good; // more than anybody reads
        const ssize_t got = read(pipe, hearing.Said + hearing.Length, hearing.Size - 1 - hearing.Length);
        if (got < 0 && (errno == EINTR || errno == EAGAIN)) continue;
        if (got <= 0) return Ended::good;
        hearing.Length += static_cast<size_t>(got);
        TakeNumbers(hearing);
    }
}

} // namespace

void AwaitEnd(pid_t child)
{
    const int process = pidfd_open(child, 0);
    if (process >= 0) {
        pollfd waits = {process, POLLIN, 0};
        int ready = 0;
        do {
            ready = poll(&waits, 1, longestEnd_ms);
        } while (ready < 0 && errno == EINTR);
        if (ready == 0) pidfd_send_signal(process, SIGKILL, nullptr, 0);
        close(process);
    }
    while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
}

Ended RunHelper(const char *name, char *const *arguments, const int *descriptors, int count, char *said,
                size_t size, const Progress *progress, int64_t whole)
{
    said[0] = 0;
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0) {
        Complain(name, ": %s", strerrordesc_np(errno));
        return Ended::failed;
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
        return Ended::failed;
    }
    Hearing hearing = {said, size, 0, 0};
    const Ended ended = Hear(ends[0], hearing, progress, whole);
    close(ends[0]);
    if (ended != Ended::good) Kill(child);
    AwaitEnd(child);
    said[ended == Ended::good ? hearing.Length : 0] = 0;
    if (ended == Ended::stopped) return ended;
    if (ended == Ended::failed) Complain(name, " does not answer");
    if (ended == Ended::good && hearing.Length == 0) Complain(name, " ended early");
    constexpr size_t ok = 2;
    if (std::strncmp(said, "ok", ok) != 0 || (said[ok] != 0 && said[ok] != '\n')) return Ended::failed;
    const char *line = said + ok + (said[ok] != 0 ? 1 : 0);
    std::memmove(said, line, std::strlen(line) + 1);
    return Ended::good;
}

} // namespace rs
