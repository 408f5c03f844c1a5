// Whether the model keeps its invariants; model.h lists them.
#pragma once

namespace varkui {

// Every invariant of above; asserts.
void CheckModel();

} // namespace varkui
