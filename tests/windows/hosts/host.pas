{ A host that posts, reads and has a person choose, against the library alone, and tells what came of it. }
program host;

{$mode objfpc}{$H+}

uses
  SysUtils, vark40;

var
  Buecher: TVarkBuecher;
  Konto: TVarkSachkonto;
  Gewaehlt: Int32;
begin
  WriteLn('status ', VARK_Status);
  WriteLn('sizes ', SizeOf(TBuchungEingabe), ' ', SizeOf(TSplitEingabe), ' ', SizeOf(TPekoEingabe), ' ',
    SizeOf(TReportParams), ' ', SizeOf(TVarkMessage));
  Buecher := TVarkBuecher.Create(1, True);
  try
    Buecher.Buchen(NeueBuchung(16, EncodeDate(1998, 4, 15), '8010', '1840', 1500, 'M-0498', 'Büromiete'));
    WriteLn('posted');
    for Konto in Buecher.Sachkonten('2000') do
      WriteLn('read ', Konto.Konto, ' ', Konto.Name);
    Flush(Output);
    if TVarkBuecher.WaehleMandant(Gewaehlt) then
      WriteLn('chosen ', Gewaehlt);
  finally
    Buecher.Free;
  end;
end.
