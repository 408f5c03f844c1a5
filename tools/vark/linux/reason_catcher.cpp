#include "host/error_texts.h"
#include "tools/vark/reasons.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

namespace cli {

namespace {

constexpr std::string_view boxPrefix = "MERIDA: ";

void WriteAll(int file, std::string_view text)
{
    while (!text.empty()) {
        const ssize_t written = write(file, text.data(), text.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return;
        text.remove_prefix(static_cast<size_t>(written));
    }
}

// Standard error is caught once, by the outermost catcher: a thousand bookings have one around them all.
int catchers = 0;
int caught = -1; // file that stands in for standard error
int real = -1;   // standard error itself
FILE *stream = nullptr;
off_t taken = 0;    // how much of the caught text
std::string passed; // on, and not written yet

} // namespace

void UseNoWindows() { setenv("VARK_UI", "headless", 1); }

ReasonCatcher::ReasonCatcher(const std::string &file)
    : partOfFile(file.empty() ? "" : "librs: " + file + ": ")
{
    if (catchers == 0) {
        std::fflush(stderr);
        caught = memfd_create("vark-meldungen", MFD_CLOEXEC);
        if (caught < 0) return; // the lines then simply show
        taken = 0;
        real = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
        const int drawn = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
        if (drawn >= 0) stream = fdopen(drawn, "w");
        dup2(caught, STDERR_FILENO);
    }
    catches = true;
    ++catchers;
}

ReasonCatcher::~ReasonCatcher()
{
    if (!catches) return;
    Take();
    if (--catchers > 0) return;
    dup2(real, STDERR_FILENO);
    WriteAll(real, std::exchange(passed, {}));
    if (stream != nullptr) std::fclose(std::exchange(stream, nullptr));
    close(real);
    close(caught);
}

FILE *ReasonCatcher::Real() const { return stream != nullptr ? stream : stderr; }

void ReasonCatcher::Pass(const std::string &text) const
{
    passed += text;
    if (catchers <= 1) WriteAll(catches ? real : STDERR_FILENO, std::exchange(passed, {}));
}

std::string ReasonCatcher::Take()
{
    std::string reasons;
    if (!catches) return reasons;
    std::fflush(stderr);
    std::string text;
    char buffer[4096];
    for (ssize_t got; (got = pread(caught, buffer, sizeof buffer, taken)) > 0; taken += got) {
        text.append(buffer, static_cast<size_t>(got));
    }
    std::string_view rest = text;
    while (!rest.empty()) {
        const size_t end = rest.find('\n');
        std::string_view line = rest.substr(0, end);
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
        if (line.starts_with(boxPrefix)) {
            line.remove_prefix(boxPrefix.size());
            if (!reasons.empty()) reasons += ' ';
            reasons += line;
        } else if (!partOfFile.empty() && line.starts_with(partOfFile)) {
            partReason = line.substr(partOfFile.size());
        } else {
            Pass(std::string(line) + "\n");
        }
    }
    return reasons;
}

std::string ReasonCatcher::TakePartReason() { return std::exchange(partReason, {}); }

std::string GermanOf(int error) { return host::TextOfError(error).Text; }

} // namespace cli
