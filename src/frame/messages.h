// Numbered German messages: which text, in which box, and whether the caller wants to see it. A `number` is a
// Message::… of message_names.h, or what a check of a field has given back.
#pragma once

#include "src/frame/message_names.h"
#include "src/frame/thread_context.h"
#include "src/platform/window_api.h"

#include <cstdint>

namespace vark {

// The text of a number, Windows-1252, or null when the number has none.
const char *MessageText(int32_t number);

// Icon and buttons of the box of a number: information from 1000, warnings from 1400 and of the record
// manager from 3100, questions from 1800; in the groups between them with Cancel.
UINT BoxStyle(int32_t number);

// Shows message `number` in a box over the active window and waits for the answer. `text` fills the "%s" of
// the message; with null a "%s" stays visible. `partIndex` from 0 names a Teilbuchung in front of the text,
// -1 none. Afterwards the control `focusControl` of the active window (0 for none) is focused and its text
// selected. Returns 1 for OK or Yes and 0 otherwise in boxes without Cancel, the box's own answer (1 OK,
// 2 Cancel, 6 Yes, 7 No) in those with one. Always shows, whatever ShowMessages says.
uint32_t ShowMessage(int32_t number, uint16_t focusControl, const char *text, int32_t partIndex);

// Shows a message if the caller of the running export asked for messages; returns `code` either way, so that
// a check can return what Report returns.
int32_t Report(const ThreadContext &context, int32_t number, int32_t code, const char *text,
               int32_t partIndex);

// Shows the text of a status of the record manager; `text` fills a "%s" as above. Always shows.
void ReportStatus(int16_t status, const char *text);

// For a record or file in use (status 84, 85) shows message 1420 and returns true; else false, silently.
bool ReportLocked(int16_t status);

// The control of that id in `window`: a direct child, failing that any descendant, one in view before
// a hidden one; null when there is none.
HWND FocusControl(HWND window, uint16_t id);

// Focuses a control and selects all of its text if it has any to select.
void FocusAndSelect(HWND control);

} // namespace vark
