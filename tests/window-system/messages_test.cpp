// Messages: queues, sending between threads, loops.
#include <atomic>
#include <gtest/gtest.h>
#include <poll.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <vector>

#include "front_end_setup.h"
#include "window-system/include/varkui.h"

namespace {

constexpr UINT echoMessage = WM_USER + 1; // answers wParam + 1
constexpr UINT callBack = WM_USER + 2;    // sends echoMessage to the window in lParam and answers its result
constexpr UINT endMessage = WM_USER + 3;  // ends the loop of its thread
constexpr UINT threadMessage = WM_USER + 4; // answers whether it runs on the thread of lParam

LRESULT CALLBACK Answering(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case echoMessage: return static_cast<LRESULT>(wParam) + 1;
    case callBack: return SendMessageA(reinterpret_cast<HWND>(lParam), echoMessage, wParam, 0);
    case endMessage: PostQuitMessage(static_cast<int>(wParam)); return 0;
    case threadMessage:
        return *reinterpret_cast<const std::thread::id *>(lParam) == std::this_thread::get_id() ? 1 : 0;
    default: return DefWindowProcA(window, message, wParam, lParam);
    }
}

HWND Make()
{
    WNDCLASSA answering = {};
    answering.lpfnWndProc = Answering;
    answering.lpszClassName = "Answering";
    RegisterClassA(&answering);
    return CreateWindowExA(0, "Answering", "", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
}

int RunLoop()
{
    MSG message = {};
    while (GetMessageA(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
    return static_cast<int>(message.wParam);
}

// A thread with one window that handles messages until endMessage.
struct Worker {
    std::atomic<HWND> window{nullptr};
    std::atomic<int> result{-1};
    std::thread thread;

    Worker()
    {
        thread = std::thread([this] {
            window = Make();
            window.notify_all();
            result = RunLoop();
        });
        window.wait(nullptr);
    }
    Worker(const Worker &) = delete;
    Worker &operator=(const Worker &) = delete;
    ~Worker()
    {
        PostMessageA(window, endMessage, 0, 0);
        thread.join();
    }
};

struct Messages : testing::Test {
    FrontEndSetup frontEnd;
};

} // namespace

TEST_F(Messages, ComeInTheOrderInWhichTheyWerePosted)
{
    HWND window = Make();
    for (UINT i = 0; i < 5; ++i) {
        EXPECT_TRUE(PostMessageA(window, WM_USER + i, i, 0));
    }
    MSG message = {};
    EXPECT_TRUE(PeekMessageA(&message, nullptr, 0, 0, PM_NOREMOVE));
    EXPECT_EQ(message.message, UINT{WM_USER});
    for (UINT i = 0; i < 5; ++i) {
        EXPECT_EQ(GetMessageA(&message, nullptr, 0, 0), TRUE);
        EXPECT_EQ(message.message, WM_USER + i);
        EXPECT_EQ(message.hwnd, window);
    }
    EXPECT_FALSE(PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE));
}

TEST_F(Messages, AreTakenByWindowAndByNumber)
{
    HWND one = Make();
    HWND other = Make();
    HWND child = CreateWindowExA(0, "Static", "", WS_CHILD, 0, 0, 1, 1, other, nullptr, nullptr, nullptr);
    PostMessageA(one, WM_USER + 1, 0, 0);
    PostMessageA(child, WM_USER + 2, 0, 0);
    PostMessageA(nullptr, WM_USER + 3, 0, 0);
    MSG message = {};
    EXPECT_TRUE(GetMessageA(&message, other, 0, 0)); // also what goes to windows inside
    EXPECT_EQ(message.message, UINT{WM_USER + 2});
    EXPECT_TRUE(GetMessageA(&message, nullptr, WM_USER + 2, WM_USER + 3));
    EXPECT_EQ(message.message, UINT{WM_USER + 3});
    EXPECT_EQ(message.hwnd, nullptr);
    EXPECT_FALSE(PeekMessageA(&message, other, 0, 0, PM_REMOVE));
    EXPECT_TRUE(PeekMessageA(&message, one, 0, 0, PM_REMOVE));
    int notAWindow = 0;
    EXPECT_EQ(GetMessageA(&message, reinterpret_cast<HWND>(&notAWindow), 0, 0), -1);
    EXPECT_EQ(GetMessageA(nullptr, nullptr, 0, 0), -1);
}

TEST_F(Messages, EndALoopWithWmQuitOnceNothingElseIsLeft)
{
    HWND window = Make();
    PostQuitMessage(7);
    PostMessageA(window, WM_USER, 0, 0);
    MSG message = {};
    EXPECT_EQ(GetMessageA(&message, nullptr, 0, 0), TRUE);
    EXPECT_EQ(GetMessageA(&message, nullptr, 0, 0), FALSE);
    EXPECT_EQ(message.message, UINT{WM_QUIT});
    EXPECT_EQ(message.wParam, 7u);
    EXPECT_FALSE(PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE));
}

TEST_F(Messages, GoWithTheWindowTheyWereFor)
{
    HWND window = Make();
    PostMessageA(window, WM_USER, 0, 0);
    DestroyWindow(window);
    MSG message = {};
    EXPECT_FALSE(PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE));
}

TEST_F(Messages, FillAQueueOnlySoFar)
{
    HWND window = Make();
    int posted = 0;
    while (posted < 20000 && PostMessageA(window, WM_USER, 0, 0) != FALSE) {
        ++posted;
    }
    EXPECT_EQ(posted, 10000);
}

TEST_F(Messages, BecomeCharactersByTranslation)
{
    HWND window = Make();
    MSG down = {window, WM_KEYDOWN, 'A', 0, 0, {0, 0}};
    EXPECT_TRUE(TranslateMessage(&down));
    MSG message = {};
    EXPECT_TRUE(PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ(message.message, UINT{WM_CHAR});
    EXPECT_EQ(message.wParam, WPARAM{'a'});
    down.message = WM_COMMAND;
    EXPECT_FALSE(TranslateMessage(&down));
    EXPECT_FALSE(TranslateMessage(nullptr));
    EXPECT_EQ(DispatchMessageA(nullptr), 0);
}

TEST_F(Messages, SentToAnotherThreadAreAnsweredThere)
{
    Worker worker;
    EXPECT_EQ(SendMessageA(worker.window, echoMessage, 41, 0), 42);
    const std::thread::id id = worker.thread.get_id();
    EXPECT_EQ(SendMessageA(worker.window, threadMessage, 0, reinterpret_cast<LPARAM>(&id)), 1);
    char text[10] = "";
    EXPECT_TRUE(SetWindowTextA(worker.window, "anders"));
    EXPECT_EQ(GetWindowTextA(worker.window, text, sizeof text), 6);
    EXPECT_STREQ(text, "anders");
    EXPECT_FALSE(DestroyWindow(worker.window)); // not this thread's to destroy
    EXPECT_EQ(SetFocus(worker.window), nullptr);
}

TEST_F(Messages, SentBackWhileTheSenderWaitsAreAnsweredByIt)
{
    Worker worker;
    HWND mine = Make();
    // The worker's answer needs ours, while we wait for the worker's.
    EXPECT_EQ(SendMessageA(worker.window, callBack, 41, reinterpret_cast<LPARAM>(mine)), 42);
}

TEST_F(Messages, SentBothWaysAtOnceNeverLockUp)
{
    Worker worker;
    HWND mine = Make();
    HWND theirs = worker.window;
    std::atomic<int> done{0};
    std::thread third([mine, theirs, &done] {
        for (WPARAM i = 0; i < 2000; ++i) {
            EXPECT_EQ(SendMessageA(theirs, callBack, i, reinterpret_cast<LPARAM>(mine)),
                      static_cast<LRESULT>(i) + 1);
        }
        done = 1;
        PostMessageA(mine, endMessage, 0, 0);
    });
    for (WPARAM i = 0; i < 2000; ++i) {
        EXPECT_EQ(SendMessageA(theirs, callBack, i, reinterpret_cast<LPARAM>(mine)),
                  static_cast<LRESULT>(i) + 1);
    }
    RunLoop();
    third.join();
    EXPECT_EQ(done, 1);
}

TEST_F(Messages, SentToAThreadThatEndsAreAnsweredWithZero)
{
    std::atomic<HWND> window{nullptr};
    std::atomic<bool> goes{false};
    std::thread ending([&] {
        window = Make();
        window.notify_all();
        goes.wait(false);
    });
    window.wait(nullptr);
    std::thread sender([&] { EXPECT_EQ(SendMessageA(window, echoMessage, 1, 0), 0); });
    goes = true;
    goes.notify_all();
    ending.join();
    sender.join();
    EXPECT_FALSE(IsWindow(window));
}

TEST_F(Messages, OfADescriptorLetAHostPollForThem)
{
    HWND window = Make();
    const int descriptor = VarkUiDescriptor();
    ASSERT_GE(descriptor, 0);
    EXPECT_EQ(VarkUiDescriptor(), descriptor);
    const auto isReadable = [descriptor](int timeout) {
        pollfd waiting = {descriptor, POLLIN, 0};
        return poll(&waiting, 1, timeout) == 1;
    };
    MSG message = {};
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
    }
    EXPECT_FALSE(isReadable(0));
    std::thread poster([window] { PostMessageA(window, WM_USER, 0, 0); });
    EXPECT_TRUE(isReadable(10000));
    poster.join();
    EXPECT_TRUE(PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE));
    EXPECT_FALSE(PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE));
    EXPECT_FALSE(isReadable(0));
}

TEST_F(Messages, CloseAPlainWindowThatNobodySees)
{
    WNDCLASSA quitting = {};
    quitting.lpszClassName = "Quitting";
    quitting.lpfnWndProc = [](HWND window, UINT message, WPARAM wParam, LPARAM lParam) -> LRESULT {
        if (message == WM_DESTROY) PostQuitMessage(3);
        return DefWindowProcA(window, message, wParam, lParam);
    };
    RegisterClassA(&quitting);
    HWND window = CreateWindowExA(0, "Quitting", "Bericht", WS_POPUP | WS_VISIBLE, 0, 0, 10, 10, nullptr,
                                  nullptr, nullptr, nullptr);
    EXPECT_EQ(RunLoop(), 3);
    EXPECT_FALSE(IsWindow(window));
    EXPECT_FALSE(VarkUiHasUser());
}

// A forked child begins with no windows and can make its own.
TEST_F(Messages, AndWindowsStayWithTheParentOfAFork)
{
    HWND window = Make();
    PostMessageA(window, WM_USER, 0, 0);
    const pid_t child = fork();
    if (child == 0) {
        MSG message = {};
        const bool fresh =
            IsWindow(window) == FALSE && PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) == FALSE;
        HWND own = Make();
        const bool works = SendMessageA(own, echoMessage, 1, 0) == 2;
        _exit(fresh && works ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_TRUE(IsWindow(window));
}
