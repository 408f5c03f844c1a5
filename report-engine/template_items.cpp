#include "report-engine/template_items.h"

#include "host/error_texts.h"
#include "text/windows1252.h"

#include <algorithm>
#include <cstring>

namespace rs {

namespace {

// Whether all of eight bytes are printable ASCII: none below the blank, none above the tilde.
bool IsPrintable(const char *bytes)
{
    constexpr uint64_t each = 0x0101010101010101;
    uint64_t eight = 0;
    std::memcpy(&eight, bytes, sizeof eight);
    return (((eight - each * ' ') | eight | (eight + each)) & (each * 0x80)) == 0;
}

bool IsControl(char32_t character) { return character < ' ' || (character >= 0x7F && character < 0xA0); }

size_t Copy(Report &report, size_t used, const char *bytes, size_t length, bool keepsControls)
{
    constexpr char replacement[3] = {'\xEF', '\xBF', '\xBD'}; // U+FFFD
    char *out = report.ItemData + used;
    size_t written = 0;
    const char *const end = bytes + length;
    while (end - bytes >= 8 && written + 12 <= maxTextLength && IsPrintable(bytes)) { // nearly all of them
        std::memcpy(out + written, bytes, 8);
        written += 8;
        bytes += 8;
    }
    while (bytes < end && written + 4 <= maxTextLength) {
        if (*bytes >= ' ' && *bytes < 0x7F) {
            out[written++] = *bytes++;
            continue;
        }
        const char *const from = bytes;
        const char32_t character = text::NextCodePoint(bytes, end);
        const bool isControl = IsControl(character);
        report.ItemHasControls = report.ItemHasControls || isControl;
        if (isControl && !keepsControls) {
            out[written++] = ' ';
        } else if (character == 0xFFFD) {
            std::memcpy(out + written, replacement, sizeof replacement);
            written += sizeof replacement;
        } else {
            std::memcpy(out + written, from, static_cast<size_t>(bytes - from));
            written += static_cast<size_t>(bytes - from);
        }
    }
    return written;
}

} // namespace

size_t CopyText(Report &report, size_t used, const char *bytes, size_t length)
{
    return Copy(report, used, bytes, length, false);
}

size_t CopyTextAsItIs(Report &report, size_t used, const char *bytes, size_t length)
{
    return Copy(report, used, bytes, length, true);
}

size_t StoreText(Report &report, uint8_t column, const char *bytes, size_t length, size_t used)
{
    const size_t written = CopyTextAsItIs(report, used + sizeof(CellHeader), bytes, length);
    const CellHeader cell = {column, CellKind::text, static_cast<uint16_t>(written)};
    std::memcpy(report.ItemData + used, &cell, sizeof cell);
    return used + sizeof cell + written;
}

size_t StoreNumber(Report &report, uint8_t column, Form form, int64_t value, size_t used)
{
    const CellHeader cell = {column, static_cast<CellKind>(form), sizeof value};
    std::memcpy(report.ItemData + used, &cell, sizeof cell);
    std::memcpy(report.ItemData + used + sizeof cell, &value, sizeof value);
    return used + sizeof cell + sizeof value;
}

void StoreItem(lua_State *state, Report &report, ItemHeader &header)
{
    if (header.Kind != Item::row && ++report.LooseCount > maxLoose) {
        luaL_error(state, "a record may write %d rows of data, bookmarks and lines of heads", maxLoose);
    }
    header.Controls = header.Kind == Item::row && report.ItemHasControls ? 1 : 0;
    report.ItemHasControls = false;
    while (header.Size % itemAlignment != 0) {
        report.ItemData[header.Size++] = 0;
    }
    if (!AppendToSpool(report.Store, &header, sizeof header) ||
        !AppendToSpool(report.Store, report.ItemData, header.Size)) {
        luaL_error(state, "Zwischendatei: %s", host::TextOfError(report.Store.Error).Text);
    }
}

void StoreRow(lua_State *state, Report &report, ItemHeader header, uint8_t style, size_t used)
{
    const LayoutRow row = MarkRow(report.Marker, style, 0);
    header.Kind = Item::row;
    header.Style = row.Style;
    header.Level = row.Level;
    header.Ends = row.Ends;
    header.Flags = row.Flags;
    header.Size = static_cast<uint32_t>(used);
    StoreItem(state, report, header);
    if (report.Def.Gap > 0) {
        AddRowOfHalf(report.Half, row);
    } else {
        AddRow(report.Counted, row);
    }
    for (int level = 0; level <= maxLevels && report.Def.Styles[style].Counts; ++level) {
        if (level == 0 || report.Marker.IsOpen[level]) ++report.Counts[level];
    }
    report.PrintedRows = true;
    report.HasRows = true;
}

void CheckAmount(lua_State *state, lua_Integer amount, const char *column)
{
    if (amount > maxAmount || amount < -maxAmount) {
        luaL_error(state, "an amount in column '%s' grows too large", column);
    }
}

void CountAmount(lua_State *state, Report &report, uint8_t column, int64_t amount)
{
    const Definition &def = report.Def;
    const uint8_t *const sums = def.SumColumns;
    const auto sum = std::find(sums, sums + def.SumCount, column) - sums;
    if (sum == def.SumCount) return;
    for (int level = 0; level <= maxLevels; ++level) {
        if (level > 0 && !report.Marker.IsOpen[level]) continue;
        int64_t &total = report.Sums[level][sum];
        total += amount; // both lie within maxAmount, so this cannot wrap
        if (total > maxAmount || total < -maxAmount) {
            luaL_error(state, "the sum of column '%s' grows too large", def.Columns[column].Name);
        }
    }
}

} // namespace rs
