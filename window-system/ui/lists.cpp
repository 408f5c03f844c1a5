#include "window-system/ui/lists.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "window-system/ui/labels.h"
#include "window-system/ui/row_model.h"

namespace ui {

namespace {

void OnRowSelected(GtkSingleSelection *selection, GParamSpec * /*property*/, Item *item)
{
    if (updating != 0) return;
    const guint row = gtk_single_selection_get_selected(selection);
    if (row != GTK_INVALID_LIST_POSITION) SendInput(item, InputKind::Select, static_cast<int>(row));
}

void OnRowActivated(GtkListView * /*view*/, guint row, Item *item)
{
    SendInput(item, InputKind::Pick, static_cast<int>(row));
}

void OnRowSetup(GtkListItemFactory * /*factory*/, GtkListItem *row, Item * /*item*/)
{
    GtkWidget *label = gtk_label_new(nullptr);
    gtk_label_set_xalign(GTK_LABEL(label), 0);
    g_object_set_data(G_OBJECT(label), "row", row);
    gtk_list_item_set_child(row, label);
}

void OnRowBind(GtkListItemFactory * /*factory*/, GtkListItem *row, Item *item)
{
    auto *string = GTK_STRING_OBJECT(gtk_list_item_get_item(row));
    auto *label = GTK_LABEL(gtk_list_item_get_child(row));
    gtk_label_set_tabs(label, item->Columns);
    gtk_label_set_text(label, gtk_string_object_get_string(string));
    SetName(gtk_widget_get_parent(GTK_WIDGET(label)), gtk_string_object_get_string(string));
}

// About how wide each letter is, by its first byte; 0 for a byte that goes on with the letter before.
struct Weights {
    uint8_t Of[256];
};

constexpr Weights MakeWeights()
{
    constexpr uint8_t narrow = 2, common = 4, wide = 5;
    Weights weights = {};
    for (int byte = 0; byte < 256; ++byte) {
        weights.Of[byte] = (byte & 0xC0) == 0x80 ? 0 : common;
    }
    for (const char letter : std::string_view(" ijl.,:;'|!tfI")) {
        weights.Of[static_cast<unsigned char>(letter)] = narrow;
    }
    for (const char letter : std::string_view("MWmw@")) {
        weights.Of[static_cast<unsigned char>(letter)] = wide;
    }
    return weights;
}

constexpr Weights weightOf = MakeWeights();

// About how wide a text is, without asking for its letters: enough to find the widest of many.
int Weight(std::string_view text)
{
    int weight = 0;
    for (const char letter : text) {
        weight += weightOf.Of[static_cast<unsigned char>(letter)];
    }
    return weight;
}

// The widest text of each column, as far as tab stops tell columns.
std::vector<std::string> WidestTexts(const Item *item)
{
    std::vector<std::string> widest(item->TabStops.size());
    std::vector<int> weights(item->TabStops.size(), 0);
    const guint count = g_list_model_get_n_items(item->Rows);
    for (guint i = 0; i < count; ++i) {
        std::string_view rest = RowText(item->Rows, i);
        for (size_t column = 0; column < widest.size(); ++column) {
            const size_t tab = rest.find('\t');
            if (tab == std::string_view::npos) break; // nothing stands behind the last column
            const std::string_view text = rest.substr(0, tab);
            const int weight = Weight(text);
            if (weight > weights[column]) {
                weights[column] = weight;
                widest[column] = text;
            }
            rest.remove_prefix(tab + 1);
        }
    }
    return widest;
}

// The tab stops were made for narrower letters: a column that is wider than they leave room for moves those
// behind it, in all rows alike.
void SetColumns(Item *item)
{
    if (item->Columns != nullptr) pango_tab_array_free(item->Columns);
    item->Columns = nullptr;
    if (item->TabStops.empty()) return;
    const std::vector<std::string> widest = WidestTexts(item);
    const int gap = WidthOf(item->Control, "nn");
    item->Columns = pango_tab_array_new(static_cast<int>(widest.size()), TRUE);
    int start = 0;
    for (size_t i = 0; i < widest.size(); ++i) {
        const int end = widest[i].empty() ? start : start + WidthOf(item->Control, widest[i]) + gap;
        start = std::max(item->TabStops[i], end);
        pango_tab_array_set_tab(item->Columns, static_cast<int>(i), PANGO_TAB_LEFT, start);
    }
}

// The label of a row and, around it, what can have the keyboard. Null for a row that is not in view.
GtkWidget *LabelOfRow(const Item *item, guint row)
{
    for (GtkWidget *child = gtk_widget_get_first_child(item->Control); child != nullptr;
         child = gtk_widget_get_next_sibling(child)) {
        GtkWidget *label = gtk_widget_get_first_child(child);
        if (label == nullptr) continue;
        auto *shown = static_cast<GtkListItem *>(g_object_get_data(G_OBJECT(label), "row"));
        if (shown != nullptr && gtk_list_item_get_position(shown) == row) return label;
    }
    return nullptr;
}

bool HasKeyboard(const Item *item)
{
    GtkRoot *root = gtk_widget_get_root(item->Control);
    return GTK_IS_WINDOW(root) && FocusedItem(GTK_WINDOW(root)) == item;
}

void ScrollToSelected(Item *item)
{
    const guint row = gtk_single_selection_get_selected(item->Selection);
    if (row == GTK_INVALID_LIST_POSITION) return;
    gtk_widget_activate_action(item->Control, "list.scroll-to-item", "u", row);
    GtkWidget *label = HasKeyboard(item) ? LabelOfRow(item, row) : nullptr;
    if (label != nullptr) gtk_widget_grab_focus(gtk_widget_get_parent(label));
}

gboolean OnFrame(GtkWidget * /*list*/, GdkFrameClock * /*clock*/, gpointer data)
{
    auto *item = static_cast<Item *>(data);
    if (--item->FramesToScroll > 0) return G_SOURCE_CONTINUE;
    ++updating;
    ScrollToSelected(item);
    --updating;
    return G_SOURCE_REMOVE;
}

} // namespace

void MakeList(Item *item)
{
    GtkListItemFactory *factory = gtk_signal_list_item_factory_new();
    g_signal_connect(factory, "setup", G_CALLBACK(OnRowSetup), item);
    g_signal_connect(factory, "bind", G_CALLBACK(OnRowBind), item);
    item->Rows = MakeRowModel();
    item->Selection = gtk_single_selection_new(G_LIST_MODEL(g_object_ref(item->Rows)));
    gtk_single_selection_set_autoselect(item->Selection, FALSE);
    gtk_single_selection_set_can_unselect(item->Selection, TRUE);
    gtk_single_selection_set_selected(item->Selection, GTK_INVALID_LIST_POSITION);
    item->Control = gtk_list_view_new(GTK_SELECTION_MODEL(item->Selection), factory);
    g_signal_connect(item->Selection, "notify::selected", G_CALLBACK(OnRowSelected), item);
    g_signal_connect(item->Control, "activate", G_CALLBACK(OnRowActivated), item);
    item->Placed = gtk_scrolled_window_new();
    auto *scroller = GTK_SCROLLED_WINDOW(item->Placed);
    gtk_scrolled_window_set_has_frame(scroller, TRUE);
    gtk_scrolled_window_set_overlay_scrolling(scroller, FALSE);
    gtk_scrolled_window_set_child(scroller, item->Control);
}

int HeightOfList(const Item *item)
{
    if ((item->Style & listAnyHeight) != 0) return item->Height;
    constexpr int frame = 2;     // above and below the rows
    constexpr int roomOfRow = 2; // beyond its letters, as the style has it
    const int row = HeightOfLine(item->Control) + roomOfRow;
    return std::max(row, item->Height - (item->Height - frame) % row);
}

void ShowRows(Item *item, FrameReader &reader, uint32_t count)
{
    // Rows take their columns over as they come, so those have to be there first.
    gtk_single_selection_set_model(item->Selection, nullptr);
    TakeRows(item->Rows, reader, count);
    SetColumns(item);
    gtk_single_selection_set_model(item->Selection, item->Rows);
    // They have no height before the next frame, and cannot be scrolled to.
    if (item->FramesToScroll == 0) gtk_widget_add_tick_callback(item->Control, OnFrame, item, nullptr);
    constexpr int framesUntilLaidOut = 2;
    item->FramesToScroll = framesUntilLaidOut;
}

void ShowSelectedRow(Item *item)
{
    const guint row = item->Value < 0 ? GTK_INVALID_LIST_POSITION : static_cast<guint>(item->Value);
    if (gtk_single_selection_get_selected(item->Selection) != row) {
        gtk_single_selection_set_selected(item->Selection, row);
    }
    ScrollToSelected(item);
}

void ForgetRows(Item *item)
{
    g_clear_object(&item->Rows);
    if (item->Columns != nullptr) pango_tab_array_free(item->Columns);
    item->Columns = nullptr;
}

void ShowTabStops(Item *item)
{
    SetColumns(item);
    for (GtkWidget *child = gtk_widget_get_first_child(item->Control); child != nullptr;
         child = gtk_widget_get_next_sibling(child)) {
        GtkWidget *label = gtk_widget_get_first_child(child);
        if (GTK_IS_LABEL(label)) gtk_label_set_tabs(GTK_LABEL(label), item->Columns);
    }
}

} // namespace ui
