// The window of a view: a tool bar with ordinary controls, the pages below it as one strip that a person
// scrolls through, a line at the bottom. It asks for the part in view and nothing else, so a report of any
// length shows at once. It works on the thread that opened it; its end ends the view.
#pragma once

#include "report-engine/view.h"
#include "window-system/include/varkui.h"

namespace rs {

// Where the window of a view stands.
struct ViewPlace {
    HWND Parent;
    LONG Left;
    LONG Top;
    LONG Width;
    LONG Height;
    DWORD Style;
    DWORD ExStyle;
    HWND Like = nullptr; // the window of a view of this thread, whose zoom the new one takes over
};

// Whether views have windows: the window system is there, whether or not anybody sees it.
bool ViewsHaveWindows();

// Opens the window of a view that is in the handle table, and whose end closes the report from then on.
// A child without a parent is a hidden window of its own, until a frame takes it. Null on failure; the view
// has been taken out of the table then.
HWND OpenViewWindow(void *handle, View *view, const ViewPlace &place);

// The place of a view that is opened in the place of another one, whose window is `window` (null for none): a
// rectangle of the screen becomes one inside the same parent.
ViewPlace PlaceBeside(HWND window, ViewPlace place);

} // namespace rs
