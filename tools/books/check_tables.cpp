#include "tools/books/check_tables.h"

#include "src/values/amounts.h"
#include "tools/common/calendar.h"
#include "tools/common/texts.h"

#include <cstring>

namespace books {

using namespace tools;
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
    for (size_t i = 0; i < length; ++i) {
        if (static_cast<unsigned char>(bytes[i]) < 0x20) return "der Text enthält ein Steuerzeichen";
    }
    return {};
}

std::string FaultOfKonto(const char *bytes)
{
    if (bytes[0] == 0) return {};
    if (strnlen(bytes, sizeof(AccountNumber)) != accountDigits) {
        return "die Kontonummer ist nicht rechtsbündig in 7 Zeichen";
    }
    size_t at = 0;
    while (at < accountDigits && bytes[at] == ' ') {
        ++at;
    }
    if (at == accountDigits) return "die Kontonummer besteht aus Leerzeichen";
    if (std::memchr(bytes + at, ' ', accountDigits - at) != nullptr)
        return "die Kontonummer enthält ein Leerzeichen";
    return {};
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

std::string FaultOfBubeKey(const char *bytes, int firstMonth)
{
    Day day = 0;
    for (int i = 0; i < 10; ++i) {
        if (!IsDigit(bytes[i])) return "der Schlüssel besteht nicht aus Tag und laufender Nummer";
    }
    if (!DayOfSort(bytes, firstMonth, day)) return "der Schlüssel beginnt mit keinem Tag";
    if (bytes[10] != 0) return "hinter der laufenden Nummer fehlt das Ende";
    return FaultOfDay(bytes + offsetof(BubeKey, Belegdatum), sizeof(PackedDate), DayOfPacked, firstMonth);
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

// -1, 0, 1: how two values of a key stand in its index.
int CompareKeys(const KeyLayout &key, const char *a, const char *b)
{
    for (const KeySegment &segment : key.Segments) {
        const char *left = a + segment.Offset;
        const char *right = b + segment.Offset;
        int order = 0;
        if (segment.Type == KeyType::String) {
            order = std::memcmp(left, right, segment.Length);
        } else {
            const auto value = [&](const char *bytes) -> int64_t {
                if (segment.Length == 2) {
                    return segment.Type == KeyType::Unsigned ? NumberAt<uint16_t>(bytes)
                                                             : NumberAt<int16_t>(bytes);
                }
                return segment.Type == KeyType::Unsigned ? NumberAt<uint32_t>(bytes)
                                                         : NumberAt<int32_t>(bytes);
            };
            order = value(left) < value(right) ? -1 : value(left) > value(right) ? 1 : 0;
        }
        if (order != 0) return order < 0 ? -1 : 1;
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

bool SameKey(const KeyLayout &a, const KeyLayout &b)
{
    if (a.Duplicates != b.Duplicates || a.Modifiable != b.Modifiable ||
        a.Segments.size() != b.Segments.size()) {
        return false;
    }
    for (size_t i = 0; i < a.Segments.size(); ++i) {
        if (a.Segments[i].Offset != b.Segments[i].Offset || a.Segments[i].Length != b.Segments[i].Length ||
            a.Segments[i].Type != b.Segments[i].Type) {
            return false;
        }
    }
    return true;
}

// Whether the table is made as it should be; false when its records cannot be read as such.
bool CheckDefinition(Findings &findings, const TableLayout &layout, const TableDefinition &definition)
{
    if (definition.RecordLength != layout.RecordLength) {
        findings.Tell("definition", layout.Stem, "", "",
                      "die Sätze sind " + std::to_string(definition.RecordLength) + " statt " +
                          std::to_string(layout.RecordLength) + " Bytes lang");
        return false;
    }
    for (size_t i = 0; i < std::max(layout.Keys.size(), definition.Keys.size()); ++i) {
        const std::string name = "Schlüssel " + std::to_string(i);
        if (i >= definition.Keys.size()) {
            findings.Tell("definition", layout.Stem, "", name, "der Schlüssel fehlt");
        } else if (i >= layout.Keys.size()) {
            findings.Tell("definition", layout.Stem, "", name, "der Schlüssel gehört nicht dazu");
        } else if (!SameKey(layout.Keys[i], definition.Keys[i])) {
            findings.Tell("definition", layout.Stem, "", name,
                          DescribeKey(definition.Keys[i]) + " statt " + DescribeKey(layout.Keys[i]));
        }
    }
    return layout.Keys.size() <= definition.Keys.size();
}

// An index must lead to every record once, in its own order.
void CheckIndex(Findings &findings, TableFile &table, int number, int64_t records)
{
    const TableLayout &layout = table.Layout;
    const KeyLayout &key = layout.Keys[static_cast<size_t>(number)];
    const std::string name = "Schlüssel " + std::to_string(number);
    std::string previous(layout.RecordLength, '\0');
    std::string record(layout.RecordLength, '\0');
    int64_t count = 0;
    for (bool found = table.First(record.data(), number); found; found = table.Next(record.data(), number)) {
        if (count > 0) {
            const int order = CompareKeys(key, previous.data(), record.data());
            if (order > 0) {
                findings.Tell("index", layout.Stem, KeyText(layout, record.data()), name,
                              "der Satz steht im Index hinter einem größeren");
            } else if (order == 0 && !key.Duplicates) {
                findings.Tell("index", layout.Stem, KeyText(layout, record.data()), name,
                              "der Schlüssel kommt mehrfach vor");
            }
        }
        std::swap(previous, record);
        if (++count > records + 1) break; // it leads in a circle
    }
    if (count != records) {
        findings.Tell("index", layout.Stem, "", name,
                      "der Index führt zu " + std::to_string(count) + " von " + std::to_string(records) +
                          " Sätzen");
    }
}

} // namespace

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
    case Form::Year: return FieldText(bytes, field.Width);
    case Form::Konto: return std::string(Trimmed(FieldText(bytes, field.Width)));
    case Form::Amount: return bytes[0] == 0 ? std::string() : AmountText13(bytes);
    case Form::PackedDay: return DayText(bytes, DayOfPacked, firstMonth);
    case Form::SortDay: return DayText(bytes, DayOfSort, firstMonth);
    case Form::Calendar: return DayText(bytes, DayOfCalendarPacked, firstMonth);
    case Form::BubeKey: return FieldText(bytes, sizeof(BubeKey::Folge));
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
    case Form::BubeKey: return FaultOfBubeKey(bytes, firstMonth);
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

bool CheckTable(Findings &findings, const TableLayout &layout, const std::filesystem::path &directory,
                int firstMonth, const std::function<void(const char *record)> &visit)
{
    findings.Reading(layout.Stem);
    try {
        TableFile table(layout, directory, OpenMode::ReadOnly);
        const TableDefinition definition = table.Definition();
        if (!CheckDefinition(findings, layout, definition)) return false;

        std::string record(layout.RecordLength, '\0');
        int64_t records = 0;
        for (bool found = table.StepFirst(record.data()); found; found = table.StepNext(record.data())) {
            ++records;
            for (const FieldLayout &field : layout.Fields) {
                const std::string fault = FaultOfForm(field, record.data(), firstMonth);
                if (fault.empty()) continue;
                std::string text = fault;
                text += ": „";
                text += FieldValue(field, record.data(), firstMonth);
                text += "“";
                findings.Tell("form", layout.Stem, KeyText(layout, record.data()), field.Name, text);
            }
            if (visit) visit(record.data());
        }
        findings.Count(records);
        if (records != definition.Records) {
            findings.Tell("satzzahl", layout.Stem, "", "",
                          "gezählt sind " + std::to_string(definition.Records) + " Sätze, es gibt " +
                              std::to_string(records));
        }
        for (size_t key = 0; key < layout.Keys.size(); ++key) {
            try {
                CheckIndex(findings, table, static_cast<int>(key), records);
            } catch (const EngineError &error) {
                findings.Tell("index", layout.Stem, "", "Schlüssel " + std::to_string(key), error.what());
            }
        }
        return true;
    } catch (const EngineError &error) {
        findings.Tell("lesbar", layout.Stem, "", "", error.what());
        return false;
    }
}

} // namespace books
