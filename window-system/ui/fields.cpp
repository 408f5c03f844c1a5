#include "window-system/ui/fields.h"

#include <algorithm>

namespace ui {

namespace {

// What a text is typed into: a line, or a buffer of many. Neither for other items.
struct Field {
    GtkEditable *Line;
    GtkTextBuffer *Lines;
};

bool HasLines(const Item *item) { return item->What == Kind::Edit && (item->Style & editMultiline) != 0; }

bool IsListOnly(const Item *item) { return (item->Style & comboTypes) == comboList; }

Field FieldOf(const Item *item)
{
    if (HasLines(item)) return {nullptr, gtk_text_view_get_buffer(GTK_TEXT_VIEW(item->Control))};
    if (item->What == Kind::Edit) return {GTK_EDITABLE(item->Control), nullptr};
    if (item->What != Kind::ComboBox || IsListOnly(item)) return {nullptr, nullptr};
    return {GTK_EDITABLE(gtk_combo_box_get_child(GTK_COMBO_BOX(item->Control))), nullptr};
}

// ---- Texts; the model ends lines with two characters, GTK with one ----

std::string TextOf(const Field &field)
{
    if (field.Line != nullptr) return gtk_editable_get_text(field.Line);
    GtkTextIter start;
    GtkTextIter end;
    gtk_text_buffer_get_bounds(field.Lines, &start, &end);
    char *text = gtk_text_buffer_get_text(field.Lines, &start, &end, TRUE);
    std::string out;
    for (const char *at = text; *at != 0; ++at) {
        if (*at == '\n') out += '\r';
        out += *at;
    }
    g_free(text);
    return out;
}

void SetText(const Field &field, const std::string &text)
{
    if (field.Line != nullptr) {
        gtk_editable_set_text(field.Line, text.c_str());
        return;
    }
    std::string lines = text;
    lines.erase(std::remove(lines.begin(), lines.end(), '\r'), lines.end());
    gtk_text_buffer_set_text(field.Lines, lines.c_str(), -1);
}

struct Selected {
    int Anchor;
    int Caret;
};

int PlaceOf(GtkTextBuffer *lines, GtkTextMark *mark)
{
    GtkTextIter place;
    gtk_text_buffer_get_iter_at_mark(lines, &place, mark);
    return gtk_text_iter_get_offset(&place) + gtk_text_iter_get_line(&place);
}

GtkTextIter IterAt(GtkTextBuffer *lines, int place)
{
    GtkTextIter at;
    gtk_text_buffer_get_start_iter(lines, &at);
    for (int passed = 0; passed < place; ++passed) {
        if (gtk_text_iter_ends_line(&at) != FALSE) ++passed;
        if (gtk_text_iter_forward_char(&at) == FALSE) break;
    }
    return at;
}

Selected SelectionOf(const Field &field)
{
    if (field.Lines != nullptr) {
        return {PlaceOf(field.Lines, gtk_text_buffer_get_selection_bound(field.Lines)),
                PlaceOf(field.Lines, gtk_text_buffer_get_insert(field.Lines))};
    }
    int start = 0;
    int end = 0;
    const int caret = gtk_editable_get_position(field.Line);
    if (gtk_editable_get_selection_bounds(field.Line, &start, &end) == FALSE) return {caret, caret};
    return {caret == start ? end : start, caret};
}

void Select(const Field &field, const Selected &selected)
{
    if (field.Line != nullptr) {
        gtk_editable_select_region(field.Line, selected.Anchor, selected.Caret);
        return;
    }
    const GtkTextIter anchor = IterAt(field.Lines, selected.Anchor);
    const GtkTextIter caret = IterAt(field.Lines, selected.Caret);
    gtk_text_buffer_select_range(field.Lines, &caret, &anchor);
}

// ---- What the person does ----

void Tell(Item *item, InputKind kind)
{
    const Field field = FieldOf(item);
    const Selected selected = SelectionOf(field);
    if (kind == InputKind::Text) item->ToldText = TextOf(field);
    item->ToldAnchor = selected.Anchor;
    item->ToldCaret = selected.Caret;
    SendInput(item, kind, selected.Caret, selected.Anchor,
              kind == InputKind::Text ? item->ToldText : std::string());
}

void OnTextChanged(GObject * /*field*/, Item *item)
{
    if (updating == 0) Tell(item, InputKind::Text);
}

// The caret also moves with a text that is told by itself, and before it.
void OnCaretMoved(Item *item)
{
    if (updating != 0) return;
    const Field field = FieldOf(item);
    const Selected selected = SelectionOf(field);
    if (selected.Anchor == item->ToldAnchor && selected.Caret == item->ToldCaret) return;
    if (TextOf(field) == item->ToldText) Tell(item, InputKind::Caret);
}

void OnLineCaretMoved(GObject * /*field*/, GParamSpec * /*property*/, Item *item) { OnCaretMoved(item); }

void OnMarkSet(GtkTextBuffer *lines, GtkTextIter * /*place*/, GtkTextMark *mark, Item *item)
{
    const bool isCaret = mark == gtk_text_buffer_get_insert(lines);
    if (isCaret || mark == gtk_text_buffer_get_selection_bound(lines)) OnCaretMoved(item);
}

void OnInsertText(GtkEditable *editable, const char *text, int length, int * /*position*/, Item *item)
{
    if (updating != 0 || (item->Style & editNumber) == 0) return;
    const std::string inserted =
        length < 0 ? std::string(text) : std::string(text, static_cast<size_t>(length));
    if (inserted.find_first_not_of("0123456789") != std::string::npos) {
        g_signal_stop_emission_by_name(editable, "insert-text");
    }
}

void OnComboChanged(GtkComboBox *combo, Item *item)
{
    if (updating != 0) return;
    const int row = gtk_combo_box_get_active(combo);
    if (row >= 0) {
        SendInput(item, InputKind::Select, row);
    } else if (!IsListOnly(item)) {
        Tell(item, InputKind::Text);
    }
}

void OnListOpened(GtkComboBox *combo, GParamSpec * /*property*/, Item *item)
{
    gboolean isOpen = FALSE;
    g_object_get(combo, "popup-shown", &isOpen, nullptr);
    if (updating == 0) SendInput(item, InputKind::Drop, isOpen);
}

void WatchCaret(GtkEditable *line, Item *item)
{
    g_signal_connect(line, "notify::cursor-position", G_CALLBACK(OnLineCaretMoved), item);
    g_signal_connect(line, "notify::selection-bound", G_CALLBACK(OnLineCaretMoved), item);
}

void MakeLines(Item *item)
{
    item->Control = gtk_text_view_new();
    auto *view = GTK_TEXT_VIEW(item->Control);
    gtk_text_view_set_wrap_mode(view, GTK_WRAP_WORD_CHAR);
    gtk_text_view_set_accepts_tab(view, FALSE);
    gtk_text_view_set_left_margin(view, 4);
    gtk_text_view_set_right_margin(view, 4);
    gtk_text_view_set_top_margin(view, 2);
    gtk_text_view_set_bottom_margin(view, 2);
    item->Placed = gtk_scrolled_window_new();
    gtk_scrolled_window_set_has_frame(GTK_SCROLLED_WINDOW(item->Placed), TRUE);
    gtk_scrolled_window_set_overlay_scrolling(GTK_SCROLLED_WINDOW(item->Placed), FALSE);
    gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(item->Placed), item->Control);
    GtkTextBuffer *lines = gtk_text_view_get_buffer(view);
    g_signal_connect(lines, "changed", G_CALLBACK(OnTextChanged), item);
    g_signal_connect(lines, "mark-set", G_CALLBACK(OnMarkSet), item);
}

} // namespace

void MakeEdit(Item *item)
{
    if (HasLines(item)) {
        MakeLines(item);
        return;
    }
    item->Placed = item->Control = gtk_entry_new();
    g_signal_connect(item->Control, "changed", G_CALLBACK(OnTextChanged), item);
    g_signal_connect(gtk_editable_get_delegate(GTK_EDITABLE(item->Control)), "insert-text",
                     G_CALLBACK(OnInsertText), item);
    WatchCaret(GTK_EDITABLE(item->Control), item);
    gtk_entry_set_visibility(GTK_ENTRY(item->Control), (item->Style & editPassword) == 0);
    const uint32_t side = item->Style & editSides;
    gtk_entry_set_alignment(GTK_ENTRY(item->Control), side == editRight    ? 1.0F
                                                      : side == editCenter ? 0.5F
                                                                           : 0.0F);
}

void MakeCombo(Item *item)
{
    item->Control = IsListOnly(item) ? gtk_combo_box_text_new() : gtk_combo_box_text_new_with_entry();
    item->Placed = item->Control;
    g_signal_connect(item->Placed, "changed", G_CALLBACK(OnComboChanged), item);
    g_signal_connect(item->Placed, "notify::popup-shown", G_CALLBACK(OnListOpened), item);
    const Field field = FieldOf(item);
    if (field.Line != nullptr) WatchCaret(field.Line, item);
}

void ShowField(Item *item)
{
    const Field field = FieldOf(item);
    constexpr int longestLine = 65535; // that an entry can be limited to
    if (field.Line != nullptr) {
        gtk_editable_set_max_width_chars(field.Line, 1);
        gtk_editable_set_width_chars(field.Line, 1);
        gtk_entry_set_max_length(GTK_ENTRY(field.Line), item->Limit > longestLine ? 0 : item->Limit);
        if (item->What == Kind::Edit)
            gtk_editable_set_editable(field.Line, (item->Style & editReadOnly) == 0);
    } else if (field.Lines != nullptr) {
        gtk_text_view_set_editable(GTK_TEXT_VIEW(item->Control), (item->Style & editReadOnly) == 0);
    } else {
        return;
    }
    // With the serial of before, what the model has may be behind what stands here and is on its way.
    if (item->Serial == item->ShownSerial) return;
    item->ShownSerial = item->Serial;
    if (TextOf(field) != item->Text) SetText(field, item->Text);
    Select(field, {item->Anchor, item->Caret});
    if (field.Lines != nullptr) {
        gtk_text_view_scroll_mark_onscreen(GTK_TEXT_VIEW(item->Control),
                                           gtk_text_buffer_get_insert(field.Lines));
    }
    item->ToldText = item->Text;
    item->ToldAnchor = item->Anchor;
    item->ToldCaret = item->Caret;
}

void ShowCombo(Item *item)
{
    auto *combo = GTK_COMBO_BOX(item->Control);
    const bool isStale = !IsListOnly(item) && item->Serial == item->ShownSerial;
    if (!isStale && gtk_combo_box_get_active(combo) != item->Value)
        gtk_combo_box_set_active(combo, item->Value);
    ShowField(item);
    const bool isDropped = (item->Flags & flagDropped) != 0;
    if (isDropped == item->IsDropped) return;
    item->IsDropped = isDropped;
    gboolean isOpen = FALSE;
    g_object_get(combo, "popup-shown", &isOpen, nullptr);
    if (isDropped && isOpen == FALSE) gtk_combo_box_popup(combo);
    if (!isDropped && isOpen != FALSE) gtk_combo_box_popdown(combo);
}

void ShowComboRows(Item *item, const std::vector<std::string> &rows)
{
    auto *combo = GTK_COMBO_BOX_TEXT(item->Control);
    gtk_combo_box_text_remove_all(combo);
    for (const std::string &row : rows) {
        gtk_combo_box_text_append_text(combo, row.c_str());
    }
    // Which of them is chosen has gone with the old ones.
    if (IsListOnly(item)) gtk_combo_box_set_active(GTK_COMBO_BOX(combo), item->Value);
}

GtkWidget *WidgetWithText(const Item *item)
{
    const Field field = FieldOf(item);
    return field.Line != nullptr ? GTK_WIDGET(field.Line) : item->Control;
}

void FocusField(Item *item)
{
    const Field field = FieldOf(item);
    if (item->What == Kind::Edit && field.Line != nullptr) {
        gtk_entry_grab_focus_without_selecting(GTK_ENTRY(item->Control));
    } else {
        gtk_widget_grab_focus(WidgetWithText(item));
    }
    // The keyboard may have brought a selection of its own.
    if (field.Line != nullptr) Select(field, {item->ToldAnchor, item->ToldCaret});
}

bool EditsText(const Item *item, uint32_t key, GdkModifierType state)
{
    constexpr uint32_t tabKey = 0x09, returnKey = 0x0D, escapeKey = 0x1B, pageUpKey = 0x21,
                       pageDownKey = 0x22, upKey = 0x26, downKey = 0x28, firstFunctionKey = 0x70,
                       lastFunctionKey = 0x7B;
    if (item == nullptr || (state & GDK_ALT_MASK) != 0) return false;
    const bool hasLines = HasLines(item);
    const bool hasLine = item->What == Kind::Edit || (item->What == Kind::ComboBox && !IsListOnly(item));
    if (!hasLines && !hasLine) return false;
    const bool isControl = (state & GDK_CONTROL_MASK) != 0;
    if (key == returnKey) return hasLines && (isControl || (item->Style & editWantReturn) != 0);
    if (key == tabKey || key == escapeKey || (key >= firstFunctionKey && key <= lastFunctionKey))
        return false;
    if (key == pageUpKey || key == pageDownKey) return hasLines;
    if (isControl && key >= '0' && key <= 'Z')
        return std::string("ACVXZ").find(static_cast<char>(key)) != std::string::npos;
    return item->What == Kind::Edit || (key != upKey && key != downKey);
}

} // namespace ui
