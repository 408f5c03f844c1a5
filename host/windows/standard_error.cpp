#include "host/standard_error.h"

#include <cstdlib>
#include <cstring>
#include <windows.h>

namespace host {

namespace {

constexpr DWORD patience_ms = 1000;

struct Message {
    HANDLE To;
    DWORD Size;
    char *Bytes; // behind this
};

Message *MakeMessage(HANDLE to, const char *bytes, size_t size)
{
    auto *const message = static_cast<Message *>(std::malloc(sizeof(Message) + size));
    if (message == nullptr) return nullptr;
    message->To = to;
    message->Size = static_cast<DWORD>(size);
    message->Bytes = reinterpret_cast<char *>(message + 1);
    std::memcpy(message->Bytes, bytes, size);
    return message;
}

// Ends with 1 when all was written.
DWORD WINAPI Write(LPVOID given)
{
    auto *const message = static_cast<Message *>(given);
    DWORD written = 0;
    const bool whole = WriteFile(message->To, message->Bytes, message->Size, &written, nullptr) != 0 &&
                       written == message->Size;
    std::free(message);
    return whole ? 1 : 0;
}

} // namespace

// A pipe that nobody empties makes who writes to it wait: that is another thread, and it is called off.
bool WriteToStandardError(const char *bytes, size_t size)
{
    const HANDLE error = GetStdHandle(STD_ERROR_HANDLE); // a host with windows alone has none
    if (error == nullptr || error == INVALID_HANDLE_VALUE) return false;
    Message *const message = MakeMessage(error, bytes, size);
    if (message == nullptr) return false;
    const HANDLE thread = CreateThread(nullptr, 0, Write, message, 0, nullptr);
    if (thread == nullptr) {
        std::free(message);
        return false;
    }
    DWORD whole = 0;
    if (WaitForSingleObject(thread, patience_ms) == WAIT_OBJECT_0) {
        GetExitCodeThread(thread, &whole);
    } else {
        CancelSynchronousIo(thread);
    }
    CloseHandle(thread);
    return whole == 1;
}

} // namespace host
