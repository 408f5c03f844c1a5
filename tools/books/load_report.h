// What loading says of itself.
#pragma once

#include "tools/books/load.h"

namespace books {

// Refusals and remarks line by line with file, record, byte, key, field and reason, then how it ended.
void PrintLoad(const LoadSummary &summary, const LoadOptions &options);
void PrintLoadJson(const LoadSummary &summary);

} // namespace books
