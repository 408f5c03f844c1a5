// What a template declares while it is loaded; bodies for Lua, but for the first two and the last.
#pragma once

#include "report-engine/template.h"

namespace rs {

// The report whose template is being loaded; an error of Lua once it is.
Report &Declaring(lua_State *state, const char *what);

// The page, font and styles that there are before a template says otherwise.
void SetDefaults(lua_State *state, Report &report);

// report, page, style, columns, column, fields and carry: each takes the table that it is called with, and
// raises an error of Lua for what it does not know.
int DeclareReport(lua_State *state);
int DeclarePage(lua_State *state);
int DeclareStyle(lua_State *state);
int DeclareColumns(lua_State *state);
int ChangeColumn(lua_State *state);
int DeclareDataFields(lua_State *state);
int DeclareCarry(lua_State *state);

// A field of a record: text("konto", 0, 8) gives { name, offset, width, form, line }.
int DeclareField(lua_State *state);
int DeclareRecord(lua_State *state);
int DeclareFinish(lua_State *state);

// The number of a field of a kind, -1 for none of that name.
int FieldNamed(lua_State *state, const KindCode &code, const char *name);

} // namespace rs
