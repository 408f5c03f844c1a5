// The model of windows: windows, their tree, the focus, the queues. It knows nothing of how windows are
// shown.
//
// One lock guards all of it. No procedure of a window is ever called with the lock held, and no pointer to a
// window is kept across such a call: a window that a procedure may have destroyed is looked up again by its
// handle. Functions that take a Window or Thread expect the lock to be held; those that take an HWND take it
// themselves, unless they say otherwise.
//
// Invariants, checked by CheckModel: M1  A handle in the table leads to a window with that handle; every
// living window has one.
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
    char *Copied = nullptr;     // the text for pasting
    char *CopiedHtml = nullptr; // the same as HTML, empty for none
    unsigned CopiedSerial = 0;
};

extern Model model;

// The calls from windows to the front end that stands for the person.
struct FrontEndCalls {
    // Chooses the front end at the first call. May start a program: the lock must not be held.
    void (*Choose)();
    // Does the person's next step for a thread that is about to wait. True: the thread looks at its queue
    // again; false: it sleeps until woken. Expects the lock, and releases it meanwhile.
    bool (*Ask)(Thread *thread);
    // Tells the screen what has changed. Takes the lock, as the next two.
    void (*Show)();
    // Logs a dialog that is shown for the first time; ignores other windows.
    void (*Shown)(HWND window);
    // Passes the script on when the calling thread has no window open.
    void (*Idle)();
    // Drops what the front end keeps of a thread. Expects the lock.
    void (*ThreadEnds)(Thread *thread);
    // Makes the child of a fork headless.
    void (*Forget)();
    // Writes a box that could not be shown to log and standard error. Runs without the lock, as the next.
    void (*Unasked)(const char *caption, const char *text);
    // Writes a box that the host answers to the log.
    void (*AnsweredByHost)(const char *text);
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
