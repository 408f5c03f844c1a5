#include "src/frame/open_tables.h"

#include "src/frame/beliefs.h"
#include "src/frame/engine_calls.h"
#include "src/frame/held_reports.h"
#include "src/frame/installation.h"
#include "src/platform/platform.h"

#include <cstdio>
#include <cstring>

namespace vark {

namespace {

constexpr size_t longestPath = 254; // what the engine takes as a file name

// The directory and file of a table; false when it does not fit.
bool TablePath(const ThreadContext &context, int table, const char *yearName, char *out, size_t size)
{
    if (!Holds(table >= 0 && table < slotCount) || !Holds(size > 0)) return false;
    const char separator[2] = {pathSeparator, 0};
    const char *directory = DataPath;
    const char *before = "";
    const char *year = "";
    const char *suffix = context.MandantSuffix;
    if (context.PathOverrideOn != 0) {
        directory = context.PathOverride;
        suffix = "";
    } else if (table == 6) {
        suffix = "";
    } else if (table >= 28) {
        before = separator;
        year = context.PreviousYear;
    } else if (table >= 12) {
        before = separator;
        year = context.MandantYear;
    } else if (yearName != nullptr) {
        before = separator;
        year = yearName;
    } else {
        year = context.YearDirectory;
    }
    const int length = std::snprintf(out, size, "%s%s%s%s%s%s.btr", directory, before, year, suffix,
                                     separator, tableCatalogue[table].Stem);
    Holds(length > static_cast<int>(sizeof ".btr" - 1)); // a table has a name
    return length > 0 && static_cast<size_t>(length) < size;
}

} // namespace

bool OpenTable(ThreadContext &context, TableKeyCode code, const char *yearName, int slot)
{
    const int table = SlotOf(code);
    if (slot == 0) slot = table;
    if (!CodeHolds(code) || !StoreHolds(context, slot)) return false;
    if (!Holds(slot == table || slot >= SlotFree29)) return false;
    if (context.OpenCounts[slot] == 0) {
        if (yearName != nullptr && table < 12) KeepLength(context, slot, LengthOf(context, table));
        char path[longestKey + 1] = {};
        char nothing[1] = {};
        const bool fits = TablePath(context, table, yearName, path, longestPath + 1);
        Holds(!fits || std::strlen(path) <= longestPath);
        Holds(!fits || std::strcmp(path + std::strlen(path) - 4, ".btr") == 0);
        char sent[sizeof path];
        std::memcpy(sent, path, sizeof sent);
        const int16_t status =
            fits ? CallEngine(engineOpen, context.PositionBlocks[slot], nothing, nullptr, sent, 1)
                 : statusFileNotFound;
        if (status != statusOk) {
            char shown[sizeof path];
            PathForMessage(path, shown, sizeof shown);
            Tell(context, status, shown);
            CloseTable(context, table);
            return false;
        }
    }
    ++context.OpenCounts[slot];
    return Holds(context.OpenCounts[slot] > 0);
}

bool CloseTable(ThreadContext &context, int slot)
{
    if (!StoreHolds(context, slot)) return false;
    if (context.OpenCounts[slot] == 0 || context.HoldOpen != 0) return true;
    if (--context.OpenCounts[slot] != 0) return true;
    Holds(context.OpenCounts[slot] == 0);
    char nothing[1] = {};
    EngineKey key(KeyBuffer{});
    return CallEngine(engineClose, context.PositionBlocks[slot], nothing, nullptr, key.Bytes, 0) == statusOk;
}

void ForceTableClosed(ThreadContext &context, int slot)
{
    if (!Holds(slot >= 0 && slot < slotCount) || context.OpenCounts[slot] == 0) return;
    StoreHolds(context, slot);
    context.OpenCounts[slot] = 1;
    CloseTable(context, slot);
    Holds(context.OpenCounts[slot] == 0 || context.HoldOpen != 0);
}

void CloseAllTables(ThreadContext &context)
{
    for (int slot = 0; slot < slotCount; ++slot) {
        ForceTableClosed(context, slot);
    }
    StoreHolds(context, 0);
}

} // namespace vark
