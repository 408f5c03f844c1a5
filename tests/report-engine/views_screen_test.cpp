// A view on a real screen: vark-ui under Xvfb with a window manager, used by mouse and keyboard. Left out
// where the programs for it are not installed.
#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>

#include "report_support.h"
#include "tests/support/display.h"
#include "window-system/include/varkui.h"

using namespace reports;
using vark::test::Display;
using vark::test::Eventually;

namespace {

constexpr int pageNumber = 102;
constexpr int nextPage = 104;
constexpr int copy = 111;
constexpr int save = 113;
constexpr int stateText = 115;
constexpr int picture = 120;

void Do(const std::string &command) { Display::Do(command); }

struct ViewOnScreen : testing::Test {
    Directory directory;
    Display display;
    int32_t report = 0;
    HWND view = nullptr;

    void SetUp() override
    {
        const std::string missing = display.Begin(std::filesystem::path(VARK_UI_PROGRAM).parent_path());
        if (!missing.empty()) GTEST_SKIP() << missing;
        setenv("VARK_CONFIG_DIR", directory.Path.c_str(), 1);
        setenv("VARK_TEST_MARK", directory.Path.c_str(), 1);
        setenv("HOME", directory.Path.c_str(), 1);
        directory.Write("vark.ini", "[RS]\nDrucker=datei:~/druck\n");
    }

    // Opens a view, of six pages where nothing else is said, and handles its messages while `person` acts.
    // Where the person fails, the view is taken away, so that the test ends.
    void Show(const std::function<void()> &person, int lines = 200)
    {
        report = OpenShipped("or_slist.rs", susaId);
        AddSusaHeader(report);
        for (int line = 0; line < lines; ++line) {
            AddSusaLine(report,
                        {.Konto = std::to_string(1000 + line), .Name = "Büro & Küche", .KumSoll = 100});
        }
        view = static_cast<HWND>(OpenView(report));
        ASSERT_NE(IsWindow(view), 0);
        std::thread acting([&] {
            EXPECT_TRUE(Display::HasKeyboard("Bericht"));
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

    // The chooser of files, opened by a key, has the keyboard, and its name is selected.
    static bool OpenChooser()
    {
        Do("key ctrl+s");
        return Display::HasKeyboard("Bericht speichern");
    }

    // Types a name in the place of the one that is suggested, and Enter.
    static void Name(const std::string &name)
    {
        Do("key ctrl+a");
        Do("type '" + name + "'");
        Do("key Return");
    }

    // A click that many pixels from the lower right corner of the window that has the keyboard.
    static void ClickFromCorner(int left, int up)
    {
        const std::string command =
            "eval $(xdotool getactivewindow getwindowgeometry --shell) && xdotool mousemove --window $WINDOW "
            "$((WIDTH - " +
            std::to_string(left) + ")) $((HEIGHT - " + std::to_string(up) + ")) click 1";
        static_cast<void>(system(command.c_str()));
    }
};

} // namespace

TEST_F(ViewOnScreen, IsUsedByKeysAlone)
{
    Show([&] {
        Do("key Next");
        EXPECT_TRUE(Eventually([&] { return Text(pageNumber) == "2"; }));
        Do("key End");
        EXPECT_TRUE(Eventually([&] { return Text(pageNumber) == "6"; }));
        const VARKUIPICTURE before = Shown();
        Do("key plus");
        EXPECT_TRUE(Eventually([&] { return Shown().ContentWidth > before.ContentWidth; }));
        Do("key ctrl+f");
        Do("type 1003");
        Do("key Return");
        EXPECT_TRUE(Eventually([&] { return Text(pageNumber) == "1"; })) << Text(stateText);
        Do("key Escape");
        // The keyboard goes back to the pages in its own time.
        EXPECT_TRUE(Eventually([&] {
            Do("key ctrl+a");
            Do("key ctrl+c");
            return Text(stateText) == "Kopiert.";
        }));
        EXPECT_GT(VarkUiCopiedText(nullptr, 0), 100);
        Do("key ctrl+w");
        EXPECT_TRUE(Eventually([&] { return IsWindow(view) == 0; }));
    });
    EXPECT_EQ(RSCopyReport(report, susaId, 0), 0);
}

TEST_F(ViewOnScreen, GivesSpreadsheetsATableAndEditorsText)
{
    if (system("command -v xclip >/dev/null") != 0) GTEST_SKIP() << "xclip is not installed";
    // What another program gets that pastes.
    const auto pasted = [&](const char *form) {
        const std::string into = directory.At("pasted");
        static_cast<void>(system(
            ("timeout 20 xclip -selection clipboard -o -t " + std::string(form) + " >" + into + " 2>&1")
                .c_str()));
        return ReadFile(into);
    };
    Show([&] {
        EXPECT_TRUE(Eventually([&] {
            Do("key ctrl+a");
            Do("key ctrl+c");
            return Text(stateText) == "Kopiert.";
        }));
        EXPECT_TRUE(Eventually([&] { return pasted("TARGETS").find("text/html\n") != std::string::npos; }));
        const std::string html = pasted("text/html");
        EXPECT_EQ(html.substr(0, html.find('\n')),
                  "<html lang=\"de\"><head><meta charset=\"utf-8\"></head><body><table>");
        EXPECT_NE(html.find("<tr><td align=\"left\">1003</td><td align=\"left\">Büro &amp; Küche</td>"
                            "<td align=\"right\"></td>"),
                  std::string::npos)
            << html.substr(0, 2000);
        const std::string text = pasted("UTF8_STRING");
        EXPECT_NE(text.find("\n1003\tBüro & Küche\t\t\t\t\t1,00\t\t1,00\t\t1,00\t\n"), std::string::npos)
            << text.substr(0, 2000);
        // A word is no table: an editor and a spreadsheet get the same.
        EXPECT_TRUE(Eventually([&] {
            Display::Click(view, picture, 90, 160, "click --repeat 2 --delay 60 1");
            Do("key ctrl+c");
            return Eventually([&] { return pasted("TARGETS").find("text/html") == std::string::npos; },
                              std::chrono::seconds(2));
        }));
        EXPECT_EQ(pasted("UTF8_STRING").find('\t'), std::string::npos) << pasted("UTF8_STRING");
    });
}

TEST_F(ViewOnScreen, IsUsedByTheMouseAlone)
{
    Show([&] {
        // The button that leads on, a wheel, and text that is dragged over and copied by its button.
        EXPECT_TRUE(Display::ClickUntil([&] { return Text(pageNumber) != "1"; }, view, nextPage, 16, 14));
        const LONG y = Shown().Y;
        EXPECT_TRUE(Display::ClickUntil([&] { return Shown().Y > y; }, view, picture, 400, 360, "click 5"));
        EXPECT_TRUE(Eventually([&] {
            Display::Click(view, picture, 60, 110,
                           "mousedown 1 mousemove_relative 300 100 mousemove_relative 100 60 mouseup 1");
            Display::Click(view, copy, 16, 14);
            return Eventually([&] { return Text(stateText) == "Kopiert."; }, std::chrono::seconds(1));
        })) << Text(stateText);
        EXPECT_GT(VarkUiCopiedText(nullptr, 0), 10);
        // Saved under the name that is suggested.
        Display::Click(view, save, 16, 14);
        EXPECT_TRUE(Display::HasKeyboard("Bericht speichern"));
        const std::string path = directory.At("Summen- und Saldenliste.pdf");
        EXPECT_TRUE(Eventually([&] {
            ClickFromCorner(40, 24);
            return Eventually([&] { return ReadFile(path).starts_with("%PDF"); }, std::chrono::seconds(2));
        }));
        EXPECT_TRUE(Display::HasKeyboard("Bericht"));
    });
}

TEST_F(ViewOnScreen, SavesByKeysAloneAndAsksBeforeAFileGoes)
{
    const std::string path = directory.Write("a.csv", "alt");
    Show([&] {
        EXPECT_TRUE(OpenChooser());
        Name("a.csv");
        EXPECT_TRUE(Display::LosesKeyboard("Bericht speichern")) << "the question has it";
        Do("key Escape");
        EXPECT_TRUE(Display::HasKeyboard("Bericht speichern"));
        EXPECT_EQ(ReadFile(path), "alt");
        Name("a.csv");
        EXPECT_TRUE(Display::LosesKeyboard("Bericht speichern"));
        Do("key Return");
        EXPECT_TRUE(Eventually([&] { return Text(stateText).starts_with("Gespeichert in "); }));
        EXPECT_NE(ReadFile(path).find(";1003;Büro & Küche;"), std::string::npos);
        // A name without an ending gets that of the kind that is shown.
        EXPECT_TRUE(Display::LosesKeyboard("Bericht speichern"));
        EXPECT_TRUE(Display::HasKeyboard("Bericht"));
        EXPECT_TRUE(OpenChooser());
        Name("Stand 31.12");
        EXPECT_TRUE(
            Eventually([&] { return ReadFile(directory.At("Stand 31.12.pdf")).starts_with("%PDF"); }));
    });
}

TEST_F(ViewOnScreen, SavesInDirectoriesOfAnyLetters)
{
    const std::string home = directory.At("Łódź 日本");
    std::filesystem::create_directory(home);
    setenv("HOME", home.c_str(), 1);
    Show([&] {
        EXPECT_TRUE(OpenChooser());
        Do("key Return");
        EXPECT_TRUE(Eventually([&] { return Text(stateText).starts_with("Gespeichert in "); }));
    });
    EXPECT_TRUE(ReadFile(home + "/Summen- und Saldenliste.pdf").starts_with("%PDF"));
}

TEST_F(ViewOnScreen, LetsThePersonChooseAgainWhereAFileCannotBeWritten)
{
    Show([&] {
        EXPECT_TRUE(OpenChooser());
        Name("/proc/a.csv");
        EXPECT_TRUE(Display::HasKeyboard("MERIDA"));
        Do("key Return");
        EXPECT_TRUE(Display::HasKeyboard("Bericht speichern"));
        Do("key Escape");
        EXPECT_TRUE(Display::LosesKeyboard("Bericht speichern"));
        EXPECT_TRUE(Display::HasKeyboard("Bericht"));
        EXPECT_EQ(Text(stateText), "");
    });
}

TEST_F(ViewOnScreen, ShowsHowFarSavingIsAndStopsWhenThePersonWants)
{
    constexpr int longReport = 30'000;
    const auto pagesStandStill = [&] { return StopMarked("rs-pages", directory.Path.string(), "pdf"); };
    Show(
        [&] {
            EXPECT_TRUE(OpenChooser());
            Name("lang.pdf");
            EXPECT_TRUE(Eventually(pagesStandStill)); // so that it takes as long as the person does
            EXPECT_TRUE(Display::HasKeyboard("Bericht wird gespeichert"));
            Do("key Escape");
            EXPECT_TRUE(Display::HasKeyboard("Bericht speichern")) << "another name may be taken";
            EXPECT_TRUE(Eventually([&] { return !std::filesystem::exists(directory.At("lang.pdf")); }));
            Do("key Escape");
            EXPECT_TRUE(Display::LosesKeyboard("Bericht speichern"));
            // Printing, into a file here, is shown and stopped in the same way.
            Do("key ctrl+p");
            EXPECT_TRUE(Display::HasKeyboard("Bericht drucken"));
            Do("key Return");
            EXPECT_TRUE(Eventually(pagesStandStill));
            EXPECT_TRUE(Display::HasKeyboard("Bericht wird gedruckt"));
            Do("key Escape");
            EXPECT_TRUE(Eventually([&] { return Text(stateText) == "Der Druck wurde abgebrochen."; }));
            EXPECT_FALSE(std::filesystem::exists(directory.At("druck.pdf")));
            Do("key Next");
            EXPECT_TRUE(Eventually([&] { return Text(pageNumber) == "2"; })) << "and the view goes on";
        },
        longReport);
}

// Whoever needs letters of twice the size gets a bar that has grown with them.
TEST_F(ViewOnScreen, HasABarInWhichLargeLettersFindRoom)
{
    ASSERT_EQ(system("xprop -root -f RESOURCE_MANAGER 8s -set RESOURCE_MANAGER 'Xft.dpi: 192'"), 0);
    Show([&] {
        RECT window = {};
        GetClientRect(view, &window);
        std::vector<RECT> places;
        for (int id = 101; id <= 114; ++id) {
            HWND control = GetDlgItem(view, id);
            RECT place = {};
            if (control == nullptr || IsWindowVisible(control) == 0) continue;
            GetWindowRect(control, &place);
            MapWindowPoints(nullptr, view, reinterpret_cast<POINT *>(&place), 2);
            EXPECT_LE(place.right, window.right) << id;
            for (const RECT &other : places) {
                // The list of a combo box hangs below it, and is no part of the bar.
                const bool isBeside = place.left >= other.right || other.left >= place.right;
                EXPECT_TRUE(isBeside || place.top >= other.bottom || other.top >= place.bottom) << id;
            }
            places.push_back(place);
        }
        EXPECT_GE(places.size(), 10u);
        EXPECT_GE(places[1].bottom - places[1].top, 40) << "a line of letters of 32 pixels, and its frame";
    });
}

TEST_F(ViewOnScreen, LetsGoOfASelectionAtEscapeAndKeepsTheAccountsInSightWhenItGrows)
{
    Show([&] {
        EXPECT_TRUE(Eventually([&] {
            Do("key ctrl+a");
            Do("key ctrl+c");
            return Text(stateText) == "Kopiert.";
        }));
        Do("key Escape");
        EXPECT_TRUE(Eventually([&] {
            Do("key ctrl+c");
            return Text(stateText) == "Es ist nichts markiert.";
        }));
        EXPECT_NE(IsWindow(view), 0) << "Escape let go of the selection, and no more";
        const LONG width = Shown().ContentWidth;
        for (int step = 0; step < 6; ++step) {
            Do("key plus");
        }
        EXPECT_TRUE(Eventually([&] { return Shown().ContentWidth > 2 * width; }));
        EXPECT_EQ(Shown().X, 0) << "the numbers of the accounts stand at the left";
    });
}

TEST_F(ViewOnScreen, MayBeClosedWhileItsChooserIsOpen)
{
    Show([&] {
        EXPECT_TRUE(OpenChooser());
        PostMessageA(view, WM_CLOSE, 0, 0);
        EXPECT_TRUE(Eventually([&] { return IsWindow(view) == 0; }));
        EXPECT_TRUE(Display::LosesKeyboard("Bericht"));
    });
    EXPECT_EQ(RSCopyReport(report, susaId, 0), 0);
}

TEST_F(ViewOnScreen, EndsWithTheProgramThatShowsItsChooser)
{
    testing::internal::CaptureStderr();
    Show([&] {
        EXPECT_TRUE(OpenChooser());
        EXPECT_EQ(KillMarked("vark-ui", directory.Path.string()), 1);
        EXPECT_TRUE(Eventually([&] { return IsWindow(view) == 0; }));
    });
    EXPECT_NE(testing::internal::GetCapturedStderr().find("varkui: Der Bildschirm ist weg"),
              std::string::npos);
    EXPECT_EQ(RSCopyReport(report, susaId, 0), 0);
    EXPECT_NE(access(directory.At("Summen- und Saldenliste.pdf").c_str(), F_OK), 0) << "nothing was saved";
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
        Do("windowsize $(xdotool getactivewindow) 700 600");
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
    EXPECT_NE(testing::internal::GetCapturedStderr().find("varkui: Der Bildschirm ist weg"),
              std::string::npos);
    EXPECT_EQ(RSCopyReport(report, susaId, 0), 0) << "the report ended with its view";
}
