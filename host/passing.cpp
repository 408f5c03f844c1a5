#include "host/passing.h"

#include <cstring>
#include <sys/socket.h>
#include <sys/uio.h>

namespace host {

ssize_t SendWith(int socket, int descriptor, const void *bytes, size_t size)
{
    iovec part = {const_cast<void *>(bytes), size};
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
        std::memcpy(CMSG_DATA(header), &descriptor, sizeof descriptor);
    }
    return sendmsg(socket, &message, MSG_NOSIGNAL);
}

ssize_t ReceiveWith(int socket, void *bytes, size_t size, int flags, Passed &passed)
{
    passed.Count = 0;
    iovec part = {bytes, size};
    alignas(cmsghdr) char control[CMSG_SPACE(maxPassed * sizeof(int))] = {};
    msghdr message = {};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    const ssize_t got = recvmsg(socket, &message, flags | MSG_CMSG_CLOEXEC);
    if (got < 0) return got;
    for (cmsghdr *each = CMSG_FIRSTHDR(&message); each != nullptr; each = CMSG_NXTHDR(&message, each)) {
        if (each->cmsg_level != SOL_SOCKET || each->cmsg_type != SCM_RIGHTS) continue;
        // The system puts no more into the room that there is, and closes the others.
        const size_t count = (each->cmsg_len - CMSG_LEN(0)) / sizeof(int);
        std::memcpy(passed.Descriptors + passed.Count, CMSG_DATA(each), count * sizeof(int));
        passed.Count += static_cast<int>(count);
    }
    return got;
}

} // namespace host
