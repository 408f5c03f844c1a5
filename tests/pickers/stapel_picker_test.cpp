// VARK_HoleStapelNr: dialog 103 in both modes, and dialogs 108 and 109 behind it.
#include "src/frame/lifecycle.h"
#include "src/platform/window_api.h"
#include "tests/pickers/pick_books.h"
#include "tests/support/engine_faults.h"

#include <algorithm>
#include <gtest/gtest.h>

using namespace vark;
using namespace vark::test;

namespace {

constexpr uint16_t deleteOperation = 4;

RecordManagerEntry realEngine;
int locks; // asked for and not given back

int16_t VARK_CALL RefuseUpdates(uint16_t operation, void *block, void *data, uint32_t *length, void *key,
                                uint8_t keyLength, int8_t keyNumber)
{
    if (operation == 205) ++locks;
    if (operation == 27) --locks;
    if (operation == 3) return 18;
    return realEngine(operation, block, data, length, key, keyLength, keyNumber);
}

void AddStapel(Books &books, int32_t number, const std::string &name, int16_t interval = 0)
{
    StapelRecord record = MakeStapel(number, name);
    record.Intervall = interval;
    std::fill(std::begin(record.Reserved38), std::end(record.Reserved38), '\x55');
    books.Insert(1, TableStapel, record);
}

// A posting with `parts` Teilbuchungen, each with two cost lines.
int32_t AddPosting(Books &books, int32_t stapel, int parts = 1, uint8_t settlement = 0)
{
    BatRecord bat{};
    bat.Stapel = stapel;
    bat.Anzahl = static_cast<int16_t>(parts);
    bat.OpAusgleich = settlement;
    books.Insert(1, TableBat, bat);
    KobuRecord line{};
    line.Buchungsnummer = bat.Buchungsnummer;
    books.Insert(1, TableKobu, line);
    books.Insert(1, TableKobu, line);
    for (int part = 1; part < parts; ++part) {
        SplitRecord split{};
        split.Buchungsnummer = bat.Buchungsnummer;
        books.Insert(1, TableSplit, split);
        line.Buchungsnummer = 0;
        line.Splitnummer = split.Splitnummer;
        books.Insert(1, TableKobu, line);
        books.Insert(1, TableKobu, line);
    }
    return bat.Buchungsnummer;
}

// 1 and 15 are the application's; 16 holds a posting, 17 comes again every three months and holds one, 18
// comes again yearly, 19 is empty.
void AddBooks(Books &books)
{
    books.AddMandant(1);
    AddStapel(books, 1, "System");
    AddStapel(books, 15, "Archiv");
    AddStapel(books, 16, "Mai");
    AddStapel(books, 17, "Miete", 3);
    AddStapel(books, 18, "Beiträge", 12);
    AddStapel(books, 19, "leer");
    AddPosting(books, 1);
    AddPosting(books, 16);
    AddPosting(books, 17);
}

struct Size {
    size_t Stapel, Bat, Split, Kobu;
    bool operator==(const Size &) const = default;
};

Size SizeOf(const Books &books)
{
    return {books.Count(1, TableStapel), books.Count(1, TableBat), books.Count(1, TableSplit),
            books.Count(1, TableKobu)};
}

StapelRecord StapelOf(const Books &books, int32_t number)
{
    for (const StapelRecord &record : books.Read<StapelRecord>(1, TableStapel)) {
        if (record.Nummer == number) return record;
    }
    return {};
}

} // namespace

// ---- Choosing ----

TEST(StapelPicker, SelectionListsWhatThePersonMayBookInto)
{
    PickBooks books(R"(
        dialog 103
        expect title Stapelauswahl
        expect label 1000 &Stapel:
        expect hidden 3
        expect hidden 4
        expect focus 1000
        expect rows 1000 4
        expect row 1000
        select 1000 0
        expect row 1000 Mai [B]
        select 1000 1
        expect row 1000 Miete [W3B]
        select 1000 2
        expect row 1000 Beiträge [W12]
        select 1000 3
        expect row 1000 leer
        press 1
    )");
    AddBooks(books);
    EXPECT_EQ(19, VARK_HoleStapelNr(nullptr, 1));
    EXPECT_EQ("", books.Trouble());
    EXPECT_EQ("19", books.Remembered("Stapel"));
}

TEST(StapelPicker, ManagementListsAllAndOffersTheLastChoice)
{
    PickBooks books(R"(
        dialog 103
        expect title Stapelverwaltung
        expect visible 3
        expect visible 4
        expect rows 1000 6
        expect row 1000 Miete [W3B]
        select 1000 0
        expect row 1000 System [B]
        select 1000 1
        expect row 1000 Archiv
        press 1
        expect row 1000 Archiv
        activate 1000 2
    )");
    AddBooks(books);
    books.Remember("Stapel", "17");
    EXPECT_EQ(15, VARK_HoleStapelNr(nullptr, -1));
    EXPECT_EQ("15", books.Remembered("Stapel"));
    EXPECT_EQ(16, VARK_HoleStapelNr(nullptr, -1));
    EXPECT_EQ("", books.Trouble());
}

TEST(StapelPicker, TheChoiceIsTheMandantsOwn)
{
    PickBooks books(R"(
        expect row 1000
        press 1
        box ok Bitte wählen Sie einen Eintrag aus der Listbox aus.
        expect focus 1000
        select 1000 0
        press 1
    )");
    AddBooks(books);
    books.AddMandant(11);
    books.Insert(11, TableStapel, MakeStapel(16));
    books.Remember("Stapel", "16");
    EXPECT_EQ(16, VARK_HoleStapelNr(nullptr, 11));
    EXPECT_EQ("", books.Trouble());
    EXPECT_EQ("16", books.Remembered("Stapel10"));
}

TEST(StapelPicker, CancelGivesZeroAndRemembersNothing)
{
    PickBooks books(R"(
        select 1000 1
        press 2
        select 1000 1
        close
    )");
    AddBooks(books);
    EXPECT_EQ(0, VARK_HoleStapelNr(nullptr, 1));
    EXPECT_EQ(0, VARK_HoleStapelNr(nullptr, -1));
    EXPECT_EQ("", books.Trouble());
    EXPECT_EQ("-", books.Remembered("Stapel"));
    EXPECT_EQ(0, GetThreadContext()->OpenCounts[TableStapel]);
    EXPECT_EQ(1, GetThreadContext()->OpenCounts[TableBat]);
}

TEST(StapelPicker, AnUnknownMandantIsRefusedInEitherMode)
{
    Books books;
    AddBooks(books);
    EXPECT_EQ(-5, VARK_HoleStapelNr(nullptr, 2));
    EXPECT_EQ(-5, VARK_HoleStapelNr(nullptr, -2));
    EXPECT_EQ(-5, VARK_HoleStapelNr(nullptr, 0));
    EXPECT_EQ(-5, VARK_HoleStapelNr(nullptr, INT32_MIN));
    EXPECT_EQ(Lines{}, books.TakeLog());
}

TEST(StapelPicker, AMissingTableIsAFailure)
{
    Books books;
    MandantOptions options;
    options.Without = {TableStapel};
    books.AddMandant(1, options);
    EXPECT_EQ(-3, VARK_HoleStapelNr(nullptr, 1));
    EXPECT_EQ(Lines{"box File " + books.TablePath(1, TableStapel) + " not found"}, books.TakeLog());
}

TEST(StapelPicker, AFullListShowsWhatFits)
{
    PickBooks books(R"(
        box ok Die Listbox kann nicht vollständig gefüllt werden!
        expect rows 1000 2
        activate 1000 1
    )");
    AddBooks(books);
    VarkUiLimitLists(2);
    EXPECT_EQ(17, VARK_HoleStapelNr(nullptr, 1));
    EXPECT_EQ("", books.Trouble());
}

TEST(StapelPicker, AnyFailureOfTheEngineEndsWithACodeAndClosedTables)
{
    Books books;
    AddBooks(books);
    EXPECT_EQ(0, VARK_HoleStapelNr(nullptr, 1));
    books.TakeLog();
    for (int n = 1;; ++n) {
        FailEngineCall(n);
        const int32_t result = VARK_HoleStapelNr(nullptr, 1);
        const bool hit = StopEngineFaults() >= n;
        EXPECT_EQ(0, GetThreadContext()->OpenCounts[TableStapel]) << n;
        EXPECT_EQ(1, GetThreadContext()->OpenCounts[TableBat]) << n;
        books.TakeLog();
        if (!hit) {
            EXPECT_EQ(0, result);
            break;
        }
        ASSERT_LT(n, 40);
        if (result != 0) { // 0: only the closing failed
            EXPECT_EQ(-3, result) << n;
        }
    }
}

TEST(StapelPicker, TabGoesThroughTheListAndTheButtons)
{
    PickBooks books(R"(
        expect focus 1000
        key Tab
        expect focus 1
        key Tab
        expect focus 2
        key Tab
        expect focus 3
        key Tab
        expect focus 4
        key Tab
        expect focus 1000
        key Alt+n
        dialog 108
        expect focus 1005
        key Tab
        expect focus 1007
        key Space
        key Tab
        expect focus 1014
        key Tab
        expect focus 1
        key Tab
        expect focus 2
        key Alt+n
        expect focus 1005
        key Alt+w
        expect unchecked 1007
        key Alt+w
        key Alt+i
        expect focus 1014
        key Alt+a
        dialog 103
        select 1000 2
        key Alt+ä
        dialog 109
        key Tab
        key Tab
        expect focus 1
        key Tab
        expect focus 4
        key Tab
        expect focus 2
        key Escape
        dialog 103
        key Alt+s
        expect focus 1000
        key Alt+a
    )");
    AddBooks(books);
    EXPECT_EQ(0, VARK_HoleStapelNr(nullptr, -1));
    EXPECT_EQ("", books.Trouble());
}

// ---- Making ----

TEST(StapelCreation, InsertsARecordAndItsLine)
{
    PickBooks books(R"(
        dialog 103
        press 3
        dialog 108
        expect title Stapel anlegen
        expect label 1005 &Name:
        expect label 1014 &Intervall:
        expect focus 1005
        expect text 1005
        expect unchecked 1007
        expect disabled 1014
        expect text 1014 1
        text 1005 Löhne
        press 1
        dialog 103
        expect rows 1000 7
        expect row 1000 Löhne
        press 1
    )");
    AddBooks(books);
    EXPECT_EQ(20, VARK_HoleStapelNr(nullptr, -1));
    EXPECT_EQ("", books.Trouble());
    StapelRecord expected = MakeStapel(20, "Löhne");
    EXPECT_EQ(HexOf(expected), HexOf(StapelOf(books, 20)));
    EXPECT_EQ("20", books.Remembered("Stapel"));
    EXPECT_EQ(0, GetThreadContext()->OpenCounts[TableStapel]);
}

TEST(StapelCreation, ARecurringStapelHasAnInterval)
{
    PickBooks books(R"(
        press 3
        text 1005 Versicherungen
        check 1007
        expect enabled 1014
        uncheck 1007
        expect disabled 1014
        check 1007
        text 1014 123
        expect text 1014 12
        press 1
        expect row 1000 Versicherungen [W12]
        press 3
        text 1005 Strom
        check 1007
        press 1
        expect row 1000 Strom [W1]
        press 3
        text 1005 einmalig
        check 1007
        text 1014 9
        uncheck 1007
        press 1
        expect row 1000 einmalig
        press 2
    )");
    AddBooks(books);
    EXPECT_EQ(0, VARK_HoleStapelNr(nullptr, -1));
    EXPECT_EQ("", books.Trouble());
    EXPECT_EQ(12, StapelOf(books, 20).Intervall);
    EXPECT_EQ(1, StapelOf(books, 21).Intervall);
    EXPECT_EQ(0, StapelOf(books, 22).Intervall);
}

TEST(StapelCreation, AsksUntilTheFieldsAreGood)
{
    PickBooks books(R"(
        press 3
        check 1007
        text 1014 0
        press 1
        box ok Bitte geben Sie einen Stapelnamen ein!
        expect focus 1005
        text 1005 12345678901234567890123456789012345
        expect text 1005 1234567890123456789012345678901
        text 1005 mai
        press 1
        box ok Das Intervall eines wiederkehrenden Stapels muß zwischen 1 und 99 Monaten liegen
        expect focus 1014
        text 1014
        press 1
        box ok Das Intervall
        text 1014 99
        press 1
        box ok Der Stapel 'mai' existiert bereits!
        dialog 108
        expect focus 1005
        text 1005 Miete
        press 1
        box ok Der Stapel 'Miete' existiert bereits!
        text 1005 Mie
        press 1
        expect row 1000 Mie [W99]
        press 2
    )");
    AddBooks(books);
    EXPECT_EQ(0, VARK_HoleStapelNr(nullptr, -1));
    EXPECT_EQ("", books.Trouble());
    EXPECT_EQ(7u, books.Count(1, TableStapel));
}

TEST(StapelCreation, ANameMayLookLikeTheEndOfALine)
{
    PickBooks books(R"(
        press 3
        text 1005 Miete [W3B]
        press 1
        expect rows 1000 7
        expect row 1000 6
        press 3
        text 1005 Miete [W3B]
        press 1
        box ok Der Stapel 'Miete [W3B]' existiert bereits!
        press 2
        press 2
    )");
    AddBooks(books);
    EXPECT_EQ(0, VARK_HoleStapelNr(nullptr, -1));
    EXPECT_EQ("", books.Trouble());
}

TEST(StapelCreation, CancelledMakesNothing)
{
    PickBooks books(R"(
        press 3
        text 1005 Löhne
        press 2
        dialog 103
        expect rows 1000 6
        press 3
        text 1005 Löhne
        close
        dialog 103
        press 2
    )");
    AddBooks(books);
    EXPECT_EQ(0, VARK_HoleStapelNr(nullptr, -1));
    EXPECT_EQ("", books.Trouble());
    EXPECT_EQ(6u, books.Count(1, TableStapel));
}

TEST(StapelCreation, ARefusedInsertKeepsTheDialogOpen)
{
    PickBooks books(R"(
        press 3
        text 1005 Löhne
        press 1
        box ok Disk full
        box ok Der Stapel 'Löhne' konnte nicht angelegt werden!
        dialog 108
        press 1
        dialog 103
        expect row 1000 Löhne
        press 2
    )");
    AddBooks(books);
    FailEngineOperation(2, 1, 18);
    EXPECT_EQ(0, VARK_HoleStapelNr(nullptr, -1));
    StopEngineFaults();
    EXPECT_EQ("", books.Trouble());
    EXPECT_EQ(7u, books.Count(1, TableStapel));
    EXPECT_EQ(0, GetThreadContext()->OpenCounts[TableStapel]);
}

TEST(StapelCreation, AFullListIsSaid)
{
    PickBooks books(R"(
        press 3
        text 1005 Löhne
        press 1
        box ok Die Listbox kann nicht vollständig gefüllt werden!
        dialog 103
        expect rows 1000 6
        press 2
    )");
    AddBooks(books);
    VarkUiLimitLists(6);
    EXPECT_EQ(0, VARK_HoleStapelNr(nullptr, -1));
    EXPECT_EQ("", books.Trouble());
}

// ---- Changing ----

TEST(StapelChange, RewritesNameAndIntervalAndKeepsTheRest)
{
    PickBooks books(R"(
        select 1000 "Miete [W3B]"
        press 4
        dialog 109
        expect title Stapel ändern
        expect label 1005 &Name:
        expect label 1014 &Intervall:
        expect focus 1005
        expect text 1005 Miete
        expect checked 1007
        expect enabled 1014
        expect text 1014 3
        text 1005 Mieten und Pachten
        text 1014 6
        press 1
        dialog 103
        expect rows 1000 6
        expect row 1000 Mieten und Pachten [W6B]
        select 1000 3
        expect row 1000 Mieten und Pachten [W6B]
        press 4
        uncheck 1007
        text 1005 mieten und Pachten
        press 1
        expect row 1000 mieten und Pachten [B]
        press 1
    )");
    AddBooks(books);
    StapelRecord expected = StapelOf(books, 17);
    EXPECT_EQ(17, VARK_HoleStapelNr(nullptr, -1));
    EXPECT_EQ("", books.Trouble());
    SetText(expected.Name, "mieten und Pachten");
    expected.Intervall = 0;
    EXPECT_EQ(HexOf(expected), HexOf(StapelOf(books, 17)));
}

TEST(StapelChange, NeedsALineThatIsNotTheApplications)
{
    PickBooks books(R"(
        press 4
        box ok Bitte wählen Sie einen Eintrag aus der Listbox aus.
        expect focus 1000
        select 1000 "System [B]"
        press 4
        box ok Der Stapel 'System' ist nicht änderbar!
        dialog 103
        select 1000 "Archiv"
        press 4
        box ok Der Stapel 'Archiv' ist nicht änderbar!
        dialog 103
        select 1000 "Mai [B]"
        press 4
        dialog 109
        press 2
        press 2
    )");
    AddBooks(books);
    EXPECT_EQ(0, VARK_HoleStapelNr(nullptr, -1));
    EXPECT_EQ("", books.Trouble());
}

TEST(StapelChange, AStapelThatIsGoneIsSaid)
{
    PickBooks books(R"(
        select 1000 0
        press 4
        box ok Der Stapel existiert nicht!
        dialog 103
        press 2
    )");
    AddBooks(books);
    // By Get Equal come fista, the postings of six lines, and then the Stapel itself.
    FailEngineOperation(5, 1 + 6 + 1, 4);
    EXPECT_EQ(0, VARK_HoleStapelNr(nullptr, -1));
    StopEngineFaults();
    EXPECT_EQ("", books.Trouble());
}

TEST(StapelChange, ARefusedWriteGivesTheLockBack)
{
    PickBooks books(R"(
        select 1000 "Mai"
        press 4
        text 1005 Juni
        press 1
        box ok Disk full
        box ok Der Stapel 'Mai' ist nicht änderbar!
        dialog 109
        press 2
        press 2
    )");
    AddBooks(books);
    AttachLibrary();
    realEngine = EngineEntry;
    EngineEntry = RefuseUpdates;
    EXPECT_EQ(0, VARK_HoleStapelNr(nullptr, -1));
    EXPECT_EQ("", books.Trouble());
    EXPECT_EQ(0, locks);
}

TEST(StapelChange, AsksUntilTheFieldsAreGood)
{
    PickBooks books(R"(
        select 1000 "leer"
        press 4
        text 1005
        press 1
        box ok Bitte geben Sie einen Stapelnamen ein!
        text 1005 Beiträge
        check 1007
        text 1014 0
        press 1
        box ok Das Intervall
        text 1014 1
        press 1
        box ok Der Stapel 'Beiträge' existiert bereits!
        dialog 109
        press 2
        dialog 103
        expect row 1000 leer
        press 2
    )");
    AddBooks(books);
    EXPECT_EQ(0, VARK_HoleStapelNr(nullptr, -1));
    EXPECT_EQ("", books.Trouble());
    EXPECT_EQ("leer", TextOf(StapelOf(books, 19).Name));
}

TEST(StapelChange, ARefusedWriteIsSaidAndKeepsTheDialogOpen)
{
    PickBooks books(R"(
        select 1000 "leer"
        press 4
        text 1005 voll
        press 1
        box ok I/O Error
        box ok Der Stapel 'leer' ist nicht änderbar!
        dialog 109
        press 1
        dialog 103
        expect row 1000 voll
        press 2
    )");
    AddBooks(books);
    FailEngineOperation(3, 1, 2);
    EXPECT_EQ(0, VARK_HoleStapelNr(nullptr, -1));
    StopEngineFaults();
    EXPECT_EQ("", books.Trouble());
    EXPECT_EQ("voll", TextOf(StapelOf(books, 19).Name));
    EXPECT_EQ(0, GetThreadContext()->OpenCounts[TableStapel]);
}

TEST(StapelChange, ALockedRecordIsSaid)
{
    PickBooks books(R"(
        select 1000 "leer"
        press 4
        press 1
        box ok Der Datensatz wird von einer anderen Anwendung benutzt!
        box ok Der Stapel 'leer' ist nicht änderbar!
        press 2
        press 2
    )");
    AddBooks(books);
    FailEngineOperation(205, 1, 84);
    EXPECT_EQ(0, VARK_HoleStapelNr(nullptr, -1));
    StopEngineFaults();
    EXPECT_EQ("", books.Trouble());
}

// ---- Deleting ----

TEST(StapelDeletion, AnEmptyStapelGoesAfterAQuestion)
{
    PickBooks books(R"(
        select 1000 "leer"
        press 4
        press 4
        box no Soll der leere Stapel 'leer' wirklich gelöscht werden?
        dialog 109
        press 4
        box yes Soll der leere Stapel 'leer' wirklich gelöscht werden?
        dialog 103
        expect rows 1000 5
        expect row 1000 Beiträge [W12]
        press 1
    )");
    AddBooks(books);
    EXPECT_EQ(18, VARK_HoleStapelNr(nullptr, -1));
    EXPECT_EQ("", books.Trouble());
    EXPECT_EQ(0, StapelOf(books, 19).Nummer);
    EXPECT_EQ((Size{5, 3, 0, 6}), SizeOf(books));
    EXPECT_EQ(0, GetThreadContext()->OpenCounts[TableStapel]);
    EXPECT_EQ(1, GetThreadContext()->OpenCounts[TableBat]);
}

TEST(StapelDeletion, ItsPostingsGoWithTeilbuchungenAndCostLines)
{
    PickBooks books(R"(
        select 1000 "Mai [B]"
        press 4
        press 4
        box no Alle Stapelbuchungen im Stapel 'Mai' werden mitgelöscht.
        dialog 109
        press 4
        box yes Alle Stapelbuchungen im Stapel 'Mai' werden mitgelöscht.
        dialog 103
        expect rows 1000 5
        expect row 1000 Archiv
        press 2
    )");
    AddBooks(books);
    AddPosting(books, 16, 3);
    AddPosting(books, 17, 2);
    AddPosting(books, 16, 2);
    ASSERT_EQ((Size{6, 6, 4, 20}), SizeOf(books));
    EXPECT_EQ(0, VARK_HoleStapelNr(nullptr, -1));
    EXPECT_EQ("", books.Trouble());
    EXPECT_EQ((Size{5, 3, 1, 8}), SizeOf(books));
    for (const BatRecord &bat : books.Read<BatRecord>(1, TableBat)) {
        EXPECT_NE(16, bat.Stapel);
    }
    EXPECT_EQ(0, GetThreadContext()->OpenCounts[TableStapel]);
    EXPECT_EQ(1, GetThreadContext()->OpenCounts[TableSplit]);
    EXPECT_EQ(1, GetThreadContext()->OpenCounts[TableKobu]);
}

TEST(StapelDeletion, FinalCostLinesOfTheSameNumberStay)
{
    PickBooks books(R"(
        select 1000 "Mai [B]"
        press 4
        press 4
        box yes
        press 2
    )");
    AddBooks(books);
    const int32_t number = books.Read<BatRecord>(1, TableBat, "", 1)[1].Buchungsnummer;
    KobuRecord final{};
    final.FinaleBuchung = 4711;
    final.Buchungsnummer = number;
    books.Insert(1, TableKobu, final);
    EXPECT_EQ(0, VARK_HoleStapelNr(nullptr, -1));
    EXPECT_EQ("", books.Trouble());
    EXPECT_EQ((Size{5, 2, 0, 5}), SizeOf(books));
}

TEST(StapelDeletion, TheFirstLineIsFollowedByTheNewFirst)
{
    PickBooks books(R"(
        select 1000 0
        press 4
        press 4
        box yes
        expect row 1000 Juni
        press 4
        press 4
        box yes
        dialog 103
        expect rows 1000 0
        expect row 1000
        press 2
    )");
    books.AddMandant(1);
    AddStapel(books, 16, "Mai");
    AddStapel(books, 17, "Juni");
    EXPECT_EQ(0, VARK_HoleStapelNr(nullptr, -1));
    EXPECT_EQ("", books.Trouble());
    EXPECT_EQ(0u, books.Count(1, TableStapel));
}

TEST(StapelDeletion, SettlementsOfOpenItemsForbidIt)
{
    PickBooks books(R"(
        select 1000 "Mai [B]"
        press 4
        press 4
        box ok Im Stapel 'Mai' befinden sich noch OP-Ausgleichsbuchungen.
        dialog 109
        press 2
        press 2
    )");
    AddBooks(books);
    AddPosting(books, 16, 2, 1);
    AddPosting(books, 16);
    const Size before = SizeOf(books);
    EXPECT_EQ(0, VARK_HoleStapelNr(nullptr, -1));
    EXPECT_EQ("", books.Trouble());
    EXPECT_EQ(before, SizeOf(books));
}

TEST(StapelDeletion, AFailedDeleteLeavesEverythingAsItWas)
{
    // The posting of Stapel 17 goes as two cost lines and itself, then the Stapel goes.
    std::string script = "select 1000 \"Miete [W3B]\"\npress 4\n";
    for (int n = 1; n <= 4; ++n) {
        script += "press 4\nbox yes Alle Stapelbuchungen\nbox ok I/O Error\n";
        script += n < 4 ? "box ok Die VARK-DLL kann nicht initialisiert werden!\n"
                        : "box ok Der Stapel 'Miete' konnte nicht gelöscht werden!\n";
        script += "dialog 109\npress 2\npress 2\nselect 1000 \"Miete [W3B]\"\npress 4\n";
    }
    script += "press 4\nbox yes\ndialog 103\nexpect rows 1000 5\npress 2\n";
    PickBooks books(script);
    AddBooks(books);
    const Size before = SizeOf(books);
    for (int n = 1; n <= 4; ++n) {
        FailEngineOperation(deleteOperation, n, 2);
        EXPECT_EQ(0, VARK_HoleStapelNr(nullptr, -1)) << n;
        EXPECT_EQ(n, StopEngineFaults());
        EXPECT_EQ(before, SizeOf(books)) << n;
        EXPECT_EQ(0, GetThreadContext()->OpenCounts[TableStapel]) << n;
        EXPECT_EQ(0, GetThreadContext()->TransactionDepth) << n;
        EXPECT_EQ(0, GetThreadContext()->HoldOpen) << n;
    }
    EXPECT_EQ(0, VARK_HoleStapelNr(nullptr, -1));
    EXPECT_EQ("", books.Trouble());
    EXPECT_EQ((Size{before.Stapel - 1, before.Bat - 1, before.Split, before.Kobu - 2}), SizeOf(books));
}

TEST(StapelDeletion, ATransactionThatCannotBeginOrEndLeavesEverythingAsItWas)
{
    std::string script;
    for (int n = 1; n <= 2; ++n) {
        script += R"(
            select 1000 "Mai [B]"
            press 4
            press 4
            box yes
            box ok Transaction error
            box ok Der Stapel 'Mai' konnte nicht gelöscht werden!
            press 2
            press 2
        )";
    }
    PickBooks books(script);
    AddBooks(books);
    const Size before = SizeOf(books);
    for (const uint16_t operation : {uint16_t{19}, uint16_t{20}}) {
        FailEngineOperation(operation, 1, 36);
        EXPECT_EQ(0, VARK_HoleStapelNr(nullptr, -1));
        EXPECT_EQ(1, StopEngineFaults());
        EXPECT_EQ(before, SizeOf(books));
        EXPECT_EQ(0, GetThreadContext()->HoldOpen);
    }
    EXPECT_EQ("", books.Trouble());
}

TEST(StapelDeletion, PostingsThatCannotBeReadForbidIt)
{
    PickBooks books(R"(
        select 1000 "leer"
        press 4
        press 4
        box ok I/O Error
        dialog 109
        press 2
        press 2
    )");
    AddBooks(books);
    FailEngineOperation(9, 1, 2);
    EXPECT_EQ(0, VARK_HoleStapelNr(nullptr, -1));
    StopEngineFaults();
    EXPECT_EQ("", books.Trouble());
    EXPECT_EQ(6u, books.Count(1, TableStapel));
}

namespace {

Books *watched;
int stapelReads;

// Another user: adds postings to Stapel 16 and 19 right before the library reads a Stapel's postings for the
// second time, which is after the question has been answered.
int16_t VARK_CALL BookMeanwhile(uint16_t operation, void *block, void *data, uint32_t *length, void *key,
                                uint8_t keyLength, int8_t keyNumber)
{
    if (operation == 9 && keyNumber == 1 && ++stapelReads == 2) {
        AddPosting(*watched, 19);
        AddPosting(*watched, 16, 1, 1);
    }
    return realEngine(operation, block, data, length, key, keyLength, keyNumber);
}

// Another user makes a posting of a Stapel a settlement after the question.
int16_t VARK_CALL SettleMeanwhile(uint16_t operation, void *block, void *data, uint32_t *length, void *key,
                                  uint8_t keyLength, int8_t keyNumber)
{
    const int16_t status = realEngine(operation, block, data, length, key, keyLength, keyNumber);
    // The first reads are those before and behind the question, and one more inside the transaction.
    if (operation == 9 && keyNumber == 1 && ++stapelReads == 4) {
        static_cast<BatRecord *>(data)->OpAusgleich = 1;
    }
    return status;
}

void LetAnotherBookMeanwhile(Books &books)
{
    AttachLibrary();
    watched = &books;
    realEngine = EngineEntry;
    EngineEntry = BookMeanwhile;
}

} // namespace

TEST(StapelDeletion, AQuestionThatIsNoLongerRightIsPutAnew)
{
    PickBooks books(R"(
        select 1000 "leer"
        press 4
        press 4
        box yes Soll der leere Stapel 'leer' wirklich gelöscht werden?
        box no Alle Stapelbuchungen im Stapel 'leer' werden mitgelöscht.
        dialog 109
        press 2
        press 2
    )");
    AddBooks(books);
    LetAnotherBookMeanwhile(books);
    EXPECT_EQ(0, VARK_HoleStapelNr(nullptr, -1));
    EXPECT_EQ("", books.Trouble());
    EXPECT_EQ((Size{6, 5, 0, 10}), SizeOf(books));
}

TEST(StapelDeletion, ASettlementThatComesMeanwhileForbidsIt)
{
    PickBooks books(R"(
        select 1000 "Mai [B]"
        press 4
        press 4
        box yes Alle Stapelbuchungen im Stapel 'Mai' werden mitgelöscht.
        box ok Im Stapel 'Mai' befinden sich noch OP-Ausgleichsbuchungen.
        dialog 109
        press 2
        press 2
    )");
    AddBooks(books);
    LetAnotherBookMeanwhile(books);
    EXPECT_EQ(0, VARK_HoleStapelNr(nullptr, -1));
    EXPECT_EQ("", books.Trouble());
    EXPECT_EQ((Size{6, 5, 0, 10}), SizeOf(books));
}

TEST(StapelDeletion, ASettlementThatIsMetWhileDeletingKeepsEverything)
{
    PickBooks books(R"(
        select 1000 "Mai [B]"
        press 4
        press 4
        box yes Alle Stapelbuchungen im Stapel 'Mai' werden mitgelöscht.
        box ok Die VARK-DLL kann nicht initialisiert werden!
        dialog 109
        press 2
        press 2
    )");
    AddBooks(books);
    const Size before = SizeOf(books);
    AttachLibrary();
    realEngine = EngineEntry;
    EngineEntry = SettleMeanwhile;
    EXPECT_EQ(0, VARK_HoleStapelNr(nullptr, -1));
    EXPECT_EQ("", books.Trouble());
    EXPECT_EQ(before, SizeOf(books));
}
