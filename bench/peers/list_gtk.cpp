// A bare GTK list: the rows of a file, sorted, in a window with a search entry, as anybody would write it.
//   list_gtk TITLE FILE   ends with 0 when the last row is activated
// Without a person it ends by itself after half a minute.
#include "bench/peers/peer.h"

#include <algorithm>
#include <fstream>
#include <gtk/gtk.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

std::vector<std::string> SortedLines(const char *path)
{
    std::vector<std::string> lines;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        lines.push_back(line);
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

GtkStringList *MakeModel(const std::vector<std::string> &lines)
{
    std::vector<const char *> texts;
    texts.reserve(lines.size() + 1);
    for (const std::string &line : lines) {
        texts.push_back(line.c_str());
    }
    texts.push_back(nullptr);
    return gtk_string_list_new(texts.data());
}

void OnSetup(GtkListItemFactory * /*factory*/, GtkListItem *row)
{
    GtkWidget *label = gtk_label_new(nullptr);
    gtk_label_set_xalign(GTK_LABEL(label), 0);
    gtk_list_item_set_child(row, label);
}

void OnBind(GtkListItemFactory * /*factory*/, GtkListItem *row)
{
    gtk_label_set_text(GTK_LABEL(gtk_list_item_get_child(row)),
                       gtk_string_object_get_string(GTK_STRING_OBJECT(gtk_list_item_get_item(row))));
}

void OnActivated(GtkListView *view, guint row)
{
    const guint count = g_list_model_get_n_items(G_LIST_MODEL(gtk_list_view_get_model(view)));
    std::_Exit(row + 1 == count ? 0 : 1);
}

// The list has no row that could have the keyboard before it has been laid out.
gboolean OnFrame(GtkWidget *list, GdkFrameClock * /*clock*/, void * /*data*/)
{
    if (gtk_widget_get_first_child(list) == nullptr) return G_SOURCE_CONTINUE;
    gtk_widget_grab_focus(list);
    return G_SOURCE_REMOVE;
}

} // namespace

int main(int argumentCount, char **arguments)
{
    if (argumentCount < 3) return 2;
    constexpr unsigned patience_s = 30;
    alarm(patience_s);
    gtk_init();
    GtkWidget *window = gtk_window_new();
    gtk_window_set_title(GTK_WINDOW(window), arguments[1]);
    constexpr int width = 540;
    constexpr int height = 460;
    gtk_window_set_default_size(GTK_WINDOW(window), width, height);
    GtkSelectionModel *selection =
        GTK_SELECTION_MODEL(gtk_single_selection_new(G_LIST_MODEL(MakeModel(SortedLines(arguments[2])))));
    GtkListItemFactory *factory = gtk_signal_list_item_factory_new();
    g_signal_connect(factory, "setup", G_CALLBACK(OnSetup), nullptr);
    g_signal_connect(factory, "bind", G_CALLBACK(OnBind), nullptr);
    GtkWidget *list = gtk_list_view_new(selection, factory);
    g_signal_connect(list, "activate", G_CALLBACK(OnActivated), nullptr);
    gtk_widget_add_tick_callback(list, OnFrame, nullptr, nullptr);
    GtkWidget *scroller = gtk_scrolled_window_new();
    gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scroller), list);
    gtk_widget_set_vexpand(scroller, TRUE);
    GtkWidget *box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
    gtk_box_append(GTK_BOX(box), gtk_search_entry_new());
    gtk_box_append(GTK_BOX(box), scroller);
    gtk_window_set_child(GTK_WINDOW(window), box);
    gtk_window_present(GTK_WINDOW(window));
    for (;;) {
        g_main_context_iteration(nullptr, TRUE);
    }
}
