// What a posting writes, into bare LMDB: the record of 500 bytes, its number under the Buchungsnummer and
// under the Stapel, one durable commit each.
//   posting_lmdb DIRECTORY COUNT   prints the seconds
#include "bench/peers/peer.h"

#include <lmdb.h>

int main(int argumentCount, char **arguments)
{
    const auto [directory, count] = PeerArguments(argumentCount, arguments);
    MDB_env *environment = nullptr;
    Must(mdb_env_create(&environment));
    Must(mdb_env_set_maxdbs(environment, 8));
    Must(mdb_env_set_mapsize(environment, size_t{64} << 30));
    Must(mdb_env_open(environment, directory, 0, 0644));
    MDB_dbi records = 0;
    MDB_dbi byNumber = 0;
    MDB_dbi byStapel = 0;
    MDB_txn *transaction = nullptr;
    Must(mdb_txn_begin(environment, nullptr, 0, &transaction));
    Must(mdb_dbi_open(transaction, "records", MDB_CREATE, &records));
    Must(mdb_dbi_open(transaction, "byNumber", MDB_CREATE, &byNumber));
    Must(mdb_dbi_open(transaction, "byStapel", MDB_CREATE, &byStapel));
    MDB_stat statistics;
    Must(mdb_stat(transaction, records, &statistics));
    Must(mdb_txn_commit(transaction));

    const Stopwatch watch;
    for (long i = 0; i < count; ++i) {
        char record[500] = {};
        const uint32_t number =
            BigEndian(static_cast<uint32_t>(statistics.ms_entries) + static_cast<uint32_t>(i) + 1);
        const uint32_t stapel[2] = {BigEndian(1), number};
        MDB_val recordKey{sizeof number, const_cast<uint32_t *>(&number)};
        MDB_val stapelKey{sizeof stapel, const_cast<uint32_t *>(stapel)};
        MDB_val recordValue{sizeof record, record};
        MDB_val reference{sizeof number, const_cast<uint32_t *>(&number)};
        Must(mdb_txn_begin(environment, nullptr, 0, &transaction));
        Must(mdb_put(transaction, records, &recordKey, &recordValue, 0));
        Must(mdb_put(transaction, byNumber, &recordKey, &reference, 0));
        Must(mdb_put(transaction, byStapel, &stapelKey, &reference, 0));
        Must(mdb_txn_commit(transaction));
    }
    watch.Print();
    mdb_env_close(environment);
}
