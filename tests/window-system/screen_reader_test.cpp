// What a screen reader finds in the windows of vark-ui: every control with what it is and its name. Left out
// where the X programs or those of the reader's bus are not installed.
#include <gio/gio.h>
// As both GLib and windows call them.
#undef TRUE
#undef FALSE

#include <algorithm>
#include <atomic>
#include <fstream>
#include <gtest/gtest.h>
#include <thread>

#include "demo_dialog.h"
#include "front_end_setup.h"
#include "tests/support/display.h"

using namespace vark::test;

namespace {

constexpr char rootPath[] = "/org/a11y/atspi/accessible/root";
constexpr char accessible[] = "org.a11y.atspi.Accessible";

GDBusConnection *Connect(const std::string &address)
{
    return g_dbus_connection_new_for_address_sync(
        address.c_str(),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, nullptr);
}

// The answer, null for none.
GVariant *Call(GDBusConnection *bus, const std::string &program, const std::string &path,
               const char *interface, const char *method, GVariant *arguments = nullptr)
{
    constexpr int longest_ms = 10000;
    return g_dbus_connection_call_sync(bus, program.c_str(), path.c_str(), interface, method, arguments,
                                       nullptr, G_DBUS_CALL_FLAGS_NONE, longest_ms, nullptr, nullptr);
}

// The text that an answer consists of, in whatever it is wrapped.
std::string TextIn(GVariant *answer)
{
    if (answer == nullptr) return "";
    while (!g_variant_is_of_type(answer, G_VARIANT_TYPE_STRING)) {
        GVariant *inner = g_variant_is_of_type(answer, G_VARIANT_TYPE_VARIANT)
                              ? g_variant_get_variant(answer)
                              : g_variant_get_child_value(answer, 0);
        g_variant_unref(answer);
        answer = inner;
    }
    std::string text = g_variant_get_string(answer, nullptr);
    g_variant_unref(answer);
    return text;
}

std::string NameOf(GDBusConnection *bus, const std::string &program, const std::string &path)
{
    return TextIn(Call(bus, program, path, "org.freedesktop.DBus.Properties", "Get",
                       g_variant_new("(ss)", accessible, "Name")));
}

// "role: name" of everything from `path` inwards.
void Collect(GDBusConnection *bus, const std::string &program, const std::string &path,
             std::vector<std::string> &found)
{
    found.push_back(TextIn(Call(bus, program, path, accessible, "GetRoleName")) + ": " +
                    NameOf(bus, program, path));
    GVariant *answer = Call(bus, program, path, accessible, "GetChildren");
    if (answer == nullptr) return;
    GVariantIter *children = nullptr;
    g_variant_get(answer, "(a(so))", &children);
    const char *owner = nullptr;
    const char *inner = nullptr;
    while (g_variant_iter_loop(children, "(&s&o)", &owner, &inner)) {
        Collect(bus, owner, inner, found);
    }
    g_variant_iter_free(children);
    g_variant_unref(answer);
}

// What a reader on that bus finds in vark-ui.
std::vector<std::string> Read(GDBusConnection *bus)
{
    std::vector<std::string> found;
    GVariant *answer =
        Call(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "ListNames");
    if (answer == nullptr) return found;
    GVariantIter *names = nullptr;
    g_variant_get(answer, "(as)", &names);
    const char *name = nullptr;
    while (g_variant_iter_loop(names, "&s", &name)) {
        if (name[0] == ':' && NameOf(bus, name, rootPath) == "vark-ui") Collect(bus, name, rootPath, found);
    }
    g_variant_iter_free(names);
    g_variant_unref(answer);
    return found;
}

struct ScreenReader : testing::Test {
    FrontEndSetup frontEnd;
    Display display;
    std::unique_ptr<Process> daemon;
    std::string address;

    void SetUp() override
    {
        const std::string missing = display.Begin(std::filesystem::path(VARKUI_LIBRARY).parent_path());
        if (!missing.empty()) GTEST_SKIP() << missing;
        const auto file = std::filesystem::temp_directory_path() / ("bus" + std::to_string(getpid()));
        daemon = std::make_unique<Process>(
            std::vector<std::string>{"dbus-daemon", "--session", "--nofork", "--print-address=1"},
            file.string());
        const bool isThere = Eventually(
            [&] {
                std::ifstream lines(file);
                return static_cast<bool>(std::getline(lines, address));
            },
            std::chrono::seconds(10));
        std::filesystem::remove(file);
        if (!isThere) GTEST_SKIP() << "dbus-daemon is not installed";
        setenv("DBUS_SESSION_BUS_ADDRESS", address.c_str(), 1);
        unsetenv("GTK_A11Y");
    }

    // The bus that readers and programs meet on; null when there is none.
    GDBusConnection *ConnectToReaders() const
    {
        GDBusConnection *session = Connect(address);
        if (session == nullptr) return nullptr;
        const std::string readers =
            TextIn(Call(session, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress"));
        g_object_unref(session);
        return readers.empty() ? nullptr : Connect(readers);
    }
};

} // namespace

TEST_F(ScreenReader, FindsEveryControlOfADialogByItsName)
{
    GDBusConnection *bus = ConnectToReaders();
    if (bus == nullptr) GTEST_SKIP() << "at-spi2-core is not installed";
    std::vector<std::string> found;
    std::thread person;
    RunTable(demo::table, [&](HWND dialog, UINT message, WPARAM, LPARAM) {
        if (message != WM_INITDIALOG) return INT_PTR{0};
        demo::Fill(dialog);
        person = std::thread([&] {
            EXPECT_TRUE(Display::HasKeyboard("Stapelverwaltung"));
            // A program comes onto the bus, and rows into view, after its window.
            EXPECT_TRUE(Eventually([&] {
                found = Read(bus);
                return std::count(found.begin(), found.end(), "list item: 1210\tPOST\tPostgiro") > 0;
            }));
            Display::Do("key Escape");
        });
        return INT_PTR{1};
    });
    person.join();
    g_object_unref(bus);
    std::string all;
    for (const std::string &each : found) {
        all += each + "\n";
    }
    for (const char *each : {"dialog: Stapelverwaltung – Übung",
                             "text box: Name:", "text box: Intervall:", "checkbox: wiederkehrender Stapel",
                             "group: Übersicht", "radio: Sachkonten", "radio: Debitoren", "radio: Kreditoren",
                             "combo box: Währung:", "text box: Währung:", "combo box: Einheiten:",
                             "button: OK", "button: Ändern...", "button: Abbrechen"}) {
        EXPECT_EQ(std::count(found.begin(), found.end(), each), 1) << each << " in\n" << all;
    }
}

TEST_F(ScreenReader, FindsTheTextOfABox)
{
    GDBusConnection *bus = ConnectToReaders();
    if (bus == nullptr) GTEST_SKIP() << "at-spi2-core is not installed";
    std::vector<std::string> found;
    std::thread person([&] {
        EXPECT_TRUE(Display::HasKeyboard("Kasse"));
        EXPECT_TRUE(Eventually([&] {
            found = Read(bus);
            return std::count(found.begin(), found.end(), "label: Weiter?") > 0;
        }));
        Display::Do("key Return");
    });
    MessageBoxA(nullptr, "Weiter?", "Kasse", MB_OKCANCEL);
    person.join();
    g_object_unref(bus);
    for (const char *each : {"alert dialog: Kasse", "button: OK", "button: Abbrechen"}) {
        EXPECT_EQ(std::count(found.begin(), found.end(), each), 1) << each;
    }
}
