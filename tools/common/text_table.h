// Rows of text that are printed as an aligned table, as CSV, or as JSON: one way of collecting them, and
// every command has all three forms.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace tools {

enum class Align : uint8_t { Left, Right };

struct Column {
    std::string Heading;
    Align Side = Align::Left;
};

struct TextTable {
    std::vector<Column> Columns;
    std::vector<std::vector<std::string>> Rows; // UTF-8; a shorter row leaves its last columns empty
    bool KeepsEmpty = false;                    // also prints a column without any text

    void Add(std::vector<std::string> row) { Rows.push_back(std::move(row)); }

    // Headings, a rule, and the rows, two blanks between columns; a column without any text is left out,
    // unless KeepsEmpty.
    void Print(std::ostream &out) const;

    // Semicolons, a line of headings, quotes where a value needs them.
    void PrintCsv(std::ostream &out) const;
};

// A value as a CSV field: as it stands, or in quotes.
std::string CsvField(const std::string &value);

} // namespace tools
