#include "window-system/front-ends/screen.h"

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
#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace varkui {

namespace {

// A program that cannot start ends at once; one that can is slow on a busy machine or a far display.
constexpr int startTimeout_ms = 20000;

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
        pollfd waits = {screenEnd.Socket, POLLIN, 0};
        if (poll(&waits, 1, startTimeout_ms) <= 0) return false;
        const ssize_t some = recv(screenEnd.Socket, frame + got, sizeof frame - got, 0);
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

bool GoWithout(const char *reason)
{
    char line[300];
    snprintf(line, sizeof line, "%s; going on without a screen", reason);
    WriteToStandardError("varkui", line);
    if (screenEnd.Socket >= 0) close(screenEnd.Socket);
    if (screenEnd.Wake >= 0) close(screenEnd.Wake);
    screenEnd.Socket = screenEnd.Wake = -1;
    return false;
}

} // namespace

bool StartScreen()
{
    char path[4096];
    if (!FindProgram(path)) return GoWithout("there is no program vark-ui beside libvarkui.so");
    int sockets[2] = {-1, -1};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) != 0) return GoWithout(strerror(errno));
    screenEnd.Socket = sockets[0];
    screenEnd.Wake = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    const bool spawned = screenEnd.Wake >= 0 && Spawn(path, sockets[1]);
    close(sockets[1]);
    if (!spawned) return GoWithout("vark-ui could not be started");
    if (!HearHello()) return GoWithout("vark-ui found no screen");
    fcntl(screenEnd.Socket, F_SETFL, O_NONBLOCK);
    return BeginConversation() || GoWithout("there is no thread for the screen");
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
