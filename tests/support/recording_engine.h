// A report engine in the place of the real one: it writes down what it is called with, records field by
// field, and answers as a test wishes.
#pragma once

#include "report-engine/include/rs.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vark::test {

struct RecordingEngine {
    // Every call in order, as "open or_slist.rs tervoSUSALIST0.0", "0 | Mandant=Muster | BisDatum=310318 …"
    // for a record of that kind, "view …", "print", "close 7". Texts are UTF-8; a record without a
    // description in report_records/ has no fields.
    std::vector<std::string> Calls;

    // What the entries answer.
    int32_t OpenResult = 7;
    int32_t CopyResult = 8;
    RSWindow ViewResult = reinterpret_cast<RSWindow>(0x4711);
    RSWindow CopiedView = reinterpret_cast<RSWindow>(0x4712);
    int32_t PrintResult = 1;
    int RecordsUntilRefusal = -1; // -1: none is refused
    int32_t CountingResult = 9;   // of RSOpenVirtualReport
    int32_t PagesResult = 3;
    int CountsUntilRefusal = -1;

    // Takes the place of the engine that the library bound, for the process. There is one at a time.
    void Install();

    // The records of a kind among the calls, without the kind.
    [[nodiscard]] std::vector<std::string> Records(int kind) const;
    // Calls that are no records.
    [[nodiscard]] std::vector<std::string> OtherCalls() const;
};

} // namespace vark::test
