// Who answers when the library waits for a person: chosen once by $VARK_UI.
#pragma once

#include "window-system/model/model.h"

namespace varkui {

// What the windows have from the front end.
extern const FrontEndCalls frontEndCalls;

} // namespace varkui
