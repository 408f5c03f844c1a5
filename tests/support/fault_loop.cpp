#include "tests/support/fault_loop.h"

#include "include/vark40.h"
#include "src/frame/thread_context.h"
#include "tests/support/alloc_faults.h"
#include "tests/support/engine_faults.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <thread>

namespace vark::test {

namespace {

constexpr int32_t noContext = -42;
constexpr int mostFaults = 2000;

bool IsOneOf(const std::vector<int32_t> &codes, int32_t code)
{
    return std::find(codes.begin(), codes.end(), code) != codes.end();
}

void ExpectNothingOpen(const std::string &what)
{
    VARK_SchliesseDB();
    EXPECT_EQ(0, OpenEngineFiles()) << what;
    EXPECT_FALSE(IsInEngineTransaction()) << what;
    const ThreadContext *context = GetThreadContext();
    if (context == nullptr) return;
    EXPECT_EQ(0, context->TransactionDepth) << what;
    EXPECT_EQ(0, context->HoldOpen) << what;
    EXPECT_EQ(0, context->LockBias) << what << ": the next read would lock its record";
}

// The call with one fault, and without any behind it. Returns whether the fault was met.
bool RunOnce(const FaultLoop &loop, const std::string &what, bool ofMemory, int n, int *counted)
{
    const auto undo = [&] {
        ExpectNothingOpen(what);
        loop.Undo();
        VARK_SchliesseDB();
    };
    ofMemory ? FailAllocation(n) : FailEngineCall(n);
    const int32_t code = loop.Call();
    *counted = ofMemory ? StopAllocationFaults() : StopEngineFaults();
    const bool isExpected = code == loop.Good || IsOneOf(loop.Codes, code) || (ofMemory && code == noContext);
    EXPECT_TRUE(isExpected) << what << " gave " << code;
    loop.Judge(what, code);
    undo();
    EXPECT_EQ(loop.Good, loop.Call()) << what << ": the thread goes on as if nothing had been";
    undo();
    return n > 0 && *counted >= n;
}

// Each n in a new thread, whose end frees all that it had.
int RunEach(const FaultLoop &loop, const char *name, bool ofMemory)
{
    int counted = 0;
    for (int n = 1; n < mostFaults; ++n) {
        const std::string what = std::string(name) + " " + std::to_string(n);
        const long before = LiveAllocations();
        bool failed = false;
        std::thread([&] { failed = RunOnce(loop, what, ofMemory, n, &counted); }).join();
        EXPECT_EQ(before, LiveAllocations()) << what << " leaks memory";
        if (!failed) return counted;
    }
    ADD_FAILURE() << "there is no end of " << name;
    return counted;
}

} // namespace

int RunFaultLoop(const FaultLoop &loop)
{
    FailEngineCall(0); // the stand-in takes its place before anything is opened
    StopEngineFaults();
    const int operations = RunEach(loop, "record operation", false);
    EXPECT_GT(RunEach(loop, "allocation", true), 0) << "the thread's own state is one";
    return operations;
}

} // namespace vark::test
