#include "tools/common/workplace.h"

#include "tools/common/hidden_place.h"

#include <cerrno>
#include <cstdio>
#include <exception>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tools {

namespace fs = std::filesystem;

namespace {

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
        if (!IsHiddenName(entry.path().filename().string(), prefix)) continue;
        const int file = open(entry.path().c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
        if (file < 0) continue;
        if (flock(file, LOCK_EX | LOCK_NB) == 0) fs::remove_all(entry.path(), ignored);
        close(file);
    }
}

unsigned long OwnNumber() { return static_cast<unsigned long>(getpid()); }

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

Workplace::Workplace(const fs::path &target, const fs::path &wantedParent)
{
    const fs::path parent = wantedParent.empty() ? target.parent_path() : wantedParent;
    std::error_code error;
    fs::create_directories(parent, error);
    if (error) ThrowFileError(parent, "Anlegen", error.value());
    const std::string prefix = HiddenPrefix(target);
    ClearLeftovers(parent, prefix);
    for (int attempt = 0; lock < 0; ++attempt) {
        hidden = HiddenPath(parent, prefix, OwnNumber(), attempt);
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

void SyncBehind(const fs::path &target)
{
    try {
        Sync(target.parent_path());
    } catch (const std::exception &error) {
        TellUncertain(target, error.what());
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
    RefuseAsOutput(target, replace);
    const std::string prefix = HiddenPrefix(target);
    ClearLeftovers(target.parent_path(), prefix);
    for (int attempt = 0; file < 0; ++attempt) {
        const fs::path wantedPath = HiddenPath(target.parent_path(), prefix, OwnNumber(), attempt);
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
