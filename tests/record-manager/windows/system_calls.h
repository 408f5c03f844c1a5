// Calls of the system that are made to fail. Windows looks a program's calls up in a table of the program, so
// an entry there is exchanged for as long as one of these lives.
#pragma once

#include <windows.h>

#include <winioctl.h>

namespace wbtrvtest {

struct ExchangedCall {
    ExchangedCall(void **place, void *by) : entry(place), before(Put(by)) {}
    ~ExchangedCall() { Put(before); }
    ExchangedCall(const ExchangedCall &) = delete;
    ExchangedCall &operator=(const ExchangedCall &) = delete;

private:
    void *Put(void *call)
    {
        DWORD protection = 0;
        VirtualProtect(static_cast<void *>(entry), sizeof *entry, PAGE_READWRITE, &protection);
        void *const was = *entry;
        *entry = call;
        VirtualProtect(static_cast<void *>(entry), sizeof *entry, protection, &protection);
        return was;
    }

    void **entry;
    void *before;
};

} // namespace wbtrvtest

// Entries of the table, under the names that the linker gives them.
extern "C" {
extern void *entryOfSetEndOfFile asm("__imp__SetEndOfFile@4");
extern void *entryOfWriteFile asm("__imp__WriteFile@20");
extern void *entryOfGetDriveType asm("__imp__GetDriveTypeA@4");
extern void *entryOfDeviceIoControl asm("__imp__DeviceIoControl@32");
extern void *entryOfCreateFile asm("__imp__CreateFileA@28");
}
