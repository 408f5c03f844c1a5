// The program that shows windows is started only where nobody else can put another one in its place.
#include "front_end_setup.h"
#include "lone_copy.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

struct Companion : testing::Test {
    FrontEndSetup frontEnd;
    std::filesystem::path Mark = frontEnd.Directory / "was-run";

    void SetUp() override { MakeProgram(frontEnd.Directory, "touch '" + Mark.string() + "'\nexit 127\n"); }

    // Asks, and returns what is said on standard error.
    std::string Ask() const
    {
        const Box box = BoxOfACopyIn(frontEnd.Directory, VARKUI_LIBRARY);
        if (box == nullptr) return dlerror();
        testing::internal::CaptureStderr();
        EXPECT_EQ(box(nullptr, "Frage", "MERIDA", MB_YESNO), IDNO);
        return testing::internal::GetCapturedStderr();
    }
};

const char *const isOpen = "varkui: vark-ui oder ein Verzeichnis darüber ist für andere beschreibbar. "
                           "Es geht ohne Bildschirm weiter.\nMERIDA: Frage\n";

} // namespace

TEST_F(Companion, IsStartedWhereNobodyElseCanWrite)
{
    EXPECT_EQ("varkui: vark-ui findet keinen Bildschirm. Es geht ohne Bildschirm weiter.\nMERIDA: Frage\n",
              Ask());
    EXPECT_TRUE(std::filesystem::exists(Mark));
}

TEST_F(Companion, IsNotStartedWhereOthersCanWriteTheDirectory)
{
    ASSERT_EQ(0, chmod(frontEnd.Directory.c_str(), 0777));
    EXPECT_EQ(isOpen, Ask());
    EXPECT_FALSE(std::filesystem::exists(Mark));
}

TEST_F(Companion, IsNotStartedWhereOthersCanWriteADirectoryFarAbove)
{
    const std::filesystem::path inner = frontEnd.Directory / "open" / "inner";
    std::filesystem::create_directories(inner);
    std::filesystem::rename(frontEnd.Directory / "vark-ui", inner / "vark-ui");
    std::filesystem::create_symlink(inner / "vark-ui", frontEnd.Directory / "vark-ui");
    ASSERT_EQ(0, chmod(inner.parent_path().c_str(), 0777));
    EXPECT_EQ(isOpen, Ask());
    EXPECT_FALSE(std::filesystem::exists(Mark));
}

TEST_F(Companion, IsNotStartedWhereOthersCanWriteTheProgram)
{
    ASSERT_EQ(0, chmod((frontEnd.Directory / "vark-ui").c_str(), 0722));
    EXPECT_EQ(isOpen, Ask());
    EXPECT_FALSE(std::filesystem::exists(Mark));
}
