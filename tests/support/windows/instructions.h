// The instructions of scripts, done to real windows. window-system/README.md has the list of them.
#pragma once

#include <functional>
#include <string>
#include <vector>
#include <windows.h>

namespace vark::test {

// Lines of instructions, and which comes next.
struct Instructions {
    std::vector<std::string> Lines;
    size_t Next = 0; // also the number of the line before it, from 1
};

Instructions InstructionsOf(const std::string &text);

// The next line that is neither empty nor a comment, without the blanks around it; null at the end.
const std::string *NextInstruction(Instructions &list);

// What a line comes to: why it cannot be done, or what there is to do, nothing for a line that only expects.
struct Step {
    std::string Failure;
    std::function<void()> Act;
};

// Reads a line for the window `top`, which must be waiting. Nothing is done to it yet.
Step StepOf(HWND top, const std::string &line);

} // namespace vark::test
