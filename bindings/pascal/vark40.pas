unit vark40;
{$mode objfpc}{$H+}
{$macro on}
{$packrecords c}
{$ifdef windows}
  {$define VarkCall := stdcall; external 'VARK40.dll'}
{$else}
  {$define VarkCall := cdecl; external 'vark40'}
{$endif}

interface

{$I vark40_declarations.pas}

implementation

end.
