#include "window-system/ui/labels.h"

namespace ui {

void SetLabelText(GtkLabel *label, const std::string &text)
{
    std::string shown;
    size_t mnemonic = std::string::npos;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '&' && i + 1 < text.size()) {
            ++i;
            if (text[i] != '&') mnemonic = shown.size();
        }
        shown += text[i];
    }
    gtk_label_set_text(label, shown.c_str());
    PangoAttrList *attributes = pango_attr_list_new();
    if (mnemonic != std::string::npos) {
        PangoAttribute *underline = pango_attr_underline_new(PANGO_UNDERLINE_LOW);
        const char *letter = shown.c_str() + mnemonic;
        underline->start_index = static_cast<guint>(mnemonic);
        underline->end_index = static_cast<guint>(g_utf8_next_char(letter) - shown.c_str());
        pango_attr_list_insert(attributes, underline);
    }
    gtk_label_set_attributes(label, attributes);
    pango_attr_list_unref(attributes);
}

void SetName(GtkWidget *widget, const std::string &name)
{
    gtk_accessible_update_property(GTK_ACCESSIBLE(widget), GTK_ACCESSIBLE_PROPERTY_LABEL, name.c_str(), -1);
}

std::string BrokenIntoLines(GtkWidget *widget, const std::string &text, int mostWidth)
{
    PangoLayout *layout = gtk_widget_create_pango_layout(widget, text.c_str());
    pango_layout_set_width(layout, mostWidth * PANGO_SCALE);
    pango_layout_set_wrap(layout, PANGO_WRAP_WORD_CHAR);
    std::string out;
    const int count = pango_layout_get_line_count(layout);
    for (int i = 0; i < count; ++i) {
        const PangoLayoutLine *line = pango_layout_get_line_readonly(layout, i);
        if (i > 0) out += '\n';
        size_t length = static_cast<size_t>(line->length);
        const char *start = text.c_str() + line->start_index;
        while (length > 0 && start[length - 1] == ' ') {
            --length;
        }
        out.append(start, length);
    }
    g_object_unref(layout);
    return out;
}

int WidthOf(GtkWidget *widget, const std::string &text)
{
    PangoLayout *layout = gtk_widget_create_pango_layout(widget, text.c_str());
    int width = 0;
    pango_layout_get_pixel_size(layout, &width, nullptr);
    g_object_unref(layout);
    return width;
}

int HeightOfLine(GtkWidget *widget)
{
    PangoLayout *layout = gtk_widget_create_pango_layout(widget, "A");
    int height = 0;
    pango_layout_get_pixel_size(layout, nullptr, &height);
    g_object_unref(layout);
    return height;
}

} // namespace ui
