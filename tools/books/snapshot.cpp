#include "tools/books/snapshot.h"

#include "tools/books/child.h"
#include "tools/books/place.h"
#include "tools/common/table_file.h"
#include "tools/common/terminal.h"
#include "tools/common/workplace.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <lmdb.h>
#include <memory>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace books {

namespace fs = std::filesystem;
using namespace tools;

namespace {

constexpr const char *booksName = "books.mdb";

// What the child ends with beside 0: whether reading or writing was the trouble.
enum ChildEnd : int { ChildRead = 1, ChildFull = 2, ChildWrite = 3 };

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
    if (mdb_env_open(env, (from / booksName).c_str(), MDB_NOSUBDIR | MDB_RDONLY | MDB_NOTLS, 0) != 0) {
        return ChildRead;
    }
    // Page by page: each carries the record manager's sum, in which its number counts.
    const int error = mdb_env_copyfd2(env, to, 0);
    if (error == ENOSPC || error == EDQUOT || error == EFBIG) return ChildFull;
    if (error != 0) return error == EIO ? ChildWrite : ChildRead;
    return fsync(to) == 0 || errno == EINVAL ? 0 : ChildWrite;
}

} // namespace

namespace {

// Record by record, all tables as they stand at one moment. Duplicates of a key come in the order of their
// records' numbers.
void CopyRecords(const fs::path &from, const fs::path &to)
{
    EngineClient reader;
    reader.BeginSnapshot();
    bool copied = false;
    for (const TableLayout &layout : Tables()) {
        std::unique_ptr<TableFile> source;
        try {
            source = std::make_unique<TableFile>(layout, from, OpenMode::ReadOnly, &reader);
        } catch (const EngineError &error) {
            if (error.Status != BtrStatusFileNotFound) throw;
            continue;
        }
        CreateTable(layout, to);
        TableFile target(layout, to, OpenMode::Accelerated);
        std::vector<char> record(layout.RecordLength);
        for (bool found = source->StepFirst(record.data()); found; found = source->StepNext(record.data())) {
            ThrowIfInterrupted();
            target.Insert(record.data());
        }
        target.Close();
        copied = true;
    }
    if (!copied) throw std::runtime_error("In " + from.string() + " liegen keine Bücher.");
}

} // namespace

void CopyStore(const fs::path &from, const fs::path &to)
{
    if (IsOnServer(from) || IsOnServer(to)) {
        CopyRecords(from, to);
        return;
    }
    const std::unique_ptr<TableFile> held = OpenAny(from);
    const fs::path target = to / booksName;
    const int file = open(target.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file < 0) ThrowFileError(target, "Schreiben", errno);
    // The store refuses to be opened twice in a process.
    const pid_t child = ForkReader();
    if (child == 0) _exit(CopyInChild(from, file));
    close(file);
    const int status = WaitFor(child);
    ThrowIfInterrupted();
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return;
    if (WIFEXITED(status) && WEXITSTATUS(status) == ChildFull) ThrowFileError(target, "Schreiben", ENOSPC);
    if (WIFEXITED(status) && WEXITSTATUS(status) == ChildWrite) ThrowFileError(target, "Schreiben", EIO);
    throw DamagedBooks((from / booksName).string() + ": Lesen nicht möglich, die Datei ist beschädigt");
}

} // namespace books
