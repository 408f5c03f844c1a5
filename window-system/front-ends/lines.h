// Lines on standard error and in the file of $VARK_UI_LOG. The lock must not be held.
#pragma once

#include <cstddef>

namespace varkui {

// The limit of a line, beyond which it is cut. Message texts have up to 399 characters.
constexpr size_t longestLine = 4096;

// Appends a line, "PREFIX TEXT" with Windows-1252 `text` turned into UTF-8 on one line, to the file that
// $VARK_UI_LOG names; does nothing without it.
void LogText(const char *prefix, const char *text);

// Appends the UTF-8 `line` as it stands to the log.
void LogLine(const char *line);

// Writes "PREFIX: TEXT" as one UTF-8 line to standard error; `text` is Windows-1252.
void WriteToStandardError(const char *prefix, const char *text);

// Writes the UTF-8 `line` to standard error and to the log.
void Complain(const char *line);

} // namespace varkui
