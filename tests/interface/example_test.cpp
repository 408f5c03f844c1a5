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
    if (!display.Start()) GTEST_SKIP() << "Xvfb, openbox and xdotool are not all installed";
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
    display.Do("key alt+b");
    EXPECT_EQ(0, host.ExitCode());
}
