#include "record-manager/definition.h"

#include "record-manager/limits.h"

#include <cstring>

namespace wbtrv {

namespace {

// Segments that fit the key table of a file with this page size.
unsigned MaxSegments(unsigned pageSize)
{
    if (pageSize >= 4096) return 119;
    if (pageSize >= 2048) return 54;
    if (pageSize >= 1536) return 24;
    if (pageSize >= 1024) return 23;
    return 8;
}

bool IsOneOf(unsigned length, unsigned a, unsigned b, unsigned c, unsigned d)
{
    return length == a || length == b || length == c || length == d;
}

int16_t SetKind(const BtrKeySpec &spec, Segment *segment)
{
    const unsigned length = spec.Length;
    if ((spec.Flags & BtrKeyExtendedType) == 0) {
        if ((spec.Flags & BtrKeyOldBinary) == 0) {
            segment->Kind = SegmentKind::String;
            return BtrStatusOk;
        }
        segment->Kind = SegmentKind::Unsigned;
        return length == 1 || length % 2 == 0 ? BtrStatusOk : BtrStatusBadKeyLength;
    }
    switch (spec.Type) {
    case BtrTypeString: segment->Kind = SegmentKind::String; return BtrStatusOk;
    case BtrTypeZString: segment->Kind = SegmentKind::ZString; return BtrStatusOk;
    case BtrTypeLString: segment->Kind = SegmentKind::LString; return BtrStatusOk;
    case BtrTypeInteger:
        segment->Kind = SegmentKind::Integer;
        return IsOneOf(length, 1, 2, 4, 8) ? BtrStatusOk : BtrStatusBadKeyLength;
    case BtrTypeUnsigned:
        segment->Kind = SegmentKind::Unsigned;
        return IsOneOf(length, 1, 2, 4, 8) ? BtrStatusOk : BtrStatusBadKeyLength;
    case BtrTypeFloat:
        segment->Kind = SegmentKind::Float;
        return IsOneOf(length, 4, 4, 4, 8) ? BtrStatusOk : BtrStatusBadKeyLength;
    // Day, month and year, or hundredths up to hours, lie so that the whole is a number of four bytes.
    case BtrTypeDate:
    case BtrTypeTime:
        segment->Kind = SegmentKind::Unsigned;
        return length == 4 ? BtrStatusOk : BtrStatusBadKeyLength;
    case BtrTypeAutoincrement:
        segment->Kind = SegmentKind::Autoincrement;
        return IsOneOf(length, 2, 2, 4, 8) ? BtrStatusOk : BtrStatusBadKeyLength;
    default: return BtrStatusBadKeyType;
    }
}

int16_t ParseSegment(const BtrKeySpec &spec, Definition *definition, Key *key)
{
    constexpr unsigned sameOverAll = BtrKeyDuplicates | BtrKeyModifiable | BtrKeyNullAll | BtrKeyNullAny;
    Segment &segment = definition->Segments[definition->SegmentCount];
    const BtrKeySpec &first = definition->KeySpecs[key->FirstSegment];

    if (spec.Length == 0) return BtrStatusBadKeyLength;
    if (spec.Position == 0 || spec.Position - 1 + spec.Length > definition->RecordLength) {
        return BtrStatusBadKeyPosition;
    }
    if (key->Length + spec.Length > static_cast<int>(maxKeyLength)) return BtrStatusBadKeyLength;
    if ((spec.Flags & BtrKeyCollation) != 0) return BtrStatusBadCollation;
    if (((spec.Flags ^ first.Flags) & sameOverAll) != 0) return BtrStatusBadKeyFlags;
    const int16_t status = SetKind(spec, &segment);
    if (status != BtrStatusOk) return status;
    if (segment.Kind == SegmentKind::Autoincrement &&
        ((spec.Flags & (BtrKeyDuplicates | BtrKeySegmented)) != 0 || key->SegmentCount > 0)) {
        return BtrStatusBadKeyType;
    }

    segment.Offset = static_cast<uint16_t>(spec.Position - 1);
    segment.Length = spec.Length;
    segment.NullByte = spec.NullValue;
    segment.Descending = (spec.Flags & BtrKeyDescending) != 0;
    segment.Caseless = (spec.Flags & BtrKeyCaseless) != 0;
    definition->KeySpecs[definition->SegmentCount] = spec;
    definition->SegmentCount++;
    key->SegmentCount++;
    key->Length = static_cast<uint16_t>(key->Length + spec.Length);
    return BtrStatusOk;
}

void FinishKey(Definition *definition, Key *key)
{
    const Segment &segment = definition->Segments[key->FirstSegment];
    const unsigned flags = definition->KeySpecs[key->FirstSegment].Flags;
    key->Duplicates = (flags & BtrKeyDuplicates) != 0;
    key->Modifiable = (flags & BtrKeyModifiable) != 0;
    key->NullAll = (flags & BtrKeyNullAll) != 0;
    key->NullAny = (flags & BtrKeyNullAny) != 0;
    key->Autoincrement = segment.Kind == SegmentKind::Autoincrement;
    key->Plain = key->SegmentCount == 1 && segment.Kind == SegmentKind::String && !segment.Descending &&
                 !segment.Caseless;
    if (key->Duplicates) key->DuplicateIndex = definition->DuplicateKeys++;
}

} // namespace

int16_t ParseDefinition(const void *buffer, size_t length, Definition *definition)
{
    const auto *bytes = static_cast<const uint8_t *>(buffer);
    memset(definition, 0, sizeof *definition);
    memset(definition->KeyByNumber, noKey, sizeof definition->KeyByNumber);
    BtrFileSpec &spec = definition->Spec;
    if (length < sizeof spec) return BtrStatusDataBufferShort;
    memcpy(&spec, bytes, sizeof spec);

    if (spec.PageSize < 512 || spec.PageSize > 4096 || spec.PageSize % 512 != 0) return BtrStatusBadPageSize;
    if (spec.KeyCount > MaxSegments(spec.PageSize)) return BtrStatusBadKeyCount;
    // A page spends six bytes on itself.
    if (spec.RecordLength == 0 || spec.RecordLength > spec.PageSize - 6) return BtrStatusBadRecordLength;
    definition->RecordLength = spec.RecordLength;
    definition->Variable = (spec.Flags & BtrFileVariable) != 0;

    for (; definition->KeyCount < spec.KeyCount; definition->KeyCount++) {
        Key &key = definition->Keys[definition->KeyCount];
        key.FirstSegment = definition->SegmentCount;
        BtrKeySpec segment;
        do {
            if (definition->SegmentCount == MaxSegments(spec.PageSize)) return BtrStatusBadKeyCount;
            const size_t offset = sizeof spec + definition->SegmentCount * sizeof segment;
            if (length < offset + sizeof segment) return BtrStatusDataBufferShort;
            memcpy(&segment, bytes + offset, sizeof segment);
            if (key.SegmentCount == 0) definition->KeySpecs[key.FirstSegment] = segment;
            const int16_t status = ParseSegment(segment, definition, &key);
            if (status != BtrStatusOk) return status;
        } while ((segment.Flags & BtrKeySegmented) != 0);
        FinishKey(definition, &key);

        key.Number = (spec.Flags & BtrFileKeyNumbers) != 0 ? definition->KeySpecs[key.FirstSegment].KeyNumber
                                                           : definition->KeyCount;
        if (key.Number >= BtrMaxKeys || definition->KeyByNumber[key.Number] != noKey)
            return BtrStatusBadKeyCount;
        definition->KeyByNumber[key.Number] = definition->KeyCount;
    }
    return BtrStatusOk;
}

size_t DefinitionSize(const Definition &definition)
{
    return sizeof(BtrFileSpec) + definition.SegmentCount * sizeof(BtrKeySpec);
}

} // namespace wbtrv
