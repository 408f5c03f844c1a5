#include "report-engine/forms/forms.h"
#include "report-engine/forms/walk.h"
#include "report-engine/values.h"
#include "text/windows1252.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace rs {

namespace {

void WriteJsonText(Writer &writer, const char *text, size_t length)
{
    Write(writer, "\"", 1);
    for (size_t i = 0; i < length; ++i) {
        const char character = text[i];
        if (character == '"' || character == '\\') Write(writer, "\\", 1);
        if (character >= 0 && character < ' ') {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned>(character));
            Write(writer, character == '\n' ? "\\n" : escaped);
        } else {
            Write(writer, &character, 1);
        }
    }
    Write(writer, "\"", 1);
}

void WriteJsonText(Writer &writer, const char *text) { WriteJsonText(writer, text, std::strlen(text)); }

void WriteJsonCell(Writer &writer, const Cell &cell)
{
    char number[amountSize];
    const LinePart value = CellText(cell, Look::machine, number);
    if (cell.Kind == CellKind::text) {
        WriteJsonText(writer, value.Text, value.Length);
    } else if (cell.Kind == CellKind::flag) {
        Write(writer, cell.Number != 0 ? "true" : "false");
    } else {
        Write(writer, value.Text, value.Length);
    }
}

// What all rows are about, from the last item that said so: members with a comma behind each.
struct About {
    uint16_t Count;
    uint32_t Size;
    char Data[maxItemSize];
};

void TakeAbout(About &about, const SpoolReader &reader)
{
    about.Count = reader.Header.Count;
    about.Size = reader.Header.Size;
    std::memcpy(about.Data, reader.Data, about.Size);
}

void WriteAbout(Writer &writer, const About &about)
{
    const char *next = about.Data;
    for (int text = 0; text < 2 * about.Count; ++text) {
        uint16_t length = 0;
        std::memcpy(&length, next, sizeof length);
        WriteJsonText(writer, next + sizeof length, length);
        Write(writer, text % 2 == 0 ? ":" : ",");
        next += sizeof length + length;
    }
}

void WriteJsonRow(Writer &writer, const Definition &def, const About &about, const SpoolReader &reader)
{
    constexpr const char *kinds[] = {"line", "text", "head", "sum", "total"};
    Write(writer, "{");
    WriteAbout(writer, about);
    Write(writer, "\"kind\":");
    WriteJsonText(writer, kinds[def.Styles[reader.Header.Style].Role]);
    CellReader cells = CellsOf(reader.Header, reader.Data);
    Cell cell;
    while (NextCell(cells, cell)) {
        if (IsNoRate(def, reader.Header.Style, cell)) continue;
        Write(writer, ",");
        WriteJsonText(writer, cell.Column == spanColumn ? "" : def.Columns[cell.Column].Name);
        Write(writer, ":");
        WriteJsonCell(writer, cell);
    }
    Write(writer, "}");
}

// Every field is there; one without a value is null.
void WriteJsonData(Writer &writer, const Definition &def, const About &about, const SpoolReader &reader)
{
    Write(writer, "{");
    WriteAbout(writer, about);
    CellReader cells = CellsOf(reader.Header, reader.Data);
    Cell cell;
    bool hasCell = NextCell(cells, cell);
    for (int field = 0; field < def.DataFieldCount; ++field) {
        if (field > 0) Write(writer, ",");
        WriteJsonText(writer, def.DataFields[field].Name);
        Write(writer, ":");
        if (!hasCell || cell.Column != field) {
            Write(writer, "null");
            continue;
        }
        WriteJsonCell(writer, cell);
        hasCell = NextCell(cells, cell);
    }
    Write(writer, "}");
}

void WriteJsonHead(Writer &writer, const SpoolReader &reader)
{
    LinePart parts[3];
    HeadPartsOf(reader, parts);
    constexpr const char *names[3] = {"left", "center", "right"};
    Write(writer, "{\"kind\":\"pagehead\"");
    for (int i = 0; i < 3; ++i) {
        if (parts[i].Length == 0) continue;
        Write(writer, ",");
        WriteJsonText(writer, names[i]);
        Write(writer, ":");
        WriteJsonText(writer, parts[i].Text, parts[i].Length);
    }
    Write(writer, "}");
}

void WriteJsonColumn(Writer &writer, bool isFirst, const char *name, const char *title, Form form)
{
    constexpr const char *forms[] = {"text", "amount", "rate", "number", "flag"};
    Write(writer, isFirst ? "\n{\"name\":" : ",\n{\"name\":");
    WriteJsonText(writer, name);
    Write(writer, ",\"title\":");
    WriteJsonText(writer, title);
    Write(writer, ",\"form\":");
    WriteJsonText(writer, forms[static_cast<int>(form)]);
    Write(writer, "}");
}

void WriteJsonColumns(Writer &writer, const Definition &def)
{
    for (int i = 0; i < def.DataFieldCount; ++i) {
        const DataField &field = def.DataFields[i];
        WriteJsonColumn(writer, i == 0, field.Name, field.Heading, field.CellForm);
    }
    bool isFirst = true;
    for (int i = 0; i < def.ColumnCount && def.DataFieldCount == 0; ++i) {
        const Column &column = def.Columns[i];
        if (!IsShown(column)) continue;
        char title[columnTitleSize];
        ColumnTitle(column, title);
        WriteJsonColumn(writer, isFirst, column.Name, title, column.CellForm);
        isFirst = false;
    }
}

} // namespace

bool WriteJson(Writer &writer, const View &view)
{
    const Definition &def = view.Of->Def;
    auto *about = static_cast<About *>(std::malloc(sizeof(About)));
    Walk *walk = about != nullptr ? StartWalk(view) : nullptr;
    if (walk == nullptr) {
        std::free(about);
        return false;
    }
    about->Count = 0;
    Write(writer, "{\"report\":");
    WriteJsonText(writer, def.ReportId);
    Write(writer, ",\"title\":");
    WriteJsonText(writer, def.Title);
    Write(writer, ",\"columns\":[");
    WriteJsonColumns(writer, def);
    Write(writer, "],\"rows\":[");
    const char *separator = "\n";
    while (NextItem(*walk, writer)) {
        const Item kind = walk->Reader.Header.Kind;
        if (kind == Item::about) TakeAbout(*about, walk->Reader);
        const bool isPrinted = kind == Item::row || kind == Item::head;
        if (kind != Item::data && (!isPrinted || def.DataFieldCount != 0)) continue;
        Write(writer, separator);
        separator = ",\n";
        if (kind == Item::data) {
            WriteJsonData(writer, def, *about, walk->Reader);
        } else if (kind == Item::row) {
            WriteJsonRow(writer, def, *about, walk->Reader);
        } else {
            WriteJsonHead(writer, walk->Reader);
        }
    }
    Write(writer, "\n]}\n");
    std::free(about);
    return EndWalk(walk);
}

} // namespace rs
