#include "report-engine/pages/rows.h"

#include "report-engine/values.h"

#include <cstring>

namespace rs {

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

namespace {

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

} // namespace

double Baseline(const Drawing &drawing, int face, double top, double height)
{
    const Face &from = drawing.Letters.Faces[face];
    return top + (height - from.Ascent - from.Descent) / 2 + from.Ascent;
}

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

namespace {

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

} // namespace

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

namespace {

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

} // namespace

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

namespace {

constexpr char goesOn[] = " (Fortsetzung)";

} // namespace

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

void DrawCarry(Drawing &drawing, const LinePart &label, const int64_t (&sums)[maxSumColumns], double top)
{
    const Definition &def = *drawing.Def;
    RowCell row[maxColumns] = {};
    bool hasFigure[maxColumns] = {};
    char figures[maxSumColumns][amountSize];
    row[def.Carry.Column] = {true, false, label};
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

} // namespace rs
