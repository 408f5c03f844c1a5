#include "tools/vark/report_progress.h"

#include "tools/common/system.h"
#include "tools/common/terminal.h"

#include <algorithm>
#include <cstdio>

namespace cli {

using std::chrono::milliseconds;

ReportProgress::ReportProgress(std::string text, int64_t all, Counter counter, FILE *stream,
                               milliseconds patience)
    : title(std::move(text)), expected(all), count(std::move(counter)), to(stream)
{
    if (tools::IsTerminal(stream)) drawer = std::thread([this, patience] { Draw(patience); });
}

ReportProgress::~ReportProgress() { Stop(); }

void ReportProgress::Write()
{
    const std::lock_guard locked(lock);
    writes = true;
}

void ReportProgress::Stop()
{
    {
        const std::lock_guard locked(lock);
        ends = true;
    }
    changed.notify_all();
    if (drawer.joinable()) drawer.join();
}

void ReportProgress::Draw(milliseconds patience)
{
    std::unique_lock locked(lock);
    if (changed.wait_for(locked, patience, [this] { return ends; })) return;
    tools::ProgressBar bar(title, to);
    bool tellsWriting = false;
    do {
        if (writes && !tellsWriting) {
            bar.Hide();
            std::fprintf(to, "\r%s wird geschrieben …", title.c_str());
            std::fflush(to);
            tellsWriting = true;
        } else if (!writes && count() > 0) {
            // While a dialog waits there is nothing to tell.
            bar.Show(std::min(1.0, static_cast<double>(count()) /
                                       static_cast<double>(std::max<int64_t>(expected, 1))));
        }
    } while (!changed.wait_for(locked, milliseconds(100), [this] { return ends; }));
    if (tellsWriting) std::fputs("\r\033[K", to);
}

} // namespace cli
