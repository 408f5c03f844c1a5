// Who answers when the library waits for a person: chosen once by $VARK_UI, and what every choice shares: the
// lines on standard error and in the log.
#pragma once

#include "window-system/varkui.h"

namespace varkui {

// What a message box shows, apart from how.
struct Box {
    const char *Text; // Windows-1252, never null
    const char *Caption;
    UINT Style; // MB_...
};

// The id of the button that does the least: OK where it is alone, else Cancel, No or Abort. 0 for a style
// that names no set of buttons.
int SafestAnswer(UINT style);

// Not 0 when a box of `style` has the button `id`.
bool BoxHasButton(UINT style, int id);

enum class FrontEnd { Headless, Script };

// The front end in charge now. The first call reads $VARK_UI and opens the script.
FrontEnd CurrentFrontEnd();

// From now on nobody is asked any more; everything is answered as headless does.
void FallBackToHeadless();

// Appends a line, "PREFIX TEXT" with Windows-1252 `text` turned into UTF-8 on one line, to the file that
// $VARK_UI_LOG names; does nothing without it.
void LogText(const char *prefix, const char *text);

// Appends the UTF-8 `line` as it stands to the log.
void LogLine(const char *line);

// Writes "PREFIX: TEXT" as one UTF-8 line to standard error.
void WriteToStandardError(const char *prefix, const char *text);

// ---- The script (script.cpp) ----

// Opens the script at `path`; false, with the reason on standard error and in the log, when it cannot be
// read.
bool OpenScript(const char *path);

// Answers `box` with the next instructions of the script; 0 when the script has ended or failed, which leaves
// the box to headless.
int AnswerFromScript(const Box &box);

} // namespace varkui
