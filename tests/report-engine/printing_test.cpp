// Printing: through a scheduler of CUPS that the test runs for itself, with a queue that keeps what it
// prints, and into files. The scheduler's parts are left out where it is not installed.
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "report_support.h"
#include "window-system/include/varkui.h"

using namespace reports;

namespace {

constexpr const char *scheduler = "/usr/sbin/cupsd";

bool Eventually(const std::function<bool()> &holds)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (std::chrono::steady_clock::now() < end) {
        if (holds()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return holds();
}

struct Printing : testing::Test {
    Directory directory;
    pid_t cups = -1;

    void SetUp() override
    {
        setenv("VARK_CONFIG_DIR", directory.Path.c_str(), 1);
        setenv("VARK_HEUTE", "31.03.1998", 1);
        setenv("HOME", directory.Path.c_str(), 1);
        setenv("CUPS_SERVER", directory.At("socket").c_str(), 1);
        setenv("VARK_TEST_MARK", directory.Path.c_str(), 1);
    }

    void TearDown() override
    {
        if (cups < 0) return;
        kill(cups, SIGKILL);
        waitpid(cups, nullptr, 0);
    }

    // Runs a scheduler with the queue "Ablage", whose printer copies each job into printed/.
    void StartScheduler(const std::string &queue, const std::string &defaults = "<DefaultPrinter Ablage>",
                        const std::string &stateOf = "Idle")
    {
        const std::string at = directory.Path.string();
        chmod(at.c_str(), 0755);
        for (const char *name : {"root", "cache", "state", "spool", "spool/tmp", "printed", "bin"}) {
            std::filesystem::create_directory(directory.At(name));
        }
        std::filesystem::permissions(directory.At("printed"), std::filesystem::perms::all);
        std::filesystem::create_directory(directory.At("bin/backend"));
        for (const char *name : {"cgi-bin", "daemon", "driver", "filter", "monitor", "notifier"}) {
            std::filesystem::create_symlink(std::string("/usr/lib/cups/") + name,
                                            directory.At("bin/") + name);
        }
        chmod(directory
                  .Write("bin/backend/ablage", "#!/bin/sh\n[ $# = 0 ] && exit 0\necho \"$4 $5\" >" + at +
                                                   "/printed/$1.asked\ncat \"$6\" >" + at +
                                                   "/printed/.$1 && mv " + at + "/printed/.$1 " + at +
                                                   "/printed/$1.pdf\n")
                  .c_str(),
              0755);
        directory.Write("cupsd.conf",
                        "Listen " + at +
                            "/socket\nBrowsing No\nDefaultAuthType None\n"
                            "<Location />\nOrder allow,deny\nAllow all\n</Location>\n"
                            "<Policy default>\n<Limit All>\nOrder allow,deny\nAllow all\n</Limit>\n"
                            "</Policy>\n");
        directory.Write("cups-files.conf", "ServerRoot " + at + "/root\nCacheDir " + at +
                                               "/cache\nStateDir " + at + "/state\nRequestRoot " + at +
                                               "/spool\nTempDir " + at + "/spool/tmp\nServerBin " + at +
                                               "/bin\nAccessLog " + at + "/access\nErrorLog " + at +
                                               "/error\nPageLog " + at + "/page\n");
        directory.Write("root/printers.conf", defaults + "\nDeviceURI ablage:/hier\nState " + stateOf +
                                                  "\nShared No\n" + queue + "\n</Printer>\n");
        cups = fork();
        if (cups == 0) {
            execl(scheduler, scheduler, "-f", "-c", (at + "/cupsd.conf").c_str(), "-s",
                  (at + "/cups-files.conf").c_str(), nullptr);
            _exit(127);
        }
        ASSERT_TRUE(Eventually([&] { return access(directory.At("socket").c_str(), W_OK) == 0; }))
            << ReadFile(directory.At("error"));
    }

    static RSWindow MakeView(int32_t &report)
    {
        report = OpenShipped("or_slist.rs", susaId);
        AddSusaHeader(report);
        AddSusaLine(report, {.Konto = "1000", .Name = "Kasse", .KumSoll = 123456});
        return OpenView(report);
    }

    // What is told when the view is not printed.
    static std::string Refusal()
    {
        int32_t report = 0;
        RSWindow view = MakeView(report);
        std::string said = Errors([&] { EXPECT_EQ(RSPrintView(view, 0), 0); });
        RSCloseReport(report);
        return said;
    }

    static void PrintOne()
    {
        int32_t report = 0;
        RSWindow view = MakeView(report);
        EXPECT_EQ(RSPrintView(view, 0), 1);
        RSCloseReport(report);
    }

    void Set(const std::string &printer) const
    {
        directory.Write("vark.ini", "[RS]\nDrucker=" + printer + "\n");
    }

    void ExpectPage(const std::string &file) const
    {
        const auto shown = PagesOf(directory.At(file));
        ASSERT_EQ(shown.size(), 1U) << file;
        EXPECT_NE(shown[0].find("Kasse"), std::string::npos) << file;
    }
};

struct PrintingOnPaper : Printing {
    void SetUp() override
    {
        if (access(scheduler, X_OK) != 0) GTEST_SKIP() << "CUPS is not installed";
        Printing::SetUp();
    }
};

} // namespace

TEST_F(PrintingOnPaper, GoesToTheDefaultPrinter)
{
    StartScheduler("Accepting Yes");
    PrintOne();
    ASSERT_TRUE(Eventually([&] { return access(directory.At("printed/1.pdf").c_str(), R_OK) == 0; }))
        << ReadFile(directory.At("error"));
    ExpectPage("printed/1.pdf");
}

TEST_F(PrintingOnPaper, GoesToThePrinterThatIsNamed)
{
    StartScheduler("Accepting Yes", "<Printer Ablage>");
    Set("Ablage");
    PrintOne();
    EXPECT_TRUE(Eventually([&] { return access(directory.At("printed/1.pdf").c_str(), R_OK) == 0; }));
    Set("Gibtsnicht");
    EXPECT_NE(Refusal().find("Den Drucker Gibtsnicht gibt es nicht."), std::string::npos);
}

TEST_F(PrintingOnPaper, HasTheCopiesAndThePaperThatThePersonAskedFor)
{
    StartScheduler("Accepting Yes");
    setenv("VARK_UI_LOG", directory.At("log").c_str(), 1);
    setenv("VARK_UI",
           ("script:" + directory.Write("script", "key Ctrl+p\ndialog 141\nexpect row 301 Ablage\n"
                                                  "text 306 3\nselect 307 \"A5\"\npress 1\n"
                                                  "expect text 115 Der Bericht wurde gedruckt auf Ablage.\n"
                                                  "close\n"))
               .c_str(),
           1);
    int32_t report = 0;
    auto *view = static_cast<HWND>(MakeView(report));
    MSG message;
    while (IsWindow(view) != 0 && GetMessageA(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
    EXPECT_EQ(ReadFile(directory.At("log")).find("script:"), std::string::npos)
        << ReadFile(directory.At("log"));
    ASSERT_TRUE(Eventually([&] { return access(directory.At("printed/1.pdf").c_str(), R_OK) == 0; }))
        << ReadFile(directory.At("error"));
    const std::string asked = ReadFile(directory.At("printed/1.asked"));
    EXPECT_EQ(asked.substr(0, 2), "3 ") << asked;
    EXPECT_NE(asked.find("media=iso_a5_148x210mm"), std::string::npos) << asked;
    ExpectPage("printed/1.pdf");
}

TEST_F(PrintingOnPaper, FailsWithoutADefaultPrinter)
{
    StartScheduler("Accepting Yes", "<Printer Ablage>");
    EXPECT_NE(Refusal().find("Es ist kein Drucker eingerichtet."), std::string::npos);
}

TEST_F(PrintingOnPaper, FailsWhereThePrinterTakesNoJobs)
{
    StartScheduler("Accepting No");
    EXPECT_NE(Refusal().find("Der Drucker nimmt keinen Auftrag an."), std::string::npos);
    EXPECT_TRUE(std::filesystem::is_empty(directory.At("printed")));
}

TEST_F(PrintingOnPaper, WaitsInTheQueueOfAPrinterThatStandsStill)
{
    StartScheduler("Accepting Yes", "<DefaultPrinter Ablage>", "Stopped");
    EXPECT_EQ(Errors(PrintOne),
              "MERIDA: Der Drucker Ablage ist angehalten. Der Bericht wird gedruckt, sobald er "
              "weiterläuft.\n");
    EXPECT_TRUE(std::filesystem::is_empty(directory.At("printed")));
    ASSERT_EQ(system(("cupsenable -h " + directory.At("socket") + " Ablage").c_str()), 0);
    EXPECT_TRUE(Eventually([&] { return access(directory.At("printed/1.pdf").c_str(), R_OK) == 0; }));
    ExpectPage("printed/1.pdf");
}

TEST_F(PrintingOnPaper, FailsWhenThePrinterGoesAwayMeanwhile)
{
    StartScheduler("Accepting Yes");
    kill(cups, SIGSTOP); // it takes connections still, and answers no more
    std::string said;
    std::thread host([&] { said = Refusal(); });
    const auto isAsking = [&] { return RunsMarked("rs-print", directory.Path.string()); };
    EXPECT_TRUE(Eventually(isAsking));
    kill(cups, SIGKILL);
    std::filesystem::remove(directory.At("socket"));
    host.join();
    EXPECT_NE(said.find("Nicht gedruckt: "), std::string::npos) << said;
    EXPECT_NE(said.find("MERIDA: Der Bericht konnte nicht gedruckt werden"), std::string::npos) << said;
}

TEST_F(Printing, FailsWhereNothingPrints)
{
    const std::string said = Refusal();
    EXPECT_NE(said.find("librs: "), std::string::npos) << said;
    EXPECT_NE(said.find("Drucker"), std::string::npos) << said;
    EXPECT_NE(said.find("MERIDA: Der Bericht konnte nicht gedruckt werden"), std::string::npos) << said;
}

TEST_F(Printing, IntoAFileFillsInReportDayAndNumber)
{
    Set("datei:" + directory.At("{bericht} {datum} ({nummer}).pdf"));
    PrintOne();
    PrintOne();
    EXPECT_EQ(directory.Files(),
              (std::vector<std::string>{"Summen- und Saldenliste 1998-03-31 (1).pdf",
                                        "Summen- und Saldenliste 1998-03-31 (2).pdf", "vark.ini"}));
    ExpectPage("Summen- und Saldenliste 1998-03-31 (2).pdf");
}

TEST_F(Printing, IntoAFileWithoutNumberReplacesIt)
{
    Set("datei:~/druck");
    directory.Write("druck.pdf", "alt");
    PrintOne();
    ExpectPage("druck.pdf");
    EXPECT_EQ(directory.Files(), (std::vector<std::string>{"druck.pdf", "vark.ini"}));
}

TEST_F(Printing, IntoFilesAtOnceGivesEachItsNumber)
{
    Set("datei:" + directory.At("{nummer}"));
    std::vector<std::thread> hosts;
    constexpr int count = 4;
    hosts.reserve(count);
    for (int i = 0; i < count; ++i) {
        hosts.emplace_back(PrintOne);
    }
    for (std::thread &host : hosts) {
        host.join();
    }
    EXPECT_EQ(directory.Files(), (std::vector<std::string>{"1.pdf", "2.pdf", "3.pdf", "4.pdf", "vark.ini"}));
}

TEST_F(Printing, IntoADirectoryThatIsMissingFails)
{
    Set("datei:" + directory.At("fehlt/a.pdf"));
    EXPECT_NE(Refusal().find("Das Verzeichnis oder die Datei gibt es nicht."), std::string::npos);
    EXPECT_EQ(directory.Files(), (std::vector<std::string>{"vark.ini"}));
}

TEST_F(Printing, IntoAPathThatDoesNotFitFails)
{
    Set("datei:/" + std::string(4050, 'x') + "{bericht}{bericht}");
    EXPECT_NE(Refusal().find("Der Name ist zu lang."), std::string::npos);
}
