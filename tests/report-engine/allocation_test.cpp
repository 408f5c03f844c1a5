// Every allocation fails once: nothing may come of it but a refusal.
#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>

#include "report_support.h"
#include "window-system/include/varkui.h"

extern "C" {
void *__libc_malloc(size_t size);               // NOLINT: names of the C library
void *__libc_calloc(size_t count, size_t size); // NOLINT
void *__libc_realloc(void *block, size_t size); // NOLINT
}

namespace {

std::atomic<long> untilFailure = 0; // 0: none fails

bool Fails()
{
    if (untilFailure.load() == 0) return false;
    return untilFailure.fetch_sub(1) == 1;
}

} // namespace

// In place of the C library's, for everything in this process.
#define REPLACES extern "C" __attribute__((visibility("default")))
REPLACES void *malloc(size_t size) { return Fails() ? nullptr : __libc_malloc(size); }
REPLACES void *calloc(size_t count, size_t size) { return Fails() ? nullptr : __libc_calloc(count, size); }
REPLACES void *realloc(void *block, size_t size) { return Fails() ? nullptr : __libc_realloc(block, size); }

using namespace reports;

namespace {

// A short report from template to files; every step may be refused. No step may allocate on its own account.
struct Outcome {
    int32_t report, header, line, counting, copy, csv, text;
    RSWindow view;
};

Outcome RunOnce(const char *path, const char *csvPath, const char *textPath, const char *header,
                const char *line)
{
    Outcome outcome = {};
    outcome.report = RSOpenReport(path, susaId, 0);
    outcome.header = RSAddData(outcome.report, 0, header);
    outcome.line = RSAddData(outcome.report, 1, line);
    outcome.counting = RSOpenVirtualReport(outcome.report);
    RSAddVirtualData(outcome.counting, 1, 10);
    RSCloseVirtualReport(outcome.counting);
    outcome.copy = RSCopyReport(outcome.report, susaId, 0);
    RSCloseReport(outcome.copy);
    outcome.view = OpenView(outcome.report);
    outcome.csv = RSExportView(outcome.view, csvPath);
    outcome.text = RSExportView(outcome.view, textPath);
    RSCloseReport(outcome.report);
    DestroyWindow(static_cast<HWND>(outcome.view));
    return outcome;
}

} // namespace

TEST(Allocations, MayFailOneByOne)
{
    const Directory directory;
    const std::string path = ShippedTemplate("or_slist.rs");
    const std::string csvPath = directory.At("a.csv");
    const std::string textPath = directory.At("a.txt");
    std::string header(128, '\0');
    header.replace(0, 6, "Muster");
    std::string line(166, '1');
    testing::internal::CaptureStderr();
    long failed = 0;
    for (long number = 1;; ++number) {
        untilFailure = number;
        const Outcome outcome =
            RunOnce(path.c_str(), csvPath.c_str(), textPath.c_str(), header.c_str(), line.c_str());
        const bool hasFailed = untilFailure.exchange(0) <= 0;
        const bool isWhole = outcome.report > 0 && outcome.header == 1 && outcome.line == 1 &&
                             outcome.counting > 0 && outcome.copy > 0 && outcome.view != nullptr &&
                             outcome.csv == 1 && outcome.text == 1;
        if (!hasFailed) {
            EXPECT_TRUE(isWhole) << "nothing failed any more";
            break;
        }
        ++failed;
        if (isWhole) continue; // Lua made room and tried again
        EXPECT_EQ(outcome.report > 0 && outcome.line == 0 && outcome.csv == 1, false)
            << "a report that lost a line must not come out: allocation " << number;
    }
    testing::internal::GetCapturedStderr();
    EXPECT_GT(failed, 200);
    const std::vector<std::string> files = directory.Files();
    EXPECT_EQ(files, (std::vector<std::string>{"a.csv", "a.txt"})) << "no half file is left";
}
