#include "window-system/ui/hearing.h"

#include "host/passing.h"
#include "window-system/ui/chooser.h"
#include "window-system/ui/fields.h"
#include "window-system/ui/item.h"
#include "window-system/ui/keys.h"
#include "window-system/ui/lists.h"
#include "window-system/ui/making.h"
#include "window-system/ui/showing.h"

#include <cerrno>
#include <cstring>
#include <deque>
#include <iterator>
#include <string>
#include <sys/socket.h>
#include <unistd.h>
#include <unordered_map>
#include <vector>

namespace ui {

namespace {

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
    const std::string plain(text, length);
    const char *html = TakeText(reader, length);
    GdkClipboard *clipboard = gdk_display_get_clipboard(gdk_display_get_default());
    if (length == 0) {
        gdk_clipboard_set_text(clipboard, plain.c_str());
        return;
    }
    GBytes *bytes = g_bytes_new(html, length);
    GdkContentProvider *forms[] = {gdk_content_provider_new_for_bytes("text/html", bytes),
                                   gdk_content_provider_new_typed(G_TYPE_STRING, plain.c_str())};
    GdkContentProvider *both = gdk_content_provider_new_union(forms, std::size(forms));
    gdk_clipboard_set_content(clipboard, both);
    g_object_unref(both);
    g_bytes_unref(bytes);
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

void ShowFirst(Item *top)
{
    if (IsChooser(top)) {
        gtk_window_present(GTK_WINDOW(top->Placed));
        return;
    }
    // A new window is given the keyboard without being asked for it. A request would reach the window manager
    // after the window, and take the keyboard back from where the person may have gone meanwhile.
    gtk_widget_set_visible(top->Placed, TRUE);
    top->IsActive = true;
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
    if (gtk_widget_get_visible(top->Placed) == FALSE) ShowFirst(top);
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
    host::Passed passed = {};
    const ssize_t got = host::ReceiveWith(hostSocket, bytes, size, MSG_DONTWAIT, passed);
    descriptors.insert(descriptors.end(), passed.Descriptors, passed.Descriptors + passed.Count);
    return got;
}

} // namespace

gboolean OnSocket(int /*descriptor*/, GIOCondition /*condition*/, void *loop)
{
    static std::string in;
    static char bytes[256 * 1024]; // as much as the socket holds
    const ssize_t got = Receive(bytes, sizeof bytes);
    if (got < 0 && (errno == EAGAIN || errno == EINTR)) return TRUE;
    if (got <= 0) {
        g_main_loop_quit(static_cast<GMainLoop *>(loop));
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

} // namespace ui
