#include "tools/common/terminal.h"

#include "tools/common/exit_codes.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <unistd.h>

namespace tools {

namespace {

constexpr int barColumns = 40;
constexpr int64_t drawEvery_ms = 100;

int64_t Now_ms()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

} // namespace

ProgressBar::ProgressBar(std::string text, FILE *stream)
    : title(std::move(text)), to(stream), isTerminal(isatty(fileno(stream)) != 0)
{}

ProgressBar::~ProgressBar() { Hide(); }

void ProgressBar::Hide()
{
    if (isDrawn) std::fputs("\r\033[K", to);
    isDrawn = false;
}

void ProgressBar::Show(double part)
{
    if (!isTerminal) return;
    const int64_t now_ms = Now_ms();
    if (now_ms - lastDrawn_ms < drawEvery_ms && part < 1) return;
    lastDrawn_ms = now_ms;
    isDrawn = true;
    const int filled = part >= 1 ? barColumns : static_cast<int>(part * barColumns);
    std::string line = "\r" + title + " [";
    for (int i = 0; i < barColumns; ++i) {
        line += i < filled ? "█" : "·";
    }
    line += "] " + std::to_string(static_cast<int>(part * 100)) + " %\033[K";
    std::fputs(line.c_str(), to);
    std::fflush(to);
}

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

void ThrowIfInterrupted()
{
    if (IsInterrupted()) throw Interrupted();
}

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

namespace {

bool answersByExitCode = false;

}

void AnswerByExitCode()
{
    answersByExitCode = true;
    std::signal(SIGPIPE, SIG_IGN);
}

int EndOutput(const char *program, int exitCode)
{
    if (std::cout.flush() && std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return exitCode;
    std::fprintf(stderr, "%s: Die Ausgabe läßt sich nicht schreiben.%s\n", program,
                 answersByExitCode ? " Was getan ist, bleibt getan." : "");
    return answersByExitCode ? exitCode : static_cast<int>(ExitFailure);
}

std::string Grouped(int64_t number)
{
    std::string digits = std::to_string(number < 0 ? -number : number);
    for (size_t at = digits.size(); at > 3;) {
        at -= 3;
        digits.insert(at, 1, '.');
    }
    if (number < 0) digits.insert(digits.begin(), '-');
    return digits;
}

} // namespace tools
