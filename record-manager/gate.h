// The gate before the one writer of a directory: the store's own wait for it has no end, this one has. It
// lies in a file of its own, is shared by all processes, and opens by itself when its holder dies.
#pragma once

#include <cstdint>

namespace wbtrv {

struct Gate;
struct WaitTable;

// Maps the gate file of the directory `directoryFd`. With `fresh` the caller is the only user of the
// directory and the gate is laid anew; otherwise it must exist. Returns 0, 2 (vanished, not ours), 18 or 94.
int16_t OpenGate(int directoryFd, bool fresh, Gate **gate);

// Unmaps the gate; its file stays.
void CloseGate(Gate *gate);

// The table of those who wait for records of this directory.
WaitTable *WaitsOf(Gate *gate);

// Waits up to `wait_ms` for the gate, which is entered in the order of the calls. `exclusive` is told to who
// waits in vain. Returns 0; 84, or 85 when the holder is in an exclusive transaction; 2 when the gate is
// broken.
int16_t EnterGate(Gate *gate, unsigned wait_ms, bool exclusive);

// How many stand in the queue, with those who died there and were not passed yet.
unsigned CountWaiting(Gate *gate);

// Only by the thread that entered.
void LeaveGate(Gate *gate);

} // namespace wbtrv
