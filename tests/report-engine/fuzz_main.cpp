// The fuzz target: cmake -DCMAKE_CXX_COMPILER=clang++ -DVARK_FUZZ=ON
// -DVARK_SANITIZE=fuzzer-no-link,address,undefined; then fuzz_reports CORPUS, with
// tests/report-engine/fuzz_seeds to make the corpus from the shipped templates.
#include "fuzz_reports.h"

#include <fcntl.h>
#include <unistd.h>

extern "C" int LLVMFuzzerInitialize(int * /*argumentCount*/, char *** /*arguments*/)
{
    reports::LowerLimits();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // What the engine says of each bad template goes nowhere; the fuzzer itself writes to a copy.
    static const int quiet = [] {
        const int nowhere = open("/dev/null", O_WRONLY);
        return nowhere;
    }();
    const int said = dup(STDERR_FILENO);
    dup2(quiet, STDERR_FILENO);
    reports::RunReport(data, size);
    dup2(said, STDERR_FILENO);
    close(said);
    return 0;
}
