// Draws a document, page by page, on any surface of Cairo: a PDF, and whatever shows or prints pages later.
#pragma once

#include "report-engine/pages/document.h"
#include "report-engine/pages/drawing.h"

namespace rs {

// Lays the document out, draws the pages from `first` to `last` in order (0: from the beginning, to the end)
// and returns how many there are in all.
int64_t DrawDocument(const Document &document, const PageTarget &target, int64_t first, int64_t last);

// ---- Pages in any order, of the one document that the process shows ----

// Makes the document the one that is shown; `pageCount` is how many pages it has.
void OpenPages(const Document &document, int64_t pageCount);

// Draws one page, and notes its letters if `letters` is not null. The way to a page that lies further on than
// any before it leads over all between, without drawing them; the ways after that are short.
void DrawPage(int64_t page, const PageTarget &target, LetterList *letters);

// The first (or last) page from `first` to `last` with a row, head or foot that passes; 0 for none.
int64_t FindPage(int64_t first, int64_t last, bool wantsLast, const ItemTest &test);

} // namespace rs
