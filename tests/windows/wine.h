// Running programs of Windows under Wine, each beside the libraries and stand-ins that its case puts there.
#pragma once

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <poll.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace tests {

// A path as programs of Windows name it.
inline std::string ForWindows(const std::filesystem::path &path)
{
    std::string text = "Z:" + path.string();
    std::replace(text.begin(), text.end(), '/', '\\');
    return text;
}

inline std::string TextOf(const std::filesystem::path &path)
{
    std::ifstream stream(path);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

inline void PutText(const std::filesystem::path &path, const std::string &text)
{
    std::ofstream(path) << text;
}

// Looks again and again, for half a minute at most, and leaves the processor to the others meanwhile. False
// when it never was so.
template <typename Condition> bool WaitUntil(const Condition &condition)
{
    constexpr int step_ms = 20;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        poll(nullptr, 0, step_ms);
    }
    return true;
}

// How a program has ended, and what it said, without carriage returns.
struct Ended {
    int Code;
    std::string Output;
    std::string Errors;
};

struct OnWindows : testing::Test {
    std::filesystem::path Directory;

    void SetUp() override
    {
        std::string pattern = std::filesystem::temp_directory_path() / "vark-windows-XXXXXX";
        Directory = mkdtemp(pattern.data());
    }
    void TearDown() override { std::filesystem::remove_all(Directory); }

    static std::filesystem::path Built(const std::string &name)
    {
        return std::filesystem::path(WINDOWS_BUILD) / name;
    }

    // What the program prints, without the carriage returns. Arguments as a shell takes them.
    std::string Run(const std::string &program, const std::string &arguments = "",
                    const std::string &environment = "") const
    {
        const std::string command = "cd '" + Directory.string() + "' && " + environment +
                                    " '" UNDER_WINE "' " + program + " " + arguments +
                                    " 2>/dev/null </dev/null";
        std::string output;
        FILE *pipe = popen(command.c_str(), "r");
        if (pipe == nullptr) return {};
        std::array<char, 4096> buffer;
        size_t count = 0;
        while ((count = fread(buffer.data(), 1, buffer.size(), pipe)) > 0) {
            output.append(buffer.data(), count);
        }
        pclose(pipe);
        std::erase(output, '\r');
        return output;
    }

    // Runs a program of Windows, or with `by` empty one of this system. `input` is a file that it reads.
    Ended RunToEnd(const std::string &program, const std::string &arguments, const std::string &environment,
                   const std::string &input = "/dev/null", const std::string &by = "'" UNDER_WINE "'") const
    {
        const auto output = Directory / "output";
        const auto errors = Directory / "errors";
        const std::string command = "cd '" + Directory.string() + "' && " + environment + " " + by + " '" +
                                    program + "' " + arguments + " >'" + output.string() + "' 2>'" +
                                    errors.string() + "' <'" + input + "'";
        const int status = std::system(command.c_str());
        Ended ended{WIFEXITED(status) ? WEXITSTATUS(status) : -1, TextOf(output), TextOf(errors)};
        std::erase(ended.Output, '\r');
        std::erase(ended.Errors, '\r');
        return ended;
    }
};

} // namespace tests
