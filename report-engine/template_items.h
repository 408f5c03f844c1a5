// What templates print, as items of the spool. Whatever fails raises an error of Lua.
#pragma once

#include "report-engine/report.h"

namespace rs {

// Copies a text into the item at `used`: proper UTF-8, blanks for control characters, cut at maxTextLength.
// Returns the bytes copied.
size_t CopyText(Report &report, size_t used, const char *bytes, size_t length);
// The same with its control characters: programs take texts as they are in the books.
size_t CopyTextAsItIs(Report &report, size_t used, const char *bytes, size_t length);

// Writes a text, or a number, into the item as the cell of a column; returns the bytes used so far.
size_t StoreText(Report &report, uint8_t column, const char *bytes, size_t length, size_t used);
size_t StoreNumber(Report &report, uint8_t column, Form form, int64_t value, size_t used);

// Ends the item: what ItemData holds goes to the spool.
void StoreItem(lua_State *state, Report &report, ItemHeader &header);

// The same for a row, which is marked, laid out and counted.
void StoreRow(lua_State *state, Report &report, ItemHeader header, uint8_t style, size_t used);

// Refuses an amount that is too large; `column` names it.
void CheckAmount(lua_State *state, lua_Integer amount, const char *column);

// Adds an amount to the sums of the report and of every open group.
void CountAmount(lua_State *state, Report &report, uint8_t column, int64_t amount);

} // namespace rs
