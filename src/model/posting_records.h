// The records that carry postings. The library writes bat, split and kobu, the contents of a Stapel; the
// accounting application makes them final (bube) and keeps the open items (opdebi, opkred), which are only
// read here. Offsets and widths are fixed, and Reserved bytes survive a rewrite.
//
// split, 143 bytes, one Teilbuchung (table 22; the first Teilbuchung of a posting lies inside its bat
// record):
//      0    4  Buchungsnummer     i32, that of the bat record
//      4    4  Splitnummer        i32, given by the engine at Insert, key 1
//      8    8  Sollkonto
//     16    8  Habenkonto
//     24    8  Steuerkonto        all NUL without tax
//     32    1  SollArt            Buchungskontoart
//     33    1  HabenArt           Buchungskontoart
//     34    2  Steuerseite        u16, account that the tax key came from: 2 Soll, 1 Haben, 0 none
//     36    2  Steuerschluessel   u16, code of steke; bit 0x40 when an older rate of the key applies
//     38    2  Steuerfolge        u16, sequence number of the rate in steke
//     40   13  Brutto
//     53   13  Netto              net amount, or the converted one of a posting in foreign currency
//     66    6  Steuersatz
//     72    1  Reserved72
//     73   36  Text
//    109    2  Kostenzeilen       i16, number of kobu lines of this Teilbuchung
//    111    4  Reserved111        once a pointer to these lines: 0
//    115    4  Kostenschablone    i32, 0 for none
//    119   24  Reserved119
//
// bat, 500 bytes, one posting in a Stapel (table 12):
//      0    4  Stapel             i32, key 1
//      4    4  Buchungsnummer     i32, given by the engine at Insert, key 0
//      8    7  Buchungsdatum
//     15    7  ZweitesDatum       equal to the first at entry; the date of the cost lines comes from it
//     22    9  Beleg
//     31    2  Splitseite         u16, side that all Teilbuchungen share: 128 Soll, 256 Haben, 0 none
//     33    2  Anzahl             i16, number of Teilbuchungen
//     35  143  Teil               the first Teilbuchung
//    178    5  Waehrung           currency of the personal account, if it has one
//    183   13  Waehrungsbetrag    the amount in that currency
//    196   14  Reserved196
//    210    1  Kennzeichen        as the caller gave it
//    211    1  OpAusgleich        not 0: the posting settles an open item
//    212    4  Reserved212        once a pointer to the further Teilbuchungen: 0
//    216    4  Zahlungsziel       i32, 0 for none
//    220  280  Reserved220
//
// kobu, 130 bytes, one cost line (table 11):
//      0    4  FinaleBuchung      i32, Buchungsnummer in bube once the line is final, else 0; key 0
//      4    4  Buchungsnummer     i32, that of bat for a line of the first Teilbuchung, else 0; key 1
//      8    4  Splitnummer        i32, that of split for a line of a further Teilbuchung, else 0; key 2
//     12    7  Datum              SortDate, key 3
//     19    8  Kostenobjekt1      key 4, with the date
//     27    8  Kostenobjekt2      key 5, with the date
//     35    8  Konto              account of the posting, filled in when the line becomes final
//     43    1  Flag               from koschaze, with KobuHaben added on the Haben side
//     44   13  Betrag             share of the net amount
//     57   73  Text
//
// bube, 219 bytes, one final posting (table 1):
//      0   18  Schluessel         BubeKey, key 0
//     18    8  Sollkonto          key 1, with key 0 behind it
//     26    8  Habenkonto         key 2, likewise
//     34    8  Steuerkonto        key 3, likewise
//     42    2  Status             u16, see BubeStatus
//     44    1  Steuerflags        see BubeSteuer
//     45    1  Reserved45
//     46    1  Steuerherkunft     flag BubeVorsteuer, copied with the tax class
//     47    9  Beleg              key 4
//     56    7  Datum              PackedDate of the posting
//     63   13  Soll
//     76   13  Haben
//     89   13  Steuer
//    102   40  Text
//    142   26  Reserved142
//    168    4  Buchungsnummer     i32, key 5
//    172    7  Buchungsdatum      SortDate, key 7
//    179    8  Benutzer           key 6; the beginning is the key of table user
//    187    9  Reserved187
//    196   13  Grundbetrag        tax base or net amount
//    209    1  Steuerklasse       tax class flags 2, 4, 0x40, 0x80
//    210    1  Reserved210
//    211    6  Steuersatz
//    217    2  Anzahl             i16, number of Teilbuchungen of a head
//
// BubeKey, 18 bytes; all of it is the key, so a cursor keeps all of it:
//      0   11  Folge              SortDate digits, a running number of four digits, NUL
//     11    7  Belegdatum         PackedDate, stands in where Datum is empty
//
// stapel, 64 bytes, one Stapel (table 17):
//      0    4  Nummer             i32, given by the engine at Insert, key 0; 1 to 15 are the application's
//      4   32  Name
//     36    2  Intervall          i16, months after which a recurring Stapel is due, 0 for none
//     38   26  Reserved38
//
// opdebi and opkred, 525 bytes, one open item of a Debitor or Kreditor (tables 16 and 15):
//      0    4  Nummer             u32, running number, key 0
//      4    8  Konto              key 1
//     12   10  Referenz1
//     22   10  Referenz2
//     32    7  Datum1             SortDate
//     39    1  Reserved39
//     40    7  Termin             SortDate, second date, key 3
//     47    1  Reserved47
//     48    7  Skontodatum        SortDate, third date, key 2
//     55    1  Reserved55
//     56   26  Text1
//     82   26  Text2
//    108   10  Reserved108
//    118    2  Flag               i16, printed as a boolean
//    120   13  Betrag1            in the Mandant's currency
//    133    6  Reserved133
//    139    8  Konto2             printed by the OP-Liste
//    147    8  Konto3             printed by the OP-Liste
//    155    6  Satz               percentage printed by the OP-Liste
//    161    2  Wert1              i16, printed by the OP-Liste
//    163    2  Wert2              i16, printed by the OP-Liste
//    165   13  Betrag3            printed by the OP-Liste
//    178   13  Betrag2
//    191   13  Reserved191
//    204   13  Betrag4            printed by the OP-Liste
//    217   15  Reserved217
//    232    2  Wert3              i16, printed by the OP-Liste
//    234    4  Reserved234
//    238    5  Waehrung           empty: the Mandant's
//    243   13  Waehrungsbetrag    the amount in Waehrung
//    256   28  Reserved256
//    284    1  Zahlungsart        1 Überweisung, 2 Scheck, 3 Einzug, 4 Abbuchung, else another
//    285  240  Reserved285
#pragma once

#include "src/model/text_forms.h"

namespace vark {

// Kind of an account inside bat and split. It is not the Kontoart of the exports (1, 2, 4, 8).
enum Buchungskontoart : uint8_t {
    BuchungSachkonto = 2,
    BuchungKreditor = 4,
    BuchungDebitor = 8,
};

// Steuerseite of a Teilbuchung: the side whose account gave the tax key.
enum Steuerseite : uint16_t {
    SteuerseiteKeine = 0,
    SteuerseiteHaben = 1,
    SteuerseiteSoll = 2,
};

// Splitseite of bat: the side on which all Teilbuchungen name the same account.
enum Splitseite : uint16_t {
    SplitseiteKeine = 0,
    SplitseiteSoll = 128,
    SplitseiteHaben = 256,
};

// Bit of Steuerschluessel: not the newest rate of the key applies.
inline constexpr uint16_t aeltererSatz = 0x40;

// Bits of the cost line's flag.
enum KobuFlag : uint8_t {
    KobuArt = 0x01,   // chooses the column of a report
    KobuHaben = 0x20, // the line lies on the Haben side
};

// Bits of a final posting's status word.
enum BubeStatus : uint16_t {
    BubeOhneNetto = 0x0002,     // shown alone, left out of net and not yet in the month's totals
    BubeNichtImMonat = 0x0004,  // not yet in the month's totals
    BubeGefaltet = 0x0008,      // folded Teilbuchung line, skipped by the cursor
    BubeOhneKennzahl = 0x0010,  // left out of Kennzahl balances
    BubeSplitSoll = 0x0080,     // part of a split whose main account is on Soll
    BubeSplitHaben = 0x0100,    // part of a split whose main account is on Haben
    BubeSteuerbuchung = 0x0200, // tax posting
    BubeSplitAnfang = 0x0800,   // first part of a split
};

// Bits of a final posting's Steuerflags.
enum BubeSteuer : uint8_t {
    BubeSteuerMinus = 0x02,     // subtract in the Umsatzsteuervoranmeldung; has tax
    BubeSteuerPlus = 0x04,      // add in the Umsatzsteuervoranmeldung; the tax lies on the Haben side
    BubeSteuerErrechnet = 0x18, // either bit: the rate is worked out from the amounts
};

// Bit of a final posting's Steuerherkunft.
enum BubeSteuerherkunft : uint8_t {
    BubeVorsteuer = 0x20, // the tax key has the Vorsteuer bit
};

// Tax classes of a final posting.
enum BubeSteuerklasse : uint8_t {
    BubeKlasse2 = 0x02,
    BubeKlasse4 = 0x04,
    BubeKlasse40 = 0x40,
    BubeKlasse80 = 0x80,
};

#pragma pack(push, 1)

struct SplitRecord {
    int32_t Buchungsnummer;
    int32_t Splitnummer;
    AccountNumber Sollkonto;
    AccountNumber Habenkonto;
    AccountNumber Steuerkonto;
    uint8_t SollArt;
    uint8_t HabenArt;
    uint16_t Steuerseite;
    uint16_t Steuerschluessel;
    uint16_t Steuerfolge;
    AmountText Brutto;
    AmountText Netto;
    RateText Steuersatz;
    char Reserved72[1];
    char Text[36];
    int16_t Kostenzeilen;
    uint32_t Reserved111;
    int32_t Kostenschablone;
    char Reserved119[24];
};

static_assert(sizeof(SplitRecord) == 143);
static_assert(offsetof(SplitRecord, Buchungsnummer) == 0);
static_assert(offsetof(SplitRecord, Splitnummer) == 4);
static_assert(offsetof(SplitRecord, Sollkonto) == 8);
static_assert(offsetof(SplitRecord, Habenkonto) == 16);
static_assert(offsetof(SplitRecord, Steuerkonto) == 24);
static_assert(offsetof(SplitRecord, SollArt) == 32);
static_assert(offsetof(SplitRecord, HabenArt) == 33);
static_assert(offsetof(SplitRecord, Steuerseite) == 34);
static_assert(offsetof(SplitRecord, Steuerschluessel) == 36);
static_assert(offsetof(SplitRecord, Steuerfolge) == 38);
static_assert(offsetof(SplitRecord, Brutto) == 40);
static_assert(offsetof(SplitRecord, Netto) == 53);
static_assert(offsetof(SplitRecord, Steuersatz) == 66);
static_assert(offsetof(SplitRecord, Text) == 73);
static_assert(offsetof(SplitRecord, Kostenzeilen) == 109);
static_assert(offsetof(SplitRecord, Reserved111) == 111);
static_assert(offsetof(SplitRecord, Kostenschablone) == 115);
static_assert(__is_trivially_copyable(SplitRecord));

struct BatRecord {
    int32_t Stapel;
    int32_t Buchungsnummer;
    PackedDate Buchungsdatum;
    PackedDate ZweitesDatum;
    char Beleg[9];
    uint16_t Splitseite;
    int16_t Anzahl;
    SplitRecord Teil;
    char Waehrung[5];
    AmountText Waehrungsbetrag;
    char Reserved196[14];
    uint8_t Kennzeichen;
    uint8_t OpAusgleich;
    uint32_t Reserved212;
    int32_t Zahlungsziel;
    char Reserved220[280];
};

static_assert(sizeof(BatRecord) == 500);
static_assert(offsetof(BatRecord, Stapel) == 0);
static_assert(offsetof(BatRecord, Buchungsnummer) == 4);
static_assert(offsetof(BatRecord, Buchungsdatum) == 8);
static_assert(offsetof(BatRecord, ZweitesDatum) == 15);
static_assert(offsetof(BatRecord, Beleg) == 22);
static_assert(offsetof(BatRecord, Splitseite) == 31);
static_assert(offsetof(BatRecord, Anzahl) == 33);
static_assert(offsetof(BatRecord, Teil) == 35);
static_assert(offsetof(BatRecord, Teil.Text) == 108);
static_assert(offsetof(BatRecord, Waehrung) == 178);
static_assert(offsetof(BatRecord, Waehrungsbetrag) == 183);
static_assert(offsetof(BatRecord, Kennzeichen) == 210);
static_assert(offsetof(BatRecord, OpAusgleich) == 211);
static_assert(offsetof(BatRecord, Reserved212) == 212);
static_assert(offsetof(BatRecord, Zahlungsziel) == 216);
static_assert(__is_trivially_copyable(BatRecord));

struct KobuRecord {
    int32_t FinaleBuchung;
    int32_t Buchungsnummer;
    int32_t Splitnummer;
    SortDate Datum;
    AccountNumber Kostenobjekt1;
    AccountNumber Kostenobjekt2;
    AccountNumber Konto;
    uint8_t Flag;
    AmountText Betrag;
    char Text[73];
};

static_assert(sizeof(KobuRecord) == 130);
static_assert(offsetof(KobuRecord, FinaleBuchung) == 0);
static_assert(offsetof(KobuRecord, Buchungsnummer) == 4);
static_assert(offsetof(KobuRecord, Splitnummer) == 8);
static_assert(offsetof(KobuRecord, Datum) == 12);
static_assert(offsetof(KobuRecord, Kostenobjekt1) == 19);
static_assert(offsetof(KobuRecord, Kostenobjekt2) == 27);
static_assert(offsetof(KobuRecord, Konto) == 35);
static_assert(offsetof(KobuRecord, Flag) == 43);
static_assert(offsetof(KobuRecord, Betrag) == 44);
static_assert(offsetof(KobuRecord, Text) == 57);
static_assert(__is_trivially_copyable(KobuRecord));

struct BubeKey {
    char Folge[11];
    PackedDate Belegdatum;
};

static_assert(sizeof(BubeKey) == 18);
static_assert(offsetof(BubeKey, Folge) == 0);
static_assert(offsetof(BubeKey, Belegdatum) == 11);
static_assert(__is_trivially_copyable(BubeKey));

struct BubeRecord {
    BubeKey Schluessel;
    AccountNumber Sollkonto;
    AccountNumber Habenkonto;
    AccountNumber Steuerkonto;
    uint16_t Status;
    uint8_t Steuerflags;
    char Reserved45[1];
    uint8_t Steuerherkunft;
    char Beleg[9];
    PackedDate Datum;
    AmountText Soll;
    AmountText Haben;
    AmountText Steuer;
    char Text[40];
    char Reserved142[26];
    int32_t Buchungsnummer;
    SortDate Buchungsdatum;
    char Benutzer[8];
    char Reserved187[9];
    AmountText Grundbetrag;
    uint8_t Steuerklasse;
    char Reserved210[1];
    RateText Steuersatz;
    int16_t Anzahl;
};

static_assert(sizeof(BubeRecord) == 219);
static_assert(offsetof(BubeRecord, Schluessel) == 0);
static_assert(offsetof(BubeRecord, Sollkonto) == 18);
static_assert(offsetof(BubeRecord, Habenkonto) == 26);
static_assert(offsetof(BubeRecord, Steuerkonto) == 34);
static_assert(offsetof(BubeRecord, Status) == 42);
static_assert(offsetof(BubeRecord, Steuerflags) == 44);
static_assert(offsetof(BubeRecord, Steuerherkunft) == 46);
static_assert(offsetof(BubeRecord, Beleg) == 47);
static_assert(offsetof(BubeRecord, Datum) == 56);
static_assert(offsetof(BubeRecord, Soll) == 63);
static_assert(offsetof(BubeRecord, Haben) == 76);
static_assert(offsetof(BubeRecord, Steuer) == 89);
static_assert(offsetof(BubeRecord, Text) == 102);
static_assert(offsetof(BubeRecord, Buchungsnummer) == 168);
static_assert(offsetof(BubeRecord, Buchungsdatum) == 172);
static_assert(offsetof(BubeRecord, Benutzer) == 179);
static_assert(offsetof(BubeRecord, Grundbetrag) == 196);
static_assert(offsetof(BubeRecord, Steuerklasse) == 209);
static_assert(offsetof(BubeRecord, Steuersatz) == 211);
static_assert(offsetof(BubeRecord, Anzahl) == 217);
static_assert(__is_trivially_copyable(BubeRecord));

struct StapelRecord {
    int32_t Nummer;
    char Name[32];
    int16_t Intervall;
    char Reserved38[26];
};

static_assert(sizeof(StapelRecord) == 64);
static_assert(offsetof(StapelRecord, Nummer) == 0);
static_assert(offsetof(StapelRecord, Name) == 4);
static_assert(offsetof(StapelRecord, Intervall) == 36);
static_assert(__is_trivially_copyable(StapelRecord));

struct OpenItemRecord {
    uint32_t Nummer;
    AccountNumber Konto;
    char Referenz1[10];
    char Referenz2[10];
    SortDate Datum1;
    char Reserved39[1];
    SortDate Termin;
    char Reserved47[1];
    SortDate Skontodatum;
    char Reserved55[1];
    char Text1[26];
    char Text2[26];
    char Reserved108[10];
    int16_t Flag;
    AmountText Betrag1;
    char Reserved133[6];
    AccountNumber Konto2;
    AccountNumber Konto3;
    RateText Satz;
    int16_t Wert1;
    int16_t Wert2;
    AmountText Betrag3;
    AmountText Betrag2;
    char Reserved191[13];
    AmountText Betrag4;
    char Reserved217[15];
    int16_t Wert3;
    char Reserved234[4];
    char Waehrung[5];
    AmountText Waehrungsbetrag;
    char Reserved256[28];
    uint8_t Zahlungsart;
    char Reserved285[240];
};

static_assert(sizeof(OpenItemRecord) == 525);
static_assert(offsetof(OpenItemRecord, Nummer) == 0);
static_assert(offsetof(OpenItemRecord, Konto) == 4);
static_assert(offsetof(OpenItemRecord, Referenz1) == 12);
static_assert(offsetof(OpenItemRecord, Referenz2) == 22);
static_assert(offsetof(OpenItemRecord, Datum1) == 32);
static_assert(offsetof(OpenItemRecord, Termin) == 40);
static_assert(offsetof(OpenItemRecord, Skontodatum) == 48);
static_assert(offsetof(OpenItemRecord, Text1) == 56);
static_assert(offsetof(OpenItemRecord, Text2) == 82);
static_assert(offsetof(OpenItemRecord, Flag) == 118);
static_assert(offsetof(OpenItemRecord, Betrag1) == 120);
static_assert(offsetof(OpenItemRecord, Konto2) == 139);
static_assert(offsetof(OpenItemRecord, Konto3) == 147);
static_assert(offsetof(OpenItemRecord, Satz) == 155);
static_assert(offsetof(OpenItemRecord, Wert1) == 161);
static_assert(offsetof(OpenItemRecord, Wert2) == 163);
static_assert(offsetof(OpenItemRecord, Betrag3) == 165);
static_assert(offsetof(OpenItemRecord, Betrag2) == 178);
static_assert(offsetof(OpenItemRecord, Betrag4) == 204);
static_assert(offsetof(OpenItemRecord, Wert3) == 232);
static_assert(offsetof(OpenItemRecord, Waehrung) == 238);
static_assert(offsetof(OpenItemRecord, Waehrungsbetrag) == 243);
static_assert(offsetof(OpenItemRecord, Zahlungsart) == 284);
static_assert(__is_trivially_copyable(OpenItemRecord));

#pragma pack(pop)

} // namespace vark
