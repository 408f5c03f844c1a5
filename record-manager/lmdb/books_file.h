// A look at the books' file as bytes, without the store and so without its map.
#pragma once

#include <cstdint>

namespace wbtrv {

// Which file it is and how long. Its times are left out: once somebody has seen them the next write of the
// file sets new ones, and making that write durable then takes one more write, that of the inode.
struct BooksFacts {
    uint64_t Device;
    uint64_t Inode;
    uint32_t Links;
    int64_t Size;
};

// Facts of an open file, or of the one at a path, where a symbolic link stands for itself. False with errno
// set.
bool ReadFacts(int fd, BooksFacts *facts);
bool ReadFacts(const char *path, BooksFacts *facts);

// Whether every page that the file is too short to hold is a free one. The store numbers its pages before it
// writes them, and one that was freed in the same transaction is never written; so a short file may still be
// whole.
bool OnlyFreePagesMissing(int fd);

// Whether the store had only begun to make its file: of the two pages it starts with, the second is not all
// there, and no transaction has written the first. It holds nothing then.
bool IsUnfinished(int fd);

} // namespace wbtrv
