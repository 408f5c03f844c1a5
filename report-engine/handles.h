// Which handles are open. What a handle names is held by whoever works with it, so that closing it from
// another thread takes it away only when the last one is done.
#pragma once

#include "report-engine/counting.h"
#include "report-engine/report.h"
#include "report-engine/view.h"

#include <cstdint>

namespace rs {

// Each series: Add takes over a reference, gives a handle and keeps it (0 when the series is full: the caller
// keeps the reference). Hold gives another reference, null for a handle that is not open. Release gives one
// back. Remove takes the handle away.
int32_t AddReport(Report *report);
Report *HoldReport(int32_t handle);
void ReleaseReport(Report *report);
void RemoveReport(int32_t handle);

// The same for a report whose pages are only counted.
int32_t AddCounting(CountingReport *report);
CountingReport *HoldCounting(int32_t handle);
void ReleaseCounting(CountingReport *report);
void RemoveCounting(int32_t handle);

// A view's handle looks like a pointer and is none. AddView leaves a reference with the caller, since another
// thread may close the report at any moment. HoldView takes the window that shows it as well, and a
// window around that one.
void *AddView(View *view);
View *HoldView(void *handle);
void ReleaseView(View *view);
void RemoveView(void *handle);

// Removes those views of a report that have no window, or had one that went with its thread.
void RemoveViewsOf(int32_t reportHandle);

// Removes the view's report, unless another view still shows it.
void RemoveReportOf(const View &view);

} // namespace rs
