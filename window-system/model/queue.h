// The queue of a thread: posted messages, inputs, and messages sent by other threads.
#pragma once

#include "window-system/model/input.h"
#include "window-system/model/threads.h"

namespace varkui {

struct Posted {
    MSG Message;
    bool IsKey; // goes to the window with the focus at the time it is taken
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
    bool Nobody;           // no thread waits for the result: lies on the heap
    BOOL (*Instead)(HWND); // called on the target's thread in place of its procedure; null for a message
    struct Thread *Sender;
    Sent *Next;
};

// The place of a key message's character in lParam, where Windows has the scan code.
constexpr int characterShift = 16;

// A message to be queued; null without memory.
Posted *MakePosted(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
void FreePosted(Posted *posted);

// Puts a message at the end or the front of a queue and wakes its thread.
void Append(Thread *thread, Posted *posted);
void Prepend(Thread *thread, Posted *posted);

// Takes `posted` out of the queue; `before` is the message before it, null for none.
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

// Drops the queued messages of a window that is going.
void DropMessages(Window *window);

// Queues a sent message for its thread and wakes it.
void AppendSent(Thread *thread, Sent *sent);

// Calls `what` with `window` on the window's thread when that next looks for messages.
void DoElsewhere(Window *window, BOOL (*what)(HWND));

} // namespace varkui
