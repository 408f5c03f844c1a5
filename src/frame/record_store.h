// The only layer that talks to the record manager: tables by number, opened lazily and counted, one thin
// operation per operation of the engine with a fixed policy for its statuses.
//
// Every operation takes a TableKeyCode: key number * 31 + TableId (src/model/tables.h). `data` must be as
// long as the table's record. The result is true for success; a false has been shown to the user, except
// where the end of the file or a closed table is its reason. `found` tells a missing record from a failure.
// Nothing is shown while a transaction is open: what there is to show comes when it is over.
#pragma once

#include "src/frame/thread_context.h"
#include "src/model/tables.h"

#include <atomic>
#include <cstdint>

namespace vark {

// Length of a record per table, given to the engine with each call. The engine's answer is written back, so a
// short record shortens what the next call offers. The two free slots have theirs in the ThreadContext: two
// threads may hold tables of different lengths there.
extern std::atomic<uint32_t> RecordLengthTable[slotCount];

void FillRecordLengthTable();

// One call of the engine. `length` may be null, which the engine sees as 0; of its answer
// only the low 16 bits are written back. `key` needs room for 255 bytes. Returns the engine's status.
int16_t CallEngine(uint16_t operation, PositionBlock &position, void *data, uint32_t *length, void *key,
                   int8_t keyNumber);

// Opens a table, or counts one more user of an open one. `yearName` (null: the year in force) opens the table
// of another year; `slot` (0: the table's own) holds it under another number.
bool OpenTable(ThreadContext &context, TableKeyCode code, const char *yearName = nullptr, int slot = 0);

// Counts one user less and closes at none. True for a closed slot, and while a transaction holds all open.
bool CloseTable(ThreadContext &context, int slot);

// Closes a slot whatever its count.
void ForceTableClosed(ThreadContext &context, int slot);

// Closes all 31 slots.
void CloseAllTables(ThreadContext &context);

// The belief of exports that nothing of a posting is left in the thread: no transaction, no table held open
// for one, nothing held back to be shown.
bool AtRestHolds(const ThreadContext &context);

// Keyed reads. Those marked "biased" honour LockNext and show message 1420 for a record in use.
bool GetEqual(ThreadContext &context, void *data, const KeyBuffer &key, bool &found,
              TableKeyCode code); // biased
bool Exists(ThreadContext &context, const KeyBuffer &key, bool &found, TableKeyCode code);
// The same for a second look inside a transaction: what somebody else has locked counts as found, and nothing
// is shown of the lock. With a `position` of CurrentPosition only the record that lay there does.
bool StillExists(ThreadContext &context, const KeyBuffer &key, bool &found, TableKeyCode code,
                 uint32_t position = 0);
bool GetFirst(ThreadContext &context, void *data, TableKeyCode code); // biased
bool GetFirstF(ThreadContext &context, void *data, bool &found, TableKeyCode code);
bool GetNext(ThreadContext &context, void *data, TableKeyCode code); // biased
bool GetNextF(ThreadContext &context, void *data, bool &found, TableKeyCode code);
bool GetPreviousF(ThreadContext &context, void *data, bool &found, TableKeyCode code);
bool GetGreaterEqual(ThreadContext &context, void *data, const KeyBuffer &key, TableKeyCode code); // biased
bool GetGreaterEqualF(ThreadContext &context, void *data, const KeyBuffer &key, bool &found,
                      TableKeyCode code);
bool GetGreaterF(ThreadContext &context, void *data, const KeyBuffer &key, bool &found, TableKeyCode code);
bool GetLessF(ThreadContext &context, void *data, const KeyBuffer &key, bool &found, TableKeyCode code);
bool GetLast(ThreadContext &context, void *data, bool &found, TableKeyCode code); // biased

// Where the record last read from an open table lies; none other does, not even after its deletion. Never 0.
bool CurrentPosition(ThreadContext &context, uint32_t &position, TableKeyCode code);

// Writes. Insert opens the table and closes it after; when it fails the count it took stays up. Update and
// Delete act on the record last read and give false, silently, on a closed table.
bool Insert(ThreadContext &context, void *data, TableKeyCode code);
// The same, without a word where the value of a key exists already: true with `exists`, nothing is written.
bool InsertUnlessThere(ThreadContext &context, void *data, bool &exists, TableKeyCode code);
bool Update(ThreadContext &context, void *data, TableKeyCode code);
bool Delete(ThreadContext &context, TableKeyCode code);

// Has the next biased read lock the record it reads, without waiting for another holder.
void LockNext(ThreadContext &context);
bool Unlock(ThreadContext &context, TableKeyCode code);

// Puts the position on the current record under another key.
bool RereadCurrent(ThreadContext &context, TableKeyCode code);

// Number of records, -1 if the table cannot be opened or asked.
int32_t RecordCount(ThreadContext &context, TableKeyCode code);

enum class TransactionAction { Begin = 1, End = 2, Abort = 4, BeginConcurrent = 8 };

// Nested transactions of the thread; only the outermost reaches the engine. Inside of one that was begun with
// Begin the first use of a file locks all of it, with BeginConcurrent each change locks its record. From its
// first change on a transaction is the only writer of the directory, so what a check has found before is
// looked at again behind one. A refusal aborts, ends all levels and is shown. False for every refusal, also
// where the abort after it succeeds: a caller that took an undone End for a success would report a posting
// that is not there.
bool Transaction(ThreadContext &context, TransactionAction action);

// Keys as the tables hold them.
KeyBuffer KeyOfNumber(int32_t number); // i32: Stapel, Zahlungsziel, Kostenschablone, nodes
KeyBuffer KeyOfShortNumber(uint16_t first, uint16_t second = 0); // one or two 16-bit numbers: Mandant, steke
KeyBuffer KeyOfText(const char *text, size_t width); // text cut to width - 1: accounts (8), Kürzel (10)

} // namespace vark
