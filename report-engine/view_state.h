// What the window of a view keeps, for its own thread. Above it stand, each using those before it: the strip
// of pages (view_strip), what a person has it do (view_commands), keys and mouse (view_input), the window
// (view_window).
#pragma once

#include "report-engine/page_requests.h"
#include "report-engine/page_source.h"
#include "report-engine/view.h"
#include "window-system/include/varkui.h"

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
    ViewWindow *Next; // of those that this thread has open
    View *Of;         // a reference
    void *Handle;     // of the view in the handle table
    HWND Window;
    HWND Picture;
    bool OwnsReport;  // its end closes the report
    bool *Taken;      // while it is made: told that the window has it
    bool AwaitsFrame; // hidden until a frame takes it
    bool IsFilling;   // the program, not the person, is changing controls

    PageSource Source;
    Fit Fitted;
    int Percent; // of natural size, for Fit::none; natural is 96 pixels an inch
    double PixelsPerUnit;
    LONG X; // of the upper left corner in view, in pixels of the strip
    LONG Y;

    PagePlace From; // selected, From is where it began
    PagePlace To;
    uint32_t Grain;
    bool IsAllSelected; // the whole report

    char Sought[maxSought];
    int64_t Found;
    int32_t FoundPlace;
};

// The state of a window; null when it is none of a view.
ViewWindow *StateOfView(HWND window);

// Whether it lives inside another window, whose keys it leaves alone.
bool IsChild(const ViewWindow &view);

inline HWND Control(const ViewWindow &view, int id) { return GetDlgItem(view.Window, id); }

// The line at the bottom; UTF-8.
void SayState(const ViewWindow &view, const char *text);

} // namespace rs
