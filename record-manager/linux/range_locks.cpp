// The locks of ranges as locks of open file descriptions.
#include "record-manager/range_locks.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace wbtrv {

namespace {

struct flock Range(short type, int64_t offset, int64_t length)
{
    struct flock range {};
    range.l_type = type;
    range.l_whence = SEEK_SET;
    range.l_start = offset;
    range.l_len = length;
    return range;
}

} // namespace

LockResult TryLock(int fd, LockKind kind, int64_t offset, int64_t length)
{
    const short type = kind == LockKind::Write ? F_WRLCK : F_RDLCK;
    struct flock range = Range(type, offset, length);
    if (fcntl(fd, F_OFD_SETLK, &range) == 0) return LockResult::Granted;
    if (errno != EAGAIN && errno != EACCES) return LockResult::Failed;
    range = Range(type, offset, length);
    if (fcntl(fd, F_OFD_GETLK, &range) != 0) return LockResult::Failed;
    // The ranges of two files may have grown together.
    return range.l_type != F_UNLCK && range.l_len >= wholeFile ? LockResult::FileBusy
                                                               : LockResult::RecordBusy;
}

void Unlock(int fd, int64_t offset, int64_t length)
{
    struct flock range = Range(F_UNLCK, offset, length);
    (void)fcntl(fd, F_OFD_SETLK, &range);
}

void CloseDescription(int fd) { close(fd); }

} // namespace wbtrv
