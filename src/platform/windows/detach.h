// What the library's entry point does when the process lets go of it.
#pragma once

namespace vark {

// Frees the calling thread's context and the slot itself. Files stay open, the engine stays up.
void DetachProcess();

} // namespace vark
