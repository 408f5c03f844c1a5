// What a person sees: the pixels of the display. Left out where the X programs are not installed.
#include <gtest/gtest.h>
#include <map>
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

// Hears from its beginning on where the windows of the screen stand. What it was told comes in its order,
// whenever it is asked.
struct MapWatch {
    Watcher On;
    std::map<Window, RECT> Places; // as they were last told
    std::map<Window, RECT> Mapped; // where each stood when it was first mapped

    MapWatch()
    {
        XSelectInput(On.Connection, On.Root(), SubstructureNotifyMask);
        XSync(On.Connection, False);
    }
    void Take()
    {
        XSync(On.Connection, False);
        while (XPending(On.Connection) > 0) {
            XEvent event;
            XNextEvent(On.Connection, &event);
            if (event.type == CreateNotify) {
                const XCreateWindowEvent &is = event.xcreatewindow;
                Places[is.window] = {is.x, is.y, is.x + is.width, is.y + is.height};
            } else if (event.type == ConfigureNotify) {
                const XConfigureEvent &is = event.xconfigure;
                Places[is.window] = {is.x, is.y, is.x + is.width, is.y + is.height};
            } else if (event.type == MapNotify) {
                Mapped.emplace(event.xmap.window, Places[event.xmap.window]);
            }
        }
    }
    // The window on the root that holds this one: its frame, where a window manager gave it one.
    Window OnRoot(Window window) const
    {
        for (;;) {
            Window root = 0;
            Window parent = 0;
            Window *children = nullptr;
            unsigned count = 0;
            if (window == 0 || XQueryTree(On.Connection, window, &root, &parent, &children, &count) == 0)
                return 0;
            if (children != nullptr) XFree(children);
            if (parent == root) return window;
            window = parent;
        }
    }
};

std::string Told(const RECT &place)
{
    return std::to_string(place.right - place.left) + " x " + std::to_string(place.bottom - place.top) +
           " at " + std::to_string(place.left) + ", " + std::to_string(place.top);
}

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
            acting = std::thread([&person, dialog] {
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

unsigned long ActiveWindow()
{
    FILE *tells = popen("xdotool getactivewindow 2>/dev/null", "re");
    if (tells == nullptr) return 0;
    char line[100] = "";
    const bool isTold = fgets(line, sizeof line, tells) != nullptr;
    pclose(tells);
    return isTold ? std::stoul(line) : 0;
}

// The name and the class by which the active window calls its program.
std::set<std::string> NamesOfActive()
{
    const unsigned long active = ActiveWindow();
    const Watcher watcher;
    XClassHint hint = {};
    if (active == 0 || XGetClassHint(watcher.Connection, active, &hint) == 0) return {};
    std::set<std::string> names = {hint.res_name, hint.res_class};
    XFree(hint.res_name);
    XFree(hint.res_class);
    return names;
}

// How many of the pixels are black in the outermost rings, once none is or a while is over.
size_t BlackAround(const Watcher &watcher, const RECT &place, int rings = 3)
{
    const int width = place.right - place.left;
    const int height = place.bottom - place.top;
    size_t black = 0;
    Eventually(
        [&] {
            const std::vector<unsigned long> colours = watcher.Pixels(place);
            black = colours.empty() ? SIZE_MAX : 0;
            for (size_t i = 0; i < colours.size(); ++i) {
                const int x = static_cast<int>(i) % width;
                const int y = static_cast<int>(i) / width;
                const bool isEdge = x < rings || y < rings || x >= width - rings || y >= height - rings;
                if (isEdge && colours[i] == 0) ++black;
            }
            return black == 0;
        },
        std::chrono::seconds(10));
    return black;
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
        EXPECT_EQ(BlackAround(watcher, popup), 0U) << Told(popup);
        Do("key Escape");
    });
}

// The menu that a field shows for the other button of the mouse.
TEST_F(ScreenLooks, AMenuOnScreenHasNoBlackAroundIt)
{
    RunDemo([](HWND dialog) {
        const Watcher watcher;
        RECT popup = {};
        EXPECT_TRUE(vark::test::Display::ClickUntil([&] { return (popup = watcher.Popup()).right != 0; },
                                                    dialog, 10, 20, 10, "click 3"));
        EXPECT_EQ(BlackAround(watcher, popup), 0U) << Told(popup);
        Do("key Escape");
    });
}

// What a button of icons says of itself while the mouse rests on it.
TEST_F(ScreenLooks, AToolTipOnScreenHasNoBlackAroundIt)
{
    static constexpr varkui::DialogControl controls[] = {
        {varkui::DialogControlKind::PushButton, 10, "Drucken\tdocument-print-symbolic", 7, 9, 20, 14, BS_ICON,
         0},
        {varkui::DialogControlKind::DefaultButton, IDOK, "OK", 140, 7, 52, 14, 0, 0},
    };
    static constexpr varkui::DialogTable table = {905, "Mit einem Hinweis", 200, 30, controls, 2, 0};
    std::thread acting;
    RunTable(table, [&](HWND dialog, UINT message, WPARAM, LPARAM) {
        if (message != WM_INITDIALOG) return INT_PTR{0};
        acting = std::thread([dialog] {
            const Watcher watcher;
            EXPECT_TRUE(vark::test::Display::HasKeyboard("Mit einem Hinweis"));
            RECT popup = {};
            EXPECT_TRUE(vark::test::Display::ClickUntil([&] { return (popup = watcher.Popup()).right != 0; },
                                                        dialog, 10, 20, 10, "mousemove_relative 1 0"));
            EXPECT_EQ(BlackAround(watcher, popup, 1), 0U) << Told(popup) << ", dark inside its border";
            PostMessageA(dialog, WM_COMMAND, IDCANCEL, 0);
        });
        return INT_PTR{TRUE};
    });
    acting.join();
}

namespace {

constexpr const char *question =
    "Soll der leere Stapel 'Miete' wirklich gel\xF6scht werden, mit allem darin?";

// The active window has the place and the size that it was put up with, and something is in it.
void ExpectAsMapped(MapWatch &watch)
{
    const Window frame = watch.OnRoot(ActiveWindow());
    XWindowAttributes is = {};
    ASSERT_NE(XGetWindowAttributes(watch.On.Connection, frame, &is), 0);
    const RECT place = {is.x, is.y, is.x + is.width, is.y + is.height};
    const std::vector<unsigned long> seen = watch.On.Pixels(place);
    EXPECT_GT(std::set(seen.begin(), seen.end()).size(), 10U) << "nothing is in it";
    EXPECT_GT(is.width, 300);
    watch.Take();
    EXPECT_EQ(Told(watch.Mapped[frame]), Told(place));
}

} // namespace

TEST_F(ScreenLooks, ABoxOnScreenIsWholeWhenItComesUp)
{
    MapWatch watch;
    for (const UINT style :
         {UINT{MB_OK | MB_ICONINFORMATION}, UINT{MB_YESNO | MB_ICONQUESTION}, UINT{MB_OKCANCEL}}) {
        std::thread acting([&] {
            EXPECT_TRUE(vark::test::Display::HasKeyboard("Frage"));
            ExpectAsMapped(watch);
            Do(style == (MB_YESNO | MB_ICONQUESTION) ? "key alt+n" : "key Escape");
        });
        MessageBoxA(nullptr, question, "Frage", style);
        acting.join();
        EXPECT_TRUE(vark::test::Display::LosesKeyboard("Frage"));
    }
}

// It would grow off the middle of its dialog where it came up too small.
TEST_F(ScreenLooks, ABoxOverADialogOnScreenStaysWhereItCameUp)
{
    MapWatch watch;
    std::thread acting;
    RunTable(demo::table, [&](HWND dialog, UINT message, WPARAM wParam, LPARAM) {
        if (message == WM_INITDIALOG) {
            acting = std::thread([&watch, dialog] {
                EXPECT_TRUE(vark::test::Display::HasKeyboard("Stapelverwaltung"));
                Do("key alt+r");
                EXPECT_TRUE(vark::test::Display::HasKeyboard("Frage"));
                ExpectAsMapped(watch);
                Do("key Escape");
                EXPECT_TRUE(vark::test::Display::HasKeyboard("Stapelverwaltung"));
                PostMessageA(dialog, WM_COMMAND, IDCANCEL, 0);
            });
            return INT_PTR{TRUE};
        }
        if (message != WM_COMMAND || LOWORD(wParam) != 70 || HIWORD(wParam) != BN_CLICKED) return INT_PTR{0};
        MessageBoxA(dialog, question, "Frage", MB_OKCANCEL);
        return INT_PTR{1};
    });
    acting.join();
}
