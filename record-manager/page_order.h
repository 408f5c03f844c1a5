// Keeps the pages that commits write side by side. A commit waits for each run of neighbouring pages about as
// long as for ten more pages within a run, and left alone a posting's ten pages come to lie in six runs.
//
// What a commit writes are pages it found free. The store keeps the free pages in lists, one for what each
// transaction left, uses up the oldest list before it looks at the next, and within what it has looked at
// takes the lowest page first. Three things put that in order, every so many transactions:
//  1. Lists whose pages are neighbours are made one, as soon as the oldest is nearly used up.
//  2. Where there is too little that is free, many pages are taken from the end of the file at once.
//  3. Leaves that have filled up, and will not change again, stay where their last change happened to put
//  them, and soon every run has such holes. They move to the lowest free pages, where they lie close.
#pragma once

#include <cstdint>

struct MDB_env;
struct MDB_txn;

namespace wbtrv {

// Brings the free pages in order, in a write transaction that has changed nothing yet, if it is time to.
// `fd`: the file; `due`: number of the transaction that is to look again, 0 at first. `*ordered` tells that
// full leaves may now move. False: the transaction is of no use any more.
bool OrderFreePages(MDB_env *environment, MDB_txn *writer, unsigned catalogue, int fd, uint64_t *due,
                    bool *ordered);

// Moves the full leaves that hold the records from number `first` on, of a tree with record numbers as keys
// that grows at its end. False: the transaction is of no use any more.
bool MoveFullLeaves(MDB_env *environment, MDB_txn *writer, unsigned tree, uint32_t first);

} // namespace wbtrv
