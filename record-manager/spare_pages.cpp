#include "record-manager/spare_pages.h"

#include "record-manager/books_file.h"

#include <cstddef>
#include <cstring>
#include <lmdb.h>
#include <unistd.h>

namespace wbtrv {

namespace {

// A posting changes nine pages, and two transactions pass before the pages it left are free: with less than
// that the next ones would grow the file page by page.
constexpr size_t fewPages = 128;
constexpr size_t addedPages = 256;

// What is in front of the bytes of a run of pages.
constexpr size_t pageHead = 16;

char spareKey[] = "!spare";

// A file that ends before its last page looks like one that was cut off. Bytes that nobody wrote take no
// room.
bool LengthenFile(int fd, uint64_t pages, size_t pageSize)
{
    const auto wanted = static_cast<off_t>(pages * pageSize);
    BooksFacts found;
    if (!ReadFacts(fd, &found)) return false;
    return found.Size >= wanted || ftruncate(fd, wanted) == 0;
}

} // namespace

bool SparePagesShort(MDB_env *environment)
{
    constexpr MDB_dbi freePages = 0;
    MDB_txn *view = nullptr;
    if (mdb_txn_begin(environment, nullptr, MDB_RDONLY, &view) != 0) return false;
    MDB_cursor *cursor = nullptr;
    int error = mdb_cursor_open(view, freePages, &cursor);
    size_t found = 0;
    size_t transactions = 0;
    while (error == 0 && found < fewPages) {
        MDB_val key;
        MDB_val list;
        error = mdb_cursor_get(cursor, &key, &list, MDB_NEXT);
        size_t count = 0;
        if (error == 0 && list.mv_size >= sizeof count) memcpy(&count, list.mv_data, sizeof count);
        found += count;
        transactions += error == 0 ? 1 : 0;
    }
    if (cursor != nullptr) mdb_cursor_close(cursor);
    mdb_txn_abort(view);
    // Pages are given back unwritten only where the writer finds one freed by an older transaction than the
    // last.
    return error == MDB_NOTFOUND && found < fewPages && transactions > 1;
}

bool AddSparePages(MDB_txn *writer, unsigned catalogue, int fd, uint64_t lastPage)
{
    MDB_stat shape;
    if (mdb_stat(writer, catalogue, &shape) != 0) return false;
    // The transaction's own pages up to the catalogue's leaf may come first.
    if (!LengthenFile(fd, lastPage + 1 + addedPages + fewPages, shape.ms_psize)) return true;
    // Pages that are given back in the transaction that took them are not written.
    MDB_val key{sizeof spareKey - 1, spareKey};
    MDB_val value{addedPages * shape.ms_psize - pageHead, nullptr};
    if (mdb_put(writer, catalogue, &key, &value, MDB_RESERVE) != 0) return false;
    // Unless a reader holds on to all that is free: then they are written once.
    memset(value.mv_data, 0, value.mv_size);
    return mdb_del(writer, catalogue, &key, nullptr) == 0;
}

} // namespace wbtrv
