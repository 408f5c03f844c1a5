// The description of the fields that showing, checking and the page of the record layouts share, held against
// the offsets and widths that the accounting application's files have, written down here by hand.
#include "tools/common/fields.h"
#include "tools/common/layout.h"

#include <gtest/gtest.h>
#include <map>

using namespace tools;

namespace {

struct Expected {
    const char *Table;
    const char *Name;
    int Offset;
    int Width;
};

constexpr Expected expected[] = {
    {"sako", "Konto", 0, 8},
    {"sako", "Kuerzel", 8, 10},
    {"sako", "Zuordnung", 18, 2},
    {"sako", "Zustand", 20, 2},
    {"sako", "Datum", 22, 7},
    {"sako", "Name", 70, 50},
    {"sako", "Steuerflags", 120, 1},
    {"sako", "Steuersatz", 121, 6},
    {"sako", "Umsaetze.Vortrag.Soll", 127, 13},
    {"sako", "Umsaetze.Vortrag.Haben", 140, 13},
    {"sako", "Umsaetze.Slot0.Soll", 153, 13},
    {"sako", "Umsaetze.Slot0.Haben", 166, 13},
    {"sako", "Umsaetze.Monat[0].Soll", 179, 13},
    {"sako", "Umsaetze.Monat[0].Haben", 192, 13},
    {"sako", "Umsaetze.Monat[11].Soll", 465, 13},
    {"sako", "Umsaetze.Monat[11].Haben", 478, 13},
    {"sako", "Umsaetze.Buchungszahl[0]", 491, 2},
    {"sako", "Umsaetze.Buchungszahl[11]", 513, 2},
    {"sako", "FesterSatz", 515, 2},
    {"sako", "Kontenplanflag", 524, 1},
    {"sako", "Kennzahl", 525, 2},
    {"sako", "MitKosten", 696, 1},
    {"sako", "Kostenschablone", 697, 4},
    {"debi", "Konto", 0, 8},
    {"debi", "Kuerzel", 8, 10},
    {"debi", "Zustand", 18, 2},
    {"debi", "Datum", 20, 7},
    {"debi", "Name1", 68, 26},
    {"debi", "Name2", 94, 26},
    {"debi", "Adresse1", 120, 31},
    {"debi", "Plz", 151, 7},
    {"debi", "Land", 158, 4},
    {"debi", "Adresse2", 162, 31},
    {"debi", "Gegenkonto", 200, 8},
    {"debi", "Umsaetze.Vortrag.Soll", 208, 13},
    {"debi", "Umsaetze.Vortrag.Haben", 221, 13},
    {"debi", "Umsaetze.Slot0.Soll", 234, 13},
    {"debi", "Umsaetze.Slot0.Haben", 247, 13},
    {"debi", "Umsaetze.Monat[0].Soll", 260, 13},
    {"debi", "Umsaetze.Monat[11].Haben", 559, 13},
    {"debi", "Umsaetze.Buchungszahl[0]", 572, 2},
    {"debi", "Blz", 596, 9},
    {"debi", "BankkontoAlt", 605, 11},
    {"debi", "Bank", 616, 28},
    {"debi", "Wert1", 644, 2},
    {"debi", "Wert2", 646, 2},
    {"debi", "Skonto", 648, 6},
    {"debi", "Mahnkennziffer", 654, 2},
    {"debi", "UstId", 656, 47},
    {"debi", "Waehrung", 703, 5},
    {"debi", "Kennzeichen", 708, 1},
    {"debi", "Kontenplantext", 878, 28},
    {"debi", "Zahlungsziel", 906, 4},
    {"debi", "Bankkonto", 910, 12},
    {"steke", "Code", 0, 2},
    {"steke", "Folge", 2, 2},
    {"steke", "GueltigAb", 4, 7},
    {"steke", "Satz", 11, 6},
    {"steke", "Umsatzsteuerkonto", 17, 8},
    {"steke", "Vorsteuerkonto", 25, 8},
    {"fista", "Nummer", 0, 2},
    {"fista", "Name", 2, 41},
    {"fista", "Name2", 43, 26},
    {"fista", "LowerYear", 82, 5},
    {"fista", "UpperYear", 87, 5},
    {"fista", "Sammelkonto1", 92, 8},
    {"fista", "Sammelkonto2", 100, 8},
    {"fista", "Steuernummer", 134, 20},
    {"fista", "UstId", 154, 16},
    {"fista", "Sonderkontomodus", 170, 2},
    {"fista", "Sonderkonto", 172, 8},
    {"fista", "FirstFiscalMonth", 196, 2},
    {"fista", "Vordruckcode", 198, 1},
    {"fista", "Anschrift1", 199, 31},
    {"fista", "Land", 690, 4},
    {"fista", "Waehrung", 694, 4},
    {"fista", "Kostenrechnung", 698, 1},
    {"fista", "KostenPflicht", 699, 1},
    {"fista", "UStVAVariante", 701, 1},
    {"fista", "Buchungssperre", 705, 7},
    {"guvauf", "Id", 0, 4},
    {"guvauf", "Art", 4, 2},
    {"guvauf", "Next", 6, 4},
    {"guvauf", "Child", 10, 4},
    {"guvauf", "Summenzeile", 14, 1},
    {"guvauf", "Text", 16, 48},
    {"kore", "Nummer", 0, 8},
    {"kore", "Kuerzel", 8, 10},
    {"kore", "Name", 21, 31},
    {"kore", "Monat[0]", 53, 13},
    {"kore", "Monat[11]", 196, 13},
    {"kobu", "FinaleBuchung", 0, 4},
    {"kobu", "Buchungsnummer", 4, 4},
    {"kobu", "Splitnummer", 8, 4},
    {"kobu", "Datum", 12, 7},
    {"kobu", "Kostenobjekt1", 19, 8},
    {"kobu", "Kostenobjekt2", 27, 8},
    {"kobu", "Konto", 35, 8},
    {"kobu", "Flag", 43, 1},
    {"kobu", "Betrag", 44, 13},
    {"kobu", "Text", 57, 73},
    {"bat", "Stapel", 0, 4},
    {"bat", "Buchungsnummer", 4, 4},
    {"bat", "Buchungsdatum", 8, 7},
    {"bat", "ZweitesDatum", 15, 7},
    {"bat", "Beleg", 22, 9},
    {"bat", "Anzahl", 33, 2},
    {"bat", "Teil.Sollkonto", 43, 8},
    {"bat", "Teil.Kostenschablone", 150, 4},
    {"bat", "Waehrung", 178, 5},
    {"bat", "Waehrungsbetrag", 183, 13},
    {"bat", "Kennzeichen", 210, 1},
    {"bat", "OpAusgleich", 211, 1},
    {"bat", "Zahlungsziel", 216, 4},
    {"split", "Buchungsnummer", 0, 4},
    {"split", "Splitnummer", 4, 4},
    {"split", "Sollkonto", 8, 8},
    {"split", "Habenkonto", 16, 8},
    {"split", "Steuerkonto", 24, 8},
    {"split", "SollArt", 32, 1},
    {"split", "HabenArt", 33, 1},
    {"split", "Steuerseite", 34, 2},
    {"split", "Steuerschluessel", 36, 2},
    {"split", "Steuerfolge", 38, 2},
    {"split", "Brutto", 40, 13},
    {"split", "Netto", 53, 13},
    {"split", "Steuersatz", 66, 6},
    {"split", "Text", 73, 36},
    {"split", "Kostenzeilen", 109, 2},
    {"split", "Kostenschablone", 115, 4},
    {"bube", "Schluessel.Folge", 0, 11},
    {"bube", "Schluessel.Belegdatum", 11, 7},
    {"bube", "Sollkonto", 18, 8},
    {"bube", "Habenkonto", 26, 8},
    {"bube", "Steuerkonto", 34, 8},
    {"bube", "Status", 42, 2},
    {"bube", "Steuerflags", 44, 1},
    {"bube", "Steuerherkunft", 46, 1},
    {"bube", "Beleg", 47, 9},
    {"bube", "Datum", 56, 7},
    {"bube", "Soll", 63, 13},
    {"bube", "Haben", 76, 13},
    {"bube", "Steuer", 89, 13},
    {"bube", "Text", 102, 40},
    {"bube", "Buchungsnummer", 168, 4},
    {"bube", "Buchungsdatum", 172, 7},
    {"bube", "Benutzer", 179, 8},
    {"bube", "Grundbetrag", 196, 13},
    {"bube", "Steuerklasse", 209, 1},
    {"bube", "Steuersatz", 211, 6},
    {"bube", "Anzahl", 217, 2},
    {"opdebi", "Nummer", 0, 4},
    {"opdebi", "Konto", 4, 8},
    {"opdebi", "Termin", 40, 7},
    {"opdebi", "Skontodatum", 48, 7},
    {"opdebi", "Betrag1", 120, 13},
    {"opdebi", "Waehrung", 238, 5},
    {"opdebi", "Zahlungsart", 284, 1},
    {"stapel", "Nummer", 0, 4},
    {"stapel", "Name", 4, 32},
    {"stapel", "Intervall", 36, 2},
    {"kurse", "Waehrung", 0, 5},
    {"kurse", "Datum", 5, 7},
    {"kurse", "Kurs", 12, 13},
    {"koscha", "Nummer", 0, 4},
    {"koscha", "Name", 4, 41},
    {"koscha", "Schalter", 45, 1},
    {"koscha", "Zeilen", 46, 2},
    {"koschaze", "Nummer", 0, 4},
    {"koschaze", "Kostenobjekt1", 4, 8},
    {"koschaze", "Kostenobjekt2", 12, 8},
    {"koschaze", "Flag", 20, 1},
    {"koschaze", "Anteil", 21, 7},
    {"koschaze", "Text", 28, 105},
    {"zahlziel", "Nummer", 0, 4},
    {"zahlziel", "Text", 4, 41},
    {"user", "Schluessel", 0, 4},
    {"user", "Name", 4, 32},
};

const std::map<std::string, int> recordLengths = {
    {"sako", 746},   {"bube", 219},     {"kred", 956},    {"debi", 956},     {"steke", 34},
    {"fista", 998},  {"guvauf", 64},    {"bilaktau", 64}, {"bilpasau", 64},  {"kore", 495},
    {"kobu", 130},   {"bat", 500},      {"bank", 64},     {"ueberw", 256},   {"opkred", 525},
    {"opdebi", 525}, {"stapel", 64},    {"kurse", 58},    {"butext", 64},    {"buscha", 181},
    {"user", 128},   {"split", 143},    {"koscha", 110},  {"koschaze", 133}, {"zahlziel", 146},
    {"bumak", 270},  {"mahntext", 1398}};

} // namespace

TEST(RecordLayouts, FieldsLieWhereTheFilesHaveThem)
{
    for (const Expected &row : expected) {
        const TableLayout *table = FindLayout(row.Table);
        ASSERT_NE(nullptr, table) << row.Table;
        bool isThere = false;
        for (const FieldLayout &field : table->Fields) {
            if (field.Name != row.Name) continue;
            isThere = true;
            EXPECT_EQ(row.Offset, field.Offset) << row.Table << "." << row.Name;
            EXPECT_EQ(row.Width, field.Width) << row.Table << "." << row.Name;
        }
        EXPECT_TRUE(isThere) << row.Table << "." << row.Name;
    }
}

TEST(RecordLayouts, EveryTableIsDescribedInItsLength)
{
    EXPECT_EQ(recordLengths.size(), Tables().size());
    for (const TableLayout &table : Tables()) {
        ASSERT_EQ(1u, recordLengths.count(table.Stem)) << table.Stem;
        EXPECT_EQ(recordLengths.at(table.Stem), table.RecordLength) << table.Stem;
    }
}

TEST(RecordLayouts, TwinTablesHaveTheSameFields)
{
    const auto same = [](const char *one, const char *other) {
        const auto &a = FindLayout(one)->Fields;
        const auto &b = FindLayout(other)->Fields;
        ASSERT_EQ(a.size(), b.size());
        for (size_t i = 0; i < a.size(); ++i) {
            EXPECT_EQ(a[i].Name, b[i].Name);
            EXPECT_EQ(a[i].Offset, b[i].Offset);
        }
    };
    same("debi", "kred");
    same("opdebi", "opkred");
    same("guvauf", "bilaktau");
    same("guvauf", "bilpasau");
}

TEST(RecordLayouts, FieldsAndGapsTogetherAreTheWholeRecord)
{
    for (const TableLayout &table : Tables()) {
        int end = 0;
        for (const FieldLayout &field : FieldsAndGaps(table)) {
            EXPECT_EQ(end, field.Offset) << table.Stem << "." << field.Name;
            EXPECT_FALSE(field.Meaning.empty()) << table.Stem << "." << field.Name;
            end = field.Offset + field.Width;
        }
        EXPECT_EQ(table.RecordLength, end) << table.Stem;
    }
}

TEST(RecordLayouts, EverySegmentOfAKeyBeginsWithAField)
{
    for (const TableLayout &table : Tables()) {
        for (const KeyLayout &key : table.Keys) {
            for (const KeySegment &segment : key.Segments) {
                const FieldLayout *field = FieldOf(table, segment);
                ASSERT_NE(nullptr, field) << table.Stem << " " << segment.Offset;
                EXPECT_EQ(segment.Type != KeyType::String, IsNumber(field->Type))
                    << table.Stem << "." << field->Name;
            }
        }
    }
}
