"""Iterators over the books: what they deliver, and one cursor a thread."""

from __future__ import annotations

import csv
import io
import os
import threading
from datetime import date
from decimal import Decimal
from typing import Any, Callable, Iterator

import pytest
from conftest import vark

from vark40 import (
    Bericht,
    Buecher,
    Buchung,
    CursorEnded,
    Kontoart,
    Refused,
    VarkError,
    WrongThread,
    Zeitspanne,
)


@pytest.fixture
def buecher() -> Iterator[Buecher]:
    with Buecher(1) as opened:
        yield opened


def listed(*arguments: str) -> list[dict[str, str]]:
    return list(csv.DictReader(io.StringIO(vark(*arguments, "--csv").lstrip("\ufeff")), delimiter=";"))


def test_accounts_are_those_of_the_files_in_the_order_of_their_numbers(buecher: Buecher) -> None:
    for art, read in (
        ("Sachkonto", buecher.sachkonten),
        ("Kreditor", buecher.kreditoren),
        ("Debitor", buecher.debitoren),
    ):
        wanted = [row["Konto"] for row in listed("konten", "--mandant", "1", "--art", art)]
        assert len(wanted) > 10
        assert [konto.konto for konto in read()] == wanted
        assert [konto.konto for konto in read(wanted[5])] == wanted[5:]
        assert list(read("9999999")) == []


def test_bookings_come_by_date_and_add_up_to_the_journal(buecher: Buecher) -> None:
    saetze = list(buecher.buchungen(date(1998, 3, 1)))
    days = [satz.datum for satz in saetze if satz.datum is not None]
    assert len(days) == len(saetze) > 100
    assert days == sorted(days) and days[0] >= date(1998, 3, 1)
    march = [satz for satz in saetze if satz.datum is not None and satz.datum.month == 3]
    with buecher.bericht(Bericht.BUCHUNGSJOURNAL, Zeitspanne.monat(1998, 3)) as journal:
        assert {satz.beleg for satz in march} == {row["beleg"] for row in journal.zeilen() if row["beleg"]}
    # What went to and fro on the bank account in March, from bookings and from its sheet.
    gross = sum(
        (satz.brutto if satz.sollkonto == "1840" else -satz.brutto)
        for satz in march
        if "1840" in (satz.sollkonto, satz.habenkonto)
    )
    march_days = Zeitspanne.monat(1998, 3)
    with buecher.bericht(
        Bericht.KONTENBLATT, march_days, art=Kontoart.SACHKONTO, von="1840", bis="1840"
    ) as blatt:
        rows = [row for row in blatt.zeilen() if row["datum"] is not None and row["zaehlt"]]
    sheet = sum(Decimal(str(row["soll"] or 0)) - Decimal(str(row["haben"] or 0)) for row in rows)
    assert gross == sheet != 0


def test_parts_of_a_split_booking_are_counted(buecher: Buecher) -> None:
    parts = [satz.teil for satz in buecher.buchungen()]
    assert 0 in parts and 2 in parts
    assert all(before in (0, part - 1) or part <= 1 for before, part in zip(parts, parts[1:]))


def test_open_items_add_up_to_the_list(buecher: Buecher) -> None:
    for art in (Kontoart.DEBITOR, Kontoart.KREDITOR):
        posten = list(buecher.offene_posten(art))
        with buecher.bericht(Bericht.OP_LISTE, art=art) as liste:
            rows = liste.zeilen()
        assert len(posten) == len(rows) > 10
        assert sum(each.betrag for each in posten) == sum(
            Decimal(str(row["betrag" if row["waehrung"] == "DM" else "betrag3"])) for row in rows
        )
        assert sorted((each.konto, str(each.termin)) for each in posten) == sorted(
            (str(row["konto"]), str(row["termin"])) for row in rows
        )
        konto = posten[0].konto
        assert list(buecher.offene_posten(art, konto)) == [each for each in posten if each.konto == konto]


def test_a_refused_reading_names_its_field(buecher: Buecher) -> None:
    calls: list[tuple[Callable[[], Any], int, str]] = [
        (lambda: buecher.offene_posten(Kontoart.SACHKONTO), -7, "art"),
        (lambda: buecher.offene_posten(Kontoart.DEBITOR, "99999"), -10, "konto"),
        (lambda: buecher.buchungen(date(1985, 1, 1)), -11, "ab"),
    ]
    for call, code, field in calls:
        with pytest.raises(Refused) as caught:
            call()
        assert (caught.value.code, caught.value.field) == (code, field)


def test_another_reading_of_the_thread_ends_the_one_before(buecher: Buecher) -> None:
    first = buecher.debitoren()
    konto = next(first)
    items = buecher.offene_posten(Kontoart.DEBITOR)
    with pytest.raises(CursorEnded):
        next(first)
    assert next(items).betrag != 0
    assert konto.konto == "10010"
    # Other calls may come in between.
    later = buecher.sachkonten()
    begin = next(later).konto
    assert buecher.existiert(begin)
    assert next(later).konto > begin


def test_an_iterator_ends_for_good(buecher: Buecher) -> None:
    with buecher.sachkonten() as konten:
        next(konten)
    assert list(konten) == []
    every = buecher.sachkonten()
    count = len(list(every))
    assert count > 10 and list(every) == []
    konten.close()


def test_an_iterator_of_closed_books_says_so() -> None:
    with Buecher(1) as closed:
        konten = closed.sachkonten()
        next(konten)
    with pytest.raises(CursorEnded):
        next(konten)


def in_a_thread(call: Callable[[], Any]) -> Any:
    """What a call gives or raises on a thread of its own."""
    outcome: list[Any] = []

    def work() -> None:
        try:
            outcome.append(call())
        except Exception as error:  # noqa: BLE001
            outcome.append(error)

    thread = threading.Thread(target=work)
    thread.start()
    thread.join(60)
    return outcome[0]


def test_a_cursor_on_two_threads_is_an_error_and_goes_on_where_it_belongs(buecher: Buecher) -> None:
    konten = buecher.debitoren()
    seen = [next(konten).konto]
    error = in_a_thread(lambda: next(konten))
    assert isinstance(error, WrongThread) and isinstance(error, VarkError)
    assert "anderen Thread" in error.message and error.code == -40
    assert isinstance(in_a_thread(konten.close), WrongThread)
    seen += [konto.konto for konto in konten]
    assert seen == [konto.konto for konto in buecher.debitoren()]


def test_books_and_reports_belong_to_their_thread(buecher: Buecher) -> None:
    assert isinstance(in_a_thread(lambda: buecher.saldo("1840")), WrongThread)
    assert isinstance(in_a_thread(buecher.close), WrongThread)
    miete = Buchung(16, date(1998, 4, 15), "8010", "1840", 1)
    assert isinstance(in_a_thread(lambda: buecher.buchen(miete)), WrongThread)
    with buecher.bericht(Bericht.KONTENPLAN) as plan:
        assert isinstance(in_a_thread(plan.pdf), WrongThread)
        assert isinstance(in_a_thread(plan.close), WrongThread)
        assert plan.pdf().startswith(b"%PDF")


def test_every_thread_reads_with_books_of_its_own(buecher: Buecher) -> None:
    def numbers() -> list[str]:
        with Buecher(1) as own:
            return [konto.konto for konto in own.debitoren()]

    konten = buecher.debitoren()
    seen = [next(konten).konto]
    threads = [in_a_thread(numbers) for _ in range(3)]
    seen += [konto.konto for konto in konten]
    assert threads == [seen] * 3


def test_the_child_of_a_fork_begins_anew(buecher: Buecher) -> None:
    konten = buecher.debitoren()
    next(konten)
    reader, writer = os.pipe()
    child = os.fork()
    if child == 0:
        said = "nothing"
        try:
            with Buecher(1) as own:
                own.saldo("9999")
        except VarkError as error:
            said = str(error)
        os.write(writer, said.encode("utf-8"))
        os._exit(0)
    os.close(writer)
    with open(reader, "rb") as answer:
        assert answer.read().decode("utf-8") == "konto: Die Kontonummer ist unzulässig! (-10)"
    assert os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]) == 0
    assert next(konten).konto == "10020"


def test_messages_reach_the_thread_that_caused_them(buecher: Buecher) -> None:
    barrier = threading.Barrier(4, timeout=60)
    said: dict[str, set[str]] = {}

    def ask(konto: str, art: Kontoart) -> None:
        with Buecher(1) as own:
            barrier.wait()
            for _ in range(50):
                try:
                    own.saldo(konto, art)
                except Refused as error:
                    said.setdefault(f"{konto} {int(art)}", set()).add(error.message)

    kinds = [Kontoart.SACHKONTO, Kontoart.KOSTENSTELLE, Kontoart.DEBITOR, Kontoart.OHNE_KONTO]
    threads = [threading.Thread(target=ask, args=("98765", art)) for art in kinds]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join(60)
    assert said == {
        "98765 1": {"Die Kontonummer ist unzulässig!"},
        "98765 8": {"Die Kostenstelle ist unzulässig!"},
        "98765 4": {"Die Kontonummer ist unzulässig!"},
        "98765 16": {"Die Kontoart ist unzulässig!"},
    }
