// What each record operation sends to the record manager, and what it makes of the answer: a stand-in takes
// the calls down and answers as a test wishes.
#include "src/frame/engine_calls.h"
#include "src/frame/lifecycle.h"
#include "src/frame/record_lengths.h"
#include "src/frame/record_store.h"
#include "src/frame/transactions.h"
#include "src/platform/platform.h"
#include "tests/support/installation.h"
#include "tests/window-system/front_end_setup.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

using namespace vark;

namespace {

struct Call {
    int Operation;
    int KeyNumber;
    int KeyLength;
    uint32_t DataLength;
    std::string Key;
    const void *Position;

    bool operator==(const Call &) const = default;
};

std::vector<Call> calls;
std::map<int, int16_t> answers;          // by operation; 0 for those that are not named
std::map<int, uint32_t> answeredLengths; // likewise; what came in for those that are not named

int16_t VARK_CALL Answer(uint16_t operation, void *position, void *, uint32_t *dataLength, void *key,
                         uint8_t keyLength, int8_t keyNumber)
{
    calls.push_back({operation, keyNumber, keyLength, *dataLength,
                     std::string(static_cast<const char *>(key), 255), position});
    if (const auto found = answeredLengths.find(operation); found != answeredLengths.end()) {
        *dataLength = found->second;
    }
    std::memset(key, 'w', 255); // as long as a key can be
    const auto found = answers.find(operation);
    return found != answers.end() ? found->second : int16_t{0};
}

// A path with the separators of this system.
std::string Path(std::string path)
{
    std::replace(path.begin(), path.end(), '/', pathSeparator);
    return path;
}

constexpr int16_t ok = 0;
constexpr int16_t keyNotFound = 4;
constexpr int16_t endOfFile = 9;
constexpr int16_t recordInUse = 84;
constexpr int16_t fileInUse = 85;

struct EngineCalls : testing::Test {
    FrontEndSetup frontEnd;
    ThreadContext *context = nullptr;
    char data[2048] = {};
    KeyBuffer key{};
    bool found = false;

    void SetUp() override
    {
        setenv("VARK_CONFIG_DIR", frontEnd.Directory.string().c_str(), 1);
        vark::test::NameParts(frontEnd.Directory.string());
        std::ofstream(frontEnd.Directory / "tolka.ini") << "[TOLKA]\nPfad32=" << Path("/d/DB") << "\n";
        ASSERT_EQ(1, EnterExport(context));
        EngineEntry = Answer;
        std::memcpy(context->YearDirectory, Path("/1997").c_str(), 6);
        std::memcpy(context->WorkYear, "1997", 5);
        std::memcpy(context->MandantYear, "1998", 5);
        std::memcpy(context->PreviousYear, "1996", 5);
        std::memcpy(context->MandantSuffix, "2", 2);
        for (size_t i = 0; i < sizeof key.Bytes; ++i) {
            key.Bytes[i] = static_cast<char>('a' + i % 26);
        }
    }
    std::string PathOf(int table, const char *year = nullptr, int slot = 0)
    {
        calls.clear();
        EXPECT_TRUE(OpenTable(*context, static_cast<TableKeyCode>(table), year, slot));
        CloseTable(*context, slot != 0 ? slot : table);
        return calls.empty() ? "" : calls.front().Key.c_str();
    }
    // The boxes since the last call of this.
    std::string Boxes()
    {
        std::string log = frontEnd.Log().substr(logRead);
        logRead += log.size();
        return log;
    }

private:
    size_t logRead = 0;
};

constexpr const char *inUse = "box Der Datensatz wird von einer anderen Anwendung benutzt!\n";

} // namespace

TEST_F(EngineCalls, ATableLiesInTheDirectoryOfItsKind)
{
    EXPECT_EQ(Path("/d/DB/fista.btr"), PathOf(TableFista));
    EXPECT_EQ(Path("/d/DB/19972/sako.btr"), PathOf(TableSako)) << "the working year";
    EXPECT_EQ(Path("/d/DB/19972/kobu.btr"), PathOf(TableKobu)) << "the last that follows the working year";
    EXPECT_EQ(Path("/d/DB/19982/bat.btr"), PathOf(TableBat)) << "the first that follows the Mandant's year";
    EXPECT_EQ(Path("/d/DB/19982/mahntext.btr"), PathOf(TableMahntext));
    EXPECT_EQ(Path("/d/DB/19962/sako.btr"), PathOf(TablePreviousSako));
    EXPECT_EQ(Path("/d/DB/20012/kobu.btr"), PathOf(TableKobu, "2001", SlotFree30));
    EXPECT_EQ(Path("/d/DB/fista.btr"), PathOf(TableFista, "2001", SlotFree30));
    EXPECT_EQ(Path("/d/DB/19982/bat.btr"), PathOf(TableBat, "2001", SlotFree30));
    context->MandantSuffix[0] = 0;
    EXPECT_EQ(Path("/d/DB/1997/sako.btr"), PathOf(TableSako));
}

TEST_F(EngineCalls, AnOverrideIsTheWholeDirectory)
{
    context->PathOverrideOn = 1;
    std::memcpy(context->PathOverride, Path("/archiv").c_str(), 8);
    for (const int table : {0, 6, 12, 28}) {
        EXPECT_EQ(Path("/archiv/") + tableCatalogue[table].Stem + ".btr", PathOf(table));
    }
    EXPECT_EQ(Path("/archiv/kobu.btr"), PathOf(TableKobu, "2001", SlotFree30));
}

TEST_F(EngineCalls, OpeningSendsThePathUnderKeyNumberOneAndNoData)
{
    ASSERT_TRUE(OpenTable(*context, KeyCode(TableSteke, 2)));
    ASSERT_EQ(1u, calls.size());
    EXPECT_EQ(0, calls[0].Operation);
    EXPECT_EQ(1, calls[0].KeyNumber);
    EXPECT_EQ(255, calls[0].KeyLength);
    EXPECT_EQ(0u, calls[0].DataLength);
    EXPECT_EQ(&context->PositionBlocks[TableSteke], calls[0].Position);
    EXPECT_EQ(Path("/d/DB/19972/steke.btr") + std::string(234, '\0'), calls[0].Key);
}

TEST_F(EngineCalls, AnOpenThatFailsUnderAnotherSlotCountsOneUserOfTheTableLess)
{
    ASSERT_TRUE(OpenTable(*context, TableKobu));
    ASSERT_TRUE(OpenTable(*context, TableKobu));
    answers[0] = 12;
    EXPECT_FALSE(OpenTable(*context, TableKobu, "2001", SlotFree30));
    EXPECT_EQ(0, context->OpenCounts[SlotFree30]);
    EXPECT_EQ(1, context->OpenCounts[TableKobu]);
    EXPECT_EQ("box File " + Path("/d/DB/20012/kobu.btr") + " not found\n", Boxes());
    answers[0] = 46;
    EXPECT_FALSE(OpenTable(*context, TableStapel));
    EXPECT_EQ(0, context->OpenCounts[TableStapel]);
    EXPECT_EQ("box Access to file denied\n", Boxes());
}

TEST_F(EngineCalls, AnotherSlotTakesOverTheRecordLengthOfATableOfTheYear)
{
    RecordLengthTable[TableKobu].store(77);
    PathOf(TableKobu, "2001", SlotFree30);
    EXPECT_EQ(77u, context->FreeSlotLengths[1]);
    PathOf(TableSako, nullptr, SlotFree30);
    EXPECT_EQ(77u, context->FreeSlotLengths[1]) << "only with a year";
    PathOf(TableBat, "2001", SlotFree30);
    EXPECT_EQ(77u, context->FreeSlotLengths[1]) << "only for tables that follow the working year";
}

TEST_F(EngineCalls, ClosingTellsWhetherTheEngineRefused)
{
    answers[1] = 3;
    ASSERT_TRUE(OpenTable(*context, TableSako));
    EXPECT_FALSE(CloseTable(*context, TableSako));
    EXPECT_EQ(0, context->OpenCounts[TableSako]);
    EXPECT_EQ("", Boxes());
}

namespace {

// An operation, how it is sent, and what comes of the answers.
struct Sent {
    const char *Name;
    int Operation;
    int KeyNumber;     // under key 2
    bool IsBiased;     // honours LockNext
    bool SendsKey;     // a key of its own
    bool OpensFirst;   // a closed table
    bool StaysOpen;    // a table that it opened
    std::string Good;  // statuses that are a success, "0 4"
    std::string Quiet; // those that are a silent failure
    std::function<bool(ThreadContext &, void *, const KeyBuffer &, bool &, TableKeyCode)> Run;
};

const std::vector<Sent> &AllSent()
{
    using Context = ThreadContext;
    using Key = KeyBuffer;
    using Code = TableKeyCode;
    static const std::vector<Sent> all = {
        {"GetEqual", 5, 2, true, true, true, false, "0 4", "",
         [](Context &c, void *d, const Key &k, bool &f, Code t) { return GetEqual(c, d, k, f, t); }},
        {"Exists", 5, 2, false, true, true, false, "0 4", "",
         [](Context &c, void *, const Key &k, bool &f, Code t) { return Exists(c, k, f, t); }},
        {"GetFirst", 12, 2, true, false, true, true, "0", "9",
         [](Context &c, void *d, const Key &, bool &, Code t) { return GetFirst(c, d, t); }},
        {"GetFirstF", 12, 2, false, false, true, true, "0 9", "",
         [](Context &c, void *d, const Key &, bool &f, Code t) { return GetFirstF(c, d, f, t); }},
        {"GetNext", 6, 2, true, false, false, false, "0", "9",
         [](Context &c, void *d, const Key &, bool &, Code t) { return GetNext(c, d, t); }},
        {"GetNextF", 6, 2, false, false, false, false, "0 9", "",
         [](Context &c, void *d, const Key &, bool &f, Code t) { return GetNextF(c, d, f, t); }},
        {"GetPreviousF", 7, 2, false, false, false, false, "0 9", "",
         [](Context &c, void *d, const Key &, bool &f, Code t) { return GetPreviousF(c, d, f, t); }},
        {"GetGreaterEqual", 9, 2, true, true, true, true, "0", "9",
         [](Context &c, void *d, const Key &k, bool &, Code t) { return GetGreaterEqual(c, d, k, t); }},
        {"GetGreaterEqualF", 9, 2, false, true, true, true, "0 9", "",
         [](Context &c, void *d, const Key &k, bool &f, Code t) { return GetGreaterEqualF(c, d, k, f, t); }},
        {"GetGreaterF", 8, 2, false, true, true, true, "0 9", "",
         [](Context &c, void *d, const Key &k, bool &f, Code t) { return GetGreaterF(c, d, k, f, t); }},
        {"GetLessF", 10, 2, false, true, true, true, "0 9", "",
         [](Context &c, void *d, const Key &k, bool &f, Code t) { return GetLessF(c, d, k, f, t); }},
        {"GetLast", 13, 2, true, false, true, true, "0 9", "",
         [](Context &c, void *d, const Key &, bool &f, Code t) { return GetLast(c, d, f, t); }},
        {"Insert", 2, 0, false, false, true, false, "0", "",
         [](Context &c, void *d, const Key &, bool &, Code t) { return Insert(c, d, t); }},
        {"Update", 3, 2, false, false, false, false, "0", "",
         [](Context &c, void *d, const Key &, bool &, Code t) { return Update(c, d, t); }},
        {"Delete", 4, 0, false, false, false, false, "0", "",
         [](Context &c, void *, const Key &, bool &, Code t) { return Delete(c, t); }},
        {"Unlock", 27, 0, false, false, false, false, "0", "",
         [](Context &c, void *, const Key &, bool &, Code t) { return Unlock(c, t); }},
    };
    return all;
}

bool IsAmong(const std::string &statuses, int16_t status)
{
    return (" " + statuses + " ").find(" " + std::to_string(status) + " ") != std::string::npos;
}

} // namespace

TEST_F(EngineCalls, EachOperationSendsItsNumberKeyAndLength)
{
    const TableKeyCode code = KeyCode(TableSteke, 2);
    for (const Sent &sent : AllSent()) {
        SCOPED_TRACE(sent.Name);
        context->KeyBuffers[TableSteke] = KeyOfText("letzter", 8);
        RecordLengthTable[TableSteke].store(sizeof(StekeRecord));
        ASSERT_TRUE(OpenTable(*context, TableSteke));
        calls.clear();
        found = false;
        EXPECT_TRUE(sent.Run(*context, data, key, found, code));
        ASSERT_EQ(1u, calls.size());
        EXPECT_EQ(sent.Operation, calls[0].Operation);
        EXPECT_EQ(sent.KeyNumber, calls[0].KeyNumber);
        EXPECT_EQ(255, calls[0].KeyLength);
        EXPECT_EQ(sizeof(StekeRecord), calls[0].DataLength);
        EXPECT_EQ(&context->PositionBlocks[TableSteke], calls[0].Position);
        const std::string expected = sent.SendsKey ? std::string(key.Bytes, 41) + std::string(214, '\0')
                                                   : "letzter" + std::string(248, '\0');
        EXPECT_EQ(expected, calls[0].Key);
        EXPECT_EQ(expected.substr(0, 41), std::string(context->KeyBuffers[TableSteke].Bytes, 41))
            << "what the engine writes back stays outside";
        EXPECT_EQ(1, context->OpenCounts[TableSteke]);
        CloseTable(*context, TableSteke);
    }
}

TEST_F(EngineCalls, ALockIsAskedOfTheNextReadThatHonoursItAndOfThatAlone)
{
    for (const Sent &sent : AllSent()) {
        SCOPED_TRACE(sent.Name);
        ASSERT_TRUE(OpenTable(*context, TableSteke));
        for (const int16_t status : {ok, int16_t{2}}) {
            answers[sent.Operation] = answers[sent.Operation + 200] = status;
            LockNext(*context);
            calls.clear();
            sent.Run(*context, data, key, found, TableSteke);
            ASSERT_EQ(1u, calls.size());
            EXPECT_EQ(sent.Operation + (sent.IsBiased ? 200 : 0), calls[0].Operation);
            EXPECT_EQ(sent.IsBiased ? 0 : 200, context->LockBias);
            if (!sent.IsBiased) continue;
            sent.Run(*context, data, key, found, TableSteke);
            EXPECT_EQ(sent.Operation, calls[1].Operation);
        }
        answers.clear();
        context->LockBias = 0;
        ForceTableClosed(*context, TableSteke);
        Boxes();
    }
}

TEST_F(EngineCalls, EachAnswerIsASuccessASilentEndOrShown)
{
    for (const Sent &sent : AllSent()) {
        for (const int16_t status : {ok, int16_t{2}, keyNotFound, endOfFile, recordInUse, fileInUse}) {
            SCOPED_TRACE(std::string(sent.Name) + ", status " + std::to_string(status));
            ASSERT_TRUE(OpenTable(*context, TableSteke));
            answers = {{sent.Operation, status}};
            found = status != ok;
            const bool good = IsAmong(sent.Good, status);
            EXPECT_EQ(good, sent.Run(*context, data, key, found, TableSteke));
            const bool tellsFound = sent.Good.size() > 1;
            EXPECT_EQ(tellsFound ? status == ok : status != ok, found);
            const bool isSilent = good || IsAmong(sent.Quiet, status);
            const bool isTold = sent.IsBiased && (status == recordInUse || status == fileInUse);
            const char *const text = status == 2             ? "box I/O Error\n"
                                     : status == keyNotFound ? "box Key value not found\n"
                                     : status == endOfFile   ? "box End of file\n"
                                     : status == recordInUse ? "box Record in use\n"
                                                             : "box File in use\n";
            EXPECT_EQ(isSilent ? "" : isTold ? inUse : text, Boxes());
            answers.clear();
            ForceTableClosed(*context, TableSteke);
        }
    }
}

TEST_F(EngineCalls, AClosedTableIsOpenedRefusedOrAskedAllTheSame)
{
    for (const Sent &sent : AllSent()) {
        SCOPED_TRACE(sent.Name);
        calls.clear();
        const bool done = sent.Run(*context, data, key, found, TableSteke);
        const std::string name = sent.Name;
        const bool isRefused = name == "Update" || name == "Delete";
        EXPECT_NE(isRefused, done);
        ASSERT_EQ(isRefused ? 0u : !sent.OpensFirst ? 1u : sent.StaysOpen ? 2u : 3u, calls.size());
        if (sent.OpensFirst) {
            EXPECT_EQ(0, calls.front().Operation);
            EXPECT_EQ(sent.StaysOpen ? sent.Operation : 1, calls.back().Operation);
        }
        EXPECT_EQ(sent.StaysOpen ? 1 : 0, context->OpenCounts[TableSteke]);
        EXPECT_EQ("", Boxes());
        ForceTableClosed(*context, TableSteke);
    }
}

TEST_F(EngineCalls, AClosedTableThatWillNotOpenIsAFailureShownOnce)
{
    answers[0] = 12;
    for (const Sent &sent : AllSent()) {
        if (!sent.OpensFirst) continue;
        SCOPED_TRACE(sent.Name);
        found = true;
        calls.clear();
        EXPECT_FALSE(sent.Run(*context, data, key, found, TableSteke));
        EXPECT_EQ(1u, calls.size());
        EXPECT_EQ("box File " + Path("/d/DB/19972/steke.btr") + " not found\n", Boxes());
        EXPECT_EQ(0, context->OpenCounts[TableSteke]);
        EXPECT_EQ(sent.Good.size() == 1, found);
    }
}

TEST_F(EngineCalls, AFailedKeyedReadClosesWhatItOpenedAndAFailedInsertDoesNot)
{
    answers = {{5, 2}, {2, 2}};
    EXPECT_FALSE(GetEqual(*context, data, key, found, TableSteke));
    EXPECT_EQ(0, context->OpenCounts[TableSteke]);
    EXPECT_FALSE(Exists(*context, key, found, TableSteke));
    EXPECT_EQ(0, context->OpenCounts[TableSteke]);
    EXPECT_FALSE(Insert(*context, data, TableSteke));
    EXPECT_EQ(1, context->OpenCounts[TableSteke]);
}

TEST_F(EngineCalls, TheLow16BitsOfTheAnsweredLengthAreOfferedNext)
{
    ASSERT_TRUE(OpenTable(*context, TableSteke));
    answeredLengths[12] = 0x50010;
    EXPECT_TRUE(GetFirst(*context, data, TableSteke));
    EXPECT_EQ(0x10u, RecordLengthTable[TableSteke].load());
    calls.clear();
    GetNext(*context, data, TableSteke);
    EXPECT_EQ(0x10u, calls[0].DataLength);
}

TEST_F(EngineCalls, RereadingAsksForThePositionAndReadsItUnderTheOtherKey)
{
    ASSERT_TRUE(OpenTable(*context, TableSteke));
    calls.clear();
    EXPECT_TRUE(RereadCurrent(*context, KeyCode(TableSteke, 2)));
    ASSERT_EQ(2u, calls.size());
    EXPECT_EQ(22, calls[0].Operation);
    EXPECT_EQ(4u, calls[0].DataLength);
    EXPECT_EQ(23, calls[1].Operation);
    EXPECT_EQ(2, calls[1].KeyNumber);
    EXPECT_EQ(sizeof(StekeRecord), calls[1].DataLength);
    for (const int failing : {22, 23}) {
        answers = {{failing, 43}};
        EXPECT_FALSE(RereadCurrent(*context, KeyCode(TableSteke, 2)));
        EXPECT_EQ("box Invalid record address\n", Boxes());
    }
}

TEST_F(EngineCalls, TheCountOfRecordsIsAskedWith272Bytes)
{
    EXPECT_EQ(0, RecordCount(*context, TableSteke));
    ASSERT_EQ(3u, calls.size()) << "opened, asked, closed";
    EXPECT_EQ(15, calls[1].Operation);
    EXPECT_EQ(272u, calls[1].DataLength);
    answers[15] = 2;
    EXPECT_EQ(-1, RecordCount(*context, TableSteke));
    EXPECT_EQ("box I/O Error\n", Boxes());
    EXPECT_EQ(0, context->OpenCounts[TableSteke]);
}

TEST_F(EngineCalls, ARefusedStepOfATransactionIsShownAndAbortsAllLevels)
{
    const auto operations = [] {
        std::string text;
        for (const Call &call : calls) {
            text += std::to_string(call.Operation) + ' ';
        }
        calls.clear();
        return text;
    };
    answers[19] = 37;
    EXPECT_FALSE(Transaction(*context, TransactionAction::Begin));
    EXPECT_EQ("19 21 ", operations());
    answers = {{20, 38}};
    EXPECT_TRUE(Transaction(*context, TransactionAction::Begin));
    EXPECT_FALSE(Transaction(*context, TransactionAction::End));
    EXPECT_EQ("19 20 21 ", operations());
    EXPECT_EQ(0, context->TransactionDepth);
    EXPECT_EQ(0, context->HoldOpen);
    answers = {{21, 39}};
    EXPECT_TRUE(Transaction(*context, TransactionAction::Begin));
    EXPECT_TRUE(Transaction(*context, TransactionAction::Begin));
    EXPECT_EQ(1, context->HoldOpen);
    EXPECT_FALSE(Transaction(*context, TransactionAction::Abort));
    EXPECT_EQ("19 21 21 ", operations());
    EXPECT_EQ(0, context->TransactionDepth);
    EXPECT_EQ("box Transaction is active\n"
              "box Transaction control file I/O error\n"
              "box End/Abort transaction error\n",
              Boxes());
}
