#include "layout.h"
#include "window-system/include/varkui.h"

#include <gtest/gtest.h>

namespace {

void ExpectLayout(const LayoutRow *rows, size_t count)
{
    ASSERT_GT(count, 0u);
    for (size_t i = 0; i < count; ++i) {
        EXPECT_EQ(rows[i].Wanted, rows[i].Found) << rows[i].Name;
    }
}

} // namespace

TEST(Interface, StructuresLieAsTheyShouldInC)
{
    size_t count = 0;
    const LayoutRow *rows = LayoutInC(&count);
    ExpectLayout(rows, count);
}

TEST(Interface, StructuresLieAsTheyShouldInCpp)
{
    size_t count = 0;
    const LayoutRow *rows = LayoutInCpp(&count);
    ExpectLayout(rows, count);
}

#ifndef _WIN32
TEST(Interface, MessageIsThatOfTheWindowSystem)
{
    EXPECT_EQ(sizeof(MSG), sizeof(VarkMessage));
    EXPECT_EQ(offsetof(MSG, hwnd), offsetof(VarkMessage, hwnd));
    EXPECT_EQ(offsetof(MSG, message), offsetof(VarkMessage, message));
    EXPECT_EQ(offsetof(MSG, wParam), offsetof(VarkMessage, wParam));
    EXPECT_EQ(offsetof(MSG, lParam), offsetof(VarkMessage, lParam));
    EXPECT_EQ(offsetof(MSG, time), offsetof(VarkMessage, time));
    EXPECT_EQ(offsetof(MSG, pt.y), offsetof(VarkMessage, pt.y));
}
#endif
