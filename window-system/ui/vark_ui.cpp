// vark-ui: shows the windows of one host process with GTK 4. It is started with a socket as descriptor 3,
// mirrors what comes through it with native widgets, and sends back what the person does. The host's model
// decides everything: a check, a page or a row changes here for good only when the model says so.
#include <cerrno>
#include <cstring>
#include <deque>
#include <glib-unix.h>
#include <gtk/gtk.h>
#include <string>
#include <sys/socket.h>
#include <unistd.h>
#include <unordered_map>
#include <vector>

#include "window-system/protocol.h"
#include "window-system/ui/picture.h"

using namespace varkui;

namespace {

constexpr int hostSocket = 3;

enum class Kind : uint8_t { Plain, Dialog, Button, Edit, Static, ListBox, ComboBox, TabControl, Picture };
enum class InputKind : uint8_t {
    Click,
    Select,
    Pick,
    Text,
    Focus,
    Activate,
    Close,
    Resize,
    Drop,
    Area,
    Scroll,
    Press,
    Drag,
    Release,
    Zoom
};

constexpr uint32_t typeMask = 0xF;
constexpr uint32_t pushButton = 0, defaultButton = 1, radioButton = 4, groupBox = 7, autoRadioButton = 9;
constexpr uint32_t iconButton = 0x40;
constexpr uint32_t thickFrame = 0x40000;
constexpr uint32_t statics = 0x1F, staticCenter = 1, staticRight = 2, staticLine = 0x10,
                   staticNoPrefix = 0x80;
constexpr uint32_t editNumber = 0x2000, editReadOnly = 0x800, editPassword = 0x20;
constexpr uint32_t comboList = 3;

// One window of the model and what shows it.
struct Item {
    uint32_t Handle = 0, Parent = 0, Owner = 0, Style = 0, ExStyle = 0, Serial = 0, BoxStyle = 0;
    Kind What = Kind::Plain;
    uint8_t Flags = 0;
    int32_t Id = 0, X = 0, Y = 0, Width = 0, Height = 0, Value = 0, Limit = 0, Anchor = 0, Caret = 0;
    std::string Text;
    std::vector<int32_t> TabStops;
    std::vector<std::string> Rows;
    GtkWidget *Placed =
        nullptr; // what stands in the parent's place; the window itself for one without parent
    GtkWidget *Control = nullptr; // what has the focus
    GtkWidget *Inside = nullptr;  // holds the children
    GtkWidget *Buttons = nullptr; // of a message box
    GtkWidget *Partner = nullptr; // keeps a radio button a group of its own
    GtkStringList *Strings = nullptr;
    GtkSingleSelection *Selection = nullptr;
    pictures::Picture *Shown = nullptr;
    int32_t ToldWidth = 0, ToldHeight = 0; // of a window that the person may resize
    bool SizeIsComing = false;
    int32_t ToldAnchor = -1, ToldCaret = -1;
    std::string ToldText;
};

std::unordered_map<uint32_t, Item *> items;
int updating; // while the model's state is being shown, nothing that changes is the person's doing
GMainLoop *mainLoop;

Item *FindItem(uint32_t handle)
{
    const auto found = items.find(handle);
    return found != items.end() ? found->second : nullptr;
}

// ---- Speaking ----

void Append(std::string &frame, uint32_t value)
{
    frame.append(reinterpret_cast<const char *>(&value), sizeof value);
}

void Send(const std::string &frame)
{
    std::string whole;
    Append(whole, static_cast<uint32_t>(frame.size()));
    whole += frame;
    size_t sent = 0;
    while (sent < whole.size()) {
        const ssize_t some = send(hostSocket, whole.data() + sent, whole.size() - sent, MSG_NOSIGNAL);
        if (some <= 0) _exit(0); // the host has gone
        sent += static_cast<size_t>(some);
    }
}

void SendInput(const Item *item, InputKind kind, int index, int index2, uint32_t serial,
               const std::string &text)
{
    std::string frame(1, static_cast<char>(FromScreen::Input));
    Append(frame, item->Handle);
    frame += static_cast<char>(kind);
    Append(frame, static_cast<uint32_t>(index));
    Append(frame, static_cast<uint32_t>(index2));
    Append(frame, serial);
    Append(frame, static_cast<uint32_t>(text.size()));
    frame += text;
    Send(frame);
}

void SendInput(const Item *item, InputKind kind, int index = 0, int index2 = 0, const std::string &text = {})
{
    SendInput(item, kind, index, index2, item->Serial, text);
}

// ---- Texts ----

// "&Name" as GTK writes it, "_Name"; "&&" is an ampersand.
std::string WithUnderlines(const std::string &text)
{
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '_') {
            out += "__";
        } else if (text[i] != '&') {
            out += text[i];
        } else if (i + 1 < text.size() && text[i + 1] == '&') {
            out += '&';
            ++i;
        } else {
            out += '_';
        }
    }
    return out;
}

std::string WithoutMnemonic(const std::string &text)
{
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '&' && i + 1 < text.size()) ++i;
        out += text[i];
    }
    return out;
}

// ---- What the person does ----

void OnClicked(GtkButton * /*button*/, Item *item)
{
    if (updating == 0) SendInput(item, InputKind::Click);
}

void ShowCheck(Item *item)
{
    ++updating;
    auto *check = GTK_CHECK_BUTTON(item->Control);
    gtk_check_button_set_inconsistent(check, item->Value == 2);
    if (item->Partner != nullptr && item->Value == 0) {
        gtk_check_button_set_active(GTK_CHECK_BUTTON(item->Partner), TRUE);
    } else {
        gtk_check_button_set_active(check, item->Value != 0);
    }
    --updating;
}

void OnToggled(GtkCheckButton * /*button*/, Item *item)
{
    if (updating != 0) return;
    ShowCheck(item); // the model decides
    SendInput(item, InputKind::Click);
}

// A radio button that is checked stays so for GTK, but a click on it is told all the same.
void OnRadioReleased(GtkGestureClick * /*gesture*/, int /*presses*/, double /*x*/, double /*y*/, Item *item)
{
    if (item->Value != 0) SendInput(item, InputKind::Click);
}

void OnTextChanged(GtkEditable *editable, Item *item)
{
    if (updating != 0) return;
    const int caret = gtk_editable_get_position(editable);
    item->ToldText = gtk_editable_get_text(editable);
    item->ToldAnchor = item->ToldCaret = caret;
    SendInput(item, InputKind::Text, caret, caret, item->ToldText);
}

void OnInsertText(GtkEditable *editable, const char *text, int length, int * /*position*/, Item *item)
{
    if (updating != 0 || item->What != Kind::Edit || (item->Style & editNumber) == 0) return;
    const size_t size = length < 0 ? strlen(text) : static_cast<size_t>(length);
    for (size_t i = 0; i < size; ++i) {
        if (text[i] >= '0' && text[i] <= '9') continue;
        g_signal_stop_emission_by_name(editable, "insert-text");
        return;
    }
}

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

void OnComboChanged(GtkComboBox *combo, Item *item)
{
    if (updating != 0) return;
    const int row = gtk_combo_box_get_active(combo);
    if (row >= 0) {
        SendInput(item, InputKind::Select, row);
        return;
    }
    GtkWidget *entry = gtk_combo_box_get_child(combo);
    if (GTK_IS_EDITABLE(entry)) OnTextChanged(GTK_EDITABLE(entry), item);
}

void OnPageSwitched(GtkNotebook * /*notebook*/, GtkWidget * /*page*/, guint number, Item *item)
{
    if (updating == 0) SendInput(item, InputKind::Select, static_cast<int>(number));
}

void OnFocusIn(GtkEventControllerFocus * /*controller*/, Item *item)
{
    if (updating == 0) SendInput(item, InputKind::Focus);
}

void OnPictureEvent(void *owner, pictures::Event event, int x, int y, int count, bool shift)
{
    constexpr uint32_t serialShift = 0x100;
    const auto kind = static_cast<InputKind>(static_cast<int>(InputKind::Area) + static_cast<int>(event));
    SendInput(static_cast<Item *>(owner), kind, x, y,
              static_cast<uint32_t>(count) | (shift ? serialShift : 0), {});
}

gboolean OnCloseRequest(GtkWindow * /*window*/, Item *item)
{
    SendInput(item, InputKind::Close);
    return TRUE;
}

// A window that waits for one it owns leaves the front to that.
void OnActive(GtkWindow *window, GParamSpec * /*property*/, Item *item)
{
    if (updating != 0 || gtk_window_is_active(window) == FALSE) return;
    if ((item->Flags & flagEnabled) != 0) {
        SendInput(item, InputKind::Activate);
        return;
    }
    for (const auto &[handle, other] : items) {
        if (other->Owner == item->Handle && (other->Flags & flagShown) != 0 && other->Placed != nullptr) {
            gtk_window_present(GTK_WINDOW(other->Placed));
        }
    }
}

struct KeyOf {
    guint Symbol;
    uint32_t Key;
};

constexpr KeyOf namedKeys[] = {
    {GDK_KEY_Tab, 0x09},       {GDK_KEY_ISO_Left_Tab, 0x09}, {GDK_KEY_Return, 0x0D}, {GDK_KEY_KP_Enter, 0x0D},
    {GDK_KEY_Escape, 0x1B},    {GDK_KEY_space, 0x20},        {GDK_KEY_Prior, 0x21},  {GDK_KEY_Next, 0x22},
    {GDK_KEY_End, 0x23},       {GDK_KEY_Home, 0x24},         {GDK_KEY_Left, 0x25},   {GDK_KEY_Up, 0x26},
    {GDK_KEY_Right, 0x27},     {GDK_KEY_Down, 0x28},         {GDK_KEY_Insert, 0x2D}, {GDK_KEY_Delete, 0x2E},
    {GDK_KEY_BackSpace, 0x08},
};

uint32_t KeyOfSymbol(guint symbol)
{
    for (const KeyOf &each : namedKeys) {
        if (each.Symbol == symbol) return each.Key;
    }
    if (symbol >= GDK_KEY_F1 && symbol <= GDK_KEY_F12) return 0x70 + (symbol - GDK_KEY_F1);
    const guint upper = gdk_keyval_to_upper(symbol);
    if ((upper >= 'A' && upper <= 'Z') || (upper >= '0' && upper <= '9')) return upper;
    return gdk_keyval_to_unicode(symbol) != 0 ? 0xE7 : 0;
}

Item *FocusedItem(GtkWindow *window)
{
    for (GtkWidget *widget = gtk_window_get_focus(window); widget != nullptr;
         widget = gtk_widget_get_parent(widget)) {
        auto *item = static_cast<Item *>(g_object_get_data(G_OBJECT(widget), "item"));
        if (item != nullptr) return item;
    }
    return nullptr;
}

// Keys are the model's, but for those that edit a text.
bool IsForModel(const Item *focus, uint32_t key, GdkModifierType state)
{
    if (key == 0x09 || key == 0x0D || key == 0x1B || (state & GDK_ALT_MASK) != 0 ||
        (key >= 0x70 && key <= 0x7B)) {
        return true;
    }
    const bool isPageKey = key == 0x21 || key == 0x22;
    const bool isControlKey =
        (state & GDK_CONTROL_MASK) != 0 && key < 0x80 && strchr("ACVXZ", static_cast<char>(key)) == nullptr;
    if (isPageKey || (isControlKey && key >= '0')) return true;
    if (focus == nullptr || (focus->What != Kind::Edit && focus->What != Kind::ComboBox)) return true;
    const bool field = focus->What == Kind::Edit || (focus->Style & 3) != comboList;
    const bool walks =
        focus->What == Kind::ComboBox && (key == 0x26 || key == 0x28 || key == 0x21 || key == 0x22);
    return !field || walks;
}

gboolean OnKey(GtkEventControllerKey * /*controller*/, guint symbol, guint /*code*/, GdkModifierType state,
               Item *top)
{
    const uint32_t key = KeyOfSymbol(symbol);
    if (key == 0) return FALSE;
    const Item *focus = FocusedItem(GTK_WINDOW(top->Placed));
    if (!IsForModel(focus, key, state)) return FALSE;
    uint32_t character = gdk_keyval_to_unicode(symbol);
    if (key == 0x0D || key == 0x09 || key == 0x1B || key == 0x08) character = key;
    std::string frame(1, static_cast<char>(FromScreen::Key));
    Append(frame, top->Handle);
    Append(frame, key);
    Append(frame, character);
    uint8_t modifiers = 0;
    if ((state & GDK_SHIFT_MASK) != 0) modifiers |= modifierShift;
    if ((state & GDK_CONTROL_MASK) != 0) modifiers |= modifierControl;
    if ((state & GDK_ALT_MASK) != 0) modifiers |= modifierAlt;
    frame += static_cast<char>(modifiers);
    Send(frame);
    return TRUE;
}

// ---- Making widgets ----

void WatchFocus(GtkWidget *widget, Item *item)
{
    GtkEventController *controller = gtk_event_controller_focus_new();
    g_signal_connect(controller, "enter", G_CALLBACK(OnFocusIn), item);
    gtk_widget_add_controller(widget, controller);
}

void OnRowSetup(GtkListItemFactory * /*factory*/, GtkListItem *row, Item *item)
{
    GtkWidget *label = gtk_label_new(nullptr);
    gtk_label_set_xalign(GTK_LABEL(label), 0);
    if (!item->TabStops.empty()) {
        PangoTabArray *tabs = pango_tab_array_new(static_cast<int>(item->TabStops.size()), TRUE);
        for (size_t i = 0; i < item->TabStops.size(); ++i) {
            pango_tab_array_set_tab(tabs, static_cast<int>(i), PANGO_TAB_LEFT, item->TabStops[i]);
        }
        gtk_label_set_tabs(GTK_LABEL(label), tabs);
        pango_tab_array_free(tabs);
    }
    gtk_list_item_set_child(row, label);
}

void OnRowBind(GtkListItemFactory * /*factory*/, GtkListItem *row, Item * /*item*/)
{
    auto *string = GTK_STRING_OBJECT(gtk_list_item_get_item(row));
    gtk_label_set_text(GTK_LABEL(gtk_list_item_get_child(row)), gtk_string_object_get_string(string));
}

void MakeList(Item *item)
{
    GtkListItemFactory *factory = gtk_signal_list_item_factory_new();
    g_signal_connect(factory, "setup", G_CALLBACK(OnRowSetup), item);
    g_signal_connect(factory, "bind", G_CALLBACK(OnRowBind), item);
    item->Strings = gtk_string_list_new(nullptr);
    item->Selection = gtk_single_selection_new(G_LIST_MODEL(item->Strings));
    gtk_single_selection_set_autoselect(item->Selection, FALSE);
    gtk_single_selection_set_can_unselect(item->Selection, TRUE);
    gtk_single_selection_set_selected(item->Selection, GTK_INVALID_LIST_POSITION);
    item->Control = gtk_list_view_new(GTK_SELECTION_MODEL(item->Selection), factory);
    g_signal_connect(item->Selection, "notify::selected", G_CALLBACK(OnRowSelected), item);
    g_signal_connect(item->Control, "activate", G_CALLBACK(OnRowActivated), item);
    item->Placed = gtk_scrolled_window_new();
    gtk_scrolled_window_set_has_frame(GTK_SCROLLED_WINDOW(item->Placed), TRUE);
    gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(item->Placed), item->Control);
}

void MakeButton(Item *item)
{
    const uint32_t type = item->Style & typeMask;
    if (type == groupBox) {
        item->Placed = gtk_frame_new(nullptr);
        gtk_frame_set_label_widget(GTK_FRAME(item->Placed), gtk_label_new(nullptr));
        gtk_widget_set_can_target(item->Placed, FALSE);
    } else if (type == pushButton || type == defaultButton) {
        item->Placed = item->Control = gtk_button_new();
        gtk_button_set_use_underline(GTK_BUTTON(item->Placed), TRUE);
        g_signal_connect(item->Control, "clicked", G_CALLBACK(OnClicked), item);
    } else {
        item->Placed = item->Control = gtk_check_button_new();
        gtk_check_button_set_use_underline(GTK_CHECK_BUTTON(item->Placed), TRUE);
        if (type == radioButton || type == autoRadioButton) {
            item->Partner = GTK_WIDGET(g_object_ref_sink(gtk_check_button_new()));
            gtk_check_button_set_group(GTK_CHECK_BUTTON(item->Control), GTK_CHECK_BUTTON(item->Partner));
            GtkGesture *gesture = gtk_gesture_click_new();
            gtk_event_controller_set_propagation_phase(GTK_EVENT_CONTROLLER(gesture), GTK_PHASE_CAPTURE);
            g_signal_connect(gesture, "released", G_CALLBACK(OnRadioReleased), item);
            gtk_widget_add_controller(item->Control, GTK_EVENT_CONTROLLER(gesture));
        }
        g_signal_connect(item->Control, "toggled", G_CALLBACK(OnToggled), item);
    }
}

void MakeControl(Item *item)
{
    switch (item->What) {
    case Kind::Button: MakeButton(item); break;
    case Kind::Static:
        if ((item->Style & statics) == staticLine) {
            item->Placed = gtk_separator_new(GTK_ORIENTATION_HORIZONTAL);
            gtk_widget_set_valign(item->Placed, GTK_ALIGN_START);
        } else {
            item->Placed = gtk_label_new(nullptr);
            gtk_label_set_wrap(GTK_LABEL(item->Placed), TRUE);
        }
        gtk_widget_set_can_target(item->Placed, FALSE);
        break;
    case Kind::Edit: {
        item->Placed = item->Control = gtk_entry_new();
        GtkEditable *field = gtk_editable_get_delegate(GTK_EDITABLE(item->Control));
        g_signal_connect(item->Control, "changed", G_CALLBACK(OnTextChanged), item);
        g_signal_connect(field, "insert-text", G_CALLBACK(OnInsertText), item);
        gtk_entry_set_visibility(GTK_ENTRY(item->Control), (item->Style & editPassword) == 0);
        break;
    }
    case Kind::ListBox: MakeList(item); break;
    case Kind::ComboBox:
        item->Placed =
            (item->Style & 3) == comboList ? gtk_combo_box_text_new() : gtk_combo_box_text_new_with_entry();
        item->Control = item->Placed;
        g_signal_connect(item->Placed, "changed", G_CALLBACK(OnComboChanged), item);
        break;
    case Kind::TabControl:
        item->Placed = item->Control = gtk_notebook_new();
        g_signal_connect(item->Control, "switch-page", G_CALLBACK(OnPageSwitched), item);
        break;
    case Kind::Picture:
        item->Shown = pictures::Make(OnPictureEvent, item);
        item->Placed = pictures::Outside(item->Shown);
        item->Control = pictures::Inside(item->Shown);
        break;
    case Kind::Plain:
    case Kind::Dialog: item->Placed = item->Inside = gtk_fixed_new(); break;
    }
    g_object_set_data(G_OBJECT(item->Placed), "item", item);
    if (item->Control == nullptr) return;
    g_object_set_data(G_OBJECT(item->Control), "item", item);
    WatchFocus(item->Control, item);
}

const char *IconOf(uint32_t boxStyle)
{
    switch (boxStyle & 0xF0) {
    case 0x10: return "dialog-error";
    case 0x20: return "dialog-question";
    case 0x30: return "dialog-warning";
    case 0x40: return "dialog-information";
    default: return nullptr;
    }
}

// A message box is laid out by GTK: icon and text in a row, the buttons below.
void MakeBoxInside(Item *item)
{
    GtkWidget *outer = gtk_box_new(GTK_ORIENTATION_VERTICAL, 18);
    gtk_widget_set_margin_top(outer, 18);
    gtk_widget_set_margin_bottom(outer, 12);
    gtk_widget_set_margin_start(outer, 18);
    gtk_widget_set_margin_end(outer, 18);
    item->Inside = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 16);
    if (IconOf(item->BoxStyle) != nullptr) {
        GtkWidget *icon = gtk_image_new_from_icon_name(IconOf(item->BoxStyle));
        gtk_image_set_pixel_size(GTK_IMAGE(icon), 40);
        gtk_widget_set_valign(icon, GTK_ALIGN_START);
        gtk_box_append(GTK_BOX(item->Inside), icon);
    }
    item->Buttons = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 8);
    gtk_box_set_homogeneous(GTK_BOX(item->Buttons), TRUE);
    gtk_widget_set_halign(item->Buttons, GTK_ALIGN_END);
    gtk_box_append(GTK_BOX(outer), item->Inside);
    gtk_box_append(GTK_BOX(outer), item->Buttons);
    gtk_window_set_child(GTK_WINDOW(item->Placed), outer);
}

// The person has pulled a window to another size: its inside is laid out anew by the model.
gboolean OnInsideSized(void *data)
{
    auto *item = static_cast<Item *>(data);
    item->SizeIsComing = false;
    if (FindItem(item->Handle) != item) return G_SOURCE_REMOVE;
    GtkWidget *scroller = gtk_window_get_child(GTK_WINDOW(item->Placed));
    const int width = gtk_widget_get_width(scroller);
    const int height = gtk_widget_get_height(scroller);
    if (width <= 0 || height <= 0 || (width == item->ToldWidth && height == item->ToldHeight)) {
        return G_SOURCE_REMOVE;
    }
    item->ToldWidth = width;
    item->ToldHeight = height;
    SendInput(item, InputKind::Resize, width, height);
    return G_SOURCE_REMOVE;
}

void OnLayout(GdkSurface * /*surface*/, int /*width*/, int /*height*/, Item *item)
{
    // Its inside is measured after this signal.
    if (!item->SizeIsComing) g_idle_add(OnInsideSized, item);
    item->SizeIsComing = true;
}

void OnRealized(GtkWidget *window, Item *item)
{
    g_signal_connect(gtk_native_get_surface(GTK_NATIVE(window)), "layout", G_CALLBACK(OnLayout), item);
}

// A window that can be resized may become smaller than what stands in it now.
void MakeResizable(Item *item)
{
    auto *window = GTK_WINDOW(item->Placed);
    gtk_window_set_resizable(window, TRUE);
    GtkWidget *scroller = gtk_scrolled_window_new();
    gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(scroller), GTK_POLICY_EXTERNAL, GTK_POLICY_EXTERNAL);
    item->Inside = gtk_fixed_new();
    gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scroller), item->Inside);
    gtk_widget_set_size_request(scroller, 320, 200);
    gtk_window_set_child(window, scroller);
    gtk_window_set_default_size(window, item->Width, item->Height);
    item->ToldWidth = item->Width;
    item->ToldHeight = item->Height;
    g_signal_connect(window, "realize", G_CALLBACK(OnRealized), item);
}

void MakeTop(Item *item)
{
    item->Placed = gtk_window_new();
    auto *window = GTK_WINDOW(item->Placed);
    gtk_window_set_resizable(window, FALSE);
    gtk_window_set_mnemonics_visible(window, TRUE);
    if ((item->Flags & flagBox) != 0) {
        MakeBoxInside(item);
    } else if ((item->Style & thickFrame) != 0) {
        MakeResizable(item);
    } else {
        item->Inside = gtk_fixed_new();
        gtk_widget_set_size_request(item->Inside, item->Width, item->Height);
        gtk_window_set_child(window, item->Inside);
    }
    GtkEventController *keys = gtk_event_controller_key_new();
    gtk_event_controller_set_propagation_phase(keys, GTK_PHASE_CAPTURE);
    g_signal_connect(keys, "key-pressed", G_CALLBACK(OnKey), item);
    gtk_widget_add_controller(item->Placed, keys);
    g_signal_connect(item->Placed, "close-request", G_CALLBACK(OnCloseRequest), item);
    g_signal_connect(item->Placed, "notify::is-active", G_CALLBACK(OnActive), item);
}

void Place(Item *item)
{
    Item *parent = FindItem(item->Parent);
    if (parent == nullptr || parent->Inside == nullptr) return;
    if (parent->Buttons != nullptr) {
        GtkWidget *row = item->What == Kind::Button ? parent->Buttons : parent->Inside;
        if (item->What == Kind::Button) gtk_widget_set_size_request(item->Placed, 96, -1);
        if (gtk_widget_get_parent(item->Placed) == nullptr) gtk_box_append(GTK_BOX(row), item->Placed);
        return;
    }
    gtk_widget_set_size_request(item->Placed, item->Width, item->Height);
    if (gtk_widget_get_parent(item->Placed) == nullptr) {
        gtk_fixed_put(GTK_FIXED(parent->Inside), item->Placed, item->X, item->Y);
    } else {
        gtk_fixed_move(GTK_FIXED(parent->Inside), item->Placed, item->X, item->Y);
    }
}

// ---- Showing the model's state ----

GtkEditable *FieldOf(Item *item)
{
    if (item->What == Kind::Edit) return GTK_EDITABLE(item->Control);
    if (item->What != Kind::ComboBox || (item->Style & 3) == comboList) return nullptr;
    GtkWidget *entry = gtk_combo_box_get_child(GTK_COMBO_BOX(item->Control));
    return GTK_IS_EDITABLE(entry) ? GTK_EDITABLE(entry) : nullptr;
}

void ShowField(Item *item)
{
    GtkEditable *field = FieldOf(item);
    if (field == nullptr) return;
    gtk_editable_set_max_width_chars(field, 1);
    gtk_editable_set_width_chars(field, 1);
    if (item->What == Kind::Edit) {
        gtk_entry_set_max_length(GTK_ENTRY(item->Control), item->Limit > 65535 ? 0 : item->Limit);
        gtk_editable_set_editable(field, (item->Style & editReadOnly) == 0);
    } else {
        gtk_entry_set_max_length(GTK_ENTRY(field), item->Limit > 65535 ? 0 : item->Limit);
    }
    if (item->Text != gtk_editable_get_text(field)) {
        gtk_editable_set_text(field, item->Text.c_str());
        item->ToldAnchor = -1;
    }
    // The caret is the person's, unless the model has moved it.
    if (item->Anchor == item->ToldAnchor && item->Caret == item->ToldCaret) return;
    gtk_editable_select_region(field, item->Anchor, item->Caret);
    item->ToldAnchor = item->Anchor;
    item->ToldCaret = item->Caret;
}

void ShowValue(Item *item)
{
    if (item->What == Kind::ListBox) {
        const guint row = item->Value < 0 ? GTK_INVALID_LIST_POSITION : static_cast<guint>(item->Value);
        if (gtk_single_selection_get_selected(item->Selection) != row) {
            gtk_single_selection_set_selected(item->Selection, row);
        }
        if (item->Value >= 0) gtk_widget_activate_action(item->Control, "list.scroll-to-item", "u", row);
    } else if (item->What == Kind::ComboBox) {
        gtk_combo_box_set_active(GTK_COMBO_BOX(item->Control), item->Value);
        ShowField(item);
    } else if (item->What == Kind::TabControl) {
        gtk_notebook_set_current_page(GTK_NOTEBOOK(item->Control), item->Value);
    }
}

void ShowStatic(Item *item)
{
    if (!GTK_IS_LABEL(item->Placed)) return;
    auto *label = GTK_LABEL(item->Placed);
    const uint32_t type = item->Style & statics;
    gtk_label_set_xalign(label, type == staticRight ? 1.0F : type == staticCenter ? 0.5F : 0.0F);
    gtk_label_set_yalign(label, 0);
    if ((item->Style & staticNoPrefix) != 0) {
        gtk_label_set_text(label, item->Text.c_str());
        const glong length = g_utf8_strlen(item->Text.c_str(), -1);
        gtk_label_set_width_chars(label, length > 50 ? 50 : static_cast<int>(length));
        gtk_label_set_max_width_chars(label, 60);
        gtk_label_set_yalign(label, 0.5F);
    } else {
        gtk_label_set_text_with_mnemonic(label, WithUnderlines(item->Text).c_str());
    }
}

// The text of a button with an icon: its name for those who cannot see it, a tab, and what the icon is
// called.
void ShowIcon(Item *item)
{
    const size_t tab = item->Text.find('\t');
    const std::string name = item->Text.substr(0, tab);
    const std::string icon = tab != std::string::npos ? item->Text.substr(tab + 1) : "";
    GtkIconTheme *theme = gtk_icon_theme_get_for_display(gdk_display_get_default());
    if (gtk_icon_theme_has_icon(theme, icon.c_str()) != FALSE) {
        gtk_button_set_icon_name(GTK_BUTTON(item->Placed), icon.c_str());
        gtk_widget_set_tooltip_text(item->Placed, name.c_str());
        gtk_accessible_update_property(GTK_ACCESSIBLE(item->Placed), GTK_ACCESSIBLE_PROPERTY_LABEL,
                                       name.c_str(), -1);
    } else {
        gtk_button_set_label(GTK_BUTTON(item->Placed), name.c_str());
    }
    gtk_widget_add_css_class(item->Placed, "flat");
}

void ShowButton(Item *item)
{
    const uint32_t type = item->Style & typeMask;
    const std::string text = WithUnderlines(item->Text);
    if (type == groupBox) {
        GtkWidget *label = gtk_frame_get_label_widget(GTK_FRAME(item->Placed));
        gtk_label_set_text_with_mnemonic(GTK_LABEL(label), text.c_str());
    } else if ((item->Style & iconButton) != 0) {
        ShowIcon(item);
    } else if (type == pushButton || type == defaultButton) {
        gtk_button_set_label(GTK_BUTTON(item->Placed), text.c_str());
    } else {
        gtk_check_button_set_label(GTK_CHECK_BUTTON(item->Placed), text.c_str());
        ShowCheck(item);
    }
}

// A field or list is named to a screen reader by the text that stands before it.
void NameField(Item *item)
{
    if (item->Control == nullptr || item->What == Kind::Button) return;
    const Item *best = nullptr;
    for (const auto &[handle, other] : items) {
        if (other->Parent != item->Parent || other->What != Kind::Static || other->Text.empty()) continue;
        const bool leftOf =
            other->X < item->X && other->Y + other->Height > item->Y && other->Y < item->Y + item->Height;
        const bool above = other->Y < item->Y && other->X <= item->X + 4 && item->Y - other->Y < 40;
        if ((leftOf || above) && (best == nullptr || other->X + other->Y > best->X + best->Y)) best = other;
    }
    if (best == nullptr) return;
    gtk_accessible_update_property(GTK_ACCESSIBLE(item->Control), GTK_ACCESSIBLE_PROPERTY_LABEL,
                                   WithoutMnemonic(best->Text).c_str(), -1);
}

void ShowTop(Item *item)
{
    auto *window = GTK_WINDOW(item->Placed);
    gtk_window_set_title(window, item->Text.c_str());
    Item *owner = FindItem(item->Owner);
    if (owner != nullptr && owner->Parent == 0 && owner->Placed != nullptr) {
        gtk_window_set_transient_for(window, GTK_WINDOW(owner->Placed));
    }
    GtkWidget *inside = gtk_window_get_child(window);
    gtk_widget_set_can_target(inside, (item->Flags & flagEnabled) != 0);
    const bool isFixed = item->Buttons == nullptr && (item->Style & thickFrame) == 0;
    if (isFixed) gtk_widget_set_size_request(inside, item->Width, item->Height);
    const bool shown = (item->Flags & flagShown) != 0;
    if (shown && !gtk_widget_get_visible(item->Placed)) gtk_window_present(window);
    if (!shown) gtk_widget_set_visible(item->Placed, FALSE);
}

void ShowItem(Item *item)
{
    if (item->Parent == 0) {
        ShowTop(item);
        return;
    }
    Place(item);
    gtk_widget_set_visible(item->Placed, (item->Flags & flagShown) != 0);
    gtk_widget_set_sensitive(item->Placed, (item->Flags & flagEnabled) != 0);
    if (item->What == Kind::Button) ShowButton(item);
    if (item->What == Kind::Static) ShowStatic(item);
    if (item->What == Kind::Edit) ShowField(item);
    ShowValue(item);
    NameField(item);
}

// ---- Hearing ----

void HearWindow(FrameReader &reader)
{
    const uint32_t handle = TakeU32(reader);
    Item *&item = items[handle];
    const bool made = item == nullptr;
    if (made) item = new Item;
    item->Handle = handle;
    item->Parent = TakeU32(reader);
    item->Owner = TakeU32(reader);
    TakeU32(reader); // thread
    item->What = static_cast<Kind>(TakeU8(reader));
    item->Flags = TakeU8(reader);
    item->Style = TakeU32(reader);
    item->ExStyle = TakeU32(reader);
    item->Id = TakeI32(reader);
    item->X = TakeI32(reader);
    item->Y = TakeI32(reader);
    item->Width = TakeI32(reader);
    item->Height = TakeI32(reader);
    item->Value = TakeI32(reader);
    item->Limit = TakeI32(reader);
    item->Anchor = TakeI32(reader);
    item->Caret = TakeI32(reader);
    item->Serial = TakeU32(reader);
    item->BoxStyle = TakeU32(reader);
    uint32_t length = 0;
    const char *text = TakeText(reader, length);
    item->Text.assign(text, length);
    item->TabStops.clear();
    for (uint32_t stops = TakeU32(reader); stops > 0 && !reader.Bad; --stops) {
        item->TabStops.push_back(TakeI32(reader));
    }
    if (made && item->Parent == 0) MakeTop(item);
    if (made && item->Parent != 0) MakeControl(item);
    ShowItem(item);
}

void HearRows(FrameReader &reader)
{
    Item *item = FindItem(TakeU32(reader));
    const uint32_t count = TakeU32(reader);
    std::vector<std::string> rows;
    for (uint32_t i = 0; i < count && !reader.Bad; ++i) {
        uint32_t length = 0;
        const char *text = TakeText(reader, length);
        rows.emplace_back(text, length);
    }
    if (item == nullptr) return;
    if (item->What == Kind::ListBox) {
        std::vector<const char *> texts;
        texts.reserve(rows.size() + 1);
        for (const std::string &row : rows) {
            texts.push_back(row.c_str());
        }
        texts.push_back(nullptr);
        gtk_string_list_splice(item->Strings, 0, g_list_model_get_n_items(G_LIST_MODEL(item->Strings)),
                               texts.data());
    } else if (item->What == Kind::ComboBox) {
        gtk_combo_box_text_remove_all(GTK_COMBO_BOX_TEXT(item->Control));
        for (const std::string &row : rows) {
            gtk_combo_box_text_append_text(GTK_COMBO_BOX_TEXT(item->Control), row.c_str());
        }
    } else if (item->What == Kind::TabControl) {
        auto *notebook = GTK_NOTEBOOK(item->Control);
        while (gtk_notebook_get_n_pages(notebook) > 0) {
            gtk_notebook_remove_page(notebook, -1);
        }
        for (const std::string &row : rows) {
            gtk_notebook_append_page(notebook, gtk_box_new(GTK_ORIENTATION_VERTICAL, 0),
                                     gtk_label_new(row.c_str()));
        }
    }
    ShowValue(item);
}

std::deque<int> descriptors; // that came and whose frames are still to come

void HearPicture(FrameReader &reader)
{
    Item *item = FindItem(TakeU32(reader));
    pictures::Content content = {};
    for (int *field : {&content.Width, &content.Height, &content.X, &content.Y, &content.ContentWidth,
                       &content.ContentHeight, &content.Page}) {
        *field = TakeI32(reader);
    }
    int descriptor = -1;
    if (TakeU8(reader) != 0 && !descriptors.empty()) {
        descriptor = descriptors.front();
        descriptors.pop_front();
    }
    if (item != nullptr && item->Shown != nullptr) {
        pictures::Show(item->Shown, content, descriptor);
    } else if (descriptor >= 0) {
        close(descriptor);
    }
}

void HearCopied(FrameReader &reader)
{
    uint32_t length = 0;
    const char *text = TakeText(reader, length);
    GdkClipboard *clipboard = gdk_display_get_clipboard(gdk_display_get_default());
    gdk_clipboard_set_text(clipboard, std::string(text, length).c_str());
}

// The widgets inside go with the one that holds them; their items come one by one, in any order.
void HearDestroyed(FrameReader &reader)
{
    const uint32_t handle = TakeU32(reader);
    Item *item = FindItem(handle);
    if (item == nullptr) return;
    if (item->Parent == 0) {
        gtk_window_destroy(GTK_WINDOW(item->Placed));
    } else {
        Item *parent = FindItem(item->Parent);
        GtkWidget *around = parent != nullptr ? gtk_widget_get_parent(item->Placed) : nullptr;
        if (around != nullptr && GTK_IS_FIXED(around)) gtk_fixed_remove(GTK_FIXED(around), item->Placed);
        if (around != nullptr && GTK_IS_BOX(around)) gtk_box_remove(GTK_BOX(around), item->Placed);
    }
    if (item->Partner != nullptr) g_object_unref(item->Partner);
    if (item->Shown != nullptr) pictures::Free(item->Shown);
    items.erase(handle);
    // The item itself stays: signals of a widget that is still on its way out may name it.
}

void HearTop(FrameReader &reader)
{
    Item *top = FindItem(TakeU32(reader));
    const bool active = TakeU8(reader) != 0;
    Item *focus = FindItem(TakeU32(reader));
    Item *button = FindItem(TakeU32(reader));
    if (top == nullptr || top->Parent != 0 || (top->Flags & flagShown) == 0) return;
    auto *window = GTK_WINDOW(top->Placed);
    gtk_window_set_default_widget(window, button != nullptr ? button->Control : nullptr);
    if (active && gtk_window_is_active(window) == FALSE && (top->Flags & flagEnabled) != 0)
        gtk_window_present(window);
    if (focus == nullptr || focus->Control == nullptr || FocusedItem(window) == focus) return;
    GtkEditable *field = FieldOf(focus);
    if (focus->What == Kind::Edit) {
        gtk_entry_grab_focus_without_selecting(GTK_ENTRY(focus->Control));
    } else {
        gtk_widget_grab_focus(field != nullptr ? GTK_WIDGET(field) : focus->Control);
    }
    if (field != nullptr) gtk_editable_select_region(field, focus->Anchor, focus->Caret);
}

void HearFrame(const std::string &frame)
{
    const auto *data = reinterpret_cast<const uint8_t *>(frame.data());
    FrameReader reader = {data, data + frame.size(), false};
    ++updating;
    switch (static_cast<ToScreen>(TakeU8(reader))) {
    case ToScreen::Window: HearWindow(reader); break;
    case ToScreen::Rows: HearRows(reader); break;
    case ToScreen::Destroyed: HearDestroyed(reader); break;
    case ToScreen::Top: HearTop(reader); break;
    case ToScreen::Picture: HearPicture(reader); break;
    case ToScreen::Copied: HearCopied(reader); break;
    }
    --updating;
}

// Reads bytes, and puts the descriptors that come with them aside.
ssize_t Receive(char *bytes, size_t size)
{
    iovec part = {bytes, size};
    alignas(cmsghdr) char control[CMSG_SPACE(8 * sizeof(int))];
    msghdr message = {};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    const ssize_t got = recvmsg(hostSocket, &message, MSG_DONTWAIT | MSG_CMSG_CLOEXEC);
    if (got < 0) return got;
    for (cmsghdr *each = CMSG_FIRSTHDR(&message); each != nullptr; each = CMSG_NXTHDR(&message, each)) {
        if (each->cmsg_level != SOL_SOCKET || each->cmsg_type != SCM_RIGHTS) continue;
        const size_t count = (each->cmsg_len - CMSG_LEN(0)) / sizeof(int);
        for (size_t i = 0; i < count; ++i) {
            int descriptor = -1;
            memcpy(&descriptor, CMSG_DATA(each) + i * sizeof descriptor, sizeof descriptor);
            descriptors.push_back(descriptor);
        }
    }
    return got;
}

gboolean OnSocket(int /*descriptor*/, GIOCondition /*condition*/, void * /*data*/)
{
    static std::string in;
    char bytes[65536];
    const ssize_t got = Receive(bytes, sizeof bytes);
    if (got < 0 && (errno == EAGAIN || errno == EINTR)) return TRUE;
    if (got <= 0) {
        g_main_loop_quit(mainLoop);
        return FALSE;
    }
    in.append(bytes, static_cast<size_t>(got));
    size_t at = 0;
    while (in.size() - at >= 4) {
        uint32_t length = 0;
        memcpy(&length, in.data() + at, sizeof length);
        if (in.size() - at - 4 < length) break;
        HearFrame(in.substr(at + 4, length));
        at += 4 + size_t{length};
    }
    in.erase(0, at);
    return TRUE;
}

// ---- Beginning ----

// Native widgets want more room than a dialog's lines have; they are made as low as their text allows.
constexpr char style[] =
    "entry, button, combobox button, combobox entry { min-height: 22px; padding-top: 2px;"
    " padding-bottom: 2px; }"
    "button { padding-left: 8px; padding-right: 8px; }"
    "checkbutton { min-height: 0; padding: 0; }"
    "listview > row { padding: 1px 6px; }"
    ".picture { background-color: shade(@theme_bg_color, 0.88); }"
    ".picture:focus-visible { outline: 1px solid alpha(@theme_selected_bg_color, 0.6); outline-offset: -1px; "
    "}"
    "notebook > header tab { min-height: 22px; padding: 2px 10px; }";

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

} // namespace

int main()
{
    // The host's child ends at once, so that the host has nobody to wait for; this one goes on.
    const pid_t child = fork();
    if (child != 0) _exit(child < 0 ? 1 : 0);
    setsid();
    g_set_prgname("vark-ui");
    if (gtk_init_check() == FALSE) return 1;
    GtkCssProvider *provider = gtk_css_provider_new();
    gtk_css_provider_load_from_data(provider, style, -1);
    gtk_style_context_add_provider_for_display(gdk_display_get_default(), GTK_STYLE_PROVIDER(provider),
                                               GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
    uint32_t baseX = 0;
    uint32_t baseY = 0;
    MeasureLetters(baseX, baseY);
    std::string hello(1, static_cast<char>(FromScreen::Hello));
    Append(hello, protocolVersion);
    Append(hello, baseX);
    Append(hello, baseY);
    Send(hello);
    mainLoop = g_main_loop_new(nullptr, FALSE);
    g_unix_fd_add(hostSocket, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR), OnSocket, nullptr);
    g_main_loop_run(mainLoop);
    return 0;
}
