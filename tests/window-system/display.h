// A display of its own for one test: Xvfb with a window manager, and a person at its keyboard and mouse. For
// tests of what vark-ui shows; they are left out where the X programs are not installed.
#pragma once

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <poll.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "window-system/varkui.h"

constexpr std::chrono::seconds patience(30);

// A process of this test, ended with it. Its standard output goes to `output`.
struct Process {
    pid_t Id = -1;

    explicit Process(const std::vector<std::string> &command, int output = -1)
    {
        Id = fork();
        if (Id != 0) return;
        std::vector<char *> arguments;
        for (const std::string &each : command) {
            arguments.push_back(const_cast<char *>(each.c_str()));
        }
        arguments.push_back(nullptr);
        if (output >= 0) dup2(output, STDOUT_FILENO);
        static_cast<void>(freopen("/dev/null", "w", stderr));
        execvp(arguments[0], arguments.data());
        _exit(127);
    }
    Process(const Process &) = delete;
    Process &operator=(const Process &) = delete;
    ~Process()
    {
        kill(Id, SIGTERM);
        waitpid(Id, nullptr, 0);
    }
};

class Display {
public:
    // Begins the display and makes it the one that vark-ui will show windows on. Empty, or what is missing.
    std::string Begin(const std::filesystem::path &directoryOfProgram)
    {
        for (const char *program : {"Xvfb", "openbox", "xdotool", "xprop"}) {
            if (system(("command -v " + std::string(program) + " >/dev/null 2>&1").c_str()) != 0)
                return std::string(program) + " is not installed";
        }
        if (access((directoryOfProgram / "vark-ui").c_str(), X_OK) != 0) return "vark-ui is not built";
        int ends[2] = {};
        if (pipe(ends) != 0) return "there is no pipe";
        server = std::make_unique<Process>(std::vector<std::string>{"Xvfb", "-displayfd",
                                                                    std::to_string(ends[1]), "-screen", "0",
                                                                    "1280x900x24", "-nolisten", "tcp"});
        close(ends[1]);
        char digit = 0;
        name = ":";
        while (read(ends[0], &digit, 1) == 1 && digit != '\n') {
            name += digit;
        }
        close(ends[0]);
        if (name == ":") return "there is no display";
        setenv("DISPLAY", name.c_str(), 1);
        setenv("VARK_UI", "gtk", 1);
        setenv("LC_ALL", "C.UTF-8", 1); // else xdotool finds no window whose title has an umlaut
        setenv("GDK_BACKEND", "x11", 1);
        setenv("GTK_A11Y", "none", 1);
        manager = std::make_unique<Process>(std::vector<std::string>{"openbox"});
        if (pipe(ends) != 0) return "there is no pipe";
        watcher = std::make_unique<Process>(
            std::vector<std::string>{"xprop", "-root", "-spy", "_NET_ACTIVE_WINDOW"}, ends[1]);
        close(ends[1]);
        changes = ends[0];
        return "";
    }
    Display() = default;
    Display(const Display &) = delete;
    Display &operator=(const Display &) = delete;
    ~Display()
    {
        if (changes >= 0) close(changes);
    }

    const std::string &Name() const { return name; }

    // Takes the display away: whatever still waits on it is answered as if nobody were there.
    void End() { server.reset(); }

    // What a person does, in the words of xdotool.
    static void Do(const std::string &command)
    {
        const std::string whole = "xdotool " + command + " >/dev/null 2>&1";
        static_cast<void>(system(whole.c_str()));
    }

    // Waits until the window of that title has the keyboard, or no longer has it.
    bool HasKeyboard(const std::string &title) { return Waits(title, true); }
    bool LosesKeyboard(const std::string &title) { return Waits(title, false); }

    // A click at a place inside a control of the dialog of that title.
    static void Click(const std::string &title, HWND dialog, int id, int right, int down,
                      const std::string &click = "click 1")
    {
        RECT place = {};
        GetWindowRect(GetDlgItem(dialog, id), &place);
        MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT *>(&place), 2);
        Do("search --onlyvisible --name '" + title + "' mousemove --window %1 " +
           std::to_string(place.left + right) + " " + std::to_string(place.top + down) + " " + click);
    }

private:
    // Looks again whenever another window gets the keyboard.
    bool Waits(const std::string &title, bool isWanted)
    {
        const std::string look =
            "xdotool getactivewindow getwindowname 2>/dev/null | grep -q '" + title + "'";
        const auto end = std::chrono::steady_clock::now() + patience;
        while ((system(look.c_str()) == 0) != isWanted) {
            if (std::chrono::steady_clock::now() > end) return false;
            constexpr int longest_ms = 200; // a window may get its title after the keyboard
            pollfd waits = {changes, POLLIN, 0};
            char lines[4096];
            if (poll(&waits, 1, longest_ms) <= 0 || read(changes, lines, sizeof lines) > 0) continue;
            // Who watches has gone; poll only waits then.
            close(changes);
            changes = -1;
        }
        return true;
    }

    std::unique_ptr<Process> server;
    std::unique_ptr<Process> manager;
    std::unique_ptr<Process> watcher;
    std::string name;
    int changes = -1;
};
