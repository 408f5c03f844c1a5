// vark-ui: shows the windows of one host process with GTK 4. It is started with a socket as descriptor 3,
// mirrors what comes through it with native widgets, and sends back what the person does. The host's model
// decides everything: a check, a page or a row changes here for good only when the model says so.
#include "host/descriptors.h"
#include "window-system/ui/hearing.h"
#include "window-system/ui/item.h"
#include "window-system/ui/showing.h"

#include <clocale>
#include <cstring>
#include <gtk/gtk.h>
#include <string>
#include <unistd.h>

using namespace ui;

namespace {

// Native widgets want more room than a dialog's lines have; they are made as low as their text allows.
constexpr char style[] =
    "entry, button, combobox button, combobox entry { min-height: 22px; padding-top: 2px;"
    " padding-bottom: 2px; }"
    "button { padding-left: 8px; padding-right: 8px; }"
    "button.icon { min-width: 16px; padding-left: 4px; padding-right: 4px; }"
    "checkbutton { min-height: 0; padding: 0; border-radius: 4px; }"
    "checkbutton:focus:focus-visible { outline: 2px solid alpha(@theme_selected_bg_color, 0.6);"
    " outline-offset: 1px; }"
    "button.default:not(:disabled) { border-color: @theme_selected_bg_color; }"
    "listview > row { padding: 1px 6px; }"
    "scrolledwindow.frame:focus-within { border-color: @theme_selected_bg_color;"
    " outline: 1px solid alpha(@theme_selected_bg_color, 0.6); outline-offset: 0; }"
    "entry > text:not(:focus-within) > selection { background-color: transparent; color: inherit; }"
    "frame > label { margin: 2px 8px 0px 8px; }"
    "image.box-icon { -gtk-icon-size: 36px; }"
    "image.question, image.information { color: #3584e4; }"
    "image.warning { color: #e5a50a; }"
    "image.error { color: #e01b24; }"
    ".picture { background-color: shade(@theme_bg_color, 0.88); }"
    ".picture:focus-visible { outline: 1px solid alpha(@theme_selected_bg_color, 0.6); outline-offset: -1px; "
    "}"
    ".chooser .dialog-vbox { padding: 8px; }"
    "notebook > header tab { min-height: 22px; padding: 2px 10px; }";

// Without a compositor nothing shines through a window: what lies around a popup for its shadow and behind
// its round corners would be black.
constexpr char styleOfOpaquePopups[] =
    "popover { margin: 0; padding: 0; }"
    "popover > contents, popover > arrow, tooltip { box-shadow: none; border-radius: 0; margin: 0; }"
    "popover > contents, tooltip { border: 1px solid @borders; background-clip: border-box; }";

void ShowPopups(GdkDisplay *display, GParamSpec * /*property*/, GtkCssProvider *provider)
{
    const bool isComposited = gdk_display_is_composited(display) != FALSE;
    gtk_css_provider_load_from_data(provider, isComposited ? "" : styleOfOpaquePopups, -1);
}

void AddStyles(GdkDisplay *display)
{
    GtkCssProvider *provider = gtk_css_provider_new();
    gtk_css_provider_load_from_data(provider, style, -1);
    GtkCssProvider *popups = gtk_css_provider_new();
    ShowPopups(display, nullptr, popups);
    g_signal_connect(display, "notify::composited", G_CALLBACK(ShowPopups), popups);
    for (GtkCssProvider *each : {provider, popups}) {
        gtk_style_context_add_provider_for_display(display, GTK_STYLE_PROVIDER(each),
                                                   GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
    }
}

// How large 4 and 8 dialog units are: the average letter's width and a line with its room.
void MeasureLetters(uint32_t &baseX, uint32_t &baseY)
{
    constexpr char letters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    GtkWidget *label = GTK_WIDGET(g_object_ref_sink(gtk_label_new(nullptr)));
    PangoLayout *layout = gtk_widget_create_pango_layout(label, letters);
    int width = 0;
    int height = 0;
    pango_layout_get_pixel_size(layout, &width, &height);
    g_object_unref(layout);
    g_object_unref(label);
    constexpr int letterCount = sizeof letters - 1;
    constexpr int lowest = 20; // a field of 14 units holds a native one then
    baseX = static_cast<uint32_t>((width + letterCount - 1) / letterCount);
    baseY = static_cast<uint32_t>(height + 1 > lowest ? height + 1 : lowest);
}

// All that a person reads here is German, also what GTK says by itself, which it does in no language of its
// own where the locale is the plain one.
void SpeakGerman()
{
    const char *locale = setlocale(LC_MESSAGES, "");
    const bool isPlain = locale == nullptr || strcmp(locale, "C") == 0 || strcmp(locale, "POSIX") == 0;
    if (isPlain) g_setenv("LC_ALL", "C.UTF-8", TRUE);
    g_setenv("LANGUAGE", "de", TRUE);
}

// What the desktop remembers of its dialogs is lost where it has no memory for it: no news for a host.
GLogWriterOutput WriteLog(GLogLevelFlags level, const GLogField *fields, size_t count, void *data)
{
    for (size_t i = 0; i < count; ++i) {
        if (strcmp(fields[i].key, "GLIB_DOMAIN") != 0) continue;
        if (strcmp(static_cast<const char *>(fields[i].value), "dconf") == 0) return G_LOG_WRITER_HANDLED;
    }
    return g_log_writer_default(level, fields, count, data);
}

} // namespace

int main()
{
    host::GuardStandardDescriptors(); // else a warning might be written into the connection to the display
    // The host's child ends at once, so that the host has nobody to wait for; this one goes on.
    const pid_t child = fork();
    if (child != 0) _exit(child < 0 ? 1 : 0);
    setsid();
    SpeakGerman();
    g_log_set_writer_func(WriteLog, nullptr, nullptr);
    g_set_prgname("vark-ui");
    // Fields and lists are drawn in a few milliseconds without the graphics card, and getting that ready
    // takes longer than all the rest of a dialog. Whoever wants it can have it.
    g_setenv("GSK_RENDERER", "cairo", FALSE);
    if (gtk_init_check() == FALSE) return 1;
    AddStyles(gdk_display_get_default());
    uint32_t baseX = 0;
    uint32_t baseY = 0;
    MeasureLetters(baseX, baseY);
    std::string hello(1, static_cast<char>(FromScreen::Hello));
    Append(hello, protocolVersion);
    heightOfLine = baseY;
    Append(hello, baseX);
    Append(hello, baseY);
    Send(hello);
    GMainLoop *mainLoop = g_main_loop_new(nullptr, FALSE);
    g_unix_fd_add(hostSocket, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR), OnSocket, mainLoop);
    g_main_loop_run(mainLoop);
    return 0;
}
