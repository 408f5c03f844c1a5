// Stands before the real record manager under its name and adds up the time spent in it, the commit apart,
// from the second transaction on: the first opens the tables. The totals go to standard error when the
// process ends.
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>

namespace {

using Entry = int16_t (*)(uint16_t, void *, void *, uint32_t *, void *, uint8_t, int8_t);

constexpr uint16_t endTransaction = 20;

struct Totals {
    std::chrono::nanoseconds Commit{};
    std::chrono::nanoseconds Others{};
    long Calls = 0;

    ~Totals()
    {
        std::fprintf(stderr, "commit_ns %lld others_ns %lld calls %ld\n",
                     static_cast<long long>(Commit.count()), static_cast<long long>(Others.count()), Calls);
    }
};

Totals totals;

Entry Real()
{
    void *library = dlopen(std::getenv("BENCH_RECORD_MANAGER"), RTLD_NOW | RTLD_LOCAL);
    void *entry = library != nullptr ? dlsym(library, "BTRCALL") : nullptr;
    if (entry == nullptr) std::abort();
    return reinterpret_cast<Entry>(entry);
}

} // namespace

extern "C" __attribute__((visibility("default"))) int16_t BTRCALL(uint16_t operation, void *positionBlock,
                                                                  void *data, uint32_t *dataLength, void *key,
                                                                  uint8_t keyLength, int8_t keyNumber)
{
    static const Entry real = Real();
    const auto start = std::chrono::steady_clock::now();
    const int16_t status = real(operation, positionBlock, data, dataLength, key, keyLength, keyNumber);
    const auto taken = std::chrono::steady_clock::now() - start;
    static bool tablesOpen = false;
    if (tablesOpen) {
        (operation == endTransaction ? totals.Commit : totals.Others) += taken;
        ++totals.Calls;
    }
    if (operation == endTransaction) tablesOpen = true;
    return status;
}
