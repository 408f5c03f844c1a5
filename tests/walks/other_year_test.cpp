#include "src/walks/other_year.h"

#include "src/frame/held_tables.h"
#include "tests/walks/walk_books.h"

#include <filesystem>
#include <thread>

using namespace vark;
using namespace vark::test;

namespace {

struct YearsOfAPeriod : testing::Test {
    ThreadContext context{};

    void SetUp() override
    {
        context.FirstFiscalMonth = 7;
        Postable("1996", "1997");
    }
    void Postable(const std::string &lower, const std::string &upper)
    {
        SetText(context.FirstOpenYear, lower);
        SetText(context.MandantYear, upper);
    }
    // "1996+ 7-12 010716-311216" for each part; + can be posted to, - cannot.
    std::string Parts(const std::string &von, const std::string &bis, int vonPeriode, int bisPeriode)
    {
        PeriodYears years = Years(von, bis, vonPeriode, bisPeriode);
        std::string all;
        for (int i = 0; i < years.Count; ++i) {
            all += (i == 0 ? "" : "; ") + Text(years.Parts[i]);
        }
        return all;
    }
    PeriodYears Years(const std::string &von, const std::string &bis, int vonPeriode, int bisPeriode)
    {
        PackedDate first;
        PackedDate last;
        TakePacked(first, von);
        TakePacked(last, bis);
        return YearsOfPeriod(context, first, last, vonPeriode, bisPeriode);
    }
    static std::string Text(const YearPart &part)
    {
        return std::string(part.Year) + (part.IsPostable ? "+ " : "- ") + std::to_string(part.FirstMonth) +
               "-" + std::to_string(part.LastMonth) + " " + part.Von + "-" + part.Bis;
    }
    // The working year, and the earlier one if it is read as well.
    std::string Read(const std::string &von, const std::string &bis)
    {
        const PeriodYears years = Years(von, bis, 10, 3);
        const YearPart *const earlier = EarlierPart(years);
        return std::string(WorkingPart(years).Year) + (earlier != nullptr ? " " : "") +
               (earlier != nullptr ? earlier->Year : "");
    }
};

struct OtherYears : WalkBooks {
    bool IsClosed() const
    {
        return context->OpenCounts[SlotFree29] == 0 && context->OpenCounts[SlotFree30] == 0;
    }
};

} // namespace

TEST_F(YearsOfAPeriod, OneFiscalYearIsOnePart)
{
    EXPECT_EQ("1997+ 1-3 010117-310317", Parts("010117", "310317", 1, 3));
}

TEST_F(YearsOfAPeriod, TheChangeOfTheYearCutsAPeriodInTwo)
{
    // A calendar year: January to June of the fiscal year 1996, July to December of 1997.
    EXPECT_EQ("1996+ 7-12 010716-311216; 1997+ 1-6 010117-310617", Parts("010716", "310617", 7, 6));
}

TEST_F(YearsOfAPeriod, TheLaterYearIsWorkedInUnlessItCannotBePostedTo)
{
    EXPECT_EQ("1997 1996", Read("011016", "310317"));
    EXPECT_EQ("1997", Read("011017", "310318")) << "1998 is not there yet";
    EXPECT_EQ("1996", Read("011015", "310316")) << "1995 is closed";
    Postable("", "1997");
    EXPECT_EQ("1997", Read("011016", "310317"));
    EXPECT_EQ("1980", Read("011000", "310301")) << "an archive's period: neither can be posted to";
}

TEST_F(OtherYears, TablesOfTheWorkingYearServeAComparisonInside)
{
    Select();
    HeldTables held(*context);
    CompareTables tables{};
    ASSERT_TRUE(HoldCompareYear(held, "1998", tables));
    EXPECT_EQ(TableSako, tables.Sako);
    EXPECT_EQ(TableBube, tables.Bube);
    EXPECT_TRUE(IsClosed());
}

TEST_F(OtherYears, TablesOfAnotherYearLieUnderTheFreeSlotsUntilTheEnd)
{
    books.Insert(1, TableSako, MakeSako("5000"), "1997");
    Select();
    {
        HeldTables held(*context);
        CompareTables tables{};
        ASSERT_TRUE(HoldCompareYear(held, "1997", tables));
        EXPECT_EQ(SlotFree29, tables.Sako);
        EXPECT_EQ(SlotFree30, tables.Bube);
        EXPECT_EQ(1, RecordCount(*context, SlotFree29));
        EXPECT_EQ(0, RecordCount(*context, SlotFree30));
    }
    EXPECT_TRUE(IsClosed());
}

TEST_F(OtherYears, ASlotThatWasLeftOpenAnswersWithItsNewYear)
{
    books.Insert(1, TableSako, MakeSako("5000"), "1997");
    Select();
    ASSERT_TRUE(OpenTable(*context, TableSako, "1998", SlotFree29));
    ASSERT_TRUE(OpenTable(*context, TableSako, "1998", SlotFree29));
    {
        HeldTables held(*context);
        ASSERT_TRUE(HoldOfYear(held, TableSako, "1997", SlotFree29));
        EXPECT_EQ(1, context->OpenCounts[SlotFree29]);
        EXPECT_EQ(1, RecordCount(*context, SlotFree29));
    }
    EXPECT_TRUE(IsClosed());
}

TEST_F(OtherYears, AYearThatIsNotThereIsToldAndLeavesNothingOpen)
{
    std::filesystem::remove_all(books.YearDirectory(1, "1997"));
    Select();
    {
        HeldTables held(*context);
        CompareTables tables{};
        EXPECT_FALSE(HoldCompareYear(held, "1997", tables));
    }
    EXPECT_TRUE(IsClosed());
    EXPECT_EQ(1u, books.TakeBoxes().size());
}

TEST_F(OtherYears, TwoThreadsHoldTablesOfDifferentLengthsUnderTheSameSlot)
{
    books.Insert(1, TableSako, MakeSako("5000"), "1997");
    books.Insert(1, TableDebi, MakePersonal("10000"), "1997");
    Select();
    HeldTables held(*context);
    ASSERT_TRUE(HoldOfYear(held, TableDebi, "1997", SlotFree29));
    std::thread([] {
        ThreadContext *other = nullptr;
        FistaRecord fista{};
        ASSERT_EQ(1, EnterExport(other));
        ASSERT_EQ(1, SelectMandant(*other, 1, fista));
        HeldTables shorter(*other);
        ASSERT_TRUE(HoldOfYear(shorter, TableSako, "1997", SlotFree29));
        SakoRecord record{};
        bool found = false;
        EXPECT_TRUE(GetFirstF(*other, &record, found, SlotFree29));
        EXPECT_TRUE(found);
        Release(shorter);
        VARK_SchliesseDB();
    }).join();
    PersonalRecord record{};
    bool found = false;
    EXPECT_TRUE(GetFirstF(*context, &record, found, SlotFree29)) << "not with the length of the other";
    EXPECT_TRUE(found);
    EXPECT_EQ(Lines{}, books.TakeBoxes());
}

TEST_F(OtherYears, HeldTablesHaveNoMoreUsersAfterThanBefore)
{
    Select();
    const int32_t before = context->OpenCounts[TableKore];
    {
        HeldTables held(*context);
        ASSERT_TRUE(Hold(held, TableKore));
        ASSERT_TRUE(Hold(held, TableOpdebi));
        EXPECT_EQ(before + 1, context->OpenCounts[TableKore]);
        ASSERT_TRUE(SelectYear(*context, "1997"));
        EXPECT_EQ(1, context->OpenCounts[TableKore]) << "a change of the year counts anew";
    }
    EXPECT_EQ(before, context->OpenCounts[TableKore]) << "the Mandant's own use stays";
    EXPECT_EQ(0, context->OpenCounts[TableOpdebi]);
}

TEST_F(OtherYears, MoreTablesThanThereIsRoomForAreRefused)
{
    Select();
    HeldTables held(*context);
    for (size_t i = 0; i < std::size(held.Entries); ++i) {
        ASSERT_TRUE(Hold(held, TableSako));
    }
    EXPECT_FALSE(Hold(held, TableSako));
    EXPECT_FALSE(HoldOfYear(held, TableSako, "1997", SlotFree29));
    EXPECT_TRUE(IsClosed());
    Release(held);
    EXPECT_EQ(1, context->OpenCounts[TableSako]);
}
