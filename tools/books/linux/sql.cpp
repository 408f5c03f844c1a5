#include "tools/books/sql.h"

#include "tools/books/place.h"
#include "tools/common/exit_codes.h"
#include "tools/common/terminal.h"
#include "tools/common/texts.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <iostream>
#include <memory>
#include <optional>
#include <sqlite3.h>
#include <stdexcept>
#include <unistd.h>

namespace books {

namespace fs = std::filesystem;
using namespace tools;

namespace {

// The extension lies beside the record manager, which it needs.
fs::path ExtensionPath()
{
    Dl_info info;
    void *const entry = dlsym(RTLD_DEFAULT, "BTRCALL");
    if (entry == nullptr || dladdr(entry, &info) == 0) throw std::runtime_error("Die Datenbank fehlt.");
    return fs::canonical(info.dli_fname).parent_path() / "vark_sql.so";
}

struct Statement {
    sqlite3_stmt *Handle = nullptr;

    Statement() = default;
    ~Statement() { sqlite3_finalize(Handle); }
    Statement(const Statement &) = delete;
    Statement &operator=(const Statement &) = delete;
};

// What a statement may do beside reading is told by SQLite itself; only files of its own are opened so.
int RefuseFiles(void *, int action, const char *, const char *, const char *, const char *)
{
    return action == SQLITE_ATTACH || action == SQLITE_DETACH ? SQLITE_DENY : SQLITE_OK;
}

// A connection in which the books are open, and nothing else.
struct Database {
    sqlite3 *Handle = nullptr;

    explicit Database(const fs::path &data)
    {
        if (sqlite3_open(":memory:", &Handle) != SQLITE_OK) throw std::bad_alloc();
        try {
            Load();
            Open(data);
        } catch (...) {
            sqlite3_close(Handle);
            throw;
        }
        sqlite3_set_authorizer(Handle, RefuseFiles, nullptr);
        constexpr int stepsBetween = 10000;
        sqlite3_progress_handler(
            Handle, stepsBetween, [](void *) { return IsInterrupted() ? 1 : 0; }, nullptr);
    }
    ~Database() { sqlite3_close(Handle); }
    Database(const Database &) = delete;
    Database &operator=(const Database &) = delete;

private:
    void Load() const
    {
        const fs::path extension = ExtensionPath();
        char *message = nullptr;
        sqlite3_db_config(Handle, SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 1, nullptr);
        const int code = sqlite3_load_extension(Handle, extension.c_str(), nullptr, &message);
        sqlite3_db_config(Handle, SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0, nullptr);
        if (code == SQLITE_OK) return;
        const std::string why = message != nullptr ? message : "";
        sqlite3_free(message);
        throw std::runtime_error(extension.string() + " läßt sich nicht laden. " + why);
    }
    void Open(const fs::path &data) const
    {
        Statement opening;
        sqlite3_prepare_v2(Handle, "SELECT buecher_oeffnen(?)", -1, &opening.Handle, nullptr);
        sqlite3_bind_text(opening.Handle, 1, data.c_str(), -1, SQLITE_TRANSIENT);
        if (sqlite3_step(opening.Handle) != SQLITE_ROW) throw std::runtime_error(sqlite3_errmsg(Handle));
    }
};

// ---- What SQLite says, in German ----

struct Phrase {
    std::string_view Before;
    std::string_view After; // of what it names, both as SQLite says it
    const char *German;     // with % for what it names
};

constexpr Phrase phrases[] = {
    {"no such table: ", "", "Eine Tabelle % gibt es nicht. Die Tabellen nennt: books aufbau"},
    {"no such column: ", "", "Eine Spalte % gibt es nicht."},
    {"no such function: ", "", "Eine Funktion % gibt es nicht."},
    {"ambiguous column name: ", "",
     "Die Spalte % haben mehrere Tabellen; setzen Sie den Namen der Tabelle davor."},
    {"wrong number of arguments to function ", "()", "Die Funktion % nimmt eine andere Zahl von Werten."},
    {"misuse of aggregate: ", "()", "Die Summenfunktion % paßt hier nicht."},
    {"near ", ": syntax error", "Bei % ist die Anweisung nicht zu verstehen."},
    {"unrecognized token: ", "", "% ist in SQL kein Wort."},
    {"incomplete input", "", "Die Anweisung ist nicht vollständig."},
    {"integer overflow", "", "Die Summe ist zu groß."},
    {"out of memory", "", "Der Speicher reicht nicht."},
};

std::string German(const std::string &english)
{
    for (const Phrase &phrase : phrases) {
        if (!english.starts_with(phrase.Before) || !english.ends_with(phrase.After)) continue;
        std::string_view named = english;
        named.remove_prefix(phrase.Before.size());
        named.remove_suffix(phrase.After.size());
        if (named.size() > 1 && named.front() == '"') named = named.substr(1, named.size() - 2);
        std::string text = phrase.German;
        const size_t mark = text.find('%');
        if (mark != std::string::npos) text.replace(mark, 1, "„" + std::string(named) + "“");
        return text;
    }
    return english;
}

// Whether SQLite has refused a change.
bool IsChange(const std::string &english)
{
    return english.ends_with(" may not be modified") || english.ends_with(" because it is a view") ||
           english == "not authorized";
}

int Tell(const std::string &why, ExitCode code)
{
    std::fprintf(stderr, "books: %s\n", why.c_str());
    return code;
}

int TellChange()
{
    return Tell("books sql liest die Bücher nur; diese Anweisung würde etwas ändern.", ExitRefused);
}

// ---- Rows ----

std::string TextOf(sqlite3_stmt *statement, int column)
{
    if (sqlite3_column_type(statement, column) == SQLITE_BLOB) {
        static constexpr char digits[] = "0123456789ABCDEF";
        const auto *bytes = static_cast<const unsigned char *>(sqlite3_column_blob(statement, column));
        const int size = sqlite3_column_bytes(statement, column);
        std::string hex;
        for (int i = 0; i < size; ++i) {
            hex += digits[bytes[i] >> 4];
            hex += digits[bytes[i] & 15];
        }
        return hex;
    }
    const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(statement, column));
    return text != nullptr ? std::string(text, static_cast<size_t>(sqlite3_column_bytes(statement, column)))
                           : std::string();
}

std::vector<std::string> HeadingsOf(sqlite3_stmt *statement)
{
    std::vector<std::string> headings;
    for (int column = 0; column < sqlite3_column_count(statement); ++column) {
        const char *name = sqlite3_column_name(statement, column);
        headings.emplace_back(name != nullptr ? name : "");
    }
    return headings;
}

// Steps to the end with `row` at each row; returns SQLite's code.
template <typename Row> int ForEachRow(sqlite3_stmt *statement, Row row)
{
    int code = SQLITE_ROW;
    while ((code = sqlite3_step(statement)) == SQLITE_ROW) {
        row();
    }
    return code;
}

// As wide as its rows need, so all of them are read first.
int PrintTable(sqlite3_stmt *statement)
{
    TextTable table;
    table.KeepsEmpty = true;
    for (const std::string &heading : HeadingsOf(statement)) {
        table.Columns.push_back({heading, Align::Right});
    }
    const int code = ForEachRow(statement, [&] {
        std::vector<std::string> cells;
        for (int column = 0; column < sqlite3_column_count(statement); ++column) {
            const int type = sqlite3_column_type(statement, column);
            if (type == SQLITE_TEXT || type == SQLITE_BLOB) {
                table.Columns[static_cast<size_t>(column)].Side = Align::Left;
            }
            cells.push_back(Printable(TextOf(statement, column)));
        }
        table.Add(std::move(cells));
    });
    if (code == SQLITE_DONE) table.Print(std::cout);
    std::cout << std::flush;
    return code;
}

void PutValue(RowWriter &rows, sqlite3_stmt *statement, int column)
{
    switch (sqlite3_column_type(statement, column)) {
    case SQLITE_NULL: rows.PutNull(); break;
    case SQLITE_INTEGER: rows.PutNumber(sqlite3_column_int64(statement, column)); break;
    case SQLITE_FLOAT: rows.PutReal(TextOf(statement, column)); break;
    default: rows.PutUtf8(TextOf(statement, column)); break;
    }
}

int PrintRows(sqlite3_stmt *statement, Output as)
{
    const std::vector<std::string> headings = HeadingsOf(statement);
    std::vector<RowColumn> columns;
    columns.reserve(headings.size());
    for (const std::string &heading : headings) {
        columns.push_back({heading.c_str(), heading.c_str(), 0});
    }
    RowWriter rows(columns, as);
    const int code = ForEachRow(statement, [&] {
        for (int column = 0; column < sqlite3_column_count(statement); ++column) {
            PutValue(rows, statement, column);
        }
        rows.EndRow();
    });
    rows.End();
    return code;
}

// ---- Statements ----

// Answers the statements of a text one after the other.
int Answer(const Database &database, const std::string &text, Output as)
{
    const char *at = text.c_str();
    while (*at != 0) {
        Statement statement;
        if (sqlite3_prepare_v2(database.Handle, at, -1, &statement.Handle, &at) != SQLITE_OK) {
            const std::string why = sqlite3_errmsg(database.Handle);
            return IsChange(why) ? TellChange() : Tell(German(why), ExitUsage);
        }
        if (statement.Handle == nullptr) continue; // a blank or a comment
        if (sqlite3_stmt_readonly(statement.Handle) == 0) return TellChange();
        const bool isTable = as == Output::Table && sqlite3_column_count(statement.Handle) > 0;
        const int code = isTable ? PrintTable(statement.Handle) : PrintRows(statement.Handle, as);
        ThrowIfInterrupted();
        if (code == SQLITE_DONE) continue;
        const std::string why = sqlite3_errmsg(database.Handle);
        return code == SQLITE_AUTH ? TellChange() : Tell(German(why), ExitFailure);
    }
    return ExitGood;
}

bool IsBlank(const std::string &text)
{
    return Trimmed(text).find_first_not_of("\r\n\t ") == std::string::npos;
}

int AnswerLines(const Database &database, Output as)
{
    const bool isTerminal = isatty(STDIN_FILENO) != 0;
    std::string text;
    std::string line;
    const auto prompt = [&] {
        if (isTerminal) std::cout << (text.empty() ? "books> " : "  ...> ") << std::flush;
        return static_cast<bool>(std::getline(std::cin, line));
    };
    while (prompt()) {
        text += line + '\n';
        if (sqlite3_complete(text.c_str()) == 0) {
            if (IsBlank(text)) text.clear();
            continue;
        }
        const int code = Answer(database, text, as);
        if (code != ExitGood && !isTerminal) return code;
        text.clear();
    }
    ThrowIfInterrupted();
    return IsBlank(text) ? static_cast<int>(ExitGood) : Answer(database, text, as);
}

// A word of the shell's own commands.
std::string ShellWord(const std::string &text)
{
    std::string word = "\"";
    for (const char character : text) {
        if (character == '"' || character == '\\') word += '\\';
        word += character;
    }
    return word + '"';
}

// Becomes SQLite's shell; returns where there is none.
void BecomeShell(const fs::path &data, Output as)
{
    std::string place = "'";
    for (const char character : data.string()) {
        if (character == '\'') place += '\'';
        place += character;
    }
    place += '\'';
    const std::string load = ".load " + ShellWord(ExtensionPath().string());
    const std::string open = "SELECT buecher_oeffnen(" + place + ");";
    const char *const mode = as == Output::Csv ? "-csv" : as == Output::Json ? "-json" : "-box";
    const char *const arguments[] = {
        "sqlite3",         mode,   "-header",    "-cmd",     load.c_str(), "-cmd",
        ".once /dev/null", "-cmd", open.c_str(), ":memory:", nullptr};
    execvp(arguments[0], const_cast<char *const *>(arguments));
}

} // namespace

int AskBooks(const SqlOptions &options)
{
    const fs::path data = DataPathOf(options.Directory);
    const Database database(data);
    if (!options.Statement.empty()) return Answer(database, options.Statement, options.As);
    if (isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0) BecomeShell(data, options.As);
    return AnswerLines(database, options.As);
}

} // namespace books
