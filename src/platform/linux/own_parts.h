// The parts that lie beside this library.
#pragma once

namespace vark {

// Loads a part from this library's own directory; null when it is not there or others could have written it.
void *LoadOwnPart(const char *name);

} // namespace vark
