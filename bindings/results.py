"""What results mean where the library has not said it: the field at fault, and a German text for people."""

from __future__ import annotations

from typing import Dict, Optional, Tuple

# By the names of include/vark40.h. Of names with the same value one stands here.
RESULTS: Dict[str, Tuple[Optional[str], str]] = {
    "VARK_LETZTER": (None, "Das war der letzte Satz."),
    "VARK_GUT": (None, "Gut."),
    "VARK_ABGEBROCHEN": (None, "Der Vorgang wurde abgebrochen."),
    "VARK_FEHLER_UMRECHNUNG": (None, "Der Betrag kann nicht umgerechnet werden!"),
    "VARK_FEHLER_DATENBANK": (None, "Die Datenbank läßt sich nicht benutzen."),
    "VARK_FEHLER_MANDANT": ("mandant", "Der Mandant existiert nicht!"),
    "VARK_FEHLER_STAPEL": ("stapel", "Der Stapel existiert nicht!"),
    "VARK_FEHLER_KONTOART": ("art", "Die Kontoart ist unzulässig!"),
    "VARK_FEHLER_SOLLKONTO": ("sollkonto", "Die Sollkontonummer ist unzulässig!"),
    "VARK_FEHLER_HABENKONTO": ("habenkonto", "Die Habenkontonummer ist unzulässig!"),
    "VARK_FEHLER_KONTO": ("konto", "Die Kontonummer ist unzulässig!"),
    "VARK_FEHLER_DATUM": ("datum", "Das Buchungsdatum ist unzulässig!"),
    "VARK_FEHLER_BRUTTO": ("brutto", "Der Bruttobetrag ist unzulässig!"),
    "VARK_FEHLER_STEUERSATZ": ("steuersatz", "Der Steuersatz ist unzulässig!"),
    "VARK_FEHLER_STEUERBETRAG": ("steuerbetrag", "Der Steuerbetrag ist unzulässig!"),
    "VARK_FEHLER_GEGENKONTO": ("gegenkonto", "Das Gegenkonto ist unzulässig!"),
    "VARK_FEHLER_BANK": ("bankkonto", "Die Bankverbindung ist unzulässig!"),
    "VARK_FEHLER_SKONTO": ("skonto", "Die Skontoprozente sind unzulässig!"),
    "VARK_FEHLER_MAHNKENNZIFFER": ("mahnkennziffer", "Die Mahnkennziffer ist unzulässig!"),
    "VARK_FEHLER_KUERZEL_ANDERS": ("kuerzel", "Das Kürzel ist unzulässig!"),
    "VARK_FEHLER_FORM": ("form", "Das Ausgabeformat ist unzulässig!"),
    "VARK_FEHLER_KOSTENSTELLE": ("konto", "Die Kostenstelle ist unzulässig!"),
    "VARK_FEHLER_KOSTEN_FEHLEN": ("kostenschablone", "Ein Konto der GuV verlangt eine Kostenstelle."),
    "VARK_FEHLER_ANZAHL_TEILE": ("teile", "Die Anzahl der Teilbuchungen ist nicht korrekt!"),
    "VARK_FEHLER_SEITEN": ("teile", "Genau eine Seite muß in allen Teilbuchungen gleich sein."),
    "VARK_FEHLER_ZAHLUNGSZIEL": ("zahlungsziel", "Das Zahlungsziel ist unzulässig!"),
    "VARK_FEHLER_KEIN_KONTO": ("konto", "Das Konto existiert nicht!"),
    "VARK_FEHLER_KUERZEL_FEHLT": ("kuerzel", "Fehlendes Kürzel!"),
    "VARK_FEHLER_NAME_FEHLT": ("name1", "Fehlender Name!"),
    "VARK_FEHLER_KONTO_BESTEHT": ("konto", "Das Konto existiert bereits!"),
    "VARK_FEHLER_KUERZEL_BESTEHT": ("kuerzel", "Das Kürzel existiert bereits!"),
    "VARK_FEHLER_NICHT_LOESCHBAR": ("konto", "Das Konto ist nicht löschbar!"),
    "VARK_FEHLER_KEIN_DATENPFAD": (
        None,
        "In keiner lesbaren Ini-Datei steht, wo die Daten liegen (tolka.ini: [TOLKA] Pfad32=…).",
    ),
    "VARK_FEHLER_NUMMERN_AUFGEBRAUCHT": ("konto", "Es ist keine Nummer mit 7 Zeichen mehr frei."),
    "VARK_FEHLER_SATZ_FORT": (None, "Der nächste Satz ist inzwischen gelöscht worden."),
    "VARK_FEHLER_NICHT_BEGONNEN": (None, "Es wird nicht gelesen."),
    "VARK_FEHLER_KEIN_SPEICHER": (None, "Die Bibliothek hat keinen Speicher für diesen Aufruf."),
    "VARK_FEHLER_KOSTENSCHABLONE": ("kostenschablone", "Die Kostenschablone ist unzulässig!"),
}
