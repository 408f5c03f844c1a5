// What can be asked of the books through the exported functions: accounts, balances, postings, open items.
#pragma once

#include "tools/common/row_writer.h"

#include <string>

namespace cli {

struct QueryOptions {
    int Mandant = 0;
    std::string Kind;  // Sachkonto, Kreditor, Debitor or Kostenstelle, or a first letter
    std::string From;  // account number, or the first day of a journal
    std::string To;    // last account number
    std::string Konto; // one account
    tools::Output As = tools::Output::Table;
};

// Each prints and returns the exit code: 0, 1 where the library refuses, with its reason on standard error.
int ListAccounts(const QueryOptions &options);
int ShowFreeNumber(const QueryOptions &options);
int ShowBalance(const QueryOptions &options);
// The final postings of a fiscal year from a day on.
int ShowJournal(const QueryOptions &options);
int ShowOpenItems(const QueryOptions &options);

} // namespace cli
