// Instructions as text, cut into lines.
#pragma once

#include <cstddef>

namespace varkui {

// The text of all instructions, each line ended by NUL.
struct Lines {
    char *Text;
    char *Next; // the first line not done yet
    char *End;
    char *Value; // room for a value of the longest line
    int Number;  // of the line before Next
};

// The next instruction without its surrounding blanks, null at the end.
char *NextInstruction(Lines &list);

// Room for `size` bytes of instructions; false without memory, or for too many.
bool MakeLines(Lines &list, size_t size);

// Cuts the first `length` bytes of the text into lines.
void CutLines(Lines &list, size_t length);

void FreeLines(Lines &list);

} // namespace varkui
