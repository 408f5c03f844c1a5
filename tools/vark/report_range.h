// The accounts of a report as a person names them, and their way into the caller's block.
#pragma once

#include "include/vark40.h"
#include "tools/vark/report_table.h"

#include <string>

namespace cli {

// UTF-8; what is empty was not given.
struct RangeText {
    std::string Art;
    std::string Von; // by number or Kürzel
    std::string Bis;
    std::string Konto; // one account, in their place
};

// Fills kind and limits into the block. Throws a UsageError for what cannot be understood, and a Refusal for
// an account that is not there.
void PutRange(const RangeText &text, const ReportRow &report, int mandant, ReportParams &params);

// What is to be told of a range that holds no account; empty for one that does.
std::string TellEmptyRange(int mandant, const ReportParams &params);

} // namespace cli
