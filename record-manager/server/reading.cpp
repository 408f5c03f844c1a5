// Reading. Outside a writer rows are fetched ahead, the more the longer a client goes on along a tree; in a
// writer each search is a question of its own, which sees what the writer has changed.
#include "record-manager/fields.h"
#include "record-manager/server/private.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace wbtrv {

namespace {

constexpr int firstAhead = 8;
constexpr int mostAhead = 4096;
// So much has room in the socket: whoever reads no further leaves no statement behind that waits for it.
constexpr size_t mostAheadBytes = 128u << 10;
// Who has come so far along a tree is expected to go on.
constexpr int longAhead = 128;

// Keys of records are numbers to those above; here they are bytes in order like all others.
struct Bound {
    size_t Size;
    uint8_t Bytes[maxBound];
};

void PutRecordKey(uint64_t number, uint8_t *out)
{
    for (size_t i = 8; i-- > 0; number >>= 8) {
        out[i] = static_cast<uint8_t>(number);
    }
}

// The record's number that is a key of its tree; 0 for a key of another one.
uint32_t RecordIn(Bytes key) { return key.Size == sizeof(uint32_t) ? GetField<uint32_t>(key.Data) : 0; }

Bound BoundOf(size_t tree, Bytes given)
{
    Bound bound{};
    if (tree == recordTree) {
        bound.Size = given.Size > 0 ? 8 : 0;
        PutRecordKey(RecordIn(given), bound.Bytes);
        return bound;
    }
    bound.Size = std::min(given.Size, sizeof bound.Bytes);
    if (bound.Size > 0) memcpy(bound.Bytes, given.Data, bound.Size);
    return bound;
}

uint64_t NumberOf(const uint8_t *key)
{
    uint64_t number = 0;
    for (size_t i = 0; i < 8; ++i) {
        number = number << 8 | key[i];
    }
    return number;
}

// What follows the key at once.
Bound Behind(size_t tree, const uint8_t *key, size_t size)
{
    Bound bound{};
    if (tree == recordTree) {
        bound.Size = 8;
        PutRecordKey(NumberOf(key) + 1, bound.Bytes);
        return bound;
    }
    bound.Size = std::min(size + 1, sizeof bound.Bytes);
    memcpy(bound.Bytes, key, std::min(size, sizeof bound.Bytes));
    return bound;
}

// What is asked for from a bound on, in the direction of the side.
struct Question {
    Statement Which;
    Parameters Wanted;
};

Question Ask(const File &file, size_t tree, const Bound &bound, Side side, int rows)
{
    const bool records = tree == recordTree;
    Question question{};
    switch (side) {
    case Side::First: question.Which = records ? Statement::FirstRecords : Statement::FirstEntries; break;
    case Side::Last: question.Which = records ? Statement::LastRecords : Statement::LastEntries; break;
    case Side::AtOrAfter: question.Which = records ? Statement::RecordsFrom : Statement::EntriesFrom; break;
    case Side::Before: question.Which = records ? Statement::RecordsBefore : Statement::EntriesBefore; break;
    }
    Parameters &wanted = question.Wanted;
    AddNumber(&wanted, file.Number);
    if (!records) AddNumber(&wanted, static_cast<int64_t>(tree));
    if (side == Side::AtOrAfter || side == Side::Before) {
        if (records) {
            AddNumber(&wanted, static_cast<int64_t>(NumberOf(bound.Bytes)));
        } else {
            AddBytes(&wanted, bound.Bytes, bound.Size);
        }
    }
    AddNumber(&wanted, rows);
    return question;
}

void SendSearch(Connection *connection, const File &file, size_t tree, const Bound &bound, Side side,
                int rows)
{
    const Question question = Ask(file, tree, bound, side, rows);
    (void)Send(connection, question.Which, question.Wanted, Answer::Kept);
}

// Puts the cursor on a row and gives it.
int16_t Give(View *view, Cursor *cursor, const PGresult *rows, int row, Bytes *key, Bytes *value)
{
    const Bytes found = BytesAt(rows, row, 0);
    const int64_t record = NumberAt(rows, row, 1);
    if (found.Size > maxBound || record <= 0 || record > UINT32_MAX) return BtrStatusForeignFile;
    const auto number = static_cast<uint32_t>(record);
    PutField(cursor->Value, number);
    memcpy(cursor->Key, found.Data, found.Size);
    cursor->KeySize = found.Size;
    view->LastFile = cursor->In->Number;
    view->LastRecord = number;
    view->LastRow = row;
    if (cursor->Tree == recordTree) {
        *key = {cursor->Value, sizeof cursor->Value};
        *value = BytesAt(rows, row, 2);
    } else {
        *key = found;
        *value = {cursor->Value, sizeof cursor->Value};
    }
    return BtrStatusOk;
}

int16_t GiveEntry(View *view, Cursor *cursor, const Entry &entry, Bytes *key, Bytes *value)
{
    view->LastRecord = 0;
    cursor->Run = 0;
    if (entry.In == nullptr) return BtrStatusEndOfFile;
    cursor->Run = entry.In->Id;
    cursor->Row = entry.Row;
    view->LastRun = entry.In->Id;
    return Give(view, cursor, entry.In->Rows, entry.Row, key, value);
}

int RowsAhead(const Cursor *cursor)
{
    if (serverLimits->ReadAhead_ms == 0) return 1;
    const size_t bytes = cursor->In->Layout.RecordLength + size_t{64};
    const auto most = static_cast<int>(std::min<size_t>(mostAhead, mostAheadBytes / bytes));
    return std::clamp(cursor->Ahead, 1, std::max(most, 1));
}

Run RunFrom(const Cursor *cursor, const Bound &bound, Side side, int rows)
{
    Run run{};
    run.File = cursor->In->Number;
    run.Tree = cursor->Tree;
    run.Forward = side == Side::First || side == Side::AtOrAfter;
    run.Bounded = side == Side::AtOrAfter || side == Side::Before;
    run.Count = rows;
    run.BoundSize = bound.Size;
    memcpy(run.Bound, bound.Bytes, bound.Size);
    return run;
}

// What follows the key in the direction.
Bound Beyond(size_t tree, const uint8_t *key, size_t size, bool forward)
{
    if (forward) return Behind(tree, key, size);
    Bound bound{};
    bound.Size = size;
    memcpy(bound.Bytes, key, size);
    return bound;
}

// Lets the rows behind a run come while the run is served.
void GoOnBehind(Connection *connection, const Cursor *cursor, const Run &run)
{
    if (run.Whole || run.Count == 0 || connection->IsComing || serverLimits->ReadAhead_ms == 0) return;
    const Bytes last = BytesAt(run.Rows, run.Count - 1, 0);
    if (last.Size > maxBound) return;
    const Bound bound = Beyond(run.Tree, last.Data, last.Size, run.Forward);
    const Side side = run.Forward ? Side::AtOrAfter : Side::Before;
    Entry known{};
    if (FindInRuns(connection, run.File, run.Tree, {bound.Bytes, bound.Size}, side, &known)) return;
    const int rows = RowsAhead(cursor);
    const Question question = Ask(*cursor->In, run.Tree, bound, side, rows);
    SendComing(connection, question.Which, question.Wanted, RunFrom(cursor, bound, side, rows));
}

// Gives an entry of a run. Who comes to a run on the way along the tree wants the next one soon.
int16_t GiveOf(View *view, Cursor *cursor, const Entry &entry, Bytes *key, Bytes *value)
{
    const int16_t status = GiveEntry(view, cursor, entry, key, value);
    if (status == BtrStatusOk && entry.Row == 0 && cursor->Ahead >= longAhead)
        GoOnBehind(view->By, cursor, *entry.In);
    return status;
}

// Outside a writer. What is in memory is served while it may be; then the server is first asked whether
// it is still right, and at last for the rows.
int16_t Search(View *view, Cursor *cursor, const Bound &bound, Side side, Bytes *key, Bytes *value)
{
    Connection *connection = view->By;
    if (view->Held && !connection->Holding) return BtrStatusIoError;
    const uint32_t file = cursor->In->Number;
    Entry found{};
    const auto inMemory = [&] {
        return FindInRuns(connection, file, cursor->Tree, {bound.Bytes, bound.Size}, side, &found);
    };
    bool known = inMemory();
    const Run &coming = connection->Coming;
    const bool runComes =
        !known && connection->IsComing && coming.File == file && coming.Tree == cursor->Tree;
    if (runComes || (known && !AreFresh(connection) && connection->ChangeComing)) {
        const bool risks = HoldsAnything(connection);
        const int16_t status = AwaitComing(connection);
        if (status != BtrStatusOk && risks) return status;
        known = inMemory();
    }
    if (known && AreFresh(connection)) return GiveOf(view, cursor, found, key, value);
    for (bool asks = known && serverLimits->ReadAhead_ms > 0; asks;) {
        const int16_t status = AskIn(view, [&] { SendStates(connection); });
        if (status != BtrStatusOk) return status;
        asks = !TakeStates(connection, TakeKept(connection, 0));
        if (!asks && inMemory()) return GiveOf(view, cursor, found, key, value);
    }
    const int rows = RowsAhead(cursor);
    PGresult *read = nullptr;
    // Rows are kept with states that are no younger than they are.
    for (known = false; !known;) {
        const int16_t status = AskIn(view, [&] {
            if (!AreFresh(connection) || !connection->HasStates) SendStates(connection);
            SendSearch(connection, *cursor->In, cursor->Tree, bound, side, rows);
        });
        if (status != BtrStatusOk) return status;
        const size_t kept = connection->KeptCount - 1;
        known = kept == 0 || TakeStates(connection, TakeKept(connection, 0));
        read = TakeKept(connection, kept);
        if (read == nullptr) return BtrStatusIoError;
        if (!known) PQclear(read);
    }
    const Run *run = KeepRun(connection, RunFrom(cursor, bound, side, rows), read);
    return GiveOf(view, cursor, {run->Count > 0 ? run : nullptr, 0}, key, value);
}

// What was read of a file before the gate was entered, and found unchanged there, stays as it is until this
// writer changes the file, which ends it.
int16_t SearchInWriter(View *view, Cursor *cursor, const Bound &bound, Side side, Bytes *key, Bytes *value)
{
    Connection *connection = view->By;
    Entry known{};
    if (FindInRuns(connection, cursor->In->Number, cursor->Tree, {bound.Bytes, bound.Size}, side, &known))
        return GiveEntry(view, cursor, known, key, value);
    const HighestKey *highest = FindHighest(connection, cursor->In->Number, cursor->Tree);
    if (side == Side::Last && highest != nullptr && highest->Exact &&
        !cursor->In->Layout.Keys[cursor->Tree - 1].Duplicates) {
        memcpy(cursor->Key, highest->Key, highest->Size);
        cursor->KeySize = highest->Size;
        PutField(cursor->Value, highest->Record);
        *key = {cursor->Key, cursor->KeySize};
        *value = {cursor->Value, sizeof cursor->Value};
        return BtrStatusOk;
    }
    ForgetOwn(view);
    const int16_t status =
        AskIn(view, [&] { SendSearch(connection, *cursor->In, cursor->Tree, bound, side, 1); });
    if (status != BtrStatusOk) return status;
    view->Own = TakeKept(connection, 0);
    view->LastRun = 0;
    if (view->Own == nullptr) return BtrStatusIoError;
    if (PQntuples(view->Own) == 0) return BtrStatusEndOfFile;
    const int16_t given = Give(view, cursor, view->Own, 0, key, value);
    if (given == BtrStatusOk && side == Side::Last && cursor->Tree != recordTree &&
        !cursor->In->Layout.Keys[cursor->Tree - 1].Duplicates)
        SetHighest(connection, cursor->In->Number, cursor->Tree, {cursor->Key, cursor->KeySize},
                   view->LastRecord);
    return given;
}

int16_t SeekBound(View *view, Cursor *cursor, const Bound &bound, Side side, Bytes *key, Bytes *value)
{
    return view->Writing ? SearchInWriter(view, cursor, bound, side, key, value)
                         : Search(view, cursor, bound, side, key, value);
}

// The record of the row that was given last.
bool GiveLast(const View *view, const File &file, uint32_t record, Bytes *stored)
{
    if (view->LastRecord != record || view->LastFile != file.Number || record == 0) return false;
    const PGresult *rows = view->Own;
    if (view->LastRun != 0) {
        const Run *run = FindRun(view->By, view->LastRun);
        if (run == nullptr) return false;
        rows = run->Rows;
    }
    if (rows == nullptr || PQgetisnull(rows, view->LastRow, 2) != 0) return false;
    *stored = BytesAt(rows, view->LastRow, 2);
    return true;
}

// Rows of a file that nobody has changed since they were read, as the gate's holder knows. Long runs are not
// gone through.
bool GiveUnchanged(const View *view, const File &file, uint32_t record, Bytes *stored)
{
    constexpr int shortRun = 64;
    for (const Run &run : view->By->Runs) {
        if (run.Id == 0 || run.File != file.Number || run.Count > shortRun) continue;
        for (int row = 0; row < run.Count; ++row) {
            if (NumberAt(run.Rows, row, 1) != record || PQgetisnull(run.Rows, row, 2) != 0) continue;
            *stored = BytesAt(run.Rows, row, 2);
            return true;
        }
    }
    return false;
}

} // namespace

int16_t BeginSnapshot(Store *store, View **snapshot)
{
    if (*snapshot == nullptr) {
        *snapshot = static_cast<View *>(calloc(1, sizeof(View)));
        if (*snapshot == nullptr) return BtrStatusHandleTableFull;
        (*snapshot)->Of = store;
        (*snapshot)->By = ConnectionOf(store);
    }
    (*snapshot)->Open = true;
    (*snapshot)->LastRecord = 0;
    return BtrStatusOk;
}

// The transaction begins, and with it the moment that is seen, with the first statement in it.
int16_t HoldSnapshot(View *snapshot)
{
    Connection *connection = snapshot->By;
    int16_t status = Connect(connection);
    if (status != BtrStatusOk) return status;
    ForgetAllRuns(connection);
    (void)Send(connection, Statement::BeginSnapshot, Parameters{}, Answer::Needed);
    SendStates(connection); // of all files, since none is known any more
    status = Exchange(connection, 0);
    if (status != BtrStatusOk) {
        ResetSnapshot(snapshot);
        return status;
    }
    (void)TakeStates(connection, TakeKept(connection, 0));
    connection->Holding = true;
    snapshot->Held = true;
    return BtrStatusOk;
}

void ResetSnapshot(View *snapshot)
{
    Connection *connection = snapshot->By;
    if (connection->Holding) {
        SendRelease(connection, Statement::Rollback, Parameters{});
        connection->Holding = false;
        connection->Checked_us = 0;
    }
    snapshot->Held = false;
    snapshot->Open = false;
}

bool IsOpen(const View &snapshot) { return snapshot.Open; }

void EndSnapshot(View *snapshot)
{
    ResetSnapshot(snapshot);
    free(snapshot);
}

void ForgetReads(Store *store)
{
    ConnectionOf(store)->Checked_us = 0;
    ConnectionOf(store)->AheadIsOld = true;
}

// Who has asked for nothing for a while will hardly do so now.
void AskAhead(Store *store)
{
    constexpr int64_t while_us = 1000000;
    Connection *connection = ConnectionOf(store);
    const int64_t last_us = std::max(connection->Asked_us, connection->Ahead_us);
    if (connection->InTransaction || connection->Holding || serverLimits->ReadAhead_ms == 0) return;
    if (!AreFresh(connection) && Now_us() - last_us < while_us) SendAhead(connection);
}

// A cursor moves on from its key, whatever has been committed since.
int16_t UseCursor(View *snapshot, const File &file, size_t tree, Cursor **cursor, bool *stands)
{
    if (*cursor == nullptr) {
        *cursor = static_cast<Cursor *>(calloc(1, sizeof(Cursor)));
        if (*cursor == nullptr) return BtrStatusHandleTableFull;
        (*cursor)->By = snapshot->By;
        (*cursor)->In = &file;
        (*cursor)->Tree = static_cast<uint32_t>(tree);
    }
    *stands = (*cursor)->KeySize > 0;
    return BtrStatusOk;
}

void CloseCursor(Cursor *cursor) { free(cursor); }

int16_t Seek(View *view, Cursor *cursor, Bytes bound, Side side, Bytes *key, Bytes *value)
{
    const Bound wanted = BoundOf(cursor->Tree, bound);
    // Who goes on from where the cursor stands is on the way along the tree.
    const Bound next = Behind(cursor->Tree, cursor->Key, cursor->KeySize);
    const bool goesOn = cursor->KeySize > 0 && side == Side::AtOrAfter && wanted.Size == next.Size &&
                        memcmp(wanted.Bytes, next.Bytes, next.Size) == 0;
    if (!goesOn) cursor->Ahead = 1;
    return SeekBound(view, cursor, wanted, side, key, value);
}

namespace {

int16_t Move(View *view, Cursor *cursor, Side side, Bytes *key, Bytes *value)
{
    const bool forward = side == Side::AtOrAfter;
    const Run *run = FindRun(view->By, cursor->Run);
    if (!view->Writing && run != nullptr && AreFresh(view->By)) {
        const int row = forward == run->Forward ? cursor->Row + 1 : cursor->Row - 1;
        if (row >= 0 && row < run->Count) return GiveEntry(view, cursor, {run, row}, key, value);
    }
    cursor->Ahead = std::min(std::max(cursor->Ahead * 4, firstAhead), mostAhead);
    const Bound bound = Beyond(cursor->Tree, cursor->Key, cursor->KeySize, forward);
    return SeekBound(view, cursor, bound, side, key, value);
}

} // namespace

int16_t SeekNext(View *view, Cursor *cursor, Bytes *key, Bytes *value)
{
    return Move(view, cursor, Side::AtOrAfter, key, value);
}

int16_t SeekPrevious(View *view, Cursor *cursor, Bytes *key, Bytes *value)
{
    return Move(view, cursor, Side::Before, key, value);
}

int16_t SeekExactly(View *snapshot, Cursor *cursor, Bytes key, Bytes *value)
{
    const Bound wanted = BoundOf(cursor->Tree, key);
    const uint32_t record = RecordIn(key);
    if (cursor->Tree == recordTree && GiveLast(snapshot, *cursor->In, record, value)) {
        cursor->Run = 0;
        cursor->KeySize = wanted.Size;
        memcpy(cursor->Key, wanted.Bytes, wanted.Size);
        return BtrStatusOk;
    }
    Bytes found;
    const int16_t status = Seek(snapshot, cursor, key, Side::AtOrAfter, &found, value);
    if (status == BtrStatusEndOfFile) return BtrStatusKeyNotFound;
    if (status != BtrStatusOk) return status;
    const bool same = cursor->KeySize == wanted.Size && memcmp(cursor->Key, wanted.Bytes, wanted.Size) == 0;
    return same ? BtrStatusOk : BtrStatusKeyNotFound;
}

int16_t Get(View *view, const File &file, size_t tree, Bytes key, Bytes *value)
{
    const uint32_t record = RecordIn(key);
    if (tree == recordTree && GiveLast(view, file, record, value)) return BtrStatusOk;
    if (!view->Writing) {
        Cursor cursor{};
        cursor.By = view->By;
        cursor.In = &file;
        cursor.Tree = static_cast<uint32_t>(tree);
        return SeekExactly(view, &cursor, key, value);
    }
    if (tree == recordTree && GiveUnchanged(view, file, record, value)) return BtrStatusOk;
    ForgetOwn(view);
    Connection *connection = view->By;
    const int16_t status = AskIn(view, [&] {
        Parameters wanted{};
        AddNumber(&wanted, file.Number);
        if (tree == recordTree) {
            AddNumber(&wanted, record);
        } else {
            AddNumber(&wanted, static_cast<int64_t>(tree));
            AddBytes(&wanted, key.Data, key.Size);
        }
        (void)Send(connection, tree == recordTree ? Statement::OneRecord : Statement::OneEntry, wanted,
                   Answer::Kept);
    });
    if (status != BtrStatusOk) return status;
    view->Own = TakeKept(connection, 0);
    if (view->Own == nullptr || PQntuples(view->Own) != 1) return BtrStatusKeyNotFound;
    view->LastRun = 0;
    view->LastFile = file.Number;
    view->LastRecord = static_cast<uint32_t>(NumberAt(view->Own, 0, 1));
    view->LastRow = 0;
    *value = BytesAt(view->Own, 0, tree == recordTree ? 2 : 1);
    return BtrStatusOk;
}

} // namespace wbtrv
