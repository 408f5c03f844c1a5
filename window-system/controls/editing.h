// The editing of text that edits and combo boxes share.
#pragma once

#include "window-system/model/input.h"
#include "window-system/model/window.h"

namespace varkui {

LONG SelectionStart(const EditState &edit);
LONG SelectionEnd(const EditState &edit);

// Selects as EM_SETSEL does: 0 to -1 is all, a start of -1 nothing.
void SelectText(Window *window, EditState &edit, LONG start, LONG end);

// What typing, a key or a person's whole text did.
enum class Edited : unsigned char { Nothing, Changed, AtLimit, NoMemory };
Edited TypeCharacter(Window *window, EditState &edit, unsigned char character);
Edited PressKey(Window *window, EditState &edit, WPARAM key, bool shift);
Edited TakeTyped(Window *window, EditState &edit, const Input &input);

// Where the person has put the caret.
void TakeCaret(Window *window, EditState &edit, const Input &input);

// Puts `text` in the place of the selection, cut to the limit if `limited`.
Edited ReplaceSelection(Window *window, EditState &edit, const char *text, bool limited);

// Whether it is an edit of many lines.
bool IsMultiline(const Window *window);

} // namespace varkui
