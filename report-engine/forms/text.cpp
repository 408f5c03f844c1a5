// Text takes two walks, the first to find its widths.
#include "report-engine/forms/forms.h"
#include "report-engine/forms/walk.h"
#include "report-engine/values.h"

#include <cstring>

namespace rs {

namespace {

size_t Characters(const char *text, size_t length)
{
    size_t count = 0;
    for (size_t i = 0; i < length; ++i) {
        if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80) ++count;
    }
    return count;
}

void WriteBlanks(Writer &writer, size_t count)
{
    constexpr char blanks[] = "                                                                ";
    while (count > 0) {
        const size_t part = count < sizeof blanks - 1 ? count : sizeof blanks - 1;
        Write(writer, blanks, part);
        count -= part;
    }
}

// Blanks for the indent of a row's texts, one for 2 mm.
size_t IndentOf(const Definition &def, uint8_t style, const Cell &cell)
{
    constexpr int32_t blank = 200;
    const bool isLeft = cell.Column != spanColumn && cell.Kind == CellKind::text &&
                        def.Columns[cell.Column].CellAlign == Align::left;
    return isLeft ? static_cast<size_t>((def.Styles[style].Indent + blank / 2) / blank) : 0;
}

// The shown column behind one.
int NextShown(const Definition &def, int column)
{
    do {
        ++column;
    } while (column < def.ColumnCount && !IsShown(def.Columns[column]));
    return column;
}

size_t GapBehind(const Definition &def, int column) { return IsShown(def.Columns[column]) ? 2 : 0; }

struct TextTable {
    size_t Widths[maxColumns]; // 0 of columns that are not shown
    size_t Width;              // of the whole line
};

void Widen(size_t &width, size_t wanted)
{
    if (wanted > width) width = wanted;
}

void MeasureRow(TextTable &table, const Definition &def, SpoolReader &reader)
{
    BlankControls(reader.Header, reader.Data);
    CellReader cells = CellsOf(reader.Header, reader.Data);
    Cell cell;
    bool hasCell = NextCell(cells, cell);
    while (hasCell && cell.Column != spanColumn) {
        char number[amountSize];
        const uint8_t column = cell.Column;
        const LinePart value = PrintedText(def, reader.Header.Style, cell, number);
        const size_t indent = IndentOf(def, reader.Header.Style, cell);
        const size_t width = indent + Characters(value.Text, value.Length);
        const bool isLeft = def.Columns[column].CellAlign == Align::left;
        hasCell = NextCell(cells, cell);
        // What may run on over empty columns makes none wider.
        if (!isLeft || (hasCell && cell.Column == NextShown(def, column))) Widen(table.Widths[column], width);
    }
}

// Writes what stands in a column, and how far that went.
void WriteAligned(Writer &writer, const char *text, size_t length, size_t width, Align align,
                  size_t &position, size_t begin)
{
    if (length == 0) return;
    const size_t characters = Characters(text, length);
    const size_t spare = characters < width ? width - characters : 0;
    const size_t target = begin + (align == Align::right ? spare : align == Align::centre ? spare / 2 : 0);
    if (target > position) {
        WriteBlanks(writer, target - position);
        position = target;
    }
    Write(writer, text, length);
    position += characters;
}

void WriteTextRow(Writer &writer, const TextTable &table, const Definition &def, SpoolReader &reader)
{
    BlankControls(reader.Header, reader.Data);
    CellReader cells = CellsOf(reader.Header, reader.Data);
    Cell cell;
    size_t position = 0;
    size_t begin = 0;
    uint8_t column = 0;
    while (NextCell(cells, cell)) {
        char number[amountSize];
        const LinePart value = PrintedText(def, reader.Header.Style, cell, number);
        if (cell.Column == spanColumn) {
            Write(writer, value.Text, value.Length);
            continue;
        }
        for (; column < cell.Column; ++column) {
            begin += table.Widths[column] + GapBehind(def, column);
        }
        const size_t indent = IndentOf(def, reader.Header.Style, cell);
        const Align align = cell.Kind == CellKind::text && def.Columns[column].CellForm != Form::text
                                ? Align::right
                                : def.Columns[column].CellAlign;
        WriteAligned(writer, value.Text, value.Length, table.Widths[column], align, position, begin + indent);
    }
    Write(writer, "\n", 1);
}

void WriteTextColumns(Writer &writer, const TextTable &table, const Definition &def)
{
    for (int line = def.HasColumnGroups ? -1 : 0; line < def.ColumnTitleLines; ++line) {
        size_t position = 0;
        size_t begin = 0;
        for (int i = 0; i < def.ColumnCount; ++i) {
            const Column &column = def.Columns[i];
            if (!IsShown(column)) continue;
            const char *text = column.Group;
            size_t length = std::strlen(text);
            size_t width = table.Widths[i];
            Align align = column.CellAlign;
            if (line < 0) {
                // Once, over all columns of the group.
                if (i > 0 && IsShown(def.Columns[i - 1]) &&
                    std::strcmp(text, def.Columns[i - 1].Group) == 0) {
                    length = 0;
                }
                for (int other = i + 1; other < def.ColumnCount && length > 0; ++other) {
                    if (std::strcmp(text, def.Columns[other].Group) != 0) break;
                    width += GapBehind(def, other) + table.Widths[other];
                }
                align = Align::centre;
            } else {
                // The last lines of all titles stand level.
                int skipped = line - (def.ColumnTitleLines - TitleLines(column.Title));
                text = skipped >= 0 ? column.Title : "";
                for (; skipped > 0; --skipped) {
                    text = std::strchr(text, '\n') + 1;
                }
                length = std::strcspn(text, "\n");
            }
            if (length > 0) WriteAligned(writer, text, length, width, align, position, begin);
            begin += table.Widths[i] + 2;
        }
        Write(writer, "\n", 1);
    }
    for (size_t i = 0; i < table.Width; ++i) {
        Write(writer, "-", 1);
    }
    Write(writer, "\n", 1);
}

void WriteTextHead(Writer &writer, const TextTable &table, const LinePart (&parts)[3])
{
    size_t position = 0;
    for (int i = 0; i < 3; ++i) {
        const auto align = static_cast<Align>(i);
        if (parts[i].Length == 0) continue;
        if (position > 0) {
            Write(writer, "  ", 2);
            position += 2;
        }
        WriteAligned(writer, parts[i].Text, parts[i].Length, table.Width, align, position, 0);
    }
    if (position > 0) Write(writer, "\n", 1);
}

bool MeasureText(TextTable &table, const View &view)
{
    const Definition &def = view.Of->Def;
    table = {};
    for (int i = 0; i < def.ColumnCount; ++i) {
        const char *title = IsShown(def.Columns[i]) ? def.Columns[i].Title : "";
        while (title != nullptr && *title != 0) {
            const size_t length = strcspn(title, "\n");
            Widen(table.Widths[i], Characters(title, length));
            title = title[length] == '\n' ? title + length + 1 : nullptr;
        }
    }
    Walk *walk = StartWalk(view);
    if (walk == nullptr) return false;
    while (ReadItem(walk->Reader, walk->HasFailed)) {
        if (walk->Reader.Header.Kind == Item::row) MeasureRow(table, def, walk->Reader);
    }
    for (int i = 0; i < def.ColumnCount; ++i) {
        if (IsShown(def.Columns[i])) table.Width += table.Widths[i] + (table.Width > 0 ? 2 : 0);
    }
    return EndWalk(walk);
}

} // namespace

bool WriteText(Writer &writer, const View &view)
{
    const Definition &def = view.Of->Def;
    TextTable table;
    if (!MeasureText(table, view)) return false;
    Walk *walk = StartWalk(view);
    if (walk == nullptr) return false;
    bool needsColumns = true;
    bool hasAnything = false;
    while (NextItem(*walk, writer)) {
        const Item kind = walk->Reader.Header.Kind;
        if (kind == Item::head) {
            if (walk->Reader.Header.IsFirst != 0 && hasAnything) Write(writer, "\n", 1);
            LinePart parts[3];
            HeadPartsOf(walk->Reader, parts);
            WriteTextHead(writer, table, parts);
            needsColumns = true;
            hasAnything = true;
        } else if (kind == Item::row) {
            if (needsColumns && def.ColumnTitleLines > 0) {
                Write(writer, "\n", 1);
                WriteTextColumns(writer, table, def);
            }
            needsColumns = false;
            hasAnything = true;
            WriteTextRow(writer, table, def, walk->Reader);
        }
    }
    return EndWalk(walk);
}

} // namespace rs
