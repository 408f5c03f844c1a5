#include "tools/common/row_writer.h"

#include "text/windows1252.h"
#include "tools/common/texts.h"

#include <algorithm>
#include <cstdio>

namespace tools {

namespace {

constexpr size_t flushBytes = 1 << 16;
// Longest text of a record field, in UTF-8.
constexpr size_t utf8Max = 512;

void AppendJson(std::string &to, std::string_view text)
{
    to += '"';
    for (const char character : text) {
        if (static_cast<unsigned char>(character) < 0x20) {
            constexpr char digits[] = "0123456789abcdef";
            to += "\\u00";
            to += digits[character >> 4];
            to += digits[character & 15];
            continue;
        }
        if (character == '"' || character == '\\') to += '\\';
        to += character;
    }
    to += '"';
}

} // namespace

RowWriter::RowWriter(std::vector<RowColumn> rowColumns, Output form)
    : columns(std::move(rowColumns)), as(form)
{
    Begin();
}

void RowWriter::Begin()
{
    if (as == Output::Json) {
        buffer += '[';
        return;
    }
    if (as == Output::Csv) {
        for (const RowColumn &one : columns) {
            if (&one != &columns.front()) buffer += ';';
            buffer += one.Heading[0] != 0 ? one.Heading : one.Name;
        }
        buffer += '\n';
        return;
    }
    for (const bool isRule : {false, true}) {
        for (const RowColumn &one : columns) {
            if (&one != &columns.front()) buffer += "  ";
            if (isRule) {
                for (size_t i = 0; i < one.Width; ++i) {
                    buffer += "─";
                }
            } else {
                const bool isLast = &one == &columns.back();
                buffer += one.Side == Align::Right ? Right(one.Heading, one.Width)
                          : isLast                 ? one.Heading
                                                   : Left(one.Heading, one.Width);
            }
        }
        buffer += '\n';
    }
}

void RowWriter::Put(const char *windows1252)
{
    char utf8[utf8Max];
    text::ToUtf8(windows1252, utf8, sizeof utf8);
    PutUtf8(utf8);
}

void RowWriter::PutNumber(int64_t number)
{
    if (as == Output::Json) {
        PutRaw(std::to_string(number));
    } else {
        PutUtf8(std::to_string(number));
    }
}

void RowWriter::PutNull()
{
    if (as == Output::Json) {
        PutRaw("null");
    } else {
        PutUtf8("");
    }
}

void RowWriter::PutReal(std::string_view digits)
{
    // JSON has no infinity.
    const bool isNumber = digits.find_first_not_of("0123456789+-.eE") == std::string_view::npos;
    if (as == Output::Json && isNumber) {
        PutRaw(digits);
    } else {
        PutUtf8(digits);
    }
}

void RowWriter::PutFlag(bool isSet, const char *shown)
{
    if (as == Output::Json) {
        PutRaw(isSet ? "true" : "false");
    } else {
        PutUtf8(isSet ? shown : "");
    }
}

void RowWriter::PutAmount(const char *amount)
{
    if (as != Output::Json) {
        Put(amount);
        return;
    }
    std::string plain = amount;
    std::replace(plain.begin(), plain.end(), ',', '.');
    PutUtf8(plain);
}

// The name of the next value in a JSON object.
void RowWriter::BeginValue()
{
    buffer += column > 0 ? ", " : Rows > 0 ? ",\n {" : "\n {";
    AppendJson(buffer, columns[column].Name);
    buffer += ": ";
}

void RowWriter::PutRaw(std::string_view json)
{
    BeginValue();
    buffer += json;
    ++column;
}

void RowWriter::PutUtf8(std::string_view utf8)
{
    const RowColumn &one = columns[column];
    if (as == Output::Json) {
        BeginValue();
        AppendJson(buffer, utf8);
    } else if (as == Output::Csv) {
        if (column > 0) buffer += ';';
        if (utf8.find_first_of("\"; \r\n") == std::string_view::npos) {
            buffer += utf8;
        } else {
            buffer += CsvField(std::string(utf8));
        }
    } else {
        if (column > 0) buffer += "  ";
        const bool isLast = column + 1 == columns.size();
        const std::string shown = Printable(std::string(utf8));
        buffer += one.Side == Align::Right ? Right(shown, one.Width)
                  : isLast                 ? shown
                                           : Left(shown, one.Width);
    }
    ++column;
}

void RowWriter::EndRow()
{
    if (as == Output::Json) buffer += '}';
    if (as == Output::Table) buffer.erase(buffer.find_last_not_of(' ') + 1);
    if (as != Output::Json) buffer += '\n';
    column = 0;
    ++Rows;
    if (buffer.size() >= flushBytes) Flush();
}

void RowWriter::End()
{
    if (as == Output::Json) buffer += "\n]\n";
    Flush();
    std::fflush(stdout);
}

void RowWriter::Flush()
{
    std::fwrite(buffer.data(), 1, buffer.size(), stdout);
    buffer.clear();
}

} // namespace tools
