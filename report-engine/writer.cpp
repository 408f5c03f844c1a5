#include "report-engine/writer.h"

#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace rs {

void WriteThrough(Writer &writer, const char *bytes, size_t length)
{
    while (length > 0 && writer.Error == 0) {
        const size_t space = sizeof writer.Buffer - writer.Used;
        const size_t part = length < space ? length : space;
        std::memcpy(writer.Buffer + writer.Used, bytes, part);
        writer.Used += part;
        bytes += part;
        length -= part;
        if (writer.Used == sizeof writer.Buffer) FlushWriter(writer);
    }
}

bool FlushWriter(Writer &writer)
{
    size_t done = 0;
    while (done < writer.Used && writer.Error == 0) {
        const ssize_t written = write(writer.File, writer.Buffer + done, writer.Used - done);
        if (written < 0 && errno == EINTR) continue;
        if (written > 0) {
            done += static_cast<size_t>(written);
        } else {
            writer.Error = written < 0 ? errno : ENOSPC;
        }
    }
    writer.Used = 0;
    return writer.Error == 0;
}

} // namespace rs
