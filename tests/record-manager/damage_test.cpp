// Books with damages drawn at random, each used by a process of its own: it reads everything along every key,
// inserts, updates and deletes. It may be refused, and must then be told so; it may not die, and what it is
// given without a refusal is what was there before the damage.
#include "audit.h"
#include "files.h"

#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <random>
#include <sys/mman.h>

#ifndef DAMAGES
#define DAMAGES 90
#endif

namespace {

using namespace wbtrvtest;
namespace fs = std::filesystem;

constexpr int records = 700;
constexpr size_t pageSize = 4096;

std::string DefinitionOfV()
{
    return CreateBuffer(12, 2, {{1, 4, 0}, {5, 8, duplicatesModifiable}}, BtrFileVariable);
}

// Some of them are so long that they have pages of their own.
std::string RecordOfV(int number)
{
    std::string name = std::to_string(10000 + number).substr(1);
    const std::string group = "g" + std::to_string(number % 7);
    return name + Padded(group, 8) +
           std::string(number % 50 == 0 ? 9000 : 20, static_cast<char>('a' + number % 26));
}

std::string NameOfT(int number) { return std::to_string(100000 + number * 7919 % 100000); }

struct GoodBooks {
    TempDirectory Directory{fs::exists("/dev/shm") ? "/dev/shm" : "/tmp"};
    std::string Bytes;
    std::vector<std::string> T; // in the order of their numbers
    std::vector<std::string> V;

    GoodBooks()
    {
        Local me;
        EXPECT_EQ(Create(me, Directory / "t.btr", DefinitionOfT()).Status, BtrStatusOk);
        EXPECT_EQ(Create(me, Directory / "v.btr", DefinitionOfV()).Status, BtrStatusOk);
        EXPECT_EQ(Open(me, Directory / "t.btr").Status, BtrStatusOk);
        EXPECT_EQ(Open(me, Directory / "v.btr", 1).Status, BtrStatusOk);
        const OnT<Local> t{me};
        for (int i = 0; i < records; ++i) {
            if (i % 100 == 0) {
                EXPECT_EQ(me({.Operation = BtrOpBegin}).Status, BtrStatusOk);
            }
            EXPECT_EQ(t.Insert(NameOfT(i), "x" + std::to_string(i % 9), i).Status, BtrStatusOk);
            T.push_back(RecordOfT(NameOfT(i), "x" + std::to_string(i % 9), i));
            V.push_back(RecordOfV(i));
            EXPECT_EQ(me({.Operation = BtrOpInsert,
                          .Block = 1,
                          .Data = V.back(),
                          .Length = static_cast<uint32_t>(V.back().size())})
                          .Status,
                      BtrStatusOk);
            if (i % 100 == 99) {
                EXPECT_EQ(me({.Operation = BtrOpEnd}).Status, BtrStatusOk);
            }
        }
        // Some of the pages are free, and some leaves are not full.
        for (int i = 0; i < records; i += 3) {
            EXPECT_EQ(t.GetEqual(NameOfT(i)).Status, BtrStatusOk);
            EXPECT_EQ(t.Delete().Status, BtrStatusOk);
            T[static_cast<size_t>(i)].clear();
        }
        std::erase(T, "");
        std::ifstream in(Directory / "books.mdb", std::ios::binary);
        Bytes.assign(std::istreambuf_iterator<char>(in), {});
    }
};

// Bits, bytes, words, sectors and pages, and cut off files.
std::string Damage(std::string bytes, std::mt19937 &random)
{
    const size_t at = random() % bytes.size();
    const size_t page = at / pageSize * pageSize;
    const auto put = [&](size_t where, size_t size, auto make) {
        for (size_t i = where; i < std::min(where + size, bytes.size()); ++i) {
            bytes[i] = static_cast<char>(make(i));
        }
    };
    const auto anything = [&](size_t) { return random(); };
    switch (random() % 12) {
    case 0: bytes[at] = static_cast<char>(bytes[at] ^ 1 << random() % 8); break;
    case 1: put(at, 1, anything); break;
    case 2: put(at, 8, anything); break;
    case 3: put(at / 512 * 512, 512, anything); break;
    case 4: put(at / 512 * 512, 512, [](size_t) { return 0; }); break;
    case 5: put(page, pageSize, anything); break;
    case 6: put(page, pageSize, [](size_t) { return 0; }); break;
    case 7:
        bytes.replace(page, pageSize, bytes, random() % (bytes.size() / pageSize) * pageSize, pageSize);
        break;
    case 8: bytes.resize(at); break;
    case 9: put(page + random() % 16, 1, anything); break;       // in the head of a page
    case 10: put(page + 16 + random() % 64, 2, anything); break; // among the places of its entries
    default: put(random() % 2 * pageSize + random() % 160, 4, anything); break; // in a meta page
    }
    return bytes;
}

// What a process found of the books, for the one that waits for it.
struct Found {
    int Refused; // statuses that told of damage
    int Wrong;   // what was given and is not so
    int Line;
};

struct User {
    const GoodBooks &Good;
    Found &Seen;
    Local Me;

    // Whether the call was carried out. A status that is none of the expected ones is a wrong answer, unless
    // it tells of damage.
    bool Check(const Answer &answer, int line, int16_t other = BtrStatusOk)
    {
        const bool refused = answer.Status == BtrStatusIoError || answer.Status == BtrStatusForeignFile;
        if (refused) {
            Seen.Refused++;
        } else if (answer.Status != BtrStatusOk && answer.Status != other) {
            Wrong(line);
        }
        return answer.Status == BtrStatusOk;
    }
    void Wrong(int line)
    {
        Seen.Wrong++;
        Seen.Line = line;
    }

    // Reads along a key or, with a step, as they lie. All of them, or a refusal.
    void ReadAll(uint8_t block, unsigned first, unsigned next, int8_t key,
                 const std::vector<std::string> &all)
    {
        std::vector<std::string> found;
        Request request{
            .Operation = static_cast<uint16_t>(first), .Block = block, .Length = 20000, .KeyNumber = key};
        for (;;) {
            const Answer answer = Me(request);
            if (answer.Status == BtrStatusEndOfFile) break;
            if (!Check(answer, __LINE__)) return;
            found.push_back(answer.Data.substr(0, answer.Length));
            if (found.size() > all.size()) break;
            request.Operation = static_cast<uint16_t>(next);
        }
        std::sort(found.begin(), found.end());
        std::vector<std::string> expected = all;
        std::sort(expected.begin(), expected.end());
        if (found != expected) Wrong(__LINE__);
    }

    void FindEach()
    {
        for (const std::string &record : Good.T) {
            const Answer answer = OnT<Local>{Me}.GetEqual(record.substr(0, 8));
            if (Check(answer, __LINE__) && answer.Data.substr(0, 64) != record) Wrong(__LINE__);
        }
        for (int i = 0; i < records; i += 11) {
            const Answer none = OnT<Local>{Me}.GetEqual(NameOfT(i) + "z");
            if (none.Status == BtrStatusOk || (Check(none, __LINE__, BtrStatusKeyNotFound))) Wrong(__LINE__);
        }
    }

    // Changes what is spread over the file, and then reads what was changed.
    void Change()
    {
        const OnT<Local> t{Me};
        std::vector<std::string> names;
        for (int i = 0; i < 20; ++i) {
            const std::string name = "n" + std::to_string(i * 977 % 1000);
            if (Check(t.Insert(name, "x3", i), __LINE__)) names.push_back(name);
        }
        for (size_t i = 0; i < Good.T.size(); i += 40) {
            if (!Check(t.GetEqual(Good.T[i].substr(0, 8)), __LINE__)) continue;
            if (i % 80 == 0) {
                Check(t.Delete(), __LINE__);
            } else {
                Check(t.Update(UpToNul(Good.T[i]), "y", -1, BtrNoCurrencyChange), __LINE__);
            }
        }
        for (int i = 50; i < records; i += 300) {
            const Answer long_ = Me({.Operation = BtrOpGetEqual,
                                     .Block = 1,
                                     .Length = 20000,
                                     .Key = std::to_string(10000 + i).substr(1)});
            if (Check(long_, __LINE__)) Check(Me({.Operation = BtrOpDelete, .Block = 1}), __LINE__);
        }
        for (const std::string &name : names) {
            const Answer answer = t.GetEqual(name);
            if (Check(answer, __LINE__) && UpToNul(answer.Data) != name) Wrong(__LINE__);
        }
    }

    void Use(const std::string &directory)
    {
        if (!Check(Open(Me, directory + "/t.btr"), __LINE__)) return;
        if (!Check(Open(Me, directory + "/v.btr", 1), __LINE__)) return;
        FindEach();
        ReadAll(0, BtrOpStepFirst, BtrOpStepNext, 0, Good.T);
        ReadAll(0, BtrOpStepLast, BtrOpStepPrevious, 0, Good.T);
        ReadAll(1, BtrOpStepFirst, BtrOpStepNext, 0, Good.V);
        for (const int8_t key : {int8_t{0}, int8_t{1}, int8_t{2}}) {
            ReadAll(0, BtrOpGetFirst, BtrOpGetNext, key, Good.T);
        }
        for (const int8_t key : {int8_t{0}, int8_t{1}}) {
            ReadAll(1, BtrOpGetLast, BtrOpGetPrevious, key, Good.V);
        }
        const int64_t count = CountRecords(Me);
        if (count != -1 && count != static_cast<int64_t>(Good.T.size())) Wrong(__LINE__);
        Change();
    }
};

struct Tally {
    int Died = 0;
    int Wrong = 0;
    int Refused = 0;
    int Unharmed = 0;
    std::string Told;
};

void Try(const GoodBooks &good, const std::string &bytes, unsigned number, bool changesFirst, Found *seen,
         Tally *tally)
{
    const TempDirectory directory(good.Directory.Path);
    std::ofstream(directory / "books.mdb", std::ios::binary) << bytes;
    *seen = {};
    const pid_t child = fork();
    if (child == 0) {
        alarm(60);
        User user{good, *seen, {}};
        if (changesFirst) {
            // Without a look at what only writers use by readers before.
            if (user.Check(Open(user.Me, directory / "t.btr"), __LINE__) &&
                user.Check(Open(user.Me, directory / "v.btr", 1), __LINE__)) {
                user.Change();
            }
        } else {
            user.Use(directory.Path);
        }
        _exit(0);
    }
    int end = 0;
    waitpid(child, &end, 0);
    if (end != 0) {
        tally->Died++;
        tally->Told += "damage " + std::to_string(number) + " ends " + std::to_string(end) + "\n";
    } else if (seen->Wrong > 0) {
        tally->Wrong++;
        tally->Told +=
            "damage " + std::to_string(number) + " is not told, line " + std::to_string(seen->Line) + "\n";
    } else {
        (seen->Refused > 0 ? tally->Refused : tally->Unharmed)++;
    }
}

// So many that a case is over in a minute or two.
constexpr unsigned ofCase = DAMAGES < 500 ? DAMAGES : 500;
static_assert(DAMAGES % ofCase == 0);

struct Damages : testing::TestWithParam<unsigned> {};

TEST_P(Damages, EndNobodyAndAreToldWhereTheyAreMet)
{
    const GoodBooks good;
    ASSERT_FALSE(testing::Test::HasFailure());
    void *memory = mmap(nullptr, sizeof(Found), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    auto *seen = static_cast<Found *>(memory);
    Tally sound;
    Try(good, good.Bytes, 0, false, seen, &sound);
    ASSERT_EQ(sound.Unharmed, 1) << sound.Told << seen->Line;
    Tally tally;
    for (unsigned number = GetParam() + 1; number <= GetParam() + ofCase; ++number) {
        std::mt19937 random(number); // NOLINT: the same damages every time
        Try(good, Damage(good.Bytes, random), number, number % 3 == 0, seen, &tally);
    }
    munmap(memory, sizeof(Found));
    EXPECT_EQ(tally.Died, 0) << tally.Told;
    EXPECT_EQ(tally.Wrong, 0) << tally.Told;
    // Damages are met, and not all of them, since pages are free.
    EXPECT_GT(tally.Refused, static_cast<int>(ofCase / 5));
    printf("%d damages: %d told, %d met nothing in use, %d not told, %d ended the process\n", ofCase,
           tally.Refused, tally.Unharmed, tally.Wrong, tally.Died);
}

INSTANTIATE_TEST_SUITE_P(From, Damages, testing::Range(0U, unsigned{DAMAGES}, ofCase));

} // namespace
