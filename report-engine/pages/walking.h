// The way through a document, page by page: what stands where, and what is drawn of it.
#pragma once

#include "report-engine/layout.h"
#include "report-engine/pages/drawing.h"

namespace rs {

// A place in the document: the next item, and the layout of all before it.
struct Position {
    uint64_t Offset;
    Layout Laid;
};

// Makes a zeroed Drawing ready for the document; Target and Cairo are the caller's.
void StartDrawing(Drawing &drawing, const Document &document);

// What follows the last row, and the end of the page in hand.
void EndDrawing(Drawing &drawing);

// Puts a row where the layout has placed it; `context` is the Drawing.
void Place(void *context, Placed what, const LayoutRow *row, int64_t page, int32_t placedTop);

// Adds the next row to the layout; false at the end of the document.
bool LayNextRow(const Document &document, Position &position);

// Runs the rows of the document through the layout. Returns the number of pages.
int64_t LayOut(const Document &document, PlaceCall place, void *context);

// Pages with halves, each of which is short enough to be walked from its beginning for each page.
void DrawHalvedPage(Drawing &drawing, int64_t page);
void DrawHalvedPages(Drawing &drawing);

// The first or last page on which either half has what is looked for.
void SearchHalves(Drawing &drawing, Search &search);

} // namespace rs
