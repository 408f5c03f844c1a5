// The program vark-ui, which shows the model on a screen: started, told what changes, and asked what the
// person does.
#pragma once

namespace varkui {

// Starting the program: NotNow when it failed for want of something that may be there later, descriptors for
// instance.
enum class Start : unsigned char { Done, Never, NotNow };

// Starts the program that lies beside this library and waits until it is ready, for a bounded time. The
// reason of a failure stands on standard error. Not to be called with the lock held.
Start StartScreen();

// Tells what has changed since the last time. Expects the lock; never waits.
void TellScreen();

// A forked child lets go of its parent's screen.
void ForgetScreen();

} // namespace varkui
