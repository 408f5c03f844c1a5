#include "tools/books/linux/child.h"

#include "tools/common/linux/signals.h"
#include "tools/common/terminal.h"

#include <cerrno>
#include <csignal>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace books {

namespace {

constexpr int interruptions[] = {SIGINT, SIGTERM, SIGHUP};

}

pid_t ForkReader()
{
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child < 0) throw std::runtime_error("Es läßt sich kein weiterer Prozeß starten.");
    if (child > 0) return child;
    for (const int signal : interruptions) {
        std::signal(signal, SIG_DFL);
    }
    tools::ForgetDamage();
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    // The parent may have ended before the child could ask for that signal.
    if (getppid() != parent) _exit(1);
    return 0;
}

int WaitFor(pid_t child)
{
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

void ThrowIfChildInterrupted(int status)
{
    for (const int signal : interruptions) {
        if (WIFSIGNALED(status) && WTERMSIG(status) == signal) throw tools::Interrupted();
    }
}

void EndChild(pid_t child)
{
    kill(child, SIGKILL);
    WaitFor(child);
}

} // namespace books
