// Draws pages as they are asked for, for a view.
#pragma once

#include <cstdint>

namespace rs {

// Answers the requests that come through the socket `requests` about the document in `spool`, which has
// `pageCount` pages, until the other side closes it. Null when all is well, else why not.
const char *ShowPages(int spool, int requests, int64_t pageCount);

} // namespace rs
