// Fixed-width text fields: arrays of bytes that hold a NUL-terminated text, or, where a record or a caller
// filled them to the last byte, a text without its NUL. Nothing here reads or writes beyond a field.
#pragma once

#include <cstddef>
#include <cstring>
#include <type_traits>

namespace text {

// Fills the field `to` with at most `fromSize` bytes of `from` (null counts as empty), cut to the field's
// width less one; the rest of the field is NUL.
inline void CopyText(char *to, size_t toSize, const char *from, size_t fromSize)
{
    size_t length = from != nullptr ? strnlen(from, fromSize < toSize ? fromSize : toSize) : 0;
    if (length >= toSize) length = toSize - 1;
    if (length > 0) std::memmove(to, from, length);
    std::memset(to + length, 0, toSize - length);
}

// The same from a terminated text of the caller, and from field to field: a source field that fills its whole
// width counts up to its width less one.
template <size_t To, typename From> void CopyText(char (&to)[To], const From &from)
{
    if constexpr (std::is_array_v<From>) {
        CopyText(to, To, from, sizeof from - 1);
    } else {
        CopyText(to, To, from, To);
    }
}

// Whether two fields of one width hold the same text.
template <size_t Width> bool SameText(const char (&a)[Width], const char (&b)[Width])
{
    return std::strncmp(a, b, Width) == 0;
}

} // namespace text
