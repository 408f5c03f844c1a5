#include "src/frame/record_store.h"

#include "src/frame/beliefs.h"
#include "src/frame/installation.h"
#include "src/frame/messages.h"
#include "src/platform/platform.h"
#include "text/fixed_text.h"

#include <charconv>
#include <cstdio>
#include <cstring>
#include <iterator>

namespace vark {

using text::CopyText;

std::atomic<uint32_t> RecordLengthTable[slotCount];

namespace {

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

constexpr int16_t statusOk = 0;
constexpr int16_t statusKeyNotFound = 4;
constexpr int16_t statusDuplicateKey = 5;
constexpr int16_t statusEndOfFile = 9;
constexpr int16_t statusNotReady = 20;
constexpr int16_t statusFileNotFound = 12;
constexpr int16_t statusRecordLocked = 84;
constexpr int16_t statusFileLocked = 85;

constexpr uint16_t lockSingleNoWait = 200;
constexpr size_t longestKey = 255;     // what the engine may write back into a key
constexpr size_t longestPath = 254;    // what the engine takes as a file name
constexpr size_t longestRecord = 1398; // mahntext

// What is true of a thread's tables at the beginning and end of every operation:
//   1  no table has fewer than no users
//   2  tables are held open exactly while a transaction runs
//   3  a lock is asked for without waiting, or not at all
//   4  what is to be shown is held back only while a transaction runs
//   4  a report is held back only while a transaction runs
bool StoreHolds(const ThreadContext &context, int slot)
{
    return Holds(slot >= 0 && slot < slotCount) && Holds(context.OpenCounts[slot] >= 0) &&
           Holds(context.TransactionDepth >= 0) &&
           Holds((context.HoldOpen != 0) == (context.TransactionDepth > 0)) &&
           Holds(context.HeldReportCount == 0 || context.TransactionDepth > 0) &&
           Holds(context.LockBias == 0 || context.LockBias == lockSingleNoWait) &&
           Holds(context.HeldReportCount == 0 || context.TransactionDepth > 0);
}

int SlotOf(TableKeyCode code) { return TableOf(code); }
int8_t KeyNumberOf(TableKeyCode code) { return static_cast<int8_t>(KeyOf(code)); }

// What is true of the code of a table and key: bube has the most keys.
bool CodeHolds(TableKeyCode code)
{
    constexpr int8_t lastKey = 7;
    return Holds(SlotOf(code) < slotCount) && Holds(KeyNumberOf(code) >= 0 && KeyNumberOf(code) <= lastKey);
}

// A key as the engine takes it: room for whatever it writes back.
struct EngineKey {
    char Bytes[longestKey + 1];

    explicit EngineKey(const KeyBuffer &key) : Bytes{} { std::memcpy(Bytes, key.Bytes, sizeof key.Bytes); }
};

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

// One call on a slot with the slot's own key buffer, length entry and position block.
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

// The lock bias asked for by LockNext; asking takes it away.
uint16_t TakeLockBias(ThreadContext &context)
{
    const uint16_t bias = context.LockBias;
    Holds(bias == 0 || bias == lockSingleNoWait);
    context.LockBias = 0;
    return bias;
}

void ShowReport(const HeldReport &report)
{
    Holds(report.Path[sizeof report.Path - 1] == 0);
    Holds(report.Status != statusOk);
    if (report.IsInUse && ReportLocked(report.Status)) return;
    ReportStatus(report.Status, report.Path[0] != 0 ? report.Path : nullptr);
}

// Everybody else who writes waits for an open transaction, and a box waits for a person. So what comes up
// inside is shown when the transaction is over.
void Tell(ThreadContext &context, int16_t status, const char *path = nullptr, bool isInUse = false)
{
    Holds(status != statusOk);
    Holds(context.HeldReportCount >= 0);
    HeldReport report{status, isInUse, {}};
    if (path != nullptr) CopyText(report.Path, sizeof report.Path, path, sizeof report.Path);
    if (context.TransactionDepth == 0) {
        ShowReport(report);
    } else if (context.HeldReportCount < static_cast<int32_t>(std::size(context.HeldReports))) {
        context.HeldReports[context.HeldReportCount++] = report;
    }
    Holds(context.HeldReportCount <= static_cast<int32_t>(std::size(context.HeldReports)));
}

void ShowHeldReports(ThreadContext &context)
{
    Holds(context.TransactionDepth == 0);
    const int32_t count = context.HeldReportCount;
    Holds(count >= 0 && count <= static_cast<int32_t>(std::size(context.HeldReports)));
    context.HeldReportCount = 0;
    for (int32_t i = 0; i < count; ++i) {
        ShowReport(context.HeldReports[i]);
    }
    Holds(context.HeldReportCount == 0);
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

// The directory and file of a table; false when it does not fit.
bool TablePath(const ThreadContext &context, int table, const char *yearName, char *out, size_t size)
{
    if (!Holds(table >= 0 && table < slotCount) || !Holds(size > 0)) return false;
    const char separator[2] = {pathSeparator, 0};
    const char *directory = DataPath;
    const char *before = "";
    const char *year = "";
    const char *suffix = context.MandantSuffix;
    if (context.PathOverrideOn != 0) {
        directory = context.PathOverride;
        suffix = "";
    } else if (table == 6) {
        suffix = "";
    } else if (table >= 28) {
        before = separator;
        year = context.PreviousYear;
    } else if (table >= 12) {
        before = separator;
        year = context.MandantYear;
    } else if (yearName != nullptr) {
        before = separator;
        year = yearName;
    } else {
        year = context.YearDirectory;
    }
    const int length = std::snprintf(out, size, "%s%s%s%s%s%s.btr", directory, before, year, suffix,
                                     separator, tableCatalogue[table].Stem);
    Holds(length > static_cast<int>(sizeof ".btr" - 1)); // a table has a name
    return length > 0 && static_cast<size_t>(length) < size;
}

} // namespace

bool AtRestHolds(const ThreadContext &context)
{
    return Holds(context.TransactionDepth == 0) && Holds(context.HoldOpen == 0) &&
           Holds(context.HeldReportCount == 0);
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

bool OpenTable(ThreadContext &context, TableKeyCode code, const char *yearName, int slot)
{
    const int table = SlotOf(code);
    if (slot == 0) slot = table;
    if (!CodeHolds(code) || !StoreHolds(context, slot)) return false;
    if (!Holds(slot == table || slot >= SlotFree29)) return false;
    if (context.OpenCounts[slot] == 0) {
        if (yearName != nullptr && table < 12) KeepLength(context, slot, LengthOf(context, table));
        char path[longestKey + 1] = {};
        char nothing[1] = {};
        const bool fits = TablePath(context, table, yearName, path, longestPath + 1);
        Holds(!fits || std::strlen(path) <= longestPath);
        Holds(!fits || std::strcmp(path + std::strlen(path) - 4, ".btr") == 0);
        char sent[sizeof path];
        std::memcpy(sent, path, sizeof sent);
        const int16_t status =
            fits ? CallEngine(engineOpen, context.PositionBlocks[slot], nothing, nullptr, sent, 1)
                 : statusFileNotFound;
        if (status != statusOk) {
            char shown[sizeof path];
            PathForMessage(path, shown, sizeof shown);
            Tell(context, status, shown);
            CloseTable(context, table);
            return false;
        }
    }
    ++context.OpenCounts[slot];
    return Holds(context.OpenCounts[slot] > 0);
}

bool CloseTable(ThreadContext &context, int slot)
{
    if (!StoreHolds(context, slot)) return false;
    if (context.OpenCounts[slot] == 0 || context.HoldOpen != 0) return true;
    if (--context.OpenCounts[slot] != 0) return true;
    Holds(context.OpenCounts[slot] == 0);
    char nothing[1] = {};
    EngineKey key(KeyBuffer{});
    return CallEngine(engineClose, context.PositionBlocks[slot], nothing, nullptr, key.Bytes, 0) == statusOk;
}

void ForceTableClosed(ThreadContext &context, int slot)
{
    if (!Holds(slot >= 0 && slot < slotCount) || context.OpenCounts[slot] == 0) return;
    StoreHolds(context, slot);
    context.OpenCounts[slot] = 1;
    CloseTable(context, slot);
    Holds(context.OpenCounts[slot] == 0 || context.HoldOpen != 0);
}

void CloseAllTables(ThreadContext &context)
{
    for (int slot = 0; slot < slotCount; ++slot) {
        ForceTableClosed(context, slot);
    }
    StoreHolds(context, 0);
}

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

bool Transaction(ThreadContext &context, TransactionAction action)
{
    // The engine counts a transaction by client, not by file: the position block is any.
    PositionBlock none{};
    EngineKey key(KeyBuffer{});
    char nothing[1] = {};
    const auto call = [&](uint16_t operation) {
        return CallEngine(operation, none, nothing, nullptr, key.Bytes, 0);
    };
    int16_t status = statusOk;
    StoreHolds(context, 0);
    // Nothing that was reckoned with a broken belief reaches the books.
    const bool begins = action == TransactionAction::Begin || action == TransactionAction::BeginConcurrent;
    if (HasBrokenBelief(context) && begins) return false;
    const uint16_t begin = action == TransactionAction::Begin ? engineBegin : engineBeginConcurrent;
    const bool mustUndo = HasBrokenBelief(context) && action == TransactionAction::End;
    if (mustUndo) action = TransactionAction::Abort;
    switch (action) {
    case TransactionAction::Begin:
    case TransactionAction::BeginConcurrent:
        if (context.TransactionDepth == 0) status = call(begin);
        if (status == statusOk) ++context.TransactionDepth;
        break;
    case TransactionAction::End:
        if (context.TransactionDepth == 0) break;
        if (context.TransactionDepth == 1) status = call(engineEnd);
        if (status == statusOk) --context.TransactionDepth;
        break;
    case TransactionAction::Abort:
        if (context.TransactionDepth == 0) break;
        context.TransactionDepth = 0;
        status = call(engineAbort);
        break;
    }
    if (status != statusOk) {
        call(engineAbort);
        context.TransactionDepth = 0;
    }
    Holds(action != TransactionAction::Abort || context.TransactionDepth == 0);
    Holds(!mustUndo || context.TransactionDepth == 0);
    Holds(!begins || status != statusOk || context.TransactionDepth > 0);
    context.HoldOpen = context.TransactionDepth > 0 ? 1 : 0;
    if (context.TransactionDepth == 0) ShowHeldReports(context);
    if (status != statusOk) Tell(context, status);
    StoreHolds(context, 0);
    return status == statusOk && !mustUndo;
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
