// Records: one thin operation per operation of the engine with a fixed policy for its statuses. Tables are
// opened as they are needed (open_tables.h); nobody else talks to the record manager.
//
// Every operation takes a TableKeyCode: key number * 31 + TableId (src/model/tables.h). `data` must be as
// long as the table's record. The result is true for success; a false has been shown to the user, except
// where the end of the file or a closed table is its reason. `found` tells a missing record from a failure.
// Nothing is shown while a transaction is open: what there is to show comes when it is over.
#pragma once

#include "src/frame/open_tables.h"
#include "src/frame/thread_context.h"
#include "src/model/tables.h"

#include <cstdint>

namespace vark {

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

// Keys as the tables hold them.
KeyBuffer KeyOfNumber(int32_t number); // i32: Stapel, Zahlungsziel, Kostenschablone, nodes
KeyBuffer KeyOfShortNumber(uint16_t first, uint16_t second = 0); // one or two 16-bit numbers: Mandant, steke
KeyBuffer KeyOfText(const char *text, size_t width); // text cut to width - 1: accounts (8), Kürzel (10)

} // namespace vark
