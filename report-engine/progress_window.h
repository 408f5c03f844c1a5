// How far a long piece of work is, for the person who waits for it.
#pragma once

#include "report-engine/helper.h"
#include "window-system/include/varkui.h"

namespace rs {

// Over `owner`, with a button that stops the work; comes when the work takes longer than half a second.
struct ProgressWindow {
    HWND Owner;
    const char *Title; // Windows-1252
    HWND Dialog;
    HWND Disabled; // meanwhile
    int64_t Began_ms;
    int64_t Shown_ms; // when the figure was last brought up to date
    bool IsStopped;
};

// Begins to watch; what it returns tells `window`, which stays until EndProgress.
Progress WatchProgress(ProgressWindow &window, HWND owner, const char *title);
void EndProgress(ProgressWindow &window);

} // namespace rs
