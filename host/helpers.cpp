#include "host/helpers.h"

#include "host/companions.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern "C" { // this header forgets to say so
#include <sys/pidfd.h>
}

extern char **environ; // NOLINT(readability-redundant-declaration): not every system declares it

namespace host {

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
        error = posix_spawn_file_actions_adddup2(&actions, lifted[i], firstOfHelper + i);
    }
    if (error == 0) error = posix_spawn_file_actions_addclosefrom_np(&actions, firstOfHelper + count);
    // The host's mask, and what it does about its children and its pipes, are its own business. Other signals
    // that it ignores stay ignored: a hangup, the limit of a file's size.
    sigset_t mask;
    sigset_t usual;
    sigemptyset(&mask);
    sigemptyset(&usual);
    sigaddset(&usual, SIGCHLD);
    sigaddset(&usual, SIGPIPE);
    if (error == 0) error = posix_spawnattr_setsigmask(&attributes, &mask);
    if (error == 0) error = posix_spawnattr_setsigdefault(&attributes, &usual);
    if (error == 0)
        error = posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    if (error == 0) error = posix_spawn(&child, program, &actions, &attributes, arguments, environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return error;
}

// Whether the child is still there, or is at least not known to be gone.
bool IsRunning(pid_t child)
{
    const pid_t ended = waitpid(child, nullptr, WNOHANG);
    return ended == 0 || (ended < 0 && errno == EINTR);
}

} // namespace

int StartHelper(const char *name, char *const *arguments, const int *descriptors, int count, pid_t &child)
{
    char program[PATH_MAX];
    if (count < 0 || count > maxOfHelper) return EINVAL;
    if (!FindBeside(name, program)) return errno;
    // Above those that the program expects, since they are put in place one by one.
    int lifted[maxOfHelper] = {-1, -1, -1, -1};
    int error = 0;
    for (int i = 0; i < count && error == 0; ++i) {
        lifted[i] = fcntl(descriptors[i], F_DUPFD_CLOEXEC, firstOfHelper + maxOfHelper);
        if (lifted[i] < 0) error = errno;
    }
    if (error == 0) error = Spawn(program, arguments, lifted, count, child);
    for (const int descriptor : lifted) {
        if (descriptor >= 0) close(descriptor);
    }
    return error;
}

void EndHelper(pid_t child)
{
    // The number may be another process' by now if the host has collected the child.
    const int process = pidfd_open(child, 0);
    if (process >= 0) {
        pidfd_send_signal(process, SIGKILL, nullptr, 0);
        close(process);
    } else if (errno != ESRCH && IsRunning(child)) {
        kill(child, SIGKILL);
    }
}

void AwaitEnd(pid_t child)
{
    constexpr int longestEnd_ms = 5000;
    constexpr int step_ms = 10;
    const int process = pidfd_open(child, 0); // without one the child is looked at again and again
    int waited_ms = 0;
    while (IsRunning(child) && waited_ms < longestEnd_ms) {
        pollfd waits = {process, POLLIN, 0};
        poll(&waits, 1, step_ms);
        waited_ms += step_ms;
    }
    if (process >= 0) close(process);
    if (waited_ms < longestEnd_ms) return;
    EndHelper(child);
    while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
}

} // namespace host
