#include "report-engine/pages/copying.h"

#include "report-engine/pages/shown.h"
#include "report-engine/values.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sys/mman.h>
#include <unistd.h>

namespace rs {

namespace {

bool WriteAll(int file, const char *bytes, size_t length)
{
    while (length > 0) {
        const ssize_t count = write(file, bytes, length);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        bytes += count;
        length -= static_cast<size_t>(count);
    }
    return true;
}

// Text on its way into a file, gathered to larger writes.
struct Copying {
    int File;
    int64_t Length;
    bool HasFailed;
    size_t Used;
    char Bytes[16'384];
};

void FlushCopy(Copying &copy)
{
    if (!WriteAll(copy.File, copy.Bytes, copy.Used)) copy.HasFailed = true;
    copy.Used = 0;
}

void Put(Copying &copy, const char *text, size_t length)
{
    for (size_t i = 0; i < length; ++i) {
        if (copy.Used == sizeof copy.Bytes) FlushCopy(copy);
        copy.Bytes[copy.Used++] = text[i];
    }
    copy.Length += static_cast<int64_t>(length);
}

bool IsFull(const Copying &copy) { return copy.HasFailed || copy.Length >= maxCopied; }

// The same rows as a table of HTML, which follows the text in the file. One that grows too long is left out
// whole: half a table would be taken in place of all the text.
struct Markup {
    char *Bytes;
    size_t Length;
    size_t Capacity;
    bool IsLost;
};

void AddMarkup(Markup &markup, const char *bytes, size_t length)
{
    if (markup.Length + length > static_cast<size_t>(maxCopied)) markup.IsLost = true;
    if (markup.IsLost) return;
    if (markup.Capacity - markup.Length < length) {
        const size_t capacity = 2 * markup.Capacity + length + sizeof(Copying);
        char *grown = static_cast<char *>(std::realloc(markup.Bytes, capacity));
        if (grown == nullptr) {
            markup.IsLost = true;
            return;
        }
        markup.Bytes = grown;
        markup.Capacity = capacity;
    }
    std::memcpy(markup.Bytes + markup.Length, bytes, length);
    markup.Length += length;
}

template <size_t Size> void AddMarkup(Markup &markup, const char (&text)[Size])
{
    AddMarkup(markup, text, Size - 1);
}

void MarkText(Markup &markup, const char *text, size_t length)
{
    for (size_t i = 0; i < length; ++i) {
        switch (text[i]) {
        case '&': AddMarkup(markup, "&amp;"); break;
        case '<': AddMarkup(markup, "&lt;"); break;
        case '>': AddMarkup(markup, "&gt;"); break;
        default: AddMarkup(markup, text + i, 1);
        }
    }
}

// Rows on their way into both. Columns are those in view, counted from 0; those of the right half follow
// those of the left.
struct Rows {
    Copying &Text;
    Markup &Table;
    const char *Tag;                 // of a cell: td, or th of a heading
    int Column;                      // that is being written
    int Columns[2 * maxColumns + 1]; // of each cell; behind the last one their number
    bool AreRight[2 * maxColumns];   // of each column
};

void TakeColumns(Rows &rows)
{
    const Definition &def = *shown.Def;
    int count = 0;
    const int cells = 2 * def.ColumnCount;
    for (int cell = 0; cell < cells; ++cell) {
        const Column &column = def.Columns[cell % def.ColumnCount];
        rows.Columns[cell] = count;
        if (!IsShown(column)) continue;
        rows.AreRight[count++] = column.CellAlign == Align::right;
    }
    rows.Columns[cells] = count;
}

void BeginCell(Rows &rows)
{
    AddMarkup(rows.Table, "<");
    AddMarkup(rows.Table, rows.Tag, 2);
    if (rows.AreRight[rows.Column]) {
        AddMarkup(rows.Table, " align=\"right\">");
    } else {
        AddMarkup(rows.Table, " align=\"left\">");
    }
}

void EndCell(Rows &rows)
{
    AddMarkup(rows.Table, "</");
    AddMarkup(rows.Table, rows.Tag, 2);
    AddMarkup(rows.Table, ">");
}

void BeginRow(Rows &rows, int column)
{
    AddMarkup(rows.Table, "<tr>");
    rows.Column = column;
    BeginCell(rows);
}

// Goes on to a column; those between are empty.
void GoTo(Rows &rows, int column)
{
    while (rows.Column < column) {
        Put(rows.Text, "\t", 1);
        EndCell(rows);
        ++rows.Column;
        BeginCell(rows);
    }
}

void EndRow(Rows &rows, int lastColumn)
{
    GoTo(rows, lastColumn);
    Put(rows.Text, "\n", 1);
    EndCell(rows);
    AddMarkup(rows.Table, "</tr>\n");
}

// A control character would part cells or rows: as on the page it is a blank.
void PutText(Rows &rows, const char *text, size_t length)
{
    while (length > 0) {
        size_t plain = 0;
        while (plain < length && static_cast<unsigned char>(text[plain]) >= ' ') {
            ++plain;
        }
        const bool isControl = plain == 0;
        Put(rows.Text, isControl ? " " : text, isControl ? 1 : plain);
        MarkText(rows.Table, isControl ? " " : text, isControl ? 1 : plain);
        text += isControl ? 1 : plain;
        length -= isControl ? 1 : plain;
    }
}

// A letter as people type it.
LinePart TextOf(const LetterList &letters, const Letter &letter)
{
    const char *text = letters.Text + letter.TextAt;
    constexpr char minus[] = "\u2212"; // of typesetting
    const bool isMinus =
        letter.TextLength == sizeof minus - 1 && std::memcmp(text, minus, sizeof minus - 1) == 0;
    return isMinus ? LinePart{"-", 1} : LinePart{text, letter.TextLength};
}

// What has no rows in it, or lies within one cell: texts parted by tabs, lines by line ends.
void CopyTexts(Copying &copy, const LetterList &letters, const Hit &range)
{
    for (size_t i = range.First; i <= range.Last && !IsFull(copy); ++i) {
        const Letter &letter = letters.Letters[i];
        if (i > range.First && letter.Line != letters.Letters[i - 1].Line) {
            Put(copy, "\n", 1);
        } else if (i > range.First && letter.Begins) {
            Put(copy, "\t", 1);
        }
        const LinePart text = TextOf(letters, letter);
        Put(copy, text.Text, text.Length);
    }
    Put(copy, "\n", 1);
}

// The rows in a range, a tab for each of the columns from `first` to `last`, and nothing else: what a table
// takes.
void CopyRows(Rows &rows, const LetterList &letters, const Hit &range, int first, int last)
{
    int line = -1;
    for (size_t i = range.First; i <= range.Last && !IsFull(rows.Text); ++i) {
        const Letter &letter = letters.Letters[i];
        if (letter.Cell == noCell) continue;
        if (letter.Line != line) {
            if (line >= 0) EndRow(rows, last);
            line = letter.Line;
            BeginRow(rows, first);
        }
        GoTo(rows, rows.Columns[letter.Cell]);
        const LinePart text = TextOf(letters, letter);
        PutText(rows, text.Text, text.Length);
    }
    if (line >= 0) EndRow(rows, last);
}

// The first and last cell that a range has letters of; noCell where it holds no row.
struct CellRange {
    int First;
    int Last;
};

CellRange CellsIn(const LetterList &letters, const Hit &range)
{
    CellRange cells = {noCell, noCell};
    for (size_t i = range.First; i <= range.Last; ++i) {
        const int cell = letters.Letters[i].Cell;
        if (cell == noCell) continue;
        if (cells.First == noCell || cell < cells.First) cells.First = cell;
        if (cell > cells.Last) cells.Last = cell;
    }
    return cells;
}

// Of one row a person takes what was dragged over; of several, and of a line, all columns.
void CopySelected(Rows &rows, const PageRequest &request)
{
    const int allCells = shown.Def->ColumnCount * (shown.Def->RightAt != 0 ? 2 : 1);
    const int lastColumn = rows.Columns[allCells] - 1;
    for (int64_t page = request.From.Page;
         page > 0 && page <= request.To.Page && page <= shown.PageCount && !IsFull(rows.Text); ++page) {
        const LetterList &letters = LettersUnseen(page);
        Hit range;
        if (!SelectedOn(request, page, letters, range)) continue;
        const bool isOnePage = request.From.Page == request.To.Page;
        const bool isWithinLine =
            isOnePage && letters.Letters[range.First].Line == letters.Letters[range.Last].Line;
        const bool isPart = isWithinLine && static_cast<Grain>(request.SelectionGrain) != Grain::line;
        const CellRange cells = CellsIn(letters, range);
        if (cells.First == noCell || (isPart && cells.First == cells.Last)) {
            if (isOnePage) CopyTexts(rows.Text, letters, range);
            continue;
        }
        CopyRows(rows, letters, range, isPart ? rows.Columns[cells.First] : 0,
                 isPart ? rows.Columns[cells.Last] : lastColumn);
    }
}

void PutHeadings(Rows &rows)
{
    const Definition &def = *shown.Def;
    rows.Tag = "th";
    BeginRow(rows, 0);
    for (int i = 0; i < def.ColumnCount; ++i) {
        const Column &column = def.Columns[i];
        if (!IsShown(column)) continue;
        char title[columnTitleSize];
        ColumnTitle(column, title);
        GoTo(rows, rows.Columns[i]);
        PutText(rows, title, std::strlen(title));
    }
    EndRow(rows, rows.Columns[def.ColumnCount] - 1);
    rows.Tag = "td";
}

// All rows of the report under the headings of its columns, without a look at pages.
void CopyReport(Rows &rows)
{
    const Definition &def = *shown.Def;
    PutHeadings(rows);
    const int last = rows.Columns[def.ColumnCount] - 1;
    uint64_t offset = shown.Of->First;
    while (const ItemHeader *item = ItemAt(*shown.Of, offset)) {
        if (item->Kind != Item::row) continue;
        if (IsFull(rows.Text)) return;
        CellReader cells = CellsOf(*item, reinterpret_cast<const char *>(item + 1));
        Cell cell;
        BeginRow(rows, 0);
        while (NextCell(cells, cell)) {
            if (cell.Column != spanColumn) GoTo(rows, rows.Columns[cell.Column]);
            char figure[amountSize];
            if (cell.Kind == CellKind::text) {
                PutText(rows, cell.Text, cell.Length);
            } else if (!IsBlank(def, item->Style, cell)) {
                PutText(rows, figure,
                        cell.Kind == CellKind::number ? WriteNumber(cell.Number, Look::grouped, figure)
                                                      : WriteHundredths(cell.Number, Look::grouped, figure));
            }
        }
        EndRow(rows, last);
    }
}

} // namespace

int CopyText(const PageRequest &request, PageAnswer &answer)
{
    static Copying copy;
    copy.File = memfd_create("rs-pages", MFD_CLOEXEC);
    if (copy.File < 0) return -1;
    copy.Length = 0;
    copy.Used = 0;
    copy.HasFailed = false;
    Markup table = {};
    constexpr char head[] = "<html lang=\"de\"><head><meta charset=\"utf-8\"></head><body><table>\n";
    AddMarkup(table, head);
    Rows rows = {copy, table, "td", 0, {}, {}};
    TakeColumns(rows);
    if (request.IsAllSelected != 0) {
        CopyReport(rows);
    } else {
        CopySelected(rows, request);
    }
    FlushCopy(copy);
    answer.Length = copy.Length;
    answer.IsCutShort = copy.Length >= maxCopied ? 1 : 0;
    const bool hasRows = table.Length > sizeof head - 1;
    AddMarkup(table, "</table></body></html>\n");
    if (hasRows && !table.IsLost) {
        answer.TableLength = static_cast<int64_t>(table.Length);
        if (!WriteAll(copy.File, table.Bytes, table.Length)) copy.HasFailed = true;
    }
    std::free(table.Bytes);
    if (!copy.HasFailed) return copy.File;
    close(copy.File);
    return -1;
}

} // namespace rs
