// Whether a file holds together: what Stat counts, what Step reads and what every key reads are the same
// records.
#pragma once

#include "driver.h"

#include <functional>
#include <string>
#include <vector>

namespace wbtrvtest {

using Caller = std::function<Answer(const Request &)>;

struct FileImage {
    std::string Complaint;            // empty: none
    int16_t Opened = -1;              // status of the open
    std::vector<std::string> Records; // in physical order
};

// Reads the whole file through position block 15 and closes it again.
FileImage Audit(const Caller &client, const std::string &path);

} // namespace wbtrvtest
