// Programs beside a part of the library that do its work in a process of their own.
#pragma once

#include <sys/types.h>

namespace host {

// A helper finds the descriptors that it is given from this number on.
inline constexpr int firstOfHelper = 3;
inline constexpr int maxOfHelper = 4;

// Runs the program `name` beside this part with `arguments` (its name first, null last) and `count`
// descriptors, at most maxOfHelper, which become 3, 4 and so on there; but for standard input, output and
// error no other one goes along. They stay the caller's. Returns 0 and the child, or the error: ENOENT for a
// program that is missing, EPERM for one that is not to be trusted (host/companions.h).
int StartHelper(const char *name, char *const *arguments, const int *descriptors, int count, pid_t &child);

// Ends a child that has not ended by itself.
void EndHelper(pid_t child);

// Collects a child that has ended or is about to; one that is still there after five seconds is ended. A host
// that collects its children itself may have been quicker.
void AwaitEnd(pid_t child);

} // namespace host
