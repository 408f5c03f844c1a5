// What can be asked of the books through the exported functions: free numbers, balances, postings, open
// items.
#pragma once

#include "tools/common/row_writer.h"

#include <string>
#include <vector>

namespace cli {

struct QueryOptions {
    int Mandant = 0;
    std::string Kind;                // a kind of account; empty: by the number, or all kinds
    std::string From;                // the first day of a journal
    std::vector<std::string> Konten; // accounts by number or Kürzel
    tools::Output As = tools::Output::Table;
};

// Each prints and returns the exit code: 0, 1 where the library refuses, with its reason on standard error.
int ShowFreeNumber(const QueryOptions &options);
// The balances of the accounts. One that is refused does not hold up the others.
int ShowBalances(const QueryOptions &options);
// The final postings of a fiscal year from a day on.
int ShowJournal(const QueryOptions &options);
// Open items of the kind, or of both, or of the first account alone.
int ShowOpenItems(const QueryOptions &options);

} // namespace cli
