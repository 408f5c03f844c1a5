#include "host/companions.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

using namespace host;
namespace fs = std::filesystem;

namespace {

// A file two directories down, that nobody but us can write.
struct Trust : testing::Test {
    fs::path Directory;
    fs::path Inner;
    fs::path File;

    void SetUp() override
    {
        std::string pattern = fs::temp_directory_path() / "vark-trust-XXXXXX";
        Directory = fs::canonical(mkdtemp(pattern.data()));
        Inner = Directory / "inner";
        fs::create_directory(Inner);
        File = Inner / "library.so";
        std::ofstream(File) << "anything";
        chmod(Inner.c_str(), 0755);
        chmod(File.c_str(), 0644);
    }
    void TearDown() override { fs::remove_all(Directory); }

    static bool Trusts(const fs::path &path)
    {
        char real[PATH_MAX];
        return IsTrusted(path.c_str(), real);
    }
};

} // namespace

TEST_F(Trust, HoldsForAFileThatIsOursUpToTheRoot)
{
    char real[PATH_MAX];
    ASSERT_TRUE(IsTrusted((Inner / "../inner/library.so").c_str(), real));
    EXPECT_EQ(File, real);
}

TEST_F(Trust, EndsWhereOthersCanWrite)
{
    for (const fs::path &place : {File, Inner, Directory}) {
        for (const mode_t mode : {0775U, 0757U, 0777U}) {
            SCOPED_TRACE(place.string());
            chmod(place.c_str(), mode);
            EXPECT_FALSE(Trusts(File));
            EXPECT_EQ(EPERM, errno);
            chmod(place.c_str(), 0755);
            EXPECT_TRUE(Trusts(File));
        }
    }
}

TEST_F(Trust, HoldsInADirectoryWhereNobodyCanReplaceAnothersFile)
{
    chmod(Directory.c_str(), 01777);
    EXPECT_TRUE(Trusts(File));
    chmod(File.c_str(), 01666); // the bit says nothing of a file
    EXPECT_FALSE(Trusts(File));
}

TEST_F(Trust, FollowsALinkAndJudgesWhereItLeads)
{
    fs::create_symlink(File, Directory / "link.so");
    char real[PATH_MAX];
    ASSERT_TRUE(IsTrusted((Directory / "link.so").c_str(), real));
    EXPECT_EQ(File, real);
    chmod(Inner.c_str(), 0777);
    EXPECT_FALSE(Trusts(Directory / "link.so"));
}

TEST_F(Trust, EndsAtAnotherUsersFile)
{
    if (geteuid() != 0) GTEST_SKIP() << "only the superuser can give a file away";
    for (const fs::path &place : {File, Inner, Directory}) {
        ASSERT_EQ(0, chown(place.c_str(), 1, 1));
        EXPECT_FALSE(Trusts(File)) << place;
        ASSERT_EQ(0, chown(place.c_str(), 0, 0));
    }
}

TEST_F(Trust, SaysOfAFileThatIsNotThere)
{
    EXPECT_FALSE(Trusts(Inner / "gone.so"));
    EXPECT_EQ(ENOENT, errno);
}

TEST(OwnDirectory, IsThatOfTheProgramThatHoldsThisCode)
{
    char directory[PATH_MAX];
    ASSERT_TRUE(OwnDirectory(directory, sizeof directory));
    EXPECT_EQ(fs::read_symlink("/proc/self/exe").parent_path(), directory);
    char small[4];
    EXPECT_FALSE(OwnDirectory(small, sizeof small));
}

TEST(OwnDirectory, HoldsWhatIsFoundBeside)
{
    char path[PATH_MAX];
    const fs::path self = fs::read_symlink("/proc/self/exe");
    ASSERT_TRUE(FindBeside(self.filename().c_str(), path));
    EXPECT_EQ(self, path);
    EXPECT_FALSE(FindBeside("no-such-file", path));
    EXPECT_EQ(ENOENT, errno);
    EXPECT_EQ(nullptr, LoadBeside("no-such-file"));
}
