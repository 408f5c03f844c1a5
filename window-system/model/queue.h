// What waits for a thread: posted messages and inputs, and messages sent by other threads.
#pragma once

#include "window-system/model/input.h"
#include "window-system/model/threads.h"

namespace varkui {

struct Posted {
    MSG Message;
    bool IsKey; // goes to the focus as it is when the message is taken
    Input *Payload;
    Posted *Next;
};

// A message on its way to another thread; lives on the sender's stack.
struct Sent {
    HWND Target;
    UINT Message;
    WPARAM WParam;
    LPARAM LParam;
    LRESULT Result;
    bool Done;
    bool Nobody;           // nobody waits for the result: lies on the heap
    BOOL (*Instead)(HWND); // no message: this is done on the thread of the target
    struct Thread *Sender;
    Sent *Next;
};

// Key messages carry the character they type where real ones carry the scan code.
constexpr int characterShift = 16;

// A message in memory of its own, null when there is none.
Posted *MakePosted(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
void FreePosted(Posted *posted);

// Puts it behind, or before, all that wait for the thread, and wakes it.
void Append(Thread *thread, Posted *posted);
void Prepend(Thread *thread, Posted *posted);

// Takes `posted`, which follows `before` (null: it is the first), out of the queue.
void Remove(Thread *thread, Posted *before, Posted *posted);

// Queues an input or key for the thread of `target`. Takes over `payload`, also on failure.
bool PostInput(HWND target, Input *payload);

// Queues a message for a window.
bool Post(Window *window, UINT message, WPARAM wParam, LPARAM lParam);

// Queues the messages of a pressed and released key; `character` is what it types, 0 for nothing.
struct KeyPress {
    unsigned Key; // VK_...
    unsigned char Character;
    bool Shift;
    bool Control;
    bool Alt;
};
bool PostKey(Thread *thread, const KeyPress &press);

// Drops what waits in the queue for a window that goes.
void DropMessages(Window *window);

// Hands a message to the thread that is to handle it.
void AppendSent(Thread *thread, Sent *sent);

// Has the thread of `window` do something to it when it next looks for messages.
void DoElsewhere(Window *window, BOOL (*what)(HWND));

} // namespace varkui
