// Tables that stay open as long as a structure lives, and are given back on every way out of its scope.
#pragma once

#include "src/frame/thread_context.h"
#include "src/model/tables.h"

#include <cstdint>

namespace vark {

struct HeldTables {
    struct Entry {
        int Slot;
        int32_t CountBefore;
    };

    ThreadContext &Context;
    Entry Entries[8] = {};
    int Count = 0;

    explicit HeldTables(ThreadContext &context) : Context(context) {}
    HeldTables(const HeldTables &) = delete;
    HeldTables &operator=(const HeldTables &) = delete;
    ~HeldTables();
};

// Opens a table of the Mandant and year in force, or counts one more user of it. At the end of the scope it
// has no more users than before, also when a change of the year, a refused Insert or a read inside a
// transaction has moved the count.
// False when it cannot be opened, which has been shown, or when eight are held already.
bool Hold(HeldTables &held, TableId table);

// Opens a table (0 to 11) of the year `year` ("1997") of the Mandant under a free slot, SlotFree29 or
// SlotFree30, with whose number it is read then. The slot is closed by force first, whatever the thread left
// in it: an open one would only be counted up and answer with another year. It is closed again at the end of
// the scope, or by the next change of the year. False as for Hold.
bool HoldOfYear(HeldTables &held, TableId table, const char *year, TableId slot);

// Gives back what is held, the last one first.
void Release(HeldTables &held);

} // namespace vark
