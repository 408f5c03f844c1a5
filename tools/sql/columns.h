// What SQL sees of a table's fields: columns with their types, and their values.
#pragma once

#include "tools/common/layout.h"
#include "tools/sql/sqlite_api.h"

#include <cstdint>
#include <string>
#include <vector>

namespace sql {

enum class Gives : uint8_t {
    Mandant,
    Jahr,
    Field,
    AmountAsText, // "1234.50" beside the number of Pfennig
    DayOfNumber,  // the day in a DayNumber
};

struct SqlColumn {
    std::string Name; // the field's; "Soll_Text" and "Schluessel.Tag" for the last two
    Gives What;
    const tools::FieldLayout *Field; // null for Mandant and Jahr
};

// Of a year's table Mandant and Jahr come first.
std::vector<SqlColumn> ColumnsOf(const tools::TableLayout &layout);

// "CREATE TABLE x(…)" with the types: INTEGER for numbers, years and amounts in Pfennig, TEXT for the rest,
// BLOB for bytes.
std::string Declaration(const std::vector<SqlColumn> &columns);

// Where a record lies, as far as its values depend on it.
struct RecordPlace {
    int Mandant;
    int Year;
    int FirstMonth;
};

// True for a day of the fiscal calendar: its value needs the FirstMonth.
bool NeedsFirstMonth(const SqlColumn &column);

// The value of a column: dates as "1998-04-15", accounts without blanks, texts in UTF-8. What is empty in the
// record is NULL, a text apart, and an amount, which is 0. What has no good form comes as it stands, but an
// amount ends the statement: no sum may leave it out.
void PutValue(sqlite3_context *out, const SqlColumn &column, const char *record, const RecordPlace &place);

} // namespace sql
