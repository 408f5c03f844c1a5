// The script front end: every instruction, what it does, and how it fails.
#include <atomic>
#include <gtest/gtest.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <vector>

#include "dialog_run.h"
#include "front_end_setup.h"
#include "text/windows1252.h"

using namespace varkui;
using namespace text;

namespace {

const DialogControl controls[] = {
    {DialogControlKind::Edit, 10, "", 5, 5, 50, 14, 0, 0},
    {DialogControlKind::Edit, 11, "", 5, 20, 50, 14, ES_READONLY, 0},
    {DialogControlKind::Edit, 12, "", 5, 35, 50, 14, WS_DISABLED, 0},
    {DialogControlKind::Edit, 13, "", 5, 50, 50, 14, 0, WS_VISIBLE},
    {DialogControlKind::CheckBox, 20, "Kästchen"_w, 5, 65, 50, 10, 0, 0},
    {DialogControlKind::RadioButton, 21, "eins", 5, 75, 50, 10, WS_GROUP, 0},
    {DialogControlKind::RadioButton, 22, "zwei", 5, 85, 50, 10, 0, 0},
    {DialogControlKind::ListBox, 30, "", 60, 5, 80, 60, WS_GROUP, 0},
    {DialogControlKind::ComboBox, 31, "", 60, 70, 80, 14, 0, 0},
    {DialogControlKind::ComboList, 32, "", 60, 85, 80, 14, 0, 0},
    {DialogControlKind::Text, 40, "Text", 5, 100, 50, 8, 0, 0},
    {DialogControlKind::Edit, 14, "", 60, 100, 50, 14, 0, 0},
    {DialogControlKind::Text, 41, "Ver&borgen", 5, 110, 50, 8, 0, WS_VISIBLE},
    {DialogControlKind::ListBox, 33, "", 60, 115, 80, 60, 0, 0},
    {DialogControlKind::Text, 42, "", 5, 115, 50, 8, 0, 0},
    {DialogControlKind::ComboBox, 34, "", 60, 120, 80, 14, 0, 0},
    {DialogControlKind::DefaultButton, IDOK, "OK", 150, 5, 50, 14, 0, 0},
    {DialogControlKind::PushButton, IDCANCEL, "Abbrechen", 150, 20, 50, 14, 0, 0},
};
const DialogTable table = {102, "Übung"_w, 207, 120, controls, std::size(controls), 0};

std::vector<std::string> commands; // "id code" of every notice

INT_PTR Fill(HWND dialog, UINT message, WPARAM wParam, LPARAM /*lParam*/)
{
    if (message == WM_COMMAND) {
        commands.push_back(std::to_string(LOWORD(wParam)) + " " +
                           std::to_string(static_cast<SHORT>(HIWORD(wParam))));
    }
    if (message != WM_INITDIALOG) return 0;
    commands.clear();
    for (const char *row : {"1000\tKASSE\tKasse"_w, "1200\tBANK\tBank"_w, "1210\tBANK2\tSparkasse Köln"_w}) {
        SendDlgItemMessageA(dialog, 30, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(row));
    }
    for (const char *row : {"DEM", "USD", "100"}) {
        SendDlgItemMessageA(dialog, 31, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(row));
        SendDlgItemMessageA(dialog, 32, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(row));
    }
    SendDlgItemMessageA(dialog, 10, EM_LIMITTEXT, 8, 0);
    return 0;
}

bool Heard(const std::string &command)
{
    for (const std::string &each : commands) {
        if (each == command) return true;
    }
    return false;
}

struct Scripts : testing::Test {
    FrontEndSetup frontEnd;

    // Runs the dialog with a script that is to be done whole.
    INT_PTR Play(const std::string &script) const
    {
        frontEnd.UseScript(script);
        testing::internal::CaptureStderr();
        const INT_PTR result = RunTable(table, Fill);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        EXPECT_EQ(frontEnd.Log(), "dialog 102 Übung\n" + script);
        return result;
    }

    // Runs the dialog with an instruction that fails, and returns what is said of it.
    std::string Failure(const std::string &instruction) const
    {
        std::filesystem::remove(frontEnd.Directory / "log");
        frontEnd.UseScript("# first a comment\n" + instruction + "\npress 1\n");
        testing::internal::CaptureStderr();
        EXPECT_EQ(RunTable(table, Fill), IDCANCEL); // as nobody would answer it
        std::string said = testing::internal::GetCapturedStderr();
        EXPECT_EQ(frontEnd.Log(), "dialog 102 Übung\n" + said);
        const std::string prefix = "script: line 2: ";
        EXPECT_EQ(said.substr(0, prefix.size()), prefix);
        return said.substr(prefix.size());
    }
};

} // namespace

TEST_F(Scripts, CheckWhichDialogIsOpen)
{
    EXPECT_EQ(Play("dialog 102\nexpect title Übung\npress 1\n"), IDOK);
}

// A text names what stands right behind it and can be typed into or chosen from, even when nobody sees it.
TEST_F(Scripts, SeeWhichTextNamesAField)
{
    EXPECT_EQ(Play("expect label 14 Text\nexpect label 33 Ver&borgen\npress 1\n"), IDOK);
}

TEST_F(Scripts, TypeTexts)
{
    Play("focus 30\ntext 10 Miete\nexpect text 10 Miete\nexpect focus 30\ntext 10 \" x \"\nexpect text 10 \" "
         "x \"\n"
         "text 10\nexpect text 10\ntext 10 Köln\nexpect text 10 Köln\ntext 31 ATS\n"
         "expect text 31 ATS\npress "
         "1\n");
    EXPECT_TRUE(Heard("10 768"));
    EXPECT_TRUE(Heard("31 5"));
}

TEST_F(Scripts, TypeNoMoreThanAFieldTakes) { Play("text 10 123456789\nexpect text 10 12345678\npress 1\n"); }

TEST_F(Scripts, CheckAndUncheck)
{
    Play(
        "check 20\nexpect checked 20\ncheck 20\nexpect checked 20\nuncheck 20\nexpect unchecked 20\n"
        "check 22\nexpect checked 22\ncheck 21\nexpect checked 21\nexpect unchecked 22\ncheck 21\npress 1\n");
    int clicks = 0;
    for (const std::string &each : commands) {
        clicks += each == "20 0" ? 1 : 0;
    }
    EXPECT_EQ(clicks, 2); // what is checked already is not clicked
}

TEST_F(Scripts, SelectRowsByNumberAndText)
{
    Play("expect rows 30 3\nexpect row 30\nselect 30 1\nexpect row 30 1\nexpect focus 30\n"
         "select 30 \"1210\"\nexpect row 30 2\nselect 30 \"1000\tKASSE\tKasse\"\nexpect row 30 "
         "\"1000\tKASSE\tKasse\"\n"
         "select 31 1\nexpect text 31 USD\nexpect row 31 USD\nselect 32 \"100\"\nexpect row 32 2\n"
         "expect row 32 \"100\"\npress 1\n");
    EXPECT_TRUE(Heard("30 1"));
    EXPECT_TRUE(Heard("32 1"));
}

TEST_F(Scripts, ActivateRows)
{
    Play("activate 30 2\nexpect row 30 2\nactivate 30 \"1200\"\nexpect row 30 1\npress 1\n");
    EXPECT_TRUE(Heard("30 2"));
}

TEST_F(Scripts, PressKeys)
{
    Play("focus 10\nkey a\nkey B\nkey ä\nkey 1\nexpect text 10 aBä1\nkey Backspace\nkey Left\nkey Delete\n"
         "expect text 10 aB\nkey Home\nkey Shift+End\nkey x\nexpect text 10 x\nkey Tab\nexpect focus 11\n"
         "key Shift+Tab\nexpect focus 10\nfocus 30\nkey Down\nkey PageDown\nexpect row 30 2\nkey Up\nexpect "
         "row 30 1\n"
         "focus 20\nkey Space\nexpect checked 20\nkey Escape\n");
}

TEST_F(Scripts, Close) { EXPECT_EQ(Play("close\n"), IDCANCEL); }

TEST_F(Scripts, ExpectStates)
{
    Play("expect enabled 10\nexpect disabled 12\nexpect visible 10\nexpect hidden 13\nexpect unchecked 20\n"
         "expect unchecked 10\npress 1\n");
}

TEST_F(Scripts, FailOnWhatDoesNotFit)
{
    struct {
        const char *instruction;
        const char *said;
    } const cases[] = {
        {"dialog 101", "dialog 101 is expected, but dialog 102 \"Übung\" is open"},
        {"dialog x", "\"x\" is not the number of a dialog"},
        {"box ok", "a message box is expected, but dialog 102 \"Übung\" is open"},
        {"press 99", "there is no control 99: dialog 102 \"Übung\" is open"},
        {"press OK", "\"OK\" does not begin with the number of a control"},
        {"press 1 2", "\"2\" is too much"},
        {"press 10", "control 10 is no button"},
        {"press 40", "control 40 is no button"},
        {"text 11 x", "control 11 is read-only"},
        {"text 12 x", "control 12 is disabled"},
        {"text 13 x", "control 13 is hidden"},
        {"text 20 x", "control 20 takes no text"},
        {"text 32 x", "control 32 takes no text"},
        {"check 10", "control 10 cannot be checked"},
        {"uncheck 21", "control 21 cannot be unchecked"},
        {"select 10 1", "control 10 has no rows to select"},
        {"select 30 3", "control 30 has no row 3, but 3 rows"},
        {"select 30 \"Haus\"", "control 30 has no row \"Haus\""},
        {"select 30 Haus", "\"Haus\" is neither the number of a row nor a text in quotes"},
        {"activate 31 0", "control 31 has no rows to activate"},
        {"focus 12", "control 12 is disabled"},
        {"key Tabulator", "\"Tabulator\" is not the name of a key"},
        {"key", "\"\" is not the name of a key"},
        {"close now", "\"now\" is too much"},
        {"expect", "\"expect \" is not an instruction"},
        {"expect text 10 x", "the text of control 10 is \"\", not \"x\""},
        {"expect label 14 Texte", "the label of control 14 is \"Text\", not \"Texte\""},
        {"expect label 10 x", "control 10 has no label"},
        {"expect label 11 x", "control 11 has no label"}, // a field stands before it
        {"expect label 34 x", "control 34 has no label"}, // an empty text does
        {"expect label 20 x", "control 20 has no label"}, // names itself
        {"expect rows 30 2", "control 30 has 3 rows, not 2"},
        {"expect rows 10 2", "control 10 has no rows"},
        {"expect rows 30 viele", "\"viele\" is not a number of rows"},
        {"expect row 30 1", "control 30 has no row selected, not \"1\""},
        {"expect enabled 12", "control 12 is not enabled"},
        {"expect disabled 10", "control 10 is not disabled"},
        {"expect checked 20", "control 20 is not checked"},
        {"expect visible 13", "control 13 is not visible"},
        {"expect hidden 10", "control 10 is not hidden"},
        {"expect unchecked 99", "there is no control 99: dialog 102 \"Übung\" is open"},
        {"expect title Ubung", "the title is \"Übung\", not \"Ubung\""},
        {"expect focus 20", "control 10 has the focus, not 20"},
        {"dance", "\"dance\" is not an instruction"},
    };
    // The script and the front end are chosen once in a process, so each case gets one of its own.
    for (const auto &row : cases) {
        const pid_t child = fork();
        if (child == 0) {
            EXPECT_EQ(Failure(row.instruction), std::string(row.said) + "\n");
            fflush(nullptr);
            _exit(testing::Test::HasFailure() ? 1 : 0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0) << row.instruction;
    }
}

TEST_F(Scripts, SayWhichRowIsSelectedWhenTheWrongOneIs)
{
    frontEnd.UseScript("select 30 1\nexpect row 30 0\n");
    testing::internal::CaptureStderr();
    RunTable(table, Fill);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "script: line 2: control 30 has row 1 \"1200\tBANK\tBank\" selected, not \"0\"\n");
}

TEST_F(Scripts, CloseABoxOnlyWhereThatIsAnAnswer)
{
    frontEnd.UseScript("close\nclose\nkey Escape\nkey Enter\nclose\n");
    testing::internal::CaptureStderr();
    EXPECT_EQ(MessageBoxA(nullptr, "a", "MERIDA", MB_OK), IDOK);
    EXPECT_EQ(MessageBoxA(nullptr, "b", "MERIDA", MB_OKCANCEL), IDCANCEL);
    EXPECT_EQ(MessageBoxA(nullptr, "c", "MERIDA", MB_YESNOCANCEL), IDCANCEL);
    EXPECT_EQ(MessageBoxA(nullptr, "d", "MERIDA", MB_YESNO | MB_DEFBUTTON2), IDNO);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    testing::internal::CaptureStderr();
    EXPECT_EQ(MessageBoxA(nullptr, "Ja oder nein?", "MERIDA", MB_YESNO), IDNO);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "script: line 5: the message box cannot be closed without an answer: Ja oder nein?\nMERIDA: Ja "
              "oder nein?\n");
}

TEST_F(Scripts, AnswerBoxesByMnemonicsAndExpectTheirTitle)
{
    frontEnd.UseScript("expect title MERIDA\nexpect text 65535 Weiter?\nkey j\n");
    EXPECT_EQ(MessageBoxA(nullptr, "Weiter?", "MERIDA", MB_YESNO), IDYES);
    EXPECT_EQ(frontEnd.Log(), "box Weiter?\nexpect title MERIDA\nexpect text 65535 Weiter?\nkey j\n");
}

TEST_F(Scripts, EndInTheMiddleOfADialogLeaveItToNobody)
{
    frontEnd.UseScript("text 10 x\n");
    EXPECT_EQ(RunTable(table, Fill), IDCANCEL);
    EXPECT_FALSE(VarkUiHasUser());
}

TEST_F(Scripts, PlayAPlainWindowToo)
{
    frontEnd.UseScript("expect title Bericht\npress 1094\nclose\n");
    static int presses;
    WNDCLASSA frame = {};
    frame.lpszClassName = "Frame";
    frame.lpfnWndProc = [](HWND window, UINT message, WPARAM wParam, LPARAM lParam) -> LRESULT {
        if (message == WM_COMMAND && LOWORD(wParam) == 1094) ++presses;
        if (message == WM_DESTROY) PostQuitMessage(0);
        return DefWindowProcA(window, message, wParam, lParam);
    };
    RegisterClassA(&frame);
    HWND window = CreateWindowExA(0, "Frame", "Bericht", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 100, 100,
                                  nullptr, nullptr, nullptr, nullptr);
    CreateWindowExA(0, "Button", "voriger Monat", WS_CHILD | WS_VISIBLE, 0, 0, 10, 10, window,
                    reinterpret_cast<HMENU>(intptr_t{1094}), nullptr, nullptr);
    MSG message = {};
    while (GetMessageA(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
    EXPECT_EQ(presses, 1);
    EXPECT_FALSE(IsWindow(window));
}

// One thread has the script to itself until it has nothing open any more.
TEST_F(Scripts, ServeOneThreadAfterTheOther)
{
    std::string script;
    constexpr int threadCount = 4;
    for (int i = 0; i < threadCount; ++i) {
        script += "dialog 102\ntext 10 x\nexpect text 10 x\npress 1\n";
    }
    frontEnd.UseScript(script);
    std::atomic<int> answered{0};
    std::vector<std::thread> threads;
    threads.reserve(threadCount);
    for (int i = 0; i < threadCount; ++i) {
        threads.emplace_back([&answered] {
            if (RunTable(table, [](HWND, UINT, WPARAM, LPARAM) { return INT_PTR{0}; }) == IDOK) ++answered;
        });
    }
    for (std::thread &each : threads) {
        each.join();
    }
    EXPECT_EQ(answered, threadCount);
    EXPECT_EQ(frontEnd.Log().find("script:"), std::string::npos) << frontEnd.Log();
}
