// System calls of the record manager and of the store below it, caught in this program: to make them fail, to
// make a local file system look like another one, and to write down what reaches the disk.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace wbtrvtest {

// What is made to fail. Counting starts with Arm and concerns the calling thread alone.
// Write: nothing is written, since the disk is full. ShortWrite: half of it is, and the disk is full from
// then on if the fault is for ever.
// Assertion: the store comes upon one of its own that is broken, in the middle of a call.
// Killed: instead of any of these the process is killed, a write being half done.
enum class Fault { None, Allocation, Write, ShortWrite, Sync, StoreCall, Assertion, Killed };

// Makes call number `nth` (from 1) of that kind fail, and with `forEver` every later one too.
void Arm(Fault fault, uint64_t nth, bool forEver = false);
// Returns how many calls were counted since Arm.
uint64_t Disarm();
// Whether the armed call was reached and failed.
bool HasFailed();
// Between these two nothing is counted, and nothing fails.
void Pause();
void Resume();

// Whether allocations can be made to fail: a sanitizer has its own.
bool CanFailAllocations();

// What file systems tell of themselves from now on; 0 again the truth.
void PretendFileSystem(uint32_t type);
// Opening for writing fails as on a medium that cannot be written.
void PretendReadOnly(bool readOnly);

// One change of a file that is recorded.
struct DiskEvent {
    enum What : uint8_t { Written, Synced, Cut, Returned } Kind;
    uint64_t Offset; // Written: where; Cut: new length; Returned: the caller's note
    std::string Data;
    bool SyncedAtOnce; // Written through a descriptor that waits for the disk
};

// Records what is done to files of this name until StopRecording.
void StartRecording(const std::string &fileName);
void Note(uint64_t what);
std::vector<DiskEvent> StopRecording();

} // namespace wbtrvtest
