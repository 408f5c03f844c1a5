// The fuzz target: cmake -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_C_COMPILER=clang -DVARK_TESTS=ON -DVARK_FUZZ=ON
// -DVARK_SANITIZE=fuzzer-no-link,address,undefined; then fuzz_exports CORPUS.
#include "tests/booking/fuzz_exports.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    vark::test::RunCalls(data, size);
    return 0;
}
