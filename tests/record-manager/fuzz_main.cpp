// The fuzz target: cmake -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_C_COMPILER=clang -DVARK_TESTS=ON -DVARK_FUZZ=ON
// -DVARK_SANITIZE=fuzzer-no-link,address,undefined; then fuzz_btrcall CORPUS.
#include "fuzz_btrcall.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    wbtrvtest::RunCalls(data, size);
    return 0;
}
