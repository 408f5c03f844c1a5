// The head of the catalogue, by which books are known as ours.
#include "record-manager/lmdb/private.h"

#include <cstring>

namespace wbtrv {

namespace {

int16_t OpenCatalogue(Environment *own, MDB_txn *transaction)
{
    MDB_dbi catalogue = 0;
    const int error = mdb_dbi_open(transaction, nullptr, 0, &catalogue);
    own->Catalogue = catalogue;
    return StatusOf(error);
}

} // namespace

BooksPath PathOfBooks(const char *directory)
{
    BooksPath path;
    const size_t length = strnlen(directory, BtrPathSize);
    std::memcpy(path.Text, directory, length);
    path.Text[length] = '/';
    std::memcpy(path.Text + length + 1, booksName, sizeof booksName);
    return path;
}

int16_t WriteFormat(Store *store)
{
    Environment *own = store->Own;
    MDB_txn *transaction = nullptr;
    int16_t status = StatusOf(mdb_txn_begin(own->Real, nullptr, 0, &transaction));
    if (status != BtrStatusOk) return status;
    FormatRecord format{};
    std::memcpy(format.Mark, formatMark, sizeof format.Mark);
    format.Format = own->Summed ? formatWithSums : formatWithoutSums;
    MDB_val key = ToVal(formatKey);
    MDB_val value{sizeof format, &format};
    status = OpenCatalogue(own, transaction);
    if (status == BtrStatusOk)
        status = StatusOf(Guarded<mdb_put>(transaction, own->Catalogue, &key, &value, 0));
    if (status == BtrStatusOk) return StatusOf(Guarded<mdb_txn_commit>(transaction));
    Guarded<mdb_txn_abort>(transaction);
    return status;
}

int16_t CheckFormat(Store *store)
{
    View *view = nullptr;
    int16_t status = BeginSnapshot(store, &view);
    if (status != BtrStatusOk) return status;
    status = OpenCatalogue(store->Own, view->Transaction);
    if (status == BtrStatusOk && view->Main.Root == noPage) status = BtrStatusFileNotFound;
    FormatRecord format{};
    Bytes value{};
    if (status == BtrStatusOk) status = FindInCatalogue(*view, formatKey, &value);
    if (status == BtrStatusKeyNotFound || (status == BtrStatusOk && value.Size != sizeof format))
        status = BtrStatusForeignFile;
    if (status == BtrStatusOk) {
        format = GetField<FormatRecord>(value.Data);
        const uint32_t known = store->Own->Summed ? formatWithSums : formatWithoutSums;
        const bool ours = std::memcmp(format.Mark, formatMark, sizeof format.Mark) == 0;
        if (!ours || format.Format != known) status = BtrStatusForeignFile;
    }
    if (status == BtrStatusOk) {
        status = StatusOf(Guarded<mdb_txn_commit>(view->Transaction));
        view->Transaction = nullptr;
    }
    EndSnapshot(view);
    return status;
}

} // namespace wbtrv
