// What the functions of a template print.
#include "report-engine/template_calls.h"

#include "report-engine/template_items.h"
#include "report-engine/template_tables.h"

#include "report-engine/today.h"
#include "report-engine/values.h"

#include <cstring>
#include <initializer_list>

namespace rs {

const char lateSum = 0;

namespace {

Report &Printing(lua_State *state, const char *what)
{
    auto &report = OwnerOf<Report>(state);
    if (!report.IsPrinting) luaL_error(state, "%s belongs in the function of a record", what);
    return report;
}

// Writes the value on top of the stack as the cell of a column; returns the bytes used so far.
size_t PutCell(lua_State *state, Report &report, uint8_t number, bool counts, size_t used)
{
    const Column &column = report.Def.Columns[number];
    const int type = lua_type(state, -1);
    if (type == LUA_TSTRING) {
        size_t length = 0;
        const char *bytes = lua_tolstring(state, -1, &length);
        return StoreText(report, number, bytes, length, used);
    }
    if (type == LUA_TNUMBER && lua_isinteger(state, -1) != 0 && column.CellForm != Form::text) {
        const lua_Integer value = lua_tointeger(state, -1);
        if (column.CellForm == Form::amount) CheckAmount(state, value, column.Name);
        if (counts && column.IsSum) CountAmount(state, report, number, value);
        return StoreNumber(report, number, column.CellForm, value, used);
    }
    if (type != LUA_TLIGHTUSERDATA || !column.IsSum || report.PrintingLevel == 0) {
        luaL_error(state, "column '%s' cannot take a %s", column.Name,
                   type == LUA_TNUMBER ? "number of this kind" : luaL_typename(state, -1));
    }
    if (IsShown(column)) {
        if (report.LateCount == maxLateCells) luaL_error(state, "there are too many sums in heads");
        LateCell &late = report.Late[report.LateCount++];
        late.Level = report.PrintingLevel;
        late.Offset = SpoolEnd(report.Store) + sizeof(ItemHeader) + used + sizeof(CellHeader);
        for (uint8_t sum = 0; sum < report.Def.SumCount; ++sum) {
            if (report.Def.SumColumns[sum] == number) late.Sum = sum;
        }
    }
    return StoreNumber(report, number, Form::amount, 0, used);
}

// The same for a field of a row of data, which takes true and false as well.
size_t PutDataCell(lua_State *state, Report &report, uint8_t number, size_t used)
{
    const DataField &field = report.Def.DataFields[number];
    const int type = lua_type(state, -1);
    if (type == LUA_TSTRING && field.CellForm == Form::text) {
        size_t length = 0;
        const char *bytes = lua_tolstring(state, -1, &length);
        return StoreText(report, number, bytes, length, used);
    }
    lua_Integer value = 0;
    if (type == LUA_TBOOLEAN && field.CellForm == Form::flag) {
        value = lua_toboolean(state, -1);
    } else if (type == LUA_TNUMBER && lua_isinteger(state, -1) != 0 && field.CellForm != Form::text &&
               field.CellForm != Form::flag) {
        value = lua_tointeger(state, -1);
        if (field.CellForm == Form::amount) CheckAmount(state, value, field.Name);
    } else {
        luaL_error(state, "field '%s' of the data cannot take a %s", field.Name, luaL_typename(state, -1));
    }
    return StoreNumber(report, number, field.CellForm, value, used);
}

} // namespace

int PrintRow(lua_State *state)
{
    Report &report = Printing(state, "row(...)");
    const int style = StyleNumber(state, report, 1);
    if (style < 0) return luaL_error(state, "there is no style '%s'", lua_tostring(state, 1));
    while (report.ExpectedNext < report.ExpectedCount && report.Expected[report.ExpectedNext] != style) {
        ++report.ExpectedNext;
    }
    if (report.ExpectedNext == report.ExpectedCount) {
        return luaL_error(state, "no further row '%s' is declared in 'rows'", lua_tostring(state, 1));
    }
    ++report.ExpectedNext;
    const bool counts = report.Def.Styles[style].Counts;
    ItemHeader header = {};
    size_t used = 0;
    if (lua_type(state, 2) == LUA_TSTRING) {
        size_t length = 0;
        const char *bytes = lua_tolstring(state, 2, &length);
        used = StoreText(report, spanColumn, bytes, length, 0); // across the whole width
        header.Count = 1;
    } else {
        luaL_checktype(state, 2, LUA_TTABLE);
        lua_settop(state, 2);
        lua_rawgeti(state, LUA_REGISTRYINDEX, report.ColumnNames);
        for (uint8_t i = 0; i < report.Def.ColumnCount; ++i) {
            lua_rawgeti(state, 3, i + 1);
            if (lua_rawget(state, 2) != LUA_TNIL) {
                const size_t end = PutCell(state, report, i, counts, used);
                if (IsShown(report.Def.Columns[i])) {
                    used = end;
                    ++header.Count;
                }
            }
            lua_pop(state, 1);
        }
    }
    StoreRow(state, report, header, static_cast<uint8_t>(style), used);
    return 0;
}

// data{ konto = ..., betrag = ... }: a row of data.
int PrintData(lua_State *state)
{
    Report &report = Printing(state, "data{...}");
    luaL_checktype(state, 1, LUA_TTABLE);
    if (report.Def.DataFieldCount == 0) return luaL_error(state, "data{...} needs fields{...}");
    ItemHeader header = {};
    size_t used = 0;
    lua_settop(state, 1);
    lua_rawgeti(state, LUA_REGISTRYINDEX, report.DataNames);
    for (uint8_t i = 0; i < report.Def.DataFieldCount; ++i) {
        lua_rawgeti(state, 2, i + 1);
        if (lua_rawget(state, 1) != LUA_TNIL) {
            used = PutDataCell(state, report, i, used);
            ++header.Count;
        }
        lua_pop(state, 1);
    }
    header.Kind = Item::data;
    header.Size = static_cast<uint32_t>(used);
    StoreItem(state, report, header);
    return 0;
}

namespace {

// The length of a text that was copied behind it; returns the bytes used so far.
size_t PutLength(Report &report, size_t used, size_t length)
{
    const auto written = static_cast<uint16_t>(length);
    std::memcpy(report.ItemData + used, &written, sizeof written);
    return used + sizeof written + written;
}

} // namespace

// about{ { "mandant", r.mandant }, ... }: what every row of a file is about, from here on.
int PrintAbout(lua_State *state)
{
    Report &report = Printing(state, "about{...}");
    luaL_checktype(state, 1, LUA_TTABLE);
    const auto count = lua_rawlen(state, 1);
    if (count > maxAbout) return luaL_error(state, "about{...} may hold %d texts", maxAbout);
    ItemHeader header = {};
    size_t used = 0;
    for (lua_Unsigned i = 1; i <= count; ++i) {
        if (lua_rawgeti(state, 1, static_cast<lua_Integer>(i)) != LUA_TTABLE) {
            return luaL_error(state, "about{...} is a list of { name, text }");
        }
        for (int part = 1; part <= 2; ++part) {
            if (lua_rawgeti(state, -part, part) != LUA_TSTRING) {
                return luaL_error(state, "about{...} is a list of { name, text }");
            }
            size_t length = 0;
            const char *bytes = lua_tolstring(state, -1, &length);
            used = PutLength(report, used, CopyTextAsItIs(report, used + sizeof(uint16_t), bytes, length));
        }
        lua_pop(state, 3);
        ++header.Count;
    }
    header.Kind = Item::about;
    header.Size = static_cast<uint32_t>(used);
    StoreItem(state, report, header);
    return 0;
}

// add{ betrag = x }: into the sums without a row.
int AddToSums(lua_State *state)
{
    Report &report = Printing(state, "add{...}");
    luaL_checktype(state, 1, LUA_TTABLE);
    for (int sum = 0; sum < report.Def.SumCount; ++sum) {
        const uint8_t number = report.Def.SumColumns[sum];
        const Column &column = report.Def.Columns[number];
        lua_pushstring(state, column.Name);
        const int type = lua_rawget(state, 1);
        if (type != LUA_TNIL) {
            if (lua_isinteger(state, -1) == 0) return luaL_error(state, "'%s' is no amount", column.Name);
            const lua_Integer amount = lua_tointeger(state, -1);
            CheckAmount(state, amount, column.Name);
            CountAmount(state, report, number, amount);
        }
        lua_pop(state, 1);
    }
    return 0;
}

namespace {

constexpr lua_Unsigned maxPartTexts = 8;

// The part of a line that stands on top of the stack: a text, or several, of which the empty ones are left
// out. Returns the bytes used so far.
size_t PutPart(lua_State *state, Report &report, const char *key, size_t used)
{
    const int type = lua_type(state, -1);
    size_t length = 0;
    const char *bytes = type == LUA_TSTRING ? lua_tolstring(state, -1, &length) : "";
    if (type != LUA_TTABLE) {
        if (type != LUA_TNIL && type != LUA_TSTRING) luaL_error(state, "'%s' must be a text", key);
        return PutLength(report, used, CopyText(report, used + sizeof(uint16_t), bytes, length));
    }
    const int list = lua_gettop(state);
    const lua_Unsigned count = lua_rawlen(state, list);
    if (count > maxPartTexts)
        luaL_error(state, "'%s' may hold %d texts", key, static_cast<int>(maxPartTexts));
    constexpr char separator[] = " \u00B7 ";
    size_t written = 0;
    for (lua_Unsigned i = 1; i <= count; ++i) {
        if (lua_rawgeti(state, list, static_cast<lua_Integer>(i)) != LUA_TSTRING) {
            luaL_error(state, "'%s' must be a text or a list of texts", key);
        }
        bytes = lua_tolstring(state, -1, &length);
        const auto append = [&](const char *text, size_t size) {
            written += CopyText(report, used + sizeof(uint16_t) + written, text, size);
        };
        if (length > 0 && written > 0) append(separator, sizeof separator - 1);
        append(bytes, length);
        lua_pop(state, 1);
    }
    return PutLength(report, used, written);
}

int PrintLine(lua_State *state, Item kind)
{
    const bool isHead = kind == Item::head;
    Report &report = Printing(state, isHead ? "head{...}" : "foot{...}");
    luaL_checktype(state, 1, LUA_TTABLE);
    RefuseUnknownKeys(state, 1, {"left", "center", "right"}, false);
    uint8_t &printed = isHead ? report.HeadLinesPrinted : report.FootLinesPrinted;
    if (printed == (isHead ? report.Def.HeadLines : report.Def.FootLines)) {
        return luaL_error(state, "page{...} allows %d lines here", printed);
    }
    size_t used = 0;
    for (const char *key : {"left", "center", "right"}) {
        lua_getfield(state, 1, key);
        used = PutPart(state, report, key, used);
        lua_pop(state, 1);
    }
    ItemHeader header = {};
    header.Kind = kind;
    header.IsFirst = printed == 0 ? 1 : 0;
    header.Size = static_cast<uint32_t>(used);
    ++printed;
    StoreItem(state, report, header);
    return 0;
}

} // namespace

int PrintHead(lua_State *state) { return PrintLine(state, Item::head); }

int PrintFoot(lua_State *state) { return PrintLine(state, Item::foot); }

int PrintBookmark(lua_State *state)
{
    Report &report = Printing(state, "bookmark(...)");
    size_t length = 0;
    const char *bytes = luaL_checklstring(state, 1, &length);
    ItemHeader header = {};
    header.Kind = Item::bookmark;
    for (int level = 1; level <= maxLevels; ++level) {
        const bool isOwn = level == report.PrintingLevel;
        if (report.Marker.IsOpen[level] && !isOwn) ++header.Level;
    }
    header.Count = static_cast<uint16_t>(CopyText(report, 0, bytes, length));
    header.Size = header.Count;
    if (header.Count > 0 && report.Bookmarks++ < maxBookmarks) StoreItem(state, report, header);
    return 0;
}

int PrintSheet(lua_State *state)
{
    Report &report = Printing(state, "sheet(...)");
    const lua_Integer before = luaL_checkinteger(state, 1);
    if (before < 0 || before > 1'000'000) return luaL_error(state, "a sheet number lies from 0 to 1000000");
    const auto number = static_cast<int32_t>(before);
    std::memcpy(report.ItemData, &number, sizeof number);
    ItemHeader header = {};
    header.Kind = Item::sheet;
    header.Size = sizeof number;
    StoreItem(state, report, header);
    return 0;
}

int StayOnPage(lua_State *state)
{
    Report &report = Printing(state, "samepage()");
    report.Marker.Coming = static_cast<uint16_t>(report.Marker.Coming & ~rowNewPage);
    return 0;
}

void PrintEmpty(lua_State *state, Report &report)
{
    ItemHeader header = {};
    header.Count = 1;
    const char *empty = report.Def.Empty;
    StoreRow(state, report, header, textStyle, StoreText(report, spanColumn, empty, std::strlen(empty), 0));
}

int AmountAsText(lua_State *state)
{
    char out[amountSize];
    lua_pushlstring(state, out, WriteHundredths(luaL_checkinteger(state, 1), Look::grouped, out));
    return 1;
}

int TodayAsText(lua_State *state)
{
    char out[16];
    TodayText(out);
    lua_pushstring(state, out);
    return 1;
}

} // namespace rs
