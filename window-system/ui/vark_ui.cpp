// vark-ui: shows the windows of one host process with GTK 4. It is started with a socket as descriptor 3,
// mirrors what comes through it with native widgets, and sends back what the person does. The host's model
// decides everything: a check, a page or a row changes here for good only when the model says so.
#include <cerrno>
#include <clocale>
#include <cstring>
#include <deque>
#include <glib-unix.h>
#include <gtk/gtk.h>
#include <string>
#include <sys/socket.h>
#include <unistd.h>
#include <unordered_map>
#include <vector>

#include "window-system/ui/chooser.h"
#include "window-system/ui/fields.h"
#include "window-system/ui/item.h"
#include "window-system/ui/keys.h"
#include "window-system/ui/labels.h"
#include "window-system/ui/lists.h"

using namespace ui;

namespace {

GMainLoop *mainLoop;

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

void OnPageSwitched(GtkNotebook * /*notebook*/, GtkWidget * /*page*/, guint number, Item *item)
{
    if (updating == 0) SendInput(item, InputKind::Select, static_cast<int>(number));
}

// The window without parent around an item; null while one goes.
Item *TopOf(Item *item)
{
    while (item != nullptr && item->Parent != 0) {
        item = FindItem(item->Parent);
    }
    return item;
}

// A window that becomes active again gives the keyboard back to what had it: GTK's doing, which must not take
// it from where the model has put it meanwhile.
void OnFocusIn(GtkEventControllerFocus * /*controller*/, Item *item)
{
    if (updating != 0) return;
    Item *top = TopOf(item);
    const bool isBack = top != nullptr && top->LeftWith == item->Handle;
    if (top != nullptr) top->LeftWith = 0;
    SendInput(item, InputKind::Focus, isBack ? 1 : 0);
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
    if (gtk_window_is_active(window) == FALSE) {
        const Item *focus = FocusedItem(window);
        item->LeftWith = focus != nullptr ? focus->Handle : 0;
        return;
    }
    if (updating != 0) return;
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

// ---- Making widgets ----

void WatchFocus(GtkWidget *widget, Item *item)
{
    GtkEventController *controller = gtk_event_controller_focus_new();
    g_signal_connect(controller, "enter", G_CALLBACK(OnFocusIn), item);
    gtk_widget_add_controller(widget, controller);
}

// A widget with what it is called for those who cannot see it.
GtkWidget *MakeWidget(GType type, GtkAccessibleRole role)
{
    return GTK_WIDGET(g_object_new(type, "accessible-role", role, nullptr));
}

GtkWidget *MakeInside() { return MakeWidget(GTK_TYPE_FIXED, GTK_ACCESSIBLE_ROLE_GROUP); }

void MakeButton(Item *item)
{
    const uint32_t type = item->Style & typeMask;
    GtkWidget *label = gtk_label_new(nullptr);
    if (type == groupBox) {
        item->Placed = MakeWidget(GTK_TYPE_FRAME, GTK_ACCESSIBLE_ROLE_GROUP);
        gtk_frame_set_label_widget(GTK_FRAME(item->Placed), label);
        gtk_widget_set_can_target(item->Placed, FALSE);
    } else if (type == pushButton || type == defaultButton) {
        item->Placed = item->Control = gtk_button_new();
        gtk_button_set_child(GTK_BUTTON(item->Placed), label);
        gtk_widget_add_css_class(item->Placed, "text-button");
        g_signal_connect(item->Control, "clicked", G_CALLBACK(OnClicked), item);
    } else {
        const bool isRadio = type == radioButton || type == autoRadioButton;
        item->Placed = item->Control = MakeWidget(
            GTK_TYPE_CHECK_BUTTON, isRadio ? GTK_ACCESSIBLE_ROLE_RADIO : GTK_ACCESSIBLE_ROLE_CHECKBOX);
        gtk_label_set_xalign(GTK_LABEL(label), 0);
        gtk_check_button_set_child(GTK_CHECK_BUTTON(item->Placed), label);
        if (isRadio) {
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
    case Kind::Edit: MakeEdit(item); break;
    case Kind::ListBox: MakeList(item); break;
    case Kind::ComboBox: MakeCombo(item); break;
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
    case Kind::Dialog: item->Placed = item->Inside = MakeInside(); break;
    }
    g_object_set_data(G_OBJECT(item->Placed), "item", item);
    if (item->Control == nullptr) return;
    g_object_set_data(G_OBJECT(item->Control), "item", item);
    WatchFocus(item->Control, item);
}

// GTK takes the mark around what has the keyboard away after a while.
void KeepFocusVisible(GtkWindow *window, GParamSpec * /*property*/, void * /*data*/)
{
    if (gtk_window_get_focus_visible(window) == FALSE) gtk_window_set_focus_visible(window, TRUE);
}

// What kind of box it is, as icons and colours are called; null for a box without an icon.
const char *KindOfBox(uint32_t boxStyle)
{
    switch (boxStyle & 0xF0) {
    case 0x10: return "error";
    case 0x20: return "question";
    case 0x30: return "warning";
    case 0x40: return "information";
    default: return nullptr;
    }
}

// A message box is laid out by GTK: icon and text in a row, the buttons below.
void MakeBoxInside(Item *item)
{
    GtkWidget *outer = gtk_box_new(GTK_ORIENTATION_VERTICAL, 18);
    constexpr int narrowest = 240; // leaves room for the caption
    gtk_widget_set_size_request(outer, narrowest, -1);
    gtk_widget_set_margin_top(outer, 18);
    gtk_widget_set_margin_bottom(outer, 12);
    gtk_widget_set_margin_start(outer, 18);
    gtk_widget_set_margin_end(outer, 18);
    item->Inside = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 16);
    const char *kind = KindOfBox(item->BoxStyle);
    if (kind != nullptr) {
        GtkWidget *icon = MakeWidget(GTK_TYPE_IMAGE, GTK_ACCESSIBLE_ROLE_PRESENTATION);
        gtk_image_set_from_icon_name(GTK_IMAGE(icon), ("dialog-" + std::string(kind) + "-symbolic").c_str());
        gtk_widget_add_css_class(icon, "box-icon");
        gtk_widget_add_css_class(icon, kind);
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
    item->Inside = MakeInside();
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
    if (IsChooser(item)) {
        MakeChooser(item);
        g_signal_connect(item->Placed, "close-request", G_CALLBACK(OnCloseRequest), item);
        g_signal_connect(item->Placed, "notify::is-active", G_CALLBACK(OnActive), item);
        return;
    }
    const bool isBox = (item->Flags & flagBox) != 0;
    const GtkAccessibleRole role = isBox                        ? GTK_ACCESSIBLE_ROLE_ALERT_DIALOG
                                   : item->What == Kind::Dialog ? GTK_ACCESSIBLE_ROLE_DIALOG
                                                                : GTK_ACCESSIBLE_ROLE_WINDOW;
    item->Placed = MakeWidget(GTK_TYPE_WINDOW, role);
    auto *window = GTK_WINDOW(item->Placed);
    gtk_window_set_resizable(window, FALSE);
    gtk_window_set_focus_visible(window, TRUE);
    g_signal_connect(window, "notify::focus-visible", G_CALLBACK(KeepFocusVisible), nullptr);
    if (isBox) {
        MakeBoxInside(item);
    } else if ((item->Style & thickFrame) != 0) {
        MakeResizable(item);
    } else {
        item->Inside = MakeInside();
        gtk_widget_set_size_request(item->Inside, item->Width, item->Height);
        gtk_window_set_child(window, item->Inside);
    }
    WatchKeys(item);
    g_signal_connect(item->Placed, "close-request", G_CALLBACK(OnCloseRequest), item);
    g_signal_connect(item->Placed, "notify::is-active", G_CALLBACK(OnActive), item);
}

uint32_t heightOfLine; // 8 dialog units in pixels

bool IsInBox(const Item *item)
{
    const Item *parent = FindItem(item->Parent);
    return parent != nullptr && parent->Buttons != nullptr;
}

// A text beside a field: 8 units high, as it stands in dialogs, 2 below the field's top.
bool IsOneLine(const Item *item)
{
    return item->What == Kind::Static && (item->Style & statics) != staticLine &&
           item->Height <= static_cast<int32_t>(heightOfLine);
}

void Place(Item *item)
{
    Item *parent = FindItem(item->Parent);
    if (parent == nullptr || parent->Inside == nullptr) return;
    if (IsInBox(item)) {
        GtkWidget *row = item->What == Kind::Button ? parent->Buttons : parent->Inside;
        if (item->What == Kind::Button) gtk_widget_set_size_request(item->Placed, 96, -1);
        if (gtk_widget_get_parent(item->Placed) == nullptr) gtk_box_append(GTK_BOX(row), item->Placed);
        return;
    }
    // A line's text stands in the middle of the 10 units that bring it level with what is beside it.
    const int height = IsOneLine(item)               ? item->Height + item->Height / 4
                       : item->What == Kind::ListBox ? HeightOfList(item)
                                                     : item->Height;
    gtk_widget_set_size_request(item->Placed, item->Width, height);
    if (gtk_widget_get_parent(item->Placed) == nullptr) {
        gtk_fixed_put(GTK_FIXED(parent->Inside), item->Placed, item->X, item->Y);
    } else {
        gtk_fixed_move(GTK_FIXED(parent->Inside), item->Placed, item->X, item->Y);
    }
}

// ---- Showing the model's state ----

void ShowValue(Item *item)
{
    if (item->What == Kind::ListBox) {
        ShowSelectedRow(item);
    } else if (item->What == Kind::ComboBox) {
        ShowCombo(item);
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
    if (IsInBox(item)) {
        constexpr int widest = 480;
        gtk_label_set_wrap(label, FALSE);
        gtk_label_set_text(label, BrokenIntoLines(item->Placed, item->Text, widest).c_str());
        GtkWidget *box = FindItem(item->Parent)->Placed;
        gtk_accessible_update_relation(GTK_ACCESSIBLE(box), GTK_ACCESSIBLE_RELATION_DESCRIBED_BY,
                                       GTK_ACCESSIBLE(label), nullptr, -1);
    } else if ((item->Style & staticNoPrefix) != 0) {
        gtk_label_set_text(label, item->Text.c_str());
    } else {
        SetLabelText(label, item->Text);
    }
    gtk_label_set_yalign(label, IsInBox(item) || IsOneLine(item) ? 0.5F : 0);
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
        SetName(item->Placed, name);
    } else {
        gtk_button_set_label(GTK_BUTTON(item->Placed), name.c_str());
    }
    gtk_widget_add_css_class(item->Placed, "flat");
    gtk_widget_add_css_class(item->Placed, "icon");
}

void ShowButton(Item *item)
{
    const uint32_t type = item->Style & typeMask;
    if ((item->Style & iconButton) != 0) {
        ShowIcon(item);
        return;
    }
    const bool isPushed = type == pushButton || type == defaultButton;
    GtkWidget *label = type == groupBox ? gtk_frame_get_label_widget(GTK_FRAME(item->Placed))
                       : isPushed       ? gtk_button_get_child(GTK_BUTTON(item->Placed))
                                        : gtk_check_button_get_child(GTK_CHECK_BUTTON(item->Placed));
    SetLabelText(GTK_LABEL(label), item->Text);
    SetName(item->Placed, gtk_label_get_text(GTK_LABEL(label)));
    if (type != groupBox && !isPushed) ShowCheck(item);
}

// A field or list is named to a screen reader by the text that stands before it.
void NameField(Item *item)
{
    const Item *label = FindItem(item->Label);
    if (label == nullptr || item->Control == nullptr) return;
    GtkAccessible *text = GTK_ACCESSIBLE(label->Placed);
    for (GtkWidget *field : {item->Control, WidgetWithText(item)}) {
        gtk_accessible_update_relation(GTK_ACCESSIBLE(field), GTK_ACCESSIBLE_RELATION_LABELLED_BY, text,
                                       nullptr, -1);
    }
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
    const bool isFixed = item->Buttons == nullptr && !IsChooser(item) && (item->Style & thickFrame) == 0;
    if (isFixed) gtk_widget_set_size_request(inside, item->Width, item->Height);
    const bool shown = (item->Flags & flagShown) != 0;
    // A chooser comes with the name that it suggests, so once its controls are known.
    if (shown && !gtk_widget_get_visible(item->Placed) && !IsChooser(item)) {
        // A new window is given the keyboard without being asked for it. A request would reach the window
        // manager after the window, and take the keyboard back from where the person may have gone meanwhile.
        gtk_widget_set_visible(item->Placed, TRUE);
        item->IsActive = true;
    }
    if (!shown) gtk_widget_set_visible(item->Placed, FALSE);
}

void ShowItem(Item *item)
{
    if (item->Parent == 0) {
        ShowTop(item);
        return;
    }
    if (IsInChooser(item)) {
        ShowInChooser(item);
        return;
    }
    Place(item);
    gtk_widget_set_visible(item->Placed, (item->Flags & flagShown) != 0);
    gtk_widget_set_sensitive(item->Placed, (item->Flags & flagEnabled) != 0);
    if (item->What == Kind::Button) ShowButton(item);
    if (item->What == Kind::Static) ShowStatic(item);
    if (item->What == Kind::Edit) ShowField(item);
    if (item->What == Kind::Picture) SetName(item->Control, item->Text);
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
    item->Thread = TakeU32(reader);
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
    item->Label = TakeU32(reader);
    uint32_t length = 0;
    const char *text = TakeText(reader, length);
    item->Text.assign(text, length);
    std::vector<int32_t> stops;
    for (uint32_t count = TakeU32(reader); count > 0 && !reader.Bad; --count) {
        stops.push_back(TakeI32(reader));
    }
    if (made && item->Parent == 0) MakeTop(item);
    if (made && item->Parent != 0 && !IsInChooser(item)) MakeControl(item);
    if (stops != item->TabStops) {
        item->TabStops = stops;
        ShowTabStops(item);
    }
    ShowItem(item);
}

void ShowTabs(Item *item, const std::vector<std::string> &titles)
{
    auto *notebook = GTK_NOTEBOOK(item->Control);
    while (gtk_notebook_get_n_pages(notebook) > 0) {
        gtk_notebook_remove_page(notebook, -1);
    }
    for (const std::string &title : titles) {
        gtk_notebook_append_page(notebook, gtk_box_new(GTK_ORIENTATION_VERTICAL, 0),
                                 gtk_label_new(title.c_str()));
    }
}

void HearRows(FrameReader &reader)
{
    Item *item = FindItem(TakeU32(reader));
    const uint32_t count = TakeU32(reader);
    if (item == nullptr) return;
    if (item->What == Kind::ListBox) {
        ShowRows(item, reader, count);
        ShowValue(item);
        return;
    }
    std::vector<std::string> rows;
    for (uint32_t i = 0; i < count && !reader.Bad; ++i) {
        uint32_t length = 0;
        const char *text = TakeText(reader, length);
        rows.emplace_back(text, length);
    }
    if (IsInChooser(item)) {
        ShowKinds(item, rows); // its only control with rows
        return;
    }
    if (item->What == Kind::ComboBox) ShowComboRows(item, rows);
    if (item->What == Kind::TabControl) ShowTabs(item, rows);
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
    } else if (item->Placed != nullptr) {
        Item *parent = FindItem(item->Parent);
        GtkWidget *around = parent != nullptr ? gtk_widget_get_parent(item->Placed) : nullptr;
        if (around != nullptr && GTK_IS_FIXED(around)) gtk_fixed_remove(GTK_FIXED(around), item->Placed);
        if (around != nullptr && GTK_IS_BOX(around)) gtk_box_remove(GTK_BOX(around), item->Placed);
    }
    if (item->Partner != nullptr) g_object_unref(item->Partner);
    if (item->What == Kind::ListBox) ForgetRows(item);
    if (item->Shown != nullptr) pictures::Free(item->Shown);
    items.erase(handle);
    // The item itself stays: signals of a widget that is still on its way out may name it.
}

void MoveKeyboard(GtkWindow *window, Item *focus)
{
    if (focus == nullptr || focus->Control == nullptr || FocusedItem(window) == focus) return;
    if (focus->What == Kind::Edit || focus->What == Kind::ComboBox) {
        FocusField(focus);
    } else {
        gtk_widget_grab_focus(focus->Control);
    }
    if (focus->What == Kind::ListBox) ShowSelectedRow(focus);
}

// Marks the button that Return presses. GTK's own default would mark none while a button has the keyboard.
void ShowDefault(Item *top, const Item *button)
{
    constexpr char mark[] = "default";
    const Item *before = FindItem(top->DefaultButton);
    if (before != nullptr) gtk_widget_remove_css_class(before->Control, mark);
    if (button != nullptr) gtk_widget_add_css_class(button->Control, mark);
    top->DefaultButton = button != nullptr ? button->Handle : 0;
}

void HearTop(FrameReader &reader)
{
    Item *top = FindItem(TakeU32(reader));
    const uint8_t flags = TakeU8(reader);
    Item *focus = FindItem(TakeU32(reader));
    Item *button = FindItem(TakeU32(reader));
    const uint32_t handledKeys = TakeU32(reader);
    if (top == nullptr || top->Parent != 0) return;
    HearHandledKeys(top->Thread, handledKeys);
    if ((top->Flags & flagShown) == 0) return;
    auto *window = GTK_WINDOW(top->Placed);
    gtk_widget_set_cursor_from_name(top->Placed, (flags & flagWaits) != 0 ? "wait" : nullptr);
    if (IsChooser(top) && !gtk_widget_get_visible(top->Placed)) gtk_window_present(window);
    // Each thread has an active window; only what becomes one comes to the front.
    const bool isActive = (flags & flagActive) != 0;
    const bool becomesActive = isActive && !top->IsActive;
    top->IsActive = isActive;
    if (becomesActive && gtk_window_is_active(window) == FALSE && (top->Flags & flagEnabled) != 0)
        gtk_window_present(window);
    if (IsChooser(top)) return; // it has a keyboard and buttons of its own
    MoveKeyboard(window, focus);
    ShowDefault(top, button);
}

void HearFrame(const uint8_t *data, size_t size)
{
    FrameReader reader = {data, data + size, false};
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
    static char bytes[256 * 1024]; // as much as the socket holds
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
        HearFrame(reinterpret_cast<const uint8_t *>(in.data()) + at + 4, length);
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
    "button.icon { min-width: 16px; padding-left: 4px; padding-right: 4px; }"
    "checkbutton { min-height: 0; padding: 0; border-radius: 4px; }"
    "checkbutton:focus:focus-visible { outline: 2px solid alpha(@theme_selected_bg_color, 0.6);"
    " outline-offset: 1px; }"
    "button.default:not(:disabled) { border-color: @theme_selected_bg_color; }"
    "listview > row { padding: 1px 6px; }"
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
    GtkCssProvider *provider = gtk_css_provider_new();
    gtk_css_provider_load_from_data(provider, style, -1);
    gtk_style_context_add_provider_for_display(gdk_display_get_default(), GTK_STYLE_PROVIDER(provider),
                                               GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
    uint32_t baseX = 0;
    uint32_t baseY = 0;
    MeasureLetters(baseX, baseY);
    std::string hello(1, static_cast<char>(FromScreen::Hello));
    Append(hello, protocolVersion);
    heightOfLine = baseY;
    Append(hello, baseX);
    Append(hello, baseY);
    Send(hello);
    mainLoop = g_main_loop_new(nullptr, FALSE);
    g_unix_fd_add(hostSocket, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR), OnSocket, nullptr);
    g_main_loop_run(mainLoop);
    return 0;
}
