#include "src/frame/engine_calls.h"

#include "src/frame/beliefs.h"
#include "src/frame/installation.h"
#include "src/frame/record_lengths.h"

namespace vark {

std::atomic<uint32_t> RecordLengthTable[slotCount];

bool StoreHolds(const ThreadContext &context, int slot)
{
    return Holds(slot >= 0 && slot < slotCount) && Holds(context.OpenCounts[slot] >= 0) &&
           Holds(context.TransactionDepth >= 0) &&
           Holds((context.HoldOpen != 0) == (context.TransactionDepth > 0)) &&
           Holds(context.LockBias == 0 || context.LockBias == lockSingleNoWait) &&
           Holds(context.HeldReportCount == 0 || context.TransactionDepth > 0);
}

bool CodeHolds(TableKeyCode code)
{
    constexpr int8_t lastKey = 7;
    return Holds(SlotOf(code) < slotCount) && Holds(KeyNumberOf(code) >= 0 && KeyNumberOf(code) <= lastKey);
}

uint32_t LengthOf(const ThreadContext &context, int slot)
{
    Holds(slot >= 0 && slot < slotCount);
    if (slot >= SlotFree29) return context.FreeSlotLengths[slot - SlotFree29];
    return RecordLengthTable[slot].load(std::memory_order_relaxed);
}

void KeepLength(ThreadContext &context, int slot, uint32_t length)
{
    Holds(slot >= 0 && slot < slotCount);
    Holds(length <= UINT16_MAX);
    if (slot >= SlotFree29) {
        context.FreeSlotLengths[slot - SlotFree29] = length;
    } else {
        RecordLengthTable[slot].store(length, std::memory_order_relaxed);
    }
}

void FillRecordLengthTable()
{
    for (int i = 0; i < slotCount; ++i) {
        Holds(tableCatalogue[i].RecordLength <= longestRecord);
        Holds(tableCatalogue[i].Stem != nullptr);
        RecordLengthTable[i].store(tableCatalogue[i].RecordLength, std::memory_order_relaxed);
    }
}

int16_t CallEngine(uint16_t operation, PositionBlock &position, void *data, uint32_t *length, void *key,
                   int8_t keyNumber)
{
    if (!Holds(EngineEntry != nullptr) || !Holds(data != nullptr) || !Holds(key != nullptr)) {
        return statusNotReady;
    }
    uint32_t dataLength = length != nullptr ? *length : 0;
    Holds(keyNumber >= -1);
    const int16_t status = EngineEntry(operation, &position, data, &dataLength, key, longestKey, keyNumber);
    if (length != nullptr) *length = dataLength & 0xFFFF;
    return status;
}

int16_t CallSlot(ThreadContext &context, uint16_t operation, void *data, int slot, int8_t keyNumber)
{
    if (!StoreHolds(context, slot) || !Holds(data != nullptr) || !Holds(keyNumber >= 0))
        return statusNotReady;
    EngineKey key(context.KeyBuffers[slot]);
    uint32_t length = LengthOf(context, slot);
    const int16_t status =
        CallEngine(operation, context.PositionBlocks[slot], data, &length, key.Bytes, keyNumber);
    KeepLength(context, slot, length);
    return status;
}

} // namespace vark
