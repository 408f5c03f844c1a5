// How the functions of a template are run, record by record.
#include "report-engine/template_calls.h"
#include "report-engine/values.h"
#include "text/windows1252.h"

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
            luaL_error(state, "temporary file: %s", strerrordesc_np(report.Store.Error));
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

void PushTextField(lua_State *state, const char *field, size_t width)
{
    constexpr size_t most = 1024;
    char bytes[most + 1];
    char utf8[3 * most + 1];
    size_t length = 0;
    unsigned all = 0;
    for (const size_t end = width < most ? width : most; length < end && field[length] != 0; ++length) {
        all |= static_cast<unsigned char>(field[length]);
    }
    if (all < 0x80) {
        lua_pushlstring(state, field, length);
        return;
    }
    std::memcpy(bytes, field, length);
    bytes[length] = 0;
    lua_pushlstring(state, utf8, text::ToUtf8(bytes, utf8, sizeof utf8));
}

void PushField(lua_State *state, const Field &field, const char *record)
{
    const char *from = record + field.Offset;
    switch (field.Form) {
    case FieldForm::text: PushTextField(state, from, field.Width); return;
    case FieldForm::amount: lua_pushinteger(state, PfennigOf(from)); return;
    case FieldForm::rate: {
        int64_t hundredths = 0;
        if (HundredthsOf(from, hundredths)) {
            lua_pushinteger(state, hundredths);
        } else {
            lua_pushnil(state);
        }
        return;
    }
    case FieldForm::date: {
        char text[16];
        DateText(from, text);
        PushTextField(state, text, sizeof text);
        return;
    }
    case FieldForm::i16: lua_pushinteger(state, NumberFrom<int16_t>(from)); return;
    case FieldForm::i32: lua_pushinteger(state, NumberFrom<int32_t>(from)); return;
    case FieldForm::u32: lua_pushinteger(state, NumberFrom<uint32_t>(from)); return;
    case FieldForm::u8: lua_pushinteger(state, NumberFrom<uint8_t>(from)); return;
    }
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
    if (code.Emit == 0) return 0;
    lua_rawgeti(state, LUA_REGISTRYINDEX, code.Emit);
    // A table that grows is built anew: there is room for what a row of data takes besides.
    const int room =
        rule.RowCount > 0 ? std::max<int>(code.FieldCount, report.Def.DataFieldCount) : code.FieldCount;
    lua_createtable(state, 0, room);
    lua_rawgeti(state, LUA_REGISTRYINDEX, code.FieldNames);
    for (int i = 0; i < code.FieldCount; ++i) {
        lua_rawgeti(state, -1, i + 1);
        PushField(state, code.Fields[i], call.Record);
        lua_rawset(state, -4);
    }
    lua_pop(state, 1);
    lua_call(state, 1, 0);
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
