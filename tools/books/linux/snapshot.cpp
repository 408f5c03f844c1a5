#include "tools/books/snapshot.h"

#include "tools/books/copy_records.h"
#include "tools/books/linux/child.h"
#include "tools/books/place.h"
#include "tools/common/table_file.h"
#include "tools/common/terminal.h"
#include "tools/common/workplace.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <lmdb.h>
#include <memory>
#include <optional>
#include <poll.h>
#include <stdexcept>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace books {

int longestStandstill_ms = 30'000;

namespace fs = std::filesystem;
using namespace tools;

namespace {

constexpr const char *booksName = "books.mdb";

// What the child ends with beside 0: whether reading or writing was the trouble, or that the store takes no
// readers who cannot write its lock file.
enum ChildEnd : int { ChildRead = 1, ChildFull = 2, ChildWrite = 3, ChildNoLock = 4 };

// Holds the directory's books open for reading while they are copied behind the record manager's back, so
// that nobody takes them for unused. It refuses what is damaged at its head, too.
std::unique_ptr<TableFile> OpenAny(const fs::path &directory)
{
    for (const TableLayout &layout : Tables()) {
        try {
            return std::make_unique<TableFile>(layout, directory, OpenMode::ReadOnly);
        } catch (const EngineError &error) {
            if (error.Status != BtrStatusFileNotFound) throw;
        }
    }
    throw std::runtime_error("In " + directory.string() + " liegen keine Bücher.");
}

// The child is known to others by a lock of its own, taken while the parent's still holds: without one,
// whoever opens the books after the parent's end would take them for unused and make their lock file anew.
bool IsPresent(const fs::path &books)
{
    const int file = open(books.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return false;
    struct flock lock = {};
    lock.l_type = F_RDLCK;
    lock.l_whence = SEEK_SET;
    lock.l_start = BtrPresenceByte;
    lock.l_len = 1;
    return fcntl(file, F_OFD_SETLK, &lock) == 0; // held until the child ends
}

int CopyInChild(const fs::path &from, int to)
{
    if (!IsPresent(from / booksName)) return ChildRead;
    MDB_env *env = nullptr;
    if (mdb_env_create(&env) != 0) return ChildRead;
    const int opened =
        mdb_env_open(env, (from / booksName).c_str(), MDB_NOSUBDIR | MDB_RDONLY | MDB_NOTLS, 0);
    if (opened != 0) return opened == EACCES || opened == EROFS ? ChildNoLock : ChildRead;
    // Page by page: each carries the record manager's sum, in which its number counts.
    const int error = mdb_env_copyfd2(env, to, 0);
    if (error == ENOSPC || error == EDQUOT || error == EFBIG) return ChildFull;
    if (error != 0) return error == EIO ? ChildWrite : ChildRead;
    return fsync(to) == 0 || errno == EINVAL ? 0 : ChildWrite;
}

// How the child ended; nothing when its file stands still, since it waits for a writer that has stopped in
// its work. The child is ended then.
std::optional<int> WaitWhileItGrows(pid_t child, int file)
{
    constexpr int step_ms = 20;
    off_t size = 0;
    for (int silence_ms = 0; silence_ms < longestStandstill_ms; silence_ms += step_ms) {
        int status = 0;
        const pid_t ended = waitpid(child, &status, WNOHANG);
        if (ended == child) return status;
        poll(nullptr, 0, step_ms);
        struct stat now = {};
        if (fstat(file, &now) == 0 && now.st_size != size) silence_ms = 0;
        size = now.st_size;
    }
    EndChild(child);
    return {};
}

} // namespace

void CopyStore(const fs::path &from, const fs::path &to)
{
    if (IsOnServer(from) || IsOnServer(to)) {
        CopyOneMoment(from, to);
        return;
    }
    const std::unique_ptr<TableFile> held = OpenAny(from);
    const fs::path target = to / booksName;
    const int file = open(target.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file < 0) ThrowFileError(target, "Schreiben", errno);
    // The store refuses to be opened twice in a process.
    const pid_t child = ForkReader();
    if (child == 0) _exit(CopyInChild(from, file));
    const std::optional<int> end = WaitWhileItGrows(child, file);
    close(file);
    ThrowIfInterrupted();
    if (!end) {
        throw std::runtime_error((from / booksName).string() +
                                 ": Wer darin schreibt, gibt die Bücher nicht frei.");
    }
    const int status = *end;
    ThrowIfChildInterrupted(status);
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return;
    if (WIFEXITED(status) && WEXITSTATUS(status) == ChildNoLock) {
        fs::remove(target);
        CopyOneMoment(from, to); // as the record manager reads for those who may only read
        return;
    }
    if (WIFEXITED(status) && WEXITSTATUS(status) == ChildFull) ThrowFileError(target, "Schreiben", ENOSPC);
    if (WIFEXITED(status) && WEXITSTATUS(status) == ChildWrite) ThrowFileError(target, "Schreiben", EIO);
    throw DamagedBooks((from / booksName).string() + ": Lesen nicht möglich, die Datei ist beschädigt");
}

} // namespace books
