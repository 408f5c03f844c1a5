{ VARK40 for Free Pascal: the books of MERIDA, with built-in types and classes.

    Buecher := TVarkBuecher.Create(1);
    try
      for Posten in Buecher.OffenePosten(VARK_DEBITOR) do
        WriteLn(Posten.Konto, ' ', Posten.Offen:0:2);
    finally
      Buecher.Free;
    end;

  Above stand the records and functions of the C interface, byte for byte (vark40_declarations.pas, made from
  its header); below them classes that raise EVark, with Code and Field, for all that is refused. Amounts are
  Currency, days TDateTime, texts UTF-8 in string. What the books cannot hold - a text that is too long, a
  character that Windows-1252 lacks, an amount with three decimals - is refused before the call, never cut.

  Books and what reads in them belong to the thread that made them; a program with threads uses cthreads
  first. A thread has one cursor: the next reading that begins ends the one before, which says so if it goes
  on.

  While books are open on a thread the library's messages are those of the exceptions, nothing is shown, and
  questions get the answer that does the least; without the window system beside the library a message is the
  text of its code. With Zeigen the library shows them to the person in boxes instead. }
unit vark40;

{$mode objfpc}{$H+}
{$modeswitch advancedrecords}
{$scopedenums on}
{$packrecords c}
{$macro on}
{$ifdef windows}
  {$define VarkCall := stdcall; external 'VARK40.dll'}
{$else}
  {$define VarkCall := cdecl; external 'vark40'}
{$endif}

interface

uses
  SysUtils;

{$I vark40_declarations.pas}

{$packrecords default}

type
  { Anything that is refused. Code is the library's result, 0 where this unit found the fault before any call;
    Field names the argument or member at fault, 'Teile[2].Brutto' in a part, '' where none is. }
  EVark = class(Exception)
  private
    FCode: Int32;
    FField: string;
  public
    constructor Create(ACode: Int32; const AField, AMessage: string);
    property Code: Int32 read FCode;
    property Field: string read FField;
  end;

  EVarkRefused = class(EVark);     { the books refuse it, and are as they were }
  EVarkCancelled = class(EVark);   { the person cancelled a dialog, or nobody was there }
  EVarkValue = class(EVark);       { a value that the books cannot hold }
  EVarkUnavailable = class(EVark); { library or books cannot be used }
  EVarkThread = class(EVark);      { books or a reading of another thread }
  EVarkCursor = class(EVark);      { a reading that another one of its thread has ended }

  { A booking for a Stapel; NeueBuchung fills in what must be there. Without Steuersatz and Steuerbetrag the
    tax of the accounts applies. Kostenschablone and Zahlungsziel are numbers, 0 for none and for that of the
    personal account. }
  TVarkBuchung = record
    Stapel: Int32;
    Datum: TDateTime;
    Beleg, Text, Sollkonto, Habenkonto: string;
    SollArt, HabenArt: Int32;
    Brutto: Currency;
    HatSteuersatz, HatSteuerbetrag: Boolean;
    Steuersatz, Steuerbetrag: Currency;
    Kennzeichen: UInt8;
    Kostenschablone, Zahlungsziel: Int32;
  end;

  { One part of a split booking; Stapel, Datum, Beleg, Kennzeichen and Zahlungsziel are those of the first. }
  TVarkTeile = array of TVarkBuchung;

  { A Kreditor or Debitor, to be written and as it is read. Mahnkennziffer is -1 (never reminded) to 3 for a
    Debitor, 0 for a Kreditor. }
  TVarkPersonenkonto = record
    Art: Int32;
    Konto, Kuerzel, Name1, Name2, UstId, Land, Waehrung, Plz, Adresse1, Adresse2: string;
    Blz, Bankkonto, Bank, Gegenkonto: string;
    Wert1, Wert2: UInt16;
    Skonto: Currency;
    Mahnkennziffer, Zahlungsziel: Int32;
  end;

  { Zuordnung tells where the account is closed: 0 nowhere, 2 Aktiva, 4 Passiva, 8 GuV. }
  TVarkSachkonto = record
    Konto, Kuerzel, Name: string;
    Zuordnung: UInt32;
    FesterSatz, MitKosten: Boolean;
  end;

  { A final booking. Teil is 0 for one that stands alone, else the number of the part of a split booking.
    Datum is 0 for an empty one, HatSteuersatz False where the rate cannot be told. }
  TVarkBuchungssatz = record
    Teil: UInt32;
    Datum: TDateTime;
    Beleg, Text, Sollkonto, Habenkonto: string;
    SollArt, HabenArt: Int32;
    Brutto: Currency;
    HatSteuersatz: Boolean;
    Steuersatz, Steuerbetrag: Currency;
  end;

  { An open item. Offen is what is still open, Zweiter a second amount, in books of our own making the
    discount that may be taken, both in the currency of the Mandant; Waehrung is that of the item. Days that
    are empty are 0. }
  TVarkOffenerPosten = record
    Konto, Referenz1, Referenz2: string;
    Datum, Termin, SkontoBis: TDateTime;
    Name, Text: string;
    Offen, Zweiter: Currency;
    Waehrung: string;
  end;

  { The library's cursor as one reading has it. }
  TVarkCursor = class
  private
    FNummer: Int64;
    FThread: TThreadID;
    FIstZuEnde: Boolean;
  protected
    function IstWeiter: Boolean;
    procedure Weiter(IstLetzter: Boolean);
  public
    constructor Create(Nummer: Int64; IstLeer: Boolean);
    destructor Destroy; override;
  end;

  { Reads records one after the other; what for .. in works with. }
  generic TVarkLeser<T> = class(TVarkCursor)
  public type
    TLiefern = procedure(out Satz: T; var IstLetzter: Boolean; Art: Int32);
  private
    FLiefern: TLiefern;
    FArt: Int32;
    FSatz: T;
  public
    constructor Create(Liefern: TLiefern; Art: Int32; Nummer: Int64; IstLeer: Boolean);
    function MoveNext: Boolean;
    property Current: T read FSatz;
  end;

  { A reading that has begun. }
  generic TVarkReihe<T> = record
  public type
    TLeser = specialize TVarkLeser<T>;
  private
    FLiefern: TLeser.TLiefern;
    FArt: Int32;
    FNummer: Int64;
    FIstLeer: Boolean;
  public
    function GetEnumerator: TLeser;
  end;

  TVarkBuchungssaetze = specialize TVarkReihe<TVarkBuchungssatz>;
  TVarkSachkonten = specialize TVarkReihe<TVarkSachkonto>;
  TVarkPersonenkonten = specialize TVarkReihe<TVarkPersonenkonto>;
  TVarkPostenliste = specialize TVarkReihe<TVarkOffenerPosten>;

  TVarkBericht = (Kontenplan, SummenSaldenListe, HauptAbschluss, Bilanz, Eroeffnungsbilanz, Guv,
    Buchungsjournal, Kontenblatt, Kostenblatt, OPListe, UmsatzStatistik, UmsatzSteuerVoranmeldung,
    UmsatzSteuerVerprobung, ZusammenfassendeMeldung, KostenSaldenListe, KostenstellenListe, Kostenjournal,
    KostenAufteilung);

  { The books of a Mandant, for the thread that creates it. With the last of a thread its tables close. }
  TVarkBuecher = class
  private
    FMandant, FMeldungen: Int32;
    FHoert: Boolean;
    FThread: TThreadID;
    procedure Peko(Aktion: Int32; const Konto: TVarkPersonenkonto);
    procedure BeginneKonten(Art: Int32; const Ab: string; out Nummer: Int64; out IstLeer: Boolean);
    function Gewaehlt(Nummer: Int32; out Wahl: Int32): Boolean;
    procedure Beginne;
    procedure NeedGeteilt(Code: Int32);
  public
    constructor Create(Mandant: Int32; Zeigen: Boolean = False);
    destructor Destroy; override;

    { Write a booking into its Stapel, whole or not at all; it is on disk when they return. The parts of the
      second, any number, have the Sollkonto or the Habenkonto in common. Take care where messages are not
      heard: an unknown Kostenschablone in a part then writes nothing and is a success all the same. }
    procedure Buchen(const Buchung: TVarkBuchung);
    procedure SplitBuchen(const Teile: TVarkTeile);

    { Changing replaces every field; changing and deleting find the account by number, or by Kuerzel if that
      is empty. }
    procedure KontoAnlegen(const Konto: TVarkPersonenkonto);
    procedure KontoAendern(const Konto: TVarkPersonenkonto);
    procedure KontoLoeschen(Art: Int32; const Konto: string; const Kuerzel: string = '');

    function FreieKontonummer(Art: Int32): string;
    function Existiert(const Konto: string; Art: Int32 = VARK_SACHKONTO): Boolean;
    { Over the fiscal year with what was carried forward, positive on the Soll side. }
    function Saldo(const Konto: string; Art: Int32 = VARK_SACHKONTO): Currency;

    { Final bookings by date, of the year of Ab from that day on; 0: of the year that is selected. }
    function Buchungen(Ab: TDateTime = 0): TVarkBuchungssaetze;
    { Accounts by number, from Ab on. }
    function Sachkonten(const Ab: string = ''): TVarkSachkonten;
    function Kreditoren(const Ab: string = ''): TVarkPersonenkonten;
    function Debitoren(const Ab: string = ''): TVarkPersonenkonten;
    { Open items of all Kreditoren or Debitoren, or of one. }
    function OffenePosten(Art: Int32; const Konto: string = ''): TVarkPostenliste;

    { The person chooses; False for a cancel. Verwalten lets them make, change and delete Stapel as well. }
    class function WaehleMandant(out Wahl: Int32; Owner: VarkWindow = nil): Boolean;
    function WaehleStapel(out Wahl: Int32; Verwalten: Boolean = False; Owner: VarkWindow = nil): Boolean;
    function WaehleZahlungsziel(out Wahl: Int32; Owner: VarkWindow = nil): Boolean;
    function WaehleKostenschablone(out Wahl: Int32; Owner: VarkWindow = nil): Boolean;
    function WaehleKonto(out Wahl: string; Art: Int32; const Von: string = ''; const Bis: string = '';
      Owner: VarkWindow = nil): Boolean;

    { Makes a report of what Params asks for, which keeps what was chosen. The window belongs to the caller,
      who destroys it; nil, with ViewResult 1, is a report that was printed. }
    function Berichte(Bericht: TVarkBericht; var Params: TReportParams; Parent: VarkWindow = nil): VarkWindow;
    { How the report windows of this thread look. }
    procedure BerichteAls(Style, ExStyle: UInt32; const Titel: string; Frame: VarkWindow = nil);
  end;

function NeueBuchung(Stapel: Int32; Datum: TDateTime; const Sollkonto, Habenkonto: string; Brutto: Currency;
  const Beleg: string = ''; const Text: string = ''): TVarkBuchung;

{ Texts of the library, Windows-1252, as UTF-8 and back; the second raises EVarkValue for what has no byte
  there or is longer than Platz. }
function VarkText(Text: PAnsiChar): string;
function VarkZeichen(const Text: string; Platz: SizeInt; const Field: string): RawByteString;

{ The German text of a result. }
function VarkMeldung(Code: Int32): string;

implementation

{$ifdef linux}
uses
  dl;
{$endif}

threadvar
  Gesagt: string; { by the library since its last call began }
  HoerendeBuecher: Int32;
  GeoeffneteBuecher: Int32;
  LaufenderCursor: Int64; { number of the reading that the thread's cursor serves, 0 for none }
  LetzterCursor: Int64;

constructor EVark.Create(ACode: Int32; const AField, AMessage: string);
begin
  inherited Create(AMessage);
  FCode := ACode;
  FField := AField;
end;

{ ---- Results ---- }

function IndexOfResult(Code: Int32): Int32;
var
  At: Int32;
begin
  Result := -1;
  for At := Low(VarkResultTexts) to High(VarkResultTexts) do
    if VarkResultTexts[At].Code = Code then
      Exit(At);
end;

function VarkMeldung(Code: Int32): string;
var
  At: Int32;
begin
  At := IndexOfResult(Code);
  if At >= 0 then
    Result := VarkResultTexts[At].Message
  else
    Result := 'Abgelehnt mit dem Code ' + IntToStr(Code) + '.';
end;

{ "Teilbuchung 3: ..." is about Teile[2]. }
function PartOf(const Said: string): string;
const
  Beginning = 'Teilbuchung ';
var
  Number: Int32;
begin
  Result := '';
  if Copy(Said, 1, Length(Beginning)) <> Beginning then
    Exit;
  Number := StrToIntDef(Copy(Said, Length(Beginning) + 1, Pos(':', Said) - Length(Beginning) - 1), 0);
  if Number > 0 then
    Result := Format('Teile[%d].', [Number - 1]);
end;

procedure RaiseResult(Code: Int32; Field: string = ''; Meldung: string = '');
var
  At: Int32;
begin
  At := IndexOfResult(Code);
  if (Field = '') and (At >= 0) then
    Field := VarkResultTexts[At].Field;
  Field := PartOf(Gesagt) + Field;
  if Gesagt <> '' then
    Meldung := Gesagt
  else if Meldung = '' then
    Meldung := VarkMeldung(Code);
  case Code of
    VARK_ABGEBROCHEN:
      raise EVarkCancelled.Create(Code, Field, Meldung);
    VARK_FEHLER_DATENBANK, VARK_FEHLER_KEIN_DATENPFAD, VARK_FEHLER_KEIN_SPEICHER:
      raise EVarkUnavailable.Create(Code, Field, Meldung);
  else
    raise EVarkRefused.Create(Code, Field, Meldung);
  end;
end;

{ ---- Messages ---- }

type
  TBoxAnswer = function(Text: PAnsiChar; Style: UInt32; Context: Pointer): Int32; cdecl;
  TAnswerBoxes = function(Answer: TBoxAnswer; Context: Pointer): Int32; cdecl;

var
  AnswerBoxes: TAnswerBoxes = nil; { of the library's window system; nil where there is none of ours }
  WasLookedFor: Boolean = False;
  Looking: TRTLCriticalSection;

{ Answers a message box: with the button that does the least. }
function HearBox(Text: PAnsiChar; Style: UInt32; Context: Pointer): Int32; cdecl;
begin
  if Gesagt <> '' then
    Gesagt := Gesagt + ' ';
  Gesagt := Gesagt + VarkText(Text);
  Result := 0;
end;

procedure FindAnswerBoxes;
{$ifdef linux}
const
  RTLD_NOLOAD = 4;
var
  Reports, Entry, Windows: Pointer;
  Info: dl_info;
begin
  { The ready library has loaded the report engine; the window system lies beside that. }
  Reports := dlopen('librs.so', RTLD_NOW or RTLD_NOLOAD);
  if Reports <> nil then
    Entry := dlsym(Reports, 'RSOpenReport')
  else
    Entry := @VARK_Status;
  if (Entry = nil) or (dladdr(Entry, @Info) = 0) then
    Exit;
  Windows := dlopen(PAnsiChar(ExtractFilePath(Info.dli_fname) + 'libvarkui.so'), RTLD_NOW);
  if Windows <> nil then
    AnswerBoxes := TAnswerBoxes(dlsym(Windows, 'VarkUiAnswerBoxes'));
end;
{$else}
begin
end;
{$endif}

{ Begins or ends hearing on this thread; False where messages cannot be heard. }
function Hear(Answer: TBoxAnswer): Boolean;
begin
  EnterCriticalSection(Looking);
  try
    if not WasLookedFor then
      FindAnswerBoxes;
    WasLookedFor := True;
  finally
    LeaveCriticalSection(Looking);
  end;
  Result := (AnswerBoxes <> nil) and (AnswerBoxes(Answer, nil) <> 0);
end;

{ ---- Values ---- }

const
  { What the bytes $80 to $9F of Windows-1252 stand for; the five that it leaves open are themselves. }
  UpperHalf: array[$80..$9F] of UInt16 = (
    $20AC, $0081, $201A, $0192, $201E, $2026, $2020, $2021, $02C6, $2030, $0160,
    $2039, $0152, $008D, $017D, $008F, $0090, $2018, $2019, $201C, $201D, $2022,
    $2013, $2014, $02DC, $2122, $0161, $203A, $0153, $009D, $017E, $0178);

function VarkText(Text: PAnsiChar): string;
var
  Point: UInt32;
begin
  Result := '';
  while Text^ <> #0 do
  begin
    Point := Ord(Text^);
    if (Point >= $80) and (Point <= $9F) then
      Point := UpperHalf[Point];
    if Point < $80 then
      Result := Result + AnsiChar(Point)
    else if Point < $800 then
      Result := Result + AnsiChar($C0 or (Point shr 6)) + AnsiChar($80 or (Point and $3F))
    else
      Result := Result + AnsiChar($E0 or (Point shr 12)) + AnsiChar($80 or ((Point shr 6) and $3F)) +
        AnsiChar($80 or (Point and $3F));
    Inc(Text);
  end;
end;

{ The character of UTF-8 at At, which moves behind it; -1 for bytes that are none. }
function TakeCharacter(const Text: string; var At: SizeInt): Int32;
var
  First, Length_, Index: SizeInt;
begin
  First := Ord(Text[At]);
  if First < $80 then
    Length_ := 1
  else if (First >= $C2) and (First < $E0) then
    Length_ := 2
  else if (First >= $E0) and (First < $F0) then
    Length_ := 3
  else
    Exit(-1);
  if At + Length_ - 1 > Length(Text) then
    Exit(-1);
  Result := First;
  if Length_ > 1 then
    Result := First and ($7F shr Length_);
  for Index := 1 to Length_ - 1 do
  begin
    if (Ord(Text[At + Index]) and $C0) <> $80 then
      Exit(-1);
    Result := (Result shl 6) or (Ord(Text[At + Index]) and $3F);
  end;
  Inc(At, Length_);
end;

{ The byte that stands for a character, 0 for none. }
function ByteOf(Point: Int32): UInt8;
var
  Each: Int32;
begin
  for Each := Low(UpperHalf) to High(UpperHalf) do
    if UpperHalf[Each] = Point then
      Exit(Each);
  if (Point <= 0) or (Point > $FF) or ((Point >= $80) and (Point <= $9F)) then
    Exit(0);
  Result := Point;
end;

function VarkZeichen(const Text: string; Platz: SizeInt; const Field: string): RawByteString;
var
  At: SizeInt;
  Each: UInt8;
begin
  Result := '';
  At := 1;
  while At <= Length(Text) do
  begin
    Each := ByteOf(TakeCharacter(Text, At));
    if Each = 0 then
      raise EVarkValue.Create(0, Field, 'Der Text enthält Zeichen, die es in den Büchern nicht gibt.');
    Result := Result + AnsiChar(Each);
  end;
  if Length(Result) > Platz then
    raise EVarkValue.Create(0, Field,
      Format('Der Text hat %d Zeichen, Platz ist für %d.', [Length(Result), Platz]));
end;

procedure Fill(var Target: array of AnsiChar; const Text, Field: string);
var
  Bytes: RawByteString;
begin
  Bytes := VarkZeichen(Text, High(Target), Field);
  if Bytes <> '' then
    Move(Bytes[1], Target[0], Length(Bytes));
  Target[Length(Bytes)] := #0;
end;

{ Four decimals as Currency keeps them, exactly. }
function TenThousandths(Value: Currency): Int64;
begin
  Result := PInt64(@Value)^;
end;

function AmountText(Value: Currency; const Field: string; Code: Int32; Most: Int64): string;
var
  Cents: Int64;
  Sign: string;
begin
  Cents := TenThousandths(Value) div 100;
  if TenThousandths(Value) mod 100 <> 0 then
    raise EVarkValue.Create(Code, Field, 'Der Betrag hat mehr als 2 Stellen hinter dem Komma.');
  if (Cents > Most) or (Cents < -Most) then
    raise EVarkValue.Create(Code, Field, 'Der Betrag hat zu viele Stellen vor dem Komma.');
  Sign := '';
  if Cents < 0 then
    Sign := '-';
  Cents := Abs(Cents);
  Result := Format('%s%d,%.2d', [Sign, Cents div 100, Cents mod 100]);
end;

procedure FillAmount(var Target: array of AnsiChar; Value: Currency; const Field: string; Code: Int32);
begin
  Fill(Target, AmountText(Value, Field, Code, 99999999999), Field);
end;

procedure FillRate(var Target: array of AnsiChar; Value: Currency; const Field: string; Code: Int32);
begin
  if Value < 0 then
    raise EVarkValue.Create(Code, Field, 'Der Satz ist negativ.');
  Fill(Target, AmountText(Value, Field, Code, 9999), Field);
end;

procedure FillDay(var Target: array of AnsiChar; Day: TDateTime; const Field: string);
var
  Year, Month, DayOfMonth: Word;
begin
  DecodeDate(Day, Year, Month, DayOfMonth);
  if (Year < 1980) or (Year > 2079) then
    raise EVarkValue.Create(VARK_FEHLER_DATUM, Field, 'Das Datum liegt nicht in den Jahren 1980 bis 2079.');
  Fill(Target, Format('%.2d%.2d%.2d', [DayOfMonth, Month, Year mod 100]), Field);
end;

procedure RefuseGiven(const What, Field: string; Text: PAnsiChar);
begin
  raise EVarkValue.Create(0, Field, Format('In den Büchern steht %s: „%s“.', [What, VarkText(Text)]));
end;

{ "TT.MM.JJJJ"; 0 for an empty text. }
function GivenDay(Text: PAnsiChar; const Field: string): TDateTime;
var
  Whole: string;
begin
  Result := 0;
  Whole := Text;
  if Whole = '' then
    Exit;
  if (Length(Whole) <> 10) or not TryEncodeDate(StrToIntDef(Copy(Whole, 7, 4), 0),
    StrToIntDef(Copy(Whole, 4, 2), 0), StrToIntDef(Copy(Whole, 1, 2), 0), Result) then
    RefuseGiven('kein Datum', Field, Text);
end;

{ An amount in the form for machines; False for a text that is none. }
function TryAmount(Text: PAnsiChar; out Value: Currency): Boolean;
var
  Each: PAnsiChar;
  Cents: Int64;
begin
  Value := 0;
  Cents := 0;
  Result := False;
  Each := Text;
  if Each^ in ['+', '-'] then
    Inc(Each);
  while Each^ <> #0 do
  begin
    if Each^ in ['0'..'9'] then
      Cents := Cents * 10 + Ord(Each^) - Ord('0')
    else if Each^ <> ',' then
      Exit(False);
    Result := True;
    Inc(Each);
  end;
  if Text^ = '-' then
    Cents := -Cents;
  PInt64(@Value)^ := Cents * 100;
end;

function GivenAmount(Text: PAnsiChar; const Field: string): Currency;
begin
  if not TryAmount(Text, Result) then
    RefuseGiven('kein Betrag', Field, Text);
end;

function NeueBuchung(Stapel: Int32; Datum: TDateTime; const Sollkonto, Habenkonto: string; Brutto: Currency;
  const Beleg: string; const Text: string): TVarkBuchung;
begin
  Result := Default(TVarkBuchung);
  Result.Stapel := Stapel;
  Result.Datum := Datum;
  Result.Sollkonto := Sollkonto;
  Result.SollArt := VARK_SACHKONTO;
  Result.Habenkonto := Habenkonto;
  Result.HabenArt := VARK_SACHKONTO;
  Result.Brutto := Brutto;
  Result.Beleg := Beleg;
  Result.Text := Text;
end;

{ ---- Reading ---- }

constructor TVarkCursor.Create(Nummer: Int64; IstLeer: Boolean);
begin
  FIstZuEnde := IstLeer;
  FThread := GetCurrentThreadId;
  FNummer := Nummer;
end;

destructor TVarkCursor.Destroy;
begin
  if not FIstZuEnde and (FThread = GetCurrentThreadId) and (LaufenderCursor = FNummer) then
  begin
    VARK_BeendeHolen;
    LaufenderCursor := 0;
  end;
  inherited Destroy;
end;

{ Whether a record is to be read; until Weiter says otherwise it is the last one. }
function TVarkCursor.IstWeiter: Boolean;
begin
  if FIstZuEnde then
    Exit(False);
  if FThread <> GetCurrentThreadId then
    raise EVarkThread.Create(VARK_FEHLER_NICHT_BEGONNEN, '', 'Hier liest ein anderer Thread.');
  FIstZuEnde := True;
  Gesagt := '';
  if LaufenderCursor <> FNummer then
    raise EVarkCursor.Create(VARK_FEHLER_NICHT_BEGONNEN, '',
      'Inzwischen wurde in diesem Thread anderes gelesen.');
  LaufenderCursor := 0;
  Result := True;
end;

procedure TVarkCursor.Weiter(IstLetzter: Boolean);
begin
  if IstLetzter then
    Exit;
  FIstZuEnde := False;
  LaufenderCursor := FNummer;
end;

constructor TVarkLeser.Create(Liefern: TLiefern; Art: Int32; Nummer: Int64; IstLeer: Boolean);
begin
  inherited Create(Nummer, IstLeer);
  FLiefern := Liefern;
  FArt := Art;
end;

function TVarkLeser.MoveNext: Boolean;
var
  IstLetzter: Boolean;
begin
  Result := IstWeiter;
  if not Result then
    Exit;
  IstLetzter := True;
  try
    FLiefern(FSatz, IstLetzter, FArt);
  finally
    { Behind a value that is none others follow. }
    Weiter(IstLetzter);
  end;
end;

function TVarkReihe.GetEnumerator: TLeser;
begin
  Result := TLeser.Create(FLiefern, FArt, FNummer, FIstLeer);
end;

{ The number of a reading that has begun. }
function BeginneCursor: Int64;
begin
  Inc(LetzterCursor);
  LaufenderCursor := LetzterCursor;
  Result := LetzterCursor;
end;

procedure LiefereBuchung(out Satz: TVarkBuchungssatz; var IstLetzter: Boolean; Art: Int32);
var
  Teil, SollArt, HabenArt: UInt32;
  Datum: array[0..10] of AnsiChar;
  Beleg: array[0..8] of AnsiChar;
  Text: array[0..39] of AnsiChar;
  Soll, Haben, Steuersatz: array[0..7] of AnsiChar;
  Betrag, Steuer: array[0..16] of AnsiChar;
  Code: Int32;
begin
  Code := VARK_HoleBube(@Teil, Datum, Beleg, Text, Soll, @SollArt, Haben, @HabenArt, VARK_FORM_FEST, Betrag,
    Steuersatz, Steuer);
  if Code < VARK_GUT then
    RaiseResult(Code);
  IstLetzter := Code = VARK_LETZTER;
  Satz := Default(TVarkBuchungssatz);
  Satz.Teil := Teil;
  Satz.Datum := GivenDay(Datum, 'Datum');
  Satz.Beleg := VarkText(Beleg);
  Satz.Text := VarkText(Text);
  Satz.Sollkonto := VarkText(Soll);
  Satz.SollArt := SollArt;
  Satz.Habenkonto := VarkText(Haben);
  Satz.HabenArt := HabenArt;
  Satz.Brutto := GivenAmount(Betrag, 'Brutto');
  Satz.HatSteuersatz := TryAmount(Steuersatz, Satz.Steuersatz);
  Satz.Steuerbetrag := GivenAmount(Steuer, 'Steuerbetrag');
end;

procedure LiefereSachkonto(out Satz: TVarkSachkonto; var IstLetzter: Boolean; Art: Int32);
var
  Konto: array[0..7] of AnsiChar;
  Kuerzel: array[0..9] of AnsiChar;
  Name: array[0..49] of AnsiChar;
  Zuordnung, FesterSatz, MitKosten: UInt32;
  Code: Int32;
begin
  Konto[0] := #0;
  Code := VARK_HoleSako(Konto, Kuerzel, Name, @Zuordnung, @FesterSatz, @MitKosten);
  { The last Sachkonto comes with the code of a failure; a failure has been told, or has given nothing. }
  IstLetzter := (Code = VARK_FEHLER_DATENBANK) and (Konto[0] <> #0) and (Gesagt = '');
  if (Code <> VARK_GUT) and not IstLetzter then
    RaiseResult(Code);
  Satz := Default(TVarkSachkonto);
  Satz.Konto := VarkText(Konto);
  Satz.Kuerzel := VarkText(Kuerzel);
  Satz.Name := VarkText(Name);
  Satz.Zuordnung := Zuordnung;
  Satz.FesterSatz := FesterSatz <> 0;
  Satz.MitKosten := MitKosten <> 0;
end;

procedure LieferePersonenkonto(out Satz: TVarkPersonenkonto; var IstLetzter: Boolean; Art: Int32);
var
  Konto, Gegenkonto, Skonto: array[0..7] of AnsiChar;
  Kuerzel: array[0..9] of AnsiChar;
  Name1, Name2: array[0..25] of AnsiChar;
  Freitext: array[0..46] of AnsiChar;
  Land: array[0..3] of AnsiChar;
  Waehrung: array[0..4] of AnsiChar;
  Plz: array[0..6] of AnsiChar;
  Adresse1, Adresse2: array[0..30] of AnsiChar;
  Blz: array[0..8] of AnsiChar;
  Bankkonto: array[0..11] of AnsiChar;
  Bank: array[0..27] of AnsiChar;
  Wert1, Wert2, Mahnkennziffer, Zahlungsziel: UInt32;
  Code: Int32;
begin
  Mahnkennziffer := 0;
  Code := VARK_HolePeko(Konto, Kuerzel, Name1, Name2, Freitext, Land, Waehrung, Plz, Adresse2, Adresse1, Blz,
    Bankkonto, Bank, Gegenkonto, @Wert1, @Wert2, VARK_FORM_FEST, Skonto, @Mahnkennziffer, @Zahlungsziel);
  if Code < VARK_GUT then
    RaiseResult(Code);
  IstLetzter := Code = VARK_LETZTER;
  Satz := Default(TVarkPersonenkonto);
  Satz.Art := Art;
  Satz.Konto := VarkText(Konto);
  Satz.Kuerzel := VarkText(Kuerzel);
  Satz.Name1 := VarkText(Name1);
  Satz.Name2 := VarkText(Name2);
  Satz.UstId := VarkText(Freitext);
  Satz.Land := VarkText(Land);
  Satz.Waehrung := VarkText(Waehrung);
  Satz.Plz := VarkText(Plz);
  Satz.Adresse1 := VarkText(Adresse1);
  Satz.Adresse2 := VarkText(Adresse2);
  Satz.Blz := VarkText(Blz);
  Satz.Bankkonto := VarkText(Bankkonto);
  Satz.Bank := VarkText(Bank);
  Satz.Gegenkonto := VarkText(Gegenkonto);
  Satz.Wert1 := Wert1 and $FFFF;
  Satz.Wert2 := Wert2 and $FFFF;
  Satz.Skonto := GivenAmount(Skonto, 'Skonto');
  Satz.Mahnkennziffer := Int32(Mahnkennziffer);
  Satz.Zahlungsziel := Zahlungsziel;
end;

procedure LieferePosten(out Satz: TVarkOffenerPosten; var IstLetzter: Boolean; Art: Int32);
var
  Konto: array[0..7] of AnsiChar;
  Referenz1, Referenz2: array[0..9] of AnsiChar;
  Datum, Termin, SkontoBis: array[0..10] of AnsiChar;
  Name, Text: array[0..25] of AnsiChar;
  Betrag1, Betrag2: array[0..16] of AnsiChar;
  Waehrung: array[0..4] of AnsiChar;
  Code: Int32;
begin
  Code := VARK_HoleOP(Konto, Referenz1, Referenz2, Datum, Termin, SkontoBis, Name, Text, VARK_FORM_FEST,
    Betrag1, Betrag2, Waehrung);
  if Code < VARK_GUT then
    RaiseResult(Code);
  IstLetzter := Code = VARK_LETZTER;
  Satz := Default(TVarkOffenerPosten);
  Satz.Konto := VarkText(Konto);
  Satz.Referenz1 := VarkText(Referenz1);
  Satz.Referenz2 := VarkText(Referenz2);
  Satz.Datum := GivenDay(Datum, 'Datum');
  Satz.Termin := GivenDay(Termin, 'Termin');
  Satz.SkontoBis := GivenDay(SkontoBis, 'SkontoBis');
  Satz.Name := VarkText(Name);
  Satz.Text := VarkText(Text);
  Satz.Offen := GivenAmount(Betrag1, 'Offen');
  Satz.Zweiter := GivenAmount(Betrag2, 'Zweiter');
  Satz.Waehrung := VarkText(Waehrung);
end;

{ ---- Books ---- }

constructor TVarkBuecher.Create(Mandant: Int32; Zeigen: Boolean);
var
  Status: Int32;
begin
  inherited Create;
  Status := VARK_Status;
  Gesagt := '';
  if Status <> VARK_GUT then
    RaiseResult(Status);
  FMandant := Mandant;
  FHoert := not Zeigen and Hear(@HearBox);
  FMeldungen := Ord(Zeigen or FHoert);
  FThread := GetCurrentThreadId;
  Inc(GeoeffneteBuecher);
  if FHoert then
    Inc(HoerendeBuecher);
end;

destructor TVarkBuecher.Destroy;
begin
  { Without a thread the constructor has raised. }
  if (FThread <> TThreadID(0)) and (FThread = GetCurrentThreadId) then
  begin
    Dec(GeoeffneteBuecher);
    if GeoeffneteBuecher = 0 then
      VARK_SchliesseDB;
    if FHoert then
      Dec(HoerendeBuecher);
    if FHoert and (HoerendeBuecher = 0) then
      Hear(nil);
  end;
  inherited Destroy;
end;

{ Every call begins here. }
procedure TVarkBuecher.Beginne;
begin
  if FThread <> GetCurrentThreadId then
    raise EVarkThread.Create(VARK_FEHLER_NICHT_BEGONNEN, '', 'Die Bücher gehören einem anderen Thread.');
  Gesagt := '';
end;

procedure NeedWritten(Code: Int32);
begin
  if Code = VARK_FEHLER_KONTO then
    RaiseResult(Code, 'Habenkonto');
  if Code <> VARK_GUT then
    RaiseResult(Code);
end;

{ An unknown Kostenschablone in a part is told to the person alone: the result is that of a booking. }
procedure TVarkBuecher.NeedGeteilt(Code: Int32);
begin
  if (Code = VARK_GUT) and FHoert and (Gesagt <> '') then
    RaiseResult(VARK_FEHLER_KOSTENSCHABLONE);
  NeedWritten(Code);
end;

procedure TVarkBuecher.Buchen(const Buchung: TVarkBuchung);
var
  Eingabe: TBuchungEingabe;
begin
  Beginne;
  Eingabe := Default(TBuchungEingabe);
  Eingabe.Mandant := FMandant;
  Eingabe.Stapel := Buchung.Stapel;
  FillDay(Eingabe.Datum, Buchung.Datum, 'Datum');
  Fill(Eingabe.Beleg, Buchung.Beleg, 'Beleg');
  Fill(Eingabe.Text, Buchung.Text, 'Text');
  Fill(Eingabe.Sollkonto, Buchung.Sollkonto, 'Sollkonto');
  Eingabe.SollArt := Buchung.SollArt;
  Fill(Eingabe.Habenkonto, Buchung.Habenkonto, 'Habenkonto');
  Eingabe.HabenArt := Buchung.HabenArt;
  FillAmount(Eingabe.Brutto, Buchung.Brutto, 'Brutto', VARK_FEHLER_BRUTTO);
  if Buchung.HatSteuersatz then
    FillRate(Eingabe.Steuersatz, Buchung.Steuersatz, 'Steuersatz', VARK_FEHLER_STEUERSATZ);
  if Buchung.HatSteuerbetrag then
    FillAmount(Eingabe.Steuerbetrag, Buchung.Steuerbetrag, 'Steuerbetrag', VARK_FEHLER_STEUERBETRAG);
  Eingabe.Kennzeichen := Buchung.Kennzeichen;
  Eingabe.Kostenschablone := Buchung.Kostenschablone;
  Eingabe.Zahlungsziel := Buchung.Zahlungsziel;
  NeedWritten(VARK_BuchungEinfuegen(@Eingabe, FMeldungen));
end;

procedure FillPart(out Eingabe: TTeilbuchungEingabe; const Teil: TVarkBuchung; Index: Int32);
var
  Prefix: string;
begin
  Eingabe := Default(TTeilbuchungEingabe);
  Prefix := Format('Teile[%d].', [Index]);
  Fill(Eingabe.Sollkonto, Teil.Sollkonto, Prefix + 'Sollkonto');
  Eingabe.SollArt := Teil.SollArt;
  Fill(Eingabe.Habenkonto, Teil.Habenkonto, Prefix + 'Habenkonto');
  Eingabe.HabenArt := Teil.HabenArt;
  FillAmount(Eingabe.Brutto, Teil.Brutto, Prefix + 'Brutto', VARK_FEHLER_BRUTTO);
  if Teil.HatSteuersatz then
    FillRate(Eingabe.Steuersatz, Teil.Steuersatz, Prefix + 'Steuersatz', VARK_FEHLER_STEUERSATZ);
  if Teil.HatSteuerbetrag then
    FillAmount(Eingabe.Steuerbetrag, Teil.Steuerbetrag, Prefix + 'Steuerbetrag', VARK_FEHLER_STEUERBETRAG);
  Fill(Eingabe.Text, Teil.Text, Prefix + 'Text');
  Eingabe.Kostenschablone := Teil.Kostenschablone;
end;

procedure TVarkBuecher.SplitBuchen(const Teile: TVarkTeile);
var
  Ganze: TSplitEingabe;
  Eingaben: array of TTeilbuchungEingabe;
  Index: Int32;
begin
  Beginne;
  if Length(Teile) = 0 then
    RaiseResult(VARK_FEHLER_ANZAHL_TEILE);
  Ganze := Default(TSplitEingabe);
  FillDay(Ganze.Datum, Teile[0].Datum, 'Datum');
  Fill(Ganze.Beleg, Teile[0].Beleg, 'Beleg');
  SetLength(Eingaben, Length(Teile));
  for Index := 0 to High(Teile) do
    FillPart(Eingaben[Index], Teile[Index], Index);
  if Length(Teile) <= Length(Ganze.Teil) then
  begin
    Ganze.Mandant := FMandant;
    Ganze.Stapel := Teile[0].Stapel;
    Ganze.Anzahl := Length(Teile);
    for Index := 0 to High(Eingaben) do
      Ganze.Teil[Index] := Eingaben[Index];
    Ganze.Kennzeichen := Teile[0].Kennzeichen;
    Ganze.Zahlungsziel := Teile[0].Zahlungsziel;
    NeedGeteilt(VARK_SplitBuchungEinfuegen(@Ganze, FMeldungen));
    Exit;
  end;
  NeedWritten(VARK_SplitStartEx(FMandant, Teile[0].Stapel, Ganze.Datum, Ganze.Beleg, Teile[0].Kennzeichen,
    Teile[0].Zahlungsziel));
  for Index := 0 to High(Eingaben) do
    with Eingaben[Index] do
      if VARK_SplitEinfuegenEx(Sollkonto, SollArt, Habenkonto, HabenArt, Brutto, Steuersatz, Steuerbetrag,
        Text, Kostenschablone) <> VARK_GUT then
      begin
        VARK_SplitEnde(0, 0);
        RaiseResult(VARK_FEHLER_KEIN_SPEICHER);
      end;
  NeedGeteilt(VARK_SplitEnde(1, FMeldungen));
end;

procedure TVarkBuecher.Peko(Aktion: Int32; const Konto: TVarkPersonenkonto);
var
  Eingabe: TPekoEingabe;
  Code: Int32;
begin
  Beginne;
  Eingabe := Default(TPekoEingabe);
  Eingabe.Mandant := FMandant;
  Fill(Eingabe.Konto, Konto.Konto, 'Konto');
  Fill(Eingabe.Kuerzel, Konto.Kuerzel, 'Kuerzel');
  Fill(Eingabe.Name1, Konto.Name1, 'Name1');
  Fill(Eingabe.Name2, Konto.Name2, 'Name2');
  Fill(Eingabe.UstId, Konto.UstId, 'UstId');
  Fill(Eingabe.Land, Konto.Land, 'Land');
  Fill(Eingabe.Waehrung, Konto.Waehrung, 'Waehrung');
  Fill(Eingabe.Plz, Konto.Plz, 'Plz');
  Fill(Eingabe.Adresse2, Konto.Adresse2, 'Adresse2');
  Fill(Eingabe.Adresse1, Konto.Adresse1, 'Adresse1');
  Fill(Eingabe.Blz, Konto.Blz, 'Blz');
  Fill(Eingabe.Bankkonto, Konto.Bankkonto, 'Bankkonto');
  Fill(Eingabe.Bank, Konto.Bank, 'Bank');
  Fill(Eingabe.Gegenkonto, Konto.Gegenkonto, 'Gegenkonto');
  Eingabe.Wert1 := Konto.Wert1;
  Eingabe.Wert2 := Konto.Wert2;
  FillRate(Eingabe.Skonto, Konto.Skonto, 'Skonto', VARK_FEHLER_SKONTO);
  Eingabe.Mahnkennziffer := Konto.Mahnkennziffer;
  Eingabe.Zahlungsziel := Konto.Zahlungsziel;
  Code := VARK_Peko(Aktion, Konto.Art, @Eingabe, FMeldungen);
  if Code <> VARK_GUT then
    RaiseResult(Code);
end;

procedure TVarkBuecher.KontoAnlegen(const Konto: TVarkPersonenkonto);
begin
  Peko(VARK_ANLEGEN, Konto);
end;

procedure TVarkBuecher.KontoAendern(const Konto: TVarkPersonenkonto);
begin
  Peko(VARK_AENDERN, Konto);
end;

procedure TVarkBuecher.KontoLoeschen(Art: Int32; const Konto: string; const Kuerzel: string);
var
  Geloeschtes: TVarkPersonenkonto;
begin
  Geloeschtes := Default(TVarkPersonenkonto);
  Geloeschtes.Art := Art;
  Geloeschtes.Konto := Konto;
  Geloeschtes.Kuerzel := Kuerzel;
  Peko(VARK_LOESCHEN, Geloeschtes);
end;

function TVarkBuecher.FreieKontonummer(Art: Int32): string;
var
  Nummer: array[0..7] of AnsiChar;
  Code: Int32;
begin
  Beginne;
  Code := VARK_HoleFreieKontonr(FMandant, Art, Nummer);
  if Code <> VARK_GUT then
    RaiseResult(Code);
  Result := VarkText(Nummer);
end;

function TVarkBuecher.Existiert(const Konto: string; Art: Int32): Boolean;
var
  Code: Int32;
begin
  Beginne;
  Code := VARK_ExistiertKonto(FMandant, PAnsiChar(VarkZeichen(Konto, 7, 'Konto')), Art);
  if Code < 0 then
    RaiseResult(Code);
  Result := Code = VARK_GUT;
end;

function TVarkBuecher.Saldo(const Konto: string; Art: Int32): Currency;
var
  Betrag: array[0..16] of AnsiChar;
  Code: Int32;
begin
  Beginne;
  Code := VARK_HoleSaldo(FMandant, PAnsiChar(VarkZeichen(Konto, 7, 'Konto')), Art, FMeldungen, VARK_FORM_FEST,
    Betrag);
  if Code <> VARK_GUT then
    RaiseResult(Code);
  Result := GivenAmount(Betrag, 'Saldo');
end;

function TVarkBuecher.Buchungen(Ab: TDateTime): TVarkBuchungssaetze;
var
  Datum: array[0..6] of AnsiChar;
  Code: Int32;
begin
  Beginne;
  Datum[0] := #0;
  if Ab <> 0 then
    FillDay(Datum, Ab, 'Ab');
  Code := VARK_InitHoleBube(FMandant, Datum, FMeldungen);
  if Code = VARK_FEHLER_DATUM then
    RaiseResult(Code, 'Ab');
  if Code < 0 then
    RaiseResult(Code);
  Result.FNummer := BeginneCursor;
  Result.FLiefern := @LiefereBuchung;
  Result.FArt := 0;
  Result.FIstLeer := Code = VARK_ABGEBROCHEN;
end;

procedure TVarkBuecher.BeginneKonten(Art: Int32; const Ab: string; out Nummer: Int64; out IstLeer: Boolean);
var
  Code: Int32;
begin
  Beginne;
  Code := VARK_InitHoleKonto(FMandant, Art, PAnsiChar(VarkZeichen(Ab, 7, 'Ab')), FMeldungen);
  if Code < 0 then
    RaiseResult(Code);
  Nummer := BeginneCursor;
  IstLeer := Code = VARK_ABGEBROCHEN;
end;

function TVarkBuecher.Sachkonten(const Ab: string): TVarkSachkonten;
begin
  BeginneKonten(VARK_SACHKONTO, Ab, Result.FNummer, Result.FIstLeer);
  Result.FLiefern := @LiefereSachkonto;
  Result.FArt := VARK_SACHKONTO;
end;

function TVarkBuecher.Kreditoren(const Ab: string): TVarkPersonenkonten;
begin
  BeginneKonten(VARK_KREDITOR, Ab, Result.FNummer, Result.FIstLeer);
  Result.FLiefern := @LieferePersonenkonto;
  Result.FArt := VARK_KREDITOR;
end;

function TVarkBuecher.Debitoren(const Ab: string): TVarkPersonenkonten;
begin
  BeginneKonten(VARK_DEBITOR, Ab, Result.FNummer, Result.FIstLeer);
  Result.FLiefern := @LieferePersonenkonto;
  Result.FArt := VARK_DEBITOR;
end;

function TVarkBuecher.OffenePosten(Art: Int32; const Konto: string): TVarkPostenliste;
var
  Code: Int32;
begin
  Beginne;
  Code := VARK_InitHoleOP(FMandant, PAnsiChar(VarkZeichen(Konto, 7, 'Konto')), Art, FMeldungen);
  if Code < 0 then
    RaiseResult(Code);
  Result.FNummer := BeginneCursor;
  Result.FLiefern := @LieferePosten;
  Result.FArt := Art;
  Result.FIstLeer := Code = VARK_ABGEBROCHEN;
end;

{ ---- Choosing ---- }

class function TVarkBuecher.WaehleMandant(out Wahl: Int32; Owner: VarkWindow): Boolean;
begin
  Wahl := VARK_HoleMandantenNr(Owner);
  if Wahl < -2 then
    RaiseResult(Wahl);
  Result := Wahl > 0;
end;

function TVarkBuecher.Gewaehlt(Nummer: Int32; out Wahl: Int32): Boolean;
begin
  if Nummer < 0 then
    RaiseResult(Nummer);
  Wahl := Nummer;
  Result := Nummer > 0;
end;

function TVarkBuecher.WaehleStapel(out Wahl: Int32; Verwalten: Boolean; Owner: VarkWindow): Boolean;
begin
  Beginne;
  if Verwalten then
    Exit(Gewaehlt(VARK_HoleStapelNr(Owner, -FMandant), Wahl));
  Result := Gewaehlt(VARK_HoleStapelNr(Owner, FMandant), Wahl);
end;

function TVarkBuecher.WaehleZahlungsziel(out Wahl: Int32; Owner: VarkWindow): Boolean;
begin
  Beginne;
  Result := Gewaehlt(VARK_HoleZahlungsziel(Owner, FMandant), Wahl);
end;

function TVarkBuecher.WaehleKostenschablone(out Wahl: Int32; Owner: VarkWindow): Boolean;
begin
  Beginne;
  Result := Gewaehlt(VARK_HoleKostenschablone(Owner, FMandant), Wahl);
end;

function TVarkBuecher.WaehleKonto(out Wahl: string; Art: Int32; const Von: string; const Bis: string;
  Owner: VarkWindow): Boolean;
var
  Nummer: array[0..7] of AnsiChar;
  Code: Int32;
begin
  Beginne;
  Nummer[0] := #0;
  Code := VARK_HoleKonto(Owner, FMandant, Art, PAnsiChar(VarkZeichen(Von, 7, 'Von')),
    PAnsiChar(VarkZeichen(Bis, 7, 'Bis')), Nummer);
  if Code = -1 then
    RaiseResult(Code, 'Von', 'In diesem Bereich gibt es kein Konto.');
  if Code = -2 then
    RaiseResult(Code, 'Von', 'Das sind zu viele Konten.');
  if Code < 0 then
    RaiseResult(Code);
  Wahl := VarkText(Nummer);
  Result := Code = VARK_GUT;
end;

{ ---- Reports ---- }

function TVarkBuecher.Berichte(Bericht: TVarkBericht; var Params: TReportParams;
  Parent: VarkWindow): VarkWindow;
begin
  Beginne;
  Params.ViewResult := 0;
  case Bericht of
    TVarkBericht.Kontenplan: Result := VARK_Kontenplan(FMandant, Parent, @Params);
    TVarkBericht.SummenSaldenListe: Result := VARK_SummenSaldenListe(FMandant, Parent, @Params);
    TVarkBericht.HauptAbschluss: Result := VARK_HauptAbschluss(FMandant, Parent, @Params);
    TVarkBericht.Bilanz: Result := VARK_Bilanz(FMandant, 0, Parent, @Params);
    TVarkBericht.Eroeffnungsbilanz: Result := VARK_Bilanz(FMandant, 1, Parent, @Params);
    TVarkBericht.Guv: Result := VARK_GUV(FMandant, Parent, @Params);
    TVarkBericht.Buchungsjournal: Result := VARK_Buchungsjournal(FMandant, Parent, @Params);
    TVarkBericht.Kontenblatt: Result := VARK_Kontenblatt(FMandant, 0, Parent, @Params);
    TVarkBericht.Kostenblatt: Result := VARK_Kontenblatt(FMandant, 1, Parent, @Params);
    TVarkBericht.OPListe: Result := VARK_OPListe(FMandant, Parent, @Params);
    TVarkBericht.UmsatzStatistik: Result := VARK_UmsatzStatistik(FMandant, Parent, @Params);
    TVarkBericht.UmsatzSteuerVoranmeldung: Result := VARK_UmsatzSteuerVoranmeldung(FMandant, Parent, @Params);
    TVarkBericht.UmsatzSteuerVerprobung: Result := VARK_UmsatzSteuerVerprobung(FMandant, Parent, @Params);
    TVarkBericht.ZusammenfassendeMeldung: Result := VARK_ZusammenfassendeMeldung(FMandant, Parent, @Params);
    TVarkBericht.KostenSaldenListe: Result := VARK_KostenSaldenListe(FMandant, Parent, @Params);
    TVarkBericht.KostenstellenListe: Result := VARK_KostenstellenListe(FMandant, Parent, @Params);
    TVarkBericht.Kostenjournal: Result := VARK_Kostenjournal(FMandant, Parent, @Params);
    TVarkBericht.KostenAufteilung: Result := VARK_KostenAufteilung(FMandant, Parent, @Params);
  end;
  if (Result = nil) and (Params.ViewResult = 0) then
    RaiseResult(VARK_ABGEBROCHEN, '', 'Der Bericht wurde nicht erstellt.');
end;

procedure TVarkBuecher.BerichteAls(Style, ExStyle: UInt32; const Titel: string; Frame: VarkWindow);
begin
  Beginne;
  if VARK_InitReports(Style, ExStyle, PAnsiChar(VarkZeichen(Titel, 127, 'Titel')), Frame) <> VARK_GUT then
    RaiseResult(VARK_FEHLER_KEIN_SPEICHER);
end;

initialization
  InitCriticalSection(Looking);

finalization
  DoneCriticalSection(Looking);

end.
