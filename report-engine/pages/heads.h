// Heads and feet of pages, and the titles of columns.
#pragma once

#include "report-engine/pages/drawing.h"

namespace rs {

inline constexpr size_t expandedSize = maxTextLength + 200;

// Fills in {page}, {pages}, {sheet} and {before}, the page before this one.
LinePart Expand(const Drawing &drawing, const LinePart &part, char (&out)[expandedSize]);

// The head and the foot of the page in hand.
void DrawHead(Drawing &drawing);

void DrawColumnTitles(Drawing &drawing);

} // namespace rs
