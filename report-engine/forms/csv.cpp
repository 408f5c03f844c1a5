#include "report-engine/forms/forms.h"
#include "report-engine/forms/walk.h"
#include "report-engine/values.h"

#include <algorithm>
#include <cstring>

namespace rs {

namespace {

void WriteCsvField(Writer &writer, const char *text, size_t length)
{
    const auto isSpecial = [](char letter) {
        return letter == ';' || letter == '"' || letter == '\n' || letter == '\r';
    };
    if (std::none_of(text, text + length, isSpecial)) {
        Write(writer, text, length);
        return;
    }
    Write(writer, "\"", 1);
    for (size_t i = 0; i < length; ++i) {
        if (text[i] == '"') Write(writer, "\"", 1);
        Write(writer, text + i, 1);
    }
    Write(writer, "\"", 1);
}

void WriteCsvCell(Writer &writer, const Cell &cell)
{
    if (cell.Kind == CellKind::text) return WriteCsvField(writer, cell.Text, cell.Length);
    if (cell.Kind == CellKind::flag) return Write(writer, cell.Number != 0 ? "ja" : "nein");
    char number[amountSize];
    const LinePart value = CellText(cell, Look::plain, number);
    Write(writer, value.Text, value.Length);
}

// What people read in the first column.
const char *RowWord(const Definition &def, uint8_t style)
{
    constexpr const char *words[] = {"Zeile", "Text", "Gruppe", "Summe", "Gesamt"};
    return words[def.Styles[style].Role];
}

void WriteCsvRow(Writer &writer, const Definition &def, const SpoolReader &reader)
{
    Write(writer, RowWord(def, reader.Header.Style));
    CellReader cells = CellsOf(reader.Header, reader.Data);
    Cell cell;
    bool hasCell = NextCell(cells, cell);
    for (int column = 0; column < def.ColumnCount; ++column) {
        if (!IsShown(def.Columns[column])) continue;
        Write(writer, ";", 1);
        if (!hasCell || (cell.Column != column && cell.Column != spanColumn)) continue;
        if (!IsNoRate(def, reader.Header.Style, cell)) WriteCsvCell(writer, cell);
        hasCell = NextCell(cells, cell);
    }
    Write(writer, "\r\n", 2);
}

void WriteCsvData(Writer &writer, const Definition &def, const SpoolReader &reader)
{
    CellReader cells = CellsOf(reader.Header, reader.Data);
    Cell cell;
    bool hasCell = NextCell(cells, cell);
    for (int field = 0; field < def.DataFieldCount; ++field) {
        if (field > 0) Write(writer, ";", 1);
        if (!hasCell || cell.Column != field) continue;
        WriteCsvCell(writer, cell);
        hasCell = NextCell(cells, cell);
    }
    Write(writer, "\r\n", 2);
}

void WriteCsvHeadings(Writer &writer, const Definition &def)
{
    Write(writer, "\xEF\xBB\xBF");
    if (def.DataFieldCount == 0) Write(writer, "Art");
    for (int i = 0; i < def.DataFieldCount; ++i) {
        if (i > 0) Write(writer, ";", 1);
        WriteCsvField(writer, def.DataFields[i].Heading, std::strlen(def.DataFields[i].Heading));
    }
    for (int i = 0; i < def.ColumnCount && def.DataFieldCount == 0; ++i) {
        if (!IsShown(def.Columns[i])) continue;
        char title[columnTitleSize];
        ColumnTitle(def.Columns[i], title);
        Write(writer, ";", 1);
        WriteCsvField(writer, title, std::strlen(title));
    }
    Write(writer, "\r\n", 2);
}

} // namespace

bool WriteCsv(Writer &writer, const View &view)
{
    const Definition &def = view.Of->Def;
    Walk *walk = StartWalk(view);
    if (walk == nullptr) return false;
    WriteCsvHeadings(writer, def);
    while (NextItem(*walk, writer)) {
        const Item kind = walk->Reader.Header.Kind;
        if (kind == Item::data) WriteCsvData(writer, def, walk->Reader);
        if (kind == Item::row && def.DataFieldCount == 0) WriteCsvRow(writer, def, walk->Reader);
    }
    return EndWalk(walk);
}

} // namespace rs
