#include "tools/common/layout.h"

#include <algorithm>
#include <cctype>
#include <stdexcept>

namespace tools {

using namespace vark;

// Offsets and widths come from the record structures, so that they stand in one place.
#define FIELD(record, member, form, meaning)                                                                 \
    FieldLayout { #member, offsetof(record, member), sizeof(record::member), form, Reference::None, meaning }
#define LINK(record, member, form, target, meaning)                                                          \
    FieldLayout                                                                                              \
    {                                                                                                        \
#member, offsetof(record, member), sizeof(record::member), form, Reference::target, meaning          \
    }
#define NEEDS(record, member, form, target, meaning)                                                         \
    FieldLayout                                                                                              \
    {                                                                                                        \
#member, offsetof(record, member), sizeof(record::member), form, Reference::target, meaning, true    \
    }
#define SEGMENT(record, member, type)                                                                        \
    KeySegment { offsetof(record, member), sizeof(record::member), KeyType::type }

namespace {

KeyLayout UniqueKey(std::vector<KeySegment> segments) { return {false, false, std::move(segments)}; }

KeyLayout DuplicateKey(std::vector<KeySegment> segments) { return {true, false, std::move(segments)}; }

KeyLayout ChangingKey(std::vector<KeySegment> segments) { return {true, true, std::move(segments)}; }

// Fields of a structure that lies inside a record, under "Name."; `of` goes before what each means.
void AddNested(std::vector<FieldLayout> &fields, const std::string &name, size_t offset,
               const std::string &of, const std::vector<FieldLayout> &nested)
{
    for (FieldLayout field : nested) {
        field.Name = name + "." + field.Name;
        field.Offset = static_cast<uint16_t>(field.Offset + offset);
        if (!of.empty()) field.Meaning = of + ": " + field.Meaning;
        fields.push_back(std::move(field));
    }
}

// "Name[0]", "Name[1]" …; `of` and the number, from 1, say what each means.
void AddArray(std::vector<FieldLayout> &fields, const std::string &name, size_t offset, Form form,
              size_t width, const std::string &of, size_t count)
{
    for (size_t i = 0; i < count; ++i) {
        fields.push_back({name + "[" + std::to_string(i) + "]", static_cast<uint16_t>(offset + i * width),
                          static_cast<uint16_t>(width), form, Reference::None,
                          of + " " + std::to_string(i + 1)});
    }
}

std::vector<FieldLayout> SumFields()
{
    std::vector<FieldLayout> fields;
    const std::vector<FieldLayout> pair = {FIELD(SollHaben, Soll, Form::Amount, "Soll"),
                                           FIELD(SollHaben, Haben, Form::Amount, "Haben")};
    AddNested(fields, "Vortrag", offsetof(AccountSums, Vortrag), "Vortrag", pair);
    AddNested(fields, "Slot0", offsetof(AccountSums, Slot0), "Jahresende", pair);
    for (size_t month = 0; month < 12; ++month) {
        AddNested(fields, "Monat[" + std::to_string(month) + "]",
                  offsetof(AccountSums, Monat) + month * sizeof(SollHaben),
                  "Geschäftsmonat " + std::to_string(month + 1), pair);
    }
    AddArray(fields, "Buchungszahl", offsetof(AccountSums, Buchungszahl), Form::I16, sizeof(int16_t),
             "Buchungen im Geschäftsmonat", 12);
    return fields;
}

TableLayout Sako()
{
    using R = SakoRecord;
    std::vector<FieldLayout> fields = {
        FIELD(R, Konto, Form::Konto, "Kontonummer"),
        FIELD(R, Kuerzel, Form::Text, "Kürzel"),
        FIELD(R, Zuordnung, Form::I16, "Platz des Kontos: 0 keiner, 2 Aktiva, 4 Passiva, 8 GuV"),
        FIELD(R, Zustand, Form::I16, "0: das Konto darf nicht gelöscht werden"),
        FIELD(R, Datum, Form::PackedDay, "Datum des Kontos, steht im Kontenplan"),
        FIELD(R, Name, Form::Text, "Bezeichnung"),
        FIELD(
            R, Steuerflags, Form::U8,
            "Steuerschlüssel: 2 Regelsatz, 4 ermäßigt, 8 Nullsatz, 16 sonstiger, 128 EG; dazu 32 Vorsteuer"),
        FIELD(R, Steuersatz, Form::Rate, "Prozentsatz der Schlüssel mit eigenem Satz"),
    };
    AddNested(fields, "Umsaetze", offsetof(R, Umsaetze), "", SumFields());
    const std::vector<FieldLayout> rest = {
        FIELD(R, FesterSatz, Form::I16, "nicht 0: der Steuersatz einer Buchung steht fest"),
        FIELD(R, Kontenplanflag, Form::U8, "Ja/Nein im Kontenplan"),
        FIELD(R, Kennzahl, Form::I16, "Kennzahl der Umsatzsteuervoranmeldung, 0 für keine"),
        FIELD(R, MitKosten, Form::U8, "nicht 0: das Konto hat eine Kostenschablone"),
        LINK(R, Kostenschablone, Form::I32, Kostenschablone, "Nummer der Kostenschablone, 0 für keine"),
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
    std::vector<FieldLayout> fields = {
        FIELD(R, Konto, Form::Konto, "Kontonummer"), FIELD(R, Kuerzel, Form::Text, "Kürzel"),
        FIELD(R, Zustand, Form::I16, "0: das Konto darf nicht gelöscht werden"),
        FIELD(R, Datum, Form::Calendar, "Tag der letzten Änderung, im Kalenderjahr")};
    AddArray(fields, "ReservedAmounts27", offsetof(R, ReservedAmounts27), Form::Amount, sizeof(AmountText),
             "Betrag der Anwendung", 3);
    const std::vector<FieldLayout> address = {
        FIELD(R, ReservedOne66, Form::U8, "1, wenn der Satz angelegt wird"),
        FIELD(R, Name1, Form::Text, "Name, erste Zeile"),
        FIELD(R, Name2, Form::Text, "Name, zweite Zeile"),
        FIELD(R, Adresse1, Form::Text, "Straße"),
        FIELD(R, Plz, Form::Text, "Postleitzahl"),
        FIELD(R, Land, Form::Text, "Land"),
        FIELD(R, Adresse2, Form::Text, "Ort"),
        LINK(R, Gegenkonto, Form::Konto, Sachkonto, "Gegenkonto, darf leer sein"),
    };
    fields.insert(fields.end(), address.begin(), address.end());
    AddNested(fields, "Umsaetze", offsetof(R, Umsaetze), "", SumFields());
    const std::vector<FieldLayout> terms = {
        FIELD(R, Blz, Form::Digits, "Bankleitzahl"),
        FIELD(R, BankkontoAlt, Form::Digits, "Bankkontonummer früherer Sätze, gilt nur ohne Bankkonto"),
        FIELD(R, Bank, Form::Text, "Name der Bank"),
        FIELD(R, Wert1, Form::I16, "erster Wert der Zahltage"),
        FIELD(R, Wert2, Form::I16, "zweiter Wert der Zahltage"),
        FIELD(R, Skonto, Form::Rate, "Skontoprozente"),
        FIELD(R, Mahnkennziffer, Form::I16, "-1 bis 3 bei Debitoren, 0 bei Kreditoren"),
        FIELD(R, UstId, Form::Text, "USt-IdNr; die ersten zwei Zeichen nennen das Land"),
        LINK(R, Waehrung, Form::Text, Waehrung, "Währung eines Kreditors; leer: die des Mandanten"),
        FIELD(R, Kennzeichen, Form::U8, "1 steht im Kontenplan als Ja"),
    };
    fields.insert(fields.end(), terms.begin(), terms.end());
    AddArray(fields, "ReservedAmounts709", offsetof(R, ReservedAmounts709), Form::Amount, sizeof(AmountText),
             "Betrag der Anwendung", 13);
    fields.push_back(FIELD(R, Kontenplantext, Form::Text, "Text der Zeile im Kontenplan"));
    fields.push_back(
        LINK(R, Zahlungsziel, Form::I32, Zahlungsziel, "Nummer des Zahlungsziels, 0 für keines"));
    fields.push_back(FIELD(R, Bankkonto, Form::Digits, "Bankkontonummer"));
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
            {FIELD(R, Code, Form::U16, "Schlüssel, 1 bis 31: die unteren fünf Bit der Steuerflags"),
             FIELD(R, Folge, Form::U16, "Nummer des Satzes im Schlüssel, der neueste zuerst"),
             FIELD(R, GueltigAb, Form::PackedDay, "erster Tag des Satzes; leer: schon immer"),
             FIELD(R, Satz, Form::Rate, "Prozentsatz"),
             NEEDS(R, Umsatzsteuerkonto, Form::Konto, Sachkonto, "Steuerkonto ohne das Vorsteuer-Bit"),
             NEEDS(R, Vorsteuerkonto, Form::Konto, Sachkonto, "Steuerkonto mit dem Vorsteuer-Bit")}};
}

TableLayout Fista()
{
    using R = FistaRecord;
    return {
        TableFista,
        "fista",
        sizeof(R),
        "Mandanten",
        {UniqueKey({SEGMENT(R, Nummer, Integer)})},
        {FIELD(R, Nummer, Form::I16, "Nummer des Mandanten"),
         FIELD(R, Name, Form::Text, "Name"),
         FIELD(R, Name2, Form::Text, "zweite Zeile der Anschrift"),
         FIELD(R, LowerYear, Form::Year, "erstes bebuchbares Jahr; leer: nur das letzte"),
         FIELD(R, UpperYear, Form::Year, "letztes bebuchbares Jahr, es benennt das Verzeichnis"),
         FIELD(R, Sammelkonto1, Form::Konto, "Konto, dessen Kontenblatt zusammenfaßt"),
         FIELD(R, Sammelkonto2, Form::Konto, "Konto, dessen Kontenblatt zusammenfaßt"),
         FIELD(R, Steuernummer, Form::Text, "Steuernummer"),
         FIELD(R, UstId, Form::Text, "USt-IdNr; nicht leer: die Regeln des EG-Handels gelten"),
         FIELD(R, Sonderkontomodus, Form::I16, "nicht 0: die Voranmeldung sieht auf das Sonderkonto"),
         FIELD(R, Sonderkonto, Form::Konto, "Sonderkonto der Voranmeldung"),
         FIELD(R, FirstFiscalMonth, Form::I16, "erster Monat des Geschäftsjahrs, 1 bis 12; 0 heißt 1"),
         FIELD(R, Vordruckcode, Form::U8, "Zeile des Vordrucks: 0 keine, 10 zweite Fassung, sonst die erste"),
         FIELD(R, Anschrift1, Form::Text, "Anschrift für die Voranmeldung"),
         FIELD(R, Anschrift2, Form::Text, "Anschrift"),
         FIELD(R, Anschrift3, Form::Text, "Anschrift"),
         FIELD(R, Anschrift4, Form::Text, "Anschrift"),
         FIELD(R, Anschrift5, Form::Text, "Anschrift"),
         FIELD(R, Anschrift6, Form::Text, "Anschrift"),
         FIELD(R, Land, Form::Text, "Land, Vorgabe neuer Personenkonten"),
         FIELD(R, Waehrung, Form::Text, "Währung des Hauses"),
         FIELD(R, Kostenrechnung, Form::U8, "nicht 0: mit Kostenrechnung"),
         FIELD(R, KostenPflicht, Form::U8, "nicht 0: Buchungen auf GuV-Konten brauchen Kosten"),
         FIELD(R, UStVAVariante, Form::U8, "0: Vordrucke or_ustvd und or_ustd7, sonst or_ustva"),
         FIELD(R, Buchungssperre, Form::PackedDay,
               "letzter Tag der gedruckten Voranmeldung, darf leer sein")}};
}

TableLayout Structure(TableId id, const char *stem, const char *content)
{
    using R = StructureRecord;
    return {id,
            stem,
            sizeof(R),
            content,
            {ChangingKey({SEGMENT(R, Id, Integer)}), ChangingKey({SEGMENT(R, Text, String)})},
            {FIELD(R, Id, Form::I32, "Nummer des Knotens; 1 ist die Wurzel, 0 ein Konto außerhalb des Baums"),
             FIELD(R, Art, Form::U16, "Bit 2 Gruppe, Bit 4 Gegenposten; ohne Bit 2 ein Konto"),
             LINK(R, Next, Form::I32, Knoten, "nächster Knoten derselben Ebene, 0 für keinen"),
             LINK(R, Child, Form::I32, Knoten, "erster Unterknoten, 0 für keinen"),
             FIELD(R, Summenzeile, Form::U8, "Bit 1 geht an den Bericht"),
             FIELD(R, Text, Form::Text, "Titel der Gruppe oder Kontonummer")}};
}

TableLayout Kore()
{
    using R = KoreRecord;
    std::vector<FieldLayout> fields = {
        FIELD(R, Nummer, Form::Konto, "Nummer der Kostenstelle"), FIELD(R, Kuerzel, Form::Text, "Kürzel"),
        FIELD(R, Name, Form::Text, "Bezeichnung"), FIELD(R, Kennzeichen, Form::U8, "1 wird als Ja gedruckt")};
    AddArray(fields, "Monat", offsetof(R, Monat), Form::Amount, sizeof(AmountText),
             "Kosten im Geschäftsmonat", 12);
    fields.push_back(FIELD(R, Text, Form::Text, "Text"));
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
            {LINK(R, FinaleBuchung, Form::I32, Final, "Buchungsnummer in bube, solange nicht endgültig 0"),
             LINK(R, Buchungsnummer, Form::I32, Buchung, "die in bat, bei der ersten Teilbuchung, sonst 0"),
             LINK(R, Splitnummer, Form::I32, Teil, "die in split, bei einer weiteren Teilbuchung, sonst 0"),
             FIELD(R, Datum, Form::SortDay, "Tag der Buchung"),
             NEEDS(R, Kostenobjekt1, Form::Konto, Kostenobjekt, "erste Kostenstelle"),
             LINK(R, Kostenobjekt2, Form::Konto, Kostenobjekt, "zweite Kostenstelle"),
             LINK(R, Konto, Form::Konto, Konto, "Konto der endgültigen Buchung"),
             FIELD(R, Flag, Form::U8, "Kennzeichen der Schablone; dazu 32 auf der Habenseite"),
             FIELD(R, Betrag, Form::Amount, "Anteil am Nettobetrag"), FIELD(R, Text, Form::Text, "Text")}};
}

std::vector<FieldLayout> SplitFields()
{
    using R = SplitRecord;
    return {LINK(R, Buchungsnummer, Form::I32, Buchung, "die in bat"),
            FIELD(R, Splitnummer, Form::I32, "vergibt die Datenbank"),
            NEEDS(R, Sollkonto, Form::Konto, Konto, "Sollkonto"),
            NEEDS(R, Habenkonto, Form::Konto, Konto, "Habenkonto"),
            LINK(R, Steuerkonto, Form::Konto, Sachkonto, "Steuerkonto, leer ohne Steuer"),
            FIELD(R, SollArt, Form::U8, "Art des Sollkontos: 2 Sachkonto, 4 Kreditor, 8 Debitor"),
            FIELD(R, HabenArt, Form::U8, "Art des Habenkontos, ebenso"),
            FIELD(R, Steuerseite, Form::U16, "Konto, das den Schlüssel gab: 2 Soll, 1 Haben, 0 keines"),
            FIELD(R, Steuerschluessel, Form::U16, "Schlüssel in steke; dazu 64 bei einem älteren Satz"),
            FIELD(R, Steuerfolge, Form::U16, "Folge des Satzes in steke"),
            FIELD(R, Brutto, Form::Amount, "Bruttobetrag"),
            FIELD(R, Netto, Form::Amount, "Nettobetrag, bei fremder Währung der umgerechnete"),
            FIELD(R, Steuersatz, Form::Rate, "Steuersatz"),
            FIELD(R, Text, Form::Text, "Buchungstext"),
            FIELD(R, Kostenzeilen, Form::I16, "Zahl der Zeilen in kobu"),
            LINK(R, Kostenschablone, Form::I32, Kostenschablone, "Nummer der Kostenschablone, 0 für keine")};
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
        NEEDS(R, Stapel, Form::I32, Stapel, "Nummer des Stapels"),
        FIELD(R, Buchungsnummer, Form::I32, "vergibt die Datenbank"),
        FIELD(R, Buchungsdatum, Form::PackedDay, "Buchungsdatum"),
        FIELD(R, ZweitesDatum, Form::PackedDay, "wie das Buchungsdatum; Datum der Kostenzeilen"),
        FIELD(R, Beleg, Form::Text, "Belegnummer"),
        FIELD(R, Splitseite, Form::U16,
              "gemeinsame Seite der Teilbuchungen: 128 Soll, 256 Haben, 0 bei einer einfachen"),
        FIELD(R, Anzahl, Form::I16, "Zahl der Teilbuchungen"),
    };
    AddNested(fields, "Teil", offsetof(R, Teil), "erste Teilbuchung", SplitFields());
    const std::vector<FieldLayout> rest = {
        LINK(R, Waehrung, Form::Text, Waehrung, "Währung des Personenkontos"),
        FIELD(R, Waehrungsbetrag, Form::Amount, "Betrag in dieser Währung"),
        FIELD(R, Kennzeichen, Form::U8, "wie der Aufrufer es gab"),
        FIELD(R, OpAusgleich, Form::U8, "nicht 0: die Buchung gleicht einen offenen Posten aus"),
        LINK(R, Zahlungsziel, Form::I32, Zahlungsziel, "Nummer des Zahlungsziels, 0 für keines"),
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
            {FIELD(R, Schluessel.Folge, Form::DayNumber, "Tag und seine laufende Nummer, JJMMTTNNNN"),
             FIELD(R, Schluessel.Belegdatum, Form::PackedDay, "Belegdatum"),
             NEEDS(R, Sollkonto, Form::Konto, Konto, "Sollkonto"),
             NEEDS(R, Habenkonto, Form::Konto, Konto, "Habenkonto"),
             LINK(R, Steuerkonto, Form::Konto, Sachkonto, "Steuerkonto, leer ohne Steuer"),
             FIELD(R, Status, Form::U16,
                   "Bits: 2 ohne Netto, 4 nicht im Monat, 8 gefaltet, 16 ohne Kennzahl, 128/256 Split auf "
                   "Soll/Haben, 512 Steuerbuchung, 2048 Anfang eines Splits"),
             FIELD(R, Steuerflags, Form::U8, "Voranmeldung: 4 zuzählen, 2 abziehen"),
             FIELD(R, Steuerherkunft, Form::U8, "Steuerschlüssel, dazu 32 Vorsteuer"),
             FIELD(R, Beleg, Form::Text, "Belegnummer"),
             FIELD(R, Datum, Form::PackedDay, "Tag der Buchung"),
             FIELD(R, Soll, Form::Amount, "Betrag im Soll"),
             FIELD(R, Haben, Form::Amount, "Betrag im Haben"),
             FIELD(R, Steuer, Form::Amount, "Steuerbetrag"),
             FIELD(R, Text, Form::Text, "Buchungstext"),
             FIELD(R, Buchungsnummer, Form::I32, "Buchungsnummer"),
             FIELD(R, Buchungsdatum, Form::SortDay, "Tag der Erfassung"),
             LINK(R, Benutzer, Form::Text, Benutzer, "Benutzer, der gebucht hat"),
             FIELD(R, Grundbetrag, Form::Amount, "Bemessungsgrundlage oder Nettobetrag"),
             FIELD(R, Steuerklasse, Form::U8, "Klasse der Steuer: 2, 4, 64, 128"),
             FIELD(R, Steuersatz, Form::Rate, "Steuersatz"),
             FIELD(R, Anzahl, Form::I16, "Zahl der Teilbuchungen eines Kopfs")}};
}

TableLayout OpenItems(TableId id, const char *stem, const char *content, Reference account)
{
    using R = OpenItemRecord;
    std::vector<FieldLayout> fields = {
        FIELD(R, Nummer, Form::U32, "laufende Nummer"),
        FIELD(R, Konto, Form::Konto, "Personenkonto"),
        FIELD(R, Referenz1, Form::Text, "erste Referenz"),
        FIELD(R, Referenz2, Form::Text, "zweite Referenz"),
        FIELD(R, Datum1, Form::SortDay, "Belegdatum"),
        FIELD(R, Termin, Form::SortDay, "Fälligkeit"),
        FIELD(R, Skontodatum, Form::SortDay, "letzter Tag mit Skonto"),
        FIELD(R, Text1, Form::Text, "erster Text"),
        FIELD(R, Text2, Form::Text, "zweiter Text"),
        FIELD(R, Flag, Form::I16, "in der OP-Liste ein Ja/Nein"),
        FIELD(R, Betrag1, Form::Amount, "offener Betrag in der Währung des Mandanten"),
        LINK(R, Konto2, Form::Konto, Konto, "zweites Konto der OP-Liste"),
        LINK(R, Konto3, Form::Konto, Konto, "drittes Konto der OP-Liste"),
        FIELD(R, Satz, Form::Rate, "Prozentsatz der OP-Liste"),
        FIELD(R, Wert1, Form::I16, "Wert der OP-Liste"),
        FIELD(R, Wert2, Form::I16, "Wert der OP-Liste"),
        FIELD(R, Betrag3, Form::Amount, "Betrag der OP-Liste"),
        FIELD(R, Betrag2, Form::Amount, "zweiter Betrag"),
        FIELD(R, Betrag4, Form::Amount, "Betrag der OP-Liste"),
        FIELD(R, Wert3, Form::I32, "Wert der OP-Liste"),
        LINK(R, Waehrung, Form::Text, Waehrung, "Währung; leer: die des Mandanten"),
        FIELD(R, Waehrungsbetrag, Form::Amount, "Betrag in dieser Währung"),
        FIELD(R, Zahlungsart, Form::U8, "1 Überweisung, 2 Scheck, 3 Einzug, 4 Abbuchung"),
    };
    fields[1].Target = account;
    fields[1].IsNeeded = true;
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
            {FIELD(R, Nummer, Form::I32, "Nummer, vergibt die Datenbank; bis 15 der Anwendung vorbehalten"),
             FIELD(R, Name, Form::Text, "Name"),
             FIELD(R, Intervall, Form::I16, "Monate bis zur Wiederholung, 0 für keine")}};
}

TableLayout Kurse()
{
    using R = KurseRecord;
    return {TableKurse,
            "kurse",
            sizeof(R),
            "Wechselkurse",
            {UniqueKey({SEGMENT(R, Waehrung, String), SEGMENT(R, Datum, String)})},
            {FIELD(R, Waehrung, Form::Text, "Währung"), FIELD(R, Datum, Form::SortDay, "Tag des Kurses"),
             FIELD(R, Kurs, Form::Amount, "Kurs"),
             FIELD(R, Durchschnitt, Form::U8, "nicht 0: Durchschnitt seines Monats"),
             FIELD(R, Einheit, Form::I16, "wieviel fremde Einheiten der Kurs meint")}};
}

TableLayout User()
{
    using R = UserRecord;
    return {TableUser,
            "user",
            sizeof(R),
            "Benutzer",
            {UniqueKey({SEGMENT(R, Schluessel, String)})},
            {FIELD(R, Schluessel, Form::Text, "Kurzzeichen"), FIELD(R, Name, Form::Text, "Name")}};
}

TableLayout Koscha()
{
    using R = KoschaRecord;
    return {TableKoscha,
            "koscha",
            sizeof(R),
            "Kostenschablonen",
            {UniqueKey({SEGMENT(R, Nummer, Integer)})},
            {FIELD(R, Nummer, Form::I32, "Nummer der Kostenschablone"), FIELD(R, Name, Form::Text, "Name"),
             FIELD(R, Schalter, Form::U8, "Schalter"),
             FIELD(R, Zeilen, Form::I16, "Zahl der Zeilen in koschaze")}};
}

TableLayout Koschaze()
{
    using R = KoschazeRecord;
    return {TableKoschaze,
            "koschaze",
            sizeof(R),
            "Zeilen der Kostenschablonen",
            {DuplicateKey({SEGMENT(R, Nummer, Integer)})},
            {NEEDS(R, Nummer, Form::I32, Kostenschablone, "Nummer der Kostenschablone"),
             NEEDS(R, Kostenobjekt1, Form::Konto, Kostenobjekt, "erste Kostenstelle"),
             LINK(R, Kostenobjekt2, Form::Konto, Kostenobjekt, "zweite Kostenstelle"),
             FIELD(R, Flag, Form::U8, "Kennzeichen"), FIELD(R, Anteil, Form::Share, "Anteil in Prozent"),
             FIELD(R, Text, Form::Text, "Text")}};
}

TableLayout Zahlziel()
{
    using R = ZahlzielRecord;
    return {TableZahlziel,
            "zahlziel",
            sizeof(R),
            "Zahlungsziele",
            {UniqueKey({SEGMENT(R, Nummer, Integer)})},
            {FIELD(R, Nummer, Form::I32, "Nummer des Zahlungsziels"),
             FIELD(R, Text, Form::Text, "Text der Auswahl")}};
}

// A table of which only the number is known; the rest of its record belongs to the accounting application.
template <typename Record> TableLayout Numbered(TableId id, const char *stem, const char *content)
{
    return {id,
            stem,
            sizeof(Record),
            content,
            {UniqueKey({SEGMENT(Record, Nummer, Integer)})},
            {FIELD(Record, Nummer, Form::I32, "Nummer"),
             FieldLayout{"Rest", sizeof(int32_t), sizeof(Record) - sizeof(int32_t), Form::Bytes,
                         Reference::None, "gehört der Anwendung"}}};
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

std::vector<FieldLayout> FieldsAndGaps(const TableLayout &table)
{
    std::vector<FieldLayout> all;
    uint16_t end = 0;
    const auto fill = [&](uint16_t upTo) {
        if (upTo == end) return;
        all.push_back({"Reserved" + std::to_string(end), end, static_cast<uint16_t>(upTo - end), Form::Bytes,
                       Reference::None, "bleibt, wie es ist"});
    };
    for (const FieldLayout &field : table.Fields) {
        fill(field.Offset);
        all.push_back(field);
        end = static_cast<uint16_t>(field.Offset + field.Width);
    }
    fill(table.RecordLength);
    return all;
}

std::string_view FormName(Form form)
{
    switch (form) {
    case Form::Text: return "Text";
    case Form::Digits: return "Ziffern";
    case Form::Konto: return "Kontonummer";
    case Form::Amount: return "Betrag";
    case Form::Rate: return "Prozentsatz";
    case Form::Share: return "Anteil";
    case Form::PackedDay: return "Tag TTMMJJ";
    case Form::SortDay: return "Tag JJMMTT";
    case Form::Calendar: return "Kalendertag TTMMJJ";
    case Form::Year: return "Jahr";
    case Form::DayNumber: return "Tag und Nummer";
    case Form::I16: return "i16";
    case Form::I32: return "i32";
    case Form::U8: return "u8";
    case Form::U16: return "u16";
    case Form::U32: return "u32";
    case Form::Bytes: return "Bytes";
    }
    return {};
}

std::string_view ReferenceName(Reference reference)
{
    switch (reference) {
    case Reference::None: return {};
    case Reference::Sachkonto: return "sako";
    case Reference::Personenkonto: return "debi, kred";
    case Reference::Debitor: return "debi";
    case Reference::Kreditor: return "kred";
    case Reference::Konto: return "sako, debi, kred";
    case Reference::Kostenobjekt: return "kore";
    case Reference::Zahlungsziel: return "zahlziel";
    case Reference::Kostenschablone: return "koscha";
    case Reference::Stapel: return "stapel";
    case Reference::Benutzer: return "user";
    case Reference::Knoten: return "dieselbe Tabelle";
    case Reference::Buchung: return "bat";
    case Reference::Teil: return "split";
    case Reference::Final: return "bube";
    case Reference::Waehrung: return "kurse";
    }
    return {};
}

const FieldLayout *FieldOf(const TableLayout &table, const KeySegment &segment)
{
    for (const FieldLayout &field : table.Fields) {
        if (field.Offset == segment.Offset) return &field;
    }
    return nullptr;
}

} // namespace tools
