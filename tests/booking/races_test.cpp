// What a check has found, and another client changes before the write. The other one comes between the two by
// itself first, and then many times by chance.
#include "include/vark40.h"
#include "record-manager/include/btrcall.h"
#include "tests/booking/ledger.h"
#include "tests/support/engine_faults.h"

#include <gtest/gtest.h>
#include <set>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace vark;
using namespace vark::test;

namespace {

constexpr uint16_t opInsert = 2;
constexpr uint16_t opUpdate = 3;
constexpr uint16_t opBegin = 19;
constexpr uint16_t opBeginConcurrent = 1019;

int32_t MakeAccount(int32_t art, const char *konto, const char *kuerzel, const char *gegenkonto = "")
{
    return VARK_PekoDirekt(1, art, 0, 1, konto, kuerzel, "Name", "", "", "", "", "", "", "", "", "", "",
                           gegenkonto, 0, 0, "", 0, 0);
}

int32_t DeleteAccount(int32_t art, const char *konto)
{
    return VARK_PekoDirekt(3, art, 0, 1, konto, "", "", "", "", "", "", "", "", "", "", "", "", "", 0, 0, "",
                           0, 0);
}

int32_t PostTo(const char *haben, int32_t art, const char *datum = "15.5.98", int32_t zahlungsziel = 0,
               int32_t kostenschablone = 0)
{
    return VARK_BuchungEinfuegenDirektEx(1, 1, 16, datum, "1", "", "4000", 1, haben, art, "100", "", "",
                                         kostenschablone, zahlungsziel);
}

// The raw calls of another client in one table.
struct Table {
    char Block[128] = {};
    char Data[1400] = {};

    explicit Table(const std::string &path)
    {
        char key[255] = {};
        uint32_t length = 0;
        path.copy(key, 254);
        EXPECT_EQ(0, BTRCALL(BtrOpOpen, Block, Data, &length, key, 255, 0));
    }
    Table(const Table &) = delete;
    Table &operator=(const Table &) = delete;
    ~Table() { Call(BtrOpClose, ""); }

    void Call(unsigned operation, const std::string &value)
    {
        char key[255] = {};
        uint32_t length = sizeof Data;
        value.copy(key, sizeof key);
        EXPECT_EQ(0, BTRCALL(static_cast<uint16_t>(operation), Block, Data, &length, key, 255, 0))
            << operation;
    }
};

// Deletes a record as the accounting application would.
void Remove(const std::string &path, const std::string &key)
{
    Table table(path);
    table.Call(BtrOpGetEqual, key);
    table.Call(BtrOpDelete, "");
}

std::string KeyOf(int32_t number) { return {reinterpret_cast<const char *>(&number), sizeof number}; }

struct Races : testing::Test {
    Ledger books{{.Kostenrechnung = true}};

    // The call, with `action` done by another client when the library begins its transaction.
    template <typename Call> int32_t Meanwhile(uint16_t operation, std::function<void()> action, Call call)
    {
        DoMeanwhile(operation, 1, std::move(action));
        const int32_t code = call();
        EXPECT_EQ(1, StopEngineFaults()) << "the other client came";
        EXPECT_FALSE(IsInEngineTransaction());
        return code;
    }
};

} // namespace

TEST_F(Races, AnAccountThatGoesBeforeThePostingIsWrittenRefusesIt)
{
    const int32_t code = Meanwhile(
        opBegin, [] { EXPECT_EQ(1, DeleteAccount(2, "70000")); }, [] { return PostTo("70000", 2); });
    EXPECT_EQ(-9, code);
    EXPECT_TRUE(books.IsEmpty());
    EXPECT_EQ(Lines{"Die Habenkontonummer ist unzulässig!"}, books.TakeBoxes());
    EXPECT_EQ(1, PostTo("70001", 2)) << "the thread goes on";
}

TEST_F(Races, ASollAccountThatGoesIsNamedAsSuch)
{
    const int32_t code = Meanwhile(
        opBegin, [] { EXPECT_EQ(1, DeleteAccount(4, "10000")); },
        [] {
            return VARK_BuchungEinfuegenDirekt(1, 1, 16, "15.5.98", "1", "", "10000", 4, "1200", 1, "100", "",
                                               "");
        });
    EXPECT_EQ(-8, code);
    EXPECT_TRUE(books.IsEmpty());
    EXPECT_EQ(Lines{"Die Sollkontonummer ist unzulässig!"}, books.TakeBoxes());
}

TEST_F(Races, AnAccountOfThePartOfASplitIsNamedWithItsPart)
{
    ASSERT_EQ(1, VARK_SplitStart(1, 16, "15.5.98", "1", 0));
    ASSERT_EQ(1, VARK_SplitEinfuegen("4000", 1, "1200", 1, "1", "", "", ""));
    ASSERT_EQ(1, VARK_SplitEinfuegen("4000", 1, "70000", 2, "2", "", "", ""));
    const int32_t code = Meanwhile(
        opBegin, [] { EXPECT_EQ(1, DeleteAccount(2, "70000")); }, [] { return VARK_SplitEnde(1, 1); });
    EXPECT_EQ(-9, code);
    EXPECT_TRUE(books.IsEmpty());
    EXPECT_EQ(Lines{"Teilbuchung 2: Die Habenkontonummer ist unzulässig!"}, books.TakeBoxes());
}

TEST_F(Races, AnAccountOfTheYearBeforeIsLookedAtInThatYear)
{
    const std::string path = books.TablePath(1, TableKred, "1997");
    const int32_t code = Meanwhile(
        opBegin, [&] { Remove(path, "  70000"); }, [] { return PostTo("70000", 2, "15.5.97"); });
    EXPECT_EQ(-9, code);
    EXPECT_TRUE(books.IsEmpty());
}

TEST_F(Races, AnAccountThatSomebodyHasLockedForAChangeIsPostedTo)
{
    std::thread([&] {
        Table table(books.TablePath(1, TableKred));
        table.Call(BtrOpGetEqual + BtrBiasLock, "  70001");
        int32_t code = 0;
        std::thread([&code] { code = PostTo("70000", 2); }).join();
        EXPECT_EQ(1, code);
    }).join();
    EXPECT_EQ(Lines{}, books.TakeBoxes());
}

TEST_F(Races, AStapelThatGoesBeforeThePostingIsWrittenRefusesIt)
{
    const int32_t code = Meanwhile(
        opBegin, [&] { Remove(books.TablePath(1, TableStapel), KeyOf(16)); },
        [] { return PostTo("1200", 1); });
    EXPECT_EQ(-6, code);
    EXPECT_TRUE(books.IsEmpty());
    EXPECT_EQ(Lines{"Der Stapel existiert nicht!"}, books.TakeBoxes());
}

TEST_F(Races, AStapelThatGotTheNumberOfADeletedOneIsAnother)
{
    const int32_t code = Meanwhile(
        opBegin,
        [&] {
            Remove(books.TablePath(1, TableStapel), KeyOf(16));
            books.Insert(1, TableStapel, MakeStapel(16, "Juni"));
        },
        [] { return PostTo("1200", 1); });
    EXPECT_EQ(-6, code);
    EXPECT_TRUE(books.IsEmpty());
}

TEST_F(Races, ARenamedStapelIsTheSame)
{
    const int32_t code = Meanwhile(
        opBegin, [&] { books.Replace(1, TableStapel, MakeStapel(16, "Juni")); },
        [] { return PostTo("1200", 1); });
    EXPECT_EQ(1, code);
    EXPECT_EQ(1u, books.Postings().size());
}

TEST_F(Races, AZahlungszielThatGoesRefusesThePosting)
{
    const int32_t code = Meanwhile(
        opBegin, [&] { Remove(books.TablePath(1, TableZahlziel), KeyOf(6)); },
        [] { return PostTo("70000", 2, "15.5.98", 6); });
    EXPECT_EQ(-27, code);
    EXPECT_TRUE(books.IsEmpty());
    EXPECT_EQ(Lines{"Das Zahlungsziel ist unzulässig!"}, books.TakeBoxes());
}

TEST_F(Races, AKostenschabloneThatGoesRefusesThePosting)
{
    books.AddKostenschablone(1, {"100,00"});
    const int32_t code = Meanwhile(
        opBegin, [&] { Remove(books.TablePath(1, TableKoscha), KeyOf(1)); },
        [] { return PostTo("1200", 1, "15.5.98", 0, 1); });
    EXPECT_EQ(-43, code);
    EXPECT_TRUE(books.IsEmpty());
}

TEST_F(Races, ANumberThatAnotherClientTakesIsRefused)
{
    const int32_t same = Meanwhile(
        opBeginConcurrent, [] { EXPECT_EQ(1, MakeAccount(4, "20000", "A")); },
        [] { return MakeAccount(4, "20000", "B"); });
    EXPECT_EQ(-31, same);
    const int32_t other = Meanwhile(
        opBeginConcurrent, [] { EXPECT_EQ(1, MakeAccount(2, "20001", "C")); },
        [] { return MakeAccount(4, "20001", "D"); });
    EXPECT_EQ(-31, other) << "one number is no Debitor and Kreditor";
    EXPECT_EQ(5u, books.Count(1, TableDebi));
    EXPECT_EQ(3u, books.Count(1, TableKred));
    EXPECT_EQ(Lines{}, books.TakeBoxes()) << "silent, as the caller wished";
}

TEST_F(Races, AKuerzelThatAnotherClientTakesIsRefused)
{
    const int32_t same = Meanwhile(
        opBeginConcurrent, [] { EXPECT_EQ(1, MakeAccount(4, "20000", "EINS")); },
        [] { return MakeAccount(4, "20001", "EINS"); });
    EXPECT_EQ(-32, same);
    const int32_t other = Meanwhile(
        opBeginConcurrent, [] { EXPECT_EQ(1, MakeAccount(2, "70002", "ZWEI")); },
        [] { return MakeAccount(4, "20002", "ZWEI"); });
    EXPECT_EQ(-32, other);
    EXPECT_EQ(1, MakeAccount(4, "20003", "DREI")) << "the thread goes on";
    EXPECT_EQ(6u, books.Count(1, TableDebi));
}

TEST_F(Races, AGegenkontoThatGoesRefusesANewAndAChangedAccount)
{
    const auto removeSako = [&] { Remove(books.TablePath(1, TableSako), "   4100"); };
    EXPECT_EQ(-15, Meanwhile(opInsert, removeSako, [] { return MakeAccount(4, "20000", "NEU", "4100"); }));
    EXPECT_EQ(4u, books.Count(1, TableDebi));
    books.Insert(1, TableSako, MakeSako("4100", ZuordnungGuv));
    const auto change = [] {
        return VARK_PekoDirekt(2, 4, 0, 1, "10000", "", "Anders", "", "", "", "", "", "", "", "", "", "",
                               "4100", 0, 0, "", 0, 0);
    };
    EXPECT_EQ(-15, Meanwhile(opUpdate, removeSako, change));
    EXPECT_EQ("Konto 10000", TextOf(books.Read<PersonalRecord>(1, TableDebi).front().Name1)) << "undone";
    int32_t code = 0;
    std::thread([&code] { code = DeleteAccount(4, "10000"); }).join();
    EXPECT_EQ(1, code) << "its lock is given back";
}

// ---- By chance ----

namespace {

// What each of two processes is told of its calls, in the order of the rounds.
std::vector<int32_t> InProcess(int rounds, const std::function<int32_t(int)> &call, int start)
{
    int ends[2];
    if (pipe(ends) != 0) return {};
    const pid_t child = fork();
    if (child == 0) {
        close(ends[0]);
        char go = 0;
        if (read(start, &go, 1) != 1) _exit(1);
        for (int round = 0; round < rounds; ++round) {
            const int32_t code = call(round);
            if (write(ends[1], &code, sizeof code) != sizeof code) _exit(1);
        }
        _exit(0);
    }
    close(ends[1]);
    std::vector<int32_t> codes;
    // The descriptor is kept with the codes still to come.
    codes.push_back(ends[0]);
    codes.push_back(child);
    return codes;
}

std::vector<int32_t> Collect(const std::vector<int32_t> &process)
{
    std::vector<int32_t> codes;
    int32_t code = 0;
    while (read(process[0], &code, sizeof code) == sizeof code) {
        codes.push_back(code);
    }
    close(process[0]);
    int status = 0;
    waitpid(process[1], &status, 0);
    EXPECT_EQ(0, status);
    return codes;
}

// Two processes at once; what each was told.
std::vector<std::vector<int32_t>> TwoAtOnce(int rounds, const std::function<int32_t(int, int)> &call)
{
    int gate[2];
    EXPECT_EQ(0, pipe(gate));
    std::vector<std::vector<int32_t>> processes;
    processes.reserve(2);
    for (const int who : {0, 1}) {
        processes.push_back(InProcess(
            rounds, [&, who](int round) { return call(who, round); }, gate[0]));
    }
    EXPECT_EQ(2, write(gate[1], "gg", 2));
    std::vector<std::vector<int32_t>> codes = {Collect(processes[0]), Collect(processes[1])};
    close(gate[0]);
    close(gate[1]);
    return codes;
}

} // namespace

TEST_F(Races, OfTwoProcessesOneGetsTheKuerzelAndOneTheNumber)
{
    constexpr int rounds = 150;
    const auto told = TwoAtOnce(rounds, [](int who, int round) {
        const std::string konto = std::to_string(300000 + (round % 2 == 0 ? 1000 * who : 0) + round);
        const std::string number = std::to_string(round);
        const std::string kuerzel = round % 2 == 0 ? "K" + number : "N" + number + "-" + std::to_string(who);
        return MakeAccount(who == 0 ? 2 : 4, konto.c_str(), kuerzel.c_str());
    });
    ASSERT_EQ(size_t{rounds}, told[0].size());
    ASSERT_EQ(size_t{rounds}, told[1].size());
    for (size_t round = 0; round < rounds; ++round) {
        const int32_t refused = round % 2 == 0 ? -32 : -31;
        const std::multiset<int32_t> codes = {told[0][round], told[1][round]};
        EXPECT_EQ((std::multiset<int32_t>{refused, 1}), codes) << round;
    }
    EXPECT_EQ(4u + 2u + rounds, books.Count(1, TableDebi) + books.Count(1, TableKred));
}

TEST_F(Races, NoPostingIsLeftToAnAccountThatWasGoneBefore)
{
    constexpr int rounds = 150;
    for (int round = 0; round < rounds; ++round) {
        ASSERT_EQ(1, MakeAccount(4, std::to_string(400000 + round).c_str(), std::to_string(round).c_str()));
    }
    VARK_SchliesseDB();
    const auto told = TwoAtOnce(rounds, [](int who, int round) {
        const std::string konto = std::to_string(400000 + round);
        return who == 0 ? DeleteAccount(4, konto.c_str()) : PostTo(konto.c_str(), 4);
    });
    for (const int32_t code : told[0]) {
        EXPECT_TRUE(code == 1) << code;
    }
    size_t posted = 0;
    for (const int32_t code : told[1]) {
        EXPECT_TRUE(code == 1 || code == -9) << code;
        posted += code == 1 ? 1 : 0;
    }
    EXPECT_EQ(posted, books.Postings().size());
    EXPECT_EQ(4u, books.Count(1, TableDebi));
}
