#include "src/platform/platform.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

using namespace vark;
namespace fs = std::filesystem;

namespace {

struct Parts : testing::Test {
    fs::path directory;

    void SetUp() override
    {
        std::string pattern = fs::temp_directory_path() / "vark-parts-XXXXXX";
        directory = mkdtemp(pattern.data());
    }
    void TearDown() override { fs::remove_all(directory); }

    fs::path Install(const char *kind, const fs::path &where) const
    {
        fs::create_directories(where);
        fs::copy_file(fs::path(STAND_INS) / kind / "libwbtrv32.so", where / "libwbtrv32.so");
        return where;
    }
    static int StatusOf(RecordManagerEntry entry)
    {
        return entry != nullptr ? entry(0, nullptr, nullptr, nullptr, nullptr, 0, 0) : 0;
    }
};

} // namespace

TEST_F(Parts, RecordManagerBesideTheDataIsTakenFirst)
{
    Install("good", directory);
    Install("without_entry", directory / "dll");
    EXPECT_EQ(4711, StatusOf(LoadRecordManager((directory / "DB").c_str(), (directory / "dll").c_str())));
}

TEST_F(Parts, DirectoryOfTheIniFileIsTakenNext)
{
    Install("good", directory / "dll");
    EXPECT_EQ(4711, StatusOf(LoadRecordManager((directory / "DB").c_str(), (directory / "dll").c_str())));
    EXPECT_EQ(4711, StatusOf(LoadRecordManager((directory / "DB").c_str(), (directory / "dll/").c_str())));
}

TEST_F(Parts, CandidateWithoutTheEntryEndsTheSearch)
{
    Install("without_entry", directory);
    Install("good", directory / "dll");
    EXPECT_EQ(nullptr, LoadRecordManager((directory / "DB").c_str(), (directory / "dll").c_str()));
}

TEST_F(Parts, CandidateThatOthersCanWriteIsPassedOver)
{
    Install("without_entry", directory);
    chmod((directory / "libwbtrv32.so").c_str(), 0775);
    Install("good", directory / "dll");
    EXPECT_EQ(4711, StatusOf(LoadRecordManager((directory / "DB").c_str(), (directory / "dll").c_str())));
}

TEST_F(Parts, CandidateInADirectoryThatOthersCanWriteIsPassedOver)
{
    Install("without_entry", directory / "open" / "inner");
    chmod((directory / "open").c_str(), 0777);
    Install("good", directory / "dll");
    EXPECT_EQ(4711, StatusOf(LoadRecordManager((directory / "open/inner/DB").c_str(),
                                               (directory / "dll").c_str())));
}

TEST_F(Parts, CandidateOfAnotherUserIsPassedOver)
{
    if (geteuid() != 0) GTEST_SKIP() << "only the superuser can give a file away";
    Install("without_entry", directory);
    ASSERT_EQ(0, chown((directory / "libwbtrv32.so").c_str(), 1, 1));
    Install("good", directory / "dll");
    EXPECT_EQ(4711, StatusOf(LoadRecordManager((directory / "DB").c_str(), (directory / "dll").c_str())));
}

TEST_F(Parts, FileThatIsNoLibraryIsPassedOver)
{
    Install("good", directory / "dll");
    fs::copy_file("/proc/self/comm", directory / "libwbtrv32.so");
    EXPECT_EQ(4711, StatusOf(LoadRecordManager((directory / "DB").c_str(), (directory / "dll").c_str())));
}

TEST_F(Parts, RecordManagerOfOurOwnIsTakenLast)
{
    const RecordManagerEntry entry = LoadRecordManager((directory / "DB").c_str(), "");
    ASSERT_NE(nullptr, entry);
    EXPECT_NE(4711, StatusOf(entry));
}

TEST_F(Parts, PathInAMessageIsWindows1252)
{
    char shown[16];
    PathForMessage("/b\xC3\xBC"
                   "cher",
                   shown, sizeof shown);
    EXPECT_STREQ("/b\xFC"
                 "cher",
                 shown);
}
