// The programs and libraries that stand beside librs.so.
#pragma once

#include <climits>
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

// Collects a child that has ended or is about to; a host that collects its children itself may have been
// quicker.
void AwaitEnd(pid_t child);

// Runs a helper that tells how it went through its last descriptor, before it ends: "ok", or that and a line
// for the person, or why not. The first ones are `descriptors`. True when all is well; `said` is the line
// then, often empty, else why not.
bool RunHelper(const char *name, char *const *arguments, const int *descriptors, int count,
               char (&said)[256]);

} // namespace rs
