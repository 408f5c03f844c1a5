"""A library or books that cannot be used: each in a process of its own."""

from __future__ import annotations

import os
import shutil
from pathlib import Path

from conftest import PROGRAMS, make_books, run

TELL = """
import vark40
try:
    with vark40.Buecher(1) as buecher:
        print(buecher.saldo("1840"))
except vark40.VarkError as error:
    print(type(error).__name__, error.code if error.code is None else int(error.code), error.message)
"""


def test_without_a_data_path_the_books_are_unavailable(place: Path) -> None:
    assert run(TELL, place).startswith("Unavailable -36 In keiner lesbaren Ini-Datei steht")


def test_a_wrong_data_path_is_named(place: Path) -> None:
    (place / "vark.ini").write_text(f"[VARK]\nPfad={place}/xy\n")
    said = run(TELL, place)
    assert said.startswith("Unavailable -3 ") and f"{place}/xy" in said


def test_foreign_books_are_refused(place: Path) -> None:
    (place / "da").mkdir()
    (place / "da" / "books.mdb").write_bytes(b"These are no books." * 1000)
    (place / "vark.ini").write_text(f"[VARK]\nPfad={place}/da\n")
    assert run(TELL, place).startswith("Unavailable -3 ")
    assert (place / "da" / "books.mdb").read_bytes() == b"These are no books." * 1000


def test_books_that_one_may_not_enter_are_refused(place: Path) -> None:
    make_books(place)
    for directory in (path for path in place.iterdir() if path.is_dir()):
        directory.chmod(0o000)
    try:
        assert run(TELL, place, nobody=True).startswith("Unavailable -3 ")
    finally:
        for directory in (path for path in place.iterdir() if path.is_dir()):
            directory.chmod(0o755)
    assert run(TELL, place).strip().replace(".", "").isdigit()


def test_a_library_that_is_not_there_is_named(place: Path) -> None:
    said = run(TELL, place, library=f"{place}/libvark40.so.4")
    assert said.startswith("Unavailable None Die Bibliothek VARK40 läßt sich nicht laden: ")
    assert f"{place}/libvark40.so.4" in said


def test_a_library_of_another_version_is_refused(place: Path) -> None:
    said = run(TELL, place, library=os.environ["VARK_OTHER_VERSION"])
    assert said.startswith("Unavailable None ") and "libvark40.so.3 statt libvark40.so.4" in said


def test_a_library_that_lacks_a_function_is_refused(place: Path) -> None:
    said = run(TELL, place, library=os.environ["VARK_LACKING"])
    assert said.startswith("Unavailable None Das ist eine andere Fassung") and "VARK_" in said


def test_a_directory_names_the_library_in_it(place: Path) -> None:
    make_books(place)
    assert run(TELL, place, library=str(PROGRAMS)).strip().replace(".", "").isdigit()


def test_without_its_parts_everything_but_reports_works(place: Path) -> None:
    make_books(place)
    parts = place / "parts"
    parts.mkdir()
    for name in ("libvark40.so.4", "libwbtrv32.so"):
        shutil.copy(PROGRAMS / name, parts / name)
    script = TELL + """
with vark40.Buecher(1) as buecher:
    try:
        buecher.saldo("9999")
    except vark40.VarkError as error:
        print(error)
    try:
        buecher.bericht(vark40.Bericht.KONTENPLAN)
    except vark40.Unavailable as error:
        print(error)
"""
    lines = run(script, place, library=str(parts)).splitlines()
    assert lines[0].replace(".", "").isdigit()
    assert lines[1] == "konto: Die Kontonummer ist unzulässig! (-10)"
    assert lines[2] == "Neben der Bibliothek fehlen ihr Fenstersystem oder ihr Berichtswesen."
