// What a report's view is written to: files of any kind, pipes, standard output.
#pragma once

#include "include/vark40.h"

#include <string>
#include <vector>

namespace cli {

struct ReportTarget {
    std::string Kind; // "pdf", "csv", "json", "html" or "txt"
    std::string Path; // "-": standard output
};

// Throws a UsageError where two outputs would mix, a file's name says another kind, or a PDF would go to a
// terminal.
void CheckTargets(const std::vector<ReportTarget> &targets);

// Writes the view. A file that was there is exchanged for the whole new one; what cannot be written is a
// std::runtime_error that says why.
void WriteTarget(VarkWindow view, const ReportTarget &target);

} // namespace cli
