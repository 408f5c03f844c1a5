// Records field by field, for people who look into books, and for programs.
#pragma once

#include "tools/common/row_writer.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace books {

struct ShowOptions {
    std::string Table;
    std::filesystem::path Directory; // with the ini files, or the data path itself; empty: as configured
    int Mandant = 0;                 // 0: the first
    std::string Year;                // empty: the last postable one
    int Key = 0;                     // whose order is followed
    std::string From, To, Equal;     // values of that key; From and To are both inside
    std::vector<std::string> Fields; // in this order, "Umsaetze" standing for all inside it; empty: all
    bool WithGaps = false;           // the bytes between the fields as well
    int64_t Most = 0;                // records; 0: all
    tools::Output As = tools::Output::Table;
};

// Returns the exit code: 0, also where no record lies in the range. Throws for what is not there or cannot be
// read.
int ShowTable(const ShowOptions &options);

} // namespace books
