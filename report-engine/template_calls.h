// What the parts of the template language share: declarations, printing, running.
#pragma once

#include "report-engine/template.h"

#include <initializer_list>

namespace rs {

// Its address stands for "the sum of this group, when it is known".
extern const char lateSum;

// The kind whose foot closes groups of `level`.
int KindOfLevel(const Definition &def, uint8_t level);

// The calls that print; bodies for Lua.
int PrintRow(lua_State *state);
int AddToSums(lua_State *state);
int PrintHead(lua_State *state);
int PrintFoot(lua_State *state);
int PrintBookmark(lua_State *state);
int PrintSheet(lua_State *state);
int StayOnPage(lua_State *state);
int PrintData(lua_State *state);
int PrintAbout(lua_State *state);
int AmountAsText(lua_State *state);
int TodayAsText(lua_State *state);

// The one row of a report that has none, with the text of finish{empty = ...}.
void PrintEmpty(lua_State *state, Report &report);

} // namespace rs
