#include "record-manager/page_order.h"

#include "record-manager/books_file.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
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

// Where no run is longer than a posting's pages, order would not come from gathering them.
constexpr size_t shortRun = 16;
constexpr uint64_t pause = 16;
// While somebody reads an old state nothing that was freed since can be had.
constexpr uint64_t longPause = 1024;

// What has more than that was not left by postings.
constexpr size_t mostPages = 1024;
constexpr size_t mostLeaves = 128;

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

// Leaves that are full, told by a record in each.
struct FullLeaves {
    size_t Count;
    uint32_t Records[mostLeaves];
};

// Finds the leaves of the committed tree that hold the records from `first` on, but for the last, which
// grows.
void FindFullLeaves(MDB_txn *view, unsigned tree, uint32_t first, size_t pageSize, FullLeaves *leaves)
{
    MDB_cursor *cursor = nullptr;
    MDB_val key;
    MDB_val value;
    int error = mdb_cursor_open(view, tree, &cursor);
    if (error == 0) error = mdb_cursor_get(cursor, &key, &value, MDB_LAST);
    // What is committed lies in the map, page by page.
    const auto page = [&] { return reinterpret_cast<uintptr_t>(value.mv_data) / pageSize; };
    uintptr_t known = error == 0 ? page() : 0;
    const uintptr_t growing = known;
    key = {sizeof first, &first};
    if (error == 0) error = mdb_cursor_get(cursor, &key, &value, MDB_SET_RANGE);
    // A record with pages of its own, or few to a leaf, is no part of this.
    while (error == 0 && page() != growing && value.mv_size <= pageSize / 4 && leaves->Count < mostLeaves) {
        if (page() != known) memcpy(&leaves->Records[leaves->Count++], key.mv_data, sizeof first);
        known = page();
        error = mdb_cursor_get(cursor, &key, &value, MDB_NEXT);
    }
    if (cursor != nullptr) mdb_cursor_close(cursor);
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
    const bool few = free.Count < fewPages && !free.More;
    const size_t longest = LongestRun(&free);
    // Changing the catalogue takes the lowest pages, which may be some of the run.
    const size_t run = few ? addedPages : longest - std::min(longest, pagesOfCatalogue);
    if (run < shortRun) return true;
    // The transaction's own pages up to the catalogue's leaf may come first.
    if (few && !LengthenFile(fd, info.me_last_pgno + 1 + addedPages + fewPages, shape.ms_psize)) return true;
    bool found = false;
    if (!TakeAndGiveBack(writer, catalogue, run, shape.ms_psize, info.me_last_pgno, &found)) return false;
    *due = few || found ? now + run / pagesOfPosting : now + longPause;
    *ordered = true;
    return true;
}

bool MoveFullLeaves(MDB_env *environment, MDB_txn *writer, unsigned tree, uint32_t first)
{
    MDB_txn *view = nullptr;
    MDB_stat shape;
    if (mdb_env_stat(environment, &shape) != 0) return true;
    if (mdb_txn_begin(environment, nullptr, MDB_RDONLY, &view) != 0) return true;
    FullLeaves leaves{};
    FindFullLeaves(view, tree, first, shape.ms_psize, &leaves);
    mdb_txn_abort(view);
    if (leaves.Count == 0) return true;

    // To put one of its records where it is moves a leaf.
    MDB_cursor *cursor = nullptr;
    if (mdb_cursor_open(writer, tree, &cursor) != 0) return true;
    int error = 0;
    for (size_t i = 0; i < leaves.Count && error == 0; ++i) {
        MDB_val key{sizeof leaves.Records[i], &leaves.Records[i]};
        MDB_val value;
        error = mdb_cursor_get(cursor, &key, &value, MDB_SET);
        if (error == 0) error = mdb_cursor_put(cursor, &key, &value, MDB_CURRENT);
    }
    mdb_cursor_close(cursor);
    return error == 0;
}

} // namespace wbtrv
