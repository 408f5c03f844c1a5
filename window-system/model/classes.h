// Classes of windows: the system's own and those of hosts.
#pragma once

#include "window-system/model/window.h"

namespace varkui {

struct Input;

struct WindowClass {
    const char *Name;
    char *OwnName; // the memory of a name that was told; null for the system's
    WNDPROC Procedure;
    void (*TakeInput)(HWND window, const Input &input); // what only this class understands; null for a host's
    int ExtraBytes;
    enum Kind Kind;
    bool OfSystem;
    WNDCLASSA Told; // as it was registered, for GetClassInfoA
    ATOM Atom;
    int Windows;
    WindowClass *Next;
};

// A class of the system's own.
struct SystemClass {
    const char *Name;
    WNDPROC Procedure;
    void (*TakeInput)(HWND window, const Input &input);
    int ExtraBytes;
    enum Kind Kind;
};

// Enters the classes of the system, when the library is loaded. Needs no memory, so that windows can always
// be tried.
constexpr int mostSystemClasses = 16;
void AddSystemClasses(const SystemClass *classes, int count);

// A class of a host; null when there is no memory.
WindowClass *AddClass(const WNDCLASSA &told);

// A name is a text or, as a number below 65536, an atom. Null if there is no such class.
WindowClass *FindClass(LPCSTR name);

// Whether `name` is a text that names something. Atoms are refused, since nobody registers any.
bool IsName(LPCSTR name);

} // namespace varkui
