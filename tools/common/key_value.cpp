#include "tools/common/key_value.h"

#include "tools/common/calendar.h"
#include "tools/common/exit_codes.h"
#include "tools/common/fields.h"
#include "tools/common/texts.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>
#include <stdexcept>

namespace tools {

namespace {

bool AreDigits(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

[[noreturn]] void Refuse(const FieldLayout &field, std::string_view text)
{
    throw UsageError("„" + std::string(text) + "“ ist kein Wert für " + field.Name + " (" +
                     std::string(FormName(field.Type)) + ").");
}

// "15.04.1998"
bool ParseDay(std::string_view text, Day &day)
{
    if (text.size() != 10 || text[2] != '.' || text[5] != '.') return false;
    int parts[3] = {};
    const std::string_view pieces[] = {text.substr(0, 2), text.substr(3, 2), text.substr(6)};
    for (int i = 0; i < 3; ++i) {
        if (!AreDigits(pieces[i])) return false;
        std::from_chars(pieces[i].data(), pieces[i].data() + pieces[i].size(), parts[i]);
    }
    constexpr int firstYear = 1980;
    constexpr int lastYear = 2079;
    if (parts[2] < firstYear || parts[2] > lastYear || parts[1] < 1 || parts[1] > 12 || parts[0] < 1 ||
        parts[0] > DaysInMonth(parts[2], parts[1])) {
        return false;
    }
    day = DayOf(parts[2], parts[1], parts[0]);
    return true;
}

// The bytes of a text segment, as many as count.
std::string TextBytes(const FieldLayout &field, std::string_view text, int firstMonth)
{
    Day day = 0;
    char packed[sizeof(vark::PackedDate)] = {};
    switch (field.Type) {
    case Form::Konto: {
        if (text.empty() || text.size() > vark::accountDigits) Refuse(field, text);
        return std::string(vark::accountDigits - text.size(), ' ') + std::string(text) + '\0';
    }
    case Form::PackedDay:
    case Form::SortDay:
    case Form::Calendar:
    case Form::DayNumber:
        if (ParseDay(text, day)) {
            if (field.Type == Form::PackedDay) {
                MakePacked(packed, day, firstMonth);
            } else if (field.Type == Form::Calendar) {
                MakeCalendar(packed, day);
            } else {
                MakeSort(packed, day, firstMonth);
            }
            return packed;
        }
        if (!AreDigits(text) || text.size() >= field.Width) Refuse(field, text);
        return std::string(text);
    default: {
        // Currencies are written in capitals, however they are typed.
        std::string bytes = FromUtf8(field.Name == "Waehrung" ? Upper(text) : std::string(text));
        if (bytes.size() > field.Width) Refuse(field, text);
        return bytes;
    }
    }
}

template <typename Number> std::string NumberBytes(const FieldLayout &field, std::string_view text)
{
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) Refuse(field, text);
    std::string bytes(sizeof number, '\0');
    std::memcpy(bytes.data(), &number, sizeof number);
    return bytes;
}

std::string SegmentBytes(const FieldLayout &field, const KeySegment &segment, std::string_view text,
                         int firstMonth)
{
    if (segment.Type == KeyType::String) return TextBytes(field, text, firstMonth);
    const bool isUnsigned = segment.Type == KeyType::Unsigned;
    if (segment.Length == sizeof(int16_t)) {
        return isUnsigned ? NumberBytes<uint16_t>(field, text) : NumberBytes<int16_t>(field, text);
    }
    return isUnsigned ? NumberBytes<uint32_t>(field, text) : NumberBytes<int32_t>(field, text);
}

// The lowest value of a segment.
std::string Lowest(const KeySegment &segment)
{
    std::string bytes(segment.Length, '\0');
    // Autoincrement is sorted by its absolute value.
    if (segment.Type == KeyType::Integer) bytes.back() = '\x80';
    return bytes;
}

} // namespace

KeyValue ParseKey(const TableLayout &layout, const KeyLayout &key, std::string_view utf8, int firstMonth)
{
    KeyValue value;
    bool isOpen = true;
    for (const KeySegment &segment : key.Segments) {
        std::string bytes = Lowest(segment);
        const FieldLayout *field = FieldOf(layout, segment);
        if (isOpen && field != nullptr) {
            const bool isLast = &segment == &key.Segments.back();
            const size_t comma = isLast ? std::string_view::npos : utf8.find(',');
            const std::string given =
                SegmentBytes(*field, segment, Trimmed(utf8.substr(0, comma)), firstMonth);
            std::copy(given.begin(), given.end(), bytes.begin());
            value.Given.push_back(static_cast<uint16_t>(given.size()));
            isOpen = comma != std::string_view::npos;
            if (isOpen) utf8.remove_prefix(comma + 1);
        }
        value.Bytes += bytes;
    }
    return value;
}

int CompareWith(const KeyLayout &key, const char *record, const KeyValue &value)
{
    size_t at = 0;
    for (size_t i = 0; i < value.Given.size(); ++i) {
        const KeySegment &segment = key.Segments[i];
        int order = 0;
        if (segment.Type == KeyType::String) {
            order = std::memcmp(record + segment.Offset, value.Bytes.data() + at, value.Given[i]);
        } else {
            const KeyLayout alone{false, false, {{0, segment.Length, segment.Type}}};
            order = CompareKeys(alone, record + segment.Offset, value.Bytes.data() + at);
        }
        if (order != 0) return order < 0 ? -1 : 1;
        at += segment.Length;
    }
    return 0;
}

} // namespace tools
