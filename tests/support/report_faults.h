// A report under every fault: the engine refuses the n-th record, the n-th record operation fails, the n-th
// allocation fails, for n = 1, 2, … until none does any more. Each time the report is whole or not there:
// what was opened is closed, ViewResult tells which, and the failure of a report that had begun has been
// shown once.
#pragma once

#include "include/vark40.h"
#include "tests/support/books.h"
#include "tests/support/recording_engine.h"

#include <functional>
#include <string>

namespace vark::test {

struct ReportFaults {
    Books *Installation;
    RecordingEngine *Sent; // installed already
    ReportParams Params;   // copied for every call
    std::function<VarkWindow(ReportParams *params)> Call;
    std::string Failure; // message 1446 with the report's name
    // What failed calls may have left in the books; looked at after each of them.
    std::function<void()> Judge = [] {};
};

void ExpectWholeOrNotThere(const ReportFaults &faults);

} // namespace vark::test
