#include "tools/books/chart.h"

namespace books {

using namespace vark;

namespace {

constexpr GroupRow groups[] = {
    {10, 0, Side::Aktiva, true, "Anlagevermögen"},
    {11, 10, Side::Aktiva, false, "Immaterielle Werte"},
    {12, 10, Side::Aktiva, true, "Sachanlagen"},
    {13, 12, Side::Aktiva, false, "Grundstücke und Gebäude"},
    {14, 12, Side::Aktiva, false, "Betriebsausstattung"},
    {15, 10, Side::Aktiva, false, "Finanzanlagen"},
    {20, 0, Side::Aktiva, true, "Umlaufvermögen"},
    {21, 20, Side::Aktiva, false, "Vorräte"},
    {22, 20, Side::Aktiva, true, "Forderungen"},
    {23, 22, Side::Aktiva, false, "aus Lieferungen"},
    {24, 22, Side::Aktiva, false, "Steuerforderungen"},
    {25, 22, Side::Aktiva, false, "übrige Forderungen"},
    {26, 20, Side::Aktiva, false, "Kasse und Bank"},
    {30, 0, Side::Aktiva, false, "Rechnungsabgrenzung"},

    {40, 0, Side::Passiva, true, "Eigenkapital"},
    {41, 40, Side::Passiva, false, "Gezeichnetes Kapital"},
    {42, 40, Side::Passiva, false, "Rücklagen"},
    {43, 40, Side::Passiva, false, "Ergebnis"},
    {50, 0, Side::Passiva, true, "Rückstellungen"},
    {60, 0, Side::Passiva, true, "Verbindlichkeiten"},
    {61, 60, Side::Passiva, false, "gegenüber Banken"},
    {62, 60, Side::Passiva, false, "aus Lieferungen"},
    {63, 60, Side::Passiva, true, "übrige Verbindlichkeiten"},
    {64, 63, Side::Passiva, false, "aus Steuern"},
    {65, 63, Side::Passiva, false, "aus Löhnen und Abgaben"},
    {66, 63, Side::Passiva, false, "sonstige"},
    {70, 0, Side::Passiva, false, "Rechnungsabgrenzung"},

    {80, 0, Side::Guv, true, "Umsatzerlöse"},
    {81, 80, Side::Guv, false, "Inland"},
    {82, 80, Side::Guv, false, "EG und Ausland"},
    {83, 80, Side::Guv, false, "Erlösschmälerungen"},
    {84, 0, Side::Guv, false, "Sonstige Erträge"},
    {85, 0, Side::Guv, true, "Materialaufwand"},
    {86, 85, Side::Guv, false, "Waren"},
    {87, 85, Side::Guv, false, "Bezug und Nachlässe"},
    {88, 0, Side::Guv, false, "Personalaufwand"},
    {89, 0, Side::Guv, false, "Abschreibungen"},
    {90, 0, Side::Guv, true, "Sonstiger Aufwand"},
    {91, 90, Side::Guv, false, "Raumkosten"},
    {92, 90, Side::Guv, false, "Fahrzeuge"},
    {98, 90, Side::Guv, true, "Vertrieb"},
    {93, 98, Side::Guv, false, "Werbung und Reisen"},
    {94, 98, Side::Guv, false, "Warenabgabe"},
    {95, 90, Side::Guv, false, "Verwaltung"},
    {96, 0, Side::Guv, true, "Finanzergebnis"},
    {97, 0, Side::Guv, false, "Steuern"},
};

// Tax keys of the chart.
constexpr uint8_t none = 0;
constexpr uint8_t regular = SteuerRegelsatz;
constexpr uint8_t reduced = SteuerErmaessigt;
constexpr uint8_t zero = SteuerNullsatz;
constexpr uint8_t other = SteuerSonstigerSatz;
constexpr uint8_t community = SteuerEg;
constexpr uint8_t inRegular = SteuerVorsteuer | SteuerRegelsatz;
constexpr uint8_t inReduced = SteuerVorsteuer | SteuerErmaessigt;
constexpr uint8_t inZero = SteuerVorsteuer | SteuerNullsatz;
constexpr uint8_t inOther = SteuerVorsteuer | SteuerSonstigerSatz;
constexpr uint8_t inCommunity = SteuerVorsteuer | SteuerEg;

// The opening balances add up to nothing, with the open items of Debitoren and Kreditoren in 1510 and 2310.
constexpr AccountRow accounts[] = {
    // Anlagevermögen
    {1010, "SOFTWARE", "Software und Lizenzen", 11, 0, none, "", false, 0, 0, M123, 18400},
    {1020, "MARKEN", "Marken und Schutzrechte", 11, 0, none, "", false, 0, 0, M3, 9500},
    {1110, "GRUND", "Grundstück Speicherstraße", 13, 0, none, "", false, 0, 0, M1, 210000},
    {1120, "KONTOR", "Kontorhaus Speicherstraße", 13, 0, none, "", false, 0, 0, M1, 386000},
    {1130, "HALLENORD", "Lagerhalle Nord", 13, 0, none, "", false, 0, 0, M12, 248500},
    {1140, "AUSSEN", "Außenanlagen und Zufahrt", 13, 0, none, "", false, 0, 0, M2, 31200},
    {1210, "LAGEREIN", "Lagereinrichtung", 14, 0, inRegular, "", false, 0, 0, M12, 64300},
    {1220, "LADENEIN", "Ladeneinrichtung", 14, 0, inRegular, "", false, 0, 0, M12, 42800},
    {1230, "STAPLER", "Gabelstapler und Fördertechnik", 14, 0, inRegular, "", false, 0, 0, M12, 38700},
    {1240, "PKW", "Personenkraftwagen", 14, 0, inRegular, "", false, 0, 0, M123, 71500},
    {1250, "LKW", "Lastkraftwagen", 14, 0, inRegular, "", false, 0, 0, M12, 118000},
    {1260, "BUEROMOEB", "Büroeinrichtung", 14, 0, inRegular, "", false, 0, 0, M123, 27600},
    {1270, "EDV", "EDV-Anlagen", 14, 0, inRegular, "", false, 0, 0, M123, 33900},
    {1280, "TELEFONAN", "Telefonanlage", 14, 0, inRegular, "", false, 0, 0, M3, 7200},
    {1290, "GWG", "Geringwertige Wirtschaftsgüter", 14, 0, inRegular, "", false, 0, 0, M123, 0},
    {1310, "BETEILIG", "Beteiligung Elbkontor GbR", 15, 0, none, "", false, 0, 0, M1, 50000},
    {1320, "AUSLEIH", "Darlehen an Mitarbeiter", 15, 0, none, "", false, 0, 0, M3, 6000},
    // Umlaufvermögen
    {1410, "WBMOEBEL", "Warenbestand Büromöbel", 21, 0, none, "", false, 0, 0, M1, 284000},
    {1420, "WBBEDARF", "Warenbestand Bürobedarf", 21, 0, none, "", false, 0, 0, M1, 96500},
    {1430, "WBLEUCHT", "Warenbestand Leuchten", 21, 0, none, "", false, 0, 0, M1, 58200},
    {1440, "WBBUCH", "Warenbestand Fachbücher", 21, 0, none, "", false, 0, 0, M1, 21400},
    {1450, "WBGARTEN", "Warenbestand Gartenbedarf", 21, 0, none, "", false, 0, 0, M2, 0},
    {1460, "UNTERWEGS", "Ware unterwegs", 21, 0, none, "", false, 0, 0, M2, 0},
    {1480, "UNFERTIG", "Unfertige Arbeiten", 21, 0, none, "", false, 0, 0, M3, 0},
    {1510, "FORDLL", "Forderungen aus Lieferungen", 23, 66, none, "", false, 0, 0, M123, 0},
    {1520, "ZWEIFEL", "Zweifelhafte Forderungen", 23, 0, none, "", false, 0, 0, M123, 4600},
    {1540, "EWB", "Einzelwertberichtigungen", 23, 0, none, "", false, 0, 0, M2, -2300},
    {1550, "PWB", "Pauschalwertberichtigung", 23, 0, none, "", false, 0, 0, M2, -1800},
    {1610, "VST16", "Vorsteuer 16 %", 24, 64, none, "", false, 66, 0, M123, 0},
    {1611, "VST15", "Vorsteuer 15 %", 24, 64, none, "", false, 66, 0, M123, 0},
    {1612, "VST14", "Vorsteuer 14 %", 24, 64, none, "", false, 66, 0, M123, 0},
    {1620, "VST7", "Vorsteuer 7 %", 24, 64, none, "", false, 66, 0, M123, 0},
    {1630, "VSTEG", "Vorsteuer aus EG-Erwerb", 24, 64, none, "", false, 61, 0, M123, 0},
    {1640, "VSTSONST", "Vorsteuer sonstige Sätze", 24, 64, none, "", false, 66, 0, M123, 0},
    {1650, "EUST", "Einfuhrumsatzsteuer", 24, 64, none, "", false, 62, 0, M12, 0},
    {1690, "USTFORD", "Umsatzsteuerforderung Vorjahr", 24, 64, none, "", false, 0, 0, M123, 0},
    {1710, "FORDMITA", "Forderungen an Mitarbeiter", 25, 0, none, "", false, 0, 0, M123, 1450},
    {1720, "KAUTION", "Kautionen", 25, 0, none, "", false, 0, 0, M123, 8500},
    {1740, "SONSTFORD", "Sonstige Forderungen", 25, 66, none, "", false, 0, 0, M123, 3100},
    {1810, "KASSE", "Kasse Hauptgeschäft", 26, 0, none, "", false, 0, 0, M123, 2350},
    {1820, "KASSEFIL", "Kasse Filiale Altona", 26, 0, none, "", false, 0, 0, M1, 1180},
    {1830, "POSTBANK", "Postbank", 26, 61, none, "", false, 0, 0, M123, 14700},
    {1840, "HAFENBANK", "Hafenbank, laufendes Konto", 26, 61, none, "", false, 0, 0, M123, 86300},
    {1850, "LANDKASSE", "Landeskasse, laufendes Konto", 26, 61, none, "", false, 0, 0, M12, 22900},
    {1860, "FESTGELD", "Festgeld Hafenbank", 26, 0, none, "", false, 0, 0, M1, 100000},
    {1870, "SCHECKS", "Schecks", 26, 0, none, "", false, 0, 0, M2, 0},
    {1880, "TRANSIT", "Geldtransit", 26, 61, none, "", false, 0, 0, M123, 0},
    {1910, "ARAP", "Aktive Rechnungsabgrenzung", 30, 0, none, "", false, 0, 0, M123, 5400},
    // Eigenkapital und Rückstellungen
    {2010, "STAMMKAP", "Gezeichnetes Kapital", 41, 0, none, "", false, 0, 0, M123, -400000},
    {2020, "KAPRUECK", "Kapitalrücklage", 42, 0, none, "", false, 0, 0, M1, -250000},
    {2030, "GEWRUECK", "Gewinnrücklagen", 42, 0, none, "", false, 0, 0, M13, -180000},
    {2040, "GEWVOR", "Gewinnvortrag", 43, 0, none, "", false, 0, 0, M123, -86480},
    {2050, "JAHRERG", "Jahresergebnis", 43, 0, none, "", false, 0, 0, M123, 0},
    {2060, "ENTNAHME", "Entnahmen der Gesellschafter", 43, 0, none, "", false, 0, 0, M2, 0},
    {2110, "RSTSTEUER", "Steuerrückstellungen", 50, 0, none, "", false, 0, 0, M123, -42000},
    {2120, "RSTURLAUB", "Rückstellung für Urlaub", 50, 0, none, "", false, 0, 0, M123, -18500},
    {2130, "RSTGEWAEH", "Rückstellung für Gewährleistung", 50, 0, none, "", false, 0, 0, M12, -15000},
    {2140, "RSTABSCHL", "Rückstellung für Abschlußkosten", 50, 0, none, "", false, 0, 0, M123, -9500},
    // Verbindlichkeiten
    {2210, "DARLHAFEN", "Darlehen Hafenbank", 61, 0, none, "", false, 0, 0, M12, -640000},
    {2220, "DARLLAND", "Darlehen Landeskasse", 61, 0, none, "", false, 0, 0, M12, -212000},
    {2230, "GESDARL", "Gesellschafterdarlehen", 66, 0, none, "", false, 0, 0, M13, -150000},
    {2310, "VERBLL", "Verbindlichkeiten aus Lieferungen", 62, 25, none, "", false, 0, 0, M123, 0},
    {2330, "ERHANZ", "Erhaltene Anzahlungen", 66, 0, regular, "", false, 50, 0, M123, -8000},
    {2410, "UST16", "Umsatzsteuer 16 %", 64, 24, none, "", false, 0, 0, M123, 0},
    {2411, "UST15", "Umsatzsteuer 15 %", 64, 24, none, "", false, 0, 0, M123, 0},
    {2412, "UST14", "Umsatzsteuer 14 %", 64, 24, none, "", false, 0, 0, M123, 0},
    {2420, "UST7", "Umsatzsteuer 7 %", 64, 24, none, "", false, 0, 0, M123, 0},
    {2430, "USTEG", "Umsatzsteuer EG", 64, 24, none, "", false, 0, 0, M123, 0},
    {2440, "USTSONST", "Umsatzsteuer sonstige Sätze", 64, 24, none, "", false, 36, 0, M123, 0},
    {2450, "USTVORAUS", "Umsatzsteuer-Vorauszahlungen", 64, 24, none, "", false, 0, 0, M123, 0},
    {2460, "USTSONDER", "Sondervorauszahlung", 64, 24, none, "", false, 39, 0, M2, 0},
    {2465, "SONDERVZ", "Geleistete Sondervorauszahlung", 64, 24, none, "", false, 0, 0, M2, 0},
    {2470, "USTVORJ", "Umsatzsteuer Vorjahr", 64, 24, none, "", false, 0, 0, M123, -31600},
    {2480, "USTOFFEN", "Umsatzsteuer nicht fällig", 64, 24, none, "", false, 0, 0, M3, 0},
    {2510, "LOHNST", "Lohn- und Kirchensteuer", 65, 0, none, "", false, 0, 0, M123, -14200},
    {2520, "SOZVERS", "Sozialversicherung", 65, 0, none, "", false, 0, 0, M123, -16900},
    {2530, "LOHNVERB", "Verbindlichkeiten aus Löhnen", 65, 0, none, "", false, 0, 0, M123, 0},
    {2540, "VERMBILD", "Vermögensbildung", 65, 0, none, "", false, 0, 0, M3, -900},
    {2550, "KARTEN", "Kreditkartenabrechnung", 66, 0, none, "", false, 0, 0, M123, -1300},
    {2560, "SONSTVERB", "Sonstige Verbindlichkeiten", 66, 25, none, "", false, 0, 0, M123, -7200},
    {2910, "PRAP", "Passive Rechnungsabgrenzung", 70, 0, none, "", false, 0, 0, M123, -2500},
    // Erlöse
    {5010, "ERLMOEBEL", "Erlöse Büromöbel", 81, 0, regular, "", true, 50, 8, M1, 0},
    {5020, "ERLBEDARF", "Erlöse Bürobedarf", 81, 0, regular, "", true, 50, 8, M1, 0},
    {5030, "ERLLEUCHT", "Erlöse Leuchten", 81, 0, regular, "", true, 50, 8, M1, 0},
    {5040, "ERLBUCH", "Erlöse Fachbücher 7 %", 81, 0, reduced, "", true, 86, 8, M1, 0},
    {5050, "ERLMONT", "Erlöse Montage", 81, 0, regular, "", true, 50, 3, M1, 0},
    {5060, "ERLFRACHT", "Weiterberechnete Frachten", 81, 0, regular, "", false, 50, 0, M12, 0},
    {5070, "ERLGARTEN", "Erlöse Gartengeräte", 81, 0, regular, "", true, 50, 0, M2, 0},
    {5080, "ERLPFLANZ", "Erlöse Pflanzen 7 %", 81, 0, reduced, "", true, 86, 0, M2, 0},
    {5090, "ERLBERAT", "Erlöse Beratung", 81, 0, regular, "", true, 50, 2, M3, 0},
    {5095, "ERLGRAFIK", "Erlöse Gestaltung", 81, 0, regular, "", true, 50, 3, M3, 0},
    {5097, "ERLRECHTE", "Erlöse Nutzungsrechte 7 %", 81, 0, reduced, "", true, 86, 3, M3, 0},
    {5110, "ERLEG", "Erlöse EG-Lieferungen", 82, 0, community, "16,00", false, 41, 3, M123, 0},
    {5115, "ERLEGPRIV", "Erlöse EG an Private", 82, 0, community, "16,00", false, 50, 3, M1, 0},
    {5120, "ERLDRITT", "Erlöse Ausfuhr", 82, 0, zero, "00,00", false, 43, 3, M123, 0},
    {5130, "ERLFREI", "Steuerfreie Erlöse Inland", 81, 0, zero, "00,00", false, 48, 0, M123, 0},
    {5140, "ERLSONST", "Erlöse sonstiger Steuersatz", 81, 0, other, "", false, 35, 0, M123, 0},
    {5210, "SKONTOGEW", "Gewährte Skonti", 83, 0, regular, "", false, 50, 0, M123, 0},
    {5220, "SKONTO7", "Gewährte Skonti 7 %", 83, 0, reduced, "", false, 86, 0, M123, 0},
    {5230, "BONUS", "Kundenboni", 83, 0, regular, "", false, 50, 0, M12, 0},
    {5240, "NACHLASS", "Nachlässe wegen Mängeln", 83, 0, regular, "", false, 50, 0, M123, 0},
    {5245, "NACHLASS7", "Nachlässe wegen Mängeln 7 %", 83, 0, reduced, "", false, 86, 0, M12, 0},
    {5250, "RETOUREN", "Rücksendungen von Kunden", 83, 0, regular, "", false, 50, 0, M2, 0},
    {5310, "MIETERTR", "Mieterträge", 84, 0, zero, "00,00", false, 48, 0, M12, 0},
    {5320, "PROVERL", "Provisionserlöse", 84, 0, regular, "", false, 50, 0, M123, 0},
    {5330, "ANLVERK", "Verkauf von Anlagen", 84, 0, regular, "", false, 50, 0, M123, 0},
    {5340, "VERSENT", "Versicherungsentschädigungen", 84, 0, none, "", false, 0, 0, M2, 0},
    {5350, "RSTAUFL", "Auflösung von Rückstellungen", 84, 0, none, "", false, 0, 0, M123, 0},
    {5360, "SACHBEZUG", "Sachbezüge Kraftfahrzeuge", 84, 0, regular, "", false, 50, 4, M123, 0},
    {5370, "KURSGEW", "Kursgewinne", 84, 0, none, "", false, 0, 0, M1, 0},
    {5390, "SONSTERTR", "Sonstige Erträge", 84, 0, regular, "", false, 50, 0, M123, 0},
    {5410, "ZINSERTR", "Zinserträge", 96, 0, none, "", false, 0, 0, M123, 0},
    // Material
    {6010, "WEMOEBEL", "Wareneinkauf Büromöbel", 86, 0, inRegular, "", false, 0, 6, M1, 0},
    {6020, "WEBEDARF", "Wareneinkauf Bürobedarf", 86, 0, inRegular, "", false, 0, 6, M1, 0},
    {6030, "WELEUCHT", "Wareneinkauf Leuchten", 86, 0, inRegular, "", false, 0, 6, M1, 0},
    {6040, "WEBUCH", "Wareneinkauf Fachbücher 7 %", 86, 0, inReduced, "", false, 0, 6, M1, 0},
    {6050, "FREMDLEIS", "Fremdleistungen", 86, 0, inRegular, "", false, 0, 3, M13, 0},
    {6060, "VERPACK", "Verpackungsmaterial", 86, 0, inRegular, "", false, 0, 6, M12, 0},
    {6070, "WEGARTEN", "Wareneinkauf Gartengeräte", 86, 0, inRegular, "", false, 0, 0, M2, 0},
    {6080, "WEPFLANZ", "Wareneinkauf Pflanzen 7 %", 86, 0, inReduced, "", false, 0, 0, M2, 0},
    {6110, "WEEG", "Wareneinkauf EG", 86, 0, inCommunity, "16,00", false, 0, 6, M123, 0},
    {6120, "WEDRITT", "Wareneinkauf Drittland", 86, 0, none, "", false, 0, 6, M12, 0},
    {6210, "BEZUGSKO", "Bezugskosten", 87, 0, inRegular, "", false, 0, 6, M12, 0},
    {6220, "ZOLL", "Zölle und Einfuhrabgaben", 87, 0, none, "", false, 0, 6, M12, 0},
    {6230, "SKONTOERH", "Erhaltene Skonti", 87, 0, inRegular, "", false, 0, 0, M123, 0},
    {6240, "BONUSERH", "Boni von Lieferanten", 87, 0, inRegular, "", false, 0, 0, M2, 0},
    {6250, "RUECKLIEF", "Rücksendungen an Lieferanten", 87, 0, inRegular, "", false, 0, 0, M2, 0},
    {6310, "BESTVER", "Bestandsveränderung", 86, 0, none, "", false, 0, 0, M123, 0},
    // Personal
    {7010, "GEHALT", "Gehälter", 88, 0, none, "", false, 0, 5, M123, 0},
    {7020, "LOHN", "Löhne Lager und Fuhrpark", 88, 0, none, "", false, 0, 5, M12, 0},
    {7030, "AUSHILFE", "Aushilfslöhne", 88, 0, none, "", false, 0, 5, M123, 0},
    {7040, "GFGEHALT", "Gehalt der Geschäftsführung", 88, 0, none, "", false, 0, 1, M13, 0},
    {7050, "SOZABGABE", "Arbeitgeberanteil Sozialversicherung", 88, 0, none, "", false, 0, 5, M123, 0},
    {7060, "BERUFSGEN", "Berufsgenossenschaft", 88, 0, none, "", false, 0, 5, M123, 0},
    {7070, "VWL", "Vermögenswirksame Leistungen", 88, 0, none, "", false, 0, 5, M3, 0},
    {7080, "FREIWSOZ", "Freiwillige Zuwendungen", 88, 0, none, "", false, 0, 1, M123, 0},
    {7090, "FAHRGELD", "Fahrgelderstattung", 88, 0, none, "", false, 0, 1, M3, 0},
    // Abschreibungen
    {7510, "AFAIMM", "Abschreibung Software und Rechte", 89, 0, none, "", false, 0, 1, M123, 0},
    {7520, "AFAGEB", "Abschreibung Gebäude", 89, 0, none, "", false, 0, 2, M12, 0},
    {7530, "AFABGA", "Abschreibung Ausstattung", 89, 0, none, "", false, 0, 2, M123, 0},
    {7540, "AFAKFZ", "Abschreibung Fahrzeuge", 89, 0, none, "", false, 0, 4, M123, 0},
    {7550, "AFAGWG", "Abschreibung GWG", 89, 0, none, "", false, 0, 1, M123, 0},
    {7560, "AFAFORD", "Abschreibung auf Forderungen", 89, 0, none, "", false, 0, 1, M123, 0},
    // Sonstiger Aufwand
    {8010, "MIETE", "Miete Geschäftsräume", 91, 0, inZero, "00,00", false, 0, 2, M123, 0},
    {8020, "MIETELAG", "Miete Außenlager", 91, 0, inRegular, "", false, 0, 2, M12, 0},
    {8030, "STROM", "Strom, Gas, Wasser", 91, 0, inRegular, "", false, 0, 2, M123, 0},
    {8040, "HEIZUNG", "Heizung", 91, 0, inRegular, "", false, 0, 2, M123, 0},
    {8050, "REINIGUNG", "Reinigung", 91, 0, inRegular, "", false, 0, 2, M123, 0},
    {8060, "INSTGEB", "Instandhaltung Gebäude", 91, 0, inRegular, "", false, 0, 2, M2, 0},
    {8070, "ABFALL", "Abfallentsorgung", 91, 0, inRegular, "", false, 0, 2, M2, 0},
    {8110, "KFZTANK", "Treibstoff", 92, 0, inRegular, "", false, 0, 4, M123, 0},
    {8120, "KFZREP", "Reparatur Fahrzeuge", 92, 0, inRegular, "", false, 0, 4, M123, 0},
    {8130, "KFZSTEUER", "Kraftfahrzeugsteuer", 92, 0, none, "", false, 0, 4, M123, 0},
    {8140, "KFZVERS", "Versicherung Fahrzeuge", 92, 0, none, "", false, 0, 4, M123, 0},
    {8150, "KFZMIETE", "Miete und Leasing Fahrzeuge", 92, 0, inRegular, "", false, 0, 4, M123, 0},
    {8210, "ANZEIGEN", "Anzeigen und Plakate", 93, 0, inRegular, "", false, 0, 7, M123, 0},
    {8220, "KATALOGE", "Kataloge und Drucksachen", 93, 0, inRegular, "", false, 0, 7, M123, 0},
    {8230, "MESSEN", "Messen und Ausstellungen", 93, 0, inRegular, "", false, 0, 7, M12, 0},
    {8240, "GESCHENKE", "Geschenke an Geschäftsfreunde", 93, 0, inRegular, "", false, 0, 0, M123, 0},
    {8250, "BEWIRTUNG", "Bewirtung", 93, 0, inRegular, "", false, 0, 0, M123, 0},
    {8260, "REISEN", "Reisekosten", 93, 0, inOther, "", false, 0, 0, M123, 0},
    {8310, "FRACHT", "Ausgangsfrachten", 94, 0, inRegular, "", false, 0, 3, M12, 0},
    {8320, "PROVISION", "Provisionen Handelsvertreter", 94, 0, inRegular, "", false, 0, 3, M1, 0},
    {8330, "GEWAEHR", "Gewährleistungen", 94, 0, inRegular, "", false, 0, 0, M2, 0},
    {8410, "PORTO", "Porto", 95, 0, none, "", false, 0, 1, M123, 0},
    {8420, "TELEFON", "Telefon und Datenleitungen", 95, 0, none, "", false, 0, 1, M123, 0},
    {8430, "BUEROMAT", "Büromaterial", 95, 0, inRegular, "", false, 0, 1, M123, 0},
    {8440, "LITERATUR", "Zeitschriften und Bücher", 95, 0, inReduced, "", false, 0, 1, M123, 0},
    {8450, "RECHTSB", "Rechtsberatung", 95, 0, inRegular, "", false, 0, 1, M123, 0},
    {8460, "STEUERB", "Steuerberatung und Abschluß", 95, 0, inRegular, "", false, 0, 1, M123, 0},
    {8470, "FORTBILD", "Fortbildung", 95, 0, inRegular, "", false, 0, 1, M123, 0},
    {8480, "EDVKOSTEN", "Wartung und Betrieb EDV", 95, 0, inRegular, "", false, 0, 1, M123, 0},
    {8490, "WARTUNG", "Wartung Einrichtung", 95, 0, inRegular, "", false, 0, 2, M2, 0},
    {8510, "KLEINGER", "Werkzeug und Kleingerät", 95, 0, inRegular, "", false, 0, 0, M12, 0},
    {8520, "LEASING", "Leasing Büromaschinen", 95, 0, inRegular, "", false, 0, 1, M3, 0},
    {8530, "VERSICH", "Versicherungen", 95, 0, none, "", false, 0, 1, M123, 0},
    {8540, "BEITRAEGE", "Beiträge und Gebühren", 95, 0, none, "", false, 0, 1, M123, 0},
    {8550, "GELDVERK", "Kosten des Geldverkehrs", 95, 0, none, "", false, 0, 1, M123, 0},
    {8560, "KURSVERL", "Kursverluste", 95, 0, none, "", false, 0, 0, M1, 0},
    {8590, "SONSTAUFW", "Sonstiger Aufwand", 95, 0, inRegular, "", false, 0, 0, M123, 0},
    // Finanzen und Steuern
    {8610, "ZINSKURZ", "Zinsen für Kontokredite", 96, 0, none, "", false, 0, 0, M123, 0},
    {8620, "ZINSDARL", "Zinsen für Darlehen", 96, 0, none, "", false, 0, 0, M12, 0},
    {8710, "KOERPST", "Körperschaftsteuer", 97, 0, none, "", false, 0, 0, M13, 0},
    {8720, "SOLI", "Solidaritätszuschlag", 97, 0, none, "", false, 0, 0, M13, 0},
    {8730, "GEWERBEST", "Gewerbesteuer", 97, 0, none, "", false, 0, 0, M123, 0},
    {8740, "GRUNDST", "Grundsteuer", 97, 0, none, "", false, 0, 0, M2, 0},
    // In den Listen geführt, aber ohne Platz in Bilanz und GuV
    {1999, "KLAERAKT", "Ungeklärte Zahlungsausgänge", unassignedAktiva, 0, none, "", false, 0, 0, M123, 0},
    {2990, "KLAERPAS", "Ungeklärte Zahlungseingänge", unassignedPassiva, 0, none, "", false, 0, 0, M123, 0},
    {8990, "KLAERAUF", "Ungeklärter Aufwand", unassignedGuv, 0, none, "", false, 0, 0, M123, 0},
    // Ohne Zuordnung
    {9010, "SVSACH", "Saldenvorträge Sachkonten", noTree, 0, none, "", false, 0, 0, M123, 0},
    {9020, "ABSTDEBI", "Abstimmkonto Debitoren", noTree, 0, none, "", false, 0, 0, M123, 0},
    {9030, "ABSTKRED", "Abstimmkonto Kreditoren", noTree, 0, none, "", false, 0, 0, M123, 0},
    {9060, "ERWERBEG", "Innergemeinschaftliche Erwerbe", noTree, 0, none, "", false, 92, 0, M123, 0},
    {9070, "GEGENEG", "Gegenkonto der Erwerbe", noTree, 0, none, "", false, 0, 0, M123, 0},
    {9100, "GEGENSTAT", "Gegenkonto der Zählungen", noTree, 0, none, "", false, 0, 0, M13, 0},
    {9110, "KOEPFE", "Anzahl der Beschäftigten", noTree, 0, none, "", false, 0, 0, M13, 0},
    {9120, "FLAECHE", "Verkaufsfläche in Quadratmetern", noTree, 0, none, "", false, 0, 0, M12, 0},
};

// Within a code the newest rate comes first, and the last row holds for every earlier day, so that a rate is
// found for any date. Codes 2 and 4 change on the same days, since one sequence number is used for both. Code
// 0 is that of trade inside the European Community, whose flag leaves nothing of the five bits of a code.
constexpr RateRow rates[] = {
    {M12, 0, 0, 1998, 4, 1, "16,00", 2430, 1630}, {M12, 0, 1, 1993, 1, 1, "15,00", 2430, 1630},
    {M12, 0, 2, 0, 0, 0, "14,00", 2430, 1630},    {M12, 2, 0, 1998, 4, 1, "16,00", 2410, 1610},
    {M12, 2, 1, 1993, 1, 1, "15,00", 2411, 1611}, {M12, 2, 2, 0, 0, 0, "14,00", 2412, 1612},
    {M12, 4, 0, 1998, 4, 1, "07,00", 2420, 1620}, {M12, 4, 1, 1993, 1, 1, "07,00", 2420, 1620},
    {M12, 4, 2, 0, 0, 0, "07,00", 2420, 1620},    {M12, 8, 0, 0, 0, 0, "00,00", 2440, 1640},
    {M12, 16, 0, 0, 0, 0, "00,00", 2440, 1640},   {M3, 0, 0, 1998, 4, 1, "16,00", 2430, 1630},
    {M3, 0, 1, 1993, 1, 1, "15,00", 2430, 1630},  {M3, 0, 2, 0, 0, 0, "14,00", 2430, 1630},
    {M3, 2, 0, 1998, 4, 1, "16,00", 2480, 1610},  {M3, 2, 1, 1993, 1, 1, "15,00", 2480, 1611},
    {M3, 2, 2, 0, 0, 0, "14,00", 2480, 1612},     {M3, 4, 0, 1998, 4, 1, "07,00", 2480, 1620},
    {M3, 4, 1, 1993, 1, 1, "07,00", 2480, 1620},  {M3, 4, 2, 0, 0, 0, "07,00", 2480, 1620},
    {M3, 8, 0, 0, 0, 0, "00,00", 2440, 1640},     {M3, 16, 0, 0, 0, 0, "00,00", 2440, 1640},
};

constexpr CostObjectRow costObjects[] = {
    {"100", "VERWALT", "Verwaltung", "Geschäftsleitung, Buchhaltung, Empfang", false, M13},
    {"200", "EINKAUF", "Einkauf", "Disposition und Wareneingang", false, M1},
    {"300", "LAGER", "Lager", "Halle Nord und Außenlager", false, M1},
    {"310", "VERSAND", "Versand", "Packplätze und Rampe", false, M1},
    {"400", "VINLAND", "Vertrieb Inland", "Außendienst und Telefonverkauf", false, M1},
    {"410", "VAUSLAND", "Vertrieb Ausland", "EG und übriges Ausland", false, M1},
    {"420", "LADEN", "Ladengeschäft", "Filiale Altona", false, M1},
    {"500", "FUHRPARK", "Fuhrpark", "Pkw, Lkw und Stapler", false, M1},
    {"600", "HAUSEDV", "Hauseigene EDV", "", false, M1},
    {"700", "MONTAGE", "Montage", "Aufbau beim Kunden", false, M1},
    {"200", "BERATUNG", "Beratung", "Konzept und Kontakt", false, M3},
    {"300", "GRAFIK", "Gestaltung", "Grafik und Reinzeichnung", false, M3},
    {"400", "PRODUKT", "Produktion", "Druck und Film", false, M3},
    {"9010", "KTMOEBEL", "Büromöbel", "Kostenträger Warengruppe 1", true, M1},
    {"9020", "KTBEDARF", "Bürobedarf", "Kostenträger Warengruppe 2", true, M1},
    {"9030", "KTLEUCHT", "Leuchten", "Kostenträger Warengruppe 3", true, M1},
    {"9040", "KTKUNDE", "Kundenaufträge", "Kostenträger Aufträge", true, M3},
};

constexpr CostTemplateRow costTemplates[] = {
    {1, "Verwaltung", M13},
    {2, "Räume nach Fläche", M13},
    {3, "Vertrieb zu gleichen Teilen", M1},
    {3, "Aufträge zu gleichen Teilen", M3},
    {4, "Fahrzeuge", M1},
    {5, "Personal nach Köpfen", M1},
    {6, "Wareneinkauf", M1},
    {7, "Werbung je zur Hälfte", M1},
    {8, "Verkauf Inland", M1},
};

constexpr CostLineRow costLines[] = {
    {1, "100", "", false, "100,00", "Verwaltung", M13},
    {2, "100", "", false, "020,00", "Kontor", M1},
    {2, "300", "", false, "055,00", "Halle Nord", M1},
    {2, "420", "", false, "025,00", "Ladenfläche", M1},
    {3, "400", "9010", true, "033,33", "Möbel", M1},
    {3, "410", "9020", true, "033,33", "Bedarf", M1},
    {3, "420", "9030", true, "033,34", "Leuchten", M1},
    {4, "500", "", false, "060,00", "Lieferfahrzeuge", M1},
    {4, "400", "", false, "025,00", "Außendienst", M1},
    {4, "100", "", false, "015,00", "Geschäftsleitung", M1},
    {5, "100", "", false, "025,00", "Verwaltung", M1},
    {5, "200", "", false, "015,00", "Einkauf", M1},
    {5, "300", "", false, "035,00", "Lager und Versand", M1},
    {5, "400", "", false, "025,00", "Vertrieb", M1},
    {6, "200", "9010", true, "100,00", "Wareneinkauf", M1},
    {7, "400", "", false, "050,00", "Inland", M1},
    {7, "410", "", false, "050,00", "Ausland", M1},
    {8, "400", "9010", true, "100,00", "Verkauf", M1},
    {2, "100", "", false, "030,00", "Empfang", M3},
    {2, "200", "", false, "030,00", "Besprechung", M3},
    {2, "300", "", false, "040,00", "Studio", M3},
    {3, "200", "9040", true, "033,33", "Konzept", M3},
    {3, "300", "9040", true, "033,33", "Entwurf", M3},
    {3, "400", "9040", true, "033,33", "Ausführung", M3},
};

constexpr TermRow terms[] = {
    {1, "sofort ohne Abzug", 0, 0},
    {2, "8 Tage 2 % Skonto, 14 Tage netto", 14, 8},
    {3, "10 Tage Skonto, 30 Tage netto", 30, 10},
    {4, "30 Tage netto", 30, 0},
    {5, "60 Tage netto", 60, 0},
};

// Numbers up to 15 belong to the accounting application itself.
constexpr StapelRow batches[] = {
    {1, "Eröffnung", 0},       {2, "Zahlungsverkehr", 0},          {16, "Laufende Buchungen", 0},
    {17, "Kasse", 0},          {18, "Löhne und Gehälter", 1},      {19, "Miete und Leasing", 1},
    {20, "Versicherungen", 3}, {21, "Übernahme aus Vorsystem", 0},
};

constexpr UserRow users[] = {
    {"ADM", "Verwalter"},
    {"KLÜ", "Karin Lüders"},
    {"SBR", "Sönke Brodersen"},
    {"TWI", "Tatjana Wiebe"},
};

constexpr CurrencyRow currencies[] = {
    {"USD", 1, 160, 1},  {"GBP", 1, 268, 2},   {"CHF", 2, 11530, 35},
    {"ATS", 2, 1421, 0}, {"DKK", 2, 2625, -1}, {"ITL", 3, 102, 0},
};

} // namespace

std::span<const GroupRow> Groups() { return groups; }
std::span<const AccountRow> Accounts() { return accounts; }
std::span<const RateRow> Rates() { return rates; }
std::span<const CostObjectRow> CostObjects() { return costObjects; }
std::span<const CostTemplateRow> CostTemplates() { return costTemplates; }
std::span<const CostLineRow> CostLines() { return costLines; }
std::span<const TermRow> Terms() { return terms; }
std::span<const StapelRow> Batches() { return batches; }
std::span<const UserRow> Users() { return users; }
std::span<const CurrencyRow> Currencies() { return currencies; }

} // namespace books
