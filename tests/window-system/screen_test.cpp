// The screen: vark-ui in a real window under Xvfb with a window manager, driven by keyboard and mouse, its
// effect read back from the model. Left out where the X programs are not installed.
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <vector>

#include "demo_dialog.h"
#include "front_end_setup.h"

using namespace text;

namespace {

constexpr std::chrono::seconds patience(30);

// Whether `holds` comes to hold in good time.
bool Eventually(const std::function<bool()> &holds)
{
    const auto end = std::chrono::steady_clock::now() + patience;
    while (std::chrono::steady_clock::now() < end) {
        if (holds()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return holds();
}

bool IsInstalled(const std::string &program)
{
    return system(("command -v " + program + " >/dev/null 2>&1").c_str()) == 0;
}

// A process of this test, ended with it.
struct Process {
    pid_t Id = -1;

    explicit Process(const std::vector<std::string> &command)
    {
        Id = fork();
        if (Id != 0) return;
        std::vector<char *> arguments;
        for (const std::string &each : command) {
            arguments.push_back(const_cast<char *>(each.c_str()));
        }
        arguments.push_back(nullptr);
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

struct Screen : testing::Test {
    FrontEndSetup frontEnd;
    std::unique_ptr<Process> server;
    std::unique_ptr<Process> manager;
    std::string display;

    void SetUp() override
    {
        for (const char *program : {"Xvfb", "openbox", "xdotool"}) {
            if (!IsInstalled(program)) GTEST_SKIP() << program << " is not installed";
        }
        if (access((std::filesystem::path(VARKUI_LIBRARY).parent_path() / "vark-ui").c_str(), X_OK) != 0) {
            GTEST_SKIP() << "vark-ui is not built";
        }
        int ends[2] = {};
        ASSERT_EQ(pipe(ends), 0);
        server = std::make_unique<Process>(std::vector<std::string>{"Xvfb", "-displayfd",
                                                                    std::to_string(ends[1]), "-screen", "0",
                                                                    "1280x900x24", "-nolisten", "tcp"});
        close(ends[1]);
        char digit = 0;
        while (read(ends[0], &digit, 1) == 1 && digit != '\n') {
            display += digit;
        }
        close(ends[0]);
        ASSERT_FALSE(display.empty());
        display.insert(0, ":");
        setenv("DISPLAY", display.c_str(), 1);
        setenv("VARK_UI", "gtk", 1);
        setenv("GDK_BACKEND", "x11", 1);
        setenv("GTK_A11Y", "none", 1);
        manager = std::make_unique<Process>(std::vector<std::string>{"openbox"});
    }

    static void Do(const std::string &command)
    {
        const std::string whole = "xdotool " + command + " >/dev/null 2>&1";
        static_cast<void>(system(whole.c_str()));
    }

    // Waits until the window of that title has the keyboard.
    static bool HasKeyboard(const std::string &title)
    {
        return Eventually([&title] {
            const std::string command =
                "xdotool getactivewindow getwindowname 2>/dev/null | grep -q '" + title + "'";
            return system(command.c_str()) == 0;
        });
    }

    // Runs the demonstration dialog here while `person` acts on another thread.
    static INT_PTR RunDemo(const std::function<void(HWND dialog)> &person, const DialogHandler &handler = {})
    {
        std::thread acting;
        const INT_PTR result =
            RunTable(demo::table, [&](HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
                if (message == WM_INITDIALOG) {
                    demo::Fill(dialog);
                    acting = std::thread(person, dialog);
                    return INT_PTR{TRUE};
                }
                return handler ? handler(dialog, message, wParam, lParam) : INT_PTR{0};
            });
        acting.join();
        return result;
    }

    // The vark-ui of this test: the one on this display.
    pid_t FindProgram() const
    {
        for (const auto &entry : std::filesystem::directory_iterator("/proc")) {
            std::ifstream name(entry.path() / "comm");
            std::string text;
            if (!std::getline(name, text) || text != "vark-ui") continue;
            std::ifstream environment(entry.path() / "environ");
            std::stringstream all;
            all << environment.rdbuf();
            if (all.str().find(std::string("DISPLAY=") + display + '\0') == std::string::npos) continue;
            return std::stoi(entry.path().filename().string());
        }
        return -1;
    }
};

} // namespace

TEST_F(Screen, TakesTextAndKeys)
{
    const INT_PTR result = RunDemo([](HWND dialog) {
        ASSERT_TRUE(HasKeyboard("Stapelverwaltung"));
        Do("key alt+n");
        Do("type --delay 20 Strom");
        EXPECT_TRUE(Eventually([dialog] { return TextOf(dialog, 10) == "Strom"; })) << TextOf(dialog, 10);
        Do("key Tab");
        Do("type --delay 20 7x5"); // takes digits alone
        EXPECT_TRUE(Eventually([dialog] { return TextOf(dialog, 11) == "75"; })) << TextOf(dialog, 11);
        Do("key alt+d");
        EXPECT_TRUE(Eventually([dialog] { return IsDlgButtonChecked(dialog, 31) == 1; }));
        EXPECT_EQ(IsDlgButtonChecked(dialog, 30), 0u);
        Do("key Return");
    });
    EXPECT_EQ(result, IDOK);
    EXPECT_EQ(frontEnd.Log(), "dialog 103 Stapelverwaltung – Übung\n");
}

TEST_F(Screen, TakesTheMouse)
{
    const INT_PTR result = RunDemo([](HWND dialog) {
        ASSERT_TRUE(HasKeyboard("Stapelverwaltung"));
        const auto click = [dialog](int id, int down) {
            RECT place = {};
            GetWindowRect(GetDlgItem(dialog, id), &place);
            MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT *>(&place), 2);
            Do("search --onlyvisible --name Stapelverwaltung mousemove --window %1 " +
               std::to_string(place.left + 20) + " " + std::to_string(place.top + down) + " click 1");
        };
        const auto row = [dialog] { return SendDlgItemMessageA(dialog, 60, LB_GETCURSEL, 0, 0); };
        EXPECT_EQ(row(), 1);
        // A window that has the keyboard may not have laid out its rows yet.
        EXPECT_TRUE(Eventually([&] {
            if (row() == 0) return true;
            click(60, 8);
            return false;
        }));
        click(20, 10);
        EXPECT_TRUE(Eventually([dialog] { return IsDlgButtonChecked(dialog, 20) == 0; }));
        click(31, 10);
        EXPECT_TRUE(Eventually([dialog] { return IsDlgButtonChecked(dialog, 31) == 1; }));
        click(IDCANCEL, 14);
    });
    EXPECT_EQ(result, IDCANCEL);
}

TEST_F(Screen, PutsABoxBeforeItsDialog)
{
    std::atomic<int> answer{0};
    const INT_PTR result = RunDemo(
        [&answer](HWND) {
            ASSERT_TRUE(HasKeyboard("Stapelverwaltung"));
            Do("key alt+r");
            ASSERT_TRUE(HasKeyboard("MERIDA"));
            Do("key alt+j");
            EXPECT_TRUE(Eventually([&answer] { return answer != 0; }));
            ASSERT_TRUE(HasKeyboard("Stapelverwaltung"));
            Do("key Escape");
        },
        [&answer](HWND dialog, UINT message, WPARAM wParam, LPARAM) {
            if (message != WM_COMMAND || LOWORD(wParam) != 70 || HIWORD(wParam) != BN_CLICKED)
                return INT_PTR{0};
            answer = MessageBoxA(dialog, "Soll der leere Stapel 'Miete' wirklich gelöscht werden?"_w,
                                 "MERIDA", MB_YESNO | MB_ICONQUESTION);
            return INT_PTR{1};
        });
    EXPECT_EQ(answer, IDYES);
    EXPECT_EQ(result, IDCANCEL);
}

TEST_F(Screen, ThatDiesInTheMiddleOfADialogLeavesItToNobody)
{
    testing::internal::CaptureStderr();
    const INT_PTR result = RunDemo([this](HWND) {
        ASSERT_TRUE(HasKeyboard("Stapelverwaltung"));
        const pid_t program = FindProgram();
        ASSERT_GT(program, 0);
        kill(program, SIGKILL);
    });
    EXPECT_EQ(result, IDCANCEL);
    EXPECT_NE(
        testing::internal::GetCapturedStderr().find("varkui: the screen has gone; going on without it\n"),
        std::string::npos);
    EXPECT_FALSE(VarkUiHasUser());
}

TEST_F(Screen, ThatIsMissingLeavesEverythingToNobody)
{
    unsetenv("DISPLAY");
    testing::internal::CaptureStderr();
    EXPECT_EQ(MessageBoxA(nullptr, "Frage", "MERIDA", MB_YESNO), IDNO);
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_NE(said.find("varkui: vark-ui found no screen; going on without a screen\nMERIDA: Frage\n"),
              std::string::npos)
        << said;
}
