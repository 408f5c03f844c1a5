// What goes to the terminal: a progress bar, and a quiet end when nobody reads on.
#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace tools {

// A bar on standard error or another stream, and only when that is a terminal. Gone when the work is done.
struct ProgressBar {
    explicit ProgressBar(std::string title, FILE *to = stderr);
    ~ProgressBar();
    ProgressBar(const ProgressBar &) = delete;
    ProgressBar &operator=(const ProgressBar &) = delete;

    // How much is done, 0 to 1. Cheap to call often: it draws at most ten times a second.
    void Show(double part);
    // Takes it away until it is shown again, so that a line can be written.
    void Hide();

private:
    std::string title;
    FILE *to;
    bool isTerminal;
    int64_t lastDrawn_ms = 0;
    bool isDrawn = false;
};

// From here on an interruption from the keyboard, or a request to end, is noticed by ThrowIfInterrupted, so
// that what was begun can be cleared away.
void CatchInterrupts();

struct Interrupted : std::runtime_error {
    Interrupted() : std::runtime_error("abgebrochen") {}
};

// Whether that has come; the second throws Interrupted then.
bool IsInterrupted();
void ThrowIfInterrupted();

// Copies files and directories as std::filesystem does, except that an interruption waits until that is done:
// it would cut the copy short, and be told as a failure of the disk.
void CopyFiles(const std::filesystem::path &from, const std::filesystem::path &to,
               std::filesystem::copy_options options = {});

// From here on a damaged page, which ends a program that reads it, ends it with a word and ExitFailure.
void EndWithAWordOnDamage();

// From here on a closed pipe ends the program at once and silently, as `… | head` expects of a filter; and
// from here on it does not. On Windows it never does.
void EndQuietlyOnClosedPipe();
void OutliveClosedPipe();

// For work that changes something: from here on the exit code says what became of it, whether anybody can be
// told in words or not. A closed pipe no longer ends the program.
void AnswerByExitCode();

// Writes out what is left of the output. Returns `exitCode`; where the output cannot be written, `program`
// says so, and it is ExitFailure unless AnswerByExitCode was called.
int EndOutput(const char *program, int exitCode);

// "1.234.567"
std::string Grouped(int64_t number);

} // namespace tools
