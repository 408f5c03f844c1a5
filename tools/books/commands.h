// The commands of books, their options, and what each does with them.
#pragma once

#include "tools/books/check.h"
#include "tools/books/copy.h"
#include "tools/books/load.h"
#include "tools/books/sample.h"
#include "tools/books/save.h"
#include "tools/books/server.h"
#include "tools/books/show.h"
#include "tools/books/sql.h"
#include "tools/common/command_tree.h"

#include <string>

namespace books {

// What the command line gives.
struct Given {
    SampleOptions Sample;
    CheckOptions Check;
    SaveOptions Save;
    LoadOptions Load;
    CopyOptions Copy;
    ServerOptions Server;
    ShowOptions Show;
    SqlOptions Sql;
    std::string Described; // table
    bool IsCsv = false;
    bool IsJson = false;
    bool IsHtml = false;
};

// The description fills `given`, which lives as long, when a command line is taken apart.
tools::Tool DescribeBooks(Given &given);

} // namespace books
