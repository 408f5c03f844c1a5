// A window system in a directory of its own, whose vark-ui is the one that lies there.
#pragma once

#include "window-system/include/varkui.h"

#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <string>

using Box = int (*)(HWND, LPCSTR, LPCSTR, UINT);

// The message box of a copy of `library`; null when it could not be loaded.
inline Box BoxOfACopyIn(const std::filesystem::path &directory, const char *library)
{
    const std::filesystem::path copy = directory / "libvarkui.so";
    std::filesystem::copy_file(library, copy);
    setenv("VARK_UI", "gtk", 1);
    void *loaded = dlopen(copy.c_str(), RTLD_NOW | RTLD_LOCAL);
    return loaded != nullptr ? reinterpret_cast<Box>(dlsym(loaded, "MessageBoxA")) : nullptr;
}

// A script of the shell in place of vark-ui.
inline void MakeProgram(const std::filesystem::path &directory, const std::string &text)
{
    std::ofstream(directory / "vark-ui") << "#!/bin/sh\n" << text;
    std::filesystem::permissions(directory / "vark-ui", std::filesystem::perms::owner_all);
}
