#include "src/frame/held_tables.h"

#include "src/frame/record_store.h"

#include <array> // std::size

namespace vark {

namespace {

bool Note(HeldTables &held, int slot)
{
    if (held.Count == static_cast<int>(std::size(held.Entries))) return false;
    held.Entries[held.Count++] = {slot, held.Context.OpenCounts[slot]};
    return true;
}

} // namespace

HeldTables::~HeldTables() { Release(*this); }

bool Hold(HeldTables &held, TableId table)
{
    return Note(held, table) && OpenTable(held.Context, static_cast<TableKeyCode>(table));
}

bool HoldOfYear(HeldTables &held, TableId table, const char *year, TableId slot)
{
    ForceTableClosed(held.Context, slot);
    return Note(held, slot) && OpenTable(held.Context, static_cast<TableKeyCode>(table), year, slot);
}

void Release(HeldTables &held)
{
    while (held.Count > 0) {
        const HeldTables::Entry &entry = held.Entries[--held.Count];
        for (int32_t open = held.Context.OpenCounts[entry.Slot]; open > entry.CountBefore; --open) {
            CloseTable(held.Context, entry.Slot);
        }
    }
}

} // namespace vark
