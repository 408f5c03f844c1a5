"""Values on their way into the books: exact or refused."""

from __future__ import annotations

import datetime
from decimal import Decimal

import pytest

from vark40 import BadValue, Ergebnis
from vark40 import _values as values

BRUTTO = Ergebnis.FEHLER_BRUTTO


@pytest.mark.parametrize(
    ("value", "wanted"),
    [
        (Decimal("1234.5"), b"1234,50"),
        (Decimal("-7"), b"-7,00"),
        (Decimal("0"), b"0,00"),
        (Decimal("-0.00"), b"0,00"),
        (Decimal("1E+3"), b"1000,00"),
        (Decimal("999999999.99"), b"999999999,99"),
        (Decimal("-999999999.99"), b"-999999999,99"),
        (Decimal("1.500"), b"1,50"),
        (12, b"12,00"),
        (None, b""),
    ],
)
def test_amounts_are_written_with_comma_and_two_decimals(value: object, wanted: bytes) -> None:
    assert values.amount(value, "brutto", BRUTTO) == wanted  # type: ignore[arg-type]


@pytest.mark.parametrize("value", ["0.005", "1000000000", "NaN", "Infinity", "-1E+9", "12.345", "1E+400"])
def test_amounts_that_do_not_fit_are_refused_not_rounded(value: str) -> None:
    with pytest.raises(BadValue) as caught:
        values.amount(Decimal(value), "brutto", BRUTTO)
    assert (caught.value.code, caught.value.field) == (BRUTTO, "brutto")
    assert isinstance(caught.value, ValueError)


@pytest.mark.parametrize("value", [1.5, "1,50", True, b"1"])
def test_amounts_of_another_type_are_type_errors(value: object) -> None:
    with pytest.raises(TypeError, match="brutto must be Decimal or int"):
        values.amount(value, "brutto", BRUTTO)  # type: ignore[arg-type]


def test_rates_end_below_a_hundred_and_have_no_sign() -> None:
    assert values.rate(Decimal("7.5"), "steuersatz", Ergebnis.FEHLER_STEUERSATZ) == b"7,50"
    assert values.rate(Decimal("99.99"), "steuersatz", Ergebnis.FEHLER_STEUERSATZ) == b"99,99"
    for value in (Decimal("100"), Decimal("-1"), Decimal("7.555")):
        with pytest.raises(BadValue):
            values.rate(value, "steuersatz", Ergebnis.FEHLER_STEUERSATZ)


def test_texts_are_windows_1252() -> None:
    assert values.text("Größe €", "text", 35) == b"Gr\xf6\xdfe \x80"
    for code in range(1, 256):
        byte = bytes([code])
        assert values.text(values.decoded(byte), "text", 1) == byte


@pytest.mark.parametrize("value", ["Ω", "a\0b", "\x80", "𝄞", "x" * 36])
def test_texts_that_do_not_fit_are_refused_not_cut(value: str) -> None:
    with pytest.raises(BadValue) as caught:
        values.text(value, "text", 35)
    assert caught.value.field == "text"


def test_days_are_those_of_the_books() -> None:
    assert values.day(datetime.date(1998, 4, 5), "datum") == b"050498"
    assert values.day(datetime.date(1980, 1, 1), "datum") == b"010180"
    assert values.day(datetime.date(2079, 12, 31), "datum") == b"311279"
    for year in (1979, 2080):
        with pytest.raises(BadValue) as caught:
            values.day(datetime.date(year, 6, 1), "datum")
        assert caught.value.code == Ergebnis.FEHLER_DATUM
    for other in ("050498", datetime.datetime(1998, 4, 5)):
        with pytest.raises(TypeError):
            values.day(other, "datum")  # type: ignore[arg-type]


def test_numbers_are_never_wrapped() -> None:
    assert values.number(2**31 - 1, "stapel") == 2**31 - 1
    for value in (2**31, -(2**31) - 1):
        with pytest.raises(BadValue):
            values.number(value, "stapel")
    for other in (1.0, "1", True, None):
        with pytest.raises(TypeError, match="stapel must be int"):
            values.number(other, "stapel")  # type: ignore[arg-type]


def test_what_comes_out_is_exact() -> None:
    assert values.amount_out(b"+000001234,50", "x") == Decimal("1234.50")
    assert values.amount_out(b"-000000007,00", "x") == Decimal("-7")
    assert values.rate_out(b"  -", "x") is None
    assert values.day_out(b"28.02.1998", "x") == datetime.date(1998, 2, 28)
    assert values.day_out(b"", "x") is None
    with pytest.raises(BadValue):
        values.day_out(b"31.02.1998", "x")
    with pytest.raises(BadValue):
        values.amount_out(b"1.2.3", "x")
