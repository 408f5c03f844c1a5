// Reading of CSV lines. A record never goes over the end of its line, so that a forgotten quote spoils one
// line and not the rest of the file.
#pragma once

#include <istream>
#include <string>
#include <vector>

namespace cli {

struct CsvLine {
    long Number = 0;  // of the line in the file, from 1
    std::string Text; // UTF-8, as it stood
    std::vector<std::string> Fields;
    std::string Fault; // what is wrong with the line, German; empty for a good one
};

// Reads the next line that is neither empty nor a comment ("#"). UTF-8 and Windows-1252 are told apart line
// by line; a byte order mark is skipped. False at the end.
bool ReadCsvLine(std::istream &in, CsvLine &line);

// The fields of a single text.
CsvLine SplitCsvText(const std::string &text);

} // namespace cli
