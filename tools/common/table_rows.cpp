#include "tools/common/table_rows.h"

#include <algorithm>

namespace tools {

using namespace vark;

// Offsets and widths come from the record structures, so that they stand in one place.
#define FIELD(record, member, form, meaning)                                                                 \
    FieldRow { #member, offsetof(record, member), sizeof(record::member), form, Reference::None, meaning }
#define LINK(record, member, form, target, meaning)                                                          \
    FieldRow { #member, offsetof(record, member), sizeof(record::member), form, Reference::target, meaning }
#define NEEDS(record, member, form, target, meaning)                                                         \
    FieldRow                                                                                                 \
    {                                                                                                        \
#member, offsetof(record, member), sizeof(record::member), form, Reference::target, meaning, true    \
    }
#define ARRAY(record, member, form, meaning)                                                                 \
    FieldRow                                                                                                 \
    {                                                                                                        \
#member, offsetof(record, member), sizeof(record::member[0]), form, Reference::None, meaning, false, \
            sizeof(record::member) / sizeof(record::member[0])                                               \
    }
#define NESTED(record, member, inside, meaning)                                                              \
    FieldRow                                                                                                 \
    {                                                                                                        \
#member, offsetof(record, member), 0, Form::Bytes, Reference::None, meaning, false, 0, Nest::inside  \
    }
#define SEGMENT(record, member, type)                                                                        \
    KeySegment { offsetof(record, member), sizeof(record::member), KeyType::type }

namespace {

constexpr KeyRow UniqueKey(KeySegment first, KeySegment second = {})
{
    return {false, false, {first, second}};
}
constexpr KeyRow DuplicateKey(KeySegment only) { return {true, false, {only, {}}}; }
constexpr KeyRow ChangingKey(KeySegment first, KeySegment second = {})
{
    return {true, true, {first, second}};
}

constexpr FieldRow sumFields[] = {
    FIELD(SollHaben, Soll, Form::Amount, "Soll"),
    FIELD(SollHaben, Haben, Form::Amount, "Haben"),
};

constexpr FieldRow countFields[] = {
    ARRAY(AccountSums, Buchungszahl, Form::I16, "Buchungen im Geschäftsmonat"),
};

constexpr FieldRow sakoFields[] = {
    FIELD(SakoRecord, Konto, Form::Konto, "Kontonummer"),
    FIELD(SakoRecord, Kuerzel, Form::Text, "Kürzel"),
    FIELD(SakoRecord, Zuordnung, Form::I16, "Platz des Kontos: 0 keiner, 2 Aktiva, 4 Passiva, 8 GuV"),
    FIELD(SakoRecord, Zustand, Form::I16, "0: das Konto darf nicht gelöscht werden"),
    FIELD(SakoRecord, Datum, Form::PackedDay, "Datum des Kontos, steht im Kontenplan"),
    FIELD(SakoRecord, Name, Form::Text, "Bezeichnung"),
    FIELD(SakoRecord, Steuerflags, Form::U8,
          "Steuerschlüssel: 2 Regelsatz, 4 ermäßigt, 8 Nullsatz, 16 sonstiger, 128 EG; dazu 32 Vorsteuer"),
    FIELD(SakoRecord, Steuersatz, Form::Rate, "Prozentsatz der Schlüssel mit eigenem Satz"),
    NESTED(SakoRecord, Umsaetze, Sums, ""),
    FIELD(SakoRecord, FesterSatz, Form::I16, "nicht 0: der Steuersatz einer Buchung steht fest"),
    FIELD(SakoRecord, Kontenplanflag, Form::U8, "Ja/Nein im Kontenplan"),
    FIELD(SakoRecord, Kennzahl, Form::I16, "Kennzahl der Umsatzsteuervoranmeldung, 0 für keine"),
    FIELD(SakoRecord, MitKosten, Form::U8, "nicht 0: das Konto hat eine Kostenschablone"),
    LINK(SakoRecord, Kostenschablone, Form::I32, Kostenschablone, "Nummer der Kostenschablone, 0 für keine"),
};

constexpr FieldRow personalFields[] = {
    FIELD(PersonalRecord, Konto, Form::Konto, "Kontonummer"),
    FIELD(PersonalRecord, Kuerzel, Form::Text, "Kürzel"),
    FIELD(PersonalRecord, Zustand, Form::I16, "0: das Konto darf nicht gelöscht werden"),
    FIELD(PersonalRecord, Datum, Form::Calendar, "Tag der letzten Änderung, im Kalenderjahr"),
    ARRAY(PersonalRecord, ReservedAmounts27, Form::Amount, "Betrag der Anwendung"),
    FIELD(PersonalRecord, ReservedOne66, Form::U8, "1, wenn der Satz angelegt wird"),
    FIELD(PersonalRecord, Name1, Form::Text, "Name, erste Zeile"),
    FIELD(PersonalRecord, Name2, Form::Text, "Name, zweite Zeile"),
    FIELD(PersonalRecord, Adresse1, Form::Text, "Straße"),
    FIELD(PersonalRecord, Plz, Form::Text, "Postleitzahl"),
    FIELD(PersonalRecord, Land, Form::Text, "Land"),
    FIELD(PersonalRecord, Adresse2, Form::Text, "Ort"),
    LINK(PersonalRecord, Gegenkonto, Form::Konto, Sachkonto, "Gegenkonto, darf leer sein"),
    NESTED(PersonalRecord, Umsaetze, Sums, ""),
    FIELD(PersonalRecord, Blz, Form::Digits, "Bankleitzahl"),
    FIELD(PersonalRecord, BankkontoAlt, Form::Digits,
          "Bankkontonummer früherer Sätze, gilt nur ohne Bankkonto"),
    FIELD(PersonalRecord, Bank, Form::Text, "Name der Bank"),
    FIELD(PersonalRecord, Wert1, Form::I16, "erster Wert der Zahltage"),
    FIELD(PersonalRecord, Wert2, Form::I16, "zweiter Wert der Zahltage"),
    FIELD(PersonalRecord, Skonto, Form::Rate, "Skontoprozente"),
    FIELD(PersonalRecord, Mahnkennziffer, Form::I16, "-1 bis 3 bei Debitoren, 0 bei Kreditoren"),
    FIELD(PersonalRecord, UstId, Form::Text, "USt-IdNr; die ersten zwei Zeichen nennen das Land"),
    LINK(PersonalRecord, Waehrung, Form::Text, Waehrung, "Währung eines Kreditors; leer: die des Mandanten"),
    FIELD(PersonalRecord, Kennzeichen, Form::U8, "1 steht im Kontenplan als Ja"),
    ARRAY(PersonalRecord, ReservedAmounts709, Form::Amount, "Betrag der Anwendung"),
    FIELD(PersonalRecord, Kontenplantext, Form::Text, "Text der Zeile im Kontenplan"),
    LINK(PersonalRecord, Zahlungsziel, Form::I32, Zahlungsziel, "Nummer des Zahlungsziels, 0 für keines"),
    FIELD(PersonalRecord, Bankkonto, Form::Digits, "Bankkontonummer"),
};

constexpr FieldRow stekeFields[] = {
    FIELD(StekeRecord, Code, Form::U16, "Schlüssel, 1 bis 31: die unteren fünf Bit der Steuerflags"),
    FIELD(StekeRecord, Folge, Form::U16, "Nummer des Satzes im Schlüssel, der neueste zuerst"),
    FIELD(StekeRecord, GueltigAb, Form::PackedDay, "erster Tag des Satzes; leer: schon immer"),
    FIELD(StekeRecord, Satz, Form::Rate, "Prozentsatz"),
    NEEDS(StekeRecord, Umsatzsteuerkonto, Form::Konto, Sachkonto, "Steuerkonto ohne das Vorsteuer-Bit"),
    NEEDS(StekeRecord, Vorsteuerkonto, Form::Konto, Sachkonto, "Steuerkonto mit dem Vorsteuer-Bit"),
};

constexpr FieldRow fistaFields[] = {
    FIELD(FistaRecord, Nummer, Form::I16, "Nummer des Mandanten"),
    FIELD(FistaRecord, Name, Form::Text, "Name"),
    FIELD(FistaRecord, Name2, Form::Text, "zweite Zeile der Anschrift"),
    FIELD(FistaRecord, LowerYear, Form::Year, "erstes bebuchbares Jahr; leer: nur das letzte"),
    FIELD(FistaRecord, UpperYear, Form::Year, "letztes bebuchbares Jahr, es benennt das Verzeichnis"),
    FIELD(FistaRecord, Sammelkonto1, Form::Konto, "Konto, dessen Kontenblatt zusammenfaßt"),
    FIELD(FistaRecord, Sammelkonto2, Form::Konto, "Konto, dessen Kontenblatt zusammenfaßt"),
    FIELD(FistaRecord, Steuernummer, Form::Text, "Steuernummer"),
    FIELD(FistaRecord, UstId, Form::Text, "USt-IdNr; nicht leer: die Regeln des EG-Handels gelten"),
    FIELD(FistaRecord, Sonderkontomodus, Form::I16, "nicht 0: die Voranmeldung sieht auf das Sonderkonto"),
    FIELD(FistaRecord, Sonderkonto, Form::Konto, "Sonderkonto der Voranmeldung"),
    FIELD(FistaRecord, FirstFiscalMonth, Form::I16, "erster Monat des Geschäftsjahrs, 1 bis 12; 0 heißt 1"),
    FIELD(FistaRecord, Vordruckcode, Form::U8,
          "Zeile des Vordrucks: 0 keine, 10 zweite Fassung, sonst die erste"),
    FIELD(FistaRecord, Anschrift1, Form::Text, "Anschrift für die Voranmeldung"),
    FIELD(FistaRecord, Anschrift2, Form::Text, "Anschrift"),
    FIELD(FistaRecord, Anschrift3, Form::Text, "Anschrift"),
    FIELD(FistaRecord, Anschrift4, Form::Text, "Anschrift"),
    FIELD(FistaRecord, Anschrift5, Form::Text, "Anschrift"),
    FIELD(FistaRecord, Anschrift6, Form::Text, "Anschrift"),
    FIELD(FistaRecord, Land, Form::Text, "Land, Vorgabe neuer Personenkonten"),
    FIELD(FistaRecord, Waehrung, Form::Text, "Währung des Hauses"),
    FIELD(FistaRecord, Kostenrechnung, Form::U8, "nicht 0: mit Kostenrechnung"),
    FIELD(FistaRecord, KostenPflicht, Form::U8, "nicht 0: Buchungen auf GuV-Konten brauchen Kosten"),
    FIELD(FistaRecord, UStVAVariante, Form::U8, "0: Vordrucke or_ustvd und or_ustd7, sonst or_ustva"),
    FIELD(FistaRecord, Buchungssperre, Form::PackedDay,
          "letzter Tag der gedruckten Voranmeldung, darf leer sein"),
};

constexpr FieldRow structureFields[] = {
    FIELD(StructureRecord, Id, Form::I32,
          "Nummer des Knotens; 1 ist die Wurzel, 0 ein Konto außerhalb des Baums"),
    FIELD(StructureRecord, Art, Form::U16, "Bit 2 Gruppe, Bit 4 Gegenposten; ohne Bit 2 ein Konto"),
    LINK(StructureRecord, Next, Form::I32, Knoten, "nächster Knoten derselben Ebene, 0 für keinen"),
    LINK(StructureRecord, Child, Form::I32, Knoten, "erster Unterknoten, 0 für keinen"),
    FIELD(StructureRecord, Summenzeile, Form::U8, "Bit 1 geht an den Bericht"),
    FIELD(StructureRecord, Text, Form::Text, "Titel der Gruppe oder Kontonummer"),
};

constexpr FieldRow koreFields[] = {
    FIELD(KoreRecord, Nummer, Form::Konto, "Nummer der Kostenstelle"),
    FIELD(KoreRecord, Kuerzel, Form::Text, "Kürzel"),
    FIELD(KoreRecord, Name, Form::Text, "Bezeichnung"),
    FIELD(KoreRecord, Kennzeichen, Form::U8, "1 wird als Ja gedruckt"),
    ARRAY(KoreRecord, Monat, Form::Amount, "Kosten im Geschäftsmonat"),
    FIELD(KoreRecord, Text, Form::Text, "Text"),
};

constexpr FieldRow kobuFields[] = {
    LINK(KobuRecord, FinaleBuchung, Form::I32, Final, "Buchungsnummer in bube, solange nicht endgültig 0"),
    LINK(KobuRecord, Buchungsnummer, Form::I32, Buchung, "die in bat, bei der ersten Teilbuchung, sonst 0"),
    LINK(KobuRecord, Splitnummer, Form::I32, Teil, "die in split, bei einer weiteren Teilbuchung, sonst 0"),
    FIELD(KobuRecord, Datum, Form::SortDay, "Tag der Buchung"),
    NEEDS(KobuRecord, Kostenobjekt1, Form::Konto, Kostenobjekt, "erste Kostenstelle"),
    LINK(KobuRecord, Kostenobjekt2, Form::Konto, Kostenobjekt, "zweite Kostenstelle"),
    LINK(KobuRecord, Konto, Form::Konto, Konto, "Konto der endgültigen Buchung"),
    FIELD(KobuRecord, Flag, Form::U8, "Kennzeichen der Schablone; dazu 32 auf der Habenseite"),
    FIELD(KobuRecord, Betrag, Form::Amount, "Anteil am Nettobetrag"),
    FIELD(KobuRecord, Text, Form::Text, "Text"),
};

constexpr FieldRow splitFields[] = {
    LINK(SplitRecord, Buchungsnummer, Form::I32, Buchung, "die in bat"),
    FIELD(SplitRecord, Splitnummer, Form::I32, "vergibt die Datenbank"),
    NEEDS(SplitRecord, Sollkonto, Form::Konto, Konto, "Sollkonto"),
    NEEDS(SplitRecord, Habenkonto, Form::Konto, Konto, "Habenkonto"),
    LINK(SplitRecord, Steuerkonto, Form::Konto, Sachkonto, "Steuerkonto, leer ohne Steuer"),
    FIELD(SplitRecord, SollArt, Form::U8, "Art des Sollkontos: 2 Sachkonto, 4 Kreditor, 8 Debitor"),
    FIELD(SplitRecord, HabenArt, Form::U8, "Art des Habenkontos, ebenso"),
    FIELD(SplitRecord, Steuerseite, Form::U16, "Konto, das den Schlüssel gab: 2 Soll, 1 Haben, 0 keines"),
    FIELD(SplitRecord, Steuerschluessel, Form::U16, "Schlüssel in steke; dazu 64 bei einem älteren Satz"),
    FIELD(SplitRecord, Steuerfolge, Form::U16, "Folge des Satzes in steke"),
    FIELD(SplitRecord, Brutto, Form::Amount, "Bruttobetrag"),
    FIELD(SplitRecord, Netto, Form::Amount, "Nettobetrag, bei fremder Währung der umgerechnete"),
    FIELD(SplitRecord, Steuersatz, Form::Rate, "Steuersatz"),
    FIELD(SplitRecord, Text, Form::Text, "Buchungstext"),
    FIELD(SplitRecord, Kostenzeilen, Form::I16, "Zahl der Zeilen in kobu"),
    LINK(SplitRecord, Kostenschablone, Form::I32, Kostenschablone, "Nummer der Kostenschablone, 0 für keine"),
};

constexpr FieldRow batFields[] = {
    NEEDS(BatRecord, Stapel, Form::I32, Stapel, "Nummer des Stapels"),
    FIELD(BatRecord, Buchungsnummer, Form::I32, "vergibt die Datenbank"),
    FIELD(BatRecord, Buchungsdatum, Form::PackedDay, "Buchungsdatum"),
    FIELD(BatRecord, ZweitesDatum, Form::PackedDay, "wie das Buchungsdatum; Datum der Kostenzeilen"),
    FIELD(BatRecord, Beleg, Form::Text, "Belegnummer"),
    FIELD(BatRecord, Splitseite, Form::U16,
          "gemeinsame Seite der Teilbuchungen: 128 Soll, 256 Haben, 0 bei einer einfachen"),
    FIELD(BatRecord, Anzahl, Form::I16, "Zahl der Teilbuchungen"),
    NESTED(BatRecord, Teil, Part, "erste Teilbuchung"),
    LINK(BatRecord, Waehrung, Form::Text, Waehrung, "Währung des Personenkontos"),
    FIELD(BatRecord, Waehrungsbetrag, Form::Amount, "Betrag in dieser Währung"),
    FIELD(BatRecord, Kennzeichen, Form::U8, "wie der Aufrufer es gab"),
    FIELD(BatRecord, OpAusgleich, Form::U8, "nicht 0: die Buchung gleicht einen offenen Posten aus"),
    LINK(BatRecord, Zahlungsziel, Form::I32, Zahlungsziel, "Nummer des Zahlungsziels, 0 für keines"),
};

constexpr FieldRow bubeFields[] = {
    FIELD(BubeRecord, Schluessel.Folge, Form::DayNumber, "Tag und seine laufende Nummer, JJMMTTNNNN"),
    FIELD(BubeRecord, Schluessel.Belegdatum, Form::PackedDay, "Belegdatum"),
    NEEDS(BubeRecord, Sollkonto, Form::Konto, Konto, "Sollkonto"),
    NEEDS(BubeRecord, Habenkonto, Form::Konto, Konto, "Habenkonto"),
    LINK(BubeRecord, Steuerkonto, Form::Konto, Sachkonto, "Steuerkonto, leer ohne Steuer"),
    FIELD(BubeRecord, Status, Form::U16,
          "Bits: 2 ohne Netto, 4 nicht im Monat, 8 gefaltet, 16 ohne Kennzahl, 128/256 Split auf "
          "Soll/Haben, 512 Steuerbuchung, 2048 Anfang eines Splits"),
    FIELD(BubeRecord, Steuerflags, Form::U8, "Voranmeldung: 4 zuzählen, 2 abziehen"),
    FIELD(BubeRecord, Steuerherkunft, Form::U8, "Steuerschlüssel, dazu 32 Vorsteuer"),
    FIELD(BubeRecord, Beleg, Form::Text, "Belegnummer"),
    FIELD(BubeRecord, Datum, Form::PackedDay, "Tag der Buchung"),
    FIELD(BubeRecord, Soll, Form::Amount, "Betrag im Soll"),
    FIELD(BubeRecord, Haben, Form::Amount, "Betrag im Haben"),
    FIELD(BubeRecord, Steuer, Form::Amount, "Steuerbetrag"),
    FIELD(BubeRecord, Text, Form::Text, "Buchungstext"),
    FIELD(BubeRecord, Buchungsnummer, Form::I32, "Buchungsnummer"),
    FIELD(BubeRecord, Buchungsdatum, Form::SortDay, "Tag der Erfassung"),
    LINK(BubeRecord, Benutzer, Form::Text, Benutzer, "Benutzer, der gebucht hat"),
    FIELD(BubeRecord, Grundbetrag, Form::Amount, "Bemessungsgrundlage oder Nettobetrag"),
    FIELD(BubeRecord, Steuerklasse, Form::U8, "Klasse der Steuer: 2, 4, 64, 128"),
    FIELD(BubeRecord, Steuersatz, Form::Rate, "Steuersatz"),
    FIELD(BubeRecord, Anzahl, Form::I16, "Zahl der Teilbuchungen eines Kopfs"),
};

constexpr FieldRow openItemFields[] = {
    FIELD(OpenItemRecord, Nummer, Form::U32, "laufende Nummer"),
    NEEDS(OpenItemRecord, Konto, Form::Konto, Personenkonto, "Personenkonto"),
    FIELD(OpenItemRecord, Referenz1, Form::Text, "erste Referenz"),
    FIELD(OpenItemRecord, Referenz2, Form::Text, "zweite Referenz"),
    FIELD(OpenItemRecord, Datum1, Form::SortDay, "Belegdatum"),
    FIELD(OpenItemRecord, Termin, Form::SortDay, "Fälligkeit"),
    FIELD(OpenItemRecord, Skontodatum, Form::SortDay, "letzter Tag mit Skonto"),
    FIELD(OpenItemRecord, Text1, Form::Text, "erster Text"),
    FIELD(OpenItemRecord, Text2, Form::Text, "zweiter Text"),
    FIELD(OpenItemRecord, Flag, Form::I16, "in der OP-Liste ein Ja/Nein"),
    FIELD(OpenItemRecord, Betrag1, Form::Amount, "offener Betrag in der Währung des Mandanten"),
    LINK(OpenItemRecord, Konto2, Form::Konto, Konto, "zweites Konto der OP-Liste"),
    LINK(OpenItemRecord, Konto3, Form::Konto, Konto, "drittes Konto der OP-Liste"),
    FIELD(OpenItemRecord, Satz, Form::Rate, "Prozentsatz der OP-Liste"),
    FIELD(OpenItemRecord, Wert1, Form::I16, "Wert der OP-Liste"),
    FIELD(OpenItemRecord, Wert2, Form::I16, "Wert der OP-Liste"),
    FIELD(OpenItemRecord, Betrag3, Form::Amount, "Betrag der OP-Liste"),
    FIELD(OpenItemRecord, Betrag2, Form::Amount, "zweiter Betrag"),
    FIELD(OpenItemRecord, Betrag4, Form::Amount, "Betrag der OP-Liste"),
    FIELD(OpenItemRecord, Wert3, Form::I16, "Wert der OP-Liste"),
    LINK(OpenItemRecord, Waehrung, Form::Text, Waehrung, "Währung; leer: die des Mandanten"),
    FIELD(OpenItemRecord, Waehrungsbetrag, Form::Amount, "Betrag in dieser Währung"),
    FIELD(OpenItemRecord, Zahlungsart, Form::U8, "1 Überweisung, 2 Scheck, 3 Einzug, 4 Abbuchung"),
};

constexpr FieldRow stapelFields[] = {
    FIELD(StapelRecord, Nummer, Form::I32, "Nummer, vergibt die Datenbank; bis 15 der Anwendung vorbehalten"),
    FIELD(StapelRecord, Name, Form::Text, "Name"),
    FIELD(StapelRecord, Intervall, Form::I16, "Monate bis zur Wiederholung, 0 für keine"),
};

constexpr FieldRow kurseFields[] = {
    FIELD(KurseRecord, Waehrung, Form::Text, "Währung"),
    FIELD(KurseRecord, Datum, Form::SortDay, "Tag des Kurses"),
    FIELD(KurseRecord, Kurs, Form::Amount, "Kurs"),
    FIELD(KurseRecord, Durchschnitt, Form::U8, "nicht 0: Durchschnitt seines Monats"),
    FIELD(KurseRecord, Einheit, Form::I16, "wieviel fremde Einheiten der Kurs meint"),
};

constexpr FieldRow userFields[] = {
    FIELD(UserRecord, Schluessel, Form::Text, "Kurzzeichen"),
    FIELD(UserRecord, Name, Form::Text, "Name"),
};

constexpr FieldRow koschaFields[] = {
    FIELD(KoschaRecord, Nummer, Form::I32, "Nummer der Kostenschablone"),
    FIELD(KoschaRecord, Name, Form::Text, "Name"),
    FIELD(KoschaRecord, Schalter, Form::U8, "Schalter"),
    FIELD(KoschaRecord, Zeilen, Form::I16, "Zahl der Zeilen in koschaze"),
};

constexpr FieldRow koschazeFields[] = {
    NEEDS(KoschazeRecord, Nummer, Form::I32, Kostenschablone, "Nummer der Kostenschablone"),
    NEEDS(KoschazeRecord, Kostenobjekt1, Form::Konto, Kostenobjekt, "erste Kostenstelle"),
    LINK(KoschazeRecord, Kostenobjekt2, Form::Konto, Kostenobjekt, "zweite Kostenstelle"),
    FIELD(KoschazeRecord, Flag, Form::U8, "Kennzeichen"),
    FIELD(KoschazeRecord, Anteil, Form::Share, "Anteil in Prozent"),
    FIELD(KoschazeRecord, Text, Form::Text, "Text"),
};

constexpr FieldRow zahlzielFields[] = {
    FIELD(ZahlzielRecord, Nummer, Form::I32, "Nummer des Zahlungsziels"),
    FIELD(ZahlzielRecord, Text, Form::Text, "Text der Auswahl"),
};

// ---- Keys ----

constexpr KeySegment sakoKonto = SEGMENT(SakoRecord, Konto, String);
constexpr KeySegment costDay = SEGMENT(KobuRecord, Datum, String);
constexpr KeySegment taxCode = SEGMENT(StekeRecord, Code, Unsigned);
constexpr KeySegment postingKey = SEGMENT(BubeRecord, Schluessel, String);

constexpr KeyRow sakoKeys[] = {UniqueKey(sakoKonto), ChangingKey(SEGMENT(SakoRecord, Kuerzel, String))};
constexpr KeyRow personalKeys[] = {UniqueKey(SEGMENT(PersonalRecord, Konto, String)),
                                   ChangingKey(SEGMENT(PersonalRecord, Kuerzel, String))};
constexpr KeyRow stekeKeys[] = {DuplicateKey(taxCode),
                                ChangingKey(SEGMENT(StekeRecord, Umsatzsteuerkonto, String)),
                                UniqueKey(taxCode, SEGMENT(StekeRecord, Folge, Unsigned))};
constexpr KeyRow fistaKeys[] = {UniqueKey(SEGMENT(FistaRecord, Nummer, Integer))};
constexpr KeyRow structureKeys[] = {ChangingKey(SEGMENT(StructureRecord, Id, Integer)),
                                    ChangingKey(SEGMENT(StructureRecord, Text, String))};
constexpr KeyRow koreKeys[] = {UniqueKey(SEGMENT(KoreRecord, Nummer, String)),
                               ChangingKey(SEGMENT(KoreRecord, Kuerzel, String))};
constexpr KeyRow kobuKeys[] = {ChangingKey(SEGMENT(KobuRecord, FinaleBuchung, Integer)),
                               ChangingKey(SEGMENT(KobuRecord, Buchungsnummer, Integer)),
                               ChangingKey(SEGMENT(KobuRecord, Splitnummer, Integer)),
                               ChangingKey(costDay),
                               ChangingKey(SEGMENT(KobuRecord, Kostenobjekt1, String), costDay),
                               ChangingKey(SEGMENT(KobuRecord, Kostenobjekt2, String), costDay)};
constexpr KeyRow splitKeys[] = {ChangingKey(SEGMENT(SplitRecord, Buchungsnummer, Integer)),
                                UniqueKey(SEGMENT(SplitRecord, Splitnummer, Autoincrement))};
constexpr KeyRow batKeys[] = {UniqueKey(SEGMENT(BatRecord, Buchungsnummer, Autoincrement)),
                              ChangingKey(SEGMENT(BatRecord, Stapel, Integer))};
constexpr KeyRow bubeKeys[] = {UniqueKey(postingKey),
                               ChangingKey(SEGMENT(BubeRecord, Sollkonto, String), postingKey),
                               ChangingKey(SEGMENT(BubeRecord, Habenkonto, String), postingKey),
                               ChangingKey(SEGMENT(BubeRecord, Steuerkonto, String), postingKey),
                               ChangingKey(SEGMENT(BubeRecord, Beleg, String)),
                               UniqueKey(SEGMENT(BubeRecord, Buchungsnummer, Integer)),
                               ChangingKey(SEGMENT(BubeRecord, Benutzer, String)),
                               ChangingKey(SEGMENT(BubeRecord, Buchungsdatum, String))};
constexpr KeyRow openItemKeys[] = {UniqueKey(SEGMENT(OpenItemRecord, Nummer, Unsigned)),
                                   ChangingKey(SEGMENT(OpenItemRecord, Konto, String)),
                                   ChangingKey(SEGMENT(OpenItemRecord, Skontodatum, String)),
                                   ChangingKey(SEGMENT(OpenItemRecord, Termin, String))};
constexpr KeyRow stapelKeys[] = {UniqueKey(SEGMENT(StapelRecord, Nummer, Autoincrement))};
constexpr KeyRow kurseKeys[] = {
    UniqueKey(SEGMENT(KurseRecord, Waehrung, String), SEGMENT(KurseRecord, Datum, String))};
constexpr KeyRow userKeys[] = {UniqueKey(SEGMENT(UserRecord, Schluessel, String))};
constexpr KeyRow koschaKeys[] = {UniqueKey(SEGMENT(KoschaRecord, Nummer, Integer))};
constexpr KeyRow koschazeKeys[] = {DuplicateKey(SEGMENT(KoschazeRecord, Nummer, Integer))};
constexpr KeyRow zahlzielKeys[] = {UniqueKey(SEGMENT(ZahlzielRecord, Nummer, Integer))};

// A table of which only the number is known; the rest of its record belongs to the accounting application.
constexpr KeyRow numberedKeys[] = {UniqueKey({0, sizeof(int32_t), KeyType::Integer})};
template <typename Record>
constexpr FieldRow numberedFields[] = {
    FIELD(Record, Nummer, Form::I32, "Nummer"),
    FieldRow{"Rest", sizeof(int32_t), sizeof(Record) - sizeof(int32_t), Form::Bytes, Reference::None,
             "gehört der Anwendung"},
};

constexpr TableRow tableRows[] = {
    {TableSako, "sako", sizeof(SakoRecord), "Sachkonten", sakoKeys, sakoFields},
    {TableBube, "bube", sizeof(BubeRecord), "Endgültige Buchungen", bubeKeys, bubeFields},
    {TableKred, "kred", sizeof(PersonalRecord), "Kreditoren", personalKeys, personalFields},
    {TableDebi, "debi", sizeof(PersonalRecord), "Debitoren", personalKeys, personalFields},
    {TableSteke, "steke", sizeof(StekeRecord), "Steuerschlüssel", stekeKeys, stekeFields},
    {TableFista, "fista", sizeof(FistaRecord), "Mandanten", fistaKeys, fistaFields},
    {TableGuvauf, "guvauf", sizeof(StructureRecord), "Aufbau der Gewinn- und Verlustrechnung", structureKeys,
     structureFields},
    {TableBilaktau, "bilaktau", sizeof(StructureRecord), "Aufbau der Aktiva", structureKeys, structureFields},
    {TableBilpasau, "bilpasau", sizeof(StructureRecord), "Aufbau der Passiva", structureKeys,
     structureFields},
    {TableKore, "kore", sizeof(KoreRecord), "Kostenstellen", koreKeys, koreFields},
    {TableKobu, "kobu", sizeof(KobuRecord), "Kostenbuchungen", kobuKeys, kobuFields},
    {TableBat, "bat", sizeof(BatRecord), "Buchungen im Stapel", batKeys, batFields},
    {TableBank, "bank", sizeof(BankRecord), "Banken", numberedKeys, numberedFields<BankRecord>},
    {TableUeberw, "ueberw", sizeof(UeberwRecord), "Überweisungen", numberedKeys,
     numberedFields<UeberwRecord>},
    {TableOpkred, "opkred", sizeof(OpenItemRecord), "Offene Posten der Kreditoren", openItemKeys,
     openItemFields, Reference::Kreditor},
    {TableOpdebi, "opdebi", sizeof(OpenItemRecord), "Offene Posten der Debitoren", openItemKeys,
     openItemFields, Reference::Debitor},
    {TableStapel, "stapel", sizeof(StapelRecord), "Stapel", stapelKeys, stapelFields},
    {TableKurse, "kurse", sizeof(KurseRecord), "Wechselkurse", kurseKeys, kurseFields},
    {TableButext, "butext", sizeof(ButextRecord), "Buchungstexte", numberedKeys,
     numberedFields<ButextRecord>},
    {TableBuscha, "buscha", sizeof(BuschaRecord), "Buchungsschablonen", numberedKeys,
     numberedFields<BuschaRecord>},
    {TableUser, "user", sizeof(UserRecord), "Benutzer", userKeys, userFields},
    {TableSplit, "split", sizeof(SplitRecord), "Teilbuchungen im Stapel", splitKeys, splitFields},
    {TableKoscha, "koscha", sizeof(KoschaRecord), "Kostenschablonen", koschaKeys, koschaFields},
    {TableKoschaze, "koschaze", sizeof(KoschazeRecord), "Zeilen der Kostenschablonen", koschazeKeys,
     koschazeFields},
    {TableZahlziel, "zahlziel", sizeof(ZahlzielRecord), "Zahlungsziele", zahlzielKeys, zahlzielFields},
    {TableBumak, "bumak", sizeof(BumakRecord), "Buchungsmakros", numberedKeys, numberedFields<BumakRecord>},
    {TableMahntext, "mahntext", sizeof(MahntextRecord), "Mahntexte", numberedKeys,
     numberedFields<MahntextRecord>},
};

constexpr bool AgreesWithCatalogue(const TableRow &row)
{
    const TableEntry &entry = tableCatalogue[row.Id];
    return std::string_view(entry.Stem) == row.Stem && entry.RecordLength == row.RecordLength;
}
static_assert(std::all_of(std::begin(tableRows), std::end(tableRows), AgreesWithCatalogue));

} // namespace

std::span<const TableRow> TableRows() { return tableRows; }

std::span<const FieldRow> SumFields() { return sumFields; }

std::span<const FieldRow> CountFields() { return countFields; }

std::span<const FieldRow> PartFields() { return splitFields; }

} // namespace tools
