// What the books of a command line that is being typed offer for its values.
#pragma once

#include "tools/common/command_tree.h"

namespace books {

// Of the books in VERZEICHNIS, or of those that are configured.
tools::Suggest OfferMandanten();
tools::Suggest OfferYears();

tools::Suggest OfferTables();

// Of the table that has been typed.
tools::Suggest OfferKeys();
tools::Suggest OfferFields();

} // namespace books
