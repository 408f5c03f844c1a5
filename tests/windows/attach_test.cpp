// What happens when a host loads the library: where it looks for the books and the record manager, and how it
// brings up the record manager's process, told by a stand-in that writes down how it was started.
#include "tests/windows/wine.h"

#include <charconv>
#include <thread>

using namespace tests;
namespace fs = std::filesystem;

namespace {

constexpr char settings[] =
    "'HKLM\\SOFTWARE\\Btrieve Technologies\\Microkernel Workstation Engine\\Version  6.15\\Settings'";
constexpr char version[] =
    "'HKLM\\SOFTWARE\\Btrieve Technologies\\Microkernel Workstation Engine\\Version  6.15'";

// An installation with the data in "DB", as the host's own directory.
struct Attach : OnWindows {
    void SetUp() override
    {
        OnWindows::SetUp();
        fs::create_directories(Directory / "config");
        fs::create_directories(Directory / "X/DB");
        fs::copy_file(Built("VARK40.dll"), Directory / "VARK40.dll");
        Run("reg", std::string("delete ") + settings + " /f");
    }

    void Configure(const std::string &tolka, const std::string &vark = "") const
    {
        if (!tolka.empty()) PutText(Directory / "config/tolka.ini", "[TOLKA]\r\n" + tolka + "\r\n");
        if (!vark.empty()) PutText(Directory / "config/vark.ini", "[VARK]\r\n" + vark + "\r\n");
    }
    std::string Path(const char *name) const { return ForWindows(Directory / name); }

    void InstallRecordManager(const char *where) const
    {
        fs::create_directories(Directory / where);
        fs::copy_file(Built("stand_ins/WBTRV32.dll"), Directory / where / "WBTRV32.DLL");
    }
    // A DLL of the right name that is no record manager.
    void InstallOther(const char *where) const
    {
        fs::create_directories(Directory / where);
        fs::copy_file(Built("stand_ins/rs_cdecl.dll"), Directory / where / "WBTRV32.DLL");
    }
    void InstallEngine(const char *mode) const
    {
        fs::copy_file(Built("stand_ins/w32mkde.exe"), Directory / "X/w32mkde.exe");
        if (*mode != 0) PutText(Directory / "X/engine.mode", mode);
    }

    // What the visitor prints behind `name`.
    int Told(const std::string &output, const std::string &name) const
    {
        const size_t at = output.find(name + " ");
        int number = 4711;
        if (at != std::string::npos)
            std::from_chars(output.data() + at + name.size() + 1, output.data() + output.size(), number);
        return number;
    }
    // Into a file: a pipe would be held open by an engine that is started and stays.
    std::string Visit(const std::string &how = "") const
    {
        const std::string environment = "VARK_CONFIG_DIR='" + Path("config") + "'";
        return RunToEnd(Built("stand_ins/visitor.exe"), how, environment).Output;
    }
    int State() const { return Told(Visit(), "state"); }

    void SetNumber(const char *name, unsigned number) const
    {
        Run("reg", std::string("add ") + settings + " /v '" + name + "' /t REG_DWORD /d " +
                       std::to_string(number) + " /f");
    }
    // A value and its type as the registry's own program shows them: "REG_SZ 0"; empty where there is none.
    std::string Setting(const std::string &name) const
    {
        const std::string output = Run("reg", std::string("query ") + settings + " /v '" + name + "'");
        const size_t at = output.find("    " + name + "    ");
        if (at == std::string::npos) return "";
        std::string value = output.substr(at + name.size() + 8, output.find('\n', at) - at - name.size() - 8);
        const size_t between = value.find("    ");
        return between == std::string::npos ? value : value.replace(between, 4, " ");
    }
    bool HasSettings() const
    {
        return Run("reg", std::string("query ") + settings).find("HKEY_LOCAL_MACHINE") != std::string::npos;
    }
    // The start without arguments is not waited for by anybody.
    std::string Log(ptrdiff_t starts) const
    {
        const auto log = [this] { return TextOf(Directory / "X/engine.log"); };
        WaitUntil([&] {
            const std::string text = log();
            return std::count(text.begin(), text.end(), '\n') >= starts;
        });
        return log();
    }
};

} // namespace

TEST_F(Attach, WithoutADataPathTheStateTellsSoOnEveryThread)
{
    const std::string output = Visit();
    EXPECT_EQ(-36, Told(output, "state"));
    EXPECT_EQ(-36, Told(output, "thread"));
    EXPECT_EQ(1, Told(output, "freed"));
}

TEST_F(Attach, WithoutARecordManagerTheStateIsAFailureOfTheEngine)
{
    Configure("Pfad32=" + Path("X/DB"));
    EXPECT_EQ(-3, State());
}

TEST_F(Attach, WithARecordManagerBesideTheDataTheLibraryIsReady)
{
    Configure("Pfad32=" + Path("X/DB"));
    InstallRecordManager("X");
    const std::string output = Visit();
    EXPECT_EQ(1, Told(output, "state"));
    EXPECT_EQ(1, Told(output, "thread"));
    EXPECT_EQ(1, Told(output, "manager"));
    EXPECT_EQ(1, Told(output, "freed"));
    EXPECT_EQ(1, Told(output, "kept")) << "it has tables open, which are its own to close";
}

TEST_F(Attach, PartsThatAreLoadedSeeHowFarTheLibraryIs)
{
    Configure("Pfad32=" + Path("X/DB"));
    InstallRecordManager("X");
    fs::copy_file(Built("stand_ins/rs_sheets_stdcall.dll"), Directory / "rs.dll");
    const std::string output = Visit();
    EXPECT_EQ(-3, Told(output, "before records"));
    EXPECT_EQ(-42, Told(output, "before reports"));
    EXPECT_EQ(1, Told(output, "state"));
}

TEST_F(Attach, OneTrailingBackslashOfTheDataPathIsCut)
{
    Configure("Pfad32=" + Path("X/DB") + "\\");
    InstallRecordManager("X");
    EXPECT_EQ(1, State());
}

TEST_F(Attach, OnlyOneTrailingBackslashIsCut)
{
    // What is left ends in one, and the engine's file loses that and the letter before it.
    Configure("Pfad32=" + Path("X/DB") + "\\\\");
    InstallRecordManager("X");
    InstallEngine("");
    fs::rename(Directory / "X/w32mkde.exe", Directory / "X/Dw32mkde.exe");
    SetNumber("Max Files", 40);
    EXPECT_EQ(1, State());
    EXPECT_EQ("start [] hidden\n", Log(1));
}

TEST_F(Attach, DataPathFor32BitsGoesBeforeTheOtherOne)
{
    Configure("Pfad=" + Path("Y/DB") + "\r\nPfad32=" + Path("X/DB"));
    InstallRecordManager("X");
    EXPECT_EQ(1, State());
}

TEST_F(Attach, OtherDataPathIsTakenNext)
{
    Configure("Pfad=" + Path("X/DB"), "Pfad=" + Path("Y/DB"));
    InstallRecordManager("X");
    EXPECT_EQ(1, State());
}

TEST_F(Attach, DataPathOfTheLibrarysOwnFileIsTakenLast)
{
    Configure("", "Pfad=" + Path("X/DB"));
    InstallRecordManager("X");
    EXPECT_EQ(1, State());
}

TEST_F(Attach, WithoutADirectoryOfItsOwnOnlyTheCandidateBesideTheDataIsTried)
{
    Configure("Pfad32=" + Path("X/DB"));
    InstallRecordManager("dll");
    EXPECT_EQ(-3, State());
}

TEST_F(Attach, DirectoryOfTheIniFileIsTriedNext)
{
    Configure("Pfad32=" + Path("X/DB"), "DLLPfad=" + Path("dll"));
    InstallRecordManager("dll");
    EXPECT_EQ(1, State());
}

TEST_F(Attach, DirectoryOfTheIniFileMayEndInABackslash)
{
    Configure("Pfad32=" + Path("X/DB"), "DLLPfad=" + Path("dll") + "\\");
    InstallRecordManager("dll");
    EXPECT_EQ(1, State());
}

TEST_F(Attach, CandidateWithoutTheEntryEndsTheSearchAndIsLetGo)
{
    Configure("Pfad32=" + Path("X/DB"), "DLLPfad=" + Path("dll"));
    InstallOther("X");
    InstallRecordManager("dll");
    const std::string output = Visit();
    EXPECT_EQ(-3, Told(output, "state"));
    EXPECT_EQ(0, Told(output, "manager"));
}

TEST_F(Attach, NewEngineIsRegisteredEndedAndStartedAgainHidden)
{
    Configure("Pfad32=" + Path("X/DB"));
    InstallRecordManager("X");
    InstallEngine("write");
    const std::string output = Visit("watch");
    EXPECT_EQ(1, Told(output, "state"));
    EXPECT_GE(Told(output, "ms"), 3000);
    EXPECT_EQ(0, Told(output, "ended")) << "it is told to end as one that has done its work";
    // The priority is the normal one, 0x20, whatever the host's is.
    EXPECT_EQ("start [-reginstall] shown priority 32 inherits\nstart [] hidden priority 32 apart\n", Log(2));
    EXPECT_EQ("REG_DWORD 0x28", Setting("Max Files"));
    EXPECT_EQ("REG_DWORD 0x78", Setting("Max Handles"));
    EXPECT_EQ("REG_SZ 0", Setting("Startup Logo"));
}

TEST_F(Attach, NewEngineMayWriteBelowItsSettings)
{
    Configure("Pfad32=" + Path("X/DB"));
    InstallRecordManager("X");
    InstallEngine("below");
    const std::string output = Visit();
    EXPECT_EQ(1, Told(output, "state"));
    EXPECT_GE(Told(output, "ms"), 3000);
    EXPECT_LT(Told(output, "ms"), 25000);
    EXPECT_EQ("start [-reginstall] shown\nstart [] hidden\n", Log(2));
    EXPECT_EQ("REG_DWORD 0x28", Setting("Max Files"));
    EXPECT_EQ("REG_DWORD 0x78", Setting("Max Handles"));
}

TEST_F(Attach, NewEngineThatEndsAtOnceIsNotWaitedFor)
{
    Configure("Pfad32=" + Path("X/DB"));
    InstallRecordManager("X");
    InstallEngine("");
    const std::string output = Visit();
    EXPECT_EQ(1, Told(output, "state"));
    EXPECT_LT(Told(output, "ms"), 25000);
    EXPECT_EQ("start [-reginstall] shown\nstart [] hidden\n", Log(2));
    EXPECT_EQ("REG_DWORD 0x28", Setting("Max Files"));
}

TEST_F(Attach, NewEngineThatWritesNothingIsEndedAfterHalfAMinute)
{
    Configure("Pfad32=" + Path("X/DB"));
    InstallRecordManager("X");
    InstallEngine("stay");
    const std::string output = Visit();
    EXPECT_EQ(1, Told(output, "state"));
    EXPECT_GE(Told(output, "ms"), 30000);
    EXPECT_LT(Told(output, "ms"), 80000);
    EXPECT_EQ("start [-reginstall] shown\nstart [] hidden\n", Log(2));
    EXPECT_EQ("REG_DWORD 0x28", Setting("Max Files"));
}

TEST_F(Attach, WithoutTheEnginesFileItsSettingsAreMadeAllTheSame)
{
    Configure("Pfad32=" + Path("X/DB"));
    InstallRecordManager("X");
    EXPECT_EQ(1, State());
    EXPECT_EQ("REG_DWORD 0x28", Setting("Max Files"));
    EXPECT_EQ("REG_DWORD 0x78", Setting("Max Handles"));
    EXPECT_EQ("REG_SZ 0", Setting("Startup Logo"));
}

TEST_F(Attach, SettingsThatCannotBeOpenedAreNoFailure)
{
    Configure("Pfad32=" + Path("X/DB"));
    InstallRecordManager("X");
    InstallEngine("");
    Run("reg", std::string("delete ") + version + " /f");
    Run(Built("stand_ins/volatile_settings.exe"));
    EXPECT_EQ(1, State());
    EXPECT_FALSE(HasSettings());
    EXPECT_EQ("start [] hidden\n", Log(1));
    Run("reg", std::string("delete ") + version + " /f");
}

TEST_F(Attach, RunningEngineIsLeftAlone)
{
    Configure("Pfad32=" + Path("X/DB"));
    InstallRecordManager("X");
    InstallEngine("window");
    std::thread running([this] { Run("'" + (Directory / "X/w32mkde.exe").string() + "'", "running"); });
    EXPECT_TRUE(WaitUntil([this] { return fs::exists(Directory / "X/engine.window"); }));
    EXPECT_EQ(1, State());
    EXPECT_FALSE(HasSettings());
    SetNumber("Max Files", 10);
    EXPECT_EQ(1, State());
    EXPECT_EQ("REG_DWORD 0xa", Setting("Max Files"));
    EXPECT_EQ("", Setting("Startup Logo"));
    EXPECT_EQ("start [running] shown\n", TextOf(Directory / "X/engine.log")) << "nor is it started";
    fs::remove(Directory / "X/engine.mode");
    running.join();
}

TEST_F(Attach, StartedEngineIsNotWaitedForAndRunsForTheNextHost)
{
    Configure("Pfad32=" + Path("X/DB"));
    InstallRecordManager("X");
    InstallEngine("window");
    SetNumber("Max Files", 40);
    const std::string output = Visit();
    EXPECT_EQ(1, Told(output, "state"));
    EXPECT_LT(Told(output, "ms"), 25000);
    EXPECT_TRUE(WaitUntil([this] { return fs::exists(Directory / "X/engine.window"); }));
    EXPECT_EQ(1, State());
    EXPECT_EQ("start [] hidden\n", TextOf(Directory / "X/engine.log"));
    fs::remove(Directory / "X/engine.mode");
    EXPECT_TRUE(WaitUntil([this] { return !fs::exists(Directory / "X/engine.window"); }));
}

TEST_F(Attach, TooFewFilesAreRaised)
{
    Configure("Pfad32=" + Path("X/DB"));
    InstallRecordManager("X");
    InstallEngine("");
    SetNumber("Max Files", 39);
    SetNumber("Max Handles", 60);
    EXPECT_EQ(1, State());
    EXPECT_EQ("REG_DWORD 0x28", Setting("Max Files"));
    EXPECT_EQ("REG_DWORD 0x78", Setting("Max Handles"));
    EXPECT_EQ("REG_SZ 0", Setting("Startup Logo"));
    EXPECT_EQ("start [] hidden\n", Log(1));
}

TEST_F(Attach, EnoughFilesAreLeftAsTheyAre)
{
    Configure("Pfad32=" + Path("X/DB"));
    InstallRecordManager("X");
    SetNumber("Max Files", 40);
    SetNumber("Max Handles", 60);
    EXPECT_EQ(1, State());
    EXPECT_EQ("REG_DWORD 0x28", Setting("Max Files"));
    EXPECT_EQ("REG_DWORD 0x3c", Setting("Max Handles"));
    EXPECT_EQ("REG_SZ 0", Setting("Startup Logo"));
}

TEST_F(Attach, SettingsThatTellNoNumberOfFilesAreLeftWithoutOne)
{
    Configure("Pfad32=" + Path("X/DB"));
    InstallRecordManager("X");
    SetNumber("Max Handles", 60);
    EXPECT_EQ(1, State());
    EXPECT_EQ("", Setting("Max Files"));
    EXPECT_EQ("REG_DWORD 0x3c", Setting("Max Handles"));
    EXPECT_EQ("REG_SZ 0", Setting("Startup Logo"));
}

TEST_F(Attach, NumberOfFilesThatIsATextIsLeftAsItIs)
{
    Configure("Pfad32=" + Path("X/DB"));
    InstallRecordManager("X");
    Run("reg", std::string("add ") + settings + " /v 'Max Files' /t REG_SZ /d sixteen /f");
    EXPECT_EQ(1, State());
    EXPECT_EQ("REG_SZ sixteen", Setting("Max Files"));
    EXPECT_EQ("", Setting("Max Handles"));
    EXPECT_EQ("REG_SZ 0", Setting("Startup Logo"));
}
