// CSV, JSON, HTML and text: one walk over the spool each (text takes two, to find its widths).
#include "report-engine/forms.h"
#include "report-engine/values.h"
#include "text/windows1252.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace rs {

namespace {

// A walk over a spool, in the place of a stack frame of this size.
struct Walk {
    SpoolReader Reader;
    bool HasFailed;
    uint64_t Items; // so far
    int64_t Whole;  // bytes of the spool
};

Walk *StartWalk(const View &view)
{
    auto *walk = static_cast<Walk *>(std::malloc(sizeof(Walk)));
    if (walk == nullptr) return nullptr;
    StartReading(walk->Reader, view.Of->Store.File);
    walk->HasFailed = false;
    walk->Items = 0;
    walk->Whole = static_cast<int64_t>(SpoolEnd(view.Of->Store));
    return walk;
}

// The next item, and now and then a look whether the person still wants it.
bool NextItem(Walk &walk, Writer &writer)
{
    constexpr uint64_t itemsBetweenLooks = 2048;
    if (writer.Watch != nullptr && ++walk.Items % itemsBetweenLooks == 0 &&
        !writer.Watch->GoesOn(writer.Watch->Context, static_cast<int64_t>(walk.Reader.ItemOffset),
                              walk.Whole)) {
        writer.Error = ECANCELED;
    }
    return writer.Error == 0 && ReadItem(walk.Reader, walk.HasFailed);
}

bool EndWalk(Walk *walk)
{
    const bool isGood = !walk->HasFailed;
    std::free(walk);
    return isGood;
}

// A part of a page head that tells page numbers says nothing where there are no pages.
bool IsAboutPages(const LinePart &part)
{
    return memmem(part.Text, part.Length, "{page}", 6) != nullptr ||
           memmem(part.Text, part.Length, "{pages}", 7) != nullptr ||
           memmem(part.Text, part.Length, "{sheet}", 7) != nullptr;
}

void HeadPartsOf(const SpoolReader &reader, LinePart (&parts)[3])
{
    LinePartsOf(reader.Data, parts);
    for (LinePart &part : parts) {
        if (IsAboutPages(part)) part.Length = 0;
    }
}

// The value of a cell as text; `out` serves for numbers.
LinePart CellText(const Cell &cell, Look look, char (&out)[amountSize])
{
    if (cell.Kind == CellKind::text) return {cell.Text, cell.Length};
    const bool isWhole = cell.Kind == CellKind::number || cell.Kind == CellKind::flag;
    return {out, isWhole ? WriteNumber(cell.Number, look, out) : WriteHundredths(cell.Number, look, out)};
}

// The same as it stands on a page.
LinePart PrintedText(const Definition &def, uint8_t style, const Cell &cell, char (&out)[amountSize])
{
    if (IsBlank(def, style, cell)) return {out, 0};
    return CellText(cell, Look::grouped, out);
}

// ---- CSV ----

void WriteCsvField(Writer &writer, const char *text, size_t length)
{
    bool needsQuotes = false;
    for (size_t i = 0; i < length; ++i) {
        if (text[i] == ';' || text[i] == '"' || text[i] == '\n' || text[i] == '\r') needsQuotes = true;
    }
    if (!needsQuotes) {
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

// What people read in the first column.
const char *RowWord(const Definition &def, uint8_t style)
{
    constexpr const char *words[] = {"Zeile", "Text", "Gruppe", "Summe", "Gesamt"};
    return words[def.Styles[style].Role];
}

// A rate of zero that the page leaves empty is none; an amount of zero is a figure.
bool IsNoRate(const Definition &def, uint8_t style, const Cell &cell)
{
    return cell.Kind == CellKind::rate && IsBlank(def, style, cell);
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
        char number[amountSize];
        const LinePart value = CellText(cell, Look::plain, number);
        if (!IsNoRate(def, reader.Header.Style, cell)) WriteCsvField(writer, value.Text, value.Length);
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
        char number[amountSize];
        const LinePart value = CellText(cell, Look::plain, number);
        if (cell.Kind == CellKind::flag) {
            Write(writer, cell.Number != 0 ? "ja" : "nein");
        } else {
            WriteCsvField(writer, value.Text, value.Length);
        }
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

// ---- JSON ----

void WriteJsonText(Writer &writer, const char *text, size_t length)
{
    Write(writer, "\"", 1);
    for (size_t i = 0; i < length; ++i) {
        const char character = text[i];
        if (character == '"' || character == '\\') Write(writer, "\\", 1);
        if (character == '\n') {
            Write(writer, "\\n");
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

// ---- HTML ----

void WriteHtmlText(Writer &writer, const char *text, size_t length)
{
    for (size_t i = 0; i < length; ++i) {
        switch (text[i]) {
        case '&': Write(writer, "&amp;"); break;
        case '<': Write(writer, "&lt;"); break;
        case '>': Write(writer, "&gt;"); break;
        case '"': Write(writer, "&quot;"); break;
        case '\n': Write(writer, "<br>"); break;
        default: Write(writer, text + i, 1); break;
        }
    }
}

void WriteHtmlText(Writer &writer, const char *text) { WriteHtmlText(writer, text, std::strlen(text)); }

constexpr char htmlLooks[] =
    "body{font:14px/1.45 Roboto,Arial,sans-serif;margin:2rem auto;max-width:max-content;color:#111;"
    "background:#fff}\n"
    "header{display:grid;grid-template-columns:1fr auto 1fr;gap:0 2rem;margin:1.5rem 0 .5rem}\n"
    "header>:nth-child(3n+2){text-align:center}header>:nth-child(3n){text-align:right}\n"
    "header>:nth-child(-n+3){font-weight:bold;font-size:1.25em}\n"
    "table{border-collapse:collapse;font-variant-numeric:tabular-nums}\n"
    "th,td{padding:.1rem .5rem;text-align:left;vertical-align:bottom}\n"
    "th.g{text-align:center;border-bottom:1px solid #888}\n"
    ".n{text-align:right;white-space:nowrap}.c{text-align:center}\n"
    "thead tr:last-child th{border-bottom:1.5px solid #111}\n";

const char *HtmlRule(Rule rule)
{
    switch (rule) {
    case Rule::hair: return "1px solid #ccc";
    case Rule::line: return "1px solid #111";
    case Rule::twofold: return "3px double #111";
    default: return "none";
    }
}

// On paper the page is that of the report, in its size of type, and the table takes the width that there is.
void WriteHtmlPage(Writer &writer, const Definition &def)
{
    constexpr int32_t unitsOfMillimetre = 100;
    char line[300];
    std::snprintf(line, sizeof line, "@page{size:%dmm %dmm;margin:%dmm %dmm %dmm %dmm}\n",
                  def.PageWidth / unitsOfMillimetre, def.PageHeight / unitsOfMillimetre,
                  def.Top / unitsOfMillimetre, def.Right / unitsOfMillimetre, def.Bottom / unitsOfMillimetre,
                  def.Left / unitsOfMillimetre);
    Write(writer, line);
    std::snprintf(
        line, sizeof line,
        "@media print{body{font-size:%d.%dpt;line-height:1.25;margin:0;max-width:none}table{width:100%%}"
        "th,td{padding:0 .25em}tr{break-inside:avoid}}\n",
        def.FontSize / 100, def.FontSize % 100 / 10);
    Write(writer, line);
}

void WriteHtmlStyles(Writer &writer, const Definition &def)
{
    for (int i = 0; i < def.StyleCount; ++i) {
        const Style &style = def.Styles[i];
        char line[300];
        std::snprintf(
            line, sizeof line, ".s%d td{font-weight:%s;font-style:%s;border-top:%s;border-bottom:%s%s%d%s}\n",
            i, style.Bold ? "bold" : "normal", style.Italic ? "italic" : "normal", HtmlRule(style.Above),
            HtmlRule(style.Below), ";background:rgb(0 0 0/", style.Shade, "%)");
        Write(writer, line);
        if (style.Indent == 0) continue;
        std::snprintf(line, sizeof line, ".s%d td:not(.n,.c){padding-left:%d.%dmm}\n", i,
                      style.Indent / 100 + 2, style.Indent % 100 / 10);
        Write(writer, line);
    }
}

const char *HtmlAlign(const Column &column)
{
    return column.CellAlign == Align::right    ? " class=n"
           : column.CellAlign == Align::centre ? " class=c"
                                               : "";
}

int ShownColumns(const Definition &def, int first, int end)
{
    int count = 0;
    for (int i = first; i < end; ++i) {
        if (IsShown(def.Columns[i])) ++count;
    }
    return count;
}

void WriteHtmlColumns(Writer &writer, const Definition &def)
{
    Write(writer, "<table>\n");
    if (def.ColumnTitleLines == 0) return;
    Write(writer, "<thead>\n");
    if (def.HasColumnGroups) {
        Write(writer, "<tr>");
        for (int i = 0; i < def.ColumnCount;) {
            if (!IsShown(def.Columns[i])) {
                ++i;
                continue;
            }
            int end = i + 1;
            while (def.Columns[i].Group[0] != 0 && end < def.ColumnCount &&
                   std::strcmp(def.Columns[i].Group, def.Columns[end].Group) == 0) {
                ++end;
            }
            char tag[48];
            std::snprintf(tag, sizeof tag, "<th%s colspan=%d>",
                          def.Columns[i].Group[0] != 0 ? " class=g" : "", ShownColumns(def, i, end));
            Write(writer, tag);
            WriteHtmlText(writer, def.Columns[i].Group);
            Write(writer, "</th>");
            i = end;
        }
        Write(writer, "</tr>\n");
    }
    Write(writer, "<tr>");
    for (int i = 0; i < def.ColumnCount; ++i) {
        if (!IsShown(def.Columns[i])) continue;
        Write(writer, "<th");
        Write(writer, HtmlAlign(def.Columns[i]));
        Write(writer, ">");
        WriteHtmlText(writer, def.Columns[i].Title);
        Write(writer, "</th>");
    }
    Write(writer, "</tr>\n</thead>\n");
}

void WriteHtmlRow(Writer &writer, const Definition &def, const SpoolReader &reader)
{
    char tag[64];
    std::snprintf(tag, sizeof tag, "<tr class=s%d>", reader.Header.Style);
    Write(writer, tag);
    CellReader cells = CellsOf(reader.Header, reader.Data);
    Cell cell;
    bool hasCell = NextCell(cells, cell);
    if (hasCell && cell.Column == spanColumn) {
        const int columns = ShownColumns(def, 0, def.ColumnCount);
        std::snprintf(tag, sizeof tag, "<td colspan=%d>", columns > 0 ? columns : 1);
        Write(writer, tag);
        WriteHtmlText(writer, cell.Text, cell.Length);
        Write(writer, "</td>");
    } else {
        for (int column = 0; column < def.ColumnCount;) {
            if (!IsShown(def.Columns[column])) {
                ++column;
                continue;
            }
            if (!hasCell || cell.Column != column) {
                Write(writer, "<td></td>");
                ++column;
                continue;
            }
            char number[amountSize];
            const LinePart value = PrintedText(def, reader.Header.Style, cell, number);
            const bool isText = cell.Kind == CellKind::text;
            hasCell = NextCell(cells, cell);
            // A text runs on over the empty columns behind it.
            int end = column + 1;
            while (isText && end < def.ColumnCount && (!hasCell || cell.Column != end)) {
                ++end;
            }
            Write(writer, "<td");
            Write(writer, HtmlAlign(def.Columns[column]));
            const int columns = ShownColumns(def, column, end);
            if (columns > 1) {
                std::snprintf(tag, sizeof tag, " colspan=%d", columns);
                Write(writer, tag);
            }
            Write(writer, ">");
            WriteHtmlText(writer, value.Text, value.Length);
            Write(writer, "</td>");
            column = end;
        }
    }
    Write(writer, "</tr>\n");
}

// ---- Text ----

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

void MeasureRow(TextTable &table, const Definition &def, const SpoolReader &reader)
{
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

void WriteTextRow(Writer &writer, const TextTable &table, const Definition &def, const SpoolReader &reader)
{
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

bool WriteHtml(Writer &writer, const View &view)
{
    const Definition &def = view.Of->Def;
    Walk *walk = StartWalk(view);
    if (walk == nullptr) return false;
    Write(writer, "<!doctype html>\n<html lang=de>\n<head>\n<meta charset=utf-8>\n<title>");
    WriteHtmlText(writer, def.Title);
    Write(writer, "</title>\n<style>\n");
    Write(writer, htmlLooks);
    WriteHtmlStyles(writer, def);
    WriteHtmlPage(writer, def);
    Write(writer, "</style>\n</head>\n<body>\n");
    bool isInTable = false;
    bool isInHead = false;
    while (NextItem(*walk, writer)) {
        const Item kind = walk->Reader.Header.Kind;
        if (kind == Item::head) {
            if (walk->Reader.Header.IsFirst != 0 || !isInHead) {
                if (isInTable) Write(writer, "</table>\n");
                if (isInHead) Write(writer, "</header>\n");
                Write(writer, "<header>");
                isInTable = false;
                isInHead = true;
            }
            LinePart parts[3];
            HeadPartsOf(walk->Reader, parts);
            for (const LinePart &part : parts) {
                Write(writer, "<div>");
                WriteHtmlText(writer, part.Text, part.Length);
                Write(writer, "</div>");
            }
        } else if (kind == Item::row) {
            if (isInHead) Write(writer, "</header>\n");
            isInHead = false;
            if (!isInTable) WriteHtmlColumns(writer, def);
            isInTable = true;
            WriteHtmlRow(writer, def, walk->Reader);
        }
    }
    if (isInHead) Write(writer, "</header>\n");
    if (isInTable) Write(writer, "</table>\n");
    Write(writer, "</body>\n</html>\n");
    return EndWalk(walk);
}

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
