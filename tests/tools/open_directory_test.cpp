// What lies beside the programs and parts is neither loaded nor run when a directory above it can be written
// by others, although its own file cannot.
#include "tests/tools/program.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace tests;
namespace fs = std::filesystem;

namespace {

struct OpenDirectory : testing::Test {
    TemporaryDirectory Directory;
    fs::path Place = Directory.Path / "bin"; // the parts in a place of their own
    fs::path Config = Directory.Path / "buecher";

    void SetUp() override
    {
        fs::create_directory(Place);
        const fs::path built = fs::path(VARK_PROGRAM).parent_path();
        for (const fs::directory_entry &each : fs::directory_iterator(built)) {
            const std::string name = each.path().filename().string();
            const bool isLibrary = name.starts_with("lib") && name.find(".so") != std::string::npos;
            const bool isProgram = name == "vark" || name == "vark-kurse" || name == "vark-ui" ||
                                   name == "rs-pages" || name == "rs-print";
            if (isLibrary || isProgram) fs::copy(each.path(), Place / name, fs::copy_options::copy_symlinks);
        }
        ASSERT_EQ(0, Books({"beispiel", Config.string()}).ExitCode);
    }

    // Puts `name` into a directory that all can write, and a link in its place.
    void LayOpen(const std::string &name) const
    {
        const fs::path open = Directory.Path / "open" / "inner";
        fs::create_directories(open);
        const fs::path real = fs::canonical(Place / name);
        fs::rename(real, open / name);
        fs::create_symlink(open / name, real);
        ASSERT_EQ(0, chmod(open.parent_path().c_str(), 0777));
        ASSERT_EQ(0, chmod(open.c_str(), 0755));
    }

    Result RunVark(std::vector<std::string> arguments, const std::string &userInterface = "headless") const
    {
        return tests::Run({(Place / "vark").string(),
                           std::move(arguments),
                           "",
                           {{"VARK_CONFIG_DIR", Config.string()}, {"VARK_UI", userInterface}}});
    }

    Result Susa(std::vector<std::string> more) const
    {
        std::vector<std::string> arguments = {"bericht", "susa", "--mandant", "1", "--per", "31.3.98"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunVark(arguments);
    }

    std::string Pdf() const { return (Directory.Path / "a.pdf").string(); }
};

} // namespace

TEST_F(OpenDirectory, EverythingRunsWhereNobodyElseCanWrite)
{
    const Result result = Susa({"--pdf", Pdf()});
    EXPECT_EQ(0, result.ExitCode) << result.Err;
    EXPECT_TRUE(fs::exists(Pdf()));
}

TEST_F(OpenDirectory, TheReportEngineIsNotLoaded)
{
    LayOpen("librs.so");
    const Result result = Susa({"--pdf", Pdf()});
    EXPECT_NE(0, result.ExitCode);
    EXPECT_FALSE(fs::exists(Pdf()));
}

TEST_F(OpenDirectory, TheWindowSystemIsNotLoaded)
{
    LayOpen("libvarkui.so");
    const Result result = Susa({"--pdf", Pdf()});
    EXPECT_NE(0, result.ExitCode);
    EXPECT_NE(std::string::npos,
              result.Err.find("libvarkui.so oder ein Verzeichnis darüber ist für andere beschreibbar"))
        << result.Err;
    EXPECT_FALSE(fs::exists(Pdf()));
}

TEST_F(OpenDirectory, TheProgramThatDrawsPagesIsNotRun)
{
    LayOpen("rs-pages");
    const Result result = Susa({"--pdf", Pdf()});
    EXPECT_NE(0, result.ExitCode);
    EXPECT_NE(
        std::string::npos,
        result.Err.find("rs-pages neben librs.so oder ein Verzeichnis darüber ist für andere beschreibbar."))
        << result.Err;
    EXPECT_FALSE(fs::exists(Pdf()));
}

TEST_F(OpenDirectory, TheProgramThatPrintsIsNotRun)
{
    LayOpen("rs-print");
    const Result result = Susa({"--drucken"});
    EXPECT_NE(0, result.ExitCode);
    EXPECT_NE(
        std::string::npos,
        result.Err.find("rs-print neben librs.so oder ein Verzeichnis darüber ist für andere beschreibbar."))
        << result.Err;
}

TEST_F(OpenDirectory, TheProgramThatShowsWindowsIsNotRun)
{
    if (!fs::exists(Place / "vark-ui")) GTEST_SKIP() << "vark-ui is not built";
    LayOpen("vark-ui");
    const Result result = RunVark({"kurse", "--mandant", "1", "--dialog"}, "gtk");
    EXPECT_NE(std::string::npos,
              result.Err.find("vark-ui oder ein Verzeichnis darüber ist für andere beschreibbar."))
        << result.Err;
}

TEST_F(OpenDirectory, TheDialogOfTheRatesIsNotRun)
{
    LayOpen("vark-kurse");
    const Result result = RunVark({"kurse", "--mandant", "1", "--dialog"}, "gtk");
    EXPECT_NE(0, result.ExitCode);
    EXPECT_NE(std::string::npos, result.Err.find("vark-kurse")) << result.Err;
}

// Books that say they are on a server, and a part for it that the loader does not take.
TEST_F(OpenDirectory, WhyThePartForServersIsNotLoadedIsToldInGerman)
{
    const fs::path part = Place / "libwbtrv32-server.so";
    std::string bytes = ReadFile(part);
    const size_t needed = bytes.find("libpq.so.5");
    ASSERT_NE(std::string::npos, needed);
    fs::remove(Config / "DB" / "books.mdb");
    WriteFile(Config / "DB" / "books.server", "host=/nirgends dbname=buecher\nbuecher\n");
    const auto said = [this] { return RunVark({"mandanten"}).Err; };

    bytes.replace(needed, 10, "libpq.so.x");
    fs::remove(part);
    WriteFile(part, bytes);
    EXPECT_NE(std::string::npos,
              said().find("wbtrv32: libwbtrv32-server.so: läßt sich nicht laden, weil libpq.so.x fehlt\n"))
        << said();
    WriteFile(part, "kein Programm");
    EXPECT_NE(std::string::npos, said().find("wbtrv32: libwbtrv32-server.so: läßt sich nicht laden ("))
        << said();
    fs::remove(part);
    EXPECT_NE(std::string::npos,
              said().find("wbtrv32: libwbtrv32-server.so: fehlt, oder andere dürfen hineinschreiben\n"))
        << said();
}
