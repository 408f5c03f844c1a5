#include "tools/common/linux/signals.h"

#include "tools/common/exit_codes.h"
#include "tools/common/terminal.h"

#include <csignal>
#include <unistd.h>

namespace tools {

namespace {

volatile std::sig_atomic_t isInterrupted = 0;

void NoteInterrupt(int) { isInterrupted = 1; }

constexpr int interruptions[] = {SIGINT, SIGTERM, SIGHUP};

// Keeps interruptions back as long as it is there.
struct HeldInterrupts {
    sigset_t Before;

    HeldInterrupts()
    {
        sigset_t held;
        sigemptyset(&held);
        for (const int signal : interruptions) {
            sigaddset(&held, signal);
        }
        pthread_sigmask(SIG_BLOCK, &held, &Before);
    }
    HeldInterrupts(const HeldInterrupts &) = delete;
    HeldInterrupts &operator=(const HeldInterrupts &) = delete;
    ~HeldInterrupts() { pthread_sigmask(SIG_SETMASK, &Before, nullptr); }
};

} // namespace

void CatchInterrupts()
{
    for (const int signal : interruptions) {
        struct sigaction action = {};
        action.sa_handler = NoteInterrupt;
        sigemptyset(&action.sa_mask);
        sigaction(signal, &action, nullptr);
    }
}

bool IsInterrupted() { return isInterrupted != 0; }

void CopyFiles(const std::filesystem::path &from, const std::filesystem::path &to,
               std::filesystem::copy_options options)
{
    const HeldInterrupts held;
    std::filesystem::copy(from, to, options);
}

namespace {

constexpr int damageSignals[] = {SIGSEGV, SIGBUS, SIGABRT};

[[maybe_unused]] void TellDamage(int)
{
    constexpr char word[] =
        "\nbooks: Lesen abgebrochen, eine Datei ist beschädigt. Mehr dazu sagt books pruefen.\n";
    (void)!write(STDERR_FILENO, word, sizeof word - 1);
    _exit(ExitFailure);
}

} // namespace

void EndWithAWordOnDamage()
{
#ifndef __SANITIZE_ADDRESS__ // which tells more of it
    for (const int signal : damageSignals) {
        std::signal(signal, TellDamage);
    }
#endif
}

void ForgetDamage()
{
    for (const int signal : damageSignals) {
        std::signal(signal, SIG_DFL);
    }
}

void EndQuietlyOnClosedPipe() { std::signal(SIGPIPE, SIG_DFL); }

void OutliveClosedPipe() { std::signal(SIGPIPE, SIG_IGN); }

} // namespace tools
