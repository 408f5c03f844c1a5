#include "window-system/front-ends/conversation.h"

#include "host/passing.h"
#include "window-system/front-ends/hearing.h"
#include "window-system/front-ends/in_charge.h"
#include "window-system/front-ends/lines.h"
#include "window-system/front-ends/outgoing.h"
#include "window-system/model/memory.h"
#include "window-system/model/model.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

namespace varkui {

ScreenEnd screenEnd = {-1, -1};

namespace {

bool ReadSome(Bytes &in)
{
    constexpr size_t step = 65536;
    if (!Reserve(in, step)) return false;
    const ssize_t got = recv(screenEnd.Socket, in.Data + in.Count, step, 0);
    if (got < 0) return errno == EAGAIN || errno == EINTR;
    in.Count += static_cast<size_t>(got);
    return got > 0;
}

// The progress of writing a batch of frames.
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
        const ssize_t sent = host::SendWith(screenEnd.Socket, isWith ? next.Descriptor : -1,
                                            pending.Frames.Data + done.Bytes, isWith ? 1 : end - done.Bytes);
        if (sent < 0) return errno == EAGAIN || errno == EINTR;
        done.Bytes += static_cast<size_t>(sent);
        if (!isWith) continue;
        close(next.Descriptor);
        done.Descriptors += sizeof next;
    }
    return true;
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
            pending = outgoing;
            outgoing = swapped;
            goesOn = !isLost;
            Unlock();
        }
        const auto events =
            static_cast<short>(written.Bytes < pending.Frames.Count ? POLLIN | POLLOUT : POLLIN);
        pollfd waits[2] = {{screenEnd.Socket, events, 0}, {screenEnd.Wake, POLLIN, 0}};
        if (poll(waits, 2, -1) < 0 && errno != EINTR) break;
        if ((waits[1].revents & POLLIN) != 0) {
            uint64_t count = 0;
            const ssize_t got = read(screenEnd.Wake, &count, sizeof count);
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
    WriteToStandardError("varkui", "Der Bildschirm ist weg; es geht ohne ihn weiter.");
    Lock();
    close(screenEnd.Socket);
    screenEnd.Socket = -1;
    DropDescriptors(outgoing, 0);
    FallBackToHeadless();
    Unlock();
    return nullptr;
}

} // namespace

bool BeginConversation()
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

} // namespace varkui
