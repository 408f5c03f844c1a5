// The program vark-ui, which shows the model on a screen: started, told what changes, and asked what the
// person does.
#pragma once

namespace varkui {

// Starts the program that lies beside this library and waits until it is ready. False, with the reason on
// standard error, when there is none or it finds no screen. Not to be called with the lock held.
bool StartScreen();

// Tells what has changed since the last time. Expects the lock; never waits.
void TellScreen();

// A forked child lets go of its parent's screen.
void ForgetScreen();

} // namespace varkui
