// Lists of instructions that a host hands to its own thread: what they do to the next windows, whatever the
// front end, who answers behind them, and what the host is told.
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <thread>

#include "demo_dialog.h"
#include "front_end_setup.h"
#include "tests/support/display.h"

using namespace text;
using namespace vark::test;

namespace {

constexpr BOOL unseen = TRUE;
constexpr BOOL seen = FALSE;

// What VarkUiPlayed tells: "" for all done, else "LINE: REASON".
std::string Played()
{
    char reason[200] = "old";
    const int line = VarkUiPlayed(reason, sizeof reason);
    return line == 0 ? std::string(reason) : std::to_string(line) + ": " + reason;
}

struct Plays : testing::Test {
    FrontEndSetup frontEnd;
    std::string Name; // what the dialog held when it ended
    std::string Units;
    UINT IsChecked = 0;
    int Boxes = 0; // that OK was answered with, instead of the end
    bool Refuses = false;
    std::function<void()> AtOk = [] {};

    // Runs the demonstration dialog, which without a screen asks to be answered with OK.
    INT_PTR Run()
    {
        return RunTable(demo::table, [this](HWND dialog, UINT message, WPARAM wParam, LPARAM) {
            if (message == WM_INITDIALOG) {
                demo::Fill(dialog);
                SetPropA(dialog, VARKUI_ANSWER_PROP, reinterpret_cast<HANDLE>(IDOK));
                return INT_PTR{TRUE};
            }
            if (message != WM_COMMAND || LOWORD(wParam) != IDOK || HIWORD(wParam) != BN_CLICKED)
                return INT_PTR{0};
            Name = TextOf(dialog, 10);
            Units = std::to_string(SendDlgItemMessageA(dialog, 41, CB_GETCURSEL, 0, 0));
            IsChecked = IsDlgButtonChecked(dialog, 20);
            AtOk();
            if (!Refuses) return INT_PTR{0};
            ++Boxes;
            MessageBoxA(dialog, "Fehler!", "MERIDA", MB_OK);
            return INT_PTR{1};
        });
    }
};

constexpr const char *filling = "dialog 103\n\n# a comment\ntext 10 Büro\nuncheck 20\nselect 41 \"10\"\n";

} // namespace

TEST_F(Plays, FillTheNextDialogWithoutAScreen)
{
    ASSERT_TRUE(VarkUiPlay(filling, seen));
    EXPECT_EQ(Run(), IDOK);
    EXPECT_EQ(Name, "Büro"_w);
    EXPECT_EQ(IsChecked, 0u);
    EXPECT_EQ(Units, "1");
    EXPECT_EQ(Played(), "");
    EXPECT_EQ(frontEnd.Log(), "dialog 103 Stapelverwaltung – Übung\ndialog 103\ntext 10 Büro\nuncheck 20\n"
                              "select 41 \"10\"\n");
    EXPECT_EQ(Run(), IDOK); // as it is without a list
    EXPECT_EQ(Name, "Miete für März"_w);
}

TEST_F(Plays, GoOnThroughSeveralWindows)
{
    Refuses = true;
    ASSERT_TRUE(
        VarkUiPlay("text 10 a\npress 1\nbox ok Fehler\ntext 10 b\npress 1\nbox ok\npress 2\n", unseen));
    EXPECT_EQ(Run(), IDCANCEL);
    EXPECT_EQ(Boxes, 2);
    EXPECT_EQ(Name, "b");
    EXPECT_EQ(Played(), "");
}

TEST_F(Plays, ThatWereRefusedAreNotRepeated)
{
    Refuses = true;
    ASSERT_TRUE(VarkUiPlay("press 1\n", unseen));
    testing::internal::CaptureStderr();
    EXPECT_EQ(Run(), IDCANCEL);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "MERIDA: Fehler!\n");
    EXPECT_EQ(Boxes, 1);
    EXPECT_EQ(Played(), "");
}

TEST_F(Plays, NameTheLineThatDoesNotFitAndCancel)
{
    ASSERT_TRUE(VarkUiPlay("text 10 a\n\ncheck 32\ntext 10 b\n", seen));
    testing::internal::CaptureStderr();
    EXPECT_EQ(Run(), IDCANCEL);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(Played(), "3: control 32 is disabled");
    EXPECT_EQ(Played(), "");
}

TEST_F(Plays, TellWhatNobodyAskedFor)
{
    ASSERT_TRUE(VarkUiPlay("press 2\n# no more\n\nbox yes\n", unseen));
    EXPECT_EQ(Run(), IDCANCEL);
    EXPECT_EQ(Played(), "4: nothing was open any more");
    ASSERT_TRUE(VarkUiPlay("press 2\nbox yes\n", unseen));
    EXPECT_EQ(Run(), IDCANCEL);
    EXPECT_EQ(VarkUiPlayed(nullptr, 0), 2);
}

TEST_F(Plays, ReplaceTheOneBeforeAndBelongToOneThread)
{
    EXPECT_FALSE(VarkUiPlay(nullptr, unseen));
    ASSERT_TRUE(VarkUiPlay("text 10 a\n", unseen));
    ASSERT_TRUE(VarkUiPlay("text 10 b\n", unseen));
    std::thread([this] {
        EXPECT_EQ(Run(), IDOK);
        EXPECT_EQ(Name, "Miete für März"_w);
        EXPECT_EQ(Played(), "");
        EXPECT_TRUE(VarkUiPlay("text 10 c\n", unseen)); // goes with its thread
    }).join();
    EXPECT_EQ(Run(), IDOK);
    EXPECT_EQ(Name, "b");
    EXPECT_EQ(Played(), "");
}

TEST_F(Plays, LeaveTheRestToAScript)
{
    frontEnd.UseScript("expect text 10 Büro\ntext 10 Strom\npress 1\n");
    ASSERT_TRUE(VarkUiPlay(filling, seen));
    EXPECT_EQ(Run(), IDOK);
    EXPECT_EQ(Name, "Strom");
    EXPECT_EQ(Played(), "");
}

TEST_F(Plays, ThatAreUnseenAskNoScriptBeforeTheyAreTakenBack)
{
    frontEnd.UseScript("text 10 Strom\npress 1\n");
    ASSERT_TRUE(VarkUiPlay("", unseen));
    EXPECT_EQ(Run(), IDOK);
    EXPECT_EQ(Name, "Miete für März"_w);
    EXPECT_EQ(Played(), "");
    EXPECT_EQ(Run(), IDOK);
    EXPECT_EQ(Name, "Strom");
}

namespace {

struct PlaysOnScreen : Plays {
    Display display;

    void SetUp() override
    {
        const std::string missing = display.Begin(std::filesystem::path(VARKUI_LIBRARY).parent_path());
        if (!missing.empty()) GTEST_SKIP() << missing;
    }
};

} // namespace

// While OK is being handled, another thread's box comes to the screen: behind the dialog, if that were told
// to it at all.
TEST_F(PlaysOnScreen, ThatAreUnseenShowNothingOnAScreen)
{
    AtOk = [this] {
        std::thread person([this] {
            EXPECT_TRUE(Display::HasKeyboard("MERIDA"));
            EXPECT_NE(std::system("xdotool search --onlyvisible --name Stapelverwaltung >/dev/null"), 0);
            Display::Do("key Return");
            if (HasFailure()) display.End();
        });
        std::thread([] { EXPECT_EQ(MessageBoxA(nullptr, "Danach.", "MERIDA", MB_OK), IDOK); }).join();
        person.join();
    };
    ASSERT_TRUE(VarkUiPlay(filling, unseen));
    EXPECT_EQ(Run(), IDOK);
    EXPECT_EQ(Name, "Büro"_w);
    EXPECT_EQ(Played(), "");
}

TEST_F(PlaysOnScreen, LeaveTheFilledDialogToThePersonOnAScreen)
{
    ASSERT_TRUE(VarkUiPlay(filling, seen));
    std::thread person([this] {
        EXPECT_TRUE(Display::HasKeyboard("Stapelverwaltung"));
        Display::Do("key Return");
        if (HasFailure()) display.End();
    });
    EXPECT_EQ(Run(), IDOK);
    person.join();
    EXPECT_EQ(Name, "Büro"_w);
    EXPECT_EQ(Played(), "");
}
