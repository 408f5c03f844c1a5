#include "record-manager/keys.h"

#include <cassert>
#include <cstring>

namespace wbtrv {

namespace {

void Reverse(const uint8_t *from, size_t length, uint8_t *out)
{
    assert(length > 0);
    for (size_t i = 0; i < length; ++i) {
        out[i] = from[length - 1 - i];
    }
}

void UpperCase(uint8_t *bytes, size_t length)
{
    for (size_t i = 0; i < length; ++i) {
        if (bytes[i] >= 'a' && bytes[i] <= 'z') bytes[i] = static_cast<uint8_t>(bytes[i] - 'a' + 'A');
    }
}

// Positive values get their sign bit, negative ones are inverted, so that the bytes rise with the number. The
// two zeros are one value.
void OrderFloat(const uint8_t *from, size_t length, uint8_t *out)
{
    Reverse(from, length, out);
    bool zero = (out[0] & 0x7F) == 0;
    for (size_t i = 1; i < length; ++i) {
        zero = zero && out[i] == 0;
    }
    if (zero) out[0] = 0;
    if ((out[0] & 0x80) == 0) {
        out[0] |= 0x80;
        return;
    }
    for (size_t i = 0; i < length; ++i) {
        out[i] = static_cast<uint8_t>(~out[i]);
    }
}

// Absolute value, big-endian. The lowest negative value has one too, since the result is unsigned.
void OrderAutoincrement(const uint8_t *from, size_t length, uint8_t *out)
{
    Reverse(from, length, out);
    if ((out[0] & 0x80) == 0) return;
    unsigned carry = 1;
    for (size_t i = length; i-- > 0;) {
        const unsigned byte = (~out[i] & 0xFFu) + carry;
        out[i] = static_cast<uint8_t>(byte);
        carry = byte >> 8;
    }
}

void OrderSegment(const Segment &segment, const uint8_t *from, uint8_t *out)
{
    const size_t length = segment.Length;
    switch (segment.Kind) {
    case SegmentKind::String:
        std::memcpy(out, from, length);
        if (segment.Caseless) UpperCase(out, length);
        break;
    case SegmentKind::ZString: {
        const size_t used = strnlen(reinterpret_cast<const char *>(from), length);
        std::memcpy(out, from, used);
        std::memset(out + used, 0, length - used);
        if (segment.Caseless) UpperCase(out, used);
        break;
    }
    case SegmentKind::LString: {
        // The length goes behind the text, where it tells a text from the same with zeros appended.
        const size_t used = from[0] < length ? from[0] : length - 1;
        std::memcpy(out, from + 1, used);
        std::memset(out + used, 0, length - 1 - used);
        if (segment.Caseless) UpperCase(out, used);
        out[length - 1] = static_cast<uint8_t>(used);
        break;
    }
    case SegmentKind::Integer:
        Reverse(from, length, out);
        out[0] ^= 0x80;
        break;
    case SegmentKind::Unsigned: Reverse(from, length, out); break;
    case SegmentKind::Float: OrderFloat(from, length, out); break;
    case SegmentKind::Autoincrement: OrderAutoincrement(from, length, out); break;
    }
    if (!segment.Descending) return;
    for (size_t i = 0; i < length; ++i) {
        out[i] = static_cast<uint8_t>(~out[i]);
    }
}

bool ConsistsOf(uint8_t byte, const uint8_t *bytes, size_t length)
{
    for (size_t i = 0; i < length; ++i) {
        if (bytes[i] != byte) return false;
    }
    return true;
}

} // namespace

void OrderedFromRecord(const Definition &definition, const Key &key, const uint8_t *record, uint8_t *out)
{
    const Segment *segment = &definition.Segments[key.FirstSegment];
    if (key.Plain) {
        std::memcpy(out, record + segment->Offset, segment->Length);
        return;
    }
    for (unsigned i = 0; i < key.SegmentCount; ++i, ++segment) {
        OrderSegment(*segment, record + segment->Offset, out);
        out += segment->Length;
    }
}

void OrderedFromValue(const Definition &definition, const Key &key, const uint8_t *value, uint8_t *out)
{
    if (key.Plain) {
        std::memcpy(out, value, key.Length);
        return;
    }
    const Segment *segment = &definition.Segments[key.FirstSegment];
    for (unsigned i = 0; i < key.SegmentCount; ++i, ++segment) {
        OrderSegment(*segment, value, out);
        value += segment->Length;
        out += segment->Length;
    }
}

void ValueFromRecord(const Definition &definition, const Key &key, const uint8_t *record, uint8_t *value)
{
    const Segment *segment = &definition.Segments[key.FirstSegment];
    for (unsigned i = 0; i < key.SegmentCount; ++i, ++segment) {
        std::memcpy(value, record + segment->Offset, segment->Length);
        value += segment->Length;
    }
}

bool IsNull(const Definition &definition, const Key &key, const uint8_t *record)
{
    if (!key.NullAll && !key.NullAny) return false;
    const Segment *segment = &definition.Segments[key.FirstSegment];
    unsigned nulls = 0;
    for (unsigned i = 0; i < key.SegmentCount; ++i, ++segment) {
        if (ConsistsOf(segment->NullByte, record + segment->Offset, segment->Length)) nulls++;
    }
    return key.NullAny ? nulls > 0 : nulls == key.SegmentCount;
}

bool SameBytes(const Definition &definition, const Key &key, const uint8_t *one, const uint8_t *other)
{
    const Segment *segment = &definition.Segments[key.FirstSegment];
    for (unsigned i = 0; i < key.SegmentCount; ++i, ++segment) {
        if (std::memcmp(one + segment->Offset, other + segment->Offset, segment->Length) != 0) return false;
    }
    return true;
}

uint64_t AutoincrementFromOrdered(const Definition &definition, const Key &key, const uint8_t *ordered)
{
    const uint8_t flip = definition.Segments[key.FirstSegment].Descending ? 0xFF : 0;
    uint64_t value = 0;
    for (size_t i = 0; i < key.Length; ++i) {
        value = value << 8 | static_cast<uint8_t>(ordered[i] ^ flip);
    }
    return value;
}

uint64_t AutoincrementOf(const Definition &definition, const Key &key, const uint8_t *record)
{
    uint8_t ordered[8] = {};
    OrderedFromRecord(definition, key, record, ordered);
    return AutoincrementFromOrdered(definition, key, ordered);
}

uint64_t AutoincrementMax(const Key &key) { return (uint64_t{1} << (8 * key.Length - 1)) - 1; }

void SetAutoincrement(const Definition &definition, const Key &key, uint8_t *record, uint64_t value)
{
    uint8_t *field = record + definition.Segments[key.FirstSegment].Offset;
    for (size_t i = 0; i < key.Length; ++i) {
        field[i] = static_cast<uint8_t>(value >> (8 * i));
    }
}

} // namespace wbtrv
