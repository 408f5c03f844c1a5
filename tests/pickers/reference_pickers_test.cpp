// VARK_HoleZahlungsziel (dialog 116) and VARK_HoleKostenschablone (dialog 133).
#include "src/frame/lifecycle.h"
#include "src/platform/window_api.h"
#include "tests/pickers/pick_books.h"
#include "tests/support/engine_faults.h"

#include <gtest/gtest.h>

using namespace vark;
using namespace vark::test;

namespace {

// Three of each, inserted out of order; the texts' order is not that of the numbers.
void AddReferences(Books &books, int mandant)
{
    books.AddMandant(mandant);
    const struct {
        int32_t Number;
        const char *Text;
    } rows[] = {{30, "30 Tage netto"}, {5, "sofort"}, {14, "14 Tage 2 %"}};
    for (const auto &row : rows) {
        ZahlzielRecord ziel = MakeZahlziel(row.Number);
        SetText(ziel.Text, row.Text);
        books.Insert(mandant, TableZahlziel, ziel);
        KoschaRecord schablone = MakeKoscha(row.Number, 1);
        SetText(schablone.Name, std::string("Schablone ") + row.Text);
        books.Insert(mandant, TableKoscha, schablone);
    }
}

} // namespace

TEST(ZahlungszielPicker, ListsTheTextsByNumberAndBeginsWithTheFirst)
{
    PickBooks books(R"(
        dialog 116
        expect title Zahlzielauswahl
        expect label 1030 &Zahlungsziele:
        expect focus 1030
        expect rows 1030 3
        expect row 1030 sofort
        key Down
        expect row 1030 14 Tage 2 %
        key Down
        expect row 1030 30 Tage netto
        key Enter
    )");
    AddReferences(books, 1);
    EXPECT_EQ(30, VARK_HoleZahlungsziel(nullptr, 1));
    EXPECT_EQ("", books.Trouble());
    EXPECT_EQ("30", books.Remembered("Zahlziel"));
    EXPECT_EQ(0, GetThreadContext()->OpenCounts[TableZahlziel]);
}

TEST(ZahlungszielPicker, OffersTheLastChoiceOfTheMandant)
{
    PickBooks books(R"(
        expect row 1030 14 Tage 2 %
        press 1
        expect row 1030 sofort
        press 1
        expect row 1030 sofort
        press 2
    )");
    AddReferences(books, 1);
    AddReferences(books, 3);
    books.Remember("Zahlziel", "14");
    books.Remember("Zahlziel2", "99"); // is no more
    EXPECT_EQ(14, VARK_HoleZahlungsziel(nullptr, 1));
    EXPECT_EQ(5, VARK_HoleZahlungsziel(nullptr, 3));
    EXPECT_EQ(0, VARK_HoleZahlungsziel(nullptr, 3));
    EXPECT_EQ("", books.Trouble());
    EXPECT_EQ("14", books.Remembered("Zahlziel"));
    EXPECT_EQ("5", books.Remembered("Zahlziel2"));
}

TEST(ZahlungszielPicker, AnEmptyTableGivesAListToCancel)
{
    PickBooks books(R"(
        dialog 116
        expect rows 1030 0
        press 1
        box ok Bitte wählen Sie einen Eintrag aus der Listbox aus.
        expect focus 1030
        press 2
    )");
    books.AddMandant(1);
    EXPECT_EQ(0, VARK_HoleZahlungsziel(nullptr, 1));
    EXPECT_EQ("", books.Trouble());
    EXPECT_EQ("-", books.Remembered("Zahlziel"));
}

TEST(ZahlungszielPicker, AFullListShowsWhatFits)
{
    PickBooks books(R"(
        box ok Die Listbox kann nicht vollständig gefüllt werden!
        dialog 116
        expect rows 1030 2
        activate 1030 1
    )");
    AddReferences(books, 1);
    VarkUiLimitLists(2);
    EXPECT_EQ(14, VARK_HoleZahlungsziel(nullptr, 1));
    EXPECT_EQ("", books.Trouble());
}

TEST(KostenschablonenPicker, ListsTheNamesByNumberAndRemembersTheChoice)
{
    PickBooks books(R"(
        dialog 133
        expect title Kostenschablonenauswahl
        expect label 1052 &Kostenschablonen:
        expect focus 1052
        expect rows 1052 3
        expect row 1052 Schablone sofort
        activate 1052 "Schablone 14 Tage 2 %"
        expect row 1052 Schablone 14 Tage 2 %
        press 1
    )");
    AddReferences(books, 2);
    EXPECT_EQ(14, VARK_HoleKostenschablone(nullptr, 2));
    EXPECT_EQ(14, VARK_HoleKostenschablone(nullptr, 2));
    EXPECT_EQ("", books.Trouble());
    EXPECT_EQ("14", books.Remembered("Kostenschablone1"));
    EXPECT_EQ("-", books.Remembered("Kostenschablone"));
    EXPECT_EQ("-", books.Remembered("Zahlziel1"));
}

TEST(ReferencePickers, AnUnknownMandantIsRefused)
{
    Books books;
    AddReferences(books, 1);
    EXPECT_EQ(-5, VARK_HoleZahlungsziel(nullptr, 2));
    EXPECT_EQ(-5, VARK_HoleKostenschablone(nullptr, -1));
    EXPECT_EQ(Lines{}, books.TakeLog()) << "no call has asked for messages";
    PekoEingabe peko{};
    peko.Mandant = 9;
    EXPECT_EQ(-5, VARK_Peko(1, 4, &peko, 1));
    EXPECT_EQ(Lines{"Der Mandant existiert nicht!"}, books.TakeBoxes());
    EXPECT_EQ(-5, VARK_HoleZahlungsziel(nullptr, 2));
    EXPECT_EQ(Lines{"Der Mandant existiert nicht!"}, books.TakeBoxes()) << "the last call asked for them";
}

TEST(ReferencePickers, AMissingTableIsAFailure)
{
    Books books;
    MandantOptions options;
    options.Without = {TableZahlziel, TableKoscha};
    books.AddMandant(1, options);
    EXPECT_EQ(-3, VARK_HoleZahlungsziel(nullptr, 1));
    EXPECT_EQ(-3, VARK_HoleKostenschablone(nullptr, 1));
    EXPECT_EQ((Lines{"box File " + books.TablePath(1, TableZahlziel) + " not found",
                     "box File " + books.TablePath(1, TableKoscha) + " not found"}),
              books.TakeLog());
}

TEST(ReferencePickers, AnyFailureOfTheEngineEndsWithACodeAndClosedTables)
{
    Books books;
    AddReferences(books, 1);
    EXPECT_EQ(0, VARK_HoleZahlungsziel(nullptr, 1));
    books.TakeLog();
    for (int n = 1;; ++n) {
        FailEngineCall(n);
        const int32_t result = VARK_HoleKostenschablone(nullptr, 1);
        const bool hit = StopEngineFaults() >= n;
        EXPECT_EQ(0, GetThreadContext()->OpenCounts[TableKoscha]) << n;
        const Lines log = books.TakeLog();
        if (!hit) {
            EXPECT_EQ(0, result);
            EXPECT_EQ(Lines{"dialog 133 Kostenschablonenauswahl"}, log);
            break;
        }
        ASSERT_LT(n, 20);
        if (result == 0) continue; // the last call, which closes the table
        EXPECT_EQ(-3, result) << n;
        EXPECT_EQ(1u, log.size()) << n;
    }
}
