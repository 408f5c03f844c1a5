// The three small files of the comparisons with the model: texts and a descending number, a number given by
// the record manager and a key of two segments, a variable record with a zero-ended text and a key with
// nulls.
#pragma once

#include "model.h"

namespace wbtrvtest {

inline ModelLayout LayoutOf(size_t length, bool variable, const std::vector<ModelKey> &keys)
{
    ModelLayout layout{length, variable, keys, {}};
    std::vector<KeySegment> segments;
    for (const ModelKey &key : keys) {
        for (size_t i = 0; i < key.Segments.size(); ++i) {
            const ModelSegment &segment = key.Segments[i];
            unsigned flags = 0;
            if (key.Duplicates) flags |= BtrKeyDuplicates;
            if (key.Modifiable) flags |= BtrKeyModifiable;
            if (key.NullAll) flags |= BtrKeyNullAll;
            if (segment.Descending) flags |= BtrKeyDescending;
            if (i + 1 < key.Segments.size()) flags |= BtrKeySegmented;
            segments.push_back({static_cast<uint16_t>(segment.Offset + 1),
                                static_cast<uint16_t>(segment.Length), flags, segment.Type,
                                static_cast<uint8_t>(segment.Null)});
        }
    }
    layout.CreateBuffer = CreateBuffer(static_cast<uint16_t>(length), static_cast<unsigned>(keys.size()),
                                       segments, variable ? 1 : 0);
    return layout;
}

constexpr ModelSegment Text(size_t offset, size_t length)
{
    return {offset, length, BtrTypeString, false, 0};
}

inline ModelLayout LayoutT()
{
    return LayoutOf(24, false,
                    {{{Text(0, 2)}, false, false, false, false},
                     {{Text(2, 2)}, true, true, false, false},
                     {{{4, 2, BtrTypeInteger, true, 0}}, true, true, false, false}});
}

inline ModelLayout LayoutN()
{
    return LayoutOf(16, false,
                    {{{{0, 2, BtrTypeAutoincrement, false, 0}}, false, true, false, true},
                     {{Text(2, 2), {4, 2, BtrTypeUnsigned, false, 0}}, true, true, false, false}});
}

inline ModelLayout LayoutV()
{
    return LayoutOf(12, true,
                    {{{{0, 4, BtrTypeZString, false, 0}}, true, true, false, false},
                     {{{4, 2, BtrTypeString, true, ' '}}, false, true, true, false}});
}

} // namespace wbtrvtest
