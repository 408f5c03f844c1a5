// Plain records: those with rows and without a function print themselves, and cost no Lua. Each column and
// each field of data takes the field of its own name; what the record lacks, the record that opened the group
// around it lends to every row of data and to the first printed row of the group.
#pragma once

#include "report-engine/template.h"

namespace rs {

// Finds the fields that go to columns and to fields of data by themselves. Raises the error for one that its
// column cannot take. Called when everything is declared.
void MatchFields(lua_State *state, Report &report);

// Keeps a record that opens a group, for what it lends. False where none of the fields in whose changes alone
// its function is called differs from the record of its kind that was kept before.
bool KeepOpener(lua_State *state, Report &report, const RecordCall &call);

// The group around a record that opens none itself; null for none.
OpenGroup *GroupAround(Report &report, int kind);

// Prints a record without a function: nothing without rows. An error is one of Lua.
void PrintPlain(lua_State *state, Report &report, const RecordCall &call);

} // namespace rs
