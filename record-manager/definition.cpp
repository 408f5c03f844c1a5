#include "record-manager/definition.h"

#include "record-manager/fields.h"
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

int16_t SetKind(const BtrKeyEntry &entry, Segment *segment)
{
    const unsigned length = entry.Length;
    if ((entry.Flags & BtrKeyExtendedType) == 0) {
        if ((entry.Flags & BtrKeyOldBinary) == 0) {
            segment->Kind = SegmentKind::String;
            return BtrStatusOk;
        }
        segment->Kind = SegmentKind::Unsigned;
        return length == 1 || length % 2 == 0 ? BtrStatusOk : BtrStatusBadKeyLength;
    }
    switch (entry.Type) {
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

int16_t ParseSegment(const BtrKeyEntry &entry, Definition *definition, Key *key)
{
    constexpr unsigned sameOverAll = BtrKeyDuplicates | BtrKeyModifiable | BtrKeyNullAll | BtrKeyNullAny;
    Segment &segment = definition->Segments[definition->SegmentCount];
    const BtrKeyEntry &first = definition->KeyEntries[key->FirstSegment];

    if (entry.Length == 0) return BtrStatusBadKeyLength;
    if (entry.Position == 0 || entry.Position - 1 + entry.Length > definition->RecordLength) {
        return BtrStatusBadKeyPosition;
    }
    if (key->Length + entry.Length > static_cast<int>(maxKeyLength)) return BtrStatusBadKeyLength;
    if ((entry.Flags & BtrKeyCollation) != 0) return BtrStatusBadCollation;
    if (((entry.Flags ^ first.Flags) & sameOverAll) != 0) return BtrStatusBadKeyFlags;
    const int16_t status = SetKind(entry, &segment);
    if (status != BtrStatusOk) return status;
    if (segment.Kind == SegmentKind::Autoincrement &&
        ((entry.Flags & (BtrKeyDuplicates | BtrKeySegmented)) != 0 || key->SegmentCount > 0)) {
        return BtrStatusBadKeyType;
    }

    segment.Offset = static_cast<uint16_t>(entry.Position - 1);
    segment.Length = entry.Length;
    segment.NullByte = entry.NullValue;
    segment.Descending = (entry.Flags & BtrKeyDescending) != 0;
    segment.Caseless = (entry.Flags & BtrKeyCaseless) != 0;
    definition->KeyEntries[definition->SegmentCount] = entry;
    definition->SegmentCount++;
    key->SegmentCount++;
    key->Length = static_cast<uint16_t>(key->Length + entry.Length);
    return BtrStatusOk;
}

void FinishKey(Definition *definition, Key *key)
{
    const Segment &segment = definition->Segments[key->FirstSegment];
    const unsigned flags = definition->KeyEntries[key->FirstSegment].Flags;
    key->Duplicates = (flags & BtrKeyDuplicates) != 0;
    key->Repeating = key->Duplicates && (flags & BtrKeyRepeating) != 0;
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
    std::memset(definition, 0, sizeof *definition);
    std::memset(definition->KeyByNumber, noKey, sizeof definition->KeyByNumber);
    BtrFileHeader &header = definition->Header;
    if (length < sizeof header) return BtrStatusDataBufferShort;
    header = GetField<BtrFileHeader>(bytes);

    if (header.PageSize < 512 || header.PageSize > 4096 || header.PageSize % 512 != 0)
        return BtrStatusBadPageSize;
    if (header.KeyCount > MaxSegments(header.PageSize)) return BtrStatusBadKeyCount;
    // A page spends six bytes on itself.
    if (header.RecordLength == 0 || header.RecordLength > header.PageSize - 6)
        return BtrStatusBadRecordLength;
    definition->RecordLength = header.RecordLength;
    definition->Variable = (header.Flags & BtrFileVariable) != 0;

    for (; definition->KeyCount < header.KeyCount; definition->KeyCount++) {
        Key &key = definition->Keys[definition->KeyCount];
        key.FirstSegment = definition->SegmentCount;
        BtrKeyEntry segment;
        do {
            if (definition->SegmentCount == MaxSegments(header.PageSize)) return BtrStatusBadKeyCount;
            const size_t offset = sizeof header + definition->SegmentCount * sizeof segment;
            if (length < offset + sizeof segment) return BtrStatusDataBufferShort;
            segment = GetField<BtrKeyEntry>(bytes + offset);
            if (key.SegmentCount == 0) definition->KeyEntries[key.FirstSegment] = segment;
            const int16_t status = ParseSegment(segment, definition, &key);
            if (status != BtrStatusOk) return status;
        } while ((segment.Flags & BtrKeySegmented) != 0);
        FinishKey(definition, &key);

        key.Number = (header.Flags & BtrFileKeyNumbers) != 0
                         ? definition->KeyEntries[key.FirstSegment].KeyNumber
                         : definition->KeyCount;
        if (key.Number >= BtrMaxKeys || definition->KeyByNumber[key.Number] != noKey)
            return BtrStatusBadKeyCount;
        definition->KeyByNumber[key.Number] = definition->KeyCount;
    }
    return BtrStatusOk;
}

size_t DefinitionSize(const Definition &definition)
{
    return sizeof(BtrFileHeader) + definition.SegmentCount * sizeof(BtrKeyEntry);
}

} // namespace wbtrv
