// What a person has before them.
#pragma once

#include "window-system/model/threads.h"

namespace varkui {

// The modal loop that runs a dialog, null for a modeless one.
ModalLoop *LoopOf(const Window *dialog);

// The topmost window of a thread that waits for a person: the innermost modal dialog, else the active window.
Window *Topmost(Thread *thread);

// The text that names a field or list: the one that its window has put right before it, as also the letter
// underlined in it leads there. Null for other controls and where no text stands there. A hidden text names
// what needs no name for those who see it.
const Window *LabelOf(const Window *control);

// The button that Enter presses in `dialog` now, 0 for none.
int CurrentDefault(Window *dialog);

} // namespace varkui
