// Instructions: a person's acts on windows, one a line.
#pragma once

#include "window-system/front-ends/lines.h"
#include "window-system/model/threads.h"

namespace varkui {

// The longest reason for a failed instruction.
constexpr size_t longestPlayFailure = longestLine / 2;

// An instruction at work, and its failure.
struct Step {
    Thread *Owner;
    Window *Top;
    char *Value; // room for a value of the line
    bool Failed;
    char Failure[longestPlayFailure];
};

// Does one instruction, a line of UTF-8. Expects the lock.
void Do(Step &step, const char *line);

} // namespace varkui
