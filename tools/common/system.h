// What differs between Linux and Windows for the tools: how a program begins, paths outside of it, its
// streams. The rest stands behind headers of its own (workplace.h, terminal.h) in linux/ and windows/.
#pragma once

#include <cstdio>
#include <filesystem>
#include <string>

namespace tools {

// What main does first. From here on the arguments are UTF-8, a terminal takes the output as UTF-8, and
// no file ever gets the number of an output that was closed when the program began.
void BeginProgram(int &count, char **&arguments);

// Where the program lies.
std::filesystem::path ProgramDirectory();

// A path as the record manager and ini files have it: as it is on Linux, in the characters of the system's
// code page on Windows. Throws with a German text where it has others.
std::string PathBytes(const std::filesystem::path &path);
std::filesystem::path PathOfBytes(const std::string &bytes);

// A path as texts of the tools name it, in UTF-8. By itself the standard library takes bytes for that on
// Linux alone.
std::filesystem::path PathOfText(const std::string &text);

// What ini files of new books say of the program beside which their record manager lies; nothing on Linux,
// where the library looks beside itself.
std::string IniLinesOfProgram();

// Throws, naming the file, when the ini file of this name that is in force cannot be read.
void RefuseUnreadableIni(const char *name);

// Sets a variable that the library and programs that are started find.
void SetEnvironment(const char *name, const std::string &value);

bool IsTerminal(FILE *stream);

// Whether standard input can be read without a wait.
bool IsInputReady();

// The error in place of which people are told of this one: some systems have more of them.
int CommonError(int error);

} // namespace tools
