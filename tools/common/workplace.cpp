#include "tools/common/workplace.h"

#include "tools/common/hidden_place.h"
#include "tools/common/system.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <unistd.h>

namespace tools {

namespace fs = std::filesystem;

std::string ErrorText(int error)
{
    switch (CommonError(error)) {
    case ENOENT: return "das gibt es nicht";
    case ENOTDIR: return "ein Teil des Pfads ist kein Verzeichnis";
    case EISDIR: return "das ist ein Verzeichnis";
    case EEXIST:
    case ENOTEMPTY: return "das gibt es schon";
    case EACCES:
    case EPERM: return "der Zugriff ist nicht erlaubt";
    case EROFS: return "der Datenträger läßt sich nur lesen";
    case ENOSPC:
    case EFBIG: return "der Datenträger ist voll";
    case ENAMETOOLONG: return "der Name ist zu lang";
    case EXDEV: return "das liegt auf einem anderen Datenträger";
    case EIO: return "der Datenträger meldet einen Fehler";
    default: return std::string("Fehler ") + std::to_string(error) + " (" + std::strerror(error) + ")";
    }
}

void ThrowFileError(const fs::path &path, const char *what, int error)
{
    throw std::runtime_error(path.string() + ": " + what + " nicht möglich, " + ErrorText(error));
}

std::string HiddenPrefix(const fs::path &target) { return "." + target.filename().string() + ".neu-"; }

bool IsHiddenName(const std::string &name, const std::string &prefix)
{
    return name.size() > prefix.size() && name.starts_with(prefix) &&
           name.find_first_not_of("0123456789", prefix.size()) == std::string::npos;
}

fs::path HiddenPath(const fs::path &parent, const std::string &prefix, unsigned long process, int attempt)
{
    const std::string number = std::to_string(process) + (attempt > 0 ? std::to_string(attempt) : "");
    return parent / PathOfText(prefix + number);
}

void RefuseAsOutput(const fs::path &target, bool replace)
{
    if (fs::is_directory(target)) ThrowFileError(target, "Schreiben", EISDIR);
    // Books, what guards them, and what says on which server they lie: inputs of everything here.
    const std::string name = target.filename().string();
    if (name.starts_with("books.mdb") || name == "books.server") {
        throw std::runtime_error(target.string() + " gehört zu Büchern und wird von keiner Ausgabe ersetzt.");
    }
    if (!replace && fs::exists(target)) {
        throw std::runtime_error(target.string() + " gibt es schon. Mit --ersetzen wird die Datei ersetzt.");
    }
}

void TellUncertain(const fs::path &target, const char *why)
{
    std::fprintf(stderr, "%s steht an seinem Platz. Ob auch nach einem Stromausfall, ist ungewiß: %s\n",
                 target.string().c_str(), why);
}

void FileInWork::Write(const void *data, size_t size)
{
    const auto *from = static_cast<const char *>(data);
    while (size > 0) {
        const auto written = write(file, from, size);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) ThrowFileError(target, "Schreiben", written < 0 ? errno : ENOSPC);
        from += written;
        size -= static_cast<size_t>(written);
    }
}

} // namespace tools
