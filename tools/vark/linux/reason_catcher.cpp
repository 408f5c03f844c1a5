#include "host/error_texts.h"
#include "tools/vark/reasons.h"

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
        if (written <= 0) return;
        text.remove_prefix(static_cast<size_t>(written));
    }
}

} // namespace

void UseNoWindows() { setenv("VARK_UI", "headless", 1); }

ReasonCatcher::ReasonCatcher(const std::string &file)
    : partOfFile(file.empty() ? "" : "librs: " + file + ": ")
{
    std::fflush(stderr);
    caught = memfd_create("vark-meldungen", MFD_CLOEXEC);
    if (caught < 0) return; // the lines then simply show
    real = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
    const int drawn = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
    if (drawn >= 0) stream = fdopen(drawn, "w");
    dup2(caught, STDERR_FILENO);
}

ReasonCatcher::~ReasonCatcher()
{
    if (caught < 0) return;
    Take();
    std::fflush(stderr);
    dup2(real, STDERR_FILENO);
    if (stream != nullptr) std::fclose(stream);
    close(real);
    close(caught);
}

void ReasonCatcher::Pass(const std::string &text) const { WriteAll(caught < 0 ? STDERR_FILENO : real, text); }

std::string ReasonCatcher::Take()
{
    std::string reasons;
    if (caught < 0) return reasons;
    std::fflush(stderr);
    std::string text;
    char buffer[4096];
    for (ssize_t got; (got = pread(caught, buffer, sizeof buffer, read)) > 0; read += got) {
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
            WriteAll(real, std::string(line) + "\n");
        }
    }
    return reasons;
}

std::string ReasonCatcher::TakePartReason() { return std::exchange(partReason, {}); }

std::string GermanOf(int error) { return host::TextOfError(error).Text; }

} // namespace cli
