// What was read of the trees and may still be given: only for a moment after the server was asked whether a
// file has changed, and never across a change, a lock or the beginning of a transaction of one's own.
#include "record-manager/server/connection.h"

#include <algorithm>
#include <cstdlib>
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

FileState *FindState(Connection *connection, uint32_t file)
{
    size_t low = 0;
    size_t high = connection->StateCount;
    while (low < high) {
        const size_t middle = (low + high) / 2;
        if (connection->States[middle].File < file) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    const bool found = low < connection->StateCount && connection->States[low].File == file;
    return found ? &connection->States[low] : nullptr;
}

void StateOfRow(const PGresult *rows, int row, FileState *state)
{
    *state = {};
    state->File = static_cast<uint32_t>(NumberAt(rows, row, 0));
    state->LastRecord = NumberAt(rows, row, 1);
    state->Records = NumberAt(rows, row, 2);
    state->Sequence = NumberAt(rows, row, 3);
    const Bytes counts = BytesAt(rows, row, 4);
    state->CountsSize = counts.Size;
    if (counts.Size > 0) memcpy(state->Counts, counts.Data, std::min(counts.Size, sizeof state->Counts));
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

// Makes room for the states of all files. They may be forgotten for lack of memory.
bool MakeRoom(Connection *connection, size_t count)
{
    if (connection->StateRoom >= count) return true;
    void *larger = realloc(connection->States, count * sizeof(FileState));
    if (larger == nullptr) return false;
    connection->States = static_cast<FileState *>(larger);
    connection->StateRoom = count;
    return true;
}

// What is known of a file, beside what is now: its number is given to no other, and its sequence grows.
void ForgetIfChanged(Connection *connection, uint32_t file, const FileState *now)
{
    const FileState *known = FindState(connection, file);
    const bool same = known != nullptr && now != nullptr && known->Records == now->Records &&
                      known->Sequence == now->Sequence;
    if (same) return;
    ForgetRuns(connection, file);
    ForgetHighest(connection, file);
}

} // namespace

namespace {

// Of all files.
void TakeAll(Connection *connection, PGresult *states)
{
    const auto count = static_cast<size_t>(PQntuples(states));
    FileState now{};
    size_t known = 0;
    for (size_t row = 0; row < count; ++row) {
        StateOfRow(states, static_cast<int>(row), &now);
        // Those that are no more.
        for (; known < connection->StateCount && connection->States[known].File < now.File; ++known) {
            ForgetIfChanged(connection, connection->States[known].File, nullptr);
        }
        if (known < connection->StateCount && connection->States[known].File == now.File) ++known;
        ForgetIfChanged(connection, now.File, &now);
    }
    for (; known < connection->StateCount; ++known) {
        ForgetIfChanged(connection, connection->States[known].File, nullptr);
    }
    if (!MakeRoom(connection, count)) {
        PQclear(states);
        ForgetAllRuns(connection);
        return;
    }
    for (size_t row = 0; row < count; ++row) {
        StateOfRow(states, static_cast<int>(row), &connection->States[row]);
    }
    // Without a file there is nothing to be served.
    connection->Changes = count > 0 ? NumberAt(states, 0, 5) : -1;
    PQclear(states);
    connection->StateCount = count;
    connection->HasStates = true;
    connection->StatesAreOld = false;
    connection->Checked_us = connection->Asked_us;
}

// Whether nothing has changed, as the head's count tells.
bool TakeChanges(Connection *connection, PGresult *changes, int64_t asked_us)
{
    const bool same =
        connection->HasStates && PQntuples(changes) == 1 && NumberAt(changes, 0, 0) == connection->Changes;
    PQclear(changes);
    connection->StatesAreOld = connection->StatesAreOld || !same;
    connection->Checked_us = connection->StatesAreOld ? 0 : asked_us;
    return !connection->StatesAreOld;
}

} // namespace

bool TakeStates(Connection *connection, PGresult *answer)
{
    if (answer == nullptr) return true; // a failure, which is told otherwise
    if (connection->AskedForChange) return TakeChanges(connection, answer, connection->Asked_us);
    TakeAll(connection, answer);
    return true;
}

void TakeAhead(Connection *connection, PGresult *answer)
{
    connection->ChangeComing = false;
    if (answer != nullptr)
        (void)TakeChanges(connection, answer, connection->AheadIsOld ? 0 : connection->Ahead_us);
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
    if (connection->Coming.File == file) connection->Coming.File = 0;
}

void ForgetAllRuns(Connection *connection)
{
    for (Run &run : connection->Runs) {
        if (run.Id != 0) FreeRun(&run);
    }
    connection->Coming.File = 0;
    memset(connection->Highest, 0, sizeof connection->Highest);
    connection->HasStates = false;
    connection->StateCount = 0;
    connection->Checked_us = 0;
}

const Run *KeepRun(Connection *connection, const Run &asked, PGresult *rows)
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
    *chosen = asked;
    // Its place is found from its number.
    chosen->Id = ++connection->LastRun * mostRuns + static_cast<uint64_t>(chosen - connection->Runs);
    chosen->Used = ++connection->Clock;
    chosen->Rows = rows;
    chosen->Count = PQntuples(rows);
    chosen->Whole = chosen->Count < asked.Count;
    return chosen;
}

void TakeComing(Connection *connection, PGresult *rows)
{
    connection->IsComing = false;
    if (rows != nullptr && connection->Coming.File != 0) {
        (void)KeepRun(connection, connection->Coming, rows);
    } else {
        PQclear(rows);
    }
    connection->Coming.File = 0;
}

const Run *FindRun(Connection *connection, uint64_t id)
{
    Run &run = connection->Runs[id % mostRuns];
    if (run.Id != id || id == 0) return nullptr;
    run.Used = ++connection->Clock;
    return &run;
}

} // namespace wbtrv
