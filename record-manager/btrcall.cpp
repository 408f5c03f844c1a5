#include "record-manager/btrcall.h"

#include "record-manager/calls.h"
#include "record-manager/limits.h"

#include <cstring>

namespace wbtrv {

namespace {

bool IsKeyedRead(unsigned operation) { return operation >= BtrOpGetEqual && operation <= BtrOpGetLast; }

bool IsStep(unsigned operation)
{
    return operation == BtrOpStepNext || (operation >= BtrOpStepFirst && operation <= BtrOpStepPrevious);
}

bool TakesLock(unsigned operation)
{
    return IsKeyedRead(operation) || IsStep(operation) || operation == BtrOpGetDirect ||
           operation == BtrOpInsert || operation == BtrOpUpdate || operation == BtrOpDelete;
}

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
    memcpy(call.Data, &version, sizeof version);
    *call.DataLength = sizeof version;
    return BtrStatusOk;
}

// Operations on an open file.
int16_t CallOpen(const Call &call)
{
    switch (call.Operation) {
    case BtrOpClose: {
        const int16_t status = CloseHandle(call.On);
        memset(call.PositionBlock, 0, BtrPositionBlockSize);
        return status;
    }
    case BtrOpInsert: return InsertRecord(call);
    case BtrOpUpdate: return UpdateRecord(call);
    case BtrOpDelete: return DeleteRecord(call);
    case BtrOpStat: return StatFile(call);
    case BtrOpGetPosition: return TellPosition(call);
    case BtrOpGetDirect: return ReadDirect(call);
    case BtrOpUnlock: return UnlockRecords(call);
    default: break;
    }
    if (IsKeyedRead(call.Operation)) return ReadByKey(call);
    if (IsStep(call.Operation)) return ReadByStep(call);
    return BtrStatusBadOperation;
}

// Tells biases from the operation. False for what does not exist.
bool Decode(uint16_t code, Call *call, unsigned *bias)
{
    if (code == BtrOpBeginGroup || code == BtrOpEndGroup) {
        call->Operation = code;
        return true;
    }
    if (code >= 1000) {
        *bias = code - BtrOpBeginConcurrent;
        call->Operation = BtrOpBeginConcurrent;
        return code >= BtrOpBeginConcurrent && *bias % 100 == 0 && *bias <= BtrBiasNoRetry;
    }
    *bias = code / 100 * 100u;
    call->Operation = code % 100u;
    if (*bias > BtrBiasMultiple) return false;
    if (call->Operation >= BtrBiasKeyOnly) {
        call->Operation -= BtrBiasKeyOnly;
        call->KeyOnly = true;
        if (!IsKeyedRead(call->Operation)) return false;
    }
    return *bias == 0 || TakesLock(call->Operation) || call->Operation == BtrOpBegin;
}

int16_t Dispatch(Call *call, unsigned bias)
{
    call->Lock = RequestOf(bias, call->Caller);
    switch (call->Operation) {
    case BtrOpOpen:
        if (call->PositionBlock == nullptr) return BtrStatusBadPositionBlock;
        return OpenFile(*call);
    case BtrOpCreate: return CreateFile(*call);
    case BtrOpBegin: return BeginTransaction(*call, TransactionKind::Exclusive, false);
    case BtrOpBeginConcurrent:
        return BeginTransaction(*call, TransactionKind::Concurrent, bias == BtrBiasNoRetry);
    case BtrOpEnd: return EndTransaction(call->Caller);
    case BtrOpAbort: return AbortTransaction(call->Caller);
    case BtrOpBeginGroup: return BeginGroup(*call);
    case BtrOpEndGroup: return EndGroup(call->Caller);
    case BtrOpVersion: return TellVersion(*call);
    case BtrOpStop: EndClient(); return BtrStatusOk;
    case BtrOpReset: ResetClient(call->Caller); return BtrStatusOk;
    default: break;
    }
    if (!TakesLock(call->Operation) && call->Operation != BtrOpClose && call->Operation != BtrOpStat &&
        call->Operation != BtrOpGetPosition && call->Operation != BtrOpUnlock) {
        return BtrStatusBadOperation;
    }
    if (call->PositionBlock == nullptr) return BtrStatusBadPositionBlock;
    call->On = FindHandle(call->Caller, call->PositionBlock);
    if (call->On == nullptr) return BtrStatusNotOpen;
    return CallOpen(*call);
}

int16_t Carry(uint16_t code, Call *call)
{
    unsigned bias = 0;
    if (!Decode(code, call, &bias)) return BtrStatusBadOperation;
    call->Caller = CurrentClient();
    if (call->Caller == nullptr) return BtrStatusNoEngine;
    const int16_t status = Dispatch(call, bias);
    if (call->Operation != BtrOpStop) ReleaseIdle(call->Caller);
    return status;
}

} // namespace

} // namespace wbtrv

int16_t BTRCALL(uint16_t operation, void *positionBlock, void *data, uint32_t *dataLength, void *key,
                uint8_t keyLength, int8_t keyNumber)
{
    wbtrv::Call call{};
    call.PositionBlock = positionBlock;
    call.Data = static_cast<uint8_t *>(data);
    call.DataLength = dataLength;
    call.Key = static_cast<uint8_t *>(key);
    call.KeyLength = keyLength;
    call.KeyNumber = keyNumber;
    return wbtrv::Carry(operation, &call);
}
