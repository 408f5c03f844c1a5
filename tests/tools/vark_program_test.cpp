#include "tests/tools/program.h"

#include <gtest/gtest.h>

using namespace tests;
namespace fs = std::filesystem;

namespace {

struct VarkProgram : testing::Test {
    TemporaryDirectory Directory;
    fs::path Books = Directory.Path / "buch";

    void SetUp() override { ASSERT_EQ(0, tests::Books({"beispiel", Books.string()}).ExitCode); }

    Result Run(std::vector<std::string> arguments, const std::string &input = {})
    {
        return Vark(Books, std::move(arguments), input);
    }

    // Books the CSV text into Stapel 16 of Mandant 1.
    Result BookCsv(const std::string &csv, std::vector<std::string> more = {})
    {
        std::vector<std::string> arguments = {"buchen", "--mandant", "1", "--stapel", "16", "--datei", "-"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return Run(std::move(arguments), csv);
    }

    std::string Batch(std::vector<std::string> more = {})
    {
        std::vector<std::string> arguments = {"stapel", "--mandant", "1", "16", "--csv"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return Run(std::move(arguments)).Out;
    }
};

bool Contains(const std::string &text, const std::string &part)
{
    return text.find(part) != std::string::npos;
}

constexpr const char *csvHead = "Nr;Teil;Datum;Beleg;Soll;Haben;Brutto;Steuersatz;Steuerkonto;Netto;Währung;"
                                "Kostenzeilen;Text\n";

} // namespace

TEST_F(VarkProgram, StatusNamesTheDataAndTheMandanten)
{
    const Result result = Run({"status"});
    EXPECT_EQ(0, result.ExitCode) << result.Err;
    EXPECT_TRUE(Contains(result.Out, "Daten: " + (Books / "DB").string() + "\n"));
    EXPECT_TRUE(Contains(result.Out, "VARK40 ist bereit."));
    EXPECT_TRUE(
        Contains(result.Out, " 1  Nordhafen Bürohandel GmbH       1997–1998  Januar            ja\n"));
    EXPECT_TRUE(Contains(result.Out,
                         " 3  Atelier Lindblick Werbeagentur  1998       Januar            ja, Pflicht\n"));

    const Result json = Run({"status", "--json"});
    EXPECT_EQ(0, json.ExitCode);
    EXPECT_TRUE(Contains(json.Out, "\"status\": 1,"));
    EXPECT_TRUE(Contains(json.Out, "\"name\": \"Sonnenfeld Gartenbedarf\""));
}

TEST_F(VarkProgram, StatusWithoutIniFilesSaysWhatIsMissing)
{
    const Result result = Vark(Directory.Path, {"status"});
    EXPECT_EQ(3, result.ExitCode);
    EXPECT_TRUE(Contains(result.Err,
                         "VARK40 ist nicht bereit (-36): In keiner Ini-Datei steht, wo die Daten liegen"));
    EXPECT_TRUE(Contains(Vark(Directory.Path, {"status", "--json"}).Out, "\"status\": -36,"));
}

TEST_F(VarkProgram, OneBookingFromOptionsComesBackFromTheStapel)
{
    const Result booked =
        Run({"buchen", "--mandant", "1", "--stapel", "16", "--datum", "15.3.98", "--beleg", "RE4711",
             "--soll", "10010", "--haben", "5010", "--betrag", "1.150,00", "--text", "Tische für Öl"});
    EXPECT_EQ(0, booked.ExitCode) << booked.Err;
    EXPECT_EQ("1 Buchung in den Stapel geschrieben, 0 abgelehnt.\n", booked.Out);
    EXPECT_EQ("", booked.Err);
    EXPECT_EQ(std::string(csvHead) +
                  "1;;15.03.1998;RE4711;10010;5010;1150,00;15,00;2411;1000,00;;1;Tische für Öl\n",
              Batch());
}

TEST_F(VarkProgram, TheRateFollowsTheDateOfTheBooking)
{
    const Result booked = BookCsv("Datum;Sollkonto;Habenkonto;Betrag\n"
                                  "31.03.1998;10010;5010;115,00\n"
                                  "01.04.1998;10010;5010;116,00\n"
                                  "02.01.1997;10010;5010;115,00\n"
                                  "02.01.1997;10010;5040;107,00\n");
    EXPECT_EQ(0, booked.ExitCode) << booked.Err;
    EXPECT_EQ(std::string(csvHead) + "1;;31.03.1998;;10010;5010;115,00;15,00;2411;100,00;;1;\n"
                                     "2;;01.04.1998;;10010;5010;116,00;16,00;2410;100,00;;1;\n"
                                     "3;;02.01.1997;;10010;5010;115,00;15,00;2411;100,00;;1;\n"
                                     "4;;02.01.1997;;10010;5040;107,00;7,00;2420;100,00;;1;\n",
              Batch());
}

TEST_F(VarkProgram, ARefusalIsToldInTheLibrarysWords)
{
    const Result refused = Run({"buchen", "--mandant", "1", "--stapel", "16", "--datum", "15.3.98", "--soll",
                                "99", "--haben", "5010", "--betrag", "1,00"});
    EXPECT_EQ(1, refused.ExitCode);
    EXPECT_EQ("Nicht gebucht: Die Sollkontonummer ist unzulässig!\n", refused.Err);
    EXPECT_EQ("", refused.Out);
}

TEST_F(VarkProgram, BadLinesOfAFileDoNotHoldUpGoodOnes)
{
    const Result result = BookCsv("Datum;Beleg;Sollkonto;Habenkonto;Betrag;Text\n"
                                  "15.04.1998;A1;10010;5010;116,00;gut\n"
                                  "31.02.1998;A2;10010;5010;116,00;kein Tag\n"
                                  "15.04.1996;A3;10010;5010;116,00;kein bebuchbares Jahr\n"
                                  "15.04.1998;A4;1;5010;116,00;kein Konto\n"
                                  "15.04.1998;A5;10010;10010;116,00;dasselbe\n"
                                  "15.04.1998;A6;10010;5010;12a;kein Betrag\n"
                                  "15.04.1998;A7;\"10010;5010;116,00;offen\n"
                                  "15.04.1998;A8;10010;5010\n"
                                  "15.04.1998;A9;10010;5010;116,00;Łódź\n"
                                  "15.04.1998;A10;10010;12345678;116,00;zu lang\n"
                                  "15.04.1998;A11;10010;5010;1.160,00;auch gut\n");
    EXPECT_EQ(1, result.ExitCode);
    EXPECT_EQ("Zeile 3: Das Buchungsdatum ist unzulässig!\n"
              "Zeile 4: Das Buchungsdatum ist unzulässig!\n"
              "Zeile 5: Die Sollkontonummer ist unzulässig!\n"
              "Zeile 6: Soll- und Habenkontonummern sind gleich!\n"
              "Zeile 7: Der Bruttobetrag ist unzulässig!\n"
              "Zeile 8: In dieser Zeile fehlt ein schließendes Anführungszeichen.\n"
              "Zeile 9: Die Zeile hat 4 statt 6 Spalten.\n"
              "Zeile 10: Der Text enthält Zeichen, die es in den Büchern nicht gibt.\n"
              "Zeile 11: Die Habenkontonummer ist zu lang.\n",
              result.Err);
    EXPECT_TRUE(result.Out.starts_with("2 Buchungen in den Stapel geschrieben, 9 abgelehnt.\n"))
        << result.Out;
    EXPECT_TRUE(Contains(result.Out, "     2  Das Buchungsdatum ist unzulässig!\n")) << result.Out;
    EXPECT_EQ(std::string(csvHead) + "1;;15.04.1998;A1;10010;5010;116,00;16,00;2410;100,00;;1;gut\n"
                                     "2;;15.04.1998;A11;10010;5010;1160,00;16,00;2410;1000,00;;1;auch gut\n",
              Batch());
}

TEST_F(VarkProgram, ABarOnATerminalMakesWayForRefusalsAndIsGoneAtTheEnd)
{
    const fs::path csv = Directory.Path / "buchungen.csv";
    WriteFile(csv, "Datum;Sollkonto;Habenkonto;Betrag\n"
                   "15.04.1998;10010;5010;116,00\n"
                   "31.02.1998;10010;5010;116,00\n");
    const std::vector<std::string> arguments = {"--config", Books.string(), "buchen",  "--mandant", "1",
                                                "--stapel", "16",           "--datei", csv.string()};
    const Result shown = tests::Run({VARK_PROGRAM, arguments, "", {}, true});
    EXPECT_EQ(1, shown.ExitCode);
    EXPECT_EQ("1 Buchung in den Stapel geschrieben, 1 abgelehnt.\n", shown.Out);
    EXPECT_TRUE(shown.Err.starts_with("\rBuchen [")) << shown.Err;
    EXPECT_TRUE(Contains(shown.Err, "\r\033[KZeile 3: Das Buchungsdatum ist unzulässig!\n")) << shown.Err;
    const std::string drawn = " %\033[K";
    const size_t last = shown.Err.rfind(drawn);
    ASSERT_NE(std::string::npos, last);
    EXPECT_EQ("\r\033[K", shown.Err.substr(last + drawn.size(), 4)) << "every bar is taken away again";

    const Result piped = tests::Run({VARK_PROGRAM, arguments, "", {}, false});
    EXPECT_EQ("Zeile 3: Das Buchungsdatum ist unzulässig!\n", piped.Err);
}

TEST_F(VarkProgram, TheSummaryCountsTheRefusalsOfEachReason)
{
    const Result result = BookCsv("Datum;Sollkonto;Habenkonto;Betrag\n"
                                  "31.02.1998;10010;5010;116,00\n"
                                  "15.04.1998;99;5010;116,00\n"
                                  "31.04.1998;10010;5010;116,00\n");
    EXPECT_EQ("0 Buchungen in den Stapel geschrieben, 3 abgelehnt.\n"
              "\n"
              "Anzahl  Grund\n"
              "──────  ───────────────────────────────────\n"
              "     2  Das Buchungsdatum ist unzulässig!\n"
              "     1  Die Sollkontonummer ist unzulässig!\n",
              result.Out);
    EXPECT_EQ("",
              BookCsv("Datum;Sollkonto;Habenkonto;Betrag\n31.02.1998;10010;5010;116,00\n", {"--leise"}).Out);
}

TEST_F(VarkProgram, RefusedLinesCanBePutRightAndBooked)
{
    const fs::path rejected = Directory.Path / "abgelehnt.csv";
    BookCsv("Datum;Sollkonto;Habenkonto;Betrag\n31.02.1998;10010;5010;116,00\n",
            {"--abgelehnt", rejected.string()});
    std::string csv = ReadFile(rejected);
    EXPECT_EQ("# Abgelehnte Buchungen; der Grund steht jeweils in der Zeile darüber.\n"
              "Datum;Sollkonto;Habenkonto;Betrag\n"
              "# Zeile 2: Das Buchungsdatum ist unzulässig!\n"
              "31.02.1998;10010;5010;116,00\n",
              csv);
    csv.replace(csv.find("31.02.1998"), 10, "28.02.1998");
    EXPECT_EQ(0, BookCsv(csv).ExitCode);
}

TEST_F(VarkProgram, Windows1252AndUtf8AreToldApartLineByLine)
{
    const Result result = BookCsv("\xEF\xBB\xBF"
                                  "Datum;Sollkonto;Habenkonto;Betrag;Text\r\n"
                                  "15.04.1998;10010;5010;116,00;M\xF6"
                                  "bel\r\n"
                                  "15.04.1998;10010;5010;116,00;Möbel\r\n");
    EXPECT_EQ(0, result.ExitCode) << result.Err;
    EXPECT_TRUE(Contains(Batch(), ";1;Möbel\n2;"));
    EXPECT_TRUE(Batch().ends_with(";1;Möbel\n"));
}

TEST_F(VarkProgram, QuotedFieldsKeepSemicolonsAndQuotes)
{
    BookCsv("Datum;Sollkonto;Habenkonto;Betrag;Text\n"
            "15.04.1998;10010;5010;116,00;\"rot; \"\"blau\"\"\"\n"
            "\n"
            "# 15.04.1998;10010;5010;116,00;Kommentar\n");
    EXPECT_TRUE(Batch().ends_with(";\"rot; \"\"blau\"\"\"\n"));
}

TEST_F(VarkProgram, ColumnsOverrideTheOptions)
{
    EXPECT_EQ(0, BookCsv("Mandant;Stapel;Datum;Sollkonto;Habenkonto;Betrag\n"
                         "2;17;15.08.1998;10010;5070;116,00\n"
                         ";;15.08.1998;10010;5010;116,00\n")
                     .ExitCode);
    EXPECT_TRUE(Contains(Run({"stapel", "--mandant", "2", "17"}).Out, "1 Buchung, zusammen brutto 116,00"));
    EXPECT_TRUE(Contains(Run({"stapel", "--mandant", "1", "16"}).Out, "1 Buchung, zusammen brutto 116,00"));
}

TEST_F(VarkProgram, AGivenKindMustBeThatOfTheAccount)
{
    const Result result = BookCsv("Datum;Sollkonto;Sollart;Habenkonto;Habenart;Betrag\n"
                                  "15.04.1998;10010;Debitor;5010;S;116,00\n"
                                  "15.04.1998;10010;Kreditor;5010;1;116,00\n"
                                  "15.04.1998;10010;Bank;5010;1;116,00\n");
    EXPECT_EQ("Zeile 3: Die Sollkontonummer ist unzulässig!\n"
              "Zeile 4: Sollart „Bank“ ist keine Kontoart (Sachkonto, Kreditor, Debitor).\n",
              result.Err);
}

TEST_F(VarkProgram, AFileWithoutUsableHeadingsBooksNothing)
{
    const auto expect = [this](const std::string &csv, const char *text) {
        const Result result = BookCsv(csv);
        EXPECT_EQ(2, result.ExitCode);
        EXPECT_TRUE(Contains(result.Err, text)) << result.Err;
    };
    expect("", "Die Datei ist leer");
    expect("Datum;Sollkonto;Habenkonto\n", "Es fehlt die Spalte „Betrag“.");
    expect("Datum;Sollkonto;Habenkonto;Betrag;Steuersaz\n15.04.1998;10010;5010;1,00;16\n",
           "Unbekannte Spalte „Steuersaz“.");
    expect("Datum;Datum;Sollkonto;Habenkonto;Betrag\n", "Die Spalte „Datum“ kommt zweimal vor.");
    EXPECT_EQ(csvHead, Batch());
}

TEST_F(VarkProgram, LongTextsAreCutAndCounted)
{
    const Result result = BookCsv("Datum;Beleg;Sollkonto;Habenkonto;Betrag;Text\n"
                                  "15.04.1998;123456789;10010;5010;116,00;" +
                                  std::string(36, 'x') + "\n");
    EXPECT_EQ("1 Buchung in den Stapel geschrieben, 0 abgelehnt.\n1 davon mit gekürztem Text.\n", result.Out);
    EXPECT_TRUE(
        Batch().ends_with(";12345678;10010;5010;116,00;16,00;2410;100,00;;1;" + std::string(35, 'x') + "\n"));
}

TEST_F(VarkProgram, JsonTellsWhatWasRefused)
{
    const Result result = BookCsv("Datum;Sollkonto;Habenkonto;Betrag\n"
                                  "15.04.1998;10010;5010;116,00\n"
                                  "15.04.1998;99;5010;116,00\n",
                                  {"--json"});
    EXPECT_EQ(1, result.ExitCode);
    EXPECT_EQ("", result.Err);
    EXPECT_TRUE(Contains(result.Out, "      \"zeile\": 3,\n"
                                     "      \"code\": -8,\n"
                                     "      \"grund\": \"Die Sollkontonummer ist unzulässig!\",\n"
                                     "      \"inhalt\": \"15.04.1998;99;5010;116,00\"\n"))
        << result.Out;
    EXPECT_TRUE(Contains(result.Out, "\"gebucht\": 1,"));
}

TEST_F(VarkProgram, UnknownMandantAndStapelAreRefused)
{
    EXPECT_EQ("Nicht gebucht: Der Mandant existiert nicht!\n",
              Run({"buchen", "--mandant", "9", "--stapel", "16", "--datum", "15.3.98", "--soll", "10010",
                   "--haben", "5010", "--betrag", "1,00"})
                  .Err);
    EXPECT_EQ("Nicht gebucht: Der Stapel existiert nicht!\n",
              Run({"buchen", "--mandant", "1", "--stapel", "99", "--datum", "15.3.98", "--soll", "10010",
                   "--haben", "5010", "--betrag", "1,00"})
                  .Err);
    EXPECT_EQ("vark: Es fehlt die Angabe --mandant.\nMehr dazu: vark buchen --hilfe\n",
              Run({"buchen", "--stapel", "16"}).Err);
    EXPECT_EQ(1, Run({"stapel", "--mandant", "9"}).ExitCode);
    EXPECT_EQ("vark: Der Stapel 99 existiert nicht.\n", Run({"stapel", "--mandant", "1", "99"}).Err);
}

TEST_F(VarkProgram, AStapelShowsAmountsAlignedAndCostsBelow)
{
    BookCsv("Datum;Beleg;Sollkonto;Habenkonto;Betrag;Text\n"
            "15.04.1998;R1;8010;70040;2.000,00;Miete für April\n"
            "16.04.1998;R2;10010;5060;11,60;Fracht\n");
    EXPECT_EQ("Stapel 16 „Laufende Buchungen“, Mandant 1 Nordhafen Bürohandel GmbH, Jahr 1998\n"
              "\n"
              "Nr  Datum       Beleg   Soll  Haben    Brutto   Satz  Steuerkon"
              "to     Netto  Kostenzeilen  Text\n"
              "──  ──────────  ─────  ─────  ─────  ────────  ─────  ───────────  ──────── "
              " ────────────  ────────────────────────\n"
              " 1  15.04.1998  R1      8010  70040  2.000,00                      2.0"
              "00,00             3  Miete für April\n"
              "                                                                     400,"
              "00                · Kosten 100 Kontor\n"
              "                                                                   1.100,00 "
              "               · Kosten 300 Halle Nord\n"
              "                                                                     500,00 "
              "               · Kosten 420 Ladenfläche\n"
              " 2  16.04.1998  R2     10010   5060     11,60  16,00         241"
              "0     10,00                Fracht\n"
              "\n"
              "2 Buchungen, zusammen brutto 2.011,60\n",
              Run({"stapel", "--mandant", "1", "16", "--kosten"}).Out);
    EXPECT_TRUE(Contains(Run({"stapel", "--mandant", "1", "16", "--json"}).Out, "\"brutto\": \"2000.00\","));
}

TEST_F(VarkProgram, CsvHasPlainAmountsInCostLinesAsWell)
{
    BookCsv("Datum;Beleg;Sollkonto;Habenkonto;Betrag;Text\n"
            "15.04.1998;R1;8010;70040;-12.000,00;Miete zurück\n");
    EXPECT_EQ(std::string(csvHead) + "1;;15.04.1998;R1;8010;70040;-12000,00;;;-12000,00;;3;Miete zurück\n"
                                     ";;;;;;;;;-2400,00;;;· Kosten 100 Kontor\n"
                                     ";;;;;;;;;-6600,00;;;· Kosten 300 Halle Nord\n"
                                     ";;;;;;;;;-3000,00;;;· Kosten 420 Ladenfläche\n",
              Batch({"--kosten"}));
    EXPECT_TRUE(Contains(Run({"stapel", "--mandant", "1", "16"}).Out, "-12.000,00"));
    EXPECT_TRUE(Contains(Run({"stapel", "--mandant", "1", "16", "--json"}).Out, "\"betrag\": \"-2400.00\","));
}

TEST_F(VarkProgram, AWrongCommandLineIsToldInGermanAndEndsWithTwo)
{
    const auto expect = [this](std::vector<std::string> arguments, const std::string &text) {
        const std::string command = arguments.empty() || arguments[0] == "buch" ? "" : arguments[0] + " ";
        const Result result = Run(std::move(arguments));
        EXPECT_EQ(2, result.ExitCode);
        EXPECT_EQ("", result.Out);
        EXPECT_EQ("vark: " + text + "\nMehr dazu: vark " + command + "--hilfe\n", result.Err);
    };
    expect({}, "Es fehlt der Befehl.");
    expect({"buch"}, "Unbekannte Angabe: buch (meinten Sie „buchen“?)");
    expect({"status", "--quer"}, "Unbekannte Angabe: --quer");
    expect({"stapel"}, "Es fehlt die Angabe --mandant.");
    expect({"stapel", "--mandant"}, "Zu --mandant fehlt ein Wert, oder er ist zu viel.");
    expect({"stapel", "--mandant", "eins"}, "Unzulässiger Wert: --mandant = eins");
    expect({"stapel", "--mandant", "99999999999"}, "Unzulässiger Wert: --mandant = 99999999999");
    expect({"stapel", "--mandant", "1", "--csv", "--json"},
           "Diese Angaben passen nicht zusammen: --csv und --json.");
    expect({"kurse", "--mandant", "1", "--kurs", "1,82"}, "Die Angabe --kurs gibt es nur mit --neu.");
    expect({"waehlen", "geld"},
           "Unzulässiger Wert: WAS: „geld“ statt mandant, stapel, konto, zahlungsziel oder kostenschablone");
    expect({"waehlen", "konto", "--mandant", "0"},
           "Unzulässiger Wert: --mandant: „0“ ist keine Zahl von 1 bis 32767");
    expect({"waehlen", "konto", "--mandant", "32768"},
           "Unzulässiger Wert: --mandant: „32768“ ist keine Zahl von 1 bis 32767");
}

TEST_F(VarkProgram, HelpNamesTheCommandsAndTheExitCodes)
{
    for (const char *word : {"--hilfe", "-h", "--help"}) {
        const Result help = Run({word});
        EXPECT_EQ(0, help.ExitCode);
        EXPECT_EQ("", help.Err);
        for (const char *expected :
             {"Aufruf: vark", "buchen", "stapel", "status", "etwa: vark buchen --hilfe",
              "Rückgabe: 0 gut, 1 etwas wurde abgelehnt, 2 falscher Aufruf, 3 Bücher oder"}) {
            EXPECT_TRUE(Contains(help.Out, expected)) << word << ": " << expected;
        }
    }
}

TEST_F(VarkProgram, TheListOfStapelCountsTheirBookings)
{
    BookCsv("Datum;Sollkonto;Habenkonto;Betrag\n15.04.1998;10010;5010;116,00\n");
    const std::string list = Run({"stapel", "--mandant", "1"}).Out;
    EXPECT_TRUE(Contains(list, "16  Laufende Buchungen                            1\n")) << list;
    EXPECT_TRUE(Contains(list, "20  Versicherungen                     3          0\n")) << list;
    EXPECT_TRUE(Contains(Run({"stapel", "--mandant", "3"}).Out, "Laufende Buchungen"));
}

TEST_F(VarkProgram, CostsAreNeededWhereTheMandantDemandsThem)
{
    const Result result = Run({"buchen", "--mandant", "3", "--stapel", "16", "--datum", "15.3.98", "--soll",
                               "8240", "--haben", "70010", "--betrag", "115,00"});
    EXPECT_EQ(1, result.ExitCode);
    EXPECT_TRUE(
        Contains(result.Err, "Bei Buchungen auf GuV-Konten muß zumindest eine Kostenstelle bebucht werden."))
        << result.Err;
}

TEST_F(VarkProgram, AClosedPipeEndsItQuietly)
{
    BookCsv("Datum;Sollkonto;Habenkonto;Betrag\n15.04.1998;10010;5010;116,00\n");
    const Result result = tests::Run({"/bin/sh",
                                      {"-c", "set -o pipefail 2>/dev/null; '" VARK_PROGRAM "' --config '" +
                                                 Books.string() + "' stapel --mandant 1 16 --csv | true"}});
    EXPECT_EQ("", result.Err);
}

// A repeat would book twice.
TEST_F(VarkProgram, WhatIsBookedIsNotDeniedWhereTheOutputCannotBeWritten)
{
    const std::string program = "'" VARK_PROGRAM "' --config '" + Books.string() + "' ";
    const std::string booking = program + "buchen --mandant 1 --stapel 16 --datum 15.4.98 --soll 10010 "
                                          "--haben 5010 --betrag 1,00 --text ";
    const auto inShell = [](const std::string &line) {
        return tests::Run({"/bin/bash", {"-c", "set -o pipefail; " + line}});
    };
    for (const char *output :
         {"eins > /dev/full", "zwei >&-", "drei | true", "vier 2>&1 >/dev/full | true"}) {
        EXPECT_EQ(0, inShell(booking + output).ExitCode) << output;
    }
    const Result full = inShell(booking + "fünf > /dev/full");
    EXPECT_EQ("vark: Die Ausgabe läßt sich nicht schreiben. Was getan ist, bleibt getan.\n", full.Err);
    EXPECT_EQ(1, inShell(program + "buchen --mandant 1 --stapel 99 --datum 15.4.98 --soll 10010 --haben 5010 "
                                   "--betrag 1,00 >&-")
                     .ExitCode);
    EXPECT_EQ(0, inShell(program + "split --mandant 1 --stapel 16 --datum 15.4.98 --haben 1840 "
                                   "--teil '8010;;1,00;sechs' --teil '8020;;2,00;sechs' | true")
                     .ExitCode);
    EXPECT_EQ(
        0,
        inShell(program + "peko neu --mandant 1 --art Debitor --kuerzel NEU --name Neu >/dev/full").ExitCode);
    EXPECT_EQ(
        1, inShell(program + "peko neu --mandant 1 --art Debitor --kuerzel NEU --name Neu | true").ExitCode)
        << "it is there";
    const std::string batch = Batch();
    for (const char *text : {"eins", "zwei", "drei", "vier", "fünf", "sechs"}) {
        EXPECT_TRUE(Contains(batch, std::string(";") + text + "\n")) << text << '\n' << batch;
    }
    EXPECT_EQ(3, inShell(program + "stapel --mandant 1 >&-").ExitCode) << "there is nothing but the output";
}

TEST_F(VarkProgram, LinesAreBookedToTheLastWhateverBecomesOfTheOutputs)
{
    const fs::path csv = Directory.Path / "buchungen.csv";
    WriteFile(csv, "Datum;Sollkonto;Habenkonto;Betrag;Text\n"
                   "15.04.1998;10010;5010;1,00;eins\n"
                   "31.02.1998;10010;5010;1,00;abgelehnt\n"
                   "15.04.1998;10010;5010;1,00;drei\n");
    const Result result =
        tests::Run({"/bin/bash",
                    {"-c", "'" VARK_PROGRAM "' --config '" + Books.string() +
                               "' buchen --mandant 1 --stapel 16 --abgelehnt /dev/full --datei '" +
                               csv.string() + "'"}});
    EXPECT_EQ(1, result.ExitCode);
    EXPECT_EQ("vark: /dev/full: Schreiben nicht möglich, der Datenträger ist voll\n"
              "Zeile 3: Das Buchungsdatum ist unzulässig!\n",
              result.Err);
    EXPECT_EQ("2 Buchungen in den Stapel geschrieben, 1 abgelehnt.\n", result.Out);
    EXPECT_TRUE(Contains(Batch(), ";drei\n"));
}

TEST(Demo, ItRunsThroughAndGivesAnAccount)
{
    const TemporaryDirectory directory;
    const fs::path programs = fs::path(VARK_PROGRAM).parent_path();
    const Result demo = tests::Run(
        {DEMO_SCRIPT, {programs.string(), directory.Path.string()}, {}, {{"PATH", "/usr/bin:/bin"}}});
    EXPECT_EQ(0, demo.ExitCode) << demo.Err;
    EXPECT_TRUE(Contains(demo.Out, "10 Buchungen in den Stapel geschrieben, 8 abgelehnt.\n")) << demo.Out;
    EXPECT_TRUE(Contains(demo.Out, "Zeile 14: Die Sollkontonummer ist unzulässig!\n"));
    EXPECT_TRUE(Contains(demo.Out, "Von 18 Buchungen für Mandant 1 stehen 10 im Stapel 16"));
    for (const char *report : {"bilanz", "guv", "journal", "kontenblaetter", "umsatzsteuer-jahr"}) {
        const std::string file = std::string(report) + ".pdf";
        EXPECT_TRUE(Contains(demo.Out, "    " + file + " ")) << file;
        EXPECT_TRUE(ReadFile(directory.Path / "berichte" / file).starts_with("%PDF")) << file;
    }
    EXPECT_EQ("", demo.Err);
}

TEST_F(VarkProgram, ADialogGivesTheNumberThatWasChosen)
{
    const fs::path script = Directory.Path / "script";
    const auto pick = [&](const std::string &played, std::vector<std::string> arguments) {
        WriteFile(script, played);
        arguments.insert(arguments.begin(), {"--config", Books.string(), "waehlen"});
        return tests::Run({VARK_PROGRAM, arguments, "", {{"VARK_UI", "script:" + script.string()}}});
    };
    EXPECT_EQ("10010\n", pick("dialog 102\npress 1\n", {"konto", "--art", "4"}).Out);
    EXPECT_EQ("10030\n", pick("press 1\n", {"konto", "--art", "4", "--von", "10030", "--bis", "10040"}).Out);
    EXPECT_EQ("16\n", pick("dialog 103\nexpect hidden 3\nselect 1000 0\npress 1\n", {"stapel"}).Out);
    EXPECT_EQ("16\n", pick("expect visible 3\npress 1\n", {"stapel", "--verwalten"}).Out) << "remembered";
    EXPECT_EQ("1\n", pick("dialog 101\nactivate 1004 \"Nordhafen\"\n", {"mandant"}).Out);
    EXPECT_EQ("1\n", pick("dialog 116\npress 1\n", {"zahlungsziel", "--mandant", "1"}).Out);
    EXPECT_EQ("1\n", pick("dialog 133\npress 1\n", {"kostenschablone"}).Out);

    const Result cancelled = pick("press 2\n", {"mandant"});
    EXPECT_EQ(1, cancelled.ExitCode);
    EXPECT_EQ("", cancelled.Out);
    EXPECT_EQ("vark: abgebrochen\n", cancelled.Err);
    EXPECT_EQ(1, pick("", {"konto", "--von", "9999999"}).ExitCode);
    EXPECT_EQ(1, pick("", {"stapel", "--mandant", "99"}).ExitCode);
    EXPECT_EQ(2, pick("", {"buch"}).ExitCode);
}

// An output never takes the place of its input: the lines that were not booked would be gone.
TEST_F(VarkProgram, RejectionsDoNotReplaceTheirInput)
{
    const fs::path csv = Directory.Path / "buchungen.csv";
    const std::string lines = "Datum;Sollkonto;Habenkonto;Betrag\n31.02.1998;10010;5010;116,00\n";
    WriteFile(csv, lines);
    fs::create_symlink(csv, Directory.Path / "auch.csv");
    const std::vector<std::string> arguments = {"buchen", "--mandant", "1",          "--stapel",
                                                "16",     "--datei",   csv.string(), "--abgelehnt"};
    for (const char *name : {"buchungen.csv", "auch.csv"}) {
        std::vector<std::string> same = arguments;
        same.push_back((Directory.Path / name).string());
        const Result result = Run(same);
        EXPECT_EQ(2, result.ExitCode);
        EXPECT_TRUE(Contains(result.Err, "Eine Ausgabe ersetzt nie ihre Eingabe.")) << result.Err;
        EXPECT_EQ(lines, ReadFile(csv));
    }
    const fs::path rejected = Directory.Path / "abgelehnt.csv";
    WriteFile(rejected, "vom letzten Mal");
    std::vector<std::string> other = arguments;
    other.push_back(rejected.string());
    EXPECT_EQ(1, Run(other).ExitCode);
    EXPECT_TRUE(Contains(ReadFile(rejected), "31.02.1998;10010;5010;116,00\n"));
    EXPECT_FALSE(Contains(ReadFile(rejected), "vom letzten Mal"));
}

TEST_F(VarkProgram, MissingOptionsAreAWrongCall)
{
    const Result book = Run({"buchen", "--mandant", "1", "--stapel", "16", "--datum", "1.4.98"});
    EXPECT_EQ(2, book.ExitCode);
    EXPECT_EQ("vark: Es fehlt die Angabe --soll.\nMehr dazu: vark buchen --hilfe\n", book.Err);
    EXPECT_EQ(2, Run({"split", "--mandant", "1", "--datum", "1.4.98", "--teil", "8010;1840;1,00"}).ExitCode);
    EXPECT_EQ(2, Run({"peko", "neu", "--mandant", "1", "--art", "Debitor", "--kuerzel", "X"}).ExitCode);
    EXPECT_EQ(2, Run({"peko", "loeschen", "--mandant", "1", "--art", "Debitor"}).ExitCode);
    const Result file =
        Run({"buchen", "--mandant", "1", "--datei", "-"}, "Datum;Sollkonto;Habenkonto;Betrag\n");
    EXPECT_EQ(2, file.ExitCode);
    EXPECT_TRUE(Contains(file.Err, "Es fehlt die Spalte „Stapel“.")) << file.Err;
}

TEST_F(VarkProgram, TypingErrorsAreAnsweredWithTheNearestWord)
{
    EXPECT_TRUE(Contains(Run({"berich"}).Err, "Unbekannte Angabe: berich (meinten Sie „bericht“?)\n"));
    EXPECT_TRUE(Contains(Run({"bericht", "oplist"}).Err, "Unbekannte Angabe: oplist\n"))
        << "vark split is no command of vark bericht";
    const Result option = Run({"konten", "--mandnt", "1"});
    EXPECT_EQ(2, option.ExitCode);
    EXPECT_EQ(
        "vark: Unbekannte Angabe: --mandnt (meinten Sie „--mandant“?)\nMehr dazu: vark konten --hilfe\n",
        option.Err);
    EXPECT_TRUE(Contains(Run({"konten", "--xyz"}).Err, "Unbekannte Angabe: --xyz\n"));
}

TEST_F(VarkProgram, HelpStandsInColumnsOfCharacters)
{
    const std::string help = Run({"peko", "aendern", "--hilfe"}).Out;
    EXPECT_TRUE(Contains(help, "\n  --mandant N                     Nummer des Mandanten; nötig\n")) << help;
    EXPECT_TRUE(
        Contains(help, "\n  --json                          Ausgabe für Programme; nicht mit --csv\n"))
        << help;
    EXPECT_TRUE(Run({"--version"}).Out.starts_with("vark 4."));
}

TEST_F(VarkProgram, WhatAPersonTypesIsNumbersAndTextsThatCanBeRead)
{
    const std::vector<std::string> book = {"buchen",  "--mandant", "1",      "--stapel", "16",
                                           "--datum", "1.4.98",    "--soll", "10010",    "--haben",
                                           "5010",    "--betrag",  "1,00",   "--text"};
    std::vector<std::string> tab = book;
    tab.push_back("Miete\tMärz");
    EXPECT_EQ("Nicht gebucht: Der Text enthält Steuerzeichen.\n", Run(tab).Err);
    for (const char *number : {"-", " ", "--"}) {
        const Result result = Run({"peko", "neu", "--mandant", "1", "--art", "Debitor", "--kuerzel", "NEU",
                                   "--name", "Neu", std::string("--konto=") + number});
        EXPECT_EQ(1, result.ExitCode) << number;
        EXPECT_TRUE(Contains(result.Err, "Eine Kontonummer braucht wenigstens eine Ziffer")) << result.Err;
    }
}

TEST_F(VarkProgram, CurrenciesAreWrittenInCapitals)
{
    EXPECT_EQ(0, Run({"peko", "neu", "--mandant", "1", "--art", "Kreditor", "--kuerzel", "NEU", "--name",
                      "Neu", "--konto", "79990", "--waehrung", "usd"})
                     .ExitCode);
    EXPECT_TRUE(Contains(Run({"konten", "--mandant", "1", "--art", "Kreditor", "79990", "--json"}).Out,
                         "\"waehrung\": \"USD\""));
    EXPECT_TRUE(Contains(Run({"kurse", "--mandant", "1", "--waehrung", "usd"}).Out, "USD"));
}

TEST_F(VarkProgram, ManyBookingsComeBackInTheOrderOfTheirLines)
{
    std::string csv = "Datum;Beleg;Sollkonto;Habenkonto;Betrag\n";
    for (int i = 1; i <= 2500; ++i) {
        const std::string number = std::to_string(i);
        csv += i % 500 == 0 ? "31.02.1998;" + number + ";10010;5010;116,00\n"
                            : "15.04.1998;" + number + ";10010;5010;116,00\n";
    }
    const Result booked = BookCsv(csv);
    EXPECT_EQ(1, booked.ExitCode);
    EXPECT_TRUE(booked.Out.starts_with("2.495 Buchungen in den Stapel geschrieben, 5 abgelehnt.\n"))
        << booked.Out;
    EXPECT_TRUE(booked.Err.starts_with("Zeile 501: ")) << booked.Err;
    const std::string batch = Batch();
    EXPECT_TRUE(Contains(batch, "\n1;;15.04.1998;1;"));
    EXPECT_TRUE(Contains(batch, "\n500;;15.04.1998;501;"));
    EXPECT_TRUE(Contains(batch, "\n2495;;15.04.1998;2499;"));
}

// With the standard descriptors closed the first files to be opened would take their numbers, and messages
// would go into the books.
TEST_F(VarkProgram, ClosedStandardDescriptorsDoTheBooksNoHarm)
{
    const std::string program = "'" VARK_PROGRAM "' --config '" + Books.string() + "' ";
    tests::Run({"/bin/sh",
                {"-c", program + "buchen --mandant 1 --stapel 99 --datum 1.4.98 --soll 10010 --haben 5010 "
                                 "--betrag 1,00 0<&- 1>&- 2>&-"}});
    tests::Run({"/bin/sh", {"-c", program + "bericht susa --mandant 1 --per 31.3.98 0<&- 1>&- 2>&-"}});
    EXPECT_EQ(0, tests::Books({"pruefen", Books.string()}).ExitCode);
    EXPECT_EQ(0, Run({"status"}).ExitCode);
}

TEST_F(VarkProgram, AnIniFileThatCannotBeReadIsNamedAndNotPassedOver)
{
    const fs::path other = Directory.Path / "konfiguration";
    fs::create_directory(other);
    WriteFile(other / "vark.ini", "[VARK]\nPfad=" + (Books / "DB").string() + "\n");
    EXPECT_EQ(0, Vark(other, {"status"}).ExitCode);
    fs::create_directory(other / "tolka.ini");
    for (const std::vector<std::string> &command :
         {std::vector<std::string>{"mandanten"}, {"konten", "--mandant", "1"}, {"status"}}) {
        const Result result = Vark(other, command);
        EXPECT_EQ(3, result.ExitCode) << command.front();
        EXPECT_TRUE(Contains(result.Err, (other / "tolka.ini").string())) << result.Err;
    }
}
