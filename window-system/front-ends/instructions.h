// What instructions do to windows, in the place of a person.
#pragma once

#include "window-system/front-ends/lines.h"
#include "window-system/model/threads.h"

namespace varkui {

// Longest reason why an instruction was not done.
constexpr size_t longestPlayFailure = longestLine / 2;

// What is being done, and how it failed.
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
