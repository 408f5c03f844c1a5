// Programs beside the engine that stand still: nobody waits for them without an end.
#include "report-engine/handles.h"
#include "report-engine/helper.h"
#include "report-engine/page_source.h"
#include "report_support.h"
#include "tests/support/display.h"

#include <atomic>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace rs;
using vark::test::Eventually;

namespace {

double Seconds(const std::chrono::steady_clock::time_point &since)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}

} // namespace

// It writes a letter into its descriptor and stays, as a program does that was stopped in its work.
TEST(Waits, AHelperThatFallsSilentIsEnded)
{
    longestSilence_ms = 300;
    char name[] = "host_helper";
    char one[] = "1";
    char stay[] = "stay";
    char *const arguments[] = {name, one, stay, nullptr};
    char said[64];
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(Ended::failed, RunHelper(name, arguments, nullptr, 0, said, sizeof said, nullptr, 0));
    EXPECT_GE(Seconds(begin), 0.3);
    EXPECT_LT(Seconds(begin), 30) << "and not after a minute";
    EXPECT_STREQ("", said);
}

TEST(Waits, AHelperIsEndedByThePersonWhileItStandsStill)
{
    char name[] = "host_helper";
    char one[] = "1";
    char stay[] = "stay";
    char *const arguments[] = {name, one, stay, nullptr};
    char said[64];
    int asked = 0;
    const Progress stopped = {
        [](void *context, int64_t, int64_t) { return ++*static_cast<int *>(context) < 2; }, &asked};
    EXPECT_EQ(Ended::stopped, RunHelper(name, arguments, nullptr, 0, said, sizeof said, &stopped, 0));
    EXPECT_EQ(2, asked);
}

TEST(Waits, AProgramThatDrawsNoPageIsLeft)
{
    longestAnswer_ms = 200;
    int sockets[2];
    ASSERT_EQ(0, socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, sockets));
    char path[] = "or_test.rs";
    const auto report = std::make_unique<Report>();
    report->Path = path;
    const auto view = std::make_unique<View>();
    view->Of = report.get();
    PageSource source = {sockets[0]};
    const PageRequest request = {};
    PageAnswer answer;
    int file = -1;
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_FALSE(AskForPages(source, *view, request, answer, file));
    EXPECT_LT(Seconds(begin), 15);
    EXPECT_EQ(-1, file);
    EXPECT_EQ(-1, source.Socket) << "the next one begins anew";
    close(sockets[1]);
}

namespace {

// The programs themselves, in the middle of a long report.
struct RealHelpers : testing::Test {
    reports::Directory directory;
    int32_t report = 0;

    void SetUp() override
    {
        setenv("VARK_UI", "headless", 1);
        setenv("VARK_CONFIG_DIR", directory.Path.c_str(), 1);
        setenv("HOME", directory.Path.c_str(), 1);
        setenv("VARK_TEST_MARK", directory.Path.c_str(), 1);
    }

    RSWindow MakeView(int lines)
    {
        report = reports::OpenShipped("or_slist.rs", reports::susaId);
        reports::AddSusaHeader(report);
        for (int line = 0; line < lines; ++line) {
            reports::AddSusaLine(report, {.Konto = std::to_string(10'000 + line), .KumSoll = line});
        }
        return reports::OpenView(report);
    }

    bool Stop(const char *name, const char *argument) const
    {
        return reports::StopMarked(name, directory.Path.string(), argument);
    }
    bool Runs(const char *name) const { return reports::RunsMarked(name, directory.Path.string()); }

    // What `body` says while the program of that name is stopped as soon as it runs.
    std::string WhileStopped(const char *name, const char *argument, const std::function<void()> &body)
    {
        longestSilence_ms = 3000;
        std::atomic<bool> isOver = false;
        bool wasStopped = false;
        std::thread stopping([&] {
            while (!isOver && !wasStopped) {
                wasStopped = Stop(name, argument);
            }
        });
        const auto begin = std::chrono::steady_clock::now();
        std::string said = reports::Errors(body);
        EXPECT_LT(Seconds(begin), 60) << "and not after 70 s or never";
        isOver = true;
        stopping.join();
        EXPECT_TRUE(wasStopped);
        EXPECT_TRUE(Eventually([&] { return !Runs(name); })) << "it was ended, though it stood still";
        longestSilence_ms = 70'000;
        return said;
    }
};

constexpr int manyLines = 40'000;

} // namespace

TEST_F(RealHelpers, PagesThatStandStillAreToldAndTheHostGoesOn)
{
    RSWindow view = MakeView(manyLines);
    const std::string path = directory.At("a.pdf");
    EXPECT_EQ(WhileStopped("rs-pages", "pdf", [&] { EXPECT_EQ(RSExportView(view, path.c_str()), 0); }),
              "librs: rs-pages antwortet nicht.\n");
    EXPECT_EQ(directory.Files(), std::vector<std::string>{}) << "half a file is none";
    EXPECT_EQ(RSExportView(view, directory.At("a.csv").c_str()), 1);
    RSCloseReport(report);
    view = MakeView(10);
    EXPECT_EQ(RSExportView(view, path.c_str()), 1) << "pages as well";
    RSCloseReport(report);
}

// A scheduler that takes connections and never answers keeps the program that prints.
TEST_F(RealHelpers, APrintProgramThatStandsStillIsToldAndTheHostGoesOn)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::snprintf(address.sun_path, sizeof address.sun_path, "%s", directory.At("socket").c_str());
    const int scheduler = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(0, bind(scheduler, reinterpret_cast<const sockaddr *>(&address), sizeof address));
    ASSERT_EQ(0, listen(scheduler, 8));
    setenv("CUPS_SERVER", address.sun_path, 1);
    RSWindow view = MakeView(10);
    const std::string said = WhileStopped("rs-print", "print", [&] { EXPECT_EQ(RSPrintView(view, 0), 0); });
    EXPECT_NE(said.find("MERIDA: Der Bericht konnte nicht gedruckt werden: rs-print antwortet nicht.\n"),
              std::string::npos)
        << said;
    RSCloseReport(report);
    // The box was answered, and the view closed, as nobody is there.
    view = MakeView(10);
    EXPECT_EQ(RSExportView(view, directory.At("a.pdf").c_str()), 1);
    RSCloseReport(report);
    close(scheduler);
}

// Stopped in the middle of its work, so that it cannot come to its end by itself.
TEST_F(RealHelpers, PagesOfAFileEndWithTheirHost)
{
    const pid_t host = fork();
    if (host == 0) {
        RSExportView(MakeView(manyLines), directory.At("a.pdf").c_str());
        _exit(0);
    }
    EXPECT_TRUE(
        Eventually([&] { return reports::HasWrittenMarked("rs-pages", directory.Path.string(), "pdf"); }));
    EXPECT_TRUE(Stop("rs-pages", "pdf"));
    kill(host, SIGKILL);
    waitpid(host, nullptr, 0);
    EXPECT_TRUE(Eventually([&] { return !Runs("rs-pages"); }));
}

TEST_F(RealHelpers, PagesOfAViewEndWithTheirHost)
{
    const pid_t host = fork();
    if (host == 0) {
        View *view = HoldView(MakeView(10));
        PageSource source = {-1};
        PageRequest request = {};
        request.Wish = PageWish::find;
        std::snprintf(request.Sought, sizeof request.Sought, "10003");
        PageAnswer answer;
        int file = -1;
        if (view == nullptr || !AskForPages(source, *view, request, answer, file)) _exit(1);
        for (;;) {
            pause();
        }
    }
    EXPECT_TRUE(Eventually([&] { return Runs("rs-pages"); }));
    kill(host, SIGKILL);
    int status = 0;
    waitpid(host, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status)) << "it drew no page";
    EXPECT_TRUE(Eventually([&] { return !Runs("rs-pages"); }));
}

namespace {

// What a process has used of the processor.
uint64_t Used_ns(pid_t process)
{
    const std::string told = reports::ReadFile("/proc/" + std::to_string(process) + "/schedstat");
    uint64_t used_ns = 0;
    std::from_chars(told.data(), told.data() + told.size(), used_ns);
    return used_ns;
}

// A process that shows a long report and searches it for what is not in it, each time it is told to.
struct Searching {
    int Go[2] = {};
    int Done[2] = {};
    pid_t Host = -1;

    explicit Searching(const std::function<RSWindow()> &makeView)
    {
        if (pipe(Go) != 0 || pipe(Done) != 0) return;
        Host = fork();
        if (Host != 0) {
            close(Done[1]);
            return;
        }
        close(Go[1]);
        View *view = HoldView(makeView());
        PageSource source = {-1};
        PageRequest request = {};
        request.Wish = PageWish::find;
        std::snprintf(request.Sought, sizeof request.Sought, "nirgends");
        PageAnswer answer;
        int file = -1;
        char byte = 0;
        while (view != nullptr && read(Go[0], &byte, 1) == 1) {
            if (!AskForPages(source, *view, request, answer, file)) _exit(1);
            (void)!write(Done[1], &byte, 1);
        }
        _exit(0);
    }
    Searching(const Searching &) = delete;
    Searching &operator=(const Searching &) = delete;
    ~Searching() { End(); }

    void Begin() const { (void)!write(Go[1], "", 1); }
    bool IsDone() const
    {
        char byte = 0;
        return read(Done[0], &byte, 1) == 1;
    }
    void End()
    {
        if (Host <= 0) return;
        kill(Host, SIGKILL);
        waitpid(Host, nullptr, 0);
        Host = -1;
    }
};

} // namespace

TEST_F(RealHelpers, PagesOfAViewEndWithTheirHostInTheMiddleOfASearch)
{
    prctl(PR_SET_CHILD_SUBREAPER, 1); // the program has no other parent when its host is gone
    Searching searching([this] { return MakeView(3 * manyLines); });
    searching.Begin();
    ASSERT_TRUE(searching.IsDone());
    const pid_t pages = reports::FindMarked("rs-pages", directory.Path.string());
    ASSERT_GT(pages, 0);
    setpriority(PRIO_PROCESS, static_cast<id_t>(pages), 19); // so that this one sees it at work
    const uint64_t first_ns = Used_ns(pages);
    searching.Begin();
    ASSERT_TRUE(searching.IsDone());
    const uint64_t second_ns = Used_ns(pages);
    const uint64_t search_ns = second_ns - first_ns;
    searching.Begin();
    const auto limit = std::chrono::steady_clock::now() + vark::test::patience;
    while (Used_ns(pages) < second_ns + search_ns / 20 && std::chrono::steady_clock::now() < limit) {
    }
    kill(pages, SIGSTOP);
    const uint64_t stopped_ns = Used_ns(pages);
    EXPECT_LT(stopped_ns, second_ns + search_ns / 2) << "it was to be stopped in the middle";
    searching.End();
    kill(pages, SIGCONT);
    int status = 0;
    rusage used = {};
    EXPECT_TRUE(Eventually([&] { return wait4(pages, &status, WNOHANG, &used) == pages; }));
    const auto end_ns = static_cast<uint64_t>(used.ru_utime.tv_sec + used.ru_stime.tv_sec) * 1000000000 +
                        static_cast<uint64_t>(used.ru_utime.tv_usec + used.ru_stime.tv_usec) * 1000;
    // Its end takes its time as well.
    EXPECT_LT(end_ns, second_ns + search_ns) << "it has searched to the end";
    prctl(PR_SET_CHILD_SUBREAPER, 0);
}

// A host may have a clock that strikes all the time, and none of its calls go on by themselves.
TEST_F(RealHelpers, WorkThoughTheHostsSignalsArriveAllTheTime)
{
    struct sigaction handled = {};
    handled.sa_handler = [](int) {};
    sigaction(SIGALRM, &handled, nullptr);
    RSWindow view = MakeView(manyLines / 20);
    const itimerval often = {{0, 500}, {0, 500}};
    setitimer(ITIMER_REAL, &often, nullptr);
    for (const char *name : {"a.pdf", "a.csv", "a.json", "a.html", "a.txt"}) {
        EXPECT_EQ(RSExportView(view, directory.At(name).c_str()), 1) << name;
    }
    View *held = HoldView(view);
    ASSERT_NE(held, nullptr);
    PageSource source = {-1};
    PageRequest request = {};
    request.Wish = PageWish::find;
    std::snprintf(request.Sought, sizeof request.Sought, "11900");
    for (int i = 0; i < 20; ++i) {
        PageAnswer answer;
        int file = -1;
        EXPECT_TRUE(AskForPages(source, *held, request, answer, file)) << i;
    }
    const itimerval never = {};
    setitimer(ITIMER_REAL, &never, nullptr);
    ReleaseView(held);
    RSCloseReport(report);
    EXPECT_GT(reports::PageCountOf(directory.At("a.pdf")), 20);
}
