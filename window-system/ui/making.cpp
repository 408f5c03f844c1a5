#include "window-system/ui/making.h"

#include "window-system/ui/chooser.h"
#include "window-system/ui/fields.h"
#include "window-system/ui/keys.h"
#include "window-system/ui/lists.h"

#include <string>

namespace ui {

namespace {

void OnClicked(GtkButton * /*button*/, Item *item)
{
    if (updating == 0) SendInput(item, InputKind::Click);
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

} // namespace

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

namespace {

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

} // namespace

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

} // namespace ui
