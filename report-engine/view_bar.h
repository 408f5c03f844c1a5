// The tool bar of a view: what stands in it, and where in a window of any width.
#pragma once

#include "report-engine/view_state.h"

namespace rs {

struct BarControl {
    int Id;
    const char *Class;
    const char *Text; // of an icon button: its name, a tab, the icon; of a field: what names it unseen
    LONG Gap;         // before it
    LONG Width;       // for letters of the usual size
    DWORD Style;
    bool BeginsGroup; // those of a group stay side by side
};

// In the order in which Tab goes through them.
extern const BarControl barControls[];
extern const int barControlCount;

// A height that suits letters of the usual size, as it suits those of the screen.
LONG BarHeight(LONG designed);

// Puts the groups side by side, in as many rows as they need inside `width`, but in no more than half of
// `height` holds, nor less than one: what has no room then is hidden. Returns the height of the bar.
LONG ArrangeBar(HWND window, LONG width, LONG height);

} // namespace rs
