// Declarations of records: their fields, levels, rows and functions.
#include "report-engine/template_declarations.h"
#include "report-engine/template_tables.h"

#include <cstring>
#include <initializer_list>

namespace rs {

namespace {

// words("art", 31, { [0] = "Buchung", "Split" }): keeps the list at `table` and returns its number.
int TakeWords(lua_State *state, Report &report, int table)
{
    luaL_checktype(state, table, LUA_TTABLE);
    if (lua_rawlen(state, table) >= maxWords) {
        luaL_error(state, "a field has words for the numbers from 0 to %d", maxWords - 1);
    }
    if (report.WordListCount == maxWordLists) luaL_error(state, "there are too many fields with words");
    WordList &list = report.WordLists[report.WordListCount];
    for (int number = 0; number < maxWords; ++number) {
        lua_rawgeti(state, table, number);
        lua_setfield(state, table, "word");
        TextEntry(state, table, "word", list.Words[number], sizeof list.Words[number]);
    }
    return report.WordListCount++;
}

} // namespace

int DeclareField(lua_State *state)
{
    const auto form = static_cast<FieldForm>(lua_tointeger(state, lua_upvalueindex(1)));
    const lua_Integer fixedWidth = lua_tointeger(state, lua_upvalueindex(2));
    Report &report = Declaring(state, "a field");
    const char *name = luaL_checkstring(state, 1);
    const lua_Integer offset = luaL_checkinteger(state, 2);
    const lua_Integer width = fixedWidth != 0 ? fixedWidth : luaL_checkinteger(state, 3);
    if (name[0] == 0) return luaL_error(state, "a field has a name");
    const int words = form == FieldForm::words ? TakeWords(state, report, 3) : 0;
    if (fixedWidth != 0 && form != FieldForm::words && !lua_isnone(state, 3)) {
        return luaL_error(state, "field '%s': this form is always %d bytes wide", name,
                          static_cast<int>(width));
    }
    if (offset < 0 || offset > 0xFFFF || width < 1 || width > 0xFFFF) {
        return luaL_error(state, "field '%s' lies outside of any record", name);
    }
    lua_Debug frame;
    int line = 0;
    if (lua_getstack(state, 1, &frame) != 0 && lua_getinfo(state, "l", &frame) != 0) line = frame.currentline;
    lua_createtable(state, 6, 0);
    lua_pushvalue(state, 1);
    lua_rawseti(state, -2, 1);
    lua_pushinteger(state, offset);
    lua_rawseti(state, -2, 2);
    lua_pushinteger(state, width);
    lua_rawseti(state, -2, 3);
    lua_pushinteger(state, static_cast<lua_Integer>(form));
    lua_rawseti(state, -2, 4);
    lua_pushinteger(state, line);
    lua_rawseti(state, -2, 5);
    lua_pushinteger(state, words);
    lua_rawseti(state, -2, 6);
    return 1;
}

namespace {

lua_Integer NumberAt(lua_State *state, int table, int index)
{
    lua_rawgeti(state, table, index);
    const lua_Integer value = lua_tointeger(state, -1);
    lua_pop(state, 1);
    return value;
}

void TakeFields(lua_State *state, Report &report, int kind, int table)
{
    KindCode &code = report.Kinds[kind];
    const size_t size = report.Catalogue->RecordSizes[kind];
    lua_newtable(state);
    const int names = lua_gettop(state);
    const lua_Unsigned count = lua_rawlen(state, table);
    if (count > maxFields) luaL_error(state, "a record has at most %d fields", maxFields);
    for (lua_Unsigned i = 1; i <= count; ++i) {
        if (lua_rawgeti(state, table, static_cast<lua_Integer>(i)) != LUA_TTABLE ||
            lua_rawlen(state, -1) < 5) {
            luaL_error(state, "entry %d of the record is no field", static_cast<int>(i));
        }
        const int entry = lua_gettop(state);
        const lua_Integer offset = NumberAt(state, entry, 2);
        const lua_Integer width = NumberAt(state, entry, 3);
        const lua_Integer form = NumberAt(state, entry, 4);
        const auto line = static_cast<int>(NumberAt(state, entry, 5));
        const lua_Integer words = NumberAt(state, entry, 6);
        if (lua_rawgeti(state, entry, 1) != LUA_TSTRING || offset < 0 || offset > 0xFFFF || width < 1 ||
            width > 0xFFFF || form < 0 || form > static_cast<lua_Integer>(FieldForm::words) || words < 0 ||
            words >= maxWordLists) {
            luaL_error(state, "entry %d of the record is no field", static_cast<int>(i));
        }
        if (static_cast<size_t>(offset + width) > size) {
            const char *name = lua_tostring(state, -1);
            // The line of the field itself, not that of the record's first word.
            lua_pushfstring(state, "template:%d: field '%s' ends at byte %d, but records of kind %d have %d",
                            line, name, static_cast<int>(offset + width), kind, static_cast<int>(size));
            lua_error(state);
        }
        lua_rawseti(state, names, static_cast<lua_Integer>(i));
        lua_pop(state, 1);
        code.Fields[i - 1] = {static_cast<uint16_t>(offset), static_cast<uint16_t>(width),
                              static_cast<FieldForm>(form), static_cast<uint8_t>(words)};
    }
    code.FieldCount = static_cast<uint16_t>(count);
    code.FieldNames = luaL_ref(state, LUA_REGISTRYINDEX);
}

// The field that an entry of a list of names means; with `isFalling` there may be a minus before it.
int FieldOfList(lua_State *state, const KindCode &code, int list, lua_Unsigned entry, const char *key,
                bool *isFalling = nullptr)
{
    if (lua_rawgeti(state, list, static_cast<lua_Integer>(entry)) != LUA_TSTRING) {
        luaL_error(state, "'%s' must be a list of fields", key);
    }
    const char *name = lua_tostring(state, -1);
    const bool isTurned = isFalling != nullptr && name[0] == '-';
    if (isFalling != nullptr) *isFalling = isTurned;
    const int found = FieldNamed(state, code, name + (isTurned ? 1 : 0));
    if (found < 0) luaL_error(state, "'%s' names '%s', which is no field of the record", key, name);
    lua_pop(state, 1);
    return found;
}

// order = { "datum", "-betrag" }: fields of the record; what has a minus before it falls.
void TakeOrder(lua_State *state, Report &report, int kind, int table)
{
    const int type = lua_getfield(state, table, "order");
    if (type == LUA_TNIL) {
        lua_pop(state, 1);
        return;
    }
    KindRule &rule = report.Def.Kinds[kind];
    KindCode &code = report.Kinds[kind];
    if (type != LUA_TTABLE) luaL_error(state, "'order' must be a list of fields");
    if (rule.Level != 0 || rule.Closes != 0) {
        luaL_error(state, "'order' is for records that neither open nor close a level");
    }
    const int list = lua_gettop(state);
    const lua_Unsigned count = lua_rawlen(state, list);
    if (count == 0 || count > maxOrderFields) {
        luaL_error(state, "'order' may hold 1 to %d fields", maxOrderFields);
    }
    size_t width = 0;
    for (lua_Unsigned i = 1; i <= count; ++i) {
        bool isFalling = false;
        const int found = FieldOfList(state, code, list, i, "order", &isFalling);
        width += KeyWidth(code.Fields[found]);
        code.Order[code.OrderCount++] = {static_cast<uint16_t>(found), isFalling};
    }
    if (width > maxKeyWidth) {
        luaL_error(state, "the fields of 'order' may have %d bytes together", static_cast<int>(maxKeyWidth));
    }
    code.KeyWidth = static_cast<uint16_t>(width);
    rule.IsOrdered = true;
    lua_pop(state, 1);
}

// changes = { "datum" }: fields of a record that opens a level, without a change in which its function rests.
void TakeChanges(lua_State *state, const KindRule &rule, KindCode &code, int table)
{
    const int type = lua_getfield(state, table, "changes");
    if (type != LUA_TNIL) {
        if (type != LUA_TTABLE) luaL_error(state, "'changes' must be a list of fields");
        if (rule.Level == 0) luaL_error(state, "'changes' is for records that open a level");
        const int list = lua_gettop(state);
        const lua_Unsigned count = lua_rawlen(state, list);
        if (count == 0 || count > maxOrderFields) {
            luaL_error(state, "'changes' may hold 1 to %d fields", maxOrderFields);
        }
        for (lua_Unsigned i = 1; i <= count; ++i) {
            const int field = FieldOfList(state, code, list, i, "changes");
            code.Changes[code.ChangeCount++] = static_cast<uint8_t>(field);
        }
    }
    lua_pop(state, 1);
}

// again = "head": the style of the row that further pages of the group repeat.
void TakeAgain(lua_State *state, const Report &report, KindRule &rule, int table)
{
    if (lua_getfield(state, table, "again") != LUA_TNIL) {
        const int top = lua_gettop(state);
        const int style = lua_type(state, top) == LUA_TSTRING ? StyleNumber(state, report, top) : -1;
        bool isPrinted = false;
        for (int i = 0; i < rule.RowCount; ++i) {
            isPrinted = isPrinted || rule.Rows[i] == style;
        }
        if (!isPrinted) luaL_error(state, "'again' must be one of the styles in 'rows'");
        if (rule.Level == 0) luaL_error(state, "'again' is for records that open a level");
        rule.HasAgain = true;
        rule.Again = static_cast<uint8_t>(style);
    }
    lua_pop(state, 1);
}

// rows = { "line", { "text", 3 }, "sum" } as a list of styles.
uint8_t TakeRows(lua_State *state, const Report &report, int table, uint8_t *rows, int most)
{
    const int type = lua_getfield(state, table, "rows");
    if (type == LUA_TNIL) {
        lua_pop(state, 1);
        return 0;
    }
    if (type != LUA_TTABLE) luaL_error(state, "'rows' must be a list of styles");
    const int list = lua_gettop(state);
    const lua_Unsigned count = lua_rawlen(state, list);
    int written = 0;
    for (lua_Unsigned i = 1; i <= count; ++i) {
        lua_Integer times = 1;
        if (lua_rawgeti(state, list, static_cast<lua_Integer>(i)) == LUA_TTABLE) {
            times = NumberAt(state, lua_gettop(state), 2);
            lua_rawgeti(state, -1, 1);
            lua_remove(state, -2);
        }
        const int style =
            lua_type(state, -1) == LUA_TSTRING ? StyleNumber(state, report, lua_gettop(state)) : -1;
        if (style < 0) luaL_error(state, "entry %d of 'rows' is no style", static_cast<int>(i));
        if (times < 1 || times > most - written) luaL_error(state, "'rows' may hold %d rows", most);
        while (times-- > 0) {
            rows[written++] = static_cast<uint8_t>(style);
        }
        lua_pop(state, 1);
    }
    lua_pop(state, 1);
    return static_cast<uint8_t>(written);
}

int TakeFunction(lua_State *state, int table, const char *key)
{
    const int type = lua_getfield(state, table, key);
    if (type == LUA_TNIL) {
        lua_pop(state, 1);
        return 0;
    }
    if (type != LUA_TFUNCTION) luaL_error(state, "'%s' must be a function", key);
    return luaL_ref(state, LUA_REGISTRYINDEX);
}

// Whether the function `emit` of the table takes the record that opened the group around as well.
bool TakesGroup(lua_State *state, int table)
{
    if (lua_getfield(state, table, "emit") != LUA_TFUNCTION) {
        lua_pop(state, 1);
        return false;
    }
    lua_Debug function;
    return lua_getinfo(state, ">u", &function) != 0 && function.nparams > 1;
}

} // namespace

int FieldNamed(lua_State *state, const KindCode &code, const char *name)
{
    int found = -1;
    lua_rawgeti(state, LUA_REGISTRYINDEX, code.FieldNames);
    for (int i = 0; i < code.FieldCount && found < 0; ++i) {
        lua_rawgeti(state, -1, i + 1);
        if (std::strcmp(lua_tostring(state, -1), name) == 0) found = i;
        lua_pop(state, 1);
    }
    lua_pop(state, 1);
    return found;
}

int DeclareRecord(lua_State *state)
{
    Report &report = Declaring(state, "record(...)");
    const lua_Integer kind = luaL_checkinteger(state, 1);
    luaL_checktype(state, 2, LUA_TTABLE);
    RefuseUnknownKeys(state, 2,
                      {"level", "closes", "newpage", "keep", "beside", "again", "order", "changes", "rows",
                       "emit", "close"},
                      true);
    if (kind < 0 || kind >= kindCount || report.Catalogue->RecordSizes[kind] == 0) {
        return luaL_error(state, "this report has no records of kind %d", static_cast<int>(kind));
    }
    KindRule &rule = report.Def.Kinds[kind];
    if (rule.IsDeclared)
        return luaL_error(state, "kind %d stands here a second time", static_cast<int>(kind));
    rule.IsDeclared = true;
    TakeFields(state, report, static_cast<int>(kind), 2);
    KindCode &code = report.Kinds[kind];
    rule.Level = static_cast<uint8_t>(IntegerEntry(state, 2, "level", 0, 0, maxLevels));
    rule.Closes = static_cast<uint8_t>(IntegerEntry(state, 2, "closes", 0, 0, maxLevels));
    if (rule.Level != 0 && rule.Closes != 0) {
        return luaL_error(state, "'closes' is for records that open no level");
    }
    FlagEntry(state, 2, "newpage", rule.NewPage);
    FlagEntry(state, 2, "keep", rule.Keep);
    if (rule.Level == 0 && (rule.NewPage || rule.Keep)) {
        return luaL_error(state, "'newpage' and 'keep' are for records that open a level");
    }
    FlagEntry(state, 2, "beside", rule.Beside);
    if (rule.Beside && (rule.Level != 1 || report.Def.Gap == 0)) {
        return luaL_error(state, "'beside' is for records that open level 1, on a page with a 'gap'");
    }
    rule.RowCount = TakeRows(state, report, 2, rule.Rows, maxRows);
    TakeAgain(state, report, rule, 2);
    TakeOrder(state, report, static_cast<int>(kind), 2);
    TakeChanges(state, rule, code, 2);
    code.Emit = TakeFunction(state, 2, "emit");
    code.TakesGroup = TakesGroup(state, 2);
    const int type = lua_getfield(state, 2, "close");
    if (type != LUA_TNIL) {
        if (type != LUA_TTABLE) return luaL_error(state, "'close' must be a table");
        const int table = lua_gettop(state);
        RefuseUnknownKeys(state, table, {"rows", "emit"}, false);
        if (rule.Level == 0) return luaL_error(state, "'close' is for records that open a level");
        rule.FootCount = TakeRows(state, report, table, rule.FootRows, maxFootRows);
        code.CloseEmit = TakeFunction(state, table, "emit");
    }
    lua_pop(state, 1);
    return 0;
}

int DeclareFinish(lua_State *state)
{
    Report &report = Declaring(state, "finish{...}");
    luaL_checktype(state, 1, LUA_TTABLE);
    RefuseUnknownKeys(state, 1, {"rows", "emit", "empty"}, false);
    TextEntry(state, 1, "empty", report.Def.Empty, sizeof report.Def.Empty);
    if (report.FinishEmit != 0) return luaL_error(state, "finish{...} stands here a second time");
    report.Def.FinishCount = TakeRows(state, report, 1, report.Def.FinishRows, maxFootRows);
    report.FinishEmit = TakeFunction(state, 1, "emit");
    return 0;
}

} // namespace rs
