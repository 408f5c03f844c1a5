// What instructions and expectations are read with: words, numbers, values and controls of a line. All expect
// the lock.
#pragma once

#include "window-system/front-ends/instructions.h"
#include "window-system/model/window.h"

namespace varkui {

// Fails the step, with the reason.
__attribute__((format(printf, 2, 3))) void Fail(Step &step, const char *format, ...);

// The rest of `line` behind `word` and blanks, or null when the line does not begin with that word.
const char *After(const char *line, const char *word);

// Reads a decimal number at `rest` and moves behind it and the blanks that follow; false when there is none.
bool TakeNumber(const char *&rest, LONG &number);

// Whether a pair of quotes stands around all of it.
bool IsQuoted(const char *rest);

// A value in Windows-1252: a pair of quotes around it keeps its blanks and is taken off. It is valid until
// the next one.
const char *ValueOf(const Step &step, const char *rest);

// A Windows-1252 text for a message, in UTF-8 on one line.
struct ShownText {
    char Text[600];
    explicit ShownText(const char *text);
};

// The control that an instruction begins with by its id; `rest` moves behind it. Null fails the step.
Window *TakeControl(Step &step, const char *&rest);

// Whether nothing is left of the line; if there is, the step fails.
bool IsEmpty(Step &step, const char *rest);

// "dialog 101 "Title"" or the like.
struct NamedWindow {
    char Text[800];
    explicit NamedWindow(Window *window);
};

// Rows of a list box, combo box or tab control: how many, -1 for a control without; the text of one; the
// selected one, -1 for none.
LONG CountRows(const Window *control);
const char *TextOfRow(const Window *control, LONG index);
LONG SelectedRow(const Window *control);

} // namespace varkui
