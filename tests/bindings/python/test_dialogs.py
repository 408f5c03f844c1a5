"""Dialogs and windows with a person, who is played by a script: each in a process of its own."""

from __future__ import annotations

from pathlib import Path

import support
from conftest import make_books


def played(script: str, instructions: str, place: Path) -> list[str]:
    """What a program prints while a person does the instructions."""
    make_books(place)
    (place / "person").write_text(instructions, "utf-8")
    front_end = f"VARK_UI=script:{place}/person"
    done = support.run("env", front_end, "python3", "-c", "from vark40 import *\n" + script, books=place)
    assert (done.returncode, done.stderr) == (0, "")
    return done.stdout.splitlines()


def test_what_a_person_chooses_is_returned(place: Path) -> None:
    script = """
print(waehle_mandant())
with Buecher(1) as buecher:
    print(buecher.waehle_stapel(), buecher.waehle_stapel())
    print(buecher.waehle_konto(Kontoart.DEBITOR, "10020", "10040"))
    print(buecher.waehle_zahlungsziel(), buecher.waehle_kostenschablone())
"""
    instructions = """
dialog 101
select 1004 "Sonnenfeld Gartenbedarf"
press 1
select 1000 "Laufende Buchungen"
press 1
press 2
dialog 102
select 1000 1
press 1
select 1030 0
press 1
select 1052 0
press 1
"""
    assert played(script, instructions, place) == ["2", "16 None", "10030", "1 1"]


def test_a_report_is_shown_until_the_person_closes_it(place: Path) -> None:
    script = """
with Buecher(1) as buecher:
    with buecher.bericht(Bericht.KONTENPLAN) as plan:
        plan.zeigen()
        try:
            plan.pdf()
        except VarkError as error:
            print(error)
"""
    assert played(script, "expect text 102 1\nkey PageDown\nexpect text 102 2\nclose\n", place) == [
        "Der Bericht ist geschlossen."
    ]


def test_a_person_who_is_asked_may_choose_or_cancel(place: Path) -> None:
    script = """
with Buecher(1) as buecher:
    with buecher.bericht(Bericht.KONTENPLAN, art=Kontoart.DEBITOR, fragen=True) as plan:
        print([zeile["konto"] for zeile in plan.zeilen()])
    try:
        buecher.bericht(Bericht.KONTENPLAN, fragen=True)
    except Cancelled as error:
        print(error)
"""
    instructions = "dialog 110\ntext 20054 10390\npress 1\ndialog 110\npress 2\n"
    assert played(script, instructions, place) == ["['10390', '10400']", "Der Bericht wurde abgebrochen."]


def test_without_a_screen_nothing_is_shown(place: Path) -> None:
    make_books(place)
    script = """
from vark40 import *
with Buecher(1) as buecher, buecher.bericht(Bericht.KONTENPLAN) as plan:
    try:
        plan.zeigen()
    except Unavailable as error:
        print(error)
"""
    done = support.run("python3", "-c", script, books=place)
    assert done.stdout == "Für die Anzeige fehlt ein Bildschirm.\n"
