// Message boxes without a screen: what is written, what is answered, and how a script answers instead.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include "front_end_setup.h"
#include "text/windows1252.h"
#include "window-system/varkui.h"

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
    EXPECT_EQ(written,
              "varkui: VARK_UI=laterna-magica is not known; going on without a screen\nMERIDA: Text\n");
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
#include "window-system/calls.def"
#undef VARKUI_CALL
    dlclose(library);
}
