#include "record-manager/range_locks.h"

namespace wbtrv {

LockResult WaitLock(int fd, LockKind kind, int64_t offset, int64_t length, unsigned wait_ms)
{
    Patience patience = StartPatience(wait_ms);
    for (;;) {
        const LockResult result = TryLock(fd, kind, offset, length);
        if (result == LockResult::Granted || result == LockResult::Failed || !WaitMore(&patience))
            return result;
    }
}

} // namespace wbtrv
