// Calls of the record manager: operations, statuses, and how a thread's tables are handed to it.
#pragma once

#include "src/frame/thread_context.h"
#include "src/model/tables.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vark {

enum EngineOperation : uint16_t {
    engineOpen = 0,
    engineClose = 1,
    engineInsert = 2,
    engineUpdate = 3,
    engineDelete = 4,
    engineGetEqual = 5,
    engineGetNext = 6,
    engineGetPrevious = 7,
    engineGetGreater = 8,
    engineGetGreaterEqual = 9,
    engineGetLess = 10,
    engineGetFirst = 12,
    engineGetLast = 13,
    engineStat = 15,
    engineBegin = 19,
    engineEnd = 20,
    engineAbort = 21,
    engineGetPosition = 22,
    engineGetDirect = 23,
    engineUnlock = 27,
    engineBeginConcurrent = 1019,
};

inline constexpr int16_t statusOk = 0;
inline constexpr int16_t statusKeyNotFound = 4;
inline constexpr int16_t statusDuplicateKey = 5;
inline constexpr int16_t statusEndOfFile = 9;
inline constexpr int16_t statusNotReady = 20;
inline constexpr int16_t statusFileNotFound = 12;
inline constexpr int16_t statusRecordLocked = 84;
inline constexpr int16_t statusFileLocked = 85;

inline constexpr uint16_t lockSingleNoWait = 200;
inline constexpr size_t longestKey = 255;     // what the engine may write back into a key
inline constexpr size_t longestRecord = 1398; // mahntext

// Lays RecordLengthTable (record_lengths.h) down.
void FillRecordLengthTable();

// The length that the slot is called with, and the one that the engine answered.
uint32_t LengthOf(const ThreadContext &context, int slot);
void KeepLength(ThreadContext &context, int slot, uint32_t length);

inline int SlotOf(TableKeyCode code) { return TableOf(code); }
inline int8_t KeyNumberOf(TableKeyCode code) { return static_cast<int8_t>(KeyOf(code)); }

// What is true of a thread's tables at the beginning and end of every operation:
//   1  no table has fewer than no users
//   2  tables are held open exactly while a transaction runs
//   3  a lock is asked for without waiting, or not at all
//   4  a report is held back only while a transaction runs
bool StoreHolds(const ThreadContext &context, int slot);

// What is true of the code of a table and key: bube has the most keys.
bool CodeHolds(TableKeyCode code);

// A key as the engine takes it: room for whatever it writes back.
struct EngineKey {
    char Bytes[longestKey + 1];

    explicit EngineKey(const KeyBuffer &key) : Bytes{} { std::memcpy(Bytes, key.Bytes, sizeof key.Bytes); }
};

// One call of the engine. `length` may be null, which the engine sees as 0; of its answer
// only the low 16 bits are written back. `key` needs room for 255 bytes. Returns the engine's status.
int16_t CallEngine(uint16_t operation, PositionBlock &position, void *data, uint32_t *length, void *key,
                   int8_t keyNumber);

// One call on a slot with the slot's own key buffer, length entry and position block.
int16_t CallSlot(ThreadContext &context, uint16_t operation, void *data, int slot, int8_t keyNumber);

} // namespace vark
