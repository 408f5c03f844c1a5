// What the part for books on a server, libwbtrv32-server.so, gives the record manager. It is loaded with the
// first directory that needs it; it alone needs the server's client library.
#pragma once

#include "record-manager/limits.h"
#include "record-manager/store.h"

namespace wbtrv {

// Both sides are of one build; another form is refused.
inline constexpr uint32_t serverPartForm = 1;

struct ServerPart {
    int16_t (*AcquireStore)(const char *directory, bool create, bool readOnly, const void *client,
                            Store **store);
    // How often the calling thread has waited for an answer so far.
    uint64_t (*CountRoundTrips)();
};

// Null when the form is another one. `limits` stay where they are.
using GiveServerPart = const ServerPart *(*)(uint32_t form, const Limits *limits);

} // namespace wbtrv
