#include "tools/books/apart.h"

#include "tools/books/linux/child.h"
#include "tools/common/terminal.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <iostream>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace books {

namespace {

// Takes everything from the pipe until its end.
void Listen(int from, const std::function<void(std::string_view told)> &listen)
{
    char buffer[65536];
    for (;;) {
        const ssize_t got = read(from, buffer, sizeof buffer);
        if (got < 0 && errno == EINTR) {
            tools::ThrowIfInterrupted();
            continue;
        }
        if (got <= 0) return;
        listen({buffer, static_cast<size_t>(got)});
    }
}

} // namespace

ReadingEnd ReadApart(const Reading &reading, const std::function<void(std::string_view told)> &listen)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("Es läßt sich kein weiterer Prozeß starten.");
    std::cout << std::flush;
    const pid_t child = ForkReader();
    if (child == 0) {
        close(ends[0]);
        ReadHere(reading, ends[1]);
        _exit(0);
    }
    close(ends[1]);
    try {
        Listen(ends[0], listen);
    } catch (...) {
        close(ends[0]);
        EndChild(child);
        throw;
    }
    close(ends[0]);
    const int status = WaitFor(child);
    ThrowIfChildInterrupted(status);
    const bool isWhole = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    return {isWhole, WIFSIGNALED(status) ? strsignal(WTERMSIG(status)) : ""};
}

bool ReadsApart(int, const char *const *) { return false; }

} // namespace books
