"""Values of Python as texts of the books, and back. What the books cannot hold is refused, never cut."""

from __future__ import annotations

import datetime
from decimal import Decimal
from typing import Optional, Union

from ._declarations import Ergebnis
from ._errors import BadValue

Amount = Union[Decimal, int]

# Bytes that Windows-1252 leaves open stand for the control characters of their number, as on Windows.
_DECODED = {
    byte: bytes([byte]).decode("cp1252", "ignore") or chr(byte) for byte in range(0x80, 0xA0)
}
_ENCODED = {ord(character): byte for byte, character in _DECODED.items()}


def decoded(text: bytes) -> str:
    """A text of the library."""
    return text.decode("latin-1").translate(_DECODED)


def _need(value: object, types: Union[type, tuple[type, ...]], field: str, wanted: str) -> None:
    if not isinstance(value, types) or isinstance(value, bool):
        raise TypeError(f"{field} must be {wanted}, not {type(value).__name__}")


def text(value: str, field: str, most: int) -> bytes:
    """`value` in Windows-1252, of at most `most` characters."""
    _need(value, str, field, "str")
    if len(value) > most:
        raise BadValue(f"„{value}“ hat {len(value)} Zeichen, Platz ist für {most}.", field=field)
    try:
        # A control character whose byte stands for something else has none of its own.
        others = (chr(code) for code in range(0x80, 0xA0) if code not in _ENCODED)
        if any(each in value for each in ("\0", *others)):
            raise UnicodeError
        return value.translate(_ENCODED).encode("latin-1")
    except UnicodeError:
        why = f"{value!r} enthält Zeichen, die es in den Büchern nicht gibt."
        raise BadValue(why, field=field) from None


def number(value: int, field: str, low: int = -(2**31), high: int = 2**31 - 1) -> int:
    """`value` between `low` and `high`."""
    _need(value, int, field, "int")
    if not low <= value <= high:
        raise BadValue(f"{value} liegt nicht zwischen {low} und {high}.", field=field)
    return int(value)


def _decimals(value: Amount, field: str, digits: int, code: Ergebnis) -> bytes:
    _need(value, (Decimal, int), field, "Decimal or int")
    exact = Decimal(value)
    if not exact.is_finite() or abs(exact) >= 10**digits:
        raise BadValue(f"{value} hat mehr als {digits} Stellen vor dem Komma.", code, field)
    if exact != exact.quantize(Decimal("0.01")):
        raise BadValue(f"{value} hat mehr als 2 Stellen hinter dem Komma.", code, field)
    return f"{exact.quantize(Decimal('0.01')) + 0:f}".replace(".", ",").encode("ascii")


def amount(value: Optional[Amount], field: str, code: Ergebnis) -> bytes:
    """An amount of up to 9 digits and 2 decimals; None is the empty text."""
    return b"" if value is None else _decimals(value, field, 9, code)


def rate(value: Optional[Amount], field: str, code: Ergebnis) -> bytes:
    """A percentage below 100 with 2 decimals; None is the empty text."""
    if value is not None and not isinstance(value, (bool, float, str)) and value < 0:
        raise BadValue(f"{value} ist negativ.", code, field)
    return b"" if value is None else _decimals(value, field, 2, code)


def day(value: datetime.date, field: str) -> bytes:
    """Six digits; the books know the years 1980 to 2079."""
    _need(value, datetime.date, field, "datetime.date")
    if isinstance(value, datetime.datetime):
        raise TypeError(f"{field} must be datetime.date without a time of day")
    if not 1980 <= value.year <= 2079:
        raise BadValue(
            f"{value.isoformat()} liegt nicht in den Jahren 1980 bis 2079.", Ergebnis.FEHLER_DATUM, field
        )
    return value.strftime("%d%m%y").encode("ascii")


def amount_out(given: bytes, field: str) -> Decimal:
    """An amount as the library gives it in the form for machines."""
    try:
        return Decimal(given.decode("ascii").replace(",", "."))
    except ArithmeticError:
        raise BadValue(f"In den Büchern steht kein Betrag: „{decoded(given)}“.", field=field) from None


def rate_out(given: bytes, field: str) -> Optional[Decimal]:
    """A rate likewise; None where the books cannot tell it."""
    return None if given.strip() in (b"", b"-") else amount_out(given, field)


def day_out(given: bytes, field: str) -> Optional[datetime.date]:
    """A date "TT.MM.JJJJ"; None for an empty one."""
    if not given:
        return None
    try:
        return datetime.date(int(given[6:10]), int(given[3:5]), int(given[0:2]))
    except ValueError:
        raise BadValue(f"In den Büchern steht kein Datum: „{decoded(given)}“.", field=field) from None
