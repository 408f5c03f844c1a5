#include "record-manager/waits.h"

#include "record-manager/platform.h"

#include <initializer_list>

namespace wbtrv {

namespace {

// An entry whose process died waiting is free again.
void FreeDead(WaitTable *table)
{
    for (Wait &wait : table->Waits) {
        const uint32_t process = wait.Process.load();
        if (process != 0 && HasEnded(process)) LeaveWait(&wait);
    }
}

Wait *FindTicket(WaitTable *table, uint64_t ticket)
{
    if (ticket == 0) return nullptr;
    for (Wait &wait : table->Waits) {
        if (wait.Ticket.load() == ticket) return &wait;
    }
    return nullptr;
}

} // namespace

Wait *EnterWait(WaitTable *table, uint32_t file, uint32_t record)
{
    for (const bool again : {false, true}) {
        if (again) FreeDead(table);
        for (Wait &wait : table->Waits) {
            uint32_t nobody = 0;
            if (!wait.Process.compare_exchange_strong(nobody, OwnProcess())) continue;
            wait.Blocker.store(0);
            wait.File.store(file);
            wait.Record.store(record);
            wait.Ticket.store(table->LastTicket.fetch_add(1) + 1);
            return &wait;
        }
    }
    return nullptr;
}

void LeaveWait(Wait *wait)
{
    wait->Ticket.store(0);
    wait->Process.store(0);
}

bool MustGiveWay(WaitTable *table, Wait *wait, bool (*holds)(const void *who, uint32_t file, uint32_t record),
                 const void *who)
{
    const uint64_t own = wait->Ticket.load();
    for (Wait &other : table->Waits) {
        const uint64_t ticket = other.Ticket.load();
        if (ticket == 0 || ticket == own || !holds(who, other.File.load(), other.Record.load())) continue;
        // What it waits for has stayed the same if its ticket has.
        if (other.Ticket.load() == ticket) other.Blocker.store(own);
    }
    // Who waits keeps what it holds, so a chain of tickets that are all still valid is a chain of real waits.
    uint64_t youngest = own;
    const Wait *at = wait;
    for (unsigned steps = 0; steps < sizeof table->Waits / sizeof table->Waits[0]; ++steps) {
        const uint64_t blocker = at->Blocker.load();
        if (blocker == own) return youngest == own;
        at = FindTicket(table, blocker);
        if (at == nullptr) return false;
        if (blocker > youngest) youngest = blocker;
    }
    return false;
}

} // namespace wbtrv
