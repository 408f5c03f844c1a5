#include "tools/vark/status.h"

#include "include/vark40.h"
#include "tools/common/exit_codes.h"
#include "tools/common/installation.h"
#include "tools/common/json.h"
#include "tools/vark/mandanten.h"
#include "tools/vark/reasons.h"

#include <iostream>

namespace cli {

using namespace tools;

int ShowStatus(bool isJson)
{
    const int state = VARK_Status();
    const std::filesystem::path data = ConfiguredDataPath();
    std::vector<Mandant> mandanten;
    std::string fault = state == 1 ? "" : TextOfCode(state);
    if (state == 1) {
        try {
            mandanten = ReadMandanten(data);
        } catch (const EngineError &error) {
            fault = error.what();
        }
    }
    const int exitCode = fault.empty() ? ExitGood : ExitFailure;

    if (isJson) {
        rapidjson::OStreamWrapper stream(std::cout);
        JsonWriter json(stream);
        json.StartObject();
        Put(json, "status", state);
        Put(json, "bereit", fault.empty());
        Put(json, "meldung", fault);
        Put(json, "daten", data.string());
        Put(json, "mandanten");
        json.StartArray();
        for (const Mandant &mandant : mandanten) {
            json.StartObject();
            Put(json, "nummer", mandant.Number);
            Put(json, "name", mandant.Name);
            Put(json, "erstesJahr", mandant.LowerYear.empty() ? mandant.UpperYear : mandant.LowerYear);
            Put(json, "letztesJahr", mandant.UpperYear);
            Put(json, "ersterMonat", mandant.FirstMonth);
            Put(json, "kostenrechnung", mandant.Record.Kostenrechnung != 0);
            Put(json, "kostenPflicht", mandant.Record.KostenPflicht != 0);
            json.EndObject();
        }
        json.EndArray();
        json.EndObject();
        std::cout << '\n';
        return exitCode;
    }
    if (!data.empty()) std::cout << "Daten: " << data.string() << '\n';
    if (!fault.empty()) {
        std::cout << std::flush;
        std::cerr << "VARK40 ist nicht bereit (" << state << "): " << fault << '\n';
        return exitCode;
    }
    std::cout << "VARK40 ist bereit.\n\n";
    MandantenTable(mandanten).Print(std::cout);
    return exitCode;
}

} // namespace cli
