// Tables out of the sequential form: one, those of a Mandant, or all.
#pragma once

#include "tools/books/sample.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace books {

struct LoadOptions {
    std::filesystem::path From; // a file for one table, else a directory as saving makes one
    std::filesystem::path To;   // with the ini files, or the data path itself; for all tables it may be new
    std::string Table;          // empty: all tables
    int Mandant = 0;            // 0: all
    std::string Year;           // of a table; empty: the last postable one
    bool Replace = false;       // what is there
    bool Append = false;        // a table's records to those that are there
    bool IsLenient = false;     // records with fields of a wrong form are taken as they are
    bool IsTrial = false;       // everything but the last step
    int64_t MostPerTable = 20;  // refusals and remarks that are kept of a table, all being counted
};

// One thing about a record, or about the file as a whole, that is not as it should be.
struct Refusal {
    std::string File;    // "1998/sako.seq"
    uint64_t Record = 0; // from 1; 0 for the file as a whole
    uint64_t Offset = 0; // of the record's first byte in the file
    std::string Key;     // as a person writes it; may be empty
    std::string Field;   // may be empty
    std::string Reason;  // German
};

struct LoadSummary {
    bool IsLoaded = false;
    int Tables = 0;
    int64_t Records = 0;           // that were read and are good
    int64_t Refused = 0;           // because of which nothing was loaded
    bool HasTemplates = true;      // reports can be had of the books
    int64_t Remarks = 0;           // unusual or faulty forms that were taken all the same
    std::vector<Refusal> Refusals; // and remarks, in the order of the files
};

// Reads and checks every file first: its form, the length of every record, the form of every field. Then
// loads beside the books, where equal values of a unique key show, and puts the result in place in one step:
// so books are loaded whole or not at all, whatever happens. Records keep every byte and their order. Whoever
// else is in the books refuses it. Throws with a German text for what cannot be read or written; refused
// records are not thrown but told.
LoadSummary LoadBooks(const LoadOptions &options, const Progress &progress);

} // namespace books
