// Classes of windows: the system's own and those of hosts.
#pragma once

#include "window-system/model/window.h"

namespace varkui {

struct Input;

struct WindowClass {
    const char *Name;
    char *OwnName; // the memory of a host's name; null for the system's
    WNDPROC Procedure;
    void (*TakeInput)(HWND window, const Input &input); // its own input; null for a host's
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

// Enters the system's classes when the library is loaded. Allocates nothing, so it cannot fail.
constexpr int mostSystemClasses = 16;
void AddSystemClasses(const SystemClass *classes, int count);

// A class of a host; null when there is no memory.
WindowClass *AddClass(const WNDCLASSA &told);

// The class of a name: a text or, below 65536, an atom. Null for an unknown one.
WindowClass *FindClass(LPCSTR name);

// Whether `name` is a text with at least one character. Atoms are refused: no call registers one.
bool IsName(LPCSTR name);

} // namespace varkui
