#include "tools/common/text_table.h"

#include "tools/common/texts.h"

#include <algorithm>

namespace tools {

namespace {

constexpr const char *gap = "  ";

const std::string &Cell(const std::vector<std::string> &row, size_t column)
{
    static const std::string empty;
    return column < row.size() ? row[column] : empty;
}

// Without the blanks that would end a line.
void PrintLine(std::ostream &out, std::string line)
{
    line.erase(line.find_last_not_of(' ') + 1);
    out << line << '\n';
}

} // namespace

void TextTable::Print(std::ostream &out) const
{
    std::vector<size_t> widths(Columns.size(), 0);
    for (size_t column = 0; column < Columns.size(); ++column) {
        for (const auto &row : Rows) {
            widths[column] = std::max(widths[column], tools::Columns(Cell(row, column)));
        }
        if (widths[column] > 0 || KeepsEmpty)
            widths[column] = std::max(widths[column], tools::Columns(Columns[column].Heading));
    }
    const auto line = [&](const auto &textOf) {
        std::string text;
        for (size_t column = 0; column < Columns.size(); ++column) {
            if (widths[column] == 0) continue;
            if (!text.empty()) text += gap;
            const std::string &value = textOf(column);
            text += Columns[column].Side == Align::Right ? Right(value, widths[column])
                                                         : Left(value, widths[column]);
        }
        PrintLine(out, text);
    };
    line([&](size_t column) -> const std::string & { return Columns[column].Heading; });
    std::string rule;
    for (const size_t width : widths) {
        if (width == 0) continue;
        if (!rule.empty()) rule += gap;
        for (size_t i = 0; i < width; ++i) {
            rule += "─";
        }
    }
    out << rule << '\n';
    for (const auto &row : Rows) {
        line([&](size_t column) -> const std::string & { return Cell(row, column); });
    }
}

void TextTable::PrintCsv(std::ostream &out) const
{
    for (size_t column = 0; column < Columns.size(); ++column) {
        out << (column > 0 ? ";" : "") << CsvField(Columns[column].Heading);
    }
    out << '\n';
    for (const auto &row : Rows) {
        for (size_t column = 0; column < Columns.size(); ++column) {
            out << (column > 0 ? ";" : "") << CsvField(Cell(row, column));
        }
        out << '\n';
    }
}

std::string CsvField(const std::string &value)
{
    const bool needsQuotes = value.find_first_of("\";\r\n") != std::string::npos ||
                             (!value.empty() && (value.front() == ' ' || value.back() == ' '));
    if (!needsQuotes) return value;
    std::string quoted = "\"";
    for (const char character : value) {
        if (character == '"') quoted += '"';
        quoted += character;
    }
    return quoted + '"';
}

} // namespace tools
