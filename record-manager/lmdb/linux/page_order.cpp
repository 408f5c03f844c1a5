#include "record-manager/lmdb/page_order.h"

#include "record-manager/lmdb/books_file.h"
#include "record-manager/lmdb/private.h"

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

// When there are short runs only, and not many pages either, more are added before those are used up.
constexpr size_t shortRun = nearlyUsedUp;
constexpr size_t manyPages = 2 * fewPages;

// Transactions between two looks at least.
constexpr uint64_t pause = 8;
// While a reader holds an old snapshot, pages freed since then cannot be reused.
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
bool ReadFreePages(const View &base, FreePages *free)
{
    Place place;
    place.Tree = base.Free;
    int16_t status = PlaceAt(base, {}, Side::First, place);
    while (status == BtrStatusOk) {
        Bytes key;
        Bytes list;
        status = EntryAt(base, place, &key, &list);
        if (status != BtrStatusOk || key.Size != sizeof(uint64_t) || list.Size < sizeof(uint64_t)) break;
        const auto transaction = GetField<uint64_t>(key.Data);
        const auto count = GetField<uint64_t>(list.Data);
        // What the last transaction left is still seen by whoever began to read before it.
        if (transaction >= base.Number || count > list.Size / sizeof count - 1) break;
        if (free->Lists++ == 0) free->Oldest = count;
        free->More = count > mostPages - free->Count;
        if (free->More) break;
        std::memcpy(free->Pages + free->Count, list.Data + sizeof count, count * sizeof count);
        free->Count += count;
        if (free->Oldest >= nearlyUsedUp) break;
        status = PlaceNext(base, place);
    }
    return status == BtrStatusOk || status == BtrStatusEndOfFile;
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
    if (Guarded<mdb_put>(writer, catalogue, &key, &value, MDB_RESERVE) != 0) return false;
    const auto first = GetField<uint64_t>(static_cast<const uint8_t *>(value.mv_data) - pageHead);
    *found = first <= lastPage;
    // They are written once when a reader holds on to all that was free.
    if (!*found) std::memset(value.mv_data, 0, value.mv_size);
    return Guarded<mdb_del>(writer, catalogue, &key, nullptr) == 0;
}

// To put an entry where it is moves its leaf. One with pages of its own, or of few to a leaf, stays.
bool MoveLeaf(MDB_txn *writer, unsigned tree, MDB_val key, size_t pageSize)
{
    MDB_cursor *cursor = nullptr;
    if (mdb_cursor_open(writer, tree, &cursor) != 0) return true;
    MDB_val value;
    int error = Guarded<mdb_cursor_get>(cursor, &key, &value, MDB_SET);
    if (error == 0 && value.mv_size <= pageSize / 4) {
        error = Guarded<mdb_cursor_put>(cursor, &key, &value, MDB_CURRENT);
    }
    mdb_cursor_close(cursor);
    return error == 0;
}

bool MoveLeafAt(const Writer &writer, unsigned tree, const Place &place)
{
    Bytes key;
    Bytes ignored;
    if (EntryAt(writer.Seen, place, &key, &ignored) != BtrStatusOk) return true;
    return MoveLeaf(writer.Seen.Transaction, tree, ToVal(key), writer.Seen.Of->Own->PageSize);
}

// Which of the leaves will still grow is not known; that one is moved by its next change anyway.
bool MoveLeavesAt(const Writer &writer, const SplitLeaf &split)
{
    const View &base = writer.Seen;
    Place place;
    const Bytes key{split.Key, split.Size};
    // A file that was replaced meanwhile has no such tree any more.
    if (FindTree(base, split.File, split.Tree, &place.Tree) != BtrStatusOk) return true;
    if (LookAround(base, place.Tree, key, Side::AtOrAfter) != BtrStatusOk) return true;
    int16_t status = PlaceAt(base, key, Side::AtOrAfter, place);
    if (status == BtrStatusEndOfFile) status = PlaceAt(base, {}, Side::Last, place);
    MDB_dbi tree = 0;
    if (status != BtrStatusOk ||
        mdb_dbi_open(base.Transaction, KeyOfTree(split.File, split.Tree).Text, 0, &tree) != 0)
        return true;
    if (!MoveLeafAt(writer, tree, place)) return false;
    Place next = place;
    if (PlaceLeaf(base, true, next) == BtrStatusOk && !MoveLeafAt(writer, tree, next)) return false;
    for (size_t i = 0; i < leavesBefore && PlaceLeaf(base, false, place) == BtrStatusOk; ++i) {
        if (!MoveLeafAt(writer, tree, place)) return false;
    }
    return true;
}

} // namespace

bool OrderFreePages(Writer *writer, int fd, bool *ordered)
{
    const View &base = writer->Seen;
    Environment *own = base.Of->Own;
    uint64_t *due = &own->OrderDue;
    const uint64_t now = base.Number + 1;
    *ordered = false;
    if (now < *due) return true;
    FreePages free{};
    *due = now + pause;
    if (!ReadFreePages(base, &free)) return true;
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
    if (few && !LengthenFile(fd, base.LastPage + 1 + addedPages + fewPages, own->PageSize)) return true;
    bool found = false;
    if (!TakeAndGiveBack(base.Transaction, own->Catalogue, run, own->PageSize, base.LastPage, &found))
        return false;
    *due = few || found ? now + std::max(run / pagesOfPosting, pause) : now + longPause;
    *ordered = true;
    return true;
}

void NoteSplit(SplitLeaves *splits, const File &file, size_t tree, Bytes key)
{
    if (splits->Count == mostSplits || key.Size > sizeof splits->At->Key) return;
    SplitLeaf &split = splits->At[splits->Count++];
    split.File = file.Number;
    split.Tree = static_cast<uint32_t>(tree);
    split.Size = key.Size;
    std::memcpy(split.Key, key.Data, key.Size);
}

bool MoveSplitLeaves(Writer *writer)
{
    SplitLeaves &splits = writer->Seen.Of->Own->Splits;
    const size_t count = splits.Count;
    splits.Count = 0;
    for (size_t i = 0; i < count; ++i) {
        if (!MoveLeavesAt(*writer, splits.At[i])) return false;
    }
    return true;
}

} // namespace wbtrv
