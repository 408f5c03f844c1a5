// Rows that go out as they come: as a table of fixed columns, as CSV, or as JSON. Nothing is gathered, so
// memory does not grow with the rows.
#pragma once

#include "tools/common/text_table.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tools {

enum class Output : uint8_t { Table, Csv, Json };

// The library's form for amounts that go out so: plain for programs, grouped for people.
constexpr int AmountFormOf(Output as) { return as == Output::Table ? 3 : 2; }

struct RowColumn {
    const char *Heading; // of tables and CSV; where it is empty, CSV takes the name
    const char *Name;    // of JSON
    size_t Width;        // of tables; the last column is not filled up
    Align Side = Align::Left;
};

// Writes to standard output. The end of the rows must be told.
struct RowWriter {
    RowWriter(std::vector<RowColumn> columns, Output as);

    // The next column's value: Windows-1252 as the library gives it, or UTF-8.
    void Put(const char *windows1252);
    void PutUtf8(std::string_view utf8);
    void PutNumber(int64_t number);
    void PutNull(); // nothing, in JSON null
    void PutReal(std::string_view digits);
    void PutFlag(bool isSet,
                 const char *shown); // in tables and CSV `shown` or nothing, in JSON true or false
    // An amount or rate as the library gives it; JSON gets a point for its comma.
    void PutAmount(const char *amount);
    void EndRow();
    void End();

    int64_t Rows = 0;

private:
    void Begin();
    void BeginValue();
    void PutRaw(std::string_view json);
    void Flush();

    std::vector<RowColumn> columns;
    Output as;
    size_t column = 0;
    std::string buffer;
};

} // namespace tools
