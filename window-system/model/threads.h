// Threads with windows or messages, each with its queue.
#pragma once

#include <pthread.h>

#include "window-system/model/window.h"

namespace varkui {

struct Input;
struct Posted;
struct Sent;

// A modal loop that runs; lives on the stack of its thread.
struct ModalLoop {
    HWND Dialog;
    HWND Disabled; // the owner, to be enabled again; null when it was disabled before
    bool Ended;
    bool Told; // the waiting thread has been told of the end
    INT_PTR Result;
    ModalLoop *Outer;
};

// Who answers message boxes instead of a person; a null function is nobody.
struct BoxAnswer {
    VARKUIANSWERBOX Answer;
    void *Context;
};

struct Thread {
    pthread_cond_t Wake;
    Posted *FirstPosted;
    Posted *LastPosted;
    int PostedCount;
    Sent *FirstSent; // arrived, not yet handled
    Sent *LastSent;
    Sent *Handling; // being handled, innermost first
    bool Quit;
    int QuitCode;
    HWND Focus;
    HWND Active;
    ModalLoop *Modal;
    BYTE Keys[256];
    HCURSOR Cursor;
    Input *Current; // payload of the input message that was taken last
    int Descriptor; // -1 until asked for
    int WindowCount;
    uint32_t HeardKey;     // number of the last key from the screen
    uint32_t HandledKey;   // the same when the thread last had nothing left to do
    unsigned ScriptTicket; // 0 while it does not wait for the script
    struct Played *Played; // instructions of the host, null for none
    BoxAnswer Boxes;       // the host, where it answers boxes itself
    Thread *Next;
};

// The upper layers' part in the end of a thread (called with the lock held) and in the child of a fork.
struct ThreadEvents {
    void (*Ends)(Thread *thread);
    void (*Forked)();
};

extern ThreadEvents threadEvents; // set once, when the library is loaded

// The calling thread's queue, made on first use; null without memory.
Thread *Self();

// Whether the calling thread has made the window.
bool IsWindowOfCaller(const Window *window);

// Wakes a thread to look at its queue.
void WakeThread(Thread *thread);
void WakeAllThreads();

} // namespace varkui
