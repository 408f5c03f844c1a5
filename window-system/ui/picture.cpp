#include "window-system/ui/picture.h"

#include <cmath>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace pictures {

struct Picture {
    Tell Told;
    void *Owner;
    GtkWidget *Grid;
    GtkWidget *Area;
    GtkWidget *Bars[2]; // horizontal, vertical
    GtkAdjustment *Places[2];
    Content Shown;
    void *Bytes; // of the image
    size_t Size;
    double PointerX, PointerY;
    double ZoomRest;    // of a smooth wheel, below one step
    int64_t AskedAt_us; // when a place was asked for that has not come yet, 0 for none
    bool AsksAgain;
    bool IsSetting; // the adjustments are set to what is shown
};

namespace {

constexpr int64_t longestWait_us = 250'000;
constexpr double wheelStep = 60;

int Place(const Picture *picture, int direction)
{
    return static_cast<int>(std::lround(gtk_adjustment_get_value(picture->Places[direction])));
}

void TellArea(Picture *picture)
{
    picture->Told(picture->Owner, Event::Area, gtk_widget_get_width(picture->Area),
                  gtk_widget_get_height(picture->Area), gtk_widget_get_scale_factor(picture->Area), false);
}

void OnResize(GtkDrawingArea * /*area*/, int /*width*/, int /*height*/, Picture *picture)
{
    TellArea(picture);
}

void OnScale(GtkWidget * /*area*/, GParamSpec * /*property*/, Picture *picture) { TellArea(picture); }

// One place is asked for at a time, so that a fast wheel does not run ahead of the drawing.
void AskForPlace(Picture *picture)
{
    const int64_t now = g_get_monotonic_time();
    if (picture->AskedAt_us != 0 && now - picture->AskedAt_us < longestWait_us) {
        picture->AsksAgain = true;
        return;
    }
    picture->AskedAt_us = now;
    picture->AsksAgain = false;
    picture->Told(picture->Owner, Event::Scroll, Place(picture, 0), Place(picture, 1), 0, false);
}

void OnMoved(GtkAdjustment * /*place*/, Picture *picture)
{
    if (picture->IsSetting) return;
    gtk_widget_queue_draw(picture->Area);
    AskForPlace(picture);
}

void Draw(GtkDrawingArea * /*area*/, cairo_t *cairo, int width, int height, void *data)
{
    const auto *picture = static_cast<const Picture *>(data);
    if (picture->Bytes == nullptr) return;
    cairo_surface_t *image = cairo_image_surface_create_for_data(
        static_cast<unsigned char *>(picture->Bytes), CAIRO_FORMAT_ARGB32, picture->Shown.Width,
        picture->Shown.Height, 4 * picture->Shown.Width);
    const double scale = gtk_widget_get_scale_factor(picture->Area);
    cairo_surface_set_device_scale(image, scale, scale);
    cairo_rectangle(cairo, 0, 0, width, height);
    cairo_clip(cairo);
    cairo_set_source_surface(cairo, image, picture->Shown.X - Place(picture, 0),
                             picture->Shown.Y - Place(picture, 1));
    cairo_paint(cairo);
    cairo_surface_destroy(image);
}

gboolean OnWheel(GtkEventControllerScroll *wheel, double dx, double dy, Picture *picture)
{
    auto *controller = GTK_EVENT_CONTROLLER(wheel);
    const GdkModifierType state = gtk_event_controller_get_current_event_state(controller);
    if ((state & GDK_CONTROL_MASK) != 0) {
        picture->ZoomRest -= dy;
        const int steps = static_cast<int>(picture->ZoomRest);
        picture->ZoomRest -= steps;
        if (steps != 0) {
            picture->Told(picture->Owner, Event::Zoom, static_cast<int>(picture->PointerX),
                          static_cast<int>(picture->PointerY), steps, false);
        }
        return TRUE;
    }
    const bool isWheel = gtk_event_controller_scroll_get_unit(wheel) == GDK_SCROLL_UNIT_WHEEL;
    const double step = isWheel ? wheelStep : 1;
    if ((state & GDK_SHIFT_MASK) != 0) {
        dx += dy;
        dy = 0;
    }
    const double moves[2] = {dx * step, dy * step};
    for (int i = 0; i < 2; ++i) {
        if (moves[i] == 0) continue;
        gtk_adjustment_set_value(picture->Places[i], gtk_adjustment_get_value(picture->Places[i]) + moves[i]);
    }
    return TRUE;
}

void OnPointer(GtkEventControllerMotion * /*motion*/, double x, double y, Picture *picture)
{
    picture->PointerX = x;
    picture->PointerY = y;
}

void OnPressed(GtkGestureClick *click, int presses, double x, double y, Picture *picture)
{
    gtk_widget_grab_focus(picture->Area);
    const GdkModifierType state = gtk_event_controller_get_current_event_state(GTK_EVENT_CONTROLLER(click));
    picture->Told(picture->Owner, Event::Press, static_cast<int>(x), static_cast<int>(y), presses,
                  (state & GDK_SHIFT_MASK) != 0);
}

void TellDrag(GtkGestureDrag *drag, Event event, double dx, double dy, Picture *picture)
{
    double x = 0;
    double y = 0;
    gtk_gesture_drag_get_start_point(drag, &x, &y);
    picture->Told(picture->Owner, event, static_cast<int>(x + dx), static_cast<int>(y + dy), 0, false);
}

void OnDragged(GtkGestureDrag *drag, double dx, double dy, Picture *picture)
{
    TellDrag(drag, Event::Drag, dx, dy, picture);
}

void OnDropped(GtkGestureDrag *drag, double dx, double dy, Picture *picture)
{
    TellDrag(drag, Event::Release, dx, dy, picture);
}

void ForgetImage(Picture *picture)
{
    if (picture->Bytes != nullptr) munmap(picture->Bytes, picture->Size);
    picture->Bytes = nullptr;
}

void MapImage(Picture *picture, int descriptor)
{
    struct stat status = {};
    const size_t size =
        size_t{4} * static_cast<size_t>(picture->Shown.Width) * static_cast<size_t>(picture->Shown.Height);
    const bool fits = size > 0 && fstat(descriptor, &status) == 0 && status.st_size >= 0 &&
                      static_cast<size_t>(status.st_size) >= size;
    if (fits) {
        void *bytes = mmap(nullptr, size, PROT_READ, MAP_SHARED, descriptor, 0);
        if (bytes != MAP_FAILED) picture->Bytes = bytes;
        picture->Size = size;
    }
    close(descriptor);
}

} // namespace

Picture *Make(Tell tell, void *owner)
{
    auto *picture = new Picture{};
    picture->Told = tell;
    picture->Owner = owner;
    picture->Grid = gtk_grid_new();
    picture->Area = gtk_drawing_area_new();
    gtk_widget_add_css_class(picture->Area, "picture");
    gtk_widget_set_hexpand(picture->Area, TRUE);
    gtk_widget_set_vexpand(picture->Area, TRUE);
    gtk_widget_set_focusable(picture->Area, TRUE);
    gtk_widget_set_cursor_from_name(picture->Area, "text");
    gtk_drawing_area_set_draw_func(GTK_DRAWING_AREA(picture->Area), Draw, picture, nullptr);
    g_signal_connect(picture->Area, "resize", G_CALLBACK(OnResize), picture);
    g_signal_connect(picture->Area, "notify::scale-factor", G_CALLBACK(OnScale), picture);
    gtk_grid_attach(GTK_GRID(picture->Grid), picture->Area, 0, 0, 1, 1);
    for (int i = 0; i < 2; ++i) {
        picture->Places[i] = gtk_adjustment_new(0, 0, 0, 0, 0, 0);
        g_signal_connect(picture->Places[i], "value-changed", G_CALLBACK(OnMoved), picture);
        picture->Bars[i] = gtk_scrollbar_new(i == 0 ? GTK_ORIENTATION_HORIZONTAL : GTK_ORIENTATION_VERTICAL,
                                             picture->Places[i]);
        gtk_grid_attach(GTK_GRID(picture->Grid), picture->Bars[i], i, 1 - i, 1, 1);
    }
    gtk_widget_set_visible(picture->Bars[0], FALSE);

    GtkEventController *wheel = gtk_event_controller_scroll_new(GTK_EVENT_CONTROLLER_SCROLL_BOTH_AXES);
    g_signal_connect(wheel, "scroll", G_CALLBACK(OnWheel), picture);
    gtk_widget_add_controller(picture->Area, wheel);
    GtkEventController *pointer = gtk_event_controller_motion_new();
    g_signal_connect(pointer, "motion", G_CALLBACK(OnPointer), picture);
    gtk_widget_add_controller(picture->Area, pointer);
    GtkGesture *drag = gtk_gesture_drag_new();
    g_signal_connect(drag, "drag-update", G_CALLBACK(OnDragged), picture);
    g_signal_connect(drag, "drag-end", G_CALLBACK(OnDropped), picture);
    gtk_widget_add_controller(picture->Area, GTK_EVENT_CONTROLLER(drag));
    GtkGesture *click = gtk_gesture_click_new();
    g_signal_connect(click, "pressed", G_CALLBACK(OnPressed), picture);
    gtk_widget_add_controller(picture->Area, GTK_EVENT_CONTROLLER(click));
    gtk_gesture_group(drag, click);
    return picture;
}

GtkWidget *Outside(const Picture *picture) { return picture->Grid; }

GtkWidget *Inside(const Picture *picture) { return picture->Area; }

void Show(Picture *picture, const Content &content, int descriptor)
{
    ForgetImage(picture);
    picture->Shown = content;
    if (descriptor >= 0) MapImage(picture, descriptor);

    // A place that the person has asked for since is where the bars stay.
    const bool isBehind = picture->AsksAgain;
    picture->AskedAt_us = 0;
    const int sizes[2] = {content.ContentWidth, content.ContentHeight};
    const int inView[2] = {gtk_widget_get_width(picture->Area), gtk_widget_get_height(picture->Area)};
    const int places[2] = {content.X, content.Y};
    picture->IsSetting = true;
    for (int i = 0; i < 2; ++i) {
        const double place = isBehind ? Place(picture, i) : places[i];
        gtk_adjustment_configure(picture->Places[i], place, 0, sizes[i], wheelStep,
                                 i == 1 ? content.Page : inView[i], inView[i]);
    }
    picture->IsSetting = false;
    gtk_widget_set_visible(picture->Bars[0], sizes[0] > inView[0]);
    gtk_widget_queue_draw(picture->Area);
    if (isBehind) AskForPlace(picture);
}

void Free(Picture *picture)
{
    ForgetImage(picture);
    // The rest stays: a signal of a widget that is still on its way out may name it.
}

} // namespace pictures
