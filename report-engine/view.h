// Views of finished reports. What a display adds - a window that shows the pages and whose end ends the view
// - stands in view_window.h; everything that a view can do without being seen stands here and in output.h.
#pragma once

#include "report-engine/report.h"

#include <atomic>

namespace rs {

inline constexpr size_t maxViewTitle = 300;

// The property of a view's window that holds its handle in the handle table.
inline constexpr char viewProperty[] = "rsView";

struct View {
    int References; // guarded by the handle table
    int32_t ReportHandle;
    Report *Of;                 // finished; the view holds a reference to it
    std::atomic<bool> WasSeen;  // by a person: its thread has handled messages since
    std::atomic<void *> Window; // that shows it; null for a view without
    char Title[maxViewTitle];   // UTF-8
};

} // namespace rs
