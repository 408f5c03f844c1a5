// Fields and keys of records as people read and write them.
#pragma once

#include "tools/common/layout.h"

#include <string>
#include <string_view>

namespace tools {

// A field's bytes, readable: text as it stands, numbers in digits, amounts and days as people write them.
std::string FieldValue(const FieldLayout &field, const char *record, int firstMonth);

// The same for programs: amounts without grouping.
std::string PlainValue(const FieldLayout &field, const char *record, int firstMonth);

// A whole number in binary.
bool IsNumber(Form form);

// What is wrong with the bytes of a field; empty for nothing.
std::string FaultOfForm(const FieldLayout &field, const char *record, int firstMonth);

// What is unusual about the bytes of a field, though programs take it as it comes; empty for nothing.
std::string RemarkOnForm(const FieldLayout &field, const char *record);

// The record's key 0 as a person writes it.
std::string KeyText(const TableLayout &layout, const char *record);

// -1, 0, 1: how two records stand in the index of a key.
int CompareKeys(const KeyLayout &key, const char *a, const char *b);

// "0/8 + 12/7 mehrfach änderbar": offsets and lengths of a key's segments, and what it allows.
std::string DescribeKey(const KeyLayout &key);

} // namespace tools
