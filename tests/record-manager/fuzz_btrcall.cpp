// The bytes of a run, read from the front; zeros when there are none left. A call takes
//   who         bit 0 the client, bits 1 to 3 the position block, bits 4 to 6 what happens to it before
//   operation   an index into a list, or any number of two bytes
//   key number  signed
//   key length  0: 255
//   length      of the data buffer: 0 the file's record, 1 of two bytes, otherwise itself
//   fault       0: none; else what fails and when
// and then what the operation wants: a path, a definition, a record, a key value. VARK_FUZZ_TRACE=1 writes
// the calls to standard error.
#include "fuzz_btrcall.h"

#include "audit.h"
#include "faults.h"
#include "files.h"
#include "threaded.h"

#include "record-manager/limits.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <set>
#include <stdexcept>

namespace wbtrvtest {

namespace {

class Input {
public:
    Input(const uint8_t *bytes, size_t count) : data(bytes), left(count) {}

    bool IsEmpty() const { return left == 0; }
    uint8_t Byte()
    {
        if (left == 0) return 0;
        --left;
        return *data++;
    }
    uint16_t Word()
    {
        const unsigned low = Byte();
        return static_cast<uint16_t>(low | static_cast<unsigned>(Byte()) << 8);
    }
    // As many bytes as the next one says, over what is there.
    void Fill(std::string *text)
    {
        for (size_t i = 0, count = Byte(); i < count && i < text->size(); ++i) {
            (*text)[i] = static_cast<char>(Byte());
        }
    }

private:
    const uint8_t *data;
    size_t left;
};

const uint16_t operations[] = {BtrOpOpen,
                               BtrOpClose,
                               BtrOpInsert,
                               BtrOpUpdate,
                               BtrOpDelete,
                               BtrOpGetEqual,
                               BtrOpGetNext,
                               BtrOpGetPrevious,
                               BtrOpGetGreater,
                               BtrOpGetGreaterOrEqual,
                               BtrOpGetLess,
                               BtrOpGetLessOrEqual,
                               BtrOpGetFirst,
                               BtrOpGetLast,
                               BtrOpCreate,
                               BtrOpStat,
                               BtrOpBegin,
                               BtrOpEnd,
                               BtrOpAbort,
                               BtrOpGetPosition,
                               BtrOpGetDirect,
                               BtrOpStepNext,
                               BtrOpStop,
                               BtrOpVersion,
                               BtrOpUnlock,
                               BtrOpReset,
                               BtrOpStepFirst,
                               BtrOpStepLast,
                               BtrOpStepPrevious,
                               BtrOpBeginConcurrent,
                               BtrOpInsert,
                               BtrOpUpdate,
                               BtrOpDelete,
                               BtrOpInsert,
                               BtrOpOpen,
                               BtrOpBeginConcurrent + BtrBiasMultiple,
                               BtrOpBeginConcurrent + BtrBiasNoRetry,
                               BtrOpInsert + BtrBiasLock,
                               BtrOpGetEqual + BtrBiasLock,
                               BtrOpGetFirst + BtrBiasMultiple,
                               BtrOpGetNext + BtrBiasKeyOnly,
                               BtrOpGetLast + BtrBiasKeyOnly + BtrBiasLock,
                               BtrOpStepNext + BtrBiasMultiple,
                               BtrOpGetDirect + BtrBiasWaitLock};

const std::set<int16_t> statuses = {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 18, 20, 21, 22,
                                    23, 24, 25, 26, 27, 28, 29, 30, 36, 37, 38, 39, 41, 43, 44, 45, 46,
                                    48, 49, 51, 59, 78, 80, 81, 82, 84, 85, 86, 87, 88, 93, 94};

// A buffer that ends exactly where it says, so that the address sanitizer sees the first byte beyond.
struct Exact {
    std::unique_ptr<uint8_t[]> Bytes;

    explicit Exact(const std::string &text) : Bytes(new uint8_t[text.size()])
    {
        memcpy(Bytes.get(), text.data(), text.size());
    }
};

struct Run {
    Input In;
    TempDirectory Directory{std::filesystem::exists("/dev/shm") ? "/dev/shm" : "/tmp"};
    std::array<PositionBlocks, 2> Blocks{};
    std::array<std::string, 2> LastPosition{std::string(4, '\0'), std::string(4, '\0')};
    std::set<std::string> Paths;
    int Succeeded = 0;

    Run(const uint8_t *data, size_t size) : In(data, size) {}
};

// It stays from run to run, since threads are dear.
Threaded &OtherClient()
{
    static Threaded other;
    return other;
}

void As(unsigned client, const std::function<void()> &work)
{
    if (client == 0) return work();
    OtherClient().Do(work);
}

std::string Path(Run &run)
{
    static const char *const names[] = {"t.btr", "n.btr", "v.btr", "new.btr"};
    const unsigned which = run.In.Byte();
    if (which < 192) {
        std::string path = run.Directory / names[which % std::size(names)];
        run.Paths.insert(path);
        return path;
    }
    static const char *const odd[] = {"",           "/", ".", "..", "/proc/t.btr", "/nowhere/at/all/t.btr",
                                      "/dev/null/t"};
    if (which < 200) return odd[which % std::size(odd)];
    std::string name(which % 32, 'p');
    if (which == 255) name.assign(300, 'p');
    run.In.Fill(&name);
    for (char &letter : name) {
        if (letter == '/') letter = '_';
    }
    return run.Directory / name.c_str();
}

std::string DefinitionBytes(Run &run)
{
    const unsigned which = run.In.Byte();
    std::string definition = which % 2 == 0 ? DefinitionOfT() : DefinitionOfN();
    if (which % 4 == 3) {
        definition =
            CreateBuffer(12, 2,
                         {{1, 4, duplicatesModifiable, BtrTypeZString},
                          {5, 2, BtrKeyModifiable | BtrKeyNullAll | BtrKeyDescending, BtrTypeString, ' '}},
                         BtrFileVariable);
    }
    if (which >= 128) definition.resize(which, '\0');
    if (which >= 32) {
        // Single bytes changed, so that what is left makes sense.
        for (unsigned changes = run.In.Byte() % 16; changes > 0; --changes) {
            const size_t at = run.In.Byte() % definition.size();
            definition[at] = static_cast<char>(run.In.Byte());
        }
    }
    return definition;
}

void Spoil(Run &run, unsigned client, unsigned block, unsigned how)
{
    auto &bytes = run.Blocks[client][block];
    switch (how) {
    case 1: bytes[run.In.Byte() % bytes.size()] ^= run.In.Byte(); break;
    case 2: bytes = run.Blocks[1 - client][block]; break;
    case 3: bytes = run.Blocks[client][(block + 1) % 8]; break;
    case 4: bytes.fill(run.In.Byte()); break;
    default: break;
    }
}

void MakeCall(Run &run)
{
    const unsigned who = run.In.Byte();
    const unsigned client = who & 1;
    const unsigned block = who >> 1 & 7;
    Spoil(run, client, block, who >> 4 & 7);
    const unsigned which = run.In.Byte();
    const uint16_t operation = which < 250 ? operations[which % std::size(operations)] : run.In.Word();
    const auto keyNumber = static_cast<int8_t>(run.In.Byte());
    const uint8_t keyLengthByte = run.In.Byte();
    const uint8_t keyLength = keyLengthByte == 0 ? 255 : keyLengthByte;
    const unsigned lengthByte = run.In.Byte();
    uint32_t length = lengthByte == 0 ? 64 : lengthByte == 1 ? run.In.Word() : lengthByte;
    if (lengthByte == 2) length = 70000;
    const unsigned fault = run.In.Byte();

    std::string key(255, '\0');
    std::string record;
    switch (operation % 100) {
    case BtrOpOpen: key.replace(0, 0, Path(run) + '\0'); break;
    case BtrOpCreate:
        if (operation < 100) {
            key.replace(0, 0, Path(run) + '\0');
            record = DefinitionBytes(run);
            length = lengthByte < 128 ? static_cast<uint32_t>(record.size()) : lengthByte;
        }
        break;
    default:
        record.assign(length, 'r');
        if (operation % 100 == BtrOpGetDirect || operation % 100 == BtrOpUnlock)
            record.replace(0, 4, run.LastPosition[client]);
        run.In.Fill(&record);
        run.In.Fill(&key);
        break;
    }
    key.resize(keyLength);
    record.resize(length);

    const Exact exactKey(key);
    const Exact exactData(record);
    uint32_t returned = length;
    int16_t status = -1;
    As(client, [&] {
        static const Fault kinds[] = {Fault::StoreCall, Fault::Write, Fault::Sync, Fault::Allocation};
        if (fault != 0) Arm(kinds[fault % 4], 1 + fault / 4 % 32, fault >= 128);
        status = BTRCALL(operation, run.Blocks[client][block].data(), exactData.Bytes.get(), &returned,
                         exactKey.Bytes.get(), keyLength, keyNumber);
        Disarm();
    });
    const std::string call = "operation " + std::to_string(operation) + " gives " + std::to_string(status);
    if (getenv("VARK_FUZZ_TRACE") != nullptr) {
        fprintf(stderr, "client %u block %u key number %d fault %u: %s\n", client, block, keyNumber, fault,
                call.c_str());
    }
    if (statuses.count(status) == 0) throw std::runtime_error(call);
    if (status != BtrStatusOk && returned != length) throw std::runtime_error(call + " and a length");
    if (returned > length) throw std::runtime_error(call + " and more than there is room for");
    if (status != BtrStatusOk) return;
    run.Succeeded++;
    if (operation == BtrOpGetPosition)
        run.LastPosition[client].assign(reinterpret_cast<const char *>(exactData.Bytes.get()), 4);
}

void Stop(unsigned client)
{
    As(client, [] { BTRCALL(BtrOpStop, nullptr, nullptr, nullptr, nullptr, 0, 0); });
}

} // namespace

int RunCalls(const uint8_t *data, size_t size)
{
    wbtrv::limits.ChangeWait_ms = 0;
    wbtrv::limits.MomentaryWait_ms = 0;
    wbtrv::limits.LockWait_ms = 0;
    wbtrv::limits.Readers = 16;
    wbtrv::limits.MapSize = size_t{4} << 20;
    Run run(data, size);
    {
        Local me;
        Create(me, run.Directory / "t.btr", DefinitionOfT());
        Create(me, run.Directory / "n.btr", DefinitionOfN());
        Open(me, run.Directory / "t.btr");
        for (const char *name : {"a", "b", "c"}) {
            OnT<Local>{me}.Insert(name, "x", name[0]);
        }
    }
    run.Paths = {run.Directory / "t.btr", run.Directory / "n.btr"};
    for (int calls = 0; calls < 100 && !run.In.IsEmpty(); ++calls) {
        MakeCall(run);
    }
    Stop(0);
    Stop(1);

    Local after;
    for (const std::string &path : run.Paths) {
        const FileImage image = Audit([&](const Request &request) { return after(request); }, path);
        if (image.Opened != BtrStatusOk && image.Opened != BtrStatusFileNotFound)
            throw std::runtime_error("opened with " + std::to_string(image.Opened));
        if (!image.Complaint.empty()) throw std::runtime_error(image.Complaint);
        // Nobody is left who has the file open or holds anything in it.
        const int16_t made = Create(after, path, DefinitionOfT()).Status;
        if (made != BtrStatusOk && made != BtrStatusDiskFull)
            throw std::runtime_error("made anew with " + std::to_string(made));
    }
    return run.Succeeded;
}

} // namespace wbtrvtest
