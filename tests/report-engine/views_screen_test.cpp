// A view on a real screen: vark-ui under Xvfb with a window manager, used by mouse and keyboard. Left out
// where the programs for it are not installed.
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "report_support.h"
#include "window-system/varkui.h"

using namespace reports;

namespace {

constexpr int pageNumber = 102;
constexpr int stateText = 115;
constexpr int picture = 120;

bool Eventually(const std::function<bool()> &holds)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (std::chrono::steady_clock::now() < end) {
        if (holds()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return holds();
}

bool Do(const std::string &command) { return system((command + " >/dev/null 2>&1").c_str()) == 0; }

pid_t Start(const std::vector<std::string> &command)
{
    const pid_t child = fork();
    if (child != 0) return child;
    std::vector<char *> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string &each : command) {
        arguments.push_back(const_cast<char *>(each.c_str()));
    }
    arguments.push_back(nullptr);
    static_cast<void>(freopen("/dev/null", "w", stderr));
    execvp(arguments[0], arguments.data());
    _exit(127);
}

struct ViewOnScreen : testing::Test {
    Directory directory;
    std::vector<pid_t> started;
    int32_t report = 0;
    HWND view = nullptr;

    void SetUp() override
    {
        for (const char *program : {"Xvfb", "openbox", "xdotool"}) {
            if (!Do(std::string("command -v ") + program)) GTEST_SKIP() << program << " is not installed";
        }
        if (access(VARK_UI_PROGRAM, X_OK) != 0) GTEST_SKIP() << "vark-ui is not built";
        int ends[2] = {};
        ASSERT_EQ(pipe(ends), 0);
        started.push_back(Start({"Xvfb", "-displayfd", std::to_string(ends[1]), "-screen", "0",
                                 "1280x1000x24", "-nolisten", "tcp"}));
        close(ends[1]);
        std::string display = ":";
        char digit = 0;
        while (read(ends[0], &digit, 1) == 1 && digit != '\n') {
            display += digit;
        }
        close(ends[0]);
        setenv("DISPLAY", display.c_str(), 1);
        setenv("VARK_UI", "gtk", 1);
        setenv("GDK_BACKEND", "x11", 1);
        setenv("GTK_A11Y", "none", 1);
        setenv("VARK_CONFIG_DIR", directory.Path.c_str(), 1);
        setenv("VARK_TEST_MARK", directory.Path.c_str(), 1);
        started.push_back(Start({"openbox"}));
    }

    void TearDown() override
    {
        for (const pid_t each : started) {
            kill(each, SIGTERM);
            waitpid(each, nullptr, 0);
        }
    }

    // Opens a view of six pages and handles its messages while `person` acts.
    void Show(const std::function<void()> &person)
    {
        report = OpenShipped("or_slist.rs", susaId);
        AddSusaHeader(report);
        for (int line = 0; line < 200; ++line) {
            AddSusaLine(report, {.Konto = std::to_string(1000 + line), .Name = "Konto", .KumSoll = 100});
        }
        view = static_cast<HWND>(OpenView(report));
        ASSERT_NE(IsWindow(view), 0);
        std::thread acting([&] {
            EXPECT_TRUE(Eventually([] { return Do("xdotool search --onlyvisible --name Bericht"); }));
            EXPECT_TRUE(
                Eventually([] { return Do("xdotool getactivewindow getwindowname | grep -q Bericht"); }));
            person();
            PostMessageA(view, WM_CLOSE, 0, 0);
        });
        MSG message;
        while (IsWindow(view) != 0 && GetMessageA(&message, nullptr, 0, 0) > 0) {
            TranslateMessage(&message);
            DispatchMessageA(&message);
        }
        acting.join();
    }

    std::string Text(int control) const
    {
        char text[80] = "";
        GetWindowTextA(GetDlgItem(view, control), text, sizeof text);
        return text;
    }

    // The picture as it is shown now.
    VARKUIPICTURE Shown() const
    {
        VARKUIPICTURE shown = {};
        SendMessageA(GetDlgItem(view, picture), PCM_GETPICTURE, 0, reinterpret_cast<LPARAM>(&shown));
        return shown;
    }

    // A place in the window, as xdotool wants it.
    static std::string Point(int x, int y)
    {
        return "xdotool mousemove --window $(xdotool getactivewindow) " + std::to_string(x) + " " +
               std::to_string(y);
    }
};

} // namespace

TEST_F(ViewOnScreen, IsUsedByKeysAlone)
{
    Show([&] {
        Do("xdotool key Next");
        EXPECT_TRUE(Eventually([&] { return Text(pageNumber) == "2"; }));
        Do("xdotool key End");
        EXPECT_TRUE(Eventually([&] { return Text(pageNumber) == "6"; }));
        const VARKUIPICTURE before = Shown();
        Do("xdotool key plus");
        EXPECT_TRUE(Eventually([&] { return Shown().ContentWidth > before.ContentWidth; }));
        Do("xdotool key ctrl+f");
        Do("xdotool type 1003");
        Do("xdotool key Return");
        EXPECT_TRUE(Eventually([&] { return Text(pageNumber) == "1"; })) << Text(stateText);
        Do("xdotool key Escape");
        // The keyboard goes back to the pages in its own time.
        EXPECT_TRUE(Eventually([&] {
            Do("xdotool key ctrl+a");
            Do("xdotool key ctrl+c");
            return Text(stateText) == "Kopiert.";
        }));
        EXPECT_GT(VarkUiCopiedText(nullptr, 0), 100);
        Do("xdotool key ctrl+w");
        EXPECT_TRUE(Eventually([&] { return IsWindow(view) == 0; }));
    });
    EXPECT_EQ(RSCopyReport(report, susaId, 0), 0);
}

TEST_F(ViewOnScreen, IsUsedByTheMouseAlone)
{
    Show([&] {
        // The button that leads on, a wheel, and text that is dragged over and copied by its button.
        // A click comes through in its own time, so one too many may do no harm.
        EXPECT_TRUE(Eventually([&] {
            if (Text(pageNumber) == "1") Do(Point(190, 19) + " sleep 0.2 click 1");
            return Text(pageNumber) != "1";
        }));
        const LONG y = Shown().Y;
        Do(Point(400, 400) + " sleep 0.2 click 5 click 5");
        EXPECT_TRUE(Eventually([&] { return Shown().Y > y; }));
        Do(Point(60, 150) + " sleep 0.1 mousedown 1 sleep 0.1 mousemove_relative 300 100 sleep 0.1 "
                            "mousemove_relative 100 60 sleep 0.1 mouseup 1");
        EXPECT_TRUE(Eventually([&] {
            Do(Point(772, 19) + " sleep 0.2 click 1");
            return Text(stateText) == "Kopiert.";
        })) << Text(stateText);
        EXPECT_GT(VarkUiCopiedText(nullptr, 0), 10);
    });
}

TEST_F(ViewOnScreen, FollowsTheSizeOfItsWindow)
{
    Show([&] {
        VARKUIAREA before = {};
        HWND shows = GetDlgItem(view, picture);
        const auto area = [&](VARKUIAREA &into) {
            SendMessageA(shows, PCM_GETAREA, 0, reinterpret_cast<LPARAM>(&into));
        };
        area(before);
        Do("xdotool windowsize $(xdotool getactivewindow) 700 600");
        EXPECT_TRUE(Eventually([&] {
            VARKUIAREA now = {};
            area(now);
            return now.Width < before.Width && now.Height < before.Height && Shown().Width == now.Width;
        }));
    });
}

TEST_F(ViewOnScreen, EndsWithTheProgramThatShowsIt)
{
    testing::internal::CaptureStderr();
    Show([&] {
        EXPECT_EQ(KillMarked("vark-ui", directory.Path.string()), 1);
        EXPECT_TRUE(Eventually([&] { return IsWindow(view) == 0; }));
    });
    EXPECT_NE(testing::internal::GetCapturedStderr().find("varkui: the screen has gone"), std::string::npos);
    EXPECT_EQ(RSCopyReport(report, susaId, 0), 0) << "the report ended with its view";
}
