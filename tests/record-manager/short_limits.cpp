// What waits for seconds in earnest is over soon in the tests; set before any case runs and any process
// forks.
#include "record-manager/limits.h"

namespace {

const bool shortened = [] {
    wbtrv::limits.ChangeWait_ms = 150;
    wbtrv::limits.LockWait_ms = 400;
    return true;
}();

} // namespace
