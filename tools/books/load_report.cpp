#include "tools/books/load_report.h"

#include "tools/common/json.h"
#include "tools/common/terminal.h"
#include "tools/common/texts.h"

#include <iostream>

namespace books {

using namespace tools;

namespace {

std::string Counted(int64_t number, const char *one, const char *many)
{
    return Grouped(number) + " " + (number == 1 ? one : many);
}

void PrintRefusal(const Refusal &refusal)
{
    std::string line = refusal.File;
    if (refusal.Record > 0) {
        line += ", Satz " + Grouped(static_cast<int64_t>(refusal.Record)) + " (ab Byte " +
                Grouped(static_cast<int64_t>(refusal.Offset)) + ")";
    }
    if (!refusal.Key.empty()) line += " [" + refusal.Key + "]";
    if (!refusal.Field.empty()) line += " " + refusal.Field;
    std::cout << Printable(line + ": " + refusal.Reason) << '\n';
}

} // namespace

void PrintLoad(const LoadSummary &summary, const LoadOptions &options)
{
    for (const Refusal &refusal : summary.Refusals) {
        PrintRefusal(refusal);
    }
    const int64_t hidden = summary.Refused + summary.Remarks - static_cast<int64_t>(summary.Refusals.size());
    if (hidden > 0) std::cout << "Noch " << Grouped(hidden) << " weitere; --hoechstens zeigt mehr.\n";
    if (!summary.Refusals.empty()) std::cout << '\n';
    const std::string read =
        Counted(summary.Tables, "Tabelle", "Tabellen") + ", " + Counted(summary.Records, "Satz", "Sätze");
    if (summary.Refused > 0) {
        std::cout << "Nichts geladen: " << Counted(summary.Refused, "Grund", "Gründe") << ".\n";
        return;
    }
    if (summary.Remarks > 0) {
        std::cout << Counted(summary.Remarks, "Feld", "Felder") << " mit ungewöhnlicher Form übernommen.\n";
    }
    if (options.IsTrial) {
        std::cout << "Geprüft: " << read << ", alles ließe sich laden.\n";
    } else {
        std::cout << "Geladen nach " << std::filesystem::absolute(options.To).lexically_normal().string()
                  << ": " << read << ".\n";
    }
}

void PrintLoadJson(const LoadSummary &summary)
{
    rapidjson::OStreamWrapper stream(std::cout);
    JsonWriter json(stream);
    json.StartObject();
    Put(json, "geladen", summary.IsLoaded);
    Put(json, "tabellen", summary.Tables);
    Put(json, "saetze", summary.Records);
    Put(json, "abgelehnt", summary.Refused);
    Put(json, "bemerkt", summary.Remarks);
    Put(json, "gruende");
    json.StartArray();
    for (const Refusal &refusal : summary.Refusals) {
        json.StartObject();
        Put(json, "datei", refusal.File);
        Put(json, "satz", static_cast<int64_t>(refusal.Record));
        Put(json, "byte", static_cast<int64_t>(refusal.Offset));
        Put(json, "schluessel", refusal.Key);
        Put(json, "feld", refusal.Field);
        Put(json, "grund", refusal.Reason);
        json.EndObject();
    }
    json.EndArray();
    json.EndObject();
    std::cout << '\n' << std::flush;
}

} // namespace books
