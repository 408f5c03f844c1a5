// A look at the books' file as bytes, without the store and so without its map.
#pragma once

namespace wbtrv {

// Whether every page that the file is too short to hold is a free one. The store numbers its pages before it
// writes them, and one that was freed in the same transaction is never written; so a short file may still be
// whole.
bool OnlyFreePagesMissing(int fd);

} // namespace wbtrv
