// Nobody is there: a box is answered with the button that does the least, a dialog as it asks to be or else
// cancelled, any other window closed.
#pragma once

#include "window-system/model/threads.h"

namespace varkui {

bool AnswerUnseen(Thread *thread);

// The button that a dialog wants to be answered with, 0 for none.
LONG_PTR WantedAnswer(const Window *dialog);

} // namespace varkui
