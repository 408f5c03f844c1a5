// "expect …": what must hold of the windows when a script comes to it.
#pragma once

#include "window-system/front-ends/instructions.h"

namespace varkui {

// Does one expectation; `rest` is what follows "expect". Expects the lock.
void DoExpect(Step &step, const char *rest);

} // namespace varkui
