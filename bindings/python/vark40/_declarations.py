"""The exported interface as ctypes sees it.

Made from include/vark40.h by bindings/declare: not to be edited by hand.
"""

from __future__ import annotations

import ctypes
import enum
from typing import Any, Callable, Optional


class Kontoart(enum.IntFlag):
    """Kinds of account (Kontoart). A set of kinds is their sum."""

    SACHKONTO = 1
    KREDITOR = 2
    DEBITOR = 4
    KOSTENSTELLE = 8
    OHNE_KONTO = 16


class Form(enum.IntEnum):
    """Forms of amounts and rates that come out."""

    FEST = 1
    EINFACH = 2
    GRUPPIERT = 3


class Ergebnis(enum.IntEnum):
    """Results. What they mean at a function stands there; -2 and -10 differ from one to another."""

    LETZTER = 2
    GUT = 1
    ABGEBROCHEN = 0
    FEHLER_UMRECHNUNG = -2
    FEHLER_AKTION = -2
    FEHLER_TEIL_SPEICHER = -2
    FEHLER_DATENBANK = -3
    FEHLER_MANDANT = -5
    FEHLER_STAPEL = -6
    FEHLER_KONTOART = -7
    FEHLER_SOLLKONTO = -8
    FEHLER_HABENKONTO = -9
    FEHLER_KONTO = -10
    FEHLER_DATUM = -11
    FEHLER_BRUTTO = -12
    FEHLER_STEUERSATZ = -13
    FEHLER_STEUERBETRAG = -14
    FEHLER_GEGENKONTO = -15
    FEHLER_BANK = -16
    FEHLER_SKONTO = -17
    FEHLER_MAHNKENNZIFFER = -18
    FEHLER_KUERZEL_ANDERS = -19
    FEHLER_FORM = -20
    FEHLER_KOSTENSTELLE = -23
    FEHLER_KOSTEN_FEHLEN = -24
    FEHLER_ANZAHL_TEILE = -25
    FEHLER_SEITEN = -26
    FEHLER_ZAHLUNGSZIEL = -27
    FEHLER_KEIN_KONTO = -28
    FEHLER_KUERZEL_FEHLT = -29
    FEHLER_NAME_FEHLT = -30
    FEHLER_KONTO_BESTEHT = -31
    FEHLER_KUERZEL_BESTEHT = -32
    FEHLER_NICHT_LOESCHBAR = -33
    FEHLER_KEIN_DATENPFAD = -36
    FEHLER_NUMMERN_AUFGEBRAUCHT = -37
    FEHLER_SATZ_FORT = -39
    FEHLER_NICHT_BEGONNEN = -40
    FEHLER_KEIN_SPEICHER = -42
    FEHLER_KOSTENSCHABLONE = -43


class ParamFlag(enum.IntFlag):
    """Which fields of ReportParams are valid."""

    ZEITRAUM = 1
    DATEN = 2
    JAHR = 4
    KONTOART = 8
    KONTEN = 16
    EINZELN = 32
    AUSGABE = 64
    ARCHIVJAHR = 128


class Zeitraum(enum.IntEnum):
    """Zeitraum of ReportParams, beside the fiscal months 1 to 12."""

    TAGE = 0
    QUARTAL_1 = 13
    QUARTAL_4 = 16
    JAHR = 17


class Ausgabe(enum.IntEnum):
    """Ausgabe of ReportParams."""

    BILDSCHIRM = 0
    DRUCKER = 1


class Aktion(enum.IntEnum):
    """Aktion of VARK_Peko."""

    ANLEGEN = 1
    AENDERN = 2
    LOESCHEN = 3


# The attribute that is at fault, and what is said where the library has said nothing.
RESULTS: dict[int, tuple[Optional[str], str]] = {
    Ergebnis.LETZTER: (None, "Das war der letzte Satz."),
    Ergebnis.GUT: (None, "Gut."),
    Ergebnis.ABGEBROCHEN: (None, "Der Vorgang wurde abgebrochen."),
    Ergebnis.FEHLER_UMRECHNUNG: (None, "Der Betrag kann nicht umgerechnet werden!"),
    Ergebnis.FEHLER_DATENBANK: (None, "Die Datenbank läßt sich nicht benutzen."),
    Ergebnis.FEHLER_MANDANT: ("mandant", "Der Mandant existiert nicht!"),
    Ergebnis.FEHLER_STAPEL: ("stapel", "Der Stapel existiert nicht!"),
    Ergebnis.FEHLER_KONTOART: ("art", "Die Kontoart ist unzulässig!"),
    Ergebnis.FEHLER_SOLLKONTO: ("sollkonto", "Die Sollkontonummer ist unzulässig!"),
    Ergebnis.FEHLER_HABENKONTO: ("habenkonto", "Die Habenkontonummer ist unzulässig!"),
    Ergebnis.FEHLER_KONTO: ("konto", "Die Kontonummer ist unzulässig!"),
    Ergebnis.FEHLER_DATUM: ("datum", "Das Buchungsdatum ist unzulässig!"),
    Ergebnis.FEHLER_BRUTTO: ("brutto", "Der Bruttobetrag ist unzulässig!"),
    Ergebnis.FEHLER_STEUERSATZ: ("steuersatz", "Der Steuersatz ist unzulässig!"),
    Ergebnis.FEHLER_STEUERBETRAG: ("steuerbetrag", "Der Steuerbetrag ist unzulässig!"),
    Ergebnis.FEHLER_GEGENKONTO: ("gegenkonto", "Das Gegenkonto ist unzulässig!"),
    Ergebnis.FEHLER_BANK: ("bankkonto", "Die Bankverbindung ist unzulässig!"),
    Ergebnis.FEHLER_SKONTO: ("skonto", "Die Skontoprozente sind unzulässig!"),
    Ergebnis.FEHLER_MAHNKENNZIFFER: ("mahnkennziffer", "Die Mahnkennziffer ist unzulässig!"),
    Ergebnis.FEHLER_KUERZEL_ANDERS: ("kuerzel", "Das Kürzel ist unzulässig!"),
    Ergebnis.FEHLER_FORM: ("form", "Das Ausgabeformat ist unzulässig!"),
    Ergebnis.FEHLER_KOSTENSTELLE: ("konto", "Die Kostenstelle ist unzulässig!"),
    Ergebnis.FEHLER_KOSTEN_FEHLEN: ("kostenschablone", "Ein Konto der GuV verlangt eine Kostenstelle."),
    Ergebnis.FEHLER_ANZAHL_TEILE: ("teile", "Die Anzahl der Teilbuchungen ist nicht korrekt!"),
    Ergebnis.FEHLER_SEITEN: ("teile", "Genau eine Seite muß in allen Teilbuchungen gleich sein."),
    Ergebnis.FEHLER_ZAHLUNGSZIEL: ("zahlungsziel", "Das Zahlungsziel ist unzulässig!"),
    Ergebnis.FEHLER_KEIN_KONTO: ("konto", "Das Konto existiert nicht!"),
    Ergebnis.FEHLER_KUERZEL_FEHLT: ("kuerzel", "Fehlendes Kürzel!"),
    Ergebnis.FEHLER_NAME_FEHLT: ("name1", "Fehlender Name!"),
    Ergebnis.FEHLER_KONTO_BESTEHT: ("konto", "Das Konto existiert bereits!"),
    Ergebnis.FEHLER_KUERZEL_BESTEHT: ("kuerzel", "Das Kürzel existiert bereits!"),
    Ergebnis.FEHLER_NICHT_LOESCHBAR: ("konto", "Das Konto ist nicht löschbar!"),
    Ergebnis.FEHLER_KEIN_DATENPFAD: (None,
        "In keiner lesbaren Ini-Datei steht, wo die Daten liegen (tolka.ini: [TOLKA] Pfad32=…)."),
    Ergebnis.FEHLER_NUMMERN_AUFGEBRAUCHT: ("konto", "Es ist keine Nummer mit 7 Zeichen mehr frei."),
    Ergebnis.FEHLER_SATZ_FORT: (None, "Der nächste Satz ist inzwischen gelöscht worden."),
    Ergebnis.FEHLER_NICHT_BEGONNEN: (None, "Es wird nicht gelesen."),
    Ergebnis.FEHLER_KEIN_SPEICHER: (None, "Die Bibliothek hat keinen Speicher für diesen Aufruf."),
    Ergebnis.FEHLER_KOSTENSCHABLONE: ("kostenschablone", "Die Kostenschablone ist unzulässig!"),
}


class VarkMessage_pt(ctypes.Structure):
    _fields_ = [
        ("x", ctypes.c_int32),
        ("y", ctypes.c_int32),
    ]
    x: int
    y: int


class VarkMessage(ctypes.Structure):
    """A message of the window system, as GetMessageA of libvarkui.so fills it."""

    _fields_ = [
        ("hwnd", ctypes.c_void_p),
        ("message", ctypes.c_uint32),
        ("wParam", ctypes.c_size_t),
        ("lParam", ctypes.c_ssize_t),
        ("time", ctypes.c_uint32),
        ("pt", VarkMessage_pt),
    ]
    hwnd: Optional[int]
    message: int
    wParam: int
    lParam: int
    time: int
    pt: Any


class BuchungEingabe(ctypes.Structure):
    """One booking."""

    _pack_ = 1
    _fields_ = [
        ("Mandant", ctypes.c_int32),
        ("Stapel", ctypes.c_int32),
        ("Datum", ctypes.c_char * 7),
        ("Beleg", ctypes.c_char * 9),
        ("Text", ctypes.c_char * 36),
        ("Sollkonto", ctypes.c_char * 8),
        ("SollArt", ctypes.c_int32),
        ("Habenkonto", ctypes.c_char * 8),
        ("HabenArt", ctypes.c_int32),
        ("Brutto", ctypes.c_char * 13),
        ("Steuersatz", ctypes.c_char * 6),
        ("Steuerbetrag", ctypes.c_char * 13),
        ("Kennzeichen", ctypes.c_uint8),
        ("Kostenschablone", ctypes.c_int32),
        ("Zahlungsziel", ctypes.c_int32),
        ("Rest", ctypes.c_char * 13),
    ]
    Mandant: int
    Stapel: int
    Datum: bytes
    Beleg: bytes
    Text: bytes
    Sollkonto: bytes
    SollArt: int
    Habenkonto: bytes
    HabenArt: int
    Brutto: bytes
    Steuersatz: bytes
    Steuerbetrag: bytes
    Kennzeichen: int
    Kostenschablone: int
    Zahlungsziel: int
    Rest: bytes


class TeilbuchungEingabe(ctypes.Structure):
    """One part of a split booking; the fields are those of BuchungEingabe."""

    _pack_ = 1
    _fields_ = [
        ("Sollkonto", ctypes.c_char * 8),
        ("SollArt", ctypes.c_int32),
        ("Habenkonto", ctypes.c_char * 8),
        ("HabenArt", ctypes.c_int32),
        ("Brutto", ctypes.c_char * 13),
        ("Steuersatz", ctypes.c_char * 6),
        ("Steuerbetrag", ctypes.c_char * 13),
        ("Text", ctypes.c_char * 36),
        ("Kostenschablone", ctypes.c_int32),
        ("Rest", ctypes.c_char * 4),
    ]
    Sollkonto: bytes
    SollArt: int
    Habenkonto: bytes
    HabenArt: int
    Brutto: bytes
    Steuersatz: bytes
    Steuerbetrag: bytes
    Text: bytes
    Kostenschablone: int
    Rest: bytes


class SplitEingabe(ctypes.Structure):
    """A split booking of up to ten parts."""

    _pack_ = 1
    _fields_ = [
        ("Mandant", ctypes.c_int32),
        ("Stapel", ctypes.c_int32),
        ("Datum", ctypes.c_char * 7),
        ("Beleg", ctypes.c_char * 9),
        ("Anzahl", ctypes.c_int32),
        ("Teil", TeilbuchungEingabe * 10),
        ("Kennzeichen", ctypes.c_uint8),
        ("Zahlungsziel", ctypes.c_int32),
        ("Rest", ctypes.c_char * 27),
    ]
    Mandant: int
    Stapel: int
    Datum: bytes
    Beleg: bytes
    Anzahl: int
    Teil: Any
    Kennzeichen: int
    Zahlungsziel: int
    Rest: bytes


class PekoEingabe(ctypes.Structure):
    """A personal account: a Kreditor or a Debitor."""

    _pack_ = 1
    _fields_ = [
        ("Mandant", ctypes.c_int32),
        ("Konto", ctypes.c_char * 8),
        ("Kuerzel", ctypes.c_char * 9),
        ("Name1", ctypes.c_char * 26),
        ("Name2", ctypes.c_char * 26),
        ("UstId", ctypes.c_char * 16),
        ("Land", ctypes.c_char * 4),
        ("Waehrung", ctypes.c_char * 5),
        ("Plz", ctypes.c_char * 7),
        ("Adresse2", ctypes.c_char * 31),
        ("Adresse1", ctypes.c_char * 31),
        ("Blz", ctypes.c_char * 9),
        ("Bankkonto", ctypes.c_char * 12),
        ("Bank", ctypes.c_char * 28),
        ("Gegenkonto", ctypes.c_char * 8),
        ("Wert1", ctypes.c_int32),
        ("Wert2", ctypes.c_int32),
        ("Skonto", ctypes.c_char * 6),
        ("Mahnkennziffer", ctypes.c_int32),
        ("Zahlungsziel", ctypes.c_int32),
        ("Rest", ctypes.c_char * 60),
    ]
    Mandant: int
    Konto: bytes
    Kuerzel: bytes
    Name1: bytes
    Name2: bytes
    UstId: bytes
    Land: bytes
    Waehrung: bytes
    Plz: bytes
    Adresse2: bytes
    Adresse1: bytes
    Blz: bytes
    Bankkonto: bytes
    Bank: bytes
    Gegenkonto: bytes
    Wert1: int
    Wert2: int
    Skonto: bytes
    Mahnkennziffer: int
    Zahlungsziel: int
    Rest: bytes


class ReportParams(ctypes.Structure):
    """What a report is asked for. It fills the report's dialog in advance and holds the user's choice
    afterwards, so that a host can offer it again. ParamFlags says which fields are valid. A value outside
    its range is corrected without a message. In the tax reports quarters and the year are those of the
    calendar, and JahrIndex goes in as its year. It comes back as the fiscal year of the first day, which
    may be the one before: set it anew before the block is used again.
    """

    _pack_ = 1
    _fields_ = [
        ("ParamFlags", ctypes.c_uint32),
        ("Zeitraum", ctypes.c_int32),
        ("VonDatum", ctypes.c_char * 7),
        ("BisDatum", ctypes.c_char * 7),
        ("JahrIndex", ctypes.c_int32),
        ("ArchivJahr", ctypes.c_int32),
        ("KontoArt", ctypes.c_int32),
        ("SachkontoVon", ctypes.c_char * 8),
        ("SachkontoBis", ctypes.c_char * 8),
        ("KreditorVon", ctypes.c_char * 8),
        ("KreditorBis", ctypes.c_char * 8),
        ("DebitorVon", ctypes.c_char * 8),
        ("DebitorBis", ctypes.c_char * 8),
        ("KostenstelleVon", ctypes.c_char * 8),
        ("KostenstelleBis", ctypes.c_char * 8),
        ("Ausgabe", ctypes.c_int32),
        ("ViewResult", ctypes.c_uint32),
    ]
    ParamFlags: int
    Zeitraum: int
    VonDatum: bytes
    BisDatum: bytes
    JahrIndex: int
    ArchivJahr: int
    KontoArt: int
    SachkontoVon: bytes
    SachkontoBis: bytes
    KreditorVon: bytes
    KreditorBis: bytes
    DebitorVon: bytes
    DebitorBis: bytes
    KostenstelleVon: bytes
    KostenstelleBis: bytes
    Ausgabe: int
    ViewResult: int


_TEXT_OUT = ctypes.POINTER(ctypes.c_char)
_NUMBER_OUT = ctypes.POINTER(ctypes.c_uint32)

# Result and arguments of each function.
PROTOTYPES: dict[str, tuple[Any, tuple[Any, ...]]] = {
    "VARK_Status": (ctypes.c_int32, ()),
    "VARK_SchliesseDB": (None, ()),
    "VARK_BuchungEinfuegen": (ctypes.c_int32, (ctypes.POINTER(BuchungEingabe), ctypes.c_int32)),
    "VARK_BuchungEinfuegenDirekt": (ctypes.c_int32, (ctypes.c_int32, ctypes.c_int32, ctypes.c_int32,
        ctypes.c_char_p, ctypes.c_char_p, ctypes.c_char_p, ctypes.c_char_p, ctypes.c_int32, ctypes.c_char_p,
        ctypes.c_int32, ctypes.c_char_p, ctypes.c_char_p, ctypes.c_char_p)),
    "VARK_BuchungEinfuegenDirektEx": (ctypes.c_int32, (ctypes.c_int32, ctypes.c_int32, ctypes.c_int32,
        ctypes.c_char_p, ctypes.c_char_p, ctypes.c_char_p, ctypes.c_char_p, ctypes.c_int32, ctypes.c_char_p,
        ctypes.c_int32, ctypes.c_char_p, ctypes.c_char_p, ctypes.c_char_p, ctypes.c_int32, ctypes.c_int32)),
    "VARK_SplitBuchungEinfuegen": (ctypes.c_int32, (ctypes.POINTER(SplitEingabe), ctypes.c_int32)),
    "VARK_SplitStart": (ctypes.c_int32, (ctypes.c_int32, ctypes.c_int32, ctypes.c_char_p, ctypes.c_char_p,
        ctypes.c_uint8)),
    "VARK_SplitStartEx": (ctypes.c_int32, (ctypes.c_int32, ctypes.c_int32, ctypes.c_char_p, ctypes.c_char_p,
        ctypes.c_uint8, ctypes.c_int32)),
    "VARK_SplitEinfuegen": (ctypes.c_int32, (ctypes.c_char_p, ctypes.c_int32, ctypes.c_char_p, ctypes.c_int32,
        ctypes.c_char_p, ctypes.c_char_p, ctypes.c_char_p, ctypes.c_char_p)),
    "VARK_SplitEinfuegenEx": (ctypes.c_int32, (ctypes.c_char_p, ctypes.c_int32, ctypes.c_char_p,
        ctypes.c_int32, ctypes.c_char_p, ctypes.c_char_p, ctypes.c_char_p, ctypes.c_char_p, ctypes.c_int32)),
    "VARK_SplitEnde": (ctypes.c_int32, (ctypes.c_int32, ctypes.c_int32)),
    "VARK_Peko": (ctypes.c_int32, (ctypes.c_int32, ctypes.c_int32, ctypes.POINTER(PekoEingabe),
        ctypes.c_int32)),
    "VARK_PekoDirekt": (ctypes.c_int32, (ctypes.c_int32, ctypes.c_int32, ctypes.c_int32, ctypes.c_int32,
        ctypes.c_char_p, ctypes.c_char_p, ctypes.c_char_p, ctypes.c_char_p, ctypes.c_char_p, ctypes.c_char_p,
        ctypes.c_char_p, ctypes.c_char_p, ctypes.c_char_p, ctypes.c_char_p, ctypes.c_char_p, ctypes.c_char_p,
        ctypes.c_char_p, ctypes.c_char_p, ctypes.c_int32, ctypes.c_int32, ctypes.c_char_p, ctypes.c_int32,
        ctypes.c_int32)),
    "VARK_HoleFreieKontonr": (ctypes.c_int32, (ctypes.c_int32, ctypes.c_int32, _TEXT_OUT)),
    "VARK_ExistiertKonto": (ctypes.c_int32, (ctypes.c_int32, ctypes.c_char_p, ctypes.c_int32)),
    "VARK_HoleSaldo": (ctypes.c_int32, (ctypes.c_int32, ctypes.c_char_p, ctypes.c_int32, ctypes.c_int32,
        ctypes.c_int32, _TEXT_OUT)),
    "VARK_InitHoleBube": (ctypes.c_int32, (ctypes.c_int32, ctypes.c_char_p, ctypes.c_int32)),
    "VARK_HoleBube": (ctypes.c_int32, (_NUMBER_OUT, _TEXT_OUT, _TEXT_OUT, _TEXT_OUT, _TEXT_OUT, _NUMBER_OUT,
        _TEXT_OUT, _NUMBER_OUT, ctypes.c_int32, _TEXT_OUT, _TEXT_OUT, _TEXT_OUT)),
    "VARK_BeendeHolen": (ctypes.c_int32, ()),
    "VARK_InitHoleKonto": (ctypes.c_int32, (ctypes.c_int32, ctypes.c_int32, ctypes.c_char_p, ctypes.c_int32)),
    "VARK_HoleSako": (ctypes.c_int32, (_TEXT_OUT, _TEXT_OUT, _TEXT_OUT, _NUMBER_OUT, _NUMBER_OUT,
        _NUMBER_OUT)),
    "VARK_HolePeko": (ctypes.c_int32, (_TEXT_OUT, _TEXT_OUT, _TEXT_OUT, _TEXT_OUT, _TEXT_OUT, _TEXT_OUT,
        _TEXT_OUT, _TEXT_OUT, _TEXT_OUT, _TEXT_OUT, _TEXT_OUT, _TEXT_OUT, _TEXT_OUT, _TEXT_OUT, _NUMBER_OUT,
        _NUMBER_OUT, ctypes.c_int32, _TEXT_OUT, _NUMBER_OUT, _NUMBER_OUT)),
    "VARK_InitHoleOP": (ctypes.c_int32, (ctypes.c_int32, ctypes.c_char_p, ctypes.c_int32, ctypes.c_int32)),
    "VARK_HoleOP": (ctypes.c_int32, (_TEXT_OUT, _TEXT_OUT, _TEXT_OUT, _TEXT_OUT, _TEXT_OUT, _TEXT_OUT,
        _TEXT_OUT, _TEXT_OUT, ctypes.c_int32, _TEXT_OUT, _TEXT_OUT, _TEXT_OUT)),
    "VARK_HoleMandantenNr": (ctypes.c_int32, (ctypes.c_void_p,)),
    "VARK_HoleStapelNr": (ctypes.c_int32, (ctypes.c_void_p, ctypes.c_int32)),
    "VARK_HoleKonto": (ctypes.c_int32, (ctypes.c_void_p, ctypes.c_int32, ctypes.c_int32, ctypes.c_char_p,
        ctypes.c_char_p, _TEXT_OUT)),
    "VARK_HoleZahlungsziel": (ctypes.c_int32, (ctypes.c_void_p, ctypes.c_int32)),
    "VARK_HoleKostenschablone": (ctypes.c_int32, (ctypes.c_void_p, ctypes.c_int32)),
    "VARK_InitReports": (ctypes.c_int32, (ctypes.c_uint32, ctypes.c_uint32, ctypes.c_char_p,
        ctypes.c_void_p)),
    "VARK_IsMessage": (ctypes.c_int32, (ctypes.POINTER(VarkMessage),)),
    "VARK_Kontenplan": (ctypes.c_void_p, (ctypes.c_int32, ctypes.c_void_p, ctypes.POINTER(ReportParams))),
    "VARK_SummenSaldenListe": (ctypes.c_void_p, (ctypes.c_int32, ctypes.c_void_p,
        ctypes.POINTER(ReportParams))),
    "VARK_HauptAbschluss": (ctypes.c_void_p, (ctypes.c_int32, ctypes.c_void_p, ctypes.POINTER(ReportParams))),
    "VARK_Bilanz": (ctypes.c_void_p, (ctypes.c_int32, ctypes.c_int32, ctypes.c_void_p,
        ctypes.POINTER(ReportParams))),
    "VARK_GUV": (ctypes.c_void_p, (ctypes.c_int32, ctypes.c_void_p, ctypes.POINTER(ReportParams))),
    "VARK_Buchungsjournal": (ctypes.c_void_p, (ctypes.c_int32, ctypes.c_void_p,
        ctypes.POINTER(ReportParams))),
    "VARK_Kontenblatt": (ctypes.c_void_p, (ctypes.c_int32, ctypes.c_int32, ctypes.c_void_p,
        ctypes.POINTER(ReportParams))),
    "VARK_OPListe": (ctypes.c_void_p, (ctypes.c_int32, ctypes.c_void_p, ctypes.POINTER(ReportParams))),
    "VARK_UmsatzStatistik": (ctypes.c_void_p, (ctypes.c_int32, ctypes.c_void_p,
        ctypes.POINTER(ReportParams))),
    "VARK_UmsatzSteuerVoranmeldung": (ctypes.c_void_p, (ctypes.c_int32, ctypes.c_void_p,
        ctypes.POINTER(ReportParams))),
    "VARK_UmsatzSteuerVerprobung": (ctypes.c_void_p, (ctypes.c_int32, ctypes.c_void_p,
        ctypes.POINTER(ReportParams))),
    "VARK_ZusammenfassendeMeldung": (ctypes.c_void_p, (ctypes.c_int32, ctypes.c_void_p,
        ctypes.POINTER(ReportParams))),
    "VARK_KostenSaldenListe": (ctypes.c_void_p, (ctypes.c_int32, ctypes.c_void_p,
        ctypes.POINTER(ReportParams))),
    "VARK_KostenstellenListe": (ctypes.c_void_p, (ctypes.c_int32, ctypes.c_void_p,
        ctypes.POINTER(ReportParams))),
    "VARK_Kostenjournal": (ctypes.c_void_p, (ctypes.c_int32, ctypes.c_void_p, ctypes.POINTER(ReportParams))),
    "VARK_KostenAufteilung": (ctypes.c_void_p, (ctypes.c_int32, ctypes.c_void_p,
        ctypes.POINTER(ReportParams))),
}


class Exports:
    """The functions of a loaded library, under their own names."""

    VARK_Status: Callable[[], int]
    VARK_SchliesseDB: Callable[[], None]
    VARK_BuchungEinfuegen: Callable[[Any, int], int]
    VARK_BuchungEinfuegenDirekt: Callable[[int, int, int, Optional[bytes], Optional[bytes], Optional[bytes],
        Optional[bytes], int, Optional[bytes], int, Optional[bytes], Optional[bytes], Optional[bytes]], int]
    VARK_BuchungEinfuegenDirektEx: Callable[[int, int, int, Optional[bytes], Optional[bytes], Optional[bytes],
        Optional[bytes], int, Optional[bytes], int, Optional[bytes], Optional[bytes], Optional[bytes], int,
        int], int]
    VARK_SplitBuchungEinfuegen: Callable[[Any, int], int]
    VARK_SplitStart: Callable[[int, int, Optional[bytes], Optional[bytes], int], int]
    VARK_SplitStartEx: Callable[[int, int, Optional[bytes], Optional[bytes], int, int], int]
    VARK_SplitEinfuegen: Callable[[Optional[bytes], int, Optional[bytes], int, Optional[bytes],
        Optional[bytes], Optional[bytes], Optional[bytes]], int]
    VARK_SplitEinfuegenEx: Callable[[Optional[bytes], int, Optional[bytes], int, Optional[bytes],
        Optional[bytes], Optional[bytes], Optional[bytes], int], int]
    VARK_SplitEnde: Callable[[int, int], int]
    VARK_Peko: Callable[[int, int, Any, int], int]
    VARK_PekoDirekt: Callable[[int, int, int, int, Optional[bytes], Optional[bytes], Optional[bytes],
        Optional[bytes], Optional[bytes], Optional[bytes], Optional[bytes], Optional[bytes], Optional[bytes],
        Optional[bytes], Optional[bytes], Optional[bytes], Optional[bytes], Optional[bytes], int, int,
        Optional[bytes], int, int], int]
    VARK_HoleFreieKontonr: Callable[[int, int, Any], int]
    VARK_ExistiertKonto: Callable[[int, Optional[bytes], int], int]
    VARK_HoleSaldo: Callable[[int, Optional[bytes], int, int, int, Any], int]
    VARK_InitHoleBube: Callable[[int, Optional[bytes], int], int]
    VARK_HoleBube: Callable[[Any, Any, Any, Any, Any, Any, Any, Any, int, Any, Any, Any], int]
    VARK_BeendeHolen: Callable[[], int]
    VARK_InitHoleKonto: Callable[[int, int, Optional[bytes], int], int]
    VARK_HoleSako: Callable[[Any, Any, Any, Any, Any, Any], int]
    VARK_HolePeko: Callable[[Any, Any, Any, Any, Any, Any, Any, Any, Any, Any, Any, Any, Any, Any, Any, Any,
        int, Any, Any, Any], int]
    VARK_InitHoleOP: Callable[[int, Optional[bytes], int, int], int]
    VARK_HoleOP: Callable[[Any, Any, Any, Any, Any, Any, Any, Any, int, Any, Any, Any], int]
    VARK_HoleMandantenNr: Callable[[Optional[int]], int]
    VARK_HoleStapelNr: Callable[[Optional[int], int], int]
    VARK_HoleKonto: Callable[[Optional[int], int, int, Optional[bytes], Optional[bytes], Any], int]
    VARK_HoleZahlungsziel: Callable[[Optional[int], int], int]
    VARK_HoleKostenschablone: Callable[[Optional[int], int], int]
    VARK_InitReports: Callable[[int, int, Optional[bytes], Optional[int]], int]
    VARK_IsMessage: Callable[[Any], int]
    VARK_Kontenplan: Callable[[int, Optional[int], Any], Optional[int]]
    VARK_SummenSaldenListe: Callable[[int, Optional[int], Any], Optional[int]]
    VARK_HauptAbschluss: Callable[[int, Optional[int], Any], Optional[int]]
    VARK_Bilanz: Callable[[int, int, Optional[int], Any], Optional[int]]
    VARK_GUV: Callable[[int, Optional[int], Any], Optional[int]]
    VARK_Buchungsjournal: Callable[[int, Optional[int], Any], Optional[int]]
    VARK_Kontenblatt: Callable[[int, int, Optional[int], Any], Optional[int]]
    VARK_OPListe: Callable[[int, Optional[int], Any], Optional[int]]
    VARK_UmsatzStatistik: Callable[[int, Optional[int], Any], Optional[int]]
    VARK_UmsatzSteuerVoranmeldung: Callable[[int, Optional[int], Any], Optional[int]]
    VARK_UmsatzSteuerVerprobung: Callable[[int, Optional[int], Any], Optional[int]]
    VARK_ZusammenfassendeMeldung: Callable[[int, Optional[int], Any], Optional[int]]
    VARK_KostenSaldenListe: Callable[[int, Optional[int], Any], Optional[int]]
    VARK_KostenstellenListe: Callable[[int, Optional[int], Any], Optional[int]]
    VARK_Kostenjournal: Callable[[int, Optional[int], Any], Optional[int]]
    VARK_KostenAufteilung: Callable[[int, Optional[int], Any], Optional[int]]

    def __init__(self, library: ctypes.CDLL) -> None:
        for name, (result, arguments) in PROTOTYPES.items():
            function = getattr(library, name)
            function.restype = result
            function.argtypes = arguments
            setattr(self, name, function)
