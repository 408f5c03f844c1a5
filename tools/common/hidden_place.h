// Names of what is made beside its place: hidden, and told apart by the number of the process that makes it.
#pragma once

#include <filesystem>
#include <string>

namespace tools {

// How the hidden names beside `target` begin, and whether a name is one of them.
std::string HiddenPrefix(const std::filesystem::path &target);
bool IsHiddenName(const std::string &name, const std::string &prefix);

// The name for a process, with a digit more at each further attempt, since it may be taken.
std::filesystem::path HiddenPath(const std::filesystem::path &parent, const std::string &prefix,
                                 unsigned long process, int attempt);
inline constexpr int attemptsMax = 100;

// Throws with a German text where no output may go: directories, books, what is there unless it is replaced.
void RefuseAsOutput(const std::filesystem::path &target, bool replace);

// Tells that what stands in its place may not outlive a power cut. That it failed would be wrong to say.
void TellUncertain(const std::filesystem::path &target, const char *why);

} // namespace tools
