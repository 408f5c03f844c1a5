// Programs beside the engine that stand still: nobody waits for them without an end.
#include "report-engine/helper.h"
#include "report-engine/page_source.h"

#include <chrono>
#include <csignal>
#include <gtest/gtest.h>
#include <memory>
#include <sys/socket.h>
#include <unistd.h>

using namespace rs;

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
