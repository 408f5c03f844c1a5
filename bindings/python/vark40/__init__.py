"""VARK40: the books of MERIDA for Python programs.

>>> from datetime import date
>>> from decimal import Decimal
>>> import vark40
>>> with vark40.Buecher(1) as buecher:
...     buecher.buchen(vark40.Buchung(stapel=16, datum=date(1998, 4, 15), beleg="M-0498",
...                                   text="Miete April", sollkonto="8010", habenkonto="1840",
...                                   brutto=Decimal("1500.00")))
...     for posten in buecher.offene_posten(vark40.Kontoart.DEBITOR):
...         print(posten.konto, posten.termin, posten.betrag)

Books are opened by the thread that uses them. Everything that is refused is a `VarkError` with `code`,
`message` and `field`. `vark40.exports()` has the functions of the library as they are,
`vark40.declarations` their structures.
"""

from __future__ import annotations

from . import _declarations as declarations
from ._books import Buecher, Cursor, waehle_mandant
from ._declarations import Ergebnis, Kontoart
from ._errors import (
    BadValue,
    Cancelled,
    CursorEnded,
    Refused,
    Unavailable,
    VarkError,
    WrongThread,
)
from ._library import exports
from ._records import (
    Buchung,
    Buchungssatz,
    OffenerPosten,
    Personenkonto,
    Sachkonto,
    Splitbuchung,
    Teilbuchung,
)
from ._reports import Bericht, Berichtsansicht, Cell, Spalte, Zeitspanne

__all__ = [
    "BadValue",
    "Bericht",
    "Berichtsansicht",
    "Buchung",
    "Buchungssatz",
    "Buecher",
    "Cancelled",
    "Cell",
    "Cursor",
    "CursorEnded",
    "Ergebnis",
    "Kontoart",
    "OffenerPosten",
    "Personenkonto",
    "Refused",
    "Sachkonto",
    "Spalte",
    "Splitbuchung",
    "Teilbuchung",
    "Unavailable",
    "VarkError",
    "WrongThread",
    "Zeitspanne",
    "declarations",
    "exports",
    "waehle_mandant",
]
