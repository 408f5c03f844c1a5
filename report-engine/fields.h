// Fields of records, as templates declare them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace rs {

enum class FieldForm : uint8_t { text, amount, rate, date, i16, i32, u32, u8 };

struct Field {
    uint16_t Offset;
    uint16_t Width;
    FieldForm Form;
};

// A number of a record, which may lie at any address.
template <typename Number> Number NumberFrom(const char *field)
{
    Number number;
    __builtin_memcpy(&number, field, sizeof number);
    return number;
}

// Bytes of a field's key.
size_t KeyWidth(const Field &field);

// Writes the key of a field: bytes whose order is that of the values, dates by the calendar, figures by
// their amount, texts by their bytes; an empty field comes first. With `isFalling` the order is turned over.
void WriteKey(const Field &field, const char *record, bool isFalling, char *key);

} // namespace rs
