// Commands that write while another process has the tables locked for longer than anybody waits: what they
// say, and how they end, agrees with what is in the books.
#include "record-manager/include/btrcall.h"
#include "tests/tools/program.h"

#include <chrono>
#include <csignal>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace tests;
namespace fs = std::filesystem;

namespace {

// A client of the record manager with some tables of a directory open.
struct Tables {
    char Blocks[4][BtrPositionBlockSize] = {};
    size_t Count = 0;

    int Open(const fs::path &directory, const std::vector<std::string> &names)
    {
        for (const std::string &name : names) {
            char key[BtrKeyBufferSize] = {};
            (directory / (name + ".btr")).string().copy(key, sizeof key - 1);
            char nothing[1] = {};
            uint32_t length = 0;
            const int status = BTRCALL(BtrOpOpen, Blocks[Count], nothing, &length, key, BtrKeyBufferSize, 0);
            if (status != BtrStatusOk) return status;
            ++Count;
        }
        return BtrStatusOk;
    }

    // How many records the first one has.
    uint32_t Records()
    {
        char told[1024];
        char key[BtrKeyBufferSize] = {};
        uint32_t length = sizeof told;
        uint32_t count = 0;
        if (BTRCALL(BtrOpStat, Blocks[0], told, &length, key, BtrKeyBufferSize, 0) == BtrStatusOk)
            std::memcpy(&count, told + 6, sizeof count);
        return count;
    }

    // Locks all of them, to the end of this process.
    int LockAll()
    {
        char data[2048];
        char key[BtrKeyBufferSize] = {};
        uint32_t length = 0;
        int status = BTRCALL(BtrOpBegin, Blocks[0], data, &length, key, BtrKeyBufferSize, 0);
        for (size_t i = 0; i < Count && status == BtrStatusOk; ++i) {
            length = sizeof data;
            status = BTRCALL(BtrOpGetFirst, Blocks[i], data, &length, key, BtrKeyBufferSize, 0);
            if (status == BtrStatusEndOfFile) status = BtrStatusOk;
        }
        return status;
    }
};

// A process that locks tables and holds them until it is told to let go.
struct Holder {
    pid_t Child = -1;
    int Ready[2] = {};
    int Go[2] = {};

    // At once, or as soon as the first one has one record more.
    Holder(const fs::path &directory, const std::vector<std::string> &names, bool afterwards)
    {
        if (pipe(Ready) != 0 || pipe(Go) != 0) throw std::runtime_error("pipe");
        Child = fork();
        if (Child != 0) {
            close(Go[0]);
            close(Ready[1]);
            return;
        }
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        close(Go[1]);
        Tables tables;
        char status = static_cast<char>(tables.Open(directory, names));
        const uint32_t before = tables.Records();
        if (status == 0 && !afterwards) status = static_cast<char>(tables.LockAll());
        (void)!write(Ready[1], &status, 1);
        while (status == 0 && afterwards && tables.Records() == before) {
        }
        if (afterwards) status = static_cast<char>(tables.LockAll());
        char end = 0;
        (void)!read(Go[0], &end, 1); // until the other side is closed
        _exit(status);
    }
    Holder(const Holder &) = delete;
    Holder &operator=(const Holder &) = delete;
    ~Holder() { LetGo(); }

    // Its status when it is ready.
    int Await() const
    {
        char status = -1;
        return read(Ready[0], &status, 1) == 1 ? status : -1;
    }
    int LetGo()
    {
        if (Child < 0) return 0;
        close(Go[1]);
        int end = 0;
        waitpid(Child, &end, 0);
        Child = -1;
        close(Ready[0]);
        return WIFEXITED(end) ? WEXITSTATUS(end) : -1;
    }
};

struct Command {
    std::vector<std::string> Arguments;
    std::vector<std::string> Tables; // the first one is written to
    std::string Refused;
};

struct HeldBooks : testing::Test {
    TemporaryDirectory Directory;
    fs::path Books = Directory.Path / "b";

    void SetUp() override
    {
        ASSERT_EQ(0, tests::Books({"beispiel", Books.string(), "--buchungen", "600"}).ExitCode);
    }

    static std::vector<Command> Commands()
    {
        return {
            {{"buchen", "--mandant", "1", "--stapel", "16", "--datum", "15.4.98", "--soll", "8010", "--haben",
              "1840", "--betrag", "1,00", "--text", "gehalten"},
             {"bat", "kobu"},
             "Nicht gebucht"},
            {{"split", "--mandant", "1", "--stapel", "16", "--datum", "15.4.98", "--haben", "1840", "--teil",
              "8010;;10,00;gehalten", "--teil", "8020;;20,00;gehalten"},
             {"bat", "split", "kobu"},
             "Nicht gebucht"},
            {{"peko", "neu", "--mandant", "1", "--art", "Debitor", "--name", "N", "--kuerzel", "GEHALTEN"},
             {"debi", "kred"},
             "Nicht angelegt"}};
    }

    uint32_t RecordsOf(const std::string &table) const
    {
        Tables tables;
        EXPECT_EQ(BtrStatusOk, tables.Open(Books / "DB" / "1998", {table}));
        const uint32_t count = tables.Records();
        BTRCALL(BtrOpReset, nullptr, nullptr, nullptr, nullptr, 0, 0);
        return count;
    }

    // What the command says while the tables are held, and whether it left a record.
    Result RunHeld(const Command &command, bool afterwards, bool &isThere) const
    {
        const uint32_t before = RecordsOf(command.Tables[0]);
        Holder holder(Books / "DB" / "1998", command.Tables, afterwards);
        EXPECT_EQ(0, holder.Await());
        const auto begin = std::chrono::steady_clock::now();
        Result result = Vark(Books, command.Arguments);
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(60));
        // One that has nothing to wait for would wait for ever.
        if (afterwards && result.ExitCode != 0) kill(holder.Child, SIGKILL);
        const int held = holder.LetGo();
        EXPECT_TRUE(held == 0 || result.ExitCode != 0) << held;
        isThere = RecordsOf(command.Tables[0]) == before + 1;
        return result;
    }
};

} // namespace

TEST_F(HeldBooks, AreGivenUpAfterAWhileAndHoldNothingOfWhatWasDenied)
{
    for (const Command &command : Commands()) {
        bool isThere = true;
        const Result result = RunHeld(command, false, isThere);
        EXPECT_NE(0, result.ExitCode) << command.Arguments[0];
        EXPECT_TRUE(result.Err.starts_with(command.Refused + ": ")) << result.Err;
        EXPECT_EQ("", result.Out);
        EXPECT_FALSE(isThere) << command.Arguments[0];
    }
}

TEST_F(HeldBooks, HoldWhatWasWrittenBeforeAndItIsNotDenied)
{
    for (const Command &command : Commands()) {
        bool isThere = false;
        const Result result = RunHeld(command, true, isThere);
        EXPECT_EQ(0, result.ExitCode) << command.Arguments[0] << ": " << result.Err;
        EXPECT_EQ(std::string::npos, result.Err.find(command.Refused)) << result.Err;
        EXPECT_TRUE(isThere) << command.Arguments[0];
    }
}
