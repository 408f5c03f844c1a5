// What of a tree the store may touch in a change or a search of the writer's, looked at before it does.
#include "record-manager/lmdb/private.h"

#include "record-manager/limits.h"

namespace wbtrv {

uint64_t PagesOf(const Writer &writer, unsigned tree)
{
    MDB_stat shape;
    if (mdb_stat(writer.Seen.Transaction, tree, &shape) != 0) return 0;
    return shape.ms_branch_pages + shape.ms_leaf_pages;
}

namespace {

// What is known of a tree in this transaction, which begins with where it was.
int16_t FindLookedAt(Writer *writer, const File &file, size_t tree, LookedAt **out)
{
    const unsigned number = file.Trees[tree];
    if (number >= limits.Trees) return BtrStatusIoError;
    Environment *own = writer->Seen.Of->Own;
    LookedAt &known = own->Trees[number];
    *out = &known;
    if (known.During == own->Transactions && known.File == file.Number && known.Tree == tree)
        return BtrStatusOk;
    known = {file.Number, static_cast<uint32_t>(tree), 0, false, false, {}, 0, 0};
    const int16_t status = FindTree(writer->Seen, file.Number, tree, &known.Base);
    // It was made in this transaction, and nothing of it is on disk.
    if (status == BtrStatusForeignFile) known.Base.Root = noPage;
    known.Pages = PagesOf(*writer, number);
    if (status != BtrStatusOk && status != BtrStatusForeignFile) return status;
    known.During = own->Transactions;
    return BtrStatusOk;
}

int16_t LookAtWhole(Writer *writer, LookedAt *known)
{
    const int16_t status = LookAtTree(writer->Seen, known->Base);
    known->Whole = status == BtrStatusOk;
    return status;
}

// Who makes many changes is done sooner when all of the tree is looked at once.
constexpr uint64_t fewLooks = 64;
constexpr uint64_t leavesOfLook = 4;

} // namespace

int16_t LookInWriter(Writer *writer, const File &file, size_t tree, Bytes bound, Side side)
{
    // A thread may have a writer in each of several directories.
    WriteSums(writer->Seen.Of->Own);
    LookedAt *known = nullptr;
    const int16_t status = FindLookedAt(writer, file, tree, &known);
    if (status != BtrStatusOk || known->Whole) return status;
    if (++known->Looks > fewLooks && known->Looks > known->Base.LeafPages / leavesOfLook)
        return LookAtWhole(writer, known);
    return LookAround(writer->Seen, known->Base, bound, side);
}

int16_t LookToChange(Writer *writer, const File &file, size_t tree, Bytes bound, Side side)
{
    const int16_t status = LookInWriter(writer, file, tree, bound, side);
    if (status == BtrStatusOk) writer->Seen.Of->Own->Trees[file.Trees[tree]].Changed = true;
    return status;
}

int16_t FindUnchanged(Writer *writer, const File &file, size_t tree, const TreeHead **head)
{
    LookedAt *known = nullptr;
    const int16_t status = FindLookedAt(writer, file, tree, &known);
    if (status == BtrStatusOk) *head = known->Changed ? nullptr : &known->Base;
    return status;
}

int16_t LookAfterRemoval(Writer *writer, const File &file, size_t tree)
{
    LookedAt *known = nullptr;
    const int16_t status = FindLookedAt(writer, file, tree, &known);
    if (status != BtrStatusOk || known->Whole) return status;
    const uint64_t pages = PagesOf(*writer, file.Trees[tree]);
    const bool joined = pages < known->Pages;
    known->Pages = pages;
    if (!joined) return BtrStatusOk;
    return LookAtWhole(writer, known);
}

} // namespace wbtrv
