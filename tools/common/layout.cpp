#include "tools/common/layout.h"

#include <algorithm>
#include <cctype>
#include <stdexcept>

namespace tools {

using namespace vark;

// Offsets and widths come from the record structures, so that they stand in one place.
#define FIELD(record, member, form)                                                                          \
    FieldLayout { #member, offsetof(record, member), sizeof(record::member), form, Reference::None }
#define LINK(record, member, form, target)                                                                   \
    FieldLayout { #member, offsetof(record, member), sizeof(record::member), form, Reference::target }
#define SEGMENT(record, member, type)                                                                        \
    KeySegment { offsetof(record, member), sizeof(record::member), KeyType::type }

namespace {

KeyLayout UniqueKey(std::vector<KeySegment> segments) { return {false, false, std::move(segments)}; }

KeyLayout DuplicateKey(std::vector<KeySegment> segments) { return {true, false, std::move(segments)}; }

KeyLayout ChangingKey(std::vector<KeySegment> segments) { return {true, true, std::move(segments)}; }

// Fields of a structure that lies inside a record, under "Name.".
void AddNested(std::vector<FieldLayout> &fields, const std::string &name, size_t offset,
               const std::vector<FieldLayout> &nested)
{
    for (FieldLayout field : nested) {
        field.Name = name + "." + field.Name;
        field.Offset = static_cast<uint16_t>(field.Offset + offset);
        fields.push_back(std::move(field));
    }
}

void AddAmounts(std::vector<FieldLayout> &fields, const std::string &name, size_t offset, int count)
{
    for (int i = 0; i < count; ++i) {
        fields.push_back({name + "[" + std::to_string(i) + "]",
                          static_cast<uint16_t>(offset + static_cast<size_t>(i) * sizeof(AmountText)),
                          sizeof(AmountText), Form::Amount, Reference::None});
    }
}

std::vector<FieldLayout> SumFields()
{
    std::vector<FieldLayout> fields;
    const std::vector<FieldLayout> pair = {FIELD(SollHaben, Soll, Form::Amount),
                                           FIELD(SollHaben, Haben, Form::Amount)};
    AddNested(fields, "Vortrag", offsetof(AccountSums, Vortrag), pair);
    AddNested(fields, "Slot0", offsetof(AccountSums, Slot0), pair);
    for (size_t month = 0; month < 12; ++month) {
        AddNested(fields, "Monat[" + std::to_string(month) + "]",
                  offsetof(AccountSums, Monat) + month * sizeof(SollHaben), pair);
    }
    for (size_t month = 0; month < 12; ++month) {
        fields.push_back(
            {"Buchungszahl[" + std::to_string(month) + "]",
             static_cast<uint16_t>(offsetof(AccountSums, Buchungszahl) + month * sizeof(int16_t)),
             sizeof(int16_t), Form::I16, Reference::None});
    }
    return fields;
}

TableLayout Sako()
{
    using R = SakoRecord;
    std::vector<FieldLayout> fields = {
        FIELD(R, Konto, Form::Konto),    FIELD(R, Kuerzel, Form::Text),    FIELD(R, Zuordnung, Form::I16),
        FIELD(R, Zustand, Form::I16),    FIELD(R, Datum, Form::PackedDay), FIELD(R, Name, Form::Text),
        FIELD(R, Steuerflags, Form::U8), FIELD(R, Steuersatz, Form::Rate),
    };
    AddNested(fields, "Umsaetze", offsetof(R, Umsaetze), SumFields());
    const std::vector<FieldLayout> rest = {
        FIELD(R, FesterSatz, Form::I16),
        FIELD(R, Kontenplanflag, Form::U8),
        FIELD(R, Kennzahl, Form::I16),
        FIELD(R, MitKosten, Form::U8),
        LINK(R, Kostenschablone, Form::I32, Kostenschablone),
    };
    fields.insert(fields.end(), rest.begin(), rest.end());
    return {TableSako,
            "sako",
            sizeof(R),
            "Sachkonten",
            {UniqueKey({SEGMENT(R, Konto, String)}), ChangingKey({SEGMENT(R, Kuerzel, String)})},
            fields};
}

TableLayout Personal(TableId id, const char *stem, const char *content)
{
    using R = PersonalRecord;
    std::vector<FieldLayout> fields = {FIELD(R, Konto, Form::Konto), FIELD(R, Kuerzel, Form::Text),
                                       FIELD(R, Zustand, Form::I16), FIELD(R, Datum, Form::Calendar)};
    AddAmounts(fields, "ReservedAmounts27", offsetof(R, ReservedAmounts27), 3);
    const std::vector<FieldLayout> address = {
        FIELD(R, ReservedOne66, Form::U8), FIELD(R, Name1, Form::Text),
        FIELD(R, Name2, Form::Text),       FIELD(R, Adresse1, Form::Text),
        FIELD(R, Plz, Form::Text),         FIELD(R, Land, Form::Text),
        FIELD(R, Adresse2, Form::Text),    LINK(R, Gegenkonto, Form::Konto, Sachkonto),
    };
    fields.insert(fields.end(), address.begin(), address.end());
    AddNested(fields, "Umsaetze", offsetof(R, Umsaetze), SumFields());
    const std::vector<FieldLayout> terms = {
        FIELD(R, Blz, Form::Digits),         FIELD(R, BankkontoAlt, Form::Digits),
        FIELD(R, Bank, Form::Text),          FIELD(R, Wert1, Form::I16),
        FIELD(R, Wert2, Form::I16),          FIELD(R, Skonto, Form::Rate),
        FIELD(R, Mahnkennziffer, Form::I16), FIELD(R, UstId, Form::Text),
        FIELD(R, Waehrung, Form::Text),      FIELD(R, Kennzeichen, Form::U8),
    };
    fields.insert(fields.end(), terms.begin(), terms.end());
    AddAmounts(fields, "ReservedAmounts709", offsetof(R, ReservedAmounts709), 13);
    fields.push_back(FIELD(R, Kontenplantext, Form::Text));
    fields.push_back(LINK(R, Zahlungsziel, Form::I32, Zahlungsziel));
    fields.push_back(FIELD(R, Bankkonto, Form::Digits));
    return {id,
            stem,
            sizeof(R),
            content,
            {UniqueKey({SEGMENT(R, Konto, String)}), ChangingKey({SEGMENT(R, Kuerzel, String)})},
            fields};
}

TableLayout Steke()
{
    using R = StekeRecord;
    const KeySegment code = SEGMENT(R, Code, Unsigned);
    return {TableSteke,
            "steke",
            sizeof(R),
            "Steuerschlüssel",
            {DuplicateKey({code}), ChangingKey({SEGMENT(R, Umsatzsteuerkonto, String)}),
             UniqueKey({code, SEGMENT(R, Folge, Unsigned)})},
            {FIELD(R, Code, Form::U16), FIELD(R, Folge, Form::U16), FIELD(R, GueltigAb, Form::PackedDay),
             FIELD(R, Satz, Form::Rate), LINK(R, Umsatzsteuerkonto, Form::Konto, Sachkonto),
             LINK(R, Vorsteuerkonto, Form::Konto, Sachkonto)}};
}

TableLayout Fista()
{
    using R = FistaRecord;
    return {TableFista,
            "fista",
            sizeof(R),
            "Mandanten",
            {UniqueKey({SEGMENT(R, Nummer, Integer)})},
            {FIELD(R, Nummer, Form::I16),
             FIELD(R, Name, Form::Text),
             FIELD(R, Name2, Form::Text),
             FIELD(R, LowerYear, Form::Year),
             FIELD(R, UpperYear, Form::Year),
             FIELD(R, Sammelkonto1, Form::Konto),
             FIELD(R, Sammelkonto2, Form::Konto),
             FIELD(R, Steuernummer, Form::Text),
             FIELD(R, UstId, Form::Text),
             FIELD(R, Sonderkontomodus, Form::I16),
             FIELD(R, Sonderkonto, Form::Konto),
             FIELD(R, FirstFiscalMonth, Form::I16),
             FIELD(R, Vordruckcode, Form::U8),
             FIELD(R, Anschrift1, Form::Text),
             FIELD(R, Anschrift2, Form::Text),
             FIELD(R, Anschrift3, Form::Text),
             FIELD(R, Anschrift4, Form::Text),
             FIELD(R, Anschrift5, Form::Text),
             FIELD(R, Anschrift6, Form::Text),
             FIELD(R, Land, Form::Text),
             FIELD(R, Waehrung, Form::Text),
             FIELD(R, Kostenrechnung, Form::U8),
             FIELD(R, KostenPflicht, Form::U8),
             FIELD(R, UStVAVariante, Form::U8),
             FIELD(R, Buchungssperre, Form::PackedDay)}};
}

TableLayout Structure(TableId id, const char *stem, const char *content)
{
    using R = StructureRecord;
    return {id,
            stem,
            sizeof(R),
            content,
            {ChangingKey({SEGMENT(R, Id, Integer)}), ChangingKey({SEGMENT(R, Text, String)})},
            {FIELD(R, Id, Form::I32), FIELD(R, Art, Form::U16), LINK(R, Next, Form::I32, Knoten),
             LINK(R, Child, Form::I32, Knoten), FIELD(R, Summenzeile, Form::U8), FIELD(R, Text, Form::Text)}};
}

TableLayout Kore()
{
    using R = KoreRecord;
    std::vector<FieldLayout> fields = {FIELD(R, Nummer, Form::Konto), FIELD(R, Kuerzel, Form::Text),
                                       FIELD(R, Name, Form::Text), FIELD(R, Kennzeichen, Form::U8)};
    AddAmounts(fields, "Monat", offsetof(R, Monat), 12);
    fields.push_back(FIELD(R, Text, Form::Text));
    return {TableKore,
            "kore",
            sizeof(R),
            "Kostenstellen",
            {UniqueKey({SEGMENT(R, Nummer, String)}), ChangingKey({SEGMENT(R, Kuerzel, String)})},
            fields};
}

TableLayout Kobu()
{
    using R = KobuRecord;
    const KeySegment day = SEGMENT(R, Datum, String);
    return {TableKobu,
            "kobu",
            sizeof(R),
            "Kostenbuchungen",
            {ChangingKey({SEGMENT(R, FinaleBuchung, Integer)}),
             ChangingKey({SEGMENT(R, Buchungsnummer, Integer)}),
             ChangingKey({SEGMENT(R, Splitnummer, Integer)}), ChangingKey({day}),
             ChangingKey({SEGMENT(R, Kostenobjekt1, String), day}),
             ChangingKey({SEGMENT(R, Kostenobjekt2, String), day})},
            {LINK(R, FinaleBuchung, Form::I32, Final), LINK(R, Buchungsnummer, Form::I32, Buchung),
             LINK(R, Splitnummer, Form::I32, Teil), FIELD(R, Datum, Form::SortDay),
             LINK(R, Kostenobjekt1, Form::Konto, Kostenobjekt),
             LINK(R, Kostenobjekt2, Form::Konto, Kostenobjekt), LINK(R, Konto, Form::Konto, Konto),
             FIELD(R, Flag, Form::U8), FIELD(R, Betrag, Form::Amount), FIELD(R, Text, Form::Text)}};
}

std::vector<FieldLayout> SplitFields()
{
    using R = SplitRecord;
    return {LINK(R, Buchungsnummer, Form::I32, Buchung),
            FIELD(R, Splitnummer, Form::I32),
            LINK(R, Sollkonto, Form::Konto, Konto),
            LINK(R, Habenkonto, Form::Konto, Konto),
            LINK(R, Steuerkonto, Form::Konto, Sachkonto),
            FIELD(R, SollArt, Form::U8),
            FIELD(R, HabenArt, Form::U8),
            FIELD(R, Steuerseite, Form::U16),
            FIELD(R, Steuerschluessel, Form::U16),
            FIELD(R, Steuerfolge, Form::U16),
            FIELD(R, Brutto, Form::Amount),
            FIELD(R, Netto, Form::Amount),
            FIELD(R, Steuersatz, Form::Rate),
            FIELD(R, Text, Form::Text),
            FIELD(R, Kostenzeilen, Form::I16),
            LINK(R, Kostenschablone, Form::I32, Kostenschablone)};
}

TableLayout Split()
{
    return {TableSplit,
            "split",
            sizeof(SplitRecord),
            "Teilbuchungen im Stapel",
            {ChangingKey({SEGMENT(SplitRecord, Buchungsnummer, Integer)}),
             UniqueKey({SEGMENT(SplitRecord, Splitnummer, Autoincrement)})},
            SplitFields()};
}

TableLayout Bat()
{
    using R = BatRecord;
    std::vector<FieldLayout> fields = {
        LINK(R, Stapel, Form::I32, Stapel),
        FIELD(R, Buchungsnummer, Form::I32),
        FIELD(R, Buchungsdatum, Form::PackedDay),
        FIELD(R, ZweitesDatum, Form::PackedDay),
        FIELD(R, Beleg, Form::Text),
        FIELD(R, Splitseite, Form::U16),
        FIELD(R, Anzahl, Form::I16),
    };
    AddNested(fields, "Teil", offsetof(R, Teil), SplitFields());
    const std::vector<FieldLayout> rest = {
        FIELD(R, Waehrung, Form::Text),
        FIELD(R, Waehrungsbetrag, Form::Amount),
        FIELD(R, Kennzeichen, Form::U8),
        FIELD(R, OpAusgleich, Form::U8),
        LINK(R, Zahlungsziel, Form::I32, Zahlungsziel),
    };
    fields.insert(fields.end(), rest.begin(), rest.end());
    return {
        TableBat,
        "bat",
        sizeof(R),
        "Buchungen im Stapel",
        {UniqueKey({SEGMENT(R, Buchungsnummer, Autoincrement)}), ChangingKey({SEGMENT(R, Stapel, Integer)})},
        fields};
}

TableLayout Bube()
{
    using R = BubeRecord;
    const KeySegment whole = SEGMENT(R, Schluessel, String);
    return {TableBube,
            "bube",
            sizeof(R),
            "Endgültige Buchungen",
            {UniqueKey({whole}), ChangingKey({SEGMENT(R, Sollkonto, String), whole}),
             ChangingKey({SEGMENT(R, Habenkonto, String), whole}),
             ChangingKey({SEGMENT(R, Steuerkonto, String), whole}), ChangingKey({SEGMENT(R, Beleg, String)}),
             UniqueKey({SEGMENT(R, Buchungsnummer, Integer)}), ChangingKey({SEGMENT(R, Benutzer, String)}),
             ChangingKey({SEGMENT(R, Buchungsdatum, String)})},
            {FIELD(R, Schluessel, Form::BubeKey),
             LINK(R, Sollkonto, Form::Konto, Konto),
             LINK(R, Habenkonto, Form::Konto, Konto),
             LINK(R, Steuerkonto, Form::Konto, Sachkonto),
             FIELD(R, Status, Form::U16),
             FIELD(R, Steuerflags, Form::U8),
             FIELD(R, Steuerherkunft, Form::U8),
             FIELD(R, Beleg, Form::Text),
             FIELD(R, Datum, Form::PackedDay),
             FIELD(R, Soll, Form::Amount),
             FIELD(R, Haben, Form::Amount),
             FIELD(R, Steuer, Form::Amount),
             FIELD(R, Text, Form::Text),
             FIELD(R, Buchungsnummer, Form::I32),
             FIELD(R, Buchungsdatum, Form::SortDay),
             LINK(R, Benutzer, Form::Text, Benutzer),
             FIELD(R, Grundbetrag, Form::Amount),
             FIELD(R, Steuerklasse, Form::U8),
             FIELD(R, Steuersatz, Form::Rate),
             FIELD(R, Anzahl, Form::I16)}};
}

TableLayout OpenItems(TableId id, const char *stem, const char *content, Reference account)
{
    using R = OpenItemRecord;
    std::vector<FieldLayout> fields = {
        FIELD(R, Nummer, Form::U32),          FIELD(R, Konto, Form::Konto),
        FIELD(R, Referenz1, Form::Text),      FIELD(R, Referenz2, Form::Text),
        FIELD(R, Datum1, Form::SortDay),      FIELD(R, Termin, Form::SortDay),
        FIELD(R, Skontodatum, Form::SortDay), FIELD(R, Text1, Form::Text),
        FIELD(R, Text2, Form::Text),          FIELD(R, Flag, Form::I16),
        FIELD(R, Betrag1, Form::Amount),      LINK(R, Konto2, Form::Konto, Konto),
        LINK(R, Konto3, Form::Konto, Konto),  FIELD(R, Satz, Form::Rate),
        FIELD(R, Wert1, Form::I16),           FIELD(R, Wert2, Form::I16),
        FIELD(R, Betrag3, Form::Amount),      FIELD(R, Betrag2, Form::Amount),
        FIELD(R, Betrag4, Form::Amount),      FIELD(R, Wert3, Form::I32),
        FIELD(R, Waehrung, Form::Text),       FIELD(R, Waehrungsbetrag, Form::Amount),
        FIELD(R, Zahlungsart, Form::U8),
    };
    fields[1].Target = account;
    return {id,
            stem,
            sizeof(R),
            content,
            {UniqueKey({SEGMENT(R, Nummer, Unsigned)}), ChangingKey({SEGMENT(R, Konto, String)}),
             ChangingKey({SEGMENT(R, Skontodatum, String)}), ChangingKey({SEGMENT(R, Termin, String)})},
            fields};
}

TableLayout Stapel()
{
    using R = StapelRecord;
    return {TableStapel,
            "stapel",
            sizeof(R),
            "Stapel",
            {UniqueKey({SEGMENT(R, Nummer, Autoincrement)})},
            {FIELD(R, Nummer, Form::I32), FIELD(R, Name, Form::Text), FIELD(R, Intervall, Form::I16)}};
}

TableLayout Kurse()
{
    using R = KurseRecord;
    return {TableKurse,
            "kurse",
            sizeof(R),
            "Wechselkurse",
            {UniqueKey({SEGMENT(R, Waehrung, String), SEGMENT(R, Datum, String)})},
            {FIELD(R, Waehrung, Form::Text), FIELD(R, Datum, Form::SortDay), FIELD(R, Kurs, Form::Amount),
             FIELD(R, Durchschnitt, Form::U8), FIELD(R, Einheit, Form::I16)}};
}

TableLayout User()
{
    using R = UserRecord;
    return {TableUser,
            "user",
            sizeof(R),
            "Benutzer",
            {UniqueKey({SEGMENT(R, Schluessel, String)})},
            {FIELD(R, Schluessel, Form::Text), FIELD(R, Name, Form::Text)}};
}

TableLayout Koscha()
{
    using R = KoschaRecord;
    return {TableKoscha,
            "koscha",
            sizeof(R),
            "Kostenschablonen",
            {UniqueKey({SEGMENT(R, Nummer, Integer)})},
            {FIELD(R, Nummer, Form::I32), FIELD(R, Name, Form::Text), FIELD(R, Schalter, Form::U8),
             FIELD(R, Zeilen, Form::I16)}};
}

TableLayout Koschaze()
{
    using R = KoschazeRecord;
    return {TableKoschaze,
            "koschaze",
            sizeof(R),
            "Zeilen der Kostenschablonen",
            {DuplicateKey({SEGMENT(R, Nummer, Integer)})},
            {LINK(R, Nummer, Form::I32, Kostenschablone), LINK(R, Kostenobjekt1, Form::Konto, Kostenobjekt),
             LINK(R, Kostenobjekt2, Form::Konto, Kostenobjekt), FIELD(R, Flag, Form::U8),
             FIELD(R, Anteil, Form::Share), FIELD(R, Text, Form::Text)}};
}

TableLayout Zahlziel()
{
    using R = ZahlzielRecord;
    return {TableZahlziel,
            "zahlziel",
            sizeof(R),
            "Zahlungsziele",
            {UniqueKey({SEGMENT(R, Nummer, Integer)})},
            {FIELD(R, Nummer, Form::I32), FIELD(R, Text, Form::Text)}};
}

// A table of which only the number is known; the rest of its record belongs to the accounting application.
template <typename Record> TableLayout Numbered(TableId id, const char *stem, const char *content)
{
    return {id,
            stem,
            sizeof(Record),
            content,
            {UniqueKey({SEGMENT(Record, Nummer, Integer)})},
            {FIELD(Record, Nummer, Form::I32),
             FieldLayout{"Rest", sizeof(int32_t), sizeof(Record) - sizeof(int32_t), Form::Bytes,
                         Reference::None}}};
}

std::vector<TableLayout> MakeTables()
{
    std::vector<TableLayout> tables = {
        Sako(),
        Bube(),
        Personal(TableKred, "kred", "Kreditoren"),
        Personal(TableDebi, "debi", "Debitoren"),
        Steke(),
        Fista(),
        Structure(TableGuvauf, "guvauf", "Aufbau der Gewinn- und Verlustrechnung"),
        Structure(TableBilaktau, "bilaktau", "Aufbau der Aktiva"),
        Structure(TableBilpasau, "bilpasau", "Aufbau der Passiva"),
        Kore(),
        Kobu(),
        Bat(),
        Numbered<BankRecord>(TableBank, "bank", "Banken"),
        Numbered<UeberwRecord>(TableUeberw, "ueberw", "Überweisungen"),
        OpenItems(TableOpkred, "opkred", "Offene Posten der Kreditoren", Reference::Kreditor),
        OpenItems(TableOpdebi, "opdebi", "Offene Posten der Debitoren", Reference::Debitor),
        Stapel(),
        Kurse(),
        Numbered<ButextRecord>(TableButext, "butext", "Buchungstexte"),
        Numbered<BuschaRecord>(TableBuscha, "buscha", "Buchungsschablonen"),
        User(),
        Split(),
        Koscha(),
        Koschaze(),
        Zahlziel(),
        Numbered<BumakRecord>(TableBumak, "bumak", "Buchungsmakros"),
        Numbered<MahntextRecord>(TableMahntext, "mahntext", "Mahntexte"),
    };
    for (const TableLayout &table : tables) {
        const TableEntry &entry = tableCatalogue[table.Id];
        if (table.Stem != entry.Stem || table.RecordLength != entry.RecordLength) {
            throw std::logic_error("table description does not agree with the catalogue: " + table.Stem);
        }
    }
    return tables;
}

} // namespace

uint16_t KeyLayout::Length() const
{
    uint16_t length = 0;
    for (const KeySegment &segment : Segments) {
        length = static_cast<uint16_t>(length + segment.Length);
    }
    return length;
}

const std::vector<TableLayout> &Tables()
{
    static const std::vector<TableLayout> tables = MakeTables();
    return tables;
}

const TableLayout &LayoutOf(TableId id)
{
    for (const TableLayout &table : Tables()) {
        if (table.Id == id) return table;
    }
    throw std::logic_error("no such table");
}

const TableLayout *FindLayout(std::string_view stem)
{
    const auto equal = [](char a, char b) {
        return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
    };
    for (const TableLayout &table : Tables()) {
        if (std::equal(stem.begin(), stem.end(), table.Stem.begin(), table.Stem.end(), equal)) return &table;
    }
    return nullptr;
}

bool IsYearTable(const TableLayout &table) { return table.Id != TableFista; }

const FieldLayout *FindField(const TableLayout &table, std::string_view name)
{
    for (const FieldLayout &field : table.Fields) {
        if (field.Name == name) return &field;
    }
    return nullptr;
}

} // namespace tools
