// The lengths of the tables' records, as the record manager has answered them.
#pragma once

#include "src/model/tables.h"

#include <atomic>
#include <cstdint>

namespace vark {

// Length of a record per table, given to the engine with each call. The engine's answer is written back, so a
// short record shortens what the next call offers. The two free slots have theirs in the ThreadContext: two
// threads may hold tables of different lengths there.
extern std::atomic<uint32_t> RecordLengthTable[slotCount];

} // namespace vark
