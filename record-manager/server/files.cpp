// The files of a schema: their numbers, definitions and counters.
#include "record-manager/fields.h"
#include "record-manager/server/private.h"

#include <cstdlib>
#include <cstring>
#include <initializer_list>

namespace wbtrv {

namespace {

void SetFoundFile(Connection *connection, PGresult *rows)
{
    PQclear(connection->FoundFile);
    connection->FoundFile = rows;
    connection->FoundFileHeld = false;
}

bool IsNamed(const PGresult *rows, const char *name)
{
    if (rows == nullptr || PQntuples(rows) != 1) return false;
    const Bytes found = BytesAt(rows, 0, 1);
    return found.Size == strlen(name) && memcmp(found.Data, name, found.Size) == 0;
}

int16_t ReadByName(View *view, const char *name)
{
    Connection *connection = view->By;
    const int16_t status = AskIn(view, [&] {
        Parameters wanted{};
        AddBytes(&wanted, name, strlen(name));
        (void)Send(connection, Statement::ReadFileByName, wanted, Answer::Kept);
    });
    if (status == BtrStatusOk) SetFoundFile(connection, TakeKept(connection, 0));
    return status;
}

// The number of a file that this process knows by the name; 0 if it knows none.
uint32_t KnownNumber(Store *store, const char *name)
{
    pthread_mutex_lock(&store->Mutex);
    const File *file = store->Files;
    while (file != nullptr && strcmp(file->Name, name) != 0) {
        file = file->Next;
    }
    const uint32_t number = file != nullptr ? file->Number : 0;
    pthread_mutex_unlock(&store->Mutex);
    return number;
}

// Forgets files of the name that have been replaced.
void ForgetReplaced(Store *store, const char *name, uint32_t number)
{
    for (File **link = &store->Files; *link != nullptr;) {
        File *file = *link;
        if (file->Uses > 0 || file->Number == number || strcmp(file->Name, name) != 0) {
            link = &file->Next;
            continue;
        }
        *link = file->Next;
        free(file);
    }
}

int16_t LoadFile(const Store &store, const PGresult *rows, const char *name, File **out)
{
    auto *file = static_cast<File *>(calloc(1, sizeof(File)));
    if (file == nullptr) return BtrStatusHandleTableFull;
    const Bytes definition = BytesAt(rows, 0, 2);
    if (ParseDefinition(definition.Data, definition.Size, &file->Layout) != BtrStatusOk) {
        free(file);
        return BtrStatusForeignFile;
    }
    file->Number = static_cast<uint32_t>(NumberAt(rows, 0, 0));
    file->Do = store.Do;
    memcpy(file->Name, name, strnlen(name, BtrPathSize));
    *out = file;
    return BtrStatusOk;
}

int16_t AcquireLocked(Store *store, const PGresult *rows, const char *name, File **out)
{
    const auto number = static_cast<uint32_t>(NumberAt(rows, 0, 0));
    ForgetReplaced(store, name, number);
    File *file = store->Files;
    while (file != nullptr && file->Number != number) {
        file = file->Next;
    }
    if (file == nullptr) {
        const int16_t status = LoadFile(*store, rows, name, &file);
        if (status != BtrStatusOk) return status;
        file->Next = store->Files;
        store->Files = file;
    }
    file->Uses++;
    *out = file;
    return BtrStatusOk;
}

} // namespace

int16_t FindFileNumber(View *view, const char *name, uint32_t *number)
{
    // One that is known is only a guess, which is made sure of when the file is held open.
    *number = view->Writing || view->By->Doubts ? 0 : KnownNumber(view->Of, name);
    if (*number != 0) return BtrStatusOk;
    view->By->Doubts = false;
    const int16_t status = ReadByName(view, name);
    if (status == BtrStatusOk && IsNamed(view->By->FoundFile, name))
        *number = static_cast<uint32_t>(NumberAt(view->By->FoundFile, 0, 0));
    return status;
}

int16_t AcquireFile(View *view, const char *name, File **file)
{
    Connection *connection = view->By;
    if (!connection->FoundFileHeld || !IsNamed(connection->FoundFile, name)) {
        connection->Doubts = true;
        const int16_t status = ReadByName(view, name);
        if (status != BtrStatusOk) return status;
    }
    connection->FoundFileHeld = false;
    if (!IsNamed(connection->FoundFile, name)) return BtrStatusFileNotFound;
    pthread_mutex_lock(&view->Of->Mutex);
    const int16_t status = AcquireLocked(view->Of, connection->FoundFile, name, file);
    pthread_mutex_unlock(&view->Of->Mutex);
    return status;
}

void ReleaseFile(Store *store, File *file)
{
    pthread_mutex_lock(&store->Mutex);
    file->Uses--;
    pthread_mutex_unlock(&store->Mutex);
}

int16_t CreateFile(Writer *writer, const char *name, const Definition &definition)
{
    Connection *connection = writer->Seen.By;
    uint32_t number = 0;
    int16_t status = FindFileNumber(&writer->Seen, name, &number);
    if (status != BtrStatusOk) return status;
    if (number != 0) {
        Parameters old{};
        AddNumber(&old, number);
        for (const Statement statement : {Statement::RemoveFile, Statement::RemoveGroups,
                                          Statement::RemoveEntries, Statement::RemoveRecords}) {
            (void)Send(connection, statement, old, Answer::Needed);
        }
        ForgetRuns(connection, number);
        pthread_mutex_lock(&writer->Seen.Of->Mutex);
        ForgetReplaced(writer->Seen.Of, name, 0);
        pthread_mutex_unlock(&writer->Seen.Of->Mutex);
    }
    if (connection->LastFile >= maxFileNumber) return BtrStatusFileTableFull;
    number = ++connection->LastFile;
    Parameters last{};
    AddNumber(&last, number);
    (void)Send(connection, Statement::WriteLastFile, last, Answer::Needed);
    connection->StatesAreOld = true;

    uint8_t stored[sizeof(BtrFileHeader) + BtrMaxKeys * sizeof(BtrKeyEntry)];
    PutField(stored, definition.Header);
    memcpy(stored + sizeof(BtrFileHeader), definition.KeyEntries,
           definition.SegmentCount * sizeof(BtrKeyEntry));
    constexpr uint8_t counts[BtrMaxKeys * sizeof(uint32_t)] = {};
    Parameters made{};
    AddNumber(&made, number);
    AddBytes(&made, name, strlen(name));
    AddBytes(&made, stored, DefinitionSize(definition));
    AddBytes(&made, counts, definition.KeyCount * sizeof(uint32_t));
    (void)Send(connection, Statement::MakeFile, made, Answer::Needed);
    for (size_t i = 0; i < definition.KeyCount; ++i) {
        if (!definition.Keys[i].Duplicates) continue;
        Parameters group{};
        AddNumber(&group, number);
        AddNumber(&group, static_cast<int64_t>(IndexTree(i)));
        (void)Send(connection, Statement::MakeGroup, group, Answer::Needed);
    }
    return ExchangeIn(writer, 0);
}

// Files have no trees of their own here.
void ForgetTrees(Store *, uint32_t) {}
int16_t RenewTrees(Writer *, uint32_t) { return BtrStatusOk; }

int16_t ReadLastFile(View *view, uint32_t *number)
{
    Connection *connection = view->By;
    const int16_t status =
        AskIn(view, [&] { (void)Send(connection, Statement::ReadLastFile, Parameters{}, Answer::Kept); });
    if (status != BtrStatusOk) return status;
    const PGresult *rows = connection->Kept[0];
    if (rows == nullptr || PQntuples(rows) != 1) return BtrStatusForeignFile;
    *number = static_cast<uint32_t>(NumberAt(rows, 0, 0));
    return BtrStatusOk;
}

namespace {

int16_t CountersOf(const FileState &state, const File &file, Counters *counters)
{
    const int64_t last = state.LastRecord;
    if (last < 0 || last > UINT32_MAX || state.Records < 0 || state.Records > last || state.Sequence < 0)
        return BtrStatusForeignFile;
    counters->LastRecord = static_cast<uint32_t>(last);
    counters->Records = static_cast<uint32_t>(state.Records);
    counters->Sequence = static_cast<uint64_t>(state.Sequence);
    if (state.CountsSize != file.Layout.KeyCount * sizeof(uint32_t)) return BtrStatusForeignFile;
    for (size_t i = 0; i < file.Layout.KeyCount; ++i) {
        const uint8_t *at = state.Counts + i * sizeof(uint32_t);
        counters->UniqueValues[i] =
            uint32_t{at[0]} << 24 | uint32_t{at[1]} << 16 | uint32_t{at[2]} << 8 | uint32_t{at[3]};
    }
    return BtrStatusOk;
}

} // namespace

int16_t ReadCounters(View *view, const File &file, Counters *counters)
{
    Connection *connection = view->By;
    const FileState *known = view->Writing ? FindState(connection, file.Number) : nullptr;
    if (known != nullptr) return CountersOf(*known, file, counters);
    const int16_t status = AskIn(view, [&] {
        Parameters wanted{};
        AddNumber(&wanted, file.Number);
        (void)Send(connection, Statement::ReadFileCounters, wanted, Answer::Kept);
    });
    if (status != BtrStatusOk) return status;
    const PGresult *rows = connection->Kept[0];
    if (rows == nullptr || PQntuples(rows) != 1) return BtrStatusForeignFile;
    FileState state;
    StateOfRow(rows, 0, &state);
    return CountersOf(state, file, counters);
}

int16_t CountGroups(View *view, const File &file, Counters *counters)
{
    Connection *connection = view->By;
    const int16_t status = AskIn(view, [&] {
        Parameters wanted{};
        AddNumber(&wanted, file.Number);
        (void)Send(connection, Statement::ReadGroups, wanted, Answer::Kept);
    });
    const PGresult *rows = connection->Kept[0];
    if (status != BtrStatusOk || rows == nullptr) return status;
    for (int row = 0; row < PQntuples(rows); ++row) {
        const int64_t tree = NumberAt(rows, row, 0);
        if (tree < 1 || tree > file.Layout.KeyCount) return BtrStatusForeignFile;
        counters->UniqueValues[tree - 1] = static_cast<uint32_t>(NumberAt(rows, row, 1));
    }
    return BtrStatusOk;
}

int16_t WriteCounters(Writer *writer, const File &file, const Counters &counters)
{
    const int16_t status = Settle(writer);
    if (status != BtrStatusOk) return status;
    uint8_t counts[sizeof counters.UniqueValues];
    for (size_t i = 0; i < file.Layout.KeyCount; ++i) {
        uint8_t *at = counts + i * sizeof(uint32_t);
        const uint32_t value = counters.UniqueValues[i];
        at[0] = static_cast<uint8_t>(value >> 24);
        at[1] = static_cast<uint8_t>(value >> 16);
        at[2] = static_cast<uint8_t>(value >> 8);
        at[3] = static_cast<uint8_t>(value);
    }
    Parameters values{};
    AddNumber(&values, file.Number);
    AddNumber(&values, counters.LastRecord);
    AddNumber(&values, counters.Records);
    AddNumber(&values, static_cast<int64_t>(counters.Sequence));
    AddBytes(&values, counts, file.Layout.KeyCount * sizeof(uint32_t));
    writer->WritesCounters = true;
    FileState *state = FindState(writer->Seen.By, file.Number);
    if (state != nullptr) {
        state->LastRecord = counters.LastRecord;
        state->Records = counters.Records;
        state->Sequence = static_cast<int64_t>(counters.Sequence);
        state->CountsSize = file.Layout.KeyCount * sizeof(uint32_t);
        memcpy(state->Counts, counts, state->CountsSize);
    }
    return Send(writer->Seen.By, Statement::WriteCounters, values, Answer::Needed);
}

} // namespace wbtrv
