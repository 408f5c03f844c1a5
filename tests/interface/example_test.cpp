// The examples do what they say on the sample books: a program that posts, and a host with a window and a
// message loop of its own, played by a script and driven as a person would.
#include "tests/support/display.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>

namespace {

namespace fs = std::filesystem;

// Runs a command; gives what it writes and its exit code.
std::string OutputOf(const std::string &command, int *exitCode)
{
    std::string output;
    FILE *pipe = popen((command + " 2>&1").c_str(), "r");
    if (pipe == nullptr) return "cannot be run";
    char buffer[4096];
    size_t count = 0;
    while ((count = fread(buffer, 1, sizeof buffer, pipe)) > 0) {
        output.append(buffer, count);
    }
    *exitCode = WEXITSTATUS(pclose(pipe));
    return output;
}

class Example : public testing::Test {
protected:
    void SetUp() override
    {
        books = (fs::temp_directory_path() / "vark-example-XXXXXX").string();
        ASSERT_NE(nullptr, mkdtemp(books.data()));
    }
    void TearDown() override { fs::remove_all(books); }

    std::string Buchen(int *exitCode) const
    {
        return OutputOf("VARK_CONFIG_DIR='" + books + "' VARK_UI=headless '" VARK_BUCHEN "'", exitCode);
    }

    void MakeBooks() const
    {
        int exitCode = -1;
        const std::string made = OutputOf("'" VARK_BOOKS "' beispiel '" + books + "' --ersetzen", &exitCode);
        ASSERT_EQ(0, exitCode) << made;
    }
    // The host with a person who does what the script says.
    std::string Berichte(const std::string &script, int *exitCode) const
    {
        std::ofstream(books + "/script") << script;
        return OutputOf("VARK_CONFIG_DIR='" + books + "' VARK_UI='script:" + books +
                            "/script' '" VARK_BERICHTE "'",
                        exitCode);
    }

    // The library and its parts in a directory of their own, without the report engine or with the one named,
    // as the loader finds them for the examples.
    void MoveParts(const char *reportEngine) const
    {
        const fs::path place = books + "/parts";
        fs::create_directory(place);
        for (const char *const part : {"libvark40.so.4", "libwbtrv32.so", "libvarkui.so"}) {
            fs::copy_file(fs::path(VARK_PARTS) / part, place / part);
        }
        if (reportEngine != nullptr) fs::copy_file(reportEngine, place / "librs.so");
        setenv("LD_LIBRARY_PATH", place.c_str(), 1);
    }
    // A report's dialog comes up and its OK finds no template, with its full path; the host goes on.
    void ExpectNoTemplate() const
    {
        int exitCode = -1;
        EXPECT_EQ("nicht erstellt\n",
                  Berichte("press 1001\ndialog 111\npress 1\nbox ok Reportdatei '" + books +
                               "/reports/or_slist.rs' konnte nicht gefunden werden oder beim Öffnen ist ein "
                               "Fehler aufgetreten.\nexpect title Wirt\npress 1002\n",
                           &exitCode));
        EXPECT_EQ(0, exitCode);
    }

    std::string books;
};

} // namespace

TEST_F(Example, PostsIntoTheSampleBooks)
{
    int exitCode = -1;
    MakeBooks();
    EXPECT_EQ("gebucht (1)\n", Buchen(&exitCode));
    EXPECT_EQ(0, exitCode);
}

TEST_F(Example, IsRefusedWithoutBooks)
{
    int exitCode = -1;
    EXPECT_EQ("abgelehnt (-36)\n", Buchen(&exitCode));
    EXPECT_EQ(1, exitCode);
}

TEST_F(Example, WritesAReportAsAFileWithoutAnyWindow)
{
    MakeBooks();
    const std::string program = "VARK_CONFIG_DIR='" + books + "' '" VARK_SALDENLISTE "' '" + books;
    int exitCode = -1;
    EXPECT_EQ("geschrieben\n", OutputOf(program + "/susa.csv'", &exitCode));
    EXPECT_EQ(0, exitCode);
    // The same list by the command line, which asks another way.
    const std::string command = "VARK_CONFIG_DIR='" + books +
                                "' '" VARK_TOOL "' bericht susa --mandant 1 --per 31.3.98 --csv '" + books +
                                "/told.csv'";
    const std::string told = OutputOf(command, &exitCode);
    EXPECT_EQ(0, exitCode) << told;
    EXPECT_EQ("", OutputOf("cmp '" + books + "/susa.csv' '" + books + "/told.csv'", &exitCode));
    EXPECT_EQ(0, exitCode);
}

TEST_F(Example, TellsThatAFileOfNoKnownKindIsNotWritten)
{
    MakeBooks();
    int exitCode = -1;
    const std::string told = OutputOf(
        "VARK_CONFIG_DIR='" + books + "' '" VARK_SALDENLISTE "' '" + books + "/susa.doc'", &exitCode);
    EXPECT_NE(std::string::npos, told.find("nicht geschrieben\n")) << told;
    EXPECT_EQ(1, exitCode);
}

TEST_F(Example, HostShowsReportsInItsOwnLoopAndRemembersWhatWasChosen)
{
    MakeBooks();
    int exitCode = -1;
    EXPECT_EQ(
        "erstellt per 310398\nerstellt per 280298\n",
        Berichte("expect title Wirt\npress 1001\ndialog 111\ntext 22991 31.3.98\npress 1\n"
                 "expect title Wirt\nexpect text 103 \"von 3\"\npress 1001\nexpect text 22991 31.03.1998\n"
                 "text 22991 28.2.98\n"
                 "press 1\nexpect title Wirt\npress 1002\n",
                 &exitCode));
    EXPECT_EQ(0, exitCode);
}

TEST_F(Example, HostAndViewShareTheKeyboard)
{
    MakeBooks();
    int exitCode = -1;
    EXPECT_EQ("erstellt per 310398\n",
              Berichte("press 1001\ntext 22991 31.3.98\npress 1\nexpect title Wirt\n"
                       // The view has the keyboard, and Tab leads through it, the frame and back.
                       "expect focus 120\nkey PageDown\nexpect text 102 2\n"
                       "key Tab\nexpect focus 1001\nkey Tab\nexpect focus 1002\n"
                       "key Tab\nexpect focus 101\nkey Tab\nexpect focus 102\n"
                       "text 102 3\nkey Enter\nexpect text 102 3\nexpect focus 120\n"
                       "key Ctrl+f\ntext 108 Kasse\nkey Enter\nexpect text 102 1\nexpect focus 108\n"
                       "key Escape\nexpect text 108\nexpect focus 120\n"
                       // What means nothing to the view is the frame's.
                       "key Escape\nexpect title Wirt\nexpect focus 120\nkey Alt+b\n",
                       &exitCode));
    EXPECT_EQ(0, exitCode);
}

TEST_F(Example, HostTakesACancelAndTheKeysOfItsFrame)
{
    MakeBooks();
    int exitCode = -1;
    EXPECT_EQ("nicht erstellt\n", Berichte("expect focus 1001\nkey Space\n"
                                           "dialog 111\nkey Escape\nexpect title Wirt\nclose\n",
                                           &exitCode));
    EXPECT_EQ(0, exitCode);
}

TEST_F(Example, HostIsDrivenByKeysOnAScreen)
{
    MakeBooks();
    vark::test::Display display;
    const std::string missing = display.Begin(VARK_PARTS);
    if (!missing.empty()) GTEST_SKIP() << missing;
    setenv("VARK_CONFIG_DIR", books.c_str(), 1);
    const std::string output = books + "/output";
    vark::test::Process host({VARK_BERICHTE}, output);
    const auto said = [&output] {
        std::ifstream file(output);
        return std::string(std::istreambuf_iterator<char>(file), {});
    };
    ASSERT_TRUE(display.HasKeyboard("Wirt"));
    display.Do("key alt+s");
    ASSERT_TRUE(display.HasKeyboard("Summen- und Saldenliste"));
    display.Do("type --delay 20 31.3.98");
    display.Do("key Return");
    EXPECT_TRUE(vark::test::Eventually([&] { return said() == "erstellt per 310398\n"; })) << said();
    ASSERT_TRUE(display.HasKeyboard("Wirt"));
    // The view has the keyboard, not what had it before the dialog.
    EXPECT_TRUE(vark::test::Eventually([&display] {
        display.Do("key ctrl+s");
        return display.HasKeyboard("Bericht speichern");
    }));
    display.Do("key Escape");
    ASSERT_TRUE(display.HasKeyboard("Wirt"));
    display.Do("key alt+b");
    EXPECT_EQ(0, host.ExitCode());
}

TEST_F(Example, WithoutAReportEngineReportsAreTemplatesThatDoNotOpen)
{
    MakeBooks();
    MoveParts(nullptr);
    ExpectNoTemplate();
    int exitCode = -1;
    EXPECT_EQ("gebucht (1)\n", Buchen(&exitCode)) << "everything but reports works";
}

TEST_F(Example, ReportEngineWithoutAnEntryIsNone)
{
    MakeBooks();
    MoveParts(REPORT_ENGINE_WITHOUT_ENTRY);
    ExpectNoTemplate();
}
