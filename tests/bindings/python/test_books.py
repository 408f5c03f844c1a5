"""Booking, personal accounts and questions, against what other programs read from the books."""

from __future__ import annotations

import pickle
from dataclasses import replace
from datetime import date
from decimal import Decimal
from typing import Any, Iterator, Optional

import pytest
from conftest import stapel, vark

from vark40 import (
    BadValue,
    Bericht,
    Buchung,
    Buecher,
    Cancelled,
    CursorEnded,
    Ergebnis,
    Kontoart,
    Personenkonto,
    Refused,
    Splitbuchung,
    Teilbuchung,
    VarkError,
    Zeitspanne,
)

MIETE = Buchung(
    stapel=16, datum=date(1998, 4, 15), sollkonto="8010", habenkonto="1840", brutto=Decimal("1500.00"),
    beleg="M-0498", text="Büromiete €", kennzeichen=7,
)  # fmt: skip


@pytest.fixture
def buecher() -> Iterator[Buecher]:
    with Buecher(1) as opened:
        yield opened


def test_a_booking_is_in_its_stapel_as_it_was_made(buecher: Buecher) -> None:
    before = stapel(16)
    buecher.buchen(MIETE)
    after = stapel(16)
    assert after[: len(before)] == before
    (made,) = after[len(before) :]
    assert (made["datum"], made["beleg"], made["kennzeichen"]) == ("15.04.1998", "M-0498", 7)
    (teil,) = made["teilbuchungen"]
    assert teil["text"] == "Büromiete €"
    assert (teil["sollkonto"], teil["habenkonto"]) == ("8010", "1840")
    assert teil["brutto"] == "1500.00"


def part(sollkonto: str, brutto: int, **more: Any) -> Teilbuchung:
    return Teilbuchung(sollkonto=sollkonto, habenkonto="1840", brutto=brutto, **more)


@pytest.mark.parametrize("count", [2, 10, 11, 25])
def test_a_split_booking_has_all_its_parts(buecher: Buecher, count: int) -> None:
    before = stapel(16)
    teile = [part("8010" if at % 2 else "8410", 10 + at, text=f"Teil {at}") for at in range(count)]
    buecher.buchen(Splitbuchung(16, date(1998, 4, 16), teile, beleg="S-1"))
    text = str(stapel(16)[len(before) :])
    assert all(f"Teil {at}'" in text for at in range(count))


@pytest.mark.parametrize(
    ("changes", "code", "field", "message"),
    [
        ({"stapel": 77}, -6, "stapel", "Der Stapel existiert nicht!"),
        ({"sollkonto": "9999"}, -8, "sollkonto", "Die Sollkontonummer ist unzulässig!"),
        ({"soll_art": Kontoart.DEBITOR}, -8, "sollkonto", "Die Sollkontonummer ist unzulässig!"),
        ({"habenkonto": "x"}, -9, "habenkonto", "Die Habenkontonummer ist unzulässig!"),
        ({"habenkonto": "8010"}, -10, "habenkonto", "Soll- und Habenkontonummern sind gleich!"),
        ({"datum": date(1990, 1, 1)}, -11, "datum", "Das Buchungsdatum ist unzulässig!"),
        ({"zahlungsziel": 77}, -27, "zahlungsziel", "Das Zahlungsziel ist unzulässig!"),
        ({"kostenschablone": 99}, -43, "kostenschablone", "Die Kostenschablone ist unzulässig!"),
    ],
)
def test_a_refusal_says_code_field_and_message_and_leaves_the_books(
    buecher: Buecher, changes: dict[str, Any], code: int, field: str, message: str
) -> None:
    before = stapel(16)
    with pytest.raises(Refused) as caught:
        buecher.buchen(replace(MIETE, **changes))
    assert (caught.value.code, caught.value.field, caught.value.message) == (code, field, message)
    assert isinstance(caught.value.code, Ergebnis)
    assert str(caught.value) == f"{field}: {message} ({code})"
    assert stapel(16) == before


@pytest.mark.parametrize(
    ("teile", "code", "field"),
    [
        ([], -25, "teile"),
        ([part("8010", 1), Teilbuchung("8410", "1810", 1)], -26, "teile"),
        ([part("8010", 1), part("9999", 1)], -8, "teile[1].sollkonto"),
        # The library itself answers this one with success.
        ([part("8010", 1), part("8410", 1, kostenschablone=99)], -43, "teile[1].kostenschablone"),
        ([part("8010", 1)] * 11 + [part("9999", 1)], -8, "teile[11].sollkonto"),
    ],
)
def test_a_refused_split_booking_names_the_part(
    buecher: Buecher, teile: list[Teilbuchung], code: int, field: str
) -> None:
    before = stapel(16)
    with pytest.raises(Refused) as caught:
        buecher.buchen(Splitbuchung(16, date(1998, 4, 16), teile))
    assert (caught.value.code, caught.value.field) == (code, field)
    assert stapel(16) == before


def test_a_bad_value_names_its_field_before_any_call(buecher: Buecher) -> None:
    before = stapel(16)
    cases: list[tuple[dict[str, Any], Optional[int]]] = [
        ({"text": "x" * 36}, None),
        ({"beleg": "123456789"}, None),
        ({"sollkonto": "12345678"}, None),
        ({"brutto": Decimal("0.001")}, -12),
        ({"steuersatz": Decimal("100")}, -13),
        ({"datum": date(2080, 1, 1)}, -11),
        ({"kennzeichen": 256}, None),
    ]
    for changes, code in cases:
        with pytest.raises(BadValue) as caught:
            buecher.buchen(replace(MIETE, **changes))
        assert caught.value.field in changes
        assert caught.value.code == code
    with pytest.raises(BadValue) as caught:
        buecher.buchen(Splitbuchung(16, MIETE.datum, [part("8010", 1), part("8010", 1, text="Ω")]))
    assert caught.value.field == "teile[1].text"
    assert stapel(16) == before


@pytest.mark.parametrize(
    "wrong", [{"brutto": 1.5}, {"datum": "15.04.1998"}, {"text": b"x"}, {"stapel": "16"}, {"brutto": None}]
)
def test_a_wrong_type_is_a_type_error_that_names_it(buecher: Buecher, wrong: dict[str, Any]) -> None:
    (field,) = wrong
    with pytest.raises(TypeError, match=field):
        buecher.buchen(replace(MIETE, **wrong))
    with pytest.raises(TypeError, match="Buchung or Splitbuchung"):
        buecher.buchen("Miete")  # type: ignore[arg-type]


def test_a_question_is_answered_with_the_button_that_does_the_least(buecher: Buecher) -> None:
    # Kreditor 70250 keeps francs, and the month has no rate of exchange any more.
    vark("kurse", "--mandant", "1", "--loeschen", "--waehrung", "CHF", "--datum", "31.12.1998")
    before = stapel(16)
    with pytest.raises(Cancelled) as caught:
        buecher.buchen(
            replace(MIETE, habenkonto="70250", haben_art=Kontoart.KREDITOR, datum=date(1998, 12, 31))
        )
    assert caught.value.code == Ergebnis.ABGEBROCHEN
    assert "Wechselkurs" in caught.value.message
    assert stapel(16) == before


KUNDE = Personenkonto(
    art=Kontoart.DEBITOR, konto="19001", kuerzel="PYTHONKU", name1="Schröder & Söhne", name2="z. Hd. Fr. Öz",
    ust_id="DE123456789", land="D", plz="20095", adresse1="Große Reichenstr. 7", adresse2="Hamburg",
    blz="20050000", bankkonto="1234567890", bank="Hafenbank Hamburg", gegenkonto="5010", wert1=7, wert2=65535,
    skonto=Decimal("2.50"), mahnkennziffer=-1, zahlungsziel=2,
)  # fmt: skip


def test_a_personal_account_is_made_changed_and_deleted(buecher: Buecher) -> None:
    assert not buecher.existiert("19001", Kontoart.DEBITOR)
    buecher.konto_anlegen(KUNDE)
    assert buecher.existiert("19001", Kontoart.DEBITOR)
    assert next(buecher.debitoren("19001")) == KUNDE
    changed = replace(KUNDE, name1="Schröder Nachf.", skonto=Decimal("0.00"), mahnkennziffer=3)
    buecher.konto_aendern(changed)
    assert next(buecher.debitoren("19001")) == changed
    buecher.konto_loeschen(Kontoart.DEBITOR, kuerzel="PYTHONKU")
    assert not buecher.existiert("19001", Kontoart.DEBITOR)


@pytest.mark.parametrize(
    ("changes", "code", "field"),
    [
        ({"konto": "10010"}, -31, "konto"),
        ({"kuerzel": ""}, -29, "kuerzel"),
        ({"kuerzel": "ADLERAPO"}, -32, "kuerzel"),
        ({"name1": ""}, -30, "name1"),
        ({"gegenkonto": "9999"}, -15, "gegenkonto"),
        ({"blz": "2005x"}, -16, "blz"),
        ({"bankkonto": ""}, -16, "bankkonto"),
        ({"mahnkennziffer": 4}, -18, "mahnkennziffer"),
        ({"zahlungsziel": 77}, -27, "zahlungsziel"),
        ({"art": Kontoart.SACHKONTO}, -7, "art"),
    ],
)
def test_a_refused_account_names_its_field(
    buecher: Buecher, changes: dict[str, Any], code: int, field: str
) -> None:
    with pytest.raises(Refused) as caught:
        buecher.konto_anlegen(replace(KUNDE, **changes))
    assert (caught.value.code, caught.value.field) == (code, field)
    assert not buecher.existiert("19001", Kontoart.DEBITOR)


def test_the_next_free_number_is_one_behind_the_highest(buecher: Buecher) -> None:
    highest = max(int(konto.konto) for konto in buecher.kreditoren())
    assert int(buecher.freie_kontonummer(Kontoart.KREDITOR)) == highest + 1
    with pytest.raises(Refused) as caught:
        buecher.freie_kontonummer(Kontoart.SACHKONTO)
    assert (caught.value.code, caught.value.field) == (-7, "art")


def test_balances_are_those_of_the_list_of_sums(buecher: Buecher) -> None:
    zeit = Zeitspanne.per(date(1998, 12, 31))
    with buecher.bericht(Bericht.SUMMEN_SALDEN_LISTE, zeit, art=Kontoart.DEBITOR) as ansicht:
        rows = ansicht.zeilen()
    assert len(rows) > 20
    for row in rows:
        soll, haben = row["saldoSoll"] or Decimal(0), row["saldoHaben"] or Decimal(0)
        assert isinstance(soll, Decimal) and isinstance(haben, Decimal)
        assert buecher.saldo(str(row["konto"]), Kontoart.DEBITOR) == soll - haben
    with pytest.raises(Refused) as caught:
        buecher.saldo("9999")
    assert (caught.value.code, caught.value.field) == (-10, "konto")


def test_an_unknown_mandant_is_refused_by_every_call() -> None:
    with Buecher(7) as none:
        for call in (
            lambda: none.buchen(MIETE),
            lambda: none.saldo("1840"),
            lambda: none.existiert("1840"),
            none.buchungen,
            none.debitoren,
            lambda: none.offene_posten(Kontoart.DEBITOR),
            none.waehle_stapel,
        ):
            with pytest.raises(Refused) as caught:
                call()
            assert (caught.value.code, caught.value.field) == (-5, "mandant")
            assert caught.value.message == "Der Mandant existiert nicht!"


def test_nobody_to_choose_is_none(buecher: Buecher) -> None:
    assert buecher.waehle_stapel() is None
    assert buecher.waehle_konto(Kontoart.DEBITOR) is None
    assert buecher.waehle_zahlungsziel() is None
    assert buecher.waehle_kostenschablone() is None
    with pytest.raises(Refused, match="kein Konto"):
        buecher.waehle_konto(Kontoart.DEBITOR, "88888", "99999")


def test_closed_books_say_so() -> None:
    with Buecher(1) as closed:
        pass
    with pytest.raises(VarkError, match="geschlossen"):
        closed.saldo("1840")
    closed.close()


def test_two_mandanten_work_side_by_side() -> None:
    with Buecher(1) as first, Buecher(2) as second:
        alone = first.saldo("1840")
        assert second.existiert("1840") in (True, False)
        assert first.saldo("1840") == alone


def test_an_error_travels_between_processes() -> None:
    error = pickle.loads(pickle.dumps(Refused("Nein.", -8, "sollkonto")))
    assert (type(error), error.code, error.field, error.message) == (
        Refused, Ergebnis.FEHLER_SOLLKONTO, "sollkonto", "Nein.",
    )  # fmt: skip
    assert isinstance(CursorEnded("x"), VarkError)
