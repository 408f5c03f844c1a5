// Pages are drawn by a program of its own, rs-pages, which stands beside this library: its font and drawing
// libraries load when a page is made and not with every host, their global state and their way of ending the
// process when memory runs out stay there, and their memory goes when the file is done.
#include "report-engine/page_source.h"

#include "host/descriptors.h"
#include "host/helpers.h"
#include "host/passing.h"
#include "report-engine/complain.h"
#include "report-engine/output.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace rs {

Ended WritePages(int file, const View &view, const char *path, PageRange range, const Progress *progress)
{
    char name[] = "rs-pages";
    char kind[] = "pdf";
    char title[maxViewTitle];
    std::snprintf(title, sizeof title, "%s", view.Title);
    char from[24];
    char to[24];
    std::snprintf(from, sizeof from, "%lld", static_cast<long long>(range.From));
    std::snprintf(to, sizeof to, "%lld", static_cast<long long>(range.To));
    char *const arguments[] = {name, kind, title, from, to, nullptr};
    const int descriptors[] = {view.Of->Store.File, file};
    char reason[256];
    const Ended ended =
        RunHelper("rs-pages", arguments, descriptors, 2, reason, sizeof reason, progress, view.Of->PageCount);
    if (reason[0] != 0) Complain(path, ": %s", reason);
    return ended;
}

int longestAnswer_ms = 20'000;

namespace {

bool OpenSource(PageSource &source, const View &view)
{
    int sockets[2] = {-1, -1};
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, sockets) != 0) {
        ComplainOf(view.Of->Path, errno);
        return false;
    }
    for (int &socket : sockets) {
        socket = host::KeepAboveStandard(socket);
    }
    if (sockets[0] < 0 || sockets[1] < 0) {
        ComplainOf(view.Of->Path, errno);
        close(sockets[0]);
        close(sockets[1]);
        return false;
    }
    char name[] = "rs-pages";
    char kind[] = "show";
    char count[24] = "";
    std::snprintf(count, sizeof count, "%lld", static_cast<long long>(view.Of->PageCount));
    char *const arguments[] = {name, kind, count, nullptr};
    const int descriptors[] = {view.Of->Store.File, sockets[1]};
    pid_t child = 0;
    const int error = host::StartHelper("rs-pages", arguments, descriptors, 2, child);
    close(sockets[1]);
    if (error != 0) {
        ComplainOf("rs-pages", error);
        close(sockets[0]);
        return false;
    }
    host::AwaitEnd(child); // it goes on by a child of its own, so that the host has none to wait for
    source.Socket = sockets[0];
    return true;
}

enum class Answered : uint8_t { good, ended, silent };

// An answer, with the file that came along or -1.
Answered TakeAnswer(int socket, PageAnswer &answer, int &file)
{
    pollfd waits = {socket, POLLIN, 0};
    int ready = 0;
    do {
        ready = poll(&waits, 1, longestAnswer_ms);
    } while (ready < 0 && errno == EINTR);
    if (ready <= 0) return Answered::silent;
    host::Passed passed = {};
    const ssize_t got = host::ReceiveWith(socket, &answer, sizeof answer, 0, passed);
    if (passed.Count > 0) file = passed.Descriptors[0];
    const bool isGood = got == static_cast<ssize_t>(sizeof answer) && answer.IsGood != 0;
    return isGood ? Answered::good : Answered::ended;
}

} // namespace

void CloseSource(PageSource &source)
{
    if (source.Socket >= 0) close(source.Socket);
    source.Socket = -1;
}

bool AskForPages(PageSource &source, const View &view, const PageRequest &request, PageAnswer &answer,
                 int &file)
{
    // A program that has ended is started once more: nothing is lost with it. One that stands still is left.
    Answered answered = Answered::ended;
    for (int attempt = 0; attempt < 2 && answered == Answered::ended; ++attempt) {
        file = -1;
        answer = {};
        if (source.Socket < 0 && !OpenSource(source, view)) return false;
        const bool isSent = send(source.Socket, &request, sizeof request, MSG_NOSIGNAL) ==
                            static_cast<ssize_t>(sizeof request);
        if (isSent) answered = TakeAnswer(source.Socket, answer, file);
        if (answered == Answered::good) return true;
        if (file >= 0) close(file);
        CloseSource(source);
    }
    file = -1;
    Complain(view.Of->Path, ": rs-pages zeichnet keine Seite.");
    return false;
}

} // namespace rs
