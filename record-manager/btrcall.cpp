#include "record-manager/include/btrcall.h"

#include "record-manager/calls.h"
#include "record-manager/fields.h"
#include "record-manager/limits.h"

#include <cassert>
#include <cstring>

namespace wbtrv {

namespace {

LockRequest RequestOf(unsigned bias, const Client *client)
{
    switch (bias) {
    case BtrBiasWaitLock: return {LockMode::Single, true, true, limits.LockWait_ms};
    case BtrBiasLock: return {LockMode::Single, true, false, limits.MomentaryWait_ms};
    case BtrBiasWaitMultiple: return {LockMode::Multiple, true, true, limits.LockWait_ms};
    case BtrBiasMultiple: return {LockMode::Multiple, true, false, limits.MomentaryWait_ms};
    default: break;
    }
    const bool hurries = client != nullptr && client->NoRetry;
    return {LockMode::None, false, false, hurries ? limits.MomentaryWait_ms : limits.ChangeWait_ms};
}

int16_t TellVersion(const Call &call)
{
    constexpr BtrVersionBlock version{7, 0, 'W'};
    if (DataSize(call) < sizeof version) return BtrStatusDataBufferShort;
    PutField(call.Data, version);
    *call.DataLength = sizeof version;
    return BtrStatusOk;
}

int16_t Open(const Call &call)
{
    return call.PositionBlock == nullptr ? static_cast<int16_t>(BtrStatusBadPositionBlock) : OpenFile(call);
}

int16_t Close(const Call &call)
{
    const int16_t status = CloseHandle(call.On);
    std::memset(call.PositionBlock, 0, BtrPositionBlockSize);
    return status;
}

int16_t BeginExclusive(const Call &call) { return BeginTransaction(call, TransactionKind::Exclusive, false); }

int16_t BeginConcurrent(const Call &call)
{
    return BeginTransaction(call, TransactionKind::Concurrent, call.Bias == BtrBiasNoRetry);
}

int16_t End(const Call &call) { return EndTransaction(call.Caller); }

int16_t Abort(const Call &call) { return AbortTransaction(call.Caller); }

int16_t EndOfGroup(const Call &call) { return EndGroup(call.Caller); }

int16_t BeginOfSnapshot(const Call &call) { return BeginHolding(call.Caller); }

int16_t EndOfSnapshot(const Call &call) { return EndHolding(call.Caller); }

int16_t Stop(const Call &)
{
    EndClient();
    return BtrStatusOk;
}

int16_t Reset(const Call &call)
{
    ResetClient(call.Caller);
    return BtrStatusOk;
}

// What an operation needs and takes.
enum Trait : unsigned {
    NeedsFile = 1,    // an open one, whose position block is passed
    TakesBias = 2,    // of a lock
    GivesKeyOnly = 4, // with BtrBiasKeyOnly
    Changes = 8,      // the books, or begins to
    OnRecord = NeedsFile | TakesBias,
    OnKey = OnRecord | GivesKeyOnly
};

struct Operation {
    unsigned Code;
    unsigned Traits;
    int16_t (*Do)(const Call &call);
};

constexpr Operation operations[] = {
    {BtrOpOpen, 0, Open},
    {BtrOpClose, NeedsFile, Close},
    {BtrOpInsert, OnRecord | Changes, InsertRecord},
    {BtrOpUpdate, OnRecord | Changes, UpdateRecord},
    {BtrOpDelete, OnRecord | Changes, DeleteRecord},
    {BtrOpGetEqual, OnKey, ReadByKey},
    {BtrOpGetNext, OnKey, ReadByKey},
    {BtrOpGetPrevious, OnKey, ReadByKey},
    {BtrOpGetGreater, OnKey, ReadByKey},
    {BtrOpGetGreaterOrEqual, OnKey, ReadByKey},
    {BtrOpGetLess, OnKey, ReadByKey},
    {BtrOpGetLessOrEqual, OnKey, ReadByKey},
    {BtrOpGetFirst, OnKey, ReadByKey},
    {BtrOpGetLast, OnKey, ReadByKey},
    {BtrOpCreate, Changes, CreateFile},
    {BtrOpStat, NeedsFile, StatFile},
    {BtrOpBegin, TakesBias | Changes, BeginExclusive},
    {BtrOpEnd, 0, End},
    {BtrOpAbort, 0, Abort},
    {BtrOpGetPosition, NeedsFile, TellPosition},
    {BtrOpGetDirect, OnRecord, ReadDirect},
    {BtrOpStepNext, OnRecord, ReadByStep},
    {BtrOpStop, 0, Stop},
    {BtrOpVersion, 0, TellVersion},
    {BtrOpUnlock, NeedsFile, UnlockRecords},
    {BtrOpReset, 0, Reset},
    {BtrOpStepFirst, OnRecord, ReadByStep},
    {BtrOpStepLast, OnRecord, ReadByStep},
    {BtrOpStepPrevious, OnRecord, ReadByStep},
    {BtrOpBeginConcurrent, TakesBias | Changes, BeginConcurrent},
    {BtrOpBeginGroup, Changes, BeginGroup},
    {BtrOpEndGroup, 0, EndOfGroup},
    {BtrOpBeginSnapshot, 0, BeginOfSnapshot},
    {BtrOpEndSnapshot, 0, EndOfSnapshot},
    {BtrOpInsertStored, NeedsFile | Changes, InsertStored},
    {BtrOpStepNextStored, NeedsFile, StepStored},
    {BtrOpStepFirstStored, NeedsFile, StepStored},
};

const Operation *FindOperation(unsigned code)
{
    // Up to the last of the keyed reads and their neighbour a code is its place.
    if (code <= BtrOpStat) return &operations[code];
    for (const Operation &operation : operations) {
        if (operation.Code == code) return &operation;
    }
    return nullptr;
}

static_assert(operations[BtrOpOpen].Code == BtrOpOpen && operations[BtrOpStat].Code == BtrOpStat);

// Tells biases from the operation. Null for what does not exist.
const Operation *Decode(uint16_t code, Call *call)
{
    unsigned mostBias = BtrBiasMultiple;
    if (code >= BtrOpBeginGroup) {
        call->Operation = code;
    } else if (code >= BtrOpBeginConcurrent) {
        mostBias = BtrBiasNoRetry;
        call->Operation = BtrOpBeginConcurrent;
        call->Bias = code - unsigned{BtrOpBeginConcurrent};
    } else {
        call->Operation = code % 100u;
        call->Bias = code / 100 * 100u;
    }
    if (call->Bias > mostBias || call->Bias % 100 != 0) return nullptr;
    call->KeyOnly = call->Operation >= BtrBiasKeyOnly && call->Operation < 100;
    if (call->KeyOnly) call->Operation -= BtrBiasKeyOnly;
    const Operation *operation = FindOperation(call->Operation);
    if (operation == nullptr || (call->KeyOnly && (operation->Traits & GivesKeyOnly) == 0)) return nullptr;
    return call->Bias == 0 || (operation->Traits & TakesBias) != 0 ? operation : nullptr;
}

int16_t Dispatch(const Operation &operation, Call *call)
{
    const bool alters = (operation.Traits & Changes) != 0 || call->Bias != 0;
    if (call->Caller->Holds && alters) return BtrStatusNotAllowed;
    call->Lock = RequestOf(call->Bias, call->Caller);
    if ((operation.Traits & NeedsFile) != 0) {
        if (call->PositionBlock == nullptr) return BtrStatusBadPositionBlock;
        call->On = FindHandle(call->Caller, call->PositionBlock);
        if (call->On == nullptr) return BtrStatusNotOpen;
    }
    return operation.Do(*call);
}

// `client` null stands for the calling thread's.
int16_t Carry(Client *client, uint16_t code, Call *call)
{
    const Operation *operation = Decode(code, call);
    if (operation == nullptr || (operation->Do == Stop && client != nullptr)) return BtrStatusBadOperation;
    call->Caller = client != nullptr ? client : CurrentClient();
    if (call->Caller == nullptr || !IsOfThisProcess(*call->Caller)) return BtrStatusNoEngine;
    assert(BrokenInvariant(*call->Caller) == 0);
    const int16_t status = Dispatch(*operation, call);
    if (operation->Do == Stop) return status;
    ReleaseIdle(call->Caller);
    assert(BrokenInvariant(*call->Caller) == 0);
    return status;
}

// Each export has it within itself: one that called the other would do so by way of the loader.
inline int16_t CarryCall(Client *client, uint16_t operation, void *positionBlock, void *data,
                         uint32_t *dataLength, void *key, uint8_t keyLength, int8_t keyNumber)
{
    Call call{};
    call.PositionBlock = positionBlock;
    call.Data = static_cast<uint8_t *>(data);
    call.DataLength = dataLength;
    call.Key = static_cast<uint8_t *>(key);
    call.KeyLength = keyLength;
    call.KeyNumber = keyNumber;
    return Carry(client, operation, &call);
}

} // namespace

} // namespace wbtrv

int16_t BTR_CALL BTRCALL(uint16_t operation, void *positionBlock, void *data, uint32_t *dataLength, void *key,
                         uint8_t keyLength, int8_t keyNumber)
{
    return wbtrv::CarryCall(nullptr, operation, positionBlock, data, dataLength, key, keyLength, keyNumber);
}

BtrClient *BTR_CALL BtrMakeClient() { return reinterpret_cast<BtrClient *>(wbtrv::MakeClient()); }

void BTR_CALL BtrEndClient(BtrClient *client)
{
    auto *own = reinterpret_cast<wbtrv::Client *>(client);
    if (own != nullptr && wbtrv::IsOfThisProcess(*own)) wbtrv::FreeClient(own);
}

int16_t BTR_CALL BtrCallOf(BtrClient *client, uint16_t operation, void *positionBlock, void *data,
                           uint32_t *dataLength, void *key, uint8_t keyLength, int8_t keyNumber)
{
    return wbtrv::CarryCall(reinterpret_cast<wbtrv::Client *>(client), operation, positionBlock, data,
                            dataLength, key, keyLength, keyNumber);
}
