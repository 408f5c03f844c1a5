// Keeps the pages that commits write side by side. A commit waits for each run of neighbouring pages about as
// long as for ten more pages within a run, and left alone a posting's ten pages come to lie in six runs.
//
// What a commit writes are pages it found free. The store keeps the free pages in lists, one for what each
// transaction left, uses up the oldest list before it looks at the next, and within what it has looked at
// takes the lowest page first. Three things put that in order, every so many transactions:
//  1. Lists whose pages are neighbours are made one, as soon as the oldest is nearly used up.
//  2. Where there is too little that is free, many pages are taken from the end of the file at once.
//  3. A leaf that has filled up, and will not change again, stays where its last change happened to put it,
//     and soon every run has such holes. Where leaves were split they move to the lowest free pages,
//     where they lie close.
#pragma once

#include "record-manager/store.h"

#include <cstddef>
#include <cstdint>

namespace wbtrv {

// Brings the free pages in order, in a write transaction that has changed nothing yet, if it is time to.
// `fd`: the file. `*ordered` tells that full leaves may now move. False: the transaction is of no use any
// more.
bool OrderFreePages(Writer *writer, int fd, bool *ordered);

// Where leaves were split since the last time.
inline constexpr size_t mostSplits = 32;
inline constexpr size_t splitKeySize = 264;
struct SplitLeaf {
    uint32_t File;
    uint32_t Tree; // of the file
    size_t Size;
    alignas(uint32_t) uint8_t Key[splitKeySize];
};
struct SplitLeaves {
    size_t Count;
    SplitLeaf At[mostSplits];
};

// Notes that a leaf was split for an entry of this key. More than there is room for are left where they are.
void NoteSplit(SplitLeaves *splits, const File &file, size_t tree, Bytes key);

// Moves the leaves where splits were noted, with their neighbours, and forgets the notes. False: the
// transaction is of no use any more.
bool MoveSplitLeaves(Writer *writer);

} // namespace wbtrv
