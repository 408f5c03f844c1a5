// A connection of SQLite with the extension, over sample books that a test may change.
#pragma once

#include "tests/tools/program.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <string>
#include <vector>

namespace tests {

using SqlRow = std::vector<std::string>; // NULL is "NULL"
using SqlRows = std::vector<SqlRow>;

struct SqlConnection {
    explicit SqlConnection(const std::filesystem::path &books)
    {
        if (sqlite3_open(":memory:", &Handle) != SQLITE_OK) throw std::bad_alloc();
        Load();
        Rows("SELECT buecher_oeffnen('" + books.string() + "')");
    }
    ~SqlConnection() { sqlite3_close(Handle); }
    SqlConnection(const SqlConnection &) = delete;
    SqlConnection &operator=(const SqlConnection &) = delete;

    SqlRows Rows(const std::string &statement)
    {
        SqlRows rows;
        sqlite3_stmt *prepared = Prepare(statement);
        while (Step(prepared)) {
            rows.push_back(RowOf(prepared));
        }
        sqlite3_finalize(prepared);
        return rows;
    }
    std::string Value(const std::string &statement)
    {
        const SqlRows rows = Rows(statement);
        EXPECT_EQ(1u, rows.size()) << statement;
        return rows.empty() ? "" : rows[0][0];
    }
    int64_t Number(const std::string &statement) { return std::stoll(Value(statement)); }
    // Why the statement fails.
    std::string Refusal(const std::string &statement)
    {
        char *message = nullptr;
        EXPECT_NE(SQLITE_OK, sqlite3_exec(Handle, statement.c_str(), nullptr, nullptr, &message))
            << statement;
        std::string why = message != nullptr ? message : "";
        sqlite3_free(message);
        return why;
    }
    // Records that the statement reads.
    int64_t Reads(const std::string &statement)
    {
        const int64_t before = Number("SELECT saetze_gelesen()");
        Rows(statement);
        return Number("SELECT saetze_gelesen()") - before;
    }

    sqlite3_stmt *Prepare(const std::string &statement)
    {
        sqlite3_stmt *prepared = nullptr;
        const int code = sqlite3_prepare_v2(Handle, statement.c_str(), -1, &prepared, nullptr);
        EXPECT_EQ(SQLITE_OK, code) << sqlite3_errmsg(Handle) << "\n" << statement;
        return prepared;
    }
    bool Step(sqlite3_stmt *prepared)
    {
        const int code = sqlite3_step(prepared);
        EXPECT_TRUE(code == SQLITE_ROW || code == SQLITE_DONE) << sqlite3_errmsg(Handle);
        return code == SQLITE_ROW;
    }
    static SqlRow RowOf(sqlite3_stmt *prepared)
    {
        SqlRow row;
        for (int i = 0; i < sqlite3_column_count(prepared); ++i) {
            const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(prepared, i));
            row.emplace_back(text != nullptr ? text : "NULL");
        }
        return row;
    }

    sqlite3 *Handle = nullptr;

private:
    void Load()
    {
        char *message = nullptr;
        sqlite3_db_config(Handle, SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 1, nullptr);
        ASSERT_EQ(SQLITE_OK, sqlite3_load_extension(Handle, SQL_EXTENSION, nullptr, &message)) << message;
    }
};

// Sample books, a connection to them, and their data path.
struct SqlBooks : testing::Test {
    TemporaryDirectory Directory;
    std::filesystem::path Books = Directory.Path / "b";
    std::filesystem::path Data = Books / "DB";

    void MakeBooks(const std::vector<std::string> &more = {})
    {
        std::vector<std::string> arguments = {"beispiel", Books.string(), "--ersetzen"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        ASSERT_EQ(0, tests::Books(arguments).ExitCode);
    }
};

} // namespace tests
