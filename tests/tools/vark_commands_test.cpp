// What vark lists and asks, split bookings, personal accounts and rates, on sample books.
#include "tests/tools/program.h"

#include <gtest/gtest.h>

using namespace tests;
namespace fs = std::filesystem;

namespace {

struct VarkCommands : testing::Test {
    TemporaryDirectory Directory;
    fs::path Books = Directory.Path / "buch";

    void SetUp() override { ASSERT_EQ(0, tests::Books({"beispiel", Books.string()}).ExitCode); }

    Result Run(std::vector<std::string> arguments, const std::string &input = {})
    {
        return Vark(Books, std::move(arguments), input);
    }
    // The output of a command on Mandant 1, which must go well.
    std::string Out(std::vector<std::string> arguments, const std::string &input = {})
    {
        arguments.insert(arguments.end(), {"--mandant", "1"});
        const Result result = Run(std::move(arguments), input);
        EXPECT_EQ(0, result.ExitCode) << result.Err;
        EXPECT_EQ("", result.Err);
        return result.Out;
    }
    // What is said to a command on Mandant 1 that is refused.
    std::string Refusal(std::vector<std::string> arguments, const std::string &input = {})
    {
        arguments.insert(arguments.end(), {"--mandant", "1"});
        const Result result = Run(std::move(arguments), input);
        EXPECT_EQ(1, result.ExitCode);
        return result.Err;
    }
    Result Split(std::vector<std::string> arguments, const std::string &input = {})
    {
        arguments.insert(arguments.begin(), {"split", "--mandant", "1", "--stapel", "16"});
        return Run(std::move(arguments), input);
    }
    // Date, Beleg, accounts and text of each part in Stapel 16.
    std::string Batch() { return Out({"stapel", "16", "--csv"}); }
};

bool Contains(const std::string &text, const std::string &part)
{
    return text.find(part) != std::string::npos;
}

} // namespace

TEST_F(VarkCommands, HelpHasAnExampleAndTheExitCodesForEachCommand)
{
    const std::vector<std::vector<std::string>> commands = {
        {"status"},      {"mandanten"},       {"buchen"},
        {"split"},       {"stapel"},          {"konten"},
        {"saldo"},       {"konto-frei"},      {"journal"},
        {"op"},          {"kurse"},           {"peko"},
        {"peko", "neu"}, {"peko", "aendern"}, {"peko", "loeschen"},
        {"waehlen"},     {"bericht", "susa"},
    };
    for (std::vector<std::string> command : commands) {
        const std::string name = command.back();
        command.push_back("--hilfe");
        const Result help = Run(command);
        EXPECT_EQ(0, help.ExitCode);
        EXPECT_TRUE(Contains(help.Out, "Beispiel")) << name;
        EXPECT_TRUE(Contains(help.Out, "Rückgabe: 0 gut, 1 etwas wurde abgelehnt")) << name;
        EXPECT_FALSE(Contains(help.Out, "Options")) << name;
    }
}

// ---- Mandanten and accounts ----

TEST_F(VarkCommands, MandantenAreListedInEachForm)
{
    EXPECT_TRUE(Run({"mandanten"})
                    .Out.starts_with("Nr  Mandant                         bebuchbar  Geschäftsjahr ab  "
                                     "Kostenrechnung\n"));
    EXPECT_TRUE(
        Contains(Run({"mandanten", "--csv"}).Out, "\n2;Sonnenfeld Gartenbedarf;1997;1998;7;;;DM;D;\n"));
    EXPECT_TRUE(Contains(Run({"mandanten", "--json"}).Out,
                         "{\"nummer\": 3, \"name\": \"Atelier Lindblick Werbeagentur\", \"erstesJahr\": "
                         "\"1998\", \"letztesJahr\": \"1998\", \"ersterMonat\": 1, \"kostenrechnung\": true, "
                         "\"kostenPflicht\": true, "));
    EXPECT_EQ(3, Vark(Directory.Path, {"mandanten"}).ExitCode) << "there are no books";
}

TEST_F(VarkCommands, AccountsAreListedInARange)
{
    EXPECT_EQ("Konto;Kürzel;Zuordnung;Satz;Kosten;Name\n"
              "5010;ERLMOEBEL;GuV;fest;ja;Erlöse Büromöbel\n"
              "5020;ERLBEDARF;GuV;fest;ja;Erlöse Bürobedarf\n",
              Out({"konten", "--art", "Sachkonto", "--von", "5010", "--bis", "5020", "--csv"}));
    EXPECT_TRUE(Contains(Out({"konten", "--art", "d", "--von", "10390", "--json"}),
                         "{\"konto\": \"10400\", \"kuerzel\": \"BERGENKO\", \"name\": \"Bergen Kontor AS\""));
    // The last Sachkonto is delivered with a result of its own.
    EXPECT_TRUE(Out({"konten", "--art", "s", "--csv"})
                    .ends_with("9120;FLAECHE;;;;Verkaufsfläche in Quadratmetern\n"));
    EXPECT_EQ("Konto;Kürzel;Name\n200;EINKAUF;Einkauf\n",
              Out({"konten", "--art", "Kostenstelle", "--von", "200", "--bis", "200", "--csv"}));
    EXPECT_EQ("Konto;Kürzel;Name\n", Out({"konten", "--art", "Kostenstelle", "--von", "9999999", "--csv"}));
}

TEST_F(VarkCommands, WithoutAKindAccountsOfAllKindsAreListed)
{
    EXPECT_EQ("Art;Konto;Kürzel;Name\n"
              "Debitor;10390;ZUERICHB;Zürichberg Büro AG\n"
              "Debitor;10400;BERGENKO;Bergen Kontor AS\n",
              Out({"konten", "--von", "10390", "--bis", "10400", "--csv"}));
}

TEST_F(VarkCommands, AccountsInTheOrderOfTheirKuerzel)
{
    EXPECT_EQ("Art;Konto;Kürzel;Name\n"
              "Debitor;10400;BERGENKO;Bergen Kontor AS\n"
              "Sachkonto;7060;BERUFSGEN;Berufsgenossenschaft\n"
              "Sachkonto;6310;BESTVER;Bestandsveränderung\n",
              Out({"konten", "--nach", "Kürzel", "--von", "BER", "--bis", "BES", "--csv"}));
    EXPECT_EQ(2, Run({"konten", "--mandant", "1", "--nach", "Ort"}).ExitCode);
}

TEST_F(VarkCommands, OneAccountByNumberOrKuerzel)
{
    const std::string byNumber = Out({"konten", "10400", "--csv"});
    EXPECT_TRUE(Contains(byNumber, "\n10400;BERGENKO;Bergen Kontor AS;;N;5013;Bergen;Strandgaten 15;"));
    EXPECT_EQ(byNumber, Out({"konten", "BERGENKO", "--csv"}));
    EXPECT_EQ("vark: Ein Konto „NIX“ gibt es nicht.\n", Refusal({"konten", "NIX"}));
    EXPECT_EQ("vark: Ein Konto „10400“ gibt es nicht.\n", Refusal({"konten", "10400", "--art", "Kreditor"}));
}

TEST_F(VarkCommands, AnUnknownMandantOrKindIsToldApart)
{
    const Result mandant = Run({"konten", "--mandant", "9"});
    EXPECT_EQ(1, mandant.ExitCode);
    EXPECT_EQ("vark: Der Mandant existiert nicht!\n", mandant.Err);
    EXPECT_EQ("", mandant.Out);
    const Result kind = Run({"konten", "--mandant", "1", "--art", "Bank"});
    EXPECT_EQ(2, kind.ExitCode);
    EXPECT_TRUE(Contains(kind.Err, "Die Kontoart „Bank“ gibt es nicht")) << kind.Err;
}

TEST_F(VarkCommands, FreeNumbersFollowTheHighest)
{
    EXPECT_EQ("10401\n", Out({"konto-frei", "--art", "Debitor"}));
    EXPECT_EQ("Konto\n70251\n", Out({"konto-frei", "--art", "Kreditor", "--csv"}));
    EXPECT_EQ("[\n {\"konto\": \"70251\"}\n]\n", Out({"konto-frei", "--art", "Kreditor", "--json"}));
    EXPECT_EQ("vark: Die Kontoart ist unzulässig.\n", Refusal({"konto-frei", "--art", "Sachkonto"}));
}

// ---- Balances, journal, open items ----

TEST_F(VarkCommands, ABalanceSaysItsSide)
{
    EXPECT_EQ("400.000,00 Haben\n", Out({"saldo", "2010"}));
    EXPECT_EQ("Konto;Art;Saldo\n2010;Sachkonto;-400000,00\n", Out({"saldo", "2010", "--csv"}));
    EXPECT_EQ("[\n {\"konto\": \"2010\", \"art\": \"Sachkonto\", \"saldo\": \"-400000.00\"}\n]\n",
              Out({"saldo", "2010", "--json"}));
    EXPECT_EQ("vark: Die Kontonummer ist unzulässig!\n", Refusal({"saldo", "4711"}));
}

TEST_F(VarkCommands, BalancesOfSeveralAccountsAndOneThatIsNone)
{
    const Result result = Run({"saldo", "--mandant", "1", "2010", "4711", "BERGENKO", "--csv"});
    EXPECT_EQ(1, result.ExitCode);
    EXPECT_EQ("vark: Die Kontonummer ist unzulässig!\n", result.Err);
    EXPECT_TRUE(result.Out.starts_with("Konto;Art;Saldo\n2010;Sachkonto;-400000,00\n10400;Debitor;"))
        << result.Out;
}

TEST_F(VarkCommands, TheJournalHoldsEveryPostingThatIsNotFolded)
{
    // One line in front, and one for each posting of the year from the day on.
    const std::string all = Out({"journal", "--ab", "1.1.1997", "--csv"});
    EXPECT_TRUE(
        all.starts_with("Datum;Beleg;Teil;Soll;Sollart;Haben;Habenart;Betrag;Satz;Steuer;Text\n01.01.1997;"))
        << all.substr(0, 200);
    const std::string december = Out({"journal", "--ab", "1.12.1997", "--csv"});
    EXPECT_TRUE(all.ends_with(december.substr(december.find('\n') + 1)));
    EXPECT_EQ(std::string::npos, all.find("Einzelverkauf"));
    EXPECT_EQ("vark: Das Belegdatum ist unzulässig!\n", Refusal({"journal", "--ab", "1.1.1996"}));
}

TEST_F(VarkCommands, AJournalIntoAClosedPipeEndsQuietly)
{
    const Result result = tests::Run({"/bin/sh",
                                      {"-c", "'" VARK_PROGRAM "' --config '" + Books.string() +
                                                 "' journal --mandant 1 --ab 1.1.97 --csv | head -n 1"}});
    EXPECT_EQ(0, result.ExitCode);
    EXPECT_EQ("Datum;Beleg;Teil;Soll;Sollart;Haben;Habenart;Betrag;Satz;Steuer;Text\n", result.Out);
    EXPECT_EQ("", result.Err);
}

TEST_F(VarkCommands, AFullDiskIsToldAndNotSuccess)
{
    const Result result = tests::Run({"/bin/sh",
                                      {"-c", "'" VARK_PROGRAM "' --config '" + Books.string() +
                                                 "' journal --mandant 1 --ab 1.1.97 --csv > /dev/full"}});
    EXPECT_EQ(3, result.ExitCode);
    EXPECT_EQ("vark: Die Ausgabe läßt sich nicht schreiben.\n", result.Err);
}

TEST_F(VarkCommands, OpenItemsOfBothKindsOrOfOneAccount)
{
    const std::string all = Out({"op", "--csv"});
    EXPECT_TRUE(all.starts_with(
        "Art;Konto;Beleg;Referenz;vom;fällig;Skonto bis;offen;Skonto;Whg;Name;Text\nDebitor;"));
    const std::string debitors = Out({"op", "--art", "Debitor", "--csv"});
    EXPECT_TRUE(all.starts_with(debitors));
    const std::string kreditors = Out({"op", "--art", "Kreditor", "--csv"});
    EXPECT_TRUE(all.ends_with(kreditors.substr(kreditors.find('\n') + 1)));
    EXPECT_EQ("vark: Die Kontonummer ist unzulässig!\n",
              Refusal({"op", "--art", "Debitor", "--konto", "4711"}));
    EXPECT_EQ("vark: Die Kontonummer ist unzulässig!\n", Refusal({"op", "--konto", "4711"}));
    EXPECT_EQ("vark: Die Kontoart ist unzulässig!\n", Refusal({"op", "--konto", "1840"}));
    EXPECT_EQ(Out({"op", "--konto", "10010", "--csv"}), Out({"op", "--konto", "ADLERAPO", "--csv"}));
}

// ---- Split bookings ----

TEST_F(VarkCommands, ASplitBookingFromOptions)
{
    const Result booked = Split({"--datum", "15.3.98", "--beleg", "S1", "--haben", "1840", "--teil",
                                 "8010;;1.000,00;Miete", "--teil", "8020;;115;\"Heizung; Strom\""});
    EXPECT_EQ(0, booked.ExitCode) << booked.Err;
    EXPECT_EQ("1 Splitbuchung in den Stapel geschrieben, 0 abgelehnt.\n", booked.Out);
    EXPECT_TRUE(Contains(Batch(), "\n1;1;15.03.1998;S1;8010;1840;1000,00;;;1000,00;;3;Miete\n"
                                  "1;2;15.03.1998;S1;8020;1840;115,00;15,00;1611;100,00;;3;\"Heizung; "
                                  "Strom\"\n"))
        << Batch();
}

TEST_F(VarkCommands, ASplitBookingThatIsRefusedLeavesNothing)
{
    const std::string empty = Batch();
    const Result part =
        Split({"--datum", "15.3.98", "--haben", "1840", "--teil", "8010;;1", "--teil", "8020;;x"});
    EXPECT_EQ(1, part.ExitCode);
    EXPECT_EQ("Nicht gebucht: Teilbuchung 2: Der Bruttobetrag ist unzulässig!\n", part.Err);
    EXPECT_EQ("Nicht gebucht: Das Buchungsdatum ist unzulässig!\n",
              Split({"--datum", "35.3.98", "--teil", "8010;1840;1"}).Err);
    // The library answers 1 to this one and writes nothing.
    const Result schablone = Split(
        {"--datum", "15.3.98", "--haben", "1840", "--teil", "8010;;1;;;;99", "--teil", "8020;;1", "--json"});
    EXPECT_EQ(1, schablone.ExitCode);
    EXPECT_TRUE(Contains(schablone.Out, "\"grund\": \"Teilbuchung 1: Die Kostenschablone ist unzulässig!\""));
    EXPECT_EQ(empty, Batch());
    EXPECT_EQ(2, Split({"--datum", "15.3.98"}).ExitCode) << "neither parts nor a file";
    EXPECT_EQ(2, Split({"--teil", "1;2;3;4;5;6;7;8"}).ExitCode);
}

TEST_F(VarkCommands, LinesOfOneDateAndBelegAreOneSplitBooking)
{
    const Result result = Split({"--datei", "-"}, "Datum;Beleg;Sollkonto;Habenkonto;Betrag\n"
                                                  "1.4.98;A;8110;1840;10\n"
                                                  "1.4.98;A;8120;1840;11\n"
                                                  "1.4.98;B;8110;1840;12\n"
                                                  "2.4.98;B;8110;1840;13\n");
    EXPECT_EQ(0, result.ExitCode) << result.Err;
    EXPECT_EQ("3 Splitbuchungen in den Stapel geschrieben, 0 abgelehnt.\n", result.Out);
    EXPECT_TRUE(Contains(Out({"stapel", "16"}), "\n3 Buchungen, zusammen brutto 46,00\n"));
}

TEST_F(VarkCommands, WhatMayMissALineOfItsSplitBookingIsNotBooked)
{
    const fs::path rejected = Directory.Path / "abgelehnt.csv";
    const Result result =
        Split({"--datei", "-", "--abgelehnt", rejected.string()}, "Datum;Beleg;Sollkonto;Habenkonto;Betrag\n"
                                                                  "1.4.98;A;8110;1840;10\n"
                                                                  "1.4.98;B;8110;1840;11\n"
                                                                  "kaputt\n"
                                                                  "1.4.98;C;8110;1840;12\n"
                                                                  "1.4.98;D;8110;1840;13\n");
    EXPECT_EQ(1, result.ExitCode);
    EXPECT_EQ("Zeilen 3 bis 4: Die Zeile hat 1 statt 5 Spalten.\n"
              "Zeile 5: Die Zeile davor ist nicht zu lesen und gehört vielleicht dazu.\n",
              result.Err);
    EXPECT_TRUE(result.Out.starts_with("2 Splitbuchungen in den Stapel geschrieben, 2 abgelehnt.\n"));
    EXPECT_EQ("# Abgelehnte Splitbuchungen; der Grund steht jeweils in der Zeile darüber.\n"
              "Datum;Beleg;Sollkonto;Habenkonto;Betrag\n"
              "# Zeilen 3 bis 4: Die Zeile hat 1 statt 5 Spalten.\n"
              "1.4.98;B;8110;1840;11\n"
              "kaputt\n"
              "# Zeile 5: Die Zeile davor ist nicht zu lesen und gehört vielleicht dazu.\n"
              "1.4.98;C;8110;1840;12\n",
              ReadFile(rejected));
    EXPECT_TRUE(Contains(Out({"stapel", "16"}), "\n2 Buchungen, zusammen brutto 23,00\n"));
}

TEST_F(VarkCommands, WorkFromAFileIsToldLineByLineAsCsv)
{
    const Result result = Split({"--datei", "-", "--csv"}, "Datum;Beleg;Sollkonto;Habenkonto;Betrag\n"
                                                           "1.4.98;A;8110;1840;10\n"
                                                           "1.4.98;B;8110;1840;a\n");
    EXPECT_EQ(1, result.ExitCode);
    EXPECT_EQ("", result.Err);
    EXPECT_EQ("Zeile;Code;Ergebnis;Grund\n"
              "2;1;;\n"
              "3;-12;;Teilbuchung 1: Der Bruttobetrag ist unzulässig!\n",
              result.Out);
}

// ---- Personal accounts ----

TEST_F(VarkCommands, APersonalAccountIsMadeChangedAndDeleted)
{
    EXPECT_EQ(
        "Debitor 10401 angelegt.\n",
        Out({"peko", "neu", "--art", "Debitor", "--kuerzel", "ADLER", "--name", "Adler & Söhne", "--plz",
             "20095", "--ort", "Hamburg", "--skonto", "2", "--mahnkennziffer", "-1", "--zahlungsziel", "2"}));
    EXPECT_TRUE(Contains(Out({"konten", "ADLER", "--csv"}),
                         "\n10401;ADLER;Adler & Söhne;;D;20095;Hamburg;;;;;;;;0;0;2,00;-1;2\n"));
    EXPECT_EQ("Debitor 10401 geändert.\n",
              Out({"peko", "aendern", "--art", "Debitor", "--konto", "10401", "--ort", "Bremen", "--name2",
                   "GmbH", "--zahlungsziel", "-"}));
    const std::string changed = "\n10401;ADLER;Adler & Söhne;GmbH;D;20095;Bremen;;;;;;;;0;0;2,00;-1;0\n";
    EXPECT_TRUE(Contains(Out({"konten", "ADLER", "--csv"}), changed)) << "what is not named stays";
    // Everything that a list shows can be given back, and nothing changes.
    EXPECT_EQ("1 Konto geändert, 0 abgelehnt.\n", Out({"peko", "aendern", "--art", "Debitor", "--datei", "-"},
                                                      Out({"konten", "ADLER", "--csv"})));
    EXPECT_TRUE(Contains(Out({"konten", "ADLER", "--csv"}), changed));
    EXPECT_EQ("Debitor 10401 gelöscht.\n", Out({"peko", "loeschen", "--art", "Debitor", "--konto", "10401"}));
    EXPECT_EQ("vark: Ein Konto „ADLER“ gibt es nicht.\n", Refusal({"konten", "ADLER"}));
}

TEST_F(VarkCommands, ARefusalOfAPersonalAccountIsToldInTheLibrarysWords)
{
    EXPECT_EQ("Nicht angelegt: Das Kürzel existiert bereits!\n",
              Refusal({"peko", "neu", "--art", "Debitor", "--kuerzel", "BERGENKO", "--name", "X"}));
    EXPECT_EQ("Nicht geändert: Das Konto existiert nicht!\n",
              Refusal({"peko", "aendern", "--art", "Debitor", "--konto", "4711", "--ort", "X"}));
    EXPECT_EQ("Nicht geändert: Das Kürzel ist unzulässig!\n",
              Refusal({"peko", "aendern", "--art", "Debitor", "--konto", "10400", "--kuerzel", "ADLERAPO"}));
    EXPECT_EQ("Nicht gelöscht: Das Konto ist nicht löschbar!\n",
              Refusal({"peko", "loeschen", "--art", "Debitor", "--konto", "10010"}));
    EXPECT_EQ(
        "Nicht angelegt: Die PLZ ist zu lang.\n",
        Refusal({"peko", "neu", "--art", "Debitor", "--kuerzel", "X", "--name", "X", "--plz", "1234567"}));
    EXPECT_EQ("Nicht angelegt: Wert 1 „x“ ist keine Zahl.\n",
              Refusal({"peko", "neu", "--art", "Debitor", "--kuerzel", "X", "--name", "X", "--wert1", "x"}));
    EXPECT_EQ(2, Run({"peko", "neu", "--mandant", "1", "--art", "Sachkonto"}).ExitCode);
    const Result json =
        Run({"peko", "loeschen", "--mandant", "1", "--art", "Debitor", "--konto", "10010", "--json"});
    EXPECT_EQ(1, json.ExitCode);
    EXPECT_TRUE(Contains(json.Out, "\"code\": -33,"));
}

TEST_F(VarkCommands, PersonalAccountsFromAFile)
{
    const Result result = Run({"peko", "neu", "--mandant", "1", "--art", "Kreditor", "--datei", "-", "--csv"},
                              "Kürzel;Name;Land\nEINS;Eins AG;A\nEINS;Noch einmal;\nZWEI;Zwei AG;\n");
    EXPECT_EQ(1, result.ExitCode);
    EXPECT_EQ("Zeile;Code;Ergebnis;Grund\n"
              "2;1;Kreditor 70251;\n"
              "3;-32;;Das Kürzel existiert bereits!\n"
              "4;1;Kreditor 70252;\n",
              result.Out);
}

// ---- Rates ----

TEST_F(VarkCommands, RatesAreListedEnteredAndDeletedAsInTheDialog)
{
    const std::string before = Out({"kurse", "--waehrung", "USD", "--csv"});
    EXPECT_TRUE(before.starts_with("Währung;Datum;Kurs;für;Durchschnitt\n"
                                   "USD;10.01.1997;1,59;1;\n"
                                   "USD;20.01.1997;1,62;1;\n"
                                   "USD;31.01.1997;1,60;1;des Monats\n"))
        << before;
    EXPECT_TRUE(Contains(Out({"kurse", "--waehrung", "ITL", "--json"}),
                         "{\"waehrung\": \"ITL\", \"datum\": \"31.01.1997\", \"kurs\": \"1.02\", "
                         "\"einheiten\": 1000, \"durchschnitt\": true}"));

    EXPECT_EQ("Kurs SEK vom 15.03.1998 erfaßt.\n",
              Out({"kurse", "--neu", "--waehrung", "SEK", "--datum", "15.03.1998", "--kurs", "22,80",
                   "--einheiten", "100"}));
    EXPECT_EQ("Währung;Datum;Kurs;für;Durchschnitt\nSEK;15.03.1998;22,80;100;\n",
              Out({"kurse", "--waehrung", "SEK", "--csv"}));
    EXPECT_EQ("vark: Zu dem angegebenen Datum wurde bereits ein Kurs erfaßt.\n",
              Refusal({"kurse", "--neu", "--waehrung", "SEK", "--datum", "15.3.98", "--kurs", "22"}));
    EXPECT_EQ("vark: Sie haben in diesem Monat bereits einen Durchschnittskurs erfaßt.\n",
              Refusal({"kurse", "--neu", "--waehrung", "ITL", "--datum", "3.4.1998", "--kurs", "1,01",
                       "--durchschnitt"}));
    EXPECT_EQ("Kurs SEK vom 15.03.1998 gelöscht.\n",
              Out({"kurse", "--loeschen", "--waehrung", "SEK", "--datum", "15.03.1998"}));
    EXPECT_EQ("vark: Einen Kurs SEK vom 15.03.1998 gibt es nicht.\n",
              Refusal({"kurse", "--loeschen", "--waehrung", "SEK", "--datum", "15.03.1998"}));
    EXPECT_EQ(before, Out({"kurse", "--waehrung", "USD", "--csv"}));
    EXPECT_EQ(
        2, Run({"kurse", "--mandant", "1", "--neu", "--waehrung", "SEK", "--datum", "15.3.98", "--kurs", "x"})
               .ExitCode);
    EXPECT_EQ(2, Run({"kurse", "--mandant", "1", "--neu", "--waehrung", "SE\npress 2", "--datum", "15.3.98",
                      "--kurs", "1"})
                     .ExitCode)
        << "no value reaches the script as an instruction of its own";
    EXPECT_EQ(1, Run({"kurse", "--mandant", "9"}).ExitCode);
}

TEST_F(VarkCommands, TheDialogOfTheRatesOpensForAPerson)
{
    const fs::path script = Directory.Path / "script";
    const fs::path log = Directory.Path / "log";
    WriteFile(script, "dialog 131\n"
                      "expect title Fremdwährungsverwaltung\n"
                      "expect text 22994 15.06.1998\n"
                      "text 30119 NOK\n"
                      "text 22994 15.03.1998\n"
                      "text 30125 24,10\n"
                      "press 1\n"
                      "press 2\n");
    const Result result = tests::Run({VARK_PROGRAM,
                                      {"--config", Books.string(), "kurse", "--mandant", "1", "--dialog"},
                                      "",
                                      {{"VARK_UI", "script:" + script.string()},
                                       {"VARK_UI_LOG", log.string()},
                                       {"VARK_HEUTE", "15.06.1998"}}});
    EXPECT_EQ(0, result.ExitCode) << result.Err;
    EXPECT_EQ("", result.Err);
    EXPECT_TRUE(Contains(ReadFile(log), "dialog 131 Fremdwährungsverwaltung\n"));
    EXPECT_TRUE(Contains(Out({"kurse", "--waehrung", "NOK", "--csv"}), "\nNOK;15.03.1998;24,10;100;\n"));
}
