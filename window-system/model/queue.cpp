#include "window-system/model/queue.h"

#include "window-system/model/handles.h"
#include "window-system/model/input.h"
#include "window-system/model/memory.h"
#include "window-system/model/threads.h"
#include "window-system/model/window.h"

#include <ctime>

namespace varkui {

namespace {

DWORD Milliseconds()
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<DWORD>(static_cast<uint64_t>(now.tv_sec) * 1000 +
                              static_cast<uint64_t>(now.tv_nsec) / 1000000);
}

constexpr LPARAM altBit = 1 << 29;
constexpr LPARAM releasedBits = LPARAM{3} << 30;

} // namespace

Posted *MakePosted(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    auto *posted = static_cast<Posted *>(Allocate(sizeof(Posted)));
    if (posted == nullptr) return nullptr;
    posted->Message.hwnd = window;
    posted->Message.message = message;
    posted->Message.wParam = wParam;
    posted->Message.lParam = lParam;
    posted->Message.time = Milliseconds();
    return posted;
}

void FreePosted(Posted *posted)
{
    FreeInput(posted->Payload);
    Release(posted);
}

void Append(Thread *thread, Posted *posted)
{
    posted->Next = nullptr;
    (thread->LastPosted != nullptr ? thread->LastPosted->Next : thread->FirstPosted) = posted;
    thread->LastPosted = posted;
    ++thread->PostedCount;
    WakeThread(thread);
}

void Prepend(Thread *thread, Posted *posted)
{
    posted->Next = thread->FirstPosted;
    thread->FirstPosted = posted;
    if (thread->LastPosted == nullptr) thread->LastPosted = posted;
    ++thread->PostedCount;
    WakeThread(thread);
}

void Remove(Thread *thread, Posted *before, Posted *posted)
{
    (before != nullptr ? before->Next : thread->FirstPosted) = posted->Next;
    if (thread->LastPosted == posted) thread->LastPosted = before;
    --thread->PostedCount;
}

bool PostInput(HWND target, Input *payload)
{
    if (payload == nullptr) return false;
    const Window *window = Find(target);
    Posted *posted = window != nullptr ? MakePosted(target, inputMessage, 0, 0) : nullptr;
    if (posted == nullptr) {
        FreeInput(payload);
        return false;
    }
    posted->Payload = payload;
    Append(window->Thread, posted);
    return true;
}

bool Post(Window *window, UINT message, WPARAM wParam, LPARAM lParam)
{
    Posted *posted = MakePosted(window->Handle, message, wParam, lParam);
    if (posted == nullptr) return false;
    Append(window->Thread, posted);
    return true;
}

bool PostKey(Thread *thread, const KeyPress &press)
{
    const struct {
        bool Held;
        unsigned Key;
    } modifiers[] = {{press.Control, VK_CONTROL}, {press.Shift, VK_SHIFT}, {press.Alt, VK_MENU}};
    const UINT down = press.Alt ? WM_SYSKEYDOWN : WM_KEYDOWN;
    const UINT up = press.Alt ? WM_SYSKEYUP : WM_KEYUP;
    const LPARAM alt = press.Alt ? altBit : 0;
    const auto post = [thread](UINT message, unsigned key, LPARAM lParam) {
        Posted *posted = MakePosted(nullptr, message, key, lParam | 1);
        if (posted == nullptr) return false;
        posted->IsKey = true;
        Append(thread, posted);
        return true;
    };
    bool all = true;
    for (const auto &modifier : modifiers) {
        if (modifier.Held) all = post(down, modifier.Key, alt) && all;
    }
    all = post(down, press.Key, alt | (LPARAM{press.Character} << characterShift)) && all;
    all = post(up, press.Key, alt | releasedBits) && all;
    for (const auto &modifier : modifiers) {
        if (modifier.Held) all = post(WM_KEYUP, modifier.Key, releasedBits) && all;
    }
    return all;
}

void DropMessages(Window *window)
{
    Posted *before = nullptr;
    for (Posted *posted = window->Thread->FirstPosted; posted != nullptr;) {
        Posted *next = posted->Next;
        if (!posted->IsKey && posted->Message.hwnd == window->Handle) {
            Remove(window->Thread, before, posted);
            FreePosted(posted);
        } else {
            before = posted;
        }
        posted = next;
    }
}

void AppendSent(Thread *thread, Sent *sent)
{
    sent->Next = nullptr;
    (thread->LastSent != nullptr ? thread->LastSent->Next : thread->FirstSent) = sent;
    thread->LastSent = sent;
    WakeThread(thread);
}

void DoElsewhere(Window *window, BOOL (*what)(HWND))
{
    auto *sent = static_cast<Sent *>(Allocate(sizeof(Sent)));
    if (sent == nullptr) return; // a window to be destroyed stays, hidden, until its thread ends
    sent->Target = window->Handle;
    sent->Nobody = true;
    sent->Instead = what;
    AppendSent(window->Thread, sent);
}

} // namespace varkui
