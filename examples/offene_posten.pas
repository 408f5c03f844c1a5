{ Lists what Debitoren of Mandant 1 owe on a day, and books the rent of a month. }
program offene_posten;

{$mode objfpc}{$H+}

uses
  Classes, SysUtils, vark40;

var
  Buecher: TVarkBuecher;
  Posten: TVarkOffenerPosten;
  Faellig: TStringList; { Konto;Name, with the index of what is due }
  Betraege: array of Currency = nil;
  Stichtag: TDateTime;
  Zeile, At: Integer;
begin
  DefaultFormatSettings.DecimalSeparator := '.';
  Stichtag := EncodeDate(1998, 4, 30);
  Faellig := TStringList.Create;
  Faellig.Sorted := True;
  try
    Buecher := TVarkBuecher.Create(1);
    try
      for Posten in Buecher.OffenePosten(VARK_DEBITOR) do
      begin
        if (Posten.Termin = 0) or (Posten.Termin > Stichtag) then
          Continue;
        if not Faellig.Find(Posten.Konto + ';' + Posten.Name, Zeile) then
        begin
          Zeile := Faellig.AddObject(Posten.Konto + ';' + Posten.Name, TObject(PtrInt(Length(Betraege))));
          SetLength(Betraege, Length(Betraege) + 1);
        end;
        At := PtrInt(Faellig.Objects[Zeile]);
        Betraege[At] := Betraege[At] + Posten.Offen;
      end;
      for Zeile := 0 to Faellig.Count - 1 do
        WriteLn(Faellig[Zeile], ';', CurrToStrF(Betraege[PtrInt(Faellig.Objects[Zeile])], ffFixed, 2));
      Buecher.Buchen(NeueBuchung(16, EncodeDate(1998, 4, 15), '8010', '1840', 1500, 'M-0498', 'Miete April'));
      WriteLn('gebucht');
    finally
      Buecher.Free;
    end;
  except
    on Fehler: EVark do
    begin
      WriteLn(StdErr, Fehler.Field, ': ', Fehler.Message, ' (', Fehler.Code, ')');
      ExitCode := 1;
    end;
  end;
  Faellig.Free;
end.
