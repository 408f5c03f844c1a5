#include "report-engine/template.h"

#include "report-engine/sources.h"
#include "report-engine/template_calls.h"
#include "report-engine/template_declarations.h"
#include "report-engine/template_plain.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace rs {

namespace {

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
    constexpr FormRow forms[] = {
        {"text", FieldForm::text, 0}, {"amount", FieldForm::amount, 13}, {"rate", FieldForm::rate, 6},
        {"date", FieldForm::date, 7}, {"i16", FieldForm::i16, 2},        {"i32", FieldForm::i32, 4},
        {"u32", FieldForm::u32, 4},   {"u8", FieldForm::u8, 1},          {"words", FieldForm::words, 4}};

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

    SetDefaults(state, report);
    return 0;
}

int RunDeclarations(lua_State *state)
{
    auto &report = *static_cast<Report *>(lua_touserdata(state, 1));
    LoadTemplate(state, report.Source, report.SourceLength, nullptr);
    lua_call(state, 0, 0);
    CheckDeclarations(state, report);
    MatchFields(state, report);
    return 0;
}

} // namespace rs
