// The records that describe accounts and tax keys: sako, kred and debi, steke. The files belong to the
// accounting application: offsets and widths are fixed, and Reserved bytes survive a rewrite.
//
// AccountSums, 388 bytes, the same in sako (from 127) and kred/debi (from 208):
//      0   26  Vortrag            carried balance, Soll and Haben
//     26   26  Slot0              end of the year; counts in a balance only to the last day of month 12
//     52  312  Monat[12]          fiscal months 1 to 12; month 1 is the first of the fiscal year, not January
//    364   24  Buchungszahl[12]   i16, number of postings of each fiscal month
//
// sako, 746 bytes, one Sachkonto (tables 0 and 28):
//      0    8  Konto              account number, key 0
//      8   10  Kuerzel            short name, key 1
//     18    2  Zuordnung          i16, place of the account: 0 none, 2 Aktiva, 4 Passiva, 8 GuV
//     20    2  Zustand            i16, 0: the account must not be deleted
//     22    7  Datum              date of the account, printed by the Kontenplan
//     29   41  Reserved29
//     70   50  Name
//    120    1  Steuerflags        tax key of the account, see SteuerFlag
//    121    6  Steuersatz         percentage of the tax keys that carry their own
//    127  388  Umsaetze           AccountSums
//    515    2  FesterSatz         i16, not 0: the tax rate of a posting on this account is fixed
//    517    7  Reserved517
//    524    1  Kontenplanflag     printed by the Kontenplan as a boolean
//    525    2  Kennzahl           i16, box of the tax return, 0 for none
//    527  169  Reserved527
//    696    1  MitKosten          not 0: the account has a Kostenschablone
//    697    4  Kostenschablone    i32, its number, 0 for none
//    701   45  Reserved701
//
// kred and debi, 956 bytes, one Kreditor or Debitor (tables 2 and 3), together the personal accounts:
//      0    8  Konto              account number, key 0
//      8   10  Kuerzel            short name, key 1
//     18    2  Zustand            i16, 0: the account must not be deleted; 1 when the record is made
//     20    7  Datum              day of the last change, with the calendar's month and year (not fiscal)
//     27   39  ReservedAmounts27  three amounts, zero when the record is made
//     66    1  ReservedOne66      1 when the record is made
//     67    1  Reserved67
//     68   26  Name1
//     94   26  Name2
//    120   31  Adresse1
//    151    7  Plz
//    158    4  Land
//    162   31  Adresse2
//    193    7  Reserved193
//    200    8  Gegenkonto         a Sachkonto, may be empty
//    208  388  Umsaetze           AccountSums
//    596    9  Blz                digits
//    605   11  BankkontoAlt       digits, read only where Bankkonto is empty
//    616   28  Bank
//    644    2  Wert1              i16, first payment-day value
//    646    2  Wert2              i16, second payment-day value
//    648    6  Skonto             percentage
//    654    2  Mahnkennziffer     i16, -1 to 3 for a Debitor, 0 for a Kreditor
//    656   47  UstId              the partner's USt-IdNr; the first two characters name its country
//    703    5  Waehrung           currency of a Kreditor; empty: the Mandant's
//    708    1  Kennzeichen        printed as the boolean "equals 1"
//    709  169  ReservedAmounts709 thirteen amounts, zero when the record is made
//    878   28  Kontenplantext     text of the Kontenplan line
//    906    4  Zahlungsziel       i32, number in zahlziel, 0 for none
//    910   12  Bankkonto          digits
//    922   34  Reserved922
//
// steke, 34 bytes, one rate of a tax key (table 4). Within a code a higher sequence number is an older rate:
//      0    2  Code               u16, 1 to 31: the low five bits of the tax flags
//      2    2  Folge              u16, sequence number within the code; key 2 is code and sequence number
//      4    7  GueltigAb          first day of this rate
//     11    6  Satz               percentage
//     17    8  Umsatzsteuerkonto  tax account while bit 0x20 of the tax flags is clear
//     25    8  Vorsteuerkonto     tax account while it is set
//     33    1  Reserved33
#pragma once

#include "src/model/text_forms.h"

namespace vark {

// The tax flags of a Sachkonto. What remains without the Vorsteuer bit is the class of the tax: exactly one
// of the other values, or 0 for no tax.
enum SteuerFlag : uint8_t {
    SteuerRegelsatz = 0x02,     // the regular rate
    SteuerErmaessigt = 0x04,    // the reduced rate
    SteuerNullsatz = 0x08,      // rate zero
    SteuerSonstigerSatz = 0x10, // any rate that the posting names
    SteuerVorsteuer = 0x20,     // input tax: the other tax account of the key
    SteuerEg = 0x80,            // trade inside the European Community
    SteuerCodeMaske = 0x1F,     // what is left is the code of steke
};

// Zuordnung of a Sachkonto.
enum Zuordnung : int16_t {
    ZuordnungKeine = 0,
    ZuordnungAktiva = 2,
    ZuordnungPassiva = 4,
    ZuordnungGuv = 8,
};

// Kind of an account at the exported interface.
enum Kontoart : int32_t {
    KontoartSachkonto = 1,
    KontoartKreditor = 2,
    KontoartDebitor = 4,
    KontoartKostenstelle = 8,
    KontoartKeine = 16, // the number stands in no account table
};

#pragma pack(push, 1)

struct AccountSums {
    SollHaben Vortrag;
    SollHaben Slot0;
    SollHaben Monat[12];
    int16_t Buchungszahl[12];
};

static_assert(sizeof(AccountSums) == 388);
static_assert(offsetof(AccountSums, Vortrag) == 0);
static_assert(offsetof(AccountSums, Slot0) == 26);
static_assert(offsetof(AccountSums, Monat) == 52);
static_assert(offsetof(AccountSums, Buchungszahl) == 364);
static_assert(__is_trivially_copyable(AccountSums));

struct SakoRecord {
    AccountNumber Konto;
    char Kuerzel[10];
    int16_t Zuordnung;
    int16_t Zustand;
    PackedDate Datum;
    char Reserved29[41];
    char Name[50];
    uint8_t Steuerflags;
    RateText Steuersatz;
    AccountSums Umsaetze;
    int16_t FesterSatz;
    char Reserved517[7];
    uint8_t Kontenplanflag;
    int16_t Kennzahl;
    char Reserved527[169];
    uint8_t MitKosten;
    int32_t Kostenschablone;
    char Reserved701[45];
};

static_assert(sizeof(SakoRecord) == 746);
static_assert(offsetof(SakoRecord, Konto) == 0);
static_assert(offsetof(SakoRecord, Kuerzel) == 8);
static_assert(offsetof(SakoRecord, Zuordnung) == 18);
static_assert(offsetof(SakoRecord, Zustand) == 20);
static_assert(offsetof(SakoRecord, Datum) == 22);
static_assert(offsetof(SakoRecord, Name) == 70);
static_assert(offsetof(SakoRecord, Steuerflags) == 120);
static_assert(offsetof(SakoRecord, Steuersatz) == 121);
static_assert(offsetof(SakoRecord, Umsaetze.Vortrag.Soll) == 127);
static_assert(offsetof(SakoRecord, Umsaetze.Vortrag.Haben) == 140);
static_assert(offsetof(SakoRecord, Umsaetze.Slot0.Soll) == 153);
static_assert(offsetof(SakoRecord, Umsaetze.Slot0.Haben) == 166);
static_assert(offsetof(SakoRecord, Umsaetze.Monat[0].Soll) == 179);
static_assert(offsetof(SakoRecord, Umsaetze.Monat[11].Haben) == 192 + 26 * 11);
static_assert(offsetof(SakoRecord, Umsaetze.Buchungszahl[0]) == 491);
static_assert(offsetof(SakoRecord, FesterSatz) == 515);
static_assert(offsetof(SakoRecord, Kontenplanflag) == 524);
static_assert(offsetof(SakoRecord, Kennzahl) == 525);
static_assert(offsetof(SakoRecord, MitKosten) == 696);
static_assert(offsetof(SakoRecord, Kostenschablone) == 697);
static_assert(__is_trivially_copyable(SakoRecord));

struct PersonalRecord {
    AccountNumber Konto;
    char Kuerzel[10];
    int16_t Zustand;
    PackedDate Datum;
    AmountText ReservedAmounts27[3];
    uint8_t ReservedOne66;
    char Reserved67[1];
    char Name1[26];
    char Name2[26];
    char Adresse1[31];
    char Plz[7];
    char Land[4];
    char Adresse2[31];
    char Reserved193[7];
    AccountNumber Gegenkonto;
    AccountSums Umsaetze;
    char Blz[9];
    char BankkontoAlt[11];
    char Bank[28];
    int16_t Wert1;
    int16_t Wert2;
    RateText Skonto;
    int16_t Mahnkennziffer;
    char UstId[47];
    char Waehrung[5];
    uint8_t Kennzeichen;
    AmountText ReservedAmounts709[13];
    char Kontenplantext[28];
    int32_t Zahlungsziel;
    char Bankkonto[12];
    char Reserved922[34];
};

static_assert(sizeof(PersonalRecord) == 956);
static_assert(offsetof(PersonalRecord, Konto) == 0);
static_assert(offsetof(PersonalRecord, Kuerzel) == 8);
static_assert(offsetof(PersonalRecord, Zustand) == 18);
static_assert(offsetof(PersonalRecord, Datum) == 20);
static_assert(offsetof(PersonalRecord, ReservedAmounts27) == 27);
static_assert(offsetof(PersonalRecord, ReservedOne66) == 66);
static_assert(offsetof(PersonalRecord, Name1) == 68);
static_assert(offsetof(PersonalRecord, Name2) == 94);
static_assert(offsetof(PersonalRecord, Adresse1) == 120);
static_assert(offsetof(PersonalRecord, Plz) == 151);
static_assert(offsetof(PersonalRecord, Land) == 158);
static_assert(offsetof(PersonalRecord, Adresse2) == 162);
static_assert(offsetof(PersonalRecord, Gegenkonto) == 200);
static_assert(offsetof(PersonalRecord, Umsaetze.Vortrag.Soll) == 208);
static_assert(offsetof(PersonalRecord, Umsaetze.Vortrag.Haben) == 221);
static_assert(offsetof(PersonalRecord, Umsaetze.Slot0.Soll) == 234);
static_assert(offsetof(PersonalRecord, Umsaetze.Slot0.Haben) == 247);
static_assert(offsetof(PersonalRecord, Umsaetze.Monat[0].Soll) == 260);
static_assert(offsetof(PersonalRecord, Umsaetze.Monat[11].Haben) == 273 + 26 * 11);
static_assert(offsetof(PersonalRecord, Umsaetze.Buchungszahl[0]) == 572);
static_assert(offsetof(PersonalRecord, Blz) == 596);
static_assert(offsetof(PersonalRecord, BankkontoAlt) == 605);
static_assert(offsetof(PersonalRecord, Bank) == 616);
static_assert(offsetof(PersonalRecord, Wert1) == 644);
static_assert(offsetof(PersonalRecord, Wert2) == 646);
static_assert(offsetof(PersonalRecord, Skonto) == 648);
static_assert(offsetof(PersonalRecord, Mahnkennziffer) == 654);
static_assert(offsetof(PersonalRecord, UstId) == 656);
static_assert(offsetof(PersonalRecord, Waehrung) == 703);
static_assert(offsetof(PersonalRecord, Kennzeichen) == 708);
static_assert(offsetof(PersonalRecord, ReservedAmounts709) == 709);
static_assert(offsetof(PersonalRecord, Kontenplantext) == 878);
static_assert(offsetof(PersonalRecord, Zahlungsziel) == 906);
static_assert(offsetof(PersonalRecord, Bankkonto) == 910);
static_assert(__is_trivially_copyable(PersonalRecord));

struct StekeRecord {
    uint16_t Code;
    uint16_t Folge;
    PackedDate GueltigAb;
    RateText Satz;
    AccountNumber Umsatzsteuerkonto;
    AccountNumber Vorsteuerkonto;
    char Reserved33[1];
};

static_assert(sizeof(StekeRecord) == 34);
static_assert(offsetof(StekeRecord, Code) == 0);
static_assert(offsetof(StekeRecord, Folge) == 2);
static_assert(offsetof(StekeRecord, GueltigAb) == 4);
static_assert(offsetof(StekeRecord, Satz) == 11);
static_assert(offsetof(StekeRecord, Umsatzsteuerkonto) == 17);
static_assert(offsetof(StekeRecord, Vorsteuerkonto) == 25);
static_assert(__is_trivially_copyable(StekeRecord));

#pragma pack(pop)

} // namespace vark
