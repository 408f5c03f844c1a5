// What every table must satisfy whatever it holds: its definition, the forms of its fields, its indexes.
#pragma once

#include "tools/books/findings.h"
#include "tools/common/fields.h"
#include "tools/common/table_file.h"

#include <filesystem>
#include <functional>
#include <string>

namespace books {

// Whether a refusal is no fault of the books: they are in use elsewhere, may not be read, or resources are
// short. What is found after such a one would be false.
bool IsCircumstance(int status);

// Checks a table and hands every record to `visit`, in the order of its place in the file. False when the
// table cannot be read; that has then been told. A circumstance is thrown.
bool CheckTable(Findings &findings, const tools::TableLayout &layout, const std::filesystem::path &directory,
                int firstMonth, const std::function<void(const char *record)> &visit);

} // namespace books
