// What waits for seconds in earnest is over soon in the tests. Each case begins with these limits, whatever
// the one before has set.
#include "record-manager/limits.h"

#include <gtest/gtest.h>

namespace {

const wbtrv::Limits shortened = [] {
    wbtrv::Limits limits = wbtrv::limits;
    limits.ChangeWait_ms = 150;
    limits.LockWait_ms = 400;
    // Clients that see one another's changes at once; what is read ahead has cases of its own.
    limits.ReadAhead_ms = 0;
    return limits;
}();

struct LimitsOfEachCase : testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo &) override { wbtrv::limits = shortened; }
};

// Set before any case runs and any process forks.
const bool set = [] {
    wbtrv::limits = shortened;
    testing::UnitTest::GetInstance()->listeners().Append(new LimitsOfEachCase);
    return true;
}();

} // namespace
