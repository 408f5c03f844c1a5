// The files of a directory: their numbers, definitions, counters and trees.
#include "record-manager/limits.h"
#include "record-manager/lmdb/private.h"

#include <cstdlib>
#include <cstring>
#include <initializer_list>

namespace wbtrv {

namespace {

struct StoredCounters {
    uint32_t LastRecord;
    uint32_t Records;
    uint64_t Sequence;
};
static_assert(sizeof(StoredCounters) == 16);

} // namespace

namespace {

struct NameKey {
    char Text[BtrPathSize + 3];
};

NameKey KeyOfName(const char *name)
{
    NameKey key{};
    std::memcpy(key.Text, "n:", 2);
    std::memcpy(key.Text + 2, name, strnlen(name, BtrPathSize));
    return key;
}

} // namespace

int16_t FindFileNumber(View *view, const char *name, uint32_t *number)
{
    Bytes value;
    *number = 0;
    const int16_t status = FindInCatalogue(*view, KeyOfName(name).Text, &value);
    if (status == BtrStatusKeyNotFound) return BtrStatusOk;
    if (status != BtrStatusOk) return status;
    if (value.Size != sizeof *number) return BtrStatusForeignFile;
    *number = GetField<uint32_t>(value.Data);
    return BtrStatusOk;
}

namespace {

int16_t LoadDefinition(const View &view, uint32_t number, Definition *definition)
{
    Bytes value;
    int16_t status = FindInCatalogue(view, KeyOf(number, 'd').Text, &value);
    if (status == BtrStatusKeyNotFound) return BtrStatusForeignFile;
    if (status != BtrStatusOk) return status;
    status = ParseDefinition(value.Data, value.Size, definition);
    return status == BtrStatusOk ? BtrStatusOk : BtrStatusForeignFile;
}

// Forgets files of the name that another process has replaced, and their trees' handles with them.
void ForgetReplaced(Store *store, const char *name, uint32_t number)
{
    for (File **link = &store->Files; *link != nullptr;) {
        File *file = *link;
        if (file->Uses > 0 || file->Number == number || std::strcmp(file->Name, name) != 0) {
            link = &file->Next;
            continue;
        }
        for (size_t tree = 0; tree < IndexTree(file->Layout.KeyCount); ++tree) {
            mdb_dbi_close(store->Own->Real, file->Trees[tree]);
        }
        *link = file->Next;
        std::free(file);
    }
}

int16_t LoadFile(const View &view, uint32_t number, const char *name, File **out)
{
    auto *file = static_cast<File *>(std::calloc(1, sizeof(File)));
    if (file == nullptr) return BtrStatusHandleTableFull;
    file->Number = number;
    CloseTrees(file);
    int16_t status = LoadDefinition(view, number, &file->Layout);
    if (status == BtrStatusOk && !view.Writing) status = OpenTreesToRead(view, file);
    if (status != BtrStatusOk) {
        std::free(file);
        return status;
    }
    file->Do = view.Of->Do;
    std::memcpy(file->Name, name, strnlen(name, BtrPathSize));
    *out = file;
    return BtrStatusOk;
}

int16_t AcquireFileIn(View *view, const char *name, File **out)
{
    Store *store = view->Of;
    uint32_t number = 0;
    int16_t status = FindFileNumber(view, name, &number);
    if (status != BtrStatusOk) return status;
    if (number == 0) return BtrStatusFileNotFound;
    File *file = store->Files;
    while (file != nullptr && file->Number != number) {
        file = file->Next;
    }
    if (file == nullptr) {
        if (!view->Writing) ForgetReplaced(store, name, number);
        status = LoadFile(*view, number, name, &file);
        if (status != BtrStatusOk) return status;
        if (!IsStillWhole(*view)) {
            std::free(file);
            return BtrStatusConflict;
        }
        file->Next = store->Files;
        store->Files = file;
    }
    if (view->Writing) status = NeedTrees(view->Transaction, file);
    if (status != BtrStatusOk) return status;
    file->Uses++;
    *out = file;
    return BtrStatusOk;
}

// Takes a file that is about to be replaced out of the list; its tree's handle ends with the tree.
void ForgetFile(Store *store, uint32_t number)
{
    for (File **link = &store->Files; *link != nullptr; link = &(*link)->Next) {
        File *file = *link;
        if (file->Number != number) continue;
        *link = file->Next;
        std::free(file);
        return;
    }
}

} // namespace

int16_t ReadKeyCount(View *view, uint32_t number, size_t *keys)
{
    Bytes value;
    const int16_t status = FindInCatalogue(*view, KeyOf(number, 'd').Text, &value);
    if (status != BtrStatusOk) return status;
    if (value.Size < sizeof(BtrFileHeader)) return BtrStatusForeignFile;
    const auto header = GetField<BtrFileHeader>(value.Data);
    *keys = header.KeyCount;
    return header.KeyCount <= BtrMaxKeys ? BtrStatusOk : BtrStatusForeignFile;
}

namespace {

// The store frees every page of a tree that is dropped.
int16_t DropTree(Writer *writer, uint32_t number, size_t tree)
{
    TreeHead head;
    int16_t status = FindTree(writer->Seen, number, tree, &head);
    // One made in this transaction is not on disk.
    if (status == BtrStatusOk) status = LookAtTree(writer->Seen, head);
    if (status != BtrStatusOk && status != BtrStatusForeignFile) return status;
    MDB_dbi opened = 0;
    MDB_txn *transaction = writer->Seen.Transaction;
    int error = mdb_dbi_open(transaction, KeyOfTree(number, tree).Text, 0, &opened);
    if (error == 0) error = Guarded<mdb_drop>(transaction, opened, 1);
    return StatusOf(error);
}

int16_t RemoveFile(Writer *writer, uint32_t number)
{
    Environment *own = writer->Seen.Of->Own;
    ForgetFile(writer->Seen.Of, number);
    own->TreesDropped = true;
    size_t keys = 0;
    int16_t status = ReadKeyCount(&writer->Seen, number, &keys);
    for (size_t tree = 0; status == BtrStatusOk && tree < IndexTree(keys); ++tree) {
        status = DropTree(writer, number, tree);
    }
    for (const char what : {'c', 'd'}) {
        const CatalogueKey name = KeyOf(number, what);
        MDB_val key = ToVal(name.Text);
        if (status == BtrStatusOk)
            status = StatusOf(Guarded<mdb_del>(writer->Seen.Transaction, own->Catalogue, &key, nullptr));
    }
    return status;
}

int16_t PutCatalogue(Writer *writer, const char *name, const void *data, size_t size)
{
    MDB_val key = ToVal(name);
    MDB_val value{size, const_cast<void *>(data)};
    return StatusOf(
        Guarded<mdb_put>(writer->Seen.Transaction, writer->Seen.Of->Own->Catalogue, &key, &value, 0));
}

int16_t ReadFormat(const View &view, FormatRecord *format)
{
    Bytes value;
    const int16_t status = FindInCatalogue(view, formatKey, &value);
    if (status == BtrStatusKeyNotFound) return BtrStatusForeignFile;
    if (status != BtrStatusOk) return status;
    if (value.Size != sizeof *format) return BtrStatusForeignFile;
    *format = GetField<FormatRecord>(value.Data);
    return BtrStatusOk;
}

int16_t NextFileNumber(Writer *writer, uint32_t *number)
{
    FormatRecord format;
    const int16_t status = ReadFormat(writer->Seen, &format);
    if (status != BtrStatusOk) return status;
    if (format.LastFile >= maxFileNumber) return BtrStatusFileTableFull;
    *number = ++format.LastFile;
    return PutCatalogue(writer, formatKey, &format, sizeof format);
}

} // namespace

int16_t AcquireFile(View *view, const char *name, File **file)
{
    Store *store = view->Of;
    pthread_mutex_lock(&store->Mutex);
    const int16_t status = AcquireFileIn(view, name, file);
    pthread_mutex_unlock(&store->Mutex);
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
    Store *store = writer->Seen.Of;
    WriteSums(store->Own);
    pthread_mutex_lock(&store->Mutex);
    uint32_t number = 0;
    int16_t status = FindFileNumber(&writer->Seen, name, &number);
    if (status == BtrStatusOk && number != 0) status = RemoveFile(writer, number);
    if (status == BtrStatusOk) status = NextFileNumber(writer, &number);
    if (status == BtrStatusOk) status = PutCatalogue(writer, KeyOfName(name).Text, &number, sizeof number);
    if (status == BtrStatusOk) {
        uint8_t stored[sizeof(BtrFileHeader) + BtrMaxKeys * sizeof(BtrKeyEntry)];
        PutField(stored, definition.Header);
        std::memcpy(stored + sizeof(BtrFileHeader), definition.KeyEntries,
                    definition.SegmentCount * sizeof(BtrKeyEntry));
        status = PutCatalogue(writer, KeyOf(number, 'd').Text, stored, DefinitionSize(definition));
    }
    if (status == BtrStatusOk) {
        File file{};
        file.Number = number;
        file.Layout.KeyCount = definition.KeyCount;
        status = WriteCounters(writer, file, Counters{});
    }
    for (size_t tree = 0; tree < IndexTree(definition.KeyCount) && status == BtrStatusOk; ++tree) {
        MDB_dbi made = 0;
        const unsigned flags = tree == recordTree ? MDB_CREATE | MDB_INTEGERKEY : MDB_CREATE;
        status = StatusOf(mdb_dbi_open(writer->Seen.Transaction, KeyOfTree(number, tree).Text, flags, &made));
    }
    pthread_mutex_unlock(&store->Mutex);
    return status;
}

void ForgetTrees(Store *store, uint32_t last)
{
    pthread_mutex_lock(&store->Mutex);
    for (File *file = store->Files; file != nullptr; file = file->Next) {
        if (file->Number > last) CloseTrees(file);
    }
    pthread_mutex_unlock(&store->Mutex);
}

int16_t RenewTrees(Writer *writer, uint32_t last)
{
    Store *store = writer->Seen.Of;
    int16_t status = BtrStatusOk;
    pthread_mutex_lock(&store->Mutex);
    for (File *file = store->Files; file != nullptr && status == BtrStatusOk; file = file->Next) {
        if (file->Number > last) status = NeedTrees(writer->Seen.Transaction, file);
    }
    pthread_mutex_unlock(&store->Mutex);
    return status;
}

int16_t ReadLastFile(View *view, uint32_t *number)
{
    FormatRecord format;
    const int16_t status = ReadFormat(*view, &format);
    if (status == BtrStatusOk) *number = format.LastFile;
    return status;
}

int16_t ReadCounters(View *view, const File &file, Counters *counters)
{
    Bytes value;
    const int16_t status = FindInCatalogue(*view, KeyOf(file.Number, 'c').Text, &value);
    if (status == BtrStatusKeyNotFound) return BtrStatusForeignFile;
    if (status != BtrStatusOk) return status;
    const size_t values = file.Layout.KeyCount * sizeof(uint32_t);
    if (value.Size != sizeof(StoredCounters) + values) return BtrStatusForeignFile;
    const auto stored = GetField<StoredCounters>(value.Data);
    counters->LastRecord = stored.LastRecord;
    counters->Records = stored.Records;
    counters->Sequence = stored.Sequence;
    std::memcpy(counters->UniqueValues, value.Data + sizeof stored, values);
    return BtrStatusOk;
}

int16_t WriteCounters(Writer *writer, const File &file, const Counters &counters)
{
    uint8_t bytes[sizeof(StoredCounters) + sizeof counters.UniqueValues];
    const StoredCounters stored{counters.LastRecord, counters.Records, counters.Sequence};
    const size_t values = file.Layout.KeyCount * sizeof(uint32_t);
    PutField(bytes, stored);
    std::memcpy(bytes + sizeof stored, counters.UniqueValues, values);
    return PutCatalogue(writer, KeyOf(file.Number, 'c').Text, bytes, sizeof stored + values);
}

} // namespace wbtrv
