// What tests call that Windows has not: some functions of POSIX, and the calls by which a host plays a
// person, which our own window system has. Every source of a test includes this first.
#pragma once

#ifdef __cplusplus

#include "window-system/include/varkui.h"

#include <cstdlib>

// Both are seen by the C runtime and by the system at once. An empty value removes the variable.
inline int setenv(const char *name, const char *value, int) { return _putenv_s(name, value); }
inline int unsetenv(const char *name) { return _putenv_s(name, ""); }

// The last six characters of the pattern become those of a directory that is made. Null when none can be.
char *mkdtemp(char *pattern);

// As window-system/include/calls.def has them.
BOOL VarkUiPlay(LPCSTR instructions, BOOL isUnseen);
int VarkUiPlayed(LPSTR failure, int size);
void VarkUiLimitLists(LONG rows);
BOOL VarkUiHasUser();

#endif
