// Books on a database server through the tools and the library: copied there and back, checked, booked into,
// read in SQL, and read with a role that may do no more.
#include "include/vark40.h"
#include "record-manager/server_part.h"
#include "tests/tools/program.h"
#include "tools/common/table_file.h"

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
#include <functional>
#include <gtest/gtest.h>
#include <libpq-fe.h>
#include <memory>
#include <sstream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace tests;
namespace fs = std::filesystem;

namespace {

const std::string server = getenv("WBTRV_TEST_SERVER") != nullptr ? getenv("WBTRV_TEST_SERVER") : "";

std::string Query(const std::string &sql)
{
    PGconn *connection = PQconnectdb(server.c_str());
    PGresult *result = PQexec(connection, sql.c_str());
    std::string value = PQresultStatus(result) == PGRES_FATAL_ERROR ? PQerrorMessage(connection) : "";
    if (PQntuples(result) > 0) value = PQgetvalue(result, 0, 0);
    PQclear(result);
    PQfinish(connection);
    return value;
}

// Sample books, and a copy of them on the server.
struct Copied {
    TemporaryDirectory Directory;
    fs::path Local = Directory.Path / "b";
    fs::path Books = Directory.Path / "s";
    std::string Schema;

    Copied(const std::string &schema, const char *postings)
        : Schema(schema + std::to_string(getpid()) + "_" + std::to_string(time(nullptr)))
    {
        EXPECT_EQ(0, tests::Books({"beispiel", Local.string(), "--buchungen", postings}).ExitCode);
        const Result copied =
            tests::Books({"kopie", Local.string(), Books.string(), "--server", server, "--schema", Schema});
        EXPECT_EQ(0, copied.ExitCode) << copied.Err;
    }
};

// Those that are only read are made once.
struct ServerBooks : testing::Test {
    static inline std::unique_ptr<Copied> Read;
    const fs::path Local = Read ? Read->Local : "";
    const fs::path Books = Read ? Read->Books : "";
    const std::string Schema = Read ? Read->Schema : "";
    TemporaryDirectory Directory;

    static void SetUpTestSuite()
    {
        if (!server.empty()) Read = std::make_unique<Copied>("r", "1000");
    }
    static void TearDownTestSuite() { Read.reset(); }

    void SetUp() override
    {
        if (server.empty()) GTEST_SKIP() << "to be run by with-postgres";
    }

    // Everything in the books, as the sequential files have it.
    std::map<std::string, std::string> Saved(const fs::path &books) const
    {
        const fs::path place = Directory.Path / "gesichert";
        const Result saved = tests::Books({"sichern", books.string(), place.string()});
        EXPECT_EQ(0, saved.ExitCode) << saved.Err;
        std::map<std::string, std::string> files;
        for (const fs::directory_entry &entry : fs::recursive_directory_iterator(place)) {
            if (entry.is_regular_file()) files[fs::relative(entry.path(), place)] = ReadFile(entry.path());
        }
        fs::remove_all(place);
        return files;
    }
};

TEST_F(ServerBooks, AreTheSameThereAndBack)
{
    EXPECT_FALSE(fs::exists(Books / "DB" / "1998" / "books.mdb"));
    EXPECT_EQ(server + "\n" + Schema + "_1998\n", ReadFile(Books / "DB" / "1998" / "books.server"));
    const auto before = Saved(Local);
    EXPECT_GT(before.size(), 100U);
    EXPECT_TRUE(before == Saved(Books));
    const fs::path back = Directory.Path / "k";
    const Result copied = tests::Books({"kopie", Books.string(), back.string()});
    ASSERT_EQ(0, copied.ExitCode) << copied.Err;
    EXPECT_TRUE(fs::exists(back / "DB" / "1998" / "books.mdb"));
    EXPECT_TRUE(before == Saved(back));
    const Result again = tests::Books(
        {"kopie", Local.string(), (Directory.Path / "x").string(), "--server", server, "--schema", Schema});
    EXPECT_NE(0, again.ExitCode) << "the schemas are taken";
}

TEST_F(ServerBooks, ThatCouldNotBeCopiedAsAWholeLeaveNothingOnTheServer)
{
    const fs::path broken = Directory.Path / "b";
    fs::copy(Local, broken, fs::copy_options::recursive);
    for (const char *name : {"tolka.ini", "vark.ini"}) {
        fs::remove(broken / name);
    }
    // The last of the directories: those before it are on the server by then.
    const fs::path last = broken / "DB" / "1998" / "books.mdb";
    fs::resize_file(last, fs::file_size(last) / 2);
    const std::string schema = Schema + "_x";
    const fs::path place = Directory.Path / "s";
    const auto copy = [&](const fs::path &from) {
        return tests::Books({"kopie", from.string(), place.string(), "--server", server, "--schema", schema});
    };
    const auto schemas = [&] {
        return Query("SELECT count(*) FROM pg_namespace WHERE nspname LIKE '" + schema + "%'");
    };
    EXPECT_NE(0, copy(broken).ExitCode);
    EXPECT_EQ("0", schemas());
    EXPECT_FALSE(fs::exists(place));
    // One that was made for it, empty, stays; one with tables is nobody's to fill.
    Query("CREATE SCHEMA " + schema);
    EXPECT_NE(0, copy(broken).ExitCode);
    EXPECT_EQ("1", schemas());
    EXPECT_EQ("0", Query("SELECT count(*) FROM pg_tables WHERE schemaname = '" + schema + "'"));
    Query("CREATE TABLE " + schema + ".other (n int)");
    const Result refused = copy(Local);
    EXPECT_NE(0, refused.ExitCode);
    EXPECT_NE(std::string::npos, refused.Err.find(schema)) << refused.Err;
    EXPECT_EQ("1", schemas());
    Query("DROP SCHEMA " + schema + " CASCADE");
}

// Books into which a program posts one line after the other as long as this stands.
struct Poster {
    const fs::path Books;
    const fs::path Bookings;
    std::atomic<bool> Ends = false;
    std::atomic<int> Posted = 0;
    std::thread Thread;

    Poster(const fs::path &books, const fs::path &bookings) : Books(books), Bookings(bookings)
    {
        std::string lines = "Datum;Beleg;Text;Sollkonto;Habenkonto;Betrag;Steuersatz;Zahlungsziel\n";
        for (int i = 0; i < perCall; ++i) {
            lines += "20.04.1998;KA0117;Porto;8410;1810;55,00;;\n";
        }
        WriteFile(Bookings, lines);
        Thread = std::thread([this] {
            while (!Ends) {
                const Result booked =
                    Vark(Books, {"buchen", "--mandant", "1", "--stapel", "16", "--datei", Bookings.string()});
                EXPECT_EQ(0, booked.ExitCode) << booked.Err;
                Posted += perCall;
            }
        });
    }
    Poster(const Poster &) = delete;
    Poster &operator=(const Poster &) = delete;
    ~Poster()
    {
        Ends = true;
        Thread.join();
    }
    static constexpr int perCall = 20;
};

// Numbers of the postings of a batch, which are given one after the other.
std::vector<int> NumbersIn(const fs::path &books)
{
    const Result shown = tests::Books(
        {"zeigen", "bat", books.string(), "--jahr", "1998", "--csv", "--felder", "Buchungsnummer"});
    EXPECT_EQ(0, shown.ExitCode) << shown.Err;
    std::vector<int> numbers;
    std::istringstream lines(shown.Out);
    std::string line;
    std::getline(lines, line);
    while (std::getline(lines, line)) {
        numbers.push_back(std::stoi(line));
    }
    return numbers;
}

TEST_F(ServerBooks, AreCopiedBothWaysAsOfOneMomentWhileOthersPost)
{
    const Copied own("k", "0");
    const auto copyWhilePosting = [&](const fs::path &from, const fs::path &to,
                                      std::vector<std::string> options) {
        const Poster poster(from, Directory.Path / "x.csv");
        while (poster.Posted == 0 && !HasFailure()) {
            std::this_thread::yield();
        }
        const int before = poster.Posted;
        options.insert(options.begin(), {"kopie", from.string(), to.string()});
        const Result copied = tests::Books(options);
        EXPECT_EQ(0, copied.ExitCode) << copied.Err;
        const size_t after = NumbersIn(from).size();
        const std::vector<int> numbers = NumbersIn(to);
        EXPECT_GE(numbers.size(), static_cast<size_t>(before));
        EXPECT_LE(numbers.size(), after);
        for (size_t i = 0; i < numbers.size(); ++i) {
            ASSERT_EQ(static_cast<int>(i) + numbers.front(), numbers[i]) << "none is left out";
        }
        EXPECT_EQ(0, tests::Books({"pruefen", to.string()}).ExitCode);
    };
    const std::string schema = own.Schema + "_2";
    copyWhilePosting(own.Books, Directory.Path / "1", {});
    copyWhilePosting(own.Local, Directory.Path / "2", {"--server", server, "--schema", schema});
    copyWhilePosting(Directory.Path / "2", Directory.Path / "3",
                     {"--server", server, "--schema", schema + "_3"});
}

TEST_F(ServerBooks, AreCheckedShownAndReportedLikeThoseInADirectory)
{
    const auto same = [&](std::vector<std::string> arguments, bool isVark) {
        const auto run = [&](const fs::path &books) {
            if (isVark) return Vark(books, arguments);
            std::vector<std::string> whole = arguments;
            whole.push_back(books.string());
            return tests::Books(whole);
        };
        const Result here = run(Local);
        const Result there = run(Books);
        EXPECT_EQ(0, there.ExitCode) << there.Err;
        EXPECT_EQ(here.Out, there.Out);
        EXPECT_NE("", there.Out);
    };
    same({"pruefen"}, false);
    same({"zeigen", "sako"}, false);
    const std::string question = "SELECT Sollkonto, count(*), sum(Soll) FROM bube_1997 GROUP BY 1 ORDER BY 1";
    const Result here = tests::Books({"sql", Local.string(), question, "--csv"});
    const Result there = tests::Books({"sql", Books.string(), question, "--csv"});
    EXPECT_EQ(0, there.ExitCode) << there.Err;
    EXPECT_EQ(here.Out, there.Out);
    EXPECT_GT(there.Out.size(), 100U);
    same({"bericht", "susa", "--mandant", "1", "--per", "31.3.98"}, true);
    same({"bericht", "journal", "--mandant", "1", "--monat", "3", "--jahr", "1998", "--csv"}, true);
}

TEST_F(ServerBooks, TakeBookings)
{
    const Copied own("w", "0");
    const fs::path bookings = Directory.Path / "x.csv";
    WriteFile(bookings, "Datum;Beleg;Text;Sollkonto;Habenkonto;Betrag;Steuersatz;Zahlungsziel\n"
                        "20.04.1998;KA0117;Porto;8410;1810;55,00;;\n"
                        "22.04.1998;KA0118;Blumen;8590;1810;53,50;7;\n");
    const Result booked =
        Vark(own.Books, {"buchen", "--mandant", "1", "--stapel", "16", "--datei", bookings.string()});
    EXPECT_EQ(0, booked.ExitCode) << booked.Out << booked.Err;
    EXPECT_EQ("2",
              Query("SELECT count(*) FROM " + own.Schema + "_1998.records WHERE file = (SELECT file FROM " +
                    own.Schema + "_1998.files WHERE name = 'bat.btr')"));
    EXPECT_EQ(0, tests::Books({"pruefen", own.Books.string()}).ExitCode);
}

// How often this thread has waited for an answer of a server.
uint64_t RoundTrips()
{
    void *library = dlopen("libwbtrv32-server.so", RTLD_NOW | RTLD_NOLOAD);
    EXPECT_NE(library, nullptr);
    if (library == nullptr) return 0;
    static const wbtrv::Limits limits;
    static const auto give = reinterpret_cast<wbtrv::GiveServerPart>(dlsym(library, "WbtrvServerPart"));
    return give(wbtrv::serverPartForm, &limits)->CountRoundTrips();
}

TEST_F(ServerBooks, TakeAPostingInSixRoundTripsAtMost)
{
    const Copied own("p", "0");
    setenv("VARK_CONFIG_DIR", own.Books.c_str(), 1);
    setenv("VARK_UI", "headless", 1);
    const auto post = [](const char *soll, int32_t sollArt, const char *haben, int32_t habenArt) {
        return VARK_BuchungEinfuegenDirekt(1, 1, 16, "15.6.98", "B1", "Messung", soll, sollArt, haben,
                                           habenArt, "119,00", "", "");
    };
    // The first opens tables, and finds out what is told no more.
    ASSERT_EQ(1, post("1810", 1, "10010", 4));
    const auto costs = [&](const char *soll, int32_t sollArt, const char *haben, int32_t habenArt) {
        const uint64_t before = RoundTrips();
        EXPECT_EQ(1, post(soll, sollArt, haben, habenArt)) << soll << " " << haben;
        return RoundTrips() - before;
    };
    EXPECT_LE(costs("1810", 1, "10010", 4), 6U);
    EXPECT_LE(costs("1810", 1, "10010", 4), 6U);
    // Accounts that were not read before.
    EXPECT_LE(costs("1820", 1, "10020", 4), 6U);
    EXPECT_GE(costs("1820", 1, "10020", 4), 3U);
    EXPECT_EQ("5",
              Query("SELECT count(*) FROM " + own.Schema + "_1998.records WHERE file = (SELECT file FROM " +
                    own.Schema + "_1998.files WHERE name = 'bat.btr')"));
}

TEST_F(ServerBooks, HaveViewsThatReckonAsTheToolsDo)
{
    const Result made = tests::Books({"server", "sichten", Books.string()});
    ASSERT_EQ(0, made.ExitCode) << made.Err;
    EXPECT_EQ("", made.Err);
    const auto asked = [&](const std::string &sql) {
        const Result result = tests::Books({"sql", Local.string(), sql, "--csv"});
        EXPECT_EQ(0, result.ExitCode) << result.Err;
        const size_t line = result.Out.find('\n') + 1;
        return result.Out.substr(line, result.Out.find_first_of("\r\n", line) - line);
    };
    const std::string view = Schema + "_1998.bube";
    for (const std::string field : {"Soll", "Haben", "Steuer", "Grundbetrag"}) {
        EXPECT_EQ(asked("SELECT sum(" + field + ") FROM bube_1998"),
                  Query("SELECT (sum(\"" + field + "\") * 100)::bigint FROM " + view));
    }
    for (const std::string field : {"Datum", "Buchungsdatum", "Text", "Beleg", "Sollkonto"}) {
        EXPECT_EQ(asked("SELECT min(" + field + ") || '/' || max(" + field + ") || '/' || count(DISTINCT " +
                        field + ") FROM bube_1998"),
                  Query("SELECT min(\"" + field + "\" COLLATE \"C\") || '/' || max(\"" + field +
                        "\" COLLATE \"C\") || '/' || count(DISTINCT \"" + field + "\") FROM (SELECT \"" +
                        field + "\"::text FROM " + view + ") AS v"))
            << field;
    }
    EXPECT_EQ(asked("SELECT sum(Buchungsnummer) || '/' || sum(Status) FROM bube_1998"),
              Query("SELECT sum(\"Buchungsnummer\") || '/' || sum(\"Status\") FROM " + view));
    EXPECT_EQ(0, tests::Books({"server", "sichten", Books.string()}).ExitCode) << "again";
}

TEST_F(ServerBooks, AreReadWithARoleThatMayOnlyRead)
{
    const std::string role = "leser_" + Schema;
    Query("CREATE ROLE " + role + " LOGIN");
    ASSERT_EQ(0, tests::Books({"server", "rechte", Books.string(), "--leser", role}).ExitCode);
    // The same directories, in which another role is named.
    const fs::path theirs = Directory.Path / "l";
    fs::copy(Books, theirs, fs::copy_options::recursive);
    for (const char *name : {"tolka.ini", "vark.ini"}) {
        std::string text = ReadFile(theirs / name);
        for (size_t at = 0; (at = text.find(Books.string(), at)) != std::string::npos;) {
            text.replace(at, Books.string().size(), theirs.string());
        }
        WriteFile(theirs / name, text);
    }
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(theirs)) {
        if (entry.path().filename() != "books.server") continue;
        std::string text = ReadFile(entry.path());
        text.replace(text.find("user=books"), 10, "user=" + role);
        WriteFile(entry.path(), text);
    }
    EXPECT_EQ(0, tests::Books({"pruefen", theirs.string()}).ExitCode);
    EXPECT_TRUE(Saved(Local) == Saved(theirs));
    const fs::path copied = Directory.Path / "k";
    EXPECT_EQ(0, tests::Books({"kopie", theirs.string(), copied.string()}).ExitCode);
    EXPECT_TRUE(Saved(Local) == Saved(copied));
    const auto same = [&](std::vector<std::string> arguments) {
        std::vector<std::string> ours = arguments;
        ours.insert(ours.begin() + 2, Local.string());
        arguments.insert(arguments.begin() + 2, theirs.string());
        const Result answer = tests::Books(arguments);
        EXPECT_EQ(0, answer.ExitCode) << answer.Err;
        EXPECT_EQ(tests::Books(ours).Out, answer.Out);
    };
    same({"zeigen", "kred"});
    const Result asked =
        tests::Books({"sql", theirs.string(), "SELECT count(*), sum(Soll) FROM bube_1998", "--csv"});
    EXPECT_EQ(tests::Books({"sql", Local.string(), "SELECT count(*), sum(Soll) FROM bube_1998", "--csv"}).Out,
              asked.Out);
    EXPECT_EQ(Vark(Local, {"bericht", "susa", "--mandant", "1", "--per", "31.3.98"}).Out,
              Vark(theirs, {"bericht", "susa", "--mandant", "1", "--per", "31.3.98"}).Out);
    const fs::path bookings = Directory.Path / "x.csv";
    WriteFile(bookings, "Datum;Beleg;Text;Sollkonto;Habenkonto;Betrag;Steuersatz;Zahlungsziel\n"
                        "20.04.1998;KA0117;Porto;8410;1810;55,00;;\n");
    EXPECT_EQ(
        1,
        Vark(theirs, {"buchen", "--mandant", "1", "--stapel", "16", "--datei", bookings.string()}).ExitCode);
    Query("DROP OWNED BY " + role + "; DROP ROLE " + role);
}

TEST_F(ServerBooks, AreMadeEmptyWhereThereAreNone)
{
    const fs::path place = Directory.Path / "neu";
    const std::string schema = Schema + "_neu";
    const auto make = [&](const fs::path &where) {
        return tests::Books(
            {"server", "anlegen", where.string(), "--verbindung", server, "--schema", schema});
    };
    EXPECT_EQ(0, make(place).ExitCode);
    EXPECT_EQ("0", Query("SELECT last_file FROM " + schema + ".head"));
    EXPECT_NE(0, make(place).ExitCode) << "there already";
    EXPECT_NE(0, tests::Books({"server", "anlegen", (Directory.Path / "y").string(), "--verbindung",
                               "host=/nowhere user=books", "--schema", schema})
                     .ExitCode);
    EXPECT_FALSE(fs::exists(Directory.Path / "y"));
    Query("DROP SCHEMA " + schema + " CASCADE");
}

// ---- Loaded in place ----

struct LoadedBooks : ServerBooks {
    std::unique_ptr<Copied> Own;
    fs::path Files = Directory.Path / "dateien";
    std::map<std::string, std::string> Before;

    void SetUp() override
    {
        ServerBooks::SetUp();
        if (IsSkipped()) return;
        Own = std::make_unique<Copied>("l", "0");
        Before = Saved(Own->Books);
        ASSERT_EQ(0, tests::Books({"sichern", Own->Books.string(), Files.string()}).ExitCode);
    }
    Result Load(std::vector<std::string> options) const
    {
        options.insert(options.begin(), "laden");
        return tests::Books(options);
    }
    // Those that hold the books, or were left behind.
    std::string Schemas(const std::string &ending = "") const
    {
        return Query("SELECT count(*) FROM pg_namespace WHERE nspname LIKE '" + Own->Schema + "%" + ending +
                     "'");
    }
    void Change(const fs::path &file, const std::function<void(std::string &)> &how) const
    {
        std::string content = ReadFile(Files / file);
        how(content);
        WriteFile(Files / file, content);
    }
};

// The first record of a sequential file, with its length before it and the line's end.
std::string FirstRecord(const std::string &content)
{
    const size_t comma = content.find(',');
    return content.substr(0, comma + 1 + std::stoul(content) + 2);
}

TEST_F(LoadedBooks, AreOthersInOneStepAndKeepRightsAndViews)
{
    ASSERT_EQ(0, tests::Books({"server", "sichten", Own->Books.string()}).ExitCode);
    const std::string role = "leser_" + Own->Schema;
    Query("CREATE ROLE " + role + " LOGIN");
    ASSERT_EQ(0, tests::Books({"server", "rechte", Own->Books.string(), "--leser", role}).ExitCode);
    const std::string schemas = Schemas();
    const std::string accounts = "SELECT count(*) FROM " + Own->Schema + "_1998.sako";
    const int before = std::stoi(Query(accounts));
    // A year that goes, one that comes, and a table without its first record.
    fs::rename(Files / "1997", Files / "1996");
    Change("1998/sako.seq", [](std::string &content) { content.erase(0, FirstRecord(content).size()); });
    const Result loaded = Load({Files.string(), Own->Books.string(), "--ersetzen"});
    ASSERT_EQ(0, loaded.ExitCode) << loaded.Err << loaded.Out;
    std::map<std::string, std::string> wanted;
    for (const auto &[name, content] : Before) {
        wanted[name.starts_with("1997/") ? "1996" + name.substr(4) : name] = content;
    }
    std::string &sako = wanted["1998/sako.seq"];
    sako.erase(0, FirstRecord(sako).size());
    EXPECT_TRUE(wanted == Saved(Own->Books));
    EXPECT_FALSE(fs::exists(Own->Books / "DB" / "1997"));
    EXPECT_EQ(server + "\n" + Own->Schema + "_1996\n", ReadFile(Own->Books / "DB" / "1996" / "books.server"));
    EXPECT_EQ(schemas, Schemas());
    EXPECT_EQ("0", Schemas("neu"));
    EXPECT_EQ(std::to_string(before - 1), Query("SET ROLE " + role + "; " + accounts));
    Query("DROP OWNED BY " + role + "; DROP ROLE " + role);
}

TEST_F(LoadedBooks, StayAsTheyAreWhereARecordIsRefused)
{
    Change("1998/sako.seq", [](std::string &content) { content.insert(0, FirstRecord(content)); });
    for (const std::vector<std::string> &what :
         {std::vector<std::string>{Files.string(), Own->Books.string(), "--ersetzen"},
          {(Files / "1998" / "sako.seq").string(), Own->Books.string(), "--tabelle", "sako", "--mandant", "1",
           "--jahr", "1998", "--ersetzen"}}) {
        const Result loaded = Load(what);
        EXPECT_NE(0, loaded.ExitCode);
        EXPECT_NE(std::string::npos, loaded.Out.find("schon vergeben")) << loaded.Out << loaded.Err;
        EXPECT_TRUE(Before == Saved(Own->Books));
        EXPECT_EQ("0", Schemas("neu"));
    }
}

TEST_F(LoadedBooks, TakeOneTableAlone)
{
    const std::string sako = ReadFile(Files / "1998" / "sako.seq");
    const fs::path file = Directory.Path / "sako.seq";
    const std::vector<std::string> table{
        file.string(), Own->Books.string(), "--tabelle", "sako", "--mandant", "1", "--jahr", "1998"};
    const auto with = [&](const char *option) {
        std::vector<std::string> all = table;
        all.emplace_back(option);
        return all;
    };
    const std::string first = FirstRecord(sako);
    WriteFile(file, first + "\x1A");
    EXPECT_NE(0, Load(table).ExitCode) << "there are records";
    EXPECT_NE(0, Load(with("--anfuegen")).ExitCode) << "this one too";
    ASSERT_EQ(0, Load(with("--ersetzen")).ExitCode);
    auto wanted = Before;
    wanted["1998/sako.seq"] = first + "\x1A";
    EXPECT_TRUE(wanted == Saved(Own->Books));
    WriteFile(file, sako.substr(first.size()));
    ASSERT_EQ(0, Load(with("--anfuegen")).ExitCode);
    EXPECT_TRUE(Before == Saved(Own->Books));
}

// The schemas of the other Mandanten are not even written to.
TEST_F(LoadedBooks, TakeOneMandantAlone)
{
    for (const char *year : {"1998", "19981"}) {
        Change(fs::path(year) / "sako.seq",
               [](std::string &content) { content.erase(0, FirstRecord(content).size()); });
    }
    const auto placeOf = [&](const std::string &year) {
        return Query("SELECT pg_relation_filenode('" + Own->Schema + "_" + year + ".records')");
    };
    const std::string first = placeOf("1998");
    const std::string second = placeOf("19981");
    EXPECT_NE(0, Load({Files.string(), Own->Books.string(), "--mandant", "2"}).ExitCode) << "there already";
    EXPECT_TRUE(Before == Saved(Own->Books));
    const Result loaded = Load({Files.string(), Own->Books.string(), "--mandant", "2", "--ersetzen"});
    ASSERT_EQ(0, loaded.ExitCode) << loaded.Err << loaded.Out;
    auto wanted = Before;
    std::string &sako = wanted["19981/sako.seq"];
    sako.erase(0, FirstRecord(sako).size());
    EXPECT_TRUE(wanted == Saved(Own->Books));
    EXPECT_EQ(first, placeOf("1998"));
    EXPECT_NE(second, placeOf("19981"));
    EXPECT_EQ("0", Schemas("neu"));
}

// Its years come with it, and those that it has no more go.
TEST_F(LoadedBooks, TakeAMandantWhoseYearsAreOthers)
{
    fs::rename(Files / "19971", Files / "19961");
    const Result loaded = Load({Files.string(), Own->Books.string(), "--mandant", "2", "--ersetzen"});
    ASSERT_EQ(0, loaded.ExitCode) << loaded.Err << loaded.Out;
    std::map<std::string, std::string> wanted;
    for (const auto &[name, content] : Before) {
        wanted[name.starts_with("19971/") ? "19961" + name.substr(5) : name] = content;
    }
    EXPECT_TRUE(wanted == Saved(Own->Books));
    EXPECT_FALSE(fs::exists(Own->Books / "DB" / "19971"));
    EXPECT_EQ("0", Schemas("19971"));
    EXPECT_EQ("1", Schemas("19961"));
}

// New directories are in their places a moment before the transaction that brings their schemas, and those of
// schemas that it takes stay a moment longer. Whoever is killed in between leaves them, and is told of.
TEST_F(LoadedBooks, TellOfDirectoriesWithoutSchemasThatAKilledLoadingLeft)
{
    fs::rename(Files / "1997", Files / "1996");
    const auto told = [&](const std::string &year) {
        const Result checked = tests::Books({"pruefen", Own->Books.string()});
        EXPECT_EQ(1, checked.ExitCode);
        EXPECT_NE(std::string::npos,
                  checked.Out.find(year + ": das Schema, das books.server nennt, hat keine Bücher"))
            << checked.Out;
    };
    // Somebody reads, so that the transaction waits.
    PGconn *reader = PQconnectdb(server.c_str());
    PQclear(PQexec(reader, ("BEGIN; LOCK TABLE " + Own->Schema + ".files IN ACCESS SHARE MODE").c_str()));
    const pid_t child = fork();
    if (child == 0) {
        execl(BOOKS_PROGRAM, BOOKS_PROGRAM, "laden", Files.c_str(), Own->Books.c_str(), "--ersetzen",
              nullptr);
        _exit(127);
    }
    const std::string waiting = " FROM pg_stat_activity WHERE wait_event_type = 'Lock' AND query LIKE '%" +
                                Own->Schema + "_1996%RENAME TO%'";
    while (Query("SELECT count(*)" + waiting) == "0" && waitpid(child, nullptr, WNOHANG) == 0) {
        std::this_thread::yield();
    }
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    EXPECT_EQ("t", Query("SELECT pg_terminate_backend(pid, 5000)" + waiting));
    PQfinish(reader);
    EXPECT_EQ("0", Schemas("1996"));
    told("1996");
    const Result copied = tests::Books({"kopie", Own->Books.string(), (Directory.Path / "k").string()});
    EXPECT_NE(0, copied.ExitCode) << "a year would be missing";
    EXPECT_NE(std::string::npos, copied.Err.find("1996")) << copied.Err;

    fs::copy(Own->Books / "DB" / "1997", Directory.Path / "1997", fs::copy_options::recursive);
    ASSERT_EQ(0, Load({Files.string(), Own->Books.string(), "--ersetzen"}).ExitCode);
    fs::copy(Directory.Path / "1997", Own->Books / "DB" / "1997", fs::copy_options::recursive);
    EXPECT_EQ("0", Schemas("1997"));
    told("1997");
    const Result again = Load({Files.string(), Own->Books.string(), "--ersetzen"});
    ASSERT_EQ(0, again.ExitCode) << again.Err << again.Out;
    EXPECT_FALSE(fs::exists(Own->Books / "DB" / "1997"));
    std::map<std::string, std::string> wanted;
    for (const auto &[name, content] : Before) {
        wanted[name.starts_with("1997/") ? "1996" + name.substr(4) : name] = content;
    }
    EXPECT_TRUE(wanted == Saved(Own->Books));
}

// Whenever the loading ends, the books are the old ones as a whole or the new ones.
TEST_F(LoadedBooks, AreOldOrNewWhereLoadingIsKilled)
{
    Change("1998/sako.seq", [](std::string &content) { content.erase(0, FirstRecord(content).size()); });
    auto wanted = Before;
    std::string &sako = wanted["1998/sako.seq"];
    sako.erase(0, FirstRecord(sako).size());
    const std::string under =
        "SELECT count(*) FROM pg_namespace WHERE nspname LIKE '" + Own->Schema + "%neu'";
    const pid_t child = fork();
    if (child == 0) {
        execl(BOOKS_PROGRAM, BOOKS_PROGRAM, "laden", Files.c_str(), Own->Books.c_str(), "--ersetzen",
              nullptr);
        _exit(127);
    }
    // In the middle of it.
    while (Query(under) == "0" && waitpid(child, nullptr, WNOHANG) == 0) {
        std::this_thread::yield();
    }
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    const auto after = Saved(Own->Books);
    EXPECT_TRUE(after == Before || after == wanted);
    const Result again = Load({Files.string(), Own->Books.string(), "--ersetzen"});
    ASSERT_EQ(0, again.ExitCode) << again.Err << again.Out;
    EXPECT_TRUE(wanted == Saved(Own->Books));
    EXPECT_EQ("0", Schemas("neu"));
}

TEST_F(LoadedBooks, AreRefusedToWhoIsNotAloneInThem)
{
    const tools::TableFile open(tools::LayoutOf(vark::TableSako), Own->Books / "DB" / "1998",
                                tools::OpenMode::Normal);
    const Result loaded = Load({Files.string(), Own->Books.string(), "--ersetzen"});
    EXPECT_NE(0, loaded.ExitCode);
    EXPECT_EQ("0", Schemas("neu"));
}

// ---- Copies ----

std::vector<std::string> OrderOf(const fs::path &directory, int key)
{
    const tools::TableLayout &layout = tools::LayoutOf(vark::TableSako);
    tools::TableFile table(layout, directory, tools::OpenMode::ReadOnly);
    std::vector<std::string> records;
    std::string record(layout.RecordLength, '\0');
    for (bool found = table.First(record.data(), key); found; found = table.Next(record.data(), key)) {
        records.push_back(record);
    }
    return records;
}

TEST_F(ServerBooks, KeepTheOrderOfDuplicatesInCopies)
{
    const fs::path from = Directory.Path / "b";
    fs::copy(Local, from, fs::copy_options::recursive);
    const fs::path year = fs::path("DB") / "1998";
    // All accounts under one name, and the first of them, renamed for a moment, as the last.
    {
        const tools::TableLayout &layout = tools::LayoutOf(vark::TableSako);
        tools::TableFile table(layout, from / year, tools::OpenMode::Normal);
        std::string record(layout.RecordLength, '\0');
        int records = 0;
        for (bool found = table.StepFirst(record.data()); found && records < 20;
             found = table.StepNext(record.data()), ++records) {
            for (const char *name : {"Z", "Y"}) {
                record.replace(8, 10, 10, '\0').replace(8, 1, name);
                table.Update(record.data());
            }
        }
        ASSERT_TRUE(table.StepFirst(record.data()));
        for (const char *name : {"Z", "Y"}) {
            record.replace(8, 1, name);
            table.Update(record.data());
        }
    }
    const auto wanted = OrderOf(from / year, 1);
    const fs::path there = Directory.Path / "s";
    const fs::path back = Directory.Path / "z";
    ASSERT_EQ(0, tests::Books(
                     {"kopie", from.string(), there.string(), "--server", server, "--schema", Schema + "_o"})
                     .ExitCode);
    EXPECT_TRUE(wanted == OrderOf(there / year, 1));
    ASSERT_EQ(0, tests::Books({"kopie", there.string(), back.string()}).ExitCode);
    EXPECT_TRUE(wanted == OrderOf(back / year, 1));
    EXPECT_TRUE(OrderOf(from / year, 0) == OrderOf(back / year, 0));
    tools::StopEngine();
}

} // namespace
