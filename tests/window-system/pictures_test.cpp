// Pictures and copying: what their owner sets, what it is told.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

#include "front_end_setup.h"
#include "window-system/include/varkui.h"

namespace {

struct Notice {
    UINT Code;
    LONG X, Y, Count;
    bool operator==(const Notice &) const = default;
};

std::vector<Notice> notices;

LRESULT CALLBACK OwnerProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message != WM_NOTIFY) return DefWindowProcA(window, message, wParam, lParam);
    const auto *notice = reinterpret_cast<const NMPICTURE *>(lParam);
    EXPECT_EQ(notice->hdr.idFrom, 7U);
    notices.push_back({notice->hdr.code, notice->X, notice->Y, notice->Count});
    return 0;
}

struct Pictures : testing::Test {
    FrontEndSetup frontEnd;
    HWND owner = nullptr;
    HWND picture = nullptr;

    void SetUp() override
    {
        WNDCLASSA made = {};
        made.lpfnWndProc = OwnerProcedure;
        made.lpszClassName = "Besitzer";
        RegisterClassA(&made);
        owner = CreateWindowExA(0, "Besitzer", "", WS_VISIBLE, 0, 0, 400, 300, nullptr, nullptr, nullptr,
                                nullptr);
        picture = CreateWindowExA(0, VARKUI_PICTURE_CLASS, "", WS_CHILD | WS_VISIBLE, 0, 0, 200, 100, owner,
                                  reinterpret_cast<HMENU>(7), nullptr, nullptr);
        ASSERT_NE(picture, nullptr);
        notices.clear();
    }

    void TearDown() override { DestroyWindow(owner); }

    LRESULT Set(const VARKUIPICTURE &shown) const
    {
        return SendMessageA(picture, PCM_SETPICTURE, 0, reinterpret_cast<LPARAM>(&shown));
    }
};

} // namespace

TEST_F(Pictures, HaveTheirWindowsAreaUntilAScreenSaysOtherwise)
{
    VARKUIAREA area = {};
    EXPECT_EQ(SendMessageA(picture, PCM_GETAREA, 0, reinterpret_cast<LPARAM>(&area)), 1);
    EXPECT_EQ(area.Width, 200);
    EXPECT_EQ(area.Height, 100);
    EXPECT_EQ(area.Scale, 1);
    MoveWindow(picture, 0, 0, 150, 80, TRUE);
    EXPECT_EQ(notices, (std::vector<Notice>{{PCN_AREA, 0, 0, 0}}));
    SendMessageA(picture, PCM_GETAREA, 0, reinterpret_cast<LPARAM>(&area));
    EXPECT_EQ(area.Width, 150);
}

TEST_F(Pictures, KeepWhatWasSetAndADescriptorOfTheirOwn)
{
    const int file = memfd_create("picture", MFD_CLOEXEC);
    EXPECT_EQ(Set({file, 200, 100, 5, 1000, 200, 5000, 300}), 1);
    close(file);
    VARKUIPICTURE shown = {};
    EXPECT_EQ(SendMessageA(picture, PCM_GETPICTURE, 0, reinterpret_cast<LPARAM>(&shown)), 1);
    EXPECT_EQ(shown.Descriptor, -1) << "it is the picture's";
    EXPECT_EQ(shown.Y, 1000);
    EXPECT_EQ(shown.ContentHeight, 5000);
    EXPECT_EQ(shown.Page, 300);
    EXPECT_EQ(Set({-1, 0, 0, 0, 0, 0, 0, 0}), 1) << "nothing is drawn";
}

TEST_F(Pictures, RefuseWhatIsNoDescriptorAndWhatIsNoPicture)
{
    EXPECT_EQ(Set({12'345, 1, 1, 0, 0, 0, 0, 0}), 0);
    EXPECT_EQ(SendMessageA(picture, PCM_SETPICTURE, 0, 0), 0);
    EXPECT_EQ(SendMessageA(picture, PCM_GETAREA, 0, 0), 0);
    EXPECT_EQ(SendMessageA(picture, PCM_GETPICTURE, 0, 0), 0);
}

TEST_F(Pictures, LeaveNoDescriptorsBehind)
{
    const int first = open("/dev/null", O_RDONLY | O_CLOEXEC);
    const int file = memfd_create("picture", MFD_CLOEXEC);
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(Set({file, 1, 1, 0, 0, 1, 1, 1}), 1);
    }
    DestroyWindow(picture);
    const int last = open("/dev/null", O_RDONLY | O_CLOEXEC);
    EXPECT_LE(last, file + 1);
    for (const int each : {first, file, last}) {
        close(each);
    }
}

TEST_F(Pictures, TextThatWasCopiedCanBeAskedFor)
{
    char text[20] = "x";
    EXPECT_EQ(VarkUiCopiedText(text, sizeof text), 0);
    EXPECT_STREQ(text, "");
    EXPECT_NE(VarkUiCopyText("Gr\xFC\xDF"
                             "e",
                             "<p>Gr\xFC\xDF"
                             "e</p>"),
              0);
    EXPECT_EQ(VarkUiCopiedText(text, sizeof text), 5);
    EXPECT_STREQ(text, "Gr\xFC\xDF"
                       "e");
    EXPECT_EQ(VarkUiCopiedText(text, 3), 5);
    EXPECT_STREQ(text, "Gr");
    EXPECT_EQ(VarkUiCopiedHtml(text, sizeof text), 12);
    EXPECT_STREQ(text, "<p>Gr\xFC\xDF"
                       "e</p>");
    EXPECT_NE(VarkUiCopyText("nichts weiter", nullptr), 0);
    EXPECT_EQ(VarkUiCopiedHtml(text, sizeof text), 0) << "HTML goes with the text that it came with";
    EXPECT_NE(VarkUiCopyText(nullptr, nullptr), 0);
    EXPECT_EQ(VarkUiCopiedText(nullptr, 0), 0);
}
