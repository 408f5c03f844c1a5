// What was read of the trees and may still be given: only for a moment after the server was asked whether a
// file has changed, and never across a change, a lock or the beginning of a transaction of one's own.
#include "record-manager/server/connection.h"

#include <algorithm>
#include <cstring>

namespace wbtrv {

namespace {

int Compare(Bytes left, Bytes right)
{
    const size_t common = std::min(left.Size, right.Size);
    const int order = common > 0 ? memcmp(left.Data, right.Data, common) : 0;
    if (order != 0) return order;
    return left.Size < right.Size ? -1 : left.Size > right.Size ? 1 : 0;
}

Bytes KeyAt(const Run &run, int row) { return BytesAt(run.Rows, row, 0); }

// How many rows lie below the bound, in the run's own direction: of one that goes forward the rows below it,
// of the other those not below it.
int CountBefore(const Run &run, Bytes bound)
{
    int low = 0;
    int high = run.Count;
    while (low < high) {
        const int middle = (low + high) / 2;
        const bool below = Compare(KeyAt(run, middle), bound) < 0;
        if (below == run.Forward) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return low;
}

// The row, the row count when the run ends where nothing follows, or -1 when the run does not tell.
int RowOrEnd(const Run &run, int row)
{
    if (row < run.Count) return row;
    return run.Whole ? run.Count : -1;
}

// The row on the side where the run began; `first` is behind the wanted one.
int RowBehind(const Run &run, int first)
{
    if (first > 0) return first - 1;
    return run.Bounded ? -1 : run.Count;
}

int FindFromBound(const Run &run, Bytes bound, Side side)
{
    const Bytes begin{run.Bound, run.BoundSize};
    const int before = CountBefore(run, bound);
    if (run.Forward) {
        if (side == Side::AtOrAfter)
            return run.Bounded && Compare(bound, begin) < 0 ? -1 : RowOrEnd(run, before);
        // The bound must not lie behind the last row, where more may follow.
        if (before == run.Count && !run.Whole) return -1;
        return run.Bounded && Compare(bound, begin) < 0 ? -1 : RowBehind(run, before);
    }
    if (side == Side::Before) return run.Bounded && Compare(bound, begin) > 0 ? -1 : RowOrEnd(run, before);
    // Rows below the last one are not known, so it is not known either what comes before the bound there.
    if (before == run.Count && !run.Whole &&
        (run.Count == 0 || Compare(bound, KeyAt(run, run.Count - 1)) != 0))
        return -1;
    if (run.Bounded && Compare(bound, begin) >= 0) return -1;
    return RowBehind(run, before);
}

int FindIn(const Run &run, Bytes bound, Side side)
{
    switch (side) {
    case Side::First:
        if (run.Forward) return run.Bounded ? -1 : RowOrEnd(run, 0);
        return run.Whole && (run.Count > 0 || !run.Bounded) ? std::max(run.Count - 1, 0) : -1;
    case Side::Last:
        if (!run.Forward) return run.Bounded ? -1 : RowOrEnd(run, 0);
        return run.Whole && (run.Count > 0 || !run.Bounded) ? std::max(run.Count - 1, 0) : -1;
    case Side::AtOrAfter:
    case Side::Before: break;
    }
    return FindFromBound(run, bound, side);
}

void FreeRun(Run *run)
{
    PQclear(run->Rows);
    run->Rows = nullptr;
    run->Id = 0;
}

} // namespace

int FindState(const PGresult *states, uint32_t file)
{
    int low = 0;
    int high = PQntuples(states);
    while (low < high) {
        const int middle = (low + high) / 2;
        if (NumberAt(states, middle, 0) < file) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return low < PQntuples(states) && NumberAt(states, low, 0) == file ? low : -1;
}

bool AreFresh(const Connection *connection)
{
    // Nothing changes in a snapshot that is held.
    if (connection->Holding) return true;
    return connection->Checked_us != 0 && serverLimits->ReadAhead_ms > 0 &&
           Now_us() - connection->Checked_us <= int64_t{serverLimits->ReadAhead_ms} * 1000;
}

bool FindInRuns(Connection *connection, uint32_t file, uint32_t tree, Bytes bound, Side side, Entry *found)
{
    for (Run &run : connection->Runs) {
        if (run.Id == 0 || run.File != file || run.Tree != tree) continue;
        const int row = FindIn(run, bound, side);
        if (row < 0) continue;
        run.Used = ++connection->Clock;
        *found = {row < run.Count ? &run : nullptr, row};
        return true;
    }
    return false;
}

namespace {

// Whether a file is as it was when the states were last taken, but for what this client has committed.
bool IsUnchanged(const Connection *connection, const PGresult *states, uint32_t file)
{
    const int after = FindState(states, file);
    if (connection->States == nullptr || after < 0) return false;
    const int64_t records = NumberAt(states, after, 2);
    const int64_t sequence = NumberAt(states, after, 3);
    for (size_t i = connection->OwnCount; i-- > 0;) {
        const OwnState &own = connection->Own[i];
        if (own.File == file) return own.Records == records && own.Sequence == sequence;
    }
    const int before = FindState(connection->States, file);
    return before >= 0 && NumberAt(connection->States, before, 2) == records &&
           NumberAt(connection->States, before, 3) == sequence;
}

} // namespace

void TakeStates(Connection *connection, PGresult *states)
{
    if (states == nullptr) return;
    for (Run &run : connection->Runs) {
        if (run.Id != 0 && !IsUnchanged(connection, states, run.File)) FreeRun(&run);
    }
    for (HighestKey &highest : connection->Highest) {
        if (highest.File != 0 && !IsUnchanged(connection, states, highest.File)) highest = {};
    }
    PQclear(connection->States);
    connection->OwnCount = 0;
    connection->States = states;
    connection->Checked_us = connection->Asked_us;
}

HighestKey *FindHighest(Connection *connection, uint32_t file, uint32_t tree)
{
    for (HighestKey &highest : connection->Highest) {
        if (highest.File == file && highest.Tree == tree) return &highest;
    }
    return nullptr;
}

void SetHighest(Connection *connection, uint32_t file, uint32_t tree, Bytes key, uint32_t record)
{
    if (key.Size > maxBound) return;
    HighestKey *highest = FindHighest(connection, file, tree);
    if (highest == nullptr) highest = FindHighest(connection, 0, 0);
    if (highest == nullptr) highest = &connection->Highest[connection->LastHighest++ % mostHighest];
    *highest = {file, tree, true, key.Size, {}, record};
    memcpy(highest->Key, key.Data, key.Size);
}

void ForgetHighest(Connection *connection, uint32_t file)
{
    for (HighestKey &highest : connection->Highest) {
        if (highest.File == file) highest = {};
    }
}

void ForgetRuns(Connection *connection, uint32_t file)
{
    for (Run &run : connection->Runs) {
        if (run.Id != 0 && run.File == file) FreeRun(&run);
    }
}

void ForgetAllRuns(Connection *connection)
{
    for (Run &run : connection->Runs) {
        if (run.Id != 0) FreeRun(&run);
    }
    memset(connection->Highest, 0, sizeof connection->Highest);
    PQclear(connection->States);
    connection->OwnCount = 0;
    connection->States = nullptr;
    connection->Checked_us = 0;
}

Run *NewRun(Connection *connection)
{
    Run *chosen = &connection->Runs[0];
    for (Run &run : connection->Runs) {
        if (run.Id == 0) {
            chosen = &run;
            break;
        }
        // The one that was read last may still be in use by the call that goes on.
        if (run.Used < chosen->Used) chosen = &run;
    }
    if (chosen->Id != 0) FreeRun(chosen);
    chosen->Id = ++connection->LastRun;
    chosen->Used = ++connection->Clock;
    return chosen;
}

const Run *FindRun(const Connection *connection, uint64_t id)
{
    for (const Run &run : connection->Runs) {
        if (run.Id == id && id != 0) return &run;
    }
    return nullptr;
}

} // namespace wbtrv
