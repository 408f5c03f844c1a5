// The table that the record manager's benchmarks and their peers read and write: records of 219 bytes with a
// number in order of insertion, a number in random order, and a group that about a thousand records share.
#pragma once

#include <atomic>
#include <cstdint>
#include <cstring>
#include <string>
#include <thread>

#pragma pack(push, 1)
struct BenchRecord {
    uint32_t Number; // 1, 2, 3 …
    uint32_t Random; // each number once, in no order
    char Group[8];
    char Rest[203];
};
#pragma pack(pop)
static_assert(sizeof(BenchRecord) == 219);

// Turns every number into another one and no two into the same.
constexpr uint32_t Scatter(uint32_t number)
{
    uint32_t x = number * 0x9E3779B1u;
    x ^= x >> 16;
    x *= 0x85EBCA6Bu;
    x ^= x >> 13;
    return x;
}

inline void FillBenchRecord(BenchRecord *record, uint32_t number, uint32_t count)
{
    memset(record, 'r', sizeof *record);
    record->Number = number;
    record->Random = Scatter(number);
    uint32_t group = Scatter(number + 7) % (count / 1000 + 1);
    for (char &letter : record->Group) {
        letter = static_cast<char>('a' + group % 10);
        group /= 10;
    }
}

// Numbers drawn one after the other, the same in every program.
struct BenchRandom {
    uint64_t State = 88172645463325252u;

    uint32_t Below(uint32_t limit)
    {
        State ^= State << 13;
        State ^= State >> 7;
        State ^= State << 17;
        return static_cast<uint32_t>((State >> 32) * limit >> 32);
    }
};

// What the programs do: `load` fills the table; `equal` reads by random numbers; `next` reads along the
// numbers and `scattered` along the random ones. With a second word `writing`, a thread changes records
// durably meanwhile.
struct BenchTask {
    std::string Directory;
    uint32_t Count; // records of the table
    std::string What;
    bool Writing;

    static BenchTask From(int count, char **arguments)
    {
        if (count < 4) {
            fprintf(stderr, "%s DIRECTORY COUNT load|equal|next|scattered [writing]\n", arguments[0]);
            exit(2);
        }
        return {arguments[1], static_cast<uint32_t>(std::stoul(arguments[2])), arguments[3], count > 4};
    }
};

// Runs `change` in a thread of its own until it goes out of scope.
struct BenchWriter {
    std::atomic<bool> Ends{false};
    std::thread Thread;

    template <typename Change> explicit BenchWriter(Change change) : Thread([this, change] { change(Ends); })
    {}
    BenchWriter(const BenchWriter &) = delete;
    BenchWriter &operator=(const BenchWriter &) = delete;
    ~BenchWriter()
    {
        Ends = true;
        Thread.join();
    }
};
