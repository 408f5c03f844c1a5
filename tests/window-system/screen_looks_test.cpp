// What a person sees: the pixels of the display. Left out where the X programs are not installed.
#include <gtest/gtest.h>
#include <set>
#include <thread>
#include <vector>

#include "demo_dialog.h"
#include "front_end_setup.h"
#include "tests/support/display.h"

// Last, since its macros have names that others use.
#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace {

using vark::test::Eventually;

// A connection of the test's own to the display.
struct Watcher {
    ::Display *Connection = XOpenDisplay(nullptr);
    Watcher() = default;
    Watcher(const Watcher &) = delete;
    Watcher &operator=(const Watcher &) = delete;
    ~Watcher() { XCloseDisplay(Connection); }

    Window Root() const { return DefaultRootWindow(Connection); }

    // The colours there, row by row.
    std::vector<unsigned long> Pixels(const RECT &place) const
    {
        std::vector<unsigned long> colours;
        const int width = place.right - place.left;
        const int height = place.bottom - place.top;
        XImage *image = XGetImage(Connection, Root(), place.left, place.top, static_cast<unsigned>(width),
                                  static_cast<unsigned>(height), AllPlanes, ZPixmap);
        for (int i = 0; image != nullptr && i < width * height; ++i) {
            colours.push_back(XGetPixel(image, i % width, i / width) & 0xFFFFFF);
        }
        if (image != nullptr) XDestroyImage(image);
        return colours;
    }

    // The topmost window that no window manager frames; empty where there is none.
    RECT Popup() const
    {
        Window root = 0;
        Window parent = 0;
        Window *children = nullptr;
        unsigned count = 0;
        RECT found = {};
        XQueryTree(Connection, Root(), &root, &parent, &children, &count);
        for (unsigned i = 0; i < count; ++i) {
            XWindowAttributes is = {};
            if (XGetWindowAttributes(Connection, children[i], &is) == 0) continue;
            XClassHint hint = {}; // a window manager's own windows have none
            const bool isShown = is.map_state == IsViewable && is.width >= 20;
            if (!isShown || XGetClassHint(Connection, children[i], &hint) == 0) continue;
            XFree(hint.res_name);
            XFree(hint.res_class);
            found = {is.x, is.y, is.x + is.width, is.y + is.height};
        }
        if (children != nullptr) XFree(children);
        return found;
    }
};

struct ScreenLooks : testing::Test {
    FrontEndSetup frontEnd;
    vark::test::Display display;

    void SetUp() override
    {
        const std::string missing = display.Begin(std::filesystem::path(VARKUI_LIBRARY).parent_path());
        if (!missing.empty()) GTEST_SKIP() << missing;
    }

    static void Do(const std::string &command) { vark::test::Display::Do(command); }

    void RunDemo(const std::function<void(HWND dialog)> &person)
    {
        std::thread acting;
        RunTable(demo::table, [&](HWND dialog, UINT message, WPARAM, LPARAM) {
            if (message != WM_INITDIALOG) return INT_PTR{0};
            demo::Fill(dialog);
            acting = std::thread([this, &person, dialog] {
                EXPECT_TRUE(vark::test::Display::HasKeyboard("Stapelverwaltung"));
                person(dialog);
                PostMessageA(dialog, WM_COMMAND, IDCANCEL, 0);
            });
            return INT_PTR{TRUE};
        });
        acting.join();
    }
};

// Where the active window begins.
POINT CornerOfActive()
{
    POINT corner = {};
    FILE *tells = popen("xdotool getactivewindow getwindowgeometry --shell 2>/dev/null", "re");
    if (tells == nullptr) return corner;
    char line[100];
    while (fgets(line, sizeof line, tells) != nullptr) {
        const std::string told = line;
        if (told.starts_with("X=")) corner.x = std::stoi(told.substr(2));
        if (told.starts_with("Y=")) corner.y = std::stoi(told.substr(2));
    }
    pclose(tells);
    return corner;
}

// The name and the class by which the active window calls its program.
std::set<std::string> NamesOfActive()
{
    FILE *tells = popen("xdotool getactivewindow 2>/dev/null", "re");
    if (tells == nullptr) return {};
    char line[100] = "";
    const bool isTold = fgets(line, sizeof line, tells) != nullptr;
    pclose(tells);
    const unsigned long active = isTold ? std::stoul(line) : 0;
    const Watcher watcher;
    XClassHint hint = {};
    if (active == 0 || XGetClassHint(watcher.Connection, active, &hint) == 0) return {};
    const std::set<std::string> names = {hint.res_name, hint.res_class};
    XFree(hint.res_name);
    XFree(hint.res_class);
    return names;
}

} // namespace

// By it a desktop finds vark-ui.desktop, and with that the icon.
TEST_F(ScreenLooks, AWindowOnScreenBelongsToTheDesktopEntry)
{
    RunDemo([](HWND) { EXPECT_TRUE(NamesOfActive().contains("vark-ui")); });
}

TEST_F(ScreenLooks, AListOnScreenShowsThatItHasTheFocus)
{
    RunDemo([](HWND dialog) {
        const Watcher watcher;
        const POINT corner = CornerOfActive();
        RECT list = {};
        GetWindowRect(GetDlgItem(dialog, 60), &list);
        MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT *>(&list), 2);
        list = {corner.x + list.left, corner.y + list.top, corner.x + list.right, corner.y + list.bottom};
        std::vector<unsigned long> resting;
        const auto comes = [&](const std::string &keys, bool wanted) {
            Do("key " + keys);
            return Eventually([&] { return (watcher.Pixels(list) == resting) == wanted; },
                              std::chrono::seconds(10));
        };
        Do("mousemove 2 2 key alt+n");
        // Two looks that agree: the list has been drawn.
        EXPECT_TRUE(Eventually([&] {
            const std::vector<unsigned long> before = watcher.Pixels(list);
            Do("sleep 0.3");
            resting = watcher.Pixels(list);
            return resting == before && std::set(resting.begin(), resting.end()).size() > 2;
        }));
        EXPECT_TRUE(comes("alt+e Tab Tab", false)) << "it has the focus";
        EXPECT_TRUE(comes("alt+n", true)) << "it has lost it";
    });
}

TEST_F(ScreenLooks, AnOpenListOnScreenHasNoBlackAroundIt)
{
    RunDemo([](HWND dialog) {
        const Watcher watcher;
        Do("mousemove 2 2 key alt+e F4");
        EXPECT_TRUE(
            Eventually([dialog] { return SendDlgItemMessageA(dialog, 41, CB_GETDROPPEDSTATE, 0, 0) != 0; }));
        RECT popup = {};
        EXPECT_TRUE(Eventually([&] { return (popup = watcher.Popup()).right != 0; }));
        const int width = popup.right - popup.left;
        const int height = popup.bottom - popup.top;
        size_t black = 0;
        EXPECT_TRUE(Eventually(
            [&] {
                const std::vector<unsigned long> colours = watcher.Pixels(popup);
                black = 0;
                for (size_t i = 0; i < colours.size(); ++i) {
                    const int x = static_cast<int>(i) % width;
                    const int y = static_cast<int>(i) / width;
                    const bool isEdge = x < 3 || y < 3 || x >= width - 3 || y >= height - 3;
                    if (isEdge && colours[i] == 0) ++black;
                }
                return !colours.empty() && black == 0;
            },
            std::chrono::seconds(10)))
            << black << " pixels of " << width << " x " << height;
        Do("key Escape");
    });
}
