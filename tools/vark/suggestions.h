// What the books of a command line that is being typed offer for its values.
#pragma once

#include "tools/common/command_tree.h"

namespace cli {

// Those of the Mandant that has been typed; of the only one where none has been.
tools::Suggest OfferMandanten();
tools::Suggest OfferStapel();
tools::Suggest OfferZahlungsziele();
tools::Suggest OfferKostenschablonen();
tools::Suggest OfferWaehrungen();
tools::Suggest OfferJahre();

// Accounts of the kind that `kindOption` names on the command line, else of the set `kinds`.
tools::Suggest OfferKonten(unsigned kinds, const char *kindOption = "--art");

// The same by their Kürzel.
tools::Suggest OfferKuerzel(unsigned kinds);

// Names of the kinds of a set.
tools::Suggest OfferKontoarten(unsigned kinds);

// Words that are offered although others are good as well.
tools::Suggest OfferWords(std::vector<std::string> words);

} // namespace cli
