// The choice of the front end by $VARK_UI, and its calls.
#pragma once

#include "window-system/model/model.h"

namespace varkui {

// The calls from windows to the front end.
extern const FrontEndCalls frontEndCalls;

} // namespace varkui
