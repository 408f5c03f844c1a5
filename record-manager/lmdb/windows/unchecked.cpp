// What is done with single pages on Linux. Here they carry no sums, are in no order, and only the store
// goes through them.
#include "record-manager/lmdb/private.h"

namespace wbtrv {

int16_t LookAtTree(const View &, const TreeHead &) { return BtrStatusOk; }

int16_t LookToChange(Writer *, const File &, size_t, Bytes, Side) { return BtrStatusOk; }

int16_t LookAfterRemoval(Writer *, const File &, size_t) { return BtrStatusOk; }

uint64_t PagesOf(const Writer &, unsigned) { return 0; }

void WriteSums(Environment *) {}

int16_t FindTree(const View &, uint32_t, size_t, TreeHead *) { return BtrStatusOk; }

bool OrderFreePages(Writer *, int, bool *ordered)
{
    *ordered = false;
    return true;
}

void NoteSplit(SplitLeaves *, const File &, size_t, Bytes) {}

bool MoveSplitLeaves(Writer *) { return true; }

void GoOn(Environment *) {}

} // namespace wbtrv
