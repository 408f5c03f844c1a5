#include "report-engine/fields.h"

#include "report-engine/values.h"
#include "text/windows1252.h"

#include <algorithm>
#include <cstring>

namespace rs {

namespace {

constexpr size_t numberWidth = sizeof(int64_t);
constexpr size_t dateWidth = 6;

constexpr int64_t noRate = INT64_MIN; // of an empty field: before every other in an order

// The highest byte first and the sign turned, so that bytes compare as the numbers do.
void WriteNumberKey(int64_t value, char *key)
{
    uint64_t bits = static_cast<uint64_t>(value) ^ (uint64_t{1} << 63);
    for (size_t i = numberWidth; i-- > 0; bits >>= 8) {
        key[i] = static_cast<char>(bits & 0xFF);
    }
}

int64_t NumberOf(const Field &field, const char *from)
{
    switch (field.Form) {
    case FieldForm::amount: return PfennigOf(from);
    case FieldForm::rate: {
        int64_t hundredths = 0;
        return HundredthsOf(from, hundredths) ? hundredths : noRate;
    }
    case FieldForm::i16: return NumberFrom<int16_t>(from);
    case FieldForm::i32:
    case FieldForm::words: return NumberFrom<int32_t>(from);
    case FieldForm::u32: return NumberFrom<uint32_t>(from);
    default: return NumberFrom<uint8_t>(from);
    }
}

FieldValue TextValue(const char *text, size_t length) { return {ValueKind::text, text, length, 0}; }

bool IsAscii(const char *bytes, size_t length)
{
    uint64_t all = 0;
    for (; length >= sizeof all; bytes += sizeof all, length -= sizeof all) {
        all |= NumberFrom<uint64_t>(bytes);
    }
    for (; length > 0; --length) {
        all |= static_cast<unsigned char>(*bytes++);
    }
    return (all & 0x8080808080808080) == 0;
}

FieldValue ReadText(const char *from, size_t width, FieldText &room)
{
    char bytes[sizeof room.Utf8 / 3 + 1];
    const size_t length = strnlen(from, std::min(width, sizeof bytes - 1));
    if (IsAscii(from, length)) return TextValue(from, length);
    std::memcpy(bytes, from, length);
    bytes[length] = 0;
    return TextValue(room.Utf8, text::ToUtf8(bytes, room.Utf8, sizeof room.Utf8));
}

} // namespace

FieldValue ReadField(const Field &field, const char *record, const WordList *lists, FieldText &room)
{
    const char *from = record + field.Offset;
    if (field.Form == FieldForm::text) return ReadText(from, field.Width, room);
    if (field.Form == FieldForm::date) {
        DateText(from, room.Date);
        return ReadText(room.Date, sizeof room.Date, room);
    }
    const int64_t number = NumberOf(field, from);
    if (field.Form == FieldForm::words) {
        const char *word = number >= 0 && number < maxWords ? lists[field.Words].Words[number] : "";
        if (word[0] != 0) return TextValue(word, std::strlen(word));
    } else if (number != noRate) {
        return {ValueKind::number, nullptr, 0, number};
    }
    return {ValueKind::none, nullptr, 0, 0};
}

size_t KeyWidth(const Field &field)
{
    if (field.Form == FieldForm::text) return field.Width;
    return field.Form == FieldForm::date ? dateWidth : numberWidth;
}

void WriteKey(const Field &field, const char *record, bool isFalling, char *key)
{
    const char *from = record + field.Offset;
    const size_t width = KeyWidth(field);
    std::memset(key, 0, width);
    if (field.Form == FieldForm::text) {
        std::memcpy(key, from, strnlen(from, width));
    } else if (field.Form != FieldForm::date) {
        WriteNumberKey(NumberOf(field, from), key);
    } else if (from[0] != 0) { // DDMMJJ, the years counted from 1980
        const char turned[dateWidth] = {from[4], from[5], from[2], from[3], from[0], from[1]};
        std::memcpy(key, turned, dateWidth);
    }
    for (size_t i = 0; isFalling && i < width; ++i) {
        key[i] = static_cast<char>(~key[i]);
    }
}

} // namespace rs
