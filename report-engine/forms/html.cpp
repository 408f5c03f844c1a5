#include "report-engine/forms/forms.h"
#include "report-engine/forms/walk.h"
#include "report-engine/values.h"

#include <cstdio>
#include <cstring>

namespace rs {

namespace {

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

void WriteHtmlRow(Writer &writer, const Definition &def, SpoolReader &reader)
{
    BlankControls(reader.Header, reader.Data);
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

} // namespace

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

} // namespace rs
