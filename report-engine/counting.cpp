#include "report-engine/counting.h"

#include <algorithm>
#include <array> // std::begin
#include <cstdlib>

namespace rs {

namespace {

void CountRows(RowMarker &marker, Layout &layout, const uint8_t *styles, int count)
{
    for (int i = 0; i < count; ++i) {
        AddRow(layout, MarkRow(marker, styles[i], 0));
    }
}

// The rows that close a level, as those of the first of its kinds that has any.
void CountFoot(RowMarker &marker, Layout &layout, uint8_t level)
{
    const Definition &def = *marker.Of;
    MarkFoot(marker, level);
    uint8_t rows = 0;
    for (const KindRule &rule : def.Kinds) {
        if (rule.IsDeclared && rule.Level == level && rule.FootCount > 0) {
            CountRows(marker, layout, rule.FootRows, rule.FootCount);
            rows = rule.FootCount;
            break;
        }
    }
    MarkClosed(marker, level, rows > 0);
}

void CountRecord(RowMarker &marker, Layout &layout, int kind)
{
    while (const uint8_t level = NextToClose(marker, kind)) {
        CountFoot(marker, layout, level);
    }
    MarkRecord(marker, kind);
    CountRows(marker, layout, marker.Of->Kinds[kind].Rows, marker.Of->Kinds[kind].RowCount);
}

bool IsSameRow(const LayoutRow &a, const LayoutRow &b)
{
    return a.Height == b.Height && a.Flags == b.Flags && a.Level == b.Level && a.Ends == b.Ends &&
           a.Style == b.Style;
}

bool IsSameHeight(const LayoutRow &a, const LayoutRow &b) { return a.Height == b.Height; }

// Whether two positions lead to the same pages from there on, however many came before.
bool IsSame(const RowMarker &a, const Layout &x, const RowMarker &b, const Layout &y)
{
    return x.Used == y.Used && x.HeldCount == y.HeldCount && x.HeldHeight == y.HeldHeight &&
           (x.Pages == 0) == (y.Pages == 0) && x.HasRows == y.HasRows && x.HasCounted == y.HasCounted &&
           x.CarryIsOpen == y.CarryIsOpen && x.CarryHasCounted == y.CarryHasCounted &&
           x.CarryBeganBefore == y.CarryBeganBefore && x.GroupIsSplit == y.GroupIsSplit &&
           a.Coming == b.Coming && a.Ended == b.Ended && a.KeptLevel == b.KeptLevel &&
           a.KeptHasRows == b.KeptHasRows && std::equal(a.IsOpen, std::end(a.IsOpen), b.IsOpen) &&
           std::equal(x.Again, std::end(x.Again), y.Again, IsSameHeight) &&
           std::equal(x.Held, x.Held + x.HeldCount, y.Held, IsSameRow);
}

} // namespace

CountingReport *CreateCountingReport(const CatalogueRow *catalogue, const Definition &definition)
{
    auto *report = static_cast<CountingReport *>(std::calloc(1, sizeof(CountingReport)));
    if (report == nullptr) return nullptr;
    pthread_mutex_init(&report->Lock, nullptr);
    report->Catalogue = catalogue;
    report->Def = definition;
    StartMarker(report->Marker, report->Def);
    StartLayout(report->Pages, report->Def, nullptr, nullptr);
    return report;
}

void DestroyCountingReport(CountingReport *report)
{
    pthread_mutex_destroy(&report->Lock);
    std::free(report);
}

bool CountRecords(CountingReport &report, int kind, int32_t count)
{
    if (kind < 0 || kind >= kindCount || report.Catalogue->RecordSizes[kind] == 0 || count < 0) return false;
    if (!report.Def.Kinds[kind].IsDeclared) return true;
    // One position is kept and compared with each later one; it moves on at 1, 2, 4, 8 ... records, so a
    // cycle of any length is found (as Brent finds it).
    RowMarker anchorMarker = report.Marker;
    Layout anchor = report.Pages;
    int32_t sinceAnchor = 0;
    int32_t nextAnchor = 1;
    for (int32_t left = count; left > 0;) {
        CountRecord(report.Marker, report.Pages, kind);
        --left;
        ++sinceAnchor;
        if (IsSame(report.Marker, report.Pages, anchorMarker, anchor)) {
            const int64_t pages = report.Pages.Pages - anchor.Pages;
            report.Pages.Pages += left / sinceAnchor * pages;
            left %= sinceAnchor;
            while (left-- > 0) {
                CountRecord(report.Marker, report.Pages, kind);
            }
            return true;
        }
        if (sinceAnchor == nextAnchor) {
            anchorMarker = report.Marker;
            anchor = report.Pages;
            sinceAnchor = 0;
            nextAnchor *= 2;
        }
    }
    return true;
}

int32_t CountedPages(const CountingReport &report)
{
    RowMarker marker = report.Marker;
    Layout layout = report.Pages;
    while (const uint8_t level = NextToClose(marker, -1)) {
        CountFoot(marker, layout, level);
    }
    MarkFoot(marker, 0);
    const bool isEmpty = layout.Pages == 0 && layout.HeldCount == 0;
    if (isEmpty && report.Def.Empty[0] != 0) {
        AddRow(layout, MarkRow(marker, textStyle, 0));
    } else {
        CountRows(marker, layout, report.Def.FinishRows, report.Def.FinishCount);
    }
    const int64_t pages = EndLayout(layout);
    return pages > INT32_MAX ? INT32_MAX : static_cast<int32_t>(pages);
}

} // namespace rs
