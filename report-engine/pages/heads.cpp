#include "report-engine/pages/heads.h"

#include "report-engine/pages/rows.h"
#include "report-engine/values.h"

#include <cstring>

namespace rs {

LinePart Expand(const Drawing &drawing, const LinePart &part, char (&out)[expandedSize])
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

namespace {

void DrawLine(Drawing &drawing, const Line &line, uint8_t styleNumber, double top)
{
    const Style &style = drawing.Def->Styles[styleNumber];
    const int face = drawing.StyleFaces[styleNumber];
    const double baseline = Baseline(drawing, face, top, Points(style.Height));
    const double pageLeft = Points(drawing.Def->Left);
    const double pageRight = Points(drawing.Def->PageWidth - drawing.Def->Right);
    const double width = pageRight - pageLeft;
    char text[expandedSize];
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

} // namespace

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

} // namespace rs
