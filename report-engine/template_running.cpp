// How the functions of a template are run, record by record.
#include "host/error_texts.h"
#include "report-engine/template_calls.h"
#include "report-engine/template_plain.h"

#include <algorithm>
#include <cstring>

namespace rs {

namespace {

void BeginPrinting(Report &report, int kind, uint8_t level, const uint8_t *rows, uint8_t count)
{
    report.IsPrinting = true;
    report.PrintingKind = kind;
    report.PrintingLevel = level;
    report.Expected = rows;
    report.ExpectedCount = count;
    report.ExpectedNext = 0;
    report.PrintedRows = false;
    report.HeadLinesPrinted = 0;
    report.FootLinesPrinted = 0;
    report.LooseCount = 0;
}

void PushSums(lua_State *state, const Report &report, uint8_t level)
{
    const Definition &def = report.Def;
    lua_createtable(state, 0, def.SumCount + 1);
    for (int sum = 0; sum < def.SumCount; ++sum) {
        lua_pushinteger(state, report.Sums[level][sum]);
        lua_setfield(state, -2, def.Columns[def.SumColumns[sum]].Name);
    }
    lua_pushinteger(state, report.Counts[level]);
    lua_setfield(state, -2, "count");
}

void FillLateCells(lua_State *state, Report &report, uint8_t level)
{
    int left = 0;
    for (int i = 0; i < report.LateCount; ++i) {
        const LateCell late = report.Late[i];
        if (late.Level != level) {
            report.Late[left++] = late;
            continue;
        }
        const int64_t sum = report.Sums[level][late.Sum];
        if (!PatchSpool(report.Store, late.Offset, &sum, sizeof sum)) {
            luaL_error(state, "Zwischendatei: %s", host::TextOfError(report.Store.Error).Text);
        }
    }
    report.LateCount = left;
}

} // namespace

// Which kind opened a level is not kept: the foot of a level is that of the first kind which opens it. Kinds
// that share a level share its foot.
int KindOfLevel(const Definition &def, uint8_t level)
{
    int found = -1;
    for (int kind = 0; kind < kindCount; ++kind) {
        const KindRule &rule = def.Kinds[kind];
        if (rule.Level != level || !rule.IsDeclared) continue;
        if (found < 0 || (rule.FootCount > 0 && def.Kinds[found].FootCount == 0)) found = kind;
    }
    return found;
}

namespace {

void CloseLevels(lua_State *state, Report &report, int kind)
{
    while (const uint8_t level = NextToClose(report.Marker, kind)) {
        const int opener = KindOfLevel(report.Def, level);
        const KindRule &rule = report.Def.Kinds[opener];
        MarkFoot(report.Marker, level);
        BeginPrinting(report, kind, 0, rule.FootRows, rule.FootCount);
        if (report.Kinds[opener].CloseEmit != 0) {
            lua_rawgeti(state, LUA_REGISTRYINDEX, report.Kinds[opener].CloseEmit);
            PushSums(state, report, level);
            lua_call(state, 1, 0);
        }
        FillLateCells(state, report, level);
        MarkClosed(report.Marker, level, report.PrintedRows);
        std::memset(report.Sums[level], 0, sizeof report.Sums[level]);
        report.Counts[level] = 0;
    }
}

void PushField(lua_State *state, const Report &report, const Field &field, const char *record)
{
    FieldText room;
    const FieldValue value = ReadField(field, record, report.WordLists, room);
    switch (value.Kind) {
    case ValueKind::text: lua_pushlstring(state, value.Text, value.Length); return;
    case ValueKind::number: lua_pushinteger(state, value.Number); return;
    case ValueKind::none: lua_pushnil(state); return;
    }
}

void PushRecord(lua_State *state, const Report &report, int kind, const char *record)
{
    const KindCode &code = report.Kinds[kind];
    // A table that grows is built anew: there is room for what a row of data takes besides.
    const bool hasRows = report.Def.Kinds[kind].RowCount > 0;
    const int room = hasRows ? std::max<int>(code.FieldCount, report.Def.DataFieldCount) : code.FieldCount;
    lua_createtable(state, 0, room);
    lua_rawgeti(state, LUA_REGISTRYINDEX, code.FieldNames);
    for (int i = 0; i < code.FieldCount; ++i) {
        lua_rawgeti(state, -1, i + 1);
        PushField(state, report, code.Fields[i], record);
        lua_rawset(state, -4);
    }
    lua_pop(state, 1);
}

// The record that opened the group around one of `kind`: the same table for all records of the group.
void PushGroup(lua_State *state, Report &report, int kind)
{
    OpenGroup *const group = GroupAround(report, kind);
    if (group == nullptr) {
        lua_pushnil(state);
        return;
    }
    if (group->Fields == 0) {
        PushRecord(state, report, group->Kind, group->Record);
        group->Fields = luaL_ref(state, LUA_REGISTRYINDEX);
    }
    lua_rawgeti(state, LUA_REGISTRYINDEX, group->Fields);
}

// The second group of its kind goes to the right halves, which begin on the first page again.
void GoBeside(Report &report)
{
    if (report.HasLeft && report.Def.RightAt == 0) {
        report.Def.RightAt = SpoolEnd(report.Store);
        report.LeftEnd = EndHalf(report.Half, {});
        StartHalf(report.Half, report.Def, nullptr, nullptr);
        report.Marker.Coming = static_cast<uint16_t>(report.Marker.Coming & ~rowNewPage);
    }
    report.HasLeft = true;
}

} // namespace

int RunRecord(lua_State *state)
{
    const auto &call = *static_cast<const RecordCall *>(lua_touserdata(state, 1));
    Report &report = *call.To;
    const KindRule &rule = report.Def.Kinds[call.Kind];
    const KindCode &code = report.Kinds[call.Kind];
    CloseLevels(state, report, call.Kind);
    MarkRecord(report.Marker, call.Kind);
    if (rule.Beside) GoBeside(report);
    BeginPrinting(report, call.Kind, rule.Level, rule.Rows, rule.RowCount);
    const bool hasChanged = rule.Level == 0 || KeepOpener(state, report, call);
    if (code.Emit == 0) {
        PrintPlain(state, report, call);
        return 0;
    }
    if (!hasChanged) return 0;
    lua_rawgeti(state, LUA_REGISTRYINDEX, code.Emit);
    PushRecord(state, report, call.Kind, call.Record);
    if (code.TakesGroup) PushGroup(state, report, call.Kind);
    lua_call(state, code.TakesGroup ? 2 : 1, 0);
    return 0;
}

int RunFinish(lua_State *state)
{
    auto &report = *static_cast<Report *>(lua_touserdata(state, 1));
    CloseLevels(state, report, -1);
    MarkFoot(report.Marker, 0);
    BeginPrinting(report, -1, 0, report.Def.FinishRows, report.Def.FinishCount);
    if (!report.HasRows && report.Def.Empty[0] != 0) {
        PrintEmpty(state, report);
        return 0;
    }
    if (report.FinishEmit == 0) return 0;
    lua_rawgeti(state, LUA_REGISTRYINDEX, report.FinishEmit);
    PushSums(state, report, 0);
    lua_call(state, 1, 0);
    return 0;
}

} // namespace rs
