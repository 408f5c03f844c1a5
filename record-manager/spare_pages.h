// Free pages side by side, taken from the end of the books' file many at a time. What a commit writes are the
// pages it found free, and a disk takes pages that lie together in one go, those that lie apart one by one.
#pragma once

#include <cstdint>

struct MDB_env;
struct MDB_txn;

namespace wbtrv {

// Whether the books, as committed, have too few free pages for the next write transactions.
bool SparePagesShort(MDB_env *environment);

// Takes pages from the end of the file, free from now on, in a write transaction that has changed nothing
// yet. `fd`: the file, `lastPage`: of the last commit. False: the transaction is of no use any more.
bool AddSparePages(MDB_txn *writer, unsigned catalogue, int fd, uint64_t lastPage);

} // namespace wbtrv
