// Descriptors that are passed to another process over a socket.
#pragma once

#include <cstddef>
#include <sys/types.h>

namespace host {

// Most descriptors that are taken with one message; more are closed.
inline constexpr int maxPassed = 8;

// Sends bytes, and `descriptor` with the first of them unless it is below 0. It stays the caller's. Returns
// what sendmsg does, and raises no SIGPIPE.
ssize_t SendWith(int socket, int descriptor, const void *bytes, size_t size);

struct Passed {
    int Descriptors[maxPassed]; // close-on-exec, the receiver's
    int Count;
};

// Receives bytes and the descriptors that come with them; `flags` as for recvmsg. Returns what that does.
ssize_t ReceiveWith(int socket, void *bytes, size_t size, int flags, Passed &passed);

} // namespace host
