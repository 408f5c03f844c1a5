// What a booking in the books of tests/booking/ledger.h comes to: worked out anew in Pfennig and plain lists,
// with nothing of the library but the layout of its records.
#pragma once

#include "include/vark40.h"
#include "src/model/posting_records.h"

#include <cstdint>
#include <vector>

namespace vark::test {

// A cost line as far as it is known beforehand. Two neighbouring amounts are right where a share ends on half
// a Pfennig.
struct ExpectedLine {
    KobuRecord Record; // numbers and amount 0
    int64_t Amount;
    bool IsTie;
};

struct ExpectedPart {
    SplitRecord Image; // numbers 0
    std::vector<ExpectedLine> Lines;
};

struct Expected {
    int32_t Code;
    bool IsWritten; // a code of 1 may come without a posting
    BatRecord Bat;  // number and first Teilbuchung 0
    std::vector<ExpectedPart> Parts;
};

// `hasCosts`: cost accounting is on (and not obligatory), with Kostenschablone 1 of 33,33 and 66,67 percent.
Expected ExpectSingle(const BuchungEingabe &booking, bool hasCosts);
Expected ExpectSplit(const SplitEingabe &split, bool hasCosts);

} // namespace vark::test
