// Work that a program beside librs.so does, heard to its end.
#pragma once

#include <cstddef>
#include <cstdint>

namespace rs {

// What is told of work that takes its time. `GoesOn` is called several times a second with how much of
// `whole` is done; false stops the work.
struct Progress {
    bool (*GoesOn)(void *context, int64_t done, int64_t whole);
    void *Context;
};

// How a helper ended.
enum class Ended : uint8_t { good, failed, stopped };

// Far more than a helper is silent for that works or waits for a printing system. Tests shorten it.
extern int longestSilence_ms;

// Runs a helper that tells how it goes through its last descriptor: lines of "+" and a number while it works,
// then "ok", or that and a line for the person, or why not. One that says nothing for a minute is ended. The
// first descriptors are `descriptors`. `said` is the line then, often empty, or why not. `whole` is what the
// numbers go up to; `progress` may be null.
Ended RunHelper(const char *name, char *const *arguments, const int *descriptors, int count, char *said,
                size_t size, const Progress *progress, int64_t whole);

} // namespace rs
