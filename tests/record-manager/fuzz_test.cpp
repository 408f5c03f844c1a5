// A short run of the calls that the fuzz target makes, always the same.
#include "fuzz_btrcall.h"

#include "record-manager/include/btrcall.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

using Bytes = std::vector<uint8_t>;

// Calls that go through: who, operation in the list, key number, key length, data length, fault, and what the
// operation wants.
const Bytes goodCalls[] = {
    {0, 0, 0, 0, 0, 0, 0},                                   // open T
    {1, 0, 0, 0, 0, 0, 0},                                   // open T by the other client
    {2, 0, 0, 0, 0, 0, 1},                                   // open N
    {0, 2, 0, 0, 0, 0, 9, 'd', 0, 0, 0, 0, 0, 0, 0, 'x', 0}, // insert
    {1, 2, 1, 0, 0, 0, 9, 'e', 0, 0, 0, 0, 0, 0, 0, 'y', 0}, // insert by the other
    {2, 2, 0, 0, 0, 0, 4, 0, 0, 0, 0, 0},                    // insert with a number given
    {0, 12, 0, 0, 0, 0, 0, 0},                               // first
    {0, 6, 0, 0, 0, 0, 0, 0},                                // next
    {0, 3, 0, 0, 0, 0, 9, 'a', 0, 0, 0, 0, 0, 0, 0, 'z', 0}, // update
    {0, 4, 0, 0, 0, 0, 0, 0},                                // delete
    {0, 19, 0, 0, 0, 0, 0, 0},                               // position
    {0, 20, 1, 0, 0, 0, 0, 0},                               // direct
    {0, 29, 0, 0, 0, 0, 0, 0},                               // begin
    {0, 16, 0, 0, 0, 0, 0, 0},                               // begin alone
    {0, 17, 0, 0, 0, 0, 0, 0},                               // end
    {0, 18, 0, 0, 0, 0, 0, 0},                               // abort
    {0, 39, 0, 0, 0, 0, 0, 0},                               // first, locked
    {1, 38, 0, 0, 0, 0, 0, 1, 'a'},                          // equal, locked by the other
    {4, 14, 0, 0, 0, 0, 3, 3},                               // create
    {4, 0, 0, 0, 0, 0, 3},                                   // open what was made
    {0, 21, 0, 0, 0, 0, 0, 0},                               // step
    {0, 2, 0, 0, 0, 4, 9, 'f', 0, 0, 0, 0, 0, 0, 0, 'x', 0}, // insert with a failing store
    {0, 2, 0, 0, 0, 5, 9, 'g', 0, 0, 0, 0, 0, 0, 0, 'x', 0}, // and with a failing write
    {0, 17, 0, 0, 0, 1, 0, 0},                               // end with a failing write
};

TEST(Calls, TakeRandomBytesWithDocumentedStatusesAndLeaveWholeFiles)
{
    std::mt19937 random(30); // NOLINT: the same calls every time
    int good = 0;
    for (int round = 0; round < 600; ++round) {
        Bytes bytes = goodCalls[0];
        for (int call = 0; call < 20; ++call) {
            const Bytes &next = goodCalls[random() % std::size(goodCalls)];
            bytes.insert(bytes.end(), next.begin(), next.end());
        }
        for (unsigned left = random() % 8; left > 0; --left) {
            bytes[random() % bytes.size()] = static_cast<uint8_t>(random());
        }
        ASSERT_NO_THROW(good += wbtrvtest::RunCalls(bytes.data(), bytes.size())) << "round " << round;
    }
    EXPECT_GT(good, 3000) << "the calls get past the first checks";
}

} // namespace
