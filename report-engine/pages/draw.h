// Draws a document, page by page, on any surface of Cairo: a PDF, and whatever shows or prints pages later.
#pragma once

#include "report-engine/pages/fonts.h"
#include "report-engine/spool.h"

namespace rs {

// A finished spool, mapped into memory.
struct Document {
    const Definition *Def;
    const char *Bytes;
    uint64_t Size;
    uint64_t First; // the first item
};

// False for what is no spool of this build.
bool OpenDocument(Document &document, int file);

// An item in a document; `offset` moves behind it. Null at the end.
const ItemHeader *ItemAt(const Document &document, uint64_t &offset);

struct PageTarget {
    cairo_t *Cairo;
    void (*BeginPage)(void *context, int64_t page);
    void (*EndPage)(void *context, int64_t page);
    // A bookmark to a place on the page in hand, in points.
    void (*Bookmark)(void *context, int depth, const char *text, int64_t page, double x, double y);
    void *Context;
};

// Lays the document out, draws all pages in order and returns how many there are.
int64_t DrawDocument(const Document &document, const PageTarget &target);

} // namespace rs
