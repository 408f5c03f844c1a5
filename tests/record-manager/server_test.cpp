// What only books on a server have: their file, what they cost in round trips, what is read ahead, and what
// becomes of a connection that is lost.
#include "on_server.h"
#include "threaded.h"

#include <chrono>
#include <csignal>
#include <sys/socket.h>

namespace {

// Which of the statements from now on meets a lost connection; 0: none. Behind: the server gets it, but its
// answer never comes.
int failAt = 0;
bool failBehind = false;

} // namespace

// Stands before the client library's own.
extern "C" __attribute__((visibility("default"))) int
PQsendQueryPrepared(PGconn *connection, const char *name, int count, const char *const *values,
                    const int *lengths, const int *formats, int resultFormat)
{
    using Function = int (*)(PGconn *, const char *, int, const char *const *, const int *, const int *, int);
    static const auto real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "PQsendQueryPrepared"));
    const bool fails = failAt > 0 && --failAt == 0;
    if (fails && !failBehind) shutdown(PQsocket(connection), SHUT_RDWR);
    const int sent = real(connection, name, count, values, lengths, formats, resultFormat);
    if (fails && failBehind) {
        PQpipelineSync(connection);
        PQflush(connection);
        // What the server has begun it ends; only its answers are lost.
        shutdown(PQsocket(connection), SHUT_RD);
    }
    return sent;
}

namespace {

using namespace wbtrvtest;
using namespace std::chrono_literals;

// ---- The file ----

struct ServiceFile : testing::Test {
    TempDirectory Directory;
    Local Me;

    void SetUp() override
    {
        if (server.empty()) GTEST_SKIP() << "to be run by with-postgres";
    }
    int16_t OpenWith(const std::string &content)
    {
        std::filesystem::remove(Directory / "books.server");
        std::ofstream(Directory / "books.server") << content;
        testing::internal::CaptureStderr();
        const int16_t status = Open(Me, Directory / "t.btr").Status;
        Told = testing::internal::GetCapturedStderr();
        return status;
    }
    std::string Told;
};

TEST_F(ServiceFile, ThatOthersMayWriteIsRefused)
{
    ASSERT_EQ(Create(Me, Directory / "t.btr", DefinitionOfT()).Status, BtrStatusOk);
    for (const auto rights : {std::filesystem::perms::group_write, std::filesystem::perms::others_write}) {
        std::filesystem::permissions(Directory / "books.server", rights, std::filesystem::perm_options::add);
        EXPECT_EQ(Open(Me, Directory / "t.btr").Status, BtrStatusPermission);
        std::filesystem::permissions(Directory / "books.server", rights,
                                     std::filesystem::perm_options::remove);
    }
    EXPECT_EQ(Open(Me, Directory / "t.btr").Status, BtrStatusOk);
}

TEST_F(ServiceFile, ThatIsNotTwoGoodLinesIsForeign)
{
    const std::vector<std::string> contents = {"",
                                               server + "\n",
                                               server + "\nschema\nmore\n",
                                               "nonsense\nschema\n",
                                               server + "\nSchema\n",
                                               server + "\na\"b\n",
                                               server + " password=secret\nschema\n",
                                               server + "\nschema\n" + std::string(5000, '#')};
    std::string told;
    for (const std::string &content : contents) {
        EXPECT_EQ(OpenWith(content), BtrStatusForeignFile) << content;
        told += Told;
    }
    // What was told just before is not told again.
    for (const char *text : {"zwei Zeilen", "libpq", "Schemas", "Kennwort"}) {
        EXPECT_NE(told.find(text), std::string::npos) << told;
    }
    EXPECT_EQ(told.find("secret"), std::string::npos);
}

TEST_F(ServiceFile, RemarksAndEmptyLinesArePassedOver)
{
    EXPECT_EQ(OpenWith("# the books\n\n  " + server + "  \n# and\nnowhere\n"), BtrStatusFileNotFound);
    EXPECT_NE(Told.find("keine Bücher"), std::string::npos) << Told;
}

TEST_F(ServiceFile, OfAServerThatIsNotThereIsAnsweredWithNoEngine)
{
    EXPECT_EQ(OpenWith("host=/nowhere user=books\nschema\n"), BtrStatusNoEngine);
    EXPECT_NE(Told, "");
}

TEST_F(ServiceFile, BesideBooksOfTheDirectoryIsForeign)
{
    std::ofstream(Directory / "books.mdb") << "";
    EXPECT_EQ(Open(Me, Directory / "t.btr").Status, BtrStatusForeignFile);
}

TEST_F(ServiceFile, OfASchemaOfAnotherFormOrKindIsForeign)
{
    ASSERT_EQ(Create(Me, Directory / "t.btr", DefinitionOfT()).Status, BtrStatusOk);
    const std::string head = SchemaOf(Directory) + ".head";
    Query("UPDATE " + head + " SET form = form + 1");
    EndAllConnections();
    EXPECT_EQ(Open(Me, Directory / "t.btr").Status, BtrStatusForeignFile);
    Query("UPDATE " + head + " SET form = form - 1, mark = 'OTHER'");
    EXPECT_EQ(Open(Me, Directory / "t.btr").Status, BtrStatusForeignFile);
    Query("ALTER TABLE " + head + " DROP COLUMN mark");
    EXPECT_EQ(Open(Me, Directory / "t.btr").Status, BtrStatusForeignFile);
}

// ---- Rights ----

TEST_F(OnServer, ARoleThatMayOnlyReadReadsAndIsRefusedEveryChange)
{
    const std::string schema = SchemaOf(Directory);
    const std::string role = "reader_" + schema;
    Query("CREATE ROLE " + role + " LOGIN; GRANT USAGE ON SCHEMA " + schema + " TO " + role +
          "; GRANT SELECT ON ALL TABLES IN SCHEMA " + schema + " TO " + role);
    const std::filesystem::path other = Directory / "other";
    std::filesystem::create_directory(other);
    std::string connection = server;
    connection.replace(connection.find("user=books"), 10, "user=" + role);
    std::ofstream(other / "books.server") << connection << "\n" << schema << "\n";
    const std::string path = other / "t.btr";
    Threaded reader;
    const OnT<Threaded> t{reader};
    ASSERT_EQ(Open(reader, path).Status, BtrStatusOk);
    EXPECT_EQ(Name(t.GetEqual("b")), "b");
    EXPECT_EQ(Name(t.Read(BtrOpGetNext, 0)), "c");
    EXPECT_EQ(CountRecords(reader), 3);
    EXPECT_EQ(t.Insert("d", "x", 1).Status, BtrStatusAccessDenied);
    EXPECT_EQ(t.Delete().Status, BtrStatusAccessDenied);
    EXPECT_EQ(t.GetEqual("a", BtrBiasLock).Status, BtrStatusAccessDenied);
    EXPECT_EQ(Create(reader, other / "n.btr", DefinitionOfN()).Status, BtrStatusPermission);
}

TEST_F(OnServer, RightsThatAreTakenAwayAreMissedByTheNextChange)
{
    const std::string schema = SchemaOf(Directory);
    Query("ALTER TABLE " + schema + ".records RENAME TO hidden");
    EXPECT_EQ(T.Insert("d", "x", 1).Status, BtrStatusFileNotFound);
    Query("ALTER TABLE " + schema + ".hidden RENAME TO records");
    EXPECT_EQ(T.Insert("d", "x", 1).Status, BtrStatusOk);
    EXPECT_EQ(CountRecords(Me), 4);
}

TEST_F(OnServer, AnEntryWhoseRecordWasTakenOutByHandIsDamage)
{
    Query("DELETE FROM " + SchemaOf(Directory) + ".records WHERE record = 2");
    EXPECT_EQ(T.GetEqual("b").Status, BtrStatusForeignFile);
    EXPECT_EQ(Name(T.GetEqual("a")), "a");
}

TEST_F(OnServer, AnEntryThatWasTakenOutByHandIsNoticedByTheDelete)
{
    ASSERT_EQ(Name(T.Read(BtrOpStepFirst, 0)), "a");
    Query("DELETE FROM " + SchemaOf(Directory) + ".entries WHERE tree = 1 AND record = 1");
    EXPECT_EQ(T.Delete().Status, BtrStatusForeignFile);
    EXPECT_EQ(CountRecords(Me), 3);
}

// ---- Reading ahead ----

TEST_F(OnServer, ReadingAlongAKeyCostsFewRoundTrips)
{
    for (int i = 0; i < 1000; ++i) {
        ASSERT_EQ(T.Insert(std::to_string(10000 + i), "y", i).Status, BtrStatusOk);
    }
    const uint64_t before = RoundTrips();
    int records = 0;
    for (uint16_t operation = BtrOpGetFirst; T.Read(operation, 0).Status == BtrStatusOk;
         operation = BtrOpGetNext) {
        ++records;
    }
    EXPECT_EQ(records, 1003);
    // 1, 8, 32, 128, 512, the rest, and once more for each tenth of a second.
    EXPECT_LE(RoundTrips() - before, 20U);
    records = 0;
    for (uint16_t operation = BtrOpGetLast; T.Read(operation, 2).Status == BtrStatusOk;
         operation = BtrOpGetPrevious) {
        ++records;
    }
    EXPECT_EQ(records, 1003);
}

TEST_F(OnServer, WhatWasReadAheadIsOldForATenthOfASecondAtMost)
{
    ASSERT_EQ(Name(T.Read(BtrOpGetFirst, 0)), "a");
    ASSERT_EQ(Name(T.Read(BtrOpGetNext, 0)), "b");
    Threaded other;
    const OnT<Threaded> theirs{other};
    ASSERT_EQ(Open(other, Path).Status, BtrStatusOk);
    ASSERT_EQ(Name(theirs.GetEqual("c")), "c");
    ASSERT_EQ(theirs.Delete().Status, BtrStatusOk);
    const auto deleted = std::chrono::steady_clock::now();
    while (Name(T.GetEqual("c")) == "c") {
        ASSERT_LT(std::chrono::steady_clock::now() - deleted, 2s);
    }
    EXPECT_EQ(T.GetEqual("c").Status, BtrStatusKeyNotFound);
}

TEST_F(OnServer, NothingIsServedFromMemoryAcrossOwnChangesLocksAndTransactions)
{
    wbtrv::limits.ReadAhead_ms = 3600000; // so that only these end it
    Threaded other;
    const OnT<Threaded> theirs{other};
    ASSERT_EQ(Open(other, Path).Status, BtrStatusOk);
    int32_t value = 100;
    const auto changedByOther = [&] {
        ASSERT_EQ(Name(theirs.GetEqual("c")), "c");
        ASSERT_EQ(theirs.Update("c", "x", ++value).Status, BtrStatusOk);
    };
    const auto seen = [&] {
        const Answer answer = T.GetEqual("c");
        int32_t number = 0;
        memcpy(&number, answer.Data.data() + 16, sizeof number);
        return number;
    };
    EXPECT_EQ(seen(), 3);
    changedByOther();
    EXPECT_EQ(T.Insert("d", "x", 1).Status, BtrStatusOk);
    EXPECT_EQ(seen(), value);
    changedByOther();
    EXPECT_EQ(T.GetEqual("a", BtrBiasLock).Status, BtrStatusOk);
    EXPECT_EQ(seen(), value);
    EXPECT_EQ(T.Unlock(0).Status, BtrStatusOk);
    changedByOther();
    ASSERT_EQ(Me({.Operation = BtrOpBeginConcurrent}).Status, BtrStatusOk);
    EXPECT_EQ(seen(), value);
    ASSERT_EQ(Me({.Operation = BtrOpEnd}).Status, BtrStatusOk);
    changedByOther();
    EXPECT_EQ(Name(T.GetEqual("c", BtrBiasLock)), "c");
    EXPECT_EQ(seen(), value);
}

// While a transaction ends, it is asked whether what was read in other directories is still right.
TEST_F(OnServer, WhatWasAskedForAheadIsNotServedAcrossTheBeginningOfATransaction)
{
    wbtrv::limits.ReadAhead_ms = 3600000; // so that only this ends it
    const TempDirectory elsewhere;
    const std::string path = elsewhere / "u.btr";
    const OnT<Local> u{Me, 1};
    ASSERT_EQ(Create(Me, path, DefinitionOfT()).Status, BtrStatusOk);
    ASSERT_EQ(Open(Me, path, 1).Status, BtrStatusOk);
    ASSERT_EQ(u.Insert("c", "x", 3).Status, BtrStatusOk);
    Threaded other;
    const OnT<Threaded> theirs{other};
    ASSERT_EQ(Open(other, path).Status, BtrStatusOk);
    const auto seen = [&] {
        const Answer answer = u.GetEqual("c");
        int32_t number = 0;
        memcpy(&number, answer.Data.data() + 16, sizeof number);
        return number;
    };
    const auto post = [&](const char *name) {
        ASSERT_EQ(Me({.Operation = BtrOpBegin}).Status, BtrStatusOk);
        ASSERT_EQ(T.Insert(name, "y", 1).Status, BtrStatusOk);
        ASSERT_EQ(Me({.Operation = BtrOpEnd}).Status, BtrStatusOk);
    };
    EXPECT_EQ(seen(), 3);
    post("p");
    const uint64_t before = RoundTrips();
    EXPECT_EQ(seen(), 3);
    EXPECT_EQ(RoundTrips() - before, 1U) << "the answer that was on its way";
    EXPECT_EQ(seen(), 3);
    EXPECT_EQ(RoundTrips() - before, 1U);
    post("q");
    ASSERT_EQ(Name(theirs.GetEqual("c")), "c");
    ASSERT_EQ(theirs.Update("c", "x", 4).Status, BtrStatusOk);
    ASSERT_EQ(Me({.Operation = BtrOpBeginConcurrent}).Status, BtrStatusOk);
    EXPECT_EQ(seen(), 4);
    ASSERT_EQ(Me({.Operation = BtrOpEnd}).Status, BtrStatusOk);
    // What is lost with its connection is asked for anew.
    post("r");
    EndAllConnections();
    EXPECT_EQ(seen(), 4);
}

// Many records, so that those behind the ones that are served are on their way.
struct OnLongTree : OnServer {
    static constexpr int Records = 6000;
    int Seen = 0;

    void SetUp() override
    {
        OnServer::SetUp();
        if (IsSkipped()) return;
        ASSERT_EQ(Close(Me).Status, BtrStatusOk);
        ASSERT_EQ(Open(Me, Path, 0, BtrModeLoading).Status, BtrStatusOk);
        for (int i = 0; i < Records; ++i) {
            ASSERT_EQ(T.Insert(Key(i), "y", i).Status, BtrStatusOk);
        }
        ASSERT_EQ(Close(Me).Status, BtrStatusOk);
        ASSERT_EQ(Open(Me, Path).Status, BtrStatusOk);
        ASSERT_EQ(T.GetEqual(Key(0)).Status, BtrStatusOk);
        Seen = 1;
    }
    static std::string Key(int i) { return std::to_string(10000 + i); }
    // Goes on along the key up to a record.
    void ReadUpTo(int record)
    {
        for (; Seen <= record; ++Seen) {
            ASSERT_EQ(Name(T.Read(BtrOpGetNext, 0)), Key(Seen));
        }
    }
};

TEST_F(OnLongTree, IsReadInFewRoundTripsInBothDirections)
{
    wbtrv::limits.ReadAhead_ms = 3600000;
    const uint64_t before = RoundTrips();
    ReadUpTo(Records - 1);
    const uint64_t there = RoundTrips();
    EXPECT_LE(there - before, 20U);
    for (int i = Records - 2; i >= 0; --i) {
        ASSERT_EQ(Name(T.Read(BtrOpGetPrevious, 0)), Key(i));
    }
    EXPECT_LE(RoundTrips() - there, 20U);
}

TEST_F(OnLongTree, RowsThatAreOnTheirWayAreNotServedAcrossAnOwnChange)
{
    wbtrv::limits.ReadAhead_ms = 3600000; // so that only the change ends it
    ReadUpTo(400);
    Threaded other;
    const OnT<Threaded> theirs{other};
    ASSERT_EQ(Open(other, Path).Status, BtrStatusOk);
    for (const int record : {450, 2000, 5999}) {
        ASSERT_EQ(theirs.GetEqual(Key(record)).Status, BtrStatusOk);
        ASSERT_EQ(theirs.Delete().Status, BtrStatusOk);
    }
    ASSERT_EQ(
        Me({.Operation = BtrOpInsert, .Data = RecordOfT("zz", "x", 1), .Length = 64, .KeyNumber = -1}).Status,
        BtrStatusOk);
    ASSERT_EQ(T.GetEqual(Key(400)).Status, BtrStatusOk);
    int records = 0;
    while (T.Read(BtrOpGetNext, 0).Status == BtrStatusOk) {
        ++records;
    }
    // Those behind this one but three, and a, b, c and the one that came last.
    EXPECT_EQ(records, Records - 401 - 3 + 4);
}

TEST_F(OnLongTree, IsReadOnWhereTheConnectionIsLostUnderWay)
{
    ReadUpTo(400);
    EndAllConnections();
    ReadUpTo(1500);
    EndAllConnections();
    ReadUpTo(Records - 1);
}

TEST_F(OnLongTree, IsLeftForOtherCallsWhileRowsAreOnTheirWay)
{
    ReadUpTo(700);
    EXPECT_EQ(Name(T.GetEqual("b")), "b");
    ASSERT_EQ(T.Insert("zz", "x", 1).Status, BtrStatusOk);
    EXPECT_EQ(CountRecords(Me), Records + 4);
    ASSERT_EQ(T.GetEqual(Key(700)).Status, BtrStatusOk);
    ReadUpTo(1200);
    ASSERT_EQ(T.GetEqual(Key(1200), BtrBiasLock).Status, BtrStatusOk);
    ReadUpTo(2000);
    ASSERT_EQ(Me({.Operation = BtrOpBegin}).Status, BtrStatusOk);
    ReadUpTo(2500);
    ASSERT_EQ(Me({.Operation = BtrOpEnd}).Status, BtrStatusOk);
}

// ---- Round trips ----

TEST_F(OnServer, APostingCostsNoMoreThanSixRoundTrips)
{
    const std::string numbers = Directory / "n.btr";
    ASSERT_EQ(Create(Me, numbers, DefinitionOfN()).Status, BtrStatusOk);
    ASSERT_EQ(Open(Me, numbers, 1).Status, BtrStatusOk);
    uint64_t most = 0;
    for (int i = 0; i < 5; ++i) {
        const uint64_t before = RoundTrips();
        // Accounts are read, then a record is written and a line of it that gets its number here.
        EXPECT_EQ(Name(T.GetEqual("a")), "a");
        EXPECT_EQ(Name(T.GetEqual("b")), "b");
        EXPECT_EQ(Name(T.GetEqual("a")), "a");
        ASSERT_EQ(Me({.Operation = BtrOpBegin}).Status, BtrStatusOk);
        ASSERT_EQ(T.Insert("p" + std::to_string(1000 + i), "y", i).Status, BtrStatusOk);
        ASSERT_EQ(
            Me({.Operation = BtrOpInsert, .Block = 1, .Data = RecordOfN(0, "zz", 1), .Length = 16}).Status,
            BtrStatusOk);
        ASSERT_EQ(Me({.Operation = BtrOpEnd}).Status, BtrStatusOk);
        if (i > 0) most = std::max(most, RoundTrips() - before);
    }
    EXPECT_LE(most, 6U);
    EXPECT_GE(most, 3U);
}

// A connection that was idle for long has no row any more in which its transactions are noted.
TEST_F(OnServer, APostingGoesOnWhenTheRowOfItsSessionWasClearedAway)
{
    const std::string sessions = SchemaOf(Directory) + ".sessions";
    Query("DELETE FROM " + sessions);
    EXPECT_EQ(T.Insert("d", "x", 1).Status, BtrStatusOk);
    EXPECT_EQ(Query("SELECT count(*) FROM " + sessions), "1");
}

// ---- Lost connections ----

TEST_F(OnServer, AReadThatFindsItsConnectionLostIsMadeAgain)
{
    ASSERT_EQ(Name(T.GetEqual("b")), "b");
    EndAllConnections();
    EXPECT_EQ(Name(T.Read(BtrOpGetNext, 0)), "c");
    EndAllConnections();
    EXPECT_EQ(T.Insert("d", "x", 1).Status, BtrStatusOk);
}

TEST_F(OnServer, LocksGoWithTheConnectionAndTheirHolderIsTold)
{
    ASSERT_EQ(Name(T.GetEqual("b", BtrBiasLock)), "b");
    EndAllConnections();
    Threaded other;
    const OnT<Threaded> theirs{other};
    ASSERT_EQ(Open(other, Path).Status, BtrStatusOk);
    EXPECT_EQ(Name(theirs.GetEqual("b", BtrBiasLock)), "b");
    EXPECT_EQ(T.GetEqual("a").Status, BtrStatusIoError);
    EXPECT_EQ(T.Unlock(0).Status, BtrStatusUnlockMismatch);
    EXPECT_EQ(T.GetEqual("b", BtrBiasLock).Status, BtrStatusRecordLocked);
    EXPECT_EQ(Name(T.GetEqual("a", BtrBiasLock)), "a");
}

TEST_F(OnServer, ATransactionGoesWithTheConnectionAndItsEndSaysSo)
{
    for (const uint16_t begin : {BtrOpBegin, BtrOpBeginConcurrent}) {
        ASSERT_EQ(Me({.Operation = begin}).Status, BtrStatusOk);
        ASSERT_EQ(T.Insert("d", "x", 1).Status, BtrStatusOk);
        EndAllConnections();
        EXPECT_EQ(T.GetEqual("d").Status, BtrStatusIoError);
        EXPECT_EQ(Me({.Operation = BtrOpEnd}).Status, BtrStatusTransactionIo);
        EXPECT_EQ(Me({.Operation = BtrOpAbort}).Status, BtrStatusOk);
        EXPECT_EQ(T.GetEqual("d").Status, BtrStatusKeyNotFound);
        EXPECT_EQ(CountRecords(Me), 3);
    }
}

TEST_F(OnServer, AFileThatIsOpenIsHeldAgainByTheNextConnection)
{
    EndAllConnections();
    ASSERT_EQ(Name(T.GetEqual("b")), "b");
    Threaded other;
    EXPECT_EQ(Open(other, Path, 0, BtrModeExclusive).Status, BtrStatusIncompatibleMode);
}

TEST_F(OnServer, AServerThatHasStoppedIsGivenUpAfterItsTime)
{
    wbtrv::limits.ServerAnswer_ms = 300;
    wbtrv::limits.ServerTruth_ms = 300;
    const pid_t process =
        std::stoi(Query("SELECT pid FROM pg_stat_activity WHERE application_name = 'VARK40' "
                        "ORDER BY backend_start DESC LIMIT 1"));
    ASSERT_EQ(kill(process, SIGSTOP), 0);
    const auto before = std::chrono::steady_clock::now();
    // Another connection answers where nothing was at stake.
    EXPECT_EQ(Name(T.Read(BtrOpGetLast, 0)), "c");
    EXPECT_LT(std::chrono::steady_clock::now() - before, 5s);
    kill(process, SIGCONT);
}

// Each statement of a posting in turn meets a lost connection, before the server has it and behind that. What
// its end answered is then the truth, and the next posting succeeds.
void FailEachStatement(OnServer &on, bool behind)
{
    wbtrv::limits.ServerTruth_ms = 5000;
    const std::string numbers = on.Directory / "n.btr";
    ASSERT_EQ(Create(on.Me, numbers, DefinitionOfN()).Status, BtrStatusOk);
    ASSERT_EQ(Open(on.Me, numbers, 1).Status, BtrStatusOk);
    int64_t postings = 0;
    int cases = 0;
    const auto post = [&](const std::string &key) {
        int16_t status = on.Me({.Operation = BtrOpBegin}).Status;
        if (status == BtrStatusOk) status = on.T.Insert(key, "y", 7).Status;
        if (status == BtrStatusOk) {
            status =
                on.Me({.Operation = BtrOpInsert, .Block = 1, .Data = RecordOfN(0, "zz", 1), .Length = 16})
                    .Status;
        }
        if (status == BtrStatusOk && on.T.GetEqual("a").Status == BtrStatusOk)
            (void)on.T.Update("a", key.substr(0, 8), 1);
        const int16_t ended = on.Me({.Operation = BtrOpEnd}).Status;
        if (ended != BtrStatusOk) {
            EXPECT_EQ(on.Me({.Operation = BtrOpAbort}).Status, BtrStatusOk) << key;
            return ended;
        }
        return status == BtrStatusOk ? ended : status;
    };
    for (int n = 1;; ++n) {
        const std::string key = (behind ? "b" : "a") + std::to_string(1000 + n);
        failBehind = behind;
        failAt = n;
        const int16_t status = post(key);
        const bool met = failAt == 0;
        failAt = 0;
        if (status == BtrStatusOk) ++postings;
        ASSERT_EQ(CountRecords(on.Me), 3 + postings) << "statement " << n << ", status " << status;
        ASSERT_EQ(CountRecords(on.Me, 1), postings) << "statement " << n << ", status " << status;
        ASSERT_EQ(on.T.GetEqual(key).Status == BtrStatusOk, status == BtrStatusOk) << "statement " << n;
        ASSERT_EQ(post("n" + key), BtrStatusOk) << "after statement " << n;
        ++postings;
        if (!met) break;
        ++cases;
    }
    EXPECT_GT(cases, 15);
    int64_t along = 0;
    for (uint16_t operation = BtrOpGetFirst; on.T.Read(operation, 1).Status == BtrStatusOk;
         operation = BtrOpGetNext) {
        ++along;
    }
    EXPECT_EQ(along, 3 + postings);
}

TEST_F(OnServer, EachStatementMayMeetALostConnection) { FailEachStatement(*this, false); }

TEST_F(OnServer, TheAnswerToEachStatementMayBeLost) { FailEachStatement(*this, true); }

} // namespace
