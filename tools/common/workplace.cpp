#include "tools/common/workplace.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tools {

namespace fs = std::filesystem;

namespace {

std::string HiddenPrefix(const fs::path &target) { return "." + target.filename().string() + ".neu-"; }

// Whoever fills a hidden file or directory holds a lock on it, which ends with its process and with nothing
// else: the number of a process may be another's meanwhile, or one of another container.
bool Lock(int file) { return flock(file, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK; }

bool IsPath(int file, const fs::path &path)
{
    struct stat open = {};
    struct stat there = {};
    return fstat(file, &open) == 0 && lstat(path.c_str(), &there) == 0 && open.st_dev == there.st_dev &&
           open.st_ino == there.st_ino;
}

void ClearLeftovers(const fs::path &parent, const std::string &prefix)
{
    std::error_code ignored;
    for (const fs::directory_entry &entry : fs::directory_iterator(parent, ignored)) {
        const std::string name = entry.path().filename().string();
        const bool isHidden = name.size() > prefix.size() && name.starts_with(prefix) &&
                              name.find_first_not_of("0123456789", prefix.size()) == std::string::npos;
        if (!isHidden) continue;
        const int file = open(entry.path().c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
        if (file < 0) continue;
        if (flock(file, LOCK_EX | LOCK_NB) == 0) fs::remove_all(entry.path(), ignored);
        close(file);
    }
}

// The name of a hidden place: that of the process, with a digit more where it is taken.
fs::path HiddenPath(const fs::path &parent, const std::string &prefix, int attempt)
{
    const std::string process = std::to_string(getpid());
    return parent / (prefix + process + (attempt > 0 ? std::to_string(attempt) : ""));
}

constexpr int attemptsMax = 100;

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
    for (int attempt = 0; lock < 0; ++attempt) {
        hidden = HiddenPath(parent, prefix, attempt);
        if (mkdir(hidden.c_str(), 0777) != 0) {
            if (errno != EEXIST || attempt == attemptsMax) ThrowFileError(target, "Anlegen", errno);
            continue;
        }
        const int file = open(hidden.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW);
        const int failed = file < 0 ? errno : EEXIST;
        // Another may have cleared it away before it was locked.
        if (file >= 0 && Lock(file) && IsPath(file, hidden)) {
            lock = file;
        } else {
            if (file >= 0) close(file);
            if (failed != EEXIST) rmdir(hidden.c_str());
            if (failed != EEXIST || attempt == attemptsMax) ThrowFileError(target, "Anlegen", failed);
        }
    }
    Path = hidden / "n";
    if (!fs::create_directory(Path, error)) {
        const int failed = error.value();
        rmdir(hidden.c_str());
        close(lock);
        ThrowFileError(target, "Anlegen", failed);
    }
}

Workplace::~Workplace()
{
    std::error_code ignored;
    fs::remove_all(hidden, ignored);
    close(lock);
}

namespace {

// Behind the step that puts something in its place. That it failed would be wrong to say.
void SyncBehind(const fs::path &target)
{
    try {
        Sync(target.parent_path());
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s steht an seinem Platz. Ob auch nach einem Stromausfall, ist ungewiß: %s\n",
                     target.c_str(), error.what());
    }
}

} // namespace

void Workplace::MoveTo(const fs::path &target)
{
    SyncTree(Path);
    std::error_code ignored;
    if (!fs::exists(target)) {
        if (renameat2(AT_FDCWD, Path.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) != 0 &&
            (errno != EINVAL || std::rename(Path.c_str(), target.c_str()) != 0)) {
            ThrowFileError(target, "Anlegen", errno);
        }
    } else {
        fs::permissions(Path, fs::status(target).permissions(), ignored);
        if (renameat2(AT_FDCWD, Path.c_str(), AT_FDCWD, target.c_str(), RENAME_EXCHANGE) != 0) {
            if (errno != EINVAL) ThrowFileError(target, "Ersetzen", errno);
            // Without an exchange there is a moment without either; what was there stays beside till the end.
            const fs::path old = hidden.string() + ".alt";
            fs::rename(target, old);
            if (std::rename(Path.c_str(), target.c_str()) != 0) {
                const int failed = errno;
                fs::rename(old, target, ignored);
                ThrowFileError(target, "Ersetzen", failed);
            }
            fs::remove_all(old, ignored);
        }
    }
    SyncBehind(target);
    fs::remove_all(hidden, ignored);
}

FileInWork::FileInWork(const fs::path &wanted, bool replace) : target(wanted), replaces(replace)
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
    const std::string prefix = HiddenPrefix(target);
    ClearLeftovers(target.parent_path(), prefix);
    for (int attempt = 0; file < 0; ++attempt) {
        const fs::path wantedPath = HiddenPath(target.parent_path(), prefix, attempt);
        file = open(wantedPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (file < 0 && (errno != EEXIST || attempt == attemptsMax))
            ThrowFileError(target, "Schreiben", errno);
        if (file >= 0 && Lock(file) && IsPath(file, wantedPath)) {
            path = wantedPath;
        } else if (file >= 0) {
            close(file);
            file = -1;
            if (attempt == attemptsMax) ThrowFileError(target, "Schreiben", EEXIST);
        }
    }
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
    SyncBehind(target);
}

} // namespace tools
