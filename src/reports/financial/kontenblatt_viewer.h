// The window in which sheets live, and the state that lives as long as it does.
#pragma once

#include "src/platform/window_api.h"
#include "src/reports/financial/kontenblatt_build.h"

namespace vark {

// The state that the frame window owns.
struct KontenblattState {
    ThreadBlock Block;
    SheetBuild Build;
    HWND FrameWindow; // null once it has gone
    HWND ViewWindow;  // the report engine's view inside the frame
    HWND BarWindow;   // null when it could not be made
    RECT BarRect;     // the bar's with all buttons in one row, moved to 0,0
    bool IsBusy;      // a press is being handled, or the frame made: who does that frees the state
};

// The frame window around `view`, which takes view and state over: it frees the state when it goes. Null,
// with both freed, when it cannot be made. `parent` may be null.
HWND OpenSheetFrame(KontenblattState *state, VarkWindow parent, VarkWindow view);

} // namespace vark
