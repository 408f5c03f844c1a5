// The Kostenschablonen of a Mandant, ready to spread costs by.
#pragma once

#include "src/model/posting_records.h"
#include "tools/books/ledger.h"

#include <cstdint>
#include <vector>

namespace books {

struct CostShare {
    CostObject *First;
    CostObject *Second; // null for none
    int Share;          // hundredths of a percent; 10000 all of it
    uint8_t Flag;
    vark::AccountNumber FirstKey;
    vark::AccountNumber SecondKey;
    char Text[sizeof(vark::KobuRecord::Text)];
};

struct CostTemplate {
    int Number;
    std::vector<CostShare> Shares;
};

std::vector<CostTemplate> MakeTemplates(Ledger &ledger);

} // namespace books
