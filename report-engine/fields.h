// Fields of records, as templates declare them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace rs {

enum class FieldForm : uint8_t { text, amount, rate, date, i16, i32, u32, u8, words };

struct Field {
    uint16_t Offset;
    uint16_t Width;
    FieldForm Form;
    uint8_t Words = 0; // of that form: the number of its list
};

inline constexpr int maxWords = 8;

// What the numbers from 0 on are called, in UTF-8; empty for one without a word.
struct WordList {
    char Words[maxWords][32];
};

enum class ValueKind : uint8_t { none, text, number };

// What a field holds: a text in UTF-8, or Pfennig, hundredths of a per cent, a number as it stands.
struct FieldValue {
    ValueKind Kind; // none for an empty rate and for a number without a word
    const char *Text;
    size_t Length;
    int64_t Number;
};

// Room for the text of a field that does not stand in the record as it is.
struct FieldText {
    char Date[16];
    char Utf8[3 * 1024 + 1]; // of the largest record
};

// Reads a field of a record; `lists` are the report's. A text is valid as long as `room`, record and lists.
FieldValue ReadField(const Field &field, const char *record, const WordList *lists, FieldText &room);

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
