"""Rows of a report as pandas takes them."""

from __future__ import annotations

import datetime
from decimal import Decimal
from typing import Any, Iterator

import pytest

from vark40 import Bericht, Buecher, Kontoart, Zeitspanne

pandas: Any = pytest.importorskip("pandas")


@pytest.fixture
def buecher(books: object) -> Iterator[Buecher]:
    with Buecher(1) as buecher:
        yield buecher


def test_a_list_of_open_items_has_a_column_for_each_of_the_reports(buecher: Buecher) -> None:
    with buecher.bericht(Bericht.OP_LISTE, art=Kontoart.DEBITOR) as liste:
        names = [spalte.name for spalte in liste.spalten]
        frame = pandas.DataFrame(liste.zeilen())
    items = list(buecher.offene_posten(Kontoart.DEBITOR))
    assert frame.shape == (len(items), len(names)) and len(items) > 20
    assert list(frame.columns) == names
    assert str(frame["tage"].dtype) == "int64" and str(frame["gesetzt"].dtype) == "bool"
    # Amounts stay exact, and pandas reckons with them.
    assert all(isinstance(value, Decimal) for value in frame["betrag"])
    german = frame[frame["waehrung"] == "DM"]
    assert german["betrag"].sum() == sum(item.betrag for item in items if item.waehrung == "DM")
    sums = german.groupby("konto")["betrag"].sum()
    for konto in sums.index:
        assert sums[konto] == sum(item.betrag for item in items if item.konto == konto), konto


def test_days_become_times_of_pandas(buecher: Buecher) -> None:
    with buecher.bericht(Bericht.BUCHUNGSJOURNAL, Zeitspanne.monat(1998, 3)) as journal:
        frame = pandas.DataFrame(journal.zeilen())
    assert all(isinstance(value, datetime.date) for value in frame["datum"])
    days = pandas.to_datetime(frame["datum"])
    assert str(days.dtype) == "datetime64[ns]"
    assert days.min() >= pandas.Timestamp(1998, 3, 1) and days.max() <= pandas.Timestamp(1998, 3, 31)
    assert str(frame["nummer"].dtype) == "int64"


def test_what_is_empty_is_missing(buecher: Buecher) -> None:
    with buecher.bericht(Bericht.SUMMEN_SALDEN_LISTE, Zeitspanne.per(datetime.date(1998, 12, 31))) as liste:
        frame = pandas.DataFrame(liste.zeilen())
    # A balance stands on one side: the other one is empty.
    assert (frame["saldoSoll"].isna() ^ frame["saldoHaben"].isna()).all()
    balance = frame["saldoSoll"].dropna().sum() - frame["saldoHaben"].dropna().sum()
    accounts = [buecher.saldo(konto) for konto in frame["konto"]]
    assert balance == sum(accounts)
