// A change of a record from its beginning to its end.
#pragma once

#include "record-manager/calls.h"

namespace wbtrv {

// A change under way: the transaction it writes in, and the lock it holds on its record.
struct Change {
    Handle *On;
    ClientStore *Store;
    ClientFile *In;
    uint32_t Locked; // record held for this change; 0: none
    bool OwnWriter;  // begun for this change alone
    bool Damaged;    // a tree may be half changed: what is pending can only be aborted
};

// Begins a change of `record`, or of the record to be inserted if it is 0: waits for the writer and for the
// record's lock, which the change holds to its end. The gate is not kept while the lock is waited for.
int16_t BeginChange(const Call &call, uint32_t record, Change *change);
// Ends a change with the status of its work. A change that stands alone is committed here.
int16_t EndChange(Change *change, int16_t status, unsigned treeChanges);

inline const StoreFunctions &Functions(const Change &change) { return *change.In->Of->Do; }

inline View *PendingView(const Change &change) { return Functions(change).ViewOf(change.Store->Pending); }

} // namespace wbtrv
