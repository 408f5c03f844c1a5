// What lies beside the part of the library in which this code is linked: the other parts, which are loaded,
// and the programs that it runs. Installed, the parts have a directory of their own below the library's, and
// the programs one among those that nobody calls by hand; both are known by the way there.
//
// Whoever can write a file that is loaded or run can be the person whose process it is. So one rule holds for
// every library and every program: the file and each directory above it, up to the root, belong to the
// superuser or to the effective user, and nobody else may write them, or put another file in their place (a
// directory in which that is forbidden by the sticky bit may be open to all). Links are followed first.
#pragma once

#include <climits>
#include <cstddef>

namespace host {

// Whether the file is there and keeps the rule. `real` is its path without links, which is what has to be
// loaded or run. errno is ENOENT or the like when there is none, EPERM when it breaks the rule.
bool IsTrusted(const char *path, char (&real)[PATH_MAX]);

// The directory of the library or program that this code is linked into, without a slash behind it, links
// followed. False when the loader does not tell, or it does not fit.
bool OwnDirectory(char *out, size_t size);

// The path of the trusted file `name` beside this part, or where an installation has it; what is not trusted
// is passed over. errno is EPERM where there was one, else ENOENT.
bool FindBeside(const char *name, char (&path)[PATH_MAX]);

// Loads a trusted library, bound at once and with symbols of its own; null when it is missing, not trusted or
// does not load. `directory` may end in a slash.
void *LoadFrom(const char *directory, const char *name);

// The same for one beside this part. errno is ENOENT, EPERM or ENOEXEC, by what keeps it from being loaded.
void *LoadBeside(const char *name);

} // namespace host
