// Keys and the mouse in the window of a view.
#pragma once

#include "report-engine/view_state.h"

namespace rs {

// Makes the view's keys work in a control of it. False when it cannot be done.
bool WatchControl(HWND control);

// What the mouse does in the pages.
void TakeNotice(ViewWindow &view, const NMPICTURE &notice);

// A button or field of the bar.
void DoCommand(ViewWindow &view, int id, int code);

} // namespace rs
