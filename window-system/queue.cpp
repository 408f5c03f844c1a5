// Threads, their queues, and messages between them.
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <sys/eventfd.h>
#include <unistd.h>

#include "window-system/memory.h"
#include "window-system/model.h"

namespace varkui {

namespace {

pthread_once_t slotOnce = PTHREAD_ONCE_INIT;
pthread_key_t slot;
bool slotMade;
thread_local Thread *self;

constexpr ULONG_PTR arrowCursor = 32512;

void OnThreadEnd(void *value)
{
    auto *thread = static_cast<Thread *>(value);
    self = nullptr;
    Lock();
    threadEvents.Ends(thread);
    Unlock();
    if (thread->Descriptor >= 0) close(thread->Descriptor);
    pthread_cond_destroy(&thread->Wake);
    Release(thread);
}

// A forked child has one thread and no windows. The lock is taken around fork, so that it is free in both.
void AfterForkInChild()
{
    self = nullptr;
    pthread_setspecific(slot, nullptr);
    model.Threads = nullptr;
    threadEvents.Forked();
    pthread_mutex_init(&model.Lock, nullptr);
}

void MakeSlot()
{
    slotMade = pthread_key_create(&slot, OnThreadEnd) == 0;
    pthread_atfork([] { pthread_mutex_lock(&model.Lock); }, [] { pthread_mutex_unlock(&model.Lock); },
                   AfterForkInChild);
}

void Signal(Thread *thread)
{
    pthread_cond_broadcast(&thread->Wake);
    if (thread->Descriptor < 0) return;
    const uint64_t one = 1;
    const ssize_t written = write(thread->Descriptor, &one, sizeof one); // full means readable already
    static_cast<void>(written);
}

DWORD Milliseconds()
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<DWORD>(static_cast<uint64_t>(now.tv_sec) * 1000 +
                              static_cast<uint64_t>(now.tv_nsec) / 1000000);
}

// ---- Sending ----

void AppendSent(Thread *thread, Sent *sent)
{
    sent->Next = nullptr;
    (thread->LastSent != nullptr ? thread->LastSent->Next : thread->FirstSent) = sent;
    thread->LastSent = sent;
    Signal(thread);
}

void Finish(Sent *sent, LRESULT result)
{
    if (sent->Nobody) {
        Release(sent);
        return;
    }
    sent->Result = result;
    sent->Done = true;
    pthread_cond_broadcast(&sent->Sender->Wake);
}

LRESULT CallProcedureOf(HWND handle, UINT message, WPARAM wParam, LPARAM lParam)
{
    WNDPROC procedure = nullptr;
    {
        const Locked locked;
        const Window *window = Find(handle);
        if (window == nullptr) return 0;
        procedure = window->Procedure;
    }
    return procedure(handle, message, wParam, lParam);
}

// Handles what other threads have sent. Releases the lock while procedures run.
void HandleSent(Thread *thread)
{
    while (thread->FirstSent != nullptr) {
        Sent *sent = thread->FirstSent;
        thread->FirstSent = sent->Next;
        if (thread->FirstSent == nullptr) thread->LastSent = nullptr;
        sent->Next = thread->Handling;
        thread->Handling = sent;
        Unlock();
        LRESULT result = 0;
        if (sent->Instead != nullptr) {
            result = sent->Instead(sent->Target);
        } else {
            result = CallProcedureOf(sent->Target, sent->Message, sent->WParam, sent->LParam);
        }
        Lock();
        thread->Handling = sent->Next;
        Finish(sent, result);
    }
}

// ---- Posting ----

void Append(Thread *thread, Posted *posted)
{
    posted->Next = nullptr;
    (thread->LastPosted != nullptr ? thread->LastPosted->Next : thread->FirstPosted) = posted;
    thread->LastPosted = posted;
    ++thread->PostedCount;
    Signal(thread);
}

void Prepend(Thread *thread, Posted *posted)
{
    posted->Next = thread->FirstPosted;
    thread->FirstPosted = posted;
    if (thread->LastPosted == nullptr) thread->LastPosted = posted;
    ++thread->PostedCount;
    Signal(thread);
}

// Takes `posted`, which follows `before` (null: it is the first), out of the queue.
void Remove(Thread *thread, Posted *before, Posted *posted)
{
    (before != nullptr ? before->Next : thread->FirstPosted) = posted->Next;
    if (thread->LastPosted == posted) thread->LastPosted = before;
    --thread->PostedCount;
}

void FreePosted(Posted *posted)
{
    FreeInput(posted->Payload);
    Release(posted);
}

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

// What GetMessageA and PeekMessageA look for.
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

// The first waiting message that passes; it leaves the queue if `remove`. False when there is none.
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

// Whether the innermost modal loop has come to its end since the thread began to wait: by what another thread
// did, or by what this one did about a message sent to it. No message need follow, so it is told, once.
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

bool IsOfCaller(HWND handle)
{
    const Locked locked;
    const Window *window = Find(handle);
    return window != nullptr && window->Thread == Self();
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

// Key messages carry the character they type where real ones carry the scan code.
constexpr int characterShift = 16;
constexpr LPARAM altBit = 1 << 29;
constexpr LPARAM releasedBits = LPARAM{3} << 30;

// The handler of an input message: true when it was one, and has been done.
bool DispatchInput(const MSG &message)
{
    if (message.message != inputMessage) return false;
    Input *input = nullptr;
    {
        const Locked locked;
        Thread *thread = Self();
        if (thread == nullptr || thread->Current == nullptr) return true;
        if (message.wParam != reinterpret_cast<WPARAM>(thread->Current)) return true;
        input = thread->Current;
        thread->Current = nullptr;
    }
    HandleInput(message.hwnd, *input);
    FreeInput(input);
    return true;
}

} // namespace

Thread *Self()
{
    if (self != nullptr) return self;
    pthread_once(&slotOnce, MakeSlot);
    if (!slotMade) return nullptr;
    auto *thread = static_cast<Thread *>(Allocate(sizeof(Thread)));
    if (thread == nullptr) return nullptr;
    thread->Descriptor = -1;
    thread->Cursor = AsPointer<HCURSOR>(arrowCursor);
    pthread_cond_init(&thread->Wake, nullptr);
    if (pthread_setspecific(slot, thread) != 0) {
        pthread_cond_destroy(&thread->Wake);
        Release(thread);
        return nullptr;
    }
    thread->Next = model.Threads;
    model.Threads = thread;
    self = thread;
    return thread;
}

void EndThread(Thread *thread)
{
    while (thread->FirstSent != nullptr) {
        Sent *sent = thread->FirstSent;
        thread->FirstSent = sent->Next;
        Finish(sent, 0);
    }
    while (thread->Handling != nullptr) {
        Sent *sent = thread->Handling;
        thread->Handling = sent->Next;
        Finish(sent, 0);
    }
    TakeAwayWindows(thread);
    while (thread->FirstPosted != nullptr) {
        Posted *posted = thread->FirstPosted;
        thread->FirstPosted = posted->Next;
        FreePosted(posted);
    }
    FreeInput(thread->Current);
    Thread **link = &model.Threads;
    while (*link != thread) {
        link = &(*link)->Next;
    }
    *link = thread->Next;
    frontEnd.ThreadEnds(thread);
}

void ForgetEverything()
{
    ForgetWindows();
    frontEnd.Forget();
}

void WakeThread(Thread *thread) { Signal(thread); }

void WakeAllThreads()
{
    for (Thread *thread = model.Threads; thread != nullptr; thread = thread->Next) {
        Signal(thread);
    }
}

void Tell(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    {
        const Locked locked;
        Window *target = Find(window);
        if (target == nullptr) return;
        if (target->Thread != Self()) {
            auto *sent = static_cast<Sent *>(Allocate(sizeof(Sent)));
            if (sent == nullptr) return; // a notice that is lost; nobody waits for it
            sent->Target = window;
            sent->Message = message;
            sent->WParam = wParam;
            sent->LParam = lParam;
            sent->Nobody = true;
            AppendSent(target->Thread, sent);
            return;
        }
    }
    CallProcedureOf(window, message, wParam, lParam);
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

bool Post(Window *window, UINT message, WPARAM wParam, LPARAM lParam)
{
    Posted *posted = MakePosted(window->Handle, message, wParam, lParam);
    if (posted == nullptr) return false;
    Append(window->Thread, posted);
    return true;
}

Input *MakeInput(InputKind kind, LONG index)
{
    auto *input = static_cast<Input *>(Allocate(sizeof(Input)));
    if (input == nullptr) return nullptr;
    input->Kind = kind;
    input->Index = index;
    input->Serial = serialOfScript;
    return input;
}

void FreeInput(Input *input)
{
    if (input == nullptr) return;
    Release(input->Text);
    Release(input);
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

} // namespace varkui

using namespace varkui;

LRESULT SendMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    WNDPROC procedure = nullptr;
    {
        const Locked locked;
        const Window *target = Find(window);
        Thread *sender = Self();
        if (target == nullptr || sender == nullptr) return 0;
        if (target->Thread != sender) {
            Sent sent = {};
            sent.Target = window;
            sent.Message = message;
            sent.WParam = wParam;
            sent.LParam = lParam;
            sent.Sender = sender;
            AppendSent(target->Thread, &sent);
            // While it waits, a thread answers others: so two that send to each other both get on.
            while (!sent.Done) {
                if (sender->FirstSent != nullptr) {
                    HandleSent(sender);
                } else {
                    pthread_cond_wait(&sender->Wake, &model.Lock);
                }
            }
            return sent.Result;
        }
        procedure = target->Procedure;
    }
    return procedure(window, message, wParam, lParam);
}

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
    Signal(thread);
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

LRESULT DispatchMessageA(const MSG *message)
{
    if (message == nullptr || !IsOfCaller(message->hwnd) || DispatchInput(*message)) return 0;
    return CallProcedureOf(message->hwnd, message->message, message->wParam, message->lParam);
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
        thread->Descriptor = eventfd(waiting ? 1 : 0, EFD_CLOEXEC | EFD_NONBLOCK);
    }
    return thread->Descriptor;
}

// ---- What a window does by itself ----

namespace {

LRESULT ReadText(HWND handle, WPARAM size, LPARAM lParam)
{
    auto *out = AsPointer<char *>(lParam);
    if (out == nullptr || size == 0) return 0;
    const Locked locked;
    const Window *window = Find(handle);
    const char *text = window != nullptr ? TextOf(window) : "";
    size_t length = strlen(text);
    if (length >= size) length = size - 1;
    memcpy(out, text, length);
    out[length] = 0;
    return static_cast<LRESULT>(length);
}

LRESULT WriteText(HWND handle, LPARAM lParam)
{
    const auto *text = AsPointer<const char *>(lParam);
    if (text == nullptr) text = "";
    const Locked locked(mutates);
    Window *window = Find(handle);
    if (window == nullptr) return FALSE;
    // The selection of an edit is put right by its own procedure; a text behind its back begins it anew.
    if (window->Kind == Kind::Edit) window->Edit->Anchor = window->Edit->Caret = 0;
    if (window->Kind == Kind::ComboBox) window->Combo->Edit.Anchor = window->Combo->Edit.Caret = 0;
    return ReplaceText(window, text, strlen(text)) ? TRUE : FALSE;
}

LRESULT TextLength(HWND handle)
{
    const Locked locked;
    const Window *window = Find(handle);
    return window != nullptr ? static_cast<LRESULT>(strlen(TextOf(window))) : 0;
}

} // namespace

LRESULT DefWindowProcA(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_NCCREATE: return TRUE;
    case WM_SETTEXT: return WriteText(window, lParam);
    case WM_GETTEXT: return ReadText(window, wParam, lParam);
    case WM_GETTEXTLENGTH: return TextLength(window);
    case WM_ACTIVATE:
        if (LOWORD(wParam) != WA_INACTIVE) SetFocus(window);
        return 0;
    case WM_CLOSE: DestroyWindow(window); return 0;
    case WM_SYSCOMMAND:
        if ((wParam & 0xFFF0) == SC_CLOSE) SendMessageA(window, WM_CLOSE, 0, 0);
        return 0;
    case WM_SYSKEYDOWN:
        if (wParam == VK_F4) {
            HWND outermost = nullptr;
            {
                const Locked locked;
                Window *found = Find(window);
                if (found != nullptr) outermost = Outermost(found)->Handle;
            }
            PostMessageA(outermost, WM_SYSCOMMAND, SC_CLOSE, 0);
        }
        return 0;
    default: return 0;
    }
}

LRESULT DefMDIChildProcA(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    return DefWindowProcA(window, message, wParam, lParam);
}
