// The program vark-ui, which shows the model on a screen: starting it and telling it changes.
#pragma once

namespace varkui {

// The outcome of a start; NotNow is a passing lack, of descriptors for instance.
enum class Start : unsigned char { Done, Never, NotNow };

// Starts the program beside this library and waits, for a bounded time, until it is ready. Writes the reason
// of a failure to standard error. The lock must not be held.
Start StartScreen();

// Tells the screen all changes since the last call. Expects the lock and never waits.
void TellScreen();

// Closes the parent's screen in a forked child.
void ForgetScreen();

} // namespace varkui
