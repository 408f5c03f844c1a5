// The pages of a view as one strip: what of it is in view, at which scale, and how it moves.
#pragma once

#include "report-engine/view_state.h"

namespace rs {

inline constexpr double naturalScale = 96.0 / 2540.0; // pixels of a hundredth of a millimetre

// A strip at the view's scale, in pixels.
struct Strip {
    LONG PageWidth;
    LONG PageHeight;
    LONG Pitch; // from the top of a page to that of the next
    LONG Width;
    LONG Height;
};

Strip StripOf(const ViewWindow &view);

// The part of the window in which the strip shows.
VARKUIAREA AreaOf(const ViewWindow &view);

// Where a page begins in the strip, and which one is in view.
LONG TopOfPage(const Strip &strip, int64_t page);
int64_t CurrentPage(const ViewWindow &view);

// The place under a pixel of the area.
PagePlace PlaceAt(const ViewWindow &view, LONG x, LONG y);

// Draws anew what is in view; nothing before a person can see it, so that what is only printed is not drawn.
void ShowPart(ViewWindow &view);

// The controls that tell page and zoom.
void SetNumber(const ViewWindow &view, int id, const char *before, int64_t number);
void ShowNumbers(ViewWindow &view);

// Scrolls so that the place comes into view.
void ShowPlace(ViewWindow &view, const PagePlace &from, const PagePlace &to);

// Goes to a page, from 1.
void GoToPage(ViewWindow &view, int64_t page);

void ScrollBy(ViewWindow &view, LONG dx, LONG dy);

// ---- Zoom ----

// Takes the scale that is wanted, with what is in the middle kept there.
void FitZoom(ViewWindow &view);
void SetZoom(ViewWindow &view, Fit fit, int percent);

// The next step from the scale that is shown, whatever it comes from.
void StepZoom(ViewWindow &view, int direction);
void FillZoomList(const ViewWindow &view);
void TakeZoomFromList(ViewWindow &view);

} // namespace rs
