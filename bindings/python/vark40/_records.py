"""What goes into the books and comes out of them."""

from __future__ import annotations

import datetime
from dataclasses import dataclass
from decimal import Decimal
from typing import Optional, Sequence

from ._declarations import Kontoart
from ._values import Amount


@dataclass(frozen=True)
class Buchung:
    """A booking for a Stapel.

    Without `steuersatz` and `steuerbetrag` the tax of the accounts applies; Decimal(0) as rate means none.
    `kostenschablone` and `zahlungsziel` are numbers, 0 for none and for that of the personal account.
    `kennzeichen` (0 to 255) is kept with the booking as it stands.
    """

    stapel: int
    datum: datetime.date
    sollkonto: str
    habenkonto: str
    brutto: Amount
    beleg: str = ""
    text: str = ""
    soll_art: Kontoart = Kontoart.SACHKONTO
    haben_art: Kontoart = Kontoart.SACHKONTO
    steuersatz: Optional[Amount] = None
    steuerbetrag: Optional[Amount] = None
    kennzeichen: int = 0
    kostenschablone: int = 0
    zahlungsziel: int = 0


@dataclass(frozen=True)
class Teilbuchung:
    """One part of a `Splitbuchung`; the attributes are those of `Buchung`."""

    sollkonto: str
    habenkonto: str
    brutto: Amount
    text: str = ""
    soll_art: Kontoart = Kontoart.SACHKONTO
    haben_art: Kontoart = Kontoart.SACHKONTO
    steuersatz: Optional[Amount] = None
    steuerbetrag: Optional[Amount] = None
    kostenschablone: int = 0


@dataclass(frozen=True)
class Splitbuchung:
    """A booking of parts that have the Sollkonto or the Habenkonto in common, of any number."""

    stapel: int
    datum: datetime.date
    teile: Sequence[Teilbuchung]
    beleg: str = ""
    kennzeichen: int = 0
    zahlungsziel: int = 0


@dataclass(frozen=True)
class Personenkonto:
    """A Kreditor or Debitor, to be written and as it is read.

    `mahnkennziffer` is -1 (never reminded) to 3 for a Debitor, 0 for a Kreditor. `waehrung` is empty for the
    currency of the Mandant. `wert1` and `wert2` are payment-day values of 16 bits.
    """

    art: Kontoart
    konto: str
    kuerzel: str = ""
    name1: str = ""
    name2: str = ""
    ust_id: str = ""
    land: str = ""
    waehrung: str = ""
    plz: str = ""
    adresse1: str = ""
    adresse2: str = ""
    blz: str = ""
    bankkonto: str = ""
    bank: str = ""
    gegenkonto: str = ""
    wert1: int = 0
    wert2: int = 0
    skonto: Optional[Amount] = None
    mahnkennziffer: int = 0
    zahlungsziel: int = 0


@dataclass(frozen=True)
class Sachkonto:
    """`zuordnung` tells where the account is closed: 0 nowhere, 2 Aktiva, 4 Passiva, 8 GuV."""

    konto: str
    kuerzel: str
    name: str
    zuordnung: int
    fester_satz: bool
    mit_kosten: bool


@dataclass(frozen=True)
class Buchungssatz:
    """A final booking.

    `teil` is 0 for one that stands alone, else the number of the part of a split booking, from 1. `brutto` is
    in the currency of the Mandant, below zero for a reversal. `steuersatz` is None where it cannot be told.
    """

    teil: int
    datum: Optional[datetime.date]
    beleg: str
    text: str
    sollkonto: str
    soll_art: Kontoart
    habenkonto: str
    haben_art: Kontoart
    brutto: Decimal
    steuersatz: Optional[Decimal]
    steuerbetrag: Decimal


@dataclass(frozen=True)
class OffenerPosten:
    """An open item; `termin` is the day on which it is due, `skonto_bis` the last day of the discount.

    `betrag` is what is still open and `betrag2` a second amount, in books of our own making the discount that
    may be taken, both in the currency of the Mandant; `waehrung` is that of the item.
    """

    konto: str
    referenz1: str
    referenz2: str
    datum: Optional[datetime.date]
    termin: Optional[datetime.date]
    skonto_bis: Optional[datetime.date]
    name: str
    text: str
    betrag: Decimal
    betrag2: Decimal
    waehrung: str
