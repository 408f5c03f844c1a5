// The n-th call below the record manager fails, for n = 1, 2, 3 … until a run of operations is through
// without reaching it: each time what was answered holds, and the files are those of the model, in this
// process and for the next one that opens them.
#include "audit.h"
#include "faults.h"
#include "files.h"
#include "layouts.h"
#include "model.h"

#include "record-manager/limits.h"

#include <set>

namespace {

using namespace wbtrvtest;
constexpr uint8_t onT = 0;
constexpr uint8_t onN = 1;
constexpr uint8_t onV = 2;
constexpr uint8_t secondOnT = 3;

Request Plain(unsigned operation, uint8_t block = 0, uint32_t length = 0)
{
    return {.Operation = static_cast<uint16_t>(operation), .Block = block, .Length = length};
}
Request Insert(uint8_t block, const std::string &record, int8_t keyNumber = 0, unsigned bias = 0)
{
    return {.Operation = static_cast<uint16_t>(BtrOpInsert + bias),
            .Block = block,
            .Data = record,
            .Length = static_cast<uint32_t>(record.size()),
            .KeyNumber = keyNumber};
}
Request Update(uint8_t block, const std::string &record, int8_t keyNumber = 0)
{
    Request request = Insert(block, record, keyNumber);
    request.Operation = BtrOpUpdate;
    return request;
}
Request Read(uint8_t block, unsigned operation, int8_t keyNumber = 0, const std::string &key = "")
{
    return {.Operation = static_cast<uint16_t>(operation),
            .Block = block,
            .Length = 100,
            .Key = key,
            .KeyNumber = keyNumber};
}
Request Make(const std::string &path, const ModelLayout &layout, int8_t mode = BtrKeepExisting)
{
    return {.Operation = BtrOpCreate,
            .Data = layout.CreateBuffer,
            .Length = static_cast<uint32_t>(layout.CreateBuffer.size()),
            .Key = path,
            .KeyNumber = mode};
}
Request OpenOn(uint8_t block, const std::string &path, int8_t mode = BtrModeNormal)
{
    return {.Operation = BtrOpOpen, .Block = block, .Key = path, .KeyNumber = mode};
}

std::string RecordT(const std::string &key0, const std::string &key1, int16_t key2)
{
    return Padded(key0 + key1 + Number(key2).substr(0, 2), 24);
}
std::string RecordN(int16_t number, const std::string &letters, uint16_t small)
{
    return Padded(Number(number).substr(0, 2) + letters + Number(small).substr(0, 2), 16);
}
std::string RecordV(const std::string &key0, const std::string &key1, size_t more)
{
    return Padded(Padded(key0, 4) + key1, 12) + std::string(more, 'v');
}

struct Books {
    TempDirectory Directory{std::filesystem::exists("/dev/shm") ? "/dev/shm" : "/tmp"};
    std::vector<std::pair<std::string, ModelLayout>> Files = {
        {Directory / "t.btr", LayoutT()}, {Directory / "n.btr", LayoutN()}, {Directory / "v.btr", LayoutV()}};
    Model Expected{1};
    Local Me;

    Books()
    {
        for (const auto &[path, layout] : Files) {
            Expected.Add(path, layout);
        }
    }

    // Everything that makes, reads or changes: alone, in transactions that end and in ones that are undone,
    // with locks, with two position blocks, under every kind of key.
    std::vector<Request> Operations() const
    {
        const auto &[t, layoutT] = Files[0];
        const auto &[n, layoutN] = Files[1];
        const auto &[v, layoutV] = Files[2];
        return {
            Make(t, layoutT),
            Make(n, layoutN),
            Make(v, layoutV),
            OpenOn(onT, t),
            Insert(onT, RecordT("zz", "zz", 1)),
            Plain(BtrOpClose, onT),
            Make(t, layoutT, 0), // replaced
            OpenOn(onT, t),
            OpenOn(onN, n),
            OpenOn(onV, v),
            OpenOn(secondOnT, t),
            Insert(onT, RecordT("aa", "xx", 1)),
            Insert(onT, RecordT("bb", "xx", 5)),
            Insert(onT, RecordT("cc", "yy", 3), BtrNoCurrencyChange),
            Insert(onT, RecordT("aa", "zz", 3)), // there is one
            Insert(onN, RecordN(0, "ab", 7)),
            Insert(onN, RecordN(0, "ab", 7)),
            Insert(onV, RecordV("k", "ab", 30)),
            Insert(onV, RecordV("l", "  ", 0)), // null under its second key
            Read(onT, BtrOpGetEqual, 0, "aa"),
            Update(onT, RecordT("aa", "yy", 9)),
            Read(onT, BtrOpGetFirst, 1),
            Read(onT, BtrOpGetNext, 1),
            Read(onT, BtrOpGetPrevious, 1),
            Plain(BtrOpGetPosition, onT, 4),
            Read(onT, BtrOpGetDirect, 2),
            Read(onT, BtrOpStepFirst),
            Read(onT, BtrOpStepNext),
            Read(onT, BtrOpGetLast + BtrBiasKeyOnly, 2),
            Read(onV, BtrOpGetGreaterOrEqual + BtrBiasLock, 0, "a"),
            Read(secondOnT, BtrOpGetEqual + BtrBiasMultiple, 0, "bb"),
            Read(secondOnT, BtrOpGetEqual + BtrBiasMultiple, 0, "cc"),
            Plain(BtrOpStat, onT, 200),

            Plain(BtrOpBeginConcurrent + BtrBiasLock),
            Insert(onT, RecordT("dd", "xx", 2)),
            Insert(onN, RecordN(0, "cd", 8)),
            Read(onT, BtrOpGetEqual, 0, "bb"),
            Update(onT, RecordT("bb", "zz", 5)),
            Plain(BtrOpEnd),

            Plain(BtrOpBegin),
            Insert(onT, RecordT("ee", "xx", 2)),
            Read(onN, BtrOpGetLast),
            Plain(BtrOpDelete, onN),
            Insert(onV, RecordV("m", "cd", 3), 0, BtrBiasMultiple),
            Plain(BtrOpClose, onN),
            Plain(BtrOpAbort),

            Plain(BtrOpBegin),
            Read(onT, BtrOpGetEqual, 0, "dd"),
            Plain(BtrOpDelete, onT),
            Read(onT, BtrOpGetNext),
            Plain(BtrOpEnd),

            OpenOn(onN, n, BtrModeReadOnly),
            Read(onN, BtrOpGetFirst, 1),
            Read(onV, BtrOpStepLast),
            Update(onV, RecordV("k", "ab", 5), BtrNoCurrencyChange),
            Plain(BtrOpClose, secondOnT),
        };
    }

    // Makes a call, which may fail by the fault; what fails by it leaves the buffers as they were.
    void Try(Request request, bool *failed)
    {
        if (request.Operation == BtrOpGetDirect) request.Data = LastPosition;
        const bool failedBefore = HasFailed();
        const Answer got = Carry(Me.Blocks, request, Resume, Pause);
        // What a fault is answered with: 20 for want of a client, 38 for an end. Any other status is the
        // call's own, since not everything that fails matters to it.
        static const std::set<int16_t> faultStatuses = {BtrStatusIoError,       BtrStatusDiskFull,
                                                        BtrStatusFileTableFull, BtrStatusHandleTableFull,
                                                        BtrStatusNoEngine,      BtrStatusTransactionIo};
        *failed = HasFailed() && !failedBefore && faultStatuses.count(got.Status) != 0;
        const std::string call = "operation " + std::to_string(request.Operation) + " on block " +
                                 std::to_string(request.Block) + " gives " + std::to_string(got.Status);
        if (*failed) {
            EXPECT_EQ(got.Length, request.Length) << call;
            return;
        }
        Answer expected = Expected.Expect(0, request);
        if (request.Operation == BtrOpGetPosition && got.Status == BtrStatusOk) {
            LastPosition = got.Data.substr(0, 4);
            EXPECT_TRUE(Expected.LearnPosition(0, request.Block, LastPosition));
            expected.Data.replace(0, 4, LastPosition);
        }
        EXPECT_EQ(got.Status, expected.Status) << call;
        EXPECT_EQ(got.Length, expected.Length) << call;
        EXPECT_EQ(got.Data, expected.Data) << call;
        EXPECT_EQ(got.Key, expected.Key) << call;
    }

    // Runs through all operations. One that fails is made once more, a transaction from its beginning; then
    // everything must be as if nothing had happened.
    void RunThrough()
    {
        const std::vector<Request> operations = Operations();
        size_t begin = 0;
        for (size_t i = 0; i < operations.size() && !testing::Test::HasFailure();) {
            if (!Expected.InTransaction(0)) begin = i;
            bool failed = false;
            Try(operations[i], &failed);
            if (HasFailed()) Disarm();
            if (!failed) {
                ++i;
                continue;
            }
            if (!Expected.InTransaction(0)) continue;
            Try(Plain(BtrOpAbort), &failed);
            EXPECT_FALSE(failed);
            // What the transaction closed is not opened by its end.
            if (!Expected.IsOpen(0, onN)) Try(OpenOn(onN, Files[1].first), &failed);
            i = begin;
        }
    }

    // Reads every file along every key and compares with the model.
    void CompareFiles()
    {
        bool failed = false;
        for (const auto &[path, layout] : Files) {
            Try(OpenOn(compared, path), &failed);
            Try(Plain(BtrOpStat, compared, 200), &failed);
            for (size_t records = 0; records < 12; ++records) {
                Try(Read(compared, records == 0 ? BtrOpStepFirst : BtrOpStepNext), &failed);
                for (size_t key = 0; key < layout.Keys.size() && records == 0; ++key) {
                    Try(Read(compared, BtrOpGetFirst, static_cast<int8_t>(key)), &failed);
                    for (size_t next = 0; next < 12; ++next) {
                        Try(Read(compared, BtrOpGetNext, static_cast<int8_t>(key)), &failed);
                    }
                    Try(Read(compared, BtrOpStepFirst), &failed);
                }
            }
            Try(Plain(BtrOpClose, compared), &failed);
        }
    }

    std::vector<FileImage> ReadFiles(PositionBlocks &blocks) const
    {
        std::vector<FileImage> images;
        for (const auto &[path, layout] : Files) {
            images.push_back(Audit([&](const Request &request) { return Carry(blocks, request); }, path));
            EXPECT_EQ(images.back().Opened, BtrStatusOk);
            EXPECT_EQ(images.back().Complaint, "");
        }
        return images;
    }

    // What the next process finds is what this one sees.
    void CompareWithNextProcess()
    {
        const std::vector<FileImage> here = ReadFiles(Me.Blocks);
        const pid_t child = fork();
        if (child == 0) {
            PositionBlocks blocks{};
            const std::vector<FileImage> there = ReadFiles(blocks);
            bool same = !testing::Test::HasFailure();
            for (size_t i = 0; i < here.size(); ++i) {
                same = same && here[i].Records == there[i].Records;
            }
            _exit(same ? 0 : 1);
        }
        int end = -1;
        waitpid(child, &end, 0);
        EXPECT_EQ(end, 0);
    }

private:
    static constexpr uint8_t compared = 14;
    std::string LastPosition;
};

// Returns how many runs it took until the fault was not reached.
uint64_t FailEach(Fault fault, bool untilCallEnds)
{
    wbtrv::limits.Readers = 16;
    for (uint64_t n = 1;; ++n) {
        Books books;
        Arm(fault, n, untilCallEnds);
        Pause();
        books.RunThrough();
        const bool reached = HasFailed();
        Disarm();
        books.CompareFiles();
        // Processes of a sanitizer take long to fork.
        if (CanFailAllocations() || n % 16 == 1) books.CompareWithNextProcess();
        if (testing::Test::HasFailure()) {
            ADD_FAILURE() << "fault " << n;
            return n;
        }
        if (!reached) return n - 1;
    }
}

// A run makes this many at least, or what is caught here is not what the store calls.
TEST(NthFault, AStoreCallFails) { EXPECT_GT(FailEach(Fault::StoreCall, false), 300U); }
TEST(NthFault, StoreCallsFailUntilTheCallEnds) { EXPECT_GT(FailEach(Fault::StoreCall, true), 300U); }
TEST(NthFault, AnAssertionOfTheStoreIsBroken) { EXPECT_GT(FailEach(Fault::Assertion, false), 100U); }
TEST(NthFault, AWriteFails) { EXPECT_GT(FailEach(Fault::Write, false), 30U); }
TEST(NthFault, WritesFailUntilTheCallEnds) { EXPECT_GT(FailEach(Fault::Write, true), 30U); }
TEST(NthFault, AWriteIsCutShort) { EXPECT_GT(FailEach(Fault::ShortWrite, false), 30U); }
TEST(NthFault, ASyncFails) { EXPECT_GT(FailEach(Fault::Sync, false), 10U); }

TEST(NthFault, AnAllocationFails)
{
    if (!CanFailAllocations()) GTEST_SKIP() << "the sanitizer has its own";
    EXPECT_GT(FailEach(Fault::Allocation, false), 30U);
}
TEST(NthFault, AllocationsFailUntilTheCallEnds)
{
    if (!CanFailAllocations()) GTEST_SKIP() << "the sanitizer has its own";
    EXPECT_GT(FailEach(Fault::Allocation, true), 30U);
}

} // namespace
