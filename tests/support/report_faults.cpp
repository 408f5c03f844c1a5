#include "tests/support/report_faults.h"

#include "tests/support/alloc_faults.h"
#include "tests/support/engine_faults.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace vark::test {

namespace {

constexpr int mostCalls = 2000;

// One call, and what there is to say of it. True if the report came about.
bool CallOnce(const ReportFaults &faults, const Lines &whole, const std::string &what)
{
    faults.Sent->Calls.clear();
    faults.Installation->TakeBoxes();
    ReportParams params = faults.Params;
    params.ViewResult = 7;
    const bool isShown = faults.Call(&params) != nullptr;
    const int record = StopEngineFaults();
    const int allocation = StopAllocationFaults();
    EXPECT_GE(record + allocation, 0);
    const Lines boxes = faults.Installation->TakeBoxes();
    const Lines &calls = faults.Sent->Calls;
    const bool isDone = isShown || uint32_t{params.ViewResult} == 1;
    if (isDone) {
        EXPECT_EQ(whole, calls) << what;
        EXPECT_EQ(1u, uint32_t{params.ViewResult}) << what;
        return true;
    }
    const bool wasOpened = std::any_of(calls.begin(), calls.end(),
                                       [](const std::string &call) { return call.starts_with("open "); });
    const auto told = std::count(boxes.begin(), boxes.end(), faults.Failure);
    EXPECT_EQ(wasOpened ? 1 : 0, told) << what;
    if (wasOpened) {
        EXPECT_EQ("close 7", calls.back()) << what;
    }
    faults.Judge();
    return false;
}

// Closes what the thread keeps open between exports; nothing else may be.
void ExpectClosed(const std::string &what)
{
    VARK_SchliesseDB();
    EXPECT_EQ(0, OpenEngineFiles()) << what;
}

} // namespace

void ExpectWholeOrNotThere(const ReportFaults &faults)
{
    faults.Sent->Calls.clear();
    ReportParams params = faults.Params;
    faults.Call(&params);
    ASSERT_EQ(1u, uint32_t{params.ViewResult}) << "without a fault";
    const Lines whole = faults.Sent->Calls;
    VARK_SchliesseDB();

    const auto isRecord = [](const std::string &call) { return call[0] >= '0' && call[0] <= '8'; };
    const auto records = static_cast<int>(std::count_if(whole.begin(), whole.end(), isRecord));
    for (int n = 0; n < records; ++n) {
        const std::string what = "record " + std::to_string(n);
        faults.Sent->RecordsUntilRefusal = n;
        EXPECT_FALSE(CallOnce(faults, whole, what)) << what;
        ExpectClosed(what);
    }
    faults.Sent->RecordsUntilRefusal = -1;

    FailEngineCall(0);
    params = faults.Params;
    faults.Call(&params);
    const int operations = StopEngineFaults();
    VARK_SchliesseDB();
    ASSERT_LT(operations, mostCalls) << "the case is too large to try every record operation";
    int failed = 0;
    for (int n = 1; n <= operations; ++n) {
        const std::string what = "record operation " + std::to_string(n);
        FailEngineCall(n, 2);
        failed += CallOnce(faults, whole, what) ? 0 : 1;
        ExpectClosed(what);
    }
    EXPECT_GT(failed, operations / 2) << "only closes and what is passed over may fail unnoticed";

    FailAllocation(0);
    params = faults.Params;
    faults.Call(&params);
    const int allocations = StopAllocationFaults();
    VARK_SchliesseDB();
    ASSERT_LT(allocations, mostCalls) << "the case is too large to try every allocation";
    for (int n = 1; n <= allocations; ++n) {
        const std::string what = "allocation " + std::to_string(n);
        FailAllocation(n);
        CallOnce(faults, whole, what);
        ExpectClosed(what);
    }
}

} // namespace vark::test
