// A call under every fault: the n-th record operation fails, and then the n-th allocation, for n = 1, 2, …
// until none fails any more. Each time on a thread of its own, which must leave nothing behind: no table, no
// transaction, no lock asked for, no memory.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace vark::test {

struct FaultLoop {
    std::function<int32_t()> Call;
    int32_t Good = 1;           // its code when nothing fails
    std::vector<int32_t> Codes; // its other codes; -42 may come with any fault of memory
    // Brings the books back to what they were. All tables are closed before, and after it.
    std::function<void()> Undo = [] {};
    // Looks at the books after a call and before they are brought back.
    std::function<void(const std::string &what, int32_t code)> Judge = [](const std::string &, int32_t) {};
};

// Runs it, with everything that is not in order as a failure of the test. Returns the record operations that
// the undisturbed call makes.
int RunFaultLoop(const FaultLoop &loop);

} // namespace vark::test
