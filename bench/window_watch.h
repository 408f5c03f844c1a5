// A program's window looked at and typed into from outside, so that programs of any make are measured alike.
// Needs a display with a window manager. Whatever goes wrong ends the measuring program and the one it
// started.
#pragma once

#include <X11/Xlib.h>
#include <cstdio>
#include <string>
#include <vector>

#include "bench/peers/peer.h"

struct Watched {
    Display *Screen;
    std::string Title;
    pid_t Program;
    Window Shown; // None until it has the keyboard
    Stopwatch SinceStart;
};

// Starts a program, its output going to standard error. `command` ends with a null.
Watched StartWatched(const std::string &title, char **command);

// Waits until the window of that title has the keyboard and something stands in the middle of it.
void WaitUntilDrawn(Watched &watched);

// The pixels of the middle of the window.
std::vector<unsigned long> MiddleOf(const Watched &watched);

// A key by its name, "Alt+" before it where that one is held.
void Press(const Watched &watched, const std::string &key);

// Waits until the program has ended by itself and well.
void WaitUntilEnded(const Watched &watched);

// Ends the program if it still runs, and waits until its window has gone: the next of that title is another.
void Leave(const Watched &watched);

[[noreturn]] void GiveUp(const Watched &watched, const char *why);

// Sleeps a millisecond; gives up half a minute after the program's start.
void Pause(const Watched &watched, const char *reason);
