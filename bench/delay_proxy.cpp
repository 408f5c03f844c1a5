// Stands between a client and a server on sockets of their own and puts time into every round trip: what
// comes from either side goes on to the other half a delay later, in the same order and at the same speed.
//   delay_proxy LISTEN TARGET MICROSECONDS   both are paths of sockets; ends with its standard input
#include "bench/peers/peer.h"

#include <cerrno>
#include <csignal>
#include <deque>
#include <poll.h>
#include <string>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

// More than this is not taken from one side before the other has some of it: many times what a fast line
// holds.
constexpr size_t mostOnTheWay = 64u << 20;
constexpr size_t chunkSize = 256u << 10;

struct Chunk {
    Clock::time_point Due;
    std::string Bytes;
};

struct Direction {
    int From;
    int To;
    std::deque<Chunk> Chunks;
    size_t OnTheWay = 0;
    bool Ended = false; // the side that sends has closed
};

sockaddr_un AddressOf(const char *path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const size_t size = std::strlen(path) + 1;
    Must(size > sizeof address.sun_path);
    std::memcpy(address.sun_path, path, size);
    return address;
}

int Open() { return socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0); }

void Take(Direction &direction, std::vector<char> &buffer, Clock::duration delay)
{
    const ssize_t got = recv(direction.From, buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (got < 0 && (errno == EAGAIN || errno == EINTR)) return;
    if (got <= 0) {
        direction.Ended = true;
        return;
    }
    const auto size = static_cast<size_t>(got);
    direction.Chunks.push_back({Clock::now() + delay, std::string(buffer.data(), size)});
    direction.OnTheWay += size;
}

// Sends what is due. False when the other side is gone.
bool Give(Direction &direction)
{
    while (!direction.Chunks.empty() && direction.Chunks.front().Due <= Clock::now()) {
        std::string &bytes = direction.Chunks.front().Bytes;
        const ssize_t sent = send(direction.To, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR) continue;
        if (sent < 0) return errno == EAGAIN;
        const auto size = static_cast<size_t>(sent);
        direction.OnTheWay -= size;
        if (size == bytes.size()) {
            direction.Chunks.pop_front();
        } else {
            bytes.erase(0, size);
        }
    }
    return true;
}

bool IsDue(const Direction &direction)
{
    return !direction.Chunks.empty() && direction.Chunks.front().Due <= Clock::now();
}

void Carry(int client, int server, Clock::duration delay)
{
    // Waits end when they should, not when it suits the machine.
    prctl(PR_SET_TIMERSLACK, 1);
    std::vector<char> buffer(chunkSize);
    Direction there{client, server, {}};
    Direction back{server, client, {}};
    for (;;) {
        if (!Give(there) || !Give(back)) break;
        if ((there.Ended && there.Chunks.empty()) || (back.Ended && back.Chunks.empty())) break;
        pollfd waits[2] = {{client, 0, 0}, {server, 0, 0}};
        auto until = Clock::time_point::max();
        const auto wait = [&](const Direction &direction, pollfd &from, pollfd &to) {
            if (!direction.Ended && direction.OnTheWay < mostOnTheWay) from.events |= POLLIN;
            if (IsDue(direction)) {
                to.events |= POLLOUT;
            } else if (!direction.Chunks.empty()) {
                until = std::min(until, direction.Chunks.front().Due);
            }
        };
        wait(there, waits[0], waits[1]);
        wait(back, waits[1], waits[0]);
        timespec left{};
        if (until != Clock::time_point::max()) {
            const auto nanoseconds = std::max<int64_t>(0, (until - Clock::now()).count());
            left = {nanoseconds / 1000000000, nanoseconds % 1000000000};
        }
        if (ppoll(waits, 2, until != Clock::time_point::max() ? &left : nullptr, nullptr) < 0 &&
            errno != EINTR)
            break;
        if ((waits[0].revents & (POLLIN | POLLHUP | POLLERR)) != 0) Take(there, buffer, delay);
        if ((waits[1].revents & (POLLIN | POLLHUP | POLLERR)) != 0) Take(back, buffer, delay);
    }
    close(client);
    close(server);
}

} // namespace

int main(int argumentCount, char **arguments)
{
    if (argumentCount != 4) {
        std::fprintf(stderr, "%s LISTEN TARGET MICROSECONDS\n", arguments[0]);
        return 2;
    }
    const sockaddr_un here = AddressOf(arguments[1]);
    const sockaddr_un target = AddressOf(arguments[2]);
    const Clock::duration delay = std::chrono::microseconds(NumberOf(arguments[3])) / 2;
    const int listening = Open();
    Must(bind(listening, reinterpret_cast<const sockaddr *>(&here), sizeof here));
    Must(listen(listening, 64));
    for (;;) {
        pollfd waits[2] = {{listening, POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}};
        if (poll(waits, 2, -1) < 0 && errno != EINTR) Must(errno);
        if (waits[1].revents != 0) break;
        if (waits[0].revents == 0) continue;
        const int client = accept4(listening, nullptr, nullptr, SOCK_CLOEXEC);
        const int server = Open();
        if (client < 0 || connect(server, reinterpret_cast<const sockaddr *>(&target), sizeof target) != 0) {
            close(client);
            close(server);
            continue;
        }
        std::thread(Carry, client, server, delay).detach();
    }
    unlink(arguments[1]);
    std::_Exit(0);
}
