// books zeigen and books aufbau, as a person in support would use them.
#include "tests/tools/program.h"
#include "tools/common/installation.h"
#include "tools/common/key_value.h"

#include <cstring>
#include <gtest/gtest.h>
#include <rapidjson/document.h>

using namespace tests;
using namespace tools;
using namespace vark;
namespace fs = std::filesystem;

namespace {

struct ShowBooks : testing::Test {
    TemporaryDirectory Directory;
    fs::path Books = Directory.Path / "b";
    fs::path Year = Books / "DB" / "1998";

    // Three Zahlungsziele and a rate or two of our own in otherwise empty tables.
    void SetUp() override
    {
        ASSERT_EQ(0, tests::Books({"beispiel", Books.string(), "--buchungen", "0"}).ExitCode);
        ReplaceTable(LayoutOf(TableZahlziel), Year);
        ReplaceTable(LayoutOf(TableKurse), Year);
        TableFile terms(LayoutOf(TableZahlziel), Year, OpenMode::Normal);
        for (const int32_t number : {-3, 7, 300}) {
            ZahlzielRecord record{};
            record.Nummer = number;
            std::memcpy(record.Text, "30 Tage", 8);
            if (number == 7) std::memcpy(record.Text, "b\xFCrgerlich; \"sofort\"", 20);
            terms.Insert(&record);
        }
        TableFile rates(LayoutOf(TableKurse), Year, OpenMode::Normal);
        const auto add = [&rates](const char *currency, const char *day, const char *rate) {
            KurseRecord record{};
            std::memcpy(record.Waehrung, currency, 3);
            std::memcpy(record.Datum, day, 6);
            std::memcpy(record.Kurs, rate, 12);
            record.Einheit = 1;
            rates.Insert(&record);
        };
        add("CHF", "180131", "000000121,50");
        add("USD", "180115", "000000001,80");
        add("USD", "180131", "000001234-56");
        terms.Close();
        rates.Close();
        StopEngine();
    }

    Result Show(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), "zeigen");
        arguments.insert(arguments.begin() + 2, Books.string());
        return tests::Books(std::move(arguments));
    }

    std::string Csv(std::vector<std::string> arguments)
    {
        arguments.push_back("--csv");
        const Result result = Show(std::move(arguments));
        EXPECT_EQ(0, result.ExitCode) << result.Err;
        return result.Out;
    }
};

} // namespace

TEST_F(ShowBooks, ARecordStandsFieldByField)
{
    const Result result = Show({"zahlziel", "--gleich", "300"});
    EXPECT_EQ(0, result.ExitCode) << result.Err;
    EXPECT_EQ("1998/zahlziel [300]\n"
              "  Nummer  300\n"
              "  Text    30 Tage\n"
              "\n"
              "1 Satz aus 1998/zahlziel (Zahlungsziele)\n",
              result.Out);
}

TEST_F(ShowBooks, CsvQuotesWhatNeedsIt)
{
    EXPECT_EQ("Nummer;Text\n-3;30 Tage\n7;\"bürgerlich; \"\"sofort\"\"\"\n300;30 Tage\n", Csv({"zahlziel"}));
}

TEST_F(ShowBooks, JsonHasNumbersAsNumbersAndTextsAsTexts)
{
    const Result result = Show({"kurse", "--gleich", "USD,31.01.1998", "--json"});
    rapidjson::Document json;
    json.Parse(result.Out.c_str());
    ASSERT_FALSE(json.HasParseError()) << result.Out;
    ASSERT_EQ(1u, json.Size());
    EXPECT_STREQ("USD", json[0]["Waehrung"].GetString());
    // Currencies are in capitals, however they are typed.
    EXPECT_EQ(result.Out, Show({"kurse", "--gleich", "usd,31.01.1998", "--json"}).Out);
    EXPECT_STREQ("31.01.1998", json[0]["Datum"].GetString());
    EXPECT_STREQ("-1234,56", json[0]["Kurs"].GetString());
    EXPECT_EQ(1, json[0]["Einheit"].GetInt());
}

TEST_F(ShowBooks, NoRecordInTheRangeIsNoFault)
{
    const Result result = Show({"kurse", "--gleich", "XYZ"});
    EXPECT_EQ(0, result.ExitCode);
    EXPECT_EQ("0 Sätze aus 1998/kurse (Wechselkurse)\n", result.Out);
    EXPECT_EQ("[]\n", Show({"kurse", "--gleich", "XYZ", "--json"}).Out);
}

TEST_F(ShowBooks, RangesIncludeBothEnds)
{
    const std::string head = "Nummer\n";
    EXPECT_EQ(head + "-3\n7\n", Csv({"zahlziel", "--felder", "Nummer", "--bis", "7"}));
    EXPECT_EQ(head + "7\n300\n", Csv({"zahlziel", "--felder", "Nummer", "--von", "7"}));
    EXPECT_EQ(head + "7\n", Csv({"zahlziel", "--felder", "Nummer", "--von", "-2", "--bis", "299"}));
    EXPECT_EQ(head, Csv({"zahlziel", "--felder", "Nummer", "--von", "301"}));
    EXPECT_EQ(head + "-3\n", Csv({"zahlziel", "--felder", "Nummer", "--hoechstens", "1"}));
}

TEST_F(ShowBooks, ATextIsTakenAsTheBeginning)
{
    EXPECT_EQ("Waehrung;Datum\nUSD;15.01.1998\nUSD;31.01.1998\n",
              Csv({"kurse", "--felder", "Waehrung,Datum", "--gleich", "US"}));
    EXPECT_EQ("Waehrung;Datum\nCHF;31.01.1998\nUSD;15.01.1998\nUSD;31.01.1998\n",
              Csv({"kurse", "--felder", "Waehrung,Datum", "--von", "C", "--bis", "U"}));
    EXPECT_EQ("Waehrung;Datum\nUSD;15.01.1998\n",
              Csv({"kurse", "--felder", "Waehrung,Datum", "--gleich", "USD,180115"}));
}

TEST_F(ShowBooks, FieldsInOtherOrderStandSideBySide)
{
    const Result result = Show({"kurse", "--felder", "Kurs,Datum"});
    EXPECT_EQ("           Kurs  Datum\n"
              "───────────────  ──────────\n"
              "         121,50  31.01.1998\n"
              "           1,80  15.01.1998\n"
              "      -1.234,56  31.01.1998\n",
              result.Out);
}

TEST_F(ShowBooks, AGroupOfFieldsHasOneName)
{
    const std::string csv = Csv({"sako", "--gleich", "1840", "--felder", "Konto,Umsaetze.Vortrag"});
    EXPECT_TRUE(csv.starts_with("Konto;Umsaetze.Vortrag.Soll;Umsaetze.Vortrag.Haben\n1840;")) << csv;
}

TEST_F(ShowBooks, GapsAreShownWhenWanted)
{
    const Result result = Show({"koschaze", "--alles", "--hoechstens", "1", "--json"});
    EXPECT_EQ(std::string::npos, result.Out.find("Reserved")) << "this record has no gaps";
    const Result user = Show({"user", "--alles", "--hoechstens", "1", "--json"});
    EXPECT_NE(std::string::npos, user.Out.find("\"Reserved36\": \"0000")) << user.Out;
}

TEST_F(ShowBooks, AnotherKeyGivesAnotherOrder)
{
    const std::string csv = Csv({"sako", "--schluessel", "1", "--felder", "Kuerzel", "--hoechstens", "50"});
    std::string previous;
    size_t at = csv.find('\n') + 1;
    int rows = 0;
    for (size_t end; (end = csv.find('\n', at)) != std::string::npos; at = end + 1, ++rows) {
        const std::string now = csv.substr(at, end - at);
        EXPECT_LE(previous, now);
        previous = now;
    }
    EXPECT_EQ(50, rows);
}

TEST_F(ShowBooks, ConfiguredBooksNeedNoDirectory)
{
    const Result result = tests::Run({BOOKS_PROGRAM,
                                      {"zeigen", "zahlziel", "--gleich", "300"},
                                      {},
                                      {{"VARK_CONFIG_DIR", Books.string()}}});
    EXPECT_EQ(0, result.ExitCode) << result.Err;
    EXPECT_TRUE(result.Out.starts_with("1998/zahlziel [300]\n")) << result.Out;
    const Result nowhere =
        tests::Run({BOOKS_PROGRAM, {"zeigen", "zahlziel"}, {}, {{"VARK_CONFIG_DIR", "/nirgends"}}});
    EXPECT_EQ(2, nowhere.ExitCode);
    EXPECT_NE(std::string::npos, nowhere.Err.find("Geben Sie das Verzeichnis an")) << nowhere.Err;
}

TEST_F(ShowBooks, ControlCharactersDoNotReachTheTerminal)
{
    {
        TableFile terms(LayoutOf(TableZahlziel), Year, OpenMode::Normal);
        ZahlzielRecord record{};
        record.Nummer = 8;
        std::memcpy(record.Text, "a\x1B[31mb", 8);
        terms.Insert(&record);
        terms.Close();
        StopEngine();
    }
    EXPECT_NE(std::string::npos, Show({"zahlziel", "--gleich", "8"}).Out.find("Text    a?[31mb\n"));
    EXPECT_NE(std::string::npos, Show({"zahlziel", "--gleich", "8", "--json"}).Out.find("a\\u001B[31mb"));
}

TEST_F(ShowBooks, WhatCannotBeUnderstoodIsRefused)
{
    const auto refused = [&](int code, std::vector<std::string> arguments, const char *reason) {
        const Result result = Show(std::move(arguments));
        EXPECT_EQ(code, result.ExitCode);
        EXPECT_EQ("", result.Out);
        EXPECT_NE(std::string::npos, result.Err.find(reason)) << result.Err;
    };
    refused(2, {"kasse"}, "Eine Tabelle kasse gibt es nicht. Es gibt sako, bube,");
    refused(2, {"sako", "--schluessel", "2"},
            "Einen Schlüssel 2 hat sako nicht; die Schlüssel gehen von 0 bis 1.");
    refused(2, {"sako", "--schluessel", "-1"}, "Einen Schlüssel -1 hat sako nicht");
    refused(2, {"sako", "--gleich", "12345678"}, "„12345678“ ist kein Wert für Konto (Kontonummer).");
    refused(2, {"zahlziel", "--von", "x"}, "„x“ ist kein Wert für Nummer (i32).");
    refused(2, {"zahlziel", "--von", "3000000000"}, "ist kein Wert für Nummer (i32).");
    refused(2, {"steke", "--schluessel", "2", "--gleich", "2,-1"}, "„-1“ ist kein Wert für Folge (u16).");
    refused(2, {"kurse", "--gleich", "USD,31.02.1998"}, "„31.02.1998“ ist kein Wert für Datum (Tag JJMMTT).");
    refused(2, {"kurse", "--gleich", "USDOLLAR"}, "ist kein Wert für Waehrung");
    refused(2, {"sako", "--felder", "Konto,Quatsch"}, "Ein Feld Quatsch hat sako nicht.");
    refused(2, {"sako", "--mandant", "9"}, "Den Mandanten 9 gibt es nicht.");
    refused(2, {"sako", "--jahr", "2005"}, "Das Jahr 2005 des Mandanten 1 gibt es nicht.");
    refused(2, {"sako", "--gleich", "1", "--von", "2"}, "passen nicht zusammen");
    const Result missing = tests::Books({"zeigen", "sako", (Directory.Path / "nein").string()});
    EXPECT_EQ(3, missing.ExitCode);
    EXPECT_NE(std::string::npos, missing.Err.find("ist kein Verzeichnis")) << missing.Err;
}

TEST_F(ShowBooks, DamagedBooksAreTold)
{
    WriteFile(Year / "books.mdb", "das sind keine Bücher");
    const Result result = Show({"sako"});
    EXPECT_EQ(3, result.ExitCode);
    EXPECT_NE(std::string::npos, result.Err.find("die Datei gehört nicht zu dieser Datenbank")) << result.Err;
}

TEST(DescribeBooks, ATableIsDescribedWithItsKeys)
{
    const Result result = tests::Books({"aufbau", "kurse"});
    EXPECT_EQ(0, result.ExitCode);
    EXPECT_NE(std::string::npos,
              result.Out.find("   5      7  Datum                     Tag JJMMTT          0b"))
        << result.Out;
    EXPECT_TRUE(result.Out.ends_with("\nSchlüssel: 0 Waehrung + Datum\n")) << result.Out;
    EXPECT_NE(std::string::npos, tests::Books({"aufbau"}).Out.find("27  mahntext   1398"));
    EXPECT_EQ(2, tests::Books({"aufbau", "kasse"}).ExitCode);
}

TEST(DescribeBooks, ThePageTellsEveryFieldOfEveryTable)
{
    const std::string page = tests::Books({"aufbau", "--html"}).Out;
    const std::string csv = tests::Books({"aufbau", "--csv"}).Out;
    for (const TableLayout &table : Tables()) {
        EXPECT_NE(std::string::npos, page.find("<h2 id=\"" + table.Stem + "\">")) << table.Stem;
        for (const FieldLayout &field : FieldsAndGaps(table)) {
            const std::string place = std::to_string(field.Offset) + "</td><td class=\"n\">" +
                                      std::to_string(field.Width) + "</td><td class=\"f\">" + field.Name +
                                      "</td>";
            EXPECT_NE(std::string::npos, page.find(place)) << table.Stem << "." << field.Name;
            EXPECT_NE(std::string::npos, csv.find("\n" + table.Stem + ";" + std::to_string(field.Offset) +
                                                  ";" + std::to_string(field.Width) + ";" + field.Name + ";"))
                << table.Stem << "." << field.Name;
        }
    }
    // The build has written the same page.
    EXPECT_EQ(page, ReadFile(RECORD_LAYOUT_PAGE));
}
