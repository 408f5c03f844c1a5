// The window of a view: a tool bar with ordinary controls, the pages below it as one strip that a person
// scrolls through, a line at the bottom. It asks for the part in view and nothing else, so a report of any
// length shows at once. It works on the thread that opened it; its end ends the view.
#pragma once

#include "report-engine/page_requests.h"
#include "report-engine/pages.h"
#include "report-engine/view.h"
#include "window-system/varkui.h"

namespace rs {

enum ViewControl : int {
    previousButton = 101,
    pageEdit,
    pageCountText,
    nextButton,
    smallerButton,
    zoomList,
    largerButton,
    searchEdit,
    searchBackButton,
    searchNextButton,
    copyButton,
    printButton,
    saveButton,
    searchText,
    stateText,
    pagePicture = 120
};

enum class Fit : uint8_t { none, width, page };

struct ViewWindow {
    View *Of;     // a reference
    void *Handle; // of the view in the handle table
    HWND Window;
    HWND Picture;
    bool IsChild;    // lives inside another window, whose keys it leaves alone
    bool OwnsReport; // its end closes the report
    bool *Taken;     // while it is made: told that the window has it
    bool IsFilling;  // controls are set to what they show, by nobody's wish

    PageSource Source;
    Fit Fitted;
    int Percent; // of natural size, for Fit::none; natural is 96 pixels an inch
    double PixelsPerUnit;
    LONG X; // of the upper left corner in view, in pixels of the strip
    LONG Y;

    PagePlace From; // selected, From is where it began
    PagePlace To;
    uint32_t Grain;

    char Sought[maxSought];
    int64_t Found;
    int32_t FoundPlace;
};

// Where the window of a view stands.
struct ViewPlace {
    HWND Parent;
    LONG Left;
    LONG Top;
    LONG Width;
    LONG Height;
    DWORD Style;
    DWORD ExStyle;
};

// Whether views have windows: somebody sees them.
bool ViewsHaveWindows();

// Opens the window of a view that is in the handle table, and whose end closes the report from then on. Null
// on failure; the view has been taken out of the table then.
HWND OpenViewWindow(void *handle, View *view, const ViewPlace &place);

// The place of a view that is opened in the place of another one, whose window is `window` (null for none): a
// rectangle of the screen becomes one inside the same parent.
ViewPlace PlaceBeside(HWND window, ViewPlace place);

// The handle of the view that `window` shows, null when it is no window of a view.
void *ViewOfWindow(HWND window);

// ---- What the commands need (view_commands.cpp) ----

// The window's own state, for its own thread; null when it is none of a view.
ViewWindow *StateOfView(HWND window);

// Draws anew what is in view; nothing before a person can see it, so that what is only printed is not drawn.
void ShowPart(ViewWindow &view);

// Scrolls so that the place comes into view.
void ShowPlace(ViewWindow &view, const PagePlace &from, const PagePlace &to);

// The line at the bottom; UTF-8.
void SayState(ViewWindow &view, const char *text);

// Goes to a page, from 1.
void GoToPage(ViewWindow &view, int64_t page);
int64_t CurrentPage(const ViewWindow &view);

// Copies what is selected. Returns whether anything is.
bool CopySelection(ViewWindow &view);

// Goes to the next (previous) place of what stands in the search field.
void SearchOn(ViewWindow &view, bool isBackwards);

// Asks for a file and writes it. The window may be gone when this returns.
void SaveView(HWND window);

// Prints. The window may be gone when this returns.
void PrintFromView(HWND window);

} // namespace rs
