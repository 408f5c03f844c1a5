// What the tests of the record manager ask of the operating system: directories that are nobody else's,
// and clients in processes of their own.
#pragma once

#include <filesystem>
#include <string>

namespace wbtrvtest {

// Makes a directory and returns its path.
std::filesystem::path MakeDirectory(const std::filesystem::path &where);

// A name that no other directory of any process has had.
std::string UniqueName();

// A process that carries out what it reads from this one.
struct Partner {
    int From = -1;
    int To = -1;
    std::intptr_t Process = -1;
};

// Starts one in which `serve`, the function of Remote and no other, goes on with the two ends.
Partner StartPartner(void (*serve)(int from, int to));
// Ends it as a crash does, unless that has been done.
void KillPartner(Partner &partner);

} // namespace wbtrvtest
