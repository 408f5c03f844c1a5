"""The Pascal unit: a host that is compiled with it, and programs that must not compile."""

from __future__ import annotations

import json
import os
import subprocess
import sys
from pathlib import Path
from typing import Iterator

import pytest

sys.path.insert(0, str(Path(__file__).resolve().parent.parent))

from support import PROGRAMS, compile_pascal, make_books, run  # noqa: E402


@pytest.fixture(scope="module")
def host(tmp_path_factory: pytest.TempPathFactory) -> Path:
    place = tmp_path_factory.mktemp("host")
    built = compile_pascal(Path(__file__).parent / "host.pas", place)
    assert built.returncode == 0, built.stdout
    return place / "host"


@pytest.fixture
def books(tmp_path: Path) -> Iterator[Path]:
    make_books(tmp_path / "books")
    yield tmp_path / "books"


def said(host: Path, word: str, books: Path) -> list[str]:
    done = run(host, word, books=books)
    assert done.returncode == 0 and done.stderr == "", done.stderr
    return done.stdout.splitlines()


def stapel(books: Path) -> str:
    return run(PROGRAMS / "vark", "stapel", "--mandant", "1", "16", "--json", books=books).stdout


def test_texts_go_to_and_fro(host: Path, tmp_path: Path) -> None:
    assert said(host, "texts", tmp_path) == [
        "€ä Der Mandant existiert nicht! Abgelehnt mit dem Code -99."
    ]


def test_a_booking_is_in_its_stapel(host: Path, books: Path) -> None:
    assert said(host, "post", books) == []
    (made,) = json.loads(stapel(books))
    assert (made["datum"], made["beleg"]) == ("15.04.1998", "M-0498")
    (teil,) = made["teilbuchungen"]
    assert (teil["text"], teil["brutto"]) == ("Büromiete €", "1500.00")


def test_what_is_refused_raises_with_code_field_and_message(host: Path, books: Path) -> None:
    assert said(host, "refusals", books) == [
        "stapel: EVarkRefused -6 Stapel: Der Stapel existiert nicht!",
        "sollkonto: EVarkRefused -8 Sollkonto: Die Sollkontonummer ist unzulässig!",
        "same: EVarkRefused -10 Habenkonto: Soll- und Habenkontonummern sind gleich!",
        "closed year: EVarkRefused -11 Datum: Das Buchungsdatum ist unzulässig!",
        "year: EVarkValue -11 Datum: Das Datum liegt nicht in den Jahren 1980 bis 2079.",
        "long: EVarkValue 0 Text: Der Text hat 36 Zeichen, Platz ist für 35.",
        "letter: EVarkValue 0 Text: Der Text enthält Zeichen, die es in den Büchern nicht gibt.",
        "nul: EVarkValue 0 Text: Der Text enthält Zeichen, die es in den Büchern nicht gibt.",
        "surrogate: EVarkValue 0 Text: Der Text enthält Zeichen, die es in den Büchern nicht gibt.",
        "beleg: EVarkValue 0 Beleg: Der Text hat 9 Zeichen, Platz ist für 8.",
        "decimals: EVarkValue -12 Brutto: Der Betrag hat mehr als 2 Stellen hinter dem Komma.",
        "digits: EVarkValue -12 Brutto: Der Betrag hat zu viele Stellen vor dem Komma.",
        "rate: EVarkValue -13 Steuersatz: Der Betrag hat zu viele Stellen vor dem Komma.",
    ]
    assert json.loads(stapel(books)) == []


def test_split_bookings_are_whole_or_not_there(host: Path, books: Path) -> None:
    assert said(host, "splits", books) == [
        "part: EVarkValue 0 Teile[11].Text: Der Text enthält Zeichen, die es in den Büchern nicht gibt.",
        "none: EVarkRefused -25 Teile: Die Anzahl der Teilbuchungen ist nicht korrekt!",
        "account: EVarkRefused -8 Teile[1].Sollkonto: "
        "Teilbuchung 2: Die Sollkontonummer ist unzulässig!",
        "costs: EVarkRefused -43 Teile[1].Kostenschablone: "
        "Teilbuchung 2: Die Kostenschablone ist unzulässig!",
    ]
    large, small = json.loads(stapel(books))
    assert [teil["text"] for teil in large["teilbuchungen"]] == [f"Teil {at}." for at in range(12)]
    assert [teil["text"] for teil in small["teilbuchungen"]] == ["Teil 0.", "Teil 1."]


def test_accounts_are_made_changed_read_and_deleted(host: Path, books: Path) -> None:
    rest = (
        "|||D||20095|Große Reichenstr. 7|Hamburg|20050000|1234567890||5010|0|65535|2.50|-1|2"
    )
    lines = said(host, "accounts", books)
    assert lines[0] == "4|19001|PASCALKU|Schröder & Söhne" + rest
    assert lines[1] == "again: EVarkRefused -31 Konto: Das Konto existiert bereits!"
    assert lines[2] == "4|19001|PASCALKU|Schröder Nachf." + rest
    assert lines[3] == "FALSE TRUE"
    assert lines[4].split() == ["10401", said(host, "saldo", books)[0]]


def test_readings_deliver_what_the_files_hold(host: Path, books: Path) -> None:
    lines = said(host, "reading", books)
    for letter, art in (("S", "Sachkonto"), ("K", "Kreditor")):
        listed = run(PROGRAMS / "vark", "konten", "--mandant", "1", "--art", art, "--csv", books=books)
        wanted = [line.split(";")[0] for line in listed.stdout.splitlines()[1:]]
        assert [line.split()[1] for line in lines if line.startswith(letter + " ")] == wanted
    assert "none" not in lines and "too early" not in lines
    assert lines[-1].startswith("year: EVarkRefused -11 Ab: ")
    # The same figures from Python, in a process of its own.
    script = """
import vark40, datetime
with vark40.Buecher(1) as buecher:
    saetze = [satz.brutto for satz in buecher.buchungen(datetime.date(1998, 3, 1))]
    posten = [each.betrag for each in buecher.offene_posten(vark40.Kontoart.DEBITOR)]
print("B", len(saetze), sum(saetze))
print("O", len(posten), sum(posten))
"""
    assert lines[-3:-1] == run(sys.executable, "-c", script, books=books).stdout.splitlines()


def test_a_cursor_on_two_threads_is_an_error_and_goes_on_where_it_belongs(host: Path, books: Path) -> None:
    assert said(host, "threads", books) == [
        "10010",
        "cursor: EVarkThread -40 : Hier liest ein anderer Thread.",
        "books: EVarkThread -40 : Die Bücher gehören einem anderen Thread.",
        "own: " + said(host, "saldo", books)[0],
        "10020",
        "other: EVarkCursor -40 : Inzwischen wurde in diesem Thread anderes gelesen.",
        "FALSE TRUE",
        "TRUE",
    ]


def test_nobody_to_choose_is_false(host: Path, books: Path) -> None:
    assert said(host, "choosing", books) == [
        "FALSE" * 5,
        "range: EVarkRefused -1 Von: In diesem Bereich gibt es kein Konto.",
    ]


def test_every_report_is_made(host: Path, books: Path) -> None:
    lines = said(host, "reports", books)
    assert len(lines) == 18
    assert all(line.endswith(" TRUE 1") for line in lines), lines


def test_an_unknown_mandant_and_missing_books_raise(host: Path, books: Path, tmp_path: Path) -> None:
    assert said(host, "unknown", books) == ["failed: EVarkRefused -5 Mandant: Der Mandant existiert nicht!"]
    (tmp_path / "empty").mkdir()
    (line,) = said(host, "saldo", tmp_path / "empty")
    assert line.startswith("failed: EVarkUnavailable -36 : In keiner lesbaren Ini-Datei")


def test_messages_are_shown_where_the_host_wants_that(host: Path, books: Path) -> None:
    done = run(host, "shown", books=books)
    assert done.stdout == "failed: EVarkRefused -10 Konto: Die Kontonummer ist unzulässig!\n"
    assert done.stderr == "MERIDA: Die Kontonummer ist unzulässig!\n"


def test_foreign_books_raise_and_stay_as_they_are(host: Path, tmp_path: Path) -> None:
    (tmp_path / "da").mkdir()
    (tmp_path / "da" / "books.mdb").write_bytes(b"These are no books." * 1000)
    (tmp_path / "vark.ini").write_text(f"[VARK]\nPfad={tmp_path}/da\n")
    done = run(host, "saldo", books=tmp_path)
    assert done.stdout == "failed: EVarkUnavailable -3 : Not a btrieve file\n"
    assert done.stderr == ""
    assert (tmp_path / "da" / "books.mdb").read_bytes() == b"These are no books." * 1000


@pytest.mark.parametrize("variable", ["VARK_OTHER_VERSION", "VARK_LACKING"])
def test_a_library_of_another_version_does_not_start(host: Path, books: Path, variable: str) -> None:
    other = Path(os.environ[variable])
    done = run(host, "saldo", books=books, library=other.parent)
    assert done.returncode != 0
    assert "libvark40.so.4" in done.stderr or "VARK_" in done.stderr


WRONG = {
    "a number for an account": "Buecher.Saldo(1840)",
    "a text for an amount": "Buecher.Buchen(NeueBuchung(16, 0, '8010', '1840', '1500,00'))",
    "a text for a day": "Buecher.Buchungen('15.04.1998')",
    "a text for a kind": "Buecher.OffenePosten('Debitor')",
    "a number for a report": "Buecher.Berichte(1, Params)",
}


@pytest.mark.parametrize("wrong", WRONG)
def test_a_wrong_type_does_not_compile(wrong: str, tmp_path: Path) -> None:
    def program(statement: str) -> "subprocess.CompletedProcess[str]":
        source = tmp_path / "wrong.pas"
        source.write_text(
            "program wrong;\n{$mode objfpc}{$H+}\nuses vark40;\nvar\n  Buecher: TVarkBuecher;\n"
            "  Params: TReportParams;\nbegin\n  Params := Default(TReportParams);\n"
            f"  Buecher := TVarkBuecher.Create(1);\n  {statement};\nend.\n"
        )
        return compile_pascal(source, tmp_path)

    assert program("Buecher.Saldo('1840')").returncode == 0
    refused = program(WRONG[wrong])
    assert refused.returncode != 0 and "Incompatible type" in refused.stdout, refused.stdout
