// What a forked child gives up of its parent's signals.
#pragma once

namespace tools {

// Has the parent see the signal by which damage ends the child, in place of EndWithAWordOnDamage.
void ForgetDamage();

} // namespace tools
