// A bare GTK window with a text in it.
//   window_gtk TITLE
// It stays half a minute at most.
#include <gtk/gtk.h>
#include <unistd.h>

int main(int argumentCount, char **arguments)
{
    if (argumentCount < 2) return 2;
    constexpr unsigned patience_s = 30;
    alarm(patience_s);
    gtk_init();
    GtkWidget *window = gtk_window_new();
    gtk_window_set_title(GTK_WINDOW(window), arguments[1]);
    gtk_window_set_child(GTK_WINDOW(window), gtk_label_new("Der Zeitraum ist bereits abgeschlossen."));
    gtk_window_present(GTK_WINDOW(window));
    for (;;) {
        g_main_context_iteration(nullptr, TRUE);
    }
}
