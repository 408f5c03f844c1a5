// Bytes on their way into a file.
#pragma once

#include "report-engine/helper.h"

#include <cstddef>
#include <cstring>

namespace rs {

// Bytes on their way to a file; the first failure stays and stops the rest.
struct Writer {
    int File;
    int Error;             // errno, 0 for none, ECANCELED when the person has stopped it
    const Progress *Watch; // null for none
    size_t Used;
    char Buffer[65'536];
};

bool FlushWriter(Writer &writer);

// Writes bytes for which the buffer may have too little room; Write is for all.
void WriteThrough(Writer &writer, const char *bytes, size_t length);

// Writes bytes, or a text; nothing after a failure.
inline void Write(Writer &writer, const char *bytes, size_t length)
{
    if (length >= sizeof writer.Buffer - writer.Used) return WriteThrough(writer, bytes, length);
    std::memcpy(writer.Buffer + writer.Used, bytes, length);
    writer.Used += length;
}
inline void Write(Writer &writer, const char *text) { Write(writer, text, std::strlen(text)); }

} // namespace rs
