// The dialog in front of a person: its loop, labels and default button.
#pragma once

#include "window-system/model/threads.h"

namespace varkui {

// The modal loop that runs a dialog, null for a modeless one.
ModalLoop *LoopOf(const Window *dialog);

// The topmost window of a thread that waits for a person: the innermost modal dialog, else the active window.
Window *Topmost(Thread *thread);

// The label of a field or list: the static text right before it, whose mnemonic also leads there. Null for
// other controls and without such a text. A hidden label is for screen readers alone.
const Window *LabelOf(const Window *control);

// The button that Enter presses in `dialog` now, 0 for none.
int CurrentDefault(Window *dialog);

} // namespace varkui
