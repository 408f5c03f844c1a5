// Every command that writes, with one of its calls of the system failing, each call in turn: what it says and
// its exit code agree with what is in the books then. A booking that is denied is booked twice, one that is
// claimed is lost.
#include "tests/tools/program.h"

#include <cerrno>
#include <csignal>
#include <functional>
#include <gtest/gtest.h>

#ifndef EACH_CALL
#define EACH_CALL 37 // every so many-th call
#endif

namespace {

namespace fs = std::filesystem;
using tests::Result;

bool Contains(const std::string &text, const std::string &part)
{
    return text.find(part) != std::string::npos;
}

size_t Count(const std::string &text, const std::string &part)
{
    size_t count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

// One try of a command: how it is called, what it leaves if it is done, and what is there now.
struct Try {
    std::string Program = VARK_PROGRAM;
    std::vector<std::string> Arguments;
    size_t Whole = 1;
    std::function<size_t()> Left;
};

// Whole books are written with many calls that are alike.
constexpr long stepOfWhole = 13L * EACH_CALL;

struct FailingCalls : testing::Test {
    tests::TemporaryDirectory Directory;
    fs::path Books = Directory.Path / "b";
    int Injected = 0;

    void SetUp() override
    {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        GTEST_SKIP() << "a sanitizer catches these calls itself";
#endif
        ASSERT_EQ(0, tests::Books({"beispiel", Books.string(), "--buchungen", "600"}).ExitCode);
    }
    void TearDown() override
    {
        if (IsSkipped()) return;
        EXPECT_EQ(0, tests::Books({"pruefen", Books.string()}).ExitCode);
        RecordProperty("injected", Injected);
        printf("%d calls failed\n", Injected);
    }

    std::string Ask(const std::vector<std::string> &arguments) const
    {
        const Result result = tests::Vark(Books, arguments);
        EXPECT_EQ(0, result.ExitCode) << result.Err;
        return result.Out;
    }
    std::string Batch() const { return Ask({"stapel", "--mandant", "1", "16", "--csv"}); }

    // The call of that number fails with each of the errors; false when there is none.
    bool Fail(long number, const std::function<Try(const std::string &name)> &make)
    {
        bool isMet = false;
        for (const int error : {EIO, ENOSPC, EINTR}) {
            const Try one = make(std::to_string(number) + "e" + std::to_string(error));
            const fs::path done = Directory.Path / "done";
            fs::remove(done);
            std::vector<std::string> arguments = one.Arguments;
            if (one.Program == VARK_PROGRAM)
                arguments.insert(arguments.begin(), {"--config", Books.string()});
            const Result result = tests::Run({one.Program,
                                              arguments,
                                              {},
                                              {{"LD_PRELOAD", FAILING_CALLS},
                                               {"FAILING_CALL", std::to_string(number)},
                                               {"FAILING_ERROR", std::to_string(error)},
                                               {"FAILING_DONE", done.string()}}});
            if (!fs::exists(done)) continue;
            isMet = true;
            ++Injected;
            const size_t left = one.Left();
            EXPECT_EQ(result.ExitCode == 0 ? one.Whole : 0, left)
                << number << ": " << tests::ReadFile(done) << " with " << error << " ends with "
                << result.ExitCode << '\n'
                << result.Out << result.Err;
            EXPECT_TRUE(result.ExitCode >= 0 && result.ExitCode <= 3) << number << ": " << result.ExitCode;
        }
        return isMet;
    }

    void FailEach(const std::function<Try(const std::string &name)> &make, long step = EACH_CALL)
    {
        long number = 1;
        while (Fail(number, make)) {
            number += step;
        }
        EXPECT_GT(number, 1) << "no call was met";
    }
};

} // namespace

TEST_F(FailingCalls, OfABookingAreNeitherDeniedNorClaimed)
{
    FailEach([this](const std::string &name) {
        return Try{.Arguments = {"buchen", "--mandant", "1", "--stapel", "16", "--datum", "15.4.98", "--soll",
                                 "8010", "--haben", "1840", "--betrag", "1,00", "--text", name},
                   .Left = [=, this] { return Count(Batch(), ";" + name + "\n"); }};
    });
}

TEST_F(FailingCalls, OfASplitBookingAreNeitherDeniedNorClaimed)
{
    FailEach([this](const std::string &name) {
        return Try{.Arguments = {"split", "--mandant", "1", "--stapel", "16", "--datum", "15.4.98", "--haben",
                                 "1840", "--teil", "8010;;10,00;" + name, "--teil", "8020;;20,00;" + name},
                   .Whole = 2,
                   .Left = [=, this] { return Count(Batch(), ";" + name + "\n"); }};
    });
}

TEST_F(FailingCalls, OfManyBookingsAreCountedAsTheyAre)
{
    long number = 1;
    for (bool isMet = true; isMet; number += EACH_CALL) {
        const std::string name = "z" + std::to_string(number);
        std::string csv = "Datum;Sollkonto;Habenkonto;Betrag;Text\n";
        for (int i = 0; i < 6; ++i) {
            csv += std::string("15.04.1998;8010;") + (i == 3 ? "99" : "1840") + ";1,00;" + name + "\n";
        }
        tests::WriteFile(Directory.Path / "z.csv", csv);
        const fs::path done = Directory.Path / "done";
        fs::remove(done);
        const Result result = tests::Run({VARK_PROGRAM,
                                          {"--config", Books.string(), "buchen", "--mandant", "1", "--stapel",
                                           "16", "--datei", (Directory.Path / "z.csv").string(),
                                           "--abgelehnt", (Directory.Path / "abgelehnt.csv").string()},
                                          {},
                                          {{"LD_PRELOAD", FAILING_CALLS},
                                           {"FAILING_CALL", std::to_string(number)},
                                           {"FAILING_ERROR", std::to_string(EIO)},
                                           {"FAILING_DONE", done.string()}}});
        isMet = fs::exists(done);
        if (!isMet) break;
        ++Injected;
        const size_t left = Count(Batch(), ";" + name + "\n");
        const std::string said = std::to_string(left) + (left == 1 ? " Buchung " : " Buchungen ");
        // Without a summary nothing was begun, or the output is what failed.
        const bool isLost = Contains(result.Err, "Was getan ist, bleibt getan.");
        EXPECT_TRUE(result.Out.starts_with(said) || isLost || (left == 0 && result.Out.empty()))
            << number << ": " << tests::ReadFile(done) << " ends with " << result.ExitCode << ", " << left
            << " are there\n"
            << result.Out << result.Err;
        EXPECT_NE(0, result.ExitCode) << number << ": a line was to be refused";
    }
}

// The first lines are booked, and are said to be; that the others are missing is said as well.
TEST_F(FailingCalls, OfReadingTheLinesAreNotTakenForTheirEnd)
{
    std::string csv = "Datum;Sollkonto;Habenkonto;Betrag;Text\n";
    for (int i = 0; i < 300; ++i) {
        csv += "15.04.1998;8010;1840;1,00;lange Zeile Nummer " + std::to_string(i) + "\n";
    }
    tests::WriteFile(Directory.Path / "z.csv", csv);
    const fs::path done = Directory.Path / "done";
    int cut = 0;
    for (long number = 1; number < 40; ++number) {
        fs::remove(done);
        const size_t before = Count(Batch(), "lange Zeile");
        const Result result = tests::Run({VARK_PROGRAM,
                                          {"--config", Books.string(), "buchen", "--mandant", "1", "--stapel",
                                           "16", "--datei", (Directory.Path / "z.csv").string()},
                                          {},
                                          {{"LD_PRELOAD", FAILING_CALLS},
                                           {"FAILING_KIND", "read"},
                                           {"FAILING_CALL", std::to_string(number)},
                                           {"FAILING_ERROR", std::to_string(EIO)},
                                           {"FAILING_DONE", done.string()}}});
        if (!fs::exists(done)) break;
        ++Injected;
        const size_t booked = Count(Batch(), "lange Zeile") - before;
        if (booked == 0 || booked == 300) continue;
        ++cut;
        EXPECT_EQ(3, result.ExitCode);
        EXPECT_TRUE(Contains(result.Err, "läßt sich nicht weiter lesen.")) << result.Err;
    }
    EXPECT_GT(cut, 0);
}

TEST_F(FailingCalls, OfANewAccountAreNeitherDeniedNorClaimed)
{
    FailEach([this](const std::string &name) {
        return Try{
            .Arguments = {"peko", "neu", "--mandant", "1", "--art", "Debitor", "--name", "N", "--kuerzel",
                          name},
            .Left = [=, this] {
                const std::string list = Ask({"konten", "--mandant", "1", "--art", "Debitor", "--csv"});
                return Count(list, ";" + name + ";");
            }};
    });
}

TEST_F(FailingCalls, OfARateAreNeitherDeniedNorClaimed)
{
    int days = 0;
    FailEach([&, this](const std::string &) {
        const int month = ++days / 28;
        const auto two = [](int value) { return std::to_string(100 + value).substr(1); };
        const std::string date =
            two(days % 28 + 1) + "." + two(month % 12 + 1) + "." + std::to_string(1997 + month / 12);
        return Try{.Arguments = {"kurse", "--mandant", "1", "--neu", "--waehrung", "ZZZ", "--kurs", "1,5",
                                 "--einheiten", "1", "--datum", date},
                   .Left = [=, this] {
                       return Count(Ask({"kurse", "--mandant", "1", "--csv"}), "ZZZ;" + date + ";");
                   }};
    });
}

TEST_F(FailingCalls, OfWholeBooksLeaveThemWholeOrNotAtAll)
{
    const std::string target = (Directory.Path / "t").string();
    for (const std::string command : {"kopie", "sichern", "beispiel"}) {
        FailEach(
            [&, this](const std::string &) {
                fs::remove_all(target);
                std::vector<std::string> arguments = {command, Books.string(), target};
                if (command == "beispiel") arguments = {command, target, "--buchungen", "600"};
                return Try{.Program = BOOKS_PROGRAM, .Arguments = arguments, .Left = [&, command] {
                               if (!fs::exists(target)) return size_t{0};
                               if (command == "sichern") return size_t{1};
                               return size_t{tests::Books({"pruefen", target}).ExitCode == 0 ? 1U : 2U};
                           }};
            },
            stepOfWhole);
    }
}

TEST_F(FailingCalls, OfLoadedBooksAreNeitherDeniedNorClaimed)
{
    const std::string saved = (Directory.Path / "s").string();
    ASSERT_EQ(0, tests::Books({"sichern", Books.string(), saved}).ExitCode);
    const auto load = [&, this](const std::string &name) {
        Ask({"peko", "neu", "--mandant", "1", "--art", "Debitor", "--name", "N", "--kuerzel", name});
        return Try{
            .Program = BOOKS_PROGRAM,
            .Arguments = {"laden", saved, Books.string(), "--ersetzen"},
            .Left = [=, this] {
                const std::string list = Ask({"konten", "--mandant", "1", "--art", "Debitor", "--csv"});
                return 1 - Count(list, ";" + name + ";");
            }};
    };
    FailEach(load, stepOfWhole);
}

// Whatever it does just then: what was begun is cleared away, or all of it is done.
TEST_F(FailingCalls, WithAnInterruptionInTheMiddleAreNoFailures)
{
    const std::string saved = (Directory.Path / "s").string();
    const std::string target = (Directory.Path / "t").string();
    ASSERT_EQ(0, tests::Books({"sichern", Books.string(), saved}).ExitCode);
    const fs::path done = Directory.Path / "done";
    const std::vector<std::string> commands[] = {{"beispiel", target, "--buchungen", "600"},
                                                 {"kopie", Books.string(), target},
                                                 {"sichern", Books.string(), target},
                                                 {"laden", saved, target}};
    for (const std::vector<std::string> &command : commands) {
        for (const char *kind : {"sendfile", "read", "write", "pwrite", "writev"}) {
            long step = 1;
            for (long number = 1;; number += step, step += 2) {
                fs::remove_all(target);
                fs::remove(done);
                const Result result = tests::Run({BOOKS_PROGRAM,
                                                  command,
                                                  {},
                                                  {{"LD_PRELOAD", FAILING_CALLS},
                                                   {"FAILING_KIND", kind},
                                                   {"FAILING_CALL", std::to_string(number)},
                                                   {"FAILING_SIGNAL", std::to_string(SIGINT)},
                                                   {"FAILING_DONE", done.string()}}});
                if (!fs::exists(done)) break;
                ++Injected;
                const bool isWhole = fs::exists(target);
                EXPECT_EQ(isWhole ? 0 : 130, result.ExitCode)
                    << command[0] << ", " << kind << ' ' << number << ": " << result.Err;
            }
        }
    }
}
