#include "report-engine/fields.h"

#include "report-engine/values.h"

#include <cstring>

namespace rs {

namespace {

constexpr size_t numberWidth = sizeof(int64_t);
constexpr size_t dateWidth = 6;

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
        return HundredthsOf(from, hundredths) ? hundredths : INT64_MIN;
    }
    case FieldForm::i16: return NumberFrom<int16_t>(from);
    case FieldForm::i32: return NumberFrom<int32_t>(from);
    case FieldForm::u32: return NumberFrom<uint32_t>(from);
    default: return NumberFrom<uint8_t>(from);
    }
}

} // namespace

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
