#include "report-engine/pages/copying.h"

#include "report-engine/pages/shown.h"
#include "report-engine/values.h"

#include <cerrno>
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

// Those of the right half follow those of the left.
void PutTabs(Copying &copy, int from, int to)
{
    for (int cell = from; cell < to; ++cell) {
        if (IsShown(shown.Def->Columns[cell % shown.Def->ColumnCount])) Put(copy, "\t", 1);
    }
}

void PutLetter(Copying &copy, const LetterList &letters, const Letter &letter)
{
    const char *text = letters.Text + letter.TextAt;
    constexpr char minus[] = "\u2212"; // of typesetting
    const bool isMinus =
        letter.TextLength == sizeof minus - 1 && std::memcmp(text, minus, sizeof minus - 1) == 0;
    Put(copy, isMinus ? "-" : text, isMinus ? 1 : letter.TextLength);
}

// What is selected within one line, or has no rows in it: texts parted by tabs, lines by line ends.
void CopyTexts(Copying &copy, const LetterList &letters, const Hit &range)
{
    for (size_t i = range.First; i <= range.Last && !IsFull(copy); ++i) {
        const Letter &letter = letters.Letters[i];
        if (i > range.First && letter.Line != letters.Letters[i - 1].Line) {
            Put(copy, "\n", 1);
        } else if (i > range.First && letter.Begins) {
            Put(copy, "\t", 1);
        }
        PutLetter(copy, letters, letter);
    }
    Put(copy, "\n", 1);
}

// The rows in a range, a tab for each column, and nothing else: what a table takes.
void CopyRows(Copying &copy, const LetterList &letters, const Hit &range)
{
    const int last = shown.Def->ColumnCount * (shown.Def->RightAt != 0 ? 2 : 1) - 1;
    int column = 0;
    int line = -1;
    for (size_t i = range.First; i <= range.Last && !IsFull(copy); ++i) {
        const Letter &letter = letters.Letters[i];
        if (letter.Cell == noCell) continue;
        if (letter.Line != line) {
            if (line >= 0) {
                PutTabs(copy, column, last);
                Put(copy, "\n", 1);
            }
            line = letter.Line;
            column = 0;
        }
        if (letter.Cell > column) {
            PutTabs(copy, column, letter.Cell);
            column = letter.Cell;
        }
        PutLetter(copy, letters, letter);
    }
    if (line < 0) return;
    PutTabs(copy, column, last);
    Put(copy, "\n", 1);
}

bool HasRow(const LetterList &letters, const Hit &range)
{
    for (size_t i = range.First; i <= range.Last; ++i) {
        if (letters.Letters[i].Cell != noCell) return true;
    }
    return false;
}

void CopySelected(Copying &copy, const PageRequest &request, PageAnswer &answer)
{
    for (int64_t page = request.From.Page;
         page > 0 && page <= request.To.Page && page <= shown.PageCount && !IsFull(copy); ++page) {
        const LetterList &letters = LettersUnseen(page);
        Hit range;
        if (!SelectedOn(request, page, letters, range)) continue;
        const bool isWithinLine = request.From.Page == request.To.Page &&
                                  letters.Letters[range.First].Line == letters.Letters[range.Last].Line;
        const bool hasRows = HasRow(letters, range);
        if (hasRows && !isWithinLine) {
            answer.HasRows = 1;
            CopyRows(copy, letters, range);
        } else if (isWithinLine || request.From.Page == request.To.Page) {
            answer.HasRows = hasRows ? 1 : 0;
            CopyTexts(copy, letters, range);
        }
    }
}

void PutHeadings(Copying &copy)
{
    const Definition &def = *shown.Def;
    for (int i = 0; i < def.ColumnCount; ++i) {
        const Column &column = def.Columns[i];
        if (!IsShown(column)) continue;
        char title[columnTitleSize];
        ColumnTitle(column, title);
        Put(copy, title, std::strlen(title));
        if (i < def.ColumnCount - 1) PutTabs(copy, i, i + 1);
    }
    Put(copy, "\n", 1);
}

// All rows of the report under the headings of its columns, without a look at pages.
void CopyReport(Copying &copy, PageAnswer &answer)
{
    const Definition &def = *shown.Def;
    answer.HasRows = 1;
    PutHeadings(copy);
    uint64_t offset = shown.Of->First;
    while (const ItemHeader *item = ItemAt(*shown.Of, offset)) {
        if (item->Kind != Item::row) continue;
        if (IsFull(copy)) return;
        CellReader cells = CellsOf(*item, reinterpret_cast<const char *>(item + 1));
        Cell cell;
        int column = 0;
        while (NextCell(cells, cell)) {
            const int target = cell.Column == spanColumn ? 0 : cell.Column;
            PutTabs(copy, column, target);
            column = target;
            char figure[amountSize];
            if (cell.Kind == CellKind::text) {
                Put(copy, cell.Text, cell.Length);
            } else if (!IsBlank(def, item->Style, cell)) {
                Put(copy, figure,
                    cell.Kind == CellKind::number ? WriteNumber(cell.Number, Look::grouped, figure)
                                                  : WriteHundredths(cell.Number, Look::grouped, figure));
            }
        }
        PutTabs(copy, column, def.ColumnCount - 1);
        Put(copy, "\n", 1);
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
    if (request.IsAllSelected != 0) {
        CopyReport(copy, answer);
    } else {
        CopySelected(copy, request, answer);
    }
    FlushCopy(copy);
    answer.Length = copy.Length;
    answer.IsCutShort = copy.Length >= maxCopied ? 1 : 0;
    if (!copy.HasFailed) return copy.File;
    close(copy.File);
    return -1;
}

} // namespace rs
