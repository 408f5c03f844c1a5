#include "src/platform/window_support.h"

namespace vark {

HINSTANCE LibraryModule() { return nullptr; }

void PrepareControls() {} // the window system has all kinds from its beginning

} // namespace vark
