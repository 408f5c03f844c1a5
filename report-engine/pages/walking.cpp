#include "report-engine/pages/walking.h"

#include "report-engine/pages/heads.h"
#include "report-engine/pages/rows.h"

#include <cstring>
#include <initializer_list>

namespace rs {

namespace {

void LookAt(Drawing &drawing, const ItemHeader &item)
{
    Search *search = drawing.Searching;
    if (search == nullptr || (search->Found != 0 && !search->WantsLast)) return;
    const int64_t page = drawing.Now.Page;
    if (page < search->First || page > search->Last || page == search->Found) return;
    if (search->Test->Passes(search->Test->Context, *drawing.Def, item)) search->Found = page;
}

bool IsWanted(const Drawing &drawing)
{
    return drawing.Now.Page >= drawing.FirstWanted && drawing.Now.Page <= drawing.LastWanted;
}

void FinishPage(Drawing &drawing)
{
    if (drawing.Walked != Half::whole || drawing.Now.Page == 0 || !IsWanted(drawing)) return;
    if (!drawing.Now.HasHead) DrawHead(drawing);
    ShowBatch(drawing);
    ShowRules(drawing, true);
    ShowRules(drawing, false);
    drawing.Target->EndPage(drawing.Target->Context, drawing.Now.Page);
}

void StartPage(Drawing &drawing, int64_t page)
{
    FinishPage(drawing);
    drawing.Now.Page = page;
    ++drawing.Now.Sheet;
    drawing.Now.HasHead = drawing.Walked == Half::right;
    std::memset(drawing.Now.PageSums, 0, sizeof drawing.Now.PageSums);
    if (drawing.Walked != Half::whole || !IsWanted(drawing)) return;
    drawing.Target->BeginPage(drawing.Target->Context, page);
    cairo_set_source_rgb(drawing.Cairo, 0, 0, 0);
    DrawColumnTitles(drawing);
}

void TakeLine(Line *lines, int &count, const ItemHeader &item)
{
    if (item.IsFirst != 0) count = 0;
    if (count < maxHeadLines) LinePartsOf(reinterpret_cast<const char *>(&item + 1), lines[count++].Parts);
}

// What stands between the row placed last and this place applies from here on.
void ApplyItems(Drawing &drawing, uint64_t until, double y)
{
    while (drawing.Now.Scanned < until) {
        const ItemHeader *item = ItemAt(*drawing.Of, drawing.Now.Scanned);
        if (item == nullptr) return;
        const char *data = reinterpret_cast<const char *>(item + 1);
        if (item->Kind == Item::head || item->Kind == Item::foot) LookAt(drawing, *item);
        switch (item->Kind) {
        case Item::head: TakeLine(drawing.Now.Head, drawing.Now.HeadCount, *item); break;
        case Item::foot: TakeLine(drawing.Now.Foot, drawing.Now.FootCount, *item); break;
        case Item::sheet:
            std::memcpy(&drawing.Now.SheetsBefore, data, sizeof drawing.Now.SheetsBefore);
            break;
        case Item::bookmark: {
            if (!IsWanted(drawing) || (drawing.Walked != Half::whole && !drawing.TellsBookmarks)) break;
            char text[maxTextLength + 1];
            std::memcpy(text, data, item->Count);
            text[item->Count] = 0;
            drawing.Target->Bookmark(drawing.Target->Context, item->Level, text, drawing.Now.Page,
                                     drawing.Left, y);
            break;
        }
        case Item::row:
        case Item::data:
        case Item::about: break;
        }
    }
}

void PlaceCarry(Drawing &drawing, const char *label, const int64_t (&sums)[maxSumColumns], double top)
{
    char text[expandedSize];
    DrawCarry(drawing, Expand(drawing, {label, std::strlen(label)}, text), sums, top);
}

} // namespace

void Place(void *context, Placed what, const LayoutRow *row, int64_t page, int32_t placedTop)
{
    auto &drawing = *static_cast<Drawing *>(context);
    PageState &now = drawing.Now;
    if (page != now.Page) StartPage(drawing, page);
    const bool isDrawn = IsWanted(drawing) && !drawing.TellsBookmarks;
    const double top = drawing.BodyTop + Points(placedTop);
    const CarryRule &carry = drawing.Def->Carry;
    if (what == Placed::again) {
        uint64_t offset = row->Offset;
        const ItemHeader *item = ItemAt(*drawing.Of, offset);
        if (item == nullptr) return;
        isDrawn ? DrawAgain(drawing, *item, top) : LookAt(drawing, *item);
        return;
    }
    if (what != Placed::row && !isDrawn) return;
    switch (what) {
    case Placed::carryUp: PlaceCarry(drawing, carry.Up, now.CarrySums, top); return;
    case Placed::pageSum: PlaceCarry(drawing, carry.PageSum, now.PageSums, top); return;
    case Placed::carryDown: PlaceCarry(drawing, carry.Down, now.CarrySums, top); return;
    case Placed::again:
    case Placed::row: break;
    }
    now.SheetsBefore = -1;
    ApplyItems(drawing, row->Offset, top);
    if ((row->Flags & rowNewPage) != 0 || now.SheetsBefore >= 0) {
        now.Sheet = (now.SheetsBefore >= 0 ? now.SheetsBefore : 0) + 1;
    }
    if (!now.HasHead && isDrawn) DrawHead(drawing);
    if ((row->Flags & rowOpensCarry) != 0) {
        std::memset(now.CarrySums, 0, sizeof now.CarrySums);
        std::memset(now.PageSums, 0, sizeof now.PageSums);
    }
    uint64_t offset = row->Offset;
    const ItemHeader *item = ItemAt(*drawing.Of, offset);
    if (item != nullptr && isDrawn) DrawRow(drawing, *item, top);
    if (item != nullptr && !isDrawn) {
        LookAt(drawing, *item);
        CountRow(drawing, *item);
    }
    now.Scanned = offset;
}

namespace {

// The next row before `end`; false when there is none.
bool NextRow(const Document &document, uint64_t &offset, uint64_t end, LayoutRow &row)
{
    while (offset < end) {
        const uint64_t begin = offset;
        const ItemHeader *item = ItemAt(document, offset);
        if (item == nullptr) return false;
        if (item->Kind != Item::row) continue;
        row = RowOf(*item, begin, *document.Def);
        return true;
    }
    return false;
}

} // namespace

bool LayNextRow(const Document &document, Position &position)
{
    LayoutRow row;
    if (!NextRow(document, position.Offset, document.Size, row)) return false;
    AddRow(position.Laid, row);
    return true;
}

int64_t LayOut(const Document &document, PlaceCall place, void *context)
{
    static Position position; // too large for a stack frame
    position.Offset = document.First;
    StartLayout(position.Laid, *document.Def, place, context);
    while (LayNextRow(document, position)) {
    }
    return EndLayout(position.Laid);
}

namespace {

void SetWalked(Drawing &drawing, Half half)
{
    const Definition &def = *drawing.Def;
    drawing.Walked = half;
    double left = Points(half == Half::right ? def.Left + RowWidth(def) + def.Gap : def.Left);
    drawing.Left = left;
    drawing.Right = left + Points(RowWidth(def));
    for (int i = 0; i < def.ColumnCount; ++i) {
        drawing.Lefts[i] = left;
        left += Points(def.Columns[i].Width);
    }
}

// ---- Halves ----

// Runs the rows of one half through the layout, up to that page.
RowSpot WalkHalf(Drawing &drawing, Half half, PlaceCall place, RowSpot lastSpot, int64_t lastPage)
{
    const Document &document = *drawing.Of;
    const bool isRight = half == Half::right;
    const uint64_t rightAt = document.Def->RightAt;
    const uint64_t end = isRight || rightAt == 0 ? document.Size : rightAt;
    uint64_t offset = isRight ? rightAt : document.First;
    static HalfLayout laid; // too large for a stack frame
    SetWalked(drawing, half);
    drawing.Now = {};
    drawing.Now.Scanned = offset;
    StartHalf(laid, *document.Def, place, &drawing);
    LayoutRow row;
    while (drawing.Now.Page <= lastPage) {
        if (NextRow(document, offset, end, row)) {
            AddRowOfHalf(laid, row);
            continue;
        }
        const RowSpot spot = EndHalf(laid, lastSpot);
        if (place != nullptr && drawing.Now.Page <= lastPage) ApplyItems(drawing, end, drawing.BodyTop);
        return spot;
    }
    return {};
}

bool HasRightHalf(const Drawing &drawing) { return drawing.Def->RightAt != 0; }

void MeasureHalves(Drawing &drawing)
{
    drawing.LastSpot = WalkHalf(drawing, Half::left, nullptr, {}, INT64_MAX);
    if (!HasRightHalf(drawing)) return;
    drawing.LastSpot = LaterOf(drawing.LastSpot, WalkHalf(drawing, Half::right, nullptr, {}, INT64_MAX));
}

} // namespace

void DrawHalvedPage(Drawing &drawing, int64_t page)
{
    drawing.FirstWanted = drawing.LastWanted = page;
    drawing.HasDrawnHead = false;
    drawing.Target->BeginPage(drawing.Target->Context, page);
    cairo_set_source_rgb(drawing.Cairo, 0, 0, 0);
    for (const Half half : {Half::left, Half::right}) {
        if (half == Half::right && !HasRightHalf(drawing)) continue;
        SetWalked(drawing, half);
        DrawColumnTitles(drawing);
        WalkHalf(drawing, half, Place, drawing.LastSpot, page);
        if (half == Half::left && !drawing.HasDrawnHead) {
            drawing.Now.Page = page;
            DrawHead(drawing);
        }
    }
    ShowBatch(drawing);
    ShowRules(drawing, true);
    ShowRules(drawing, false);
    drawing.Target->EndPage(drawing.Target->Context, page);
}

void DrawHalvedPages(Drawing &drawing)
{
    drawing.PageCount = drawing.LastSpot.Page;
    const int64_t first = drawing.FirstWanted;
    const int64_t last = drawing.LastWanted < drawing.PageCount ? drawing.LastWanted : drawing.PageCount;
    // Bookmarks come in the order of the document: all of the left halves, then all of the right ones.
    drawing.LastWanted = last;
    drawing.TellsBookmarks = true;
    WalkHalf(drawing, Half::left, Place, drawing.LastSpot, last);
    if (HasRightHalf(drawing)) WalkHalf(drawing, Half::right, Place, drawing.LastSpot, last);
    drawing.TellsBookmarks = false;
    for (int64_t page = first > 1 ? first : 1; page <= last; ++page) {
        DrawHalvedPage(drawing, page);
    }
}

void SearchHalves(Drawing &drawing, Search &search)
{
    int64_t found = 0;
    for (const Half half : {Half::left, Half::right}) {
        if (half == Half::right && !HasRightHalf(drawing)) continue;
        search.Found = 0;
        WalkHalf(drawing, half, Place, drawing.LastSpot, search.Last);
        const bool isBetter = found == 0 || (search.Found > found) == search.WantsLast;
        if (search.Found != 0 && isBetter) found = search.Found;
    }
    search.Found = found;
}

void StartDrawing(Drawing &drawing, const Document &document)
{
    const Definition &def = *document.Def;
    drawing.Of = &document;
    drawing.Def = &def;
    drawing.Cell = noCell;
    drawing.Now.Scanned = document.First;
    OpenFonts(drawing.Letters, def.Font);
    for (int i = 0; i < def.StyleCount; ++i) {
        drawing.StyleFaces[i] = FaceFor(drawing.Letters, def.Styles[i], def.Styles[i].FontSize);
    }
    drawing.BodyTop = Points(def.Top + HeadHeight(def) + ColumnTitlesHeight(def));
    SetWalked(drawing, Half::whole);
    if (def.Gap > 0) MeasureHalves(drawing);
}

void EndDrawing(Drawing &drawing)
{
    if (drawing.Now.Page == 0) StartPage(drawing, 1);
    ApplyItems(drawing, drawing.Of->Size, drawing.BodyTop);
    FinishPage(drawing);
}

} // namespace rs
