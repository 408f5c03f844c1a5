// The queue of a thread: posting, waiting, taking.
#include "host/descriptors.h"
#include "window-system/model/as_pointer.h"
#include "window-system/model/handles.h"
#include "window-system/model/input.h"
#include "window-system/model/model.h"
#include "window-system/model/queue.h"
#include "window-system/model/threads.h"
#include "window-system/model/tree.h"
#include "window-system/model/window.h"
#include "window-system/windows/sending.h"

#include <cstdint>
#include <sys/eventfd.h>
#include <unistd.h>

namespace varkui {

namespace {

// The messages that GetMessageA and PeekMessageA look for.
struct Filter {
    HWND Window; // null: any; -1: none
    UINT First;
    UINT Last; // both 0: any
};

HWND ThreadOnly() { return AsPointer<HWND>(static_cast<intptr_t>(-1)); }

bool Passes(const Filter &filter, HWND target, UINT message)
{
    if ((filter.First != 0 || filter.Last != 0) && (message < filter.First || message > filter.Last))
        return false;
    if (filter.Window == nullptr) return true;
    if (filter.Window == ThreadOnly()) return target == nullptr;
    const Window *wanted = Find(filter.Window);
    const Window *window = Find(target);
    return wanted != nullptr && window != nullptr && (window == wanted || LiesInside(window, wanted));
}

void NoteKey(Thread *thread, const MSG &message)
{
    if (message.wParam > 255) return;
    BYTE &state = thread->Keys[message.wParam];
    if (message.message == WM_KEYDOWN || message.message == WM_SYSKEYDOWN) {
        state = static_cast<BYTE>((state ^ 1) | 0x80);
    } else if (message.message == WM_KEYUP || message.message == WM_SYSKEYUP) {
        state = static_cast<BYTE>(state & 1);
    }
}

// The first queued message that passes the filter, taken off the queue if `remove`. False without one.
bool TakePosted(Thread *thread, const Filter &filter, bool remove, MSG &message)
{
    Posted *before = nullptr;
    Posted *posted = thread->FirstPosted;
    while (posted != nullptr) {
        if (posted->IsKey) {
            posted->Message.hwnd = thread->Focus != nullptr ? thread->Focus : thread->Active;
            if (posted->Message.hwnd == nullptr) {
                // A key that nobody has the focus for is lost.
                Posted *next = posted->Next;
                NoteKey(thread, posted->Message);
                Remove(thread, before, posted);
                FreePosted(posted);
                posted = next;
                continue;
            }
        }
        if (Passes(filter, posted->Message.hwnd, posted->Message.message)) break;
        before = posted;
        posted = posted->Next;
    }
    if (posted == nullptr) return false;
    message = posted->Message;
    if (!remove) return true;
    Remove(thread, before, posted);
    if (posted->IsKey) NoteKey(thread, message);
    if (posted->Payload != nullptr) {
        FreeInput(thread->Current);
        thread->Current = posted->Payload;
        posted->Payload = nullptr;
        message.wParam = reinterpret_cast<WPARAM>(thread->Current);
    }
    FreePosted(posted);
    return true;
}

enum class Taken : unsigned char { Nothing, Message, Quit };

// Whether the innermost modal loop has ended while its thread waited, through another thread or a sent
// message. No message may follow, so the end is told once.
bool TellEndOfLoop(const Thread *thread)
{
    ModalLoop *loop = thread->Modal;
    if (loop == nullptr || loop->Told) return false;
    loop->Told = loop->Ended || Find(loop->Dialog) == nullptr;
    return loop->Told;
}

Taken TakeMessage(const Filter &filter, bool wait, bool remove, MSG &message)
{
    Lock();
    Thread *thread = Self();
    Taken taken = Taken::Nothing;
    while (thread != nullptr) {
        HandleSent(thread);
        if (TakePosted(thread, filter, remove, message)) {
            taken = Taken::Message;
            break;
        }
        if (thread->Quit) {
            message = MSG{};
            message.message = WM_QUIT;
            message.wParam = static_cast<WPARAM>(thread->QuitCode);
            if (remove) thread->Quit = false;
            taken = Taken::Quit;
            break;
        }
        if (thread->Descriptor >= 0 && thread->PostedCount == 0) {
            uint64_t waiting = 0;
            const ssize_t got = read(thread->Descriptor, &waiting, sizeof waiting);
            static_cast<void>(got);
        }
        if (!wait) break;
        if (TellEndOfLoop(thread)) {
            message = MSG{}; // WM_NULL
            taken = Taken::Message;
            break;
        }
        if (frontEnd.Ask(thread)) continue;
        if (thread->FirstSent != nullptr || thread->Quit) continue;
        MSG ignored = {};
        if (TakePosted(thread, filter, false, ignored)) continue;
        pthread_cond_wait(&thread->Wake, &model.Lock);
    }
    Unlock();
    return taken;
}

// Whether `window` may stand in a filter.
bool IsFilter(HWND window)
{
    return window == nullptr || window == ThreadOnly() || IsWindow(window) != FALSE;
}

// The character of a key that came without one: letters and digits as on every keyboard.
unsigned char CharacterOf(WPARAM key, bool shift)
{
    if (key >= 'A' && key <= 'Z') return static_cast<unsigned char>(shift ? key : key + 0x20);
    if ((key >= '0' && key <= '9' && !shift) || key == VK_SPACE) return static_cast<unsigned char>(key);
    if (key == VK_RETURN || key == VK_TAB || key == VK_ESCAPE || key == VK_BACK)
        return static_cast<unsigned char>(key);
    return 0;
}

} // namespace

} // namespace varkui

using namespace varkui;

BOOL PostMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    const Locked locked;
    const Window *target = Find(window);
    if (target == nullptr && window != nullptr) return FALSE;
    Thread *thread = target != nullptr ? target->Thread : Self();
    if (thread == nullptr || thread->PostedCount >= longestQueue) return FALSE;
    Posted *posted = MakePosted(window, message, wParam, lParam);
    if (posted == nullptr) return FALSE;
    Append(thread, posted);
    return TRUE;
}

void PostQuitMessage(int exitCode)
{
    const Locked locked;
    Thread *thread = Self();
    if (thread == nullptr) return;
    thread->Quit = true;
    thread->QuitCode = exitCode;
    WakeThread(thread);
}

BOOL GetMessageA(MSG *message, HWND window, UINT first, UINT last)
{
    if (message == nullptr || !IsFilter(window)) return -1;
    frontEnd.Choose();
    const Taken taken = TakeMessage(Filter{window, first, last}, true, true, *message);
    if (taken == Taken::Nothing) return -1;
    return taken == Taken::Quit || message->message == WM_QUIT ? FALSE : TRUE;
}

BOOL PeekMessageA(MSG *message, HWND window, UINT first, UINT last, UINT flags)
{
    if (message == nullptr || !IsFilter(window)) return FALSE;
    const bool remove = (flags & PM_REMOVE) != 0;
    if (TakeMessage(Filter{window, first, last}, false, remove, *message) != Taken::Nothing) return TRUE;
    frontEnd.Show();
    return FALSE;
}

BOOL TranslateMessage(const MSG *message)
{
    if (message == nullptr) return FALSE;
    const bool system = message->message == WM_SYSKEYDOWN;
    if (message->message != WM_KEYDOWN && !system) {
        return message->message == WM_KEYUP || message->message == WM_SYSKEYUP ? TRUE : FALSE;
    }
    auto character = static_cast<unsigned char>((message->lParam >> characterShift) & 0xFF);
    if (character == 0) character = CharacterOf(message->wParam, GetKeyState(VK_SHIFT) < 0);
    if (character >= 'a' && character <= 'z' && !system && GetKeyState(VK_CONTROL) < 0) {
        character = static_cast<unsigned char>(character - 'a' + 1);
    }
    if (character == 0) return TRUE;
    const Locked locked;
    const Window *target = Find(message->hwnd);
    if (target == nullptr) return TRUE;
    Posted *posted = MakePosted(message->hwnd, system ? WM_SYSCHAR : WM_CHAR, character, message->lParam);
    if (posted != nullptr) Prepend(target->Thread, posted);
    return TRUE;
}

LRESULT CallWindowProcA(WNDPROC procedure, HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    return procedure != nullptr ? procedure(window, message, wParam, lParam) : 0;
}

SHORT GetKeyState(int key)
{
    const Locked locked;
    const Thread *thread = Self();
    if (thread == nullptr || key < 0 || key > 255) return 0;
    const BYTE state = thread->Keys[key];
    return static_cast<SHORT>(((state & 0x80) != 0 ? -32768 : 0) | (state & 1));
}

int VarkUiDescriptor(void)
{
    const Locked locked;
    Thread *thread = Self();
    if (thread == nullptr) return -1;
    if (thread->Descriptor < 0) {
        const bool waiting = thread->FirstPosted != nullptr || thread->FirstSent != nullptr || thread->Quit;
        thread->Descriptor = host::KeepAboveStandard(eventfd(waiting ? 1 : 0, EFD_CLOEXEC | EFD_NONBLOCK));
    }
    return thread->Descriptor;
}
