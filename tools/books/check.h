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
// its own, which a damaged file may end without ending the check; where others work in it meanwhile, it is
// looked at as it was in one moment. What cannot be read is told, and nothing is concluded from it. Returns
// the exit code: 0 all is well, perhaps with remarks; 1 there are findings. Throws when the books cannot be
// read through no fault of theirs, since they are in use.
int CheckBooks(const CheckOptions &options, const Progress &progress);

} // namespace books
