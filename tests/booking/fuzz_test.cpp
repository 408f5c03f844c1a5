// A short run of the calls that the fuzz target makes, always the same.
#include "tests/booking/fuzz_exports.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

#ifndef ROUNDS
#define ROUNDS 3000
#endif

using Bytes = std::vector<uint8_t>;

// Calls that go through, each beginning with the byte that says whether the record manager fails.
const Bytes goodCalls[] = {
    {0, 1, 34, 0, 0, 4, 2, 23, 0, 0, 1, 1, 1, 0},   // 4000 an 1200 with cost lines
    {0, 1, 34, 0, 0, 14, 7, 23, 28, 0, 4, 1, 0, 5}, // 10000 an 8400 at the older rate
    {0, 1, 35, 0, 0, 17, 3, 23, 0, 0, 4, 1, 0, 0},  // 10003 an 1700 in 1997
    {0, 3, 34, 0, 0, 0, 0, 4, 4, 2, 23, 0, 0, 0, 1, 1, 1, 0, 4, 5, 2, 22, 0, 0, 0, 1, 1, 0, 0, 5, 1},
    {0, 6, 0, 20, 0, 45, 0, 45, 0, 0, 0, 46, 0, 45, 0, 47, 0, 48, 0, 4, 1, 0, 30, 0, 5, 1, 4},
    {0, 6, 0, 20, 0, 0, 0, 45, 0, 0, 0, 46, 0, 45, 0, 47, 0, 48, 0, 4, 1, 0, 30, 0, 5, 3, 4},
    {0, 12, 0, 0, 4, 0, 9, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1},
    {0, 7, 0, 2, 1, 1, 1},
    {0, 14, 0, 0, 4, 1},
    {0, 15, 0, 2, 1},
    {0, 11, 0, 0, 0, 8, 1, 1, 1, 1, 1, 1, 1, 1, 1, 2, 0, 8},            // the journal from its beginning
    {0, 13, 0, 0, 4, 0, 10, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 2, 0, 20}, // open items
    {0, 16, 34, 0, 0, 4, 2, 23, 0, 0, 1, 1},                            // 4000 an 1200
    {0, 17, 34, 0, 0, 0, 18, 4, 2, 23, 0, 0, 0, 1, 1, 0, 5, 1},
    {0, 19, 20, 45, 45, 0, 0, 46, 0, 0, 0, 0, 47, 48, 0, 4, 30, 1, 4, 0, 0, 0, 5},
    {0, 22, 4, 0, 1, 0, 0, 1},
};

} // namespace

TEST(Exports, TakeRandomCallsWithDocumentedCodesAndLeaveWholePostings)
{
    std::mt19937 random(40); // NOLINT: the same calls every time
    int good = 0;
    for (int round = 0; round < ROUNDS; ++round) {
        Bytes bytes;
        for (int call = 0; call < 6; ++call) {
            const Bytes &next = goodCalls[random() % std::size(goodCalls)];
            bytes.insert(bytes.end(), next.begin(), next.end());
        }
        for (unsigned left = random() % 8; left > 0; --left) {
            bytes[random() % bytes.size()] = static_cast<uint8_t>(random());
        }
        ASSERT_NO_THROW(good += vark::test::RunCalls(bytes.data(), bytes.size())) << "round " << round;
    }
    EXPECT_GT(good, ROUNDS) << "the calls get past the first checks";
}
