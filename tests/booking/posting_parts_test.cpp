// What a posting is put together from: Zahlungsziel, cost lines, the writing.
#include "src/booking/checks.h"
#include "src/booking/costs.h"
#include "src/booking/written_posting.h"
#include "src/frame/lifecycle.h"
#include "src/frame/mandant.h"
#include "src/frame/record_store.h"
#include "tests/booking/ledger.h"
#include "tests/support/engine_faults.h"

#include <gtest/gtest.h>

using namespace vark;
using namespace vark::test;

namespace {

constexpr uint16_t operationInsert = 2;
constexpr uint16_t operationGetNext = 6;

struct PostingParts : ::testing::Test {
    int32_t Zahlungsziel(const char *soll, uint8_t sollArt, const char *haben, uint8_t habenArt)
    {
        AccountNumber sollkonto;
        AccountNumber habenkonto;
        SetText(sollkonto, Justified(soll));
        SetText(habenkonto, Justified(haben));
        return DefaultZahlungsziel(BoundContext(), sollkonto, habenkonto, sollArt, habenArt);
    }
    // The amounts of the lines that the Kostenschablone makes of a net amount.
    Lines Shares(int32_t number, const char *netto, KostenSeite seite = KostenSeite::Soll)
    {
        Teilbuchung part = PartOf(netto);
        expanded = ExpandKostenschablone(BoundContext(), seite, number, part);
        Lines shares;
        for (int16_t i = 0; i < part.Image.Kostenzeilen; ++i) {
            shares.push_back(TextOf(part.Kostenzeilen[i].Betrag));
        }
        schablone = part.Image.Kostenschablone;
        FreeTeilbuchung(part);
        return shares;
    }
    // Where AssignKostenschablone puts number 9: "soll", "haben", "nowhere" or the code.
    std::string Assign(SakoRecord soll, uint8_t sollArt, SakoRecord haben, uint8_t habenArt)
    {
        const int32_t ownSoll = soll.Kostenschablone;
        const int32_t ownHaben = haben.Kostenschablone;
        const int32_t code = AssignKostenschablone(BoundContext(), soll, sollArt, haben, habenArt, 9, noPart);
        if (code != 1) return std::to_string(code);
        if (soll.Kostenschablone == 9 && haben.Kostenschablone == ownHaben) return "soll";
        if (haben.Kostenschablone == 9 && soll.Kostenschablone == ownSoll) return "haben";
        return "nowhere";
    }

    Ledger books;
    Expansion expanded = Expansion::Failed;
    int32_t schablone = 0;
};

SakoRecord Guv(int32_t schablone = 0)
{
    SakoRecord record = MakeSako("4000", ZuordnungGuv);
    record.Kostenschablone = schablone;
    return record;
}

SakoRecord Aktiva(int32_t schablone = 0)
{
    SakoRecord record = MakeSako("1200", ZuordnungAktiva);
    record.Kostenschablone = schablone;
    return record;
}

constexpr uint8_t S = BuchungSachkonto;
constexpr uint8_t K = BuchungKreditor;
constexpr uint8_t D = BuchungDebitor;

} // namespace

// ---- Zahlungsziel ----

TEST_F(PostingParts, DefaultZahlungszielIsTheSollAccountsBeforeTheHabenAccounts)
{
    EXPECT_EQ(5, Zahlungsziel("10002", D, "70001", K));
    EXPECT_EQ(7, Zahlungsziel("70001", K, "10002", D));
    EXPECT_EQ(7, Zahlungsziel("10000", D, "70001", K));
    EXPECT_EQ(5, Zahlungsziel("1200", S, "10002", D));
}

TEST_F(PostingParts, DefaultZahlungszielIsNoneForSachkontenAndUnknownAccounts)
{
    EXPECT_EQ(0, Zahlungsziel("1200", S, "4000", S));
    EXPECT_EQ(0, Zahlungsziel("10000", D, "70000", K));
    EXPECT_EQ(0, Zahlungsziel("10002", K, "70001", D)) << "each in the other's table";
}

TEST_F(PostingParts, DefaultZahlungszielIsNoneWhenTheEngineFails)
{
    AccountNumber soll;
    AccountNumber haben;
    SetText(soll, "  10002");
    SetText(haben, "   1200");
    ThreadContext &context = BoundContext();
    FailEngineCall(1);
    EXPECT_EQ(0, DefaultZahlungsziel(context, soll, haben, D, S));
    SetText(haben, "  70001");
    FailEngineCall(1);
    EXPECT_EQ(0, DefaultZahlungsziel(context, soll, haben, D, K)) << "nor the other account's";
    StopEngineFaults();
    EXPECT_EQ((Lines{"I/O Error", "I/O Error"}), books.TakeBoxes());
}

TEST_F(PostingParts, ZahlungszielIsCheckedUnlessItIsNone)
{
    ThreadContext &context = BoundContext();
    context.ShowMessages = 1;
    EXPECT_EQ(1, CheckZahlungsziel(context, 0));
    EXPECT_EQ(1, CheckZahlungsziel(context, 5));
    EXPECT_EQ(-27, CheckZahlungsziel(context, 8));
    EXPECT_EQ(Lines{"Das Zahlungsziel ist unzulässig!"}, books.TakeBoxes());
    FailEngineCall(1, 30);
    EXPECT_EQ(-3, CheckZahlungsziel(context, 5));
    StopEngineFaults();
}

TEST_F(PostingParts, KostenschabloneIsCheckedUnlessItIsNone)
{
    books.AddKostenschablone(3, {"100,00"});
    ThreadContext &context = BoundContext();
    context.ShowMessages = 1;
    EXPECT_EQ(1, CheckKostenschablone(context, 0, noPart));
    EXPECT_EQ(1, CheckKostenschablone(context, 3, noPart));
    EXPECT_EQ(-43, CheckKostenschablone(context, -3, noPart));
    EXPECT_EQ(-43, CheckKostenschablone(context, 4, 1));
    EXPECT_EQ(
        (Lines{"Die Kostenschablone ist unzulässig!", "Teilbuchung 2: Die Kostenschablone ist unzulässig!"}),
        books.TakeBoxes());
    FailEngineCall(1, 30);
    EXPECT_EQ(-3, CheckKostenschablone(context, 3, noPart));
    StopEngineFaults();
}

// ---- Which account takes the caller's Kostenschablone ----

TEST_F(PostingParts, KostenschabloneGoesToTheAccountThatHasOneAlready)
{
    EXPECT_EQ("soll", Assign(Guv(1), S, Guv(2), S));
    EXPECT_EQ("haben", Assign(Guv(), S, Guv(2), S));
    EXPECT_EQ("haben", Assign(Guv(), S, Aktiva(2), S)) << "even if that is no GuV account";
    EXPECT_EQ("soll", Assign(Aktiva(1), S, Guv(), S));
}

TEST_F(PostingParts, KostenschabloneGoesToTheFirstGuvAccountWhereNoneHasOne)
{
    EXPECT_EQ("soll", Assign(Guv(), S, Guv(), S));
    EXPECT_EQ("soll", Assign(Guv(), S, Aktiva(), S));
    EXPECT_EQ("haben", Assign(Aktiva(), S, Guv(), S));
}

TEST_F(PostingParts, KostenschabloneGoesToTheOnlySachkonto)
{
    EXPECT_EQ("soll", Assign(Guv(), S, SakoRecord{}, K));
    EXPECT_EQ("haben", Assign(SakoRecord{}, D, Guv(), S));
}

TEST_F(PostingParts, KostenschabloneIsRefusedWithoutAGuvAccount)
{
    BoundContext().ShowMessages = 1;
    EXPECT_EQ("-43", Assign(Aktiva(), S, Aktiva(), S));
    EXPECT_EQ("-43", Assign(Aktiva(1), S, Aktiva(2), S));
    EXPECT_EQ("-43", Assign(Aktiva(), S, SakoRecord{}, K));
    EXPECT_EQ("-43", Assign(SakoRecord{}, D, Aktiva(), S));
    const std::string text = "Bei einer Kostenstellenbuchung muß mindestens ein GuV-Konto beteiligt sein!";
    EXPECT_EQ(Lines(4, text), books.TakeBoxes());
}

TEST_F(PostingParts, KostenschabloneOfAPostingBetweenPersonalAccountsIsDropped)
{
    EXPECT_EQ("nowhere", Assign(SakoRecord{}, D, SakoRecord{}, K));
}

TEST_F(PostingParts, NoKostenschabloneLeavesTheAccountsAlone)
{
    SakoRecord soll = Aktiva(1);
    SakoRecord haben = Aktiva(2);
    EXPECT_EQ(1, AssignKostenschablone(BoundContext(), soll, S, haben, S, 0, noPart));
    EXPECT_EQ(1, +soll.Kostenschablone);
    EXPECT_EQ(2, +haben.Kostenschablone);
}

// ---- Cost lines ----

TEST_F(PostingParts, OneShareOfAHundredPercentIsTheNetAmountAsItStands)
{
    books.AddKostenschablone(1, {"100,00"});
    EXPECT_EQ(Lines{"000000100,01"}, Shares(1, "000000100,01"));
    EXPECT_EQ(Expansion::Done, expanded);
    EXPECT_EQ(1, schablone);
    EXPECT_EQ(Lines{"000000100-01"}, Shares(1, "000000100-01"));
}

TEST_F(PostingParts, TheLastLineTakesUpTheRounding)
{
    books.AddKostenschablone(1, {"033,33", "033,33", "033,33"});
    EXPECT_EQ((Lines{"000000033,33", "000000033,33", "000000033,34"}), Shares(1, "000000100,00"));
    EXPECT_EQ((Lines{"000000033-33", "000000033-33", "000000033-34"}), Shares(1, "000000100-00"));
}

TEST_F(PostingParts, TheLastLineTakesBackWhatIsTooMuch)
{
    // 66,67 % of 0,05 are 0,033335, so 0,03; both together are 0,06 without the correction of the last.
    books.AddKostenschablone(1, {"066,67", "066,67"});
    EXPECT_EQ((Lines{"000000000,03", "000000000,02"}), Shares(1, "000000000,05"));
}

TEST_F(PostingParts, SharesThatDoNotMakeAHundredPercentAreFilledUpByTheLast)
{
    books.AddKostenschablone(1, {"010,00", "020,00"});
    EXPECT_EQ((Lines{"000000010,00", "000000090,00"}), Shares(1, "000000100,00"));
}

TEST_F(PostingParts, ALineHoldsWhatItsRowSays)
{
    books.Insert(1, TableKoscha, MakeKoscha(1, 1));
    KoschazeRecord row = MakeKoschaze(1, "100", "200", 0x41, "100,00", "Miete");
    books.Insert(1, TableKoschaze, row);
    for (const KostenSeite seite : {KostenSeite::Soll, KostenSeite::Haben}) {
        Teilbuchung part = PartOf("000000007,00");
        ASSERT_EQ(Expansion::Done, ExpandKostenschablone(BoundContext(), seite, 1, part));
        ASSERT_EQ(1, +part.Image.Kostenzeilen);
        KobuRecord expected{};
        SetText(expected.Kostenobjekt1, "    100");
        SetText(expected.Kostenobjekt2, "    200");
        expected.Flag = seite == KostenSeite::Haben ? 0x61 : 0x41;
        SetText(expected.Betrag, "000000007,00");
        SetText(expected.Text, "Miete");
        EXPECT_EQ(HexOf(expected), HexOf(part.Kostenzeilen[0]));
        FreeTeilbuchung(part);
    }
}

TEST_F(PostingParts, TheHabenFlagIsAddedAndNotSet)
{
    books.Insert(1, TableKoscha, MakeKoscha(1, 1));
    books.Insert(1, TableKoschaze, MakeKoschaze(1, "100", "", 0x20, "100,00"));
    Teilbuchung part = PartOf("000000007,00");
    ASSERT_EQ(Expansion::Done, ExpandKostenschablone(BoundContext(), KostenSeite::Haben, 1, part));
    EXPECT_EQ(0x40, part.Kostenzeilen[0].Flag);
    FreeTeilbuchung(part);
}

TEST_F(PostingParts, ALongTextOfARowIsCut)
{
    books.Insert(1, TableKoscha, MakeKoscha(1, 1));
    books.Insert(1, TableKoschaze, MakeKoschaze(1, "100", "", 0, "100,00", std::string(104, 'x')));
    Teilbuchung part = PartOf("000000007,00");
    ASSERT_EQ(Expansion::Done, ExpandKostenschablone(BoundContext(), KostenSeite::Soll, 1, part));
    EXPECT_EQ(std::string(72, 'x'), TextOf(part.Kostenzeilen[0].Text));
    FreeTeilbuchung(part);
}

TEST_F(PostingParts, NumberNoneMakesNoLines)
{
    EXPECT_EQ(Lines{}, Shares(0, "000000100,00"));
    EXPECT_EQ(Expansion::Done, expanded);
    EXPECT_EQ(0, schablone);
}

TEST_F(PostingParts, AMissingKostenschabloneIsTold)
{
    EXPECT_EQ(Lines{}, Shares(4, "000000100,00"));
    EXPECT_EQ(Expansion::Missing, expanded);
    EXPECT_EQ(0, schablone);
}

TEST_F(PostingParts, AKostenschabloneWithoutRowsIsMissingAndKeepsItsNumber)
{
    books.Insert(1, TableKoscha, MakeKoscha(4, 2));
    EXPECT_EQ(Lines{}, Shares(4, "000000100,00"));
    EXPECT_EQ(Expansion::Missing, expanded);
    EXPECT_EQ(4, schablone);
}

TEST_F(PostingParts, FewerRowsThanAnnouncedLeaveTheRestUnspread)
{
    books.Insert(1, TableKoscha, MakeKoscha(4, 3));
    books.Insert(1, TableKoschaze, MakeKoschaze(4, "100", "", 0, "033,33"));
    books.Insert(1, TableKoschaze, MakeKoschaze(4, "101", "", 0, "033,33"));
    books.AddKostenschablone(5, {"100,00"}); // the row behind belongs to another one
    EXPECT_EQ((Lines{"000000033,33", "000000033,33"}), Shares(4, "000000100,00"));
    EXPECT_EQ(Expansion::Done, expanded);
}

TEST_F(PostingParts, MoreRowsThanAnnouncedAreLeftOut)
{
    books.Insert(1, TableKoscha, MakeKoscha(4, 1));
    books.Insert(1, TableKoschaze, MakeKoschaze(4, "100", "", 0, "050,00"));
    books.Insert(1, TableKoschaze, MakeKoschaze(4, "101", "", 0, "050,00"));
    EXPECT_EQ(Lines{"000000100,00"}, Shares(4, "000000100,00")) << "the last one announced takes all";
}

TEST_F(PostingParts, NoRowsAnnouncedMakeNoLines)
{
    for (const int16_t count : {int16_t{0}, int16_t{-1}}) {
        const int32_t number = 4 - count;
        books.Insert(1, TableKoscha, MakeKoscha(number, count));
        books.Insert(1, TableKoschaze, MakeKoschaze(number, "100", "", 0, "100,00"));
        EXPECT_EQ(Lines{}, Shares(number, "000000100,00"));
        EXPECT_EQ(Expansion::Done, expanded);
    }
}

TEST_F(PostingParts, SharesThatOverflowFail)
{
    books.AddKostenschablone(1, {"100,00", "100,00"});
    EXPECT_EQ(Lines{"999999999,99"}, Shares(1, "999999999,99"));
    EXPECT_EQ(Expansion::Failed, expanded);
}

TEST_F(PostingParts, AnEngineFailureBetweenTheRowsFails)
{
    books.AddKostenschablone(1, {"050,00", "050,00"});
    BoundContext();
    Teilbuchung part = PartOf("000000100,00");
    FailEngineOperation(operationGetNext, 1, 2);
    EXPECT_EQ(Expansion::Failed, ExpandKostenschablone(BoundContext(), KostenSeite::Soll, 1, part));
    StopEngineFaults();
    EXPECT_EQ(Lines{"I/O Error"}, books.TakeBoxes());
    FreeTeilbuchung(part);
}

// ---- Writing ----

namespace {

// A posting of `parts` Teilbuchungen with `lines` cost lines each.
Buchung PostingOf(int parts, int lines)
{
    Buchung buchung{};
    SetText(buchung.Bat.Buchungsdatum, "150518");
    SetText(buchung.Bat.ZweitesDatum, "160518");
    buchung.Bat.Stapel = 16;
    for (int i = 0; i < parts; ++i) {
        Teilbuchung part = PartOf("000000001,00");
        SetText(part.Image.Text, "Teil " + std::to_string(i));
        part.Image.Kostenzeilen = static_cast<int16_t>(lines);
        part.Kostenzeilen = static_cast<KobuRecord *>(std::calloc(10, sizeof(KobuRecord)));
        for (int line = 0; line < lines; ++line) {
            SetText(part.Kostenzeilen[line].Text, std::to_string(i) + "/" + std::to_string(line));
        }
        EXPECT_TRUE(StoreTeilbuchung(buchung, part, i, i == 0 ? 2 : 0));
        EXPECT_EQ(nullptr, +part.Kostenzeilen) << "the posting owns the lines now";
        ++buchung.Bat.Anzahl;
    }
    return buchung;
}

} // namespace

TEST_F(PostingParts, TeilbuchungenAreStoredInTheirOrder)
{
    Buchung buchung = PostingOf(4, 1);
    EXPECT_EQ("Teil 0", TextOf(buchung.Bat.Teil.Text));
    for (int i = 1; i < 4; ++i) {
        EXPECT_EQ("Teil " + std::to_string(i), TextOf(buchung.Weitere[i - 1].Image.Text));
        EXPECT_EQ(std::to_string(i) + "/0", TextOf(buchung.Weitere[i - 1].Kostenzeilen[0].Text));
    }
    FreeBuchung(buchung);
    EXPECT_EQ(HexOf(BatRecord{}), HexOf(buchung.Bat));
    EXPECT_EQ(nullptr, buchung.Weitere);
    FreeBuchung(buchung);
}

TEST_F(PostingParts, APostingIsWrittenWithItsPartsAndLines)
{
    Buchung buchung = PostingOf(3, 2);
    ASSERT_TRUE(WriteBuchung(BoundContext(), buchung, 0));
    const BatRecord bat = books.OnlyPosting();
    EXPECT_EQ(1, +bat.Buchungsnummer);
    EXPECT_EQ(HexOf(bat), HexOf(buchung.Bat)) << "the numbers come back to the caller";
    const std::vector<SplitRecord> parts = books.Parts();
    ASSERT_EQ(2u, parts.size());
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(bat.Buchungsnummer, +parts[static_cast<size_t>(i)].Buchungsnummer);
        EXPECT_EQ(i + 1, +parts[static_cast<size_t>(i)].Splitnummer);
        EXPECT_EQ("Teil " + std::to_string(i + 1), TextOf(parts[static_cast<size_t>(i)].Text));
    }
    Lines lines;
    for (const KobuRecord &line : books.CostLines()) {
        lines.push_back(TextOf(line.Text) + " of " + std::to_string(line.FinaleBuchung) + " " +
                        std::to_string(line.Buchungsnummer) + " " + std::to_string(line.Splitnummer) +
                        " on " + TextOf(line.Datum));
    }
    EXPECT_EQ((Lines{"0/0 of 0 1 0 on 180516", "0/1 of 0 1 0 on 180516", "1/0 of 0 0 1 on 180516",
                     "1/1 of 0 0 1 on 180516", "2/0 of 0 0 2 on 180516", "2/1 of 0 0 2 on 180516"}),
              lines);
    FreeBuchung(buchung);
}

TEST_F(PostingParts, APostingMayBeWrittenUnderAGivenNumber)
{
    Buchung buchung = PostingOf(1, 0);
    ASSERT_TRUE(WriteBuchung(BoundContext(), buchung, 77));
    EXPECT_EQ(77, +books.OnlyPosting().Buchungsnummer);
    buchung.Bat.Buchungsnummer = 0;
    ASSERT_TRUE(WriteBuchung(BoundContext(), buchung, 0));
    EXPECT_EQ(78, +books.Postings().back().Buchungsnummer);
    FreeBuchung(buchung);
}

TEST_F(PostingParts, CostLinesGoToTheMandantsYearWhateverTheWorkingYearIs)
{
    ThreadContext &context = BoundContext();
    ASSERT_TRUE(SelectYear(context, "1997"));
    Buchung buchung = PostingOf(2, 1);
    ASSERT_TRUE(WriteBuchung(context, buchung, 0));
    FreeBuchung(buchung);
    EXPECT_EQ(2u, books.CostLines("1998").size());
    EXPECT_EQ(0u, books.CostLines("1997").size());
    EXPECT_EQ(1u, books.Postings().size());
}

TEST_F(PostingParts, EveryRefusedInsertLeavesNothingAndNoTransaction)
{
    ThreadContext &context = BoundContext();
    for (int n = 1; n <= 9; ++n) { // bat, 2 lines, split, 2 lines, split, 2 lines
        Buchung buchung = PostingOf(3, 2);
        FailEngineOperation(operationInsert, n, 18);
        EXPECT_FALSE(WriteBuchung(context, buchung, 0)) << n;
        StopEngineFaults();
        FreeBuchung(buchung);
        EXPECT_EQ(0, context.TransactionDepth);
        EXPECT_EQ(0, context.HoldOpen);
        EXPECT_TRUE(books.IsEmpty()) << n;
        EXPECT_EQ(Lines{"Disk full"}, books.TakeBoxes());
    }
    Buchung buchung = PostingOf(3, 2);
    EXPECT_TRUE(WriteBuchung(context, buchung, 0)) << "and the thread goes on";
    FreeBuchung(buchung);
    EXPECT_EQ(1, +books.OnlyPosting().Buchungsnummer);
}

TEST_F(PostingParts, ARefusedBeginOrEndLeavesNothing)
{
    ThreadContext &context = BoundContext();
    for (const uint16_t operation : {uint16_t{19}, uint16_t{20}}) {
        Buchung buchung = PostingOf(2, 1);
        FailEngineOperation(operation, 1, 36);
        EXPECT_FALSE(WriteBuchung(context, buchung, 0));
        StopEngineFaults();
        FreeBuchung(buchung);
        EXPECT_EQ(0, context.TransactionDepth);
        EXPECT_TRUE(books.IsEmpty());
    }
    Buchung buchung = PostingOf(2, 1);
    EXPECT_TRUE(WriteBuchung(context, buchung, 0));
    FreeBuchung(buchung);
}

TEST_F(PostingParts, CostLinesThatCannotBeOpenedInTheMandantsYearLeaveNoTransaction)
{
    ThreadContext &context = BoundContext();
    ASSERT_TRUE(SelectYear(context, "1997"));
    Buchung buchung = PostingOf(1, 1);
    FailEngineOperation(0, 1, 12);
    EXPECT_FALSE(WriteBuchung(context, buchung, 0));
    StopEngineFaults();
    EXPECT_EQ(0, context.TransactionDepth);
    EXPECT_TRUE(books.IsEmpty());
    EXPECT_TRUE(WriteBuchung(context, buchung, 0)) << "the next posting of the thread is not swallowed";
    FreeBuchung(buchung);
    EXPECT_EQ(1u, books.Postings().size());
}
