// The model of windows: what lives, how it hangs together, who has the focus, what waits in the queues. It
// knows nothing of how it is shown.
//
// One lock guards all of it. No procedure of a window is ever called with the lock held, and no pointer to a
// window is kept across such a call: whatever a procedure may have destroyed is looked up again by its
// handle. Functions that take a Window or Thread expect the lock to be held; those that take an HWND
// take it themselves, unless they say otherwise.
//
// Invariants, checked by CheckModel:
// M1  A handle in the table leads to a window with that handle; every living window has one.
//
// M2  Siblings are doubly linked and agree with their parent about it; the first and last are the ends.
//
// M3  No window lies inside itself, and none lies more than `deepestNesting` windows deep.
//
// M4  Every window belongs to a living thread, whose count of windows is right.
//
// M5  The focus of a thread is a window of that thread; so is its active window, which has no parent.
//
// M6  An owner is a window without parent, is not owned by what it owns, and its owned windows have no
// parent.
//
// M7  A window has the state of its kind of control, and only that.
//
// M8  A selection lies inside its text or rows; a row selected is a row that exists.
//
// M9  Every modal loop of a thread names a different dialog.
#pragma once

#include <pthread.h>

#include "window-system/model/classes.h"
#include "window-system/model/threads.h"

namespace varkui {

struct Model {
    pthread_mutex_t Lock;
    Thread *Threads;
    WindowClass *Classes;
    Window *FirstTop; // the topmost window without parent
    Window *LastTop;
    unsigned BaseX; // pixels of 4 horizontal and 8 vertical dialog units
    unsigned BaseY;
    char *Copied = nullptr; // what a person can paste
    unsigned CopiedSerial = 0;
};

extern Model model;

// What the windows have from whoever answers for a person.
struct FrontEndCalls {
    // At the first call; may start programs, so not with the lock held.
    void (*Choose)();
    // What a person would do next, for a thread that is about to wait. True when the thread should look at
    // its queue again, false when it may sleep until woken. Expects the lock, and lets go of it meanwhile.
    bool (*Ask)(Thread *thread);
    // The screen gets to know what has changed. Takes the lock, as the next two.
    void (*Show)();
    // The window may be a dialog that is seen for the first time.
    void (*Shown)(HWND window);
    // The calling thread may have nothing open any more.
    void (*Idle)();
    // Expects the lock.
    void (*ThreadEnds)(Thread *thread);
    // In the child of a fork: nobody is asked there.
    void (*Forget)();
    // A box could not be shown; runs without the lock.
    void (*Unasked)(const char *caption, const char *text);
};

extern FrontEndCalls frontEnd; // set once, when the library is loaded

void Lock();
void Unlock();

// Holds the lock for a block. `Check`, in builds with assertions, checks all invariants at both ends.
struct Locked {
    bool Check;
    explicit Locked(bool check = false) : Check(check)
    {
        Lock();
        if (Check) CheckModelIfAsked();
    }
    ~Locked()
    {
        if (Check) CheckModelIfAsked();
        Unlock();
    }
    Locked(const Locked &) = delete;
    Locked &operator=(const Locked &) = delete;
    static void CheckModelIfAsked();
};

constexpr bool mutates = true;

} // namespace varkui
