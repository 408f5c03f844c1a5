#include "tools/sql/views.h"

namespace sql {

namespace {

// Final postings as the reports take them: without the lines that are folded into another.
constexpr const char *buchungen = R"(
SELECT Mandant, Jahr, "Schluessel.Tag" AS Datum, Buchungsnummer, Beleg,
  coalesce(Datum, "Schluessel.Belegdatum") AS Belegdatum, Sollkonto, Habenkonto,
  CASE WHEN abs(Haben) <= abs(Soll) THEN Soll WHEN Soll < 0 THEN -abs(Haben) ELSE abs(Haben) END AS Betrag,
  dezimal(CASE WHEN abs(Haben) <= abs(Soll) THEN Soll WHEN Soll < 0 THEN -abs(Haben) ELSE abs(Haben) END)
    AS Betrag_Text,
  Soll, Haben, Steuerkonto, Steuer, Steuersatz, Text, Buchungsdatum AS Erfasst, Benutzer, Status
FROM temp.bube WHERE Status & 8 = 0)";

// What lies in the Stapel, a row a Teilbuchung. They stand in the last year alone.
constexpr const char *stapelbuchungen = R"(
SELECT b.Mandant, b.Jahr, b.Stapel, b.Buchungsnummer, 1 AS Teil, b.Buchungsdatum AS Datum, b.Beleg,
  b."Teil.Sollkonto" AS Sollkonto, b."Teil.Habenkonto" AS Habenkonto, b."Teil.Brutto" AS Brutto,
  b."Teil.Brutto_Text" AS Brutto_Text, b."Teil.Netto" AS Netto, b."Teil.Steuerkonto" AS Steuerkonto,
  b."Teil.Steuersatz" AS Steuersatz, b."Teil.Text" AS Text, b.Waehrung, b.Waehrungsbetrag
FROM temp.fista f CROSS JOIN temp.bat b ON b.Mandant = f.Nummer AND b.Jahr = f.UpperYear
UNION ALL
SELECT b.Mandant, b.Jahr, b.Stapel, b.Buchungsnummer,
  1 + (SELECT count(*) FROM temp.split e WHERE e.Mandant = s.Mandant AND e.Jahr = s.Jahr
       AND e.Buchungsnummer = s.Buchungsnummer AND e.Splitnummer <= s.Splitnummer) AS Teil,
  b.Buchungsdatum, b.Beleg, s.Sollkonto, s.Habenkonto, s.Brutto, s.Brutto_Text, s.Netto, s.Steuerkonto,
  s.Steuersatz, s.Text, b.Waehrung, b.Waehrungsbetrag
FROM temp.fista f CROSS JOIN temp.bat b ON b.Mandant = f.Nummer AND b.Jahr = f.UpperYear
  CROSS JOIN temp.split s ON s.Mandant = b.Mandant AND s.Jahr = b.Jahr
    AND s.Buchungsnummer = b.Buchungsnummer)";

// Open items as they are today: those of the last year.
constexpr const char *openItemsOf = R"(
SELECT o.Mandant, o.Jahr, '$ART' AS Kontoart, o.Konto,
  (SELECT Name1 FROM temp.$KONTEN k WHERE k.Mandant = o.Mandant AND k.Jahr = o.Jahr AND k.Konto = o.Konto)
    AS Name,
  o.Nummer, o.Referenz1 AS Referenz, o.Datum1 AS Datum, o.Termin, o.Skontodatum,
  CASE o.Waehrung WHEN '' THEN o.Betrag1 ELSE o.Waehrungsbetrag END AS Betrag,
  dezimal(CASE o.Waehrung WHEN '' THEN o.Betrag1 ELSE o.Waehrungsbetrag END) AS Betrag_Text,
  CASE o.Waehrung WHEN '' THEN f.Waehrung ELSE o.Waehrung END AS Waehrung,
  o.Betrag1 AS Betrag_Mandant, o.Text2 AS Text
FROM temp.fista f CROSS JOIN temp.$POSTEN o ON o.Mandant = f.Nummer AND o.Jahr = f.UpperYear)";

// Cost lines; what lies on the Haben side counts against.
constexpr const char *kosten = R"(
SELECT k.Mandant, k.Jahr, k.Datum, k.Kostenobjekt1 AS Kostenstelle, k.Kostenobjekt2 AS Kostenstelle2,
  (SELECT Name FROM temp.kore o WHERE o.Mandant = k.Mandant AND o.Jahr = k.Jahr
     AND o.Nummer = k.Kostenobjekt1) AS Name,
  k.Konto, iif(k.Flag & 32, -k.Betrag, k.Betrag) AS Betrag,
  dezimal(iif(k.Flag & 32, -k.Betrag, k.Betrag)) AS Betrag_Text, k.Text,
  k.FinaleBuchung <> 0 AS Endgueltig, k.FinaleBuchung AS Buchungsnummer,
  (SELECT Beleg FROM temp.bube b WHERE b.Mandant = k.Mandant AND b.Jahr = k.Jahr
     AND b.Buchungsnummer = k.FinaleBuchung) AS Beleg
FROM temp.kobu k)";

std::string With(std::string text, const std::string &mark, const std::string &value)
{
    for (size_t at = 0; (at = text.find(mark, at)) != std::string::npos; at += value.size()) {
        text.replace(at, mark.size(), value);
    }
    return text;
}

// The year's turnover of a side: its months, and what was posted at its end.
std::string YearSum(const std::string &side)
{
    std::string sum = "\"Umsaetze.Slot0." + side + "\"";
    for (int month = 0; month < 12; ++month) {
        sum += " + \"Umsaetze.Monat[" + std::to_string(month) + "]." + side + "\"";
    }
    return sum;
}

std::string BalancesOf(const std::string &table, const std::string &kind, const std::string &name)
{
    const std::string carried = "\"Umsaetze.Vortrag.Soll\" - \"Umsaetze.Vortrag.Haben\"";
    const std::string soll = YearSum("Soll");
    const std::string haben = YearSum("Haben");
    const std::string balance = carried + " + " + soll + " - (" + haben + ")";
    return "SELECT Mandant, Jahr, '" + kind + "' AS Kontoart, Konto, Kuerzel, " + name + " AS Name, " +
           carried + " AS Vortrag, " + soll + " AS Soll, " + haben + " AS Haben, " + balance +
           " AS Saldo, dezimal(" + balance + ") AS Saldo_Text FROM temp." + table;
}

std::string OpenItemsOf(const std::string &kind, const std::string &accounts, const std::string &items)
{
    return With(With(With(openItemsOf, "$ART", kind), "$KONTEN", accounts), "$POSTEN", items);
}

} // namespace

const std::vector<View> &Views()
{
    static const std::vector<View> all = {
        {"buchungen", buchungen},
        {"stapelbuchungen", stapelbuchungen},
        {"salden", BalancesOf("sako", "Sachkonto", "Name") + " UNION ALL " +
                       BalancesOf("kred", "Kreditor", "Name1") + " UNION ALL " +
                       BalancesOf("debi", "Debitor", "Name1")},
        {"offene_posten", OpenItemsOf("Debitor", "debi", "opdebi") + " UNION ALL " +
                              OpenItemsOf("Kreditor", "kred", "opkred")},
        {"kosten", kosten},
    };
    return all;
}

} // namespace sql
