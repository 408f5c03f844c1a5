// Memory that is refused, at every allocation in turn: what needed it fails as it says, and nothing else.
#include <gtest/gtest.h>

#include "dialog_run.h"
#include "front_end_setup.h"
#include "window-system/model/memory.h"

using namespace varkui;

namespace {

const DialogControl controls[] = {
    {DialogControlKind::Edit, 10, "Text", 5, 5, 50, 14, 0, 0},
    {DialogControlKind::ListBox, 13, "", 5, 40, 50, 40, LBS_SORT, 0},
    {DialogControlKind::ComboBox, 14, "", 60, 40, 50, 14, 0, 0},
    {DialogControlKind::TabControl, 15, "", 60, 60, 50, 40, 0, 0},
    {DialogControlKind::DefaultButton, IDOK, "OK", 120, 5, 50, 14, 0, 0},
    {DialogControlKind::PushButton, IDCANCEL, "Abbrechen", 120, 20, 50, 14, 0, 0},
};
const DialogTable table = {100, "Titel", 180, 110, controls, std::size(controls), 0};

constexpr long manyAllocations = 100000;

struct Memory : testing::Test {
    FrontEndSetup frontEnd;

    // Runs `use` with the n-th allocation refused, for n = 0, 1, 2 ... until it asks for none that is.
    template <typename Use> static void RefuseEach(Use use)
    {
        long refused = 0;
        for (bool all = false; !all && refused < manyAllocations; ++refused) {
            FailAllocationAfter(refused);
            use();
            all = AllocationsToFailure() >= 0;
        }
        FailAllocationAfter(-1);
        EXPECT_GT(refused, 3);
        EXPECT_LT(refused, manyAllocations);
    }
};

} // namespace

TEST_F(Memory, ThatIsRefusedToADialogFailsOrCancelsIt)
{
    RefuseEach([] {
        const INT_PTR result = RunTable(table, [](HWND dialog, UINT message, WPARAM, LPARAM) {
            if (message != WM_INITDIALOG) return INT_PTR{0};
            const LRESULT row =
                SendDlgItemMessageA(dialog, 13, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>("Zeile"));
            EXPECT_TRUE(row == 0 || row == LB_ERRSPACE);
            const LRESULT count = SendDlgItemMessageA(dialog, 13, LB_GETCOUNT, 0, 0);
            EXPECT_EQ(count, row == 0 ? 1 : 0);
            const BOOL set = SetDlgItemTextA(dialog, 10, "neu");
            EXPECT_EQ(TextOf(dialog, 10), set != FALSE ? "neu" : "Text");
            char title[] = "Seite";
            TCITEMA item = {};
            item.mask = TCIF_TEXT;
            item.pszText = title;
            const LRESULT page =
                SendDlgItemMessageA(dialog, 15, TCM_INSERTITEMA, 0, reinterpret_cast<LPARAM>(&item));
            EXPECT_EQ(SendDlgItemMessageA(dialog, 15, TCM_GETITEMCOUNT, 0, 0), page + 1);
            const BOOL kept = SetPropA(dialog, "name", dialog);
            EXPECT_EQ(kept != FALSE, GetPropA(dialog, "name") == dialog);
            return INT_PTR{TRUE};
        });
        EXPECT_TRUE(result == IDCANCEL || result == -1 || result == 0) << result;
        EXPECT_EQ(GetActiveWindow(), nullptr);
    });
}

// The box that tells of missing memory must itself be answered without.
TEST_F(Memory, ThatIsRefusedToABoxLeavesItsSafestAnswer)
{
    RefuseEach([] {
        testing::internal::CaptureStderr();
        EXPECT_EQ(MessageBoxA(nullptr, "Speicher voll.", "MERIDA", MB_SYSTEMMODAL), IDOK);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "MERIDA: Speicher voll.\n");
    });
}

TEST_F(Memory, ThatIsRefusedToAMessageRefusesThePosting)
{
    HWND window = CreateWindowExA(0, "Static", "", WS_POPUP, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
    FailAllocationAfter(0);
    EXPECT_FALSE(PostMessageA(window, WM_USER, 0, 0));
    EXPECT_TRUE(PostMessageA(window, WM_USER, 0, 0));
    FailAllocationAfter(0);
    EXPECT_FALSE(SetWindowTextA(window, "Titel"));
    EXPECT_EQ(TextOf(window), "");
    FailAllocationAfter(0);
    EXPECT_EQ(CreateWindowExA(0, "Static", "", WS_POPUP, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr),
              nullptr);
}

TEST_F(Memory, ThatIsRefusedToAChooserOfFilesCancelsIt)
{
    const VARKUIFILEKIND kinds[] = {{"Text", ".txt"}, {"Tabelle", ".csv"}};
    RefuseEach([&kinds] {
        const auto take = [](HWND, LPCSTR, void *) { return BOOL{TRUE}; };
        EXPECT_EQ(VarkUiSaveFile(nullptr, "Speichern", "name", kinds, 2, take, nullptr), FALSE);
        EXPECT_EQ(GetActiveWindow(), nullptr);
    });
}

TEST_F(Memory, ThatIsRefusedToAListOfInstructionsRefusesIt)
{
    RefuseEach([] {
        const BOOL taken = VarkUiPlay("text 10 neu\npress 1\n", TRUE);
        const INT_PTR result = RunTable(table);
        EXPECT_TRUE(result == IDCANCEL || result == -1 || result == 0 || (taken != FALSE && result == IDOK))
            << result;
        VarkUiPlayed(nullptr, 0);
        EXPECT_EQ(VarkUiPlayed(nullptr, 0), 0);
    });
}
