#include "report-engine/template_plain.h"

#include "report-engine/template_declarations.h"
#include "report-engine/template_items.h"

#include <algorithm>
#include <cstring>

namespace rs {

namespace {

Form FormOf(FieldForm form)
{
    switch (form) {
    case FieldForm::text:
    case FieldForm::date:
    case FieldForm::words: return Form::text;
    case FieldForm::amount: return Form::amount;
    case FieldForm::rate: return Form::rate;
    default: return Form::number;
    }
}

bool IsPlain(const Report &report, int kind)
{
    return report.Def.Kinds[kind].RowCount > 0 && report.Kinds[kind].Emit == 0;
}

// The field for a column or a field of data of this name and form, -1 for none.
int8_t FieldFor(lua_State *state, const KindCode &code, const char *name, Form form)
{
    const int found = FieldNamed(state, code, name);
    if (found >= 0 && FormOf(code.Fields[found].Form) != form) {
        luaL_error(state, "field '%s' is of another form than what takes it by its name", name);
    }
    return static_cast<int8_t>(found);
}

// A record and the fields of it that go to columns: the one that prints itself, or the one that lends.
struct Source {
    const KindCode *Code;
    const char *Record; // null for none
};

constexpr Source noSource = {nullptr, nullptr};

// The value for a column: the record's own, else the lender's. `fields` is the list of fields by column.
template <size_t Count>
FieldValue ValueFor(const Report &report, const Source &own, const Source &lender,
                    int8_t (KindCode::*fields)[Count], size_t column, FieldText &room)
{
    for (const Source &source : {own, lender}) {
        if (source.Record == nullptr || (source.Code->*fields)[column] < 0) continue;
        const Field &field = source.Code->Fields[(source.Code->*fields)[column]];
        return ReadField(field, source.Record, report.WordLists, room);
    }
    return {ValueKind::none, nullptr, 0, 0};
}

void PrintPlainData(lua_State *state, Report &report, const Source &own, const Source &lender)
{
    FieldText room;
    ItemHeader header = {};
    size_t used = 0;
    for (uint8_t i = 0; i < report.Def.DataFieldCount; ++i) {
        const FieldValue value = ValueFor(report, own, lender, &KindCode::DataFields, i, room);
        if (value.Kind == ValueKind::none) continue;
        used = value.Kind == ValueKind::text
                   ? StoreText(report, i, value.Text, value.Length, used)
                   : StoreNumber(report, i, report.Def.DataFields[i].CellForm, value.Number, used);
        ++header.Count;
    }
    header.Kind = Item::data;
    header.Size = static_cast<uint32_t>(used);
    StoreItem(state, report, header);
}

void PrintPlainRow(lua_State *state, Report &report, const Source &own, const Source &lender, uint8_t style)
{
    const Definition &def = report.Def;
    FieldText room;
    ItemHeader header = {};
    size_t used = 0;
    for (uint8_t i = 0; i < def.ColumnCount; ++i) {
        const Column &column = def.Columns[i];
        const FieldValue value = ValueFor(report, own, lender, &KindCode::ColumnFields, i, room);
        if (value.Kind == ValueKind::none) continue;
        if (column.IsSum && def.Styles[style].Counts) CountAmount(state, report, i, value.Number);
        if (!IsShown(column)) continue;
        used = value.Kind == ValueKind::text ? StoreText(report, i, value.Text, value.Length, used)
                                             : StoreNumber(report, i, column.CellForm, value.Number, used);
        ++header.Count;
    }
    StoreRow(state, report, header, style, used);
}

} // namespace

void MatchFields(lua_State *state, Report &report)
{
    const Definition &def = report.Def;
    bool lends = false; // there are records that take what others lend
    for (int kind = 0; kind < kindCount; ++kind) {
        lends = lends || (IsPlain(report, kind) && def.Kinds[kind].Level == 0);
    }
    for (int kind = 0; kind < kindCount; ++kind) {
        KindCode &code = report.Kinds[kind];
        std::ranges::fill(code.ColumnFields, int8_t{-1});
        std::ranges::fill(code.DataFields, int8_t{-1});
        if (!IsPlain(report, kind) && !(lends && def.Kinds[kind].Level != 0)) continue;
        for (int i = 0; i < def.ColumnCount; ++i) {
            const Column &column = def.Columns[i];
            code.ColumnFields[i] = FieldFor(state, code, column.Name, column.CellForm);
        }
        for (int i = 0; i < def.DataFieldCount; ++i) {
            const DataField &field = def.DataFields[i];
            code.DataFields[i] = FieldFor(state, code, field.Name, field.CellForm);
        }
    }
}

OpenGroup *GroupAround(Report &report, int kind)
{
    if (report.Def.Kinds[kind].Level != 0) return nullptr;
    for (int level = maxLevels; level > 0; --level) {
        if (report.Marker.IsOpen[level]) return &report.Groups[level];
    }
    return nullptr;
}

namespace {

bool HasChanged(const KindCode &code, const char *record, const char *before)
{
    for (int i = 0; i < code.ChangeCount; ++i) {
        const Field &field = code.Fields[code.Changes[i]];
        const char *const now = record + field.Offset;
        const char *const then = before + field.Offset;
        const bool isText = field.Form <= FieldForm::date; // what ends with its NUL
        if ((isText ? std::strncmp(now, then, field.Width) : std::memcmp(now, then, field.Width)) != 0)
            return true;
    }
    return code.ChangeCount == 0;
}

} // namespace

bool KeepOpener(lua_State *state, Report &report, const RecordCall &call)
{
    OpenGroup &group = report.Groups[report.Def.Kinds[call.Kind].Level];
    const bool isCompared = group.IsKept && group.Kind == call.Kind;
    const bool hasChanged = !isCompared || HasChanged(report.Kinds[call.Kind], call.Record, group.Record);
    if (group.Fields != 0) luaL_unref(state, LUA_REGISTRYINDEX, group.Fields);
    group.IsKept = true;
    group.Kind = static_cast<uint8_t>(call.Kind);
    group.HasLent = false;
    group.Fields = 0;
    std::memcpy(group.Record, call.Record, report.Catalogue->RecordSizes[call.Kind]);
    return hasChanged;
}

void PrintPlain(lua_State *state, Report &report, const RecordCall &call)
{
    if (!IsPlain(report, call.Kind)) return;
    const KindRule &rule = report.Def.Kinds[call.Kind];
    OpenGroup *const group = GroupAround(report, call.Kind);
    const Source own = {&report.Kinds[call.Kind], call.Record};
    const Source lender = group != nullptr ? Source{&report.Kinds[group->Kind], group->Record} : noSource;
    if (report.Def.DataFieldCount > 0 && rule.Level == 0) PrintPlainData(state, report, own, lender);
    for (int i = 0; i < rule.RowCount; ++i) {
        const bool isLent = group != nullptr && !group->HasLent;
        if (group != nullptr) group->HasLent = true;
        PrintPlainRow(state, report, own, isLent ? lender : noSource, rule.Rows[i]);
    }
}

} // namespace rs
