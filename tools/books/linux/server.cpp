#include "tools/books/server.h"

#include "host/error_texts.h"
#include "record-manager/include/book_server.h"
#include "tools/books/place.h"
#include "tools/common/exit_codes.h"
#include "tools/common/installation.h"
#include "tools/common/layout.h"
#include "tools/common/table_file.h"
#include "tools/common/terminal.h"

#include <algorithm>
#include <dlfcn.h>
#include <fstream>
#include <functional>
#include <iostream>
#include <set>
#include <stdexcept>
#include <vector>

namespace books {

namespace fs = std::filesystem;
using namespace tools;

namespace {

constexpr const char *serviceName = "books.server";

using Row = std::vector<std::string>;

// Carries out SQL on the server of a directory; the part of the record manager that knows how is loaded here.
std::vector<Row> Run(const fs::path &directory, const std::string &sql, bool create = false)
{
    constexpr const char *name = "libwbtrv32-server.so";
    void *library = dlopen(name, RTLD_NOW);
    void *entry = library != nullptr ? dlsym(library, "WbtrvServerRun") : nullptr;
    if (entry == nullptr)
        throw std::runtime_error(std::string(name) + ' ' + host::TextOfLoader(dlerror()).Text + '.');
    auto *run = reinterpret_cast<WbtrvServerRunFunction *>(entry);
    std::vector<Row> rows;
    char message[1024];
    const auto add = [](void *context, int count, const char *const *values) {
        Row row;
        for (int i = 0; i < count; ++i) {
            row.emplace_back(values[i] != nullptr ? values[i] : "");
        }
        static_cast<std::vector<Row> *>(context)->push_back(std::move(row));
    };
    const int16_t status =
        run(directory.c_str(), sql.c_str(), create ? 1 : 0, add, &rows, message, sizeof message);
    if (status != BtrStatusOk) {
        throw std::runtime_error((directory / serviceName).string() + ": " +
                                 (message[0] != 0 ? std::string(message) : StatusText(status)));
    }
    return rows;
}

std::string Trim(const std::string &line)
{
    const size_t begin = line.find_first_not_of(" \t\r");
    return begin == std::string::npos ? "" : line.substr(begin, line.find_last_not_of(" \t\r") + 1 - begin);
}

// One of the lines that are no remarks, the first being 1.
std::string LineIn(const fs::path &directory, int wanted)
{
    std::ifstream file(directory / serviceName);
    std::string line;
    for (int lines = 0; std::getline(file, line);) {
        line = Trim(line);
        if (!line.empty() && line[0] != '#' && ++lines == wanted) return line;
    }
    throw std::runtime_error("In " + directory.string() + " nennt " + serviceName + " kein Schema.");
}

std::string ConnectionIn(const fs::path &directory) { return LineIn(directory, 1); }
std::string SchemaIn(const fs::path &directory) { return LineIn(directory, 2); }

// The data path and the directories of years whose books are on a server.
std::vector<fs::path> ServerDirectories(const fs::path &books)
{
    const fs::path data = DataPathOf(books);
    std::vector<fs::path> found;
    if (IsOnServer(data)) found.push_back(data);
    for (const std::string &name : YearDirectories(data)) {
        if (IsOnServer(data / name)) found.push_back(data / name);
    }
    if (found.empty())
        throw std::runtime_error("In " + data.string() + " liegen keine Bücher auf einem Server.");
    return found;
}

std::string Quoted(const std::string &name)
{
    std::string quoted = "\"";
    for (const char character : name) {
        quoted += character == '"' ? "\"\"" : std::string(1, character);
    }
    return quoted + '"';
}

// Values of fields, out of the bytes of a record: empty ones are NULL, but a text, and an amount, which is 0.
constexpr const char *functions =
    "CREATE OR REPLACE FUNCTION @as_text(d bytea, p int, w int) RETURNS text LANGUAGE sql IMMUTABLE AS $f$ "
    "SELECT convert_from(substring(d FROM p FOR CASE WHEN position('\\x00'::bytea IN substring(d FROM p FOR "
    "w)) = 0 "
    "THEN w ELSE position('\\x00'::bytea IN substring(d FROM p FOR w)) - 1 END), 'WIN1252') $f$;"
    "CREATE OR REPLACE FUNCTION @as_amount(d bytea, p int, w int) RETURNS numeric LANGUAGE sql IMMUTABLE AS "
    "$f$ "
    "SELECT CASE WHEN get_byte(d, p - 1) = 0 THEN 0.00 ELSE (CASE WHEN get_byte(d, p + 8) = 45 THEN -1 ELSE "
    "1 END) * "
    "(convert_from(substring(d FROM p FOR 9), 'SQL_ASCII') || '.' || convert_from(substring(d FROM p + 10 "
    "FOR 2), "
    "'SQL_ASCII'))::numeric(14, 2) END $f$;"
    "CREATE OR REPLACE FUNCTION @as_percent(t text) RETURNS numeric LANGUAGE sql IMMUTABLE AS $f$ "
    "SELECT CASE WHEN t ~ '^[0-9]+,[0-9]+$' THEN replace(t, ',', '.')::numeric END $f$;"
    "CREATE OR REPLACE FUNCTION @as_number(d bytea, p int, w int, signed boolean) RETURNS bigint LANGUAGE "
    "sql IMMUTABLE "
    "AS $f$ SELECT n - CASE WHEN signed AND n >= 1::bigint << (8 * w - 1) THEN 1::bigint << (8 * w) ELSE 0 "
    "END FROM "
    "(SELECT sum(get_byte(d, p - 1 + i)::bigint << (8 * i))::bigint AS n FROM generate_series(0, w - 1) AS "
    "i) AS s "
    "$f$;"
    // Months count from the first of the fiscal year, years from 1980.
    "CREATE OR REPLACE FUNCTION @as_day(day text, month text, year text, first int) RETURNS date LANGUAGE "
    "sql "
    "IMMUTABLE AS $f$ SELECT CASE WHEN extract(day FROM d) = day::int THEN d END FROM (SELECT CASE WHEN day "
    "|| month || "
    "year ~ '^[0-9]{6}$' AND month::int BETWEEN 1 AND 12 AND day::int BETWEEN 1 AND 31 THEN make_date(1980 + "
    "year::int "
    "+ (month::int + first - 2) / 12, (month::int + first - 2) % 12 + 1, 1) + day::int - 1 END AS d) AS s "
    "$f$;";

std::string Day(const std::string &text, int day, int month, int year, int firstMonth)
{
    const auto part = [&](int at) { return "substr(" + text + ", " + std::to_string(at) + ", 2)"; };
    return "@as_day(" + part(day) + ", " + part(month) + ", " + part(year) + ", " +
           std::to_string(firstMonth) + ")";
}

// The value of a field of the stored record, which begins behind `stamps` bytes.
std::string ValueOf(const FieldLayout &field, size_t stamps, int firstMonth)
{
    const std::string place = std::to_string(stamps + field.Offset + 1) + ", " + std::to_string(field.Width);
    std::string text = "@as_text(data, " + place + ")";
    switch (field.Type) {
    case Form::Text: return text;
    case Form::Digits:
    case Form::DayNumber: return "nullif(" + text + ", '')";
    case Form::Konto: return "nullif(btrim(" + text + "), '')";
    case Form::Amount: return "@as_amount(data, " + place + ")";
    case Form::Rate:
    case Form::Share: return "@as_percent(" + text + ")";
    case Form::PackedDay: return Day(text, 1, 3, 5, firstMonth);
    case Form::Calendar: return Day(text, 1, 3, 5, 1);
    case Form::SortDay: return Day(text, 5, 3, 1, firstMonth);
    case Form::Year: return "CASE WHEN " + text + " ~ '^[0-9]{4}$' THEN " + text + "::int END";
    case Form::I16:
    case Form::I32: return "@as_number(data, " + place + ", true)";
    case Form::U8:
    case Form::U16:
    case Form::U32: return "@as_number(data, " + place + ", false)";
    case Form::Bytes: break;
    }
    return "substring(data FROM " + std::to_string(stamps + field.Offset + 1) + " FOR " +
           std::to_string(field.Width) + ")";
}

std::string ViewOf(const TableLayout &layout, int firstMonth)
{
    // A stamp of the last change and one for each key with duplicates, six bytes each.
    const auto duplicates = std::count_if(layout.Keys.begin(), layout.Keys.end(),
                                          [](const KeyLayout &key) { return key.Duplicates; });
    const size_t stamps = 6 * (1 + static_cast<size_t>(duplicates));
    std::string columns = "record AS \"Satznummer\"";
    for (const FieldLayout &field : layout.Fields) {
        columns += ", " + ValueOf(field, stamps, firstMonth) + " AS " + Quoted(field.Name);
    }
    return "DROP VIEW IF EXISTS @" + Quoted(layout.Stem) + "; CREATE VIEW @" + Quoted(layout.Stem) +
           " AS SELECT " + columns + " FROM @records WHERE file = (SELECT file FROM @files WHERE name = '" +
           layout.FileName() + "'::bytea);";
}

} // namespace

void WriteServiceFile(const fs::path &directory, const std::string &connection, const std::string &schema)
{
    const bool plain = std::all_of(schema.begin(), schema.end(), [](char character) {
        return (character >= 'a' && character <= 'z') || (character >= '0' && character <= '9') ||
               character == '_';
    });
    if (!plain || schema.empty() || schema.size() > 63) {
        throw UsageError("Der Name des Schemas hat kleine Buchstaben, Ziffern und _, höchstens 63.");
    }
    if (connection.empty() || connection.find('\n') != std::string::npos)
        throw UsageError("Die Verbindung ist eine Zeile, wie libpq sie liest: host=… dbname=… user=…");
    const fs::path path = directory / serviceName;
    std::ofstream file(path, std::ios::trunc);
    file << connection << '\n' << schema << '\n';
    file.close();
    if (!file) throw std::runtime_error(path.string() + " läßt sich nicht schreiben.");
    fs::permissions(path, fs::perms::group_write | fs::perms::others_write, fs::perm_options::remove);
}

NewSchemas::~NewSchemas()
{
    for (const Made &schema : made) {
        // What cannot be taken back now is told by whoever tries the name again.
        try {
            const std::string name = Quoted(SchemaIn(schema.Directory));
            Run(schema.Directory, "SET lock_timeout = '10s';" +
                                      (schema.WasThere ? "DROP TABLE IF EXISTS @head, @files, @groups, "
                                                         "@records, @entries, @sessions CASCADE"
                                                       : "DROP SCHEMA IF EXISTS " + name + " CASCADE"));
        } catch (const std::exception &) {
        }
    }
}

void NewSchemas::Add(const fs::path &directory, const std::string &connection, const std::string &schema)
{
    WriteServiceFile(directory, connection, schema);
    const std::vector<Row> found = Run(
        directory,
        "SELECT count(*), count(c.oid) FROM pg_namespace n LEFT JOIN pg_class c ON c.relnamespace = n.oid "
        "WHERE nspname = '" +
            schema + "'");
    if (found.at(0).at(1) != "0")
        throw std::runtime_error("Das Schema " + schema + " gibt es schon, und es ist nicht leer.");
    made.push_back({directory, found.at(0).at(0) != "0"});
}

namespace {

constexpr const char *inWork = "books laden";
constexpr const char *contents[] = {"files", "groups", "records", "entries"};

std::string CopyContent(const std::string &from, const std::string &to)
{
    std::string sql;
    for (const char *table : contents) {
        sql +=
            "INSERT INTO " + Quoted(to) + "." + table + " SELECT * FROM " + Quoted(from) + "." + table + ";";
    }
    return sql;
}

// The schema that was made in work becomes the one of its books.
std::string TakeFresh(const std::string &schema, const std::string &fresh)
{
    return "ALTER SCHEMA " + Quoted(fresh) + " RENAME TO " + Quoted(schema) + "; COMMENT ON SCHEMA " +
           Quoted(schema) + " IS NULL;";
}

// Its contents do, so that rights and what others have made of the schema stay.
std::string TakeContent(const std::string &schema, const std::string &fresh)
{
    std::string sql;
    for (const char *table : contents) {
        sql += "TRUNCATE " + Quoted(schema) + "." + table + ";";
    }
    return sql + CopyContent(fresh, schema) + "UPDATE " + Quoted(schema) +
           ".head SET changes = changes + 1, last_file = (SELECT last_file FROM " + Quoted(fresh) +
           ".head); DROP SCHEMA " + Quoted(fresh) + " CASCADE;";
}

} // namespace

SchemaExchange::SchemaExchange(const fs::path &books) : data(books), connection(ConnectionIn(books)) {}

SchemaExchange::~SchemaExchange()
{
    std::error_code ignored;
    for (const fs::path &directory : moved) {
        fs::remove_all(directory, ignored);
    }
    std::string sql = "SET lock_timeout = '10s';";
    for (const Part &part : parts) {
        sql += "DROP SCHEMA IF EXISTS " + Quoted(part.Fresh) + " CASCADE;";
    }
    // What cannot be taken back now is cleared away by the next exchange.
    try {
        if (!parts.empty()) Run(data, sql);
    } catch (const std::exception &) {
    }
}

void SchemaExchange::Add(const fs::path &work, const std::string &name, bool copies)
{
    const fs::path directory = name.empty() ? data : data / name;
    const bool hasBooks = HasBooks(directory);
    if (hasBooks && (!IsOnServer(directory) || ConnectionIn(directory) != connection)) {
        throw std::runtime_error("Die Bücher in " + directory.string() + " liegen woanders als die in " +
                                 data.string() + ". Geladen wird in einem Schritt, also auf einen Server.");
    }
    const std::string schema = hasBooks ? SchemaIn(directory) : SchemaIn(data) + "_" + name;
    const std::string fresh = schema + "_neu";
    WriteServiceFile(work, connection, fresh);
    const auto there = [&](const std::string &wanted) {
        return Run(data, "SELECT coalesce(obj_description(oid, 'pg_namespace'), '') FROM pg_namespace WHERE "
                         "nspname = '" +
                             wanted + "'");
    };
    // Whoever was killed in the very step has left a directory alone.
    const bool isNew = there(schema).empty();
    if (!hasBooks && !isNew) throw std::runtime_error("Das Schema " + schema + " gibt es schon.");
    const std::vector<Row> left = there(fresh);
    if (!left.empty() && left.at(0).at(0) != inWork)
        throw std::runtime_error("Das Schema " + fresh + " gibt es schon.");
    Run(data, "SET lock_timeout = '10s'; DROP SCHEMA IF EXISTS " + Quoted(fresh) +
                  " CASCADE; CREATE SCHEMA " + Quoted(fresh) + "; COMMENT ON SCHEMA " + Quoted(fresh) +
                  " IS '" + inWork + "'");
    parts.push_back({work, name, schema, fresh, isNew});
    Run(work, "SELECT 1", true);
    // A file's number is never given again, also not to the one that takes its place.
    if (!isNew)
        Run(work, (copies ? CopyContent(schema, fresh) : "") +
                      "UPDATE @head SET last_file = (SELECT last_file " + "FROM " + Quoted(schema) +
                      ".head)");
}

void SchemaExchange::Remove(const std::string &name) { removed.emplace_back(name, SchemaIn(data / name)); }

// A directory that is there before its schema is has no books; the other way round they would be lost.
void SchemaExchange::MoveDirectories()
{
    for (const Part &part : parts) {
        if (!part.IsNew) continue;
        WriteServiceFile(part.Work, connection, part.Schema);
        fs::remove_all(data / part.Name);
        fs::rename(part.Work, data / part.Name);
        moved.push_back(data / part.Name);
    }
}

void SchemaExchange::Finish()
{
    std::string sql = "SET lock_timeout = '10s'; BEGIN;";
    for (const Part &part : parts) {
        sql += part.IsNew ? TakeFresh(part.Schema, part.Fresh) : TakeContent(part.Schema, part.Fresh);
    }
    for (const auto &[name, schema] : removed) {
        sql += "DROP SCHEMA IF EXISTS " + Quoted(schema) + " CASCADE;";
    }
    MoveDirectories();
    Run(data, sql + "COMMIT");
    parts.clear();
    moved.clear();
    for (const auto &[name, schema] : removed) {
        fs::remove_all(data / name);
    }
}

int MakeServerBooks(const ServerOptions &options)
{
    const fs::path directory = fs::absolute(options.Directory).lexically_normal();
    if (HasBooks(directory)) throw std::runtime_error("In " + directory.string() + " liegen schon Bücher.");
    const bool made = fs::create_directories(directory);
    try {
        WriteServiceFile(directory, options.Connection, options.Schema);
        Run(directory, "SELECT 1", true);
    } catch (...) {
        fs::remove(directory / serviceName);
        if (made) fs::remove(directory);
        throw;
    }
    tools::AnswerByExitCode();
    std::cout << "Das Schema " << options.Schema << " ist angelegt; " << (directory / serviceName).string()
              << " nennt es.\n";
    return ExitGood;
}

int GrantRoles(const ServerOptions &options)
{
    if (options.Reader.empty() && options.Writer.empty())
        throw UsageError("--leser oder --schreiber sagt, welche Rolle Rechte bekommt.");
    const std::vector<fs::path> directories = ServerDirectories(options.Directory);
    for (const fs::path &directory : directories) {
        const std::string schema = Quoted(SchemaIn(directory));
        std::string sql;
        for (const std::string &role : {options.Reader, options.Writer}) {
            if (role.empty()) continue;
            sql += "GRANT USAGE ON SCHEMA " + schema + " TO " + Quoted(role) + ";";
            sql += "GRANT SELECT ON ALL TABLES IN SCHEMA " + schema + " TO " + Quoted(role) + ";";
        }
        if (!options.Writer.empty()) {
            for (const char *table : {"head", "files", "groups", "records", "entries", "sessions"}) {
                sql += "GRANT INSERT, UPDATE, DELETE ON @" + std::string(table) + " TO " +
                       Quoted(options.Writer) + ";";
            }
        }
        Run(directory, sql);
    }
    tools::AnswerByExitCode();
    std::cout << "Rechte an " << directories.size() << (directories.size() == 1 ? " Schema" : " Schemas")
              << " sind vergeben.\n";
    return ExitGood;
}

int MakeViews(const ServerOptions &options)
{
    const fs::path data = DataPathOf(options.Directory);
    int views = 0;
    for (const fs::path &directory : ServerDirectories(options.Directory)) {
        int year = 0;
        int number = 0;
        int firstMonth = 1;
        if (ParseYearDirectory(directory.filename().string(), year, number)) {
            const auto mandant = FindMandant(data, number);
            if (mandant) firstMonth = mandant->FirstMonth;
        }
        std::set<std::string> names;
        for (const Row &row : Run(directory, "SELECT convert_from(name, 'UTF8') FROM @files")) {
            names.insert(row.at(0));
        }
        std::string sql = functions;
        for (const TableLayout &layout : Tables()) {
            if (!names.contains(layout.FileName())) continue;
            sql += ViewOf(layout, firstMonth);
            ++views;
        }
        Run(directory, sql);
    }
    StopEngine();
    tools::AnswerByExitCode();
    std::cout << views << " Sichten sind angelegt.\n";
    return ExitGood;
}

} // namespace books
