// Who waits for whose record: a table in the gate's shared memory, from which those who wait see that they
// wait for one another. Locks do not tell their holder, so each who waits marks those who wait for what it
// holds itself.
#pragma once

#include <atomic>
#include <cstdint>

namespace wbtrv {

// A client that waits for a record's lock. Entries are claimed by writing a ticket into a free one.
struct Wait {
    std::atomic<uint64_t> Ticket;  // 0: free; otherwise unlike any other's, and higher than those from before
    std::atomic<uint64_t> Blocker; // ticket of the one who holds what is waited for, if that one waits too
    std::atomic<uint32_t> Process;
    std::atomic<uint32_t> File;
    std::atomic<uint32_t> Record;
};

struct WaitTable {
    std::atomic<uint64_t> LastTicket;
    Wait Waits[128];
};

// An entry for a client that begins to wait; null when the table is full, and then deadlocks end by time
// alone.
Wait *EnterWait(WaitTable *table, uint32_t file, uint32_t record);
void LeaveWait(Wait *wait);

// Whether this one waits for itself by way of others and, being the last to have begun, has to give way.
// `holds` tells whether the caller holds a record.
bool MustGiveWay(WaitTable *table, Wait *wait, bool (*holds)(const void *who, uint32_t file, uint32_t record),
                 const void *who);

} // namespace wbtrv
