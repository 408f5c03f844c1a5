// Whether the model keeps its invariants; model.h lists them.
#pragma once

namespace varkui {

// Asserts every invariant.
void CheckModel();

} // namespace varkui
