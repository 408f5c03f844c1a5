// A person before the real windows: what a script, a list of instructions or nobody does to them, as the
// window system of Linux has it, with the same lines in $VARK_UI_LOG.
//
// A hook tells of the first window of each thread. From then on a timer of that thread looks whether
// something waits: the system hands timers out last, so the thread has nothing else to do then. With
// VARK_UI=gtk nothing is done, and whoever sits before the screen answers.
#pragma once

#include <string>
#include <windows.h>

namespace vark::test {

// How far an answer without a person has gone; each step is stronger than the one before.
enum class Unseen : unsigned char { Untouched, Answered, Cancelled, Closed, Forced };
void SetUnseen(HWND window, Unseen stage);
Unseen UnseenOf(HWND window);

// Presses the modifier keys for the messages that follow; they are let go of when the thread is idle again.
void HoldModifiers(bool shift, bool control, bool alt);

} // namespace vark::test
