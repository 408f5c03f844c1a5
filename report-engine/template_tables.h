// Reading the tables that templates hand over.
#pragma once

#include "report-engine/report.h"

#include <initializer_list>

namespace rs {

// The number of the style named at `index` of the stack, -1 for none.
int StyleNumber(lua_State *state, const Report &report, int index);

// Raises the error for an entry of the table that is none of those known; with `hasList` it may have a list
// too.
void RefuseUnknownKeys(lua_State *state, int table, std::initializer_list<const char *> known, bool hasList);

// An entry of the table at `table` of the stack, each with an error for what cannot be there. False (or
// `otherwise`) when there is none.

// A text in UTF-8 without control characters apart from line ends.
bool TextEntry(lua_State *state, int table, const char *key, char *out, size_t size);
bool FlagEntry(lua_State *state, int table, const char *key, bool &out);
int32_t IntegerEntry(lua_State *state, int table, const char *key, int32_t otherwise, int32_t lowest,
                     int32_t highest);

// A measure with decimals, in hundredths; `highest` as well.
bool MeasureEntry(lua_State *state, int table, const char *key, int32_t highest, int32_t &out);

// The number of one of the choices.
int ChoiceEntry(lua_State *state, int table, const char *key, std::initializer_list<const char *> choices,
                int otherwise);

} // namespace rs
