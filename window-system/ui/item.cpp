#include "window-system/ui/item.h"

#include <sys/socket.h>
#include <unistd.h>

namespace ui {

std::unordered_map<uint32_t, Item *> items;
int updating;

Item *FindItem(uint32_t handle)
{
    const auto found = items.find(handle);
    return found != items.end() ? found->second : nullptr;
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

void SendInput(const Item *item, InputKind kind, int index, int index2, const std::string &text)
{
    SendInput(item, kind, index, index2, item->Serial, text);
}

} // namespace ui
