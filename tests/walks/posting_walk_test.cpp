#include "src/walks/posting_walk.h"

#include "src/frame/held_tables.h"
#include "tests/walks/walk_books.h"

using namespace vark;
using namespace vark::test;

namespace {

DayRange Days(const std::string &von, const std::string &bis)
{
    PackedDate first;
    PackedDate last;
    TakePacked(first, von);
    TakePacked(last, bis);
    return DaysOf(first, last);
}

std::string Bound(const char (&bound)[10]) { return {bound, sizeof bound}; }

struct PostingWalk : WalkBooks {
    // Buchungsnummern in the order of the walk; "failed" at its end if it did.
    static std::string Numbers(PostingScan &scan, bool isGood)
    {
        std::string numbers;
        while (isGood && scan.Found) {
            numbers += (numbers.empty() ? "" : " ") + std::to_string(scan.Record.Buchungsnummer);
            isGood = NextPosting(scan);
        }
        return isGood ? numbers : numbers + " failed";
    }
    std::string All(const std::string &von, const std::string &bis, TableId bube = TableBube)
    {
        PostingScan scan;
        const bool isGood = BeginPostings(scan, *context, Days(von, bis), bube);
        return Numbers(scan, isGood);
    }
    std::string Of(const std::string &konto, PostingAccount which, const std::string &von,
                   const std::string &bis)
    {
        AccountNumber number;
        SetText(number, Justified(konto));
        PostingScan scan;
        const bool isGood = BeginPostingsOf(scan, *context, number, which, Days(von, bis));
        return Numbers(scan, isGood);
    }
    std::string HasAny(const std::string &von, const std::string &bis)
    {
        bool hasAny = false;
        if (!HasPostings(*context, Days(von, bis), hasAny)) return "failed";
        return hasAny ? "yes" : "no";
    }
    void Add(int32_t number, const std::string &date, const std::string &soll, const std::string &haben,
             const std::string &steuer = "", const std::string &year = "")
    {
        BubeRecord record = MakeBube(number, date, soll, haben, "000000001,00");
        if (!steuer.empty()) SetText(record.Steuerkonto, Justified(steuer));
        books.Insert(1, TableBube, record, year);
    }
};

} // namespace

TEST(DayRange, GoesFromTheFirstNumberOfADayToTheLast)
{
    const DayRange days = Days("150318", "310318");
    EXPECT_EQ("1803150000", Bound(days.Von));
    EXPECT_EQ("1803319999", Bound(days.Bis));
}

TEST(DayRange, AnEmptyDayIsBeforeAllOthers)
{
    const DayRange days = Days("", "");
    EXPECT_EQ(std::string(10, '\0'), Bound(days.Von));
    BubeRecord record = MakeBube(1, "010100", "1", "2", "000000001,00");
    EXPECT_TRUE(LiesBehind(record, days));
    PackedDate first;
    TakePacked(first, "");
    EXPECT_FALSE(LiesBehind(record, DaysFrom(first)));
}

TEST_F(PostingWalk, BothDaysBelongToTheRange)
{
    Add(1, "140318", "1200", "8400");
    Add(2, "150318", "1200", "8400");
    Add(3, "310318", "1200", "8400");
    Add(9999, "310318", "1200", "8400");
    Add(4, "010418", "1200", "8400");
    Select();
    EXPECT_EQ("2 3 9999", All("150318", "310318"));
    EXPECT_EQ("1 2 3 9999 4", All("", "311218"));
    EXPECT_EQ("", All("020418", "311218"));
    EXPECT_EQ("", All("310318", "150318"));
    PostingScan scan;
    PackedDate von;
    TakePacked(von, "310318");
    const bool isGood = BeginPostings(scan, *context, DaysFrom(von));
    EXPECT_EQ("3 9999 4", Numbers(scan, isGood));
}

TEST_F(PostingWalk, TheRangeTestAsksForTheFirstPostingOnly)
{
    Add(1, "150318", "1200", "8400");
    Select();
    EXPECT_EQ("yes", HasAny("010318", "310318"));
    EXPECT_EQ("yes", HasAny("150318", "150318"));
    EXPECT_EQ("no", HasAny("160318", "310318")) << "nothing comes behind";
    EXPECT_EQ("no", HasAny("010318", "140318")) << "what comes first lies behind the range";
    FailEngineOperation(operationGetGreaterEqual, 1, refused);
    EXPECT_EQ("failed", HasAny("010318", "310318"));
}

TEST_F(PostingWalk, AnAccountIsFoundInEachPlaceByItself)
{
    Add(1, "150318", "1200", "8400", "1776");
    Add(2, "160318", "8400", "1200");
    Add(3, "170318", "1200", "1776");
    Add(4, "150418", "1200", "8400");
    Add(5, "150318", "12000", "8400");
    Select();
    EXPECT_EQ("1 3", Of("1200", PostingAccount::Soll, "010318", "310318"));
    EXPECT_EQ("3", Of("1200", PostingAccount::Soll, "160318", "310318"));
    EXPECT_EQ("2", Of("1200", PostingAccount::Haben, "010318", "310318"));
    EXPECT_EQ("1", Of("1776", PostingAccount::Steuer, "010318", "310318"));
    EXPECT_EQ("3", Of("1776", PostingAccount::Haben, "010318", "310318"));
    EXPECT_EQ("", Of("1201", PostingAccount::Soll, "010318", "310318"));
}

TEST_F(PostingWalk, TheBuchungsdatumIsAnOrderOfItsOwn)
{
    const auto add = [&](int32_t number, const std::string &date, const std::string &entered) {
        BubeRecord record = MakeBube(number, date, "1200", "8400", "000000001,00");
        SetText(record.Buchungsdatum, entered);
        books.Insert(1, TableBube, record);
    };
    add(1, "150118", "180320");
    add(2, "150218", "180301");
    add(3, "150318", "");
    add(4, "150418", "180331");
    add(5, "150518", "180401");
    Select();
    PostingScan scan;
    bool isGood = BeginPostingsByEntry(scan, *context, Days("010318", "310318"));
    EXPECT_EQ("2 1 4", Numbers(scan, isGood));
    isGood = BeginPostingsByEntry(scan, *context, Days("020318", "300318"));
    EXPECT_EQ("1", Numbers(scan, isGood));
}

TEST_F(PostingWalk, APostingThatIsGoneIsNotSkipped)
{
    Add(1, "150318", "1200", "8400");
    Add(2, "160318", "1200", "8400");
    Select();
    const BubeRecord first = MakeBube(1, "150318", "1200", "8400", "000000001,00");
    KeyBuffer key{};
    std::memcpy(key.Bytes, &first.Schluessel, sizeof first.Schluessel);
    PostingScan scan;
    bool isGood = ResumePostings(scan, *context, key);
    EXPECT_EQ("1 2", Numbers(scan, isGood));
    key.Bytes[9] = '0';
    ASSERT_TRUE(ResumePostings(scan, *context, key));
    EXPECT_FALSE(scan.Found);
}

TEST_F(PostingWalk, APostingIsFoundByItsBuchungsnummer)
{
    Add(7, "150318", "1200", "8400");
    Select();
    BubeRecord record;
    bool found = false;
    EXPECT_TRUE(FindPosting(*context, 7, record, found));
    EXPECT_TRUE(found);
    EXPECT_EQ(7, record.Buchungsnummer);
    EXPECT_TRUE(FindPosting(*context, 8, record, found));
    EXPECT_FALSE(found);
}

TEST_F(PostingWalk, AnotherYearIsReadUnderItsSlot)
{
    Add(1, "150318", "1200", "8400");
    Add(2, "150317", "1200", "8400", "", "1997");
    Select();
    HeldTables held(*context);
    ASSERT_TRUE(HoldOfYear(held, TableBube, "1997", SlotFree30));
    EXPECT_EQ("2", All("010117", "311217", SlotFree30));
    EXPECT_EQ("1", All("010118", "311218"));
}

TEST_F(PostingWalk, FailuresOfTheRecordStoreEndIt)
{
    Add(1, "150318", "1200", "8400");
    Add(2, "160318", "1200", "8400");
    Select();
    FailEngineOperation(operationGetGreaterEqual, 1, refused);
    EXPECT_EQ(" failed", All("", "311218"));
    FailEngineOperation(operationGetNext, 1, refused);
    EXPECT_EQ("1 failed", All("", "311218"));
}
