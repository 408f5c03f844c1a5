// A copy of an installation, while others work in it.
#pragma once

#include "tools/books/sample.h"

#include <filesystem>

namespace books {

struct CopyOptions {
    std::filesystem::path From; // with the ini files, or the data path itself
    std::filesystem::path To;
    bool Replace = false;
    std::string Server; // a connection string: the copy's books go there, into schemas that must not exist
    std::string Schema; // that of the data path
};

struct CopySummary {
    int Directories = 0;
    uint64_t Bytes = 0;
    bool HasTemplates = true; // reports can be had of the books
};

// Every directory is copied as it stands at one moment, and every change of books lies in one directory; so
// the copy is consistent. Between a directory and a server records are copied one by one, in the order of
// their numbers, and duplicates of a key keep their order. The copy comes with ini files of its own and the
// templates beside the source, and is whole or absent. Throws with a German text.
CopySummary CopyBooks(const CopyOptions &options, const Progress &progress);

} // namespace books
