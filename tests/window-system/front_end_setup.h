// A front end for one test: sets $VARK_UI and $VARK_UI_LOG before the first call of the window system, which
// is why each case runs in a process of its own, and reads the log back.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>

struct FrontEndSetup {
    std::filesystem::path Directory;

    FrontEndSetup()
    {
        char pattern[] = "/tmp/vark-ui-test-XXXXXX";
        Directory = mkdtemp(pattern);
        setenv("VARK_UI", "headless", 1);
        setenv("VARK_UI_LOG", (Directory / "log").string().c_str(), 1);
        unsetenv("DISPLAY");
        unsetenv("WAYLAND_DISPLAY");
    }
    FrontEndSetup(const FrontEndSetup &) = delete;
    FrontEndSetup &operator=(const FrontEndSetup &) = delete;
    ~FrontEndSetup() { std::filesystem::remove_all(Directory); }

    void UseScript(const std::string &instructions) const
    {
        std::ofstream(Directory / "script") << instructions;
        setenv("VARK_UI", ("script:" + (Directory / "script").string()).c_str(), 1);
    }

    std::string Log() const
    {
        std::ostringstream text;
        std::ifstream file(Directory / "log");
        text << file.rdbuf();
        return text.str();
    }
};
