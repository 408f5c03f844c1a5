// Text editing, shared by edits and combo boxes.
#pragma once

#include "window-system/model/input.h"
#include "window-system/model/window.h"

namespace varkui {

LONG SelectionStart(const EditState &edit);
LONG SelectionEnd(const EditState &edit);

// Selects as EM_SETSEL does: 0 to -1 is all, a start of -1 nothing.
void SelectText(Window *window, EditState &edit, LONG start, LONG end);

// The outcome of an editing step.
enum class Edited : unsigned char { Nothing, Changed, AtLimit, NoMemory };
Edited TypeCharacter(Window *window, EditState &edit, unsigned char character);
Edited PressKey(Window *window, EditState &edit, WPARAM key, bool shift);
Edited TakeTyped(Window *window, EditState &edit, const Input &input);

// Takes the caret and selection that a person has set on the screen.
void TakeCaret(Window *window, EditState &edit, const Input &input);

// Puts `text` in the place of the selection, cut to the limit if `limited`.
Edited ReplaceSelection(Window *window, EditState &edit, const char *text, bool limited);

// Whether the window is an edit of several lines.
bool IsMultiline(const Window *window);

} // namespace varkui
