// Tables in the sequential form: one, those of a Mandant, or all.
#pragma once

#include "tools/books/sample.h"

#include <cstdint>
#include <filesystem>
#include <string>

namespace books {

struct SaveOptions {
    std::filesystem::path From; // with the ini files, or the data path itself
    std::filesystem::path To;   // a file for one table, "-" for standard output, else a directory
    std::string Table;          // empty: all tables
    int Mandant = 0;            // 0: all; with a table the first
    std::string Year;           // of a table; empty: the last postable one
    int Key = 0;                // of a table, in whose order; -1: as they lie
    bool Replace = false;
};

struct SaveSummary {
    int Tables = 0;
    int64_t Records = 0;
};

// One table goes into a file: its records in the order of a key, those of equal value in the order in which
// they came. More than one go into a directory, "fista.seq" and "1998/sako.seq" and so on, as they stand at
// one moment, whatever others do meanwhile. What is written is whole or absent. Throws with a German text.
SaveSummary SaveBooks(const SaveOptions &options, const Progress &progress);

} // namespace books
