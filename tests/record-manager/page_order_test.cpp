// Where commits find their pages: side by side, also after long use, and without the books growing for it.
#include "audit.h"
#include "faults.h"
#include "files.h"

#include <algorithm>
#include <lmdb.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using namespace wbtrvtest;

constexpr uint64_t pageSize = 4096;

// Postings: a number given by the record manager, and one that all of them share.
std::string DefinitionOfPostings(uint16_t length)
{
    return CreateBuffer(length, 2,
                        {{1, 4, 0, BtrTypeAutoincrement}, {5, 4, duplicatesModifiable, BtrTypeInteger}});
}

std::string Posting(int number, size_t length)
{
    return Padded(Number(0) + Number(7) + "posting " + std::to_string(number), length);
}

struct Postings {
    TempDirectory Directory{fs::exists("/dev/shm") ? "/dev/shm" : "/tmp"};
    Local Me;
    uint16_t Length;

    explicit Postings(uint16_t length) : Length(length)
    {
        EXPECT_EQ(Create(Me, Directory / "p.btr", DefinitionOfPostings(length)).Status, BtrStatusOk);
        EXPECT_EQ(Open(Me, Directory / "p.btr").Status, BtrStatusOk);
    }
    int16_t Post(int number)
    {
        return Me({.Operation = BtrOpInsert, .Data = Posting(number, Length), .Length = Length}).Status;
    }
    uint64_t Pages() const { return fs::file_size(Directory / "books.mdb") / pageSize; }
    FileImage Image()
    {
        return Audit([this](const Request &request) { return Me(request); }, Directory / "p.btr");
    }
};

// How many runs of neighbouring pages were written between one sync and the next.
std::vector<size_t> RunsOfCommits(const std::vector<DiskEvent> &events)
{
    std::vector<size_t> runs;
    std::vector<uint64_t> pages;
    for (const DiskEvent &event : events) {
        if (event.Kind == DiskEvent::Written && !event.SyncedAtOnce) {
            for (uint64_t at = 0; at < event.Data.size(); at += pageSize) {
                pages.push_back((event.Offset + at) / pageSize);
            }
        }
        if (event.Kind != DiskEvent::Synced || pages.empty()) continue;
        std::sort(pages.begin(), pages.end());
        size_t count = 1;
        for (size_t i = 1; i < pages.size(); ++i) {
            if (pages[i] != pages[i - 1] + 1) ++count;
        }
        runs.push_back(count);
        pages.clear();
    }
    return runs;
}

TEST(PageOrder, CommitsOfALongRowOfInsertsWriteFewRunsOfPages)
{
    Postings postings(500);
    for (int i = 1; i <= 1500; ++i) {
        ASSERT_EQ(postings.Post(i), BtrStatusOk);
    }
    StartRecording("books.mdb");
    for (int i = 1501; i <= 2500; ++i) {
        ASSERT_EQ(postings.Post(i), BtrStatusOk);
    }
    const std::vector<size_t> runs = RunsOfCommits(StopRecording());
    ASSERT_EQ(runs.size(), 1000u);
    size_t sum = 0;
    for (const size_t count : runs) {
        sum += count;
    }
    // Six and more on the average when nobody looks after them.
    EXPECT_LE(sum, 3500u);
}

TEST(PageOrder, TheBooksGrowByWhatTheyHold)
{
    Postings postings(500);
    for (int i = 1; i <= 4000; ++i) {
        ASSERT_EQ(postings.Post(i), BtrStatusOk);
    }
    // Seven records a page are 572 pages, the indexes some 60; then free ones, 256 at once when fewer than
    // twice 128 are left.
    EXPECT_LE(postings.Pages(), 572u + 60 + 256 + 256 + 64);
}

TEST(PageOrder, RecordsStayWhatTheyAreWhereverTheirLeavesMove)
{
    Postings postings(500);
    std::vector<std::string> expected;
    for (int i = 1; i <= 1200; ++i) {
        ASSERT_EQ(postings.Post(i), BtrStatusOk);
        std::string record = Posting(i, 500);
        record.replace(0, 4, Number(i));
        expected.push_back(record);
        if (i % 10 != 0) continue;
        // An older one changes, so that leaves change behind those that fill up.
        const int older = i - 9;
        ASSERT_EQ(postings.Me({.Operation = BtrOpGetEqual, .Length = 500, .Key = Number(older)}).Status,
                  BtrStatusOk);
        std::string &changed = expected[static_cast<size_t>(older - 1)];
        changed.replace(4, 4, Number(8));
        ASSERT_EQ(postings.Me({.Operation = BtrOpUpdate, .Data = changed, .Length = 500}).Status,
                  BtrStatusOk);
    }
    const FileImage image = postings.Image();
    EXPECT_EQ(image.Complaint, "");
    EXPECT_EQ(image.Records, expected);
}

TEST(PageOrder, RecordsWithPagesOfTheirOwnStayWhatTheyAre)
{
    Postings postings(3000);
    std::vector<std::string> expected;
    for (int i = 1; i <= 300; ++i) {
        ASSERT_EQ(postings.Post(i), BtrStatusOk);
        std::string record = Posting(i, 3000);
        record.replace(0, 4, Number(i));
        expected.push_back(record);
    }
    const FileImage image = postings.Image();
    EXPECT_EQ(image.Complaint, "");
    EXPECT_EQ(image.Records, expected);
}

// A process that reads an old state of the books until it is let go.
struct OldReader {
    int Begun[2];
    int Over[2];
    pid_t Process;

    explicit OldReader(const std::string &books)
    {
        EXPECT_EQ(pipe(Begun), 0);
        EXPECT_EQ(pipe(Over), 0);
        Process = fork();
        if (Process != 0) {
            char ready = 0;
            close(Over[0]);
            EXPECT_EQ(read(Begun[0], &ready, 1), 1);
            return;
        }
        close(Over[1]);
        MDB_env *env = nullptr;
        MDB_txn *view = nullptr;
        char end = 0;
        const bool reads = mdb_env_create(&env) == 0 && mdb_env_set_mapsize(env, size_t{1} << 30) == 0 &&
                           mdb_env_open(env, books.c_str(), MDB_NOSUBDIR | MDB_NOTLS, 0666) == 0 &&
                           mdb_txn_begin(env, nullptr, MDB_RDONLY, &view) == 0;
        if (reads && write(Begun[1], "r", 1) == 1) (void)!read(Over[0], &end, 1);
        if (reads) mdb_txn_abort(view);
        _exit(reads ? 0 : 1);
    }
    void LetGo()
    {
        close(Over[1]);
        int status = 1;
        waitpid(Process, &status, 0);
        EXPECT_EQ(status, 0);
        close(Begun[0]);
        close(Begun[1]);
    }
};

TEST(PageOrder, SomebodyWhoReadsAnOldStateMakesTheBooksGrowByWhatIsWrittenAlone)
{
    Postings postings(500);
    for (int i = 1; i <= 300; ++i) {
        ASSERT_EQ(postings.Post(i), BtrStatusOk);
    }
    const uint64_t before = postings.Pages();
    OldReader reader(postings.Directory / "books.mdb");
    for (int i = 301; i <= 600; ++i) {
        ASSERT_EQ(postings.Post(i), BtrStatusOk);
    }
    const uint64_t meanwhile = postings.Pages();
    // Nine or ten pages each that cannot be used again before the reader is gone.
    EXPECT_LE(meanwhile, before + uint64_t{300} * 11 + 256);
    reader.LetGo();
    for (int i = 601; i <= 1500; ++i) {
        ASSERT_EQ(postings.Post(i), BtrStatusOk);
    }
    EXPECT_EQ(postings.Pages(), meanwhile);
    EXPECT_EQ(postings.Image().Complaint, "");
}

} // namespace
