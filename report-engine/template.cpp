#include "report-engine/sources.h"
#include "report-engine/template_calls.h"
#include "report-engine/template_tables.h"

#include "text/windows1252.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <initializer_list>

namespace rs {

namespace {

Report &Declaring(lua_State *state, const char *what)
{
    auto &report = OwnerOf<Report>(state);
    if (report.State != ReportState::declaring) {
        luaL_error(state, "%s belongs at the top of the template, not in a function", what);
    }
    return report;
}

// ---- Declarations ----

int DeclareReport(lua_State *state)
{
    Report &report = Declaring(state, "report{...}");
    luaL_checktype(state, 1, LUA_TTABLE);
    RefuseUnknownKeys(state, 1, {"id", "title"}, false);
    if (report.Def.ReportId[0] != 0) return luaL_error(state, "report{...} stands here a second time");
    char id[sizeof report.Def.ReportId];
    if (!TextEntry(state, 1, "id", id, sizeof id)) return luaL_error(state, "'id' is missing");
    if (std::strcmp(id, report.Catalogue->Id) != 0) {
        return luaL_error(state, "this is a template for '%s', not for '%s'", id, report.Catalogue->Id);
    }
    std::memcpy(report.Def.ReportId, id, sizeof id);
    if (!TextEntry(state, 1, "title", report.Def.Title, sizeof report.Def.Title)) {
        return luaL_error(state, "'title' is missing");
    }
    return 0;
}

constexpr const char *builtInNames[builtInStyles] = {"line",  "text",  "head",     "sum",     "total",
                                                     "carry", "title", "subtitle", "columns", "foot"};

void NameStyle(lua_State *state, Report &report, int number, const char *name)
{
    Style &style = report.Def.Styles[number];
    const size_t length = strnlen(name, sizeof style.Name - 1);
    std::memcpy(style.Name, name, length);
    style.Name[length] = 0;
    lua_rawgeti(state, LUA_REGISTRYINDEX, report.StyleNames);
    lua_pushinteger(state, number);
    lua_setfield(state, -2, style.Name);
    lua_pop(state, 1);
}

// The styles that every template has, in proportion to its font size.
void SetBuiltInStyles(Report &report)
{
    const int32_t size = report.Def.FontSize;
    const int32_t height = size * 48 / 100; // 1.36 lines of type, in hundredths of a millimetre
    Style *styles = report.Def.Styles;
    for (int i = 0; i < builtInStyles; ++i) {
        Style &style = styles[i];
        const Rule none = Rule::none;
        style.Height = height;
        style.FontSize = size;
        style.Above = style.Below = none;
        style.Role = static_cast<uint8_t>(i <= totalStyle ? i : textStyle);
    }
    styles[lineStyle].Counts = true;
    styles[lineStyle].Below = Rule::hair;
    styles[headStyle].Bold = true;
    styles[headStyle].Height = height * 13 / 10;
    styles[sumStyle].Bold = true;
    styles[sumStyle].Above = Rule::line;
    styles[sumStyle].Height = height * 12 / 10;
    styles[totalStyle].Bold = true;
    styles[totalStyle].Above = Rule::line;
    styles[totalStyle].Below = Rule::twofold;
    styles[totalStyle].Height = height * 13 / 10;
    styles[carryStyle].Italic = true;
    styles[carryStyle].Above = Rule::hair;
    styles[carryStyle].Height = height * 11 / 10;
    styles[titleStyle].Bold = true;
    styles[titleStyle].FontSize = size * 14 / 10;
    styles[titleStyle].Height = height * 15 / 10;
    styles[subtitleStyle].Height = height * 11 / 10;
    styles[columnStyle].Bold = true;
    styles[footStyle].FontSize = size * 9 / 10;
}

int DeclarePage(lua_State *state)
{
    Report &report = Declaring(state, "page{...}");
    luaL_checktype(state, 1, LUA_TTABLE);
    RefuseUnknownKeys(state, 1, {"size", "landscape", "margins", "gap", "font", "fontsize", "head", "foot"},
                      false);
    if (report.HasPage) return luaL_error(state, "page{...} stands here a second time");
    if (report.HasColumns || report.Def.StyleCount > builtInStyles) {
        return luaL_error(state, "page{...} comes before styles, columns and records");
    }
    report.HasPage = true;
    Definition &page = report.Def;
    const bool isA3 = ChoiceEntry(state, 1, "size", {"A4", "A3"}, 0) == 1;
    bool isLandscape = false;
    FlagEntry(state, 1, "landscape", isLandscape);
    const int32_t narrow = isA3 ? 29700 : 21000;
    const int32_t wide = isA3 ? 42000 : 29700;
    page.PageWidth = isLandscape ? wide : narrow;
    page.PageHeight = isLandscape ? narrow : wide;
    const int type = lua_getfield(state, 1, "margins");
    if (type != LUA_TNIL) {
        if (type != LUA_TTABLE) return luaL_error(state, "'margins' must be a table");
        const int table = lua_gettop(state);
        RefuseUnknownKeys(state, table, {"top", "right", "bottom", "left"}, false);
        constexpr int32_t widest = 10000;
        MeasureEntry(state, table, "top", widest, page.Top);
        MeasureEntry(state, table, "right", widest, page.Right);
        MeasureEntry(state, table, "bottom", widest, page.Bottom);
        MeasureEntry(state, table, "left", widest, page.Left);
    }
    lua_pop(state, 1);
    MeasureEntry(state, 1, "gap", 5000, page.Gap);
    TextEntry(state, 1, "font", page.Font, sizeof page.Font);
    MeasureEntry(state, 1, "fontsize", 2400, page.FontSize);
    if (page.FontSize < 400) return luaL_error(state, "'fontsize' must be a number from 4 to 24");
    page.HeadLines = static_cast<uint8_t>(IntegerEntry(state, 1, "head", page.HeadLines, 0, maxHeadLines));
    page.FootLines = static_cast<uint8_t>(IntegerEntry(state, 1, "foot", page.FootLines, 0, maxHeadLines));
    SetBuiltInStyles(report);
    if (BodyHeight(page) < 2000) return luaL_error(state, "the margins leave no room for rows");
    return 0;
}

int DeclareStyle(lua_State *state)
{
    Report &report = Declaring(state, "style(...)");
    const char *name = luaL_checkstring(state, 1);
    luaL_checktype(state, 2, LUA_TTABLE);
    RefuseUnknownKeys(
        state, 2, {"like", "height", "size", "indent", "bold", "italic", "above", "below", "shade", "counts"},
        false);
    int number = StyleNumber(state, report, 1);
    if (number < 0) {
        if (report.Def.StyleCount == maxStyles) return luaL_error(state, "there are too many styles");
        if (name[0] == 0 || std::strlen(name) >= sizeof Style::Name) {
            return luaL_error(state, "a style's name has 1 to %d bytes",
                              static_cast<int>(sizeof Style::Name) - 1);
        }
        number = report.Def.StyleCount++;
        report.Def.Styles[number] = report.Def.Styles[textStyle];
        NameStyle(state, report, number, name);
    }
    Style &style = report.Def.Styles[number];
    if (lua_getfield(state, 2, "like") != LUA_TNIL) {
        const int model = StyleNumber(state, report, lua_gettop(state));
        if (model < 0) return luaL_error(state, "there is no style '%s'", lua_tostring(state, -1));
        const Style renamed = style;
        style = report.Def.Styles[model];
        std::memcpy(style.Name, renamed.Name, sizeof style.Name);
    }
    lua_pop(state, 1);
    MeasureEntry(state, 2, "height", 10000, style.Height);
    if (style.Height < minRowHeight) return luaL_error(state, "'height' must be a number from 2.5 to 100");
    MeasureEntry(state, 2, "size", 4800, style.FontSize);
    if (style.FontSize < 400) return luaL_error(state, "'size' must be a number from 4 to 48");
    MeasureEntry(state, 2, "indent", 10000, style.Indent);
    FlagEntry(state, 2, "bold", style.Bold);
    FlagEntry(state, 2, "italic", style.Italic);
    FlagEntry(state, 2, "counts", style.Counts);
    const std::initializer_list<const char *> rules = {"none", "hair", "line", "double"};
    style.Above = static_cast<Rule>(ChoiceEntry(state, 2, "above", rules, static_cast<int>(style.Above)));
    style.Below = static_cast<Rule>(ChoiceEntry(state, 2, "below", rules, static_cast<int>(style.Below)));
    style.Shade = static_cast<uint8_t>(IntegerEntry(state, 2, "shade", style.Shade, 0, 100));
    return 0;
}

constexpr int32_t minColumnWidth = 100;

void CheckTitle(lua_State *state, const Column &column)
{
    if (TitleLines(column.Title) <= 4) return;
    luaL_error(state, "the title of column '%s' has more than four lines", column.Name);
}

void CheckWidths(lua_State *state, const Definition &def)
{
    int32_t width = 0;
    for (int i = 0; i < def.ColumnCount; ++i) {
        width += def.Columns[i].Width;
    }
    const int32_t room = RowWidth(def);
    if (width > room) luaL_error(state, "the columns take %d mm of %d mm", (width + 99) / 100, room / 100);
}

void DeclareColumn(lua_State *state, Report &report, int table, Column &column)
{
    RefuseUnknownKeys(state, table, {"form", "align", "group", "heading", "sum", "zero"}, true);
    lua_rawgeti(state, table, 1);
    lua_setfield(state, table, "name");
    lua_rawgeti(state, table, 2);
    lua_setfield(state, table, "title");
    lua_rawgeti(state, table, 3);
    lua_setfield(state, table, "width");
    if (!TextEntry(state, table, "name", column.Name, sizeof column.Name) || column.Name[0] == 0) {
        luaL_error(state, "a column begins with its name");
    }
    if (!TextEntry(state, table, "title", column.Title, sizeof column.Title)) {
        luaL_error(state, "column '%s' has no title", column.Name);
    }
    if (!MeasureEntry(state, table, "width", 42000, column.Width) ||
        (IsShown(column) && column.Width < minColumnWidth)) {
        luaL_error(state, "column '%s' has no width", column.Name);
    }
    column.CellForm =
        static_cast<Form>(ChoiceEntry(state, table, "form", {"text", "amount", "rate", "number"}, 0));
    column.CellAlign = static_cast<Align>(ChoiceEntry(state, table, "align", {"left", "center", "right"},
                                                      column.CellForm == Form::text ? 0 : 2));
    TextEntry(state, table, "group", column.Group, sizeof column.Group);
    TextEntry(state, table, "heading", column.Heading, sizeof column.Heading);
    FlagEntry(state, table, "sum", column.IsSum);
    column.BlankZero = ChoiceEntry(state, table, "zero", {"show", "blank"}, 0) == 1;
    Definition &def = report.Def;
    if (column.IsSum) {
        if (column.CellForm != Form::amount)
            luaL_error(state, "column '%s' holds no amounts to sum", column.Name);
        if (def.SumCount == maxSumColumns) luaL_error(state, "there are too many columns with sums");
        def.SumColumns[def.SumCount++] = static_cast<uint8_t>(&column - def.Columns);
    }
    if (column.Group[0] != 0) def.HasColumnGroups = true;
    CheckTitle(state, column);
    const auto lines = static_cast<uint8_t>(TitleLines(column.Title));
    if (lines > def.ColumnTitleLines) def.ColumnTitleLines = lines;
    for (const Column *other = def.Columns; other != &column; ++other) {
        if (std::strcmp(other->Name, column.Name) == 0) {
            luaL_error(state, "there are two columns '%s'", column.Name);
        }
    }
}

int DeclareColumns(lua_State *state)
{
    Report &report = Declaring(state, "columns{...}");
    luaL_checktype(state, 1, LUA_TTABLE);
    RefuseUnknownKeys(state, 1, {}, true);
    if (report.HasColumns) return luaL_error(state, "columns{...} stands here a second time");
    report.HasColumns = true;
    const auto count = lua_rawlen(state, 1);
    if (count > maxColumns) return luaL_error(state, "there are too many columns");
    lua_rawgeti(state, LUA_REGISTRYINDEX, report.ColumnNames);
    for (lua_Unsigned i = 0; i < count; ++i) {
        if (lua_rawgeti(state, 1, static_cast<lua_Integer>(i + 1)) != LUA_TTABLE) {
            return luaL_error(state, "a column is a table: { name, title, width, ... }");
        }
        Column &column = report.Def.Columns[i];
        DeclareColumn(state, report, lua_gettop(state), column);
        lua_pop(state, 1);
        lua_pushstring(state, column.Name);
        lua_rawseti(state, -2, static_cast<lua_Integer>(i + 1));
        ++report.Def.ColumnCount;
    }
    CheckWidths(state, report.Def);
    return 0;
}

int ColumnNumber(const Definition &def, const char *name)
{
    for (int i = 0; i < def.ColumnCount; ++i) {
        if (std::strcmp(def.Columns[i].Name, name) == 0) return i;
    }
    return -1;
}

// column(name, { ... }): a column as the header makes it, before anything is printed.
int ChangeColumn(lua_State *state)
{
    auto &report = OwnerOf<Report>(state);
    if (!report.IsPrinting || report.PrintingKind != 0 || report.HasRows) {
        return luaL_error(state, "column(...) belongs in the function of the header, before its rows");
    }
    const int number = ColumnNumber(report.Def, luaL_checkstring(state, 1));
    if (number < 0) return luaL_error(state, "there is no column '%s'", lua_tostring(state, 1));
    luaL_checktype(state, 2, LUA_TTABLE);
    RefuseUnknownKeys(state, 2, {"title", "group", "heading", "width"}, false);
    Column changed = report.Def.Columns[number];
    TextEntry(state, 2, "title", changed.Title, sizeof changed.Title);
    TextEntry(state, 2, "heading", changed.Heading, sizeof changed.Heading);
    MeasureEntry(state, 2, "width", 42000, changed.Width);
    if (IsShown(changed) && changed.Width < minColumnWidth) {
        return luaL_error(state, "column '%s' has no width", changed.Name);
    }
    if (TextEntry(state, 2, "group", changed.Group, sizeof changed.Group) && changed.Group[0] != 0 &&
        !report.Def.HasColumnGroups) {
        return luaL_error(state, "columns{...} declares no groups");
    }
    // How high the titles are is settled: pages may have been counted by it.
    if (TitleLines(changed.Title) > report.Def.ColumnTitleLines) {
        return luaL_error(state, "columns{...} declares %d lines of titles", report.Def.ColumnTitleLines);
    }
    report.Def.Columns[number] = changed;
    CheckWidths(state, report.Def);
    return 0;
}

// fields { { name, heading, form = ... }, ... }: what a row of data holds.
int DeclareDataFields(lua_State *state)
{
    Report &report = Declaring(state, "fields{...}");
    luaL_checktype(state, 1, LUA_TTABLE);
    RefuseUnknownKeys(state, 1, {}, true);
    Definition &def = report.Def;
    if (def.DataFieldCount > 0) return luaL_error(state, "fields{...} stands here a second time");
    const auto count = lua_rawlen(state, 1);
    if (count == 0 || count > maxDataFields) {
        return luaL_error(state, "a row of data has 1 to %d fields", maxDataFields);
    }
    lua_rawgeti(state, LUA_REGISTRYINDEX, report.DataNames);
    const int names = lua_gettop(state);
    for (lua_Unsigned i = 0; i < count; ++i) {
        if (lua_rawgeti(state, 1, static_cast<lua_Integer>(i + 1)) != LUA_TTABLE) {
            return luaL_error(state, "a field of data is a table: { name, heading, ... }");
        }
        const int table = lua_gettop(state);
        RefuseUnknownKeys(state, table, {"form"}, true);
        DataField &field = def.DataFields[i];
        lua_rawgeti(state, table, 1);
        lua_setfield(state, table, "name");
        lua_rawgeti(state, table, 2);
        lua_setfield(state, table, "heading");
        if (!TextEntry(state, table, "name", field.Name, sizeof field.Name) || field.Name[0] == 0) {
            return luaL_error(state, "a field of data begins with its name");
        }
        if (!TextEntry(state, table, "heading", field.Heading, sizeof field.Heading)) {
            return luaL_error(state, "field '%s' has no heading", field.Name);
        }
        field.CellForm = static_cast<Form>(
            ChoiceEntry(state, table, "form", {"text", "amount", "rate", "number", "flag"}, 0));
        for (lua_Unsigned other = 0; other < i; ++other) {
            if (std::strcmp(def.DataFields[other].Name, field.Name) == 0) {
                return luaL_error(state, "there are two fields '%s'", field.Name);
            }
        }
        lua_pop(state, 1);
        lua_pushstring(state, field.Name);
        lua_rawseti(state, names, static_cast<lua_Integer>(i + 1));
        ++def.DataFieldCount;
    }
    return 0;
}

int DeclareCarry(lua_State *state)
{
    Report &report = Declaring(state, "carry{...}");
    luaL_checktype(state, 1, LUA_TTABLE);
    RefuseUnknownKeys(state, 1, {"level", "column", "pagesum", "down", "up"}, false);
    if (!report.HasColumns) return luaL_error(state, "carry{...} comes after columns{...}");
    CarryRule &carry = report.Def.Carry;
    if (carry.IsUsed) return luaL_error(state, "carry{...} stands here a second time");
    carry.IsUsed = true;
    carry.Level = static_cast<uint8_t>(IntegerEntry(state, 1, "level", 0, 0, maxLevels));
    char name[sizeof Column::Name];
    if (TextEntry(state, 1, "column", name, sizeof name)) {
        const int column = ColumnNumber(report.Def, name);
        if (column < 0) return luaL_error(state, "there is no column '%s'", name);
        carry.Column = static_cast<uint8_t>(column);
    }
    TextEntry(state, 1, "pagesum", carry.PageSum, sizeof carry.PageSum);
    TextEntry(state, 1, "down", carry.Down, sizeof carry.Down);
    TextEntry(state, 1, "up", carry.Up, sizeof carry.Up);
    return 0;
}

// ---- Fields of records: text("konto", 0, 8) gives { name, offset, width, form, line } ----

int DeclareField(lua_State *state)
{
    const auto form = static_cast<FieldForm>(lua_tointeger(state, lua_upvalueindex(1)));
    const lua_Integer fixedWidth = lua_tointeger(state, lua_upvalueindex(2));
    Declaring(state, "a field");
    const char *name = luaL_checkstring(state, 1);
    const lua_Integer offset = luaL_checkinteger(state, 2);
    const lua_Integer width = fixedWidth != 0 ? fixedWidth : luaL_checkinteger(state, 3);
    if (name[0] == 0) return luaL_error(state, "a field has a name");
    if (fixedWidth != 0 && !lua_isnone(state, 3)) {
        return luaL_error(state, "field '%s': this form is always %d bytes wide", name,
                          static_cast<int>(width));
    }
    if (offset < 0 || offset > 0xFFFF || width < 1 || width > 0xFFFF) {
        return luaL_error(state, "field '%s' lies outside of any record", name);
    }
    lua_Debug frame;
    int line = 0;
    if (lua_getstack(state, 1, &frame) != 0 && lua_getinfo(state, "l", &frame) != 0) line = frame.currentline;
    lua_createtable(state, 5, 0);
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
    return 1;
}

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
            lua_rawlen(state, -1) != 5) {
            luaL_error(state, "entry %d of the record is no field", static_cast<int>(i));
        }
        const int entry = lua_gettop(state);
        const lua_Integer offset = NumberAt(state, entry, 2);
        const lua_Integer width = NumberAt(state, entry, 3);
        const lua_Integer form = NumberAt(state, entry, 4);
        const auto line = static_cast<int>(NumberAt(state, entry, 5));
        if (lua_rawgeti(state, entry, 1) != LUA_TSTRING || offset < 0 || offset > 0xFFFF || width < 1 ||
            width > 0xFFFF || form < 0 || form > static_cast<lua_Integer>(FieldForm::u8)) {
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
                              static_cast<FieldForm>(form)};
    }
    code.FieldCount = static_cast<uint16_t>(count);
    code.FieldNames = luaL_ref(state, LUA_REGISTRYINDEX);
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
    lua_rawgeti(state, LUA_REGISTRYINDEX, code.FieldNames);
    const int names = lua_gettop(state);
    size_t width = 0;
    for (lua_Unsigned i = 0; i < count; ++i) {
        if (lua_rawgeti(state, list, static_cast<lua_Integer>(i + 1)) != LUA_TSTRING) {
            luaL_error(state, "'order' must be a list of fields");
        }
        const char *name = lua_tostring(state, -1);
        const bool isFalling = name[0] == '-';
        int found = -1;
        for (int field = 0; field < code.FieldCount && found < 0; ++field) {
            lua_rawgeti(state, names, field + 1);
            if (std::strcmp(lua_tostring(state, -1), name + (isFalling ? 1 : 0)) == 0) found = field;
            lua_pop(state, 1);
        }
        if (found < 0) luaL_error(state, "'order' names '%s', which is no field of the record", name);
        width += KeyWidth(code.Fields[found]);
        code.Order[code.OrderCount++] = {static_cast<uint16_t>(found), isFalling};
        lua_pop(state, 1);
    }
    if (width > maxKeyWidth) {
        luaL_error(state, "the fields of 'order' may have %d bytes together", static_cast<int>(maxKeyWidth));
    }
    code.KeyWidth = static_cast<uint16_t>(width);
    rule.IsOrdered = true;
    lua_pop(state, 2);
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

int DeclareRecord(lua_State *state)
{
    Report &report = Declaring(state, "record(...)");
    const lua_Integer kind = luaL_checkinteger(state, 1);
    luaL_checktype(state, 2, LUA_TTABLE);
    RefuseUnknownKeys(
        state, 2, {"level", "closes", "newpage", "keep", "beside", "again", "order", "rows", "emit", "close"},
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
    code.Emit = TakeFunction(state, 2, "emit");
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

void CheckDeclarations(lua_State *state, const Report &report)
{
    const Definition &def = report.Def;
    if (def.ReportId[0] == 0) luaL_error(state, "report{...} is missing");
    if (BodyHeight(def) < 2000 || !RowsFitPage(def)) luaL_error(state, "the page is too low for its rows");
    // Sums of a page, and rows that close the report, belong to neither half.
    if (def.Gap > 0 && (def.Carry.IsUsed || def.FinishCount > 0)) {
        luaL_error(state, "a page with a 'gap' has no 'carry', and 'finish' no rows");
    }
    for (int kind = 0; kind < kindCount; ++kind) {
        const KindRule &rule = def.Kinds[kind];
        if (rule.Level == 0) continue;
        const KindRule &owner = def.Kinds[KindOfLevel(def, rule.Level)];
        if (rule.FootCount > 0 && &rule != &owner) {
            luaL_error(state, "two kinds of level %d have a 'close' of their own", rule.Level);
        }
    }
}

// share(name): runs the file NAME.lua beside the template, in the same environment, and returns what it
// returns.
int ShareFile(lua_State *state)
{
    Report &report = Declaring(state, "share(name)");
    const char *name = luaL_checkstring(state, 1);
    const size_t length = std::strlen(name);
    constexpr size_t longestName = 40;
    if (length == 0 || length > longestName ||
        std::strspn(name, "abcdefghijklmnopqrstuvwxyz0123456789_") != length) {
        return luaL_error(state, "a shared file has a name of up to 40 small letters, digits and '_'");
    }
    if (++report.SharesUsed > maxShared) return luaL_error(state, "share(name) is called too often");
    char fileName[48];
    std::snprintf(fileName, sizeof fileName, "%s.lua", name);
    const SharedSource *shared = SharedSourceOf(report, fileName);
    if (shared == nullptr) return luaL_error(state, "%s: %s", name, strerrordesc_np(errno));
    LoadTemplate(state, shared->Source, shared->Length, shared->Name);
    lua_call(state, 0, 1);
    return 1;
}

} // namespace

int OfferFunctions(lua_State *state)
{
    constexpr luaL_Reg functions[] = {{"report", DeclareReport},
                                      {"page", DeclarePage},
                                      {"style", DeclareStyle},
                                      {"columns", DeclareColumns},
                                      {"carry", DeclareCarry},
                                      {"record", DeclareRecord},
                                      {"finish", DeclareFinish},
                                      {"row", PrintRow},
                                      {"add", AddToSums},
                                      {"head", PrintHead},
                                      {"foot", PrintFoot},
                                      {"bookmark", PrintBookmark},
                                      {"share", ShareFile},
                                      {"sheet", PrintSheet},
                                      {"samepage", StayOnPage},
                                      {"money", AmountAsText},
                                      {"today", TodayAsText},
                                      {"column", ChangeColumn},
                                      {"fields", DeclareDataFields},
                                      {"data", PrintData},
                                      {"about", PrintAbout},
                                      {nullptr, nullptr}};
    struct FormRow {
        const char *Name;
        FieldForm Form;
        int Width; // 0: the template says
    };
    constexpr FormRow forms[] = {{"text", FieldForm::text, 0}, {"amount", FieldForm::amount, 13},
                                 {"rate", FieldForm::rate, 6}, {"date", FieldForm::date, 7},
                                 {"i16", FieldForm::i16, 2},   {"i32", FieldForm::i32, 4},
                                 {"u32", FieldForm::u32, 4},   {"u8", FieldForm::u8, 1}};

    auto &report = *static_cast<Report *>(lua_touserdata(state, 1));
    lua_pushglobaltable(state);
    luaL_setfuncs(state, functions, 0);
    for (const FormRow &form : forms) {
        lua_pushinteger(state, static_cast<lua_Integer>(form.Form));
        lua_pushinteger(state, form.Width);
        lua_pushcclosure(state, DeclareField, 2);
        lua_setfield(state, -2, form.Name);
    }
    lua_pushlightuserdata(state, const_cast<char *>(&lateSum));
    lua_setfield(state, -2, "groupsum");
    lua_newtable(state);
    report.StyleNames = luaL_ref(state, LUA_REGISTRYINDEX);
    lua_newtable(state);
    report.ColumnNames = luaL_ref(state, LUA_REGISTRYINDEX);
    lua_newtable(state);
    report.DataNames = luaL_ref(state, LUA_REGISTRYINDEX);

    Definition &def = report.Def;
    def.PageWidth = 21000;
    def.PageHeight = 29700;
    def.Top = def.Right = def.Bottom = 1000;
    def.Left = 2000; // room for the punch
    def.FontSize = 900;
    def.HeadLines = 2;
    std::memcpy(def.Font, "Roboto", sizeof "Roboto");
    def.StyleCount = builtInStyles;
    for (int i = 0; i < builtInStyles; ++i) {
        NameStyle(state, report, i, builtInNames[i]);
    }
    SetBuiltInStyles(report);
    return 0;
}

int RunDeclarations(lua_State *state)
{
    auto &report = *static_cast<Report *>(lua_touserdata(state, 1));
    LoadTemplate(state, report.Source, report.SourceLength, nullptr);
    lua_call(state, 0, 0);
    CheckDeclarations(state, report);
    return 0;
}

} // namespace rs
