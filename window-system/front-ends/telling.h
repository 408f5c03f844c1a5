// Frames for the screen: its windows and their changes.
#pragma once

namespace varkui {

// Writes all changes since the last call into the outgoing frames; false without any. Expects the lock and
// never waits.
bool PutChanges();

// Forgets in a forked child what the parent's screen was told.
void ForgetTold();

} // namespace varkui
