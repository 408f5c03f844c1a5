// A look at the books' file as bytes, without the store and so without its map.
#pragma once

namespace wbtrv {

// Whether every page that the file is too short to hold is a free one. The store numbers its pages before it
// writes them, and one that was freed in the same transaction is never written; so a short file may still be
// whole.
bool OnlyFreePagesMissing(int fd);

// Whether the store had only begun to make its file: of the two pages it starts with, the second is not all
// there, and no transaction has written the first. It holds nothing then.
bool IsUnfinished(int fd);

} // namespace wbtrv
