// Numbers and structures in the bytes of files, pages and callers' buffers, where they lie at any address.
#pragma once

#include <cstring>
#include <type_traits>

namespace wbtrv {

// What begins at `from`, in the machine's own order of bytes.
template <typename Field> Field GetField(const void *from)
{
    static_assert(std::is_trivially_copyable_v<Field>);
    Field field;
    std::memcpy(&field, from, sizeof field);
    return field;
}

// Writes it from `to` on.
template <typename Field> void PutField(void *to, const Field &field)
{
    static_assert(std::is_trivially_copyable_v<Field>);
    std::memcpy(to, &field, sizeof field);
}

} // namespace wbtrv
