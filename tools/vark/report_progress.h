// How far a report is, on standard error while it is made, if that is a terminal.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace cli {

// A bar from the moment the report takes long until this goes: records sent out of `expected` (which may be
// too many), then that it is being written.
struct ReportProgress {
    using Counter = std::function<int64_t()>;

    // `count` tells the records sent so far, from a thread of its own. Nothing is drawn before `patience`,
    // nor where the stream is no terminal.
    ReportProgress(std::string title, int64_t expected, Counter count, FILE *to = stderr,
                   std::chrono::milliseconds patience = std::chrono::milliseconds(500));
    ~ReportProgress();
    ReportProgress(const ReportProgress &) = delete;
    ReportProgress &operator=(const ReportProgress &) = delete;

    // All records are sent; the file is written now.
    void Write();
    // Takes the bar away for good.
    void Stop();

private:
    void Draw(std::chrono::milliseconds patience);

    std::string title;
    int64_t expected;
    Counter count;
    FILE *to;
    std::mutex lock;
    std::condition_variable changed;
    bool writes = false;
    bool ends = false;
    std::thread drawer;
};

} // namespace cli
