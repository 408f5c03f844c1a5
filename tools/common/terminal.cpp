#include "tools/common/terminal.h"

#include "tools/common/exit_codes.h"
#include "tools/common/system.h"

#include <chrono>
#include <cstdio>
#include <iostream>

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
    : title(std::move(text)), to(stream), isTerminal(IsTerminal(stream))
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

void ThrowIfInterrupted()
{
    if (IsInterrupted()) throw Interrupted();
}

namespace {

bool answersByExitCode = false;

}

void AnswerByExitCode()
{
    answersByExitCode = true;
    OutliveClosedPipe();
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
