// Where rows go: pages that are full, sums that are carried forward, records and groups that stay together,
// and counting that gives the same number of pages without any rows.
#include <gtest/gtest.h>
#include <random>
#include <vector>

#include "report-engine/counting.h"
#include "report-engine/layout.h"

using namespace rs;

namespace {

// 100 of body height and rows of 10, so that ten fit on a page.
Definition PageOfTen()
{
    Definition def = {};
    def.PageWidth = 10000;
    def.PageHeight = 10000;
    def.StyleCount = builtInStyles;
    for (int i = 0; i < def.StyleCount; ++i) {
        def.Styles[i].Height = 1000;
    }
    def.Styles[lineStyle].Counts = true;
    return def;
}

KindRule Printing(const std::vector<uint8_t> &rows, uint8_t level = 0, const std::vector<uint8_t> &foot = {})
{
    KindRule rule = {};
    rule.IsDeclared = true;
    rule.Level = level;
    for (const uint8_t style : rows) {
        rule.Rows[rule.RowCount++] = style;
    }
    for (const uint8_t style : foot) {
        rule.FootRows[rule.FootCount++] = style;
    }
    return rule;
}

void Carry(Definition &def, uint8_t level, bool pageSum, bool down, bool up)
{
    def.Carry = {true, level, 0, "", "", ""};
    if (pageSum) def.Carry.PageSum[0] = 'P';
    if (down) def.Carry.Down[0] = 'D';
    if (up) def.Carry.Up[0] = 'U';
}

struct Standing {
    Placed what;
    uint64_t row;
    int64_t page;
    int32_t top;
    int32_t height; // of rows and repeated ones
};

// What stands on the pages when records of these kinds come, each named by its number; feet by those of the
// record that closes them (the end of the report is one of them), plus 1000.
struct Pages {
    std::vector<Standing> standing;
    std::vector<LayoutRow> rows;
    int64_t count = 0;
};

void Take(void *context, Placed what, const LayoutRow *row, int64_t page, int32_t top)
{
    auto &pages = *static_cast<Pages *>(context);
    pages.standing.push_back(
        {what, row != nullptr ? row->Offset : 0, page, top, row != nullptr ? row->Height : 0});
    if (what == Placed::row) pages.rows.push_back(*row);
}

Pages LayOut(const Definition &def, const std::vector<int> &kinds)
{
    Pages pages;
    RowMarker marker;
    auto layout = std::make_unique<Layout>();
    StartMarker(marker, def);
    StartLayout(*layout, def, Take, &pages);
    const auto closeAll = [&](int kind, uint64_t number) {
        while (const uint8_t level = NextToClose(marker, kind)) {
            MarkFoot(marker, level);
            uint8_t printed = 0;
            for (const KindRule &rule : def.Kinds) {
                if (rule.Level != level || printed > 0) continue;
                for (; printed < rule.FootCount; ++printed) {
                    AddRow(*layout, MarkRow(marker, rule.FootRows[printed], number + 1000));
                }
            }
            MarkClosed(marker, level, printed > 0);
        }
    };
    uint64_t number = 0;
    for (const int kind : kinds) {
        closeAll(kind, number);
        MarkRecord(marker, kind);
        for (int i = 0; i < def.Kinds[kind].RowCount; ++i) {
            AddRow(*layout, MarkRow(marker, def.Kinds[kind].Rows[i], number));
        }
        ++number;
    }
    closeAll(-1, number);
    MarkFoot(marker, 0);
    for (int i = 0; i < def.FinishCount; ++i) {
        AddRow(*layout, MarkRow(marker, def.FinishRows[i], number + 1000));
    }
    pages.count = EndLayout(*layout);
    return pages;
}

// "1: 0 1 2 | 2: U 3 4": pages with what stands on them.
std::string Told(const Pages &pages)
{
    std::string text;
    int64_t page = 0;
    for (const Standing &one : pages.standing) {
        if (one.page != page) {
            text += (page > 0 ? " | " : "") + std::to_string(one.page) + ":";
            page = one.page;
        }
        switch (one.what) {
        case Placed::row: text += " " + std::to_string(one.row); break;
        case Placed::again: text += " A" + std::to_string(one.row); break;
        case Placed::carryUp: text += " U"; break;
        case Placed::pageSum: text += " P"; break;
        case Placed::carryDown: text += " D"; break;
        }
    }
    return text;
}

std::vector<int> Times(int count, int kind) { return std::vector<int>(static_cast<size_t>(count), kind); }

std::vector<int> operator+(std::vector<int> first, const std::vector<int> &second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

int32_t Counted(const Definition &def, const std::vector<std::pair<int, int32_t>> &counts)
{
    const CatalogueRow any = {"any", {1, 1, 1, 1, 1, 1, 1, 1, 1}};
    CountingReport *report = CreateCountingReport(&any, def);
    for (const auto &[kind, count] : counts) {
        EXPECT_TRUE(CountRecords(*report, kind, count));
    }
    const int32_t pages = CountedPages(*report);
    DestroyCountingReport(report);
    return pages;
}

} // namespace

TEST(Layout, FillsAPageToItsLastRow)
{
    Definition def = PageOfTen();
    def.Kinds[1] = Printing({lineStyle});
    EXPECT_EQ(Told(LayOut(def, Times(10, 1))), "1: 0 1 2 3 4 5 6 7 8 9");
    EXPECT_EQ(Told(LayOut(def, Times(11, 1))), "1: 0 1 2 3 4 5 6 7 8 9 | 2: 10");
    const Pages empty = LayOut(def, {});
    EXPECT_EQ(empty.count, 1) << "a report without rows is a page with its head";
    EXPECT_TRUE(empty.standing.empty());
}

namespace {

// Where the last of `count` rows of a half comes to stand.
RowSpot EndOfHalf(const Definition &def, int count, RowSpot notBefore)
{
    auto half = std::make_unique<HalfLayout>();
    StartHalf(*half, def, nullptr, nullptr);
    for (int i = 0; i < count; ++i) {
        AddRowOfHalf(*half,
                     {.Offset = 0, .Height = 1000, .Flags = 0, .Level = 0, .Ends = 0, .Style = lineStyle});
    }
    return EndHalf(*half, notBefore);
}

std::pair<int64_t, int32_t> Told(RowSpot spot) { return {spot.Page, spot.Top}; }

using Spot = std::pair<int64_t, int32_t>;

} // namespace

TEST(Layout, LastRowsOfTwoHalvesStandOnOneLine)
{
    const Definition def = PageOfTen();
    EXPECT_EQ(Told(EndOfHalf(def, 4, {})), (Spot{1, 3000}));
    EXPECT_EQ(Told(EndOfHalf(def, 4, {1, 7000})), (Spot{1, 7000}));
    EXPECT_EQ(Told(EndOfHalf(def, 4, {3, 2000})), (Spot{3, 2000})) << "on a later page";
    EXPECT_EQ(Told(EndOfHalf(def, 14, {1, 7000})), (Spot{2, 3000})) << "never higher than where it is";
    EXPECT_EQ(Told(EndOfHalf(def, 11, {})), (Spot{2, 0}));
    EXPECT_EQ(Told(EndOfHalf(def, 0, {})), (Spot{1, 0})) << "nothing is a page as well";
    EXPECT_EQ(Told(LaterOf({1, 7000}, {1, 3000})), (Spot{1, 7000}));
    EXPECT_EQ(Told(LaterOf({1, 7000}, {2, 0})), (Spot{2, 0}));
}

TEST(Layout, CarriesSumsOverAPageBreak)
{
    Definition def = PageOfTen();
    def.Kinds[1] = Printing({lineStyle});
    def.FinishCount = 1;
    def.FinishRows[0] = totalStyle;
    Carry(def, 0, true, true, true);
    // Two rows of sums are kept free at the foot, until the total comes.
    EXPECT_EQ(Told(LayOut(def, Times(8, 1))), "1: 0 1 2 3 4 5 6 7 1008");
    EXPECT_EQ(Told(LayOut(def, Times(9, 1))), "1: 0 1 2 3 4 5 6 7 P D | 2: U 8 P 1009");
    const Pages pages = LayOut(def, Times(9, 1));
    EXPECT_EQ(pages.standing[8].top, 8000) << "the sums stand at the foot of the page";
    EXPECT_EQ(pages.standing[10].top, 0);
    EXPECT_EQ(pages.standing[11].top, 1000);
    // Seven lines fill the second page; the sum of the page and the total still fit.
    EXPECT_EQ(Told(LayOut(def, Times(15, 1))), "1: 0 1 2 3 4 5 6 7 P D | 2: U 8 9 10 11 12 13 14 P 1015");
}

TEST(Layout, BreaksBeforeTheTotalWhenItDoesNotFit)
{
    Definition def = PageOfTen();
    def.Kinds[1] = Printing({lineStyle});
    def.FinishCount = 3;
    def.FinishRows[0] = def.FinishRows[1] = def.FinishRows[2] = totalStyle;
    Carry(def, 0, false, true, true);
    EXPECT_EQ(Told(LayOut(def, Times(9, 1))), "1: 0 1 2 3 4 5 6 7 8 D | 2: U 1009 1009 1009");
    EXPECT_EQ(Told(LayOut(def, Times(7, 1))), "1: 0 1 2 3 4 5 6 1007 1007 1007");
}

TEST(Layout, CarriesOnlyWhatWasCounted)
{
    Definition def = PageOfTen();
    def.Kinds[1] = Printing({lineStyle});
    def.Kinds[2] = Printing({textStyle});
    Carry(def, 0, false, true, true);
    EXPECT_EQ(Told(LayOut(def, Times(10, 2))), "1: 0 1 2 3 4 5 6 7 8 | 2: 9") << "nothing to carry";
    EXPECT_EQ(Told(LayOut(def, Times(1, 1) + Times(9, 2))), "1: 0 1 2 3 4 5 6 7 8 D | 2: U 9");
}

TEST(Layout, KeepsTheRowsOfARecordTogether)
{
    Definition def = PageOfTen();
    def.Kinds[1] = Printing({lineStyle, textStyle, textStyle});
    EXPECT_EQ(Told(LayOut(def, Times(4, 1))), "1: 0 0 0 1 1 1 2 2 2 | 2: 3 3 3");
    def.Kinds[2] = Printing(std::vector<uint8_t>(12, textStyle));
    EXPECT_EQ(Told(LayOut(def, {1, 2})), "1: 0 0 0 | 2: 1 1 1 1 1 1 1 1 1 1 | 3: 1 1")
        << "a record that no page can hold begins on a new one";
}

TEST(Layout, NeverLeavesAHeadAlone)
{
    Definition def = PageOfTen();
    def.Kinds[1] = Printing({headStyle}, 1, {sumStyle});
    def.Kinds[2] = Printing({headStyle}, 2);
    def.Kinds[3] = Printing({lineStyle});
    EXPECT_EQ(Told(LayOut(def, std::vector<int>{1} + Times(7, 3) + std::vector<int>{1, 3})),
              "1: 0 1 2 3 4 5 6 7 1008 | 2: 8 9 1010");
    // Heads of two levels and the first line stay together.
    EXPECT_EQ(Told(LayOut(def, std::vector<int>{1} + Times(6, 3) + std::vector<int>{1, 2, 3})),
              "1: 0 1 2 3 4 5 6 1007 | 2: 7 8 9 1010");
    // A group without lines: the head stays with its foot.
    EXPECT_EQ(Told(LayOut(def, std::vector<int>{1} + Times(7, 3) + std::vector<int>{1})),
              "1: 0 1 2 3 4 5 6 7 1008 | 2: 8 1009");
}

TEST(Layout, KeepsAGroupOnOnePageIfItFitsOnOne)
{
    Definition def = PageOfTen();
    def.Kinds[1] = Printing({headStyle}, 1, {sumStyle});
    def.Kinds[1].Keep = true;
    def.Kinds[2] = Printing({lineStyle});
    const std::vector<int> group = std::vector<int>{1} + Times(4, 2); // with its foot 6 rows
    EXPECT_EQ(Told(LayOut(def, group + group)), "1: 0 1 2 3 4 1005 | 2: 5 6 7 8 9 1010");
    const std::vector<int> high = std::vector<int>{1} + Times(12, 2);
    EXPECT_EQ(Told(LayOut(def, Times(2, 2) + high)), "1: 0 1 2 3 4 5 6 7 8 9 | 2: 10 11 12 13 14 1015")
        << "one that fits on none goes on where it is";
}

TEST(Layout, StartsPagesWithGroupsThatAskForIt)
{
    Definition def = PageOfTen();
    def.Kinds[1] = Printing({headStyle}, 1, {sumStyle});
    def.Kinds[1].NewPage = true;
    def.Kinds[2] = Printing({lineStyle});
    Carry(def, 1, false, true, true);
    EXPECT_EQ(Told(LayOut(def, {1, 2, 1, 2, 2})), "1: 0 1 1002 | 2: 2 3 4 1005")
        << "no empty page before the first";
    EXPECT_EQ(Told(LayOut(def, std::vector<int>{1} + Times(9, 2) + std::vector<int>{1, 2})),
              "1: 0 1 2 3 4 5 6 7 8 D | 2: U 9 1010 | 3: 10 11 1012")
        << "each group carries its own sums";
}

TEST(Layout, RepeatsHeadingsOfGroupsThatGoOn)
{
    Definition def = PageOfTen();
    def.Kinds[1] = Printing({headStyle}, 1, {sumStyle});
    def.Kinds[2] = Printing({headStyle, textStyle}, 2);
    def.Kinds[3] = Printing({lineStyle});
    def.Kinds[4] = Printing({lineStyle});
    def.Kinds[4].Closes = 2;
    def.Kinds[1].HasAgain = def.Kinds[2].HasAgain = true;
    def.Kinds[1].Again = headStyle;
    def.Kinds[2].Again = textStyle;
    EXPECT_EQ(Told(LayOut(def, std::vector<int>{1, 2} + Times(9, 3))),
              "1: 0 1 1 2 3 4 5 6 7 8 | 2: A0 A1 9 10 1011");
    EXPECT_EQ(Told(LayOut(def, std::vector<int>{1, 2} + Times(7, 3) + std::vector<int>{4})),
              "1: 0 1 1 2 3 4 5 6 7 8 | 2: A0 9 1010")
        << "not of a group that has been closed";
    EXPECT_EQ(Told(LayOut(def, std::vector<int>{1, 2} + Times(6, 3) + std::vector<int>{1, 3})),
              "1: 0 1 1 2 3 4 5 6 7 1008 | 2: 8 9 1010")
        << "nor before the next group of the same level";
    Carry(def, 1, false, true, true);
    EXPECT_EQ(Told(LayOut(def, std::vector<int>{1} + Times(12, 3))),
              "1: 0 1 2 3 4 5 6 7 8 D | 2: A0 U 9 10 11 12 1013");
}

TEST(Layout, EndsTheCarryOfAGroupWithoutAFoot)
{
    Definition def = PageOfTen();
    def.Kinds[1] = Printing({headStyle}, 1);
    def.Kinds[2] = Printing({lineStyle});
    Carry(def, 1, false, true, true);
    EXPECT_EQ(Told(LayOut(def, std::vector<int>{1} + Times(8, 2) + std::vector<int>{1, 2})),
              "1: 0 1 2 3 4 5 6 7 8 | 2: 9 10");
}

TEST(Layout, CountsLongRunsAtOnce)
{
    Definition def = PageOfTen();
    def.Kinds[1] = Printing({lineStyle});
    EXPECT_EQ(Counted(def, {{1, 0}}), 1);
    EXPECT_EQ(Counted(def, {{1, 10}}), 1);
    EXPECT_EQ(Counted(def, {{1, 11}}), 2);
    EXPECT_EQ(Counted(def, {{1, INT32_MAX}}), 214748365);
    EXPECT_EQ(Counted(def, {{1, INT32_MAX}, {1, 3}}), 214748365) << "2147483650 rows fill their last page";
    EXPECT_EQ(Counted(def, {{1, INT32_MAX}, {1, 4}}), 214748366);
    def.Kinds[2] = Printing({headStyle}, 1, {sumStyle});
    def.Kinds[2].NewPage = true;
    EXPECT_EQ(Counted(def, {{2, INT32_MAX}}), INT32_MAX);
    EXPECT_EQ(Counted(def, {{2, INT32_MAX}, {2, INT32_MAX}}), INT32_MAX)
        << "no more than the result can hold";
}

TEST(Layout, CountingRefusesWhatTheReportDoesNotHave)
{
    const CatalogueRow one = {"one", {1, 1, 0, 0, 0, 0, 0, 0, 0}};
    CountingReport *report = CreateCountingReport(&one, PageOfTen());
    for (const int kind : {-1, 2, 8, 9, INT32_MIN, INT32_MAX}) {
        EXPECT_FALSE(CountRecords(*report, kind, 1)) << kind;
    }
    EXPECT_FALSE(CountRecords(*report, 1, -1));
    EXPECT_FALSE(CountRecords(*report, 1, INT32_MIN));
    EXPECT_TRUE(CountRecords(*report, 1, 5)) << "a kind of which the template prints nothing";
    EXPECT_EQ(CountedPages(*report), 1);
    DestroyCountingReport(report);
}

namespace {

Definition RandomDefinition(std::mt19937 &random)
{
    const auto upTo = [&](int most) { return static_cast<int>(random() % static_cast<unsigned>(most + 1)); };
    Definition def = PageOfTen();
    def.PageHeight = 4000 + 10 * upTo(2000);
    for (int i = 0; i < def.StyleCount; ++i) {
        def.Styles[i].Height = minRowHeight + upTo(300);
        def.Styles[i].Counts = upTo(2) == 0;
    }
    for (int kind = 0; kind < kindCount; ++kind) {
        KindRule &rule = def.Kinds[kind];
        rule.IsDeclared = upTo(6) > 0;
        rule.RowCount = static_cast<uint8_t>(upTo(8) == 0 ? upTo(30) : upTo(3));
        for (int i = 0; i < rule.RowCount; ++i) {
            rule.Rows[i] = static_cast<uint8_t>(upTo(builtInStyles - 1));
        }
        if (rule.IsDeclared && upTo(1) == 0) {
            rule.Level = static_cast<uint8_t>(1 + upTo(2));
            bool isTaken = false;
            for (int other = 0; other < kind; ++other) {
                isTaken = isTaken || def.Kinds[other].Level == rule.Level;
            }
            if (isTaken) rule.Level = 0;
        }
        if (rule.Level == 0) {
            rule.Closes = static_cast<uint8_t>(upTo(3));
            continue;
        }
        rule.HasAgain = rule.RowCount > 0 && upTo(2) == 0;
        if (rule.HasAgain) rule.Again = rule.Rows[upTo(rule.RowCount - 1)];
        rule.NewPage = upTo(2) == 0;
        rule.Keep = upTo(1) == 0;
        rule.FootCount = static_cast<uint8_t>(upTo(3));
        for (int i = 0; i < rule.FootCount; ++i) {
            rule.FootRows[i] = static_cast<uint8_t>(upTo(builtInStyles - 1));
        }
    }
    def.FinishCount = static_cast<uint8_t>(upTo(3));
    if (upTo(2) > 0) {
        Carry(def, static_cast<uint8_t>(upTo(2)), upTo(1) == 0, upTo(1) == 0, upTo(1) == 0);
    }
    return def;
}

// What every layout must be, whatever the template: all rows, in order, one below the other, within the page.
void Audit(const Definition &def, const Pages &pages, size_t rowCount)
{
    EXPECT_EQ(pages.rows.size(), rowCount);
    int64_t page = 1;
    int32_t bottom = 0;
    size_t row = 0;
    for (const Standing &one : pages.standing) {
        const bool isRow = one.what == Placed::row;
        const int32_t height = isRow                       ? pages.rows[row].Height
                               : one.what == Placed::again ? one.height
                                                           : def.Styles[carryStyle].Height;
        if (one.page != page) {
            ASSERT_EQ(one.page, page + 1);
            page = one.page;
            bottom = 0;
        }
        ASSERT_GE(one.top, bottom) << "two things on one another";
        bottom = one.top + height;
        ASSERT_LE(bottom, BodyHeight(def)) << "beyond the page";
        if (isRow && row > 0) {
            ASSERT_GE(pages.rows[row].Offset % 1000, pages.rows[row - 1].Offset % 1000) << "out of order";
        }
        if (isRow) ++row;
    }
    EXPECT_EQ(page, pages.count);
}

} // namespace

TEST(Layout, HoldsForAnyTemplateAndCountsTheSame)
{
    constexpr unsigned seed = 20240311;
    std::mt19937 random(seed);
    int layouts = 0;
    for (int round = 0; round < 3000; ++round) {
        const Definition def = RandomDefinition(random);
        if (!RowsFitPage(def) || BodyHeight(def) < 2000) continue;
        std::vector<int> kinds;
        std::vector<std::pair<int, int32_t>> counts;
        while (kinds.size() < 200 && random() % 12 != 0) {
            const int kind = static_cast<int>(random() % kindCount);
            if (!def.Kinds[kind].IsDeclared) continue;
            const auto count = static_cast<int32_t>(random() % 3 == 0 ? random() % 150 : random() % 4);
            counts.emplace_back(kind, count);
            kinds = kinds + Times(count, kind);
        }
        const Pages pages = LayOut(def, kinds);
        size_t rows = 0;
        for (const int kind : kinds) {
            rows += def.Kinds[kind].RowCount;
        }
        size_t feet = 0;
        for (const LayoutRow &row : pages.rows) {
            if ((row.Flags & rowFoot) != 0) ++feet;
        }
        Audit(def, pages, rows + feet);
        EXPECT_EQ(Counted(def, counts), pages.count) << "seed " << seed << ", round " << round;
        if (testing::Test::HasFailure()) break;
        ++layouts;
    }
    EXPECT_GT(layouts, 1000);
}
