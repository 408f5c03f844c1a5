#include "window-system/ui/keys.h"

#include "window-system/ui/fields.h"

namespace ui {

namespace {

struct KeyOf {
    guint Symbol;
    uint32_t Key;
};

constexpr uint32_t backKey = 0x08, tabKey = 0x09, returnKey = 0x0D, escapeKey = 0x1B, f1Key = 0x70,
                   otherKey = 0xE7;

constexpr KeyOf namedKeys[] = {
    {GDK_KEY_Tab, tabKey},         {GDK_KEY_ISO_Left_Tab, tabKey}, {GDK_KEY_Return, returnKey},
    {GDK_KEY_KP_Enter, returnKey}, {GDK_KEY_Escape, escapeKey},    {GDK_KEY_space, 0x20},
    {GDK_KEY_Prior, 0x21},         {GDK_KEY_Next, 0x22},           {GDK_KEY_End, 0x23},
    {GDK_KEY_Home, 0x24},          {GDK_KEY_Left, 0x25},           {GDK_KEY_Up, 0x26},
    {GDK_KEY_Right, 0x27},         {GDK_KEY_Down, 0x28},           {GDK_KEY_Insert, 0x2D},
    {GDK_KEY_Delete, 0x2E},        {GDK_KEY_BackSpace, backKey},   {GDK_KEY_KP_Prior, 0x21},
    {GDK_KEY_KP_Next, 0x22},       {GDK_KEY_KP_End, 0x23},         {GDK_KEY_KP_Home, 0x24},
    {GDK_KEY_KP_Left, 0x25},       {GDK_KEY_KP_Up, 0x26},          {GDK_KEY_KP_Right, 0x27},
    {GDK_KEY_KP_Down, 0x28},       {GDK_KEY_KP_Delete, 0x2E},
};

uint32_t KeyOfSymbol(guint symbol)
{
    for (const KeyOf &each : namedKeys) {
        if (each.Symbol == symbol) return each.Key;
    }
    if (symbol >= GDK_KEY_F1 && symbol <= GDK_KEY_F12) return f1Key + (symbol - GDK_KEY_F1);
    const guint upper = gdk_keyval_to_upper(symbol);
    if ((upper >= 'A' && upper <= 'Z') || (upper >= '0' && upper <= '9')) return upper;
    return gdk_keyval_to_unicode(symbol) != 0 ? otherKey : 0;
}

// The number of the last key that a thread was sent and of the last one that it has handled. While they
// differ, the keyboard may be about to move, and what is typed then belongs where it moves to: so it is sent
// after it.
struct Numbers {
    uint32_t Sent = 0;
    uint32_t Handled = 0;
};

std::unordered_map<uint32_t, Numbers> numbersOf; // by thread
uint32_t lastNumber;

gboolean OnKey(GtkEventControllerKey * /*controller*/, guint symbol, guint /*code*/, GdkModifierType state,
               Item *top)
{
    const uint32_t key = KeyOfSymbol(symbol);
    if (key == 0) return FALSE;
    Numbers &numbers = numbersOf[top->Thread];
    const bool isSettled = numbers.Sent == numbers.Handled;
    if (isSettled && EditsText(FocusedItem(GTK_WINDOW(top->Placed)), key, state)) return FALSE;
    uint32_t character = gdk_keyval_to_unicode(symbol);
    if (key == returnKey || key == tabKey || key == escapeKey || key == backKey) character = key;
    numbers.Sent = ++lastNumber;
    std::string frame(1, static_cast<char>(FromScreen::Key));
    Append(frame, top->Handle);
    Append(frame, numbers.Sent);
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

} // namespace

void WatchKeys(Item *top)
{
    GtkEventController *keys = gtk_event_controller_key_new();
    gtk_event_controller_set_propagation_phase(keys, GTK_PHASE_CAPTURE);
    g_signal_connect(keys, "key-pressed", G_CALLBACK(OnKey), top);
    gtk_widget_add_controller(top->Placed, keys);
}

void HearHandledKeys(uint32_t thread, uint32_t number)
{
    const auto numbers = numbersOf.find(thread);
    if (numbers != numbersOf.end()) numbers->second.Handled = number;
}

} // namespace ui
