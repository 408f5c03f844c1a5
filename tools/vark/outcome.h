// What came of a piece of work.
#pragma once

#include <string>

namespace cli {

struct Outcome {
    int Code = 0;            // of the library; 0 where it was not asked
    std::string Reason;      // empty: done
    bool IsCut = false;      // a text was longer than the books keep
    std::string Result = {}; // what it was done to, where that is worth telling: "Debitor 10401"
    std::string Remark = {}; // what the library said although it is done
};

} // namespace cli
