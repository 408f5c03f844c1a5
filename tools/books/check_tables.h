// What every table must satisfy whatever it holds: its definition, the forms of its fields, its indexes.
#pragma once

#include "tools/books/findings.h"
#include "tools/common/table_file.h"

#include <filesystem>
#include <functional>
#include <string>

namespace books {

// The record's key 0 as a person writes it.
std::string KeyText(const tools::TableLayout &layout, const char *record);

// A field's bytes, readable: text as it stands, numbers in digits, amounts and days as people write them.
std::string FieldValue(const tools::FieldLayout &field, const char *record, int firstMonth);

// What is wrong with the bytes of a field; empty for nothing.
std::string FaultOfForm(const tools::FieldLayout &field, const char *record, int firstMonth);

// Checks a table and hands every record to `visit`, in the order of its place in the file. False when the
// table cannot be opened; that has then been told.
bool CheckTable(Findings &findings, const tools::TableLayout &layout, const std::filesystem::path &directory,
                int firstMonth, const std::function<void(const char *record)> &visit);

} // namespace books
