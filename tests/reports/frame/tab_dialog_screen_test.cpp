// The keys of a dialog with tabs, pressed on a display.
#include "tests/reports/frame/two_periods.h"
#include "tests/support/display.h"

#include <atomic>
#include <thread>

using namespace vark;
using namespace vark::test;

namespace {

std::string TextOfWindow(HWND window)
{
    char text[64];
    GetWindowTextA(window, text, sizeof text);
    return text;
}

} // namespace

TEST(PeriodTabDialogOnScreen, KeysTurnThePagesAndARefusalStays)
{
    Stage stage("");
    Display display;
    const std::string missing = display.Begin(std::filesystem::path(VARKUI_LIBRARY).parent_path());
    if (!missing.empty()) GTEST_SKIP() << missing;
    std::thread person;
    std::atomic<HWND> opened{nullptr};
    stage.State.AtOpening = [&](HWND dialog) {
        opened = dialog;
        person = std::thread([&] {
            const auto page = [&] {
                return SendDlgItemMessageA(opened, controlPeriodTabs, TCM_GETCURSEL, 0, 0);
            };
            const auto comes = [&](LRESULT wanted) { return Eventually([&] { return page() == wanted; }); };
            EXPECT_TRUE(display.HasKeyboard("Zwei Zeitr\xC3\xA4ume"));
            display.Do("key ctrl+Tab");
            EXPECT_TRUE(comes(1));
            display.Do("key ctrl+shift+Tab");
            EXPECT_TRUE(comes(0));
            // A year that is none keeps the page, and the field is focused and selected for the next try.
            HWND year = GetDlgItem(stage.State.Tabs.PageWindows[0], controlYear);
            display.Do("key alt+j");
            display.Do("type --delay 20 70");
            EXPECT_TRUE(Eventually([&] { return TextOfWindow(year) == "70"; }));
            display.Do("key ctrl+Tab");
            EXPECT_TRUE(display.HasKeyboard("MERIDA"));
            display.Do("key Return");
            EXPECT_TRUE(display.HasKeyboard("Zwei Zeitr\xC3\xA4ume"));
            EXPECT_EQ(0, page());
            display.Do("type --delay 20 1997");
            EXPECT_TRUE(Eventually([&] { return TextOfWindow(year) == "1997"; })) << TextOfWindow(year);
            display.Do("key Return");
        });
    };
    EXPECT_EQ(7, stage.Run());
    person.join();
    EXPECT_STREQ("310317", stage.State.Tabs.Selections[0].BisDatum);
}

// With the second page in view.
TEST(PeriodTabDialogOnScreen, ThatLosesItsScreenIsAcceptedThroughTheSameChecks)
{
    Stage stage("");
    Display display;
    const std::string missing = display.Begin(std::filesystem::path(VARKUI_LIBRARY).parent_path());
    if (!missing.empty()) GTEST_SKIP() << missing;
    GetActiveWindow(); // loads the window system, which looks at standard error when it is loaded
    testing::internal::CaptureStderr();
    std::thread person;
    stage.State.AtOpening = [&](HWND dialog) {
        person = std::thread([&display, dialog] {
            EXPECT_TRUE(display.HasKeyboard("Zwei Zeitr\xC3\xA4ume"));
            display.Do("key ctrl+Tab");
            EXPECT_TRUE(Eventually(
                [&] { return SendDlgItemMessageA(dialog, controlPeriodTabs, TCM_GETCURSEL, 0, 0) == 1; }));
            EXPECT_TRUE(display.KillProgram());
        });
    };
    EXPECT_EQ(7, stage.Run());
    person.join();
    EXPECT_EQ("varkui: Der Bildschirm ist weg; es geht ohne ihn weiter.\n",
              testing::internal::GetCapturedStderr());
    EXPECT_STREQ("310318", stage.State.Tabs.Selections[0].BisDatum);
}
