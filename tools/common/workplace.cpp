#include "tools/common/workplace.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <unistd.h>

namespace tools {

namespace fs = std::filesystem;

namespace {

std::string HiddenPrefix(const fs::path &target) { return "." + target.filename().string() + ".neu-"; }

// Leftovers carry the number of the process that made them; one that is no more cannot want its own any
// longer.
void ClearLeftovers(const fs::path &parent, const std::string &prefix)
{
    std::error_code ignored;
    for (const fs::directory_entry &entry : fs::directory_iterator(parent, ignored)) {
        const std::string name = entry.path().filename().string();
        if (!name.starts_with(prefix)) continue;
        int process = 0;
        const char *const end = name.data() + name.size();
        const auto [rest, error] = std::from_chars(name.data() + prefix.size(), end, process);
        if (error == std::errc() && rest == end && process > 0 && kill(process, 0) != 0 && errno == ESRCH) {
            fs::remove_all(entry.path(), ignored);
        }
    }
}

void Sync(const fs::path &path)
{
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (file < 0) return; // a link, or nothing that can be read: nothing of ours
    const int error = fsync(file) == 0 ? 0 : errno;
    close(file);
    if (error != 0 && error != EINVAL && error != EROFS) ThrowFileError(path, "Schreiben", error);
}

void SyncTree(const fs::path &path)
{
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(path)) {
        Sync(entry.path());
    }
    Sync(path);
}

} // namespace

std::string ErrorText(int error)
{
    switch (error) {
    case ENOENT: return "das gibt es nicht";
    case ENOTDIR: return "ein Teil des Pfads ist kein Verzeichnis";
    case EISDIR: return "das ist ein Verzeichnis";
    case EEXIST:
    case ENOTEMPTY: return "das gibt es schon";
    case EACCES:
    case EPERM: return "der Zugriff ist nicht erlaubt";
    case EROFS: return "der Datenträger läßt sich nur lesen";
    case ENOSPC:
    case EDQUOT:
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

Workplace::Workplace(const fs::path &target, const fs::path &wantedParent)
{
    const fs::path parent = wantedParent.empty() ? target.parent_path() : wantedParent;
    std::error_code error;
    fs::create_directories(parent, error);
    if (error) ThrowFileError(parent, "Anlegen", error.value());
    const std::string prefix = HiddenPrefix(target);
    ClearLeftovers(parent, prefix);
    const fs::path path = parent / (prefix + std::to_string(getpid()));
    fs::remove_all(path, error);
    if (!fs::create_directory(path, error)) ThrowFileError(target, "Anlegen", error.value());
    Path = path;
}

Workplace::~Workplace()
{
    std::error_code ignored;
    if (!Path.empty()) fs::remove_all(Path, ignored);
}

void Workplace::MoveTo(const fs::path &target)
{
    SyncTree(Path);
    std::error_code ignored;
    if (!fs::exists(target)) {
        if (renameat2(AT_FDCWD, Path.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) != 0 &&
            (errno != EINVAL || std::rename(Path.c_str(), target.c_str()) != 0)) {
            ThrowFileError(target, "Anlegen", errno);
        }
        Path.clear();
    } else {
        fs::permissions(Path, fs::status(target).permissions(), ignored);
        if (renameat2(AT_FDCWD, Path.c_str(), AT_FDCWD, target.c_str(), RENAME_EXCHANGE) != 0) {
            if (errno != EINVAL) ThrowFileError(target, "Ersetzen", errno);
            // Without an exchange there is a moment without either; what was there stays beside till the end.
            const fs::path old = Path.string() + ".alt";
            fs::rename(target, old);
            fs::rename(Path, target);
            Path = old;
        }
    }
    Sync(target.parent_path());
    if (!Path.empty()) fs::remove_all(Path, ignored);
    Path.clear();
}

FileInWork::FileInWork(const fs::path &wanted, bool replace) : target(wanted), replaces(replace)
{
    if (fs::is_directory(target)) ThrowFileError(target, "Schreiben", EISDIR);
    if (!replace && fs::exists(target)) {
        throw std::runtime_error(target.string() + " gibt es schon. Mit --ersetzen wird die Datei ersetzt.");
    }
    const std::string prefix = HiddenPrefix(target);
    ClearLeftovers(target.parent_path(), prefix);
    path = target.parent_path() / (prefix + std::to_string(getpid()));
    file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0666);
    if (file < 0) ThrowFileError(target, "Schreiben", errno);
}

FileInWork::~FileInWork()
{
    if (file >= 0) close(file);
    std::error_code ignored;
    if (!path.empty()) fs::remove(path, ignored);
}

void FileInWork::Write(const void *data, size_t size)
{
    const auto *from = static_cast<const char *>(data);
    while (size > 0) {
        const ssize_t written = write(file, from, size);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) ThrowFileError(target, "Schreiben", written < 0 ? errno : ENOSPC);
        from += written;
        size -= static_cast<size_t>(written);
    }
}

void FileInWork::Finish()
{
    const int synced = fsync(file) == 0 || errno == EINVAL ? 0 : errno;
    const int closed = close(file) == 0 ? 0 : errno;
    file = -1;
    if (synced != 0 || closed != 0) ThrowFileError(target, "Schreiben", synced != 0 ? synced : closed);
    const unsigned flags = replaces ? 0 : RENAME_NOREPLACE;
    if (renameat2(AT_FDCWD, path.c_str(), AT_FDCWD, target.c_str(), flags) != 0 &&
        (errno != EINVAL || std::rename(path.c_str(), target.c_str()) != 0)) {
        ThrowFileError(target, "Schreiben", errno);
    }
    path.clear();
    Sync(target.parent_path());
}

} // namespace tools
