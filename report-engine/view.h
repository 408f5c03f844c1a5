// Views of finished reports. A view here has no window: what a display adds - a window of the window system
// that shows the pages and whose end ends the view - comes beside this and holds a View as well; everything
// that a view can do without being seen stands here and in output.h.
#pragma once

#include "report-engine/report.h"

namespace rs {

inline constexpr size_t maxViewTitle = 300;

struct View {
    int References; // guarded by the handle table
    int32_t ReportHandle;
    Report *Of;               // finished; the view holds a reference to it
    char Title[maxViewTitle]; // UTF-8
};

} // namespace rs
