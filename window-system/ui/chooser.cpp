#include "window-system/ui/chooser.h"

namespace ui {

namespace {

constexpr char kindData[] = "kind"; // of a filter: its row, from 1

GFile *lastDirectory; // null until a file was chosen

std::string EndingOf(GtkFileFilter *filter)
{
    const std::string name = gtk_file_filter_get_name(filter);
    const size_t begin = name.rfind("(*");
    const size_t end = name.rfind(')');
    if (begin == std::string::npos || end == std::string::npos || end < begin) return "";
    return name.substr(begin + 2, end - begin - 2);
}

bool EndsWith(const std::string &name, const std::string &ending)
{
    return name.size() > ending.size() &&
           name.compare(name.size() - ending.size(), ending.size(), ending) == 0;
}

std::string CurrentName(GtkFileChooser *chooser)
{
    char *name = gtk_file_chooser_get_current_name(chooser);
    std::string out = name != nullptr ? name : "";
    g_free(name);
    return out;
}

// The name ends as the kind does that was chosen.
void OnKind(GtkFileChooser *chooser, GParamSpec * /*property*/, void * /*data*/)
{
    GtkFileFilter *chosen = gtk_file_chooser_get_filter(chooser);
    std::string name = CurrentName(chooser);
    if (chosen == nullptr || name.empty()) return;
    GListModel *filters = gtk_file_chooser_get_filters(chooser);
    const guint count = g_list_model_get_n_items(filters);
    for (guint i = 0; i < count; ++i) {
        auto *filter = GTK_FILE_FILTER(g_list_model_get_item(filters, i));
        const std::string ending = EndingOf(filter);
        g_object_unref(filter);
        if (!EndsWith(name, ending)) continue;
        name.resize(name.size() - ending.size());
        break;
    }
    g_object_unref(filters);
    gtk_file_chooser_set_current_name(chooser, (name + EndingOf(chosen)).c_str());
}

void OnResponse(GtkDialog *dialog, int response, Item *item)
{
    if (response != GTK_RESPONSE_ACCEPT) {
        SendInput(item, InputKind::Close);
        return;
    }
    auto *chooser = GTK_FILE_CHOOSER(dialog);
    GFile *file = gtk_file_chooser_get_file(chooser);
    char *path = file != nullptr ? g_file_get_path(file) : nullptr;
    if (path != nullptr) {
        if (lastDirectory != nullptr) g_object_unref(lastDirectory);
        lastDirectory = g_file_get_parent(file);
    }
    GtkFileFilter *filter = gtk_file_chooser_get_filter(chooser);
    const int kind =
        filter != nullptr ? GPOINTER_TO_INT(g_object_get_data(G_OBJECT(filter), kindData)) - 1 : 0;
    // The dialog has asked by itself whether a file of that name goes.
    SendInput(item, InputKind::File, kind < 0 ? 0 : kind, 1, path != nullptr ? path : "");
    g_free(path);
    if (file != nullptr) g_object_unref(file);
}

void ShowDirectory(GtkFileChooser *chooser)
{
    GFile *directory = lastDirectory != nullptr ? G_FILE(g_object_ref(lastDirectory))
                                                : g_file_new_for_path(g_get_home_dir());
    gtk_file_chooser_set_current_folder(chooser, directory, nullptr);
    g_object_unref(directory);
}

} // namespace

void MakeChooser(Item *item)
{
    item->Placed =
        gtk_file_chooser_dialog_new(item->Text.c_str(), nullptr, GTK_FILE_CHOOSER_ACTION_SAVE, "_Abbrechen",
                                    GTK_RESPONSE_CANCEL, "_Speichern", GTK_RESPONSE_ACCEPT, nullptr);
    gtk_widget_add_css_class(item->Placed, "chooser");
    gtk_dialog_set_default_response(GTK_DIALOG(item->Placed), GTK_RESPONSE_ACCEPT);
    ShowDirectory(GTK_FILE_CHOOSER(item->Placed));
    g_signal_connect(item->Placed, "response", G_CALLBACK(OnResponse), item);
    g_signal_connect(item->Placed, "notify::filter", G_CALLBACK(OnKind), nullptr);
}

bool IsChooser(const Item *item) { return item != nullptr && (item->Flags & flagChooser) != 0; }

bool IsInChooser(const Item *item) { return IsChooser(FindItem(item->Parent)); }

void ShowInChooser(const Item *item)
{
    if (item->What != Kind::Edit) return;
    auto *chooser = GTK_FILE_CHOOSER(FindItem(item->Parent)->Placed);
    // Only at first: afterwards the name is the person's.
    if (!CurrentName(chooser).empty()) return;
    const size_t slash = item->Text.rfind('/');
    gtk_file_chooser_set_current_name(
        chooser, (slash != std::string::npos ? item->Text.substr(slash + 1) : item->Text).c_str());
}

void ShowKinds(const Item *item, const std::vector<std::string> &kinds)
{
    auto *chooser = GTK_FILE_CHOOSER(FindItem(item->Parent)->Placed);
    int row = 0;
    for (const std::string &kind : kinds) {
        GtkFileFilter *filter = gtk_file_filter_new();
        gtk_file_filter_set_name(filter, kind.c_str());
        gtk_file_filter_add_pattern(filter, ("*" + EndingOf(filter)).c_str());
        g_object_set_data(G_OBJECT(filter), kindData, GINT_TO_POINTER(++row));
        gtk_file_chooser_add_filter(chooser, filter);
        if (row == 1) gtk_file_chooser_set_filter(chooser, filter);
        g_object_unref(filter);
    }
}

} // namespace ui
