#include "report-engine/catalogue.h"

#include <algorithm>
#include <cstring>

namespace rs {

namespace {

// In Bilanz and GuV kinds 1 to 3 are the three levels of group lines and the kinds from 4 on the accounts on
// each level; kind 8 of the Bilanz opens one of its sides.
constexpr CatalogueRow catalogue[] = {
    //                        0    1    2    3    4    5    6    7    8
    {"tervoKTOPLAN0.0", {101, 280, 0, 0, 0, 0, 0, 0, 0}},
    {"tervoSAKTOPLAN0.0", {101, 187, 0, 0, 0, 0, 0, 0, 0}},
    {"tervoSUSALIST0.0", {128, 166, 0, 0, 0, 0, 0, 0, 0}},
    {"tervoHABSCHLUSS0.0", {109, 151, 0, 0, 0, 0, 0, 0, 0}},
    {"tervoUMSTAT0.0", {236, 156, 0, 0, 0, 0, 0, 0, 0}},
    {"tervoBJOURNAL0.0", {95, 67, 152, 86, 0, 0, 0, 0, 0}},
    {"tervoKTOBLATT0.0", {41, 149, 110, 0, 0, 0, 0, 0, 0}},
    {"tervoKOSALIST0.0", {121, 102, 0, 0, 0, 0, 0, 0, 0}},
    {"tervoKOSTLIST0.0", {71, 93, 0, 0, 0, 0, 0, 0, 0}},
    {"tervoKJOURNAL0.0", {95, 155, 0, 0, 0, 0, 0, 0, 0}},
    {"tervoKAUFT0.0", {121, 48, 101, 0, 0, 0, 0, 0, 0}},
    {"tervoUSTVA0.0", {1000, 0, 0, 0, 0, 0, 0, 0, 0}},
    {"tervoZM0.0", {91, 76, 0, 0, 0, 0, 0, 0, 0}},
    {"tervoGUV0.0", {161, 32, 32, 32, 110, 110, 110, 110, 110}},
    {"tervoBILANZ0.0", {165, 32, 32, 32, 84, 84, 84, 84, 4}},
    {"tervoUSTVAVERPROB0.0", {121, 54, 50, 76, 72, 0, 0, 0, 0}},
    {"tervoOPLISTE0.0", {109, 15, 240, 0, 0, 0, 0, 0, 0}},
    {"tervoKOSTENBLATT0.0", {34, 102, 141, 0, 0, 0, 0, 0, 0}},
};

static_assert(std::ranges::all_of(catalogue, [](const CatalogueRow &row) {
    return *std::ranges::max_element(row.RecordSizes) <= maxRecordSize;
}));

} // namespace

const CatalogueRow *FindInCatalogue(const char *id)
{
    if (id == nullptr) return nullptr;
    for (const CatalogueRow &row : catalogue) {
        if (std::strcmp(row.Id, id) == 0) return &row;
    }
    return nullptr;
}

} // namespace rs
