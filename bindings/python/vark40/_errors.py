"""What can go wrong, each with code, message and field."""

from __future__ import annotations

from typing import Optional

from ._declarations import RESULTS, Ergebnis


class VarkError(Exception):
    """Anything that this package refuses or reports.

    `code` is the library's result (`Ergebnis` where it has a name), None where this package found the fault
    before any call. `message` is German, meant for people. `field` names the argument or attribute that is at
    fault, `teile[2].brutto` for one of a part; None where none is.
    """

    def __init__(self, message: str, code: Optional[int] = None, field: Optional[str] = None) -> None:
        super().__init__(message)
        self.message = message
        self.code = named(code)
        self.field = field

    def __str__(self) -> str:
        where = f"{self.field}: " if self.field else ""
        return f"{where}{self.message}" + (f" ({int(self.code)})" if self.code is not None else "")

    def __reduce__(self) -> tuple[type[VarkError], tuple[str, Optional[int], Optional[str]]]:
        return type(self), (self.message, self.code, self.field)


class Refused(VarkError):
    """The books refuse what was asked for; they are as they were."""


class Cancelled(Refused):
    """The person, or nobody being there, cancelled a dialog that the call needed answered."""


class BadValue(VarkError, ValueError):
    """A value that the books cannot hold, found before the call."""


class Unavailable(VarkError):
    """Library or books cannot be used: not found, of another version, no data path, no rights, damaged."""


class WrongThread(VarkError):
    """Books, an iterator or a report were used on another thread than the one they belong to."""


class CursorEnded(VarkError):
    """An iterator went on after another reading of its thread began: a thread has one cursor."""


def named(code: Optional[int]) -> Optional[int]:
    """`code` as an `Ergebnis` where it is one."""
    try:
        return code if code is None else Ergebnis(code)
    except ValueError:
        return code


_UNAVAILABLE = {
    Ergebnis.FEHLER_DATENBANK,
    Ergebnis.FEHLER_KEIN_DATENPFAD,
    Ergebnis.FEHLER_KEIN_SPEICHER,
}


def error_of(code: int, said: str = "", field: Optional[str] = None) -> VarkError:
    """The exception for a result of the library; `said` is what it told the person."""
    known_field, text = RESULTS.get(code, (None, f"Abgelehnt mit dem Code {code}."))
    where = field if field is not None else known_field
    begin, part, _ = said.partition(": ")
    if part and begin.startswith("Teilbuchung ") and begin[12:].isdigit():
        where = f"teile[{int(begin[12:]) - 1}]" + (f".{where}" if where and where != "teile" else "")
    kind = Unavailable if code in _UNAVAILABLE else Cancelled if code == Ergebnis.ABGEBROCHEN else Refused
    return kind(said or text, code, where)
