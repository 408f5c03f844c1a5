// Hauptabschlussübersicht: what may go wrong, and a year of random books reckoned a second time.
#include "include/vark40.h"
#include "src/reports/frame/report_params.h"
#include "tests/support/books.h"
#include "tests/support/recording_engine.h"
#include "tests/support/report_faults.h"

#include <gtest/gtest.h>
#include <random>
#include <string>

using namespace vark;
using namespace vark::test;

namespace {

constexpr char failure[] = "Die Hauptabschlußübersicht konnte nicht erstellt werden!";

StructureRecord Node(int32_t id, int32_t next, int32_t child, const std::string &text, uint16_t art)
{
    StructureRecord node{};
    node.Id = id;
    node.Next = next;
    node.Child = child;
    node.Art = art;
    SetText(node.Text, art == StructureGruppe ? text : Justified(text));
    return node;
}

struct Hauptabschluss : testing::Test {
    Books books;
    RecordingEngine sent;

    void SetUp() override
    {
        books.AddMandant(1);
        books.Insert(1, TableBilaktau, Node(1, 0, 2, "Aktiva", StructureGruppe));
        books.Insert(1, TableBilaktau, Node(2, 3, 0, "1000", 0));
        books.Insert(1, TableBilaktau, Node(3, 0, 0, "1200", 0));
        books.Insert(1, TableSako, MakeSako("1000"));
        books.Insert(1, TableSako, MakeSako("1200"));
        EXPECT_EQ(1, VARK_Status());
        sent.Install();
    }
    void TearDown() override { VARK_SchliesseDB(); }

    void ExpectFailure()
    {
        ReportParams params{};
        EXPECT_EQ(nullptr, VARK_HauptAbschluss(1, nullptr, &params));
        EXPECT_EQ(0u, uint32_t{params.ViewResult});
        EXPECT_EQ(Lines{failure}, books.TakeBoxes());
        EXPECT_EQ("close 7", sent.Calls.back());
    }
};

int64_t Pfennig(const std::string &amount)
{
    const int64_t value = std::stoll(amount.substr(0, 9) + amount.substr(10));
    return amount[9] == '-' ? -value : value;
}

std::string AmountOf(int64_t pfennig)
{
    char text[32];
    std::snprintf(text, sizeof text, "%09lld,%02lld", static_cast<long long>(pfennig / 100),
                  static_cast<long long>(pfennig % 100));
    return text;
}

std::string FieldOf(const std::string &record, const std::string &name)
{
    const size_t at = record.find(name + "=") + name.size() + 1;
    return record.substr(at, record.find(" |", at) - at);
}

} // namespace

TEST_F(Hauptabschluss, IsWholeOrNotThereWhateverFails)
{
    ExpectWholeOrNotThere(
        {.Installation = &books,
         .Sent = &sent,
         .Params = {},
         .Call = [](ReportParams *params) { return VARK_HauptAbschluss(1, nullptr, params); },
         .Failure = failure});
}

TEST_F(Hauptabschluss, TreeWithoutARootFails)
{
    VARK_SchliesseDB();
    books.EmptyTable(1, TableBilaktau);
    ExpectFailure();
}

TEST_F(Hauptabschluss, MissingNodeFailsAndIsNeverPassedOver)
{
    books.Replace(1, TableBilaktau, Node(3, 4, 0, "1200", 0));
    ExpectFailure();
}

TEST_F(Hauptabschluss, LeavesInARingFailInsteadOfGoingRound)
{
    books.Replace(1, TableBilaktau, Node(3, 2, 0, "1200", 0));
    ExpectFailure();
    EXPECT_LE(sent.Records(1).size(), 3u) << "no more lines than the table has records";
}

TEST_F(Hauptabschluss, SumWithoutRoomIsNeverPrinted)
{
    SakoRecord full = MakeSako("1200");
    SetText(full.Umsaetze.Monat[0].Haben, "999999999,99");
    SetText(full.Umsaetze.Slot0.Haben, "000000000,01");
    books.Replace(1, TableSako, full);
    ExpectFailure();
    EXPECT_EQ(1u, sent.Records(1).size()) << "the line before it was sent";
}

TEST_F(Hauptabschluss, MissingTableIsToldBeforeTheHeadGoesOut)
{
    Books &installation = books;
    VARK_SchliesseDB();
    MandantOptions options;
    options.Without = {TableBilaktau};
    installation.AddMandant(2, options);
    ReportParams params{};
    EXPECT_EQ(nullptr, VARK_HauptAbschluss(2, nullptr, &params));
    EXPECT_EQ((Lines{"open or_hab.rs tervoHABSCHLUSS0.0 0", "close 7"}), sent.Calls);
    const Lines boxes = books.TakeBoxes();
    ASSERT_EQ(2u, boxes.size());
    EXPECT_EQ(failure, boxes[1]);
}

TEST_F(Hauptabschluss, SumsOfRandomBooksAgreeWithASecondReckoning)
{
    constexpr unsigned seed = 19980630;
    std::mt19937 random(seed);
    std::uniform_int_distribution<int64_t> amounts(0, 5'000'000);
    int64_t soll = 0;
    int64_t haben = 0;
    const auto fill = [&](SollHaben &pair) {
        const int64_t s = amounts(random);
        const int64_t h = amounts(random);
        soll += s;
        haben += h;
        SetText(pair.Soll, AmountOf(s));
        SetText(pair.Haben, AmountOf(h));
    };
    constexpr int accounts = 40;
    for (int i = 0; i < accounts; ++i) {
        const std::string number = std::to_string(2000 + i);
        SakoRecord record = MakeSako(number);
        fill(record.Umsaetze.Vortrag);
        fill(record.Umsaetze.Slot0);
        for (SollHaben &month : record.Umsaetze.Monat) {
            fill(month);
        }
        books.Insert(1, TableSako, record);
        books.Insert(1, TableBilaktau, Node(0, 0, 0, number, 0));
    }
    ReportParams params{};
    EXPECT_NE(nullptr, VARK_HauptAbschluss(1, nullptr, &params));
    int64_t sumSoll = 0;
    int64_t sumHaben = 0;
    for (const std::string &line : sent.Records(1)) {
        sumSoll += Pfennig(FieldOf(line, "SummeSoll"));
        sumHaben += Pfennig(FieldOf(line, "SummeHaben"));
    }
    EXPECT_EQ(accounts + 2u, sent.Records(1).size());
    EXPECT_EQ(soll, sumSoll) << "seed " << seed;
    EXPECT_EQ(haben, sumHaben) << "seed " << seed;
}

TEST(HauptabschlussDialog, YearThatIsNotBookableKeepsItOpen)
{
    Books books("dialog 112\ntext 20000 1990\npress 1\nbox ok innerhalb der bebuchbaren Geschäftsjahre\n"
                "text 20000 abc\npress 1\nbox ok Die Jahresangabe ist unzulässig!\npress 2\n");
    books.AddMandant(1);
    EXPECT_EQ(1, VARK_Status());
    RecordingEngine sent;
    sent.Install();
    ReportParams params{};
    EXPECT_EQ(nullptr, VARK_HauptAbschluss(1, nullptr, &params));
    EXPECT_TRUE(sent.Calls.empty());
    for (const std::string &line : books.TakeLog()) {
        EXPECT_FALSE(line.starts_with("script:")) << line;
    }
    VARK_SchliesseDB();
}
