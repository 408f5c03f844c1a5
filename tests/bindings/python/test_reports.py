"""Reports as bytes, files and rows."""

from __future__ import annotations

import csv
import io
import json
import os
from datetime import date
from decimal import Decimal
from pathlib import Path
from typing import Iterator

import pytest
from conftest import vark

from vark40 import BadValue, Bericht, Buecher, Kontoart, Refused, VarkError, Zeitspanne

YEAR = Zeitspanne.ganzes_jahr(1998)
WITHOUT_PERIOD = {Bericht.KONTENPLAN, Bericht.OP_LISTE, Bericht.KOSTENSTELLENLISTE}


@pytest.fixture
def buecher() -> Iterator[Buecher]:
    with Buecher(1) as opened:
        yield opened


@pytest.mark.parametrize("bericht", list(Bericht))
def test_every_report_is_made_unseen(buecher: Buecher, bericht: Bericht) -> None:
    zeit = None if bericht in WITHOUT_PERIOD else YEAR
    if bericht is Bericht.SUMMEN_SALDEN_LISTE:
        zeit = Zeitspanne.per(date(1998, 12, 31))
    with buecher.bericht(bericht, zeit) as ansicht:
        assert ansicht.pdf().startswith(b"%PDF")
        assert ansicht.titel
        rows = ansicht.zeilen()
    assert rows
    assert all(list(row) == [column.name for column in ansicht.spalten] for row in rows)


def test_a_report_is_the_one_of_the_command_line(buecher: Buecher) -> None:
    with buecher.bericht(Bericht.BILANZ, YEAR) as bilanz:
        assert bilanz.csv().decode("utf-8") == vark(
            "bericht", "bilanz", "--mandant", "1", "--jahr", "1998", "--csv"
        )
        assert bilanz.text() == vark("bericht", "bilanz", "--mandant", "1", "--jahr", "1998")
        assert json.loads(bilanz.json())["title"] == bilanz.titel == "Bilanz"
        assert bilanz.html().lstrip().lower().startswith(b"<!doctype html>")


@pytest.mark.parametrize(
    ("bericht", "name"),
    [(Bericht.GUV, "guv"), (Bericht.BILANZ, "bilanz"), (Bericht.SUMMEN_SALDEN_LISTE, "susa")],
)
def test_a_report_per_a_day_begins_with_the_fiscal_year(bericht: Bericht, name: str) -> None:
    # That of Mandant 2 begins in July.
    with Buecher(2) as buecher, buecher.bericht(bericht, Zeitspanne.per(date(1998, 3, 31))) as ansicht:
        assert ansicht.csv().decode("utf-8") == vark(
            "bericht", name, "--mandant", "2", "--per", "31.3.98", "--csv"
        )
    with Buecher(1) as buecher, pytest.raises(BadValue) as caught:
        buecher.bericht(Bericht.BUCHUNGSJOURNAL, Zeitspanne.per(date(1998, 3, 31)))
    assert caught.value.field == "zeit"


def test_rows_have_decimals_and_days(buecher: Buecher) -> None:
    with buecher.bericht(Bericht.OP_LISTE, art=Kontoart.DEBITOR) as liste:
        first = liste.zeilen()[0]
        forms = {column.name: column.form for column in liste.spalten}
        written = next(csv.DictReader(io.StringIO(liste.csv().decode("utf-8-sig")), delimiter=";"))
    assert forms["betrag"] == "amount"
    assert isinstance(first["betrag"], Decimal) and isinstance(first["termin"], date)
    assert isinstance(first["tage"], int) and first["gesetzt"] is False
    assert f"{first['betrag']}".replace(".", ",") == written["Offener Betrag"].replace(".", "")
    assert first["termin"].strftime("%d.%m.%Y") == written["Fällig"]


def test_instructions_choose_what_the_arguments_have_no_word_for(buecher: Buecher) -> None:
    with buecher.bericht(Bericht.BILANZ, YEAR, anweisungen=["dialog 127", "uncheck 1047"]) as groups:
        without = groups.csv().decode("utf-8")
    assert without == vark("bericht", "bilanz", "--mandant", "1", "--jahr", "1998", "--ohne-konten", "--csv")
    with pytest.raises(Refused) as caught:
        buecher.bericht(Bericht.BILANZ, YEAR, anweisungen=["dialog 127", "check 99"])
    assert caught.value.field == "anweisungen[1]" and "check 99" in caught.value.message
    with pytest.raises(BadValue):
        buecher.bericht(Bericht.BILANZ, YEAR, anweisungen=["dialog 127\npress 2"])


def test_a_range_of_accounts_is_kept(buecher: Buecher) -> None:
    zeit = Zeitspanne.per(date(1998, 3, 31))
    with buecher.bericht(
        Bericht.SUMMEN_SALDEN_LISTE, zeit, art=Kontoart.DEBITOR, von="10020", bis="10040"
    ) as ansicht:
        numbers = [row["konto"] for row in ansicht.zeilen()]
    assert numbers == ["10020", "10030", "10040"]
    with pytest.raises(BadValue):
        buecher.bericht(Bericht.KONTENPLAN, von="10020")


@pytest.mark.parametrize(
    "zeit",
    [
        Zeitspanne.ganzes_jahr(1990),
        Zeitspanne.monat(1985, 3),
        Zeitspanne.quartal(2001, 1),
        Zeitspanne.tage(date(1985, 1, 1), date(1985, 1, 31)),
    ],
)
def test_a_period_that_the_books_do_not_have_is_refused(buecher: Buecher, zeit: Zeitspanne) -> None:
    with pytest.raises(Refused) as caught:
        buecher.bericht(Bericht.BUCHUNGSJOURNAL, zeit)
    assert caught.value.message


def test_quarters_of_a_tax_report_are_those_of_the_calendar() -> None:
    # The fiscal year of Mandant 2 begins in July.
    with Buecher(2) as buecher:
        quarter = Zeitspanne.quartal(1998, 1)
        with buecher.bericht(Bericht.UMSATZSTEUERVORANMELDUNG, quarter) as anmeldung:
            (row,) = anmeldung.zeilen()
    assert row["zeitraum"] == "für das 1. Kalendervierteljahr 1998"


def test_a_wrong_type_names_the_argument(buecher: Buecher) -> None:
    with pytest.raises(TypeError, match="bericht must be Bericht"):
        buecher.bericht("bilanz")  # type: ignore[arg-type]
    with pytest.raises(TypeError, match="zeit must be Zeitspanne"):
        buecher.bericht(Bericht.BILANZ, 1998)  # type: ignore[arg-type]
    with pytest.raises(BadValue):
        Zeitspanne.tage(date(1998, 2, 1), date(1998, 1, 1))
    with pytest.raises(BadValue):
        Zeitspanne.quartal(1998, 5)


def test_a_report_is_saved_by_its_ending(buecher: Buecher, place: Path) -> None:
    with buecher.bericht(Bericht.KONTENPLAN) as plan:
        for ending, begin in ((".pdf", b"%PDF"), (".CSV", b"\xef\xbb\xbf"), (".json", b"{")):
            plan.speichern(place / f"plan{ending}")
            assert (place / f"plan{ending}").read_bytes().startswith(begin)
        plan.speichern(str(place / "plan.pdf"))
    assert sorted(path.name for path in place.iterdir()) == ["plan.CSV", "plan.json", "plan.pdf"]


def test_a_path_that_cannot_be_written_is_an_os_error(buecher: Buecher, place: Path) -> None:
    (place / "plan.pdf").write_bytes(b"old")
    (place / "dir.pdf").mkdir()
    with buecher.bericht(Bericht.KONTENPLAN) as plan:
        with pytest.raises(FileNotFoundError):
            plan.speichern(place / "nowhere" / "plan.pdf")
        with pytest.raises(NotADirectoryError):
            plan.speichern(place / "plan.pdf" / "plan.pdf")
        with pytest.raises(IsADirectoryError):
            plan.speichern(place / "dir.pdf")
        with pytest.raises(BadValue) as caught:
            plan.speichern(place / "plan.doc")
        assert caught.value.field == "pfad"
    assert (place / "plan.pdf").read_bytes() == b"old"
    assert sorted(path.name for path in place.iterdir()) == ["dir.pdf", "plan.pdf"]


@pytest.mark.skipif(os.geteuid() == 0, reason="root may write everywhere")
def test_a_directory_without_rights_is_a_permission_error(buecher: Buecher, place: Path) -> None:
    place.chmod(0o555)
    with buecher.bericht(Bericht.KONTENPLAN) as plan, pytest.raises(PermissionError):
        plan.speichern(place / "plan.pdf")


def test_a_closed_report_says_so(buecher: Buecher) -> None:
    with buecher.bericht(Bericht.KONTENPLAN) as plan:
        pass
    with pytest.raises(VarkError, match="geschlossen"):
        plan.pdf()
    plan.close()
