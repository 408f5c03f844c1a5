// The record manager itself on the table of the benchmarks.
//   bench_record DIRECTORY COUNT load|equal|next|scattered|scan|open [writing]   prints the seconds
#include "bench/peers/peer.h"
#include "bench/record_table.h"
#include "record-manager/include/btrcall.h"

#include <charconv>
#include <memory>
#include <optional>

namespace {

struct Table {
    alignas(8) uint8_t Block[BtrPositionBlockSize] = {};
    char Key[BtrKeyBufferSize + 1] = {};
    BenchRecord Record = {};
    uint32_t Length = sizeof Record;

    Table(const std::string &directory, int8_t mode)
    {
        const std::string path = directory + "/table.btr";
        memcpy(Key, path.c_str(), path.size() + 1);
        Length = 0;
        Must(BTRCALL(BtrOpOpen, Block, &Record, &Length, Key, 255, mode));
    }
    int16_t Do(uint16_t operation, int8_t keyNumber)
    {
        Length = sizeof Record;
        return BTRCALL(operation, Block, &Record, &Length, Key, 255, keyNumber);
    }
};

void Create(const std::string &directory)
{
    struct {
        BtrFileHeader File{};
        BtrKeyEntry Keys[3] = {};
    } buffer;
    buffer.File.RecordLength = sizeof(BenchRecord);
    buffer.File.PageSize = 4096;
    buffer.File.KeyCount = 3;
    buffer.Keys[0].Position = 1;
    buffer.Keys[0].Length = 4;
    buffer.Keys[0].Flags = BtrKeyExtendedType;
    buffer.Keys[0].Type = BtrTypeUnsigned;
    buffer.Keys[1] = buffer.Keys[0];
    buffer.Keys[1].Position = 5;
    buffer.Keys[2].Position = 9;
    buffer.Keys[2].Length = 8;
    buffer.Keys[2].Flags = BtrKeyDuplicates | BtrKeyModifiable;
    char key[256] = {};
    const std::string path = directory + "/table.btr";
    memcpy(key, path.c_str(), path.size() + 1);
    uint32_t length = sizeof buffer;
    Must(BTRCALL(BtrOpCreate, nullptr, &buffer, &length, key, 255, 0));
}

void Load(const BenchTask &task)
{
    Create(task.Directory);
    Table table(task.Directory, BtrModeLoading);
    for (uint32_t number = 1; number <= task.Count; ++number) {
        FillBenchRecord(&table.Record, number, task.Count);
        Must(table.Do(BtrOpInsert, -1));
    }
    Must(table.Do(BtrOpClose, 0));
}

void ReadEqual(Table *table, uint32_t count)
{
    BenchRandom random;
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t number = random.Below(count) + 1;
        memcpy(table->Key, &number, sizeof number);
        Must(table->Do(BtrOpGetEqual, 0));
    }
}

// The first `count` records along a key.
void ReadAlong(Table *table, int8_t key, uint32_t count)
{
    Must(table->Do(BtrOpGetFirst, key));
    for (uint32_t i = 1; i < count; ++i) {
        Must(table->Do(BtrOpGetNext, key));
    }
}

void MustBeAtEnd(Table *table, int8_t key)
{
    Must(table->Do(BtrOpGetNext, key) == BtrStatusEndOfFile ? 0 : 1);
}

// Anonymous memory of this process, in KiB.
long Anonymous()
{
    long found = -1;
    char line[256];
    FILE *status = fopen("/proc/self/status", "r");
    while (status != nullptr && fgets(line, sizeof line, status) != nullptr) {
        if (memcmp(line, "RssAnon:", 8) != 0) continue;
        const char *digits = line + 8 + strspn(line + 8, " \t");
        std::from_chars(digits, line + strlen(line), found);
    }
    if (status != nullptr) fclose(status);
    return found;
}

} // namespace

int main(int argumentCount, char **arguments)
{
    const BenchTask task = BenchTask::From(argumentCount, arguments);
    Stopwatch watch;
    if (task.What == "load") {
        Load(task);
        watch.Print();
        return 0;
    }
    if (task.What == "open") {
        {
            const Table warm(task.Directory, BtrModeNormal);
        }
        watch = {};
        for (uint32_t i = 0; i < task.Count; ++i) {
            Table table(task.Directory, BtrModeNormal);
            Must(table.Do(BtrOpClose, 0));
        }
        watch.Print();
        return 0;
    }
    Table table(task.Directory, BtrModeNormal);
    std::optional<BenchWriter> writer;
    if (task.Writing) {
        writer.emplace([&task](const std::atomic<bool> &ends) {
            Table own(task.Directory, BtrModeNormal);
            BenchRandom random{42};
            while (!ends) {
                const uint32_t number = random.Below(task.Count) + 1;
                memcpy(own.Key, &number, sizeof number);
                Must(own.Do(BtrOpGetEqual, 0));
                own.Record.Rest[100]++;
                Must(own.Do(BtrOpUpdate, -1));
            }
        });
    }
    watch = {};
    if (task.What == "equal") ReadEqual(&table, task.Count);
    if (task.What == "next" || task.What == "scattered") {
        const int8_t key = task.What == "next" ? 0 : 1;
        ReadAlong(&table, key, task.Count);
        MustBeAtEnd(&table, key);
    }
    if (task.What == "scan") {
        ReadAlong(&table, 0, task.Count / 10);
        const long early = Anonymous();
        ReadAlong(&table, 0, task.Count);
        printf("RssAnon %ld KiB after a tenth, %ld KiB after all\n", early, Anonymous());
    }
    const double seconds = watch.Seconds();
    writer.reset();
    printf("%.6f\n", seconds);
}
