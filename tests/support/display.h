// A display without a screen, with a window manager, for tests that act as a person would; and what they wait
// for. Its programs are ended with it.
#pragma once

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace vark::test {

// Whether `holds` comes to hold in good time.
inline bool Eventually(const std::function<bool()> &holds)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (std::chrono::steady_clock::now() < end) {
        if (holds()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return holds();
}

// A process of this test. Its standard output goes to the file `output`.
struct Process {
    pid_t Id = -1;

    explicit Process(const std::vector<std::string> &command, const std::string &output = "/dev/null")
    {
        Id = fork();
        if (Id != 0) return;
        std::vector<char *> arguments;
        for (const std::string &each : command) {
            arguments.push_back(const_cast<char *>(each.c_str()));
        }
        arguments.push_back(nullptr);
        static_cast<void>(freopen(output.c_str(), "w", stdout));
        static_cast<void>(freopen("/dev/null", "w", stderr));
        execvp(arguments[0], arguments.data());
        _exit(127);
    }
    Process(const Process &) = delete;
    Process &operator=(const Process &) = delete;
    ~Process()
    {
        if (Id <= 0) return;
        kill(Id, SIGTERM);
        waitpid(Id, nullptr, 0);
    }

    // Its exit code if it ends by itself in good time, else -1.
    int ExitCode()
    {
        int status = 0;
        const bool ended = Eventually([&] { return waitpid(Id, &status, WNOHANG) == Id; });
        if (!ended) return -1;
        Id = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
};

struct Display {
    std::unique_ptr<Process> Server;
    std::unique_ptr<Process> Manager;

    // Starts both and points the environment there; false where one of the programs is not installed.
    bool Start()
    {
        for (const char *const program : {"Xvfb", "openbox", "xdotool"}) {
            const std::string command = std::string("command -v ") + program + " >/dev/null 2>&1";
            if (system(command.c_str()) != 0) return false;
        }
        int ends[2] = {};
        if (pipe(ends) != 0) return false;
        Server = std::make_unique<Process>(
            std::vector<std::string>{"Xvfb", "-displayfd", std::to_string(ends[1]), "-screen", "0",
                                     "1280x900x24", "-nolisten", "tcp", "-noreset"});
        close(ends[1]);
        std::string number;
        char digit = 0;
        while (read(ends[0], &digit, 1) == 1 && digit != '\n') {
            number += digit;
        }
        close(ends[0]);
        if (number.empty()) return false;
        setenv("DISPLAY", (":" + number).c_str(), 1);
        unsetenv("WAYLAND_DISPLAY");
        setenv("VARK_UI", "gtk", 1);
        setenv("LC_ALL", "C.UTF-8", 1); // else xdotool finds no window whose title has an umlaut
        setenv("GDK_BACKEND", "x11", 1);
        setenv("GTK_A11Y", "none", 1);
        Manager = std::make_unique<Process>(std::vector<std::string>{"openbox"});
        return true;
    }

    static void Do(const std::string &command)
    {
        static_cast<void>(system(("xdotool " + command + " >/dev/null 2>&1").c_str()));
    }

    // Waits until the window of that title has the keyboard.
    static bool HasKeyboard(const std::string &title)
    {
        return Eventually([&title] {
            const std::string command =
                "test \"$(xdotool getactivewindow getwindowname 2>/dev/null)\" = '" + title + "'";
            return system(command.c_str()) == 0;
        });
    }
};

} // namespace vark::test
