// A hidden directory is in use as long as the file in it is open, a hidden file as long as it is open itself:
// nobody else can open what is not shared, and the system closes it whatever becomes of the process.
#include "tools/common/workplace.h"

#include "tools/common/hidden_place.h"
#include "tools/common/windows/handles.h"

#include <cerrno>
#include <fcntl.h>
#include <io.h>
#include <windows.h>

namespace tools {

namespace fs = std::filesystem;

namespace {

constexpr const char *lockName = "in-arbeit";

// A file for this process alone, by the number that the C runtime gives it; below 0 on failure, with errno.
int OpenAlone(const fs::path &path, DWORD access, DWORD disposition, DWORD flags)
{
    HANDLE opened = CreateFileW(path.c_str(), access, 0, nullptr, disposition, flags, nullptr);
    if (opened == INVALID_HANDLE_VALUE) {
        errno = LastErrno();
        return -1;
    }
    const int file = _open_osfhandle(reinterpret_cast<intptr_t>(opened), _O_BINARY);
    if (file < 0) CloseHandle(opened);
    return file;
}

// Below 0 where the directory is gone or another holds it.
int LockDirectory(const fs::path &hidden)
{
    return OpenAlone(hidden / lockName, GENERIC_WRITE | DELETE, CREATE_NEW,
                     FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE);
}

void ClearDirectory(const fs::path &hidden, int lock)
{
    std::error_code ignored;
    for (const fs::directory_entry &entry : fs::directory_iterator(hidden, ignored)) {
        if (entry.path().filename() != lockName) fs::remove_all(entry.path(), ignored);
    }
    _close(lock);
    fs::remove(hidden, ignored);
}

void ClearLeftovers(const fs::path &parent, const std::string &prefix)
{
    std::error_code ignored;
    for (const fs::directory_entry &entry : fs::directory_iterator(parent, ignored)) {
        if (!IsHiddenName(entry.path().filename().string(), prefix)) continue;
        const bool isDirectory = entry.is_directory(ignored);
        const int file = isDirectory
                             ? LockDirectory(entry.path())
                             : OpenAlone(entry.path(), DELETE, OPEN_EXISTING, FILE_FLAG_DELETE_ON_CLOSE);
        if (file < 0) continue;
        if (isDirectory) {
            ClearDirectory(entry.path(), file);
        } else {
            _close(file);
        }
    }
}

void SyncTree(const fs::path &path)
{
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(path)) {
        if (!entry.is_regular_file()) continue;
        HANDLE file = CreateFileW(entry.path().c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                  nullptr, OPEN_EXISTING, 0, nullptr);
        if (file == INVALID_HANDLE_VALUE) ThrowFileError(entry.path(), "Schreiben", LastErrno());
        const bool isSynced = FlushFileBuffers(file) != 0;
        const int failed = isSynced ? 0 : LastErrno();
        CloseHandle(file);
        if (!isSynced) ThrowFileError(entry.path(), "Schreiben", failed);
    }
}

// Whoever looks through new files, for viruses or words, has them open for a moment.
bool Move(const fs::path &from, const fs::path &to, DWORD flags)
{
    constexpr int attempts = 20;
    constexpr DWORD pause_ms = 50;
    for (int i = 0;; ++i) {
        if (MoveFileExW(from.c_str(), to.c_str(), flags | MOVEFILE_WRITE_THROUGH)) return true;
        const DWORD error = GetLastError();
        const bool mayPass = error == ERROR_ACCESS_DENIED || error == ERROR_SHARING_VIOLATION;
        if (!mayPass || i == attempts) return false;
        Sleep(pause_ms);
    }
}

} // namespace

Workplace::Workplace(const fs::path &target, const fs::path &wantedParent)
{
    const fs::path parent = wantedParent.empty() ? target.parent_path() : wantedParent;
    std::error_code error;
    fs::create_directories(parent, error);
    if (error) ThrowFileError(parent, "Anlegen", error.default_error_condition().value());
    const std::string prefix = HiddenPrefix(target);
    ClearLeftovers(parent, prefix);
    for (int attempt = 0; lock < 0; ++attempt) {
        hidden = HiddenPath(parent, prefix, GetCurrentProcessId(), attempt);
        if (!CreateDirectoryW(hidden.c_str(), nullptr)) {
            const int failed = LastErrno();
            if (failed != EEXIST || attempt == attemptsMax) ThrowFileError(target, "Anlegen", failed);
            continue;
        }
        // Another may have cleared it away before it was locked.
        lock = LockDirectory(hidden);
        if (lock < 0 && attempt == attemptsMax) ThrowFileError(target, "Anlegen", errno);
    }
    Path = hidden / "n";
    if (fs::create_directory(Path, error)) return;
    const int failed = error.default_error_condition().value();
    ClearDirectory(hidden, lock);
    ThrowFileError(target, "Anlegen", failed);
}

Workplace::~Workplace() { ClearDirectory(hidden, lock); }

void Workplace::MoveTo(const fs::path &target)
{
    SyncTree(Path);
    if (!fs::exists(target)) {
        if (!Move(Path, target, 0)) ThrowFileError(target, "Anlegen", LastErrno());
        return;
    }
    // There is a moment without either; what was there stays beside till the end.
    fs::path old = hidden;
    old += ".alt";
    if (!Move(target, old, 0)) ThrowFileError(target, "Ersetzen", LastErrno());
    if (!Move(Path, target, 0)) {
        const int failed = LastErrno();
        (void)Move(old, target, 0);
        ThrowFileError(target, "Ersetzen", failed);
    }
    std::error_code ignored;
    fs::remove_all(old, ignored);
}

FileInWork::FileInWork(const fs::path &wanted, bool replace) : target(wanted), replaces(replace)
{
    RefuseAsOutput(target, replace);
    const std::string prefix = HiddenPrefix(target);
    ClearLeftovers(target.parent_path(), prefix);
    for (int attempt = 0; file < 0; ++attempt) {
        path = HiddenPath(target.parent_path(), prefix, GetCurrentProcessId(), attempt);
        file = OpenAlone(path, GENERIC_WRITE, CREATE_NEW, FILE_ATTRIBUTE_NORMAL);
        if (file < 0 && (errno != EEXIST || attempt == attemptsMax)) {
            path.clear();
            ThrowFileError(target, "Schreiben", errno);
        }
    }
}

FileInWork::~FileInWork()
{
    if (file >= 0) _close(file);
    std::error_code ignored;
    if (!path.empty()) fs::remove(path, ignored);
}

void FileInWork::Finish()
{
    const int synced = _commit(file) == 0 ? 0 : errno;
    const int closed = _close(file) == 0 ? 0 : errno;
    file = -1;
    if (synced != 0 || closed != 0) ThrowFileError(target, "Schreiben", synced != 0 ? synced : closed);
    if (!Move(path, target, replaces ? MOVEFILE_REPLACE_EXISTING : 0))
        ThrowFileError(target, "Schreiben", LastErrno());
    path.clear();
}

} // namespace tools
