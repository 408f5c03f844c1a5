#include "tools/vark/mandanten.h"

#include "tools/common/exit_codes.h"
#include "tools/common/texts.h"
#include "tools/vark/reasons.h"

#include <iostream>

namespace cli {

using namespace tools;

namespace {

constexpr const char *monthNames[] = {"Januar", "Februar", "März",      "April",   "Mai",      "Juni",
                                      "Juli",   "August",  "September", "Oktober", "November", "Dezember"};

std::string YearsOf(const Mandant &mandant)
{
    return mandant.LowerYear.empty() ? mandant.UpperYear : mandant.LowerYear + "–" + mandant.UpperYear;
}

const char *CostsOf(const Mandant &mandant)
{
    if (mandant.Record.Kostenrechnung == 0) return "nein";
    return mandant.Record.KostenPflicht == 0 ? "ja" : "ja, Pflicht";
}

std::string MonthOf(const Mandant &mandant)
{
    return mandant.FirstMonth >= 1 && mandant.FirstMonth <= 12 ? monthNames[mandant.FirstMonth - 1] : "?";
}

} // namespace

TextTable MandantenTable(const std::vector<Mandant> &mandanten)
{
    TextTable table{
        {{"Nr", Align::Right}, {"Mandant"}, {"bebuchbar"}, {"Geschäftsjahr ab"}, {"Kostenrechnung"}}, {}};
    for (const Mandant &mandant : mandanten) {
        table.Add({std::to_string(mandant.Number), mandant.Name, YearsOf(mandant), MonthOf(mandant),
                   CostsOf(mandant)});
    }
    return table;
}

int ShowMandanten(Output as)
{
    NeedLibrary();
    const std::vector<Mandant> mandanten = ReadMandanten(ConfiguredDataPath());
    if (as == Output::Table) {
        MandantenTable(mandanten).Print(std::cout);
        return ExitGood;
    }
    RowWriter rows({{"Nr", "nummer", 0},
                    {"Name", "name", 0},
                    {"Erstes Jahr", "erstesJahr", 0},
                    {"Letztes Jahr", "letztesJahr", 0},
                    {"Erster Monat", "ersterMonat", 0},
                    {"Kostenrechnung", "kostenrechnung", 0},
                    {"Kosten Pflicht", "kostenPflicht", 0},
                    {"Währung", "waehrung", 0},
                    {"Land", "land", 0},
                    {"USt-IdNr", "ustid", 0}},
                   as);
    for (const Mandant &mandant : mandanten) {
        rows.PutNumber(mandant.Number);
        rows.PutUtf8(mandant.Name);
        rows.PutUtf8(mandant.LowerYear.empty() ? mandant.UpperYear : mandant.LowerYear);
        rows.PutUtf8(mandant.UpperYear);
        rows.PutNumber(mandant.FirstMonth);
        rows.PutFlag(mandant.Record.Kostenrechnung != 0, "ja");
        rows.PutFlag(mandant.Record.KostenPflicht != 0, "ja");
        for (const std::string &text : {FieldText(mandant.Record.Waehrung), FieldText(mandant.Record.Land),
                                        FieldText(mandant.Record.UstId)}) {
            rows.PutUtf8(text);
        }
        rows.EndRow();
    }
    rows.End();
    return ExitGood;
}

} // namespace cli
