// Texts, figures, rules and rows, drawn where they are told to stand. Glyphs and rules wait in batches, so
// that many of a kind are drawn at once.
#pragma once

#include "report-engine/pages/drawing.h"

namespace rs {

// Draws the glyphs that wait.
void ShowBatch(Drawing &drawing);

// Draws the rules that wait: the hair lines, or the dark ones.
void ShowRules(Drawing &drawing, bool isHair);

// The base line of a text of that face in a row of that height, in points.
double Baseline(const Drawing &drawing, int face, double top, double height);

// A text within a room of its own, cut with an ellipsis where it does not fit. Returns its width.
double DrawText(Drawing &drawing, int face, const char *text, size_t length, double left, double right,
                double baseline, Align align);

void DrawRule(Drawing &drawing, Rule rule, double left, double right, double y);

// A row of the report. Its amounts count for carry and page sum.
void DrawRow(Drawing &drawing, const ItemHeader &item, double top);

// The heading of a group that goes on: its texts, the first of which says so.
void DrawAgain(Drawing &drawing, const ItemHeader &item, double top);

// A row of sums with a text in front, in the style of what is carried over.
void DrawCarry(Drawing &drawing, const LinePart &label, const int64_t (&sums)[maxSumColumns], double top);

// The amounts of a row on a page that is not drawn.
void CountRow(Drawing &drawing, const ItemHeader &item);

} // namespace rs
