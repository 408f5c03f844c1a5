// Questions in SQL over live books.
#pragma once

#include "tools/common/row_writer.h"

#include <filesystem>
#include <string>

namespace books {

struct SqlOptions {
    std::filesystem::path Directory; // with the ini files, or the data path itself
    std::string Statement;           // one or more; empty: from standard input
    tools::Output As = tools::Output::Table;
};

// Answers each statement in turn. Without one, SQLite's own shell is started at a terminal where there is
// one; else statements are read from standard input: of a terminal to its end, of a file to the first that
// fails. Books are never changed. Returns the exit code: ExitRefused for a statement that would change
// something, ExitUsage for one that SQLite does not understand, ExitFailure where it cannot be answered; the
// reason is told on standard error. Throws where there are no books.
int AskBooks(const SqlOptions &options);

} // namespace books
