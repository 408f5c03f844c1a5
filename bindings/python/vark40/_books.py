"""The books of a Mandant, as one thread works in them."""

from __future__ import annotations

import ctypes
import datetime
from decimal import Decimal
from typing import Any, Callable, Generic, Iterator, Optional, Sequence, TypeVar, Union

from . import _values as values
from ._declarations import (
    Aktion,
    BuchungEingabe,
    Ergebnis,
    Form,
    Kontoart,
    ParamFlag,
    PekoEingabe,
    ReportParams,
    SplitEingabe,
    TeilbuchungEingabe,
)
from ._errors import BadValue, CursorEnded, Refused, VarkError, error_of
from ._library import need_ready
from ._records import (
    Buchung,
    Buchungssatz,
    OffenerPosten,
    Personenkonto,
    Sachkonto,
    Splitbuchung,
    Teilbuchung,
)
from ._reports import Bericht, Berichtsansicht, Zeitspanne, make_report, put_range
from ._thread import OfThread, begin_hearing, end_hearing, state

_PERSONAL = (Kontoart.KREDITOR, Kontoart.DEBITOR)
_MOST_PARTS = 10  # of the library's structure

T = TypeVar("T")


class Cursor(OfThread, Generic[T]):
    """An iterator over records of the books.

    A thread has one cursor: the next reading that begins on it ends this one, and going on with it then
    raises `CursorEnded`. Who needs two at once takes a list of the first.
    """

    def __init__(self, begun: int, deliver: Callable[[], tuple[Callable[[], T], bool]]) -> None:
        super().__init__()
        self._deliver = deliver
        self._is_over = begun == Ergebnis.ABGEBROCHEN
        state().cursor = None if self._is_over else self

    def __iter__(self) -> Iterator[T]:
        return self

    def __next__(self) -> T:
        self._need_thread()
        if self._is_over:
            raise StopIteration
        if state().cursor is not self:
            raise CursorEnded(
                "Inzwischen wurde in diesem Thread anderes gelesen.", Ergebnis.FEHLER_NICHT_BEGONNEN
            )
        try:
            make, is_last = self._deliver()
        except VarkError:
            self._end()
            raise
        if is_last:
            self._end()
        return make()  # a value that is none raises for this record alone: the next one can be read

    def _end(self) -> None:
        self._is_over = True
        state().cursor = None

    def close(self) -> None:
        """Ends reading early; once it is over this does nothing."""
        self._need_thread()
        if not self._is_over and state().cursor is self:
            self._exports.VARK_BeendeHolen()
            self._end()
        self._is_over = True


class Buecher(OfThread):
    """The books of Mandant number `mandant`, for the thread that opens them.

    >>> with Buecher(1) as buecher:
    ...     buecher.saldo("1840")

    Which books these are says the library's configuration (`tolka.ini`, `vark.ini`). Every method raises a
    `VarkError` with the library's own words when the books refuse; they are as they were then. Message boxes
    are never shown while books are open on a thread, questions get the answer that does the least.
    """

    def __init__(self, mandant: int) -> None:
        super().__init__()
        self.mandant = values.number(mandant, "mandant", 1)
        self._is_open = True
        begin_hearing(self._parts)

    def close(self) -> None:
        """Closes the thread's tables when these are its last open books."""
        self._need_thread()
        if self._is_open:
            self._is_open = False
            end_hearing(self._exports, self._parts)

    def _begin(self) -> int:
        """Begins a call: on the right thread, with open books. What to tell the library as showMessages."""
        self._need_thread()
        if not self._is_open:
            raise CursorEnded("Die Bücher sind geschlossen.")
        return self._show_messages()

    # ---- Booking ----

    def buchen(self, buchung: Union[Buchung, Splitbuchung]) -> None:
        """Writes a booking into its Stapel, whole or not at all; it is on disk when this returns."""
        if isinstance(buchung, Splitbuchung):
            self._split(buchung)
            return
        if not isinstance(buchung, Buchung):
            raise TypeError(f"buchung must be Buchung or Splitbuchung, not {type(buchung).__name__}")
        record = _fill_buchung(BuchungEingabe(Mandant=self.mandant), buchung)
        shown = self._begin()
        self._need_written(self._exports.VARK_BuchungEinfuegen(ctypes.byref(record), shown))

    def _need_written(self, code: int) -> None:
        # An unknown Kostenschablone in a part is told to the person alone: the result is that of a booking.
        if code == Ergebnis.GUT and self._said():
            code = Ergebnis.FEHLER_KOSTENSCHABLONE
        if code != Ergebnis.GUT:
            raise error_of(code, self._said(), "habenkonto" if code == Ergebnis.FEHLER_KONTO else None)

    def _split(self, split: Splitbuchung) -> None:
        records = [_fill_part(TeilbuchungEingabe(), part, at) for at, part in enumerate(split.teile)]
        datum = values.day(split.datum, "datum")
        beleg = _text(SplitEingabe, "Beleg", split.beleg, "beleg")
        stapel = values.number(split.stapel, "stapel")
        kennzeichen = values.number(split.kennzeichen, "kennzeichen", 0, 255)
        zahlungsziel = values.number(split.zahlungsziel, "zahlungsziel")
        shown = self._begin()
        if len(records) <= _MOST_PARTS:
            whole = SplitEingabe(
                Mandant=self.mandant, Stapel=stapel, Datum=datum, Beleg=beleg, Anzahl=len(records),
                Kennzeichen=kennzeichen, Zahlungsziel=zahlungsziel,
            )
            whole.Teil[0 : len(records)] = records
            self._need_written(self._exports.VARK_SplitBuchungEinfuegen(ctypes.byref(whole), shown))
            return
        functions = self._exports
        self._need(
            functions.VARK_SplitStartEx(self.mandant, stapel, datum, beleg, kennzeichen, zahlungsziel)
        )
        for record in records:
            added = functions.VARK_SplitEinfuegenEx(
                record.Sollkonto, record.SollArt, record.Habenkonto, record.HabenArt, record.Brutto,
                record.Steuersatz, record.Steuerbetrag, record.Text, record.Kostenschablone,
            )
            if added != Ergebnis.GUT:
                functions.VARK_SplitEnde(0, 0)
                raise error_of(Ergebnis.FEHLER_KEIN_SPEICHER)
        self._need_written(functions.VARK_SplitEnde(1, shown))

    # ---- Personal accounts ----

    def konto_anlegen(self, konto: Personenkonto) -> None:
        """Makes a new Kreditor or Debitor."""
        self._peko(Aktion.ANLEGEN, konto)

    def konto_aendern(self, konto: Personenkonto) -> None:
        """Replaces every field of the account of that number, or of that Kuerzel if the number is empty."""
        self._peko(Aktion.AENDERN, konto)

    def konto_loeschen(self, art: Kontoart, konto: str = "", kuerzel: str = "") -> None:
        """Deletes the account of that number or Kuerzel."""
        self._peko(Aktion.LOESCHEN, Personenkonto(art, konto, kuerzel))

    def _peko(self, aktion: Aktion, konto: Personenkonto) -> None:
        if not isinstance(konto, Personenkonto):
            raise TypeError(f"konto must be Personenkonto, not {type(konto).__name__}")
        art = _kind(konto.art, "art")
        record = PekoEingabe(Mandant=self.mandant)
        for name, attribute in _PEKO_TEXTS.items():
            setattr(record, name, _text(PekoEingabe, name, getattr(konto, attribute), attribute))
        record.Skonto = values.rate(konto.skonto, "skonto", Ergebnis.FEHLER_SKONTO)
        record.Wert1 = values.number(konto.wert1, "wert1", 0, 0xFFFF)
        record.Wert2 = values.number(konto.wert2, "wert2", 0, 0xFFFF)
        record.Mahnkennziffer = values.number(konto.mahnkennziffer, "mahnkennziffer")
        record.Zahlungsziel = values.number(konto.zahlungsziel, "zahlungsziel")
        shown = self._begin()
        code = self._exports.VARK_Peko(aktion, art, ctypes.byref(record), shown)
        is_blz = code == Ergebnis.FEHLER_BANK and "BLZ" in self._said()
        self._need(code, "blz" if is_blz else None)

    # ---- Asking ----

    def freie_kontonummer(self, art: Kontoart) -> str:
        """The next free number for a new Kreditor or Debitor."""
        kind = _kind(art, "art")
        self._begin()
        out = ctypes.create_string_buffer(8)
        self._need(self._exports.VARK_HoleFreieKontonr(self.mandant, kind, out))
        return values.decoded(out.value)

    def existiert(self, konto: str, art: Kontoart = Kontoart.SACHKONTO) -> bool:
        """Whether there is such an account of that kind."""
        number, kind = values.text(konto, "konto", 7), _kind(art, "art")
        self._begin()
        return self._need(self._exports.VARK_ExistiertKonto(self.mandant, number, kind)) == Ergebnis.GUT

    def saldo(self, konto: str, art: Kontoart = Kontoart.SACHKONTO) -> Decimal:
        """The balance over the fiscal year with what was carried forward, positive on the Soll side; what is
        still in a Stapel doesn't count."""
        number, kind = values.text(konto, "konto", 7), _kind(art, "art")
        shown = self._begin()
        out = ctypes.create_string_buffer(17)
        self._need(self._exports.VARK_HoleSaldo(self.mandant, number, kind, shown, Form.FEST, out))
        return values.amount_out(out.value, "saldo")

    # ---- Reading ----

    def buchungen(self, ab: Optional[datetime.date] = None) -> Cursor[Buchungssatz]:
        """The final bookings of a fiscal year in the order of their dates: of the year of `ab` from that day
        on, without it of the year that is selected."""
        since = b"" if ab is None else values.day(ab, "ab")
        shown = self._begin()
        begun = self._exports.VARK_InitHoleBube(self.mandant, since, shown)
        self._need(begun, "ab" if begun == Ergebnis.FEHLER_DATUM else None)
        return Cursor(begun, self._next_buchung)

    def sachkonten(self, ab: str = "") -> Cursor[Sachkonto]:
        """The Sachkonten in the order of their numbers, from `ab` on."""
        return Cursor(self._begin_accounts(Kontoart.SACHKONTO, ab), self._next_sachkonto)

    def kreditoren(self, ab: str = "") -> Cursor[Personenkonto]:
        """The Kreditoren likewise."""
        return Cursor(
            self._begin_accounts(Kontoart.KREDITOR, ab), lambda: self._next_personal(Kontoart.KREDITOR)
        )

    def debitoren(self, ab: str = "") -> Cursor[Personenkonto]:
        """The Debitoren likewise."""
        return Cursor(
            self._begin_accounts(Kontoart.DEBITOR, ab), lambda: self._next_personal(Kontoart.DEBITOR)
        )

    def offene_posten(self, art: Kontoart, konto: str = "") -> Cursor[OffenerPosten]:
        """The open items of all Kreditoren or Debitoren, or of one."""
        number, kind = values.text(konto, "konto", 7), _kind(art, "art")
        shown = self._begin()
        return Cursor(
            self._need(self._exports.VARK_InitHoleOP(self.mandant, number, kind, shown)), self._next_item
        )

    def _begin_accounts(self, art: Kontoart, ab: str) -> int:
        since = values.text(ab, "ab", 7)
        shown = self._begin()
        return self._need(self._exports.VARK_InitHoleKonto(self.mandant, art, since, shown))

    def _next_buchung(self) -> tuple[Callable[[], Buchungssatz], bool]:
        self._begin()
        teil, soll_art, haben_art = ctypes.c_uint32(), ctypes.c_uint32(), ctypes.c_uint32()
        datum, beleg, text, soll, haben, betrag, satz, steuer = _buffers(11, 9, 40, 8, 8, 17, 8, 17)
        code = self._need(
            self._exports.VARK_HoleBube(
                ctypes.byref(teil), datum, beleg, text, soll, ctypes.byref(soll_art), haben,
                ctypes.byref(haben_art), Form.FEST, betrag, satz, steuer,
            )
        )
        def make() -> Buchungssatz:
            return Buchungssatz(
                teil.value,
                values.day_out(datum.value, "datum"),
                values.decoded(beleg.value),
                values.decoded(text.value),
                values.decoded(soll.value),
                Kontoart(soll_art.value),
                values.decoded(haben.value),
                Kontoart(haben_art.value),
                values.amount_out(betrag.value, "brutto"),
                values.rate_out(satz.value, "steuersatz"),
                values.amount_out(steuer.value, "steuerbetrag"),
            )

        return make, code == Ergebnis.LETZTER

    def _next_sachkonto(self) -> tuple[Callable[[], Sachkonto], bool]:
        self._begin()
        konto, kuerzel, name = _buffers(8, 10, 50)
        zuordnung, fest, kosten = ctypes.c_uint32(), ctypes.c_uint32(), ctypes.c_uint32()
        code = self._exports.VARK_HoleSako(
            konto, kuerzel, name, ctypes.byref(zuordnung), ctypes.byref(fest), ctypes.byref(kosten)
        )
        # The last Sachkonto comes with the code of a failure; a failure has been told, or has given nothing.
        is_last = code == Ergebnis.FEHLER_DATENBANK and konto.value != b"" and not self._said()
        if not is_last:
            self._need(code)

        def make() -> Sachkonto:
            return Sachkonto(
                values.decoded(konto.value),
                values.decoded(kuerzel.value),
                values.decoded(name.value),
                zuordnung.value,
                fest.value != 0,
                kosten.value != 0,
            )

        return make, is_last

    def _next_personal(self, art: Kontoart) -> tuple[Callable[[], Personenkonto], bool]:
        self._begin()
        texts = dict(zip(_PEKO_OUT, _buffers(*_PEKO_OUT.values())))
        (skonto,) = _buffers(8)
        wert1, wert2, ziel = ctypes.c_uint32(), ctypes.c_uint32(), ctypes.c_uint32()
        mahnkennziffer = ctypes.c_uint32()
        deliver: Callable[..., int] = self._exports.VARK_HolePeko
        code = self._need(
            deliver(
                *texts.values(), ctypes.byref(wert1), ctypes.byref(wert2), Form.FEST, skonto,
                ctypes.byref(mahnkennziffer), ctypes.byref(ziel),
            )
        )
        def make() -> Personenkonto:
            names = {name: values.decoded(text.value) for name, text in texts.items()}
            return Personenkonto(
                art=art,
                konto=names["konto"],
                kuerzel=names["kuerzel"],
                name1=names["name1"],
                name2=names["name2"],
                ust_id=names["ust_id"],
                land=names["land"],
                waehrung=names["waehrung"],
                plz=names["plz"],
                adresse1=names["adresse1"],
                adresse2=names["adresse2"],
                blz=names["blz"],
                bankkonto=names["bankkonto"],
                bank=names["bank"],
                gegenkonto=names["gegenkonto"],
                wert1=wert1.value & 0xFFFF,  # kept with 16 bits, and given with the sign of those
                wert2=wert2.value & 0xFFFF,
                skonto=values.rate_out(skonto.value, "skonto"),
                mahnkennziffer=ctypes.c_int32(mahnkennziffer.value).value,
                zahlungsziel=ziel.value,
            )

        return make, code == Ergebnis.LETZTER

    def _next_item(self) -> tuple[Callable[[], OffenerPosten], bool]:
        self._begin()
        konto, ref1, ref2, datum, termin, skonto, name, text, betrag, betrag2, waehrung = _buffers(
            8, 10, 10, 11, 11, 11, 26, 26, 17, 17, 5
        )
        code = self._need(
            self._exports.VARK_HoleOP(
                konto, ref1, ref2, datum, termin, skonto, name, text, Form.FEST, betrag, betrag2, waehrung
            )
        )
        def make() -> OffenerPosten:
            return OffenerPosten(
                values.decoded(konto.value),
                values.decoded(ref1.value),
                values.decoded(ref2.value),
                values.day_out(datum.value, "datum"),
                values.day_out(termin.value, "termin"),
                values.day_out(skonto.value, "skonto_bis"),
                values.decoded(name.value),
                values.decoded(text.value),
                values.amount_out(betrag.value, "betrag"),
                values.amount_out(betrag2.value, "betrag2"),
                values.decoded(waehrung.value),
            )

        return make, code == Ergebnis.LETZTER

    # ---- Choosing ----

    def waehle_stapel(self, verwalten: bool = False) -> Optional[int]:
        """The number of the Stapel that the person chooses, None if they cancel; with `verwalten` they may
        make, change and delete them as well."""
        self._begin()
        mandant = -self.mandant if verwalten else self.mandant
        return self._need(self._exports.VARK_HoleStapelNr(None, mandant)) or None

    def waehle_konto(self, art: Kontoart, von: str = "", bis: str = "") -> Optional[str]:
        """The account that the person chooses between two numbers, None if they cancel."""
        kind = _kind(art, "art")
        low, high = values.text(von, "von", 7), values.text(bis, "bis", 7)
        self._begin()
        out = ctypes.create_string_buffer(8)
        code = self._exports.VARK_HoleKonto(None, self.mandant, kind, low, high, out)
        if code in (-1, -2):
            told = "In diesem Bereich gibt es kein Konto." if code == -1 else "Das sind zu viele Konten."
            raise Refused(self._said() or told, None, "von")
        return values.decoded(out.value) if self._need(code) == Ergebnis.GUT else None

    def waehle_zahlungsziel(self) -> Optional[int]:
        """The number of the Zahlungsziel that the person chooses, None if they cancel."""
        self._begin()
        return self._need(self._exports.VARK_HoleZahlungsziel(None, self.mandant)) or None

    def waehle_kostenschablone(self) -> Optional[int]:
        """The number of the Kostenschablone that the person chooses, None if they cancel."""
        self._begin()
        return self._need(self._exports.VARK_HoleKostenschablone(None, self.mandant)) or None

    # ---- Reports ----

    def bericht(
        self,
        bericht: Bericht,
        zeit: Optional[Zeitspanne] = None,
        *,
        art: Optional[Kontoart] = None,
        von: str = "",
        bis: str = "",
        archivjahr: Optional[int] = None,
        anweisungen: Sequence[str] = (),
        fragen: bool = False,
    ) -> Berichtsansicht:
        """Makes a report. Its parameter dialog is filled in and accepted unseen, or with `fragen` shown.

        `art` with `von` and `bis` chooses accounts where the report has a range of them. `anweisungen` do in
        the dialog what these arguments have no word for, one instruction each in the language of scripts, as
        "check 1002"; one that does not fit refuses the report. A period that the books do not have is
        refused as well.
        """
        if not isinstance(bericht, Bericht):
            raise TypeError(f"bericht must be Bericht, not {type(bericht).__name__}")
        if zeit is not None and not isinstance(zeit, Zeitspanne):
            raise TypeError(f"zeit must be Zeitspanne, not {type(zeit).__name__}")
        params = ReportParams()
        if zeit is not None:
            if zeit.bis is not None and zeit.von is None and not bericht.is_per_day:
                raise BadValue("Dieser Bericht beginnt nicht mit dem Geschäftsjahr.", field="zeit")
            zeit.put(params)
        if art is not None:
            put_range(params, _kind(art, "art"), von, bis)
        elif von or bis:
            raise BadValue("Zu einem Bereich von Konten gehört ihre Art.", field="art")
        if archivjahr is not None:
            params.ParamFlags |= ParamFlag.ARCHIVJAHR
            params.ArchivJahr = values.number(archivjahr, "archivjahr", 1980, 2079)
        self._begin()
        return make_report(self, bericht, params, zeit, anweisungen, fragen)


def waehle_mandant() -> Optional[int]:
    """The number of the Mandant that the person chooses, None if they cancel or there is none to choose."""
    chosen = need_ready().VARK_HoleMandantenNr(None)
    if chosen == Ergebnis.FEHLER_DATENBANK:
        raise error_of(chosen)
    return chosen if chosen > 0 else None


# Texts of PekoEingabe and the attributes that they are.
_PEKO_TEXTS = {
    "Konto": "konto",
    "Kuerzel": "kuerzel",
    "Name1": "name1",
    "Name2": "name2",
    "UstId": "ust_id",
    "Land": "land",
    "Waehrung": "waehrung",
    "Plz": "plz",
    "Adresse2": "adresse2",
    "Adresse1": "adresse1",
    "Blz": "blz",
    "Bankkonto": "bankkonto",
    "Bank": "bank",
    "Gegenkonto": "gegenkonto",
}

# What VARK_HolePeko gives, in its order, with the bytes of each.
_PEKO_OUT = {
    "konto": 8,
    "kuerzel": 10,
    "name1": 26,
    "name2": 26,
    "ust_id": 47,
    "land": 4,
    "waehrung": 5,
    "plz": 7,
    "adresse2": 31,
    "adresse1": 31,
    "blz": 9,
    "bankkonto": 12,
    "bank": 28,
    "gegenkonto": 8,
}


def _buffers(*sizes: int) -> list[Any]:
    return [ctypes.create_string_buffer(size) for size in sizes]


def _kind(art: Kontoart, field: str) -> int:
    return values.number(art, field, 0)


def _text(structure: type[ctypes.Structure], name: str, value: str, field: str) -> bytes:
    return values.text(value, field, getattr(structure, name).size - 1)


def _fill_part(record: Any, given: Union[Buchung, Teilbuchung], at: Optional[int] = None) -> Any:
    """What a booking and one of its parts have in common."""
    prefix = "" if at is None else f"teile[{at}]."
    kind = type(record)
    record.Sollkonto = _text(kind, "Sollkonto", given.sollkonto, prefix + "sollkonto")
    record.SollArt = _kind(given.soll_art, prefix + "soll_art")
    record.Habenkonto = _text(kind, "Habenkonto", given.habenkonto, prefix + "habenkonto")
    record.HabenArt = _kind(given.haben_art, prefix + "haben_art")
    if given.brutto is None:
        raise TypeError(f"{prefix}brutto must be Decimal or int, not None")
    record.Brutto = values.amount(given.brutto, prefix + "brutto", Ergebnis.FEHLER_BRUTTO)
    record.Steuersatz = values.rate(given.steuersatz, prefix + "steuersatz", Ergebnis.FEHLER_STEUERSATZ)
    record.Steuerbetrag = values.amount(
        given.steuerbetrag, prefix + "steuerbetrag", Ergebnis.FEHLER_STEUERBETRAG
    )
    record.Text = _text(kind, "Text", given.text, prefix + "text")
    record.Kostenschablone = values.number(given.kostenschablone, prefix + "kostenschablone")
    return record


def _fill_buchung(record: BuchungEingabe, buchung: Buchung) -> BuchungEingabe:
    _fill_part(record, buchung)
    record.Stapel = values.number(buchung.stapel, "stapel")
    record.Datum = values.day(buchung.datum, "datum")
    record.Beleg = _text(BuchungEingabe, "Beleg", buchung.beleg, "beleg")
    record.Kennzeichen = values.number(buchung.kennzeichen, "kennzeichen", 0, 255)
    record.Zahlungsziel = values.number(buchung.zahlungsziel, "zahlungsziel")
    return record
