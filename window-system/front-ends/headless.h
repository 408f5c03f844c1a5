// Answers without a person: a box with its safest button, a dialog with the button it names or Cancel; any
// other window is closed.
#pragma once

#include "window-system/model/threads.h"

namespace varkui {

bool AnswerUnseen(Thread *thread);

// The button that a dialog names for its answer (VARKUI_ANSWER_PROP), 0 for none.
LONG_PTR WantedAnswer(const Window *dialog);

} // namespace varkui
