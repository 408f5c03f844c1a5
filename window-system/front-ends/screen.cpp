#include "window-system/front-ends/screen.h"

#include "host/descriptors.h"
#include "host/error_texts.h"
#include "host/helpers.h"
#include "text/windows1252.h"
#include "window-system/front-ends/conversation.h"
#include "window-system/front-ends/lines.h"
#include "window-system/front-ends/outgoing.h"
#include "window-system/front-ends/protocol.h"
#include "window-system/front-ends/telling.h"
#include "window-system/model/model.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

namespace varkui {

namespace {

// A program that cannot start ends at once; one that can may be slow on a busy machine or a far display.
constexpr int startTimeout_ms = 20000;

timespec Now()
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now;
}

int MillisecondsLeft(const timespec &begin)
{
    const timespec now = Now();
    const long passed = (now.tv_sec - begin.tv_sec) * 1000 + (now.tv_nsec - begin.tv_nsec) / 1000000;
    return passed < startTimeout_ms ? static_cast<int>(startTimeout_ms - passed) : 0;
}

// Waits for the program's first frame, which tells the size of its letters.
bool HearHello(const timespec &begin)
{
    uint8_t frame[4 + 13];
    size_t got = 0;
    while (got < sizeof frame) {
        pollfd waits = {screenEnd.Socket, POLLIN, 0};
        const int found = poll(&waits, 1, MillisecondsLeft(begin));
        if (found < 0 && errno == EINTR) continue; // a signal of the host's
        if (found <= 0) return false;
        const ssize_t some = recv(screenEnd.Socket, frame + got, sizeof frame - got, MSG_DONTWAIT);
        if (some < 0 && (errno == EINTR || errno == EAGAIN)) continue;
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

// Whether the error is a passing lack of resources.
bool MayPass(int error)
{
    return error == EMFILE || error == ENFILE || error == ENOMEM || error == ENOBUFS || error == EAGAIN;
}

Start GoWithout(const char *reason, int error = 0)
{
    static bool isTold; // starting is one thread's business at a time
    const bool isForNow = MayPass(error);
    char utf8[300];
    snprintf(utf8, sizeof utf8, "%s %s ohne Bildschirm weiter.", reason,
             isForNow ? "Vorerst geht es" : "Es geht");
    char line[sizeof utf8];
    text::FromUtf8(utf8, line, sizeof line);
    if (!isForNow || !isTold) WriteToStandardError("varkui", line);
    isTold = isForNow;
    if (screenEnd.Socket >= 0) close(screenEnd.Socket);
    if (screenEnd.Wake >= 0) close(screenEnd.Wake);
    screenEnd.Socket = screenEnd.Wake = -1;
    return isForNow ? Start::NotNow : Start::Never;
}

} // namespace

Start StartScreen()
{
    int sockets[2] = {-1, -1};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) != 0) {
        const int error = errno;
        return GoWithout(host::TextOfError(error).Text, error);
    }
    const timespec begin = Now();
    screenEnd.Socket = host::KeepAboveStandard(sockets[0]);
    const int other = host::KeepAboveStandard(sockets[1]);
    screenEnd.Wake = host::KeepAboveStandard(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    const bool hasDescriptors = screenEnd.Socket >= 0 && other >= 0 && screenEnd.Wake >= 0;
    pid_t process = 0;
    int error = hasDescriptors ? 0 : errno;
    char name[] = "vark-ui";
    char *const arguments[] = {name, nullptr};
    if (hasDescriptors) error = host::StartHelper(name, arguments, &other, 1, process);
    if (other >= 0) close(other);
    if (error == ENOENT) return GoWithout("Neben libvarkui.so fehlt das Programm vark-ui.");
    if (error == EPERM) return GoWithout("vark-ui oder ein Verzeichnis darüber ist für andere beschreibbar.");
    if (error != 0) return GoWithout("vark-ui läßt sich nicht starten.", error);
    const bool isSpeaking = HearHello(begin);
    if (!isSpeaking) host::EndHelper(process);
    host::AwaitEnd(process); // it goes on by a child of its own, so that the host has none to wait for
    if (!isSpeaking) return GoWithout("vark-ui findet keinen Bildschirm.");
    fcntl(screenEnd.Socket, F_SETFL, O_NONBLOCK);
    if (!BeginConversation()) return GoWithout("Für den Bildschirm läßt sich kein Thread starten.", EAGAIN);
    return Start::Done;
}

void TellScreen()
{
    if (screenEnd.Socket < 0 || !PutChanges()) return;
    const uint64_t one = 1;
    const ssize_t written = write(screenEnd.Wake, &one, sizeof one);
    static_cast<void>(written);
}

void ForgetScreen()
{
    if (screenEnd.Socket >= 0) close(screenEnd.Socket);
    if (screenEnd.Wake >= 0) close(screenEnd.Wake);
    screenEnd.Socket = screenEnd.Wake = -1;
    ForgetTold();
    DropDescriptors(outgoing, 0);
}

} // namespace varkui
