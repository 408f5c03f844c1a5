// Whether books agree with themselves.
#pragma once

#include "tools/books/sample.h"

#include <cstdint>
#include <filesystem>

namespace books {

struct CheckOptions {
    std::filesystem::path Directory; // with the ini files, or the data path itself
    bool IsJson = false;
    int64_t MostPerRule = 20; // findings that are shown of one rule in one table
};

// Reads everything, tells of each finding, and ends with a summary. Every directory is read in a process of
// its own, which a damaged file may end without ending the check. Returns the exit code: 0 all is well, 1
// there are findings.
int CheckBooks(const CheckOptions &options, const Progress &progress);

} // namespace books
