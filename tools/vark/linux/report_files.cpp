#include "tools/vark/report_files.h"

#include "report-engine/include/rs.h"
#include "tools/common/exit_codes.h"
#include "tools/common/texts.h"
#include "tools/vark/reasons.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace cli {

namespace fs = std::filesystem;

namespace {

bool IsStandardOutput(const ReportTarget &target) { return target.Path == "-"; }

// Whether the path names something that takes bytes as they come: a pipe, a device.
bool IsStream(const ReportTarget &target)
{
    if (IsStandardOutput(target)) return true;
    struct stat status {};
    return stat(target.Path.c_str(), &status) == 0 && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode);
}

// A directory of the process's own, gone at the end.
struct Scratch {
    fs::path Path;

    Scratch()
    {
        std::string pattern = (fs::temp_directory_path() / "vark-bericht-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr)
            throw std::runtime_error("Ein Verzeichnis für Zwischendateien fehlt: " + GermanOf(errno));
        Path = pattern;
    }
    ~Scratch()
    {
        std::error_code ignored;
        fs::remove_all(Path, ignored);
    }
    Scratch(const Scratch &) = delete;
    Scratch &operator=(const Scratch &) = delete;
};

struct Descriptor {
    int Number;

    explicit Descriptor(int number) : Number(number) {}
    ~Descriptor()
    {
        if (Number >= 0) close(Number);
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
};

// Copies everything; false with the reason in errno.
bool Copy(int from, int to)
{
    char buffer[65536];
    for (;;) {
        const ssize_t got = read(from, buffer, sizeof buffer);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return got == 0;
        for (ssize_t at = 0; at < got;) {
            const ssize_t put = write(to, buffer + at, static_cast<size_t>(got - at));
            if (put < 0 && errno != EINTR) return false;
            if (put > 0) at += put;
        }
    }
}

void Export(VarkWindow view, const fs::path &path, const std::string &shownPath)
{
    ReasonCatcher catcher(path.string());
    const bool isWritten = RSExportView(view, path.c_str()) != 0;
    catcher.Take();
    if (isWritten) return;
    const std::string why = catcher.TakePartReason();
    throw std::runtime_error(shownPath + " läßt sich nicht schreiben" + (why.empty() ? "." : ": " + why));
}

} // namespace

void CheckTargets(const std::vector<ReportTarget> &targets)
{
    const ReportTarget *toOutput = nullptr;
    for (const ReportTarget &target : targets) {
        if (IsStandardOutput(target)) {
            if (toOutput != nullptr)
                throw tools::UsageError("Auf die Standardausgabe paßt eines: --" + toOutput->Kind +
                                        " oder --" + target.Kind + ". Das andere braucht eine Datei.");
            toOutput = &target;
            if (target.Kind == "pdf" && isatty(STDOUT_FILENO) != 0)
                throw tools::UsageError("--pdf braucht hier eine Datei: Ein Terminal zeigt kein PDF.");
        } else if (!IsStream(target) &&
                   tools::Lower(fs::path(target.Path).extension().string()) != "." + target.Kind) {
            throw tools::UsageError("--" + target.Kind + " braucht eine Datei auf ." + target.Kind);
        }
    }
}

void WriteTarget(VarkWindow view, const ReportTarget &target)
{
    if (!IsStream(target)) {
        Export(view, target.Path, target.Path);
        return;
    }
    const std::string shown = IsStandardOutput(target) ? "Die Standardausgabe" : target.Path;
    const Scratch scratch;
    const fs::path file = scratch.Path / ("bericht." + target.Kind);
    Export(view, file, shown);
    std::cout << std::flush;
    const Descriptor from(open(file.c_str(), O_RDONLY | O_CLOEXEC));
    const Descriptor to(IsStandardOutput(target) ? fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3)
                                                 : open(target.Path.c_str(), O_WRONLY | O_CLOEXEC));
    if (from.Number < 0 || to.Number < 0 || !Copy(from.Number, to.Number))
        throw std::runtime_error(shown + " läßt sich nicht schreiben: " + GermanOf(errno));
}

} // namespace cli
