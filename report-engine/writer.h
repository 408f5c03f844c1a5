// Bytes on their way into a file.
#pragma once

#include "report-engine/helper.h"

#include <cstddef>

namespace rs {

// Bytes on their way to a file; the first failure stays and stops the rest.
struct Writer {
    int File;
    int Error;             // errno, 0 for none, ECANCELED when the person has stopped it
    const Progress *Watch; // null for none
    size_t Used;
    char Buffer[65'536];
};

// Writes bytes, or a text; nothing after a failure.
void Write(Writer &writer, const char *bytes, size_t length);
void Write(Writer &writer, const char *text);
bool FlushWriter(Writer &writer);

} // namespace rs
