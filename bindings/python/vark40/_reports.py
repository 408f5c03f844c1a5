"""Reports: made unseen, and handed over as bytes, as files or as rows."""

from __future__ import annotations

import ctypes
import datetime
import enum
import json
import os
import re
import shutil
import tempfile
from contextlib import contextmanager
from dataclasses import dataclass
from decimal import Decimal
from pathlib import Path
from typing import Any, Iterator, Optional, Sequence, Union

from . import _values as values
from ._declarations import Ergebnis, Kontoart, ParamFlag, ReportParams, VarkMessage, Zeitraum
from ._errors import BadValue, Cancelled, Refused, Unavailable, VarkError
from ._library import Parts
from ._thread import OfThread

Cell = Union[str, Decimal, int, bool, datetime.date, None]

_FIRST_YEAR = 1980  # that the books count from
_OVERLAPPED_WINDOW = 0x00CF0000
_SHOWN = 5
_FIRST_CHILD, _NEXT_SIBLING = 5, 2
_VIEW_CLASS = b"rsView"


class Bericht(enum.Enum):
    """The reports, each with the function that makes it and what that takes behind the Mandant."""

    KONTENPLAN = ("VARK_Kontenplan",)
    SUMMEN_SALDEN_LISTE = ("VARK_SummenSaldenListe",)
    HAUPTABSCHLUSS = ("VARK_HauptAbschluss",)
    BILANZ = ("VARK_Bilanz", 0)
    EROEFFNUNGSBILANZ = ("VARK_Bilanz", 1)
    GUV = ("VARK_GUV",)
    BUCHUNGSJOURNAL = ("VARK_Buchungsjournal",)
    KONTENBLATT = ("VARK_Kontenblatt", 0)
    KOSTENBLATT = ("VARK_Kontenblatt", 1)
    OP_LISTE = ("VARK_OPListe",)
    UMSATZSTATISTIK = ("VARK_UmsatzStatistik",)
    UMSATZSTEUERVORANMELDUNG = ("VARK_UmsatzSteuerVoranmeldung",)
    UMSATZSTEUERVERPROBUNG = ("VARK_UmsatzSteuerVerprobung",)
    ZUSAMMENFASSENDE_MELDUNG = ("VARK_ZusammenfassendeMeldung",)
    KOSTENSALDENLISTE = ("VARK_KostenSaldenListe",)
    KOSTENSTELLENLISTE = ("VARK_KostenstellenListe",)
    KOSTENJOURNAL = ("VARK_Kostenjournal",)
    KOSTENAUFTEILUNG = ("VARK_KostenAufteilung",)

    @property
    def is_per_day(self) -> bool:
        """Whether its period can be `Zeitspanne.per`."""
        return self in (Bericht.SUMMEN_SALDEN_LISTE, Bericht.BILANZ, Bericht.GUV)

    @property
    def counts_by_calendar(self) -> bool:
        """Whether quarters and years are those of the calendar."""
        return self in (
            Bericht.UMSATZSTEUERVORANMELDUNG,
            Bericht.UMSATZSTEUERVERPROBUNG,
            Bericht.ZUSAMMENFASSENDE_MELDUNG,
        )


@dataclass(frozen=True)
class Zeitspanne:
    """A period of a report, made by one of the methods below."""

    code: int
    jahr: int = 0
    von: Optional[datetime.date] = None
    bis: Optional[datetime.date] = None

    @staticmethod
    def ganzes_jahr(jahr: int) -> Zeitspanne:
        """A fiscal year, named by the calendar year in which it begins; in tax reports a calendar year."""
        return Zeitspanne(Zeitraum.JAHR, _year(jahr))

    @staticmethod
    def quartal(jahr: int, quartal: int) -> Zeitspanne:
        """One of the four quarters of such a year."""
        return Zeitspanne(Zeitraum.QUARTAL_1 + values.number(quartal, "quartal", 1, 4) - 1, _year(jahr))

    @staticmethod
    def monat(jahr: int, monat: int) -> Zeitspanne:
        """Month 1 to 12 of a fiscal year: where it begins in July, month 1 is July."""
        return Zeitspanne(values.number(monat, "monat", 1, 12), _year(jahr))

    @staticmethod
    def tage(von: datetime.date, bis: datetime.date) -> Zeitspanne:
        """From one day to another of the same fiscal year."""
        values.day(von, "von"), values.day(bis, "bis")
        if von > bis:
            raise BadValue("Das Von-Datum darf nicht hinter dem Bis-Datum liegen!", field="von")
        return Zeitspanne(Zeitraum.TAGE, 0, von, bis)

    @staticmethod
    def per(tag: datetime.date) -> Zeitspanne:
        """From the beginning of the fiscal year to a day; of Bilanz, GuV and list of sums alone."""
        values.day(tag, "tag")
        return Zeitspanne(Zeitraum.TAGE, 0, None, tag)

    def put(self, params: ReportParams) -> None:
        """Asks a report for this period."""
        params.ParamFlags |= ParamFlag.ZEITRAUM
        params.Zeitraum = self.code
        if self.bis is None:
            params.ParamFlags |= ParamFlag.JAHR
            params.JahrIndex = self.jahr - _FIRST_YEAR
            return
        params.ParamFlags |= ParamFlag.DATEN
        params.VonDatum = values.day(self.von or self.bis, "von")
        params.BisDatum = values.day(self.bis, "bis")

    def is_kept(self, params: ReportParams, by_calendar: bool) -> bool:
        """Whether the report took the period: what it does not have it corrects in silence."""
        if params.Zeitraum != self.code:
            return False
        if self.bis is not None:
            is_from_kept = self.von is None or params.VonDatum == values.day(self.von, "von")
            return is_from_kept and params.BisDatum == values.day(self.bis, "bis")
        # A calendar period comes back with the fiscal year of its first day.
        is_calendar = by_calendar and self.code >= Zeitraum.QUARTAL_1
        has_year = bool(params.ParamFlags & ParamFlag.JAHR)
        return is_calendar or not has_year or params.JahrIndex == self.jahr - _FIRST_YEAR


def _year(jahr: int) -> int:
    return values.number(jahr, "jahr", 1980, 2079)


def put_range(params: ReportParams, art: int, von: str, bis: str) -> None:
    """Asks a report for the accounts of a kind between two numbers."""
    names = {
        Kontoart.SACHKONTO: "Sachkonto",
        Kontoart.KREDITOR: "Kreditor",
        Kontoart.DEBITOR: "Debitor",
        Kontoart.KOSTENSTELLE: "Kostenstelle",
    }
    if art not in names:
        raise BadValue("Die Kontoart ist unzulässig!", Ergebnis.FEHLER_KONTOART, "art")
    params.ParamFlags |= ParamFlag.KONTOART | ParamFlag.KONTEN
    params.KontoArt = art
    setattr(params, names[Kontoart(art)] + "Von", values.text(von, "von", 7))
    setattr(params, names[Kontoart(art)] + "Bis", values.text(bis, "bis", 7))


@dataclass(frozen=True)
class Spalte:
    """A column: its name in rows, its heading, its form (text, amount, rate, number or flag)."""

    name: str
    titel: str
    form: str


class Berichtsansicht(OfThread):
    """A finished report: a window that nobody sees until `zeigen`. `close`, or the end of `with`, ends it."""

    def __init__(self, window: int, bericht: Bericht, windows: Parts) -> None:
        super().__init__()
        self.bericht = bericht
        self._window = window
        self._windows = windows
        self._view = _view_in(windows, window)
        self._content: Optional[dict[str, Any]] = None

    def close(self) -> None:
        """Ends the report."""
        self._need_thread()
        if self._window and self._windows.IsWindow(self._window):
            self._windows.DestroyWindow(self._window)
        self._window = 0

    @contextmanager
    def _exported(self, ending: str) -> Iterator[Path]:
        """The report in a file of a directory of its own."""
        self._need_thread()
        if not self._window or not self._windows.IsWindow(self._window):
            raise VarkError("Der Bericht ist geschlossen.")
        with tempfile.TemporaryDirectory(prefix="vark40-") as directory:
            path = Path(directory) / f"bericht{ending}"
            if not self._windows.ExportView(self._view, os.fsencode(path)):
                raise VarkError("Der Bericht konnte nicht geschrieben werden.")
            yield path

    def _bytes(self, ending: str) -> bytes:
        with self._exported(ending) as path:
            return path.read_bytes()

    def pdf(self) -> bytes:
        """Its pages."""
        return self._bytes(".pdf")

    def csv(self) -> bytes:
        """UTF-8 with a byte order mark, semicolons and decimal commas."""
        return self._bytes(".csv")

    def json(self) -> bytes:
        """One object: report, title, columns, rows; UTF-8."""
        return self._bytes(".json")

    def html(self) -> bytes:
        """One page that needs nothing else; UTF-8."""
        return self._bytes(".html")

    def text(self) -> str:
        """A table for a terminal."""
        return self._bytes(".txt").decode("utf-8")

    def speichern(self, pfad: Union[str, os.PathLike[str]]) -> None:
        """Writes it to a file, as pdf, csv, json, html or txt by its ending. A file that is there is replaced
        when the new one is whole; an `OSError` says what the system has against it."""
        target = Path(os.fspath(pfad))
        if target.suffix.lower() not in (".pdf", ".csv", ".json", ".html", ".txt"):
            raise BadValue("Die Endung ist keine von .pdf, .csv, .json, .html und .txt.", field="pfad")
        with self._exported(target.suffix.lower()) as path:
            descriptor, beside = tempfile.mkstemp(prefix=f".{target.name}.", dir=target.parent)
            try:
                with open(descriptor, "wb") as written, open(path, "rb") as source:
                    shutil.copyfileobj(source, written)
                    written.flush()
                    os.fsync(descriptor)
                mask = os.umask(0)
                os.umask(mask)
                os.chmod(beside, 0o666 & ~mask)
                os.replace(beside, target)
            except BaseException:
                os.unlink(beside)
                raise

    def _read(self) -> dict[str, Any]:
        if self._content is None:
            self._content = json.loads(self.json(), parse_float=Decimal)
        return self._content

    @property
    def titel(self) -> str:
        """The report's title."""
        return str(self._read()["title"])

    @property
    def spalten(self) -> list[Spalte]:
        """Its columns, in their order."""
        return [Spalte(each["name"], each["title"], each["form"]) for each in self._read()["columns"]]

    def zeilen(self) -> list[dict[str, Cell]]:
        """Its rows without heads and sums, each with all columns: `pandas.DataFrame(ansicht.zeilen())`.

        Amounts and rates are `Decimal`, days `datetime.date`; what is empty is None.
        """
        columns = self.spalten
        rows = [row for row in self._read()["rows"] if row.get("kind", "line") == "line"]
        return [{column.name: _cell(row.get(column.name), column) for column in columns} for row in rows]

    def zeigen(self) -> None:
        """Shows it to the person and returns when they have closed it. `Unavailable` without a screen."""
        self._need_thread()
        if not self._windows.HasUser():
            raise Unavailable("Für die Anzeige fehlt ein Bildschirm.")
        self._windows.ShowWindow(self._window, _SHOWN)
        message = VarkMessage()
        at = ctypes.byref(message)
        while self._windows.IsWindow(self._window) and self._windows.GetMessage(at, None, 0, 0) > 0:
            if not self._exports.VARK_IsMessage(at):
                self._windows.TranslateMessage(at)
                self._windows.DispatchMessage(at)


_DAYS = {"datum", "gebucht", "termin", "skonto", "angelegt", "von", "bis"}


def _cell(value: Any, column: Spalte) -> Cell:
    if value is None:
        return None
    if column.form in ("amount", "rate"):
        return Decimal(value)
    if column.form == "text" and column.name in _DAYS:
        if value == "":
            return None
        if re.fullmatch(r"\d\d\.\d\d\.\d{4}", value):
            try:
                return datetime.date(int(value[6:]), int(value[3:5]), int(value[:2]))
            except ValueError:
                return str(value)  # a day that no calendar has
    return value  # type: ignore[no-any-return]


def _view_in(windows: Parts, window: int) -> int:
    """The view of a report: the window itself, or where the report lives in a frame, the one inside."""

    def is_view(each: int) -> bool:
        name = ctypes.create_string_buffer(32)
        windows.GetClassName(each, name, len(name))
        return name.value == _VIEW_CLASS

    each = window if is_view(window) else windows.GetWindow(window, _FIRST_CHILD)
    while each and not is_view(each):
        each = windows.GetWindow(each, _NEXT_SIBLING)
    return each or window


def make_report(
    books: Any,
    bericht: Bericht,
    params: ReportParams,
    zeit: Optional[Zeitspanne],
    instructions: Sequence[str],
    asks: bool,
) -> Berichtsansicht:
    """The report for `books`, which have begun a call."""
    windows: Optional[Parts] = books._parts
    if windows is None or windows.ExportView is None:
        raise Unavailable("Neben der Bibliothek fehlen ihr Fenstersystem oder ihr Berichtswesen.")
    for at, instruction in enumerate(instructions):
        if not isinstance(instruction, str):
            raise TypeError(f"anweisungen[{at}] must be str, not {type(instruction).__name__}")
        if "\n" in instruction or "\0" in instruction:
            raise BadValue("Eine Anweisung ist eine Zeile.", field=f"anweisungen[{at}]")
    title = bericht.name.replace("_", " ").title()
    books._exports.VARK_InitReports(_OVERLAPPED_WINDOW, 0, values.text(title, "titel", 80), None)
    make = getattr(books._exports, bericht.value[0])
    played = "".join(f"{instruction}\n" for instruction in instructions).encode("utf-8")
    if not windows.Play(played, 0 if asks else 1):
        raise Unavailable("Dem Fenstersystem fehlt der Speicher.", Ergebnis.FEHLER_KEIN_SPEICHER)
    window = make(books.mandant, *bericht.value[1:], None, ctypes.byref(params))
    reason = ctypes.create_string_buffer(300)
    unfit = windows.Played(reason, len(reason))
    if not window:
        raise _why_not(params, books._said(), instructions, unfit, values.decoded(reason.value), asks)
    made = Berichtsansicht(window, bericht, windows)
    if unfit or (zeit is not None and not asks and not zeit.is_kept(params, bericht.counts_by_calendar)):
        made.close()
        if unfit:
            raise _why_not(params, "", instructions, unfit, values.decoded(reason.value), asks)
        raise Refused("Diesen Zeitraum gibt es in den Büchern nicht.", Ergebnis.FEHLER_DATUM, "zeit")
    return made


def _why_not(
    params: ReportParams, said: str, instructions: Sequence[str], unfit: int, reason: str, asks: bool
) -> VarkError:
    if unfit:
        where = f"anweisungen[{unfit - 1}]"
        return Refused(f"„{instructions[unfit - 1]}“ paßt nicht: {reason}", None, where)
    if said:
        return Refused(said)
    if params.ViewResult == 1:
        return Refused("Der Bericht wurde gedruckt statt angezeigt.")
    return Cancelled("Der Bericht wurde abgebrochen.") if asks else Refused(
        "Der Bericht wurde nicht erstellt; vielleicht gibt es den Mandanten nicht."
    )
