// The lock that a printed tax return leaves: it only moves forward, and only after a real print.
#include "include/vark40.h"
#include "record-manager/include/btrcall.h"
#include "src/frame/lifecycle.h"
#include "src/frame/report_engine.h"
#include "tests/support/books.h"
#include "tests/support/engine_faults.h"
#include "tests/support/recording_engine.h"
#include "tests/support/report_calls.h"

#include <algorithm>
#include <cstring>
#include <future>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

using namespace vark;
using namespace vark::test;

namespace {

constexpr char printing[] = "dialog 122\npress 1\nbox yes Achtung!\n";

// A client of the record manager beside the library's, as another program would be.
struct OtherClient {
    char Block[128] = {};
    FistaRecord Mandant{};

    explicit OtherClient(const Books &books)
    {
        char name[255] = {};
        (books.Directory() + "/DB/fista.btr").copy(name, sizeof name - 1);
        EXPECT_EQ(0, Call(0, nullptr, 0, name));
    }
    ~OtherClient() { Call(1, nullptr, 0, nullptr); }
    OtherClient(const OtherClient &) = delete;
    OtherClient &operator=(const OtherClient &) = delete;

    int16_t Call(uint16_t operation, void *data, uint32_t length, const char *key)
    {
        char room[255] = {};
        if (key != nullptr) std::memcpy(room, key, sizeof room);
        return BTRCALL(operation, Block, data, &length, room, 255, 0);
    }
    void TakeLock()
    {
        char key[255] = {1, 0};
        EXPECT_EQ(0, Call(205, &Mandant, sizeof Mandant, key)); // Get Equal, single lock without waiting
    }
    void GiveBack()
    {
        char nothing[4] = {};
        EXPECT_EQ(0, Call(27, nothing, 0, nullptr));
    }
};

struct Buchungssperre : testing::Test {
    Books books;
    RecordingEngine sent;
    static inline Books *inUse;

    void SetUp() override
    {
        inUse = &books;
        books.AddMandant(1);
        EXPECT_EQ(1, VARK_Status());
        sent.Install();
    }
    void TearDown() override { VARK_SchliesseDB(); }

    std::string Lock() const { return TextOf(books.Mandant(1).Buchungssperre); }
    void SetLock(const std::string &day)
    {
        books.ChangeMandant(1, [&](FistaRecord &mandant) { SetText(mandant.Buchungssperre, day); });
    }
    // Prints a period and returns ViewResult.
    static uint32_t Print(int code, int jahr = 18)
    {
        ReportParams params = Printed(PeriodOf(code, jahr));
        Played(printing, [&] { return VARK_UmsatzSteuerVoranmeldung(1, nullptr, &params); });
        return params.ViewResult;
    }
    // No lock is left on the record: another client gets one at once.
    void ExpectFree() const
    {
        std::thread([this] {
            OtherClient other(books);
            other.TakeLock();
            other.GiveBack();
        }).join();
    }
};

} // namespace

TEST_F(Buchungssperre, MovesToTheEndOfThePrintedPeriod)
{
    EXPECT_EQ(1u, Print(2));
    EXPECT_EQ("280218", Lock());
    EXPECT_EQ(1u, Print(14));
    EXPECT_EQ("300618", Lock());
    EXPECT_EQ(1u, Print(17));
    EXPECT_EQ("311218", Lock());
}

TEST_F(Buchungssperre, NeverMovesBack)
{
    EXPECT_EQ(1u, Print(6));
    EXPECT_EQ(1u, Print(3));
    EXPECT_EQ("300618", Lock());
    EXPECT_EQ(1u, Print(12, 17));
    EXPECT_EQ("300618", Lock());
    EXPECT_EQ(1u, Print(6));
    EXPECT_EQ("300618", Lock());
}

TEST_F(Buchungssperre, ArchiveYearMovesItByTheSameRule)
{
    ReportParams params = Printed(PeriodOf(6));
    params.ParamFlags |= ParamArchivJahr;
    params.ArchivJahr = 1995;
    Played(printing, [&] { return VARK_UmsatzSteuerVoranmeldung(1, nullptr, &params); });
    EXPECT_EQ("300615", Lock());
}

TEST_F(Buchungssperre, IsInTheFiscalCalendar)
{
    books.ChangeMandant(1, [](FistaRecord &mandant) { mandant.FirstFiscalMonth = 4; });
    EXPECT_EQ(1u, Print(13)); // January to March 1998, months 10 to 12 of 1997
    EXPECT_EQ("311217", Lock());
}

TEST_F(Buchungssperre, PreviewLeavesItAlone)
{
    SetLock("310118");
    ReportParams params = PeriodOf(6);
    EXPECT_NE(nullptr, VARK_UmsatzSteuerVoranmeldung(1, nullptr, &params));
    EXPECT_EQ("310118", Lock());
    EXPECT_EQ(Lines{}, books.TakeBoxes());
}

TEST_F(Buchungssperre, FailedPrintLeavesItAndIsNoSuccess)
{
    SetLock("310118");
    sent.PrintResult = 0;
    EXPECT_EQ(0u, Print(6));
    EXPECT_EQ("310118", Lock());
    EXPECT_EQ(1, std::count(sent.Calls.begin(), sent.Calls.end(), "print 0"));
}

TEST_F(Buchungssperre, OtherChangesOfTheRecordSurvive)
{
    // While the form is being printed another program writes the record.
    reportEngine.PrintView = [](RSWindow, int32_t) -> int32_t {
        inUse->ChangeMandant(1, [](FistaRecord &mandant) {
            SetText(mandant.Name, "Neuer Name");
            std::memset(mandant.Reserved712, 0x77, sizeof mandant.Reserved712);
        });
        return 1;
    };
    EXPECT_EQ(1u, Print(6));
    FistaRecord wanted = books.Mandant(1);
    EXPECT_EQ("Neuer Name", TextOf(wanted.Name));
    EXPECT_EQ(0x77, wanted.Reserved712[285]);
    EXPECT_EQ("300618", Lock());
}

TEST_F(Buchungssperre, LaterOneOfAnotherProgramStays)
{
    reportEngine.PrintView = [](RSWindow, int32_t) -> int32_t {
        inUse->ChangeMandant(1, [](FistaRecord &mandant) { SetText(mandant.Buchungssperre, "301118"); });
        return 1;
    };
    EXPECT_EQ(1u, Print(6));
    EXPECT_EQ("301118", Lock());
}

TEST_F(Buchungssperre, RecordInUseIsToldAndNothingIsLocked)
{
    SetLock("310118");
    std::promise<void> isLocked;
    std::promise<void> isTried;
    std::thread other([&] { // a client is a thread
        OtherClient client(books);
        client.TakeLock();
        isLocked.set_value();
        isTried.get_future().wait();
        client.GiveBack();
    });
    isLocked.get_future().wait();
    EXPECT_EQ(1u, Print(6)) << "the return is printed all the same";
    const Lines boxes = books.TakeBoxes();
    ASSERT_FALSE(boxes.empty());
    EXPECT_EQ("Der Datensatz wird von einer anderen Anwendung benutzt!", boxes.back());
    isTried.set_value();
    other.join();
    EXPECT_EQ("310118", Lock());
    EXPECT_EQ(1u, Print(6));
    EXPECT_EQ("300618", Lock());
}

TEST_F(Buchungssperre, RecordIsFreeAfterIt)
{
    for (const int code : {6, 3}) { // once with an update, once without
        EXPECT_EQ(1u, Print(code));
        ExpectFree();
    }
}

TEST_F(Buchungssperre, RefusedWriteLeavesItAndFreesTheRecord)
{
    SetLock("310118");
    FailEngineOperation(3, 1, 2);
    EXPECT_EQ(1u, Print(6)) << "the return is printed";
    EXPECT_EQ(1, StopEngineFaults());
    EXPECT_EQ("310118", Lock());
    const Lines boxes = books.TakeBoxes();
    EXPECT_EQ("I/O Error", boxes.back());
    ExpectFree();
}

TEST_F(Buchungssperre, IsOldOrNewWhicheverRecordOperationFails)
{
    books.Insert(1, TableSako, MakeSako("8400"));
    books.Insert(1, TableBube, MakeBube(1, "150618", "1000", "8400", "000000010,00"));
    SetLock("310118");
    int moved = 0;
    bool wasTried = true;
    for (int n = 1; wasTried; ++n) {
        ASSERT_LT(n, 300);
        SetLock("310118");
        VARK_SchliesseDB();
        ReportParams params = Printed(PeriodOf(6));
        ASSERT_TRUE(VarkUiPlay(printing, TRUE));
        FailEngineCall(n, 2);
        EXPECT_EQ(nullptr, VARK_UmsatzSteuerVoranmeldung(1, nullptr, &params));
        wasTried = StopEngineFaults() >= n;
        VarkUiPlayed(nullptr, 0);
        EXPECT_EQ(0u, GetThreadContext()->LockBias) << n << ": the next read would lock its record";
        ExpectFree();
        const std::string lock = Lock();
        if (uint32_t{params.ViewResult} == 0) {
            EXPECT_EQ("310118", lock) << n;
        } else {
            EXPECT_TRUE(lock == "310118" || lock == "300618") << n;
            moved += lock == "300618" ? 1 : 0;
        }
        VARK_SchliesseDB();
        EXPECT_EQ(0, OpenEngineFiles()) << n;
    }
    EXPECT_GT(moved, 0);
}

namespace {

RecordManagerEntry realEntry;
thread_local bool gotTheRecord;

int16_t VARK_CALL Watching(uint16_t operation, void *block, void *data, uint32_t *length, void *key,
                           uint8_t keyLength, int8_t keyNumber)
{
    const int16_t status = realEntry(operation, block, data, length, key, keyLength, keyNumber);
    if (operation == 205 && status == 0) gotTheRecord = true;
    return status;
}

} // namespace

TEST_F(Buchungssperre, OfThreadsThatPrintAtOnceNoneMovesItBack)
{
    // An engine without a memory, which threads may call at once.
    reportEngine.OpenReport = [](const char *, const char *, int32_t) -> int32_t { return 7; };
    reportEngine.AddData = [](int32_t, int32_t, const void *) -> int32_t { return 1; };
    reportEngine.OpenView = [](int32_t, const char *, const char *, RSWindow, int32_t, int32_t, int32_t,
                               int32_t, uint32_t, uint32_t, uint32_t, uint32_t,
                               RSWindow) -> RSWindow { return reinterpret_cast<RSWindow>(0x4711); };
    reportEngine.CloseReport = [](int32_t) {};
    reportEngine.PrintView = [](RSWindow, int32_t) -> int32_t { return 1; };
    realEntry = EngineEntry;
    EngineEntry = Watching;
    for (int round = 0; round < 10; ++round) {
        SetLock("");
        const std::vector<int> periods = {6, 2, 11, 4};
        std::vector<std::thread> printers;
        std::vector<char> reached(periods.size());
        for (size_t i = 0; i < periods.size(); ++i) {
            printers.emplace_back([&, i] {
                gotTheRecord = false;
                EXPECT_EQ(1u, Print(periods[i]));
                reached[i] = gotTheRecord ? 1 : 0;
                VARK_SchliesseDB();
            });
        }
        for (std::thread &printer : printers) {
            printer.join();
        }
        // Whoever got the record finds his period locked, or a later one. Who did not has been told.
        int latest = 0;
        int told = 0;
        for (size_t i = 0; i < periods.size(); ++i) {
            if (reached[i] != 0) latest = std::max(latest, periods[i]);
            told += reached[i] == 0 ? 1 : 0;
        }
        const Lines boxes = books.TakeBoxes();
        EXPECT_EQ(told, std::count(boxes.begin(), boxes.end(),
                                   "Der Datensatz wird von einer anderen Anwendung benutzt!"));
        ASSERT_GT(latest, 0) << "one of them gets it";
        EXPECT_EQ(std::to_string(100 + latest).substr(1), Lock().substr(2, 2));
    }
    EngineEntry = realEntry;
}
