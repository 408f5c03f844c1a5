// The document of a report, as a file: the definition, then items in the order in which the template made
// them. It grows on disk while records come in, so memory does not, and it has no name, so it goes with the
// report. Everything that comes of a report - pages, CSV, JSON, HTML, text - is made from it.
//
// File format, all numbers in the machine's order (nobody but this engine, in this moment, reads it):
//
//   offset  size
//   0       4     magic
//   4       4     size of the definition
//   8       ..    Definition
//   then items, each at a multiple of 4: ItemHeader (16), then Size bytes:
//     row       cells: CellHeader (4), then for a text its bytes, for a number 8 bytes
//     head      three texts: left, centre, right, each a length (2) and its bytes. The first of a record
//     starts
//               the page head anew, the following ones are its further lines
//     foot      the same for the line at the foot of the page
//     bookmark  its text of Count bytes; Level is its depth from 0
//     sheet     4 bytes: sheets of the group that came before this page
//     data      cells of a row of data, whose columns are the data fields; for files alone
//     about     what every row of a file is about: pairs of name and text, each with its length (2)
//   What is no row applies from the next row on.
#pragma once

#include "report-engine/definition.h"
#include "report-engine/layout.h"

#include <cstddef>
#include <cstdint>

namespace rs {

enum class Item : uint8_t { row = 1, head, foot, bookmark, sheet, data, about };

struct ItemHeader {
    Item Kind;
    uint8_t Style;   // of a row
    uint8_t Level;   // of a row as in LayoutRow; of a bookmark: its depth
    uint8_t IsFirst; // of head and foot: starts anew
    uint16_t Flags;  // RowFlag
    uint16_t Count;  // cells of a row, bytes of a bookmark, pairs of about
    uint32_t Size;
    uint8_t Ends;     // of a row as in LayoutRow
    uint8_t Controls; // of a row: 1 when its texts have control characters
    uint8_t Reserved[2];
};
static_assert(sizeof(ItemHeader) == 16);

enum class CellKind : uint8_t { text, amount, rate, number, flag };

struct CellHeader {
    uint8_t Column; // spanColumn for a text across the whole width
    CellKind Kind;
    uint16_t Length;
};
static_assert(sizeof(CellHeader) == 4);

inline constexpr uint32_t itemAlignment = 4;
static_assert(sizeof(Definition) % itemAlignment == 0);

inline constexpr uint8_t spanColumn = 0xFF;
inline constexpr size_t maxTextLength = 1000; // bytes of one text; the rest is cut
inline constexpr size_t maxItemSize = 65'000; // every field full: 64 x 1004 + the header
inline constexpr size_t spoolBufferSize = 65'536;

struct Spool {
    int File; // -1 when there is none
    uint64_t Written;
    size_t Buffered;
    int Error; // errno of the first failure; nothing is written after it
    char Buffer[spoolBufferSize];
};

// Opens a file without a name in $TMPDIR (or /tmp), readable and writable; -1 with errno.
int OpenNamelessFile();

// A file without a name in $TMPDIR (or /tmp). False with errno in Error.
bool OpenSpool(Spool &spool, const Definition &definition);
void CloseSpool(Spool &spool);

// Where the next item will stand.
inline uint64_t SpoolEnd(const Spool &spool) { return spool.Written + spool.Buffered; }

// False when the disk is full; Error tells why, and everything after it is refused.
bool AppendToSpool(Spool &spool, const void *bytes, size_t size);
bool PatchSpool(Spool &spool, uint64_t offset, const void *bytes, size_t size);
bool PatchDefinition(Spool &spool, const Definition &definition);
bool FlushSpool(Spool &spool);

// Reads a flushed spool from its first item on, with its own place, so that several may read at once.
struct SpoolReader {
    int File;
    uint64_t Next; // offset of what Window does not hold yet
    size_t Begin;
    size_t End;
    uint64_t ItemOffset;
    ItemHeader Header;
    char *Data; // of the item in hand, until the next one is read
    char Window[2 * spoolBufferSize];
};

// Begins at the first item of the file, which stays the caller's.
void StartReading(SpoolReader &reader, int file);

// The next item; false at the end and on a read error (`hasFailed`).
bool ReadItem(SpoolReader &reader, bool &hasFailed);

// What the layout has to know of the row that lies at `offset`.
LayoutRow RowOf(const ItemHeader &header, uint64_t offset, const Definition &definition);

// The cells of a row, one by one: false after the last.
struct CellReader {
    const char *Next;
    uint16_t Left;
};

struct Cell {
    uint8_t Column;
    CellKind Kind;
    uint16_t Length;
    const char *Text; // not terminated
    int64_t Number;   // Pfennig, hundredths of a per cent, or as it stands
};

// Reads the cells of a row that lies at `data`.
inline CellReader CellsOf(const ItemHeader &header, const char *data) { return {data, header.Count}; }
bool NextCell(CellReader &cells, Cell &cell);

// Makes a blank of each control character of a row's texts, as people are shown them; programs that read a
// row get them as they are in the books. The row keeps its length.
void BlankControls(ItemHeader &header, char *data);

// A figure of zero that stays empty; a sum of zero in a bold row is a statement.
bool IsBlank(const Definition &definition, uint8_t style, const Cell &cell);

inline constexpr size_t columnTitleSize = 160;

// What a file calls a column: its heading, or its title in one line with the group that stands above it.
void ColumnTitle(const Column &column, char (&out)[columnTitleSize]);

// The three texts of a head or foot line.
struct LinePart {
    const char *Text;
    size_t Length;
};
// The parts of a head or foot that lies at `data`: left, middle, right. They are valid as long as it is.
void LinePartsOf(const char *data, LinePart (&parts)[3]);

} // namespace rs
