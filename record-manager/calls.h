// The operations behind BTRCALL, after its arguments have been told apart. Each returns the call's status.
#pragma once

#include "record-manager/client.h"

namespace wbtrv {

struct Call {
    unsigned Operation; // without biases
    unsigned Bias;      // of a lock, or BtrBiasNoRetry
    bool KeyOnly;
    LockRequest Lock;
    Client *Caller;
    Handle *On; // null for operations that need no open file
    void *PositionBlock;
    uint8_t *Data;
    uint32_t *DataLength;
    uint8_t *Key;
    uint8_t KeyLength;
    int8_t KeyNumber;
};

// Bytes of the caller's data buffer, 0 when there is none.
inline uint32_t DataSize(const Call &call)
{
    return call.Data != nullptr && call.DataLength != nullptr ? *call.DataLength : 0;
}

// clients.cpp

// The calling thread's client, made at its first call. Null for lack of memory.
Client *CurrentClient();

// Closes everything and forgets the thread's client.
void EndClient();

// A client of no thread, and its end. Null for lack of memory.
Client *MakeClient();
void FreeClient(Client *client);
// False for one of the process that forked this one.
bool IsOfThisProcess(const Client &client);

// Aborts the transaction, releases every lock, closes every file.
void ResetClient(Client *client);

// files.cpp
int16_t OpenFile(const Call &call);
int16_t CreateFile(const Call &call);
int16_t StatFile(const Call &call);
// Returns a status when what was loaded could not be made final; the handle is closed nevertheless.
int16_t CloseHandle(Handle *handle);

// reads.cpp
int16_t ReadByKey(const Call &call);
int16_t ReadByStep(const Call &call);
int16_t StepStored(const Call &call);
int16_t ReadDirect(const Call &call);
int16_t TellPosition(const Call &call);

// changes.cpp
int16_t InsertRecord(const Call &call);
int16_t InsertStored(const Call &call);
int16_t UpdateRecord(const Call &call);
int16_t DeleteRecord(const Call &call);

// transactions.cpp
int16_t BeginTransaction(const Call &call, TransactionKind kind, bool noRetry);
int16_t EndTransaction(Client *client);
int16_t AbortTransaction(Client *client);
int16_t BeginGroup(const Call &call);
int16_t EndGroup(Client *client);
int16_t BeginHolding(Client *client);
int16_t EndHolding(Client *client);
int16_t UnlockRecords(const Call &call);
// Stores the counters of what has changed and commits. On failure everything pending is undone.
int16_t CommitChanges(ClientStore *store);
// Returns a status when a file made among the changes could not be made again.
int16_t AbortChanges(ClientStore *store);

} // namespace wbtrv
