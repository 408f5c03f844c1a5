#include "report-engine/pages/draw.h"

#include "report-engine/values.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <sys/mman.h>
#include <sys/stat.h>

namespace rs {

namespace {

constexpr double pointsPerUnit = 72.0 / 2540.0; // of a hundredth of a millimetre
constexpr double gutter = 5;                    // points kept free between two columns
constexpr size_t maxBatch = 4096;
constexpr size_t maxBatchText = 4 * maxBatch;
constexpr size_t maxRules = 512;

constexpr double Points(int32_t hundredths_mm) { return hundredths_mm * pointsPerUnit; }

struct Line {
    LinePart Parts[3];
};

struct RuleBatch {
    size_t Count;
    struct {
        double Left;
        double Right;
        double Y;
    } Lines[maxRules];
};

// What changes from page to page.
struct PageState {
    int64_t Page; // in hand, 0 before the first
    int64_t Sheet;
    int32_t SheetsBefore;
    bool HasHead; // drawn on this page

    uint64_t Scanned; // items up to here apply
    Line Head[maxHeadLines];
    Line Foot[maxHeadLines];
    int HeadCount;
    int FootCount;

    int64_t CarrySums[maxSumColumns];
    int64_t PageSums[maxSumColumns];
};

// What a walk goes over.
enum class Half : uint8_t { whole, left, right };

// A walk over pages for the first or last one that has what is looked for.
struct Search {
    const ItemTest *Test;
    int64_t First;
    int64_t Last;
    bool WantsLast;
    int64_t Found;
};

struct Drawing {
    const Document *Of;
    const Definition *Def;
    const PageTarget *Target;
    cairo_t *Cairo;
    Fonts Letters;
    int StyleFaces[maxStyles];

    int64_t PageCount;   // of the whole document
    int64_t FirstWanted; // of the pages that are drawn
    int64_t LastWanted;
    PageState Now;
    LetterList *Collected; // what is drawn is noted here as well; null for nowhere
    int16_t Cell;          // in which it stands; those of the right half follow those of the left
    Search *Searching;     // null while pages are drawn
    Half Walked;
    bool TellsBookmarks; // nothing is drawn, and bookmarks are told
    bool HasDrawnHead;   // on the page whose halves are drawn
    RowSpot LastSpot;    // of the last rows of both halves

    // Glyphs of one font that wait to be shown together.
    uint16_t BatchFont;
    size_t BatchCount;
    size_t BatchBytes;
    cairo_glyph_t Batch[maxBatch];
    cairo_text_cluster_t BatchClusters[maxBatch];
    char BatchText[maxBatchText];

    RuleBatch Rules[2]; // dark ones, hair lines

    double Lefts[maxColumns];
    double BodyTop;
    double Left; // of what rows have for themselves: the page's, or a half's
    double Right;
};

// ---- Glyphs ----

void ShowBatch(Drawing &drawing)
{
    if (drawing.BatchCount == 0) return;
    cairo_set_scaled_font(drawing.Cairo, drawing.Letters.Scaled[drawing.BatchFont]);
    const auto count = static_cast<int>(drawing.BatchCount);
    switch (drawing.Target->Letters) {
    case Ink::none: break;
    case Ink::outlines:
        cairo_glyph_path(drawing.Cairo, drawing.Batch, count);
        cairo_fill(drawing.Cairo);
        break;
    case Ink::glyphs:
        cairo_show_text_glyphs(drawing.Cairo, drawing.BatchText, static_cast<int>(drawing.BatchBytes),
                               drawing.Batch, count, drawing.BatchClusters, count,
                               static_cast<cairo_text_cluster_flags_t>(0));
        break;
    }
    drawing.BatchCount = 0;
    drawing.BatchBytes = 0;
}

void DrawGlyphs(Drawing &drawing, int face, const Glyph *glyphs, size_t count, const char *text, double x,
                double baseline)
{
    if (drawing.Collected != nullptr) {
        const Face &of = drawing.Letters.Faces[face];
        CollectRun(*drawing.Collected, glyphs, count, text, x, baseline, of.Ascent, of.Descent, drawing.Cell);
    }
    for (size_t i = 0; i < count; ++i) {
        const Glyph &glyph = glyphs[i];
        if (drawing.BatchCount == maxBatch || glyph.Font != drawing.BatchFont ||
            drawing.BatchBytes + glyph.TextLength > maxBatchText) {
            ShowBatch(drawing);
            drawing.BatchFont = glyph.Font;
        }
        drawing.BatchClusters[drawing.BatchCount] = {glyph.TextLength, 1};
        std::memcpy(drawing.BatchText + drawing.BatchBytes, text + glyph.TextAt, glyph.TextLength);
        drawing.BatchBytes += glyph.TextLength;
        drawing.Batch[drawing.BatchCount++] = {glyph.Index, x + glyph.X, baseline + glyph.Y};
        x += glyph.Advance;
    }
}

double Baseline(const Drawing &drawing, int face, double top, double height)
{
    const Face &from = drawing.Letters.Faces[face];
    return top + (height - from.Ascent - from.Descent) / 2 + from.Ascent;
}

// A text within a room of its own, cut with an ellipsis where it does not fit. Returns its width.
double DrawText(Drawing &drawing, int face, const char *text, size_t length, double left, double right,
                double baseline, Align align)
{
    const double room = right - left;
    if (length == 0 || room <= 0) return 0;
    Run run = ShapeText(drawing.Letters, face, text, length);
    constexpr double rounding = 0.01;
    if (run.Width <= room + rounding) {
        double x = left;
        if (align == Align::right) x = right - run.Width;
        if (align == Align::centre) x = left + (room - run.Width) / 2;
        DrawGlyphs(drawing, face, run.Glyphs, run.Count, text, x, baseline);
        return run.Width;
    }
    constexpr char ellipsis[] = "…";
    const double mark = ShapeText(drawing.Letters, face, ellipsis, sizeof ellipsis - 1).Width;
    run = ShapeText(drawing.Letters, face, text, length);
    size_t count = 0;
    double width = 0;
    while (count < run.Count && width + run.Glyphs[count].Advance + mark <= room) {
        width += run.Glyphs[count++].Advance;
    }
    DrawGlyphs(drawing, face, run.Glyphs, count, text, left, baseline);
    run = ShapeText(drawing.Letters, face, ellipsis, sizeof ellipsis - 1);
    DrawGlyphs(drawing, face, run.Glyphs, run.Count, ellipsis, left + width, baseline);
    return room;
}

// A figure is never cut: one that its column cannot hold is set smaller.
void DrawNumber(Drawing &drawing, const Style &style, int face, const char *text, size_t length, double left,
                double right, double baseline, Align align)
{
    Run run = SetNumber(drawing.Letters, face, text, length);
    const double room = right - left;
    if (run.Width > room && room > 0) {
        const auto size = static_cast<int32_t>(style.FontSize * room / run.Width);
        face = FaceFor(drawing.Letters, style, size > 100 ? size : 100);
        run = SetNumber(drawing.Letters, face, text, length);
    }
    double x = right - run.Width;
    if (align == Align::left) x = left;
    if (align == Align::centre) x = left + (room - run.Width) / 2;
    DrawGlyphs(drawing, face, run.Glyphs, run.Count, text, x, baseline);
}

// ---- Rules ----

// Rules wait for the end of the page, so that all of a kind are drawn at once.
void ShowRules(Drawing &drawing, bool isHair)
{
    RuleBatch &batch = drawing.Rules[isHair ? 1 : 0];
    if (batch.Count == 0) return;
    cairo_t *cairo = drawing.Cairo;
    const double grey = isHair ? 0.78 : 0;
    cairo_set_source_rgb(cairo, grey, grey, grey);
    cairo_set_line_width(cairo, isHair ? 0.25 : 0.5);
    for (size_t i = 0; i < batch.Count; ++i) {
        cairo_move_to(cairo, batch.Lines[i].Left, batch.Lines[i].Y);
        cairo_line_to(cairo, batch.Lines[i].Right, batch.Lines[i].Y);
    }
    cairo_stroke(cairo);
    cairo_set_source_rgb(cairo, 0, 0, 0);
    batch.Count = 0;
}

void DrawRule(Drawing &drawing, Rule rule, double left, double right, double y)
{
    if (rule == Rule::none) return;
    RuleBatch &batch = drawing.Rules[rule == Rule::hair ? 1 : 0];
    if (batch.Count + 2 > maxRules) ShowRules(drawing, rule == Rule::hair);
    batch.Lines[batch.Count++] = {left, right, y};
    if (rule == Rule::twofold) batch.Lines[batch.Count++] = {left, right, y - 1.4};
}

// Hair lines run across the page; the rules of a sum stand over and under its figures.
void DrawRules(Drawing &drawing, const Style &style, const bool (&hasFigure)[maxColumns], bool hasAnyFigure,
               double top, double height)
{
    const Rule rules[2] = {style.Above, style.Below};
    const double heights[2] = {top + 0.4, top + height - 0.4};
    for (int i = 0; i < 2; ++i) {
        if (rules[i] == Rule::none) continue;
        if (rules[i] == Rule::hair || !hasAnyFigure) {
            DrawRule(drawing, rules[i], drawing.Left, drawing.Right, i == 0 ? top : top + height);
            continue;
        }
        for (int column = 0; column < drawing.Def->ColumnCount; ++column) {
            const double left = drawing.Lefts[column];
            const double right = left + Points(drawing.Def->Columns[column].Width);
            if (hasFigure[column]) DrawRule(drawing, rules[i], left + gutter, right, heights[i]);
        }
    }
}

// ---- Rows ----

struct RowCell {
    bool IsSet;
    bool IsFigure;
    LinePart Text;
};

int FirstCell(const Drawing &drawing) { return drawing.Walked == Half::right ? drawing.Def->ColumnCount : 0; }

// Draws cells that are at hand, those of a row or of what only looks like one.
void DrawCells(Drawing &drawing, uint8_t styleNumber, const RowCell (&cells)[maxColumns], double top,
               bool isRow)
{
    const Definition &def = *drawing.Def;
    const Style &style = def.Styles[styleNumber];
    const int face = drawing.StyleFaces[styleNumber];
    const double height = Points(style.Height);
    const double baseline = Baseline(drawing, face, top, height);
    for (int column = 0; column < def.ColumnCount; ++column) {
        const RowCell &cell = cells[column];
        if (!cell.IsSet || cell.Text.Length == 0) continue;
        drawing.Cell = isRow ? static_cast<int16_t>(FirstCell(drawing) + column) : noCell;
        double left = drawing.Lefts[column];
        double right = left + Points(def.Columns[column].Width);
        const Align align = def.Columns[column].CellAlign;
        if (cell.IsFigure) {
            DrawNumber(drawing, style, face, cell.Text.Text, cell.Text.Length, left + gutter / 2,
                       right - gutter / 2, baseline, align);
            continue;
        }
        // A text runs on over the empty columns behind it.
        if (align == Align::left) {
            left += Points(style.Indent);
            for (int next = column + 1; next < def.ColumnCount; ++next) {
                if (cells[next].IsSet && cells[next].Text.Length > 0) break;
                right = drawing.Lefts[next] + Points(def.Columns[next].Width);
            }
        }
        DrawText(drawing, face, cell.Text.Text, cell.Text.Length, left + gutter / 2, right - gutter / 2,
                 baseline, align);
    }
    drawing.Cell = noCell;
}

void Shade(const Drawing &drawing, const Style &style, double top, double height)
{
    if (style.Shade == 0) return;
    const double grey = 1 - style.Shade / 100.0;
    cairo_set_source_rgb(drawing.Cairo, grey, grey, grey);
    cairo_rectangle(drawing.Cairo, drawing.Left, top, drawing.Right - drawing.Left, height);
    cairo_fill(drawing.Cairo);
    cairo_set_source_rgb(drawing.Cairo, 0, 0, 0);
}

void Count(Drawing &drawing, uint8_t column, int64_t amount)
{
    for (int sum = 0; sum < drawing.Def->SumCount; ++sum) {
        if (drawing.Def->SumColumns[sum] != column) continue;
        drawing.Now.CarrySums[sum] += amount;
        drawing.Now.PageSums[sum] += amount;
    }
}

void DrawRow(Drawing &drawing, const ItemHeader &item, double top)
{
    const Definition &def = *drawing.Def;
    const Style &style = def.Styles[item.Style];
    const double height = Points(style.Height);
    Shade(drawing, style, top, height);

    RowCell row[maxColumns] = {};
    bool hasFigure[maxColumns] = {};
    bool hasAnyFigure = false;
    char figures[maxColumns][amountSize];
    CellReader cells = CellsOf(item, reinterpret_cast<const char *>(&item + 1));
    Cell cell;
    while (NextCell(cells, cell)) {
        if (cell.Column == spanColumn) {
            const int face = drawing.StyleFaces[item.Style];
            drawing.Cell = static_cast<int16_t>(FirstCell(drawing));
            DrawText(drawing, face, cell.Text, cell.Length, drawing.Left + Points(style.Indent) + gutter / 2,
                     drawing.Right, Baseline(drawing, face, top, height), Align::left);
            break;
        }
        RowCell &to = row[cell.Column];
        to.IsSet = true;
        to.IsFigure = cell.Kind != CellKind::text;
        if (!to.IsFigure) {
            to.Text = {cell.Text, cell.Length};
            continue;
        }
        hasFigure[cell.Column] = true;
        hasAnyFigure = true;
        if (cell.Kind == CellKind::amount && (item.Flags & rowCounts) != 0) {
            Count(drawing, cell.Column, cell.Number);
        }
        char(&figure)[amountSize] = figures[cell.Column];
        size_t length = 0;
        if (!IsBlank(def, item.Style, cell)) {
            length = cell.Kind == CellKind::number ? WriteNumber(cell.Number, Look::printed, figure)
                                                   : WriteHundredths(cell.Number, Look::printed, figure);
        }
        to.Text = {figure, length};
    }
    DrawRules(drawing, style, hasFigure, hasAnyFigure, top, height);
    DrawCells(drawing, item.Style, row, top, true);
}

// ---- Heads and feet ----

// Fills in {page}, {pages}, {sheet} and {before}, the page before this one.
LinePart Expand(const Drawing &drawing, const LinePart &part, char (&out)[maxTextLength + 200])
{
    struct Place {
        const char *Name;
        int64_t Value;
    };
    const Place places[] = {{"{page}", drawing.Now.Page},
                            {"{pages}", drawing.PageCount},
                            {"{sheet}", drawing.Now.Sheet},
                            {"{before}", drawing.Now.Page - 1}};
    size_t written = 0;
    for (size_t i = 0; i < part.Length && written + amountSize < sizeof out;) {
        const Place *found = nullptr;
        for (const Place &place : places) {
            const size_t length = std::strlen(place.Name);
            if (part.Length - i >= length && std::memcmp(part.Text + i, place.Name, length) == 0)
                found = &place;
        }
        if (found == nullptr) {
            out[written++] = part.Text[i++];
            continue;
        }
        char number[amountSize];
        const size_t length = WriteNumber(found->Value, Look::plain, number);
        std::memcpy(out + written, number, length);
        written += length;
        i += std::strlen(found->Name);
    }
    return {out, written};
}

void DrawLine(Drawing &drawing, const Line &line, uint8_t styleNumber, double top)
{
    const Style &style = drawing.Def->Styles[styleNumber];
    const int face = drawing.StyleFaces[styleNumber];
    const double baseline = Baseline(drawing, face, top, Points(style.Height));
    const double pageLeft = Points(drawing.Def->Left);
    const double pageRight = Points(drawing.Def->PageWidth - drawing.Def->Right);
    const double width = pageRight - pageLeft;
    char text[maxTextLength + 200];
    // The middle stands in the middle whatever there is beside it; the left is cut before it touches the
    // next.
    double free = pageRight;
    constexpr double distance = 12;
    LinePart part = Expand(drawing, line.Parts[2], text);
    if (part.Length > 0) {
        free -= DrawText(drawing, face, part.Text, part.Length, pageLeft + width / 2, pageRight, baseline,
                         Align::right) +
                distance;
    }
    part = Expand(drawing, line.Parts[1], text);
    if (part.Length > 0) {
        const double used = DrawText(drawing, face, part.Text, part.Length, pageLeft + width / 6,
                                     pageRight - width / 6, baseline, Align::centre);
        free = pageLeft + (width - used) / 2 - distance;
    }
    part = Expand(drawing, line.Parts[0], text);
    DrawText(drawing, face, part.Text, part.Length, pageLeft, free, baseline, Align::left);
}

void DrawHead(Drawing &drawing)
{
    const Definition &def = *drawing.Def;
    drawing.Now.HasHead = true;
    drawing.HasDrawnHead = true;
    int32_t top = def.Top;
    for (int i = 0; i < drawing.Now.HeadCount; ++i) {
        const uint8_t style = i == 0 ? titleStyle : subtitleStyle;
        DrawLine(drawing, drawing.Now.Head[i], style, Points(top));
        top += def.Styles[style].Height;
    }
    top = def.PageHeight - def.Bottom - FootHeight(def) + gapOverFoot;
    for (int i = 0; i < drawing.Now.FootCount; ++i) {
        DrawLine(drawing, drawing.Now.Foot[i], footStyle, Points(top));
        top += def.Styles[footStyle].Height;
    }
}

void DrawColumnTitles(Drawing &drawing)
{
    const Definition &def = *drawing.Def;
    if (ColumnTitlesHeight(def) == 0) return;
    const int face = drawing.StyleFaces[columnStyle];
    const double lineHeight = Points(def.Styles[columnStyle].Height);
    double top = Points(def.Top + HeadHeight(def));
    if (def.HasColumnGroups) {
        for (int i = 0; i < def.ColumnCount;) {
            const char *group = def.Columns[i].Group;
            int end = i + 1;
            while (end < def.ColumnCount && group[0] != 0 &&
                   std::strcmp(group, def.Columns[end].Group) == 0) {
                ++end;
            }
            if (group[0] != 0) {
                const double left = drawing.Lefts[i] + gutter;
                const double right = drawing.Lefts[end - 1] + Points(def.Columns[end - 1].Width);
                DrawText(drawing, face, group, std::strlen(group), left, right,
                         Baseline(drawing, face, top, lineHeight), Align::centre);
                DrawRule(drawing, Rule::hair, left, right, top + lineHeight);
            }
            i = end;
        }
        top += lineHeight;
    }
    for (int i = 0; i < def.ColumnCount; ++i) {
        const char *title = def.Columns[i].Title;
        if (!IsShown(def.Columns[i])) continue;
        // The last lines of all titles stand level.
        double lineTop = top + (def.ColumnTitleLines - TitleLines(title)) * lineHeight;
        const double left = drawing.Lefts[i] + gutter / 2;
        const double right = drawing.Lefts[i] + Points(def.Columns[i].Width) - gutter / 2;
        while (title != nullptr && *title != 0) {
            const size_t length = std::strcspn(title, "\n");
            DrawText(drawing, face, title, length, left, right, Baseline(drawing, face, lineTop, lineHeight),
                     def.Columns[i].CellAlign);
            title = title[length] == '\n' ? title + length + 1 : nullptr;
            lineTop += lineHeight;
        }
    }
    DrawRule(drawing, Rule::line, drawing.Left, drawing.Right, top + def.ColumnTitleLines * lineHeight + 0.6);
}

// ---- Pages ----

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

constexpr char goesOn[] = " (Fortsetzung)";

// The heading of a group that goes on: its texts, the first of which says so.
void DrawAgain(Drawing &drawing, const ItemHeader &item, double top)
{
    const Style &style = drawing.Def->Styles[item.Style];
    const double height = Points(style.Height);
    const int face = drawing.StyleFaces[item.Style];
    Shade(drawing, style, top, height);
    RowCell row[maxColumns] = {};
    char first[maxTextLength + sizeof goesOn];
    bool isSaid = false;
    CellReader cells = CellsOf(item, reinterpret_cast<const char *>(&item + 1));
    Cell cell;
    while (NextCell(cells, cell)) {
        if (cell.Kind != CellKind::text) continue;
        LinePart text = {cell.Text, cell.Length};
        if (!isSaid && cell.Length > 0) {
            std::memcpy(first, cell.Text, cell.Length);
            std::memcpy(first + cell.Length, goesOn, sizeof goesOn);
            text = {first, cell.Length + sizeof goesOn - 1};
            isSaid = true;
        }
        if (cell.Column == spanColumn) {
            DrawText(drawing, face, text.Text, text.Length, drawing.Left + Points(style.Indent) + gutter / 2,
                     drawing.Right, Baseline(drawing, face, top, height), Align::left);
        } else {
            row[cell.Column] = {true, false, text};
        }
    }
    const bool noFigure[maxColumns] = {};
    DrawRules(drawing, style, noFigure, false, top, height);
    DrawCells(drawing, item.Style, row, top, false);
}

void DrawCarry(Drawing &drawing, const char *label, const int64_t (&sums)[maxSumColumns], double top)
{
    const Definition &def = *drawing.Def;
    RowCell row[maxColumns] = {};
    bool hasFigure[maxColumns] = {};
    char figures[maxSumColumns][amountSize];
    char text[maxTextLength + 200];
    row[def.Carry.Column] = {true, false, Expand(drawing, {label, std::strlen(label)}, text)};
    for (int sum = 0; sum < def.SumCount; ++sum) {
        const uint8_t column = def.SumColumns[sum];
        if (!IsShown(def.Columns[column])) continue;
        row[column] = {true, true, {figures[sum], WriteHundredths(sums[sum], Look::printed, figures[sum])}};
        hasFigure[column] = true;
    }
    DrawRules(drawing, def.Styles[carryStyle], hasFigure, def.SumCount > 0, top,
              Points(def.Styles[carryStyle].Height));
    DrawCells(drawing, carryStyle, row, top, false);
}

// The amounts of a row on a page that is not drawn.
void CountRow(Drawing &drawing, const ItemHeader &item)
{
    if ((item.Flags & rowCounts) == 0 || drawing.Def->SumCount == 0) return;
    CellReader cells = CellsOf(item, reinterpret_cast<const char *>(&item + 1));
    Cell cell;
    while (NextCell(cells, cell)) {
        if (cell.Kind == CellKind::amount && cell.Column != spanColumn) {
            Count(drawing, cell.Column, cell.Number);
        }
    }
}

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
    case Placed::carryUp: DrawCarry(drawing, carry.Up, now.CarrySums, top); return;
    case Placed::pageSum: DrawCarry(drawing, carry.PageSum, now.PageSums, top); return;
    case Placed::carryDown: DrawCarry(drawing, carry.Down, now.CarrySums, top); return;
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

// A place in the document: the next item, and the layout of all before it.
struct Position {
    uint64_t Offset;
    Layout Laid;
};

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

// Adds the next row to the layout; false at the end of the document.
bool LayNextRow(const Document &document, Position &position)
{
    LayoutRow row;
    if (!NextRow(document, position.Offset, document.Size, row)) return false;
    AddRow(position.Laid, row);
    return true;
}

// Runs the rows of the document through the layout.
int64_t LayOut(const Document &document, PlaceCall place, void *context)
{
    static Position position; // too large for a stack frame
    position.Offset = document.First;
    StartLayout(position.Laid, *document.Def, place, context);
    while (LayNextRow(document, position)) {
    }
    return EndLayout(position.Laid);
}

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

// ---- Pages with halves ----

// Both halves are short enough to be walked from their beginning for each page.

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

// The first or last page on which either half has what is looked for.
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

// What follows the last row, and the end of the page in hand.
void EndDrawing(Drawing &drawing)
{
    if (drawing.Now.Page == 0) StartPage(drawing, 1);
    ApplyItems(drawing, drawing.Of->Size, drawing.BodyTop);
    FinishPage(drawing);
}

} // namespace

bool OpenDocument(Document &document, int file)
{
    struct stat status = {};
    if (fstat(file, &status) != 0) return false;
    document.Size = static_cast<uint64_t>(status.st_size);
    document.First = 2 * sizeof(uint32_t) + sizeof(Definition);
    if (document.Size < document.First) return false;
    void *bytes = mmap(nullptr, document.Size, PROT_READ, MAP_SHARED, file, 0);
    if (bytes == MAP_FAILED) return false;
    document.Bytes = static_cast<const char *>(bytes);
    uint32_t size = 0;
    std::memcpy(&size, document.Bytes + sizeof size, sizeof size);
    if (std::memcmp(document.Bytes, "RSM1", 4) != 0 || size != sizeof(Definition)) return false;
    document.Def = reinterpret_cast<const Definition *>(document.Bytes + 2 * sizeof size);
    return true;
}

const ItemHeader *ItemAt(const Document &document, uint64_t &offset)
{
    if (document.Size - offset < sizeof(ItemHeader)) return nullptr;
    const auto *item = reinterpret_cast<const ItemHeader *>(document.Bytes + offset);
    if (item->Size > document.Size - offset - sizeof(ItemHeader)) return nullptr;
    offset += sizeof(ItemHeader) + item->Size;
    return item;
}

int64_t DrawDocument(const Document &document, const PageTarget &target, int64_t first, int64_t last)
{
    static Drawing drawing;
    drawing = {};
    drawing.Target = &target;
    drawing.Cairo = target.Cairo;
    drawing.FirstWanted = first;
    drawing.LastWanted = last > 0 ? last : INT64_MAX;
    StartDrawing(drawing, document);
    if (document.Def->Gap > 0) {
        DrawHalvedPages(drawing);
        return drawing.PageCount;
    }
    drawing.PageCount = LayOut(document, nullptr, nullptr);
    LayOut(document, Place, &drawing);
    EndDrawing(drawing);
    return drawing.PageCount;
}

// ---- Pages in any order ----

namespace {

// Where a page begins that was walked over: drawing one goes on from the last mark before it. When all are
// used, every second one is given up.
struct Mark {
    Position Where;
    PageState Now;
};

constexpr int maxMarks = 256;

struct {
    Drawing Draws;
    Position Where;
    Mark *Marks[maxMarks];
    int MarkCount;
    int64_t Stride; // pages between two marks
} pages;

void ThinMarks()
{
    int kept = 0;
    for (int i = 0; i < pages.MarkCount; ++i) {
        if (i % 2 == 0) {
            pages.Marks[kept++] = pages.Marks[i];
        } else {
            std::free(pages.Marks[i]);
        }
    }
    pages.MarkCount = kept;
    pages.Stride *= 2;
}

void LeaveMark()
{
    const int64_t last = pages.MarkCount > 0 ? pages.Marks[pages.MarkCount - 1]->Now.Page : 0;
    const int64_t page = pages.Draws.Now.Page;
    if (page < last + pages.Stride) return;
    if (pages.MarkCount == maxMarks) ThinMarks();
    auto *mark = static_cast<Mark *>(std::malloc(sizeof(Mark)));
    if (mark == nullptr) return; // the way is longer then
    mark->Where = pages.Where;
    mark->Now = pages.Draws.Now;
    pages.Marks[pages.MarkCount++] = mark;
}

// Returns to a mark that lies wholly before `page`.
void GoBefore(int64_t page)
{
    for (int i = pages.MarkCount - 1; i >= 0; --i) {
        if (pages.Marks[i]->Now.Page >= page) continue;
        pages.Where = pages.Marks[i]->Where;
        pages.Draws.Now = pages.Marks[i]->Now;
        return;
    }
    pages.Where.Offset = pages.Draws.Of->First;
    StartLayout(pages.Where.Laid, *pages.Draws.Def, Place, &pages.Draws);
    pages.Draws.Now = {};
    pages.Draws.Now.Scanned = pages.Draws.Of->First;
}

} // namespace

void OpenPages(const Document &document, int64_t pageCount)
{
    StartDrawing(pages.Draws, document);
    pages.Draws.PageCount = pageCount;
    pages.Stride = 4;
}

void DrawPage(int64_t page, const PageTarget &target, LetterList *letters)
{
    Drawing &drawing = pages.Draws;
    drawing.Target = &target;
    drawing.Cairo = target.Cairo;
    drawing.Collected = letters;
    if (drawing.Def->Gap > 0) {
        DrawHalvedPage(drawing, page);
        drawing.Collected = nullptr;
        return;
    }
    drawing.FirstWanted = drawing.LastWanted = page;
    GoBefore(page);
    bool goesOn = true;
    while (goesOn && drawing.Now.Page <= page) {
        goesOn = LayNextRow(*drawing.Of, pages.Where);
        if (goesOn) LeaveMark();
    }
    if (!goesOn) {
        EndLayout(pages.Where.Laid);
        EndDrawing(drawing);
    }
    ShowBatch(drawing);
    drawing.Collected = nullptr;
}

int64_t FindPage(int64_t first, int64_t last, bool wantsLast, const ItemTest &test)
{
    Drawing &drawing = pages.Draws;
    drawing.FirstWanted = drawing.LastWanted = -1;
    Search search = {&test, first, last, wantsLast, 0};
    drawing.Searching = &search;
    if (drawing.Def->Gap > 0) {
        SearchHalves(drawing, search);
        drawing.Searching = nullptr;
        return search.Found;
    }
    GoBefore(first);
    bool goesOn = true;
    while (goesOn && drawing.Now.Page <= last && (wantsLast || search.Found == 0)) {
        goesOn = LayNextRow(*drawing.Of, pages.Where);
        if (goesOn) LeaveMark();
    }
    if (!goesOn) EndLayout(pages.Where.Laid);
    drawing.Searching = nullptr;
    return search.Found;
}

} // namespace rs
