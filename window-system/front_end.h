// Who answers when the library waits for a person: chosen once by $VARK_UI, and what every choice shares: the
// lines on standard error and in the log.
#pragma once

#include "window-system/model.h"

namespace varkui {

// Headless answers everything by itself; Script plays a person from a file; Screen shows windows to one.
enum class FrontEnd { Headless, Script, Screen };

// The front end in charge now. The first call reads $VARK_UI and starts it, so the lock must not be held
// then.
FrontEnd CurrentFrontEnd();

// From now on nobody is asked any more; everything is answered as headless does. Expects the lock.
void FallBackToHeadless();

// What the windows have from the front end.
extern const FrontEndCalls frontEndCalls;

// ---- Message boxes (boxes.cpp) ----

// The id of the button that does the least: OK where it is alone, else Cancel, No or Abort. 0 for a style
// that names no set of buttons.
int SafestAnswer(UINT style);

// Whether a box of `style` has the button `id`.
bool BoxHasButton(UINT style, int id);

// The id of the text in a box.
constexpr int boxTextId = 0xFFFF;

// The text that a box shows.
const char *TextOfBox(Window *box);

// ---- Headless (headless.cpp) ----

bool AnswerUnseen(Thread *thread);

// The button that a dialog wants to be answered with, 0 for none.
LONG_PTR WantedAnswer(const Window *dialog);

// ---- The script (script.cpp) ----

// Opens the script at `path`; false, with the reason on standard error and in the log, when it cannot be
// read.
bool OpenScript(const char *path);

// The next instruction, done to the topmost window of `thread`. As AskFrontEnd.
bool PlayScript(Thread *thread);

// Whether the calling host answers what `thread` asks, by a list of its own (VarkUiPlay). What is asked then
// is kept from the screen.
bool IsPlayedTo(const Thread *thread);

// The next line of that list. As AskFrontEnd.
bool PlayNext(Thread *thread);

void FreePlayed(Thread *thread);

// The script serves another thread, if `thread` has nothing open any more or ends. Expects the lock.
void LetGoOfScript(Thread *thread, bool ends);

// ---- Lines (log.cpp); none of these may be called with the lock held ----

// Longest line that is written; a longer one is cut. Message texts have up to 399 characters.
constexpr size_t longestLine = 4096;

// Longest reason why an instruction was not done.
constexpr size_t longestPlayFailure = longestLine / 2;

// Appends a line, "PREFIX TEXT" with Windows-1252 `text` turned into UTF-8 on one line, to the file that
// $VARK_UI_LOG names; does nothing without it.
void LogText(const char *prefix, const char *text);

// Appends the UTF-8 `line` as it stands to the log.
void LogLine(const char *line);

// Writes "PREFIX: TEXT" as one UTF-8 line to standard error; `text` is Windows-1252.
void WriteToStandardError(const char *prefix, const char *text);

// Writes the UTF-8 `line` to standard error and to the log.
void Complain(const char *line);

// Writes a dialog or box that is shown for the first time to the log. Does nothing for other windows.
void LogDialog(HWND window);

} // namespace varkui
