#include "tools/common/fields.h"

#include "src/values/amount_texts.h"
#include "src/values/amounts.h"
#include "tools/common/calendar.h"
#include "tools/common/texts.h"

#include <algorithm>
#include <cstring>

namespace tools {

using namespace vark;

namespace {

bool IsDigit(char character) { return character >= '0' && character <= '9'; }

// Digits with a mark at one place, and a NUL behind them.
bool IsMarked(const char *text, int width, int mark, bool mayBeNegative)
{
    for (int i = 0; i < width; ++i) {
        if (i == mark ? text[i] != ',' && !(mayBeNegative && text[i] == '-') : !IsDigit(text[i]))
            return false;
    }
    return text[width] == 0;
}

template <typename Number> Number NumberAt(const char *bytes)
{
    Number value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

std::string FaultOfText(const char *bytes, size_t width)
{
    const size_t length = strnlen(bytes, width);
    if (length == width) return "der Text füllt das Feld ohne Ende";
    return {};
}

bool HasControls(const char *bytes, size_t width)
{
    return std::any_of(bytes, bytes + strnlen(bytes, width), [](char character) {
        return static_cast<unsigned char>(character) < 0x20 || character == 0x7F;
    });
}

std::string FaultOfKonto(const char *bytes)
{
    if (bytes[0] == 0) return {};
    if (strnlen(bytes, sizeof(AccountNumber)) != accountDigits) {
        return "die Kontonummer ist nicht rechtsbündig in 7 Zeichen";
    }
    // A number has no blanks at its end, unless it has nothing else.
    const std::string_view text(bytes, accountDigits);
    const bool isJustified = text.back() != ' ' || text.find_first_not_of(' ') == std::string_view::npos;
    return isJustified ? "" : "die Kontonummer ist nicht rechtsbündig in 7 Zeichen";
}

std::string RemarkOnKonto(const char *bytes)
{
    const std::string_view text(bytes, strnlen(bytes, sizeof(AccountNumber)));
    const size_t first = text.find_first_not_of(' ');
    if (text.empty()) return {};
    if (first == std::string_view::npos) return "die Kontonummer besteht aus Leerzeichen";
    if (text.find(' ', first) != std::string_view::npos) return "die Kontonummer enthält ein Leerzeichen";
    if (text.find_first_of("0123456789") == std::string_view::npos)
        return "die Kontonummer enthält keine Ziffer";
    return HasControls(bytes, sizeof(AccountNumber)) ? "die Kontonummer enthält ein Steuerzeichen" : "";
}

std::string FaultOfDay(const char *bytes, size_t width, bool (*read)(const char *, int, Day &),
                       int firstMonth)
{
    Day day = 0;
    if (bytes[0] == 0) return {};
    if (strnlen(bytes, width) != 6 || !read(bytes, firstMonth, day)) return "das ist kein Tag";
    return {};
}

bool DayOfCalendarPacked(const char *packed, int, Day &day) { return DayOfCalendar(packed, day); }

std::string FaultOfDayNumber(const char *bytes, int firstMonth)
{
    Day day = 0;
    for (int i = 0; i < 10; ++i) {
        if (!IsDigit(bytes[i])) return "der Schlüssel besteht nicht aus Tag und laufender Nummer";
    }
    if (!DayOfSort(bytes, firstMonth, day)) return "der Schlüssel beginnt mit keinem Tag";
    if (bytes[10] != 0) return "hinter der laufenden Nummer fehlt das Ende";
    return {};
}

std::string AmountText13(const char *bytes)
{
    if (!IsMarked(bytes, amountWidth, amountMark, true)) return FieldText(bytes, sizeof(AmountText));
    FormattedAmount text{};
    std::memcpy(text, bytes, sizeof(AmountText));
    GroupAmount(text);
    return text;
}

std::string DayText(const char *bytes, bool (*read)(const char *, int, Day &), int firstMonth)
{
    Day day = 0;
    if (bytes[0] == 0) return {};
    return read(bytes, firstMonth, day) ? DisplayDay(day) : FieldText(bytes, sizeof(PackedDate));
}

} // namespace

namespace {

// A number in a key, as its index sorts it.
int64_t SortValue(const KeySegment &segment, const char *bytes)
{
    const bool isShort = segment.Length == sizeof(int16_t);
    if (segment.Type == KeyType::Unsigned) {
        return isShort ? int64_t{NumberAt<uint16_t>(bytes)} : int64_t{NumberAt<uint32_t>(bytes)};
    }
    const int64_t value = isShort ? int64_t{NumberAt<int16_t>(bytes)} : int64_t{NumberAt<int32_t>(bytes)};
    return segment.Type == KeyType::Autoincrement && value < 0 ? -value : value;
}

} // namespace

int CompareKeys(const KeyLayout &key, const char *a, const char *b)
{
    for (const KeySegment &segment : key.Segments) {
        const char *left = a + segment.Offset;
        const char *right = b + segment.Offset;
        if (segment.Type == KeyType::String) {
            const int order = std::memcmp(left, right, segment.Length);
            if (order != 0) return order < 0 ? -1 : 1;
            continue;
        }
        const int64_t leftValue = SortValue(segment, left);
        const int64_t rightValue = SortValue(segment, right);
        if (leftValue != rightValue) return leftValue < rightValue ? -1 : 1;
    }
    return 0;
}

std::string DescribeKey(const KeyLayout &key)
{
    std::string text;
    for (const KeySegment &segment : key.Segments) {
        if (!text.empty()) text += " + ";
        text += std::to_string(segment.Offset);
        text += '/';
        text += std::to_string(segment.Length);
    }
    if (key.Duplicates) text += " mehrfach";
    if (key.Modifiable) text += " änderbar";
    return text;
}

std::string KeyText(const TableLayout &layout, const char *record)
{
    std::string text;
    for (const KeySegment &segment : layout.Keys.front().Segments) {
        for (const FieldLayout &field : layout.Fields) {
            if (field.Offset != segment.Offset) continue;
            if (!text.empty()) text += ' ';
            text += FieldValue(field, record, 1);
        }
    }
    return text;
}

std::string FieldValue(const FieldLayout &field, const char *record, int firstMonth)
{
    const char *bytes = record + field.Offset;
    switch (field.Type) {
    case Form::Text:
    case Form::Digits:
    case Form::Share:
    case Form::Rate:
    case Form::DayNumber:
    case Form::Year: return FieldText(bytes, field.Width);
    case Form::Konto: return std::string(Trimmed(FieldText(bytes, field.Width)));
    case Form::Amount: return bytes[0] == 0 ? std::string() : AmountText13(bytes);
    case Form::PackedDay: return DayText(bytes, DayOfPacked, firstMonth);
    case Form::SortDay: return DayText(bytes, DayOfSort, firstMonth);
    case Form::Calendar: return DayText(bytes, DayOfCalendarPacked, firstMonth);
    case Form::I16: return std::to_string(NumberAt<int16_t>(bytes));
    case Form::I32: return std::to_string(NumberAt<int32_t>(bytes));
    case Form::U8: return std::to_string(NumberAt<uint8_t>(bytes));
    case Form::U16: return std::to_string(NumberAt<uint16_t>(bytes));
    case Form::U32: return std::to_string(NumberAt<uint32_t>(bytes));
    case Form::Bytes: {
        static constexpr char digits[] = "0123456789ABCDEF";
        std::string text;
        for (size_t i = 0; i < field.Width; ++i) {
            const auto byte = static_cast<unsigned char>(bytes[i]);
            text += digits[byte >> 4];
            text += digits[byte & 15];
        }
        return text;
    }
    }
    return {};
}

std::string PlainValue(const FieldLayout &field, const char *record, int firstMonth)
{
    const char *bytes = record + field.Offset;
    if (field.Type != Form::Amount || !IsMarked(bytes, amountWidth, amountMark, true)) {
        return FieldValue(field, record, firstMonth);
    }
    AmountText amount{};
    std::memcpy(amount, bytes, sizeof amount);
    FormattedAmount text{};
    constexpr int withoutLeadingZeros = 2;
    FormatAmount(withoutLeadingZeros, amount, text);
    return text;
}

bool IsNumber(Form form)
{
    switch (form) {
    case Form::I16:
    case Form::I32:
    case Form::U8:
    case Form::U16:
    case Form::U32: return true;
    default: return false;
    }
}

std::string FaultOfForm(const FieldLayout &field, const char *record, int firstMonth)
{
    const char *bytes = record + field.Offset;
    switch (field.Type) {
    case Form::Text: return FaultOfText(bytes, field.Width);
    case Form::Digits: {
        std::string fault = FaultOfText(bytes, field.Width);
        for (const char *at = bytes; fault.empty() && *at != 0; ++at) {
            if (!IsDigit(*at)) fault = "das sind nicht nur Ziffern";
        }
        return fault;
    }
    case Form::Konto: return FaultOfKonto(bytes);
    case Form::Amount:
        return bytes[0] == 0 || IsMarked(bytes, amountWidth, amountMark, true) ? "" : "das ist kein Betrag";
    case Form::Rate:
        return bytes[0] == 0 || IsMarked(bytes, rateWidth, rateMark, false) ? "" : "das ist kein Prozentsatz";
    case Form::Share:
        return std::memcmp(bytes, "100,00", 7) == 0 ||
                       (IsMarked(bytes + 1, rateWidth, rateMark, false) && bytes[0] != 0)
                   ? ""
                   : "das ist kein Anteil";
    case Form::PackedDay: return FaultOfDay(bytes, field.Width, DayOfPacked, firstMonth);
    case Form::SortDay: return FaultOfDay(bytes, field.Width, DayOfSort, firstMonth);
    case Form::Calendar: return FaultOfDay(bytes, field.Width, DayOfCalendarPacked, firstMonth);
    case Form::DayNumber: return FaultOfDayNumber(bytes, firstMonth);
    case Form::Year: {
        if (bytes[0] == 0) return {};
        const bool isYear =
            IsDigit(bytes[0]) && IsDigit(bytes[1]) && IsDigit(bytes[2]) && IsDigit(bytes[3]) && bytes[4] == 0;
        return isYear ? "" : "das ist keine Jahreszahl";
    }
    case Form::I16:
    case Form::I32:
    case Form::U8:
    case Form::U16:
    case Form::U32:
    case Form::Bytes: return {};
    }
    return {};
}

std::string RemarkOnForm(const FieldLayout &field, const char *record)
{
    const char *bytes = record + field.Offset;
    if (field.Type == Form::Konto) return RemarkOnKonto(bytes);
    const bool hasControls = field.Type == Form::Text && HasControls(bytes, field.Width);
    return hasControls ? "der Text enthält ein Steuerzeichen" : "";
}

} // namespace tools
