// Message boxes without a screen: what is written, what is answered, and how a script answers instead.
#include <dlfcn.h>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <vector>

#include "front_end_setup.h"
#include "text/windows1252.h"
#include "window-system/include/varkui.h"

using namespace text;

namespace {

constexpr const char *caption = "MERIDA";

int Show(const char *text, UINT style) { return MessageBoxA(nullptr, text, caption, style); }

// What `body` writes to standard error.
template <typename Body> std::string ErrorOutput(Body body)
{
    testing::internal::CaptureStderr();
    body();
    return testing::internal::GetCapturedStderr();
}

struct Headless : testing::Test {
    FrontEndSetup frontEnd;
};

struct Scripted : testing::Test {
    FrontEndSetup frontEnd;
};

} // namespace

TEST_F(Headless, WritesOneUtf8LineWithTheCaptionAndAnswersOk)
{
    int answer = 0;
    const std::string written =
        ErrorOutput([&] { answer = Show("Die Kontonummer ist unzulässig!"_w, MB_OK | MB_ICONEXCLAMATION); });
    EXPECT_EQ(answer, IDOK);
    EXPECT_EQ(written, "MERIDA: Die Kontonummer ist unzulässig!\n");
    EXPECT_EQ(frontEnd.Log(), "box Die Kontonummer ist unzulässig!\n");
}

TEST_F(Headless, AnswersWithTheButtonThatDoesTheLeast)
{
    struct {
        UINT style;
        int answer;
    } const cases[] = {
        {MB_OK, IDOK},
        {MB_OKCANCEL | MB_ICONASTERISK, IDCANCEL},
        {MB_ABORTRETRYIGNORE, IDABORT},
        {MB_YESNOCANCEL | MB_ICONQUESTION, IDCANCEL},
        {MB_YESNO | MB_ICONQUESTION, IDNO},
        {MB_RETRYCANCEL, IDCANCEL},
        {MB_SYSTEMMODAL, IDOK},
        {MB_YESNO | MB_DEFBUTTON1 | MB_TASKMODAL, IDNO},
    };
    for (const auto &row : cases) {
        ErrorOutput([&] { EXPECT_EQ(Show("Text", row.style), row.answer) << row.style; });
    }
}

TEST_F(Headless, RefusesAStyleWithoutASetOfButtons)
{
    const std::string written = ErrorOutput([] { EXPECT_EQ(Show("Text", 0x6), 0); });
    EXPECT_EQ(written, "");
    EXPECT_EQ(frontEnd.Log(), "");
}

TEST_F(Headless, TakesNullTextsAsEmpty)
{
    const std::string written =
        ErrorOutput([] { EXPECT_EQ(MessageBoxA(nullptr, nullptr, nullptr, MB_OK), IDOK); });
    EXPECT_EQ(written, ": \n");
}

TEST_F(Headless, KeepsATextWithLineBreaksOnOneLine)
{
    EXPECT_EQ(ErrorOutput([] { Show("eins\nzwei", MB_OK); }), "MERIDA: eins zwei\n");
    EXPECT_EQ(frontEnd.Log(), "box eins zwei\n");
}

TEST_F(Headless, CutsATextThatIsFarTooLong)
{
    const std::string endless(100000, 'x');
    const std::string written = ErrorOutput([&] { EXPECT_EQ(Show(endless.c_str(), MB_OK), IDOK); });
    EXPECT_LT(written.size(), 5000u);
    EXPECT_EQ(written.substr(0, 12), "MERIDA: xxxx");
    EXPECT_EQ(written.back(), '\n');
}

TEST_F(Headless, TakesAnOwnerThatIsNoWindow)
{
    int notAWindow = 0;
    ErrorOutput(
        [&] { EXPECT_EQ(MessageBoxA(reinterpret_cast<HWND>(&notAWindow), "Text", caption, MB_OK), IDOK); });
}

TEST_F(Headless, StandsInForAFrontEndThatIsNotKnown)
{
    setenv("VARK_UI", "laterna-magica", 1);
    const std::string written = ErrorOutput([] { EXPECT_EQ(Show("Text", MB_YESNO), IDNO); });
    EXPECT_EQ(
        written,
        "varkui: VARK_UI=laterna-magica ist unbekannt. Es geht ohne Bildschirm weiter.\nMERIDA: Text\n");
}

TEST_F(Scripted, AnswersEachBoxWithTheNextInstruction)
{
    frontEnd.UseScript("# three questions\n"
                       "box yes\n"
                       "\n"
                       "  box no wirklich gelöscht \r\n"
                       "box cancel \"oder nicht?\"\n");
    const std::string written = ErrorOutput([] {
        EXPECT_EQ(Show("Soll er?", MB_YESNO), IDYES);
        EXPECT_EQ(Show("Soll der Stapel wirklich gelöscht werden?"_w, MB_YESNO), IDNO);
        EXPECT_EQ(Show("Ja, nein, oder nicht?", MB_YESNOCANCEL), IDCANCEL);
    });
    EXPECT_EQ(written, "");
    EXPECT_EQ(frontEnd.Log(), "box Soll er?\n"
                              "box yes\n"
                              "box Soll der Stapel wirklich gelöscht werden?\n"
                              "box no wirklich gelöscht\n"
                              "box Ja, nein, oder nicht?\n"
                              "box cancel \"oder nicht?\"\n");
}

TEST_F(Scripted, LeavesWhatComesAfterItsLastLineToHeadless)
{
    frontEnd.UseScript("box yes");
    const std::string written = ErrorOutput([] {
        EXPECT_EQ(Show("eins", MB_YESNO), IDYES);
        EXPECT_EQ(Show("zwei", MB_YESNO), IDNO);
    });
    EXPECT_EQ(written, "MERIDA: zwei\n");
}

TEST_F(Scripted, FailsOnAnotherTextAndIsHeadlessFromThenOn)
{
    frontEnd.UseScript("# the first line\nbox yes Konto\nbox yes\n");
    const std::string written = ErrorOutput([] {
        EXPECT_EQ(Show("Soll der Stapel gelöscht werden?"_w, MB_YESNO), IDNO);
        EXPECT_EQ(Show("noch einmal", MB_YESNO), IDNO);
    });
    EXPECT_EQ(written,
              "script: line 2: the message box reads \"Soll der Stapel gelöscht werden?\", not \"Konto\"\n"
              "MERIDA: Soll der Stapel gelöscht werden?\n"
              "MERIDA: noch einmal\n");
    EXPECT_EQ(frontEnd.Log(),
              "box Soll der Stapel gelöscht werden?\n"
              "script: line 2: the message box reads \"Soll der Stapel gelöscht werden?\", not \"Konto\"\n"
              "box noch einmal\n");
}

TEST_F(Scripted, FailsOnAButtonThatTheBoxLacks)
{
    frontEnd.UseScript("box yes\n");
    EXPECT_EQ(ErrorOutput([] { EXPECT_EQ(Show("Hinweis", MB_OK), IDOK); }),
              "script: line 1: the message box has no button \"yes\": Hinweis\nMERIDA: Hinweis\n");
}

TEST_F(Scripted, FailsOnAnAnswerThatIsNone)
{
    frontEnd.UseScript("box maybe\n");
    EXPECT_EQ(ErrorOutput([] { EXPECT_EQ(Show("Hinweis", MB_OK), IDOK); }),
              "script: line 1: \"box maybe\" names no answer\nMERIDA: Hinweis\n");
}

TEST_F(Scripted, FailsOnAnInstructionForSomethingElse)
{
    frontEnd.UseScript("press 1\n");
    EXPECT_EQ(ErrorOutput([] { EXPECT_EQ(Show("Hinweis", MB_OK), IDOK); }),
              "script: line 1: \"press 1\" does not fit: a message box is open: Hinweis\nMERIDA: Hinweis\n");
}

TEST_F(Scripted, FailsOnAFileThatCannotBeRead)
{
    setenv("VARK_UI", "script:/nowhere/script", 1);
    EXPECT_EQ(ErrorOutput([] { EXPECT_EQ(Show("Hinweis", MB_OKCANCEL), IDCANCEL); }),
              "script: line 0: /nowhere/script: No such file or directory\nMERIDA: Hinweis\n");
}

// ---- A host that answers itself ----

namespace {

struct BoxesOfHost {
    std::vector<std::string> Texts;
    int Answer = 0;

    static int CALLBACK Take(LPCSTR text, UINT, void *context)
    {
        auto *host = static_cast<BoxesOfHost *>(context);
        host->Texts.emplace_back(text);
        return host->Answer;
    }
};

} // namespace

TEST_F(Headless, HostAnswersTheBoxesOfItsThread)
{
    BoxesOfHost host;
    host.Answer = IDYES;
    ASSERT_TRUE(VarkUiAnswerBoxes(BoxesOfHost::Take, &host));
    EXPECT_EQ(ErrorOutput([&] {
                  EXPECT_EQ(Show("Eins?", MB_YESNO), IDYES);
                  EXPECT_EQ(Show("Größe"_w, MB_OKCANCEL), IDCANCEL) << "no button of that box";
                  std::thread([] { EXPECT_EQ(Show("Zwei?", MB_YESNO), IDNO); }).join();
              }),
              "MERIDA: Zwei?\n");
    EXPECT_EQ(host.Texts, (std::vector<std::string>{"Eins?", "Größe"_w}));
    EXPECT_EQ(frontEnd.Log(), "box Eins?\nbox Größe\nbox Zwei?\n");
    ASSERT_TRUE(VarkUiAnswerBoxes(nullptr, nullptr));
    EXPECT_EQ(ErrorOutput([] { EXPECT_EQ(Show("Drei?", MB_YESNO), IDNO); }), "MERIDA: Drei?\n");
}

TEST_F(Scripted, HostGoesBeforeTheScript)
{
    frontEnd.UseScript("box yes Zwei\n");
    BoxesOfHost host;
    ASSERT_TRUE(VarkUiAnswerBoxes(BoxesOfHost::Take, &host));
    EXPECT_EQ(Show("Eins?", MB_YESNO), IDNO);
    ASSERT_TRUE(VarkUiAnswerBoxes(nullptr, nullptr));
    EXPECT_EQ(Show("Zwei?", MB_YESNO), IDYES);
}

TEST(Cursor, IsGivenBackWhenItIsReplaced)
{
    HCURSOR arrow = LoadCursorA(nullptr, IDC_ARROW);
    HCURSOR wait = LoadCursorA(nullptr, IDC_WAIT);
    EXPECT_NE(arrow, nullptr);
    EXPECT_NE(arrow, wait);
    EXPECT_EQ(SetCursor(nullptr), arrow);
    EXPECT_EQ(SetCursor(wait), nullptr);
    EXPECT_EQ(SetCursor(arrow), wait);
    EXPECT_EQ(LoadCursorA(nullptr, "IDC_ARROW"), nullptr);
}

// The library finds every call at run time, so each has to be an export under its own name.
TEST(Library, ExportsEveryCallOfTheList)
{
    void *library = dlopen(VARKUI_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
#define VARKUI_CALL(result, name, parameters, arguments) EXPECT_NE(dlsym(library, #name), nullptr) << #name;
#include "window-system/include/calls.def"
#undef VARKUI_CALL
    dlclose(library);
}

// ---- Standard error that is none ----

namespace {

// Runs one of the disabled cases below as a host that starts so. Its exit code.
int RunHost(const std::string &name, const std::string &redirection)
{
    const std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
    const std::string command = "'" + self +
                                "' --gtest_also_run_disabled_tests --gtest_filter=Host.DISABLED_" + name +
                                " >/dev/null " + redirection;
    const int status = system(command.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

// The hosts are run by the cases behind them alone, which expect this code.
constexpr int hostIsDone = 42;

void LeaveHost() { _exit(testing::Test::HasFailure() ? 1 : hostIsDone); }

} // namespace

TEST(Host, DISABLED_OpensItsDataAndIsShownABox)
{
    {
        const FrontEndSetup frontEnd;
        const std::string path = (frontEnd.Directory / "data").string();
        const int data = open(path.c_str(), O_RDWR | O_CREAT, 0600);
        ASSERT_EQ(write(data, "books", 5), 5);
        const auto library = std::filesystem::path(getenv("VARKUI_COPY"));
        void *copy = dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(copy, nullptr);
        const auto box = reinterpret_cast<int (*)(HWND, LPCSTR, LPCSTR, UINT)>(dlsym(copy, "MessageBoxA"));
        EXPECT_EQ(box(nullptr, "Frage", caption, MB_YESNO), IDNO);
        std::string kept;
        std::ifstream(path) >> kept;
        EXPECT_EQ(kept, "books");
    }
    LeaveHost();
}

TEST(Host, DISABLED_IsShownTwoBoxes)
{
    {
        const FrontEndSetup frontEnd;
        EXPECT_EQ(Show("eins", MB_YESNO), IDNO);
        EXPECT_EQ(Show("zwei", MB_YESNO), IDNO);
    }
    LeaveHost();
}

TEST(Host, DISABLED_HasALogThatNobodyReads)
{
    {
        const FrontEndSetup frontEnd;
        ASSERT_EQ(mkfifo((frontEnd.Directory / "pipe").c_str(), 0600), 0);
        setenv("VARK_UI_LOG", (frontEnd.Directory / "pipe").c_str(), 1);
        EXPECT_EQ(Show("eins", MB_YESNO), IDNO);
    }
    LeaveHost();
}

TEST_F(Headless, NeverWritesIntoTheDataOfAHostWhoseStandardErrorWasClosed)
{
    // Loaded by the host once its data is open: of the first number that was free.
    const std::string copy = (frontEnd.Directory / "libvarkui.so").string();
    std::filesystem::copy_file(VARKUI_LIBRARY, copy);
    setenv("VARKUI_COPY", copy.c_str(), 1);
    EXPECT_EQ(RunHost("OpensItsDataAndIsShownABox", "2>&-"), hostIsDone);
    EXPECT_EQ(RunHost("OpensItsDataAndIsShownABox", "0<&- 1>&- 2>&-"), hostIsDone);
}

TEST_F(Headless, GoesOnWhereNobodyReadsStandardError)
{
    // A reader that has gone before the first box ends nothing.
    int ends[2] = {};
    ASSERT_EQ(pipe(ends), 0);
    close(ends[0]);
    EXPECT_EQ(RunHost("IsShownTwoBoxes", "2>&" + std::to_string(ends[1])), hostIsDone);
    close(ends[1]);
    // One that never reads holds it up for a bounded time.
    ASSERT_EQ(mkfifo((frontEnd.Directory / "pipe").c_str(), 0600), 0);
    const int reader = open((frontEnd.Directory / "pipe").c_str(), O_RDWR);
    fcntl(reader, F_SETFL, O_NONBLOCK);
    const std::vector<char> full(4096);
    while (write(reader, full.data(), full.size()) > 0) {
    }
    EXPECT_EQ(RunHost("IsShownTwoBoxes", "2>'" + (frontEnd.Directory / "pipe").string() + "'"), hostIsDone);
    close(reader);
}

TEST_F(Headless, DoesNotWaitForAReaderOfTheLog)
{
    EXPECT_EQ(RunHost("HasALogThatNobodyReads", ""), hostIsDone);
}

TEST_F(Scripted, IsNoPipe)
{
    ASSERT_EQ(mkfifo((frontEnd.Directory / "pipe").c_str(), 0600), 0);
    setenv("VARK_UI", ("script:" + (frontEnd.Directory / "pipe").string()).c_str(), 1);
    const std::string written = ErrorOutput([&] { EXPECT_EQ(Show("Frage", MB_YESNO), IDNO); });
    EXPECT_EQ(written, "script: line 0: " + (frontEnd.Directory / "pipe").string() +
                           ": is no regular file\nMERIDA: Frage\n");
}
