"""Lists what Debitoren of Mandant 1 owe on a day, and books the rent of a month."""

from __future__ import annotations

import sys
from collections import defaultdict
from datetime import date
from decimal import Decimal

import vark40

STICHTAG = date(1998, 4, 30)


def main() -> int:
    try:
        with vark40.Buecher(1) as buecher:
            faellig: defaultdict[tuple[str, str], Decimal] = defaultdict(Decimal)
            for posten in buecher.offene_posten(vark40.Kontoart.DEBITOR):
                if posten.termin is not None and posten.termin <= STICHTAG:
                    faellig[posten.konto, posten.name] += posten.betrag
            for (konto, name), betrag in sorted(faellig.items()):
                print(f"{konto};{name};{betrag:.2f}")
            buecher.buchen(
                vark40.Buchung(
                    stapel=16,
                    datum=date(1998, 4, 15),
                    beleg="M-0498",
                    text="Miete April",
                    sollkonto="8010",
                    habenkonto="1840",
                    brutto=Decimal("1500.00"),
                )
            )
            print("gebucht")
    except vark40.VarkError as error:
        print(error, file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
