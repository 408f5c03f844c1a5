// Calls the entries of a report engine, whose convention nobody tells, as the library does: call_entries DLL.
#include "src/platform/entry_call.h"

#include <cstdio>
#include <windows.h>

using namespace vark;

namespace {

template <typename Entry> bool Find(HMODULE engine, const char *name, Entry &entry)
{
    void *const address = reinterpret_cast<void *>(GetProcAddress(engine, name));
    SetEntry(entry, address);
    return address != nullptr;
}

} // namespace

int main(int count, char **arguments)
{
    HMODULE engine = LoadLibraryA(count > 1 ? arguments[1] : "rs.dll");
    EntryCall<int32_t (*)(const char *, const char *, int32_t)> open{};
    EntryCall<void *(*)(int32_t, const char *, const char *, void *, int32_t, int32_t, int32_t, int32_t,
                        int32_t, int32_t, int32_t, int32_t, int32_t)>
        view{};
    EntryCall<void (*)(int32_t)> close{};
    EntryCall<int32_t (*)(int32_t)> pages{};
    if (!Find(engine, "RSOpenReport", open) || !Find(engine, "RSOpenView", view) ||
        !Find(engine, "RSCloseReport", close) || !Find(engine, "RSGetVirtualPages", pages)) {
        std::puts("an entry is missing");
        return 1;
    }
    // So often that a few lost bytes a call would have used up the stack.
    int32_t opened = 0;
    void *shown = nullptr;
    for (int32_t i = 0; i < 100000; ++i) {
        opened = open("A", "B", i % 100);
        shown = view(1, "C", "D", nullptr, 1, 2, 3, 4, 5, 6, 7, 8, 9);
        close(2);
    }
    std::printf("%d %d %d\n", static_cast<int>(opened), static_cast<int>(reinterpret_cast<intptr_t>(shown)),
                static_cast<int>(pages(1)));
    return 0;
}
