#include "window-system/screen.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <initializer_list>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include "text/windows1252.h"
#include "window-system/front_end.h"
#include "window-system/memory.h"
#include "window-system/protocol.h"

namespace varkui {

namespace {

struct Bytes {
    uint8_t *Data;
    size_t Count;
    size_t Capacity;
};

// A descriptor on its way, sent with the byte at Offset of the frames.
struct Passed {
    size_t Offset;
    int Descriptor;
};

// Frames to be written, with the descriptors that go with them in order.
struct Outgoing {
    Bytes Frames;
    Bytes Descriptors; // of Passed
};

struct Screen {
    int Socket;
    int Wake; // tells the thread below that there is something to write
    Outgoing Going;
    unsigned CopiedSerial;        // of the text for pasting that the screen has
    HWND Known[1u << handleBits]; // which windows the screen has, by place
    bool Lost;                    // memory ran out for what the screen must know
};

Screen screen = {-1, -1, {}, 0, {}, false};

// A program that cannot start ends at once; one that can is slow on a busy machine or a far display.
constexpr int startTimeout_ms = 20000;

bool Reserve(Bytes &bytes, size_t more)
{
    if (bytes.Capacity - bytes.Count >= more) return true;
    size_t capacity = bytes.Capacity == 0 ? 4096 : bytes.Capacity;
    while (capacity - bytes.Count < more) {
        capacity *= 2;
    }
    auto *data = static_cast<uint8_t *>(Reallocate(bytes.Data, capacity));
    if (data == nullptr) return false;
    bytes.Data = data;
    bytes.Capacity = capacity;
    return true;
}

void PutBytes(const void *data, size_t size)
{
    if (screen.Lost || !Reserve(screen.Going.Frames, size)) {
        screen.Lost = true;
        return;
    }
    memcpy(screen.Going.Frames.Data + screen.Going.Frames.Count, data, size);
    screen.Going.Frames.Count += size;
}

void PutU8(uint8_t value) { PutBytes(&value, sizeof value); }

void PutU32(uint32_t value) { PutBytes(&value, sizeof value); }

void PutI32(int32_t value) { PutBytes(&value, sizeof value); }

void PutHandle(const Window *window)
{
    PutU32(window != nullptr ? static_cast<uint32_t>(reinterpret_cast<uintptr_t>(window->Handle)) : 0);
}

void PutText(const char *text)
{
    const size_t size = 3 * strlen(text) + 1;
    if (screen.Lost || !Reserve(screen.Going.Frames, size + 4)) {
        screen.Lost = true;
        return;
    }
    const size_t at = screen.Going.Frames.Count;
    const size_t length =
        text::ToUtf8(text, reinterpret_cast<char *>(screen.Going.Frames.Data + at + 4), size);
    const auto shown = static_cast<uint32_t>(length);
    memcpy(screen.Going.Frames.Data + at, &shown, sizeof shown);
    screen.Going.Frames.Count += 4 + length;
}

// A frame is begun with room for its length, which is filled in at its end.
size_t BeginFrame(ToScreen type)
{
    const size_t at = screen.Going.Frames.Count;
    PutU32(0);
    PutU8(static_cast<uint8_t>(type));
    return at;
}

void EndFrame(size_t at)
{
    if (screen.Lost) return;
    const auto length = static_cast<uint32_t>(screen.Going.Frames.Count - at - 4);
    memcpy(screen.Going.Frames.Data + at, &length, sizeof length);
}

// ---- Telling ----

const EditState *FieldOf(const Window *window)
{
    if (window->Kind == Kind::Edit) return window->Edit;
    return window->Kind == Kind::ComboBox ? &window->Combo->Edit : nullptr;
}

int32_t ValueOf(const Window *window)
{
    switch (window->Kind) {
    case Kind::Button: return window->Button->Check;
    case Kind::ListBox: return window->List->Selected;
    case Kind::ComboBox: return window->Combo->Selected;
    case Kind::TabControl: return window->Tabs->Selected;
    case Kind::Dialog: return window->Dialog->Number;
    default: return 0;
    }
}

uint8_t FlagsOf(const Window *window)
{
    uint8_t flags = 0;
    if ((window->Style & WS_VISIBLE) != 0) flags |= flagShown;
    if ((window->Style & WS_DISABLED) == 0) flags |= flagEnabled;
    if (window->Kind == Kind::Dialog && window->Dialog->IsBox) flags |= flagBox;
    if (window->Kind == Kind::ComboBox && window->Combo->Dropped) flags |= flagDropped;
    if (window->Kind == Kind::Dialog && window->Dialog->IsChooser) flags |= flagChooser;
    return flags;
}

void TellWindow(const Window *window)
{
    const EditState *field = FieldOf(window);
    const size_t frame = BeginFrame(ToScreen::Window);
    PutHandle(window);
    PutHandle(window->Parent);
    PutHandle(window->Owner);
    PutU32(static_cast<uint32_t>(reinterpret_cast<uintptr_t>(window->Thread) >> 4));
    PutU8(static_cast<uint8_t>(window->Kind));
    PutU8(FlagsOf(window));
    PutU32(window->Style);
    PutU32(window->ExStyle);
    PutI32(static_cast<int32_t>(window->Id));
    PutI32(window->Place.left);
    PutI32(window->Place.top);
    PutI32(window->Place.right - window->Place.left);
    PutI32(window->Place.bottom - window->Place.top);
    PutI32(ValueOf(window));
    PutI32(field != nullptr ? field->Limit : 0);
    PutI32(field != nullptr ? field->Anchor : 0);
    PutI32(field != nullptr ? field->Caret : 0);
    PutU32(field != nullptr ? field->Serial : 0);
    PutU32(window->Kind == Kind::Dialog ? window->Dialog->BoxStyle : 0);
    PutHandle(LabelOf(window));
    PutText(TextOf(window));
    const int stops = window->Kind == Kind::ListBox ? window->List->TabStopCount : 0;
    PutU32(static_cast<uint32_t>(stops));
    for (int i = 0; i < stops; ++i) {
        PutI32(static_cast<int32_t>(int64_t{window->List->TabStops[i]} * model.BaseX / 4));
    }
    EndFrame(frame);
}

void TellRows(const Window *window)
{
    const Rows *rows = window->Kind == Kind::ListBox    ? &window->List->Rows
                       : window->Kind == Kind::ComboBox ? &window->Combo->Rows
                                                        : nullptr;
    if (rows == nullptr && window->Kind != Kind::TabControl) return;
    const size_t frame = BeginFrame(ToScreen::Rows);
    PutHandle(window);
    PutI32(rows != nullptr ? rows->Count : window->Tabs->Count);
    for (int i = 0; rows != nullptr && i < rows->ChunkCount; ++i) {
        for (int j = 0; j < rows->Chunks[i]->Count; ++j) {
            PutText(rows->Chunks[i]->Items[j]->Text);
        }
    }
    for (int i = 0; rows == nullptr && i < window->Tabs->Count; ++i) {
        PutText(window->Tabs->Items[i].Text);
    }
    EndFrame(frame);
}

// The picture with a descriptor of its own, since the window may have another one before it is sent.
void TellPicture(const Window *window)
{
    if (window->Kind != Kind::Picture) return;
    const VARKUIPICTURE &shown = window->Picture->Shown;
    Bytes &descriptors = screen.Going.Descriptors;
    const size_t frame = BeginFrame(ToScreen::Picture);
    PutHandle(window);
    for (const LONG number :
         {shown.Width, shown.Height, shown.X, shown.Y, shown.ContentWidth, shown.ContentHeight, shown.Page}) {
        PutI32(number);
    }
    Passed passed = {frame, -1};
    if (shown.Descriptor >= 0 && Reserve(descriptors, sizeof passed)) {
        passed.Descriptor = fcntl(shown.Descriptor, F_DUPFD_CLOEXEC, 0);
    }
    PutU8(passed.Descriptor >= 0 ? 1 : 0);
    EndFrame(frame);
    if (passed.Descriptor < 0) return;
    memcpy(descriptors.Data + descriptors.Count, &passed, sizeof passed);
    descriptors.Count += sizeof passed;
}

void TellCopied()
{
    if (screen.CopiedSerial == model.CopiedSerial) return;
    screen.CopiedSerial = model.CopiedSerial;
    const size_t frame = BeginFrame(ToScreen::Copied);
    PutText(model.Copied != nullptr ? model.Copied : "");
    EndFrame(frame);
}

bool IsKnown(const Window *window) { return screen.Known[PlaceOf(window->Handle)] == window->Handle; }

void Tell(Window *window)
{
    const bool known = IsKnown(window);
    if (known && window->Changed == 0) return;
    if (!known && (!IsShown(Outermost(window)) || IsPlayedTo(window->Thread))) return;
    if (window->Parent != nullptr && !IsKnown(window->Parent)) Tell(window->Parent);
    if (window->Owner != nullptr && !IsKnown(window->Owner)) Tell(window->Owner);
    TellWindow(window);
    if (!known || (window->Changed & changedRows) != 0) TellRows(window);
    if (!known || (window->Changed & changedPicture) != 0) TellPicture(window);
    screen.Known[PlaceOf(window->Handle)] = window->Handle;
    window->Changed = 0;
}

void TellDestroyed(HWND handle)
{
    const size_t frame = BeginFrame(ToScreen::Destroyed);
    PutU32(static_cast<uint32_t>(reinterpret_cast<uintptr_t>(handle)));
    EndFrame(frame);
    screen.Known[PlaceOf(handle)] = nullptr;
}

// A window that stands elsewhere now is another one to the screen, with all that lies inside.
void TellGone(const Window *window)
{
    if (IsKnown(window)) TellDestroyed(window->Handle);
    for (const Window *child = window->FirstChild; child != nullptr; child = child->Next) {
        TellGone(child);
    }
}

void TellTop(Window *top)
{
    const Window *focus = Find(top->Thread->Focus);
    const Window *button = nullptr;
    const int id = CurrentDefault(top);
    if (id != 0) button = FindControl(top, id);
    const size_t frame = BeginFrame(ToScreen::Top);
    PutHandle(top);
    uint8_t flags = 0;
    if (top->Thread->Active == top->Handle) flags |= flagActive;
    if (reinterpret_cast<LPSTR>(top->Thread->Cursor) == IDC_WAIT) flags |= flagWaits;
    PutU8(flags);
    PutHandle(focus != nullptr && LiesInside(focus, top) ? focus : nullptr);
    PutHandle(button);
    PutU32(top->Thread->HandledKey);
    EndFrame(frame);
}

// ---- Hearing ----

void HearInput(FrameReader &reader)
{
    HWND handle = AsPointer<HWND>(WPARAM{TakeU32(reader)});
    const auto kind = static_cast<InputKind>(TakeU8(reader));
    Input *input = MakeInput(kind);
    if (input == nullptr) return;
    input->Index = TakeI32(reader);
    input->Index2 = TakeI32(reader);
    input->Serial = TakeU32(reader);
    uint32_t length = 0;
    const char *text = TakeText(reader, length);
    char *utf8 = CopyText(text, length);
    if (kind == InputKind::File) {
        input->Text = utf8;
    } else {
        input->Text = utf8 != nullptr ? static_cast<char *>(Allocate(length + size_t{1})) : nullptr;
        if (input->Text != nullptr) text::FromUtf8(utf8, input->Text, length + size_t{1});
        Release(utf8);
    }
    if (reader.Bad || kind > InputKind::File || input->Text == nullptr) {
        FreeInput(input);
        return;
    }
    PostInput(handle, input);
}

void HearKey(FrameReader &reader)
{
    Window *top = Find(AsPointer<HWND>(WPARAM{TakeU32(reader)}));
    const uint32_t number = TakeU32(reader);
    KeyPress press = {};
    press.Key = TakeU32(reader) & 0xFF;
    press.Character = text::ByteOf(TakeU32(reader));
    const uint8_t modifiers = TakeU8(reader);
    press.Shift = (modifiers & modifierShift) != 0;
    press.Control = (modifiers & modifierControl) != 0;
    press.Alt = (modifiers & modifierAlt) != 0;
    if (top == nullptr || reader.Bad) return;
    top->Thread->HeardKey = number;
    if (AreEnabled(top)) PostKey(top->Thread, press);
}

void HearFrame(const uint8_t *data, size_t size)
{
    FrameReader reader = {data, data + size, false};
    const auto type = static_cast<FromScreen>(TakeU8(reader));
    if (type == FromScreen::Input) HearInput(reader);
    if (type == FromScreen::Key) HearKey(reader);
}

// Handles every whole frame at the front of `in` and keeps the rest. False for a frame that cannot be.
bool HearFrames(Bytes &in)
{
    if (in.Data == nullptr) return true;
    size_t at = 0;
    while (in.Count - at >= 4) {
        uint32_t length = 0;
        memcpy(&length, in.Data + at, sizeof length);
        if (length > longestFrame) return false;
        if (in.Count - at - 4 < length) break;
        HearFrame(in.Data + at + 4, length);
        at += 4 + size_t{length};
    }
    memmove(in.Data, in.Data + at, in.Count - at);
    in.Count -= at;
    return true;
}

bool ReadSome(Bytes &in)
{
    constexpr size_t step = 65536;
    if (!Reserve(in, step)) return false;
    const ssize_t got = recv(screen.Socket, in.Data + in.Count, step, 0);
    if (got < 0) return errno == EAGAIN || errno == EINTR;
    in.Count += static_cast<size_t>(got);
    return got > 0;
}

// Sends `size` bytes, a descriptor with the first of them unless it is -1.
ssize_t SendWith(int descriptor, const uint8_t *data, size_t size)
{
    iovec part = {const_cast<uint8_t *>(data), size};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof descriptor)] = {};
    msghdr message = {};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    if (descriptor >= 0) {
        message.msg_control = control;
        message.msg_controllen = sizeof control;
        cmsghdr *header = CMSG_FIRSTHDR(&message);
        header->cmsg_level = SOL_SOCKET;
        header->cmsg_type = SCM_RIGHTS;
        header->cmsg_len = CMSG_LEN(sizeof descriptor);
        memcpy(CMSG_DATA(header), &descriptor, sizeof descriptor);
    }
    return sendmsg(screen.Socket, &message, MSG_NOSIGNAL);
}

// How far a conversation has come with what it writes.
struct Progress {
    size_t Bytes;
    size_t Descriptors; // as bytes of the list of them
};

// Writes as much as the socket takes; false when the other side has gone.
bool WriteSome(const Outgoing &pending, Progress &done)
{
    while (done.Bytes < pending.Frames.Count) {
        Passed next = {pending.Frames.Count, -1};
        if (done.Descriptors < pending.Descriptors.Count) {
            memcpy(&next, pending.Descriptors.Data + done.Descriptors, sizeof next);
        }
        const bool isWith = next.Descriptor >= 0 && next.Offset == done.Bytes;
        const size_t end = isWith ? pending.Frames.Count : next.Offset;
        // With a descriptor, a byte alone: the next descriptor has a place of its own then as well.
        const ssize_t sent = SendWith(isWith ? next.Descriptor : -1, pending.Frames.Data + done.Bytes,
                                      isWith ? 1 : end - done.Bytes);
        if (sent < 0) return errno == EAGAIN || errno == EINTR;
        done.Bytes += static_cast<size_t>(sent);
        if (!isWith) continue;
        close(next.Descriptor);
        done.Descriptors += sizeof next;
    }
    return true;
}

// Closes the descriptors that were not sent.
void DropDescriptors(Outgoing &going, size_t from)
{
    for (size_t at = from; at < going.Descriptors.Count; at += sizeof(Passed)) {
        Passed passed = {};
        memcpy(&passed, going.Descriptors.Data + at, sizeof passed);
        close(passed.Descriptor);
    }
    going.Descriptors.Count = 0;
    going.Frames.Count = 0;
}

// The thread that speaks with the screen, so that no thread of the host ever waits for it.
void *Converse(void * /*nothing*/)
{
    Bytes in = {};
    Outgoing pending = {};
    Progress written = {};
    bool goesOn = true;
    while (goesOn) {
        if (written.Bytes == pending.Frames.Count) {
            Lock();
            pending.Frames.Count = pending.Descriptors.Count = 0;
            written = {};
            const Outgoing swapped = pending;
            pending = screen.Going;
            screen.Going = swapped;
            goesOn = !screen.Lost;
            Unlock();
        }
        const auto events =
            static_cast<short>(written.Bytes < pending.Frames.Count ? POLLIN | POLLOUT : POLLIN);
        pollfd waits[2] = {{screen.Socket, events, 0}, {screen.Wake, POLLIN, 0}};
        if (poll(waits, 2, -1) < 0 && errno != EINTR) break;
        if ((waits[1].revents & POLLIN) != 0) {
            uint64_t count = 0;
            const ssize_t got = read(screen.Wake, &count, sizeof count);
            static_cast<void>(got);
        }
        if ((waits[0].revents & (POLLIN | POLLHUP | POLLERR)) != 0) {
            goesOn = goesOn && ReadSome(in);
            Lock();
            goesOn = HearFrames(in) && goesOn;
            Unlock();
        }
        goesOn = goesOn && WriteSome(pending, written);
    }
    Release(in.Data);
    DropDescriptors(pending, written.Descriptors);
    Release(pending.Frames.Data);
    Release(pending.Descriptors.Data);
    WriteToStandardError("varkui", "the screen has gone; going on without it");
    Lock();
    close(screen.Socket);
    screen.Socket = -1;
    DropDescriptors(screen.Going, 0);
    FallBackToHeadless();
    Unlock();
    return nullptr;
}

// ---- Starting ----

// The path of vark-ui, beside this library; false when there is no such program.
bool FindProgram(char (&path)[4096])
{
    Dl_info self = {};
    if (dladdr(reinterpret_cast<void *>(&StartScreen), &self) == 0 || self.dli_fname == nullptr) return false;
    const char *slash = strrchr(self.dli_fname, '/');
    const int directory = slash != nullptr ? static_cast<int>(slash - self.dli_fname) : 1;
    const int length =
        snprintf(path, sizeof path, "%.*s/vark-ui", directory, slash != nullptr ? self.dli_fname : ".");
    return length > 0 && static_cast<size_t>(length) < sizeof path && access(path, X_OK) == 0;
}

// Runs the program with `socket` as its descriptor 3 and no other of the host's. It goes on by a child of its
// own, so that the host is left with none to wait for.
bool Spawn(const char *path, int socket)
{
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    if (posix_spawn_file_actions_init(&actions) != 0) return false;
    if (posix_spawnattr_init(&attributes) != 0) {
        posix_spawn_file_actions_destroy(&actions);
        return false;
    }
    constexpr int socketOfProgram = 3;
    posix_spawn_file_actions_adddup2(&actions, socket, socketOfProgram);
    posix_spawn_file_actions_addclosefrom_np(&actions, socketOfProgram + 1);
    sigset_t none;
    sigset_t all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &all);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    char *const arguments[] = {const_cast<char *>(path), nullptr};
    pid_t process = 0;
    const bool started = posix_spawn(&process, path, &actions, &attributes, arguments, environ) == 0;
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    if (!started) return false;
    int status = 0;
    while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    return true;
}

// Waits for the program's first word, which tells how large its letters are.
bool HearHello()
{
    uint8_t frame[4 + 13];
    size_t got = 0;
    while (got < sizeof frame) {
        pollfd waits = {screen.Socket, POLLIN, 0};
        if (poll(&waits, 1, startTimeout_ms) <= 0) return false;
        const ssize_t some = recv(screen.Socket, frame + got, sizeof frame - got, 0);
        if (some <= 0) return false;
        got += static_cast<size_t>(some);
    }
    FrameReader reader = {frame, frame + sizeof frame, false};
    const uint32_t length = TakeU32(reader);
    const uint8_t type = TakeU8(reader);
    const uint32_t version = TakeU32(reader);
    const uint32_t baseX = TakeU32(reader);
    const uint32_t baseY = TakeU32(reader);
    constexpr uint32_t largestBase = 200;
    if (length != 13 || type != static_cast<uint8_t>(FromScreen::Hello) || version != protocolVersion)
        return false;
    if (baseX < 4 || baseX > largestBase || baseY < 8 || baseY > largestBase) return false;
    const Locked locked;
    model.BaseX = baseX;
    model.BaseY = baseY;
    return true;
}

bool StartThread()
{
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before); // signals are the host's threads' business
    pthread_t thread = {};
    const bool started = pthread_create(&thread, nullptr, Converse, nullptr) == 0;
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    if (started) pthread_detach(thread);
    return started;
}

bool GoWithout(const char *reason)
{
    char line[300];
    snprintf(line, sizeof line, "%s; going on without a screen", reason);
    WriteToStandardError("varkui", line);
    if (screen.Socket >= 0) close(screen.Socket);
    if (screen.Wake >= 0) close(screen.Wake);
    screen.Socket = screen.Wake = -1;
    return false;
}

} // namespace

bool StartScreen()
{
    char path[4096];
    if (!FindProgram(path)) return GoWithout("there is no program vark-ui beside libvarkui.so");
    int sockets[2] = {-1, -1};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) != 0) return GoWithout(strerror(errno));
    screen.Socket = sockets[0];
    screen.Wake = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    const bool spawned = screen.Wake >= 0 && Spawn(path, sockets[1]);
    close(sockets[1]);
    if (!spawned) return GoWithout("vark-ui could not be started");
    if (!HearHello()) return GoWithout("vark-ui found no screen");
    fcntl(screen.Socket, F_SETFL, O_NONBLOCK);
    return StartThread() || GoWithout("there is no thread for the screen");
}

void TellScreen()
{
    if (screen.Socket < 0) return;
    const size_t before = screen.Going.Frames.Count;
    for (unsigned place = 1; place < (1u << handleBits); ++place) {
        HWND known = screen.Known[place];
        if (known == nullptr || Find(known) != nullptr) continue;
        TellDestroyed(known);
    }
    unsigned next = 1;
    for (const Window *window = NextInTable(next); window != nullptr; window = NextInTable(next)) {
        if ((window->Changed & changedParent) != 0) TellGone(window);
    }
    // From the bottom up, so that the screen makes siblings in the order of their making.
    next = 1;
    for (Window *window = NextInTable(next); window != nullptr; window = NextInTable(next)) {
        Tell(window);
    }
    for (Window *top = model.LastTop; top != nullptr; top = top->Previous) {
        if (IsKnown(top)) TellTop(top);
    }
    TellCopied();
    if (screen.Going.Frames.Count == before) return;
    const uint64_t one = 1;
    const ssize_t written = write(screen.Wake, &one, sizeof one);
    static_cast<void>(written);
}

void ForgetScreen()
{
    if (screen.Socket >= 0) close(screen.Socket);
    if (screen.Wake >= 0) close(screen.Wake);
    screen.Socket = screen.Wake = -1;
    memset(static_cast<void *>(screen.Known), 0, sizeof screen.Known);
    DropDescriptors(screen.Going, 0);
    screen.CopiedSerial = model.CopiedSerial;
}

} // namespace varkui
