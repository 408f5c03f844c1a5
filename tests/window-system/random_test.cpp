// Random calls with random handles from several threads at once. The window system checks its own invariants
// at both ends of every change (in builds with assertions), and the sanitizers watch; here nothing may crash,
// hang, or survive its thread.
#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "dialog_run.h"
#include "front_end_setup.h"

using namespace varkui;

namespace {

constexpr int handleCount = 64;
std::atomic<HWND> handles[handleCount]; // windows of all threads, many of them dead
std::atomic<HWND> dead[handleCount / 4];

thread_local std::mt19937 random;
thread_local int depth;              // of procedures in procedures
thread_local std::vector<HWND> mine; // windows that this thread has made since it last destroyed them all

int Below(int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); }

HWND AnyHandle()
{
    switch (Below(8)) {
    case 0: return nullptr;
    case 1: return reinterpret_cast<HWND>(static_cast<uintptr_t>(random()));
    case 2: return reinterpret_cast<HWND>(~static_cast<uintptr_t>(random()));
    case 3: return dead[Below(handleCount / 4)];
    default: return handles[Below(handleCount)];
    }
}

void Destroy(HWND window)
{
    if (DestroyWindow(window) != FALSE) dead[Below(handleCount / 4)] = window;
}

void DestroyMineInAnyOrder()
{
    std::vector<HWND> windows;
    windows.swap(mine); // handlers make and destroy others meanwhile
    std::shuffle(windows.begin(), windows.end(), random);
    for (HWND each : windows) {
        Destroy(each);
    }
}

// Windows are kept few, so that a handle mostly leads to one that is near to others.
void Keep(HWND window)
{
    constexpr size_t most = 60;
    if (window == nullptr) return;
    handles[Below(handleCount)] = window;
    mine.push_back(window);
    if (mine.size() > most) DestroyMineInAnyOrder();
}

void DoAnything();

// Handlers that act in the middle of everything: on themselves or on others.
void ActNowAndThen(HWND window)
{
    if (depth >= 3 || Below(6) != 0) return;
    ++depth;
    if (Below(4) == 0) {
        Destroy(window);
    } else {
        DoAnything();
    }
    --depth;
}

LRESULT CALLBACK Wild(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    ActNowAndThen(window);
    return DefWindowProcA(window, message, wParam, lParam);
}

INT_PTR CALLBACK WildDialog(HWND dialog, UINT message, WPARAM wParam, LPARAM /*lParam*/)
{
    ActNowAndThen(dialog);
    if (message == WM_INITDIALOG) Keep(dialog);
    if (message == WM_COMMAND && LOWORD(wParam) == IDCANCEL) EndDialog(dialog, Below(5));
    return Below(3) == 0 ? 1 : 0;
}

const DialogControl controls[] = {
    {DialogControlKind::Edit, 10, "Text", 5, 5, 50, 14, 0, 0},
    {DialogControlKind::RadioButton, 11, "&eins", 5, 20, 50, 10, WS_GROUP, 0},
    {DialogControlKind::RadioButton, 12, "&zwei", 5, 30, 50, 10, 0, 0},
    {DialogControlKind::ListBox, 13, "", 5, 40, 50, 40, WS_GROUP | LBS_SORT, 0},
    {DialogControlKind::ComboBox, 14, "", 60, 40, 50, 14, 0, 0},
    {DialogControlKind::TabControl, 15, "", 60, 60, 50, 40, 0, 0},
    {DialogControlKind::DefaultButton, IDOK, "OK", 120, 5, 50, 14, 0, 0},
    {DialogControlKind::PushButton, IDCANCEL, "Abbrechen", 120, 20, 50, 14, 0, 0},
};

void MakeDialogOrRun()
{
    const bool child = Below(3) == 0;
    const DialogTable table = {
        100, "wild", 180, 110, controls, std::size(controls), child ? childDialogStyle : 0};
    DLGTEMPLATE *made = MakeDialogTemplate(table);
    if (Below(3) == 0 && depth < 2 && !child) {
        ++depth;
        DialogBoxIndirectParamA(nullptr, made, AnyHandle(), WildDialog, 0);
        --depth;
    } else {
        HWND dialog = CreateDialogIndirectParamA(nullptr, made, AnyHandle(), WildDialog, 0);
        Keep(dialog);
        Keep(GetDlgItem(dialog, 10 + Below(6)));
    }
    FreeDialogTemplate(made);
}

void MakeWindow()
{
    static const char *const classes[] = {"Wild",     "Button",          "Edit",   "Static",    "ListBox",
                                          "ComboBox", "SysTabControl32", "#32770", "unheard of"};
    const auto style = static_cast<DWORD>(random()) & ~DWORD{0xF} & ~WS_CHILD;
    Keep(CreateWindowExA(static_cast<DWORD>(random()), classes[Below(9)], "Text",
                         (Below(2) == 0 ? WS_CHILD : 0) | style | static_cast<DWORD>(Below(16)), Below(100),
                         Below(100), Below(200) - 20, Below(200), AnyHandle(),
                         reinterpret_cast<HMENU>(static_cast<intptr_t>(Below(20))), nullptr, nullptr));
}

// A message whose parameters are no addresses, and what may stand in an address's place is null.
void SendAnything()
{
    const auto message = static_cast<UINT>(Below(4) == 0   ? Below(0x1400)
                                           : Below(2) == 0 ? 0x180 + Below(0x30)
                                                           : Below(0x120));
    const bool readsAddress = message == EM_GETSEL || message == CB_GETEDITSEL;
    const WPARAM wParam =
        readsAddress ? 0 : static_cast<WPARAM>(Below(2) == 0 ? Below(40) : static_cast<int>(random()));
    if (Below(2) == 0) {
        PostMessageA(AnyHandle(), message, wParam, 0);
    } else {
        SendMessageA(AnyHandle(), message, wParam, 0);
    }
}

void FillList()
{
    HWND list = AnyHandle();
    for (int i = 0; i < 20; ++i) {
        const std::string row = std::to_string(random() % 1000);
        SendMessageA(list, Below(2) == 0 ? LB_ADDSTRING : CB_ADDSTRING, 0,
                     reinterpret_cast<LPARAM>(row.c_str()));
        if (Below(3) == 0) SendMessageA(list, LB_DELETESTRING, static_cast<WPARAM>(Below(5)), 0);
        if (Below(3) == 0)
            SendMessageA(list, LB_FINDSTRING, static_cast<WPARAM>(Below(5)), reinterpret_cast<LPARAM>("1"));
    }
}

void Pump(int most)
{
    MSG message = {};
    for (int i = 0; i < most && PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) != FALSE; ++i) {
        if (IsDialogMessageA(AnyHandle(), &message) != FALSE) continue;
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
}

void ReadState()
{
    HWND window = AnyHandle();
    RECT rectangle = {};
    POINT point = {};
    char text[20];
    switch (Below(18)) {
    case 0: GetPropA(window, "eigenschaft"); break;
    case 1: GetWindowLongPtrA(window, Below(40) - 24); break;
    case 2: GetWindowLongA(window, Below(40) - 24); break;
    case 3: GetWindowTextA(window, text, sizeof text); break;
    case 4: GetWindowRect(window, &rectangle); break;
    case 5: GetClientRect(window, &rectangle); break;
    case 6: GetClassNameA(window, text, sizeof text); break;
    case 7: GetClassLongPtrA(window, -24 + Below(8)); break;
    case 8: GetNextDlgTabItem(window, AnyHandle(), Below(2)); break;
    case 9: GetNextDlgGroupItem(window, AnyHandle(), Below(2)); break;
    case 10: GetWindow(window, static_cast<UINT>(Below(7))); break;
    case 11: GetDlgItemTextA(window, 10 + Below(6), text, sizeof text); break;
    case 12: GetDlgItemInt(window, 10, nullptr, Below(2)); break;
    case 13: MapWindowPoints(window, AnyHandle(), &point, 1); break;
    case 14: IsChild(window, AnyHandle()); break;
    case 15: IsDlgButtonChecked(window, 11 + Below(2)); break;
    case 16: MapDialogRect(window, &rectangle); break;
    default:
        EnumChildWindows(
            window,
            [](HWND child, LPARAM) {
                ActNowAndThen(child);
                return BOOL{Below(8) != 0};
            },
            0);
        break;
    }
}

void TouchState()
{
    HWND window = AnyHandle();
    int value = 0;
    switch (Below(18)) {
    case 0: SetPropA(window, "Eigenschaft", &value); break;
    case 1: RemovePropA(window, "eigenschaft"); break;
    case 2: SetWindowTextA(window, "neuer Text"); break;
    case 3: SetWindowLongPtrA(window, GWLP_USERDATA, Below(100)); break;
    case 4: SetWindowLongPtrA(window, DWLP_MSGRESULT, Below(100)); break; // or the first extra bytes
    case 5: SetWindowLongPtrA(window, GWLP_HWNDPARENT, reinterpret_cast<LONG_PTR>(AnyHandle())); break;
    case 6: SetWindowLongPtrA(window, GWL_EXSTYLE, static_cast<LONG>(random())); break;
    case 7: SetWindowLongA(window, GWL_ID, Below(20)); break;
    case 8: SetWindowLongA(window, 4, Below(100)); break;
    case 9: CheckDlgButton(window, 11 + Below(2), static_cast<UINT>(Below(3))); break;
    case 10: CheckRadioButton(window, 11, 12, 11 + Below(2)); break;
    case 11: SetDlgItemTextA(window, 10 + Below(6), "Text"); break;
    case 12: BringWindowToTop(window); break;
    case 13: SetForegroundWindow(window); break;
    case 14: MoveWindow(window, Below(100), Below(100), Below(200), Below(200), TRUE); break;
    case 15: InvalidateRect(window, nullptr, TRUE); break;
    case 16: DefDlgProcA(window, static_cast<UINT>(Below(0x120)), static_cast<WPARAM>(Below(5)), 0); break;
    default: SetDlgItemInt(window, 10, static_cast<UINT>(random()), TRUE); break;
    }
}

// Boxes run a loop of their own, whose end the end of the program may be.
void AskOrQuit()
{
    if (Below(4) == 0) PostQuitMessage(Below(3));
    if (Below(4) != 0 || depth >= 2) return;
    ++depth;
    MessageBoxA(AnyHandle(), "Frage", "Wild", static_cast<UINT>(Below(7)));
    --depth;
}

void DoAnything()
{
    HWND window = AnyHandle();
    switch (Below(18)) {
    case 0:
    case 1: MakeWindow(); break;
    case 2: MakeDialogOrRun(); break;
    case 3: Destroy(window); break;
    case 4: SetParent(window, AnyHandle()); break;
    case 5:
        SetWindowPos(window, AnyHandle(), Below(100), Below(100), Below(100) - 5, Below(100),
                     static_cast<UINT>(Below(0x400)));
        break;
    case 6: ShowWindow(window, Below(10)); break;
    case 7: EnableWindow(window, Below(2)); break;
    case 8: SetFocus(window); break;
    case 9: SetActiveWindow(window); break;
    case 10: EndDialog(window, Below(5)); break;
    case 11: FillList(); break;
    case 12: TouchState(); break;
    case 13: Pump(20); break;
    case 14: ReadState(); break;
    case 15: AskOrQuit(); break;
    default: SendAnything(); break;
    }
}

unsigned Seed()
{
    const char *given = std::getenv("VARK_SEED");
    return given != nullptr ? static_cast<unsigned>(std::stoul(given)) : std::random_device{}();
}

int Steps()
{
    const char *given = std::getenv("VARK_STEPS");
    return given != nullptr ? std::stoi(given) : 3000;
}

void RunThreads(int threadCount, unsigned seed)
{
    WNDCLASSA wild = {};
    wild.lpfnWndProc = Wild;
    wild.cbWndExtra = 8;
    wild.lpszClassName = "Wild";
    RegisterClassA(&wild);
    std::vector<std::thread> threads;
    threads.reserve(static_cast<size_t>(threadCount));
    for (int i = 0; i < threadCount; ++i) {
        threads.emplace_back([i, seed] {
            random.seed(seed + static_cast<unsigned>(i));
            for (int step = 0; step < Steps(); ++step) {
                DoAnything();
            }
            // Half of them by hand; the rest goes with the thread.
            mine.resize(mine.size() / 2);
            DestroyMineInAnyOrder();
        });
    }
    for (std::thread &each : threads) {
        each.join();
    }
    for (const std::atomic<HWND> &each : handles) {
        EXPECT_FALSE(IsWindow(each)); // a thread takes its windows along
    }
}

struct Random : testing::Test {
    FrontEndSetup frontEnd;
};

} // namespace

TEST_F(Random, CallsOnOneThreadKeepTheInvariants)
{
    const unsigned seed = Seed();
    RecordProperty("seed", std::to_string(seed));
    printf("VARK_SEED=%u\n", seed);
    fflush(stdout);
    RunThreads(1, seed);
}

TEST_F(Random, CallsOnFourThreadsKeepTheInvariants)
{
    const unsigned seed = Seed();
    RecordProperty("seed", std::to_string(seed));
    printf("VARK_SEED=%u\n", seed);
    fflush(stdout);
    RunThreads(4, seed);
}
