/*
 * VARK40: the way into the books of MERIDA for other programs.
 *
 * Link with libvark40.so (VARK40.dll on Windows) or load it. There is nothing to open: the library reads its
 * configuration at the first call. VARK_Status tells whether that worked.
 *
 * Texts
 *   All texts, in and out, are NUL-terminated Windows-1252 on every platform. A null input text counts as the
 *   empty text. A null output pointer means "not wanted". An output text needs the number of bytes stated at
 *   its function, NUL included; it is never written beyond.
 *   In the structures a text that fills its whole array without a NUL is read up to the width less one.
 *
 *   Account number   up to 7 characters; leading blanks don't count. Outputs come without them, in 8 bytes.
 *   Amount           in: up to 9 digits, a comma, up to 2 digits, a sign in front where one is allowed:
 *                    "1234,5", "-7". No dots. Out: 17 bytes, in one of three forms:
 *                      1  fixed width, for machines     "+000001234,50"  "-000000007,00"  "0000000000,00"
 *                      2  plain                         "1234,50"        "-7,00"          "0,00"
 *                      3  grouped, for people           "1.234,50"       "-7,00"          "0,00"
 *                    Any other form gives -20 and message 1419.
 *   Rate             a percentage, in: up to 2 digits, a comma, up to 2 digits: "16", "7,5". Out: 8 bytes, in
 *                    the forms of amounts.
 *   Date             in: "TT.MM.JJJJ", "TT.MM.JJ", "TTMMJJ", "TT.MM.", "TTMM" or "TT" by the calendar; what
 *                    is missing is taken from today. Years 80 to 99 are 19.., 1 to 79 are 20... At most 19
 *                    characters. Out: "TT.MM.JJJJ", 11 bytes; an empty date is the empty text.
 *
 * Account kinds (Kontoart): 1 Sachkonto, 2 Kreditor, 4 Debitor, 8 Kostenstelle; out also 16 for a number that
 * stands in no account table.
 *
 * Results
 *   Unless stated otherwise a function returns 1 for success, 0 for a cancelled dialog and a negative code
 *   for a failure. These codes can come from every function that returns a number (VARK_InitReports and
 *   VARK_IsMessage apart):
 *     -36  no data path is configured, or tolka.ini or vark.ini    as long as the process lives
 *          is there and cannot be read
 *      -3  the record manager could not be loaded                  as long as the process lives
 *     -42  no memory for the state of the calling thread, or no slot for it
 *   and these from every function that takes a Mandant, besides those stated:
 *      -3  the record manager reports a failure, which the user has been shown
 *      -5  the Mandant does not exist                              message 1408
 *   A failure leaves the books as they were.
 *
 * Messages
 *   Where a function takes showMessages, 0 keeps the numbered messages of refused input silent; any other
 *   value shows them in a message box ("MERIDA") over the active window, and the call returns when it is
 *   answered. Failures of the record manager are shown always. A function without this argument shows
 *   nothing, or uses the value of the thread's last call that had it, as stated.
 *
 * Threads
 *   Any thread may call any function. The selected Mandant, the cursor, the split posting in progress and the
 *   report settings belong to the calling thread and are released when it ends. Calls of two threads are not
 *   serialised; a record that another one holds gives message 1420 and -3.
 *
 * Ownership
 *   Nothing that is handed over is kept after the call, and nothing handed out needs to be freed, except the
 *   windows of the reports, which the caller destroys.
 */
#ifndef VARK40_H
#define VARK40_H

#include <stdint.h>

#ifdef _WIN32
#include <windows.h>
#define VARK_CALL __stdcall /* _VARK_Status@0 to who links libvark40.a, "VARK_Status" to GetProcAddress */
typedef HWND VarkWindow;
typedef MSG VarkMessage;
#else
#define VARK_CALL
/* A window of the window system beside the library; null or a value that is none means "no window". */
typedef void *VarkWindow;
/* A message of the window system, as GetMessageA of libvarkui.so fills it. */
typedef struct VarkMessage {
    VarkWindow hwnd;
    uint32_t message;
    uintptr_t wParam;
    intptr_t lParam;
    uint32_t time;
    struct {
        int32_t x;
        int32_t y;
    } pt;
} VarkMessage;
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Names for the numbers ---- */

/* Kinds of account (Kontoart). A set of kinds is their sum. */
enum VarkKontoart {
    VARK_SACHKONTO = 1,
    VARK_KREDITOR = 2,
    VARK_DEBITOR = 4,
    VARK_KOSTENSTELLE = 8,
    VARK_OHNE_KONTO = 16 /* out: a number that stands in no account table */
};

/* Forms of amounts and rates that come out. */
enum VarkForm { VARK_FORM_FEST = 1, VARK_FORM_EINFACH = 2, VARK_FORM_GRUPPIERT = 3 };

/* Results. What they mean at a function stands there; -2 and -10 differ from one to another. */
enum VarkErgebnis {
    VARK_LETZTER = 2, /* delivered, and the cursor has ended */
    VARK_GUT = 1,
    VARK_ABGEBROCHEN = 0, /* by the user; also: there is none */
    VARK_FEHLER_UMRECHNUNG = -2,
    VARK_FEHLER_AKTION = -2,
    VARK_FEHLER_TEIL_SPEICHER = -2,
    VARK_FEHLER_DATENBANK = -3,
    VARK_FEHLER_MANDANT = -5,
    VARK_FEHLER_STAPEL = -6,
    VARK_FEHLER_KONTOART = -7,
    VARK_FEHLER_SOLLKONTO = -8,
    VARK_FEHLER_HABENKONTO = -9,
    VARK_FEHLER_KONTO = -10,
    VARK_FEHLER_DATUM = -11,
    VARK_FEHLER_BRUTTO = -12,
    VARK_FEHLER_STEUERSATZ = -13,
    VARK_FEHLER_STEUERBETRAG = -14,
    VARK_FEHLER_GEGENKONTO = -15,
    VARK_FEHLER_BANK = -16,
    VARK_FEHLER_SKONTO = -17,
    VARK_FEHLER_MAHNKENNZIFFER = -18,
    VARK_FEHLER_KUERZEL_ANDERS = -19,
    VARK_FEHLER_FORM = -20,
    VARK_FEHLER_KOSTENSTELLE = -23,
    VARK_FEHLER_KOSTEN_FEHLEN = -24,
    VARK_FEHLER_ANZAHL_TEILE = -25,
    VARK_FEHLER_SEITEN = -26,
    VARK_FEHLER_ZAHLUNGSZIEL = -27,
    VARK_FEHLER_KEIN_KONTO = -28,
    VARK_FEHLER_KUERZEL_FEHLT = -29,
    VARK_FEHLER_NAME_FEHLT = -30,
    VARK_FEHLER_KONTO_BESTEHT = -31,
    VARK_FEHLER_KUERZEL_BESTEHT = -32,
    VARK_FEHLER_NICHT_LOESCHBAR = -33,
    VARK_FEHLER_KEIN_DATENPFAD = -36,
    VARK_FEHLER_NUMMERN_AUFGEBRAUCHT = -37,
    VARK_FEHLER_SATZ_FORT = -39,
    VARK_FEHLER_NICHT_BEGONNEN = -40,
    VARK_FEHLER_KEIN_SPEICHER = -42,
    VARK_FEHLER_KOSTENSCHABLONE = -43
};

/* Which fields of ReportParams are valid. */
enum VarkParamFlag {
    VARK_PARAM_ZEITRAUM = 0x01,
    VARK_PARAM_DATEN = 0x02, /* VonDatum, BisDatum */
    VARK_PARAM_JAHR = 0x04,
    VARK_PARAM_KONTOART = 0x08,
    VARK_PARAM_KONTEN = 0x10,  /* the eight limits */
    VARK_PARAM_EINZELN = 0x20, /* one single account is wanted, the lower limit */
    VARK_PARAM_AUSGABE = 0x40,
    VARK_PARAM_ARCHIVJAHR = 0x80
};

/* Zeitraum of ReportParams, beside the fiscal months 1 to 12. */
enum VarkZeitraum {
    VARK_ZEITRAUM_TAGE = 0,
    VARK_ZEITRAUM_QUARTAL_1 = 13,
    VARK_ZEITRAUM_QUARTAL_4 = 16,
    VARK_ZEITRAUM_JAHR = 17
};

/* Ausgabe of ReportParams. */
enum VarkAusgabe { VARK_AUSGABE_BILDSCHIRM = 0, VARK_AUSGABE_DRUCKER = 1 };

/* Aktion of VARK_Peko. */
enum VarkAktion { VARK_ANLEGEN = 1, VARK_AENDERN = 2, VARK_LOESCHEN = 3 };

#pragma pack(push, 1)

/* One booking. */
typedef struct BuchungEingabe {
    int32_t Mandant;         /* number of the Mandant */
    int32_t Stapel;          /* number of the Stapel that takes the booking; it must exist */
    char Datum[7];           /* date, six digits TTMMJJ */
    char Beleg[9];           /* number of the voucher */
    char Text[36];           /* text of the booking */
    char Sollkonto[8];       /* account on the Soll side */
    int32_t SollArt;         /* its kind: 1, 2 or 4 */
    char Habenkonto[8];      /* account on the Haben side */
    int32_t HabenArt;        /* its kind: 1, 2 or 4 */
    char Brutto[13];         /* gross amount, may be negative */
    char Steuersatz[6];      /* tax rate; empty: that of the account */
    char Steuerbetrag[13];   /* tax amount; empty: worked out from the rate */
    uint8_t Kennzeichen;     /* kept with the booking as it stands */
    int32_t Kostenschablone; /* number of the Kostenschablone that spreads the costs, 0 for none */
    int32_t Zahlungsziel;    /* number of the Zahlungsziel, 0: that of the personal account */
    char Rest[13];           /* not read */
} BuchungEingabe;

/* One part of a split booking; the fields are those of BuchungEingabe. */
typedef struct TeilbuchungEingabe {
    char Sollkonto[8];
    int32_t SollArt;
    char Habenkonto[8];
    int32_t HabenArt;
    char Brutto[13];
    char Steuersatz[6];
    char Steuerbetrag[13];
    char Text[36];
    int32_t Kostenschablone;
    char Rest[4]; /* not read */
} TeilbuchungEingabe;

/* A split booking of up to ten parts. */
typedef struct SplitEingabe {
    int32_t Mandant;
    int32_t Stapel;
    char Datum[7]; /* six digits TTMMJJ */
    char Beleg[9];
    int32_t Anzahl; /* number of parts, 1 to 10 */
    TeilbuchungEingabe Teil[10];
    uint8_t Kennzeichen;
    int32_t Zahlungsziel;
    char Rest[27]; /* not read */
} SplitEingabe;

/* A personal account: a Kreditor or a Debitor. */
typedef struct PekoEingabe {
    int32_t Mandant;
    char Konto[8];          /* account number */
    char Kuerzel[9];        /* short name */
    char Name1[26];         /* first line of the name, required */
    char Name2[26];         /* second line */
    char UstId[16];         /* USt-IdNr */
    char Land[4];           /* country code; empty: the Mandant's */
    char Waehrung[5];       /* currency, of a Kreditor only */
    char Plz[7];            /* postal code */
    char Adresse2[31];      /* second address line */
    char Adresse1[31];      /* first address line */
    char Blz[9];            /* bank code, digits; with Bankkonto or not at all */
    char Bankkonto[12];     /* bank account, digits; with Blz or not at all */
    char Bank[28];          /* name of the bank */
    char Gegenkonto[8];     /* a Sachkonto, may be empty */
    int32_t Wert1;          /* first payment-day value; its low 16 bits are kept */
    int32_t Wert2;          /* second payment-day value, likewise */
    char Skonto[6];         /* percentage of the discount; empty: 0 */
    int32_t Mahnkennziffer; /* -1 to 3 of a Debitor, 0 of a Kreditor */
    int32_t Zahlungsziel;   /* number of the Zahlungsziel, 0 for none */
    char Rest[60];          /* not read */
} PekoEingabe;

/*
 * What a report is asked for. It fills the report's dialog in advance and holds the user's choice afterwards,
 * so that a host can offer it again. ParamFlags says which fields are valid:
 *   0x01 Zeitraum   0x02 VonDatum, BisDatum   0x04 JahrIndex   0x08 KontoArt   0x10 the eight limits
 *   0x20 one single account is wanted, the lower limit   0x40 Ausgabe   0x80 ArchivJahr
 * A value outside its range is corrected without a message.
 *
 * In the tax reports quarters and the year are those of the calendar, and JahrIndex goes in as its year. It
 * comes back as the fiscal year of the first day, which may be the one before: set it anew before the block
 * is used again.
 */
typedef struct ReportParams {
    uint32_t ParamFlags;
    int32_t Zeitraum;   /* 0 from VonDatum to BisDatum, 1..12 fiscal month, 13..16 quarter, 17 the year */
    char VonDatum[7];   /* first day, six digits TTMMJJ by the calendar */
    char BisDatum[7];   /* last day, likewise */
    int32_t JahrIndex;  /* fiscal year, counted from 1980 */
    int32_t ArchivJahr; /* four-digit year of an archive, 0 for none */
    int32_t KontoArt;   /* 1, 2, 4 or 8 */
    char SachkontoVon[8];
    char SachkontoBis[8];
    char KreditorVon[8];
    char KreditorBis[8];
    char DebitorVon[8];
    char DebitorBis[8];
    char KostenstelleVon[8];
    char KostenstelleBis[8];
    int32_t Ausgabe;     /* 0 Bildschirm, 1 Drucker */
    uint32_t ViewResult; /* written by the call: 1 after a finished report, else 0 */
} ReportParams;

#pragma pack(pop)

/* The structures are the binary interface: a compiler that lays them out otherwise stops here. */
typedef char VarkSizeOfBuchungEingabe[sizeof(BuchungEingabe) == 138 ? 1 : -1];
typedef char VarkSizeOfTeilbuchungEingabe[sizeof(TeilbuchungEingabe) == 100 ? 1 : -1];
typedef char VarkSizeOfSplitEingabe[sizeof(SplitEingabe) == 1060 ? 1 : -1];
typedef char VarkSizeOfPekoEingabe[sizeof(PekoEingabe) == 306 ? 1 : -1];
typedef char VarkSizeOfReportParams[sizeof(ReportParams) == 106 ? 1 : -1];

/* ---- Library ---- */

/*
 * State of the library: 1 ready, -36 no data path, -3 no record manager, -42 no slot for thread state. A
 * state other than 1 is final for the life of the process. Shows nothing.
 */
int32_t VARK_CALL VARK_Status(void);

/*
 * Closes all tables of the calling thread and forgets its Mandant; the next call opens them again. To be
 * called before the files are moved or saved by others, and before a thread of a pool goes idle. Shows
 * nothing.
 */
void VARK_CALL VARK_SchliesseDB(void);

/* ---- Bookings ---- */

/*
 * Writes one booking into a Stapel, whole or not at all; when the call returns 1 it is on disk.
 *
 * The accounts must exist as the given kinds. The date must lie in a postable fiscal year. Without Steuersatz
 * and Steuerbetrag the tax of the accounts applies. A personal account with a currency of its own has the
 * amount converted at the rate of the date; where there is none, the user is asked for it, whatever
 * showMessages says.
 *
 * Returns
 *     1  written
 *     0  the user cancelled the entry of a rate of exchange
 *    -2  the amount can't be converted                                 1450
 *    -3  failure of the record manager, or no memory                   (its own text)
 *    -5  Mandant                                                       1408
 *    -6  Stapel                                                        1408
 *    -8  Sollkonto unknown, or not of the kind SollArt                 1409
 *    -9  Habenkonto unknown, or not of the kind HabenArt               1409
 *   -10  the same account on both sides                                1425
 *   -11  date unreadable, or not in a postable year                    1412
 *   -12  Brutto                                                        1410
 *   -13  Steuersatz: unreadable, not allowed, not that of the account  1410, 1411, 1435
 *   -14  Steuerbetrag: unreadable, not allowed, missing, wrong sign    1410, 1411
 *   -24  an account of the GuV needs costs                             1445
 *   -27  Zahlungsziel                                                  1419
 *   -43  Kostenschablone unknown, or no account of the GuV             1419, 1459
 * The checks run in this order: Mandant, Stapel, date, accounts, amounts, Zahlungsziel, Kostenschablone, tax,
 * currency, costs. A null pointer counts as a structure of zeros.
 */
int32_t VARK_CALL VARK_BuchungEinfuegen(const BuchungEingabe *buchung, int32_t showMessages);

/*
 * The same with the fields as arguments. The date may have any of the forms above; longer texts are cut to
 * the widths of BuchungEingabe. Kennzeichen, and in the shorter form Kostenschablone and Zahlungsziel, are 0.
 * An unreadable date is found first, whatever else is wrong.
 */
int32_t VARK_CALL VARK_BuchungEinfuegenDirekt(int32_t showMessages, int32_t mandant, int32_t stapel,
                                              const char *datum, const char *beleg, const char *text,
                                              const char *sollkonto, int32_t sollArt, const char *habenkonto,
                                              int32_t habenArt, const char *brutto, const char *steuersatz,
                                              const char *steuerbetrag);

int32_t VARK_CALL VARK_BuchungEinfuegenDirektEx(int32_t showMessages, int32_t mandant, int32_t stapel,
                                                const char *datum, const char *beleg, const char *text,
                                                const char *sollkonto, int32_t sollArt,
                                                const char *habenkonto, int32_t habenArt, const char *brutto,
                                                const char *steuersatz, const char *steuerbetrag,
                                                int32_t kostenschablone, int32_t zahlungsziel);

/*
 * Writes a booking of 1 to 10 parts, whole or not at all. With two parts or more, either all Sollkonten or
 * all Habenkonten must be the same text, and not both. The codes and messages are those of
 * VARK_BuchungEinfuegen, but for the currency, which is never converted (no 0 and no -2), and
 *   -25  number of parts                                               1432
 *   -26  neither side, or both sides, the same in all parts            1433, 1434
 * A message about a part begins "Teilbuchung n: ". Take care: an unknown Kostenschablone in a part shows
 * 1419, writes nothing, and still returns 1; check its number beforehand.
 */
int32_t VARK_CALL VARK_SplitBuchungEinfuegen(const SplitEingabe *split, int32_t showMessages);

/*
 * A split booking piece by piece: VARK_SplitStart, VARK_SplitEinfuegen for each part (any number),
 * VARK_SplitEnde. It is held by the calling thread, and nothing but the date is checked before the end.
 *
 * VARK_SplitStart drops a split booking in progress and begins a new one. Without Ex Zahlungsziel is 0.
 *     1  begun     -11  date unreadable (no message)
 */
int32_t VARK_CALL VARK_SplitStart(int32_t mandant, int32_t stapel, const char *datum, const char *beleg,
                                  uint8_t kennzeichen);

int32_t VARK_CALL VARK_SplitStartEx(int32_t mandant, int32_t stapel, const char *datum, const char *beleg,
                                    uint8_t kennzeichen, int32_t zahlungsziel);

/*
 * Adds a part; longer texts are cut to the widths of TeilbuchungEingabe. Without Ex Kostenschablone is 0.
 * Shows nothing.
 *     1  added     -2  no memory, the parts before it stay     -40  no split booking has been begun
 */
int32_t VARK_CALL VARK_SplitEinfuegen(const char *sollkonto, int32_t sollArt, const char *habenkonto,
                                      int32_t habenArt, const char *brutto, const char *steuersatz,
                                      const char *steuerbetrag, const char *text);

int32_t VARK_CALL VARK_SplitEinfuegenEx(const char *sollkonto, int32_t sollArt, const char *habenkonto,
                                        int32_t habenArt, const char *brutto, const char *steuersatz,
                                        const char *steuerbetrag, const char *text, int32_t kostenschablone);

/*
 * Ends the split booking: post 0 drops it (always 1), any other value checks and writes it.
 * Returns what VARK_SplitBuchungEinfuegen returns, with no upper limit of parts, or
 *   -40  no split booking has been begun
 * After a refusal the booking must be begun anew.
 */
int32_t VARK_CALL VARK_SplitEnde(int32_t post, int32_t showMessages);

/* ---- Personal accounts ---- */

/*
 * Creates (aktion 1), changes (2) or deletes (3) a Kreditor (art 2) or Debitor (art 4). To change or delete,
 * the account is found by Konto, or by Kuerzel if Konto is empty; a change replaces every field. The account
 * is locked while it is changed.
 *
 * Returns
 *     1  done
 *    -2  aktion                                                        1414
 *    -3  failure of the record manager; record locked by another       (its own text), 1420
 *    -5  Mandant                                                       1408
 *    -7  art                                                           1413
 *   -10  neither Konto nor Kuerzel given                               1409
 *   -15  Gegenkonto is no Sachkonto                                    1419
 *   -16  Blz or Bankkonto no digits, or only one of them given         1419
 *   -17  Skonto                                                        1419
 *   -18  Mahnkennziffer                                                1419
 *   -19  Kuerzel is not that of Konto                                  1419
 *   -27  Zahlungsziel                                                  1419
 *   -28  no such account                                               1415
 *   -29  a new account without Kuerzel                                 1416
 *   -30  no Name1                                                      1418
 *   -31  Konto exists among Sachkonten, Kreditoren or Debitoren        1417
 *   -32  Kuerzel exists among them                                     1417
 *   -33  the account must not be deleted                               1427
 * A null pointer counts as a structure of zeros.
 */
int32_t VARK_CALL VARK_Peko(int32_t aktion, int32_t art, const PekoEingabe *peko, int32_t showMessages);

/* The same with the fields as arguments; longer texts are cut to the widths of PekoEingabe. */
int32_t VARK_CALL VARK_PekoDirekt(int32_t aktion, int32_t art, int32_t showMessages, int32_t mandant,
                                  const char *konto, const char *kuerzel, const char *name1,
                                  const char *name2, const char *ustId, const char *land,
                                  const char *waehrung, const char *plz, const char *adresse2,
                                  const char *adresse1, const char *blz, const char *bankkonto,
                                  const char *bank, const char *gegenkonto, int32_t wert1, int32_t wert2,
                                  const char *skonto, int32_t mahnkennziffer, int32_t zahlungsziel);

/*
 * The next free number for a new Kreditor (art 2) or Debitor (art 4) after the highest one; "70000" or
 * "10000" where there is none yet. An unknown Mandant is shown as the thread's last showMessages says.
 *   out   8 bytes
 * Returns 1; -3; -5 (1408); -7 art; -37 no number of 7 characters is free.
 */
int32_t VARK_CALL VARK_HoleFreieKontonr(int32_t mandant, int32_t art, char *out);

/*
 * Whether an account of the kind art (1, 2, 4 or 8) exists. Shows nothing but failures of the record manager.
 * Returns 1 it exists; 0 it does not; -3; -5; -7 art.
 */
int32_t VARK_CALL VARK_ExistiertKonto(int32_t mandant, const char *konto, int32_t art);

/*
 * The balance of an account (kontoart 1, 2, 4 or 8) over the Mandant's fiscal year, with what was carried
 * forward; positive is a Soll balance. For a Kostenstelle it is the sum of its twelve months. Bookings that
 * are still in a Stapel don't count.
 *   form  of the amount, 1 to 3
 *   out   17 bytes
 * Returns 1; -3; -5 (1408); -7 kontoart (1413); -10 no such account (1409); -20 form (1419);
 * -23 no such Kostenstelle (1419).
 */
int32_t VARK_CALL VARK_HoleSaldo(int32_t mandant, const char *konto, int32_t kontoart, int32_t showMessages,
                                 int32_t form, char *out);

/* ---- Reading ---- */
/*
 * A thread has one cursor: VARK_InitHole... starts it and ends the one before, VARK_Hole... delivers a record
 * and moves on, VARK_BeendeHolen ends it early. Other calls may come in between.
 */

/*
 * Final bookings of a fiscal year in the order of their dates, from the one at or after vonDatum. An empty
 * date begins with the first booking of the year that is selected. Returns 1 ready; 0 no booking; -3; -5
 * (1408); -11 date unreadable, or not in a postable year (1419).
 */
int32_t VARK_CALL VARK_InitHoleBube(int32_t mandant, const char *vonDatum, int32_t showMessages);

/*
 *   splitTeil     0 for a booking that stands alone, else the number of the part of a split booking, from 1
 *   datum         11 bytes, the date of the voucher (Belegdatum)
 *   beleg          9 bytes, the number of the voucher
 *   text          40 bytes, the text of the booking or part
 *   sollkonto      8 bytes, account on the Soll side; habenkonto 8 bytes, on the Haben side
 *   sollArt       kind of that account: 1, 2, 4, or 16 where it is in no table; habenArt likewise
 *   form          of the next three, 1 to 3; not looked at if none of them is wanted
 *   betrag        17 bytes, gross, in the Mandant's currency; below zero for a reversal
 *   steuerprozent  8 bytes, rate of the turnover tax in it, 0 for none
 *   steuerbetrag  17 bytes, the turnover tax in betrag, 0 for none
 * Returns 1 delivered, more follow; 2 delivered, the last one; -3; -20 form (1419); -39 the booking is gone;
 * -40 no such cursor. After 2, -3, -20 and -39 the cursor has ended.
 */
int32_t VARK_CALL VARK_HoleBube(uint32_t *splitTeil, char *datum, char *beleg, char *text, char *sollkonto,
                                uint32_t *sollArt, char *habenkonto, uint32_t *habenArt, int32_t form,
                                char *betrag, char *steuerprozent, char *steuerbetrag);

/* Ends the thread's cursor, of whatever kind. Returns 1. */
int32_t VARK_CALL VARK_BeendeHolen(void);

/*
 * Accounts of the kind kontoart (1, 2 or 4) in the order of their numbers, from vonKonto or from the first.
 * Returns 1 ready; 0 no account; -3; -5 (1408); -7 kontoart (1413).
 */
int32_t VARK_CALL VARK_InitHoleKonto(int32_t mandant, int32_t kontoart, const char *vonKonto,
                                     int32_t showMessages);

/*
 *   konto      8 bytes, number of the account
 *   kuerzel   10 bytes, its short name
 *   name      50 bytes
 *   zuordnung where the account is closed: 0 nowhere, 2 Aktiva, 4 Passiva, 8 GuV
 *   flag1     1 if the tax rate of the account is fixed, else 0
 *   flag2     1 if the account has a Kostenschablone, else 0
 * Returns 1 delivered, more follow; -3 failure, AND after the last Sachkonto, which has been delivered; -39
 * the account is gone; -40 no cursor over Sachkonten. After -3 and -39 the cursor has ended.
 */
int32_t VARK_CALL VARK_HoleSako(char *konto, char *kuerzel, char *name, uint32_t *zuordnung, uint32_t *flag1,
                                uint32_t *flag2);

/*
 *   konto       8 bytes     kuerzel    10 bytes     name1      26 bytes     name2       26 bytes
 *   freitext   47 bytes     land        4 bytes     waehrung    5 bytes     plz          7 bytes
 *   adresse2   31 bytes     adresse1   31 bytes     blz         9 bytes     bankkonto   12 bytes
 *   bank       28 bytes     gegenkonto  8 bytes     skonto      8 bytes
 * These mean what the fields of those names in PekoEingabe do; freitext is UstId there (47 bytes are kept).
 *   land            country code as on a car, "D"
 *   waehrung        currency, empty for the Mandant's
 *   wert1, wert2    payment-day values: the low 16 bits of Wert1 and Wert2
 *   form            of skonto, 1 to 3; not looked at if skonto is not wanted
 *   skonto          percentage of the discount
 *   mahnkennziffer  written for a Debitor only: -1 is never reminded, 0 to 3 reminders so far
 *   zahlungsziel    number of the Zahlungsziel, 0 for none
 * Returns 1 delivered, more follow; 2 delivered, the last one; -3; -20 form (1419), with the texts before it
 * written; -39 the account is gone; -40 no cursor over Kreditoren or Debitoren. After 2, -3, -20 and -39 the
 * cursor has ended.
 */
int32_t VARK_CALL VARK_HolePeko(char *konto, char *kuerzel, char *name1, char *name2, char *freitext,
                                char *land, char *waehrung, char *plz, char *adresse2, char *adresse1,
                                char *blz, char *bankkonto, char *bank, char *gegenkonto, uint32_t *wert1,
                                uint32_t *wert2, int32_t form, char *skonto, uint32_t *mahnkennziffer,
                                uint32_t *zahlungsziel);

/*
 * Open items of Kreditoren (kontoart 2) or Debitoren (4), of one account or, with an empty konto, of all, in
 * the order of their running numbers.
 * Returns 1 ready; 0 no item; -3; -5 (1408); -7 kontoart (1413); -10 no such account (1409).
 */
int32_t VARK_CALL VARK_InitHoleOP(int32_t mandant, const char *konto, int32_t kontoart, int32_t showMessages);

/*
 *   konto        8 bytes, the personal account
 *   referenz1   10 bytes, number of the voucher that opened the item
 *   referenz2   10 bytes, a second reference, mostly empty
 *   datum1      11 bytes, date of the voucher
 *   datum2      11 bytes, day on which it is due (Termin)
 *   datum3      11 bytes, last day of the discount
 *   text1       26 bytes, name of the account
 *   text2       26 bytes, what the item is for
 *   form        of the amounts, 1 to 3; not looked at if none is wanted
 *   betrag1     17 bytes, what is still open, in the Mandant's currency
 *   betrag2     17 bytes, a second amount: in books made by tools/books the discount that may be taken
 *   waehrung     5 bytes, currency of the item; the Mandant's where it has none of its own
 * Returns 1 delivered, more follow; 2 delivered, the last one; -3; -20 form (1419), the cursor stays; -39 the
 * item is gone; -40 no cursor over open items. After 2, -3 and -39 the cursor has ended.
 */
int32_t VARK_CALL VARK_HoleOP(char *konto, char *referenz1, char *referenz2, char *datum1, char *datum2,
                              char *datum3, char *text1, char *text2, int32_t form, char *betrag1,
                              char *betrag2, char *waehrung);

/* ---- Choosing ---- */
/*
 * Each opens a modal dialog over owner (null: the active window) on the calling thread and returns when it
 * has ended. All but VARK_HoleKonto remember the choice in vark.ini and offer it again. An unknown Mandant
 * (-5) is shown (1408) as the thread's last showMessages says.
 */

/*
 * The number of the Mandant chosen; 0 cancelled; -1 nothing to choose from; -2 a line without a number; -3.
 */
int32_t VARK_CALL VARK_HoleMandantenNr(VarkWindow owner);

/*
 * The number of the Stapel chosen; 0 cancelled; -3; -5. A negative mandant is the Mandant's number
 * with the sign turned: the dialog then lists every Stapel, and the user may make, change and delete them.
 */
int32_t VARK_CALL VARK_HoleStapelNr(VarkWindow owner, int32_t mandant);

/*
 * An account of the kind kontoart (1, 2, 4 or 8), its number between von and bis (empty: no limit).
 *   out   8 bytes
 * Returns 1 chosen; 0 cancelled; -1 no account in the range; -2 too many for the list (1400); -3; -5; -7
 * kontoart.
 */
int32_t VARK_CALL VARK_HoleKonto(VarkWindow owner, int32_t mandant, int32_t kontoart, const char *von,
                                 const char *bis, char *out);

/* The number of the Zahlungsziel chosen; 0 cancelled; -3; -5. */
int32_t VARK_CALL VARK_HoleZahlungsziel(VarkWindow owner, int32_t mandant);

/* The number of the Kostenschablone chosen; 0 cancelled; -3; -5. */
int32_t VARK_CALL VARK_HoleKostenschablone(VarkWindow owner, int32_t mandant);

/* ---- Reports ---- */
/*
 * A report asks for its period and range in a modal dialog over parent, computes, and shows its pages in a
 * window or prints them. params may be null; where it is given it fills the dialog in advance, takes the
 * user's choice after OK, and its ViewResult tells the outcome.
 *
 * Without a person. With VARK_UI=headless the dialog is answered with OK as params fills it, through the same
 * checks; a refusal is a cancel. What a dialog offers beyond params - levels, check boxes, a period to
 * compare with - a host chooses as a person would, by a list of instructions for its next calls, whatever the
 * front end; on a screen nothing of it is seen (VarkUiPlay of libvarkui.so, told in window-system/calls.def,
 * the language in window-system/README.md; the controls by their ids, a row of tabs is 1044, its second page
 * that of the comparison):
 *
 *     VarkUiPlay("dialog 127\ncheck 1002\nuncheck 1047\n"      Bilanz: groups of the first level alone
 *                "check 1046\nselect 1044 1\ntext 20000 1997\n", TRUE);   beside the year 1997
 *     view = VARK_Bilanz(1, 0, NULL, &params);
 *     line = VarkUiPlayed(reason, sizeof reason);              0, or the line that did not fit
 *
 * A PDF. The window that comes back is a view of the report engine (of VARK_Kontenblatt, a frame around one:
 * its first child of the class "rsView"). RSExportView(view, "susa.pdf") of librs.so writes it as pages, and
 * by another ending as csv, json, html or txt (its rs.h). To print into files instead of on paper,
 * vark.ini names one: [RS] Drucker=datei:/pfad/{bericht}.pdf; then Ausgabe 1 does it without a further call.
 *
 * A period of the tax reports may begin in the fiscal year before the one asked for: JahrIndex comes back as
 * that of its first day. Who offers the block again sets JahrIndex anew.
 *
 * Returns the window of the report, which the caller destroys. Null means: printed (ViewResult 1), or nothing
 * came of it (ViewResult 0): cancelled; library not ready or no such Mandant, silently; template not found
 * (1456); failed (1446). These messages are always shown. The call runs wholly on the calling thread, and the
 * window belongs to that thread.
 */

/*
 * How the report windows of the calling thread look: window styles, title, and the host's frame window (may
 * be null). The title is copied. Doesn't ask for the state of the library. Returns 1; 0 no memory.
 */
int32_t VARK_CALL VARK_InitReports(uint32_t style, uint32_t exStyle, const char *title,
                                   VarkWindow frameWindow);

/*
 * For a host's own message loop: to be called with each message, before it is dispatched, so that the
 * keyboard works in the library's modeless windows. Returns 1 if the message has been dealt with, else 0
 * (also for null).
 */
int32_t VARK_CALL VARK_IsMessage(VarkMessage *message);

/* Chart of accounts. */
VarkWindow VARK_CALL VARK_Kontenplan(int32_t mandant, VarkWindow parent, ReportParams *params);
/* List of sums and balances. */
VarkWindow VARK_CALL VARK_SummenSaldenListe(int32_t mandant, VarkWindow parent, ReportParams *params);
/* Annual statement in columns. */
VarkWindow VARK_CALL VARK_HauptAbschluss(int32_t mandant, VarkWindow parent, ReportParams *params);
/* Balance sheet; with eroeffnung not 0 the opening balance sheet. */
VarkWindow VARK_CALL VARK_Bilanz(int32_t mandant, int32_t eroeffnung, VarkWindow parent,
                                 ReportParams *params);
/* Profit and loss account. */
VarkWindow VARK_CALL VARK_GUV(int32_t mandant, VarkWindow parent, ReportParams *params);
/* Journal of bookings. */
VarkWindow VARK_CALL VARK_Buchungsjournal(int32_t mandant, VarkWindow parent, ReportParams *params);
/*
 * Account sheets, with kosten not 0 those of Kostenstellen, in a viewer with a bar to move between them.
 * ViewResult is left as it is until the sheets are there.
 */
VarkWindow VARK_CALL VARK_Kontenblatt(int32_t mandant, int32_t kosten, VarkWindow parent,
                                      ReportParams *params);
/* List of open items. */
VarkWindow VARK_CALL VARK_OPListe(int32_t mandant, VarkWindow parent, ReportParams *params);
/* Turnover of personal accounts. */
VarkWindow VARK_CALL VARK_UmsatzStatistik(int32_t mandant, VarkWindow parent, ReportParams *params);
/*
 * Advance return of turnover tax. When it has really been printed, the Mandant's Buchungssperre moves forward
 * to the end of the period; the user is warned (1803).
 */
VarkWindow VARK_CALL VARK_UmsatzSteuerVoranmeldung(int32_t mandant, VarkWindow parent, ReportParams *params);
/* Proof of the turnover tax. */
VarkWindow VARK_CALL VARK_UmsatzSteuerVerprobung(int32_t mandant, VarkWindow parent, ReportParams *params);
/* Statement of deliveries inside the European Community. */
VarkWindow VARK_CALL VARK_ZusammenfassendeMeldung(int32_t mandant, VarkWindow parent, ReportParams *params);
/* Balances of Kostenstellen. */
VarkWindow VARK_CALL VARK_KostenSaldenListe(int32_t mandant, VarkWindow parent, ReportParams *params);
/* List of Kostenstellen. */
VarkWindow VARK_CALL VARK_KostenstellenListe(int32_t mandant, VarkWindow parent, ReportParams *params);
/* Journal of cost lines. */
VarkWindow VARK_CALL VARK_Kostenjournal(int32_t mandant, VarkWindow parent, ReportParams *params);
/* Costs of each Kostenstelle by account. */
VarkWindow VARK_CALL VARK_KostenAufteilung(int32_t mandant, VarkWindow parent, ReportParams *params);

#ifdef __cplusplus
}
#endif

#endif
