// Books as they are at one moment, taken while others work in them.
#pragma once

#include <filesystem>
#include <stdexcept>

namespace books {

// Books of which no copy can be had, since they cannot be read.
struct DamagedBooks : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// How long a copy may stand still, waiting for whoever writes or for the disk. Tests shorten it.
extern int longestStandstill_ms;

// Copies the books of one directory, all its tables as they stand together at one moment, into another, which
// must exist and hold none. Nobody has to wait, and nobody's changes are lost; what is done meanwhile is not
// in the copy. Free space is left out. A damaged file ends a process of its own, not this one, and that one
// ends with this one. Throws when there are no books, they cannot be
// read (DamagedBooks) or written, or the copy stands still.
void CopyStore(const std::filesystem::path &from, const std::filesystem::path &to);

} // namespace books
