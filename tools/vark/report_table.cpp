#include "tools/vark/report_table.h"

#include "tools/vark/kontoart.h"

namespace cli {

namespace {

constexpr unsigned personal = ArtKreditor | ArtDebitor;
constexpr unsigned accounts = ArtSachkonto | personal;
constexpr unsigned anyPeriod = PeriodMonth | PeriodQuarter | PeriodYear | PeriodDays;
constexpr unsigned wholePeriod = PeriodMonth | PeriodQuarter | PeriodYear;
constexpr unsigned taxPeriod = wholePeriod | PeriodCalendar;

constexpr ChoiceWord lists[] = {{"aktiva", 1010}, {"passiva", 1011}, {"guv", 1012}};
constexpr ChoiceWord levels[] = {{"1", 1002}, {"2", 1003}, {"3", 1004}};
constexpr ChoiceWord groupings[] = {{"skonto", 1002}, {"termin", 1003}, {"konto", 1004}};

constexpr OwnOption abschlussOptions[] = {
    {"--liste", ControlUse::Choose, 0, "aktiva (sonst), passiva oder guv", lists},
};
constexpr OwnOption bilanzOptions[] = {
    {"--ebene", ControlUse::Choose, 0, "Gruppen bis zu dieser Ebene: 1, 2 oder 3 (sonst)", levels},
    {"--ohne-konten", ControlUse::Untick, 1047, "die Gruppen ohne ihre Konten"},
    {"--nur-bebuchte", ControlUse::Tick, 1042, "nur bebuchte Konten"},
    {"--kontenstruktur", ControlUse::Tick, 1041, "mit Nummer und Kürzel der Konten"},
    {"--erste-ebene-unter", ControlUse::Tick, 1048, "die 1. Ebene unter der 2. (nein: darüber)"},
};
constexpr OwnOption journalOptions[] = {
    {"--buchungsdatum", ControlUse::Tick, 1018, "nach dem Buchungsdatum statt nach dem Belegdatum"},
};
constexpr OwnOption sheetOptions[] = {
    {"--sammelbuchungen-aufloesen", ControlUse::Tick, 1022, "die Teile von Sammelbuchungen einzeln"},
    {"--ohne-buchungen", ControlUse::Tick, 1023, "die Summen ohne die Buchungen"},
    {"--nur-bebuchte", ControlUse::Tick, 1024, "nur bebuchte Konten"},
};
constexpr OwnOption costSheetOptions[] = {
    {"--ohne-buchungen", ControlUse::Tick, 1023, "die Summen ohne die Buchungen"},
};
constexpr OwnOption itemOptions[] = {
    {"--gruppierung", ControlUse::Choose, 0, "nach skonto (sonst), termin oder konto", groupings},
};
constexpr OwnOption turnoverOptions[] = {
    {"--brutto", ControlUse::Untick, 1031, "Bruttobeträge statt der Nettobeträge"},
    {"--mindestumsatz", ControlUse::Type, 1005, "nur Konten ab diesem Umsatz", {}, 12},
    {"--land", ControlUse::Type, 1032, "nur Konten dieses Landes", {}, 3},
    {"--plz", ControlUse::Type, 1033, "nur Konten, deren PLZ so beginnt", {}, 6},
};
constexpr OwnOption returnOptions[] = {
    {"--berichtigt", ControlUse::Tick, 1053, "eine berichtigte Anmeldung"},
};
constexpr OwnOption batchOptions[] = {
    {"--mit-stapel", ControlUse::Tick, 1034, "auch was noch in Stapeln liegt"},
};

template <auto Export> VarkWindow Make(int32_t mandant, ReportParams *params)
{
    return Export(mandant, nullptr, params);
}
template <auto Export, int32_t Flag> VarkWindow MakeWith(int32_t mandant, ReportParams *params)
{
    return Export(mandant, Flag, nullptr, params);
}

using enum Counted;
using namespace vark;

constexpr ReportRow rows[] = {
    {.Name = "kontenplan",
     .Title = "Kontenplan",
     .Make = Make<VARK_Kontenplan>,
     .Dialog = 110,
     .Kontoarten = accounts,
     .Progress = AccountsOfKind,
     .Example = "--art Debitor --pdf debitoren.pdf"},
    {.Name = "susa",
     .Title = "Summen- und Saldenliste",
     .Make = Make<VARK_SummenSaldenListe>,
     .Dialog = 111,
     .Periods = PeriodPer,
     .Kontoarten = accounts,
     .Progress = AccountsOfKind,
     .Example = "--per 31.3.98 --art Debitor --pdf susa.pdf"},
    {.Name = "hauptabschluss",
     .Title = "Hauptabschlußübersicht",
     .Make = Make<VARK_HauptAbschluss>,
     .Dialog = 112,
     .Periods = PeriodYear,
     .Options = abschlussOptions,
     .Example = "--jahr 1998 --liste passiva"},
    {.Name = "bilanz",
     .Title = "Bilanz",
     .Make = MakeWith<VARK_Bilanz, 0>,
     .Dialog = 127,
     .Periods = PeriodMonth | PeriodYear | PeriodPer,
     .IsCompared = true,
     .Options = bilanzOptions,
     .Example = "--jahr 1998 --vergleich-jahr 1997 --ebene 2 --pdf bilanz.pdf"},
    {.Name = "eroeffnungsbilanz",
     .Title = "Eröffnungsbilanz",
     .Make = MakeWith<VARK_Bilanz, 1>,
     .Dialog = 130,
     .Periods = PeriodYear,
     .Options = bilanzOptions,
     .Example = "--jahr 1998"},
    {.Name = "guv",
     .Title = "Gewinn- und Verlustrechnung",
     .Make = Make<VARK_GUV>,
     .Dialog = 124,
     .Periods = wholePeriod | PeriodPer,
     .IsCompared = true,
     .Options = bilanzOptions,
     .Example = "--quartal 1 --jahr 1998 --vergleich-quartal 1 --vergleich-jahr 1997"},
    {.Name = "journal",
     .Title = "Buchungsjournal",
     .Make = Make<VARK_Buchungsjournal>,
     .Dialog = 113,
     .Periods = anyPeriod,
     .Options = journalOptions,
     .Table = TableBube,
     .Example = "--monat 3 --jahr 1998 --csv maerz.csv"},
    {.Name = "kontenblatt",
     .Title = "Kontenblätter",
     .Make = MakeWith<VARK_Kontenblatt, 0>,
     .Dialog = 114,
     .Periods = anyPeriod,
     .Kontoarten = accounts,
     .Options = sheetOptions,
     .Table = TableBube,
     .Example = "--jahr 1998 --konto 1840 --pdf bank.pdf"},
    {.Name = "kostenblatt",
     .Title = "Kostenstellenauswertung",
     .Make = MakeWith<VARK_Kontenblatt, 1>,
     .Dialog = 132,
     .Periods = anyPeriod,
     .Kontoarten = ArtKostenstelle,
     .Options = costSheetOptions,
     .Table = TableKobu,
     .Example = "--monat 3 --jahr 1998 --ohne-buchungen"},
    {.Name = "op",
     .Title = "OP-Liste",
     .Make = Make<VARK_OPListe>,
     .Dialog = 129,
     .Kontoarten = personal,
     .Options = itemOptions,
     .Progress = OpenItemsOfKind,
     .Example = "--art Debitor --gruppierung termin"},
    {.Name = "umsatzstatistik",
     .Title = "Umsatzstatistik",
     .Make = Make<VARK_UmsatzStatistik>,
     .Dialog = 119,
     .Periods = wholePeriod,
     .Kontoarten = personal,
     .Options = turnoverOptions,
     .Progress = AccountsOfKind,
     .Example = "--jahr 1998 --art Debitor --mindestumsatz 5000"},
    {.Name = "ustva",
     .Title = "Umsatzsteuervoranmeldung",
     .Make = Make<VARK_UmsatzSteuerVoranmeldung>,
     .Dialog = 122,
     .Periods = taxPeriod,
     .Options = returnOptions,
     .Table = TableBube,
     .LocksPeriod = true,
     .Example = "--monat 3 --jahr 1998 --json"},
    {.Name = "verprobung",
     .Title = "Umsatzsteuerverprobung",
     .Make = Make<VARK_UmsatzSteuerVerprobung>,
     .Dialog = 128,
     .Periods = taxPeriod,
     .Example = "--jahr 1998"},
    {.Name = "zm",
     .Title = "Zusammenfassende Meldung",
     .Make = Make<VARK_ZusammenfassendeMeldung>,
     .Dialog = 123,
     .Periods = taxPeriod,
     .Table = TableDebi,
     .Example = "--quartal 1 --jahr 1998"},
    {.Name = "kostensalden",
     .Title = "Kostensaldenliste",
     .Make = Make<VARK_KostenSaldenListe>,
     .Dialog = 117,
     .Periods = wholePeriod,
     .Kontoarten = ArtKostenstelle,
     .Progress = AccountsOfKind,
     .Example = "--monat 3 --jahr 1998"},
    {.Name = "kostenstellen",
     .Title = "Kostenstellenliste",
     .Make = Make<VARK_KostenstellenListe>,
     .Dialog = 118,
     .Kontoarten = ArtKostenstelle,
     .Progress = AccountsOfKind,
     .Example = "--csv"},
    {.Name = "kostenjournal",
     .Title = "Kostenjournal",
     .Make = Make<VARK_Kostenjournal>,
     .Dialog = 120,
     .Periods = anyPeriod,
     .Options = batchOptions,
     .Table = TableKobu,
     .Example = "--monat 3 --jahr 1998 --mit-stapel"},
    {.Name = "kostenaufteilung",
     .Title = "Kostenaufteilung",
     .Make = Make<VARK_KostenAufteilung>,
     .Dialog = 121,
     .Periods = anyPeriod,
     .Kontoarten = ArtKostenstelle,
     .Options = batchOptions,
     .Table = TableKobu,
     .Example = "--jahr 1998 --konto 9010"},
};

} // namespace

std::span<const ReportRow> ReportTable() { return rows; }

} // namespace cli
