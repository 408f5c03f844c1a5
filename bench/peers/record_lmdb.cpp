// The table of the record manager's benchmarks in bare LMDB: records by number of insertion, an index each
// for the three keys. A read renews its transaction and seeks once, as any interface of single calls must.
//   record_lmdb DIRECTORY COUNT load|equal|next|scattered [writing]   prints the seconds
#include "bench/peers/peer.h"
#include "bench/record_table.h"

#include <lmdb.h>
#include <optional>

namespace {

struct Table {
    MDB_env *Environment = nullptr;
    MDB_dbi Records = 0;
    MDB_dbi ByNumber = 0;
    MDB_dbi ByRandom = 0;
    MDB_dbi ByGroup = 0;

    explicit Table(const std::string &directory)
    {
        Must(mdb_env_create(&Environment));
        Must(mdb_env_set_maxdbs(Environment, 8));
        Must(mdb_env_set_mapsize(Environment, size_t{64} << 30));
        Must(mdb_env_open(Environment, directory.c_str(), MDB_NOTLS, 0644));
        MDB_txn *transaction = nullptr;
        Must(mdb_txn_begin(Environment, nullptr, 0, &transaction));
        Must(mdb_dbi_open(transaction, "records", MDB_CREATE, &Records));
        Must(mdb_dbi_open(transaction, "number", MDB_CREATE, &ByNumber));
        Must(mdb_dbi_open(transaction, "random", MDB_CREATE, &ByRandom));
        Must(mdb_dbi_open(transaction, "group", MDB_CREATE, &ByGroup));
        Must(mdb_txn_commit(transaction));
    }
};

MDB_val Val(const void *data, size_t size) { return {size, const_cast<void *>(data)}; }

void Put(MDB_txn *transaction, MDB_dbi dbi, const void *key, size_t keySize, const void *data, size_t size,
         unsigned flags)
{
    MDB_val keyVal = Val(key, keySize);
    MDB_val dataVal = Val(data, size);
    Must(mdb_put(transaction, dbi, &keyVal, &dataVal, flags));
}

// Commits as often as the record manager does while loading, and is on disk at the end as it is.
void Load(const Table &table, uint32_t count)
{
    Must(mdb_env_set_flags(table.Environment, MDB_NOSYNC, 1));
    MDB_txn *transaction = nullptr;
    Must(mdb_txn_begin(table.Environment, nullptr, 0, &transaction));
    for (uint32_t number = 1; number <= count; ++number) {
        BenchRecord record;
        FillBenchRecord(&record, number, count);
        const uint32_t recordKey = BigEndian(number);
        const uint32_t randomKey = BigEndian(record.Random);
        char groupKey[sizeof record.Group + sizeof recordKey];
        memcpy(groupKey, record.Group, sizeof record.Group);
        memcpy(groupKey + sizeof record.Group, &recordKey, sizeof recordKey);
        Put(transaction, table.Records, &recordKey, 4, &record, sizeof record, MDB_APPEND);
        Put(transaction, table.ByNumber, &recordKey, 4, &recordKey, 4, MDB_NOOVERWRITE);
        Put(transaction, table.ByRandom, &randomKey, 4, &recordKey, 4, MDB_NOOVERWRITE);
        Put(transaction, table.ByGroup, groupKey, sizeof groupKey, &recordKey, 4, MDB_NOOVERWRITE);
        if (number % 25000 == 0) {
            Must(mdb_txn_commit(transaction));
            Must(mdb_txn_begin(table.Environment, nullptr, 0, &transaction));
        }
    }
    Must(mdb_txn_commit(transaction));
    Must(mdb_env_sync(table.Environment, 1));
}

struct Reader {
    MDB_txn *Transaction = nullptr;
    MDB_cursor *Cursor = nullptr;
    MDB_dbi Records;
    BenchRecord Record = {};
    char Key[4] = {};

    Reader(const Table &table, MDB_dbi index) : Records(table.Records)
    {
        Must(mdb_txn_begin(table.Environment, nullptr, MDB_RDONLY, &Transaction));
        Must(mdb_cursor_open(Transaction, index, &Cursor));
        mdb_txn_reset(Transaction);
    }
    Reader(const Reader &) = delete;
    Reader &operator=(const Reader &) = delete;
    ~Reader() { mdb_txn_abort(Transaction); }

    // Reads the record at or behind a key; `next`: behind it. False at the end.
    bool Read(const void *key, bool next, MDB_cursor_op op)
    {
        Must(mdb_txn_renew(Transaction));
        Must(mdb_cursor_renew(Transaction, Cursor));
        MDB_val keyVal = Val(key, 4);
        MDB_val number;
        int error = mdb_cursor_get(Cursor, &keyVal, &number, op);
        if (error == 0 && next) error = mdb_cursor_get(Cursor, &keyVal, &number, MDB_NEXT);
        if (error == 0) {
            MDB_val found;
            Must(mdb_get(Transaction, Records, &number, &found));
            memcpy(&Record, found.mv_data, sizeof Record);
            memcpy(Key, keyVal.mv_data, sizeof Key);
        }
        mdb_txn_reset(Transaction);
        return error == 0;
    }
};

void ReadEqual(const Table &table, uint32_t count)
{
    Reader reader(table, table.ByNumber);
    BenchRandom random;
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t key = BigEndian(random.Below(count) + 1);
        Must(reader.Read(&key, false, MDB_SET_KEY) ? 0 : 1);
    }
}

void ReadAlong(const Table &table, MDB_dbi index, uint32_t count)
{
    Reader reader(table, index);
    Must(reader.Read(reader.Key, false, MDB_FIRST) ? 0 : 1);
    for (uint32_t i = 1; i < count; ++i) {
        Must(reader.Read(reader.Key, true, MDB_SET_RANGE) ? 0 : 1);
    }
    Must(reader.Read(reader.Key, true, MDB_SET_RANGE) ? 1 : 0);
}

} // namespace

int main(int argumentCount, char **arguments)
{
    const BenchTask task = BenchTask::From(argumentCount, arguments);
    Stopwatch watch;
    const Table table(task.Directory);
    if (task.What == "load") {
        Load(table, task.Count);
        watch.Print();
        return 0;
    }
    std::optional<BenchWriter> writer;
    if (task.Writing) {
        writer.emplace([&](const std::atomic<bool> &ends) {
            BenchRandom random{42};
            while (!ends) {
                const uint32_t key = BigEndian(random.Below(task.Count) + 1);
                MDB_txn *transaction = nullptr;
                MDB_val keyVal = Val(&key, 4);
                MDB_val found;
                BenchRecord record;
                Must(mdb_txn_begin(table.Environment, nullptr, 0, &transaction));
                Must(mdb_get(transaction, table.Records, &keyVal, &found));
                memcpy(&record, found.mv_data, sizeof record);
                record.Rest[100]++;
                Put(transaction, table.Records, &key, 4, &record, sizeof record, 0);
                Must(mdb_txn_commit(transaction));
            }
        });
    }
    watch = {};
    if (task.What == "equal") ReadEqual(table, task.Count);
    if (task.What == "next") ReadAlong(table, table.ByNumber, task.Count);
    if (task.What == "scattered") ReadAlong(table, table.ByRandom, task.Count);
    const double seconds = watch.Seconds();
    writer.reset();
    printf("%.6f\n", seconds);
}
