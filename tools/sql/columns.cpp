#include "tools/sql/columns.h"

#include "tools/common/calendar.h"
#include "tools/common/fields.h"
#include "tools/common/texts.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace sql {

using namespace tools;

std::vector<SqlColumn> ColumnsOf(const TableLayout &layout)
{
    std::vector<SqlColumn> columns;
    if (IsYearTable(layout)) {
        columns.push_back({"Mandant", Gives::Mandant, nullptr});
        columns.push_back({"Jahr", Gives::Jahr, nullptr});
    }
    for (const FieldLayout &field : layout.Fields) {
        columns.push_back({field.Name, Gives::Field, &field});
        if (field.Type == Form::Amount) {
            columns.push_back({field.Name + "_Text", Gives::AmountAsText, &field});
        }
        if (field.Type == Form::DayNumber) {
            const std::string group = field.Name.substr(0, field.Name.rfind('.') + 1);
            columns.push_back({group + "Tag", Gives::DayOfNumber, &field});
        }
    }
    return columns;
}

namespace {

const char *TypeOf(const SqlColumn &column)
{
    switch (column.What) {
    case Gives::Mandant:
    case Gives::Jahr: return "INTEGER";
    case Gives::AmountAsText:
    case Gives::DayOfNumber: return "TEXT";
    case Gives::Field: break;
    }
    const Form form = column.Field->Type;
    if (form == Form::Bytes) return "BLOB";
    return IsNumber(form) || form == Form::Amount || form == Form::Year ? "INTEGER" : "TEXT";
}

bool IsDay(Form form) { return form == Form::PackedDay || form == Form::SortDay; }

} // namespace

std::string Declaration(const std::vector<SqlColumn> &columns)
{
    std::string text = "CREATE TABLE x(";
    for (const SqlColumn &column : columns) {
        if (&column != &columns.front()) text += ", ";
        text += '"' + column.Name + "\" " + TypeOf(column);
    }
    return text + ")";
}

bool NeedsFirstMonth(const SqlColumn &column)
{
    return column.What == Gives::DayOfNumber || (column.What == Gives::Field && IsDay(column.Field->Type));
}

namespace {

void PutText(sqlite3_context *out, const char *bytes, size_t size)
{
    const auto isAscii = [](char character) { return static_cast<unsigned char>(character) < 0x80; };
    if (std::all_of(bytes, bytes + size, isAscii)) {
        sqlite3_result_text(out, bytes, static_cast<int>(size), SQLITE_TRANSIENT);
        return;
    }
    const std::string utf8 = ToUtf8({bytes, size});
    sqlite3_result_text(out, utf8.data(), static_cast<int>(utf8.size()), SQLITE_TRANSIENT);
}

// As it stands, up to its NUL.
void PutRaw(sqlite3_context *out, const FieldLayout &field, const char *bytes)
{
    PutText(out, bytes, strnlen(bytes, field.Width));
}

void PutDay(sqlite3_context *out, const FieldLayout &field, const char *bytes, int firstMonth)
{
    Day day = 0;
    bool isDay = false;
    if (bytes[0] == 0) return;
    switch (field.Type) {
    case Form::PackedDay: isDay = DayOfPacked(bytes, firstMonth, day); break;
    case Form::Calendar: isDay = DayOfCalendar(bytes, day); break;
    default: isDay = DayOfSort(bytes, firstMonth, day); break;
    }
    if (!isDay) {
        PutRaw(out, field, bytes);
        return;
    }
    const CalendarDay date = CalendarOf(day);
    char text[] = "0000-00-00";
    const auto put = [&text](size_t at, int number) {
        text[at] = static_cast<char>('0' + number / 10 % 10);
        text[at + 1] = static_cast<char>('0' + number % 10);
    };
    put(0, date.Year / 100);
    put(2, date.Year);
    put(5, date.Month);
    put(8, date.DayOfMonth);
    sqlite3_result_text(out, text, sizeof text - 1, SQLITE_TRANSIENT);
}

// Pfennig of an AmountText; false for what is none.
bool ReadAmount(const char *bytes, int64_t &pfennig)
{
    pfennig = 0;
    if (bytes[0] == 0) return true;
    unsigned wrong = 0;
    for (int i = 0; i < 12; ++i) {
        if (i == vark::amountMark) continue;
        const unsigned digit = static_cast<unsigned char>(bytes[i]) - unsigned{'0'};
        wrong |= static_cast<unsigned>(digit > 9);
        pfennig = pfennig * 10 + digit;
    }
    const char mark = bytes[vark::amountMark];
    if (mark == '-') pfennig = -pfennig;
    return wrong == 0 && bytes[12] == 0 && (mark == ',' || mark == '-');
}

void RefuseAmount(sqlite3_context *out, const SqlColumn &column)
{
    const std::string why = "In " + column.Field->Name + " steht kein Betrag; was noch, zeigt: books pruefen";
    sqlite3_result_error(out, why.c_str(), -1);
}

void PutAmount(sqlite3_context *out, const SqlColumn &column, const char *bytes)
{
    int64_t pfennig = 0;
    if (!ReadAmount(bytes, pfennig)) {
        RefuseAmount(out, column);
    } else {
        sqlite3_result_int64(out, pfennig);
    }
}

void PutAmountText(sqlite3_context *out, const SqlColumn &column, const char *bytes)
{
    int64_t pfennig = 0;
    if (!ReadAmount(bytes, pfennig)) {
        PutRaw(out, *column.Field, bytes);
        return;
    }
    const auto magnitude = static_cast<uint64_t>(pfennig < 0 ? -pfennig : pfennig);
    std::string text = (pfennig < 0 ? "-" : "") + std::to_string(magnitude / 100) + ".";
    text += static_cast<char>('0' + magnitude / 10 % 10);
    text += static_cast<char>('0' + magnitude % 10);
    sqlite3_result_text(out, text.c_str(), -1, SQLITE_TRANSIENT);
}

// "16,00" and "050,00" as "16.00" and "50.00".
void PutPercent(sqlite3_context *out, const FieldLayout &field, const char *bytes, int firstMonth)
{
    if (bytes[0] == 0) return;
    std::string text(bytes, strnlen(bytes, field.Width));
    if (!FaultOfForm(field, bytes - field.Offset, firstMonth).empty()) {
        PutRaw(out, field, bytes);
        return;
    }
    std::replace(text.begin(), text.end(), ',', '.');
    text.erase(0, std::min(text.find_first_not_of('0'), text.find('.') - 1));
    sqlite3_result_text(out, text.c_str(), -1, SQLITE_TRANSIENT);
}

void PutKonto(sqlite3_context *out, const FieldLayout &field, const char *bytes)
{
    if (bytes[0] == 0) return;
    const std::string_view text = Trimmed({bytes, strnlen(bytes, field.Width)});
    PutText(out, text.data(), text.size());
}

void PutYear(sqlite3_context *out, const FieldLayout &field, const char *bytes)
{
    if (bytes[0] == 0) return;
    if (!FaultOfForm(field, bytes - field.Offset, 1).empty()) {
        PutRaw(out, field, bytes);
        return;
    }
    int year = 0;
    for (int i = 0; i < 4; ++i) {
        year = year * 10 + bytes[i] - '0';
    }
    sqlite3_result_int(out, year);
}

template <typename Number> void PutNumber(sqlite3_context *out, const char *bytes)
{
    Number value;
    std::memcpy(&value, bytes, sizeof value);
    sqlite3_result_int64(out, value);
}

} // namespace

void PutValue(sqlite3_context *out, const SqlColumn &column, const char *record, const RecordPlace &place)
{
    switch (column.What) {
    case Gives::Mandant: sqlite3_result_int(out, place.Mandant); return;
    case Gives::Jahr: sqlite3_result_int(out, place.Year); return;
    default: break;
    }
    const FieldLayout &field = *column.Field;
    const char *const bytes = record + field.Offset;
    if (column.What == Gives::AmountAsText) {
        PutAmountText(out, column, bytes);
        return;
    }
    if (column.What == Gives::DayOfNumber) {
        PutDay(out, field, bytes, place.FirstMonth);
        return;
    }
    switch (field.Type) {
    case Form::Text:
    case Form::Digits:
    case Form::DayNumber: PutRaw(out, field, bytes); return;
    case Form::Share:
    case Form::Rate: PutPercent(out, field, bytes, place.FirstMonth); return;
    case Form::Year: PutYear(out, field, bytes); return;
    case Form::Konto: PutKonto(out, field, bytes); return;
    case Form::Amount: PutAmount(out, column, bytes); return;
    case Form::PackedDay:
    case Form::SortDay:
    case Form::Calendar: PutDay(out, field, bytes, place.FirstMonth); return;
    case Form::I16: PutNumber<int16_t>(out, bytes); return;
    case Form::I32: PutNumber<int32_t>(out, bytes); return;
    case Form::U8: PutNumber<uint8_t>(out, bytes); return;
    case Form::U16: PutNumber<uint16_t>(out, bytes); return;
    case Form::U32: PutNumber<uint32_t>(out, bytes); return;
    case Form::Bytes: sqlite3_result_blob(out, bytes, field.Width, SQLITE_TRANSIENT); return;
    }
}

} // namespace sql
