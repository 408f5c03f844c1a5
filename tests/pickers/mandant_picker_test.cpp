// VARK_HoleMandantenNr, dialog 101.
#include "src/frame/lifecycle.h"
#include "src/platform/window_api.h"
#include "tests/pickers/pick_books.h"
#include "tests/support/engine_faults.h"

#include <gtest/gtest.h>

using namespace vark;
using namespace vark::test;

namespace {

void AddMandanten(Books &books)
{
    const char *const names[] = {"Zeder & Söhne", "Äpfel AG", "Birnbaum", "aal und Co"};
    int number = 0;
    for (const char *name : names) {
        books.AddMandant(++number);
        books.ChangeMandant(number, [name](FistaRecord &record) { SetText(record.Name, name); });
    }
}

} // namespace

TEST(MandantPicker, ListsTheNamesInGermanOrderAndGivesTheNumber)
{
    PickBooks books(R"(
        dialog 101
        expect title Mandantenauswahl
        expect label 1004 &Mandanten:
        expect focus 1004
        expect rows 1004 4
        expect row 1004
        select 1004 0
        expect row 1004 aal und Co
        select 1004 1
        expect row 1004 Äpfel AG
        select 1004 2
        expect row 1004 Birnbaum
        select 1004 3
        expect row 1004 Zeder & Söhne
        select 1004 "Äpfel AG"
        press 1
    )");
    AddMandanten(books);
    EXPECT_EQ(2, VARK_HoleMandantenNr(nullptr));
    EXPECT_EQ("", books.Trouble());
    EXPECT_EQ("2", books.Remembered("Mandant"));
}

TEST(MandantPicker, OffersTheLastChoice)
{
    PickBooks books(R"(
        expect row 1004 Birnbaum
        key Enter
    )");
    AddMandanten(books);
    books.Remember("Mandant", "3");
    EXPECT_EQ(3, VARK_HoleMandantenNr(nullptr));
    EXPECT_EQ("", books.Trouble());
}

TEST(MandantPicker, ADoubleClickChooses)
{
    PickBooks books("activate 1004 \"Zeder & Söhne\"");
    AddMandanten(books);
    EXPECT_EQ(1, VARK_HoleMandantenNr(nullptr));
    EXPECT_EQ("", books.Trouble());
    EXPECT_EQ("1", books.Remembered("Mandant"));
}

TEST(MandantPicker, OkWithoutALineAsksForOne)
{
    PickBooks books(R"(
        press 1
        box ok Bitte wählen Sie einen Eintrag aus der Listbox aus.
        dialog 101
        expect focus 1004
        press 2
    )");
    AddMandanten(books);
    books.Remember("Mandant", "9"); // no such Mandant
    EXPECT_EQ(0, VARK_HoleMandantenNr(nullptr));
    EXPECT_EQ("", books.Trouble());
    EXPECT_EQ("9", books.Remembered("Mandant")) << "a cancelled dialog remembers nothing";
}

TEST(MandantPicker, TheCloseBoxAndEscapeCancel)
{
    PickBooks books(R"(
        select 1004 1
        close
        select 1004 1
        key Escape
    )");
    AddMandanten(books);
    EXPECT_EQ(0, VARK_HoleMandantenNr(nullptr));
    EXPECT_EQ(0, VARK_HoleMandantenNr(nullptr));
    EXPECT_EQ("", books.Trouble());
    EXPECT_EQ("-", books.Remembered("Mandant"));
}

TEST(MandantPicker, NobodyThereIsACancel)
{
    Books books;
    AddMandanten(books);
    EXPECT_EQ(0, VARK_HoleMandantenNr(nullptr));
    EXPECT_EQ(Lines{"dialog 101 Mandantenauswahl"}, books.TakeLog());
}

TEST(MandantPicker, WithoutAMandantThereIsNothingToChoose)
{
    Books books;
    EXPECT_EQ(-1, VARK_HoleMandantenNr(nullptr));
    EXPECT_EQ(Lines{}, books.TakeLog()) << "the dialog is never seen";
    EXPECT_EQ(0, GetThreadContext()->OpenCounts[TableFista]);
}

TEST(MandantPicker, AFistaThatCannotBeReadEndsTheDialog)
{
    Books books;
    AddMandanten(books);
    EXPECT_EQ(1, VARK_Status());
    for (const uint16_t operation : {uint16_t{12}, uint16_t{6}}) { // the first record, and the next
        FailEngineOperation(operation, 1, 2);
        EXPECT_EQ(-1, VARK_HoleMandantenNr(nullptr));
        EXPECT_EQ(Lines{"box I/O Error"}, books.TakeLog());
        EXPECT_EQ(0, GetThreadContext()->OpenCounts[TableFista]);
    }
    FailEngineOperation(0, 1, 12);
    EXPECT_EQ(-3, VARK_HoleMandantenNr(nullptr));
    StopEngineFaults();
    EXPECT_EQ(Lines{"box File " + books.TablePath(1, TableFista) + " not found"}, books.TakeLog());
}

TEST(MandantPicker, AFullListShowsItsOwnMessageAndWhatFits)
{
    PickBooks books(R"(
        box ok Geben Sie bitte einen Prozentsatz zwischen 0,00 und 99,99 ein.
        expect rows 1004 2
        select 1004 "Zeder & Söhne"
        press 1
    )");
    AddMandanten(books);
    VarkUiLimitLists(2);
    EXPECT_EQ(1, VARK_HoleMandantenNr(nullptr));
    EXPECT_EQ("", books.Trouble());
}

TEST(MandantPicker, ALineWithoutANumberIsRefused)
{
    PickBooks books("activate 1004 \"niemand\"");
    AddMandanten(books);
    FistaRecord nobody{};
    SetText(nobody.Name, "niemand");
    books.Insert(0, TableFista, nobody);
    books.Remember("Mandant", "2");
    EXPECT_EQ(-2, VARK_HoleMandantenNr(nullptr));
    EXPECT_EQ("", books.Trouble());
    EXPECT_EQ("2", books.Remembered("Mandant"));
}

TEST(MandantPicker, LeavesTheTablesAndTheMandantAsTheyWere)
{
    Books books;
    AddMandanten(books);
    EXPECT_EQ(0, VARK_ExistiertKonto(3, "1", 1));
    const ThreadContext &context = *GetThreadContext();
    EXPECT_EQ(3, context.CurrentMandant);
    const int32_t opened = context.OpenCounts[TableFista];
    EXPECT_EQ(0, VARK_HoleMandantenNr(nullptr));
    EXPECT_EQ(opened, context.OpenCounts[TableFista]);
    EXPECT_EQ(3, context.CurrentMandant);
}

TEST(MandantPicker, WithoutADataPathAnswersTheState)
{
    setenv("VARK_CONFIG_DIR", "/dev/null", 1);
    EXPECT_EQ(-36, VARK_HoleMandantenNr(nullptr));
}
