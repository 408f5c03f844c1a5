#include "report-engine/handles.h"

#include "window-system/include/varkui.h"

#include <cstdlib>
#include <cstring>
#include <pthread.h>
#include <unistd.h>

namespace rs {

namespace {

constexpr int32_t handleEnd = 0x8000; // 16 bits with the sign clear, for hosts that keep them signed
constexpr uintptr_t firstViewHandle = 0x52530000; // far from the handles of windows, which are small

pthread_mutex_t tableLock = PTHREAD_MUTEX_INITIALIZER;

// Handles go round, so that one that was closed comes back as late as can be.
template <typename Thing> struct Table {
    int32_t Last;
    Thing *Things[handleEnd];
};

Table<Report> reports;
Table<CountingReport> countings;
Table<View> views;

// A forked child has none of what its parent has open: both would write into the same temporary files. The
// memory stays, since another thread may have been at work on it.
void StartAfresh()
{
    tableLock = PTHREAD_MUTEX_INITIALIZER;
    for (Report *&report : reports.Things) {
        if (report == nullptr) continue;
        CloseSpool(report->Store);
        FreeOrdering(report->Waiting);
        report = nullptr;
    }
    std::memset(static_cast<void *>(countings.Things), 0, sizeof countings.Things);
    std::memset(static_cast<void *>(views.Things), 0, sizeof views.Things);
}

void WatchForks() { pthread_atfork(nullptr, nullptr, StartAfresh); }

template <typename Thing> int32_t Add(Table<Thing> &table, Thing *thing, int references = 1)
{
    static pthread_once_t once = PTHREAD_ONCE_INIT;
    pthread_once(&once, WatchForks);
    thing->References = references;
    pthread_mutex_lock(&tableLock);
    int32_t handle = 0;
    for (int32_t tried = 1; tried < handleEnd && handle == 0; ++tried) {
        table.Last = table.Last + 1 < handleEnd ? table.Last + 1 : 1;
        if (table.Things[table.Last] == nullptr) handle = table.Last;
    }
    if (handle != 0) table.Things[handle] = thing;
    pthread_mutex_unlock(&tableLock);
    return handle;
}

template <typename Thing> Thing *Hold(Table<Thing> &table, int32_t handle)
{
    handle &= 0xFFFF;
    if (handle >= handleEnd) return nullptr;
    pthread_mutex_lock(&tableLock);
    Thing *thing = table.Things[handle];
    if (thing != nullptr) ++thing->References;
    pthread_mutex_unlock(&tableLock);
    return thing;
}

// True when that was the last reference.
template <typename Thing> bool Drop(Thing *thing)
{
    pthread_mutex_lock(&tableLock);
    const bool isLast = --thing->References == 0;
    pthread_mutex_unlock(&tableLock);
    return isLast;
}

template <typename Thing> Thing *Remove(Table<Thing> &table, int32_t handle)
{
    handle &= 0xFFFF;
    if (handle >= handleEnd) return nullptr;
    pthread_mutex_lock(&tableLock);
    Thing *thing = table.Things[handle];
    table.Things[handle] = nullptr;
    pthread_mutex_unlock(&tableLock);
    return thing;
}

} // namespace

int32_t AddReport(Report *report) { return Add(reports, report); }
Report *HoldReport(int32_t handle) { return Hold(reports, handle); }

void ReleaseReport(Report *report)
{
    if (Drop(report)) DestroyReport(report);
}

void RemoveReport(int32_t handle)
{
    Report *report = Remove(reports, handle);
    if (report != nullptr) ReleaseReport(report);
}

int32_t AddCounting(CountingReport *report) { return Add(countings, report); }
CountingReport *HoldCounting(int32_t handle) { return Hold(countings, handle); }

void ReleaseCounting(CountingReport *report)
{
    if (Drop(report)) DestroyCountingReport(report);
}

void RemoveCounting(int32_t handle)
{
    CountingReport *report = Remove(countings, handle);
    if (report != nullptr) ReleaseCounting(report);
}

void *AddView(View *view)
{
    const int32_t handle = Add(views, view, 2);
    if (handle == 0) return nullptr;
    return reinterpret_cast<void *>(firstViewHandle + static_cast<uintptr_t>(handle)); // NOLINT: no pointer
}

namespace {

// The number of a view's handle, 0 for anything else.
int32_t NumberOf(const void *handle)
{
    const auto number = reinterpret_cast<uintptr_t>(handle);
    if (number <= firstViewHandle || number >= firstViewHandle + handleEnd) return 0;
    return static_cast<int32_t>(number - firstViewHandle);
}

// The handle of the view that a window is, or that stands in it; null for none.
void *ViewIn(HWND window)
{
    void *handle = GetPropA(window, viewProperty);
    for (HWND child = GetWindow(window, GW_CHILD); handle == nullptr && child != nullptr;
         child = GetWindow(child, GW_HWNDNEXT)) {
        handle = GetPropA(child, viewProperty);
    }
    return handle;
}

} // namespace

View *HoldView(void *handle)
{
    if (NumberOf(handle) == 0 && handle != nullptr) handle = ViewIn(static_cast<HWND>(handle));
    const int32_t number = NumberOf(handle);
    return number != 0 ? Hold(views, number) : nullptr;
}

void ReleaseView(View *view)
{
    if (!Drop(view)) return;
    ReleaseReport(view->Of);
    std::free(view);
}

void RemoveView(void *handle)
{
    const int32_t number = NumberOf(handle);
    View *view = number != 0 ? Remove(views, number) : nullptr;
    if (view != nullptr) ReleaseView(view);
}

void RemoveViewsOf(int32_t reportHandle)
{
    reportHandle &= 0xFFFF;
    for (int32_t handle = 1; handle < handleEnd; ++handle) {
        pthread_mutex_lock(&tableLock);
        View *view = views.Things[handle];
        const bool isOne =
            view != nullptr && view->ReportHandle == reportHandle && view->Window.load() == nullptr;
        if (isOne) views.Things[handle] = nullptr;
        pthread_mutex_unlock(&tableLock);
        if (isOne) ReleaseView(view);
    }
}

void RemoveReportOf(const View &view)
{
    pthread_mutex_lock(&tableLock);
    Report *report = reports.Things[view.ReportHandle];
    bool isLast = report == view.Of;
    for (int32_t handle = 1; handle < handleEnd && isLast; ++handle) {
        const View *other = views.Things[handle];
        if (other != nullptr && other != &view && other->Of == view.Of) isLast = false;
    }
    if (isLast) reports.Things[view.ReportHandle] = nullptr;
    pthread_mutex_unlock(&tableLock);
    if (isLast) ReleaseReport(report);
}

} // namespace rs
