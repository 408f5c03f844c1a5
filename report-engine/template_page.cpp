// Declarations of the report itself: its page, styles, columns, data fields and carry.
#include "report-engine/template_declarations.h"
#include "report-engine/template_tables.h"

#include <cmath>
#include <cstring>
#include <initializer_list>

namespace rs {

Report &Declaring(lua_State *state, const char *what)
{
    auto &report = OwnerOf<Report>(state);
    if (report.State != ReportState::declaring) {
        luaL_error(state, "%s belongs at the top of the template, not in a function", what);
    }
    return report;
}

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

namespace {

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

} // namespace

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

namespace {

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

} // namespace

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

namespace {

int ColumnNumber(const Definition &def, const char *name)
{
    for (int i = 0; i < def.ColumnCount; ++i) {
        if (std::strcmp(def.Columns[i].Name, name) == 0) return i;
    }
    return -1;
}

} // namespace

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

void SetDefaults(lua_State *state, Report &report)
{
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
}

} // namespace rs
