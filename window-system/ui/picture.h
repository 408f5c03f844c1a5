// The widget that shows a picture of the model: a part of something larger, drawn elsewhere, with scroll
// bars. What the person wants to see is told; what is seen changes when the next picture comes.
#pragma once

#include <cstdint>
#include <gtk/gtk.h>

namespace pictures {

enum class Event : uint8_t { Area, Scroll, Press, Drag, Release, Zoom };

// `count` is the scale of an Area, the number of presses (with `shift`), the steps of a Zoom.
using Tell = void (*)(void *owner, Event event, int x, int y, int count, bool shift);

struct Content {
    int Width, Height; // of the image, in pixels of the screen
    int X, Y;          // its place in the whole, in pixels of windows as all that follow
    int ContentWidth, ContentHeight;
    int Page;
};

struct Picture;

Picture *Make(Tell tell, void *owner);
GtkWidget *Outside(const Picture *picture); // what is placed
GtkWidget *Inside(const Picture *picture);  // what has the focus

// Shows an image from `descriptor`, which is taken over; -1 for an empty one.
void Show(Picture *picture, const Content &content, int descriptor);

// Forgets the image; the widget goes with whatever holds it.
void Free(Picture *picture);

} // namespace pictures
