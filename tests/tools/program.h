// Running the built programs as a person's shell would, in directories of their own.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace tests {

// A new directory, gone at the end.
struct TemporaryDirectory {
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory &) = delete;
    TemporaryDirectory &operator=(const TemporaryDirectory &) = delete;

    std::filesystem::path Path;
};

struct Result {
    int ExitCode; // 128 + signal for a program that was ended by one
    std::string Out;
    std::string Err;
};

struct Call {
    std::string Program;
    std::vector<std::string> Arguments;
    std::string Input = {};
    // Set in the program's environment, which otherwise holds nothing that the library looks at.
    std::map<std::string, std::string> Environment = {};
    // Whether standard error is a terminal.
    bool IsOnTerminal = false;
};

Result Run(const Call &call);

// books and vark with these arguments.
Result Books(std::vector<std::string> arguments);
// `configuration` is given as --config.
Result Vark(const std::filesystem::path &configuration, std::vector<std::string> arguments,
            const std::string &input = {});

void WriteFile(const std::filesystem::path &path, const std::string &content);
std::string ReadFile(const std::filesystem::path &path);

} // namespace tests
