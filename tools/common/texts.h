// Texts of the tools: UTF-8 at the terminal and in files, Windows-1252 in records.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tools {

// UTF-8 of a fixed-width record field, read up to its NUL or its width.
std::string FieldText(const char *field, size_t width);

template <size_t Width> std::string FieldText(const char (&field)[Width]) { return FieldText(field, Width); }

// UTF-8 of a Windows-1252 text.
std::string ToUtf8(std::string_view windows1252);

// Windows-1252 of a UTF-8 text; what the code page lacks becomes "?".
std::string FromUtf8(std::string_view utf8);

// True for well-formed UTF-8.
bool IsUtf8(std::string_view text);

// With "?" for each control character: nothing that a damaged record holds may steer a terminal.
std::string Printable(std::string text);

// Without blanks at either end.
std::string_view Trimmed(std::string_view text);

// With the letters A to Z in lower case; others stay, so that it fits any encoding.
std::string Lower(std::string_view text);
std::string Upper(std::string_view text);

// Columns that a UTF-8 text takes on a terminal: one for each character (combining marks take none).
size_t Columns(std::string_view utf8);

// The characters that take the first `columns` columns.
std::string Head(std::string_view utf8, size_t columns);

// The text filled with blanks to `columns`, or cut to them with "…" as the last one.
std::string Left(std::string_view utf8, size_t columns);
std::string Right(std::string_view utf8, size_t columns);

} // namespace tools
