// A display of its own for one test: Xvfb with a window manager, and a person at its keyboard and mouse. Its
// programs end with it. For tests of what vark-ui shows; they are left out where the programs are not
// installed.
#pragma once

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "window-system/include/varkui.h"

namespace vark::test {

// How long a test waits for what has to come: far longer than a busy machine takes, below the test's own
// limit.
inline constexpr std::chrono::seconds patience(60);

// Whether `holds` comes to hold in good time.
inline bool Eventually(const std::function<bool()> &holds, std::chrono::seconds within = patience)
{
    constexpr std::chrono::milliseconds betweenLooks(10);
    const auto end = std::chrono::steady_clock::now() + within;
    while (!holds()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(betweenLooks);
    }
    return true;
}

// A process of this test, ended with it. Its standard output goes to the file `output`.
struct Process {
    pid_t Id = -1;

    explicit Process(const std::vector<std::string> &command, const std::string &output = "/dev/null")
    {
        std::vector<char *> arguments;
        arguments.reserve(command.size() + 1);
        for (const std::string &each : command) {
            arguments.push_back(const_cast<char *>(each.c_str()));
        }
        arguments.push_back(nullptr);
        Id = fork();
        if (Id != 0) return;
        prctl(PR_SET_PDEATHSIG, SIGTERM); // also when the test is killed
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
        if (!Eventually([&] { return waitpid(Id, &status, WNOHANG) == Id; })) return -1;
        Id = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
};

class Display {
public:
    // Begins the display and makes it the one on which the vark-ui of that directory shows windows. Empty, or
    // what is missing. Returns when windows can be shown and get the keyboard.
    std::string Begin(const std::filesystem::path &directoryOfProgram)
    {
        for (const char *program : {"Xvfb", "openbox", "xdotool", "xprop"}) {
            if (!Holds("command -v " + std::string(program)))
                return std::string(program) + " is not installed";
        }
        if (access((directoryOfProgram / "vark-ui").c_str(), X_OK) != 0) return "vark-ui is not built";
        setenv("LC_ALL", "C.UTF-8", 1); // else xdotool finds no window whose title has an umlaut
        int ends[2] = {};
        if (pipe(ends) != 0) return "there is no pipe";
        server = std::make_unique<Process>(
            std::vector<std::string>{"Xvfb", "-displayfd", std::to_string(ends[1]), "-screen", "0",
                                     "1280x1000x24", "-nolisten", "tcp", "-noreset"});
        close(ends[1]);
        char digit = 0;
        name = ":";
        while (read(ends[0], &digit, 1) == 1 && digit != '\n') {
            name += digit;
        }
        close(ends[0]);
        if (name == ":") return "there is no display";
        setenv("DISPLAY", name.c_str(), 1);
        unsetenv("WAYLAND_DISPLAY");
        setenv("VARK_UI", "gtk", 1);
        setenv("GDK_BACKEND", "x11", 1);
        setenv("GTK_A11Y", "none", 1);
        manager = std::make_unique<Process>(std::vector<std::string>{"openbox"});
        // A window that comes before its manager may never get the keyboard.
        if (!Eventually([] { return Holds("xprop -root _NET_SUPPORTING_WM_CHECK | grep -q 'window id'"); }))
            return "there is no window manager";
        return "";
    }

    // Takes the display away: whatever still waits on it is answered as if nobody were there.
    void End() { server.reset(); }

    // Kills the vark-ui on this display; false when there is none.
    bool KillProgram() const
    {
        for (const auto &entry : std::filesystem::directory_iterator("/proc")) {
            std::ifstream comm(entry.path() / "comm");
            std::string text;
            if (!std::getline(comm, text) || text != "vark-ui") continue;
            std::ifstream environment(entry.path() / "environ");
            const std::string all(std::istreambuf_iterator<char>(environment), {});
            if (all.find("DISPLAY=" + name + '\0') == std::string::npos) continue;
            return kill(std::stoi(entry.path().filename().string()), SIGKILL) == 0;
        }
        return false;
    }

    // What a person does, in the words of xdotool.
    static void Do(const std::string &command) { Holds("xdotool " + command); }

    // The title of the window that has the keyboard.
    static std::string TitleOfActive()
    {
        FILE *tells = popen("xdotool getactivewindow getwindowname 2>/dev/null", "re");
        if (tells == nullptr) return "";
        char title[512] = "";
        const size_t length = fread(title, 1, sizeof title, tells);
        pclose(tells);
        return {title, length > 0 ? length - 1 : 0}; // without the end of the line
    }

    // Waits until the window with that in its title has the keyboard, or no longer has it.
    static bool HasKeyboard(const std::string &title)
    {
        return Eventually([&title] { return TitleOfActive().find(title) != std::string::npos; });
    }
    static bool LosesKeyboard(const std::string &title)
    {
        return Eventually([&title] { return TitleOfActive().find(title) == std::string::npos; });
    }

    // Clicks at a place inside a control of the dialog (no box: those are laid out by the screen) that has
    // the keyboard, until `holds`: a window that has the keyboard may not have laid out its controls yet, and
    // then nothing is there to be hit. A click that follows another one after a second is no double click.
    static bool ClickUntil(const std::function<bool()> &holds, HWND dialog, int id, int right, int down,
                           const std::string &click = "click 1")
    {
        constexpr std::chrono::seconds afterOneClick(1);
        return Eventually([&] {
            Click(dialog, id, right, down, click);
            return Eventually(holds, afterOneClick);
        });
    }

    // One click there, or what else xdotool can do with the mouse.
    static void Click(HWND dialog, int id, int right, int down, const std::string &click = "click 1")
    {
        RECT place = {};
        GetWindowRect(GetDlgItem(dialog, id), &place);
        MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT *>(&place), 2);
        Do("getactivewindow mousemove --window %1 " + std::to_string(place.left + right) + " " +
           std::to_string(place.top + down) + " " + click);
    }

private:
    static bool Holds(const std::string &command)
    {
        return system(("{ " + command + "; } >/dev/null 2>&1").c_str()) == 0;
    }

    std::unique_ptr<Process> server;
    std::unique_ptr<Process> manager;
    std::string name;
};

} // namespace vark::test
