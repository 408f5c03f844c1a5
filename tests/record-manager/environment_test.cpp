// What surrounds the files: directories, rights, file systems, damaged and foreign books, lock files, threads
// and forks, and arguments that are none.
#include "faults.h"
#include "files.h"

#include "record-manager/limits.h"
#include "record-manager/lmdb/books_file.h"
#include "record-manager/lmdb/private.h"
#include "tests/support/page_sums.h"

#include <atomic>
#include <chrono>
#include <fcntl.h>
#include <fstream>
#include <lmdb.h>
#include <poll.h>
#include <random>
#include <sched.h>
#include <set>
#include <sys/stat.h>
#include <thread>

namespace {

using namespace wbtrvtest;
namespace fs = std::filesystem;

void Write(const fs::path &path, const std::string &content)
{
    std::ofstream(path, std::ios::binary) << content;
}

// Carries out one call in a process of its own, after `prepare`.
template <typename Prepare> int16_t InChild(const Prepare &prepare, const std::vector<Request> &requests)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) abort();
    const pid_t child = fork();
    if (child == 0) {
        prepare();
        PositionBlocks blocks{};
        int16_t status = 0;
        for (const Request &request : requests) {
            status = Carry(blocks, request).Status;
        }
        _exit(write(ends[1], &status, sizeof status) == sizeof status ? 0 : 1);
    }
    close(ends[1]);
    int16_t status = -1;
    const bool got = read(ends[0], &status, sizeof status) == sizeof status;
    close(ends[0]);
    int end = 0;
    waitpid(child, &end, 0);
    EXPECT_TRUE(got) << "the child ended with " << end;
    return status;
}

int16_t InChild(const std::vector<Request> &requests)
{
    return InChild([] {}, requests);
}

Request OpenRequest(const std::string &path, int8_t mode = 0)
{
    return {.Operation = BtrOpOpen, .Key = path, .KeyNumber = mode};
}

// Makes T with a, b, c in a process of its own, so that this one has not touched the books.
void MakeT(const TempDirectory &directory)
{
    const std::string definition = DefinitionOfT();
    std::vector<Request> requests = {{.Operation = BtrOpCreate,
                                      .Data = definition,
                                      .Length = static_cast<uint32_t>(definition.size()),
                                      .Key = directory / "t.btr"},
                                     OpenRequest(directory / "t.btr")};
    for (const char *name : {"a", "b", "c"}) {
        requests.push_back({.Operation = BtrOpInsert, .Data = RecordOfT(name, "x", 1), .Length = 64});
    }
    ASSERT_EQ(InChild(requests), BtrStatusOk);
}

// ---- Foreign and damaged books ----

TEST(Books, AFileOfAnotherProgramIsForeign)
{
    const TempDirectory directory;
    Local me;
    Write(directory / "t.btr", "something else");
    EXPECT_EQ(Open(me, directory / "t.btr").Status, BtrStatusForeignFile);
    ASSERT_EQ(Create(me, directory / "u.btr", DefinitionOfT()).Status, BtrStatusOk);
    EXPECT_EQ(Open(me, directory / "t.btr").Status, BtrStatusForeignFile);
    EXPECT_EQ(Open(me, directory / "u.btr").Status, BtrStatusOk);
}

TEST(Books, BooksThatAreNoneAreForeignAndStayAsTheyAre)
{
    for (const std::string &content :
         {std::string(), std::string("short"), std::string(100000, 'x'), std::string(8192, '\0')}) {
        const TempDirectory directory;
        Local me;
        Write(directory / "books.mdb", content);
        EXPECT_EQ(Open(me, directory / "t.btr").Status, BtrStatusForeignFile) << content.size();
        EXPECT_EQ(fs::file_size(directory / "books.mdb"), content.size());
        if (!content.empty()) {
            EXPECT_EQ(Create(me, directory / "t.btr", DefinitionOfT()).Status, BtrStatusForeignFile)
                << content.size();
            EXPECT_EQ(fs::file_size(directory / "books.mdb"), content.size());
        }
    }
}

TEST(Books, AnEmptyFileLeftByACreateThatDiedIsFilledByTheNext)
{
    const TempDirectory directory;
    Local me;
    Write(directory / "books.mdb", "");
    EXPECT_EQ(Create(me, directory / "t.btr", DefinitionOfT()).Status, BtrStatusOk);
    EXPECT_EQ(Open(me, directory / "t.btr").Status, BtrStatusOk);
}

// Changes the catalogue's head from outside.
void PutIntoCatalogue(const std::string &path, const char *name, const std::string &value)
{
    MDB_env *env = nullptr;
    MDB_txn *txn = nullptr;
    MDB_dbi dbi = 0;
    ASSERT_EQ(mdb_env_create(&env), 0);
    ASSERT_EQ(mdb_env_open(env, path.c_str(), MDB_NOSUBDIR, 0666), 0);
    ASSERT_EQ(mdb_txn_begin(env, nullptr, 0, &txn), 0);
    ASSERT_EQ(mdb_dbi_open(txn, nullptr, 0, &dbi), 0);
    std::string key = name;
    std::string copy = value;
    MDB_val keyVal{key.size(), key.data()};
    MDB_val valueVal{copy.size(), copy.data()};
    ASSERT_EQ(mdb_put(txn, dbi, &keyVal, &valueVal, 0), 0);
    ASSERT_EQ(mdb_txn_commit(txn), 0);
    mdb_env_close(env);
    testsupport::SumAnew(path);
}

TEST(Books, AStoreOfAnotherProgramIsForeign)
{
    const TempDirectory directory;
    PutIntoCatalogue(directory / "books.mdb", "key", "value");
    Local me;
    EXPECT_EQ(Open(me, directory / "t.btr").Status, BtrStatusForeignFile);
    EXPECT_EQ(Create(me, directory / "t.btr", DefinitionOfT()).Status, BtrStatusForeignFile);
}

TEST(Books, ALaterFormatIsForeign)
{
    const TempDirectory directory;
    MakeT(directory);
    PutIntoCatalogue(directory / "books.mdb", "!format", std::string("WBTRVBKS\3\0\0\0\1\0\0\0", 16));
    Local me;
    EXPECT_EQ(Open(me, directory / "t.btr").Status, BtrStatusForeignFile);
}

TEST(Books, AsTheyWereBeforeThereWereSumsAreReadAndWrittenWithoutThem)
{
    const TempDirectory directory;
    const std::string path = directory / "books.mdb";
    MakeT(directory);
    ASSERT_GT(testsupport::CountSums(path), 0u);
    testsupport::TakeSums(path);
    {
        Local me;
        const OnT<Local> t{me};
        ASSERT_EQ(Open(me, directory / "t.btr").Status, BtrStatusOk);
        EXPECT_EQ(t.GetEqual("a").Status, BtrStatusOk);
        for (int i = 0; i < 500; ++i) {
            ASSERT_EQ(t.Insert("b" + std::to_string(i), "y", i).Status, BtrStatusOk);
        }
        EXPECT_EQ(t.GetEqual("b499").Status, BtrStatusOk);
        ASSERT_EQ(Close(me).Status, BtrStatusOk);
    }
    EXPECT_EQ(testsupport::CountSums(path), 0u) << "half of them with sums would be damaged books";
    Local me;
    ASSERT_EQ(Open(me, directory / "t.btr").Status, BtrStatusOk);
    EXPECT_EQ(OnT<Local>{me}.GetEqual("b0").Status, BtrStatusOk);
}

// A commit shows in the books while it waits for the disk, long before the next may begin.
TEST(Books, AsTheyWereBeforeThereWereSumsAreReadWhileSomebodyWrites)
{
    const TempDirectory directory;
    MakeT(directory);
    testsupport::TakeSums(directory / "books.mdb");
    std::atomic<bool> ends = false;
    std::thread writing([&] {
        Local other;
        const OnT<Local> t{other};
        EXPECT_EQ(Open(other, directory / "t.btr").Status, BtrStatusOk);
        for (int i = 0; i < 300; ++i) {
            EXPECT_EQ(t.Insert("w" + std::to_string(i), "x", i).Status, BtrStatusOk);
        }
        ends = true;
    });
    Local me;
    const OnT<Local> t{me};
    EXPECT_EQ(Open(me, directory / "t.btr").Status, BtrStatusOk);
    int refused = 0;
    while (!ends) {
        const int16_t status = t.Read(BtrOpGetLast, 0).Status;
        if (status != BtrStatusOk && status != BtrStatusEndOfFile) ++refused;
    }
    writing.join();
    EXPECT_EQ(refused, 0);
}

TEST(Books, BooksThatWereCutOffAreRefused)
{
    const TempDirectory directory;
    MakeT(directory);
    Local me;
    ASSERT_EQ(Open(me, directory / "t.btr").Status, BtrStatusOk);
    // So many that the spare pages are used up and the last pages of the file hold records.
    const OnT<Local> t{me};
    ASSERT_EQ(me({.Operation = BtrOpBegin}).Status, BtrStatusOk);
    for (int i = 0; i < 20000; ++i) {
        ASSERT_EQ(t.Insert("z" + std::to_string(i), "x", i).Status, BtrStatusOk);
    }
    ASSERT_EQ(me({.Operation = BtrOpEnd}).Status, BtrStatusOk);
    const uint64_t size = fs::file_size(directory / "books.mdb");
    ASSERT_EQ(Close(me).Status, BtrStatusOk);
    for (uint64_t length : {size - 1, size / 2, uint64_t{9000}, uint64_t{8192}, uint64_t{8191},
                            uint64_t{4096}, uint64_t{100}}) {
        const TempDirectory copy;
        fs::copy_file(directory / "books.mdb", copy / "books.mdb");
        fs::resize_file(copy / "books.mdb", length);
        EXPECT_EQ(Open(me, copy / "t.btr").Status, BtrStatusForeignFile) << length << " of " << size;
        EXPECT_EQ(Create(me, copy / "u.btr", DefinitionOfT()).Status, BtrStatusForeignFile) << length;
        EXPECT_EQ(fs::file_size(copy / "books.mdb"), length);
    }
    // Cut while this process still knows them.
    fs::resize_file(directory / "books.mdb", size / 2);
    EXPECT_EQ(Open(me, directory / "t.btr").Status, BtrStatusForeignFile);
}

TEST(Books, TakeManyPagesFromTheEndOfTheFileAtOnceAndThenLiveOnThem)
{
    const TempDirectory directory;
    MakeT(directory);
    Local me;
    ASSERT_EQ(Open(me, directory / "t.btr").Status, BtrStatusOk);
    const OnT<Local> t{me};
    std::set<uint64_t> sizes;
    for (int i = 0; i < 300; ++i) {
        ASSERT_EQ(t.Insert("z" + std::to_string(i), "x", i).Status, BtrStatusOk);
        sizes.insert(fs::file_size(directory / "books.mdb"));
    }
    // Without spare pages each of the first commits and every full page would lengthen the file.
    EXPECT_LE(sizes.size(), 4u);
    EXPECT_LT(*sizes.rbegin(), 4u << 20);
}

TEST(Books, PagesThatAreFreeMayBeMissingAtTheEnd)
{
    const TempDirectory directory;
    {
        Local me;
        ASSERT_EQ(Create(me, directory / "t.btr", DefinitionOfT()).Status, BtrStatusOk);
        ASSERT_EQ(Open(me, directory / "t.btr").Status, BtrStatusOk);
        const OnT<Local> t{me};
        ASSERT_EQ(t.Insert("first", "x", 0).Status, BtrStatusOk);
        ASSERT_EQ(me({.Operation = BtrOpBegin}).Status, BtrStatusOk);
        for (int i = 0; i < 3000; ++i) {
            ASSERT_EQ(t.Insert("z" + std::to_string(i), "x", i).Status, BtrStatusOk);
        }
        ASSERT_EQ(me({.Operation = BtrOpEnd}).Status, BtrStatusOk);
        ASSERT_EQ(me({.Operation = BtrOpBegin}).Status, BtrStatusOk);
        while (t.Read(BtrOpGetGreaterOrEqual, 0, "z").Status == BtrStatusOk) {
            ASSERT_EQ(t.Delete().Status, BtrStatusOk);
        }
        ASSERT_EQ(me({.Operation = BtrOpEnd}).Status, BtrStatusOk);
    }
    // Page by page, as long as nothing in use is lost.
    const std::string books = directory / "books.mdb";
    const uint64_t whole = fs::file_size(books);
    uint64_t size = whole;
    for (;;) {
        const TempDirectory copy;
        fs::copy_file(books, copy / "books.mdb");
        fs::resize_file(copy / "books.mdb", size);
        const int fd = open((copy / "books.mdb").c_str(), O_RDONLY | O_CLOEXEC);
        const bool intact = wbtrv::OnlyFreePagesMissing(fd);
        close(fd);
        Local me;
        const Answer opened = Open(me, copy / "t.btr");
        ASSERT_EQ(opened.Status, intact ? BtrStatusOk : BtrStatusForeignFile);
        if (!intact) break;
        EXPECT_EQ(CountRecords(me), 1);
        EXPECT_EQ(Name(OnT<Local>{me}.Read(BtrOpGetFirst, 1)), "first");
        size -= 4096;
    }
    EXPECT_LT(size, whole);
}

// ---- Rights and file systems ----

// Rights do not bind the administrator.
void BecomeNobody()
{
    if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) _exit(9);
}

struct Rights : testing::Test {
    TempDirectory Directory;
    std::string Books = Directory / "books.mdb";

    void SetUp() override
    {
        MakeT(Directory);
        Allow(0777, 0666);
    }
    void Allow(mode_t directory, mode_t books)
    {
        for (const char *name : {"books.mdb", "books.mdb-lock", "books.mdb-gate"}) {
            ASSERT_EQ(chmod((Directory / name).c_str(), books), 0);
        }
        ASSERT_EQ(chmod(Directory.Path.c_str(), directory), 0);
    }
    void TearDown() override { chmod(Directory.Path.c_str(), 0700); }
};

TEST_F(Rights, WithThemEverythingWorks)
{
    EXPECT_EQ(InChild(BecomeNobody, {OpenRequest(Directory / "t.btr")}), BtrStatusOk);
}

TEST_F(Rights, WithoutAnyOnTheDirectoryNothingIsOpenedOrMade)
{
    Allow(0, 0666);
    EXPECT_EQ(InChild(BecomeNobody, {OpenRequest(Directory / "t.btr")}), BtrStatusPermission);
    EXPECT_EQ(InChild(BecomeNobody, {OpenRequest(Directory / "t.btr", BtrModeReadOnly)}),
              BtrStatusPermission);
}

// With the lock file at hand a reader is known to writers, without it it looks after itself.
TEST_F(Rights, BooksThatCannotBeWrittenCanBeRead)
{
    const std::string path = Directory / "t.btr";
    for (const bool locks : {true, false}) {
        Allow(0555, 0444);
        if (locks) {
            ASSERT_EQ(chmod((Directory / "books.mdb-lock").c_str(), 0666), 0);
        }
        for (const int8_t mode : {int8_t{0}, int8_t{1}, int8_t{BtrModeReadOnly}}) {
            const Request open = OpenRequest(path, mode);
            const Request find{.Operation = BtrOpGetEqual, .Length = 64, .Key = "b"};
            Request lock = find;
            lock.Operation = BtrOpGetEqual + BtrBiasLock;
            EXPECT_EQ(InChild(BecomeNobody, {open}), BtrStatusOk) << locks;
            EXPECT_EQ(InChild(BecomeNobody, {open, find}), BtrStatusOk) << locks;
            EXPECT_EQ(InChild(BecomeNobody, {open, find, {.Operation = BtrOpGetNext, .Length = 64}}),
                      BtrStatusOk);
            EXPECT_EQ(InChild(BecomeNobody, {open, {.Operation = BtrOpStat, .Length = 200}}), BtrStatusOk);
            EXPECT_EQ(
                InChild(BecomeNobody,
                        {open, {.Operation = BtrOpInsert, .Data = RecordOfT("d", "x", 1), .Length = 64}}),
                BtrStatusAccessDenied);
            EXPECT_EQ(InChild(BecomeNobody, {open, find, {.Operation = BtrOpDelete}}), BtrStatusAccessDenied);
            EXPECT_EQ(InChild(BecomeNobody, {open, lock}), BtrStatusAccessDenied);
        }
        EXPECT_EQ(InChild(BecomeNobody, {OpenRequest(path, BtrModeExclusive)}), BtrStatusPermission);
        EXPECT_EQ(InChild(BecomeNobody, {OpenRequest(path, BtrModeLoading)}), BtrStatusPermission);
    }
}

TEST_F(Rights, WhatIsReadIsOfOneStateWhileOthersWrite)
{
    Allow(0755, 0644);
    Local me;
    ASSERT_EQ(Open(me, Directory / "t.btr").Status, BtrStatusOk);
    const OnT<Local> t{me};
    // Two fields of a record that always change together, in a file whose pages are used again and again.
    for (int i = 0; i < 60; ++i) {
        ASSERT_EQ(t.Insert("r" + std::to_string(100 + i), "v0", 0).Status, BtrStatusOk);
    }
    int told[2];
    ASSERT_EQ(pipe(told), 0);
    const pid_t child = fork();
    if (child == 0) {
        BecomeNobody();
        PositionBlocks blocks{};
        int wrong = Carry(blocks, OpenRequest(Directory / "t.btr", 1)).Status == BtrStatusOk ? 0 : 1000;
        for (int round = 0; round < 300 && wrong == 0; ++round) {
            int seen = 0;
            Request request{.Operation = BtrOpGetGreaterOrEqual, .Length = 64, .Key = "r"};
            for (;; request.Operation = BtrOpGetNext, ++seen) {
                const Answer answer = Carry(blocks, request);
                if (answer.Status == BtrStatusEndOfFile) break;
                if (answer.Status != BtrStatusOk) {
                    wrong = 2000 + answer.Status;
                    break;
                }
                const std::string word = UpToNul(answer.Data.substr(8, 8));
                int32_t number = -1;
                memcpy(&number, answer.Data.data() + 16, sizeof number);
                if (word != "v" + std::to_string(number)) wrong = 1;
            }
            if (seen != 60 && wrong == 0) wrong = 2;
        }
        _exit(write(told[1], &wrong, sizeof wrong) == sizeof wrong ? 0 : 1);
    }
    close(told[1]);
    pollfd ended{told[0], POLLIN, 0};
    int commits = 0;
    while (poll(&ended, 1, 0) == 0) {
        const std::string name = "r" + std::to_string(100 + commits % 60);
        ASSERT_EQ(t.GetEqual(name).Status, BtrStatusOk);
        ++commits;
        ASSERT_EQ(t.Update(name, "v" + std::to_string(commits % 1000), commits % 1000).Status, BtrStatusOk);
    }
    int wrong = -1;
    ASSERT_EQ(read(told[0], &wrong, sizeof wrong), ssize_t{sizeof wrong});
    close(told[0]);
    waitpid(child, nullptr, 0);
    EXPECT_EQ(wrong, 0);
    EXPECT_GT(commits, 10);
}

TEST_F(Rights, AHeldSnapshotThatWritersHaveOvertakenIsNoLongerRead)
{
    Allow(0755, 0644);
    Local me;
    ASSERT_EQ(Open(me, Directory / "t.btr").Status, BtrStatusOk);
    const OnT<Local> t{me};
    ASSERT_EQ(t.GetEqual("a").Status, BtrStatusOk);
    int go[2];
    int told[2];
    ASSERT_EQ(pipe(go), 0);
    ASSERT_EQ(pipe(told), 0);
    const pid_t child = fork();
    if (child == 0) {
        BecomeNobody();
        PositionBlocks blocks{};
        const Request find{.Operation = BtrOpGetEqual, .Length = 64, .Key = "b"};
        Carry(blocks, OpenRequest(Directory / "t.btr", BtrModeReadOnly));
        int16_t statuses[3];
        statuses[0] = Carry(blocks, {.Operation = BtrOpBeginSnapshot}).Status;
        statuses[1] = Carry(blocks, find).Status;
        char next = 0;
        if (write(told[1], "r", 1) != 1 || read(go[0], &next, 1) != 1) _exit(1);
        statuses[2] = Carry(blocks, find).Status;
        _exit(write(told[1], statuses, sizeof statuses) == sizeof statuses ? 0 : 1);
    }
    char ready = 0;
    ASSERT_EQ(read(told[0], &ready, 1), 1);
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(t.Update("a", "y", i).Status, BtrStatusOk);
    }
    ASSERT_EQ(write(go[1], "g", 1), 1);
    int16_t statuses[3] = {-1, -1, -1};
    ASSERT_EQ(read(told[0], statuses, sizeof statuses), ssize_t{sizeof statuses});
    EXPECT_EQ(statuses[0], BtrStatusOk);
    EXPECT_EQ(statuses[1], BtrStatusOk);
    EXPECT_EQ(statuses[2], BtrStatusConflict);
    waitpid(child, nullptr, 0);
    for (const int end : {go[0], go[1], told[0], told[1]}) {
        close(end);
    }
}

TEST_F(Rights, ADirectoryThatCannotBeWrittenTakesNoNewBooks)
{
    const TempDirectory empty;
    ASSERT_EQ(chmod(empty.Path.c_str(), 0555), 0);
    const std::string definition = DefinitionOfT();
    EXPECT_EQ(InChild(BecomeNobody, {{.Operation = BtrOpCreate,
                                      .Data = definition,
                                      .Length = static_cast<uint32_t>(definition.size()),
                                      .Key = empty / "t.btr"}}),
              BtrStatusPermission);
    EXPECT_TRUE(fs::is_empty(empty.Path));
}

TEST(FileSystems, NetworkOnesAreRefused)
{
    const TempDirectory directory;
    MakeT(directory);
    for (const uint32_t type : {0x6969u, 0x517Bu, 0xFE534D42u, 0xFF534D42u, 0x01021997u}) {
        PretendFileSystem(type);
        Local me;
        EXPECT_EQ(Open(me, directory / "t.btr").Status, BtrStatusPermission) << std::hex << type;
        EXPECT_EQ(Create(me, directory / "u.btr", DefinitionOfT()).Status, BtrStatusPermission)
            << std::hex << type;
    }
    PretendFileSystem(0xEF53);
    Local me;
    EXPECT_EQ(Open(me, directory / "t.btr").Status, BtrStatusOk);
    PretendFileSystem(0);
}

TEST(FileSystems, AMediumThatCannotBeWrittenCanBeRead)
{
    const TempDirectory directory;
    MakeT(directory);
    fs::remove(directory / "books.mdb-lock");
    fs::remove(directory / "books.mdb-gate");
    PretendReadOnly(true);
    {
        Local me;
        EXPECT_EQ(Open(me, directory / "t.btr").Status, BtrStatusOk);
        const OnT<Local> t{me};
        EXPECT_EQ(Name(t.GetEqual("b")), "b");
        EXPECT_EQ(Name(t.Read(BtrOpGetNext, 0)), "c");
        EXPECT_EQ(CountRecords(me), 3);
        EXPECT_EQ(t.Insert("d", "x", 1).Status, BtrStatusAccessDenied);
        EXPECT_EQ(t.Update("c", "y", 1).Status, BtrStatusAccessDenied);
        EXPECT_EQ(t.Delete().Status, BtrStatusAccessDenied);
        EXPECT_EQ(t.GetEqual("b", BtrBiasLock).Status, BtrStatusAccessDenied);
        EXPECT_EQ(Create(me, directory / "u.btr", DefinitionOfT()).Status, BtrStatusPermission);
        EXPECT_EQ(me({.Operation = BtrOpBegin}).Status, BtrStatusOk);
        EXPECT_EQ(Name(t.GetEqual("b")), "b");
        EXPECT_EQ(me({.Operation = BtrOpEnd}).Status, BtrStatusOk);
        EXPECT_EQ(Open(me, directory / "t.btr", 1, BtrModeExclusive).Status, BtrStatusPermission);
        EXPECT_EQ(Open(me, directory / "t.btr", 1, BtrModeLoading).Status, BtrStatusPermission);
    }
    const TempDirectory empty;
    Local me;
    EXPECT_EQ(Open(me, empty / "t.btr").Status, BtrStatusFileNotFound);
    EXPECT_EQ(Create(me, empty / "t.btr", DefinitionOfT()).Status, BtrStatusPermission);
    PretendReadOnly(false);
}

// ---- Lock files ----

TEST(LockFile, AVanishedOneIsAnErrorUntilThoseWhoUsedItAreGone)
{
    const TempDirectory directory;
    MakeT(directory);
    {
        const Remote a;
        ASSERT_EQ(Open(a, directory / "t.btr").Status, BtrStatusOk);
        const OnT<const Remote> t{a};
        ASSERT_EQ(Name(t.GetEqual("a")), "a");
        fs::remove(directory / "books.mdb-lock");
        EXPECT_EQ(InChild({OpenRequest(directory / "t.btr")}), BtrStatusIoError);
        EXPECT_EQ(t.Update("a", "y", 1).Status, BtrStatusIoError);
        EXPECT_EQ(Open(a, directory / "t.btr", 1).Status, BtrStatusIoError);
        EXPECT_EQ(Name(t.GetEqual("a")), "a");
    }
    EXPECT_EQ(InChild({OpenRequest(directory / "t.btr")}), BtrStatusOk);
}

TEST(LockFile, AVanishedGateIsAnErrorUntilThoseWhoUsedItAreGone)
{
    const TempDirectory directory;
    MakeT(directory);
    {
        const Remote a;
        ASSERT_EQ(Open(a, directory / "t.btr").Status, BtrStatusOk);
        fs::remove(directory / "books.mdb-gate");
        EXPECT_EQ(InChild({OpenRequest(directory / "t.btr")}), BtrStatusIoError);
    }
    EXPECT_EQ(InChild({OpenRequest(directory / "t.btr")}), BtrStatusOk);
}

TEST(LockFile, WhatAnotherProgramLeftThereDoesNoHarm)
{
    const TempDirectory directory;
    MakeT(directory);
    Write(directory / "books.mdb-lock", "garbage");
    Write(directory / "books.mdb-gate", std::string(100, 'g'));
    EXPECT_EQ(
        InChild({OpenRequest(directory / "t.btr"), {.Operation = BtrOpGetEqual, .Length = 64, .Key = "b"}}),
        BtrStatusOk);
}

TEST(Books, ReplacedBooksAreFoundAnew)
{
    const TempDirectory directory;
    const TempDirectory saved;
    Local me;
    ASSERT_EQ(Create(me, directory / "t.btr", DefinitionOfT()).Status, BtrStatusOk);
    fs::copy_file(directory / "books.mdb", saved / "books.mdb");
    ASSERT_EQ(Open(me, directory / "t.btr").Status, BtrStatusOk);
    ASSERT_EQ(OnT<Local>{me}.Insert("first", "x", 1).Status, BtrStatusOk);
    ASSERT_EQ(Close(me).Status, BtrStatusOk);
    fs::rename(saved / "books.mdb", directory / "books.mdb");
    ASSERT_EQ(Open(me, directory / "t.btr").Status, BtrStatusOk);
    EXPECT_EQ(CountRecords(me), 0);
    EXPECT_EQ(OnT<Local>{me}.Insert("b", "x", 1).Status, BtrStatusOk);
}

TEST(Books, MoreDirectoriesThanAreKeptOpenCanBeUsedInTurn)
{
    Local me;
    std::vector<std::unique_ptr<TempDirectory>> directories;
    for (unsigned i = 0; i < 3 * wbtrv::limits.IdleStores; ++i) {
        directories.push_back(std::make_unique<TempDirectory>());
        const std::string path = *directories.back() / "t.btr";
        ASSERT_EQ(Create(me, path, DefinitionOfT()).Status, BtrStatusOk);
        ASSERT_EQ(Open(me, path).Status, BtrStatusOk);
        ASSERT_EQ(OnT<Local>{me}.Insert(std::to_string(i), "x", 1).Status, BtrStatusOk);
        ASSERT_EQ(Close(me).Status, BtrStatusOk);
    }
    for (size_t i = 0; i < directories.size(); ++i) {
        ASSERT_EQ(Open(me, *directories[i] / "t.btr").Status, BtrStatusOk);
        EXPECT_EQ(Name(OnT<Local>{me}.GetEqual(std::to_string(i))), std::to_string(i));
        ASSERT_EQ(Close(me).Status, BtrStatusOk);
    }
}

TEST(Books, FillingTheDiskIsTold)
{
    const TempDirectory directory;
    wbtrv::limits.MapSize = size_t{1} << 19;
    Local me;
    ASSERT_EQ(Create(me, directory / "t.btr", DefinitionOfT()).Status, BtrStatusOk);
    ASSERT_EQ(Open(me, directory / "t.btr").Status, BtrStatusOk);
    const OnT<Local> t{me};
    ASSERT_EQ(t.Insert("first", "x", 0).Status, BtrStatusOk);
    // In a transaction: it cannot be ended, only aborted.
    ASSERT_EQ(me({.Operation = BtrOpBegin}).Status, BtrStatusOk);
    int16_t status = BtrStatusOk;
    for (int i = 0; status == BtrStatusOk && i < 100000; ++i) {
        status = t.Insert(std::to_string(i), "x", i).Status;
    }
    EXPECT_EQ(status, BtrStatusDiskFull);
    EXPECT_EQ(t.Insert("more", "x", 0).Status, BtrStatusDiskFull);
    EXPECT_EQ(me({.Operation = BtrOpEnd}).Status, BtrStatusDiskFull);
    EXPECT_EQ(t.Insert("more", "x", 0).Status, BtrStatusDiskFull);
    EXPECT_EQ(me({.Operation = BtrOpEnd}).Status, BtrStatusDiskFull);
    EXPECT_EQ(me({.Operation = BtrOpAbort}).Status, BtrStatusOk);
    EXPECT_EQ(CountRecords(me), 1);
    // Without one: each change is whole or absent.
    status = BtrStatusOk;
    int inserted = 0;
    ASSERT_EQ(me({.Operation = BtrOpBegin}).Status, BtrStatusOk);
    for (; inserted < 1400; ++inserted) {
        ASSERT_EQ(t.Insert(std::to_string(inserted), "x", inserted).Status, BtrStatusOk);
    }
    ASSERT_EQ(me({.Operation = BtrOpEnd}).Status, BtrStatusOk);
    while (status == BtrStatusOk && inserted < 100000) {
        status = t.Insert(std::to_string(inserted), "x", inserted).Status;
        if (status == BtrStatusOk) ++inserted;
    }
    EXPECT_EQ(status, BtrStatusDiskFull);
    EXPECT_EQ(CountRecords(me), inserted + 1);
    ASSERT_EQ(Name(t.GetEqual("first")), "first");
    wbtrv::limits.MapSize = size_t{64} << 30;
}

// ---- Forks ----

struct Forks : OpenedT {};

TEST_F(Forks, AForkedChildStartsAfresh)
{
    ASSERT_EQ(T.GetEqual("a", BtrBiasLock).Status, BtrStatusOk);
    const pid_t child = fork();
    if (child == 0) {
        const bool dropped =
            Carry(Me.Blocks, {.Operation = BtrOpGetFirst, .Length = 64}).Status == BtrStatusNotOpen;
        PositionBlocks blocks{};
        const auto you = [&](const Request &request) { return Carry(blocks, request); };
        const OnT<decltype(you)> t{you};
        const bool opens = Open(you, Path).Status == BtrStatusOk;
        const bool reads = Name(t.GetEqual("b")) == "b";
        const bool locked = t.GetEqual("a", BtrBiasLock).Status == BtrStatusRecordLocked;
        const bool writes = t.Insert("c", "x", 1).Status == BtrStatusOk;
        _exit(dropped && opens && reads && locked && writes ? 0 : 1);
    }
    int end = 0;
    waitpid(child, &end, 0);
    EXPECT_EQ(end, 0);
    // The child's end takes nothing from the parent.
    const Remote other;
    ASSERT_EQ(Open(other, Path).Status, BtrStatusOk);
    EXPECT_EQ(OnT<const Remote>{other}.GetEqual("a", BtrBiasLock).Status, BtrStatusRecordLocked);
    EXPECT_EQ(Name(T.GetEqual("c")), "c");
    EXPECT_EQ(T.Update("c", "y", 1).Status, BtrStatusOk);
}

// Opens, inserts a record of the name and tells so, then waits for a word, in a container of its own: as the
// process of number 1.
void UseInContainer(const std::string &path, const char *name, int told, int word)
{
    if (unshare(CLONE_NEWUSER | CLONE_NEWPID) != 0 && unshare(CLONE_NEWPID) != 0) _exit(2);
    const pid_t inside = fork();
    if (inside == 0) {
        PositionBlocks blocks{};
        const auto you = [&](const Request &request) { return Carry(blocks, request); };
        const OnT<decltype(you)> t{you};
        char fine = getpid() == 1 && Open(you, path).Status == BtrStatusOk &&
                            t.Insert(name, "x", 1).Status == BtrStatusOk && Name(t.GetEqual("a")) == "a"
                        ? '1'
                        : '0';
        (void)!write(told, &fine, 1);
        (void)!read(word, &fine, 1);
        _exit(0);
    }
    int end = 0;
    waitpid(inside, &end, 0);
    _exit(WEXITSTATUS(end));
}

TEST_F(Forks, ProcessesOfTheSameNumberInTwoContainersDoNotDisturbEachOther)
{
    int told[2];
    int word[2];
    ASSERT_EQ(pipe2(told, O_CLOEXEC) | pipe2(word, O_CLOEXEC), 0);
    ASSERT_EQ(Close(Me).Status, BtrStatusOk);
    std::vector<pid_t> children;
    std::string answers;
    for (const char *name : {"c", "d"}) {
        children.push_back(fork());
        if (children.back() == 0) UseInContainer(Path, name, told[1], word[0]);
        pollfd answer{told[0], POLLIN, 0};
        char fine = 'x';
        if (poll(&answer, 1, 20000) == 1) (void)!read(told[0], &fine, 1);
        answers += fine;
    }
    EXPECT_EQ(write(word[1], "ab", 2), 2);
    int end = 0;
    for (const pid_t child : children) {
        int one = 0;
        waitpid(child, &one, 0);
        end |= one;
    }
    for (const int descriptor : {told[0], told[1], word[0], word[1]}) {
        close(descriptor);
    }
    if (WEXITSTATUS(end) == 2) GTEST_SKIP() << "no containers here";
    EXPECT_EQ(answers, "11");
    ASSERT_EQ(Open(Me, Path).Status, BtrStatusOk);
    EXPECT_EQ(CountRecords(Me), 4);
}

TEST_F(Forks, AForkInsideATransactionLeavesItToTheParent)
{
    ASSERT_EQ(Me({.Operation = BtrOpBegin}).Status, BtrStatusOk);
    ASSERT_EQ(T.Insert("c", "x", 1).Status, BtrStatusOk);
    EXPECT_EQ(InChild({{.Operation = BtrOpEnd}}), BtrStatusNoTransaction);
    EXPECT_EQ(InChild({OpenRequest(Path), {.Operation = BtrOpGetEqual, .Length = 64, .Key = "c"}}),
              BtrStatusKeyNotFound);
    ASSERT_EQ(Me({.Operation = BtrOpEnd}).Status, BtrStatusOk);
    EXPECT_EQ(InChild({OpenRequest(Path), {.Operation = BtrOpGetEqual, .Length = 64, .Key = "c"}}),
              BtrStatusOk);
}

TEST_F(Forks, ALivingChildDoesNotKeepTheLocksOfADeadParent)
{
    const TempDirectory directory;
    MakeT(directory);
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t parent = fork();
    if (parent == 0) {
        PositionBlocks blocks{};
        const auto client = [&](const Request &request) { return Carry(blocks, request); };
        const bool locked = Open(client, directory / "t.btr", 0).Status == BtrStatusOk &&
                            OnT<decltype(client)>{client}.GetEqual("a", BtrBiasLock).Status == BtrStatusOk;
        const pid_t child = fork();
        if (child == 0) {
            // Outlives its parent, until the test closes the pipe.
            char byte = 0;
            close(ends[1]);
            (void)!read(ends[0], &byte, 1);
            _exit(0);
        }
        _exit(locked ? 0 : 1);
    }
    int end = 0;
    waitpid(parent, &end, 0);
    ASSERT_EQ(end, 0);
    Local me;
    ASSERT_EQ(Open(me, directory / "t.btr").Status, BtrStatusOk);
    EXPECT_EQ(OnT<Local>{me}.GetEqual("a", BtrBiasLock).Status, BtrStatusOk);
    close(ends[0]);
    close(ends[1]);
}

TEST_F(Forks, AReaderThatDiedInItsCallIsCleared)
{
    const pid_t child = fork();
    if (child == 0) {
        wbtrv::Store *store = nullptr;
        wbtrv::View *snapshot = nullptr;
        const bool reads =
            wbtrv::AcquireStore(Directory.Path.c_str(), false, false, nullptr, &store) == BtrStatusOk &&
            wbtrv::BeginSnapshot(store, &snapshot) == BtrStatusOk;
        // Gone with its snapshot open, as a killed process is.
        _exit(reads ? 0 : 1);
    }
    int end = 0;
    waitpid(child, &end, 0);
    ASSERT_EQ(end, 0);
    wbtrv::Store *store = nullptr;
    ASSERT_EQ(wbtrv::AcquireStore(Directory.Path.c_str(), false, false, nullptr, &store), BtrStatusOk);
    ASSERT_EQ(Name(T.GetEqual("a")), "a");
    for (int i = 0; i < 20; ++i) {
        ASSERT_EQ(T.Update("a", "y", i).Status, BtrStatusOk);
    }
    store->Own->LastReaderCheck_s = 0; // as if a second had passed
    const uint64_t size = fs::file_size(Directory / "books.mdb");
    for (int i = 0; i < 500; ++i) {
        ASSERT_EQ(T.Update("a", "y", i).Status, BtrStatusOk);
    }
    EXPECT_LE(fs::file_size(Directory / "books.mdb"), size + size_t{64} * 4096);
    wbtrv::ReleaseStore(store);
}

TEST_F(Forks, AChildHasNoClientOfItsParents)
{
    Beside reader;
    const OnT<Beside> read{reader};
    ASSERT_EQ(Open(reader, Path).Status, BtrStatusOk);
    const pid_t child = fork();
    if (child == 0) {
        const bool refused = read.GetEqual("a").Status == BtrStatusNoEngine;
        BtrEndClient(reader.Client);
        _exit(refused ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(Name(read.GetEqual("a")), "a");
    EXPECT_EQ(Name(read.GetEqual("b")), "b");
}

} // namespace
