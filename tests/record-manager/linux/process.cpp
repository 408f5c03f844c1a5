#include "tests/record-manager/process.h"

#include <csignal>
#include <cstdlib>
#include <ctime>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace wbtrvtest {

std::filesystem::path MakeDirectory(const std::filesystem::path &where)
{
    std::string pattern = (where / "wbtrv-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) abort();
    return pattern;
}

std::string UniqueName()
{
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    return "t" + std::to_string(getpid()) + "_" + std::to_string(now.tv_sec) + "_" +
           std::to_string(now.tv_nsec);
}

Partner StartPartner(void (*serve)(int from, int to))
{
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) abort();
    const pid_t process = fork();
    if (process == 0) {
        close(ends[0]);
        serve(ends[1], ends[1]);
        _exit(0);
    }
    close(ends[1]);
    return {ends[0], ends[0], process};
}

void KillPartner(Partner &partner)
{
    if (partner.Process <= 0) return;
    close(partner.From);
    kill(static_cast<pid_t>(partner.Process), SIGKILL);
    waitpid(static_cast<pid_t>(partner.Process), nullptr, 0);
    partner.Process = -1;
}

} // namespace wbtrvtest
