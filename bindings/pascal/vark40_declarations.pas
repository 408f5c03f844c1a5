{ The exported interface. Made from include/vark40.h by bindings/declare: not to be edited by hand. }

const
  { VarkKontoart }
  VARK_SACHKONTO = 1;
  VARK_KREDITOR = 2;
  VARK_DEBITOR = 4;
  VARK_KOSTENSTELLE = 8;
  VARK_OHNE_KONTO = 16;
  { VarkForm }
  VARK_FORM_FEST = 1;
  VARK_FORM_EINFACH = 2;
  VARK_FORM_GRUPPIERT = 3;
  { VarkErgebnis }
  VARK_LETZTER = 2;
  VARK_GUT = 1;
  VARK_ABGEBROCHEN = 0;
  VARK_FEHLER_UMRECHNUNG = -2;
  VARK_FEHLER_AKTION = -2;
  VARK_FEHLER_TEIL_SPEICHER = -2;
  VARK_FEHLER_DATENBANK = -3;
  VARK_FEHLER_MANDANT = -5;
  VARK_FEHLER_STAPEL = -6;
  VARK_FEHLER_KONTOART = -7;
  VARK_FEHLER_SOLLKONTO = -8;
  VARK_FEHLER_HABENKONTO = -9;
  VARK_FEHLER_KONTO = -10;
  VARK_FEHLER_DATUM = -11;
  VARK_FEHLER_BRUTTO = -12;
  VARK_FEHLER_STEUERSATZ = -13;
  VARK_FEHLER_STEUERBETRAG = -14;
  VARK_FEHLER_GEGENKONTO = -15;
  VARK_FEHLER_BANK = -16;
  VARK_FEHLER_SKONTO = -17;
  VARK_FEHLER_MAHNKENNZIFFER = -18;
  VARK_FEHLER_KUERZEL_ANDERS = -19;
  VARK_FEHLER_FORM = -20;
  VARK_FEHLER_KOSTENSTELLE = -23;
  VARK_FEHLER_KOSTEN_FEHLEN = -24;
  VARK_FEHLER_ANZAHL_TEILE = -25;
  VARK_FEHLER_SEITEN = -26;
  VARK_FEHLER_ZAHLUNGSZIEL = -27;
  VARK_FEHLER_KEIN_KONTO = -28;
  VARK_FEHLER_KUERZEL_FEHLT = -29;
  VARK_FEHLER_NAME_FEHLT = -30;
  VARK_FEHLER_KONTO_BESTEHT = -31;
  VARK_FEHLER_KUERZEL_BESTEHT = -32;
  VARK_FEHLER_NICHT_LOESCHBAR = -33;
  VARK_FEHLER_KEIN_DATENPFAD = -36;
  VARK_FEHLER_NUMMERN_AUFGEBRAUCHT = -37;
  VARK_FEHLER_SATZ_FORT = -39;
  VARK_FEHLER_NICHT_BEGONNEN = -40;
  VARK_FEHLER_KEIN_SPEICHER = -42;
  VARK_FEHLER_KOSTENSCHABLONE = -43;
  { VarkParamFlag }
  VARK_PARAM_ZEITRAUM = 1;
  VARK_PARAM_DATEN = 2;
  VARK_PARAM_JAHR = 4;
  VARK_PARAM_KONTOART = 8;
  VARK_PARAM_KONTEN = 16;
  VARK_PARAM_EINZELN = 32;
  VARK_PARAM_AUSGABE = 64;
  VARK_PARAM_ARCHIVJAHR = 128;
  { VarkZeitraum }
  VARK_ZEITRAUM_TAGE = 0;
  VARK_ZEITRAUM_QUARTAL_1 = 13;
  VARK_ZEITRAUM_QUARTAL_4 = 16;
  VARK_ZEITRAUM_JAHR = 17;
  { VarkAusgabe }
  VARK_AUSGABE_BILDSCHIRM = 0;
  VARK_AUSGABE_DRUCKER = 1;
  { VarkAktion }
  VARK_ANLEGEN = 1;
  VARK_AENDERN = 2;
  VARK_LOESCHEN = 3;

type
  VarkWindow = Pointer;

  { The field that is at fault, and the text of each result; UTF-8. }
  TVarkResultText = record
    Code: Int32;
    Field, Message: PAnsiChar;
  end;

const
  VarkResultTexts: array[0..37] of TVarkResultText = (
    (Code: VARK_LETZTER; Field: ''; Message: 'Das war der letzte Satz.'),
    (Code: VARK_GUT; Field: ''; Message: 'Gut.'),
    (Code: VARK_ABGEBROCHEN; Field: ''; Message: 'Der Vorgang wurde abgebrochen.'),
    (Code: VARK_FEHLER_UMRECHNUNG; Field: ''; Message: 'Der Betrag kann nicht umgerechnet werden!'),
    (Code: VARK_FEHLER_DATENBANK; Field: ''; Message: 'Die Datenbank läßt sich nicht benutzen.'),
    (Code: VARK_FEHLER_MANDANT; Field: 'Mandant'; Message: 'Der Mandant existiert nicht!'),
    (Code: VARK_FEHLER_STAPEL; Field: 'Stapel'; Message: 'Der Stapel existiert nicht!'),
    (Code: VARK_FEHLER_KONTOART; Field: 'Art'; Message: 'Die Kontoart ist unzulässig!'),
    (Code: VARK_FEHLER_SOLLKONTO; Field: 'Sollkonto'; Message: 'Die Sollkontonummer ist unzulässig!'),
    (Code: VARK_FEHLER_HABENKONTO; Field: 'Habenkonto'; Message: 'Die Habenkontonummer ist unzulässig!'),
    (Code: VARK_FEHLER_KONTO; Field: 'Konto'; Message: 'Die Kontonummer ist unzulässig!'),
    (Code: VARK_FEHLER_DATUM; Field: 'Datum'; Message: 'Das Buchungsdatum ist unzulässig!'),
    (Code: VARK_FEHLER_BRUTTO; Field: 'Brutto'; Message: 'Der Bruttobetrag ist unzulässig!'),
    (Code: VARK_FEHLER_STEUERSATZ; Field: 'Steuersatz'; Message: 'Der Steuersatz ist unzulässig!'),
    (Code: VARK_FEHLER_STEUERBETRAG; Field: 'Steuerbetrag'; Message: 'Der Steuerbetrag ist unzulässig!'),
    (Code: VARK_FEHLER_GEGENKONTO; Field: 'Gegenkonto'; Message: 'Das Gegenkonto ist unzulässig!'),
    (Code: VARK_FEHLER_BANK; Field: 'Bankkonto'; Message: 'Die Bankverbindung ist unzulässig!'),
    (Code: VARK_FEHLER_SKONTO; Field: 'Skonto'; Message: 'Die Skontoprozente sind unzulässig!'),
    (Code: VARK_FEHLER_MAHNKENNZIFFER; Field: 'Mahnkennziffer';
     Message: 'Die Mahnkennziffer ist unzulässig!'),
    (Code: VARK_FEHLER_KUERZEL_ANDERS; Field: 'Kuerzel'; Message: 'Das Kürzel ist unzulässig!'),
    (Code: VARK_FEHLER_FORM; Field: 'Form'; Message: 'Das Ausgabeformat ist unzulässig!'),
    (Code: VARK_FEHLER_KOSTENSTELLE; Field: 'Konto'; Message: 'Die Kostenstelle ist unzulässig!'),
    (Code: VARK_FEHLER_KOSTEN_FEHLEN; Field: 'Kostenschablone';
     Message: 'Ein Konto der GuV verlangt eine Kostenstelle.'),
    (Code: VARK_FEHLER_ANZAHL_TEILE; Field: 'Teile';
     Message: 'Die Anzahl der Teilbuchungen ist nicht korrekt!'),
    (Code: VARK_FEHLER_SEITEN; Field: 'Teile';
     Message: 'Genau eine Seite muß in allen Teilbuchungen gleich sein.'),
    (Code: VARK_FEHLER_ZAHLUNGSZIEL; Field: 'Zahlungsziel'; Message: 'Das Zahlungsziel ist unzulässig!'),
    (Code: VARK_FEHLER_KEIN_KONTO; Field: 'Konto'; Message: 'Das Konto existiert nicht!'),
    (Code: VARK_FEHLER_KUERZEL_FEHLT; Field: 'Kuerzel'; Message: 'Fehlendes Kürzel!'),
    (Code: VARK_FEHLER_NAME_FEHLT; Field: 'Name1'; Message: 'Fehlender Name!'),
    (Code: VARK_FEHLER_KONTO_BESTEHT; Field: 'Konto'; Message: 'Das Konto existiert bereits!'),
    (Code: VARK_FEHLER_KUERZEL_BESTEHT; Field: 'Kuerzel'; Message: 'Das Kürzel existiert bereits!'),
    (Code: VARK_FEHLER_NICHT_LOESCHBAR; Field: 'Konto'; Message: 'Das Konto ist nicht löschbar!'),
    (Code: VARK_FEHLER_KEIN_DATENPFAD; Field: '';
     Message: 'In keiner lesbaren Ini-Datei steht, wo die Daten liegen (tolka.ini: [TOLKA] Pfad32=…).'),
    (Code: VARK_FEHLER_NUMMERN_AUFGEBRAUCHT; Field: 'Konto';
     Message: 'Es ist keine Nummer mit 7 Zeichen mehr frei.'),
    (Code: VARK_FEHLER_SATZ_FORT; Field: ''; Message: 'Der nächste Satz ist inzwischen gelöscht worden.'),
    (Code: VARK_FEHLER_NICHT_BEGONNEN; Field: ''; Message: 'Es wird nicht gelesen.'),
    (Code: VARK_FEHLER_KEIN_SPEICHER; Field: '';
     Message: 'Die Bibliothek hat keinen Speicher für diesen Aufruf.'),
    (Code: VARK_FEHLER_KOSTENSCHABLONE; Field: 'Kostenschablone';
     Message: 'Die Kostenschablone ist unzulässig!')
  );

type
  PVarkMessage = ^TVarkMessage;
  TVarkMessage = record
    hwnd: VarkWindow;
    message: UInt32;
    wParam: PtrUInt;
    lParam: PtrInt;
    time: UInt32;
    pt: record
      x: Int32;
      y: Int32;
    end;
  end;

  PBuchungEingabe = ^TBuchungEingabe;
  TBuchungEingabe = packed record
    Mandant: Int32;
    Stapel: Int32;
    Datum: array[0..6] of AnsiChar;
    Beleg: array[0..8] of AnsiChar;
    Text: array[0..35] of AnsiChar;
    Sollkonto: array[0..7] of AnsiChar;
    SollArt: Int32;
    Habenkonto: array[0..7] of AnsiChar;
    HabenArt: Int32;
    Brutto: array[0..12] of AnsiChar;
    Steuersatz: array[0..5] of AnsiChar;
    Steuerbetrag: array[0..12] of AnsiChar;
    Kennzeichen: UInt8;
    Kostenschablone: Int32;
    Zahlungsziel: Int32;
    Rest: array[0..12] of AnsiChar;
  end;

  PTeilbuchungEingabe = ^TTeilbuchungEingabe;
  TTeilbuchungEingabe = packed record
    Sollkonto: array[0..7] of AnsiChar;
    SollArt: Int32;
    Habenkonto: array[0..7] of AnsiChar;
    HabenArt: Int32;
    Brutto: array[0..12] of AnsiChar;
    Steuersatz: array[0..5] of AnsiChar;
    Steuerbetrag: array[0..12] of AnsiChar;
    Text: array[0..35] of AnsiChar;
    Kostenschablone: Int32;
    Rest: array[0..3] of AnsiChar;
  end;

  PSplitEingabe = ^TSplitEingabe;
  TSplitEingabe = packed record
    Mandant: Int32;
    Stapel: Int32;
    Datum: array[0..6] of AnsiChar;
    Beleg: array[0..8] of AnsiChar;
    Anzahl: Int32;
    Teil: array[0..9] of TTeilbuchungEingabe;
    Kennzeichen: UInt8;
    Zahlungsziel: Int32;
    Rest: array[0..26] of AnsiChar;
  end;

  PPekoEingabe = ^TPekoEingabe;
  TPekoEingabe = packed record
    Mandant: Int32;
    Konto: array[0..7] of AnsiChar;
    Kuerzel: array[0..8] of AnsiChar;
    Name1: array[0..25] of AnsiChar;
    Name2: array[0..25] of AnsiChar;
    UstId: array[0..15] of AnsiChar;
    Land: array[0..3] of AnsiChar;
    Waehrung: array[0..4] of AnsiChar;
    Plz: array[0..6] of AnsiChar;
    Adresse2: array[0..30] of AnsiChar;
    Adresse1: array[0..30] of AnsiChar;
    Blz: array[0..8] of AnsiChar;
    Bankkonto: array[0..11] of AnsiChar;
    Bank: array[0..27] of AnsiChar;
    Gegenkonto: array[0..7] of AnsiChar;
    Wert1: Int32;
    Wert2: Int32;
    Skonto: array[0..5] of AnsiChar;
    Mahnkennziffer: Int32;
    Zahlungsziel: Int32;
    Rest: array[0..59] of AnsiChar;
  end;

  PReportParams = ^TReportParams;
  TReportParams = packed record
    ParamFlags: UInt32;
    Zeitraum: Int32;
    VonDatum: array[0..6] of AnsiChar;
    BisDatum: array[0..6] of AnsiChar;
    JahrIndex: Int32;
    ArchivJahr: Int32;
    KontoArt: Int32;
    SachkontoVon: array[0..7] of AnsiChar;
    SachkontoBis: array[0..7] of AnsiChar;
    KreditorVon: array[0..7] of AnsiChar;
    KreditorBis: array[0..7] of AnsiChar;
    DebitorVon: array[0..7] of AnsiChar;
    DebitorBis: array[0..7] of AnsiChar;
    KostenstelleVon: array[0..7] of AnsiChar;
    KostenstelleBis: array[0..7] of AnsiChar;
    Ausgabe: Int32;
    ViewResult: UInt32;
  end;

function VARK_Status: Int32; VarkCall;
procedure VARK_SchliesseDB; VarkCall;
function VARK_BuchungEinfuegen(buchung: PBuchungEingabe; showMessages: Int32): Int32; VarkCall;
function VARK_BuchungEinfuegenDirekt(showMessages: Int32; mandant: Int32; stapel: Int32; datum: PAnsiChar;
  beleg: PAnsiChar; text: PAnsiChar; sollkonto: PAnsiChar; sollArt: Int32; habenkonto: PAnsiChar;
  habenArt: Int32; brutto: PAnsiChar; steuersatz: PAnsiChar; steuerbetrag: PAnsiChar): Int32; VarkCall;
function VARK_BuchungEinfuegenDirektEx(showMessages: Int32; mandant: Int32; stapel: Int32; datum: PAnsiChar;
  beleg: PAnsiChar; text: PAnsiChar; sollkonto: PAnsiChar; sollArt: Int32; habenkonto: PAnsiChar;
  habenArt: Int32; brutto: PAnsiChar; steuersatz: PAnsiChar; steuerbetrag: PAnsiChar; kostenschablone: Int32;
  zahlungsziel: Int32): Int32; VarkCall;
function VARK_SplitBuchungEinfuegen(split: PSplitEingabe; showMessages: Int32): Int32; VarkCall;
function VARK_SplitStart(mandant: Int32; stapel: Int32; datum: PAnsiChar; beleg: PAnsiChar;
  kennzeichen: UInt8): Int32; VarkCall;
function VARK_SplitStartEx(mandant: Int32; stapel: Int32; datum: PAnsiChar; beleg: PAnsiChar;
  kennzeichen: UInt8; zahlungsziel: Int32): Int32; VarkCall;
function VARK_SplitEinfuegen(sollkonto: PAnsiChar; sollArt: Int32; habenkonto: PAnsiChar; habenArt: Int32;
  brutto: PAnsiChar; steuersatz: PAnsiChar; steuerbetrag: PAnsiChar; text: PAnsiChar): Int32; VarkCall;
function VARK_SplitEinfuegenEx(sollkonto: PAnsiChar; sollArt: Int32; habenkonto: PAnsiChar; habenArt: Int32;
  brutto: PAnsiChar; steuersatz: PAnsiChar; steuerbetrag: PAnsiChar; text: PAnsiChar;
  kostenschablone: Int32): Int32; VarkCall;
function VARK_SplitEnde(post: Int32; showMessages: Int32): Int32; VarkCall;
function VARK_Peko(aktion: Int32; art: Int32; peko: PPekoEingabe; showMessages: Int32): Int32; VarkCall;
function VARK_PekoDirekt(aktion: Int32; art: Int32; showMessages: Int32; mandant: Int32; konto: PAnsiChar;
  kuerzel: PAnsiChar; name1: PAnsiChar; name2: PAnsiChar; ustId: PAnsiChar; land: PAnsiChar;
  waehrung: PAnsiChar; plz: PAnsiChar; adresse2: PAnsiChar; adresse1: PAnsiChar; blz: PAnsiChar;
  bankkonto: PAnsiChar; bank: PAnsiChar; gegenkonto: PAnsiChar; wert1: Int32; wert2: Int32; skonto: PAnsiChar;
  mahnkennziffer: Int32; zahlungsziel: Int32): Int32; VarkCall;
function VARK_HoleFreieKontonr(mandant: Int32; art: Int32; &out: PAnsiChar): Int32; VarkCall;
function VARK_ExistiertKonto(mandant: Int32; konto: PAnsiChar; art: Int32): Int32; VarkCall;
function VARK_HoleSaldo(mandant: Int32; konto: PAnsiChar; kontoart: Int32; showMessages: Int32; form: Int32;
  &out: PAnsiChar): Int32; VarkCall;
function VARK_InitHoleBube(mandant: Int32; vonDatum: PAnsiChar; showMessages: Int32): Int32; VarkCall;
function VARK_HoleBube(splitTeil: PUInt32; datum: PAnsiChar; beleg: PAnsiChar; text: PAnsiChar;
  sollkonto: PAnsiChar; sollArt: PUInt32; habenkonto: PAnsiChar; habenArt: PUInt32; form: Int32;
  betrag: PAnsiChar; steuerprozent: PAnsiChar; steuerbetrag: PAnsiChar): Int32; VarkCall;
function VARK_BeendeHolen: Int32; VarkCall;
function VARK_InitHoleKonto(mandant: Int32; kontoart: Int32; vonKonto: PAnsiChar;
  showMessages: Int32): Int32; VarkCall;
function VARK_HoleSako(konto: PAnsiChar; kuerzel: PAnsiChar; name: PAnsiChar; zuordnung: PUInt32;
  flag1: PUInt32; flag2: PUInt32): Int32; VarkCall;
function VARK_HolePeko(konto: PAnsiChar; kuerzel: PAnsiChar; name1: PAnsiChar; name2: PAnsiChar;
  freitext: PAnsiChar; land: PAnsiChar; waehrung: PAnsiChar; plz: PAnsiChar; adresse2: PAnsiChar;
  adresse1: PAnsiChar; blz: PAnsiChar; bankkonto: PAnsiChar; bank: PAnsiChar; gegenkonto: PAnsiChar;
  wert1: PUInt32; wert2: PUInt32; form: Int32; skonto: PAnsiChar; mahnkennziffer: PUInt32;
  zahlungsziel: PUInt32): Int32; VarkCall;
function VARK_InitHoleOP(mandant: Int32; konto: PAnsiChar; kontoart: Int32;
  showMessages: Int32): Int32; VarkCall;
function VARK_HoleOP(konto: PAnsiChar; referenz1: PAnsiChar; referenz2: PAnsiChar; datum1: PAnsiChar;
  datum2: PAnsiChar; datum3: PAnsiChar; text1: PAnsiChar; text2: PAnsiChar; form: Int32; betrag1: PAnsiChar;
  betrag2: PAnsiChar; waehrung: PAnsiChar): Int32; VarkCall;
function VARK_HoleMandantenNr(owner: VarkWindow): Int32; VarkCall;
function VARK_HoleStapelNr(owner: VarkWindow; mandant: Int32): Int32; VarkCall;
function VARK_HoleKonto(owner: VarkWindow; mandant: Int32; kontoart: Int32; von: PAnsiChar; bis: PAnsiChar;
  &out: PAnsiChar): Int32; VarkCall;
function VARK_HoleZahlungsziel(owner: VarkWindow; mandant: Int32): Int32; VarkCall;
function VARK_HoleKostenschablone(owner: VarkWindow; mandant: Int32): Int32; VarkCall;
function VARK_InitReports(style: UInt32; exStyle: UInt32; title: PAnsiChar;
  frameWindow: VarkWindow): Int32; VarkCall;
function VARK_IsMessage(message: PVarkMessage): Int32; VarkCall;
function VARK_Kontenplan(mandant: Int32; parent: VarkWindow; params: PReportParams): VarkWindow; VarkCall;
function VARK_SummenSaldenListe(mandant: Int32; parent: VarkWindow;
  params: PReportParams): VarkWindow; VarkCall;
function VARK_HauptAbschluss(mandant: Int32; parent: VarkWindow; params: PReportParams): VarkWindow; VarkCall;
function VARK_Bilanz(mandant: Int32; eroeffnung: Int32; parent: VarkWindow;
  params: PReportParams): VarkWindow; VarkCall;
function VARK_GUV(mandant: Int32; parent: VarkWindow; params: PReportParams): VarkWindow; VarkCall;
function VARK_Buchungsjournal(mandant: Int32; parent: VarkWindow;
  params: PReportParams): VarkWindow; VarkCall;
function VARK_Kontenblatt(mandant: Int32; kosten: Int32; parent: VarkWindow;
  params: PReportParams): VarkWindow; VarkCall;
function VARK_OPListe(mandant: Int32; parent: VarkWindow; params: PReportParams): VarkWindow; VarkCall;
function VARK_UmsatzStatistik(mandant: Int32; parent: VarkWindow;
  params: PReportParams): VarkWindow; VarkCall;
function VARK_UmsatzSteuerVoranmeldung(mandant: Int32; parent: VarkWindow;
  params: PReportParams): VarkWindow; VarkCall;
function VARK_UmsatzSteuerVerprobung(mandant: Int32; parent: VarkWindow;
  params: PReportParams): VarkWindow; VarkCall;
function VARK_ZusammenfassendeMeldung(mandant: Int32; parent: VarkWindow;
  params: PReportParams): VarkWindow; VarkCall;
function VARK_KostenSaldenListe(mandant: Int32; parent: VarkWindow;
  params: PReportParams): VarkWindow; VarkCall;
function VARK_KostenstellenListe(mandant: Int32; parent: VarkWindow;
  params: PReportParams): VarkWindow; VarkCall;
function VARK_Kostenjournal(mandant: Int32; parent: VarkWindow; params: PReportParams): VarkWindow; VarkCall;
function VARK_KostenAufteilung(mandant: Int32; parent: VarkWindow;
  params: PReportParams): VarkWindow; VarkCall;
