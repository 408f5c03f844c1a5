// The programs and libraries that stand beside librs.so.
#pragma once

#include <climits>
#include <cstddef>
#include <cstdint>
#include <sys/types.h>

namespace rs {

// What a helper finds its descriptors from.
inline constexpr int firstDescriptor = 3;
inline constexpr int maxDescriptors = 4;

// The path of `name` beside this library. False when it is missing, or another user could have put it there.
bool FindBeside(const char *name, char (&path)[PATH_MAX]);

// Runs the program `name` with `arguments` (its name first, null last) and `count` descriptors, which become
// 3, 4 and so on there; no other one goes along. They stay the caller's. Returns 0 and the child, or errno
// (ENOENT also for a program that is not to be trusted).
int StartHelper(const char *name, char *const *arguments, const int *descriptors, int count, pid_t &child);

// Collects a child that has ended or is about to, and ends one that is not; a host that collects its children
// itself may have been quicker.
void AwaitEnd(pid_t child);

// What is told of work that takes its time. `GoesOn` is called several times a second with how much of
// `whole` is done; false stops the work.
struct Progress {
    bool (*GoesOn)(void *context, int64_t done, int64_t whole);
    void *Context;
};

// How a helper ended.
enum class Ended : uint8_t { good, failed, stopped };

// Runs a helper that tells how it goes through its last descriptor: lines of "+" and a number while it works,
// then "ok", or that and a line for the person, or why not. One that says nothing for a minute is ended. The
// first descriptors are `descriptors`. `said` is the line then, often empty, or why not. `whole` is what the
// numbers go up to; `progress` may be null.
Ended RunHelper(const char *name, char *const *arguments, const int *descriptors, int count, char *said,
                size_t size, const Progress *progress, int64_t whole);

} // namespace rs
