// The record manager's one entry. Plain C, so that any host can use it.
//
// A file is opened with a position block of the caller's, and every later call on the file passes that block.
// The client, to whom transactions and locks belong, is the calling thread. All numbers are little-endian.
#ifndef RECORD_MANAGER_BTRCALL_H
#define RECORD_MANAGER_BTRCALL_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// Does `operation` (BtrOp…, with a lock bias where the operation reads or writes) and returns a BtrStatus….
//
//   positionBlock   128 bytes of the caller's, one per open file, zeroed before BtrOpOpen and left alone
//                   while open.
//
//   data            The record, or what the operation wants instead of one.
//
//   dataLength      In: size of `data` (the record's length for insert and update). Out: bytes returned. On
//                   any status but BtrStatusOk it keeps what it held.
//
//   key             Key value in and out, the path for open and create; at most keyLength bytes are used.
//
//   keyNumber       Key, open mode or a special meaning of the operation.
//
// Null pointers are answered with a status: 23 for a position block, 22 for data or its length, 21 for a key,
// where the operation needs them.
#if defined(__GNUC__) && !defined(_WIN32)
#define BTR_EXPORT __attribute__((visibility("default")))
#else
#define BTR_EXPORT
#endif
#ifdef _WIN32
#define BTR_CALL __stdcall
#else
#define BTR_CALL
#endif
BTR_EXPORT int16_t BTR_CALL BTRCALL(uint16_t operation, void *positionBlock, void *data, uint32_t *dataLength,
                                    void *key, uint8_t keyLength, int8_t keyNumber);

// A client beside those of the threads, for who works for callers of any thread, such as an extension of
// another program: what it does and what the thread's own client does stay apart. One thread at a time may
// use it. A forked child may not use its parent's (BtrStatusNoEngine).
struct BtrClient;

// Null for lack of memory.
BTR_EXPORT struct BtrClient *BTR_CALL BtrMakeClient(void);

// As BtrOpStop, and the client is no more. Null is left alone.
BTR_EXPORT void BTR_CALL BtrEndClient(struct BtrClient *client);

// As BTRCALL, for this client; for null the calling thread's. BtrOpStop is refused for a client (1).
BTR_EXPORT int16_t BTR_CALL BtrCallOf(struct BtrClient *client, uint16_t operation, void *positionBlock,
                                      void *data, uint32_t *dataLength, void *key, uint8_t keyLength,
                                      int8_t keyNumber);

enum BtrOperation {
    BtrOpOpen = 0,
    BtrOpClose = 1,
    BtrOpInsert = 2,
    BtrOpUpdate = 3,
    BtrOpDelete = 4,
    BtrOpGetEqual = 5,
    BtrOpGetNext = 6,
    BtrOpGetPrevious = 7,
    BtrOpGetGreater = 8,
    BtrOpGetGreaterOrEqual = 9,
    BtrOpGetLess = 10,
    BtrOpGetLessOrEqual = 11,
    BtrOpGetFirst = 12,
    BtrOpGetLast = 13,
    BtrOpCreate = 14,
    BtrOpStat = 15,
    BtrOpBegin = 19, // exclusive: a file is locked whole by its first use
    BtrOpEnd = 20,
    BtrOpAbort = 21,
    BtrOpGetPosition = 22,
    BtrOpGetDirect = 23,
    BtrOpStepNext = 24,
    BtrOpStop = 25,
    BtrOpVersion = 26,
    BtrOpUnlock = 27,
    BtrOpReset = 28,
    BtrOpStepFirst = 33,
    BtrOpStepLast = 34,
    BtrOpStepPrevious = 35,
    BtrOpBeginConcurrent = 1019, // only the records that are changed are locked
    // Many transactions of one client in one durable step. Between these two a transaction (exclusive or not)
    // is only a stretch of the whole: its end writes nothing down, its abort undoes the whole group. After
    // that nothing can be begun before the end of the group, whose status then is 39; with 0 all of it is on
    // disk. Others wait to change anything from the first change on, so a group is to last fractions of a
    // second. One directory alone may be changed in it. For loading tools; the library knows nothing of it.
    BtrOpBeginGroup = 2019,
    BtrOpEndGroup = 2020,
    // Between these two the client sees every directory as it stood when it first used a file in it, whatever
    // others finish meanwhile; nobody waits for it. Changes, transactions and locks are refused with 41. 37
    // for a second beginning or inside a transaction, 39 for an end without one. The store keeps what others
    // replace meanwhile, so this is to last no longer than the question that is answered.
    BtrOpBeginSnapshot = 3019,
    BtrOpEndSnapshot = 3020,
    // For copies of a file that keep the order of its duplicates: a step that gives the record as it is
    // stored, behind six bytes for its last change and six for each key with duplicates, which tell its place
    // among them; and an insert that takes both and keeps that place. It moves no logical position.
    BtrOpInsertStored = 4002,
    BtrOpStepNextStored = 4024,
    BtrOpStepFirstStored = 4033,
    BtrBiasKeyOnly = 50,       // on the keyed reads: the key alone, no record
    BtrBiasWaitLock = 100,     // lock one record, waiting for it
    BtrBiasLock = 200,         // lock one record or fail at once
    BtrBiasWaitMultiple = 300, // lock one of several records, waiting for it
    BtrBiasMultiple = 400,     // lock one of several records or fail at once
    BtrBiasNoRetry = 500       // on BtrOpBeginConcurrent: nothing inside waits for another's lock
};

enum BtrStatusCode {
    BtrStatusOk = 0,
    BtrStatusBadOperation = 1,
    BtrStatusIoError = 2,
    BtrStatusNotOpen = 3,
    BtrStatusKeyNotFound = 4,
    BtrStatusDuplicateKey = 5,
    BtrStatusBadKeyNumber = 6,
    BtrStatusKeyNumberChanged = 7,
    BtrStatusNoPosition = 8,
    BtrStatusEndOfFile = 9,
    BtrStatusNotModifiable = 10,
    BtrStatusBadName = 11,
    BtrStatusFileNotFound = 12,
    BtrStatusDiskFull = 18,
    BtrStatusNoEngine = 20,
    BtrStatusKeyBufferShort = 21,
    BtrStatusDataBufferShort = 22,
    BtrStatusBadPositionBlock = 23,
    BtrStatusBadPageSize = 24,
    BtrStatusCannotCreate = 25,
    BtrStatusBadKeyCount = 26,
    BtrStatusBadKeyPosition = 27,
    BtrStatusBadRecordLength = 28,
    BtrStatusBadKeyLength = 29,
    BtrStatusForeignFile = 30,
    BtrStatusTransactionsUnavailable = 36,
    BtrStatusTransactionActive = 37,
    BtrStatusTransactionIo = 38,
    BtrStatusNoTransaction = 39,
    BtrStatusNotAllowed = 41, // inside a transaction
    BtrStatusBadPosition = 43,
    BtrStatusNotInIndex = 44,
    BtrStatusBadKeyFlags = 45,
    BtrStatusAccessDenied = 46,
    BtrStatusBadCollation = 48,
    BtrStatusBadKeyType = 49,
    BtrStatusOwner = 51,
    BtrStatusFileExists = 59,
    BtrStatusDeadlock = 78,
    BtrStatusConflict = 80, // another changed the record since it was read
    BtrStatusUnlockMismatch = 81,
    BtrStatusPositionLost = 82,
    BtrStatusRecordLocked = 84,
    BtrStatusFileLocked = 85,
    BtrStatusFileTableFull = 86,
    BtrStatusHandleTableFull = 87,
    BtrStatusIncompatibleMode = 88,
    BtrStatusBadLockType = 93,
    BtrStatusPermission = 94
};

enum BtrOpenMode {
    BtrModeNormal = 0,
    BtrModeLoading = -1, // nothing is promised to be on disk before the file is closed; no other client
    BtrModeReadOnly = -2,
    BtrModeVerify = -3, // as BtrModeNormal
    BtrModeExclusive = -4
};

// Who reads books.mdb by other means than BTRCALL holds a read lock of an open file description (F_OFD_SETLK)
// on this byte meanwhile. The next process to open books without any such lock takes them for unused.
#define BtrPresenceByte ((INT64_C(1) << 62) + 1)

enum BtrSpecialKeyNumber {
    BtrNoCurrencyChange = -1,  // insert, update
    BtrNoLogicalPosition = -1, // get direct
    BtrKeepExisting = -1,      // create: an existing file is an error; 0 replaces it
    BtrUnlockOne = -1,         // the multiple lock whose position lies in the data buffer
    BtrUnlockAll = -2          // every multiple lock of the position block
};

enum BtrKeyFlag {
    BtrKeyDuplicates = 0x001,
    BtrKeyModifiable = 0x002,
    BtrKeyOldBinary = 0x004, // without BtrKeyExtendedType: unsigned instead of string
    BtrKeyNullAll = 0x008,   // not indexed when every segment consists of the null byte
    BtrKeySegmented = 0x010, // another segment follows
    BtrKeyCollation = 0x020,
    BtrKeyDescending = 0x040,
    BtrKeyRepeating = 0x080, // duplicates ordered by position, not by time
    BtrKeyExtendedType = 0x100,
    BtrKeyNullAny = 0x200, // not indexed when one segment consists of the null byte
    BtrKeyCaseless = 0x400
};

enum BtrKeyType {
    BtrTypeString = 0,
    BtrTypeInteger = 1,
    BtrTypeFloat = 2,
    BtrTypeDate = 3,
    BtrTypeTime = 4,
    BtrTypeLString = 10,
    BtrTypeZString = 11,
    BtrTypeUnsigned = 14,
    BtrTypeAutoincrement = 15
};

enum BtrFileFlag { BtrFileVariable = 0x001, BtrFileKeyNumbers = 0x400 };

enum { BtrPositionBlockSize = 128, BtrKeyBufferSize = 255, BtrPathSize = 255, BtrMaxKeys = 119 };

#pragma pack(push, 1)

// What create takes and stat returns: this, then one BtrKeyEntry per segment.
struct BtrFileHeader {
    uint16_t RecordLength; // of the fixed part
    uint16_t PageSize;
    uint8_t KeyCount; // keys, not segments
    uint8_t Version;
    uint32_t RecordCount; // stat; 0 for create
    uint16_t Flags;
    uint8_t DuplicatePointers;
    uint8_t Reserved13;
    uint16_t Pages;
};

struct BtrKeyEntry {
    uint16_t Position; // in the record, from 1
    uint16_t Length;
    uint16_t Flags;
    uint32_t UniqueValues; // stat; 0 for create
    uint8_t Type;
    uint8_t NullValue;
    uint16_t Reserved12;
    uint8_t KeyNumber; // with BtrFileKeyNumbers
    uint8_t Collation;
};

// What version returns.
struct BtrVersionBlock {
    uint16_t Version;
    uint16_t Revision;
    char Kind;
};

#pragma pack(pop)

#ifdef __cplusplus
}

static_assert(sizeof(BtrFileHeader) == 16);
static_assert(sizeof(BtrKeyEntry) == 16);
static_assert(sizeof(BtrVersionBlock) == 5);
#endif

#endif
