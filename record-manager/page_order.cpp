#include "record-manager/page_order.h"

#include "record-manager/books_file.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <initializer_list>
#include <lmdb.h>
#include <unistd.h>

namespace wbtrv {

namespace {

// A posting changes ten pages, and two transactions pass before the pages it left are free: with less than
// this the next ones would grow the file page by page.
constexpr size_t fewPages = 128;
constexpr size_t addedPages = 256;

// What a posting takes, with the leaf that has filled up and its successor.
constexpr size_t pagesOfPosting = 12;
constexpr size_t nearlyUsedUp = 2 * pagesOfPosting;
constexpr size_t pagesOfCatalogue = 3;

// When there are short runs only, and not many pages either, more are added before those are used up.
constexpr size_t shortRun = nearlyUsedUp;
constexpr size_t manyPages = 2 * fewPages;

// Transactions between two looks at least.
constexpr uint64_t pause = 8;
// While somebody reads an old state nothing that was freed since can be had.
constexpr uint64_t longPause = 1024;

// What has more than that was not left by postings.
constexpr size_t mostPages = 1024;

// Full leaves lie before the one that grows. More of them than were split since the last time, since a
// process takes its notes with it when it ends.
constexpr size_t leavesBefore = 3;

// What is in front of the bytes of a run of pages; it begins with the number of the first.
constexpr size_t pageHead = 16;

char spareKey[] = "!spare";

// The free pages that the next write transaction may use, list by list, oldest first.
struct FreePages {
    size_t Lists;
    size_t Oldest; // pages of the first list
    bool More;     // than were read
    size_t Count;
    uint64_t Pages[mostPages];
};

// Reads no further than the oldest list where that will do for some more transactions.
bool ReadFreePages(MDB_env *environment, FreePages *free)
{
    constexpr MDB_dbi freePages = 0;
    MDB_txn *view = nullptr;
    if (mdb_txn_begin(environment, nullptr, MDB_RDONLY, &view) != 0) return false;
    MDB_cursor *cursor = nullptr;
    int error = mdb_cursor_open(view, freePages, &cursor);
    while (error == 0 && free->Oldest < nearlyUsedUp) {
        MDB_val key;
        MDB_val list;
        error = mdb_cursor_get(cursor, &key, &list, MDB_NEXT);
        if (error != 0) break;
        uint64_t transaction = 0;
        uint64_t count = 0;
        if (key.mv_size != sizeof transaction || list.mv_size < sizeof count) break;
        memcpy(&transaction, key.mv_data, sizeof transaction);
        memcpy(&count, list.mv_data, sizeof count);
        // What the last transaction left is still seen by whoever began to read before it.
        if (transaction >= mdb_txn_id(view) || count > list.mv_size / sizeof count - 1) break;
        if (free->Lists++ == 0) free->Oldest = count;
        free->More = count > mostPages - free->Count;
        if (free->More) break;
        memcpy(free->Pages + free->Count, static_cast<const uint8_t *>(list.mv_data) + sizeof count,
               count * sizeof count);
        free->Count += count;
    }
    if (cursor != nullptr) mdb_cursor_close(cursor);
    mdb_txn_abort(view);
    return error == 0 || error == MDB_NOTFOUND;
}

size_t LongestRun(FreePages *free)
{
    std::sort(free->Pages, free->Pages + free->Count);
    size_t longest = 0;
    size_t run = 0;
    for (size_t i = 0; i < free->Count; ++i) {
        run = i > 0 && free->Pages[i] == free->Pages[i - 1] + 1 ? run + 1 : 1;
        longest = std::max(longest, run);
    }
    return longest;
}

// A file that ends before its last page looks like one that was cut off. Bytes that nobody wrote take no
// room.
bool LengthenFile(int fd, uint64_t pages, size_t pageSize)
{
    const auto wanted = static_cast<off_t>(pages * pageSize);
    BooksFacts found;
    if (!ReadFacts(fd, &found)) return false;
    return found.Size >= wanted || ftruncate(fd, wanted) == 0;
}

// Takes a run of pages and gives it back. What the store had to look at to find it is one list from then on,
// and pages that are given back in the transaction that took them are not written. `*found` tells that the
// run was free before, and not taken from the end of the file.
bool TakeAndGiveBack(MDB_txn *writer, unsigned catalogue, size_t pages, size_t pageSize, uint64_t lastPage,
                     bool *found)
{
    MDB_val key{sizeof spareKey - 1, spareKey};
    MDB_val value{pages * pageSize - pageHead, nullptr};
    if (mdb_put(writer, catalogue, &key, &value, MDB_RESERVE) != 0) return false;
    uint64_t first = 0;
    memcpy(&first, static_cast<const uint8_t *>(value.mv_data) - pageHead, sizeof first);
    *found = first <= lastPage;
    // They are written once when a reader holds on to all that was free.
    if (!*found) memset(value.mv_data, 0, value.mv_size);
    return mdb_del(writer, catalogue, &key, nullptr) == 0;
}

// To put an entry where it is moves its leaf. One with pages of its own, or of few to a leaf, stays.
bool MoveLeaf(MDB_txn *writer, unsigned tree, MDB_val key, size_t pageSize)
{
    MDB_cursor *cursor = nullptr;
    if (mdb_cursor_open(writer, tree, &cursor) != 0) return true;
    MDB_val value;
    int error = mdb_cursor_get(cursor, &key, &value, MDB_SET);
    if (error == 0 && value.mv_size <= pageSize / 4) {
        error = mdb_cursor_put(cursor, &key, &value, MDB_CURRENT);
    }
    mdb_cursor_close(cursor);
    return error == 0;
}

// Goes from an entry to the first in the next leaf to one side. What is committed lies in the map, page by
// page.
bool FindNeighbour(MDB_cursor *cursor, MDB_val entry, MDB_cursor_op step, size_t pageSize, MDB_val *found)
{
    const auto page = [&](const MDB_val &key) { return reinterpret_cast<uintptr_t>(key.mv_data) / pageSize; };
    MDB_val value;
    *found = entry;
    int error = mdb_cursor_get(cursor, found, &value, MDB_SET_RANGE);
    while (error == 0 && page(*found) == page(entry)) {
        error = mdb_cursor_get(cursor, found, &value, step);
    }
    return error == 0;
}

// Which of the leaves will still grow is not known; that one is moved by its next change anyway.
bool MoveLeavesAt(MDB_txn *view, MDB_txn *writer, SplitLeaf *split, size_t pageSize)
{
    MDB_cursor *cursor = nullptr;
    if (mdb_cursor_open(view, split->Tree, &cursor) != 0) return true;
    MDB_val entry{split->Size, split->Key};
    MDB_val value;
    int error = mdb_cursor_get(cursor, &entry, &value, MDB_SET_RANGE);
    if (error == MDB_NOTFOUND) error = mdb_cursor_get(cursor, &entry, &value, MDB_LAST);
    bool usable = error != 0 || MoveLeaf(writer, split->Tree, entry, pageSize);
    MDB_val neighbour = entry;
    bool found = error == 0 && FindNeighbour(cursor, entry, MDB_NEXT, pageSize, &neighbour);
    if (found && usable) usable = MoveLeaf(writer, split->Tree, neighbour, pageSize);
    neighbour = entry;
    for (size_t i = 0; i < leavesBefore && error == 0 && usable; ++i) {
        found = FindNeighbour(cursor, neighbour, MDB_PREV, pageSize, &neighbour);
        if (!found) break;
        usable = MoveLeaf(writer, split->Tree, neighbour, pageSize);
    }
    mdb_cursor_close(cursor);
    return usable;
}

} // namespace

bool OrderFreePages(MDB_env *environment, MDB_txn *writer, unsigned catalogue, int fd, uint64_t *due,
                    bool *ordered)
{
    const uint64_t now = mdb_txn_id(writer);
    *ordered = false;
    if (now < *due) return true;
    FreePages free{};
    MDB_envinfo info;
    MDB_stat shape;
    *due = now + pause;
    if (!ReadFreePages(environment, &free) || mdb_env_info(environment, &info) != 0 ||
        mdb_env_stat(environment, &shape) != 0) {
        return true;
    }
    if (free.Oldest >= nearlyUsedUp) {
        *due = now + 1 + (free.Oldest - nearlyUsedUp) / pagesOfPosting;
        return true;
    }
    // Pages are given back unwritten only where the writer finds one freed by an older transaction.
    if (free.Lists == 0) return true;
    const size_t longest = LongestRun(&free);
    const bool few = !free.More && free.Count < (longest < shortRun ? manyPages : fewPages);
    // Changing the catalogue takes the lowest pages, which may be some of the run.
    const size_t run = few ? addedPages : longest - std::min(longest, pagesOfCatalogue);
    if (run == 0) return true;
    // The transaction's own pages up to the catalogue's leaf may come first.
    if (few && !LengthenFile(fd, info.me_last_pgno + 1 + addedPages + fewPages, shape.ms_psize)) return true;
    bool found = false;
    if (!TakeAndGiveBack(writer, catalogue, run, shape.ms_psize, info.me_last_pgno, &found)) return false;
    *due = few || found ? now + std::max(run / pagesOfPosting, pause) : now + longPause;
    *ordered = true;
    return true;
}

void NoteSplit(SplitLeaves *splits, unsigned tree, const void *key, size_t size)
{
    if (splits->Count == mostSplits || size > sizeof splits->At->Key) return;
    SplitLeaf &split = splits->At[splits->Count++];
    split.Tree = tree;
    split.Size = size;
    memcpy(split.Key, key, size);
}

bool MoveSplitLeaves(MDB_env *environment, MDB_txn *writer, SplitLeaves *splits)
{
    const size_t count = splits->Count;
    splits->Count = 0;
    MDB_stat shape;
    MDB_txn *view = nullptr;
    if (count == 0 || mdb_env_stat(environment, &shape) != 0) return true;
    if (mdb_txn_begin(environment, nullptr, MDB_RDONLY, &view) != 0) return true;
    bool usable = true;
    for (size_t i = 0; i < count && usable; ++i) {
        usable = MoveLeavesAt(view, writer, &splits->At[i], shape.ms_psize);
    }
    mdb_txn_abort(view);
    return usable;
}

} // namespace wbtrv
