#include "window-system/ui/showing.h"

#include "window-system/ui/chooser.h"
#include "window-system/ui/fields.h"
#include "window-system/ui/labels.h"
#include "window-system/ui/lists.h"
#include "window-system/ui/making.h"

#include <string>

namespace ui {

uint32_t heightOfLine;

namespace {

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
    // It is shown once all that stands in it is known: with its size, in the middle of its owner.
    if ((item->Flags & flagShown) == 0) gtk_widget_set_visible(item->Placed, FALSE);
}

} // namespace

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

} // namespace ui
