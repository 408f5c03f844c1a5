// Breaks rows into pages. A row is known by its height and a few flags only, so that the same code lays out a
// report and counts the pages of one of which there are but numbers of records.
//
// Invariants, checked after every row that goes in:
//   1. What is placed on a page lies within it: Used <= Body.
//   2. While something is carried forward, the rows that a page break would print fit: Used + Reserve <=
//   Body.
//   3. What is held back fits on a page, whatever sums that carries, or is a single row.
//   4. Pages are counted from their first row, so Pages is 0 only as long as nothing was placed.
#pragma once

#include "report-engine/definition.h"

#include <cstdint>

namespace rs {

enum RowFlag : uint16_t {
    rowGlued = 1,       // belongs to the record of the row before: the two stay together
    rowKeepNext = 2,    // a head: stays with what follows
    rowInGroup = 4,     // belongs to the same kept group as the row before
    rowFoot = 8,        // closes the group of its level
    rowNewPage = 16,    // starts a page
    rowOpensCarry = 32, // from here on a page break carries forward
    rowEndsCarry = 64,  // from here on no longer
    rowCounts = 128,    // enters the sums
    rowAgain = 256      // is repeated at the head of every further page of its group
};

struct LayoutRow {
    uint64_t Offset; // where the row stands in the spool; of no meaning here
    int32_t Height;
    uint16_t Flags;
    uint8_t Level; // of a foot, or of the group that a repeated row opens
    uint8_t Ends;  // groups of this level and inside it have ended before this row; 0 for none
    uint8_t Style;
};

// Turns records, groups and their ends into the flags of rows. Whatever prints rows, or only counts them,
// goes through this in the same order of calls.
struct RowMarker {
    const Definition *Of;
    uint16_t Coming;   // flags that the next row takes
    uint8_t KeptLevel; // level of the group that is kept together, 0 for none
    bool KeptHasRows;
    bool RecordHasRows;
    bool IsHead;
    bool IsFoot;
    uint8_t FootLevel;
    uint8_t Ended;   // Ends of the next row
    uint8_t AgainOf; // the kind whose repeated row is still to come, + 1; 0 for none
    bool IsOpen[maxLevels + 1];
};

void StartMarker(RowMarker &marker, const Definition &definition);

// The innermost open level that a record of `kind` (or, for kind -1, the end of the report) closes, 0 for
// none left. Closing goes level by level: MarkFoot, the rows of the foot, MarkClosed.
uint8_t NextToClose(const RowMarker &marker, int kind);
void MarkFoot(RowMarker &marker, uint8_t level); // level 0: the report's own
void MarkClosed(RowMarker &marker, uint8_t level, bool hadRows);

// A record of `kind` begins; its levels have been closed.
void MarkRecord(RowMarker &marker, int kind);

// The next row of what was begun.
LayoutRow MarkRow(RowMarker &marker, uint8_t style, uint64_t offset);

// What is placed on a page.
enum class Placed : uint8_t {
    row,
    again,     // the heading of a group that goes on
    carryUp,   // the carried sums at the head of a page
    pageSum,   // the sums of this page
    carryDown, // the carried sums at its foot
};

// Called for everything in the order in which it stands on the pages: `page` from 1, `top` from the body's
// upper edge. `row` is null for carried sums.
using PlaceCall = void (*)(void *context, Placed what, const LayoutRow *row, int64_t page, int32_t top);

// Enough for the highest page with the lowest rows.
inline constexpr int maxHeldRows = 256;
inline constexpr int32_t minRowHeight = 250;

struct Layout {
    const Definition *Of;
    PlaceCall Place;
    void *Context;
    int32_t Body;
    int32_t CarryHeight; // of one row of carried sums

    int64_t Pages;
    int32_t Used;                   // of the page's body
    bool HasRows;                   // on this page, apart from carried sums
    bool HasCounted;                // rows that count, on this page
    bool CarryIsOpen;               // a page break prints sums
    bool CarryHasCounted;           // there is something to carry
    bool CarryBeganBefore;          // on an earlier page
    LayoutRow Again[maxLevels + 1]; // headings of the groups in hand; height 0 for none

    int32_t HeldHeight;
    int32_t HeldCount;
    bool GroupIsSplit; // the kept group in hand was too high for a page
    LayoutRow Held[maxHeldRows];
};

// `place` may be null: pages are counted only.
void StartLayout(Layout &layout, const Definition &definition, PlaceCall place, void *context);

// The next row, which is placed at once or held back with the group that it belongs to.
void AddRow(Layout &layout, const LayoutRow &row);

// Places what was held back and returns the number of pages, at least 1.
int64_t EndLayout(Layout &layout);

// ---- Halves ----

// A place on the pages.
struct RowSpot {
    int64_t Page;
    int32_t Top;
};

// The one that comes later on the pages.
RowSpot LaterOf(RowSpot one, RowSpot other);

// The rows of the left or of the right halves of pages, laid out by themselves. The last one waits, so that
// the last rows of both can stand on one line.
struct HalfLayout {
    Layout Laid;
    LayoutRow Last;
    bool HasLast;
};

// As StartLayout and AddRow.
void StartHalf(HalfLayout &half, const Definition &definition, PlaceCall place, void *context);
void AddRowOfHalf(HalfLayout &half, const LayoutRow &row);

// Places the last row, not before that spot, and returns where it stands.
RowSpot EndHalf(HalfLayout &half, RowSpot notBefore);

// Rows that no page can hold would never end: true if every row that the definition can print fits under the
// sums that a page may carry.
bool RowsFitPage(const Definition &definition);

} // namespace rs
