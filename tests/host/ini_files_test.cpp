#include "host/ini_files.h"

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace host;
namespace fs = std::filesystem;

namespace {

struct IniFiles : testing::Test {
    fs::path directory;

    void SetUp() override
    {
        std::string pattern = fs::temp_directory_path() / "vark-ini-XXXXXX";
        directory = mkdtemp(pattern.data());
        setenv("VARK_CONFIG_DIR", directory.c_str(), 1);
    }
    void TearDown() override { fs::remove_all(directory); }

    void Put(const std::string &content, const char *name = "vark.ini") const
    {
        std::ofstream(directory / name, std::ios::binary) << content;
    }
    std::string Content(const char *name = "vark.ini") const
    {
        std::ostringstream content;
        content << std::ifstream(directory / name, std::ios::binary).rdbuf();
        return content.str();
    }
    static std::string Read(const char *section, const char *key, size_t size = 260)
    {
        std::vector<char> out(size, 'x');
        const size_t length = ReadProfileText(section, key, out.data(), size, "vark.ini");
        EXPECT_EQ(std::string(out.data()).size(), length);
        return out.data();
    }
    static bool Write(const char *section, const char *key, const char *value)
    {
        return WriteProfileText(section, key, value, "vark.ini");
    }
};

} // namespace

TEST_F(IniFiles, SectionAndKeyAreFoundWithoutRegardToCase)
{
    Put("[Vark]\nPFAD=/daten/DB\n");
    EXPECT_EQ("/daten/DB", Read("VARK", "Pfad"));
}

TEST_F(IniFiles, BlanksAndOnePairOfQuotesAreTakenOffTheValue)
{
    Put("[VARK]\n a = \t/x y/DB \t\r\nb=\"  /z  \"\nc='q'\nd=\"half\ne=''\n");
    EXPECT_EQ("/x y/DB", Read("VARK", "a"));
    EXPECT_EQ("  /z  ", Read("VARK", "b"));
    EXPECT_EQ("q", Read("VARK", "c"));
    EXPECT_EQ("\"half", Read("VARK", "d"));
    EXPECT_EQ("", Read("VARK", "e"));
}

TEST_F(IniFiles, MissingFileSectionOrKeyGivesTheEmptyText)
{
    EXPECT_EQ("", Read("VARK", "Pfad"));
    Put("Pfad=outside\n[TOLKA]\nPfad=other\n[VARK]\nPfadX=no\n");
    EXPECT_EQ("", Read("VARK", "Pfad"));
    EXPECT_EQ("", Read("NONE", "Pfad"));
}

TEST_F(IniFiles, CommentIsNoKey)
{
    Put("[VARK]\n;Pfad=/old\n  ; Pfad=/older\nPfad=/new ; kept\n");
    EXPECT_EQ("/new ; kept", Read("VARK", "Pfad"));
}

TEST_F(IniFiles, FirstOfTwoEqualKeysCounts)
{
    Put("[VARK]\nPfad=/first\nPfad=/second\n[VARK]\nPfad=/third\n");
    EXPECT_EQ("/first", Read("VARK", "Pfad"));
}

TEST_F(IniFiles, ValueThatDoesNotFitIsCutAndTerminated)
{
    Put("[TOLKA]\nSetzeJahr=12345678\n[VARK]\nPfad=abcdef\n");
    EXPECT_EQ("abc", Read("VARK", "Pfad", 4));
}

TEST_F(IniFiles, LastLineNeedsNoLineFeed)
{
    Put("[VARK]\nPfad=/x");
    EXPECT_EQ("/x", Read("VARK", "Pfad"));
}

TEST_F(IniFiles, FileOfGarbageGivesTheEmptyText)
{
    Put(std::string("\0[[[=]]\n\n=\n]\n[\n[VARK\nPfad=/x\n\xFF\xFE", 30));
    EXPECT_EQ("", Read("VARK", "Pfad"));
    Put(std::string((1 << 20) + 1, '\n') + "[VARK]\nPfad=/x\n");
    EXPECT_EQ("", Read("VARK", "Pfad"));
}

TEST_F(IniFiles, DirectoryInPlaceOfTheFileGivesTheEmptyText)
{
    fs::create_directory(directory / "vark.ini");
    EXPECT_EQ("", Read("VARK", "Pfad"));
    EXPECT_FALSE(Write("VARK", "Pfad", "/x"));
}

TEST_F(IniFiles, WriteReplacesOneLineAndKeepsTheRestToTheByte)
{
    Put("; eigene Datei\n\n[TOLKA]\nPfad=/a\nweiß nicht\n\n[VARK]\n; Kommentar\npfad = "
        "/old\nReportPfad=/r\n");
    EXPECT_TRUE(Write("VARK", "Pfad", "/new"));
    EXPECT_EQ(
        "; eigene Datei\n\n[TOLKA]\nPfad=/a\nweiß nicht\n\n[VARK]\n; Kommentar\nPfad=/new\nReportPfad=/r\n",
        Content());
}

TEST_F(IniFiles, NewKeyStandsAtTheEndOfItsSection)
{
    Put("[VARK]\nPfad=/a\n\n[Mandant1]\nStapel=1\n");
    EXPECT_TRUE(Write("VARK", "DLLPfad", "/d"));
    EXPECT_EQ("[VARK]\nPfad=/a\nDLLPfad=/d\n\n[Mandant1]\nStapel=1\n", Content());
}

TEST_F(IniFiles, NewSectionStandsAtTheEndOfTheFile)
{
    Put("[VARK]\nPfad=/a");
    EXPECT_TRUE(Write("Mandant", "Stapel1", "4"));
    EXPECT_EQ("[VARK]\nPfad=/a\n[Mandant]\nStapel1=4\n", Content());
}

TEST_F(IniFiles, WindowsLineEndsAreKept)
{
    Put("[VARK]\r\nPfad=/a\r\n");
    EXPECT_TRUE(Write("VARK", "Pfad", "/b"));
    EXPECT_TRUE(Write("VARK", "DLLPfad", "/d"));
    EXPECT_EQ("[VARK]\r\nPfad=/b\r\nDLLPfad=/d\r\n", Content());
}

TEST_F(IniFiles, NullRemovesAKey)
{
    Put("[VARK]\nPfad=/a\nReportPfad=/r\n");
    EXPECT_TRUE(Write("VARK", "Pfad", nullptr));
    EXPECT_TRUE(Write("VARK", "Unknown", nullptr));
    EXPECT_EQ("[VARK]\nReportPfad=/r\n", Content());
}

TEST_F(IniFiles, WriteMakesTheFileAndItsDirectory)
{
    fs::remove_all(directory);
    EXPECT_TRUE(Write("VARK", "Pfad", "/a"));
    EXPECT_EQ("[VARK]\nPfad=/a\n", Content());
}

TEST_F(IniFiles, WrittenValueIsReadBack)
{
    EXPECT_TRUE(Write("VARK", "Pfad", "/a"));
    EXPECT_TRUE(Write("VARK", "Pfad", "/b"));
    EXPECT_TRUE(Write("Mandant", "Stapel", "7"));
    EXPECT_EQ("/b", Read("VARK", "Pfad"));
    EXPECT_EQ("7", Read("Mandant", "Stapel"));
}

TEST_F(IniFiles, LinkStaysALinkAndPermissionsStay)
{
    Put("[VARK]\nPfad=/a\n", "real.ini");
    chmod((directory / "real.ini").c_str(), 0640);
    fs::create_symlink(directory / "real.ini", directory / "vark.ini");
    EXPECT_TRUE(Write("VARK", "Pfad", "/b"));
    EXPECT_TRUE(fs::is_symlink(directory / "vark.ini"));
    EXPECT_EQ("[VARK]\nPfad=/b\n", Content("real.ini"));
    EXPECT_EQ(fs::perms(0640), fs::status(directory / "real.ini").permissions());
}

TEST_F(IniFiles, NothingElseIsLeftInTheDirectory)
{
    EXPECT_TRUE(Write("VARK", "Pfad", "/a"));
    EXPECT_TRUE(Write("VARK", "Pfad", "/b"));
    const auto entries = std::distance(fs::directory_iterator(directory), fs::directory_iterator());
    EXPECT_EQ(1, entries);
}

TEST_F(IniFiles, ThreadsThatWriteAtOnceLoseNothing)
{
    std::vector<std::thread> threads;
    threads.reserve(8);
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([i] {
            const std::string key = "Stapel" + std::to_string(i);
            for (int round = 0; round < 20; ++round) {
                EXPECT_TRUE(Write("Mandant", key.c_str(), std::to_string(round).c_str()));
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ("19", Read("Mandant", ("Stapel" + std::to_string(i)).c_str()));
    }
}

TEST_F(IniFiles, ConfigDirectoryOfTheEnvironmentIsTheOnlyPlace)
{
    const fs::path home = directory / "home";
    fs::create_directories(home / "vark");
    std::ofstream(home / "vark/vark.ini") << "[VARK]\nPfad=/home\n";
    setenv("XDG_CONFIG_HOME", home.c_str(), 1);
    EXPECT_EQ("", Read("VARK", "Pfad"));
    unsetenv("VARK_CONFIG_DIR");
    EXPECT_EQ("/home", Read("VARK", "Pfad"));
}

TEST_F(IniFiles, WithoutXdgTheHomeDirectoryIsLookedAt)
{
    fs::create_directories(directory / ".config/vark");
    std::ofstream(directory / ".config/vark/vark.ini") << "[VARK]\nPfad=/dot\n";
    unsetenv("VARK_CONFIG_DIR");
    unsetenv("XDG_CONFIG_HOME");
    setenv("HOME", directory.c_str(), 1);
    EXPECT_EQ("/dot", Read("VARK", "Pfad"));
}

// A file that is there decides, readable or not: else the next one's books would be taken without a word.
TEST_F(IniFiles, FileThatCannotBeReadIsToldFromOneThatIsMissing)
{
    EXPECT_FALSE(IsProfileUnreadable("vark.ini"));
    Put("[VARK]\n");
    EXPECT_FALSE(IsProfileUnreadable("vark.ini"));
    fs::remove(directory / "vark.ini");
    fs::create_directory(directory / "vark.ini");
    EXPECT_TRUE(IsProfileUnreadable("vark.ini"));
    fs::remove(directory / "vark.ini");
    ASSERT_EQ(0, mkfifo((directory / "vark.ini").c_str(), 0600));
    EXPECT_TRUE(IsProfileUnreadable("vark.ini"));
}

// A share that is away for the moment takes with it what a link leads to.
TEST_F(IniFiles, LinkThatLeadsNowhereIsAFileThatCannotBeRead)
{
    fs::create_symlink(directory / "away" / "vark.ini", directory / "vark.ini");
    EXPECT_TRUE(IsProfileUnreadable("vark.ini"));
    EXPECT_FALSE(WriteProfileText("VARK", "Mandant", "1", "vark.ini"));
    EXPECT_TRUE(fs::is_symlink(directory / "vark.ini")) << "nothing was put in its place";
}

TEST_F(IniFiles, UnreadableFileIsNotPassedOver)
{
    unsetenv("VARK_CONFIG_DIR");
    setenv("XDG_CONFIG_HOME", directory.c_str(), 1);
    // A loop of links: what lies behind it cannot be told from what is not there.
    fs::create_symlink(directory / "vark", directory / "vark");
    EXPECT_TRUE(IsProfileUnreadable("vark.ini"));
    EXPECT_EQ("", Read("VARK", "Pfad"));
}

// Whoever locks the directory for longer than a moment is no writer of these files.
TEST_F(IniFiles, AForeignLockOnTheDirectoryHoldsNobodyUp)
{
    Put("[VARK]\nStapel=1\n");
    const int held = open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_GE(held, 0);
    ASSERT_EQ(0, flock(held, LOCK_EX));
    EXPECT_FALSE(WriteProfileText("VARK", "Stapel", "2", "vark.ini"));
    EXPECT_EQ("1", Read("VARK", "Stapel"));
    close(held);
    EXPECT_TRUE(WriteProfileText("VARK", "Stapel", "2", "vark.ini"));
    EXPECT_EQ("2", Read("VARK", "Stapel"));
}
