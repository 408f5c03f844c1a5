// What a file is: its record and its keys, as create gives them and as the calls use them.
#pragma once

#include "record-manager/include/btrcall.h"

#include <cstddef>
#include <cstdint>

namespace wbtrv {

enum class SegmentKind : uint8_t { String, Integer, Unsigned, Float, LString, ZString, Autoincrement };

struct Segment {
    uint16_t Offset; // in the record, from 0
    uint16_t Length;
    SegmentKind Kind;
    uint8_t NullByte;
    bool Descending;
    bool Caseless;
};

struct Key {
    uint8_t Number; // by which callers know it
    uint8_t FirstSegment;
    uint8_t SegmentCount;
    uint8_t DuplicateIndex; // which of a record's running numbers is this key's
    uint16_t Length;        // of the key value, which is also the length of its ordered form
    bool Duplicates;
    bool Repeating; // with duplicates: in the order of their records, not of their insertion into the group
    bool Modifiable;
    bool NullAll;
    bool NullAny;
    bool Autoincrement;
    bool Plain; // one ascending string segment: its ordered form is the value itself
};

struct Definition {
    BtrFileHeader Header; // as given to create
    BtrKeyEntry KeyEntries[BtrMaxKeys];
    uint16_t RecordLength;
    bool Variable;
    uint8_t KeyCount;
    uint8_t SegmentCount;
    uint8_t DuplicateKeys;
    Key Keys[BtrMaxKeys];
    Segment Segments[BtrMaxKeys];
    uint8_t KeyByNumber[BtrMaxKeys]; // noKey where there is none
};

inline constexpr uint8_t noKey = 0xFF;

// Checks a create buffer of `length` bytes and fills `definition` from it.
// Returns 0, or 22, 24, 26, 27, 28, 29, 45, 48, 49 for the first fault.
int16_t ParseDefinition(const void *buffer, size_t length, Definition *definition);

// Bytes of the create buffer that made this definition, which is also its stored form and the size of a stat.
size_t DefinitionSize(const Definition &definition);

// The key of a caller's number, or null.
inline const Key *FindKey(const Definition &definition, int8_t number)
{
    if (number < 0 || number >= BtrMaxKeys) return nullptr;
    const uint8_t index = definition.KeyByNumber[number];
    return index == noKey ? nullptr : &definition.Keys[index];
}

inline size_t KeyIndex(const Definition &definition, const Key &key)
{
    return static_cast<size_t>(&key - definition.Keys);
}

} // namespace wbtrv
