// Each case runs in a process of its own: what the library finds at its start is final.
#include "src/frame/lifecycle.h"

#include "src/frame/engine_calls.h"
#include "src/frame/record_store.h"
#include "src/frame/report_engine.h"
#include "tests/support/alloc_faults.h"
#include "tests/support/books.h"
#include "tests/window-system/front_end_setup.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace vark;
using namespace vark::test;
namespace fs = std::filesystem;

namespace {

struct Lifecycle : testing::Test {
    FrontEndSetup frontEnd;

    void SetUp() override { setenv("VARK_CONFIG_DIR", frontEnd.Directory.c_str(), 1); }

    void Ini(const char *name, const std::string &content) const
    {
        std::ofstream(frontEnd.Directory / name) << content;
    }
};

} // namespace

TEST_F(Lifecycle, WithoutADataPathEveryExportAnswersMinus36AndShowsNothing)
{
    EXPECT_EQ(-36, VARK_Status());
    EXPECT_EQ(-36, VARK_ExistiertKonto(1, "1200", 1));
    EXPECT_EQ(-36, VARK_HoleSaldo(1, "1200", 1, 1, 1, nullptr));
    ReportParams params{};
    params.ViewResult = 1;
    EXPECT_EQ(nullptr, VARK_Kontenplan(1, nullptr, &params));
    EXPECT_EQ(nullptr, VARK_Kontenplan(1, nullptr, nullptr));
    EXPECT_EQ(0u, uint32_t{params.ViewResult}) << "no view is told of, whatever stood there";
    VARK_SchliesseDB();
    EXPECT_EQ("", frontEnd.Log());
}

TEST_F(Lifecycle, FailureIsFinal)
{
    EXPECT_EQ(-36, VARK_Status());
    Ini("tolka.ini", "[TOLKA]\nPfad32=/x/DB\n");
    EXPECT_EQ(-36, VARK_Status());
}

TEST_F(Lifecycle, WithoutARecordManagerTheStateIsMinus3)
{
    // A candidate of the right name that is no record manager ends the search.
    fs::copy_file(fs::path(STAND_INS) / "without_entry/libwbtrv32.so", frontEnd.Directory / "libwbtrv32.so");
    Ini("tolka.ini", "[TOLKA]\nPfad32=" + (frontEnd.Directory / "DB").string() + "\n");
    EXPECT_EQ(-3, VARK_Status());
    EXPECT_EQ(-3, VARK_ExistiertKonto(1, "1200", 1));
    EXPECT_EQ("", frontEnd.Log());
}

TEST_F(Lifecycle, TheRecordManagerIsLookedForInTheDirectoryOfTheOwnIniFile)
{
    // One without its entry, which ends the search: so it was looked at.
    const fs::path other = frontEnd.Directory / "engine";
    fs::create_directory(other);
    fs::copy_file(fs::path(STAND_INS) / "without_entry/libwbtrv32.so", other / "libwbtrv32.so");
    Ini("vark.ini", "[VARK]\nPfad=/c/X/DB\nDLLPfad=" + other.string() + "\n");
    EXPECT_EQ(-3, VARK_Status());
    EXPECT_EQ(other.string(), DllPath);
}

TEST_F(Lifecycle, WithoutMemoryForAContextAnExportAnswersMinus42)
{
    Ini("vark.ini", "[VARK]\nPfad=/c/DB\n");
    ASSERT_EQ(1, VARK_Status());
    FailAllocation(1);
    EXPECT_EQ(-42, VARK_ExistiertKonto(1, "1200", 1));
    FailAllocation(1);
    EXPECT_EQ(nullptr, VARK_Kontenplan(1, nullptr, nullptr));
    FailAllocation(1);
    VARK_SchliesseDB();
    StopAllocationFaults();
    EXPECT_EQ(nullptr, ThreadSlotValue());
    EXPECT_EQ(1, VARK_Status());
    EXPECT_EQ("", frontEnd.Log());
}

TEST_F(Lifecycle, WithoutAThreadSlotTheStateIsMinus42)
{
    std::vector<pthread_key_t> taken;
    pthread_key_t key;
    while (pthread_key_create(&key, nullptr) == 0) {
        taken.push_back(key);
    }
    Ini("tolka.ini", "[TOLKA]\nPfad32=/x/DB\n");
    EXPECT_EQ(-42, VARK_Status());
    EXPECT_EQ(-42, VARK_ExistiertKonto(1, "1200", 1));
    VARK_SchliesseDB();
    for (const pthread_key_t used : taken) {
        pthread_key_delete(used);
    }
}

TEST_F(Lifecycle, Path32WinsOverPathAndTheOtherFile)
{
    Ini("tolka.ini", "[TOLKA]\nPfad32=/a/DB\nPfad=/b/DB\n");
    Ini("vark.ini", "[VARK]\nPfad=/c/DB\n");
    EXPECT_EQ(1, VARK_Status());
    EXPECT_STREQ("/a/DB", DataPath);
}

TEST_F(Lifecycle, PathOfTheAccountingApplicationWinsOverOurOwn)
{
    Ini("tolka.ini", "[TOLKA]\nPfad=/b/DB\n");
    Ini("vark.ini", "[VARK]\nPfad=/c/DB\n");
    EXPECT_EQ(1, VARK_Status());
    EXPECT_STREQ("/b/DB", DataPath);
}

TEST_F(Lifecycle, OwnPathIsTheLastResort)
{
    Ini("tolka.ini", "[TOLKA]\nPfad32=\n");
    Ini("vark.ini", "[VARK]\nPfad=/c/DB\n");
    EXPECT_EQ(1, VARK_Status());
    EXPECT_STREQ("/c/DB", DataPath);
}

TEST_F(Lifecycle, OneSeparatorAtTheEndOfTheDataPathIsCut)
{
    Ini("vark.ini", "[VARK]\nPfad=/c/DB//\n");
    EXPECT_EQ(1, VARK_Status());
    EXPECT_STREQ("/c/DB/", DataPath);
}

TEST_F(Lifecycle, BackslashAtTheEndOfTheDataPathIsCutAsWell)
{
    Ini("vark.ini", "[VARK]\nPfad=/c/DB\\\n");
    EXPECT_EQ(1, VARK_Status());
    EXPECT_STREQ("/c/DB", DataPath);
}

TEST_F(Lifecycle, ReportPathEndsInASeparator)
{
    Ini("vark.ini", "[VARK]\nPfad=/c/DB\nReportPfad=/R\n");
    Ini("tolka.ini", "[TOLKA]\nReportPfad=/other\n");
    EXPECT_EQ(1, VARK_Status());
    EXPECT_STREQ("/R/", ReportPath);
}

TEST_F(Lifecycle, LongestReportPathHasRoomForItsSeparator)
{
    const std::string path = "/" + std::string(maxPath - 3, 'r');
    Ini("vark.ini", "[VARK]\nPfad=/c/DB\nReportPfad=" + path + "\n");
    EXPECT_EQ(1, VARK_Status());
    EXPECT_EQ(path + "/", ReportPath);
}

TEST_F(Lifecycle, ReportPathOfTheAccountingApplicationIsTakenNext)
{
    Ini("vark.ini", "[VARK]\nPfad=/c/DB\n");
    Ini("tolka.ini", "[TOLKA]\nReportPfad=/other/\n");
    EXPECT_EQ(1, VARK_Status());
    EXPECT_STREQ("/other/", ReportPath);
}

TEST_F(Lifecycle, WithoutAReportPathReportsLieAboveTheData)
{
    Ini("vark.ini", "[VARK]\nPfad=/X/DB\n");
    EXPECT_EQ(1, VARK_Status());
    EXPECT_STREQ("/X/", ReportPath);
}

TEST_F(Lifecycle, PathsOfAnyLengthAreHeldWithoutOverrun)
{
    Ini("vark.ini", "[VARK]\nPfad=/" + std::string(5000, 'p') + "\nReportPfad=" + std::string(5000, 'r') +
                        "\nDLLPfad=" + std::string(5000, 'd') + "\n");
    EXPECT_EQ(1, VARK_Status());
    EXPECT_EQ(maxPath - 1, std::string(DataPath).size());
    EXPECT_EQ(maxPath - 1, std::string(ReportPath).size());
    EXPECT_EQ(-3, VARK_ExistiertKonto(1, "1200", 1)) << "what does not fit is a file that is not found";
}

TEST_F(Lifecycle, ShortestDataPathsDoNoHarm)
{
    Ini("vark.ini", "[VARK]\nPfad=/\n");
    EXPECT_EQ(1, VARK_Status());
    EXPECT_STREQ("", DataPath);
    EXPECT_STREQ("", ReportPath);
}

TEST_F(Lifecycle, MissingReportEngineLeavesTheLibraryReady)
{
    Ini("vark.ini", "[VARK]\nPfad=/c/DB\n");
    EXPECT_EQ(1, VARK_Status());
    EXPECT_EQ(reportEngine.ReportEngineLibrary != nullptr ? 1 : 0, reportEngine.ReportEngineBound);
}

namespace {

struct OpenBooks : testing::Test {
    Books books;

    void SetUp() override
    {
        books.AddMandant(1);
        books.Insert(1, TableSako, MakeSako("1200"));
    }
};

} // namespace

TEST_F(OpenBooks, ChildProcessStartsAfresh)
{
    ASSERT_EQ(1, VARK_ExistiertKonto(1, "1200", 1));
    const pid_t child = fork();
    if (child == 0) {
        const bool fresh = ThreadSlotValue() == nullptr;
        const bool works = VARK_ExistiertKonto(1, "1200", 1) == 1 && VARK_ExistiertKonto(1, "1300", 1) == 0;
        _exit(fresh && works ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_EQ(0, status);
    EXPECT_EQ(1, VARK_ExistiertKonto(1, "1200", 1)) << "the parent goes on with what it had";
}

TEST_F(OpenBooks, ThreadThatEndsGivesEverythingBack)
{
    for (int i = 0; i < 50; ++i) {
        std::thread([] { EXPECT_EQ(1, VARK_ExistiertKonto(1, "1200", 1)); }).join();
    }
    const auto descriptors = std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
    for (int i = 0; i < 50; ++i) {
        std::thread([] { EXPECT_EQ(1, VARK_ExistiertKonto(1, "1200", 1)); }).join();
    }
    EXPECT_EQ(descriptors, std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
}
