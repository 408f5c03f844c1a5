// Faults on demand between the library and the record manager.
#pragma once

#include <cstdint>
#include <functional>

namespace vark::test {

// From now on this thread's calls of the record manager are counted, and call number `n` (from 1) answers
// `status` without reaching it (a close is done all the same); 0 only counts. Calls of other threads pass.
void FailEngineCall(int n, int16_t status = 2);

// As FailEngineCall, but only calls of `operation` count.
void FailEngineOperation(uint16_t operation, int n, int16_t status);

// Right before this thread's call number `n` (from 1) of `operation`, once, `action` is done by a thread of
// its own, which is another client and has ended when the call goes on.
void DoMeanwhile(uint16_t operation, int n, std::function<void()> action);

// Ends it. Returns how many calls have been counted.
int StopEngineFaults();

// From the first of these calls on: how many files this thread's library has open, whether it is in a
// transaction, and which operation was the last that failed on demand.
int OpenEngineFiles();
bool IsInEngineTransaction();
uint16_t LastFailedOperation();

} // namespace vark::test
