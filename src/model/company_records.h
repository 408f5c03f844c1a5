// The record of a Mandant (fista) and the reference tables. Offsets and widths are fixed, and Reserved bytes
// survive a rewrite.
//
// fista, 998 bytes, one Mandant; one file for all fiscal years (table 6):
//      0    2  Nummer             i16, key 0
//      2   41  Name               text of the pick list, head of every report
//     43   26  Name2              second address line
//     69   13  Reserved69
//     82    5  LowerYear          first postable fiscal year, four digits; empty: only UpperYear is postable
//     87    5  UpperYear          last postable fiscal year; it names the year directory
//     92    8  Sammelkonto1       account whose Kontenblatt is summed up
//    100    8  Sammelkonto2       account whose Kontenblatt is summed up
//    108   26  Reserved108
//    134   20  Steuernummer
//    154   16  UstId              the Mandant's USt-IdNr; not empty: the rules of EU trade apply
//    170    2  Sonderkontomodus   i16, not 0: the tax return looks at postings on Sonderkonto
//    172    8  Sonderkonto
//    180   16  Reserved180
//    196    2  FirstFiscalMonth   i16, 1 to 12; 0 means 1
//    198    1  Vordruckcode       coded line of the tax form: 0 none, 10 second layout, else first layout
//    199   31  Anschrift1         address lines of the tax return
//    230   31  Anschrift2
//    261   41  Anschrift3
//    302   31  Anschrift4
//    333   31  Anschrift5
//    364   21  Anschrift6
//    385  305  Reserved385
//    690    4  Land               default of a new personal account
//    694    4  Waehrung           house currency
//    698    1  Kostenrechnung     not 0: cost accounting is on
//    699    1  KostenPflicht      not 0: postings on GuV accounts need costs
//    700    1  Reserved700
//    701    1  UStVAVariante      0: forms or_ustvd and or_ustd7, else or_ustva
//    702    3  Reserved702
//    705    7  Buchungssperre     last day of the last printed tax return, may be empty
//    712  286  Reserved712
//
// kore, 495 bytes, one Kostenstelle (table 10):
//      0    8  Nummer             key 0
//      8   10  Kuerzel            key 1
//     18    3  Reserved18
//     21   31  Name
//     52    1  Kennzeichen        printed as the boolean "equals 1"
//     53  156  Monat[12]          amounts of fiscal months 1 to 12
//    209  169  Reserved209
//    378   41  Text
//    419   76  Reserved419
//
// kurse, 58 bytes, one rate of exchange (table 18):
//      0    5  Waehrung           up to four characters, zero-filled; with the date key 0
//      5    7  Datum              SortDate
//     12   13  Kurs               written like an amount
//     25    1  Durchschnitt       not 0: the average rate of its month
//     26    2  Einheit            i16, code of the number of foreign units that Kurs stands for
//     28   30  Reserved28
//
// koscha, 110 bytes, one Kostenschablone (table 23):
//      0    4  Nummer             i32, key 0
//      4   41  Name
//     45    1  Schalter
//     46    2  Zeilen             i16, number of its lines
//     48   62  Reserved48
//
// koschaze, 133 bytes, one line of a Kostenschablone (table 24):
//      0    4  Nummer             i32, that of the Kostenschablone, key 0; lines in order of insertion
//      4    8  Kostenobjekt1
//     12    8  Kostenobjekt2
//     20    1  Flag               goes into kobu
//     21    7  Anteil             "100,00", or one leading position and a RateText
//     28  105  Text
//
// zahlziel, 146 bytes, one Zahlungsziel (table 25):
//      0    4  Nummer             i32, key 0
//      4   41  Text               line of the pick list
//     45  101  Reserved45
//
// user, 128 bytes, one user (table 21):
//      0    4  Schluessel         text, key 0; what a posting's Benutzer begins with
//      4   32  Name
//     36   92  Reserved36
//
// bank 64, ueberw 256, butext 64, buscha 181, bumak 270, mahntext 1398 bytes (tables 13, 14, 19, 20, 26, 27):
//      0    4  Nummer             i32, key 0; the rest is the accounting application's
#pragma once

#include "src/model/text_forms.h"

namespace vark {

#pragma pack(push, 1)

struct FistaRecord {
    int16_t Nummer;
    char Name[41];
    char Name2[26];
    char Reserved69[13];
    char LowerYear[5];
    char UpperYear[5];
    AccountNumber Sammelkonto1;
    AccountNumber Sammelkonto2;
    char Reserved108[26];
    char Steuernummer[20];
    char UstId[16];
    int16_t Sonderkontomodus;
    AccountNumber Sonderkonto;
    char Reserved180[16];
    int16_t FirstFiscalMonth;
    uint8_t Vordruckcode;
    char Anschrift1[31];
    char Anschrift2[31];
    char Anschrift3[41];
    char Anschrift4[31];
    char Anschrift5[31];
    char Anschrift6[21];
    char Reserved385[305];
    char Land[4];
    char Waehrung[4];
    uint8_t Kostenrechnung;
    uint8_t KostenPflicht;
    char Reserved700[1];
    uint8_t UStVAVariante;
    char Reserved702[3];
    PackedDate Buchungssperre;
    char Reserved712[286];
};

static_assert(sizeof(FistaRecord) == 998);
static_assert(offsetof(FistaRecord, Nummer) == 0);
static_assert(offsetof(FistaRecord, Name) == 2);
static_assert(offsetof(FistaRecord, Name2) == 43);
static_assert(offsetof(FistaRecord, LowerYear) == 82);
static_assert(offsetof(FistaRecord, UpperYear) == 87);
static_assert(offsetof(FistaRecord, Sammelkonto1) == 92);
static_assert(offsetof(FistaRecord, Sammelkonto2) == 100);
static_assert(offsetof(FistaRecord, Steuernummer) == 134);
static_assert(offsetof(FistaRecord, UstId) == 154);
static_assert(offsetof(FistaRecord, Sonderkontomodus) == 170);
static_assert(offsetof(FistaRecord, Sonderkonto) == 172);
static_assert(offsetof(FistaRecord, FirstFiscalMonth) == 196);
static_assert(offsetof(FistaRecord, Vordruckcode) == 198);
static_assert(offsetof(FistaRecord, Anschrift1) == 199);
static_assert(offsetof(FistaRecord, Anschrift2) == 230);
static_assert(offsetof(FistaRecord, Anschrift3) == 261);
static_assert(offsetof(FistaRecord, Anschrift4) == 302);
static_assert(offsetof(FistaRecord, Anschrift5) == 333);
static_assert(offsetof(FistaRecord, Anschrift6) == 364);
static_assert(offsetof(FistaRecord, Land) == 690);
static_assert(offsetof(FistaRecord, Waehrung) == 694);
static_assert(offsetof(FistaRecord, Kostenrechnung) == 698);
static_assert(offsetof(FistaRecord, KostenPflicht) == 699);
static_assert(offsetof(FistaRecord, UStVAVariante) == 701);
static_assert(offsetof(FistaRecord, Buchungssperre) == 705);
static_assert(__is_trivially_copyable(FistaRecord));

struct KoreRecord {
    AccountNumber Nummer;
    char Kuerzel[10];
    char Reserved18[3];
    char Name[31];
    uint8_t Kennzeichen;
    AmountText Monat[12];
    char Reserved209[169];
    char Text[41];
    char Reserved419[76];
};

static_assert(sizeof(KoreRecord) == 495);
static_assert(offsetof(KoreRecord, Nummer) == 0);
static_assert(offsetof(KoreRecord, Kuerzel) == 8);
static_assert(offsetof(KoreRecord, Name) == 21);
static_assert(offsetof(KoreRecord, Kennzeichen) == 52);
static_assert(offsetof(KoreRecord, Monat) == 53);
static_assert(offsetof(KoreRecord, Text) == 378);
static_assert(__is_trivially_copyable(KoreRecord));

struct KurseRecord {
    char Waehrung[5];
    SortDate Datum;
    AmountText Kurs;
    uint8_t Durchschnitt;
    int16_t Einheit;
    char Reserved28[30];
};

static_assert(sizeof(KurseRecord) == 58);
static_assert(offsetof(KurseRecord, Waehrung) == 0);
static_assert(offsetof(KurseRecord, Datum) == 5);
static_assert(offsetof(KurseRecord, Kurs) == 12);
static_assert(offsetof(KurseRecord, Durchschnitt) == 25);
static_assert(offsetof(KurseRecord, Einheit) == 26);
static_assert(__is_trivially_copyable(KurseRecord));

struct KoschaRecord {
    int32_t Nummer;
    char Name[41];
    uint8_t Schalter;
    int16_t Zeilen;
    char Reserved48[62];
};

static_assert(sizeof(KoschaRecord) == 110);
static_assert(offsetof(KoschaRecord, Nummer) == 0);
static_assert(offsetof(KoschaRecord, Name) == 4);
static_assert(offsetof(KoschaRecord, Schalter) == 45);
static_assert(offsetof(KoschaRecord, Zeilen) == 46);
static_assert(__is_trivially_copyable(KoschaRecord));

struct KoschazeRecord {
    int32_t Nummer;
    AccountNumber Kostenobjekt1;
    AccountNumber Kostenobjekt2;
    uint8_t Flag;
    char Anteil[7];
    char Text[105];
};

static_assert(sizeof(KoschazeRecord) == 133);
static_assert(offsetof(KoschazeRecord, Nummer) == 0);
static_assert(offsetof(KoschazeRecord, Kostenobjekt1) == 4);
static_assert(offsetof(KoschazeRecord, Kostenobjekt2) == 12);
static_assert(offsetof(KoschazeRecord, Flag) == 20);
static_assert(offsetof(KoschazeRecord, Anteil) == 21);
static_assert(offsetof(KoschazeRecord, Text) == 28);
static_assert(__is_trivially_copyable(KoschazeRecord));

struct ZahlzielRecord {
    int32_t Nummer;
    char Text[41];
    char Reserved45[101];
};

static_assert(sizeof(ZahlzielRecord) == 146);
static_assert(offsetof(ZahlzielRecord, Nummer) == 0);
static_assert(offsetof(ZahlzielRecord, Text) == 4);
static_assert(__is_trivially_copyable(ZahlzielRecord));

struct UserRecord {
    char Schluessel[4];
    char Name[32];
    char Reserved36[92];
};

static_assert(sizeof(UserRecord) == 128);
static_assert(offsetof(UserRecord, Schluessel) == 0);
static_assert(offsetof(UserRecord, Name) == 4);
static_assert(__is_trivially_copyable(UserRecord));

// A record of which nothing but its number is known here.
template <size_t Length> struct NumberedRecord {
    int32_t Nummer;
    char Reserved4[Length - sizeof(int32_t)];
};

using BankRecord = NumberedRecord<64>;
using UeberwRecord = NumberedRecord<256>;
using ButextRecord = NumberedRecord<64>;
using BuschaRecord = NumberedRecord<181>;
using BumakRecord = NumberedRecord<270>;
using MahntextRecord = NumberedRecord<1398>;

static_assert(sizeof(BankRecord) == 64 && __is_trivially_copyable(BankRecord));
static_assert(sizeof(UeberwRecord) == 256 && __is_trivially_copyable(UeberwRecord));
static_assert(sizeof(ButextRecord) == 64 && __is_trivially_copyable(ButextRecord));
static_assert(sizeof(BuschaRecord) == 181 && __is_trivially_copyable(BuschaRecord));
static_assert(sizeof(BumakRecord) == 270 && __is_trivially_copyable(BumakRecord));
static_assert(sizeof(MahntextRecord) == 1398 && __is_trivially_copyable(MahntextRecord));

#pragma pack(pop)

} // namespace vark
