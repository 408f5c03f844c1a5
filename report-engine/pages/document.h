// A finished spool as a document of items.
#pragma once

#include "report-engine/spool.h"

namespace rs {

// A finished spool, mapped into memory.
struct Document {
    const Definition *Def;
    char *Bytes; // a copy of our own where they are changed
    uint64_t Size;
    uint64_t First; // the first item
};

// False for what is no spool of this build.
bool OpenDocument(Document &document, int file);

// An item in a document, a row without control characters; `offset` moves behind it. Null at the end.
const ItemHeader *ItemAt(const Document &document, uint64_t &offset);

} // namespace rs
