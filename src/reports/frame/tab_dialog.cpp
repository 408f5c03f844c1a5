#include "src/reports/frame/tab_dialog.h"

#include "include/vark40.h"
#include "src/frame/dialogs.h"
#include "src/frame/messages.h"
#include "src/platform/window_support.h"
#include "src/reports/frame/dialog_layout.h"
#include "text/fixed_text.h"

#include <cstddef>

namespace vark {

using varkui::DialogTable;

std::atomic<HWND> ActiveTabDialog{nullptr};
std::atomic<HWND> ActiveBarWindow{nullptr};

namespace {

constexpr char tabControlProperty[] = "tervoTabCtrlProp";
constexpr char runProperty[] = "tervoTabDlgInfo";

constexpr int guvPageId = 125;
constexpr int bilanzPageId = 126;

// Lives on the stack of the loop; the dialog's property points to it.
struct TabDialogRun {
    uint32_t Ended;
    uint32_t Result;
};

// The window if it still is one; forgets it otherwise.
HWND LiveWindow(std::atomic<HWND> &window)
{
    HWND held = window.load();
    if (held == nullptr || IsWindow(held)) return held;
    // Another thread may have named a new one meanwhile.
    window.compare_exchange_strong(held, nullptr);
    return nullptr;
}

LRESULT Notify(HWND dialog, HWND tabs, UINT code)
{
    NMHDR header = {tabs, static_cast<UINT_PTR>(GetDlgCtrlID(tabs)), code};
    return SendMessageA(dialog, WM_NOTIFY, header.idFrom, reinterpret_cast<LPARAM>(&header));
}

// Turns to the next page, or back with Shift. Backwards is forwards by all pages but one.
void TurnPage(HWND dialog, HWND tabs)
{
    const auto current = static_cast<int>(SendMessageA(tabs, TCM_GETCURSEL, 0, 0));
    const auto count = static_cast<int>(SendMessageA(tabs, TCM_GETITEMCOUNT, 0, 0));
    if (current < 0 || count <= 0) return;
    const int step = GetKeyState(VK_SHIFT) < 0 ? count - 1 : 1;
    if (Notify(dialog, tabs, TCN_SELCHANGING) != 0) return;
    const auto next = static_cast<WPARAM>((current + step) % count);
    if (SendMessageA(tabs, TCM_SETCURSEL, next, 0) >= 0) Notify(dialog, tabs, TCN_SELCHANGE);
}

bool IsForTabDialog(HWND dialog, MSG *message)
{
    const bool isCtrlTab =
        message->message == WM_KEYDOWN && message->wParam == VK_TAB && GetKeyState(VK_CONTROL) < 0;
    HWND tabs = isCtrlTab ? static_cast<HWND>(GetPropA(dialog, tabControlProperty)) : nullptr;
    if (tabs != nullptr) {
        TurnPage(dialog, tabs);
        return true;
    }
    return IsDialogMessageA(dialog, message) != FALSE;
}

// Serves the tabbed dialog, then the bar of a sheet.
bool IsForOurWindows(MSG *message)
{
    HWND dialog = LiveWindow(ActiveTabDialog);
    if (dialog != nullptr && IsForTabDialog(dialog, message)) return true;
    HWND bar = LiveWindow(ActiveBarWindow);
    if (bar == nullptr) return false;
    // Alt and the letter of a button work from the sheet beside the bar as well.
    MSG forBar = *message;
    if (message->message == WM_SYSCHAR && IsChild(GetParent(bar), message->hwnd)) forBar.hwnd = bar;
    return IsDialogMessageA(bar, &forBar) != FALSE;
}

// Handles messages until the dialog has ended or is gone.
void RunLoop(HWND dialog, const TabDialogRun &run)
{
    MSG message{};
    while (run.Ended == 0 && IsWindow(dialog)) {
        const BOOL got = GetMessageA(&message, nullptr, 0, 0);
        if (got == 0) PostQuitMessage(static_cast<int>(message.wParam)); // for the loops outside
        if (got <= 0) return;
        if (IsForOurWindows(&message) || IsDialogMessageA(dialog, &message)) continue;
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
}

INT_PTR CALLBACK PeriodPageProcedure(HWND page, UINT message, WPARAM wParam, LPARAM lParam)
{
    auto *state = DialogState<PeriodDialogState>(page, message, lParam);
    if (state == nullptr) return FALSE;
    return PeriodControlMessage(*state, page, message, wParam, lParam) ? TRUE : FALSE;
}

void DestroyPages(PeriodTabs &tabs)
{
    for (HWND &page : tabs.PageWindows) {
        if (page != nullptr) DestroyWindow(page);
        page = nullptr;
    }
}

// Both pages take the place of a control that only says where; the second waits behind the first.
void PlacePages(HWND dialog, const PeriodTabs &tabs)
{
    HWND place = GetDlgItem(dialog, controlPagePlace);
    RECT room{};
    GetWindowRect(place, &room);
    POINT corner = {room.left, room.top};
    ScreenToClient(dialog, &corner);
    SetWindowPos(tabs.PageWindows[0], place, corner.x, corner.y, 0, 0, SWP_NOSIZE | SWP_SHOWWINDOW);
    SetWindowPos(tabs.PageWindows[1], tabs.PageWindows[0], corner.x, corner.y, 0, 0, SWP_NOSIZE);
}

void AddTab(HWND tabControl, WPARAM index, const char *label)
{
    char text[32];
    text::CopyText(text, label);
    TCITEMA item{};
    item.mask = TCIF_TEXT;
    item.pszText = text;
    SendMessageA(tabControl, TCM_INSERTITEMA, index, reinterpret_cast<LPARAM>(&item));
}

void ShowChosenPage(PeriodTabs &tabs, HWND dialog)
{
    const auto chosen =
        static_cast<int32_t>(SendDlgItemMessageA(dialog, controlPeriodTabs, TCM_GETCURSEL, 0, 0));
    if (chosen == tabs.CurrentPage || chosen < 0 || chosen > 1) return;
    HWND oldPage = tabs.PageWindows[tabs.CurrentPage];
    HWND newPage = tabs.PageWindows[chosen];
    HWND focus = GetFocus();
    const bool hadFocus = focus != nullptr && IsChild(oldPage, focus);
    ShowWindow(oldPage, SW_HIDE);
    ShowWindow(newPage, SW_SHOW);
    tabs.CurrentPage = chosen;
    if (hadFocus) SetFocus(newPage);
}

// What a refused check said, and the focus on its field, belong to the page: it is shown before the check.
bool AcceptPage(PeriodTabs &tabs, HWND dialog, int32_t page)
{
    const int32_t inView = tabs.CurrentPage;
    const auto turnTo = [&](int32_t index) {
        SendDlgItemMessageA(dialog, controlPeriodTabs, TCM_SETCURSEL, static_cast<WPARAM>(index), 0);
        ShowChosenPage(tabs, dialog);
    };
    turnTo(page);
    if (!AcceptCurrentPage(tabs)) return false;
    turnTo(inView);
    return true;
}

} // namespace

int32_t RunTabDialog(const DialogTable &table, VarkWindow parent, DLGPROC procedure, void *state)
{
    HWND owner = static_cast<HWND>(parent);
    if (!IsWindow(owner)) owner = GetActiveWindow();
    if ((static_cast<uint32_t>(GetWindowLongA(owner, GWL_STYLE)) & WS_CHILD) != 0) owner = GetParent(owner);
    const bool disables = owner != nullptr && IsWindowEnabled(owner);
    if (disables) EnableWindow(owner, FALSE);

    TabDialogRun run{};
    PrepareControls();
    DLGTEMPLATE *made = varkui::MakeDialogTemplate(table);
    HWND dialog = made != nullptr ? CreateDialogIndirectParamA(nullptr, made, owner, procedure,
                                                               reinterpret_cast<LPARAM>(state))
                                  : nullptr;
    varkui::FreeDialogTemplate(made);
    const bool runs = dialog != nullptr && SetPropA(dialog, runProperty, &run);
    if (runs) {
        ShowWindow(dialog, SW_SHOW);
        RunLoop(dialog, run);
    }
    if (disables) EnableWindow(owner, TRUE);
    // Also when the program is to end: the dialog's state and its run go with this call.
    if (dialog != nullptr && IsWindow(dialog)) {
        RemovePropA(dialog, runProperty);
        DestroyWindow(dialog);
    }
    if (!runs) ShowMessage(Message::KeinSpeicher, 0, nullptr, -1);
    return static_cast<int32_t>(run.Result);
}

int32_t EndTabDialog(HWND dialog, uint32_t result)
{
    auto *run = static_cast<TabDialogRun *>(GetPropA(dialog, runProperty));
    if (run == nullptr) {
        DestroyWindow(dialog);
        return 0;
    }
    run->Ended = 1;
    run->Result = result;
    return 1;
}

void AttachTabControl(HWND dialog, int id) { SetPropA(dialog, tabControlProperty, GetDlgItem(dialog, id)); }

uint32_t PageOptions(bool isGuv)
{
    return PeriodDayExact | PeriodMonths | PeriodYear | (isGuv ? PeriodQuarters : 0u);
}

bool InitPeriodTabs(HWND dialog, int tabId, bool isGuv, const ThreadContext &context, PeriodTabs &tabs)
{
    DialogBuilder builder = BeginDialog();
    const DialogTable page = PeriodPage(builder, isGuv ? guvPageId : bilanzPageId, PageOptions(isGuv));
    for (int i = 0; i < 2; ++i) {
        tabs.PageWindows[i] = CreateChildDialog(dialog, page, PeriodPageProcedure, &tabs.PageStates[i]);
        if (tabs.PageWindows[i] == nullptr) {
            DestroyPages(tabs);
            return false;
        }
    }
    for (int i = 0; i < 2; ++i) {
        InitPeriodControls(tabs.PageWindows[i], PageOptions(isGuv), tabs.Selections[i], context,
                           tabs.PageStates[i]);
    }
    PlacePages(dialog, tabs);
    HWND tabControl = GetDlgItem(dialog, tabId);
    AddTab(tabControl, 0, "Zeitraum");
    AddTab(tabControl, 1, "Vergleichszeitraum");
    tabs.CurrentPage = 0;
    AttachTabControl(dialog, tabId);
    return true;
}

bool PeriodTabMessage(PeriodTabs &tabs, HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_ACTIVATE) {
        if (LOWORD(wParam) != WA_INACTIVE) {
            ActiveTabDialog = dialog;
        } else {
            HWND left = dialog;
            ActiveTabDialog.compare_exchange_strong(left, nullptr);
        }
        return false; // the dialog itself looks after the focus
    }
    if (message == WM_DESTROY) {
        DestroyPages(tabs);
        return false;
    }
    if (message != WM_NOTIFY) return false;
    const auto &header = *reinterpret_cast<const NMHDR *>(lParam);
    if (header.idFrom != controlPeriodTabs) return false;
    if (header.code == TCN_SELCHANGING) {
        SetWindowLongPtrA(dialog, DWLP_MSGRESULT, AcceptCurrentPage(tabs) ? FALSE : TRUE);
        return true;
    }
    if (header.code != TCN_SELCHANGE) return false;
    ShowChosenPage(tabs, dialog);
    return true;
}

bool AcceptCurrentPage(PeriodTabs &tabs)
{
    const int32_t page = tabs.CurrentPage;
    if (page == 1 && tabs.CompareOn == 0) return true;
    return AcceptPeriodControls(tabs.PageWindows[page], tabs.PageStates[page], tabs.Selections[page]);
}

bool AcceptBothPages(PeriodTabs &tabs, HWND dialog)
{
    if (!AcceptCurrentPage(tabs)) return false;
    const bool hasOther = tabs.CurrentPage == 1 || tabs.CompareOn != 0;
    return !hasOther || AcceptPage(tabs, dialog, 1 - tabs.CurrentPage);
}

HWND CreateChildDialog(HWND owner, const DialogTable &table, DLGPROC procedure, void *state)
{
    DialogTable child = table;
    child.Style = varkui::childDialogStyle;
    DLGTEMPLATE *made = varkui::MakeDialogTemplate(child);
    if (made == nullptr) return nullptr;
    HWND dialog =
        CreateDialogIndirectParamA(nullptr, made, owner, procedure, reinterpret_cast<LPARAM>(state));
    varkui::FreeDialogTemplate(made);
    return dialog;
}

} // namespace vark

using namespace vark;

// A host's message is the window system's, member by member.
static_assert(sizeof(VarkMessage) == sizeof(MSG));
static_assert(offsetof(VarkMessage, wParam) == offsetof(MSG, wParam));
static_assert(offsetof(VarkMessage, pt) == offsetof(MSG, pt));

int32_t VARK_CALL VARK_IsMessage(VarkMessage *message)
{
    return message != nullptr && IsForOurWindows(reinterpret_cast<MSG *>(message)) ? 1 : 0;
}
