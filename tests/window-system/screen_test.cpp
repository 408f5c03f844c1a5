// The screen: vark-ui in a real window under Xvfb with a window manager, driven by keyboard and mouse, its
// effect read back from the model. Left out where the X programs are not installed.
#include <atomic>
#include <csignal>
#include <cstdio>
#include <dlfcn.h>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <sys/resource.h>
#include <thread>

#include "demo_dialog.h"
#include "frame.h"
#include "front_end_setup.h"
#include "lone_copy.h"
#include "tests/support/display.h"

using namespace text;
using namespace vark::test;
using frame::State;
using varkui::DialogControlKind;

namespace {

struct Screen : testing::Test {
    FrontEndSetup frontEnd;
    Display display;

    void SetUp() override
    {
        const std::string missing = display.Begin(std::filesystem::path(VARKUI_LIBRARY).parent_path());
        if (!missing.empty()) GTEST_SKIP() << missing;
    }

    static void Do(const std::string &command) { Display::Do(command); }

    static bool HasKeyboard(const std::string &title) { return Display::HasKeyboard(title); }

    // Acts as the person while this test's own thread waits in what it shows. Where that fails, the display
    // goes: else the dialog would wait for ever.
    std::thread Act(const std::function<void()> &person)
    {
        return std::thread([this, person] {
            person();
            if (HasFailure()) display.End();
        });
    }

    // Runs the demonstration dialog here while `person` acts on another thread.
    INT_PTR RunDemo(const std::function<void(HWND dialog)> &person, const DialogHandler &handler = {})
    {
        std::thread acting;
        const INT_PTR result =
            RunTable(demo::table, [&](HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
                if (message == WM_INITDIALOG) {
                    demo::Fill(dialog);
                    acting = Act([&person, dialog] { person(dialog); });
                    return INT_PTR{TRUE};
                }
                return handler ? handler(dialog, message, wParam, lParam) : INT_PTR{0};
            });
        acting.join();
        return result;
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
        const auto click = [dialog](int id, int down) { Display::Click(dialog, id, 20, down); };
        const auto row = [dialog] { return SendDlgItemMessageA(dialog, 60, LB_GETCURSEL, 0, 0); };
        EXPECT_EQ(row(), 1);
        EXPECT_TRUE(Display::ClickUntil([&] { return row() == 0; }, dialog, 60, 20, 8));
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

namespace {

struct Geometry {
    int X = 0, Y = 0, Width = 0, Height = 0;
};

// Where the window that has the keyboard stands.
Geometry OfActive()
{
    Geometry found;
    FILE *tells = popen("xdotool getactivewindow getwindowgeometry --shell 2>/dev/null", "re");
    if (tells == nullptr) return found;
    char line[100];
    while (fgets(line, sizeof line, tells) != nullptr) {
        const std::string told = line;
        const auto take = [&told](const std::string &name, int &number) {
            if (told.starts_with(name)) number = std::stoi(told.substr(name.size()));
        };
        take("X=", found.X);
        take("Y=", found.Y);
        take("WIDTH=", found.Width);
        take("HEIGHT=", found.Height);
    }
    pclose(tells);
    return found;
}

} // namespace

// A window that is put up before its size is known grows to one side.
TEST_F(Screen, PutsABoxInTheMiddleOfItsDialog)
{
    RunDemo(
        [](HWND) {
            ASSERT_TRUE(HasKeyboard("Stapelverwaltung"));
            const Geometry dialog = OfActive();
            Do("key alt+r");
            ASSERT_TRUE(HasKeyboard("MERIDA"));
            const Geometry box = OfActive();
            EXPECT_GT(box.Width, 400);
            EXPECT_NEAR(2 * box.X + box.Width, 2 * dialog.X + dialog.Width, 20) << "the middle";
            Do("key alt+j");
            ASSERT_TRUE(HasKeyboard("Stapelverwaltung"));
            Do("key Escape");
        },
        [](HWND dialog, UINT message, WPARAM wParam, LPARAM) {
            if (message != WM_COMMAND || LOWORD(wParam) != 70 || HIWORD(wParam) != BN_CLICKED)
                return INT_PTR{0};
            MessageBoxA(dialog, "Soll der leere Stapel 'Miete' wirklich gelöscht werden, mit allem darin?"_w,
                        "MERIDA", MB_YESNO | MB_ICONQUESTION);
            return INT_PTR{1};
        });
}

// ---- A screen that goes ----

namespace {

constexpr const char *hasGone = "varkui: Der Bildschirm ist weg; es geht ohne ihn weiter.\n";

}

TEST_F(Screen, ThatDiesInTheMiddleOfADialogLeavesItToNobody)
{
    testing::internal::CaptureStderr();
    const INT_PTR result = RunDemo([this](HWND) {
        ASSERT_TRUE(HasKeyboard("Stapelverwaltung"));
        ASSERT_TRUE(display.KillProgram());
    });
    EXPECT_EQ(result, IDCANCEL);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), hasGone);
    EXPECT_FALSE(VarkUiHasUser());
}

TEST_F(Screen, ThatDiesBehindABoxAnswersItWithTheSafestButton)
{
    testing::internal::CaptureStderr();
    std::thread acting = Act([this] {
        ASSERT_TRUE(HasKeyboard("Frage"));
        ASSERT_TRUE(display.KillProgram());
    });
    EXPECT_EQ(MessageBoxA(nullptr, "Weiter?", "Frage", MB_YESNO), IDNO);
    acting.join();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), std::string(hasGone) + "Frage: Weiter?\n");
    EXPECT_EQ(frontEnd.Log(), "box Weiter?\n");
}

// A box before its dialog: the box is declined, then the dialog that had asked cancelled.
TEST_F(Screen, ThatDiesBehindABoxOfADialogLeavesBothToNobody)
{
    testing::internal::CaptureStderr();
    int answer = 0;
    const INT_PTR result = RunDemo(
        [this](HWND) {
            ASSERT_TRUE(HasKeyboard("Stapelverwaltung"));
            Do("key alt+r");
            ASSERT_TRUE(HasKeyboard("MERIDA"));
            ASSERT_TRUE(display.KillProgram());
        },
        [&answer](HWND dialog, UINT message, WPARAM wParam, LPARAM) {
            if (message != WM_COMMAND || LOWORD(wParam) != 70) return INT_PTR{0};
            answer = MessageBoxA(dialog, "Weiter?", "MERIDA", MB_YESNO);
            return INT_PTR{1};
        });
    EXPECT_EQ(answer, IDNO);
    EXPECT_EQ(result, IDCANCEL);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), std::string(hasGone) + "MERIDA: Weiter?\n");
}

// The list of a combo box is a window of the screen's own, which has the keyboard.
TEST_F(Screen, ThatDiesWithAnOpenListLeavesTheDialogToNobody)
{
    testing::internal::CaptureStderr();
    const INT_PTR result = RunDemo([this](HWND dialog) {
        ASSERT_TRUE(HasKeyboard("Stapelverwaltung"));
        Do("key alt+e F4");
        ASSERT_TRUE(
            Eventually([dialog] { return SendDlgItemMessageA(dialog, 41, CB_GETDROPPEDSTATE, 0, 0) != 0; }));
        ASSERT_TRUE(display.KillProgram());
    });
    EXPECT_EQ(result, IDCANCEL);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), hasGone);
}

TEST_F(Screen, ThatDiesLeavesTheDialogsOfAllThreadsToNobody)
{
    testing::internal::CaptureStderr();
    std::atomic<int> open{0};
    const auto run = [&open] {
        return RunTable(demo::table, [&open](HWND, UINT message, WPARAM, LPARAM) {
            if (message == WM_INITDIALOG) ++open;
            return INT_PTR{0};
        });
    };
    std::thread one([&] { EXPECT_EQ(run(), IDCANCEL); });
    std::thread two([&] { EXPECT_EQ(run(), IDCANCEL); });
    EXPECT_TRUE(Eventually([&open] { return open == 2; }));
    EXPECT_TRUE(HasKeyboard("Stapelverwaltung"));
    if (!display.KillProgram()) {
        ADD_FAILURE() << "there is no vark-ui";
        display.End();
    }
    one.join();
    two.join();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), hasGone);
}

// The display goes first, and its programs after it.
TEST_F(Screen, WhoseDisplayGoesLeavesTheDialogToNobody)
{
    testing::internal::CaptureStderr();
    const INT_PTR result = RunDemo([this](HWND) {
        ASSERT_TRUE(HasKeyboard("Stapelverwaltung"));
        display.End();
    });
    EXPECT_EQ(result, IDCANCEL);
    EXPECT_NE(testing::internal::GetCapturedStderr().find(hasGone), std::string::npos);
}

TEST_F(Screen, ThatIsMissingLeavesEverythingToNobody)
{
    unsetenv("DISPLAY");
    testing::internal::CaptureStderr();
    EXPECT_EQ(MessageBoxA(nullptr, "Frage", "MERIDA", MB_YESNO), IDNO);
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_NE(
        said.find(
            "varkui: vark-ui findet keinen Bildschirm. Es geht ohne Bildschirm weiter.\nMERIDA: Frage\n"),
        std::string::npos)
        << said;
}

// ---- Several threads ----

TEST_F(Screen, ShowsTheDialogsOfTwoThreadsAtOnce)
{
    static constexpr varkui::DialogControl controls[] = {
        {DialogControlKind::Text, -1, "&Text:", 7, 9, 40, 8, 0, 0},
        {DialogControlKind::Edit, 10, "", 50, 7, 80, 14, 0, 0},
        {DialogControlKind::DefaultButton, IDOK, "OK", 140, 7, 52, 14, 0, 0},
    };
    static constexpr varkui::DialogTable first = {901, "Erster Faden", 200, 30, controls, 3, 0};
    static constexpr varkui::DialogTable second = {902, "Zweiter Faden", 200, 30, controls, 3, 0};
    std::string texts[2]; // each is read when its thread has ended
    std::atomic<HWND> dialogs[2] = {};
    std::atomic<int> answered{0};
    const auto run = [&](int index, const varkui::DialogTable &table) {
        return RunTable(table, [&, index](HWND dialog, UINT message, WPARAM wParam, LPARAM) {
            dialogs[index] = dialog;
            if (message == WM_COMMAND && LOWORD(wParam) == IDOK) {
                texts[index] = TextOf(dialog, 10);
                ++answered;
            }
            return INT_PTR{0};
        });
    };
    std::thread one([&] { EXPECT_EQ(run(0, first), IDOK); });
    ASSERT_TRUE(HasKeyboard("Erster Faden"));
    std::thread two([&] { EXPECT_EQ(run(1, second), IDOK); });
    ASSERT_TRUE(HasKeyboard("Zweiter Faden"));
    Do("type --delay 5 zwei");
    EXPECT_TRUE(Eventually([&] { return TextOf(dialogs[1], 10) == "zwei"; }));
    // The other one answers while this one stays open.
    Do("search --name 'Erster Faden' windowactivate");
    ASSERT_TRUE(HasKeyboard("Erster Faden"));
    Do("type --delay 5 eins");
    EXPECT_TRUE(Eventually([&] { return TextOf(dialogs[0], 10) == "eins"; }));
    if (HasFailure()) display.End();
    Do("key Return");
    one.join();
    EXPECT_EQ(texts[0], "eins");
    EXPECT_EQ(answered, 1);
    ASSERT_TRUE(HasKeyboard("Zweiter Faden"));
    Do("key Return");
    two.join();
    EXPECT_EQ(texts[1], "zwei");
}

TEST_F(Screen, ABoxOnOneThreadLeavesAnotherAlone)
{
    std::atomic<int> answer{0};
    std::thread asking([&answer] { answer = MessageBoxA(nullptr, "Warten?", "Frage", MB_YESNO); });
    ASSERT_TRUE(HasKeyboard("Frage"));
    // While it waits, this thread makes, shows, fills and destroys windows, and answers messages.
    for (int i = 0; i < 100; ++i) {
        HWND dialog = MakeFromTable(demo::table);
        demo::Fill(dialog);
        ShowWindow(dialog, SW_SHOWNOACTIVATE);
        EXPECT_EQ(SendDlgItemMessageA(dialog, 60, LB_GETCOUNT, 0, 0), 5);
        EXPECT_TRUE(DestroyWindow(dialog));
    }
    EXPECT_EQ(answer, 0);
    // One of the windows that are gone may still take the keyboard from the box for a moment.
    EXPECT_TRUE(Eventually([&answer] {
        if (answer == 0) Do("search --name Frage windowactivate key alt+j");
        return answer != 0;
    }));
    if (answer == 0) display.End();
    asking.join();
    EXPECT_EQ(answer, IDYES);
}

// ---- Typing ----

TEST_F(Screen, TakesKeysThatAreTypedAheadWhereTheKeyboardMoves)
{
    const INT_PTR result = RunDemo(
        [](HWND dialog) {
            ASSERT_TRUE(HasKeyboard("Stapelverwaltung"));
            Do("key --delay 0 alt+n S t r o m Tab 4 2 Tab space Return");
            static_cast<void>(dialog);
        },
        [](HWND dialog, UINT message, WPARAM wParam, LPARAM) {
            if (message == WM_COMMAND && LOWORD(wParam) == IDOK) {
                EXPECT_EQ(TextOf(dialog, 10), "Strom");
                EXPECT_EQ(TextOf(dialog, 11), "42");
                EXPECT_EQ(IsDlgButtonChecked(dialog, 20), 0u);
            }
            return INT_PTR{0};
        });
    EXPECT_EQ(result, IDOK);
}

TEST_F(Screen, TellsWhereTheCaretIs)
{
    const INT_PTR result = RunDemo([](HWND dialog) {
        ASSERT_TRUE(HasKeyboard("Stapelverwaltung"));
        const auto selection = [dialog] { return SendDlgItemMessageA(dialog, 10, EM_GETSEL, 0, 0); };
        Do("key alt+n Home Right");
        EXPECT_TRUE(Eventually([&] { return selection() == MAKELONG(1, 1); })) << selection();
        Do("key shift+End");
        EXPECT_TRUE(Eventually([&] { return selection() == MAKELONG(1, 14); })) << selection();
        SendDlgItemMessageA(dialog, 10, EM_SETSEL, 0, 6);
        // In the place of what the program has selected. What is typed before the screen has heard of that
        // belongs to an older text; behind a key that the program has not handled yet it waits for it.
        Do("key --delay 0 F2 X");
        EXPECT_TRUE(Eventually([dialog] { return TextOf(dialog, 10).substr(0, 3) == "Xf\xFC"; }))
            << TextOf(dialog, 10);
        Do("key Escape");
    });
    EXPECT_EQ(result, IDCANCEL);
}

TEST_F(Screen, TakesTextsOfManyLines)
{
    static constexpr varkui::DialogControl controls[] = {
        {DialogControlKind::Text, -1, "&Notiz:", 7, 9, 40, 8, 0, 0},
        {DialogControlKind::Edit, 10, "", 50, 7, 120, 60, ES_MULTILINE | ES_WANTRETURN, ES_AUTOHSCROLL},
        {DialogControlKind::DefaultButton, IDOK, "OK", 140, 75, 52, 14, 0, 0},
    };
    static constexpr varkui::DialogTable table = {903, "Mehrere Zeilen", 200, 96, controls, 3, 0};
    std::string text;
    LRESULT caret = 0;
    std::thread acting;
    const INT_PTR result = RunTable(table, [&](HWND dialog, UINT message, WPARAM wParam, LPARAM) {
        if (message == WM_INITDIALOG) {
            SetDlgItemTextA(dialog, 10, "eins\r\nzwei");
            acting = Act([dialog] {
                ASSERT_TRUE(HasKeyboard("Mehrere Zeilen"));
                Do("key ctrl+End Return d r e i");
                EXPECT_TRUE(Eventually([dialog] { return TextOf(dialog, 10) == "eins\r\nzwei\r\ndrei"; }))
                    << TextOf(dialog, 10);
                Do("key Up Home");
                EXPECT_TRUE(Eventually([dialog] {
                    return SendDlgItemMessageA(dialog, 10, EM_GETSEL, 0, 0) == MAKELONG(6, 6);
                })) << SendDlgItemMessageA(dialog, 10, EM_GETSEL, 0, 0);
                Do("key Tab Return");
            });
            return INT_PTR{TRUE};
        }
        if (message == WM_COMMAND && LOWORD(wParam) == IDOK) {
            text = TextOf(dialog, 10);
            caret = SendDlgItemMessageA(dialog, 10, EM_GETLINECOUNT, 0, 0);
        }
        return INT_PTR{0};
    });
    acting.join();
    EXPECT_EQ(result, IDOK);
    EXPECT_EQ(text, "eins\r\nzwei\r\ndrei");
    EXPECT_EQ(caret, 3);
}

TEST_F(Screen, OpensTheListOfAComboBox)
{
    const INT_PTR result = RunDemo([](HWND dialog) {
        ASSERT_TRUE(HasKeyboard("Stapelverwaltung"));
        const auto isOpen = [dialog] {
            return SendDlgItemMessageA(dialog, 41, CB_GETDROPPEDSTATE, 0, 0) != 0;
        };
        Do("key alt+e F4");
        EXPECT_TRUE(Eventually(isOpen));
        Do("key Up Return");
        EXPECT_TRUE(Eventually([&] { return !isOpen(); }));
        EXPECT_LT(SendDlgItemMessageA(dialog, 41, CB_GETCURSEL, 0, 0), 2); // one above is chosen
        // A list on its way out may still take keys.
        PostMessageA(dialog, WM_COMMAND, IDCANCEL, 0);
    });
    EXPECT_EQ(result, IDCANCEL);
}

// ---- Without a screen ----

// The window system where no vark-ui lies beside it.
TEST(WithoutScreen, AMissingProgramLeavesEverythingToNobodyAndSaysSo)
{
    const FrontEndSetup frontEnd;
    const Box box = BoxOfACopyIn(frontEnd.Directory, VARKUI_LIBRARY);
    ASSERT_NE(box, nullptr) << dlerror();
    testing::internal::CaptureStderr();
    EXPECT_EQ(box(nullptr, "Frage", "MERIDA", MB_YESNO), IDNO);
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(said, "varkui: Neben libvarkui.so fehlt das Programm vark-ui. Es geht ohne Bildschirm weiter.\n"
                    "MERIDA: Frage\n");
}

// A machine without GTK: the program is there, and its libraries are not found.
TEST(WithoutScreen, AProgramThatCannotStartLeavesEverythingToNobodyAndSaysSo)
{
    const FrontEndSetup frontEnd;
    MakeProgram(frontEnd.Directory, "exit 127\n");
    const Box box = BoxOfACopyIn(frontEnd.Directory, VARKUI_LIBRARY);
    ASSERT_NE(box, nullptr) << dlerror();
    testing::internal::CaptureStderr();
    EXPECT_EQ(box(nullptr, "Frage", "MERIDA", MB_OKCANCEL), IDCANCEL);
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(said,
              "varkui: vark-ui findet keinen Bildschirm. Es geht ohne Bildschirm weiter.\nMERIDA: Frage\n");
}

TEST(WithoutScreen, AProgramThatNeverBecomesReadyIsGivenUpAndEnded)
{
    const FrontEndSetup frontEnd;
    MakeProgram(frontEnd.Directory, "echo $$ > \"$(dirname \"$0\")/process\"\nexec sleep 1000\n");
    const Box box = BoxOfACopyIn(frontEnd.Directory, VARKUI_LIBRARY);
    ASSERT_NE(box, nullptr) << dlerror();
    testing::internal::CaptureStderr();
    EXPECT_EQ(box(nullptr, "Frage", "MERIDA", MB_OKCANCEL), IDCANCEL);
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(said,
              "varkui: vark-ui findet keinen Bildschirm. Es geht ohne Bildschirm weiter.\nMERIDA: Frage\n");
    pid_t process = 0;
    std::ifstream(frontEnd.Directory / "process") >> process;
    ASSERT_GT(process, 0);
    EXPECT_EQ(kill(process, 0), -1) << "it is still there";
}

// A lack of descriptors passes: what was answered by nobody meanwhile is no reason to ask nobody later.
TEST(WithoutScreen, AStartThatFailedForTheMomentIsTriedAgain)
{
    const FrontEndSetup frontEnd;
    MakeProgram(frontEnd.Directory, "exit 127\n");
    const Box box = BoxOfACopyIn(frontEnd.Directory, VARKUI_LIBRARY);
    ASSERT_NE(box, nullptr) << dlerror();
    testing::internal::CaptureStderr();
    rlimit before = {};
    getrlimit(RLIMIT_NOFILE, &before);
    const rlimit few = {3, before.rlim_max};
    setrlimit(RLIMIT_NOFILE, &few);
    EXPECT_EQ(box(nullptr, "eins", "MERIDA", MB_OKCANCEL), IDCANCEL);
    setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ(box(nullptr, "zwei", "MERIDA", MB_OKCANCEL), IDCANCEL);
    EXPECT_EQ(box(nullptr, "drei", "MERIDA", MB_OKCANCEL), IDCANCEL);
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(said, "varkui: Zu viele Dateien sind geöffnet. Vorerst geht es ohne Bildschirm weiter.\n"
                    "MERIDA: eins\n"
                    "varkui: vark-ui findet keinen Bildschirm. Es geht ohne Bildschirm weiter.\n"
                    "MERIDA: zwei\n"
                    "MERIDA: drei\n");
}

// The host's signals come while the program starts, some of them while it is waited for.
TEST_F(Screen, ComesThoughSignalsArriveWhileItStarts)
{
    const std::string program = (std::filesystem::path(VARKUI_LIBRARY).parent_path() / "vark-ui").string();
    MakeProgram(frontEnd.Directory, "host=$PPID\n"
                                    "(n=0; while [ $n -lt 200 ]; do n=$((n+1)); kill -USR1 $host || exit; "
                                    "sleep 0.01; done) 3>&- &\n"
                                    "exec " +
                                        program + "\n");
    struct sigaction handled = {};
    handled.sa_handler = [](int) {};
    sigaction(SIGUSR1, &handled, nullptr);
    std::filesystem::copy_file(VARKUI_LIBRARY, frontEnd.Directory / "libvarkui.so");
    void *copy = dlopen((frontEnd.Directory / "libvarkui.so").c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(copy, nullptr) << dlerror();
    const auto hasUser = reinterpret_cast<BOOL (*)()>(dlsym(copy, "VarkUiHasUser"));
    ASSERT_NE(hasUser, nullptr);
    EXPECT_TRUE(hasUser());
}

// ---- Frames ----

namespace {

// Handles messages until the frame has gone.
void RunFrame(HWND window, const State &state)
{
    MSG message = {};
    while (IsWindow(window) != FALSE && GetMessageA(&message, nullptr, 0, 0) > 0) {
        if (IsDialogMessageA(state.Bar, &message) != FALSE) continue;
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
}

struct FrameOnScreen {
    State Kept;
    HWND Window;

    FrameOnScreen()
    {
        frame::Register();
        frame::RegisterPlain();
        Window = frame::Make(Kept);
    }
    void Attach(HWND view) const
    {
        SendMessageA(Window, frame::attachMessage, 0, reinterpret_cast<LPARAM>(view));
    }
};

} // namespace

TEST_F(Screen, ShowsAViewInAFrameWithItsBar)
{
    FrameOnScreen shown;
    shown.Attach(frame::MakeView("Blatt"));
    ShowWindow(shown.Window, SW_SHOW);
    SetDlgItemTextA(shown.Kept.View, 11, "");
    SetFocus(GetDlgItem(shown.Kept.View, 11));
    std::thread acting = Act([&shown] {
        ASSERT_TRUE(HasKeyboard("Kontenblatt"));
        Do("type --delay 20 A");
        EXPECT_TRUE(Eventually([&shown] { return TextOf(shown.Kept.View, 11) == "A"; }));
        Display::Do("getactivewindow windowsize %1 700 500");
        EXPECT_TRUE(Eventually([&shown] {
            RECT inside = {};
            GetClientRect(shown.Kept.View, &inside);
            return inside.right == 700;
        }));
        EXPECT_TRUE(
            Display::ClickUntil([&shown] { return !shown.Kept.Pressed.empty(); }, shown.Window, 0, 350, 490));
        Do("key alt+F4");
    });
    RunFrame(shown.Window, shown.Kept);
    acting.join();
    EXPECT_FALSE(IsWindow(shown.Window));
}

TEST_F(Screen, TakesAViewOnScreenIntoAFrameAndAnotherInItsPlace)
{
    FrameOnScreen shown;
    const auto makeView = [] {
        HWND view = frame::MakeView("Blatt");
        SetDlgItemTextA(view, 11, "");
        return view;
    };
    const auto attach = [&shown](HWND view) {
        shown.Attach(view);
        SetFocus(GetDlgItem(view, 11));
    };
    HWND first = makeView();
    HWND second = makeView();
    ShowWindow(first, SW_SHOW);
    SetFocus(GetDlgItem(first, 11));
    std::thread acting = Act([&] {
        ASSERT_TRUE(HasKeyboard("Blatt"));
        Do("type --delay 20 A");
        EXPECT_TRUE(Eventually([first] { return TextOf(first, 11) == "A"; })) << TextOf(first, 11);
        PostMessageA(shown.Window, WM_APP, 1, 0);
        ASSERT_TRUE(HasKeyboard("Kontenblatt"));
        Do("type --delay 20 B");
        EXPECT_TRUE(Eventually([first] { return TextOf(first, 11) == "AB"; })) << TextOf(first, 11);
        PostMessageA(shown.Window, WM_APP, 2, 0);
        ASSERT_TRUE(Eventually([first] { return IsWindow(first) == FALSE; }));
        Do("type --delay 20 C");
        EXPECT_TRUE(Eventually([second] { return TextOf(second, 11) == "C"; })) << TextOf(second, 11);
        PostMessageA(shown.Window, WM_CLOSE, 0, 0);
    });
    MSG message = {};
    const auto goOn = [&] { return IsWindow(shown.Window) != FALSE && GetActiveWindow() != nullptr; };
    while (goOn() && GetMessageA(&message, nullptr, 0, 0) > 0) {
        if (message.message == WM_APP) {
            ShowWindow(shown.Window, SW_SHOW);
            attach(message.wParam == 1 ? first : second);
        } else {
            TranslateMessage(&message);
            DispatchMessageA(&message);
        }
    }
    acting.join();
    EXPECT_FALSE(IsWindow(second));
}
