// The progress of a report on a terminal of the tests' own.
#include "tools/vark/report_progress.h"

#include <atomic>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

// Standard error becomes a terminal, whose other end is read here.
struct Terminal {
    int Master = posix_openpt(O_RDWR | O_NOCTTY);
    int Kept = dup(STDERR_FILENO);

    Terminal()
    {
        grantpt(Master);
        unlockpt(Master);
        const int slave = open(ptsname(Master), O_RDWR | O_NOCTTY);
        dup2(slave, STDERR_FILENO);
        close(slave);
    }
    ~Terminal()
    {
        GiveBack();
        close(Kept);
        close(Master);
    }
    Terminal(const Terminal &) = delete;
    Terminal &operator=(const Terminal &) = delete;

    void GiveBack() const { dup2(Kept, STDERR_FILENO); }
    // Reads until `text` has come; blocks, so a text that never comes ends in the test's own time limit.
    std::string ReadUntil(const std::string &text) const
    {
        std::string seen;
        char buffer[256];
        while (seen.find(text) == std::string::npos) {
            const ssize_t got = read(Master, buffer, sizeof buffer);
            if (got <= 0) break;
            seen.append(buffer, static_cast<size_t>(got));
        }
        return seen;
    }
};

} // namespace

TEST(ReportProgress, TellsHowManyRecordsAreSentAndThatTheyAreWritten)
{
    const Terminal terminal;
    std::atomic<int64_t> sent{0};
    cli::ReportProgress progress(
        "Liste", 200, [&] { return sent.load(); }, stderr, 0ms);
    sent = 50;
    EXPECT_EQ(0u, terminal.ReadUntil(" 25 %").find("\rListe ["));
    sent = 900; // more than was expected
    EXPECT_NE(std::string::npos, terminal.ReadUntil(" 100 %").find("] 100 %"));
    progress.Write();
    EXPECT_NE(std::string::npos, terminal.ReadUntil("geschrieben").find("\rListe wird"));
    progress.Stop();
    const std::string rest = terminal.ReadUntil("\r\033[K");
    EXPECT_EQ(rest.size() - 4, rest.rfind("\r\033[K")) << "nothing of it stays";
}

TEST(ReportProgress, ReportThatIsQuickDrawsNothing)
{
    const Terminal terminal;
    {
        cli::ReportProgress progress(
            "Liste", 200, [] { return 100; }, stderr, 1h);
        progress.Write();
    }
    const char end[] = "end\n";
    ASSERT_EQ(4, write(STDERR_FILENO, end, 4));
    EXPECT_EQ("end\r\n", terminal.ReadUntil("\n"));
}

TEST(ReportProgress, WithoutATerminalThereIsNoThread)
{
    const int kept = dup(STDERR_FILENO);
    const int nowhere = open("/dev/null", O_WRONLY);
    dup2(nowhere, STDERR_FILENO);
    bool isAsked = false;
    {
        cli::ReportProgress progress(
            "Liste", 1,
            [&] {
                isAsked = true;
                return 1;
            },
            stderr, 0ms);
    }
    dup2(kept, STDERR_FILENO);
    close(kept);
    close(nowhere);
    EXPECT_FALSE(isAsked);
}
