#include "src/platform/platform.h"

#include <gtest/gtest.h>

using namespace vark;

namespace {

int runs;

// As a part does that asks the library something while it is loaded.
void Body()
{
    ++runs;
    RunOnce(Body);
    EXPECT_EQ(1, runs);
}

} // namespace

TEST(RunOnce, CallFromWithinReturnsAtOnce)
{
    RunOnce(Body);
    RunOnce(Body);
    EXPECT_EQ(1, runs);
}
