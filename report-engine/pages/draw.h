// Draws a document, page by page, on any surface of Cairo: a PDF, and whatever shows or prints pages later.
#pragma once

#include "report-engine/pages/fonts.h"
#include "report-engine/pages/letters.h"
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

// How letters come onto a page: as glyphs; as filled outlines, each exactly where it belongs, for surfaces
// that put glyphs on whole pixels; or not at all.
enum class Ink : uint8_t { glyphs, outlines, none };

struct PageTarget {
    cairo_t *Cairo;
    void (*BeginPage)(void *context, int64_t page);
    void (*EndPage)(void *context, int64_t page);
    // A bookmark to a place on the page in hand, in points.
    void (*Bookmark)(void *context, int depth, const char *text, int64_t page, double x, double y);
    void *Context;
    Ink Letters;
};

// Lays the document out, draws the pages from `first` to `last` in order (0: from the beginning, to the end)
// and returns how many there are in all.
int64_t DrawDocument(const Document &document, const PageTarget &target, int64_t first, int64_t last);

// ---- Pages in any order, of the one document that the process shows ----

// Makes the document the one that is shown; `pageCount` is how many pages it has.
void OpenPages(const Document &document, int64_t pageCount);

// Draws one page, and notes its letters if `letters` is not null. The way to a page that lies further on than
// any before it leads over all between, without drawing them; the ways after that are short.
void DrawPage(int64_t page, const PageTarget &target, LetterList *letters);

struct ItemTest {
    bool (*Passes)(void *context, const Definition &definition, const ItemHeader &item);
    void *Context;
};

// The first (or last) page from `first` to `last` with a row, head or foot that passes; 0 for none.
int64_t FindPage(int64_t first, int64_t last, bool wantsLast, const ItemTest &test);

} // namespace rs
