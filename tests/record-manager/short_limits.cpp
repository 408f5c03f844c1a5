// What waits for seconds in earnest is over soon in the tests; set before any case runs and any process
// forks.
#include "record-manager/limits.h"

namespace {

const bool shortened = [] {
    wbtrv::limits.ChangeWait_ms = 150;
    wbtrv::limits.LockWait_ms = 400;
    // Clients that see one another's changes at once; what is read ahead has cases of its own.
    wbtrv::limits.ReadAhead_ms = 0;
    return true;
}();

} // namespace
