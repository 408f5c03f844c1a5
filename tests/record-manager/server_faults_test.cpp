// What befalls the server itself: its disk is full, it stands still as a whole, rights are taken away under
// way, its tables are changed by hand, and memory runs out in the part that speaks to it. Every call is
// answered in its time and with a status, and what was answered is what is in the books.
#include "faults.h"
#include "on_server.h"
#include "threaded.h"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <set>
#include <sys/resource.h>
#include <sys/stat.h>

namespace {

using namespace wbtrvtest;
using Clock = std::chrono::steady_clock;

// ---- A full disk ----

pid_t BackendOfLastClient()
{
    return std::stoi(Query(
        "SELECT pid FROM pg_stat_activity WHERE application_name = 'VARK40' ORDER BY backend_start DESC "
        "LIMIT 1"));
}

// A process whose files may grow no further: to the server that is a disk that took half of a page.
struct FullDisk {
    pid_t Process;

    FullDisk(pid_t process, rlim_t bytes) : Process(process) { Limit(bytes); }
    FullDisk(const FullDisk &) = delete;
    FullDisk &operator=(const FullDisk &) = delete;
    ~FullDisk() { Limit(RLIM_INFINITY); }

    // Its owner does it, who is another one where the tests are root's.
    void Limit(rlim_t bytes) const
    {
        struct stat owner = {};
        EXPECT_EQ(stat(("/proc/" + std::to_string(Process)).c_str(), &owner), 0);
        const pid_t child = fork();
        if (child == 0) {
            const rlimit limit{bytes, RLIM_INFINITY};
            const bool is =
                owner.st_uid == geteuid() || (setresgid(owner.st_gid, owner.st_gid, owner.st_gid) == 0 &&
                                              setresuid(owner.st_uid, owner.st_uid, owner.st_uid) == 0);
            _exit(is && prlimit(Process, RLIMIT_FSIZE, &limit, nullptr) == 0 ? 0 : 1);
        }
        int end = 0;
        waitpid(child, &end, 0);
        EXPECT_EQ(end, 0);
    }
};

// The server's log lies in files of a megabyte, which are there already: a table has to be larger to meet
// the limit.
struct OnFullServer : OnServer {
    std::string Records = SchemaOf(Directory) + ".records";

    void SetUp() override
    {
        OnServer::SetUp();
        if (IsSkipped()) return;
        ASSERT_EQ(Query("SHOW wal_segment_size"), "1MB");
        // Four of these fill a page, which is left no room for others.
        Query("INSERT INTO " + Records +
              " SELECT 16777215, n, decode(repeat('ab', 1984), 'hex') FROM generate_series(1, 600) AS n");
    }
    // Half of another page fits, or nothing of it; it may be there from before.
    rlim_t Room(bool half = true) const
    {
        constexpr rlim_t page = 8192;
        const rlim_t size = std::stoul(Query("SELECT pg_relation_size('" + Records + "')")) / page * page;
        return half ? size + page / 2 : size;
    }
    // Inserts until the disk is full; how many went in.
    int Fill(const std::string &prefix, int16_t *status) const
    {
        for (int i = 0; i < 1000; ++i) {
            *status = T.Insert(prefix + std::to_string(1000 + i), "y", i).Status;
            if (*status != BtrStatusOk) return i;
        }
        return 1000;
    }
};

TEST_F(OnFullServer, AnInsertIsAnsweredWithDiskFullAndNothingOfItIsThere)
{
    // A limit of the system or a quota takes nothing of a page, a disk perhaps a part.
    int all = 3;
    for (const bool half : {true, false}) {
        const std::string prefix = half ? "p" : "u";
        int16_t status = BtrStatusOk;
        int inserted = 0;
        {
            const FullDisk full(BackendOfLastClient(), Room(half));
            inserted = Fill(prefix, &status);
            EXPECT_EQ(status, BtrStatusDiskFull) << inserted;
            EXPECT_EQ(CountRecords(Me), all + inserted);
            EXPECT_EQ(T.GetEqual(prefix + std::to_string(1000 + inserted)).Status, BtrStatusKeyNotFound);
            EXPECT_EQ(Name(T.GetEqual("b")), "b");
        }
        EXPECT_EQ(T.Insert(prefix + std::to_string(1000 + inserted), "y", 1).Status, BtrStatusOk);
        all += inserted + 1;
        EXPECT_EQ(CountRecords(Me), all);
    }
}

TEST_F(OnFullServer, ATransactionEndsWithItAndIsUndoneAsAWhole)
{
    for (const uint16_t begin : {BtrOpBegin, BtrOpBeginConcurrent}) {
        const FullDisk full(BackendOfLastClient(), Room());
        ASSERT_EQ(Me({.Operation = begin}).Status, BtrStatusOk);
        int16_t status = BtrStatusOk;
        EXPECT_LT(Fill(begin == BtrOpBegin ? "q" : "r", &status), 1000);
        // A record's lock that can be asked for no more is 2.
        EXPECT_EQ(status, begin == BtrOpBegin ? BtrStatusDiskFull : BtrStatusIoError);
        EXPECT_EQ(Me({.Operation = BtrOpEnd}).Status, BtrStatusDiskFull);
        EXPECT_EQ(Me({.Operation = BtrOpAbort}).Status, BtrStatusOk);
        EXPECT_EQ(CountRecords(Me), 3);
    }
    ASSERT_EQ(T.Insert("s", "y", 1).Status, BtrStatusOk);
}

// ---- A server that stands still ----

// All processes of a server.
std::vector<pid_t> ProcessesOf(pid_t parent)
{
    std::vector<pid_t> found{parent};
    for (const auto &entry : std::filesystem::directory_iterator("/proc")) {
        std::ifstream file(entry.path() / "stat");
        std::string text;
        std::getline(file, text);
        const size_t behindName = text.rfind(')');
        if (behindName == std::string::npos) continue;
        if (std::stoi(text.substr(behindName + 3)) == parent)
            found.push_back(std::stoi(entry.path().filename()));
    }
    return found;
}

struct StoppedServer {
    std::vector<pid_t> Stopped;

    StoppedServer()
    {
        std::ifstream file(std::string(getenv("WBTRV_TEST_SERVER_PLACE")) + "/data/postmaster.pid");
        pid_t postmaster = 0;
        file >> postmaster;
        // The first stands still before it could start another.
        kill(postmaster, SIGSTOP);
        Stopped = ProcessesOf(postmaster);
        for (const pid_t process : Stopped) {
            kill(process, SIGSTOP);
        }
    }
    StoppedServer(const StoppedServer &) = delete;
    StoppedServer &operator=(const StoppedServer &) = delete;
    ~StoppedServer()
    {
        for (const pid_t process : Stopped) {
            kill(process, SIGCONT);
        }
    }
};

struct WithStoppedServer : OnServer {
    void SetUp() override
    {
        OnServer::SetUp();
        wbtrv::limits.ServerAnswer_ms = 300;
        wbtrv::limits.ServerTruth_ms = 300;
    }
    // What a call answers, which comes within its bound: the answer's, once more with a new connection, and a
    // connection's own three seconds for each.
    template <typename Call> static int16_t Timely(Call call)
    {
        const auto before = Clock::now();
        const int16_t status = call();
        EXPECT_LT(Clock::now() - before, std::chrono::seconds(10));
        return status;
    }
};

TEST_F(WithStoppedServer, EachCallIsAnsweredInItsTimeAndAllGoesOnLater)
{
    ASSERT_EQ(T.GetEqual("a").Status, BtrStatusOk);
    const std::set<int16_t> lost{BtrStatusIoError, BtrStatusNoEngine};
    {
        const StoppedServer stopped;
        EXPECT_TRUE(lost.contains(Timely([&] { return T.Read(BtrOpGetLast, 2).Status; })));
        EXPECT_TRUE(lost.contains(Timely([&] { return T.Insert("d", "x", 1).Status; })));
        EXPECT_TRUE(lost.contains(Timely([&] { return T.GetEqual("b", BtrBiasLock).Status; })));
        EXPECT_EQ(CountRecords(Me), -1);
        EXPECT_TRUE(lost.contains(Timely([&] { return Open(Me, Path, 1).Status; })));
    }
    EXPECT_EQ(Name(T.GetEqual("b")), "b");
    EXPECT_EQ(CountRecords(Me), 3);
    EXPECT_EQ(T.Insert("d", "x", 1).Status, BtrStatusOk);
}

TEST_F(WithStoppedServer, ATransactionIsGivenUpAndItsEndSaysSo)
{
    ASSERT_EQ(Me({.Operation = BtrOpBegin}).Status, BtrStatusOk);
    ASSERT_EQ(T.Insert("d", "x", 1).Status, BtrStatusOk);
    {
        const StoppedServer stopped;
        EXPECT_EQ(Timely([&] { return Me({.Operation = BtrOpEnd}).Status; }), BtrStatusTransactionIo);
        EXPECT_EQ(Timely([&] { return Me({.Operation = BtrOpAbort}).Status; }), BtrStatusOk);
    }
    // Nobody could say whether it is there; it is there as a whole or not at all.
    const bool there = T.GetEqual("d").Status == BtrStatusOk;
    EXPECT_EQ(CountRecords(Me), there ? 4 : 3);
}

// ---- Rights ----

TEST_F(OnServer, RightsThatAreRevokedUnderWayAreMissedByTheNextCall)
{
    const std::string schema = SchemaOf(Directory);
    const AsRole role(
        schema,
        "GRANT SELECT ON ALL TABLES IN SCHEMA " + schema +
            " TO @; GRANT INSERT, UPDATE, DELETE ON head, files, groups, records, entries, sessions TO @");
    Threaded writer;
    const OnT<Threaded> theirs{writer};
    ASSERT_EQ(Open(writer, role.Directory / "t.btr").Status, BtrStatusOk);
    ASSERT_EQ(theirs.Insert("d", "x", 1).Status, BtrStatusOk);
    ASSERT_EQ(writer({.Operation = BtrOpBeginConcurrent}).Status, BtrStatusOk);
    ASSERT_EQ(theirs.Insert("e", "x", 1).Status, BtrStatusOk);
    Query(role.Named("REVOKE INSERT ON " + schema + ".entries FROM @"));
    // What is on its way fails with it, and the transaction as a whole.
    EXPECT_NE(theirs.Insert("f", "x", 1).Status, BtrStatusOk);
    EXPECT_EQ(writer({.Operation = BtrOpEnd}).Status, BtrStatusPermission);
    EXPECT_EQ(writer({.Operation = BtrOpAbort}).Status, BtrStatusOk);
    EXPECT_EQ(theirs.Insert("f", "x", 1).Status, BtrStatusPermission);
    EXPECT_EQ(Name(theirs.GetEqual("d")), "d") << "reading goes on";
    Query(role.Named("REVOKE SELECT ON " + schema + ".entries FROM @"));
    EXPECT_EQ(theirs.GetEqual("b").Status, BtrStatusPermission);
    Query(role.Named("GRANT SELECT, INSERT ON " + schema + ".entries TO @"));
    EXPECT_EQ(Name(theirs.GetEqual("b")), "b");
    EXPECT_EQ(theirs.Insert("f", "x", 1).Status, BtrStatusOk);
    EXPECT_EQ(CountRecords(Me), 5);
    EXPECT_EQ(Close(writer).Status, BtrStatusOk);
    writer({.Operation = BtrOpStop});
}

// ---- A schema changed by hand ----

struct Damage {
    const char *Name;
    const char *Sql; // @ stands for the schema and a dot
    int16_t Opening; // what a new client's open answers
};

struct DamagedSchema : OnServer, testing::WithParamInterface<Damage> {};

const std::set<int16_t> documented{BtrStatusOk,        BtrStatusIoError,      BtrStatusKeyNotFound,
                                   BtrStatusEndOfFile, BtrStatusFileNotFound, BtrStatusForeignFile,
                                   BtrStatusConflict,  BtrStatusDuplicateKey, BtrStatusDataBufferShort};

TEST_P(DamagedSchema, IsAnsweredWithAStatusByEveryCall)
{
    const std::string schema = SchemaOf(Directory) + ".";
    std::string sql = GetParam().Sql;
    for (size_t at = 0; (at = sql.find('@', at)) != std::string::npos;) {
        sql.replace(at, 1, schema);
    }
    ASSERT_EQ(Name(T.GetEqual("b")), "b");
    const std::string answer = Query(sql);
    ASSERT_EQ(answer.find("ERROR"), std::string::npos) << answer;
    const auto calls = [&](auto &client) {
        const OnT<std::remove_reference_t<decltype(client)>> on{client};
        for (int8_t key = 0; key < 3; ++key) {
            for (const uint16_t operation :
                 {BtrOpGetFirst, BtrOpGetNext, BtrOpGetNext, BtrOpGetLast, BtrOpGetPrevious}) {
                const int16_t status = on.Read(operation, key).Status;
                EXPECT_TRUE(documented.contains(status) || status == BtrStatusNoPosition ||
                            status == BtrStatusKeyNumberChanged)
                    << operation << " gave " << status;
            }
        }
        for (const uint16_t operation : {BtrOpStepFirst, BtrOpStepNext, BtrOpStepLast}) {
            EXPECT_TRUE(documented.contains(on.Read(operation, 0).Status)) << operation;
        }
        (void)CountRecords(client);
        int16_t status = on.Insert("d", "x", 1).Status;
        EXPECT_TRUE(documented.contains(status)) << status;
        status = on.GetEqual("b").Status;
        if (status == BtrStatusOk) status = on.Update("b", "z", 7).Status;
        EXPECT_TRUE(documented.contains(status)) << status;
        status = on.GetEqual("a").Status;
        if (status == BtrStatusOk) status = on.Delete().Status;
        EXPECT_TRUE(documented.contains(status)) << status;
    };
    calls(Me);
    Threaded other;
    const int16_t opened = Open(other, Path).Status;
    EXPECT_EQ(opened, GetParam().Opening);
    if (opened == BtrStatusOk) calls(other);
    other({.Operation = BtrOpStop});
}

constexpr int16_t foreign = BtrStatusForeignFile;
constexpr Damage damages[] = {
    {"HeadEmptied", "DELETE FROM @head", foreign},
    {"HeadGone", "DROP TABLE @head", BtrStatusFileNotFound},
    {"FilesEmptied", "DELETE FROM @files", BtrStatusFileNotFound},
    {"FilesGone", "DROP TABLE @files", BtrStatusFileNotFound},
    {"EntriesGone", "DROP TABLE @entries", BtrStatusOk},
    {"EntriesEmptied", "DELETE FROM @entries", BtrStatusOk},
    {"RecordsGone", "DROP TABLE @records", BtrStatusFileNotFound},
    {"GroupsEmptied", "DELETE FROM @groups", BtrStatusOk},
    {"GroupsGone", "DROP TABLE @groups", BtrStatusOk},
    {"SessionsGone", "DROP TABLE @sessions", BtrStatusOk},
    {"SessionsEmptied", "DELETE FROM @sessions", BtrStatusOk},
    {"DefinitionCut", "UPDATE @files SET definition = substring(definition FROM 1 FOR 20)", foreign},
    {"DefinitionTurned", "UPDATE @files SET definition = decode(repeat('ff', length(definition)), 'hex')",
     foreign},
    {"CountersCut", "UPDATE @files SET counts = ''", BtrStatusOk},
    {"CountersTurned", "UPDATE @files SET last_record = -1, records = -1, sequence = -1", BtrStatusOk},
    {"RecordsCut", "UPDATE @records SET data = substring(data FROM 1 FOR 10)", BtrStatusOk},
    {"RecordsLong", "UPDATE @records SET data = data || decode(repeat('00', 100000), 'hex')", BtrStatusOk},
    {"EntriesNowhere", "UPDATE @entries SET record = record + 4294967296", BtrStatusOk},
    {"EntriesNegative", "UPDATE @entries SET record = -record", BtrStatusOk},
    {"EntriesMixed", "UPDATE @entries SET record = 4 - record", BtrStatusOk},
    {"KeysLong", "UPDATE @entries SET key = key || decode(repeat('00', 1000), 'hex')", BtrStatusOk},
    {"KeysCut", "UPDATE @entries SET key = substring(key FROM 1 FOR 2) WHERE tree = 1", BtrStatusOk},
    {"RecordsRenamed", "UPDATE @records SET record = record + 1000", BtrStatusOk},
    {"ColumnGone", "ALTER TABLE @records DROP COLUMN data", BtrStatusOk},
    {"ColumnOfAnotherType", "ALTER TABLE @entries ALTER COLUMN key TYPE text USING 'x' || record || tree",
     BtrStatusOk},
};
INSTANTIATE_TEST_SUITE_P(, DamagedSchema, testing::ValuesIn(damages),
                         [](const auto &damage) { return std::string(damage.param.Name); });

// ---- Memory ----

// Each allocation of a posting and of reads in turn fails, in the client library too. What was answered
// with success is there, what was not is not, and the next posting succeeds.
TEST_F(OnServer, EachAllocationMayFail)
{
    if (!CanFailAllocations()) GTEST_SKIP() << "a sanitizer has its own";
    // Answers that the client library has no memory for never come.
    wbtrv::limits.ServerAnswer_ms = 300;
    int64_t postings = 0;
    int failed = 0;
    for (uint64_t n = 1;; n += n < 50 ? 1 : 13) {
        const std::string key = "m" + std::to_string(10000 + n);
        int16_t status = BtrStatusOk;
        int16_t ended = BtrStatusOk;
        Arm(Fault::Allocation, n);
        Pause();
        (void)Carry(Me.Blocks, {.Operation = BtrOpGetFirst, .Length = 64, .KeyNumber = 1}, Resume, Pause);
        (void)Carry(Me.Blocks, {.Operation = BtrOpGetNext, .Length = 64, .KeyNumber = 1}, Resume, Pause);
        status = Carry(Me.Blocks, {.Operation = BtrOpBegin}, Resume, Pause).Status;
        if (status == BtrStatusOk) {
            status =
                Carry(Me.Blocks, {.Operation = BtrOpInsert, .Data = RecordOfT(key, "y", 7), .Length = 64},
                      Resume, Pause)
                    .Status;
            ended = Carry(Me.Blocks, {.Operation = BtrOpEnd}, Resume, Pause).Status;
        }
        Disarm();
        const bool met = HasFailed();
        if (ended != BtrStatusOk) {
            EXPECT_EQ(Me({.Operation = BtrOpAbort}).Status, BtrStatusOk) << n;
        }
        if (status == BtrStatusOk && ended == BtrStatusOk) ++postings;
        ASSERT_EQ(CountRecords(Me), 3 + postings)
            << "allocation " << n << ", statuses " << status << " " << ended;
        ASSERT_EQ(T.GetEqual(key).Status == BtrStatusOk, status == BtrStatusOk && ended == BtrStatusOk) << n;
        ASSERT_EQ(T.Insert("n" + key.substr(1), "y", 7).Status, BtrStatusOk) << n;
        ++postings;
        if (!met) break;
        ++failed;
    }
    EXPECT_GT(failed, 20);
}

// ---- Another version ----

TEST_F(OnServer, APartOfAnotherVersionIsRefused)
{
    void *library = dlopen("libwbtrv32-server.so", RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(library, nullptr);
    const auto give = reinterpret_cast<wbtrv::GiveServerPart>(dlsym(library, "WbtrvServerPart"));
    EXPECT_EQ(give(wbtrv::serverPartForm + 1, &wbtrv::limits), nullptr);
    EXPECT_NE(give(wbtrv::serverPartForm, &wbtrv::limits), nullptr);
    dlclose(library);
}

} // namespace
