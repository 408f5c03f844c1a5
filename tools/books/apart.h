// Reading books that may be damaged, apart from this program: in a process of its own, which may end without
// ending this one.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace books {

// What is read: the tables of one directory of years, or of the data path itself, then without a name.
struct Reading {
    std::filesystem::path Data;
    std::string Name;                // "1998"
    std::filesystem::path Directory; // where it lies, or a copy of it
};

// How it has ended.
struct ReadingEnd {
    bool IsWhole;
    std::string Reason; // in the system's words; may be empty
};

// Has the process read, and hands on what it tells, as it comes. The process ends with this one, however that
// happens. Throws where none can be made; an exception of `listen` ends it.
ReadingEnd ReadApart(const Reading &reading, const std::function<void(std::string_view told)> &listen);

// What the process does: checks, and tells the descriptor (Findings).
void ReadHere(const Reading &reading, int to);

// Whether this program was started as such a process; then it has done its work. Never on Linux, where it
// is forked.
bool ReadsApart(int count, const char *const *arguments);

} // namespace books
