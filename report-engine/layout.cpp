#include "report-engine/layout.h"

#include <cassert>

namespace rs {

void StartMarker(RowMarker &marker, const Definition &definition)
{
    marker = {};
    marker.Of = &definition;
}

uint8_t NextToClose(const RowMarker &marker, int kind)
{
    int lowest = 1;
    if (kind >= 0) {
        const KindRule &rule = marker.Of->Kinds[kind];
        lowest = rule.Level != 0 ? rule.Level : rule.Closes;
    }
    if (lowest == 0) return 0;
    for (int level = maxLevels; level >= lowest; --level) {
        if (marker.IsOpen[level]) return static_cast<uint8_t>(level);
    }
    return 0;
}

void MarkFoot(RowMarker &marker, uint8_t level)
{
    marker.RecordHasRows = false;
    marker.IsHead = false;
    marker.IsFoot = true;
    marker.AgainOf = 0;
    marker.FootLevel = level;
}

void MarkClosed(RowMarker &marker, uint8_t level, bool hadRows)
{
    marker.IsOpen[level] = false;
    if (marker.Ended == 0 || level < marker.Ended) marker.Ended = level;
    if (marker.KeptLevel == level) marker.KeptLevel = 0;
    const CarryRule &carry = marker.Of->Carry;
    if (carry.IsUsed && carry.Level == level && !hadRows) marker.Coming |= rowEndsCarry;
}

void MarkRecord(RowMarker &marker, int kind)
{
    const KindRule &rule = marker.Of->Kinds[kind];
    marker.RecordHasRows = false;
    marker.IsFoot = false;
    marker.IsHead = rule.Level != 0;
    marker.AgainOf = rule.HasAgain ? static_cast<uint8_t>(kind + 1) : 0;
    if (rule.Level == 0) return;

    marker.IsOpen[rule.Level] = true;
    if (rule.NewPage) marker.Coming |= rowNewPage;
    const CarryRule &carry = marker.Of->Carry;
    if (carry.IsUsed && carry.Level == rule.Level) {
        marker.Coming = static_cast<uint16_t>((marker.Coming & ~rowEndsCarry) | rowOpensCarry);
    }
    if (rule.Keep && marker.KeptLevel == 0) {
        marker.KeptLevel = rule.Level;
        marker.KeptHasRows = false;
    }
}

LayoutRow MarkRow(RowMarker &marker, uint8_t style, uint64_t offset)
{
    LayoutRow row = {offset, marker.Of->Styles[style].Height, marker.Coming, marker.FootLevel, marker.Ended,
                     style};
    marker.Coming = 0;
    marker.Ended = 0;
    if (marker.RecordHasRows) row.Flags |= rowGlued;
    if (marker.IsHead) row.Flags |= rowKeepNext;
    if (marker.IsFoot) row.Flags |= rowFoot;
    if (marker.KeptLevel != 0 && marker.KeptHasRows) row.Flags |= rowInGroup;
    if (marker.Of->Styles[style].Counts) row.Flags |= rowCounts;
    if (!marker.IsFoot) row.Level = 0;
    if (marker.AgainOf != 0 && marker.Of->Kinds[marker.AgainOf - 1].Again == style) {
        row.Flags |= rowAgain;
        row.Level = marker.Of->Kinds[marker.AgainOf - 1].Level;
        marker.AgainOf = 0;
    }
    marker.RecordHasRows = true;
    if (marker.KeptLevel != 0) marker.KeptHasRows = true;
    return row;
}

namespace {

bool HasText(const char *text) { return text[0] != 0; }

// A foot that ends what is carried forward needs no room for carrying on.
bool EndsCarry(const Layout &layout, const LayoutRow &row)
{
    return (row.Flags & rowFoot) != 0 && row.Level <= layout.Of->Carry.Level;
}

int32_t Reserve(const Layout &layout)
{
    if (!layout.Of->Carry.IsUsed) return 0;
    return (HasText(layout.Of->Carry.PageSum) ? layout.CarryHeight : 0) +
           (HasText(layout.Of->Carry.Down) ? layout.CarryHeight : 0);
}

// What a page holds at the least, whatever sums it carries.
int32_t Capacity(const Layout &layout)
{
    return layout.Body - AgainHeight(*layout.Of) - (layout.Of->Carry.IsUsed ? 3 * layout.CarryHeight : 0);
}

void CheckInvariants(const Layout &layout)
{
    assert(layout.Used <= layout.Body);
    assert(!layout.CarryIsOpen || layout.Used + Reserve(layout) <= layout.Body);
    assert(layout.HeldHeight <= Capacity(layout) || layout.HeldCount == 1);
    assert(layout.Pages > 0 || layout.Used == 0);
    static_cast<void>(layout);
}

void Put(Layout &layout, Placed what, const LayoutRow *row, int32_t top)
{
    if (layout.Place != nullptr) layout.Place(layout.Context, what, row, layout.Pages, top);
}

void BeginPage(Layout &layout)
{
    ++layout.Pages;
    layout.Used = 0;
    layout.HasRows = false;
    layout.HasCounted = false;
}

void BreakPage(Layout &layout)
{
    const CarryRule &carry = layout.Of->Carry;
    const bool carries = layout.CarryIsOpen && layout.CarryHasCounted;
    if (carries) {
        int32_t top = layout.Body - Reserve(layout);
        if (HasText(carry.PageSum)) {
            if (layout.HasCounted) Put(layout, Placed::pageSum, nullptr, top);
            top += layout.CarryHeight;
        }
        if (HasText(carry.Down)) Put(layout, Placed::carryDown, nullptr, top);
    }
    BeginPage(layout);
    for (const LayoutRow &heading : layout.Again) {
        if (heading.Height == 0) continue;
        Put(layout, Placed::again, &heading, layout.Used);
        layout.Used += heading.Height;
    }
    if (!carries) return;
    layout.CarryBeganBefore = true;
    if (HasText(carry.Up)) {
        Put(layout, Placed::carryUp, nullptr, layout.Used);
        layout.Used += layout.CarryHeight;
    }
}

// Headings of groups that are over are not repeated any more.
void EndGroups(Layout &layout, uint8_t level)
{
    for (int each = level; each != 0 && each <= maxLevels; ++each) {
        layout.Again[each].Height = 0;
    }
}

// Places rows that stay together, if a page can hold them.
void PlaceBlock(Layout &layout, const LayoutRow *rows, int32_t count)
{
    const CarryRule &carry = layout.Of->Carry;
    if (layout.Pages == 0) {
        BeginPage(layout);
        if (carry.IsUsed && carry.Level == 0) layout.CarryIsOpen = true;
    }
    // Before a page break: it would carry the sums of a group that is over.
    if ((rows[0].Flags & (rowEndsCarry | rowOpensCarry)) != 0) layout.CarryIsOpen = false;
    EndGroups(layout, rows[0].Ends);
    if ((rows[0].Flags & rowNewPage) != 0 && layout.HasRows) BreakPage(layout);

    bool opensCarry = false;
    int32_t height = 0;
    for (int32_t i = 0; i < count; ++i) {
        height += rows[i].Height;
        if ((rows[i].Flags & rowOpensCarry) != 0) opensCarry = true;
    }
    // The sums of the last page stand above those of the whole, unless there is but one page.
    const bool closes = layout.CarryIsOpen && EndsCarry(layout, rows[0]) && HasText(carry.PageSum);
    const bool needsReserve = (layout.CarryIsOpen || opensCarry) && !EndsCarry(layout, rows[count - 1]);
    const int32_t limit = layout.Body - (needsReserve ? Reserve(layout) : 0);
    const int32_t pageSum = closes && layout.CarryBeganBefore && layout.HasCounted ? layout.CarryHeight : 0;
    if (layout.Used + pageSum + height > limit && layout.HasRows) BreakPage(layout);
    if (layout.Used + height > limit && count > 1) { // no page can hold them together
        for (int32_t i = 0; i < count; ++i) {
            PlaceBlock(layout, rows + i, 1);
        }
        return;
    }
    if (closes && layout.CarryBeganBefore && layout.HasCounted) {
        Put(layout, Placed::pageSum, nullptr, layout.Used);
        layout.Used += layout.CarryHeight;
    }
    for (int32_t i = 0; i < count; ++i) {
        const LayoutRow &row = rows[i];
        EndGroups(layout, row.Ends);
        if ((row.Flags & rowEndsCarry) != 0) layout.CarryIsOpen = false;
        if ((row.Flags & rowOpensCarry) != 0) {
            layout.CarryIsOpen = true;
            layout.CarryHasCounted = false;
            layout.CarryBeganBefore = false;
        }
        Put(layout, Placed::row, &row, layout.Used);
        layout.Used += row.Height;
        layout.HasRows = true;
        if ((row.Flags & rowAgain) != 0) layout.Again[row.Level] = row;
        if ((row.Flags & rowCounts) != 0) {
            layout.HasCounted = true;
            layout.CarryHasCounted = true;
        }
        if (layout.CarryIsOpen && EndsCarry(layout, row)) layout.CarryIsOpen = false;
    }
}

// Whether `row` may not be parted from the one before it.
bool StaysWith(const Layout &layout, const LayoutRow &before, const LayoutRow &row)
{
    if ((row.Flags & rowNewPage) != 0) return false;
    if ((row.Flags & rowGlued) != 0 || (before.Flags & rowKeepNext) != 0) return true;
    return (row.Flags & rowInGroup) != 0 && !layout.GroupIsSplit;
}

// Places the blocks of what is held; with `keepLast` not the last one, which may still grow.
void PlaceHeld(Layout &layout, bool keepLast)
{
    int32_t begin = 0;
    for (int32_t i = 1; i <= layout.HeldCount; ++i) {
        if (i < layout.HeldCount && StaysWith(layout, layout.Held[i - 1], layout.Held[i])) continue;
        if (i == layout.HeldCount && keepLast) break;
        PlaceBlock(layout, layout.Held + begin, i - begin);
        begin = i;
    }
    int32_t height = 0;
    for (int32_t i = begin; i < layout.HeldCount; ++i) {
        layout.Held[i - begin] = layout.Held[i];
        height += layout.Held[i - begin].Height;
    }
    layout.HeldCount -= begin;
    layout.HeldHeight = height;
}

} // namespace

void StartLayout(Layout &layout, const Definition &definition, PlaceCall place, void *context)
{
    layout = {};
    layout.Of = &definition;
    layout.Place = place;
    layout.Context = context;
    layout.Body = BodyHeight(definition);
    layout.CarryHeight = definition.Styles[carryStyle].Height;
}

void AddRow(Layout &layout, const LayoutRow &row)
{
    if (layout.HeldCount > 0 && !StaysWith(layout, layout.Held[layout.HeldCount - 1], row)) {
        PlaceHeld(layout, false);
    }
    if ((row.Flags & rowInGroup) == 0) layout.GroupIsSplit = false;
    const bool isFull = layout.HeldCount == maxHeldRows || layout.HeldHeight + row.Height > Capacity(layout);
    if (isFull && layout.HeldCount > 0) {
        // A kept group that no page can hold falls into its records; a record that no page can hold, into
        // rows.
        layout.GroupIsSplit = true;
        PlaceHeld(layout, StaysWith(layout, layout.Held[layout.HeldCount - 1], row));
        if (layout.HeldCount == maxHeldRows || layout.HeldHeight + row.Height > Capacity(layout)) {
            PlaceHeld(layout, false);
        }
    }
    layout.Held[layout.HeldCount++] = row;
    layout.HeldHeight += row.Height;
    CheckInvariants(layout);
}

int64_t EndLayout(Layout &layout)
{
    PlaceHeld(layout, false);
    CheckInvariants(layout);
    if (layout.Pages == 0) BeginPage(layout);
    return layout.Pages;
}

RowSpot LaterOf(RowSpot one, RowSpot other)
{
    const bool isLater = one.Page != other.Page ? one.Page > other.Page : one.Top > other.Top;
    return isLater ? one : other;
}

void StartHalf(HalfLayout &half, const Definition &definition, PlaceCall place, void *context)
{
    StartLayout(half.Laid, definition, place, context);
    half.HasLast = false;
}

void AddRowOfHalf(HalfLayout &half, const LayoutRow &row)
{
    if (half.HasLast) AddRow(half.Laid, half.Last);
    half.Last = row;
    half.HasLast = true;
}

RowSpot EndHalf(HalfLayout &half, RowSpot notBefore)
{
    Layout &layout = half.Laid;
    PlaceHeld(layout, false);
    if (layout.Pages == 0) BeginPage(layout);
    if (!half.HasLast) return {layout.Pages, layout.Used};
    half.HasLast = false;
    if (layout.Used + half.Last.Height > layout.Body && layout.HasRows) BreakPage(layout);
    while (layout.Pages < notBefore.Page) {
        BreakPage(layout);
    }
    const bool isHigher = layout.Pages == notBefore.Page && layout.Used < notBefore.Top;
    if (isHigher && notBefore.Top + half.Last.Height <= layout.Body) layout.Used = notBefore.Top;
    const RowSpot spot = {layout.Pages, layout.Used};
    PlaceBlock(layout, &half.Last, 1);
    CheckInvariants(layout);
    return spot;
}

bool RowsFitPage(const Definition &definition)
{
    const int32_t sums = definition.Carry.IsUsed ? 3 * definition.Styles[carryStyle].Height : 0;
    const int32_t room = BodyHeight(definition) - AgainHeight(definition) - sums;
    for (int i = 0; i < definition.StyleCount; ++i) {
        if (definition.Styles[i].Height > room) return false;
    }
    return true;
}

} // namespace rs
