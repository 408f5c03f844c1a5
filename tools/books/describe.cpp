#include "tools/books/describe.h"

#include "tools/books/place.h"
#include "tools/common/exit_codes.h"
#include "tools/common/fields.h"
#include "tools/common/json.h"
#include "tools/common/row_writer.h"

#include <iostream>

namespace books {

using namespace tools;

namespace {

// "0", "1, 3": the keys in which a field stands; "2a", "2b" where a key has several segments.
std::string KeysOf(const TableLayout &layout, const FieldLayout &field)
{
    std::string keys;
    for (size_t number = 0; number < layout.Keys.size(); ++number) {
        const std::vector<KeySegment> &segments = layout.Keys[number].Segments;
        for (size_t i = 0; i < segments.size(); ++i) {
            if (field.Offset < segments[i].Offset ||
                field.Offset >= segments[i].Offset + segments[i].Length) {
                continue;
            }
            if (!keys.empty()) keys += ", ";
            keys += std::to_string(number);
            if (segments.size() > 1) keys += static_cast<char>('a' + i);
        }
    }
    return keys;
}

// "0 Konto, 1 Kuerzel (mehrfach, änderbar)"
std::string KeyList(const TableLayout &layout)
{
    std::string list;
    for (size_t number = 0; number < layout.Keys.size(); ++number) {
        const KeyLayout &key = layout.Keys[number];
        if (!list.empty()) list += ", ";
        list += std::to_string(number);
        for (const KeySegment &segment : key.Segments) {
            const FieldLayout *field = FieldOf(layout, segment);
            list += &segment == &key.Segments.front() ? " " : " + ";
            list += field != nullptr ? field->Name : std::to_string(segment.Offset);
        }
        if (key.Duplicates) list += key.Modifiable ? " (mehrfach, änderbar)" : " (mehrfach)";
    }
    return list;
}

// The tables in which the value stands, with "leer" where there need not be one.
std::string ReferenceText(const FieldLayout &field)
{
    std::string text(ReferenceName(field.Target));
    if (!text.empty() && !field.IsNeeded) text += ", leer";
    return text;
}

void PutField(RowWriter &rows, const TableLayout &layout, const FieldLayout &field, bool isNamed)
{
    if (isNamed) rows.PutUtf8(layout.Stem);
    rows.PutNumber(field.Offset);
    rows.PutNumber(field.Width);
    rows.PutUtf8(field.Name);
    rows.PutUtf8(FormName(field.Type));
    rows.PutUtf8(KeysOf(layout, field));
    rows.PutUtf8(ReferenceText(field));
    rows.PutUtf8(field.Meaning);
    rows.EndRow();
}

std::vector<RowColumn> FieldColumns(bool isNamed)
{
    std::vector<RowColumn> columns = {{"Ab", "ab", 4, Align::Right},  {"Bytes", "bytes", 5, Align::Right},
                                      {"Feld", "feld", 24},           {"Form", "form", 18},
                                      {"Schlüssel", "schluessel", 9}, {"Steht in", "steht_in", 22},
                                      {"Bedeutung", "bedeutung", 40}};
    if (isNamed) columns.insert(columns.begin(), {"Tabelle", "tabelle", 8});
    return columns;
}

void PrintFields(const TableLayout *only, Output as)
{
    const bool isNamed = only == nullptr;
    RowWriter rows(FieldColumns(isNamed), as);
    for (const TableLayout &layout : Tables()) {
        if (only != nullptr && &layout != only) continue;
        for (const FieldLayout &field : FieldsAndGaps(layout)) {
            PutField(rows, layout, field, isNamed);
        }
    }
    rows.End();
}

void PrintTables()
{
    RowWriter rows({{"Nr", "nr", 2, Align::Right},
                    {"Tabelle", "tabelle", 8},
                    {"Bytes", "bytes", 5, Align::Right},
                    {"Felder", "felder", 6, Align::Right},
                    {"Inhalt", "inhalt", 40}},
                   Output::Table);
    for (const TableLayout &layout : Tables()) {
        rows.PutNumber(layout.Id);
        rows.PutUtf8(layout.Stem);
        rows.PutNumber(layout.RecordLength);
        rows.PutNumber(static_cast<int64_t>(layout.Fields.size()));
        rows.PutUtf8(layout.Content);
        rows.EndRow();
    }
    rows.End();
}

std::string Html(std::string_view text)
{
    std::string out;
    for (const char character : text) {
        switch (character) {
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '&': out += "&amp;"; break;
        default: out += character;
        }
    }
    return out;
}

constexpr const char *pageHead = R"(<!DOCTYPE html>
<html lang="de">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width">
<title>Satzaufbau der Bücher</title>
<style>
body { font: 15px/1.5 system-ui, sans-serif; max-width: 70rem; margin: 2rem auto; padding: 0 1rem; }
body { color: #222; background: #fff; }
h1 { font-size: 1.6rem; }
h2 { font-size: 1.2rem; margin-top: 2.5rem; border-bottom: 2px solid #ccc; }
nav { columns: 14rem; }
nav a { display: block; }
table { border-collapse: collapse; width: 100%; font-size: 14px; }
th, td { text-align: left; vertical-align: top; padding: .15rem .6rem .15rem 0; }
th, td { border-bottom: 1px solid #ddd; }
td.n, th.n { text-align: right; }
td.f { font-family: monospace; white-space: nowrap; }
tr.gap { color: #888; }
@media (prefers-color-scheme: dark) {
  body { color: #ddd; background: #181818; }
  a { color: #8bf; }
  th, td, h2 { border-color: #444; }
  tr.gap { color: #777; }
}
</style>
</head>
<body>
<h1>Satzaufbau der Bücher</h1>
<p>Jede Tabelle mit ihren Feldern: ab welchem Byte, wie viele, in welcher Form, und in welcher Tabelle
der Wert steht („leer“: das Feld darf auch leer oder 0 sein). Zahlen (i16, u8 …) liegen mit dem
niedrigsten Byte voran. Texte sind Windows-1252 und enden in ihrer Breite mit NUL. Ein Betrag hat 13
Bytes: neun Stellen, an Stelle des Kommas <code>,</code> oder für einen negativen Betrag <code>-</code>,
zwei Dezimalen, NUL. Ein Prozentsatz ist <code>16,00</code>. Ein Tag besteht aus Tag, Monat des
Geschäftsjahrs und dem Jahr, in dem es beginnt, von 1980 an gezählt; das Geschäftsjahr beginnt mit dem
Monat, den <code>fista</code> nennt. Eine Kontonummer steht rechtsbündig in sieben Zeichen. Was
„Reserved“ heißt, gehört der Anwendung und bleibt beim Schreiben, wie es ist.</p>
)";

void PrintPage(const TableLayout *only)
{
    std::ostream &out = std::cout;
    out << pageHead << "<nav>\n";
    const auto isWanted = [only](const TableLayout &layout) { return only == nullptr || &layout == only; };
    for (const TableLayout &layout : Tables()) {
        if (!isWanted(layout)) continue;
        out << "<a href=\"#" << layout.Stem << "\">" << layout.Stem << " – " << Html(layout.Content)
            << "</a>\n";
    }
    out << "</nav>\n";
    for (const TableLayout &layout : Tables()) {
        if (!isWanted(layout)) continue;
        out << "<h2 id=\"" << layout.Stem << "\">" << layout.Stem << " – " << Html(layout.Content)
            << "</h2>\n<p>Tabelle " << int{layout.Id} << ", " << layout.RecordLength
            << " Bytes. Schlüssel: " << Html(KeyList(layout))
            << ".</p>\n<table>\n<tr><th class=\"n\">Ab</th><th "
               "class=\"n\">Bytes</th><th>Feld</th><th>Form</th>"
               "<th>Schlüssel</th><th>Steht in</th><th>Bedeutung</th></tr>\n";
        for (const FieldLayout &field : FieldsAndGaps(layout)) {
            out << (field.Type == Form::Bytes ? "<tr class=\"gap\">" : "<tr>") << "<td class=\"n\">"
                << field.Offset << "</td><td class=\"n\">" << field.Width << "</td><td class=\"f\">"
                << Html(field.Name) << "</td><td>" << Html(FormName(field.Type)) << "</td><td>"
                << KeysOf(layout, field) << "</td><td>" << ReferenceText(field) << "</td><td>"
                << Html(field.Meaning) << "</td></tr>\n";
        }
        out << "</table>\n";
    }
    out << "</body>\n</html>\n" << std::flush;
}

} // namespace

int DescribeTables(const std::string &table, DescribeAs as)
{
    const TableLayout *only = table.empty() ? nullptr : &NamedTable(table);
    switch (as) {
    case DescribeAs::Csv: PrintFields(only, Output::Csv); break;
    case DescribeAs::Json: PrintFields(only, Output::Json); break;
    case DescribeAs::Html: PrintPage(only); break;
    case DescribeAs::Table:
        if (only == nullptr) {
            PrintTables();
        } else {
            PrintFields(only, Output::Table);
            std::cout << "\nSchlüssel: " << KeyList(*only) << '\n' << std::flush;
        }
        break;
    }
    return ExitGood;
}

} // namespace books
