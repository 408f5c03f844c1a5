#include "src/frame/held_reports.h"

#include "src/frame/beliefs.h"
#include "src/frame/engine_calls.h"
#include "src/frame/messages.h"
#include "text/fixed_text.h"

#include <array> // std::size

namespace vark {

using text::CopyText;

namespace {

void ShowReport(const HeldReport &report)
{
    Holds(report.Path[sizeof report.Path - 1] == 0);
    Holds(report.Status != statusOk);
    if (report.IsInUse && ReportLocked(report.Status)) return;
    ReportStatus(report.Status, report.Path[0] != 0 ? report.Path : nullptr);
}

} // namespace

void Tell(ThreadContext &context, int16_t status, const char *path, bool isInUse)
{
    Holds(status != statusOk);
    Holds(context.HeldReportCount >= 0);
    HeldReport report{status, isInUse, {}};
    if (path != nullptr) CopyText(report.Path, sizeof report.Path, path, sizeof report.Path);
    if (context.TransactionDepth == 0) {
        ShowReport(report);
    } else if (context.HeldReportCount < static_cast<int32_t>(std::size(context.HeldReports))) {
        context.HeldReports[context.HeldReportCount++] = report;
    }
    Holds(context.HeldReportCount <= static_cast<int32_t>(std::size(context.HeldReports)));
}

void ShowHeldReports(ThreadContext &context)
{
    Holds(context.TransactionDepth == 0);
    const int32_t count = context.HeldReportCount;
    Holds(count >= 0 && count <= static_cast<int32_t>(std::size(context.HeldReports)));
    context.HeldReportCount = 0;
    for (int32_t i = 0; i < count; ++i) {
        ShowReport(context.HeldReports[i]);
    }
    Holds(context.HeldReportCount == 0);
}

} // namespace vark
