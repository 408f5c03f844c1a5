#include "src/frame/record_store.h"

#include "src/frame/beliefs.h"
#include "src/frame/engine_calls.h"
#include "src/frame/held_reports.h"
#include "src/frame/open_tables.h"

#include <cstring>

namespace vark {

namespace {

// The lock bias asked for by LockNext; asking takes it away.
uint16_t TakeLockBias(ThreadContext &context)
{
    const uint16_t bias = context.LockBias;
    Holds(bias == 0 || bias == lockSingleNoWait);
    context.LockBias = 0;
    return bias;
}

void TellBiased(ThreadContext &context, int16_t status) { Tell(context, status, nullptr, true); }

bool OpenIfClosed(ThreadContext &context, TableKeyCode code)
{
    if (!CodeHolds(code)) return false;
    const bool isOpen = context.OpenCounts[SlotOf(code)] != 0 || OpenTable(context, code);
    return isOpen && Holds(context.OpenCounts[SlotOf(code)] > 0);
}

// A read without a lock of its own, for which the end of the file is no failure.
bool ReadFound(ThreadContext &context, uint16_t operation, void *data, bool &found, TableKeyCode code)
{
    found = false;
    Holds(operation < lockSingleNoWait);
    const int16_t status = CallSlot(context, operation, data, SlotOf(code), KeyNumberOf(code));
    found = status == statusOk;
    if (found || status == statusEndOfFile) return StoreHolds(context, SlotOf(code));
    Tell(context, status);
    return false;
}

bool ReadFoundByKey(ThreadContext &context, uint16_t operation, void *data, const KeyBuffer &key, bool &found,
                    TableKeyCode code)
{
    found = false;
    if (!OpenIfClosed(context, code)) return false;
    context.KeyBuffers[SlotOf(code)] = key;
    return ReadFound(context, operation, data, found, code);
}

// A read that locks if LockNext asked for it, and for which the end of the file is a silent false.
bool ReadBiased(ThreadContext &context, uint16_t operation, void *data, TableKeyCode code)
{
    const auto biased = static_cast<uint16_t>(operation + TakeLockBias(context));
    Holds(context.LockBias == 0);
    const int16_t status = CallSlot(context, biased, data, SlotOf(code), KeyNumberOf(code));
    if (status == statusOk) return StoreHolds(context, SlotOf(code));
    if (status != statusEndOfFile) TellBiased(context, status);
    return false;
}

// A write or unlock on an open table; these do not depend on a key.
bool CallAndReport(ThreadContext &context, uint16_t operation, void *data, int slot, int8_t keyNumber)
{
    const int16_t status = CallSlot(context, operation, data, slot, keyNumber);
    if (status != statusOk) Tell(context, status);
    return status == statusOk && StoreHolds(context, slot);
}

// Reads a record by its key for no more than whether it is there.
// `isLocked` tells of what somebody else has locked; null where that is a failure.
bool LookFor(ThreadContext &context, const KeyBuffer &key, bool &found, bool *isLocked, TableKeyCode code)
{
    found = false;
    if (!CodeHolds(code) || !OpenTable(context, code)) return false;
    const int slot = SlotOf(code);
    context.KeyBuffers[slot] = key;
    char scratch[longestRecord];
    const int16_t status = CallSlot(context, engineGetEqual, scratch, slot, KeyNumberOf(code));
    found = status == statusOk;
    bool read = found || status == statusKeyNotFound;
    if (isLocked != nullptr) {
        *isLocked = status == statusRecordLocked || status == statusFileLocked;
        read = read || *isLocked;
    }
    if (!read) Tell(context, status);
    CloseTable(context, slot);
    Holds(read || !found);
    Holds(isLocked == nullptr || !*isLocked || !found);
    return read && StoreHolds(context, slot);
}

} // namespace

bool GetEqual(ThreadContext &context, void *data, const KeyBuffer &key, bool &found, TableKeyCode code)
{
    found = false;
    if (!CodeHolds(code) || !OpenTable(context, code)) return false;
    const int slot = SlotOf(code);
    context.KeyBuffers[slot] = key;
    const auto biased = static_cast<uint16_t>(engineGetEqual + TakeLockBias(context));
    const int16_t status = CallSlot(context, biased, data, slot, KeyNumberOf(code));
    found = status == statusOk;
    const bool read = found || status == statusKeyNotFound;
    Holds(read || !found);
    if (!read) TellBiased(context, status);
    CloseTable(context, slot);
    return read && StoreHolds(context, slot) && Holds(context.LockBias == 0);
}

bool Exists(ThreadContext &context, const KeyBuffer &key, bool &found, TableKeyCode code)
{
    return LookFor(context, key, found, nullptr, code);
}

bool StillExists(ThreadContext &context, const KeyBuffer &key, bool &found, TableKeyCode code,
                 uint32_t position)
{
    if (!CodeHolds(code) || !OpenTable(context, code)) return false;
    Holds(context.TransactionDepth > 0);
    bool isLocked = false;
    bool read = LookFor(context, key, found, &isLocked, code);
    uint32_t now = 0;
    if (read && found && position != 0) {
        read = CurrentPosition(context, now, code);
        found = now == position;
    }
    Holds(!found || position == 0 || now == position);
    found = found || isLocked;
    CloseTable(context, SlotOf(code));
    return read && StoreHolds(context, SlotOf(code));
}

bool GetFirst(ThreadContext &context, void *data, TableKeyCode code)
{
    return OpenIfClosed(context, code) && ReadBiased(context, engineGetFirst, data, code);
}

bool GetFirstF(ThreadContext &context, void *data, bool &found, TableKeyCode code)
{
    found = false;
    return OpenIfClosed(context, code) && ReadFound(context, engineGetFirst, data, found, code);
}

bool GetNext(ThreadContext &context, void *data, TableKeyCode code)
{
    return CodeHolds(code) && ReadBiased(context, engineGetNext, data, code);
}

bool GetNextF(ThreadContext &context, void *data, bool &found, TableKeyCode code)
{
    found = false;
    return CodeHolds(code) && ReadFound(context, engineGetNext, data, found, code);
}

bool GetPreviousF(ThreadContext &context, void *data, bool &found, TableKeyCode code)
{
    found = false;
    return CodeHolds(code) && ReadFound(context, engineGetPrevious, data, found, code);
}

bool GetGreaterEqual(ThreadContext &context, void *data, const KeyBuffer &key, TableKeyCode code)
{
    if (!OpenIfClosed(context, code)) return false;
    context.KeyBuffers[SlotOf(code)] = key;
    return ReadBiased(context, engineGetGreaterEqual, data, code);
}

bool GetGreaterEqualF(ThreadContext &context, void *data, const KeyBuffer &key, bool &found,
                      TableKeyCode code)
{
    return ReadFoundByKey(context, engineGetGreaterEqual, data, key, found, code);
}

bool GetGreaterF(ThreadContext &context, void *data, const KeyBuffer &key, bool &found, TableKeyCode code)
{
    return ReadFoundByKey(context, engineGetGreater, data, key, found, code);
}

bool GetLessF(ThreadContext &context, void *data, const KeyBuffer &key, bool &found, TableKeyCode code)
{
    return ReadFoundByKey(context, engineGetLess, data, key, found, code);
}

bool GetLast(ThreadContext &context, void *data, bool &found, TableKeyCode code)
{
    found = false;
    if (!OpenIfClosed(context, code)) return false;
    const auto biased = static_cast<uint16_t>(engineGetLast + TakeLockBias(context));
    const int16_t status = CallSlot(context, biased, data, SlotOf(code), KeyNumberOf(code));
    found = status == statusOk;
    Holds(context.LockBias == 0);
    if (found || status == statusEndOfFile) return StoreHolds(context, SlotOf(code));
    TellBiased(context, status);
    return false;
}

bool Insert(ThreadContext &context, void *data, TableKeyCode code)
{
    if (!CodeHolds(code) || HasBrokenBelief(context) || !OpenTable(context, code)) return false;
    Holds(context.OpenCounts[SlotOf(code)] > 0);
    // Without a close on failure: the count stays up until the thread's tables are closed by force.
    if (!CallAndReport(context, engineInsert, data, SlotOf(code), 0)) return false;
    CloseTable(context, SlotOf(code));
    StoreHolds(context, SlotOf(code));
    return true;
}

bool InsertUnlessThere(ThreadContext &context, void *data, bool &exists, TableKeyCode code)
{
    exists = false;
    if (!CodeHolds(code) || HasBrokenBelief(context) || !OpenTable(context, code)) return false;
    const int slot = SlotOf(code);
    const int16_t status = CallSlot(context, engineInsert, data, slot, 0);
    exists = status == statusDuplicateKey;
    const bool done = status == statusOk || exists;
    Holds(context.OpenCounts[slot] > 0);
    Holds(done || !exists);
    if (!done) Tell(context, status);
    CloseTable(context, slot);
    return done && StoreHolds(context, slot);
}

bool Update(ThreadContext &context, void *data, TableKeyCode code)
{
    const int slot = SlotOf(code);
    return CodeHolds(code) && !HasBrokenBelief(context) && context.OpenCounts[slot] != 0 &&
           CallAndReport(context, engineUpdate, data, slot, KeyNumberOf(code));
}

bool Delete(ThreadContext &context, TableKeyCode code)
{
    char nothing[1] = {};
    const int slot = SlotOf(code);
    return CodeHolds(code) && !HasBrokenBelief(context) && context.OpenCounts[slot] != 0 &&
           CallAndReport(context, engineDelete, nothing, slot, 0);
}

void LockNext(ThreadContext &context)
{
    StoreHolds(context, 0);
    context.LockBias = lockSingleNoWait;
}

bool Unlock(ThreadContext &context, TableKeyCode code)
{
    char nothing[4] = {};
    return CodeHolds(code) && CallAndReport(context, engineUnlock, nothing, SlotOf(code), 0);
}

bool RereadCurrent(ThreadContext &context, TableKeyCode code)
{
    const int slot = SlotOf(code);
    if (!CodeHolds(code) || context.OpenCounts[slot] == 0) return false;
    char scratch[longestRecord];
    uint32_t positionLength = 4;
    EngineKey key(context.KeyBuffers[slot]);
    int16_t status =
        CallEngine(engineGetPosition, context.PositionBlocks[slot], scratch, &positionLength, key.Bytes, 0);
    Holds(status != statusOk || positionLength == 4);
    // The direct read takes the position from the head of the same buffer.
    if (status == statusOk) status = CallSlot(context, engineGetDirect, scratch, slot, KeyNumberOf(code));
    if (status != statusOk) Tell(context, status);
    return status == statusOk && StoreHolds(context, slot);
}

bool CurrentPosition(ThreadContext &context, uint32_t &position, TableKeyCode code)
{
    const int slot = SlotOf(code);
    if (!CodeHolds(code) || context.OpenCounts[slot] == 0) return false;
    position = 0;
    uint32_t length = sizeof position;
    EngineKey key(context.KeyBuffers[slot]);
    const int16_t status =
        CallEngine(engineGetPosition, context.PositionBlocks[slot], &position, &length, key.Bytes, 0);
    if (status != statusOk) Tell(context, status);
    return status == statusOk && Holds(position != 0) && Holds(length == sizeof position);
}

int32_t RecordCount(ThreadContext &context, TableKeyCode code)
{
    if (!CodeHolds(code) || !OpenTable(context, code)) return -1;
    const int slot = SlotOf(code);
    char answer[272] = {};
    uint32_t length = sizeof answer;
    EngineKey key(KeyBuffer{});
    const int16_t status =
        CallEngine(engineStat, context.PositionBlocks[slot], answer, &length, key.Bytes, 0);
    if (status != statusOk) Tell(context, status);
    CloseTable(context, slot);
    if (status != statusOk || !StoreHolds(context, slot)) return -1;
    Holds(length >= 10); // the number of records lies at 6
    int32_t count;
    std::memcpy(&count, answer + 6, sizeof count);
    Holds(count >= 0);
    return count;
}

KeyBuffer KeyOfNumber(int32_t number)
{
    KeyBuffer key{};
    std::memcpy(key.Bytes, &number, sizeof number);
    return key;
}

KeyBuffer KeyOfShortNumber(uint16_t first, uint16_t second)
{
    KeyBuffer key{};
    std::memcpy(key.Bytes, &first, sizeof first);
    std::memcpy(key.Bytes + sizeof first, &second, sizeof second);
    return key;
}

KeyBuffer KeyOfText(const char *text, size_t width)
{
    KeyBuffer key{};
    if (!Holds(text != nullptr) || !Holds(width > 0)) return key;
    if (width > sizeof key.Bytes) width = sizeof key.Bytes;
    std::memcpy(key.Bytes, text, strnlen(text, width - 1));
    Holds(key.Bytes[sizeof key.Bytes - 1] == 0);
    return key;
}

} // namespace vark
