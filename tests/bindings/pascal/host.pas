{ A host that does one thing, named on its command line, and tells what came of it. }
program host;

{$mode objfpc}{$H+}

uses
  cthreads, Classes, SysUtils, vark40;

var
  Buecher: TVarkBuecher;

function Miete: TVarkBuchung;
begin
  Result := NeueBuchung(16, EncodeDate(1998, 4, 15), '8010', '1840', 1500, 'M-0498', 'Büromiete €');
end;

procedure Tell(const What: string; Fehler: EVark);
begin
  WriteLn(What, ': ', Fehler.ClassName, ' ', Fehler.Code, ' ', Fehler.Field, ': ', Fehler.Message);
end;

procedure Refuse(const What: string; const Buchung: TVarkBuchung);
begin
  try
    Buecher.Buchen(Buchung);
    WriteLn(What, ': written');
  except
    on Fehler: EVark do
      Tell(What, Fehler);
  end;
end;

procedure Refusals;
var
  Wrong: TVarkBuchung;
begin
  Wrong := Miete; Wrong.Stapel := 77; Refuse('stapel', Wrong);
  Wrong := Miete; Wrong.Sollkonto := '9999'; Refuse('sollkonto', Wrong);
  Wrong := Miete; Wrong.Habenkonto := '8010'; Refuse('same', Wrong);
  Wrong := Miete; Wrong.Datum := EncodeDate(1990, 1, 1); Refuse('closed year', Wrong);
  Wrong := Miete; Wrong.Datum := EncodeDate(2080, 1, 1); Refuse('year', Wrong);
  Wrong := Miete; Wrong.Text := StringOfChar('x', 36); Refuse('long', Wrong);
  Wrong := Miete; Wrong.Text := 'Ω'; Refuse('letter', Wrong);
  Wrong := Miete; Wrong.Text := 'a'#0'b'; Refuse('nul', Wrong);
  Wrong := Miete; Wrong.Text := #$ED#$A0#$80; Refuse('surrogate', Wrong);
  Wrong := Miete; Wrong.Beleg := '123456789'; Refuse('beleg', Wrong);
  Wrong := Miete; Wrong.Brutto := 0.001; Refuse('decimals', Wrong);
  Wrong := Miete; Wrong.Brutto := 1000000000; Refuse('digits', Wrong);
  Wrong := Miete; Wrong.HatSteuersatz := True; Wrong.Steuersatz := 100; Refuse('rate', Wrong);
end;

procedure Splits;
var
  Teile: TVarkTeile = nil;
  Index: Integer;
begin
  SetLength(Teile, 12);
  for Index := 0 to High(Teile) do
  begin
    Teile[Index] := Miete;
    Teile[Index].Text := Format('Teil %d.', [Index]);
    if Odd(Index) then
      Teile[Index].Sollkonto := '8410';
  end;
  Buecher.SplitBuchen(Teile);
  Buecher.SplitBuchen(Copy(Teile, 0, 2));
  Teile[11].Text := 'Ω';
  try
    Buecher.SplitBuchen(Teile);
  except
    on Fehler: EVark do
      Tell('part', Fehler);
  end;
  try
    Buecher.SplitBuchen(nil);
  except
    on Fehler: EVark do
      Tell('none', Fehler);
  end;
  SetLength(Teile, 2);
  Teile[1].Sollkonto := '9999';
  try
    Buecher.SplitBuchen(Teile);
  except
    on Fehler: EVark do
      Tell('account', Fehler);
  end;
  { The library itself answers this one with success, and writes nothing. }
  Teile[1].Sollkonto := '8410';
  Teile[1].Kostenschablone := 99;
  try
    Buecher.SplitBuchen(Teile);
  except
    on Fehler: EVark do
      Tell('costs', Fehler);
  end;
end;

procedure Write(const Konto: TVarkPersonenkonto);
begin
  WriteLn(Konto.Art, '|', Konto.Konto, '|', Konto.Kuerzel, '|', Konto.Name1, '|', Konto.Name2, '|',
    Konto.UstId, '|', Konto.Land, '|', Konto.Waehrung, '|', Konto.Plz, '|', Konto.Adresse1, '|', Konto.Adresse2, '|',
    Konto.Blz, '|', Konto.Bankkonto, '|', Konto.Bank, '|', Konto.Gegenkonto, '|', Konto.Wert1, '|',
    Konto.Wert2, '|', Konto.Skonto:0:2, '|', Konto.Mahnkennziffer, '|', Konto.Zahlungsziel);
end;

procedure First(const Ab: string);
var
  Konto: TVarkPersonenkonto;
begin
  for Konto in Buecher.Debitoren(Ab) do
  begin
    Write(Konto);
    Break;
  end;
end;

procedure Accounts;
var
  Kunde: TVarkPersonenkonto;
begin
  Kunde := Default(TVarkPersonenkonto);
  Kunde.Art := VARK_DEBITOR;
  Kunde.Konto := '19001';
  Kunde.Kuerzel := 'PASCALKU';
  Kunde.Name1 := 'Schröder & Söhne';
  Kunde.Land := 'D';
  Kunde.Plz := '20095';
  Kunde.Adresse1 := 'Große Reichenstr. 7';
  Kunde.Adresse2 := 'Hamburg';
  Kunde.Blz := '20050000';
  Kunde.Bankkonto := '1234567890';
  Kunde.Gegenkonto := '5010';
  Kunde.Wert2 := 65535;
  Kunde.Skonto := 2.5;
  Kunde.Mahnkennziffer := -1;
  Kunde.Zahlungsziel := 2;
  Buecher.KontoAnlegen(Kunde);
  First('19001');
  try
    Buecher.KontoAnlegen(Kunde);
  except
    on Fehler: EVark do
      Tell('again', Fehler);
  end;
  Kunde.Name1 := 'Schröder Nachf.';
  Buecher.KontoAendern(Kunde);
  First('19001');
  Buecher.KontoLoeschen(VARK_DEBITOR, '', 'PASCALKU');
  WriteLn(Buecher.Existiert('19001', VARK_DEBITOR), ' ', Buecher.Existiert('10010', VARK_DEBITOR));
  WriteLn(Buecher.FreieKontonummer(VARK_DEBITOR), ' ', Buecher.Saldo('1840'):0:2);
end;

procedure Reading;
var
  Sako: TVarkSachkonto;
  Peko: TVarkPersonenkonto;
  Satz: TVarkBuchungssatz;
  Posten: TVarkOffenerPosten;
  Summe: Currency;
  Zahl: Integer;
begin
  for Sako in Buecher.Sachkonten do
    WriteLn('S ', Sako.Konto, ' ', Sako.Name);
  for Peko in Buecher.Kreditoren do
    WriteLn('K ', Peko.Konto, ' ', Peko.Name1);
  for Peko in Buecher.Debitoren('9999999') do
    WriteLn('none');
  Summe := 0;
  Zahl := 0;
  for Satz in Buecher.Buchungen(EncodeDate(1998, 3, 1)) do
  begin
    if Satz.Datum < EncodeDate(1998, 3, 1) then
      WriteLn('too early');
    Summe := Summe + Satz.Brutto;
    Inc(Zahl);
  end;
  WriteLn('B ', Zahl, ' ', Summe:0:2);
  Summe := 0;
  Zahl := 0;
  for Posten in Buecher.OffenePosten(VARK_DEBITOR) do
  begin
    Summe := Summe + Posten.Offen;
    Inc(Zahl);
  end;
  WriteLn('O ', Zahl, ' ', Summe:0:2);
  try
    Buecher.Buchungen(EncodeDate(1985, 1, 1));
  except
    on Fehler: EVark do
      Tell('year', Fehler);
  end;
end;

{ What a reading says on another thread, and that it goes on where it belongs. }
type
  TOther = class(TThread)
    Leser: TVarkPersonenkonten.TLeser;
    procedure Execute; override;
  end;

procedure TOther.Execute;
begin
  try
    Leser.MoveNext;
    WriteLn('read');
  except
    on Fehler: EVark do
      Tell('cursor', Fehler);
  end;
  try
    Buecher.Saldo('1840');
    WriteLn('asked');
  except
    on Fehler: EVark do
      Tell('books', Fehler);
  end;
  with TVarkBuecher.Create(1) do
  begin
    WriteLn('own: ', Saldo('1840'):0:2);
    Free;
  end;
  Flush(Output); { each thread has its own }
end;

procedure Threads;
var
  Leser, Anderer: TVarkPersonenkonten.TLeser;
  Other: TOther;
begin
  Leser := Buecher.Debitoren.GetEnumerator;
  Leser.MoveNext;
  WriteLn(Leser.Current.Konto);
  Flush(Output);
  Other := TOther.Create(True);
  Other.Leser := Leser;
  Other.Start;
  Other.WaitFor;
  Other.Free;
  Leser.MoveNext;
  WriteLn(Leser.Current.Konto);
  Anderer := Buecher.Kreditoren.GetEnumerator;
  try
    Leser.MoveNext;
  except
    on Fehler: EVark do
      Tell('other', Fehler);
  end;
  WriteLn(Leser.MoveNext, ' ', Anderer.MoveNext);
  Leser.Free;
  WriteLn(Anderer.MoveNext);
  Anderer.Free;
end;

procedure Choosing;
var
  Wahl: Int32;
  Konto: string;
begin
  WriteLn(TVarkBuecher.WaehleMandant(Wahl), Buecher.WaehleStapel(Wahl), Buecher.WaehleZahlungsziel(Wahl),
    Buecher.WaehleKostenschablone(Wahl), Buecher.WaehleKonto(Konto, VARK_DEBITOR));
  try
    Buecher.WaehleKonto(Konto, VARK_DEBITOR, '88888', '99999');
  except
    on Fehler: EVark do
      Tell('range', Fehler);
  end;
end;

procedure Reports;
var
  Bericht: TVarkBericht;
  Params: TReportParams;
begin
  Buecher.BerichteAls(0, 0, 'Bericht');
  for Bericht in TVarkBericht do
  begin
    Params := Default(TReportParams);
    Params.ParamFlags := VARK_PARAM_ZEITRAUM or VARK_PARAM_JAHR;
    Params.Zeitraum := VARK_ZEITRAUM_JAHR;
    Params.JahrIndex := 1998 - 1980;
    if Bericht = TVarkBericht.SummenSaldenListe then
    begin
      Params.ParamFlags := VARK_PARAM_ZEITRAUM or VARK_PARAM_DATEN;
      Params.Zeitraum := VARK_ZEITRAUM_TAGE;
      StrPCopy(Params.VonDatum, '010198');
      StrPCopy(Params.BisDatum, '311298');
    end;
    WriteLn(Bericht, ' ', Buecher.Berichte(Bericht, Params) <> nil, ' ', Params.ViewResult);
  end;
end;

procedure Texts;
var
  Each: Integer;
begin
  for Each := 1 to 255 do
    if VarkZeichen(VarkText(PAnsiChar(AnsiString(AnsiChar(Each)))), 1, '') <> AnsiString(AnsiChar(Each)) then
      WriteLn(Each);
  WriteLn(VarkText(PAnsiChar(#$80#$E4)), ' ', VarkMeldung(-5), ' ', VarkMeldung(-99));
end;

begin
  DefaultFormatSettings.DecimalSeparator := '.';
  if ParamStr(1) = 'texts' then
  begin
    Texts;
    Halt;
  end;
  try
    if ParamStr(1) = 'unknown' then
      Buecher := TVarkBuecher.Create(7)
    else
      Buecher := TVarkBuecher.Create(1);
    case ParamStr(1) of
      'post': Buecher.Buchen(Miete);
      'refusals': Refusals;
      'splits': Splits;
      'accounts': Accounts;
      'reading': Reading;
      'threads': Threads;
      'choosing': Choosing;
      'reports': Reports;
      'shown':
      begin
        Buecher.Free;
        Buecher := TVarkBuecher.Create(1, True);
        Buecher.Saldo('9999');
      end;
      'saldo', 'unknown': WriteLn(Buecher.Saldo('1840'):0:2);
    end;
    Buecher.Free;
  except
    on Fehler: EVark do
      Tell('failed', Fehler);
  end;
end.
