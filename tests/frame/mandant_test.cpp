#include "src/frame/mandant.h"

#include "src/frame/lifecycle.h"
#include "src/frame/record_store.h"
#include "tests/support/books.h"
#include "tests/support/engine_faults.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <thread>

using namespace vark;
using namespace vark::test;

namespace {

constexpr uint16_t operationOpen = 0;
constexpr uint16_t operationClose = 1;

RecordManagerEntry realEngine;
std::vector<std::string> opened;

int16_t VARK_CALL NoteOpen(uint16_t operation, void *block, void *data, uint32_t *length, void *key,
                           uint8_t keyLength, int8_t keyNumber)
{
    if (operation == operationOpen) {
        opened.push_back(std::filesystem::path(static_cast<const char *>(key)).stem().string());
    }
    return realEngine(operation, block, data, length, key, keyLength, keyNumber);
}

struct MandantSelection : testing::Test {
    Books books;
    ThreadContext *context = nullptr;
    FistaRecord record{};

    void SetUp() override { ASSERT_EQ(1, EnterExport(context)); }
    void TearDown() override { VARK_SchliesseDB(); }

    // File names in the order in which the thread opens them from now on.
    static std::vector<std::string> &NoteOpens()
    {
        realEngine = EngineEntry;
        EngineEntry = NoteOpen;
        return opened;
    }
    // What SelectMandant answers, and how many tables it opened or closed.
    int Opens(int32_t mandant, int32_t expected)
    {
        FailEngineOperation(operationOpen, 0, 0);
        EXPECT_EQ(expected, SelectMandant(*context, mandant, record));
        return StopEngineFaults();
    }
};

} // namespace

TEST_F(MandantSelection, BindsTheThreadToTheMandantsRecord)
{
    MandantOptions options;
    options.LowerYear = "1997";
    options.UpperYear = "1998";
    options.FirstFiscalMonth = 7;
    options.UstId = "DE123456789";
    options.Kostenrechnung = true;
    options.KostenPflicht = true;
    books.AddMandant(1, options);
    ASSERT_EQ(1, SelectMandant(*context, 1, record));
    EXPECT_EQ(1, record.Nummer);
    EXPECT_EQ(1, context->CurrentMandant);
    EXPECT_STREQ("1998", context->WorkYear);
    EXPECT_STREQ("1998", context->MandantYear);
    EXPECT_STREQ("1997", context->FirstOpenYear);
    EXPECT_STREQ("1997", context->PreviousYear);
    EXPECT_EQ(pathSeparator + std::string("1998"), context->YearDirectory);
    EXPECT_STREQ("", context->MandantSuffix);
    EXPECT_EQ(7, context->FirstFiscalMonth);
    EXPECT_EQ(1, context->VatIdPresent);
    EXPECT_EQ(1, context->CostAccountingOn);
    EXPECT_EQ(1, context->CostsRequired);
    EXPECT_STREQ("D", context->DefaultLand);
    EXPECT_STREQ("DEM", context->MandantWaehrung);
}

TEST_F(MandantSelection, OpensTheCoreTablesOnceEach)
{
    books.AddMandant(1);
    ASSERT_EQ(1, SelectMandant(*context, 1, record));
    for (int slot = 0; slot < slotCount; ++slot) {
        bool core = false;
        for (const int table : {0, 2, 3, 1, 4, 10, 11, 22, 12, 21, 24}) {
            core = core || table == slot;
        }
        EXPECT_EQ(core ? 1 : 0, context->OpenCounts[slot]) << slot;
    }
}

TEST_F(MandantSelection, CoreTablesAreOpenedInTheirOrder)
{
    books.AddMandant(1);
    const std::vector<std::string> &noted = NoteOpens();
    ASSERT_EQ(1, SelectMandant(*context, 1, record));
    EXPECT_EQ((std::vector<std::string>{"fista", "sako", "kred", "debi", "bube", "steke", "kore", "kobu",
                                        "split", "bat", "user", "koschaze"}),
              noted);
}

TEST_F(MandantSelection, CompanyTableHasOneUserHoweverOftenTheMandantIsSelected)
{
    books.AddMandant(1);
    for (int i = 0; i < 4; ++i) {
        ASSERT_EQ(1, SelectMandant(*context, 1, record));
    }
    EXPECT_EQ(1, context->OpenCounts[TableFista]);
}

TEST_F(MandantSelection, TodayIsRefreshedWithTheBinding)
{
    books.AddMandant(1);
    ASSERT_EQ(1, SelectMandant(*context, 1, record));
    EXPECT_STREQ("15.06.1998", context->TodayLong);
}

TEST_F(MandantSelection, APreviousYearThatWasOpenIsReopenedWithTheYear)
{
    MandantOptions options;
    options.LowerYear = "1996";
    books.AddMandant(1, options);
    books.Insert(1, TableSako, MakeSako("1000"), "1996");
    ASSERT_EQ(1, SelectMandant(*context, 1, record));
    ASSERT_TRUE(OpenTable(*context, TablePreviousSako));
    EXPECT_EQ(0, RecordCount(*context, TablePreviousSako)) << "1997";
    ASSERT_TRUE(SelectYear(*context, "1997"));
    EXPECT_EQ(1, context->OpenCounts[TablePreviousSako]);
    EXPECT_EQ(1, RecordCount(*context, TablePreviousSako)) << "1996";
}

TEST_F(MandantSelection, AMandantWhoseTablesDoNotOpenLeavesTheThreadUnbound)
{
    books.AddMandant(1);
    MandantOptions options;
    options.Without = {TableKoschaze};
    books.AddMandant(2, options);
    ASSERT_EQ(1, SelectMandant(*context, 1, record));
    EXPECT_EQ(engineFailure, SelectMandant(*context, 2, record));
    EXPECT_EQ(-1, context->CurrentMandant);
    EXPECT_EQ(1, SelectMandant(*context, 1, record));
    EXPECT_STREQ("", context->MandantSuffix);
}

TEST_F(MandantSelection, MandantOneHasNoSuffixAndOthersTheirNumberLessOne)
{
    for (const int32_t mandant : {1, 2, 11}) {
        books.AddMandant(mandant);
    }
    ASSERT_EQ(1, SelectMandant(*context, 2, record));
    EXPECT_STREQ("1", context->MandantSuffix);
    ASSERT_EQ(1, SelectMandant(*context, 11, record));
    EXPECT_STREQ("10", context->MandantSuffix);
    ASSERT_EQ(1, SelectMandant(*context, 1, record));
    EXPECT_STREQ("", context->MandantSuffix);
}

TEST_F(MandantSelection, SameMandantAgainOpensNothing)
{
    books.AddMandant(1);
    EXPECT_EQ(1 + 11, Opens(1, 1));
    // The company table was closed with all others; it opens again once and then stays.
    EXPECT_EQ(1, Opens(1, 1));
    ASSERT_TRUE(OpenTable(*context, TableStapel));
    FailEngineOperation(operationClose, 0, 0);
    EXPECT_EQ(1, SelectMandant(*context, 1, record));
    EXPECT_EQ(0, StopEngineFaults());
    EXPECT_EQ(0, Opens(1, 1));
    EXPECT_EQ(1, context->OpenCounts[TableStapel]);
}

TEST_F(MandantSelection, FreshRecordIsReadEachTime)
{
    books.AddMandant(1);
    ASSERT_EQ(1, SelectMandant(*context, 1, record));
    books.ChangeMandant(1, [](FistaRecord &mandant) { SetText(mandant.Name, "Neuer Name"); });
    ASSERT_EQ(1, SelectMandant(*context, 1, record));
    EXPECT_EQ("Neuer Name", TextOf(record.Name));
}

TEST_F(MandantSelection, AnotherMandantClosesTheTablesOfTheFirst)
{
    books.AddMandant(1);
    books.AddMandant(2);
    ASSERT_EQ(1, SelectMandant(*context, 1, record));
    ASSERT_TRUE(OpenTable(*context, TableStapel));
    ASSERT_EQ(1, SelectMandant(*context, 2, record));
    EXPECT_EQ(0, context->OpenCounts[TableStapel]);
    EXPECT_EQ(0, context->OpenCounts[TableFista]);
    EXPECT_EQ(2, context->CurrentMandant);
}

TEST_F(MandantSelection, UnknownMandantKeepsTheBindingAndItsTables)
{
    books.AddMandant(1);
    ASSERT_EQ(1, SelectMandant(*context, 1, record));
    EXPECT_EQ(mandantUnknown, SelectMandant(*context, 2, record));
    EXPECT_EQ(1, context->CurrentMandant);
    EXPECT_STREQ("1998", context->WorkYear);
    EXPECT_EQ(1, context->OpenCounts[TableSako]);
    EXPECT_STREQ("", context->MandantYear) << "overwritten with what the buffer held";
    EXPECT_EQ(Lines{}, books.TakeBoxes());

    ASSERT_EQ(1, SelectMandant(*context, 1, record));
    EXPECT_STREQ("1998", context->MandantYear) << "so that the next call finds its tables";
}

TEST_F(MandantSelection, NumberThatNoRecordCanHoldIsUnknown)
{
    books.AddMandant(1);
    for (const int32_t mandant : {0, -1, 65537, INT32_MAX, INT32_MIN}) {
        EXPECT_EQ(mandantUnknown, SelectMandant(*context, mandant, record)) << mandant;
    }
}

TEST_F(MandantSelection, UnknownMandantIsReportedWithItsMessage)
{
    books.AddMandant(1);
    context->ShowMessages = 1;
    EXPECT_EQ(mandantUnknown, SelectMandantOrReport(*context, 7, record));
    EXPECT_EQ(Lines{"Der Mandant existiert nicht!"}, books.TakeBoxes());
    context->ShowMessages = 0;
    EXPECT_EQ(mandantUnknown, SelectMandantOrReport(*context, 7, record));
    EXPECT_EQ(Lines{}, books.TakeBoxes());
}

TEST_F(MandantSelection, MissingCompanyTableIsAnEngineFailure)
{
    context->ShowMessages = 1;
    std::filesystem::remove_all(books.Directory() + "/DB");
    EXPECT_EQ(engineFailure, SelectMandantOrReport(*context, 1, record));
    EXPECT_EQ(Lines{"File " + books.TablePath(1, TableFista) + " not found"}, books.TakeBoxes());
}

TEST_F(MandantSelection, MissingCoreTableIsAnEngineFailureAndLeavesTheOthersOpen)
{
    MandantOptions options;
    options.Without = {TableSteke};
    books.AddMandant(1, options);
    EXPECT_EQ(engineFailure, SelectMandant(*context, 1, record));
    EXPECT_EQ(-1, context->CurrentMandant);
    EXPECT_EQ(1, context->OpenCounts[TableBube]);
    EXPECT_EQ(0, context->OpenCounts[TableSteke]);
    EXPECT_EQ(0, context->OpenCounts[TableKore]);
    EXPECT_EQ(Lines{"File " + books.TablePath(1, TableSteke) + " not found"}, books.TakeBoxes());
}

TEST_F(MandantSelection, MissingYearDirectoryIsAnEngineFailure)
{
    books.AddMandant(1);
    std::filesystem::remove_all(books.YearDirectory(1));
    EXPECT_EQ(engineFailure, SelectMandant(*context, 1, record));
}

TEST_F(MandantSelection, FirstFiscalMonthOfZeroCountsAsJanuary)
{
    MandantOptions options;
    options.FirstFiscalMonth = 0;
    books.AddMandant(1, options);
    ASSERT_EQ(1, SelectMandant(*context, 1, record));
    EXPECT_EQ(1, context->FirstFiscalMonth);
    EXPECT_EQ(0, context->VatIdPresent);
}

TEST_F(MandantSelection, YearFieldFilledToItsLastByteIsReadUpToFourDigits)
{
    books.AddMandant(1);
    books.ChangeMandant(1, [](FistaRecord &mandant) { std::memcpy(mandant.UpperYear, "19987", 5); });
    ASSERT_EQ(1, SelectMandant(*context, 1, record));
    EXPECT_STREQ("1998", context->WorkYear);
}

TEST_F(MandantSelection, AnotherYearMovesTheYearTablesOnly)
{
    books.AddMandant(1);
    books.Insert(1, TableSako, MakeSako("1000"), "1997");
    ASSERT_EQ(1, SelectMandant(*context, 1, record));
    ASSERT_TRUE(OpenTable(*context, TableSako)); // count 2
    EXPECT_EQ(0, RecordCount(*context, TableSako));
    ASSERT_TRUE(SelectYear(*context, "1997"));
    EXPECT_EQ(1, RecordCount(*context, TableSako));
    EXPECT_STREQ("1997", context->WorkYear);
    EXPECT_EQ(pathSeparator + std::string("1997"), context->YearDirectory);
    EXPECT_STREQ("1996", context->PreviousYear);
    EXPECT_STREQ("1998", context->MandantYear);
    EXPECT_EQ(1, context->OpenCounts[TableSako]) << "reopened with count 1, whatever it had";
    EXPECT_EQ(0, context->OpenCounts[TableStapel]) << "a closed table stays closed";
}

TEST_F(MandantSelection, SelectingTheYearInForceDoesNothing)
{
    books.AddMandant(1);
    ASSERT_EQ(1, SelectMandant(*context, 1, record));
    FailEngineCall(0);
    EXPECT_TRUE(SelectYear(*context, "1998"));
    EXPECT_EQ(0, StopEngineFaults());
}

TEST_F(MandantSelection, FreeSlotsAreNotReopened)
{
    books.AddMandant(1);
    ASSERT_EQ(1, SelectMandant(*context, 1, record));
    ASSERT_TRUE(OpenTable(*context, TableKobu, "1998", SlotFree30));
    ASSERT_TRUE(SelectYear(*context, "1997"));
    EXPECT_EQ(0, context->OpenCounts[SlotFree30]);
}

TEST_F(MandantSelection, YearWithoutADirectoryFails)
{
    books.AddMandant(1);
    ASSERT_EQ(1, SelectMandant(*context, 1, record));
    EXPECT_FALSE(SelectYear(*context, "1990"));
    EXPECT_EQ(1u, books.TakeBoxes().size());
    ASSERT_EQ(1, SelectMandant(*context, 1, record)) << "the next call brings the thread back";
    EXPECT_STREQ("1998", context->WorkYear);
    EXPECT_EQ(1, context->OpenCounts[TableSako]);
}

TEST_F(MandantSelection, TodayIsKeptInThreeForms)
{
    setenv("VARK_HEUTE", "24.12.1997", 1);
    RefreshToday(*context);
    EXPECT_STREQ("241217", context->TodayPacked);
    EXPECT_STREQ("24.12.97", context->TodayShort);
    EXPECT_STREQ("24.12.1997", context->TodayLong);
}

TEST_F(MandantSelection, DecadeOfTodayIsCountedFrom1980)
{
    const struct {
        const char *Today;
        const char *Packed;
        const char *Long;
    } rows[] = {
        {"01.02.1980", "010200", "01.02.1980"}, {"01.02.1999", "010219", "01.02.1999"},
        {"01.02.2000", "010220", "01.02.2000"}, {"01.02.2026", "010246", "01.02.2026"},
        {"01.02.2079", "010299", "01.02.2079"},
    };
    for (const auto &row : rows) {
        setenv("VARK_HEUTE", row.Today, 1);
        RefreshToday(*context);
        EXPECT_STREQ(row.Packed, context->TodayPacked);
        EXPECT_STREQ(row.Long, context->TodayLong);
    }
}

TEST_F(MandantSelection, TwoThreadsWorkOnTwoMandantenAtOnce)
{
    books.AddMandant(1);
    books.AddMandant(2);
    ASSERT_EQ(1, SelectMandant(*context, 1, record));
    std::thread([&] {
        ThreadContext *other = nullptr;
        ASSERT_EQ(1, EnterExport(other));
        FistaRecord otherRecord{};
        EXPECT_EQ(1, SelectMandant(*other, 2, otherRecord));
        EXPECT_STREQ("1", other->MandantSuffix);
    }).join();
    EXPECT_EQ(1, context->CurrentMandant);
    EXPECT_STREQ("", context->MandantSuffix);
}
