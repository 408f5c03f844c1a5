// What every table must satisfy whatever it holds: its definition, the forms of its fields, its indexes.
#pragma once

#include "tools/books/findings.h"
#include "tools/common/fields.h"
#include "tools/common/table_file.h"

#include <filesystem>
#include <functional>
#include <string>

namespace books {

// Checks a table and hands every record to `visit`, in the order of its place in the file. False when the
// table cannot be opened; that has then been told.
bool CheckTable(Findings &findings, const tools::TableLayout &layout, const std::filesystem::path &directory,
                int firstMonth, const std::function<void(const char *record)> &visit);

} // namespace books
