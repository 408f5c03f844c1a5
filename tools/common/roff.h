// Manual pages in the language of man(7).
#pragma once

#include <string>
#include <string_view>

namespace tools {

// The text as it is to be read: nothing in it is an instruction, and a hyphen is what is typed.
std::string Roff(std::string_view utf8);

// Paragraphs, parted by blank lines, whose lines are filled anew.
std::string RoffParagraphs(std::string_view utf8);

// Lines that stay as they are, set off to the right.
std::string RoffLines(std::string_view utf8);

// The first line of a page: ".TH VARK-BUCHEN 1 …". `date` is "2026-11-22", `version` "4.0".
std::string RoffTitle(std::string_view name, int section, std::string_view date, std::string_view version);

} // namespace tools
