// What the forms have in common: a walk over the spool, and the texts of cells and heads.
#pragma once

#include "report-engine/values.h"
#include "report-engine/view.h"
#include "report-engine/writer.h"

namespace rs {

// A walk over a spool, in the place of a stack frame of this size.
struct Walk {
    SpoolReader Reader;
    bool HasFailed;
    uint64_t Items; // so far
    int64_t Whole;  // bytes of the spool
};

// Begins a walk over the view's spool; null for lack of memory. EndWalk frees it.
Walk *StartWalk(const View &view);

// The next item, and now and then a look whether the person still wants it. False at the end, also of what
// the writer takes.
bool NextItem(Walk &walk, Writer &writer);

// False when the spool could not be read.
bool EndWalk(Walk *walk);

// The parts of the head that was read last, without those that tell page numbers.
void HeadPartsOf(const SpoolReader &reader, LinePart (&parts)[3]);

// The value of a cell as text; `out` serves for numbers.
LinePart CellText(const Cell &cell, Look look, char (&out)[amountSize]);

// The same as it stands on a page.
LinePart PrintedText(const Definition &def, uint8_t style, const Cell &cell, char (&out)[amountSize]);

// A rate of zero that the page leaves empty is none; an amount of zero is a figure.
bool IsNoRate(const Definition &def, uint8_t style, const Cell &cell);

} // namespace rs
