// What the screen is told: every window that is to be seen, and what changes.
#pragma once

namespace varkui {

// Puts what has changed since the last time into the frames that go out. True when there is any. Expects the
// lock; never waits.
bool PutChanges();

// A forked child has told nobody anything.
void ForgetTold();

} // namespace varkui
