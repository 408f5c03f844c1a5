// A window system that can only be loaded later.
#include "src/platform/window_api.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <sys/resource.h>

// A host that has used up its descriptors for a moment gets its boxes afterwards.
TEST(WindowSystem, IsLoadedLaterWhereItCouldNotBeAtFirst)
{
    setenv("VARK_UI", "headless", 1);
    rlimit before{};
    ASSERT_EQ(0, getrlimit(RLIMIT_NOFILE, &before));
    const rlimit none{3, before.rlim_max};
    ASSERT_EQ(0, setrlimit(RLIMIT_NOFILE, &none));
    const int refused = MessageBoxA(nullptr, "Text", "MERIDA", MB_OK);
    ASSERT_EQ(0, setrlimit(RLIMIT_NOFILE, &before));
    EXPECT_EQ(0, refused) << "nobody has seen it";
    EXPECT_EQ(IDOK, MessageBoxA(nullptr, "Text", "MERIDA", MB_OK));
}
